// SPDX-License-Identifier: Apache-2.0
// One thing that the program can do: `policymap-lab VERB [OPTION]... [FILE]...`.
#pragma once

#include "lab/Console.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <vector>

namespace lab {

/// Its constructor adds a subcommand with its options; values land in the verb when the command
/// line is read.
class Verb {
 public:
  Verb() = default;
  Verb(Verb const&) = delete;
  Verb& operator=(Verb const&) = delete;
  virtual ~Verb() = default;

  /// The subcommand that stands for it.
  virtual CLI::App const& command() const = 0;
  /// Called when it was asked for. May raise UsageError and InputError.
  virtual ExitStatus run(Console const& console) = 0;
};

/// All verbs, in the order of the help text.
std::vector<std::unique_ptr<Verb>> makeVerbs(CLI::App& program);

}  // namespace lab
