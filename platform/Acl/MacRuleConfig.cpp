// SPDX-License-Identifier: Apache-2.0
#include "Acl/MacRuleConfig.h"

namespace Acl {

Kor::KorType* MacRuleConfig::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

}  // namespace Acl
