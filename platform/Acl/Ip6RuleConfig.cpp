// SPDX-License-Identifier: Apache-2.0
#include "Acl/Ip6RuleConfig.h"

namespace Acl {

Kor::KorType* Ip6RuleConfig::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

}  // namespace Acl
