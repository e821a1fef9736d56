// SPDX-License-Identifier: Apache-2.0
#include "testkit/sweep/Sweep.h"

#include "testkit/Assertions.h"
#include "testkit/Difference.h"
#include "testkit/Printing.h"
#include "testkit/Statuses.h"
#include "testkit/sweep/StatusWatch.h"

#include <Kor/Assert.h>

#include <algorithm>
#include <exception>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <stdexcept>
#include <utility>

namespace PolicyMapTestKit {

namespace {

// Longer than the longest wait between two tries, and than that for a result.
constexpr std::chrono::seconds patience{200};
// While a fault lasts: some tries.
constexpr std::chrono::seconds whileItLasts{5};
constexpr std::size_t mostFindings = 20;  // of one case

// Failed assertions as findings of the case that runs. There is one at a time.
class CaughtAssertions {
 public:
  CaughtAssertions() : before_(Kor::assertionHandlerIs(&handle)) { texts().clear(); }
  CaughtAssertions(CaughtAssertions const&) = delete;
  CaughtAssertions& operator=(CaughtAssertions const&) = delete;
  ~CaughtAssertions() { Kor::assertionHandlerIs(before_); }

  static std::vector<std::string>& texts() {
    thread_local std::vector<std::string> all;
    return all;
  }

 private:
  static void handle(Kor::AssertionFailure const& failure) {
    texts().emplace_back(AssertionFailed(failure).what());
    throw AssertionFailed(failure);
  }

  Kor::AssertionHandler before_;
};

// What must be equal after all faults: the policies that are created, without their history.
Snapshot withoutHistory(Snapshot const& snapshot) {
  std::vector<Record> records;
  for (Record const& record : snapshot) {
    bool const isEmpty = !record.created && record.rules.empty() && record.interfaces.empty();
    if (!isEmpty) {
      records.push_back(record);
      records.back().createCount = 1;
      records.back().commitCount = 1;
      records.back().beginUpdateActionCount = 0;
      records.back().endUpdateActionCount = 0;
    }
  }
  return Snapshot(std::move(records));
}

std::string nameOf(StatusRow const& row) {
  return "status of " + row.policy + "/" + row.direction + " " + toText(row.option);
}

// What happens to the calls of an operation.
std::vector<PlannedFault> waysToFail(std::string const& operation, AnswerMode mode) {
  std::vector<PlannedFault> ways;
  auto const add = [&](FaultEffect effect, double seconds = 0) {
    ways.push_back({.operations = {operation}, .effect = effect, .seconds = seconds});
  };
  add(FaultEffect::throws);
  if (operation == "getCountForRule") {
    return ways;
  }
  add(FaultEffect::before);
  add(FaultEffect::after);
  if (hasResult(operation) && mode != AnswerMode::synchronous) {
    constexpr double duringSteps = 2;
    constexpr double tooLate = 30.5;
    add(FaultEffect::drop);
    add(FaultEffect::delay, duringSteps);
    add(FaultEffect::delay, tooLate);
  }
  return ways;
}

}  // namespace

// One run of the scenario in a lab of its own.
class Sweep::Run {
 public:
  Run(LabOptions const& options, SweepCase const& which)
      : before_(findingHandlerIs({})), lab_(options), watch_(lab_.status()) {
    for (PlannedFault const& fault : which.faults) {
      scopes_.push_back(lab_.plan(fault));
    }
  }
  Run(Run const&) = delete;
  Run& operator=(Run const&) = delete;
  ~Run() {
    scopes_.clear();
    findingHandlerIs(std::move(before_));
  }

  void perform(Scenario const& scenario) {
    scenario(lab_);
    lab_.advance(whileItLasts);
    for (FaultScope const& scope : scopes_) {
      injected_ += scope.met().size();
    }
    checkStatuses();
    lab_.clearFaults();
    lab_.advance(patience);
    checkStatuses();
  }

  // The policies that the core refuses, with the reasons.
  [[nodiscard]] std::vector<std::string> refusals() const {
    std::vector<std::string> refusals;
    for (StatusRow const& row : readStatuses(lab_)) {
      if (!row.error.empty() && row.operation.empty()) {
        refusals.push_back(nameOf(row) + ": " + row.error);
      }
    }
    return refusals;
  }

