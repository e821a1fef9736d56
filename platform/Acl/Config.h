// SPDX-License-Identifier: Apache-2.0
#pragma once

// Config: the named access lists of a system, by kind.

#include "Acl/AclConfig.h"
#include "Kor/Collection.h"
#include "Kor/Entity.h"
#include "Kor/KorType.h"
#include "Kor/Notifiee.h"
#include "Kor/Ptr.h"
#include "Kor/String.h"
#include "PolicyMap/Export.h"

namespace Acl {

// Implementation base of Config. Do not use directly.
class POLICYMAP_API ConfigLists : public Kor::Entity {
  KOR_OWNED_COLLECTION(ConfigLists, ipAcl, IpAcl, Kor::Name, IpAclConfig, , ;)
  KOR_OWNED_COLLECTION(ConfigLists, ip6Acl, Ip6Acl, Kor::Name, Ip6AclConfig, , ;)
  KOR_OWNED_COLLECTION(ConfigLists, macAcl, MacAcl, Kor::Name, MacAclConfig, , ;)

 protected:
  using Entity::Entity;
};

class POLICYMAP_API Config : public ConfigLists {
 public:
  using Ptr = Kor::Ptr<Config>;
  using PtrConst = Kor::Ptr<Config const>;
  class NotifieeConst;
  class Notifiee;

  explicit Config(Kor::Name name = "acl");
  ~Config() override;

  static constexpr Kor::AttributeId ipAclId = 258;
  static constexpr Kor::AttributeId ip6AclId = 259;
  static constexpr Kor::AttributeId macAclId = 260;

  IpAclConfig::Ptr newIpAcl(Kor::Name const& name);
  Ip6AclConfig::Ptr newIp6Acl(Kor::Name const& name);
  MacAclConfig::Ptr newMacAcl(Kor::Name const& name);

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

 private:
  friend class ConfigLists;
  template <class Self, class Rules>
  friend class AclConfigBase;

  template <class List>
  List adopted(List list);
  // Announces that a list was created or removed, or that a rule of a list in this Config has
  // changed.
  void listChanged(IpAclConfig const* list) const;
  void listChanged(Ip6AclConfig const* list) const;
  void listChanged(MacAclConfig const* list) const;
};

// A hook is called when a list is created or removed, or when one of its rules changes.
class POLICYMAP_API Config::NotifieeConst
    : public Kor::NotifieeOf<Config, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;

  virtual void onIpAcl(Kor::Name name);
  virtual void onIp6Acl(Kor::Name name);
  virtual void onMacAcl(Kor::Name name);
};

class POLICYMAP_API Config::Notifiee : public Config::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

}  // namespace Acl
