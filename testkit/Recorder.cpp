// SPDX-License-Identifier: Apache-2.0
#include "testkit/Recorder.h"

#include <PolicyMap/Settling.h>

#include <exception>

namespace PolicyMapTestKit {

Recorder::Recorder() = default;

Recorder::~Recorder() = default;

std::vector<PolicyMap::AclRuleKey> const& Recorder::rulesAdded(
    PolicyMapTest::AclPolicyType const& policy) const {
  static std::vector<PolicyMap::AclRuleKey> const none;
  auto const found = rulesAdded_.find(policy);
  return found == rulesAdded_.end() ? none : found->second;
}

void Recorder::resultArrived(Kor::String const& error) {
  if (journal_ != nullptr) {
    journal_->resultArrived(error);
  }
}

void Recorder::record(HelperCall& call, Proceed const& proceed, std::string_view cause) {
  // recreatePolicy() of the base calls the operations for deletion and creation.
  if (recreating_ && (call.operation == "deletePolicy" || call.operation == "createPolicy")) {
    proceed();
    return;
  }
  PolicyMap::ScopedFlag const flag(recreating_, call.operation == "recreatePolicy");
  std::uint64_t const number = journal_ != nullptr ? journal_->begin(call, cause) : 0;
  auto const ended = [&](bool threw) {
    if (journal_ != nullptr) {
      journal_->end(number, call, threw);
    }
  };
  Proceed const carryOut = [&] {
    proceed();
    keepOrder(call);
  };
  try {
    if (around_) {
      around_(call, carryOut);
    } else {
      carryOut();
    }
  } catch (std::exception const& exception) {
    call.error = Kor::String(exception.what());
    ended(true);
    throw;
  } catch (...) {
    call.error = Kor::String("an exception");
    ended(true);
    throw;
  }
  ended(false);
}

void Recorder::keepOrder(HelperCall const& call) {
  if (call.operation == "addRule") {
    std::vector<PolicyMap::AclRuleKey>& rules = rulesAddedTo(call);
    if (rules.empty() || rules.back() != *call.rule) {
      rules.push_back(*call.rule);
    }
  } else if (call.operation == "createPolicy" || call.operation == "recreatePolicy" ||
             call.operation == "deletePolicy") {
    rulesAddedTo(call).clear();
  }
}

std::vector<PolicyMap::AclRuleKey>& Recorder::rulesAddedTo(HelperCall const& call) {
  PolicyMap::PolicyMapSmKey const& key = (*call.policy)->policyKey();
  // Nearly all rules go to the policy of the previous one.
  if (current_ == nullptr || current_->first.option() != *call.option ||
      current_->first.policyKey() != key) {
    current_ = &*rulesAdded_.try_emplace({key, *call.option}).first;
  }
  return current_->second;
}

}  // namespace PolicyMapTestKit
