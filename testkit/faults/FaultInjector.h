// SPDX-License-Identifier: Apache-2.0
#pragma once

// FaultInjector: decides for each call of a helper whether the faults of its plans let it fail, and
// keeps what they have met. A plan is active from add() until its scope ends.

#include "testkit/Export.h"
#include "testkit/ForwardingHelper.h"
#include "testkit/faults/ActivePlan.h"
#include "testkit/faults/FaultPlan.h"
#include "testkit/faults/Findings.h"
#include "testkit/faults/Usage.h"

#include <Kor/EventLoop.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace PolicyMapTestKit {

// What an operation throws for a fault with `throws`.
class POLICYMAPTESTKIT_API InjectedFault : public std::runtime_error {
 public:
  explicit InjectedFault(std::string const& text) : std::runtime_error(text) {}
  ~InjectedFault() override;
};

class POLICYMAPTESTKIT_API FaultInjector {
 public:
  // What happens to a call. Without a fault: FaultEffect::fails and no text.
  struct Injection {
    FaultEffect effect = FaultEffect::fails;
    double seconds = 0;
    std::string text;

    [[nodiscard]] bool happens() const { return !text.empty() || effect != FaultEffect::fails; }
  };

  using PlanPtr = std::shared_ptr<ActivePlan>;

  // On the loop that is current now.
  explicit FaultInjector(PolicyMapTest::AclHelper& helper)
      : helper_(helper), loop_(Kor::EventLoop::current()) {}
  FaultInjector(FaultInjector const&) = delete;
  FaultInjector& operator=(FaultInjector const&) = delete;

  // Throws std::invalid_argument; see check().
  PlanPtr add(FaultPlan plan);
  // Ends all plans. A plan that ends reports the faults that it did not meet.
  void endAll();
  // From now on no fault of an active plan is injected, and nothing is limited.
  void clear();

  // Called for each call before it is carried out, and after it was.
  // `isAsynchronous`: its result comes later.
  [[nodiscard]] Injection injectionFor(HelperCall const& call, bool isAsynchronous);
  void carriedOut(HelperCall const& call) {
    if (usage_) {
      usage_->carriedOut(call);
    }
  }

  // What the active plans have met, in the order in which they began.
  [[nodiscard]] std::vector<FaultState> states() const;
  // The number of faults injected so far.
  [[nodiscard]] std::uint64_t injected() const { return injected_; }
  // Where unmet faults are reported.
  void findingsAre(FindingList* findings) { findings_ = findings; }

 private:
  void end(ActivePlan& plan);
  void limitAgain();
  [[nodiscard]] Injection begun(PlannedFault const& fault, HelperCall const& call);
  // Counts a fault.
  std::string nextText(HelperCall const& call);

  PolicyMapTest::AclHelper& helper_;
  Kor::EventLoop& loop_;
  FindingList* findings_ = nullptr;
  std::vector<PlanPtr> plans_;
  std::optional<Usage> usage_;  // counted while something is limited
  std::uint64_t injected_ = 0;
};

}  // namespace PolicyMapTestKit
