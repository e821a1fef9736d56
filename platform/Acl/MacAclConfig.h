// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Acl/AclBase.h"
#include "Acl/AclConfigBase.h"
#include "Acl/MacRuleConfig.h"
#include "Kor/Collection.h"
#include "Kor/KorType.h"
#include "Kor/Ptr.h"
#include "PolicyMapExport.h"

#include <cstdint>

namespace Acl {

// The rules of the list, as a collection.
class POLICYMAP_API MacAclRules : public AclBase {
 public:
  using Rule = MacRuleConfig;

  KOR_VALUE_COLLECTION(MacAclRules, rule, Rule, std::uint32_t, MacRuleConfig,
                       KOR_ON_CHANGE(ruleChanged(key)))

 protected:
  using AclBase::AclBase;
};

// An access list of MAC rules, by sequence number.
class POLICYMAP_API MacAclConfig final : public AclConfigBase<MacAclConfig, MacAclRules> {
 public:
  using Ptr = Kor::Ptr<MacAclConfig>;
  using PtrConst = Kor::Ptr<MacAclConfig const>;

  using AclConfigBase::AclConfigBase;
  ~MacAclConfig() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();
};

extern template class AclConfigBase<MacAclConfig, MacAclRules>;

}  // namespace Acl
