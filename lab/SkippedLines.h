// SPDX-License-Identifier: Apache-2.0
// The account of the lines that a lenient reading passed over.
#pragma once

#include "lab/Lexer.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace lab {

/// How many lines were passed over, by kind. Neither the number of kinds nor their length grows
/// with the input: what comes after the first 256 kinds is counted as "other".
class SkippedLines {
 public:
  void add(std::string const& kind, std::uint64_t lines = 1);

  std::uint64_t total() const noexcept { return total_; }
  /// In the order of the kinds' names.
  std::map<std::string, std::uint64_t> const& byKind() const noexcept { return byKind_; }

 private:
  std::map<std::string, std::uint64_t> byKind_;
  std::uint64_t total_ = 0;
};

/// The kind of a line that was not understood: its leading keywords in lower case, as in
/// "object-group", "match protocol", "no ip source-route"; where a known command has an unknown
/// part, that part in brackets: "permit (addrgroup)", "permit (value)" for something that is no
/// keyword, "permit (incomplete)" for a line that ends too early. A line that does not start with a
/// keyword is "(text)".
std::string skippedKind(std::string_view line, SyntaxFailure const& failure);

}  // namespace lab
