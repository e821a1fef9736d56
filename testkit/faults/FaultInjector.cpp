// SPDX-License-Identifier: Apache-2.0
#include "testkit/faults/FaultInjector.h"

#include "testkit/faults/FaultWords.h"

#include <algorithm>
#include <utility>

namespace PolicyMapTestKit {

namespace {

// The smaller one of two limits, of which each may be absent.
void limitTo(std::optional<std::uint64_t>& limit, std::optional<std::uint64_t> const& other) {
  if (other && (!limit || *other < *limit)) {
    limit = other;
  }
}

}  // namespace

InjectedFault::~InjectedFault() = default;

FaultInjector::PlanPtr FaultInjector::add(FaultPlan plan) {
  check(plan);
  plans_.push_back(std::make_shared<ActivePlan>(std::move(plan)));
  plans_.back()->onEndIs([this, plan = plans_.back().get()] { end(*plan); });
  limitAgain();
  return plans_.back();
}

void FaultInjector::end(ActivePlan& plan) {
  auto const found = std::find_if(plans_.begin(), plans_.end(),
                                  [&](PlanPtr const& each) { return each.get() == &plan; });
  PlanPtr const ended = std::move(*found);
  plans_.erase(found);
  limitAgain();
  for (FaultState const& state : ended->states()) {
    if (isUnmet(state) && findings_ != nullptr) {
      findings_->add({Finding::Kind::unmetFault,
                      toText(state.fault) + ": it selected " + std::to_string(state.selected) +
                          (state.selected == 1 ? " call" : " calls") + "; called were " +
                          ended->callsMade(),
                      false});
    }
  }
}

void FaultInjector::endAll() {
  while (!plans_.empty()) {
    PlanPtr const plan = plans_.front();
    plan->end();
  }
}

void FaultInjector::clear() {
  for (PlanPtr const& plan : plans_) {
    plan->clear();
  }
  limitAgain();
}

std::vector<FaultState> FaultInjector::states() const {
  std::vector<FaultState> all;
  for (PlanPtr const& plan : plans_) {
    std::vector<FaultState> states = plan->states();
    std::move(states.begin(), states.end(), std::back_inserter(all));
  }
  return all;
}

void FaultInjector::limitAgain() {
  Capacity all;
  for (PlanPtr const& plan : plans_) {
    Capacity const& each = plan->capacity();
    for (FaultWords::Limit const& limit : FaultWords::limits) {
      limitTo(all.*limit.limit, each.*limit.limit);
    }
  }
  if (all.unlimited()) {
    usage_.reset();
  } else if (usage_) {
    usage_->capacityIs(all);
  } else {
    usage_.emplace(helper_, all);
  }
}

FaultInjector::Injection FaultInjector::injectionFor(HelperCall const& call, bool isAsynchronous) {
  Injection injection;
  for (PlanPtr const& plan : plans_) {
    for (RunningFault* const due : plan->dueFor(call, isAsynchronous)) {
      if (!injection.happens()) {
        injection = begun(due->state().fault, call);
      }
      // What a call would fail for, too, has been met.
      due->isMet({injected_, loop_.now(), describe(call), injection.text});
    }
  }
  if (usage_ && !injection.happens()) {
    std::string const limit = usage_->exceeded(call);
    if (!limit.empty()) {
      injection = {FaultEffect::before, 0, "no room, " + limit + ": " + nextText(call)};
    }
  }
  return injection;
}

FaultInjector::Injection FaultInjector::begun(PlannedFault const& fault, HelperCall const& call) {
  Injection injection{fault.effect, fault.seconds, fault.text};
  std::string const usual = nextText(call);
  if (fault.text.empty() && !FaultWords::isAboutResults(fault.effect)) {
    injection.text = usual;
  }
  return injection;
}

std::string FaultInjector::nextText(HelperCall const& call) {
  return "injected #" + std::to_string(++injected_) + " at " + describe(call);
}

}  // namespace PolicyMapTestKit
