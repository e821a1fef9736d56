// SPDX-License-Identifier: Apache-2.0
#pragma once

// The options of the command line that say what a lab loads, what its hardware can do, and what is
// served: the same for all verbs that have a lab.

#include "lab/Kit.h"
#include "testkit/Lab.h"
#include "testkit/runs/Step.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

namespace lab {

class LabArguments {
 public:
  // Adds the options to a command, which keeps references to this object.
  explicit LabArguments(CLI::App& command);
  LabArguments(LabArguments const&) = delete;
  LabArguments& operator=(LabArguments const&) = delete;

  // Each adds a group of the help text.
  void addInputOptions();
  void addHelperOptions();
  void addMachineOptions();
  // Those of asynchronous results, to a group.
  void addOrderOptions(char const* group);

  // Raises UsageError without input, or if standard input is to be read more than once: here or
  // `alsoReads` times elsewhere.
  void check(std::ptrdiff_t alsoReads) const;

  // Takes the last of the files, which is another argument of the verb. Raises UsageError, with
  // `what`, if there is none.
  std::string takeLastInput(char const* what);

  // What loads the files, each as an edit of those before it, or the filter set. Raises InputError.
  [[nodiscard]] std::vector<Step> readInputs() const;
  // The first input, without its folder, for headings.
  [[nodiscard]] std::string title() const;
  [[nodiscard]] Reading reading() const {
    return widen_ ? Reading::widening : lenient_ ? Reading::lenient : Reading::strict;
  }
  [[nodiscard]] bool lenient() const { return lenient_; }

  // The arguments that give these options, except faults and files.
  [[nodiscard]] static std::vector<std::string> flagsOf(LabOptions const& options, Reading reading);

  // For more options. Files that they name are not read.
  LabOptions& options() { return options_; }
  [[nodiscard]] LabOptions const& options() const { return options_; }
  // The options of the lab, with the files that they name. Raises InputError.
  [[nodiscard]] LabOptions readOptions() const;

 private:
  template <class Flags>
  void addFlags(Flags const& flags, char const* group);

  CLI::App& command_;
  std::vector<std::string> files_;
  std::string rulesFile_;
  std::string actionsFile_;
  FilterLayout layout_;
  bool portsOnAnyProtocol_ = false;
  bool lenient_ = false;
  bool widen_ = false;
  LabOptions options_;
};

}  // namespace lab
