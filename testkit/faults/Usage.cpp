// SPDX-License-Identifier: Apache-2.0
#include "testkit/faults/Usage.h"

#include "testkit/faults/FaultWords.h"

#include <string_view>
#include <utility>

namespace PolicyMapTestKit {

namespace {

// The first limit that a number exceeds.
class Limits {
 public:
  explicit Limits(Capacity const& capacity) : capacity_(capacity) {}

  Limits& need(std::optional<std::uint64_t> Capacity::*limit, std::uint64_t number) {
    if (exceeded_.empty() && capacity_.*limit && number > *(capacity_.*limit)) {
      for (FaultWords::Limit const& each : FaultWords::limits) {
        if (each.limit == limit) {
          exceeded_ = std::string(each.word) + "=" + std::to_string(*(capacity_.*limit));
        }
      }
    }
    return *this;
  }
  [[nodiscard]] std::string exceeded() const { return exceeded_; }

 private:
  Capacity const& capacity_;
  std::string exceeded_;
};

}  // namespace

Usage::Usage(PolicyMapTest::AclHelper& helper, Capacity const& capacity)
    : helper_(helper), capacity_(capacity) {
  for (auto const& record : helper.testDataIteratorConst()) {
    if (!record.value()->created()) {
      continue;
    }
    Entries& entries = policies_[record.key()];
    record.value()->forEachSubRule([&entries](PolicyMap::SubRuleData const& subRule) {
      ++entries.rules;
      entries.rangeCheckers += subRule.needsRangeChecker() ? 1 : 0;
    });
    all_.rules += entries.rules;
    all_.rangeCheckers += entries.rangeCheckers;
  }
}

Usage::Key Usage::keyOf(HelperCall const& call) {
  return {(*call.policy)->policyKey(), *call.option};
}

std::string Usage::exceeded(HelperCall const& call) const {
  if (call.operation == "addRule") {
    return exceededByRule(call);
  }
  if (call.operation == "createPolicy") {
    return exceededByPolicy(call);
  }
  return call.operation == "addIntfToPolicy" ? exceededByIntf(call) : std::string();
}

std::string Usage::exceededByRule(HelperCall const& call) const {
  auto const policy = policies_.find(keyOf(call));
  Limits limits(capacity_);
  limits.need(&Capacity::rules, all_.rules + 1)
      .need(&Capacity::rulesPerPolicy, policy == policies_.end() ? 1 : policy->second.rules + 1);
  if (call.subRule->needsRangeChecker()) {
    limits.need(&Capacity::rangeCheckers, all_.rangeCheckers + 1);
  }
  return limits.exceeded();
}

std::string Usage::exceededByPolicy(HelperCall const& call) const {
  return Limits(capacity_)
      .need(&Capacity::policies, policies_.size() + 1)
      .need(&Capacity::interfacesPerPolicy, (*call.policy)->intfs(*call.option).size())
      .exceeded();
}

std::string Usage::exceededByIntf(HelperCall const& call) const {
  auto const record = helper_.testData(keyOf(call));
  std::uint64_t const interfaces = record && !record->intf(*call.intf) ? record->intfs() + 1 : 0;
  return Limits(capacity_).need(&Capacity::interfacesPerPolicy, interfaces).exceeded();
}

void Usage::empty(Entries& entries) {
  all_.rules -= entries.rules;
  all_.rangeCheckers -= entries.rangeCheckers;
  entries = {};
}

void Usage::carriedOut(HelperCall const& call) {
  if (call.operation == "createPolicy") {
    policies_.try_emplace(keyOf(call));
  } else if (call.operation == "recreatePolicy") {
    empty(policies_[keyOf(call)]);
  } else if (call.operation == "deletePolicy") {
    if (auto const policy = policies_.find(keyOf(call)); policy != policies_.end()) {
      empty(policy->second);
      policies_.erase(policy);
    }
  } else if (call.operation == "addRule" && call.error.empty()) {
    Entries& entries = policies_[keyOf(call)];
    std::uint64_t const rangeCheckers = call.subRule->needsRangeChecker() ? 1 : 0;
    entries.rules += 1;
    entries.rangeCheckers += rangeCheckers;
    all_.rules += 1;
    all_.rangeCheckers += rangeCheckers;
  }
}

}  // namespace PolicyMapTestKit
