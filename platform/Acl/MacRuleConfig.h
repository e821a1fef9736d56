// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Acl/AddressMatch.h"
#include "Acl/MacFilter.h"
#include "Acl/RuleConfig.h"
#include "Kor/KorType.h"
#include "PolicyMapExport.h"

#include <string_view>

namespace Acl {

// One rule of a MAC access list. A value that allocates no memory.
class POLICYMAP_API MacRuleConfig : public RuleConfig<MacRuleConfig, MacFilter, MacAddressMatch> {
 public:
  static constexpr std::string_view korTypeName = "Acl::MacRuleConfig";
  // The word for any protocol in describe().
  static constexpr std::string_view anyProtocol{};

  [[nodiscard]] static Kor::KorType* _fwkType();
};

}  // namespace Acl
