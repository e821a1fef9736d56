// SPDX-License-Identifier: Apache-2.0
#pragma once

// ActivePlan: a fault plan that counts the calls of a helper and keeps what its faults have met.

#include "testkit/Export.h"
#include "testkit/ForwardingHelper.h"
#include "testkit/faults/FaultPlan.h"

#include <cstdint>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace PolicyMapTestKit {

// A call that a fault was injected into.
struct MetFault {
  // Counts from 1 in each lab.
  std::uint64_t number = 0;
  // In seconds of the lab's clock.
  double time = 0;
  // "addRule(edge/input ipv4 web web:30)".
  std::string call;
  // What the operation returned or threw, or its result was; empty for a success.
  std::string text;

  bool operator==(MetFault const&) const = default;
};

// A fault of an active plan.
struct FaultState {
  PlannedFault fault;
  // The number of calls that it selected, whether or not they failed.
  std::uint64_t selected = 0;
  std::vector<MetFault> met;
};

// True for a fault that has met no call although it should.
inline bool isUnmet(FaultState const& state) {
  return state.met.empty() && !state.fault.optional;
}

// The operation and its arguments: "addRule(edge/input ipv4 web web:30)".
POLICYMAPTESTKIT_API std::string describe(HelperCall const& call);
// "web:10"; of a rule of the class-map itself "10".
POLICYMAPTESTKIT_API std::string nameOfRule(PolicyMap::AclRuleKey const& rule);

// A fault while it counts calls.
class POLICYMAPTESTKIT_API RunningFault {
 public:
  explicit RunningFault(PlannedFault fault);

  // Counts a call that the fault selects. Returns whether it fails.
  bool counts();
  void isMet(MetFault met) { state_.met.push_back(std::move(met)); }

  // True if no later call can fail.
  [[nodiscard]] bool hasEnded() const;
  [[nodiscard]] FaultState const& state() const { return state_; }

 private:
  [[nodiscard]] bool isDue();

  FaultState state_;
  std::mt19937_64 random_;
};

class POLICYMAPTESTKIT_API ActivePlan {
 public:
  explicit ActivePlan(FaultPlan plan);

  [[nodiscard]] Capacity const& capacity() const { return capacity_; }
  // From now on it lets nothing fail.
  void clear();

  // The faults that let the call fail, in the order of the plan. All faults count the call.
  // `isAsynchronous`: the result of the call comes later.
  std::vector<RunningFault*> dueFor(HelperCall const& call, bool isAsynchronous);

  // What end() does, once.
  void onEndIs(std::function<void()> onEnd) { onEnd_ = std::move(onEnd); }
  void end();

  [[nodiscard]] std::vector<FaultState> states() const;
  // The calls since the plan began: "createPolicy 1, addRule 3"; "nothing".
  [[nodiscard]] std::string callsMade() const;

 private:
  std::vector<std::vector<RunningFault>> scripts_;
  Capacity capacity_;
  bool cleared_ = false;
  std::function<void()> onEnd_;
  std::map<std::string_view, std::uint64_t> calls_;
};

}  // namespace PolicyMapTestKit
