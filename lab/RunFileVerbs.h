// SPDX-License-Identifier: Apache-2.0
#pragma once

// What is done with the files that `policymap-lab run --record` and others write: `replay` runs
// them again, `minimise` shortens them, and `export` turns them into tests.

#include "lab/TestSource.h"
#include "lab/Verb.h"
#include "testkit/runs/RunFile.h"

#include <string>

namespace lab {

class ReplayVerb : public Verb {
 public:
  explicit ReplayVerb(CLI::App& program);

  CLI::App const& command() const override { return *command_; }
  // Returns notProgrammed if something differs from what is recorded.
  ExitStatus run(Console const& console) override;

 private:
  CLI::App* command_;
  std::string file_;
  std::string pageFile_;  // empty: none
};

class MinimiseVerb : public Verb {
 public:
  explicit MinimiseVerb(CLI::App& program);

  CLI::App const& command() const override { return *command_; }
  ExitStatus run(Console const& console) override;

 private:
  CLI::App* command_;
  std::string file_;
  std::string recordFile_;  // empty: none
};

class ExportVerb : public Verb {
 public:
  explicit ExportVerb(CLI::App& program);

  CLI::App const& command() const override { return *command_; }
  ExitStatus run(Console const& console) override;

 private:
  CLI::App* command_;
  std::string file_;
  std::string language_;
};

// Shortens a script with findings, prints it, and writes it to a file unless its name is empty.
void minimiseAndPrint(Console const& console, Script script, std::string const& recordFile);

}  // namespace lab
