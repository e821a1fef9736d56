// SPDX-License-Identifier: Apache-2.0
#include "Acl/AclConfig.h"

#include "Acl/Config.h"

namespace Acl {

AclBase::~AclBase() = default;

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
  this->template attributeChanged<Self>(AclBase::ruleId,
                                        [seq](NotifieeConst& notifiee) { notifiee.onRule(seq); });
  // A hook may have removed the list from its Config.
  if (owner_ != nullptr) {
    owner_->listChanged(*self);
  }
}

IpAclConfig::~IpAclConfig() = default;

Kor::KorType const* IpAclConfig::fwkType() const {
  return _fwkType();
}

Kor::KorType* IpAclConfig::_fwkType() {
  static Kor::KorType type("Acl::IpAclConfig", Kor::Entity::_fwkType());
  return &type;
}

Ip6AclConfig::~Ip6AclConfig() = default;

Kor::KorType const* Ip6AclConfig::fwkType() const {
  return _fwkType();
}

Kor::KorType* Ip6AclConfig::_fwkType() {
  static Kor::KorType type("Acl::Ip6AclConfig", Kor::Entity::_fwkType());
  return &type;
}

MacAclConfig::~MacAclConfig() = default;

Kor::KorType const* MacAclConfig::fwkType() const {
  return _fwkType();
}

Kor::KorType* MacAclConfig::_fwkType() {
  static Kor::KorType type("Acl::MacAclConfig", Kor::Entity::_fwkType());
  return &type;
}

template class AclConfigBase<IpAclConfig, IpAclRules>;
template class AclConfigBase<Ip6AclConfig, Ip6AclRules>;
template class AclConfigBase<MacAclConfig, MacAclRules>;

}  // namespace Acl
