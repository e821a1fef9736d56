// SPDX-License-Identifier: Apache-2.0
#include "Acl/AclDiff.h"

namespace Acl {

AclDiff::~AclDiff() = default;

Kor::KorType const* AclDiff::fwkType() const {
  return _fwkType();
}

Kor::KorType const* AclDiff::_fwkType() {
  static Kor::KorType const type("Acl::AclDiff", PtrInterface::_fwkType());
  return &type;
}

}  // namespace Acl
