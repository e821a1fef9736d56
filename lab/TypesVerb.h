// SPDX-License-Identifier: Apache-2.0
#pragma once

// `policymap-lab types`: lists the types that can be accessed by name.

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
