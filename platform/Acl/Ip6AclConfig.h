// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Acl/AclBase.h"
#include "Acl/AclConfigBase.h"
#include "Acl/Ip6RuleConfig.h"
#include "Kor/Collection.h"
#include "Kor/KorType.h"
#include "Kor/Ptr.h"
#include "PolicyMapExport.h"

#include <cstdint>

namespace Acl {

// The rules of the list, as a collection.
class POLICYMAP_API Ip6AclRules : public AclBase {
 public:
  using Rule = Ip6RuleConfig;

  KOR_VALUE_COLLECTION(Ip6AclRules, rule, Rule, std::uint32_t, Ip6RuleConfig,
                       KOR_ON_CHANGE(ruleChanged(key)))

 protected:
  using AclBase::AclBase;
};

// An access list of IPv6 rules, by sequence number.
class POLICYMAP_API Ip6AclConfig final : public AclConfigBase<Ip6AclConfig, Ip6AclRules> {
 public:
  using Ptr = Kor::Ptr<Ip6AclConfig>;
  using PtrConst = Kor::Ptr<Ip6AclConfig const>;

  using AclConfigBase::AclConfigBase;
  ~Ip6AclConfig() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();
};

extern template class AclConfigBase<Ip6AclConfig, Ip6AclRules>;

}  // namespace Acl
