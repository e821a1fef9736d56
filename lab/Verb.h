// SPDX-License-Identifier: Apache-2.0
#pragma once

// A subcommand of the program: `policymap-lab VERB [OPTION]... [FILE]...`.

#include "lab/Console.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <vector>

namespace lab {

// The constructor adds the subcommand and its options. Parsing the command line stores their values
// in the verb.
class Verb {
 public:
  Verb() = default;
  Verb(Verb const&) = delete;
  Verb& operator=(Verb const&) = delete;
  virtual ~Verb() = default;

  // The subcommand of this verb.
  virtual CLI::App const& command() const = 0;
  // Called if the subcommand was given. May raise UsageError and InputError.
  virtual ExitStatus run(Console const& console) = 0;
};

// All verbs, in the order of the help text.
std::vector<std::unique_ptr<Verb>> makeVerbs(CLI::App& program);

}  // namespace lab
