// SPDX-License-Identifier: Apache-2.0
// `policymap-lab shell`: objects by name, from a prompt, from files, or from standard input.
#pragma once

#include "lab/Shell.h"
#include "lab/Verb.h"

#include <functional>
#include <istream>
#include <optional>
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

/// The next line that a person typed; none at the end.
using NextLine = std::function<std::optional<std::string>()>;

/// Does line after line until the end or `quit`, and goes on after one that fails. So it does after
/// an assertion: a line is tried in a copy of the process before it is done.
ExitStatus runPrompt(Shell& shell, NextLine const& next, Console const& console);

/// Runs a script line by line. The first line that fails ends it, with its number and the error on
/// `console.err`. So does an assertion, which ends the process with the status of bad input.
ExitStatus runScript(std::istream& script, Console const& console);
/// The same on a shell that may have run others before. `name` stands before the number of a line
/// that fails.
ExitStatus runScript(Shell& shell, std::istream& script, std::string const& name,
                     Console const& console);

}  // namespace lab
