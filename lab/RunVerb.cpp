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
#include <utility>

namespace lab {

namespace {

constexpr std::size_t mostClasses = 1000000;
constexpr std::size_t mostInterfaces = 65535;

std::string faultOfAdvance(std::string const& seconds) {
  return secondsOf(seconds) ? "" : "SECONDS must be 0 to 1000000, not " + seconds;
}

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

std::string faultOfStep(std::string const& argument) {
  try {
    static_cast<void>(readStep(argument));
    return "";
  } catch (UsageError const& error) {
    return error.what();
  }
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
                                    "is or is not programmed")) {
  addInputOptions();
  if (output == Output::records) {
    addOutputOptions();
  }
  addHelperOptions();
  addMachineOptions();
  addFaultOptions();
}

void RunVerb::addInputOptions() {
  char const* const group = "Input";
  CLI::Option* const files =
      command_->add_option("files", files_, "Policy text")->type_name("FILE")->group(group);
  CLI::Option* const lenient =
      command_->add_flag("--lenient", lenient_, "Skip and count lines that are not understood")
          ->group(group);
  command_
      ->add_flag("--widen", widen_,
                 "With --lenient: a class that loses a condition matches more,\ninstead of nothing")
      ->group(group)
      ->needs(lenient);
  command_
      ->add_flag_callback(
          "--no-access-groups", [this] { options_.accessGroups = false; },
          "Leave out access lists that are attached by themselves")
      ->group(group);
  command_
      ->add_option("--actions", actionsFile_,
                   "What lines of classes become: lines such as\n\"police = action1\"")
      ->type_name("FILE")
      ->group(group);
  CLI::Option* const rules =
      command_->add_option("--rules", rulesFile_, "A filter set in the ClassBench line format")
          ->type_name("FILE")
          ->group(group)
          ->excludes(files)
          ->excludes(lenient);
  command_
      ->add_option("--classes", layout_.classes, "Split the filter set into this number of classes")
      ->type_name("K")
      ->check(CLI::Range(std::size_t{1}, mostClasses))
      ->capture_default_str()
      ->group(group)
      ->needs(rules);
  command_
      ->add_option("--interfaces", layout_.interfaces,
                   "Attach the filter set to this number of interfaces")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{1}, mostInterfaces))
      ->capture_default_str()
      ->group(group)
      ->needs(rules);
  command_
      ->add_flag("--ports-on-any-protocol", portsOnAnyProtocol_,
                 "Accept port ranges on protocols without ports")
      ->group(group)
      ->needs(rules);
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
}

void RunVerb::addSwitch(std::string const& name, bool& value, std::string const& text) {
  bool const usual = value;
  command_->add_flag_callback(
      name, [&value, usual] { value = !usual; }, text);
}

void RunVerb::addHelperOptions() {
  command_->option_defaults()->group("What the hardware can do");
  addSwitch("--update-action", options_.updateAction,
            "Change actions of programmed rules in place");
  addSwitch("--expand-port-channels", options_.expandPortChannels,
            "Program the members of port-channels");
  addSwitch("--sub-rules-for-ports", options_.subRulesForPorts,
            "Split port ranges into sub-rules, without range checkers");
  addSwitch("--reprogram-on-intf-change", options_.reprogramOnIntfChange,
            "Program a policy again when its interfaces change");
  addSwitch("--no-deny-rules", options_.denyRules, "No deny rules");
  addSwitch("--no-ttl", options_.ttl, "No match on TTL");
  addSwitch("--only-ttl-eq", options_.onlyTtlEq, "A match on TTL must be for one value");
  addSwitch("--no-ack-or-rst", options_.ackOrRst, "No match on ACK or RST");
  addSwitch("--no-established", options_.established, "No match on established");
}

void RunVerb::addMachineOptions() {
  command_->option_defaults()->group("What is served");
  addSwitch("--no-l2", options_.layer2, "No policies on layer-2 interfaces");
  addSwitch("--no-l3", options_.layer3, "No policies on layer-3 interfaces");
  addSwitch("--no-mgmt", options_.management, "No policies on management interfaces");
  addSwitch("--no-ip-acl", options_.ipLists, "No IPv4 rules");
  addSwitch("--no-ip6-acl", options_.ip6Lists, "No IPv6 rules");
  addSwitch("--no-mac-acl", options_.macLists, "No MAC rules");
}

void RunVerb::addFaultOptions() {
  command_->option_defaults()->group("Faults, time and order");
  command_->add_flag("--async", options_.async,
                     "Commits and interface operations wait for a trigger");
  command_->add_flag("--pseudo-async", options_.pseudoAsync,
                     "Results are asynchronous, but available immediately");
  command_
      ->add_option("--inject", faults_,
                   "Let an operation fail with TEXT,\ne.g. commitError='table full'; may repeat")
      ->type_name("NAME=TEXT")
      ->allow_extra_args(false);
  command_
      ->add_option_function<std::string>(
          "--then", [this](std::string const& what) { steps_.push_back(readStep(what)); },
          "Afterwards remove the faults (clear), deliver pending\nresults (trigger or \"trigger "
          "N\"), "
          "add a fault\n(\"inject NAME=TEXT\") or load an edit (\"load FILE\");\nmay repeat")
      ->type_name("WHAT")
      ->check(&faultOfStep)
      ->trigger_on_parse();
  command_
      ->add_option_function<std::string>(
          "--advance",
          [this](std::string const& seconds) {
            steps_.push_back({.kind = Step::Kind::advance,
                              .seconds = secondsOf(seconds).value(),
                              .text = "--advance " + seconds});
          },
          "Afterwards advance virtual time; may repeat,\nin order with --then")
      ->type_name("SECONDS")
      ->check(&faultOfAdvance)
      ->trigger_on_parse();
  command_
      ->add_option("--trace", trace_,
                   "Write the trace lines of the library and the core,\nor of one source, up to a "
                   "level")
      ->type_name("[SOURCE/]LEVEL");
}

