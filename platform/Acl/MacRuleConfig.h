// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Acl/AddressMatch.h"
#include "Acl/MacFilter.h"
#include "Acl/RuleConfig.h"
#include "Kor/KorType.h"
#include "PolicyMapExport.h"

#include <string_view>

namespace Acl {

/// One rule of a MAC access list. A value, without memory of its own.
class POLICYMAP_API MacRuleConfig : public RuleConfig<MacRuleConfig, MacFilter, MacAddressMatch> {
 public:
  static constexpr std::string_view korTypeName = "Acl::MacRuleConfig";
  /// What stands for the protocol in describe() when the rule takes any.
  static constexpr std::string_view anyProtocol{};

  [[nodiscard]] static Kor::KorType* _fwkType();
};

}  // namespace Acl
