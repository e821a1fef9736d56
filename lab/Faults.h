// SPDX-License-Identifier: Apache-2.0
// Faults: what can be made to fail, and what is done after everything is loaded.
#pragma once

#include "helper/AclHelper.h"

#include <string>
#include <string_view>
#include <vector>

namespace lab {

/// One injected error of the helper.
struct Fault {
  /// An attribute of the helper, as "commitError".
  std::string name;
  /// What the operation answers; empty for success.
  std::string text;
};

/// The attributes that take a text, in the order in which they are documented.
std::vector<std::string> faultNames();

/// Reads "NAME=TEXT". Raises UsageError, which lists the names, when there is no such attribute.
Fault readFault(std::string_view argument);

void inject(PolicyMapTest::AclHelper& helper, Fault const& fault);
void clearFaults(PolicyMapTest::AclHelper& helper);

/// Seconds that may pass at once: what is tried again for ever would take ever.
constexpr double longestAdvance = 1e6;

/// Something to be done after everything is loaded.
struct Step {
  enum class Kind : std::uint8_t {
    clear,    ///< no operation fails any more
    trigger,  ///< the pending asynchronous result is delivered
    advance,  ///< virtual time passes, longestAdvance at most
  };

  Kind kind = Kind::clear;
  double seconds = 0;
  /// As it was written, for headings.
  std::string text;
};

}  // namespace lab
