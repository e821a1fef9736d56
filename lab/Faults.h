// SPDX-License-Identifier: Apache-2.0
#pragma once

// The faults given on the command line, and the steps performed after everything is loaded.

#include "lab/Kit.h"
#include "testkit/Lab.h"

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

// Seconds. Operations that are retried forever would keep a longer advance running.
constexpr double longestAdvance = 1e6;
// Parses SECONDS; none if it is not a valid time to advance.
std::optional<double> secondsOf(std::string_view text);

// Number of results that one step delivers at most.
constexpr std::uint32_t mostTriggers = 1000000;

// An action performed after everything is loaded.
struct Step {
  enum class Kind : std::uint8_t {
    clear,    // removes all injected errors
    trigger,  // delivers pending asynchronous results
    inject,   // makes an operation fail
    faults,   // adds a fault plan
    release,  // delivers the results that are held
    load,     // a file, as an edit
    advance,  // advances virtual time, by longestAdvance at most
  };

  Kind kind = Kind::clear;
  double seconds = 0;
  std::uint32_t triggers = 1;
  Fault fault = {};
  FaultPlan plan = {};
  std::string file = {};
  // As written on the command line, for headings.
  std::string text = {};
};

// Parses the argument of --then: "clear", "trigger", "trigger N", "release", "inject NAME=TEXT",
// "faults PLAN" or "load FILE". Raises UsageError.
Step readStep(std::string const& argument);

// What is wrong with the argument of --then, or with SECONDS; empty if nothing is. For checks of
// the command line.
std::string faultOfStep(std::string const& argument);
std::string faultOfSeconds(std::string const& seconds);

// `reading` is for files. Returns how long a fault plan lasts. Raises InputError.
std::optional<FaultScope> perform(Lab& lab, Step const& step, Reading reading);

}  // namespace lab
