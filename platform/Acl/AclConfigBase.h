// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the three kinds of access lists have in common: rules by sequence number.
//
// A list in a Config reports every announced change of a rule to it. As in every collection, rules
// stored by newRule() are not announced, but the next rulesBySeq() includes them. Do not write
// through korRule(seq)->valueIs(): an entry does not know its list.

#include "Acl/AclBase.h"
#include "Acl/AclRules.h"
#include "Kor/Entity.h"
#include "Kor/HashMap.h"
#include "Kor/Notifiee.h"
#include "Kor/Ptr.h"
#include "Kor/String.h"
#include "PolicyMapExport.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace Acl {

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

// `Self` is the kind of list, `Rules` the collection that it derives from.
template <class Self, class Rules>
class POLICYMAP_API AclConfigBase : public Rules, public Kor::HashMapLink<Self> {
 public:
  using NotifieeConst = AclNotifieeConst<Self>;
  using Notifiee = AclNotifiee<Self>;
  using Rule = typename Rules::Rule;
  using RulesPtr = Kor::Ptr<AclRules<Rule> const>;

  // The object that the list is a member of.
  class Owner {
   public:
    // A rule of the list has changed, and its notifiees have been notified.
    virtual void listChanged(Self const& list) = 0;

   protected:
    ~Owner() = default;
  };

  explicit AclConfigBase(Kor::Name name) : Rules(std::move(name)) {}

  void korOwnerIs(Owner* owner) { owner_ = owner; }

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
  Owner* owner_ = nullptr;     // valid only while this list is linked there
};

template <class Self, class Rules>
typename AclConfigBase<Self, Rules>::RulesPtr AclConfigBase<Self, Rules>::rulesBySeq() const {
  if (!snapshot_) {
    std::vector<typename AclRules<Rule>::Entry> entries;
    entries.reserve(this->rules());
    for (auto const& entry : this->ruleIteratorConst()) {
      entries.emplace_back(entry.key(), entry.value());
    }
    snapshot_ = Kor::make<AclRules<Rule> const>(std::move(entries));
  }
  return snapshot_;
}

template <class Self, class Rules>
void AclConfigBase<Self, Rules>::ruleChanged(std::uint32_t seq) {
  snapshot_ = nullptr;
  auto const* const self = static_cast<Self const*>(this);
  // A hook may remove the list from its Config; the Config must not be notified then.
  Kor::Ptr<Self const> const pinned = Kor::share(self);
  this->template attributeChanged<Self>(AclBase::ruleId, &NotifieeConst::onRule, seq);
  // A hook may have removed the list from its Config.
  if (owner_ != nullptr) {
    owner_->listChanged(*self);
  }
}

}  // namespace Acl
