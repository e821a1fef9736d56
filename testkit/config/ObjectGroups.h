// SPDX-License-Identifier: Apache-2.0
#pragma once

// Object-groups, and the expansion of access list lines that name them into rules.

#include "testkit/Export.h"
#include "testkit/text/Statement.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace PolicyMapTestKit::Text {

struct ObjectGroup {
  GroupKind kind = GroupKind::addresses;
  // In file order, each once.
  std::vector<GroupMember> members;
  // Of the line that opened it first.
  SourcePosition place;
  // Of a member that was skipped.
  std::optional<SourcePosition> skipped = {};
};

using ObjectGroups = std::map<std::string, ObjectGroup>;

// One line makes at most this number of rules.
constexpr std::uint64_t mostRulesOfLine = 100000;

// The rules of a line: every service with every source and every destination, in the order of the
// members. Throws InputError at the place of the line if a group does not exist, is of another
// kind or family, or if there are more than mostRulesOfLine; and for a `deny`, unless `widening`,
// if a member of a group was skipped.
[[nodiscard]] POLICYMAPTESTKIT_API std::vector<ConfiguredRule> rulesOf(ListRule const& line,
                                                                       ObjectGroups const& groups,
                                                                       bool widening = false);

[[nodiscard]] bool isDeny(ConfiguredRule const& rule);

// The number of the first rule of a line: its own, if the rules of the lines before it leave it
// free, and otherwise the next one. Throws InputError if there is none for the last rule.
class LineNumbers {
 public:
  [[nodiscard]] std::uint32_t firstOf(std::uint32_t number, std::size_t rules,
                                      SourcePosition const& place);

 private:
  std::uint64_t next_ = 0;
  SourcePosition place_;  // of the last line with several rules
};

}  // namespace PolicyMapTestKit::Text
