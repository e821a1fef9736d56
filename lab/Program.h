// SPDX-License-Identifier: Apache-2.0
// The program policymap-lab, apart from the process it runs in.
#pragma once

#include "lab/Console.h"

namespace lab {

/// Reads the command line and does what it asks for. Faults are told on `err` of the console.
ExitStatus runProgram(int argc, char const* const* argv, Console const& console);

}  // namespace lab