void RunVerb::performSteps(Run& run) const {
  if (steps_.empty()) {
    return;
  }
  Console const& console = run.console;
  if (tells()) {
    console.out << tinted(console.style, Tint::heading, "== before the first step") << "\n\n";
    printStatuses(console.out, console.style, run.lab);
  }
  Snapshot before = compares() ? run.lab.snapshot() : Snapshot();
  for (Step const& step : steps_) {
    perform(run.lab, step, reading());
    if (!compares()) {
      continue;
    }
    Snapshot after = run.lab.snapshot();
    if (tells()) {
      console.out << tinted(console.style, Tint::heading, "== " + step.text) << "\n\n";
    }
    showChanges(run, step.text, difference(before, after));
    if (tells()) {
      printStatuses(console.out, console.style, run.lab);
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

void RunVerb::loadRules(Lab& lab) const {
  FilterSet const set =
      readFilterSet(readInput(rulesFile_),
                    portsOnAnyProtocol_ ? PortRanges::onAnyProtocol : PortRanges::onPortProtocols);
  if (layout_.classes > std::max<std::size_t>(set.rules.size(), 1)) {
    throw UsageError("--classes: " + std::to_string(layout_.classes) + " is more than the " +
                     counted(set.rules.size(), "rule") + " of " + rulesFile_);
  }
  lab.load(set, layout_);
}

void RunVerb::loadFiles(Run& run) const {
  Console const& console = run.console;
  Snapshot before;
  for (std::size_t i = 0; i != files_.size(); ++i) {
    run.lab.load(readInput(files_[i]), reading());
    if (!compares() || files_.size() == 1) {
      continue;
    }
    Snapshot after = run.lab.snapshot();
    if (i != 0) {
      if (tells()) {
        console.out << tinted(console.style, Tint::heading, "== what " + files_[i] + " changed")
                    << "\n\n";
      }
      showChanges(run, files_[i], difference(before, after));
    }
    before = std::move(after);
  }
  if (tells() && files_.size() > 1) {
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

void RunVerb::report(Run const& run, Findings const& findings) const {
  Console const& console = run.console;
  WithRules const withRules = summary_ ? WithRules::no : WithRules::yes;
  if (output_ == Output::explanations) {
    printExplanations(console.out, console.style, run.lab, findings);
    return;
  }
  if (tells()) {
    printReport(console.out, console.style, run.lab, findings, withRules,
                skippedLines_ ? SkippedBy::line : SkippedBy::kind);
    if (!faults_.empty() || options_.async || options_.pseudoAsync) {
      console.out << "\n" << tinted(console.style, Tint::heading, "status") << "\n";
      printStatuses(console.out, console.style, run.lab);
    }
    if (!journal_.empty()) {
      printJournal(console.out, console.style, run.lab.journal(), journal_ == "mermaid");
    }
    return;
  }
  if (json_) {
    printJson(console.out, {run.lab, findings, run.changes, withRules, !journal_.empty()});
  } else {
    writeJsonLines(console.out, run.lab.journal());
  }
  for (Problem const& problem : findings.problems) {
    console.err << "policymap-lab: " << shownText(toText(problem)) << "\n";
  }
}

void RunVerb::check() const {
  if (files_.empty() && rulesFile_.empty()) {
    throw UsageError("a FILE or --rules FILE is required");
  }
  if (json_ && !journal_.empty() && journal_ != "json") {
    throw UsageError("--journal " + journal_ + ": with --json, only --journal json is possible");
  }
  auto reads = std::count(files_.begin(), files_.end(), standardInput);
  reads += rulesFile_ == standardInput ? 1 : 0;
  reads += actionsFile_ == standardInput ? 1 : 0;
  reads += std::count_if(steps_.begin(), steps_.end(),
                         [](Step const& step) { return step.file == standardInput; });
  if (reads > 1) {
    throw UsageError("-: standard input can be read only once");
  }
}

ExitStatus RunVerb::run(Console const& console) {
  check();
  Progress progress(console.progress ? &console.err : nullptr);
  LabOptions options = options_;
  for (std::string const& fault : faults_) {
    options.faults.push_back(readFault(fault));
  }
  if (!actionsFile_.empty()) {
    options.actions = Text::ActionMapping(readInput(actionsFile_));
  }
  setTrace();
  if (journal_.empty()) {
    options.journal = 0;
  }
  Lab lab(options);
  Run run{lab, console};
  showProgress(lab, progress);
  if (rulesFile_.empty()) {
    loadFiles(run);
  } else {
    loadRules(lab);
  }
  progress.clear();
  performSteps(run);

  Findings const findings = findingsOf(lab);
  report(run, findings);
  auto const& [problems, attachments] = findings;
  bool const isLeftOut =
      !lenient_ && output_ == Output::records && attachments.programmed != attachments.all;
  bool const failed =
      isLeftOut || std::any_of(problems.begin(), problems.end(), [this](Problem const& problem) {
        return counts(problem, lenient_);
      });
  return failed ? ExitStatus::notProgrammed : ExitStatus::success;
}

}  // namespace lab
