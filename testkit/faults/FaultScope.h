// SPDX-License-Identifier: Apache-2.0
#pragma once

// FaultScope: how long a fault plan of a Lab lasts.

#include "testkit/Export.h"
#include "testkit/faults/FaultInjector.h"

#include <utility>
#include <vector>

namespace PolicyMapTestKit {

class POLICYMAPTESTKIT_API FaultScope {
 public:
  explicit FaultScope(FaultInjector::PlanPtr plan) : plan_(std::move(plan)) {}
  FaultScope(FaultScope&& other) noexcept = default;
  FaultScope& operator=(FaultScope&& other) noexcept {
    std::swap(plan_, other.plan_);
    return *this;
  }
  FaultScope(FaultScope const&) = delete;
  FaultScope& operator=(FaultScope const&) = delete;
  ~FaultScope() { end(); }

  // No fault of the plan is injected any more, and those that were never met are findings of the
  // lab, unless they are optional. The end of the lab ends its plans.
  void end() {
    if (plan_) {
      plan_->end();
    }
  }

  // What became of each fault, in the order of the plan; also after the end.
  [[nodiscard]] std::vector<FaultState> faults() const { return plan_->states(); }
  // The calls that were hit, by the faults in the order of the plan.
  [[nodiscard]] std::vector<MetFault> met() const {
    std::vector<MetFault> all;
    for (FaultState const& state : faults()) {
      all.insert(all.end(), state.met.begin(), state.met.end());
    }
    return all;
  }

 private:
  FaultInjector::PlanPtr plan_;
};

}  // namespace PolicyMapTestKit