  void compare(Snapshot const& expected, std::vector<std::string> const& expectedRefusals) {
    if (refusals() != expectedRefusals) {
      find("other policies are refused than without the fault");
    }
    for (Change const& change : difference(expected, records())) {
      find(change.describe());
    }
    for (Record const& record : lab_.snapshot()) {
      if (record.created && (record.dirty || record.createCount == 0 || record.commitCount == 0)) {
        find(record.name() + " is created, but not committed, or not counted");
      }
    }
    if (lab_.eventLoop().pending() != 0) {
      find("something is still pending after " + std::to_string(patience.count()) + " s");
    }
    compareStatuses();
  }

  void detachAll() {
    {
      Kor::EventLoop::Scope const scope(lab_.eventLoop());
      lab_.policyMaps()->servicePolicyDelAll();
    }
    lab_.settle();
    lab_.advance(patience);
    for (Record const& record : records()) {
      find(record.name() + " is left when everything is detached");
    }
    for (StatusRow const& row : readStatuses(lab_)) {
      find(nameOf(row) + " is left when everything is detached");
    }
  }

  void takeFindings() {
    std::for_each(watch_.irregular().begin(), watch_.irregular().end(),
                  [this](std::string const& text) { find(text); });
    for (Finding const& finding : lab_.findings()) {
      find(toText(finding));
    }
    for (std::string const& text : CaughtAssertions::texts()) {
      find(text);
    }
  }

  void find(std::string text) {
    if (findings_.size() < mostFindings) {
      findings_.push_back(std::move(text));
    }
  }

  [[nodiscard]] Snapshot records() const { return withoutHistory(lab_.snapshot()); }
  [[nodiscard]] Journal const& journal() const { return lab_.journal(); }
  [[nodiscard]] std::uint64_t injected() const { return injected_; }
  [[nodiscard]] std::vector<std::string> const& findings() const { return findings_; }

 private:
  // Every record that is created has a status that says so, and no other has.
  void compareStatuses() {
    Snapshot const snapshot = records();
    std::map<std::string, Record const*> created;
    for (Record const& record : snapshot) {
      created.emplace("status of " + record.name(), &record);
    }
    for (StatusRow const& row : readStatuses(lab_)) {
      auto const found = created.find(nameOf(row));
      bool const isCreated = found != created.end();
      if (row.programmed != isCreated) {
        find(nameOf(row) +
             (isCreated ? ": not programmed, which it is" : ": programmed, which it is not"));
      }
      if (isCreated && (!row.error.empty() || row.interfaces != found->second->interfaces ||
                        !row.timeProgrammed)) {
        find(nameOf(row) + ": not that of a policy that is programmed at its interfaces" +
             (row.error.empty() ? "" : ": " + row.error));
      }
      created.erase(nameOf(row));
    }
    for (auto const& [name, record] : created) {
      find(name + " does not exist");
    }
    compareClasses(snapshot);
  }

  // A class is programmed exactly if a record has rules of it.
  void compareClasses(Snapshot const& snapshot) {
    std::set<std::string> programmed;
    for (Record const& record : snapshot) {
      for (RuleRecord const& rule : record) {
        programmed.insert(record.policy + "/" + record.direction + " " +
                          rule.key.className().stdString());
      }
    }
    for (auto const& policy : lab_.status()->policyMapStatusIteratorConst()) {
      for (auto const& each : policy.value()->classMapStatusIteratorConst()) {
        std::string const name = describe(policy.key()) + " " + each.key().stdString();
        if (each.value()->programmed() != programmed.contains(name)) {
          find("status of class " + name + ": not what the records have");
        }
      }
    }
  }

  // What is not programmed has neither time nor interfaces.
  void checkStatuses() {
    for (auto const& policy : lab_.status()->policyMapStatusIteratorConst()) {
      PolicyMap::PolicyMapStatus const& status = *policy.value();
      for (PolicyMap::ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
        if (!status.programmed(option) &&
            (status.korTimeProgrammed(option) || !status.intfs(option).empty())) {
          find("status of " + describe(policy.key()) + " " + toText(option) +
               ": time or interfaces of what is not programmed");
        }
      }
    }
  }

