// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Acl/AddressMatch.h"
#include "Acl/IpFilterBase.h"
#include "Acl/RuleConfig.h"
#include "Kor/KorType.h"
#include "PolicyMapExport.h"

#include <string_view>

namespace Acl {

// One rule of an IPv6 access list. A value that allocates no memory.
class POLICYMAP_API Ip6RuleConfig
    : public RuleConfig<Ip6RuleConfig, IpFilterBase, Ip6AddressMatch> {
 public:
  static constexpr std::string_view korTypeName = "Acl::Ip6RuleConfig";
  // The word for any protocol in describe().
  static constexpr std::string_view anyProtocol = "ipv6";

  [[nodiscard]] static Kor::KorType* _fwkType();
};

}  // namespace Acl
