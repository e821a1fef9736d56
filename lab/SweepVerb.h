// SPDX-License-Identifier: Apache-2.0
#pragma once

// `policymap-lab sweep`: loads as run does, once for each call of the helper, which fails, and
// looks whether everything recovers.

#include "lab/Faults.h"
#include "lab/LabArguments.h"
#include "lab/Verb.h"
#include "testkit/sweep/Sweep.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace lab {

class SweepVerb : public Verb {
 public:
  explicit SweepVerb(CLI::App& program);

  CLI::App const& command() const override { return *command_; }
  // Returns notProgrammed if there are findings.
  ExitStatus run(Console const& console) override;

 private:
  // Loads everything and performs the steps.
  [[nodiscard]] Script readScript() const;

  CLI::App* command_;
  LabArguments arguments_;
  std::vector<Step> steps_;
  std::string only_;   // one case; empty: all
  std::string shard_;  // "I/N"; empty: all
  SweepOptions options_;
  bool json_ = false;
  bool proves_ = false;
  std::string recordFile_;  // empty: none
  std::string pageFile_;    // empty: none
};

}  // namespace lab
