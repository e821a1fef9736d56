// SPDX-License-Identifier: Apache-2.0
#pragma once

// The faults given on the command line, and the steps performed after everything is loaded.

#include "lab/Kit.h"
#include "testkit/Lab.h"

#include <string>
#include <string_view>

namespace lab {

// Parses "NAME=TEXT". Raises UsageError with the valid names if there is no such attribute.
Fault readFault(std::string_view argument);

// Seconds. Operations that are retried forever would keep a longer advance running.
constexpr double longestAdvance = 1e6;

// An action performed after everything is loaded.
struct Step {
  enum class Kind : std::uint8_t {
    clear,    // removes all injected errors
    trigger,  // delivers the pending asynchronous result
    advance,  // advances virtual time, by longestAdvance at most
  };

  Kind kind = Kind::clear;
  double seconds = 0;
  // As written on the command line, for headings.
  std::string text;
};

void perform(Lab& lab, Step const& step);

}  // namespace lab
