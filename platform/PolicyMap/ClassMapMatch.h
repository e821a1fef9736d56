// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Acl/OptionalRule.h"
#include "Kor/Strep.h"
#include "Kor/String.h"
#include "PolicyMap/ClassMapMatchOption.h"
#include "PolicyMap/ValueText.h"
#include "PolicyMapExport.h"

#include <cstdint>
#include <ostream>
#include <string_view>
#include <tuple>

namespace PolicyMap {

// One match statement of a class-map: a named access list, a nested class-map, or an inline rule.
class POLICYMAP_API ClassMapMatch {
 public:
  enum class Kind : std::uint8_t { acl, classMap, rule };
  using Rule = Acl::AnyRule;
  static constexpr std::string_view korTypeName = "PolicyMap::ClassMapMatch";

  // An empty match: an access list without a name.
  ClassMapMatch() = default;
  // Constructs a match from all parts. The option is ignored for a nested class-map. Throws
  // Kor::RangeException "ClassMapMatch::PART ..." if `Kind::rule` has no rule, another kind has
  // one, a rule has a name, or a rule does not fit the option.
  ClassMapMatch(Kind kind, ClassMapMatchOption option, Kor::Name name,
                Acl::OptionalRule const& rule);
  static ClassMapMatch acl(ClassMapMatchOption option, Kor::Name name);
  static ClassMapMatch classMap(Kor::Name name);
  static ClassMapMatch rule(Acl::IpRuleConfig const& rule);
  static ClassMapMatch rule(Acl::Ip6RuleConfig const& rule);
  // MAC rules are valid for two options, mac and mpls. Throws Kor::RangeException for any other.
  static ClassMapMatch rule(Acl::MacRuleConfig const& rule,
                            ClassMapMatchOption option = ClassMapMatchOption::mac);

  [[nodiscard]] Kind kind() const { return kind_; }
  // The match option. It has no meaning for a nested class-map.
  [[nodiscard]] ClassMapMatchOption option() const { return option_; }
  // The name of the access list or class-map; empty for a rule.
  [[nodiscard]] Kor::Name const& name() const { return name_; }
  // The inline rule, or a default-constructed one for other kinds.
  [[nodiscard]] Rule const& rule() const;
  [[nodiscard]] Acl::OptionalRule const& ruleIfAny() const { return rule_; }

  bool operator==(ClassMapMatch const&) const = default;
  [[nodiscard]] bool operator!() const { return *this == ClassMapMatch(); }

  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::KorType const* fwkType() const { return _fwkType(); }

  static constexpr auto korFields() {
    using M = ClassMapMatch;
    return std::tuple(
        Kor::field("kind", &M::kind, &M::kindIs,
                   "what is matched: an access list, a class-map or an inline rule"),
        Kor::field("option", &M::option, &M::optionIs,
                   "match option; without meaning for a class-map"),
        Kor::field("name", &M::name, &M::nameIs,
                   "access list or class-map; empty for an inline rule"),
        Kor::field("rule", &M::ruleIfAny, &M::ruleIs, "inline rule; None for other kinds"));
  }

 private:
  friend void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end,
                              ClassMapMatch& match);

  void kindIs(Kind kind) { kind_ = kind; }
  void optionIs(ClassMapMatchOption option) { option_ = option; }
  void nameIs(Kor::Name const& name) { name_ = name; }
  void ruleIs(Acl::OptionalRule const& rule) { rule_ = rule; }

  Kind kind_ = Kind::acl;
  ClassMapMatchOption option_ = ClassMapMatchOption::ipv4;
  Kor::Name name_;
  Acl::OptionalRule rule_;  // present if and only if kind_ is Kind::rule
};

POLICYMAP_API Kor::KorType* korEnumType(ClassMapMatch::Kind /*any*/);
// 'acl', 'classMap', 'rule'.
POLICYMAP_API Kor::String8 valueToStrep(ClassMapMatch::Kind kind);
POLICYMAP_API void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end,
                                   ClassMapMatch::Kind& kind);
POLICYMAP_API std::ostream& operator<<(std::ostream& out, ClassMapMatch::Kind kind);

POLICYMAP_API void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end,
                                   ClassMapMatch& match);

}  // namespace PolicyMap
