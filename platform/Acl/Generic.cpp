// SPDX-License-Identifier: Apache-2.0
#include "Acl/Generic.h"

namespace Kor {
namespace {

template <class Rule>
bool takeRule(GenericValue const& from, Acl::OptionalRule& to) {
  Rule rule;
  if (!Generic<Rule>::take(from, rule)) {
    return false;
  }
  to = rule;
  return true;
}

}  // namespace

KorType* Generic<Acl::OptionalNumber>::record() {
  static KorType type("Acl::OptionalNumber", nullptr);
  return &type;
}

GenericValue Generic<Acl::OptionalNumber>::value(Acl::OptionalNumber number) {
  return number ? GenericValue(*number) : GenericValue(nullptr);
}

bool Generic<Acl::OptionalNumber>::take(GenericValue const& from, Acl::OptionalNumber& to) {
  if (from.isNull()) {
    to = std::nullopt;
    return true;
  }
  std::int64_t number = 0;
  if (!Generic<std::int64_t>::take(from, number)) {
    return false;
  }
  to = number;
  return true;
}

KorType* Generic<Acl::OptionalRule>::record() {
  static KorType type("Acl::OptionalRule", nullptr);
  return &type;
}

GenericValue Generic<Acl::OptionalRule>::value(Acl::OptionalRule const& rule) {
  auto const boxed = []<class Rule>(Rule const& some) { return Generic<Rule>::value(some); };
  return rule ? std::visit(boxed, *rule) : GenericValue(nullptr);
}

bool Generic<Acl::OptionalRule>::take(GenericValue const& from, Acl::OptionalRule& to) {
  if (from.isNull()) {
    to = std::nullopt;
    return true;
  }
  return takeRule<Acl::IpRuleConfig>(from, to) || takeRule<Acl::Ip6RuleConfig>(from, to) ||
         takeRule<Acl::MacRuleConfig>(from, to);
}

}  // namespace Kor
