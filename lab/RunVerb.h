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
    Lab& lab;
    Console const& console;
    std::vector<StepChanges> changes = {};  // for JSON
    std::vector<FaultScope> faults = {};    // of the steps
  };

  // Raises UsageError for options that exclude each other.
  void check() const;
  void loadFiles(Run& run) const;
  void performSteps(Run& run) const;
  void showChanges(Run& run, std::string const& step, Difference changes) const;
  // Whether changes are determined, and printed as text while the lab runs.
  bool compares() const { return output_ == Output::records && (json_ || journal_ != "json"); }
  bool tells() const { return compares() && !json_; }
  bool showsStatus() const;
  void setTrace() const;
  void report(Run const& run, Outcome const& outcome) const;

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
};

}  // namespace lab
