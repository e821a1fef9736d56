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
#include "PolicyMapExport.h"

namespace Acl {

class POLICYMAP_API Config : public Kor::Entity,
                             public IpAclConfig::Owner,
                             public Ip6AclConfig::Owner,
                             public MacAclConfig::Owner {
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

  KOR_OWNED_COLLECTION(Config, ipAcl, IpAcl, Kor::Name, IpAclConfig,
                       KOR_ON_CHANGE(listChanged(*member)))
  KOR_OWNED_COLLECTION(Config, ip6Acl, Ip6Acl, Kor::Name, Ip6AclConfig,
                       KOR_ON_CHANGE(listChanged(*member)))
  KOR_OWNED_COLLECTION(Config, macAcl, MacAcl, Kor::Name, MacAclConfig,
                       KOR_ON_CHANGE(listChanged(*member)))

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

 private:
  // A list was created or removed, or a rule of a member has changed.
  void listChanged(IpAclConfig const& list) override;
  void listChanged(Ip6AclConfig const& list) override;
  void listChanged(MacAclConfig const& list) override;
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
