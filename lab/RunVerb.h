// SPDX-License-Identifier: Apache-2.0
#pragma once

// `policymap-lab run` and `policymap-lab explain`: load policy text or a filter set, and show what
// was programmed, or why what is attached is or is not programmed.

#include "lab/Faults.h"
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
  void addInputOptions();
  void addOutputOptions();
  void addHelperOptions();
  void addMachineOptions();
  void addFaultOptions();
  // Adds a flag that inverts the default of a lab option.
  void addSwitch(std::string const& name, bool& value, std::string const& text);

  void loadFiles(Lab& lab, Console const& console) const;
  void loadRules(Lab& lab) const;
  void performSteps(Lab& lab, Console const& console) const;
  bool tells() const { return output_ == Output::records && !json_; }
  void setTrace() const;
  void report(Lab const& lab, std::vector<Problem> const& problems, Console const& console) const;

  Output output_;
  CLI::App* command_;
  std::vector<std::string> files_;
  std::string rulesFile_;
  FilterLayout layout_;
  bool portsOnAnyProtocol_ = false;
  bool lenient_ = false;
  bool json_ = false;
  bool summary_ = false;
  LabOptions options_;
  std::vector<std::string> faults_;
  std::vector<Step> steps_;  // in the order of the command line
  std::string trace_;        // empty: none
};

}  // namespace lab
