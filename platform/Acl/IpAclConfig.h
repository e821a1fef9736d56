// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Acl/AclBase.h"
#include "Acl/AclConfigBase.h"
#include "Acl/IpRuleConfig.h"
#include "Kor/Collection.h"
#include "Kor/KorType.h"
#include "Kor/Ptr.h"
#include "PolicyMapExport.h"

#include <cstdint>

namespace Acl {

// The rules of the list, as a collection.
class POLICYMAP_API IpAclRules : public AclBase {
 public:
  using Rule = IpRuleConfig;

  KOR_VALUE_COLLECTION(IpAclRules, rule, Rule, std::uint32_t, IpRuleConfig,
                       KOR_ON_CHANGE(ruleChanged(key)))

 protected:
  using AclBase::AclBase;
};

// An access list of IPv4 rules, by sequence number.
class POLICYMAP_API IpAclConfig final : public AclConfigBase<IpAclConfig, IpAclRules> {
 public:
  using Ptr = Kor::Ptr<IpAclConfig>;
  using PtrConst = Kor::Ptr<IpAclConfig const>;

  using AclConfigBase::AclConfigBase;
  ~IpAclConfig() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();
};

extern template class AclConfigBase<IpAclConfig, IpAclRules>;

}  // namespace Acl
