// SPDX-License-Identifier: Apache-2.0
#include "Acl/MacAclConfig.h"

namespace Acl {

MacAclConfig::~MacAclConfig() = default;

Kor::KorType const* MacAclConfig::fwkType() const {
  return _fwkType();
}

Kor::KorType* MacAclConfig::_fwkType() {
  static Kor::KorType type("Acl::MacAclConfig", Kor::Entity::_fwkType());
  return &type;
}

template class AclConfigBase<MacAclConfig, MacAclRules>;

}  // namespace Acl
