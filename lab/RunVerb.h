// SPDX-License-Identifier: Apache-2.0
#pragma once

// `policymap-lab run`: loads policy text or a filter set and shows what was programmed.

#include "lab/Faults.h"
#include "lab/Verb.h"
#include "testkit/Lab.h"

#include <string>
#include <vector>

namespace lab {

class RunVerb : public Verb {
 public:
  explicit RunVerb(CLI::App& program);

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
  bool tells() const { return !json_; }

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
  int traceLevel_ = -1;      // none
};

}  // namespace lab
