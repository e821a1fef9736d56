// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyMapSmKey.h"

namespace PolicyMap {

PolicyMapSmKey::PolicyMapSmKey(Kor::TextIterator& it, Kor::TextIterator const& end) {
  Kor::readValueFields(it, end, *this);
}

Kor::KorType* PolicyMapSmKey::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

}  // namespace PolicyMap
