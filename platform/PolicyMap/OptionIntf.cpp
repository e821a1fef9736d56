// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/OptionIntf.h"

namespace PolicyMap {

Kor::KorType* OptionIntf::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

}  // namespace PolicyMap
