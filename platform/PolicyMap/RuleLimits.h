// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace PolicyMap {

// Limits on the time and memory spent on one class. A class that exceeds one has an error that
// says so.
struct RuleLimits {
  std::size_t composedRules = 1000000;  // created by one match-all
  std::size_t pairs = 50000000;         // of rules, compared by all match-alls of a class
  std::size_t repeatedWalks = 100000;  // walks through class-maps that the class has already nested
};

}  // namespace PolicyMap
