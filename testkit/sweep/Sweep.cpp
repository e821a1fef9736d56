// SPDX-License-Identifier: Apache-2.0
#include "testkit/sweep/Sweep.h"

#include "testkit/runs/ScriptRun.h"

#include <algorithm>
#include <exception>
#include <map>
#include <random>
#include <stdexcept>
#include <utility>

namespace PolicyMapTestKit {

namespace {

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
  Run(LabOptions const& options, Scenario const& scenario) : run_(options), scenario_(scenario) {}

  // Calls `beforeLoad` before each load but the first, with the number of those before.
  void perform(std::function<void(std::size_t loads)> const& beforeLoad) {
    lab().onLoadIs([&, loads = std::size_t{0}](Text::Settings const& /*next*/) mutable {
      if (loads++ != 0) {
        beforeLoad(loads - 1);
      }
    });
    scenario_(lab());
    lab().onLoadIs({});
  }

  void fail(SweepCase const& which) {
    for (PlannedFault fault : which.faults) {
      fault.optional = true;  // a case of faults that were not met is a finding of its own
      run_.plan(fault);
    }
  }

  // True if nothing is left and everything can be put back with attachAll().
  bool detachAll() {
    lab().detachAll();
    bool const isByText = lab().policyMaps()->servicePolicys() == 0;
    {
      Kor::EventLoop::Scope const scope(lab().eventLoop());
      lab().policyMaps()->servicePolicyDelAll();
    }
    lab().settle();
    run_.recover();
    Reference const left = referenceOf(lab());
    for (Record const& record : left.records) {
      find(Irregularity::Kind::record, record.name() + " is left when everything is detached");
    }
    for (std::string const& status : left.statuses) {
      find(Irregularity::Kind::status,
           "status of " + status + ", left when everything is detached");
    }
    return isByText && left.records.empty() && left.statuses.empty();
  }

  // Ends all faults, and compares what is there when all is repaired.
  void check(Reference const& reference, SweepOptions const& options) {
    run_.recover();
    run_.check(reference);
    if (options.look) {
      for (std::string& text : options.look(lab())) {
        find(Irregularity::Kind::other, std::move(text));
      }
    }
  }

  void find(Irregularity::Kind kind, std::string text) { run_.find({kind, std::move(text)}); }
  [[nodiscard]] ScriptRun& script() { return run_; }
  [[nodiscard]] Lab& lab() { return run_.lab(); }

 private:
  ScriptRun run_;
  Scenario const& scenario_;
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
  findReferences();
  std::vector<SweepCase> all;
  for (AnswerMode const mode : options_.modes) {
    all.push_back({mode, {}, false});
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

LabOptions optionsFor(LabOptions options, AnswerMode mode) {
  options.async = mode == AnswerMode::asynchronous;
  options.pseudoAsync = mode == AnswerMode::pseudoAsynchronous;
  options.asyncDelay = options.async ? std::optional(0.0) : std::nullopt;
  return options;
}

void Sweep::findReferences() {
  CaughtAssertions const assertions;
  LabOptions const options = optionsFor(options_.lab, AnswerMode::synchronous);
  Run run(options, scenario_);
  auto const add = [&] {
    run.script().recover();
    references_.push_back(options_.compareWithNewLab
                              ? referenceOf(run.lab().configuration().settings(), options)
                              : referenceOf(run.lab()));
  };
  run.perform([&](std::size_t /*loads*/) { add(); });
  add();
}

std::map<std::string, Sweep::Calls> Sweep::countCalls(AnswerMode mode) const {
  CaughtAssertions const assertions;
  LabOptions options = optionsFor(options_.lab, mode);
  options.journal = SIZE_MAX;
  Run run(options, scenario_);
  std::uint64_t lastLoad = 0;
  run.perform([&](std::size_t /*loads*/) { lastLoad = run.lab().journal().next(); });
  run.script().recover();
  std::map<std::string, Calls> calls;
  for (JournalEntry const& entry : run.lab().journal().calls()) {
    Calls& each = calls[std::string(entry.operation)];
    ++each.all;
    each.beforeLastLoad += entry.number < lastLoad ? 1 : 0;
  }
  return calls;
}

// A fault reaches the calls of the run without it: until the fault, all is the same.
void Sweep::addCases(AnswerMode mode, std::vector<SweepCase>& all) const {
  std::map<std::string, Calls> calls = countCalls(mode);
  for (std::string const& operation : operationNames()) {
    Calls const count = calls[operation];
    // hwInit is called before a plan can begin.
    for (std::uint64_t call = 1; operation != "hwInit" && call <= count.all; ++call) {
      for (PlannedFault fault : waysToFail(operation, mode)) {
        for (Occurrence const& occurrence : {Occurrence::nth(call), Occurrence::from(call)}) {
          fault.occurrence = occurrence;
          all.push_back({mode, {fault}, false});
          if (call <= count.beforeLastLoad) {
            all.push_back({mode, {fault}, true});
          }
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
    if (other.mode == pair.mode && other.early == pair.early && other != pair) {
      pair.faults.push_back(other.faults.front());
      pairs.push_back(std::move(pair));
    }
  }
  all = std::move(pairs);
}

SweepResult Sweep::run(SweepCase const& which) const {
  // Nearly all cases need no journal, which takes time.
  SweepResult result = run(which, options_.journals ? LabOptions().journal : 0);
  return result.findings.empty() || options_.journals ? result : run(which, LabOptions().journal);
}

SweepResult Sweep::run(SweepCase const& which, std::size_t journal) const {
  CaughtAssertions const assertions;
  LabOptions options = optionsFor(options_.lab, which.mode);
  options.journal = journal;
  Run run(options, scenario_);
  ScriptRun& script = run.script();
  SweepResult result{which, 0, 0, {}, {}};
  try {
    run.fail(which);
    run.perform([&](std::size_t loads) {
      if (which.early && result.recovered == 0 && script.injected() != 0) {
        result.recovered = loads;
        run.check(references_[loads - 1], options_);
      }
    });
    run.check(references_.back(), options_);
    if (run.detachAll()) {
      run.lab().attachAll();
      run.check(references_.back(), options_);
    }
  } catch (std::exception const& error) {
    run.find(Irregularity::Kind::exception, std::string("the scenario throws: ") + error.what());
  }
  result.injected = script.injected();
  if (!which.faults.empty() && result.injected == 0) {
    run.find(Irregularity::Kind::unmet, "the fault was not met");
  }
  result.findings = script.irregularities();
  if (!result.findings.empty() || options_.journals) {
    result.journal = run.lab().journal().lines();
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
