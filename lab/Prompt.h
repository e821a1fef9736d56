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

  // The next line without its line end; none at the end of input.
  std::optional<std::string> next();

 private:
  struct Editor;
  std::unique_ptr<Editor> editor_;
};

}  // namespace lab
