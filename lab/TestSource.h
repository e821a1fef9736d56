// SPDX-License-Identifier: Apache-2.0
#pragma once

// Tests that do what was recorded, and expect what happens now.

#include "lab/Kit.h"
#include "testkit/runs/Step.h"

#include <cstdint>
#include <ostream>
#include <string>

namespace lab {

// A test for GoogleTest, with the test kit.
void writeCppTest(std::ostream& out, std::string const& name, Script const& script);

enum class ProgramTest : std::uint8_t { shell, python };

// A test that runs policymap-lab, from PATH or as the variable POLICYMAP_LAB says: a shell script,
// or a Python program for unittest. Raises UsageError for a script that the command line cannot
// express.
void writeProgramTest(std::ostream& out, std::string const& name, Script const& script,
                      ProgramTest form);

}  // namespace lab
