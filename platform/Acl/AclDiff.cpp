// SPDX-License-Identifier: Apache-2.0
#include "Acl/AclDiff.h"

namespace Acl {

AclDiff::~AclDiff() = default;

Kor::KorType const* AclDiff::fwkType() const {
  return _fwkType();
}

Kor::KorType* AclDiff::_fwkType() {
  static Kor::KorType type("Acl::AclDiff", PtrInterface::_fwkType());
  return &type;
}

}  // namespace Acl
