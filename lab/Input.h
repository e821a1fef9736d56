// SPDX-License-Identifier: Apache-2.0
#pragma once

// Input and output files of the command line.

#include "lab/Console.h"
#include "lab/Kit.h"
#include "testkit/text/SourceText.h"

#include <functional>
#include <ostream>
#include <string>

namespace lab {

// The file name that denotes standard input.
inline constexpr char const* standardInput = "-";

// Reads a whole file, or standard input. Raises InputError.
SourceText readInput(std::string const& file);

// Opens a file, or standard output for "-", and lets `write` fill it. Raises UsageError if the file
// cannot be written.
void writeOutput(Console const& console, std::string const& file,
                 std::function<void(std::ostream&)> const& write);

}  // namespace lab
