// SPDX-License-Identifier: Apache-2.0
#include "testkit/faults/ActivePlan.h"

#include "testkit/Printing.h"
#include "testkit/faults/FaultWords.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace PolicyMapTestKit {

namespace {

// "web:30"; of a rule of the class-map itself "30".
bool selects(PlannedFault const& fault, HelperCall const& call, bool isAsynchronous) {
  auto const& operations = fault.operations;
  if (!operations.empty() &&
      std::find(operations.begin(), operations.end(), call.operation) == operations.end()) {
    return false;
  }
  if (FaultWords::isAboutResults(fault.effect) && !isAsynchronous) {
    return false;
  }
  if (!fault.policy.empty() || !fault.direction.empty()) {
    if (call.policy == nullptr) {
      return false;
    }
    PolicyMap::PolicyMapSmKey const& key = (*call.policy)->policyKey();
    if ((!fault.policy.empty() && key.first().view() != fault.policy) ||
        (!fault.direction.empty() && key.second().view() != fault.direction)) {
      return false;
    }
  }
  if (!fault.className.empty() && (call.classData == nullptr || !*call.classData ||
                                   (*call.classData)->name().view() != fault.className)) {
    return false;
  }
  return (!fault.option || fault.option == call.option) &&
         (!fault.intf || fault.intf == call.intf) &&
         (fault.rule.empty() || (call.rule != nullptr && nameOfRule(*call.rule) == fault.rule));
}

}  // namespace

std::string nameOfRule(PolicyMap::AclRuleKey const& rule) {
  std::string name = rule.aclName().stdString();
  name.append(name.empty() ? "" : ":").append(std::to_string(rule.seqno()));
  return name;
}

std::string describe(HelperCall const& call) {
  std::ostringstream out;
  char const* separator = "";
  auto const add = [&](auto const& value) { out << std::exchange(separator, " ") << value; };
  out << call.operation << "(";
  if (call.policy != nullptr && *call.policy) {
    add(nameOf((*call.policy)->policyKey()));
  }
  if (call.option) {
    add(toText(*call.option));
  }
  if (call.intf) {
    add(call.intf->name());
  }
  if (call.classData != nullptr && *call.classData) {
    add((*call.classData)->name());
  }
  if (call.rule != nullptr) {
    add(nameOfRule(*call.rule));
  }
  out << ")";
  return out.str();
}

RunningFault::RunningFault(PlannedFault fault)
    : state_{std::move(fault), 0, {}}, random_(state_.fault.occurrence.seed) {}

bool RunningFault::counts() {
  ++state_.selected;
  return isDue() && !(state_.fault.once && !state_.met.empty());
}

bool RunningFault::hasEnded() const {
  Occurrence const& occurrence = state_.fault.occurrence;
  bool const counted =
      occurrence.kind == Occurrence::Kind::nth || occurrence.kind == Occurrence::Kind::first;
  return (state_.fault.once && !state_.met.empty()) ||
         (counted && state_.selected >= occurrence.number);
}

bool RunningFault::isDue() {
  Occurrence const& occurrence = state_.fault.occurrence;
  std::uint64_t const call = state_.selected;
  switch (occurrence.kind) {
  case Occurrence::Kind::all: return true;
  case Occurrence::Kind::nth: return call == occurrence.number;
  case Occurrence::Kind::first: return call <= occurrence.number;
  case Occurrence::Kind::from: return call >= occurrence.number;
  case Occurrence::Kind::every: return call % occurrence.number == 0;
  case Occurrence::Kind::probability: break;
  }
  // Not a distribution of the library, whose results differ between implementations.
  constexpr unsigned bits = 53;
  constexpr double steps = 9007199254740992.0;  // 2^53
  return static_cast<double>(random_() >> (64 - bits)) / steps < occurrence.probability;
}

ActivePlan::ActivePlan(FaultPlan plan) : capacity_(plan.capacity) {
  scripts_.reserve(plan.scripts.size());
  for (FaultPlan::Script& script : plan.scripts) {
    std::vector<RunningFault>& running = scripts_.emplace_back();
    running.reserve(script.size());
    for (PlannedFault& fault : script) {
      running.emplace_back(std::move(fault));
    }
  }
}

void ActivePlan::clear() {
  cleared_ = true;
  capacity_ = {};
}

void ActivePlan::end() {
  if (std::function<void()> const onEnd = std::exchange(onEnd_, {})) {
    onEnd();
  }
}

std::vector<RunningFault*> ActivePlan::dueFor(HelperCall const& call, bool isAsynchronous) {
  ++calls_[call.operation];
  std::vector<RunningFault*> due;
  for (std::vector<RunningFault>& script : scripts_) {
    auto const current = std::find_if(script.begin(), script.end(),
                                      [](RunningFault const& fault) { return !fault.hasEnded(); });
    if (cleared_ || current == script.end() ||
        !selects(current->state().fault, call, isAsynchronous)) {
      continue;
    }
    if (current->counts()) {
      due.push_back(&*current);
    }
  }
  return due;
}

std::vector<FaultState> ActivePlan::states() const {
  std::vector<FaultState> states;
  for (std::vector<RunningFault> const& script : scripts_) {
    std::transform(script.begin(), script.end(), std::back_inserter(states),
                   [](RunningFault const& fault) { return fault.state(); });
  }
  return states;
}

std::string ActivePlan::callsMade() const {
  std::string text;
  for (auto const& [operation, count] : calls_) {
    text.append(text.empty() ? "" : ", ").append(operation).append(" ");
    text.append(std::to_string(count));
  }
  return text.empty() ? "nothing" : text;
}

}  // namespace PolicyMapTestKit