  FindingHandler before_;
  Lab lab_;
  StatusWatch watch_;
  std::vector<FaultScope> scopes_;
  std::uint64_t injected_ = 0;
  std::vector<std::string> findings_;
};

Sweep::Sweep(Scenario scenario, SweepOptions options)
    : scenario_(std::move(scenario)), options_(std::move(options)) {
  if (options_.shard == 0 || options_.shard > options_.shards) {
    throw std::invalid_argument("shard " + std::to_string(options_.shard) + " of " +
                                std::to_string(options_.shards));
  }
  if (options_.modes.empty()) {
    throw std::invalid_argument("a sweep in no mode");
  }
  {
    CaughtAssertions const assertions;
    Run run(optionsFor(AnswerMode::synchronous), {});
    run.perform(scenario_);
    expected_ = run.records();
    refusals_ = run.refusals();
  }
  std::vector<SweepCase> all;
  for (AnswerMode const mode : options_.modes) {
    all.push_back({mode, {}});
  }
  for (AnswerMode const mode : options_.modes) {
    addCases(mode, all);
  }
  if (options_.pairs != 0) {
    choosePairs(all);
  }
  for (std::size_t i = options_.shard - 1; i < all.size(); i += options_.shards) {
    cases_.push_back(std::move(all[i]));
  }
}

Sweep::~Sweep() = default;

LabOptions Sweep::optionsFor(AnswerMode mode) const {
  LabOptions options = options_.lab;
  options.async = mode == AnswerMode::asynchronous;
  options.pseudoAsync = mode == AnswerMode::pseudoAsynchronous;
  options.asyncDelay = options.async ? std::optional(0.0) : std::nullopt;
  return options;
}

// A fault reaches the calls of the run without it: until the fault, all is the same.
void Sweep::addCases(AnswerMode mode, std::vector<SweepCase>& all) const {
  std::map<std::string, std::uint64_t> calls;
  {
    CaughtAssertions const assertions;
    LabOptions options = optionsFor(mode);
    options.journal = SIZE_MAX;
    Run run(options, {});
    run.perform(scenario_);
    for (JournalEntry const& entry : run.journal().calls()) {
      ++calls[std::string(entry.operation)];
    }
  }
  // hwInit is called before a plan can begin.
  for (std::string const& operation : operationNames()) {
    for (std::uint64_t call = 1; operation != "hwInit" && call <= calls[operation]; ++call) {
      for (PlannedFault fault : waysToFail(operation, mode)) {
        for (Occurrence const& occurrence : {Occurrence::nth(call), Occurrence::from(call)}) {
          fault.occurrence = occurrence;
          all.push_back({mode, {fault}});
        }
      }
    }
  }
}

// Pairs of faults of one mode.
void Sweep::choosePairs(std::vector<SweepCase>& all) const {
  std::erase_if(all, [](SweepCase const& each) { return each.faults.empty(); });
  std::vector<SweepCase> pairs;
  std::mt19937_64 random(options_.seed);
  auto const any = [&] { return all[static_cast<std::size_t>(random() % all.size())]; };
  // With too few cases there may be no pair.
  for (std::size_t tries = 100 * options_.pairs;
       !all.empty() && pairs.size() != options_.pairs && tries != 0; --tries) {
    SweepCase pair = any();
    SweepCase const other = any();
    if (other.mode == pair.mode && other != pair) {
      pair.faults.push_back(other.faults.front());
      pairs.push_back(std::move(pair));
    }
  }
  all = std::move(pairs);
}

SweepResult Sweep::run(SweepCase const& which) const {
  // Nearly all cases need no journal, which takes time.
  SweepResult result = run(which, 0);
  return result.findings.empty() ? result : run(which, LabOptions().journal);
}

SweepResult Sweep::run(SweepCase const& which, std::size_t journal) const {
  CaughtAssertions const assertions;
  LabOptions options = optionsFor(which.mode);
  options.journal = journal;
  Run run(options, which);
  try {
    run.perform(scenario_);
    run.compare(expected_, refusals_);
    run.detachAll();
  } catch (std::exception const& error) {
    run.find(std::string("the scenario throws: ") + error.what());
  }
  run.takeFindings();
  if (!which.faults.empty() && run.injected() == 0) {
    run.find("the fault was not met");
  }
  SweepResult result{which, run.injected(), run.findings(), {}};
  if (!result.findings.empty()) {
    result.journal = run.journal().lines();
  }
  return result;
}

SweepReport Sweep::runAll(std::function<void()> const& onCase) const {
  using Clock = std::chrono::steady_clock;
  Clock::time_point const start = Clock::now();
  SweepReport report;
  report.results.reserve(cases_.size());
  for (SweepCase const& which : cases_) {
    report.results.push_back(run(which));
    if (onCase) {
      onCase();
    }
  }
  report.seconds = std::chrono::duration<double>(Clock::now() - start).count();
  return report;
}

SweepReport sweep(Scenario scenario, SweepOptions options) {
  return Sweep(std::move(scenario), std::move(options)).runAll();
}

}  // namespace PolicyMapTestKit
