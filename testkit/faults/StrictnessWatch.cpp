// SPDX-License-Identifier: Apache-2.0
#include "testkit/faults/StrictnessWatch.h"

#include "testkit/Printing.h"
#include "testkit/faults/ActivePlan.h"

#include <utility>

namespace PolicyMapTestKit {

namespace {

// Operations on one policy and option. The others are about a class, or about nothing.
bool isAboutOption(HelperCall const& call) {
  return call.policy != nullptr && call.option && call.operation != "getCountForRule";
}

// What may follow when an operation has failed.
bool mayFollow(std::string_view failed, std::string_view operation) {
  if (operation == "deletePolicy") {
    return true;
  }
  if (operation == "removeIntfFromPolicy") {
    return failed == "removeIntfFromPolicy" || failed == "updateAction";
  }
  return failed == "updateAction" && operation == "recreatePolicy";
}

}  // namespace

StrictnessWatch::State& StrictnessWatch::stateOf(HelperCall const& call) {
  PolicyMap::PolicyMapSmKey const& key = (*call.policy)->policyKey();
  if (current_ == nullptr || current_->first.option() != *call.option ||
      current_->first.policyKey() != key) {
    current_ = &*states_.try_emplace({key, *call.option}).first;
  }
  return current_->second;
}

void StrictnessWatch::changedIs(State& state, std::string_view operation) {
  uncommitted_ -= state.changed.empty() ? 0 : 1;
  uncommitted_ += operation.empty() ? 0 : 1;
  state.changed = operation;
}

void StrictnessWatch::report(Finding::Kind kind, HelperCall const& call, State const& state,
                             std::string const& text) {
  findings_->add({kind, describe(call) + text, state.injected});
}

void StrictnessWatch::begins(HelperCall const& call) {
  if (!watches() || !isAboutOption(call)) {
    return;
  }
  State& state = stateOf(call);
  operation_ = call.operation;
  awaiting_ = hasResult(operation_) && helper_.asyncOperations();
  if (!state.failed.empty() && strictness_.callsAfterFailures &&
      !mayFollow(state.failed, call.operation)) {
    report(Finding::Kind::callAfterFailure, call, state,
           " after a failed " + std::string(state.failed));
  }
  if (call.operation == "commitPolicy" && state.changed.empty() && strictness_.idleCommits) {
    report(Finding::Kind::idleCommit, call, state, " without a change since the last one");
  }
  if (call.operation == "createPolicy" || call.operation == "recreatePolicy") {
    creationBegins(call, state);
  }
}

void StrictnessWatch::creationBegins(HelperCall const& call, State& state) {
  std::pair const now(changes_, loop_.now());
  if (state.createdAt == now && strictness_.repeatedCreations) {
    report(Finding::Kind::repeatedCreation, call, state, " although nothing has changed");
  }
  state.createdAt = now;
}

void StrictnessWatch::ends(HelperCall const& call, bool injected) {
  if (!watches() || !isAboutOption(call)) {
    return;
  }
  State& state = stateOf(call);
  bool const failed = !call.error.empty();
  state.injected = state.injected || injected;
  if (failed) {
    somethingChanged();
  }
  if (call.operation == "deletePolicy") {
    state.failed = {};
    changedIs(state, {});
  } else if (failed) {
    // A policy that was not created need not be deleted.
    auto const record = helper_.testData(current_->first);
    state.failed = record && record->created() ? call.operation : std::string_view();
  } else if (call.operation == "commitPolicy") {
    changedIs(state, {});
    state.injected = state.injected && injected;
  } else {
    state.failed = call.operation == "recreatePolicy" ? std::string_view() : state.failed;
    changedIs(state, state.changed.empty() ? call.operation : state.changed);
  }
}

void StrictnessWatch::resultArrived(bool failed) {
  somethingChanged();
  if (std::exchange(awaiting_, false) && failed) {
    current_->second.failed = operation_;
  }
}

void StrictnessWatch::isSettled() {
  if (!watches() || !strictness_.missingCommits || uncommitted_ == 0) {
    return;
  }
  for (auto const& [key, state] : states_) {
    auto const record = state.changed.empty() ? nullptr : helper_.testData(key);
    if (record && record->created()) {
      findings_->add({Finding::Kind::missingCommit,
                      describe(key) + ": " + std::string(state.changed) + " is not committed",
                      state.injected});
    }
  }
}

void StrictnessWatch::isUnconfigured() {
  if (!watches() || !strictness_.leftovers) {
    return;
  }
  for (auto const& record : helper_.testDataIteratorConst()) {
    if (record.value()->created()) {
      auto const state = states_.find(record.key());
      findings_->add({Finding::Kind::leftover, describe(record.key()) + " is still created",
                      state != states_.end() && state->second.injected});
    }
  }
}

}  // namespace PolicyMapTestKit
