// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Acl/AddressMatch.h"
#include "Acl/IpFilterBase.h"
#include "Acl/RuleConfig.h"
#include "Kor/KorType.h"
#include "PolicyMapExport.h"

#include <string_view>

namespace Acl {

// One rule of an IPv4 access list. A value that allocates no memory.
class POLICYMAP_API IpRuleConfig : public RuleConfig<IpRuleConfig, IpFilterBase, IpAddressMatch> {
 public:
  static constexpr std::string_view korTypeName = "Acl::IpRuleConfig";
  // The word for any protocol in describe().
  static constexpr std::string_view anyProtocol = "ip";

  [[nodiscard]] static Kor::KorType* _fwkType();
};

}  // namespace Acl
