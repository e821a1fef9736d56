// SPDX-License-Identifier: Apache-2.0
#include "Acl/Ip6RuleConfig.h"
#include "Acl/IpRuleConfig.h"
#include "Acl/MacRuleConfig.h"

namespace Acl {

Kor::KorType* IpRuleConfig::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

Kor::KorType* Ip6RuleConfig::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

Kor::KorType* MacRuleConfig::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

}  // namespace Acl
