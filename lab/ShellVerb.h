// SPDX-License-Identifier: Apache-2.0
// `policymap-lab shell`: objects by name, from a prompt or from a script on standard input.
#pragma once

#include "lab/Verb.h"

#include <istream>
#include <string>

namespace lab {

class ShellVerb : public Verb {
 public:
  explicit ShellVerb(CLI::App& program);

  CLI::App const& command() const override { return *command_; }
  ExitStatus run(Console const& console) override;

 private:
  CLI::App* command_;
};

/// Runs a script line by line. The first line that fails ends it, with its number and the error on
/// `console.err`.
ExitStatus runScript(std::istream& script, Console const& console);

}  // namespace lab
