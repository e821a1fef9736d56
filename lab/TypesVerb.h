// SPDX-License-Identifier: Apache-2.0
// `policymap-lab types`: lists what can be reached by name.
#pragma once

#include "lab/Verb.h"

#include <string>

namespace lab {

class TypesVerb : public Verb {
 public:
  explicit TypesVerb(CLI::App& program);

  CLI::App const& command() const override { return *command_; }
  ExitStatus run(Console const& console) override;

 private:
  CLI::App* command_;
  std::string name_;
  std::string folder_;
  bool json_ = false;
};

}  // namespace lab
