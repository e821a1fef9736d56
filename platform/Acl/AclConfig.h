// SPDX-License-Identifier: Apache-2.0
#pragma once

// IpAclConfig, Ip6AclConfig, MacAclConfig: access lists, rules by sequence number.
//
// A list in a Config reports every announced change of a rule to it. As in every collection, rules
// stored by newRule() are not announced, but the next rulesBySeq() includes them. Do not write
// through korRule(seq)->valueIs(): an entry does not know its list.

#include "Acl/AclRules.h"
#include "Acl/Ip6RuleConfig.h"
#include "Acl/IpRuleConfig.h"
#include "Acl/MacRuleConfig.h"
#include "Kor/Collection.h"
#include "Kor/Entity.h"
#include "Kor/HashMap.h"
#include "Kor/KorType.h"
#include "Kor/Notifiee.h"
#include "Kor/Ptr.h"
#include "Kor/String.h"
#include "PolicyMapExport.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace Acl {

class Config;

// The part of a list that does not depend on the type of its rules.
class POLICYMAP_API AclBase : public Kor::Entity {
 public:
  ~AclBase() override;

  static constexpr Kor::AttributeId ruleId = 258;

  // The key of the list in its Config.
  [[nodiscard]] Kor::Name const& fwkKey() const { return name(); }

 protected:
  using Entity::Entity;

  // Announces that a rule was stored or removed.
  virtual void ruleChanged(std::uint32_t seq) = 0;
};

// The collection of rules of each kind of list.

class POLICYMAP_API IpAclRules : public AclBase {
 public:
  using Rule = IpRuleConfig;

  KOR_VALUE_COLLECTION(IpAclRules, rule, Rule, std::uint32_t, IpRuleConfig,
                       KOR_ON_CHANGE(ruleChanged(key)))

 protected:
  using AclBase::AclBase;
};

class POLICYMAP_API Ip6AclRules : public AclBase {
 public:
  using Rule = Ip6RuleConfig;

  KOR_VALUE_COLLECTION(Ip6AclRules, rule, Rule, std::uint32_t, Ip6RuleConfig,
                       KOR_ON_CHANGE(ruleChanged(key)))

 protected:
  using AclBase::AclBase;
};

class POLICYMAP_API MacAclRules : public AclBase {
 public:
  using Rule = MacRuleConfig;

  KOR_VALUE_COLLECTION(MacAclRules, rule, Rule, std::uint32_t, MacRuleConfig,
                       KOR_ON_CHANGE(ruleChanged(key)))

 protected:
  using AclBase::AclBase;
};

// Observes an access list of type `List`.
template <class List>
class AclNotifieeConst : public Kor::NotifieeOf<List, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeConst = AclNotifieeConst;

  using Kor::NotifieeOf<List, Kor::Entity::NotifieeConst>::NotifieeOf;
  // The rule of that number was stored, replaced or removed.
  virtual void onRule([[maybe_unused]] std::uint32_t seq) {}
};
template <class List>
class AclNotifiee : public AclNotifieeConst<List> {
 public:
  using Notifiee = AclNotifiee;

  using AclNotifieeConst<List>::AclNotifieeConst;
};

// Common base of the three kinds of lists. `Rules` is the collection that `Self` derives from.
template <class Self, class Rules>
class POLICYMAP_API AclConfigBase : public Rules, public Kor::HashMapLink<Self> {
 public:
  using NotifieeConst = AclNotifieeConst<Self>;
  using Notifiee = AclNotifiee<Self>;
  using Rule = typename Rules::Rule;
  using RulesPtr = Kor::Ptr<AclRules<Rule> const>;

  explicit AclConfigBase(Kor::Name name) : Rules(std::move(name)) {}

  void korOwnerIs(Config* owner) { owner_ = owner; }

  Kor::Ptr<typename Rules::KorRule> newRule(std::uint32_t const& seq, Rule const& rule) {
    snapshot_ = nullptr;
    return Rules::newRule(seq, rule);
  }

  // The current rules, by ascending sequence number; never null. The snapshot is created on demand
  // and kept until the next edit, so calls between edits return the same object.
  [[nodiscard]] RulesPtr rulesBySeq() const;

 protected:
  void ruleChanged(std::uint32_t seq) override;

 private:
  mutable RulesPtr snapshot_;  // null after an edit
  Config* owner_ = nullptr;    // valid only while this list is linked there
};

// An access list of IPv4 rules.
class POLICYMAP_API IpAclConfig final : public AclConfigBase<IpAclConfig, IpAclRules> {
 public:
  using Ptr = Kor::Ptr<IpAclConfig>;
  using PtrConst = Kor::Ptr<IpAclConfig const>;

  using AclConfigBase::AclConfigBase;
  ~IpAclConfig() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();
};

// An access list of IPv6 rules.
class POLICYMAP_API Ip6AclConfig final : public AclConfigBase<Ip6AclConfig, Ip6AclRules> {
 public:
  using Ptr = Kor::Ptr<Ip6AclConfig>;
  using PtrConst = Kor::Ptr<Ip6AclConfig const>;

  using AclConfigBase::AclConfigBase;
  ~Ip6AclConfig() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();
};

// An access list of MAC rules.
class POLICYMAP_API MacAclConfig final : public AclConfigBase<MacAclConfig, MacAclRules> {
 public:
  using Ptr = Kor::Ptr<MacAclConfig>;
  using PtrConst = Kor::Ptr<MacAclConfig const>;

  using AclConfigBase::AclConfigBase;
  ~MacAclConfig() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();
};

extern template class AclConfigBase<IpAclConfig, IpAclRules>;
extern template class AclConfigBase<Ip6AclConfig, Ip6AclRules>;
extern template class AclConfigBase<MacAclConfig, MacAclRules>;

}  // namespace Acl
