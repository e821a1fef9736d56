// SPDX-License-Identifier: Apache-2.0
#pragma once

// Unused: configured rules and classes that no packet reaches, and rules that make no difference.

#include "packets/Export.h"
#include "packets/Subject.h"
#include "packets/engine/PairSearch.h"
#include "testkit/text/Json.h"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapPackets {

struct UnusedRule {
  enum class Reason : std::uint8_t {
    matchesNothing,  // no packet matches it at all
    notReached,      // the rules in `because` decide all its packets
    // Without it, its packets are treated the same, and are at the latest taken by those in
    // `because`.
    noDifference,
  };
  DecidingRule rule;
  Reason reason{};
  std::vector<DecidingRule> because = {};
};
// "matches no packet", "is reached by no packet", "makes no difference".
[[nodiscard]] POLICYMAPPACKETS_API std::string_view toText(UnusedRule::Reason reason);

struct POLICYMAPPACKETS_API Unused {
  std::string subject;  // "edge input ipv4"
  // In order.
  std::vector<UnusedRule> rules;
  // Classes with rules, none of which is reached.
  std::vector<std::string> classes;
  // The budget was spent: there may be more.
  bool isSpent = false;
};

// Of each policy and option that has rules. Throws as subjectsOf().
[[nodiscard]] POLICYMAPPACKETS_API std::vector<Unused> unusedRules(
    PolicyMapTestKit::Lab const& lab, Selection const& selection = {},
    std::uint64_t budget = Budget::usual);
[[nodiscard]] POLICYMAPPACKETS_API std::vector<Unused> unusedRules(
    std::vector<Subject> const& subjects, std::uint64_t budget = Budget::usual);
[[nodiscard]] POLICYMAPPACKETS_API Unused unusedRules(Subject const& subject,
                                                      std::uint64_t budget = Budget::usual);

// A line for each, without a line feed at the end.
POLICYMAPPACKETS_API std::ostream& operator<<(std::ostream& out, Unused const& unused);
// "subject", "rules" with "reason" and "because", "classes", "undecided".
[[nodiscard]] POLICYMAPPACKETS_API PolicyMapTestKit::Text::Json jsonOf(Unused const& unused);

}  // namespace PolicyMapPackets
