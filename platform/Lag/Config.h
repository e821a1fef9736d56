// SPDX-License-Identifier: Apache-2.0
#pragma once

// Lag::Input::Config: the port-channel memberships of interfaces.

#include "Kor/Collection.h"
#include "Kor/Entity.h"
#include "Kor/KorType.h"
#include "Kor/Notifiee.h"
#include "Kor/Ptr.h"
#include "Kor/String.h"
#include "PolicyMapExport.h"
#include "Vorel/IntfId.h"

#include <map>
#include <vector>

namespace Lag::Input {

// Implementation base of Config. Do not use directly.
class POLICYMAP_API ConfigMembers : public Kor::Entity {
  KOR_VALUE_COLLECTION(ConfigMembers, memberOf, MemberOf, Vorel::IntfId, Vorel::IntfId,
                       KOR_ON_CHANGE(memberChanged(key)))

 protected:
  using Entity::Entity;

  // `member` joined, left or changed its port-channel: announces it.
  virtual void memberChanged(Vorel::IntfId member) = 0;
};

// `memberOf` maps a member to its port-channel. Do not write through
// korMemberOf(member)->valueIs(), which bypasses the index.
class POLICYMAP_API Config : public ConfigMembers {
 public:
  using Ptr = Kor::Ptr<Config>;
  using PtrConst = Kor::Ptr<Config const>;
  class NotifieeConst;
  class Notifiee;

  explicit Config(Kor::Name name = "lag");
  ~Config() override;

  static constexpr Kor::AttributeId memberOfId = 258;

  Kor::Ptr<KorMemberOf> newMemberOf(Vorel::IntfId const& member, Vorel::IntfId const& portChannel);

  // The members of a port-channel in ascending order. The reference is valid until the next edit.
  [[nodiscard]] std::vector<Vorel::IntfId> const& members(Vorel::IntfId portChannel) const;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

 protected:
  void memberChanged(Vorel::IntfId member) override;

 private:
  // Updates the index for the current port-channel of `member`.
  void reindex(Vorel::IntfId member);

  std::map<Vorel::IntfId, std::vector<Vorel::IntfId>> members_;  // by port-channel, never empty
  std::map<Vorel::IntfId, Vorel::IntfId> indexedUnder_;          // by member
};

class POLICYMAP_API Config::NotifieeConst
    : public Kor::NotifieeOf<Config, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;

  // The interface joined, left or changed its port-channel. members() is already up to date.
  virtual void onMember(Vorel::IntfId member);
};

class POLICYMAP_API Config::Notifiee : public Config::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

}  // namespace Lag::Input
