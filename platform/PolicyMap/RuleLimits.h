// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace PolicyMap {

/// How much work and memory one class may cost. A class that goes beyond is an error, and so says
/// its text.
struct RuleLimits {
  std::size_t composedRules = 1000000;  ///< that one match-all makes
  std::size_t pairs = 50000000;         ///< of rules that the match-alls of a class compare
  std::size_t repeatedWalks = 100000;   ///< through class-maps that the class has nested before
};

}  // namespace PolicyMap
