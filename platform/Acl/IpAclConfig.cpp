// SPDX-License-Identifier: Apache-2.0
#include "Acl/IpAclConfig.h"

namespace Acl {

IpAclConfig::~IpAclConfig() = default;

Kor::KorType const* IpAclConfig::fwkType() const {
  return _fwkType();
}

Kor::KorType* IpAclConfig::_fwkType() {
  static Kor::KorType type("Acl::IpAclConfig", Kor::Entity::_fwkType());
  return &type;
}

template class AclConfigBase<IpAclConfig, IpAclRules>;

}  // namespace Acl
