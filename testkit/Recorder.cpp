// SPDX-License-Identifier: Apache-2.0
#include "testkit/Recorder.h"

#include <PolicyMap/Settling.h>

#include <exception>

namespace PolicyMapTestKit {

namespace {

// Whether an operation returns a text.
bool canReturnError(std::string_view operation) {
  return operation != "hwInit" && operation != "getCountForRule";
}

}  // namespace

Recorder::Recorder(PolicyMapTest::AclHelper& helper, Results::Deliver deliver)
    : helper_(helper),
      deliver_(std::move(deliver)),
      faults_(helper),
      results_([this](auto const& result) { Recorder::deliver(result); }),
      strictness_(helper) {}

Recorder::~Recorder() = default;

std::vector<PolicyMap::AclRuleKey> const& Recorder::rulesAdded(
    PolicyMapTest::AclPolicyType const& policy) const {
  static std::vector<PolicyMap::AclRuleKey> const none;
  auto const found = rulesAdded_.find(policy);
  return found == rulesAdded_.end() ? none : found->second;
}

void Recorder::deliver(PolicyMap::AsyncOperationResult const& result) {
  Kor::Ptr<PolicyMapTest::AclHelper> const pinned = Kor::share(&helper_);
  if (journal_ != nullptr) {
    journal_->resultArrived(result.error());
  }
  strictness_.resultArrived(!result.error().empty());
  deliver_(result);
}

void Recorder::record(HelperCall& call, Proceed const& proceed, std::string_view cause) {
  // recreatePolicy() of the base calls the operations for deletion and creation.
  if (recreating_ && (call.operation == "deletePolicy" || call.operation == "createPolicy")) {
    proceed();
    return;
  }
  PolicyMap::ScopedFlag const flag(recreating_, call.operation == "recreatePolicy");
  std::uint64_t const number = journal_ != nullptr ? journal_->begin(call, cause) : 0;
  strictness_.begins(call);
  bool const isAsynchronous = hasResult(call.operation) && helper_.asyncOperations();
  FaultInjector::Injection const injection = faults_.injectionFor(call, isAsynchronous);
  auto const ended = [&](bool threw) {
    if (journal_ != nullptr) {
      journal_->end(number, call, threw);
    }
    strictness_.ends(call, injection.happens());
  };
  try {
    perform(call, injection, proceed);
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

void Recorder::perform(HelperCall& call, FaultInjector::Injection const& injection,
                       Proceed const& proceed) {
  bool const fails = !injection.text.empty();
  if (fails && (injection.effect == FaultEffect::throws || !canReturnError(call.operation))) {
    throw InjectedFault(injection.text);
  }
  Kor::String const error(injection.text);
  if (injection.effect == FaultEffect::before ||
      (fails && call.operation == "addRule" && injection.effect == FaultEffect::fails)) {
    bool const isAboutExistence =
        call.operation == "createPolicy" || call.operation == "deletePolicy";
    call.error = isAboutExistence ? helper_.notCarriedOut(error) : error;
    return;
  }
  if (hasResult(call.operation) && helper_.asyncOperations()) {
    results_.expect(call, injection);
    carryOut(call, proceed);
    call.error.empty() ? results_.accepted(helper_.asyncError()) : results_.refused();
    return;
  }
  carryOut(call, proceed);
  if (call.error.empty()) {
    call.error = error;
  }
}

void Recorder::carryOut(HelperCall& call, Proceed const& proceed) {
  Proceed const keeping = [&] {
    proceed();
    faults_.carriedOut(call);
    keepOrder(call);
  };
  if (around_) {
    around_(call, keeping);
  } else {
    keeping();
  }
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
