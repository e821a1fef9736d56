// SPDX-License-Identifier: Apache-2.0
#pragma once

// ActionMapping: which of the three test actions the lines of a class become, in place of the usual
// ones. One entry per line of text:
//
//   set cos = action3
//   police = action1
//   random-detect = none

#include "testkit/Export.h"
#include "testkit/text/SourceText.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit::Text {

class POLICYMAPTESTKIT_API ActionMapping {
 public:
  // No entries.
  ActionMapping() = default;
  // Raises InputError at the first line that is no entry, a comment (`!` or `#`) or empty, and if
  // an entry has the words of an earlier one.
  explicit ActionMapping(SourceText const& source);

  // The kind of action, from 1, of the entry with most words of those that begin `line`; 0 if the
  // line is none. No value: no entry fits.
  [[nodiscard]] std::optional<std::uint8_t> actionOf(std::string_view line) const;
  // A line per entry, in order, as they are read.
  [[nodiscard]] std::string text() const;

 private:
  struct Entry {
    std::vector<std::string> words;  // in lower case
    std::uint8_t action;
  };
  std::vector<Entry> entries_;
};

}  // namespace PolicyMapTestKit::Text
