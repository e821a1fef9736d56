// SPDX-License-Identifier: Apache-2.0
#include "testkit/RecordingHelper.h"

#include <PolicyMap/HelperArbiter.h>
#include <PolicyMap/Settling.h>

#include <exception>
#include <utility>

namespace PolicyMapTestKit {

RecordingHelper::RecordingHelper(bool updateActionSupported, bool expandPortChannels,
                                 Journal* journal)
    : ForwardingHelper(updateActionSupported, expandPortChannels), journal_(journal) {}

RecordingHelper::~RecordingHelper() = default;

std::vector<PolicyMap::AclRuleKey> const& RecordingHelper::rulesAdded(
    PolicyMapTest::AclPolicyType const& policy) const {
  static std::vector<PolicyMap::AclRuleKey> const none;
  auto const found = rulesAdded_.find(policy);
  return found == rulesAdded_.end() ? none : found->second;
}

void RecordingHelper::asyncOperationResultIs(PolicyMap::AsyncOperationResult const& result) {
  if (journal_ != nullptr) {
    journal_->resultArrived(result.error());
  }
  AclHelper::asyncOperationResultIs(result);
}

void RecordingHelper::around(HelperCall& call, Proceed const& proceed) {
  // recreatePolicy() of the base calls the operations for deletion and creation.
  if (recreating_ && (call.operation == "deletePolicy" || call.operation == "createPolicy")) {
    proceed();
    return;
  }
  PolicyMap::ScopedFlag const flag(recreating_, call.operation == "recreatePolicy");
  keepOrder(call);
  std::uint64_t const number = journal_ != nullptr ? journal_->begin(call, causeNow()) : 0;
  auto const ended = [&](bool threw) {
    if (journal_ != nullptr) {
      journal_->end(number, call, threw);
    }
  };
  try {
    if (around_) {
      around_(call, proceed);
    } else {
      proceed();
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

// A test may call an operation itself, which then has no cause.
std::string_view RecordingHelper::causeNow() const {
  return arbiter().calling() ? arbiter().cause() : std::string_view();
}

void RecordingHelper::keepOrder(HelperCall const& call) {
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

std::vector<PolicyMap::AclRuleKey>& RecordingHelper::rulesAddedTo(HelperCall const& call) {
  PolicyMap::PolicyMapSmKey const& key = (*call.policy)->policyKey();
  // Nearly all rules go to the policy of the previous one.
  if (current_ == nullptr || current_->first.option() != *call.option ||
      current_->first.policyKey() != key) {
    current_ = &*rulesAdded_.try_emplace({key, *call.option}).first;
  }
  return current_->second;
}

}  // namespace PolicyMapTestKit
