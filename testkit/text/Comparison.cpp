// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/Comparison.h"

namespace PolicyMapTestKit::Text {

namespace {

using Acl::MatchOp;

struct NamedComparison {
  std::string_view name;
  MatchOp comparison;
};

constexpr NamedComparison comparisons[] = {
    {"eq", MatchOp::eq}, {"neq", MatchOp::neq},     {"lt", MatchOp::lt},
    {"gt", MatchOp::gt}, {"range", MatchOp::range},
};

}  // namespace

MatchOp acceptComparison(Lexer& lexer) noexcept {
  for (auto const& [name, comparison] : comparisons) {
    if (lexer.accept(name)) {
      return comparison;
    }
  }
  return MatchOp::any;
}

}  // namespace PolicyMapTestKit::Text
