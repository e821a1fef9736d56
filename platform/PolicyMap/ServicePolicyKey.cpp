// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ServicePolicyKey.h"

#include "Kor/Exception.h"

namespace PolicyMap {

Kor::KorType* ServicePolicyKey::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

void korCheckKey(ServicePolicyKey const& key) {
  if (key.direction() != "input" && key.direction() != "output") {
    throw Kor::RangeException("ServicePolicyKey::direction '" + key.direction().stdString() +
                              "' not allowed, must be 'input' or 'output'");
  }
}

}  // namespace PolicyMap
