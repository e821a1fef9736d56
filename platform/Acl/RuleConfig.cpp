// SPDX-License-Identifier: Apache-2.0
#include "Acl/Ip6RuleConfig.h"
#include "Acl/IpRuleConfig.h"
#include "Acl/MacRuleConfig.h"

namespace Acl {

Kor::KorType const* IpRuleConfig::_fwkType() {
  static Kor::KorType const type(korTypeName, nullptr);
  return &type;
}

Kor::KorType const* Ip6RuleConfig::_fwkType() {
  static Kor::KorType const type(korTypeName, nullptr);
  return &type;
}

Kor::KorType const* MacRuleConfig::_fwkType() {
  static Kor::KorType const type(korTypeName, nullptr);
  return &type;
}

}  // namespace Acl
