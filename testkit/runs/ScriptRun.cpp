// SPDX-License-Identifier: Apache-2.0
#include "testkit/runs/ScriptRun.h"

#include "testkit/Assertions.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace PolicyMapTestKit {

namespace {

constexpr std::size_t mostIrregularities = 20;

std::vector<std::string>& caughtAssertions() {
  thread_local std::vector<std::string> all;
  return all;
}

[[noreturn]] void catchAssertion(Kor::AssertionFailure const& failure) {
  caughtAssertions().emplace_back(AssertionFailed(failure).what());
  throw AssertionFailed(failure);
}

}  // namespace

CaughtAssertions::CaughtAssertions() : before_(Kor::assertionHandlerIs(&catchAssertion)) {
  caughtAssertions().clear();
}

CaughtAssertions::~CaughtAssertions() {
  Kor::assertionHandlerIs(before_);
  caughtAssertions().clear();
}

std::vector<std::string> const& CaughtAssertions::texts() {
  return caughtAssertions();
}

ScriptRun::ScriptRun(LabOptions const& options, Text::Reading reading)
    : options_(options),
      reading_(reading),
      lab_(options),
      watch_(lab_.status()),
      somethingFails_(options.plan != FaultPlan() || !options.faults.empty()) {}

void ScriptRun::perform(Step const& step) {
  somethingFails_ = somethingFails_ || step.kind == Step::Kind::inject;
  if (step.kind == Step::Kind::faults) {
    plan(parseFaultPlan(Text::SourceText("faults", step.text)));
  } else if (step.kind == Step::Kind::end) {
    endPlan(step.text);
  } else if (step.kind == Step::Kind::check) {
    recover();
    check(referenceOf(lab_.configuration().settings(), options_));
  } else {
    PolicyMapTestKit::perform(lab_, step, reading_);
  }
}

void ScriptRun::endPlan(std::string const& text) {
  if (text.empty()) {
    end();
    return;
  }
  std::string const wanted = toText(parseFaultPlan(Text::SourceText("end", text)));
  auto const found = std::find_if(begun_.rbegin(), begun_.rend(),
                                  [&](BegunPlan const& each) { return each.text == wanted; });
  if (found == begun_.rend()) {
    throw std::invalid_argument("end: no such fault plan has begun: " + wanted);
  }
  injected_ += found->scope.met().size();
  begun_.erase(std::next(found).base());
}

bool ScriptRun::tryTo(Step const& step) {
  try {
    perform(step);
    return true;
  } catch (std::exception const& error) {
    find({Irregularity::Kind::exception, toText(step) + " throws: " + error.what()});
    return false;
  }
}

void ScriptRun::recover() {
  lab_.advance(whileFaultsLast);
  for (Irregularity& each : checkStatuses(lab_)) {
    find(std::move(each));
  }
  end();
  PolicyMapTestKit::recover(lab_, options_);
}

void ScriptRun::check(Reference const& reference) {
  for (Irregularity& each : checkStatuses(lab_)) {
    find(std::move(each));
  }
  for (Irregularity& each : compare(lab_, reference)) {
    find(std::move(each));
  }
  checkCounts();
}

// An update that fails at its end need not be counted twice. What is not created does not change.
void ScriptRun::checkCounts() {
  bool const nothingFails = !somethingFails_ && injected() == 0;
  for (Record const& record : lab_.snapshot(WithRules::no)) {
    auto const before = records_.find(record.name());
    if (before != records_.end() && !record.created && !before->second.created &&
        record.createCount == before->second.createCount && record != before->second) {
      find({Irregularity::Kind::record,
            record.name() + " has changed, although it was not created again"});
    }
    records_.insert_or_assign(record.name(), record);
    if (nothingFails && record.beginUpdateActionCount != record.endUpdateActionCount) {
      find({Irregularity::Kind::record,
            record.name() + ": " + std::to_string(record.beginUpdateActionCount) +
                " updates of actions have begun, " + std::to_string(record.endUpdateActionCount) +
                " have ended"});
    }
  }
}

void ScriptRun::end() {
  injected_ = injected();
  begun_.clear();
  lab_.endPlans();
}

std::uint64_t ScriptRun::injected() const {
  std::uint64_t injected = injected_;
  for (BegunPlan const& each : begun_) {
    injected += each.scope.met().size();
  }
  return injected;
}

void ScriptRun::find(Irregularity irregularity) {
  if (found_.size() < mostIrregularities &&
      std::find(found_.begin(), found_.end(), irregularity) == found_.end()) {
    found_.push_back(std::move(irregularity));
  }
}

std::vector<Irregularity> ScriptRun::irregularities() const {
  std::vector<Irregularity> all = found_;
  auto const add = [&](Irregularity::Kind kind, std::string const& text) {
    if (all.size() < mostIrregularities) {
      all.push_back({kind, text});
    }
  };
  for (std::string const& text : watch_.irregular()) {
    add(Irregularity::Kind::notification, text);
  }
  for (Finding const& finding : lab_.findings()) {
    add(Irregularity::Kind::finding, toText(finding));
  }
  for (std::string const& text : caughtAssertions()) {
    add(Irregularity::Kind::assertion, text);
  }
  return all;
}

}  // namespace PolicyMapTestKit
