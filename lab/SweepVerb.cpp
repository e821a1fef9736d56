// SPDX-License-Identifier: Apache-2.0
#include "lab/SweepVerb.h"

#include "lab/Input.h"
#include "lab/Progress.h"
#include "lab/SweepText.h"
#include "packets/Proof.h"
#include "testkit/report/Report.h"
#include "testkit/runs/RunFile.h"
#include "testkit/text/Lexer.h"

#include <algorithm>
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
            steps_.push_back(Step::advance(secondsOf(seconds).value()));
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
  command_->add_flag("--json", json_, "Print one JSON object per case, for merge")->group(group);
  command_
      ->add_flag(
          "--prove", proves_,
          "Also prove that the records treat all packets as\nconfigured when all is repaired")
      ->group(group);
  command_->add_flag("--journals", options_.journals, "Keep the journal of each case")
      ->group(group);
  command_
      ->add_option("--record", recordFile_,
                   "Write the first case with findings to a file for\nreplay and minimise")
      ->type_name("FILE")
      ->group(group);
  command_->add_option("--report", pageFile_, "Write a page for a browser, with all journals")
      ->type_name("FILE.html")
      ->group(group);
  arguments_.addHelperOptions();
  arguments_.addMachineOptions();
}

Script SweepVerb::readScript() const {
  Script script{arguments_.readOptions(), arguments_.reading(), arguments_.readInputs()};
  for (Step const& step : steps_) {
    script.steps.push_back(withContent(step));
  }
  return script;
}

ExitStatus SweepVerb::run(Console const& console) {
  arguments_.check(0);
  Script const script = readScript();
  SweepOptions options = options_;
  options.lab = script.options;
  options.compareWithNewLab = true;
  options.journals = options.journals || !pageFile_.empty();
  if (proves_) {
    options.look = &Packets::unproven;
  }
  if (!shard_.empty()) {
    readShard(shard_, options);
  }
  Sweep const sweep(scenarioOf(script), std::move(options));
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
    printSweep(console, report);
    for (std::size_t i = 0; !only_.empty() && !failed.empty() && i != failed[0].journal.size();
         ++i) {
      console.out << failed[0].journal[i] << "\n";
    }
  }
  if (!pageFile_.empty()) {
    writeOutput(console, pageFile_,
                [&](std::ostream& out) { writePage(out, reportOf(arguments_.title(), report)); });
  }
  if (!recordFile_.empty() && (!failed.empty() || !only_.empty())) {
    SweepResult const& result = failed.empty() ? report.results.front() : failed.front();
    writeOutput(console, recordFile_,
                [&](std::ostream& out) { write(out, record(scriptOf(script, result))); });
  }
  return failed.empty() ? ExitStatus::success : ExitStatus::notProgrammed;
}

}  // namespace lab
