// SPDX-License-Identifier: Apache-2.0
#include "Kor/Callable.h"

namespace Kor {

Callable::~Callable() = default;

KorType const* Callable::fwkType() const {
  return _fwkType();
}

KorType* Callable::_fwkType() {
  static KorType type("Kor::Callable", PtrInterface::_fwkType());
  return &type;
}

}  // namespace Kor
