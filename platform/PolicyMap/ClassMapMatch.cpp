// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ClassMapMatch.h"

#include "Kor/Exception.h"
#include "PolicyMap/NamedEnum.h"

#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace PolicyMap {
namespace {

constexpr std::array<std::string_view, 3> kinds{"acl", "classMap", "rule"};
constexpr Kor::EnumNames kindNames{"Kind", kinds.data(), kinds.size()};

[[noreturn]] void refuse(std::string const& text) {
  throw Kor::RangeException("ClassMapMatch::" + text);
}

bool goesWith(ClassMapMatch::Rule const& rule, ClassMapMatchOption option) {
  if (std::holds_alternative<Acl::IpRuleConfig>(rule)) {
    return option == ClassMapMatchOption::ipv4;
  }
  if (std::holds_alternative<Acl::Ip6RuleConfig>(rule)) {
    return option == ClassMapMatchOption::ipv6;
  }
  return option == ClassMapMatchOption::mac || option == ClassMapMatchOption::mpls;
}

}  // namespace

ClassMapMatch::ClassMapMatch(Kind kind, ClassMapMatchOption option, Kor::Name name,
                             Acl::OptionalRule const& rule)
    : kind_(kind),
      option_(kind == Kind::classMap ? ClassMapMatchOption::ipv4 : option),
      name_(std::move(name)),
      rule_(rule) {
  if (kind_ != Kind::rule) {
    if (rule_) {
      refuse("rule not allowed with a name to match");
    }
    return;
  }
  if (!rule_) {
    refuse("rule missing");
  }
  if (!name_.empty()) {
    refuse("name not allowed with a rule");
  }
  if (!goesWith(*rule_, option_)) {
    refuse("option " + valueToStrep(option_).stdString() + " not allowed with such a rule");
  }
}

ClassMapMatch ClassMapMatch::acl(ClassMapMatchOption option, Kor::Name name) {
  return {Kind::acl, option, std::move(name), std::nullopt};
}
ClassMapMatch ClassMapMatch::classMap(Kor::Name name) {
  return {Kind::classMap, ClassMapMatchOption::ipv4, std::move(name), std::nullopt};
}
ClassMapMatch ClassMapMatch::rule(Acl::IpRuleConfig const& rule) {
  return {Kind::rule, ClassMapMatchOption::ipv4, {}, rule};
}
ClassMapMatch ClassMapMatch::rule(Acl::Ip6RuleConfig const& rule) {
  return {Kind::rule, ClassMapMatchOption::ipv6, {}, rule};
}
ClassMapMatch ClassMapMatch::rule(Acl::MacRuleConfig const& rule, ClassMapMatchOption option) {
  return {Kind::rule, option, {}, rule};
}

ClassMapMatch::Rule const& ClassMapMatch::rule() const {
  static Rule const none;
  return rule_ ? *rule_ : none;
}

Kor::KorType* ClassMapMatch::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end, ClassMapMatch& match) {
  ClassMapMatch read;
  Kor::readValueFields(it, end, read);
  match = ClassMapMatch(read.kind_, read.option_, read.name_, read.rule_);
}

Kor::KorType* korEnumType(ClassMapMatch::Kind /*any*/) {
  static Kor::KorType type("PolicyMap::ClassMapMatch::Kind", kindNames);
  return &type;
}

Kor::String8 valueToStrep(ClassMapMatch::Kind kind) {
  return Kor::enumToStrep(kindNames, static_cast<std::int32_t>(kind));
}

void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end,
                     ClassMapMatch::Kind& kind) {
  readNamed(it, end, kindNames, kind);
}

std::ostream& operator<<(std::ostream& out, ClassMapMatch::Kind kind) {
  return out << Kor::enumToText(kindNames, static_cast<std::int32_t>(kind));
}

}  // namespace PolicyMap
