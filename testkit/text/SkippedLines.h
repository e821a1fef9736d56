// SPDX-License-Identifier: Apache-2.0
#pragma once

// Counts the lines that a lenient reading skipped.

#include "testkit/Export.h"
#include "testkit/text/Lexer.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace PolicyMapTestKit::Text {

// Counts of skipped lines by kind. Memory is bounded: after the first 256 kinds, further ones count
// as "other".
class POLICYMAPTESTKIT_API SkippedLines {
 public:
  void add(std::string const& kind, std::uint64_t lines = 1);

  std::uint64_t total() const noexcept { return total_; }
  // Ordered by the names of the kinds.
  std::map<std::string, std::uint64_t> const& byKind() const noexcept { return byKind_; }

 private:
  std::map<std::string, std::uint64_t> byKind_;
  std::uint64_t total_ = 0;
};

// The kind of a skipped line: its leading keywords in lower case, e.g. "object-group", "match
// protocol", "no ip source-route". If a known command has an unknown part, that part is in
// parentheses: "permit (addrgroup)", "permit (value)" if it is not a keyword, "permit (incomplete)"
// if the line ends too early. A line that does not start with a keyword is "(text)".
POLICYMAPTESTKIT_API std::string skippedKind(std::string_view line, SyntaxFailure const& failure);

}  // namespace PolicyMapTestKit::Text
