// SPDX-License-Identifier: Apache-2.0
// The grammar of one rule, the same for the entries of access lists and for rules written in
// class-maps.
#pragma once

#include "lab/Lexer.h"
#include "lab/Statement.h"

namespace lab {

/// What a rule is measured against.
enum class RuleKind : std::uint8_t {
  standardIp4,  ///< a source address alone
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

/// Reads what follows `permit` or `deny`, up to the end of the line. Raises SyntaxFailure; nothing
/// of a rule is returned that was not understood to its end.
ConfiguredRule parseRule(Lexer& lexer, RuleKind kind, Verdict verdict);

}  // namespace lab
