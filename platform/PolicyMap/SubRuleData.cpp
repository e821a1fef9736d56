// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/SubRuleData.h"

namespace PolicyMap {

SubRuleData::SubRuleData(Kor::TextIterator& it, Kor::TextIterator const& end) {
  Kor::readValueFields(it, end, *this);
}

Kor::KorType* SubRuleData::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

}  // namespace PolicyMap
