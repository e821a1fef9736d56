// SPDX-License-Identifier: Apache-2.0
#pragma once

// Comparisons with a number in rules: `eq 80`, `range 20 21`.

#include "testkit/Export.h"
#include "testkit/text/Lexer.h"

#include <Acl/NumberMatch.h>

#include <cstdint>

namespace PolicyMapTestKit::Text {

// Takes and returns the next comparison word; `any` if there is none.
POLICYMAPTESTKIT_API Acl::MatchOp acceptComparison(Lexer& lexer) noexcept;

// Reads the operands of a comparison. The bounds reject a comparison that no number matches, e.g.
// `lt 0`. `takeOperand(low, high)` reads one number from low to high.
template <class Match, class TakeOperand>
Match takeOperands(Acl::MatchOp comparison, TakeOperand takeOperand) {
  constexpr std::uint64_t highest = Match::highest;
  auto const take = [&takeOperand](std::uint64_t low, std::uint64_t high) {
    return static_cast<std::int64_t>(takeOperand(low, high));
  };
  if (comparison == Acl::MatchOp::lt) {
    return Match::lt(take(1, highest));
  }
  if (comparison == Acl::MatchOp::gt) {
    return Match::gt(take(0, highest - 1));
  }
  std::int64_t const low = take(0, highest);
  bool const isRange = comparison == Acl::MatchOp::range;
  return Match(comparison, low, isRange ? take(static_cast<std::uint64_t>(low), highest) : low);
}

}  // namespace PolicyMapTestKit::Text
