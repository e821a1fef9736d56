// SPDX-License-Identifier: Apache-2.0
#pragma once

// RandomEdits: random edits of a configuration, such as a user may type: they remove lines with
// `no`, restore them, change numbers, move classes, and shut interfaces down.

#include "testkit/Export.h"

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit {

class POLICYMAPTESTKIT_API RandomEdits {
 public:
  // Adds the lines of policy text.
  void add(std::string_view policyText);
  [[nodiscard]] bool empty() const { return lines_.empty(); }

  // The next edit, which depends on `random` and the edits before. Not every edit is valid.
  [[nodiscard]] std::string next(std::mt19937_64& random);

 private:
  static constexpr std::string_view classWord = "class ";

  struct Line {
    // Of a policy-map.
    [[nodiscard]] bool isClass() const { return !above.empty() && text.starts_with(classWord); }

    std::string text;
    std::size_t indentation = 0;
    std::vector<std::size_t> above;  // the lines that it is below, the outermost first
    bool removed = false;
  };

  [[nodiscard]] std::string inPlace(Line const& line, std::string const& text) const;
  std::string remove(std::size_t line);
  [[nodiscard]] std::vector<std::size_t> otherClasses(std::size_t line) const;
  std::string putBack(std::size_t line);
  [[nodiscard]] std::string withOtherNumber(std::size_t line, std::mt19937_64& random) const;

  std::vector<Line> lines_;
};

}  // namespace PolicyMapTestKit
