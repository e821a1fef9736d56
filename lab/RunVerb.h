// SPDX-License-Identifier: Apache-2.0
#pragma once

// `policymap-lab run` and `policymap-lab explain`: load policy text or a filter set, and show what
// was programmed, or why what is attached is or is not programmed.

#include "lab/Faults.h"
#include "lab/JsonReport.h"
#include "lab/LabArguments.h"
#include "lab/Verb.h"
#include "testkit/Lab.h"
#include "testkit/Problems.h"
#include "testkit/report/Report.h"
#include "testkit/runs/ScriptRun.h"

#include <cstdint>
#include <string>
#include <vector>

namespace lab {

class RunVerb : public Verb {
 public:
  enum class Output : std::uint8_t { records, explanations };

  RunVerb(CLI::App& program, Output output);

  CLI::App const& command() const override { return *command_; }
  ExitStatus run(Console const& console) override;

 private:
  void addOutputOptions();
  void addFaultOptions();

  // One execution.
  struct Run {
    ScriptRun& run;
    Console const& console;
    std::vector<Step> done = {};
    std::vector<StepChanges> changes = {};  // for JSON
    RunReport page;

    [[nodiscard]] Lab& lab() const { return run.lab(); }
  };

  // Raises UsageError for options that exclude each other.
  void check() const;
  void perform(Run& run, Step const& step) const;
  void loadInputs(Run& run) const;
  void performSteps(Run& run) const;
  void showChanges(Run& run, std::string const& step, Difference changes) const;
  // Whether changes are determined, and printed as text while the lab runs.
  bool compares() const { return output_ == Output::records && (json_ || journal_ != "json"); }
  bool tells() const { return compares() && !json_; }
  bool showsStatus() const;
  void setTrace() const;
  void report(Run const& run, Outcome const& outcome) const;
  // Writes the files of --record and --report.
  void writeFiles(Run const& run) const;
  [[nodiscard]] bool records() const { return !recordFile_.empty() || !pageFile_.empty(); }

  Output output_;
  CLI::App* command_;
  LabArguments arguments_;
  bool skippedLines_ = false;
  bool json_ = false;
  bool summary_ = false;
  std::string journal_;  // its form; empty: none
  std::vector<std::string> faults_;
  std::vector<std::string> plans_;
  std::vector<Step> steps_;  // in the order of the command line
  std::string trace_;        // empty: none
  std::string recordFile_;   // empty: none
  std::string pageFile_;     // empty: none
};

}  // namespace lab
