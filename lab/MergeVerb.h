// SPDX-License-Identifier: Apache-2.0
#pragma once

// `policymap-lab merge`: one report of the shards of a sweep.

#include "lab/Verb.h"

#include <string>
#include <vector>

namespace lab {

class MergeVerb : public Verb {
 public:
  explicit MergeVerb(CLI::App& program);

  CLI::App const& command() const override { return *command_; }
  // Returns notProgrammed if there are findings.
  ExitStatus run(Console const& console) override;

 private:
  CLI::App* command_;
  std::vector<std::string> files_;
  std::string pageFile_;  // empty: none
};

}  // namespace lab
