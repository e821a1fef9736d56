// SPDX-License-Identifier: Apache-2.0
#include "testkit/runs/RandomWalk.h"

#include "testkit/runs/RandomEdits.h"

#include <array>
#include <random>
#include <stdexcept>
#include <utility>

namespace PolicyMapTestKit {

namespace {

constexpr std::array effects{FaultEffect::before, FaultEffect::after, FaultEffect::throws,
                             FaultEffect::drop, FaultEffect::delay};

class Walk {
 public:
  explicit Walk(WalkOptions const& options)
      : random_(options.seed),
        options_(labOptions(options)),
        run_(options_, options.begin.reading) {
    result_.run.script = {options_, options.begin.reading, {}};
    for (Step const& step : options.begin.steps) {
      if (step.kind == Step::Kind::load) {
        edits_.add(step.text);
      }
      perform(step);
    }
    if (edits_.empty()) {
      throw std::invalid_argument("a walk needs policy text to edit");
    }
  }

  WalkResult perform(std::size_t steps, std::function<void()> const& onStep) {
    for (; result_.steps != steps && run_.irregularities().empty(); ++result_.steps) {
      step();
      if (onStep) {
        onStep();
      }
    }
    for (Step::Kind const kind : {Step::Kind::check, Step::Kind::detach, Step::Kind::check,
                                  Step::Kind::attach, Step::Kind::check}) {
      if (run_.irregularities().empty()) {
        tryTo({.kind = kind});
      }
    }
    result_.run.found = run_.irregularities();
    result_.injected = run_.injected();
    return std::move(result_);
  }

 private:
  LabOptions labOptions(WalkOptions const& walk) {
    LabOptions options = walk.begin.options;
    options.journal = 0;
    if (!walk.keepMode) {
      // Edits also come while a result is waited for.
      constexpr std::array<std::optional<double>, 4> delays{std::nullopt, std::nullopt, 0.0, 0.1};
      std::uint64_t const mode = random_() % delays.size();
      options.asyncDelay = delays[mode];
      options.async = options.asyncDelay.has_value();
      options.pseudoAsync = mode == 1;
    }
    return options;
  }

  std::uint64_t below(std::uint64_t end) { return random_() % end; }

  void perform(Step const& step) {
    result_.run.script.steps.push_back(step);
    run_.perform(step);
  }
  void tryTo(Step const& step) {
    result_.run.script.steps.push_back(step);
    run_.tryTo(step);
    result_.checks += step.kind == Step::Kind::check ? 1U : 0U;
  }

  void step() {
    constexpr std::uint64_t all = 20;
    std::uint64_t const what = below(all);
    constexpr std::uint64_t edits = 10;
    constexpr std::uint64_t faults = 14;
    constexpr std::uint64_t times = 17;
    if (what < edits) {
      edit();
    } else if (what < faults) {
      tryTo(anyFault());
      ++result_.faults;
    } else if (what < times) {
      constexpr std::array seconds{0.5, 2.0, 11.0, 31.0};
      tryTo(Step::advance(seconds[below(seconds.size())]));
    } else {
      tryTo(Step::check());
    }
  }

  // Up to three lines at once.
  void edit() {
    constexpr std::uint64_t most = 3;
    std::string text;
    for (std::uint64_t lines = 1 + below(most); lines != 0; --lines) {
      text += edits_.next(random_);
    }
    Step const step = Step::load("edit " + std::to_string(result_.steps + 1), text);
    result_.run.script.steps.push_back(step);
    try {
      run_.perform(step);
      ++result_.edits;
    } catch (Text::InputError const&) {
      result_.run.script.steps.pop_back();
      ++result_.refused;
    } catch (std::exception const& error) {
      run_.find({Irregularity::Kind::exception, toText(step) + " throws: " + error.what()});
    }
  }

  Step anyFault() {
    constexpr std::uint64_t ways = 5;
    if (below(ways) != 0) {
      return Step::faults(toText(fault()));
    }
    std::vector<std::string> const names = faultNames();
    return {.kind = Step::Kind::inject, .text = names[below(names.size())] + "=injected"};
  }

  PlannedFault fault() {
    std::vector<std::string> const operations = operationNames();
    constexpr std::uint64_t calls = 6;
    PlannedFault fault;
    do {
      fault.operations = {operations[below(operations.size())]};
    } while (fault.operations.front() == "hwInit");
    fault.occurrence =
        below(2) == 0 ? Occurrence::nth(1 + below(calls)) : Occurrence::from(1 + below(calls));
    bool const isAsync = options_.async || options_.pseudoAsync;
    bool const hasLateResult = isAsync && hasResult(fault.operations.front());
    constexpr std::size_t withoutResult = 3;
    fault.effect = effects[below(hasLateResult ? effects.size() : withoutResult)];
    if (fault.operations.front() == "getCountForRule") {
      fault.effect = FaultEffect::throws;
    }
    if (fault.effect == FaultEffect::delay) {
      constexpr double tooLate = 30.5;
      fault.seconds = below(2) == 0 ? 2 : tooLate;
    }
    fault.optional = true;
    return fault;
  }

  CaughtAssertions assertions_;
  std::mt19937_64 random_;
  LabOptions options_;
  RandomEdits edits_;
  ScriptRun run_;
  WalkResult result_;
};

}  // namespace

WalkResult walk(WalkOptions const& options, std::function<void()> const& onStep) {
  return Walk(options).perform(options.steps, onStep);
}

}  // namespace PolicyMapTestKit
