// SPDX-License-Identifier: Apache-2.0
// `policymap-lab shell`: objects by name, from a prompt, from files, or from standard input.
#pragma once

#include "lab/Shell.h"
#include "lab/Verb.h"

#include <istream>
#include <string>
#include <vector>

namespace lab {

class ShellVerb : public Verb {
 public:
  explicit ShellVerb(CLI::App& program);

  CLI::App const& command() const override { return *command_; }
  ExitStatus run(Console const& console) override;

 private:
  CLI::App* command_;
  std::vector<std::string> files_;
};

/// Runs a script line by line. The first line that fails ends it, with its number and the error on
/// `console.err`.
ExitStatus runScript(std::istream& script, Console const& console);
/// The same on a shell that may have run others before. `name` stands before the number of a line
/// that fails.
ExitStatus runScript(Shell& shell, std::istream& script, std::string const& name,
                     Console const& console);

}  // namespace lab
