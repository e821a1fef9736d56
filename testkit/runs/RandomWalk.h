// SPDX-License-Identifier: Apache-2.0
#pragma once

// walk(): random edits, faults, time and results on a configuration. After each few steps all
// faults end, time passes, and the lab is compared with a new one; see Recovery.h.
//
//   WalkResult const result = walk({.begin = script, .seed = 7, .steps = 1000});
//   EXPECT_THAT(result.run.found, IsEmpty());

#include "testkit/Export.h"
#include "testkit/runs/RunFile.h"
#include "testkit/runs/Step.h"

#include <cstddef>
#include <cstdint>
#include <functional>

namespace PolicyMapTestKit {

struct WalkOptions {
  // The options of the lab, and what is loaded before the first step.
  Script begin = {};
  std::uint64_t seed = 1;
  // Random steps.
  std::size_t steps = 1000;
  // Keep the way of returning results of `begin`; otherwise the seed chooses one.
  bool keepMode = false;
};

struct WalkResult {
  // What was done, without edits that are invalid, until the first irregularity; and what it came
  // to. Without a journal.
  RunFile run;
  std::size_t steps = 0;
  std::size_t edits = 0;
  // Edits that are invalid.
  std::size_t refused = 0;
  std::size_t faults = 0;
  std::uint64_t injected = 0;
  std::size_t checks = 0;
};

// The same options give the same walk. Calls `onStep` after each random step. Throws what `begin`
// throws, and std::invalid_argument if it has no policy text to edit.
[[nodiscard]] POLICYMAPTESTKIT_API WalkResult walk(WalkOptions const& options,
                                                   std::function<void()> const& onStep = {});

}  // namespace PolicyMapTestKit
