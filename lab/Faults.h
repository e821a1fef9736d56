// SPDX-License-Identifier: Apache-2.0
#pragma once

// Injected faults, and the steps performed after everything is loaded.

#include "helper/AclHelper.h"

#include <string>
#include <string_view>
#include <vector>

namespace lab {

// One injected error of the helper.
struct Fault {
  // The helper's attribute, e.g. "commitError".
  std::string name;
  // The error that the operation returns; empty for success.
  std::string text;
};

// The attributes that hold an injected error, in the order of the documentation.
std::vector<std::string> faultNames();

// Parses "NAME=TEXT". Raises UsageError with the valid names if there is no such attribute.
Fault readFault(std::string_view argument);

void inject(PolicyMapTest::AclHelper& helper, Fault const& fault);
void clearFaults(PolicyMapTest::AclHelper& helper);

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

}  // namespace lab
