// SPDX-License-Identifier: Apache-2.0
#pragma once

// minimise(): the shortest script, as far as halving finds it, that still comes to something
// irregular.
//
// Steps, faults and lines of policy text are left out, half of them at first, then smaller parts;
// texts are loaded together, faults hit earlier calls, and classes get rules of their own, for as
// long as that leaves an irregularity of the same kind; for a finding, a finding of the same
// kind; for an exception or a failed assertion, the same text. The same script gives the same
// result.

#include "testkit/Export.h"
#include "testkit/runs/Recovery.h"
#include "testkit/runs/Step.h"

#include <functional>

namespace PolicyMapTestKit {

struct Minimised {
  Script script;
  // What the script comes to.
  std::vector<Irregularity> found;
  // How many scripts were tried.
  std::size_t tries = 0;
};

// Calls `onTry` before each. Throws std::invalid_argument if nothing of the script is irregular.
[[nodiscard]] POLICYMAPTESTKIT_API Minimised minimise(Script script,
                                                      std::function<void()> const& onTry = {});

}  // namespace PolicyMapTestKit
