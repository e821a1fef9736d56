// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyFailure.h"

namespace PolicyMap {

Kor::KorType* PolicyFailure::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

}  // namespace PolicyMap
