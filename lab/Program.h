// SPDX-License-Identifier: Apache-2.0
#pragma once

// The program policymap-lab, independent of its process.

#include "lab/Console.h"

namespace lab {

// Parses the command line and runs it. Errors are reported on the console's `err`.
ExitStatus runProgram(int argc, char const* const* argv, Console const& console);

}  // namespace lab
