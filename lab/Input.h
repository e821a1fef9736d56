// SPDX-License-Identifier: Apache-2.0
#pragma once

// Input files of the command line.

#include "lab/Kit.h"
#include "testkit/text/SourceText.h"

#include <string>

namespace lab {

// The file name that denotes standard input.
inline constexpr char const* standardInput = "-";

// Reads a whole file, or standard input. Raises InputError.
SourceText readInput(std::string const& file);

}  // namespace lab
