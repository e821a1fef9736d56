// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/ConditionReasons.h"

#include "testkit/text/Lexer.h"

#include <array>

namespace PolicyMapTestKit::Text {

namespace {

constexpr std::string_view notInHeaders = "a header does not tell it";
constexpr std::string_view noField = "rules do not have this field";
constexpr std::string_view notInRules = "rules cannot say it";
constexpr std::string_view notUnderstood = "not understood";

// The beginnings of conditions that no rule expresses.
struct Inexpressible {
  std::string_view word;
  std::string_view reason;
};

constexpr std::array inexpressible{
    Inexpressible{"cos inner", noField},
    Inexpressible{"dei", noField},
    Inexpressible{"flow-label", noField},
    Inexpressible{"fragment-type", noField},
    Inexpressible{"mpls disposition", notInRules},
    Inexpressible{"packet", noField},
    Inexpressible{"tcp-flag", noField},
    Inexpressible{"vlan inner", noField},
    Inexpressible{"ip rtp", notInRules},
    Inexpressible{"ip tos", noField},
    Inexpressible{"ip6flowlbl", noField},
    Inexpressible{"secondary-cos", noField},
    Inexpressible{"secondary-vlan", noField},
    Inexpressible{"not access-group", notInRules},
    Inexpressible{"not class-map", notInRules},
    Inexpressible{"not mpls", notInRules},
    Inexpressible{"application", notInHeaders},
    Inexpressible{"application-group", notInHeaders},
    Inexpressible{"atm", notInHeaders},
    Inexpressible{"authentication", notInHeaders},
    Inexpressible{"discard-class", notInHeaders},
    Inexpressible{"flow", notInHeaders},
    Inexpressible{"fr-de", notInHeaders},
    Inexpressible{"fr-dlci", notInHeaders},
    Inexpressible{"frame-relay", notInHeaders},
    Inexpressible{"input-interface", notInHeaders},
    Inexpressible{"qos-group", notInHeaders},
    Inexpressible{"signature", notInHeaders},
    Inexpressible{"traffic-category", notInHeaders},
    Inexpressible{"user-group", notInHeaders},
};

}  // namespace

std::string_view knownReason(std::string_view condition) {
  for (Inexpressible const& each : inexpressible) {
    bool const begins = condition.size() >= each.word.size() &&
                        equalsKeyword(condition.substr(0, each.word.size()), each.word);
    if (begins && (condition.size() == each.word.size() || condition[each.word.size()] == ' ')) {
      return each.reason;
    }
  }
  return {};
}

std::string_view reasonAgainst(std::string_view condition) {
  if (condition == contradiction) {
    return "no kind of rule has their fields together";
  }
  std::string_view const known =
      condition.starts_with("not ") ? notInRules : knownReason(condition);
  bool const isProtocol = condition.starts_with("protocol ");
  return !known.empty() ? known : isProtocol ? notInHeaders : notUnderstood;
}

}  // namespace PolicyMapTestKit::Text
