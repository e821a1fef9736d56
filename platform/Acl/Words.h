// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Acl/OptionalNumber.h"

#include <string>
#include <string_view>

namespace Acl {

// Builds the line of a rule: words separated by single blanks. Empty words are ignored.
class Words {
 public:
  explicit Words(bool permit) : text_(permit ? "permit" : "deny") {}

  void add(std::string_view word) {
    if (!word.empty()) {
      text_.append(" ").append(word);
    }
  }
  void add(std::string_view name, OptionalNumber number) {
    if (number) {
      add(name);
      add(std::to_string(*number));
    }
  }
  void addIf(bool present, std::string_view word) { add(present ? word : std::string_view()); }

  [[nodiscard]] std::string text() const { return text_; }

 private:
  std::string text_;
};

}  // namespace Acl
