// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/AsyncOperationResult.h"

namespace PolicyMap {

AsyncOperationResult::AsyncOperationResult(Kor::TextIterator& it, Kor::TextIterator const& end) {
  Kor::readValueFields(it, end, *this);
}

Kor::KorType* AsyncOperationResult::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

}  // namespace PolicyMap
