// SPDX-License-Identifier: Apache-2.0
#pragma once

// The grammar of one rule, for entries of access lists and for rules in class-maps.

#include "testkit/Export.h"
#include "testkit/text/Lexer.h"
#include "testkit/text/Statement.h"

namespace PolicyMapTestKit::Text {

// Selects the grammar.
enum class RuleKind : std::uint8_t {
  standardIp4,  // a source address only
  ip4,
  ip6,
  mac,
};

enum class Verdict : std::uint8_t { permit, deny };

constexpr RuleKind extendedRule(Family family) noexcept {
  return family == Family::ip4   ? RuleKind::ip4
         : family == Family::ip6 ? RuleKind::ip6
                                 : RuleKind::mac;
}

// Parses what follows `permit` or `deny`, up to the end of the line. Raises SyntaxFailure.
POLICYMAPTESTKIT_API ConfiguredRule parseRule(Lexer& lexer, RuleKind kind, Verdict verdict);
// The same for a line of an access list, which may have alternatives. `place` is that of the line.
POLICYMAPTESTKIT_API ListRule parseListRule(Lexer& lexer, RuleKind kind, Verdict verdict,
                                            SourcePosition const& place);

// Consumes and returns an Ethernet type, by number or name; none if the next word is none.
POLICYMAPTESTKIT_API std::optional<std::uint16_t> acceptEtherType(Lexer& lexer);

// True if `text` is the rule as policy text, in any of its spellings, or as messages show it:
// "permit tcp any any eq www", "permit tcp any any eq 80". Throws InputError if it is no rule at
// all.
POLICYMAPTESTKIT_API bool isWritten(ConfiguredRule const& rule, std::string_view text);

}  // namespace PolicyMapTestKit::Text
