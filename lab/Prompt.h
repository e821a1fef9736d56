// SPDX-License-Identifier: Apache-2.0
#pragma once

// Interactive input lines with editing, history and completion.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lab {

class Prompt {
 public:
  // Returns the completions of the last name of the line.
  using Completions = std::function<std::vector<std::string>(std::string_view line)>;

  Prompt(std::string prompt, Completions completions);
  Prompt(Prompt const&) = delete;
  Prompt& operator=(Prompt const&) = delete;
  ~Prompt();

  // The next line without its line end; none at the end of input. Ctrl-C drops the line that is
  // being edited.
  std::optional<std::string> next();

  // Adds the lines that an earlier session saved. A file that does not exist or is no history adds
  // none.
  void loadHistory(std::string const& file);
  // Writes all lines of the history, for this user only. Creates the folders. Returns false if the
  // file cannot be written.
  [[nodiscard]] bool saveHistory(std::string const& file) const;

 private:
  struct Editor;
  std::unique_ptr<Editor> editor_;
};

// Looks up an environment variable; null if it is not set.
using Environment = std::function<char const*(char const* name)>;

// The file for the history: POLICYMAP_LAB_HISTORY; without it policymap-lab/history in
// XDG_STATE_HOME, or in .local/state of HOME. Empty for none: if the first is set and empty, or if
// all are missing.
std::string historyFile(Environment const& environment);

}  // namespace lab
