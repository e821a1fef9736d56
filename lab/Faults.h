// SPDX-License-Identifier: Apache-2.0
#pragma once

// The faults given on the command line, and the steps performed after everything is loaded.

#include "lab/Kit.h"
#include "testkit/LabOptions.h"
#include "testkit/runs/Step.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lab {

// Parses "NAME=TEXT". Raises UsageError with the valid names if there is no such attribute.
Fault readFault(std::string_view argument);

// Parses a fault plan, or reads it from a file: "@FILE". `option` is where it is written. Raises
// InputError.
FaultPlan readPlan(std::string const& option, std::string const& argument);
// Adds the faults and limits of a plan; later limits count.
void addPlan(FaultPlan& plan, FaultPlan const& more);

// Parses SECONDS; none if it is not a valid time to advance.
std::optional<double> secondsOf(std::string_view text);

// Number of results that one step delivers at most.
constexpr std::uint32_t mostTriggers = 1000000;

// Parses the argument of --then: "clear", "trigger", "trigger N", "release", "release N",
// "inject NAME=TEXT", "faults PLAN", "end", "end PLAN", "load FILE", "check", "detach" or "attach".
// The file is not read yet. Raises UsageError.
Step readStep(std::string const& argument);
// With the content of the file that it loads, and the name of the file as messages show it. Raises
// InputError.
Step withContent(Step step);
// The option that gives this step: "--then clear", "--advance 5".
std::string optionOf(Step const& step);

// What is wrong with the argument of --then, or with SECONDS; empty if nothing is. For checks of
// the command line.
std::string faultOfStep(std::string const& argument);
std::string faultOfSeconds(std::string const& seconds);

}  // namespace lab
