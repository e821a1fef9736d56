// SPDX-License-Identifier: Apache-2.0
#include "testkit/faults/Results.h"

#include <utility>

namespace PolicyMapTestKit {

Results::Results(Deliver deliver)
    : loop_(Kor::EventLoop::current()),
      deliver_(std::move(deliver)),
      timer_([this] { deliverDue(); }) {}

void Results::expect(HelperCall const& call, FaultInjector::Injection const& injection) {
  bool const isLate = injection.effect == FaultEffect::delay;
  expected_ =
      Expected{injection.effect == FaultEffect::hold ? describe(call) : std::string(),
               injection.effect, isLate ? injection.seconds : delay_, Kor::String(injection.text)};
  putAway_ = false;
}

void Results::accepted(Kor::String const& error) {
  if (expected_) {
    putAway(error);
  }
}

bool Results::putAway(Kor::String const& error) {
  Kor::String const& text = expected_->text.empty() ? error : expected_->text;
  if (expected_->effect == FaultEffect::hold) {
    ++heldSoFar_;
    held_.emplace(heldSoFar_, HeldResult{heldSoFar_, loop_.now(), expected_->call, text});
  } else if (expected_->effect != FaultEffect::drop) {
    if (!expected_->delay) {
      return false;
    }
    bool const twice = expected_->effect == FaultEffect::duplicate;
    delayed_.emplace(loop_.now() + *expected_->delay, Delayed{text, twice});
    timer_.scheduleIn(delayed_.begin()->first - loop_.now());
  }
  expected_.reset();
  putAway_ = true;
  return true;
}

void Results::arrived(PolicyMap::AsyncOperationResult const& result) {
  if (putAway_) {
    return;
  }
  if (!expected_) {
    deliver_(result);
    return;
  }
  if (putAway(result.error())) {
    return;
  }
  Expected const expected = *std::exchange(expected_, std::nullopt);
  PolicyMap::AsyncOperationResult const changed(
      expected.text.empty() ? result.error() : expected.text, result.time());
  deliver_(changed);
  if (expected.effect == FaultEffect::duplicate) {
    deliver_(changed);
  }
}

void Results::deliverDue() {
  while (!delayed_.empty() && delayed_.begin()->first <= loop_.now()) {
    Delayed const result = delayed_.begin()->second;
    delayed_.erase(delayed_.begin());
    PolicyMap::AsyncOperationResult const delivered(result.error, loop_.now());
    deliver_(delivered);
    if (result.twice) {
      deliver_(delivered);
    }
  }
  if (!delayed_.empty()) {
    timer_.scheduleIn(delayed_.begin()->first - loop_.now());
  }
}

std::vector<HeldResult> Results::held() const {
  std::vector<HeldResult> all;
  all.reserve(held_.size());
  for (auto const& [number, result] : held_) {
    all.push_back(result);
  }
  return all;
}

bool Results::release(std::uint64_t number) {
  auto const found = held_.find(number);
  if (found == held_.end()) {
    return false;
  }
  Kor::String const error = found->second.error;
  held_.erase(found);
  deliver_(PolicyMap::AsyncOperationResult(error, loop_.now()));
  return true;
}

void Results::end() {
  delay_.reset();
  expected_.reset();
  held_.clear();
  delayed_.clear();
  timer_.cancel();
}

}  // namespace PolicyMapTestKit
