// SPDX-License-Identifier: Apache-2.0
#include "lab/RunVerb.h"

#include "lab/Changes.h"
#include "lab/Faults.h"
#include "lab/Input.h"
#include "lab/Progress.h"
#include "lab/Report.h"
#include "testkit/JournalText.h"
#include "testkit/Tracing.h"
#include "testkit/text/ShownText.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <utility>

namespace lab {

namespace {

std::uint64_t rulesIn(Settings const& settings) {
  std::uint64_t rules = 0;
  for (Settings::Lists const& lists : settings.lists) {
    for (auto const& [name, list] : lists) {
      rules += list->entries.size();
    }
  }
  return rules;
}

// Shows how many rules were added, until progress.clear().
void showProgress(Lab& lab, Progress& progress) {
  if (!progress.wanted()) {
    return;
  }
  lab.onLoadIs(
      [&progress](Settings const& settings) { progress.begin("programming", rulesIn(settings)); });
  lab.aroundIs([&progress, last = PolicyMap::AclRuleKey()](
                   HelperCall& call, std::function<void()> const& proceed) mutable {
    if (call.operation == "addRule" && *call.rule != last) {
      last = *call.rule;
      progress.step();
    }
    proceed();
  });
}

// True if the problem makes the run fail.
bool counts(Problem const& problem, bool lenient) {
  return problem.kind == Problem::Kind::failed ||
         (problem.kind == Problem::Kind::missing && !lenient);
}

}  // namespace

RunVerb::RunVerb(CLI::App& program, Output output)
    : output_(output),
      command_(output == Output::records
                   ? program.add_subcommand(
                         "run", "Load policy text, each file as an edit of those before it,\n"
                                "or a filter set, and show what is programmed")
                   : program.add_subcommand(
                         "explain", "Load as run does, and show for each attached policy why it\n"
                                    "is or is not programmed")),
      arguments_(*command_) {
  arguments_.addInputOptions();
  if (output == Output::records) {
    addOutputOptions();
  }
  arguments_.addHelperOptions();
  arguments_.addMachineOptions();
  addFaultOptions();
}

void RunVerb::addOutputOptions() {
  char const* const group = "Output";
  command_->add_flag("--json", json_, "Print one JSON object")->group(group);
  command_->add_flag("--summary", summary_, "Leave out the rules")->group(group);
  command_->add_flag("--skipped", skippedLines_, "List the lines that --lenient skipped")
      ->group(group);
  command_
      ->add_option("--journal", journal_,
                   "Also print every call of the helper: text, json (lines,\nor a member of the "
                   "object of --json) or mermaid")
      ->type_name("FORM")
      ->check(CLI::IsMember({"text", "json", "mermaid"}))
      ->group(group);
  command_
      ->add_option(
          "--record", recordFile_,
          "Write what was done and what happened to a file for\nreplay, export and minimise")
      ->type_name("FILE")
      ->group(group);
  command_->add_option("--report", pageFile_, "Write a page for a browser")
      ->type_name("FILE.html")
      ->group(group);
}

void RunVerb::addFaultOptions() {
  arguments_.addOrderOptions("Faults, time and order");
  LabOptions& options = arguments_.options();
  command_
      ->add_option_function<std::string>(
          "--async-delay",
          [&options](std::string const& seconds) { options.asyncDelay = secondsOf(seconds); },
          "With --async: results arrive by themselves after this\nvirtual time")
      ->type_name("SECONDS")
      ->check(&faultOfSeconds)
      ->trigger_on_parse();
  command_
      ->add_option("--inject", faults_,
                   "Let an operation fail with TEXT,\ne.g. commitError='table full'; may repeat")
      ->type_name("NAME=TEXT")
      ->allow_extra_args(false);
  command_
      ->add_option("--faults", plans_,
                   "Let calls fail as planned, e.g. \"addRule nth=3 once\";\n@FILE reads the plan "
                   "from a file; may repeat")
      ->type_name("PLAN")
      ->allow_extra_args(false);
  command_
      ->add_option_function<std::string>(
          "--then", [this](std::string const& what) { steps_.push_back(readStep(what)); },
          "Afterwards remove the faults (clear), deliver pending\nresults (trigger or \"trigger "
          "N\") or those that are held\n(release or \"release N\"), add faults (\"inject\n"
          "NAME=TEXT\" or \"faults PLAN\"), end plans (end or\n\"end PLAN\"), load an edit "
          "(\"load FILE\"), take all away\nfrom the interfaces and put it back (detach, attach),"
          "\nor end all faults and compare with a new lab (check);\nmay repeat")
      ->type_name("WHAT")
      ->check(&faultOfStep)
      ->trigger_on_parse();
  command_
      ->add_option_function<std::string>(
          "--advance",
          [this](std::string const& seconds) {
            steps_.push_back(Step::advance(secondsOf(seconds).value()));
          },
          "Afterwards advance virtual time; may repeat,\nin order with --then")
      ->type_name("SECONDS")
      ->check(&faultOfSeconds)
      ->trigger_on_parse();
  command_
      ->add_option("--trace", trace_,
                   "Write the trace lines of the library and the core,\nor of one source, up to a "
                   "level")
      ->type_name("[SOURCE/]LEVEL");
}

void RunVerb::perform(Run& run, Step const& step) const {
  run.run.perform(step);
  if (records()) {
    run.done.push_back(step);
    run.page.add(step, run.run);
  }
}

void RunVerb::performSteps(Run& run) const {
  if (steps_.empty()) {
    return;
  }
  Console const& console = run.console;
  if (tells()) {
    console.out << tinted(console.style, Tint::heading, "== before the first step") << "\n\n";
    printStatuses(console.out, console.style, run.lab());
  }
  Snapshot before = compares() ? run.lab().snapshot() : Snapshot();
  for (Step const& step : steps_) {
    perform(run, withContent(step));
    if (!compares()) {
      continue;
    }
    Snapshot after = run.lab().snapshot();
    if (tells()) {
      console.out << tinted(console.style, Tint::heading, "== " + optionOf(step)) << "\n\n";
    }
    showChanges(run, optionOf(step), difference(before, after));
    if (tells()) {
      printStatuses(console.out, console.style, run.lab());
    }
    before = std::move(after);
  }
}

void RunVerb::showChanges(Run& run, std::string const& step, Difference changes) const {
  if (tells()) {
    printChanges(run.console.out, run.console.style, changes);
  } else {
    run.changes.push_back({step, std::move(changes)});
  }
}

void RunVerb::loadInputs(Run& run) const {
  Console const& console = run.console;
  std::vector<Step> const inputs = arguments_.readInputs();
  Snapshot before;
  for (Step const& input : inputs) {
    perform(run, input);
    if (!compares() || inputs.size() == 1) {
      continue;
    }
    Snapshot after = run.lab().snapshot();
    if (&input != inputs.data()) {
      if (tells()) {
        console.out << tinted(console.style, Tint::heading, "== what " + input.name + " changed")
                    << "\n\n";
      }
      showChanges(run, input.name, difference(before, after));
    }
    before = std::move(after);
  }
  if (tells() && inputs.size() > 1) {
    console.out << tinted(console.style, Tint::heading, "== what is programmed now") << "\n\n";
  }
}

void RunVerb::setTrace() const {
  try {
    if (!trace_.empty()) {
      traceIs(trace_);
    }
  } catch (std::exception const& error) {
    throw UsageError("--trace: " + std::string(error.what()));
  }
}

void RunVerb::report(Run const& run, Outcome const& outcome) const {
  Console const& console = run.console;
  WithRules const withRules = summary_ ? WithRules::no : WithRules::yes;
  if (output_ == Output::explanations) {
    printExplanations(console.out, console.style, run.lab(), outcome);
    if (!outcome.isRegular()) {
      printFaults(console.out, console.style, outcome);
    }
    return;
  }
  if (tells()) {
    printReport(console.out, console.style, run.lab(), outcome, withRules,
                skippedLines_ ? SkippedBy::line : SkippedBy::kind);
    printFaults(console.out, console.style, outcome);
    if (showsStatus()) {
      console.out << "\n" << tinted(console.style, Tint::heading, "status") << "\n";
      printStatuses(console.out, console.style, run.lab());
    }
    if (!journal_.empty()) {
      printJournal(console.out, console.style, run.lab().journal(), journal_ == "mermaid");
    }
    return;
  }
  if (json_) {
    printJson(console.out, {run.lab(), outcome, run.changes, withRules, !journal_.empty()});
  } else {
    writeJsonLines(console.out, run.lab().journal());
  }
  for (Problem const& problem : outcome.problems) {
    console.err << "policymap-lab: " << shownText(toText(problem)) << "\n";
  }
  for (Irregularity const& finding : outcome.findings) {
    console.err << "policymap-lab: " << shownText(finding.text) << "\n";
  }
}

void RunVerb::writeFiles(Run const& run) const {
  if (!records()) {
    return;
  }
  Script script{run.run.options(), arguments_.reading(), run.done};
  RunFile const file = recordOf(std::move(script), run.run);
  if (!recordFile_.empty()) {
    writeOutput(run.console, recordFile_, [&](std::ostream& out) { write(out, file); });
  }
  if (!pageFile_.empty()) {
    writeOutput(run.console, pageFile_,
                [&](std::ostream& out) { writePage(out, run.page.json(file)); });
  }
}

bool RunVerb::showsStatus() const {
  LabOptions const& options = arguments_.options();
  return !faults_.empty() || !plans_.empty() || options.async || options.pseudoAsync;
}

void RunVerb::check() const {
  if (json_ && !journal_.empty() && journal_ != "json") {
    throw UsageError("--journal " + journal_ + ": with --json, only --journal json is possible");
  }
  std::string const plan = std::string("@") + standardInput;
  arguments_.check(std::count_if(steps_.begin(), steps_.end(),
                                 [](Step const& step) { return step.name == standardInput; }) +
                   std::count(plans_.begin(), plans_.end(), plan));
}

ExitStatus RunVerb::run(Console const& console) {
  check();
  Progress progress(console.progress ? &console.err : nullptr);
  LabOptions options = arguments_.readOptions();
  for (std::string const& fault : faults_) {
    options.faults.push_back(readFault(fault));
  }
  for (std::string const& plan : plans_) {
    addPlan(options.plan, readPlan("--faults", plan));
  }
  setTrace();
  options.journal = journal_.empty() ? 0 : options.journal;
  if (records()) {
    options.journal = SIZE_MAX;
    options.journalStatuses = true;
  }
  auto owned = std::make_unique<ScriptRun>(options, arguments_.reading());
  ScriptRun& script = *owned;
  Run run{script, console, {}, {}, RunReport(arguments_.title())};
  showProgress(run.lab(), progress);
  loadInputs(run);
  progress.clear();
  performSteps(run);

  Outcome outcome = outcomeOf(run.lab());
  outcome.findings = script.irregularities();  // those of checks, too
  report(run, outcome);
  writeFiles(run);
  if (console.endsProcess) {
    // Taking a million rules apart takes as long as recording them.
    [[maybe_unused]] static ScriptRun* const kept = owned.release();
  }
  AttachmentCount const& attachments = outcome.attachments;
  bool const isLeftOut = !arguments_.lenient() && output_ == Output::records &&
                         attachments.programmed != attachments.all;
  auto const& problems = outcome.problems;
  bool const failed = isLeftOut || !outcome.isRegular() ||
                      std::any_of(problems.begin(), problems.end(), [this](Problem const& problem) {
                        return counts(problem, arguments_.lenient());
                      });
  return failed ? ExitStatus::notProgrammed : ExitStatus::success;
}

}  // namespace lab
