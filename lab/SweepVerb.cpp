// SPDX-License-Identifier: Apache-2.0
#include "lab/SweepVerb.h"

#include "lab/Input.h"
#include "lab/Progress.h"
#include "testkit/text/Json.h"
#include "testkit/text/Lexer.h"
#include "testkit/text/ShownText.h"

#include <algorithm>
#include <chrono>
#include <iomanip>
#include <memory>
#include <sstream>
#include <utility>

namespace lab {

namespace {

constexpr std::size_t mostPairs = 1000000;

std::string faultOfEdit(std::string const& argument) {
  std::string const fault = faultOfStep(argument);
  bool const isEdit = fault.empty() && readStep(argument).kind == Step::Kind::load;
  return isEdit || !fault.empty() ? fault : "expected load FILE, found " + excerpt(argument);
}

// "I/N", with I from 1 to N.
void readShard(std::string const& text, SweepOptions& options) {
  std::size_t const slash = std::min(text.find('/'), text.size());
  std::uint64_t shard = 0;
  std::uint64_t shards = 0;
  if (slash == text.size() || !parseNumber(text.substr(slash + 1), 1, mostPairs, shards) ||
      !parseNumber(text.substr(0, slash), 1, shards, shard)) {
    throw UsageError("--shard: expected I/N, with I from 1 to N, found " + excerpt(text));
  }
  options.shard = shard;
  options.shards = shards;
}

Json jsonOf(SweepResult const& result) {
  Json::Array findings(result.findings.begin(), result.findings.end());
  Json json(Json::Object{{"case", toText(result.which)},
                         {"injected", result.injected},
                         {"findings", std::move(findings)}});
  if (!result.journal.empty()) {
    json.add("journal", Json::Array(result.journal.begin(), result.journal.end()));
  }
  return json;
}

void printResult(Console const& console, SweepResult const& result) {
  console.out << tinted(console.style, Tint::bad, toText(result.which)) << "\n";
  for (std::string const& finding : result.findings) {
    for (std::string const& line : wrapped(finding, console.style.width - 2)) {
      console.out << "  " << line << "\n";
    }
  }
}

}  // namespace

SweepVerb::SweepVerb(CLI::App& program)
    : command_(program.add_subcommand(
          "sweep", "Load as run does, again and again, each time with another\ncall of the helper "
                   "failing, and look whether all recovers")),
      arguments_(*command_) {
  arguments_.addInputOptions();
  char const* const group = "Sweep";
  command_
      ->add_option_function<std::string>(
          "--then", [this](std::string const& what) { steps_.push_back(readStep(what)); },
          "Afterwards load an edit (\"load FILE\"); may repeat")
      ->type_name("WHAT")
      ->check(&faultOfEdit)
      ->trigger_on_parse()
      ->group(group);
  command_
      ->add_option_function<std::string>(
          "--advance",
          [this](std::string const& seconds) {
            steps_.push_back({.kind = Step::Kind::advance, .seconds = secondsOf(seconds).value()});
          },
          "Afterwards advance virtual time; may repeat,\nin order with --then")
      ->type_name("SECONDS")
      ->check(&faultOfSeconds)
      ->trigger_on_parse()
      ->group(group);
  command_
      ->add_option("--pairs", options_.pairs, "Instead let two calls fail in this number of cases")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{1}, mostPairs))
      ->group(group);
  command_->add_option("--seed", options_.seed, "Which pairs")
      ->type_name("S")
      ->capture_default_str()
      ->group(group);
  command_->add_option("--shard", shard_, "Run a part of the cases, 1/N to N/N")
      ->type_name("I/N")
      ->group(group);
  command_->add_option("--only", only_, "Run one case, as it is named in a finding")
      ->type_name("CASE")
      ->group(group);
  command_->add_flag("--json", json_, "Print one JSON object per case")->group(group);
  arguments_.addHelperOptions();
  arguments_.addMachineOptions();
}

Scenario SweepVerb::scenario() const {
  auto const sources = std::make_shared<std::vector<SourceText>>();
  for (std::string const& file : arguments_.files()) {
    sources->push_back(readInput(file));
  }
  auto const rules = arguments_.rulesFile().empty()
                         ? nullptr
                         : std::make_shared<FilterSet const>(arguments_.readRules());
  auto const edits = std::make_shared<std::vector<std::pair<Step, SourceText>>>();
  for (Step const& step : steps_) {
    edits->emplace_back(step,
                        step.kind == Step::Kind::load ? readInput(step.file) : SourceText("", ""));
  }
  return [=, reading = arguments_.reading(), layout = arguments_.layout()](Lab& lab) {
    for (SourceText const& source : *sources) {
      lab.load(source, reading);
    }
    if (rules) {
      lab.load(*rules, layout);
    }
    for (auto const& [step, source] : *edits) {
      if (step.kind == Step::Kind::load) {
        lab.load(source, reading);
      } else {
        lab.advance(std::chrono::duration<double>(step.seconds));
      }
    }
  };
}

ExitStatus SweepVerb::run(Console const& console) {
  arguments_.check(0);
  SweepOptions options = options_;
  options.lab = arguments_.readOptions();
  if (!shard_.empty()) {
    readShard(shard_, options);
  }
  Sweep const sweep(scenario(), std::move(options));
  SweepReport report;
  if (!only_.empty()) {
    report.results.push_back(sweep.run(parseSweepCase(only_)));
  } else {
    Progress progress(console.progress ? &console.err : nullptr);
    progress.begin("sweeping", sweep.cases().size());
    report = sweep.runAll([&] { progress.step(); });
    progress.clear();
  }
  std::vector<SweepResult> const failed = report.failed();
  if (json_) {
    for (SweepResult const& result : report.results) {
      console.out << jsonOf(result).text() << "\n";
    }
  } else {
    for (SweepResult const& result : failed) {
      printResult(console, result);
      for (std::size_t i = 0; !only_.empty() && i != result.journal.size(); ++i) {
        console.out << result.journal[i] << "\n";
      }
    }
    std::ostringstream time;
    time << std::fixed << std::setprecision(2) << report.seconds;
    console.out << counted(report.results.size(), "case") << ", "
                << counted(report.injected(), "injected fault") << ", "
                << counted(failed.size(), "case") << " with findings";
    if (only_.empty()) {
      auto const rate = static_cast<double>(report.results.size()) / report.seconds;
      console.out << ", " << time.str() << " s, " << static_cast<std::uint64_t>(rate)
                  << " cases per second";
    }
    console.out << "\n";
  }
  return failed.empty() ? ExitStatus::success : ExitStatus::notProgrammed;
}

}  // namespace lab
