// SPDX-License-Identifier: Apache-2.0
#include "Acl/IpRuleConfig.h"

namespace Acl {

Kor::KorType* IpRuleConfig::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

}  // namespace Acl
