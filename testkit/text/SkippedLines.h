// SPDX-License-Identifier: Apache-2.0
#pragma once

// The lines that a lenient reading skipped.

#include "testkit/Export.h"
#include "testkit/text/Lexer.h"
#include "testkit/text/SourceText.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit::Text {

// Skipped lines, counted by kind. Memory is bounded: after the first 256 kinds, further ones count
// as "other", and the lines themselves are kept up to `mostLines`.
class POLICYMAPTESTKIT_API SkippedLines {
 public:
  struct Line {
    SourcePosition place;
    std::string kind;
  };
  static constexpr std::size_t mostLines = 100000;

  void add(std::string const& kind, SourcePosition const& place);
  // Adds what was skipped in a further file.
  void add(SkippedLines const& more);
  // A line about policies: an access list, an object-group, a class, a policy, or where one is
  // attached.
  void sawPolicyLine(bool understood) { ++(understood ? understood_ : missed_); }

  std::uint64_t total() const noexcept { return total_; }
  // In the order of the files.
  std::vector<Line> const& lines() const noexcept { return lines_; }
  // The lines about policies that were understood, and those that were skipped.
  std::uint64_t understood() const noexcept { return understood_; }
  std::uint64_t missed() const noexcept { return missed_; }
  // Ordered by the names of the kinds.
  std::map<std::string, std::uint64_t> const& byKind() const noexcept { return byKind_; }

 private:
  void count(std::string const& kind, std::uint64_t lines);

  std::map<std::string, std::uint64_t> byKind_;
  std::vector<Line> lines_;
  std::uint64_t total_ = 0;
  std::uint64_t understood_ = 0;
  std::uint64_t missed_ = 0;
};

// The kind of a skipped line: its leading keywords in lower case, e.g. "object-group", "match
// protocol", "no ip source-route". If a known command has an unknown part, that part is in
// parentheses: "permit (addrgroup)", "permit (value)" if it is not a keyword, "permit (incomplete)"
// if the line ends too early. A line that does not start with a keyword is "(text)".
POLICYMAPTESTKIT_API std::string skippedKind(std::string_view line, SyntaxFailure const& failure);

}  // namespace PolicyMapTestKit::Text
