// SPDX-License-Identifier: Apache-2.0
#pragma once

// `policymap-lab shell`: objects by name, from a prompt, files or standard input.

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

// The next interactive line; none at the end of input.
using NextLine = std::function<std::optional<std::string>()>;

// Executes lines until the end of input or `quit`. Continues after a line that fails, even by an
// assertion, because each line is first tried in a copy of the process.
ExitStatus runPrompt(Shell& shell, NextLine const& next, Console const& console);

// Runs a script line by line. The first line that fails ends it, with its number and the error on
// `console.err`. An assertion ends the process with the exit status badInput.
ExitStatus runScript(std::istream& script, Console const& console);
// The same on a shell that may have run other scripts. `name` precedes the number of a line that
// fails.
ExitStatus runScript(Shell& shell, std::istream& script, std::string const& name,
                     Console const& console);

}  // namespace lab
