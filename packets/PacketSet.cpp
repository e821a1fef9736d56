// SPDX-License-Identifier: Apache-2.0
#include "packets/PacketSet.h"

#include "packets/configuration/ConfiguredBoxes.h"
#include "testkit/text/RuleParser.h"
#include "testkit/text/SourceText.h"

#include <memory>
#include <optional>

namespace PolicyMapPackets {

namespace {

using PolicyMapTestKit::Text::InputError;
using PolicyMapTestKit::Text::Lexer;
using PolicyMapTestKit::Text::RuleKind;
using PolicyMapTestKit::Text::SyntaxFailure;

InputError errorOf(SyntaxFailure const& failure) {
  static auto const name = std::make_shared<std::string const>("packets");
  return {{name, 1, failure.found.column}, failure.expected, failure.found.text};
}

}  // namespace

PacketSet::PacketSet(std::string_view text) : text_(text) {
  std::optional<SyntaxFailure> farthest;
  for (RuleKind const kind : {RuleKind::ip4, RuleKind::ip6, RuleKind::mac}) {
    try {
      Lexer lexer(text);
      rules_.push_back(parseRule(lexer, kind, PolicyMapTestKit::Text::Verdict::permit));
    } catch (SyntaxFailure const& failure) {
      if (!farthest || failure.found.column > farthest->found.column) {
        farthest = failure;
      }
    }
  }
  if (rules_.empty()) {
    throw errorOf(*farthest);
  }
}

std::vector<Box> PacketSet::boxes(Slice const& slice) const {
  std::vector<Box> all;
  for (auto const& rule : rules_) {
    std::vector<Box> const some = configuredBoxes(slice, rule);
    all.insert(all.end(), some.begin(), some.end());
  }
  return all;
}

}  // namespace PolicyMapPackets
