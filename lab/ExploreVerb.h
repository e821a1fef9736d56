// SPDX-License-Identifier: Apache-2.0
#pragma once

// `policymap-lab explore`: random edits, faults and time on a configuration.

#include "lab/LabArguments.h"
#include "lab/Verb.h"
#include "testkit/runs/RandomWalk.h"

#include <string>

namespace lab {

class ExploreVerb : public Verb {
 public:
  explicit ExploreVerb(CLI::App& program);

  CLI::App const& command() const override { return *command_; }
  // Returns notProgrammed if there are findings.
  ExitStatus run(Console const& console) override;

 private:
  CLI::App* command_;
  LabArguments arguments_;
  WalkOptions options_;
  std::size_t walks_ = 1;
  std::string recordFile_;  // empty: none
};

}  // namespace lab
