// SPDX-License-Identifier: Apache-2.0
#include "lab/RunFileVerbs.h"

#include "lab/Input.h"
#include "lab/Progress.h"
#include "testkit/report/Report.h"
#include "testkit/runs/Minimise.h"
#include "testkit/text/ShownText.h"

#include <stdexcept>
#include <utility>

namespace lab {

namespace {

CLI::App* addCommand(CLI::App& program, char const* name, char const* text, std::string& file) {
  CLI::App* const command = program.add_subcommand(name, text);
  command->add_option("file", file, "Written by --record of run, sweep, explore or minimise")
      ->type_name("FILE")
      ->required();
  return command;
}

RunFile readRun(std::string const& file) {
  return readRunFile(readInput(file));
}

std::string baseName(std::string const& file) {
  return file.substr(file.find_last_of('/') + 1);
}

void printScript(Console const& console, Script const& script) {
  for (Step const& step : script.steps) {
    console.out << tinted(console.style, Tint::heading, toText(step)) << "\n";
    SourceText const source(step.name, step.kind == Step::Kind::load ? step.text : "");
    LineReader lines(source);
    while (lines.next()) {
      console.out << "  " << lines.line() << "\n";
    }
  }
}

}  // namespace

ReplayVerb::ReplayVerb(CLI::App& program)
    : command_(addCommand(program, "replay",
                          "Run again what was recorded, and name the first difference", file_)) {
  command_->add_option("--report", pageFile_, "Write a page for a browser")->type_name("FILE.html");
}

ExitStatus ReplayVerb::run(Console const& console) {
  RunFile const before = readRun(file_);
  RunReport page(baseName(file_));
  RunFile const now = record(before.script, [&](Step const& step, ScriptRun& run) {
    if (!pageFile_.empty()) {
      page.add(step, run);
    }
  });
  if (!pageFile_.empty()) {
    writeOutput(console, pageFile_, [&](std::ostream& out) { writePage(out, page.json(now)); });
  }
  std::optional<std::string> const difference = firstDifference(before, now);
  for (Irregularity const& each : now.found) {
    console.out << tinted(console.style, Tint::bad, shownText(each.text)) << "\n";
  }
  if (difference) {
    console.out << "different: " << *difference << "\n";
    return ExitStatus::notProgrammed;
  }
  console.out << "the same: " << counted(now.script.steps.size(), "step") << ", "
              << (now.journal.size() == 1 ? "1 entry"
                                          : std::to_string(now.journal.size()) + " entries")
              << ", " << counted(now.found.size(), "finding") << "\n";
  return ExitStatus::success;
}

MinimiseVerb::MinimiseVerb(CLI::App& program)
    : command_(addCommand(program, "minimise",
                          "Shorten what was recorded, while its first finding stays", file_)) {
  command_->add_option("--record", recordFile_, "Write the result to a file")->type_name("FILE");
}

ExitStatus MinimiseVerb::run(Console const& console) {
  try {
    minimiseAndPrint(console, readRun(file_).script, recordFile_);
  } catch (std::invalid_argument const& error) {
    throw UsageError(file_ + ": " + error.what());
  }
  return ExitStatus::success;
}

ExportVerb::ExportVerb(CLI::App& program)
    : command_(addCommand(program, "export",
                          "Turn what was recorded into a test that expects the same", file_)) {
  command_->add_option("--as", language_, "cpp (GoogleTest), python (unittest) or shell")
      ->type_name("LANGUAGE")
      ->check(CLI::IsMember({"cpp", "python", "shell"}))
      ->required();
}

ExitStatus ExportVerb::run(Console const& console) {
  Script const script = readRun(file_).script;
  if (language_ == "cpp") {
    writeCppTest(console.out, baseName(file_), script);
  } else {
    writeProgramTest(console.out, baseName(file_), script,
                     language_ == "shell" ? ProgramTest::shell : ProgramTest::python);
  }
  return ExitStatus::success;
}

void minimiseAndPrint(Console const& console, Script script, std::string const& recordFile) {
  std::size_t const lines = linesOf(script);
  std::size_t const steps = script.steps.size();
  Progress progress(console.progress ? &console.err : nullptr);
  progress.begin("minimising", 0);
  Minimised const least = minimise(std::move(script), [&] { progress.step(); });
  progress.clear();
  for (Irregularity const& each : least.found) {
    console.out << tinted(console.style, Tint::bad, shownText(each.text)) << "\n";
  }
  printScript(console, least.script);
  console.out << "minimised in "
              << (least.tries == 1 ? "1 try" : std::to_string(least.tries) + " tries") << ": "
              << lines << " -> " << counted(linesOf(least.script), "line") << " ("
              << linesOfEdits(least.script) << " in edits), " << steps << " -> "
              << counted(least.script.steps.size(), "step") << "\n";
  if (!recordFile.empty()) {
    writeOutput(console, recordFile, [&](std::ostream& out) { write(out, record(least.script)); });
  }
}

}  // namespace lab
