// SPDX-License-Identifier: Apache-2.0
#include "Acl/Ip6AclConfig.h"

namespace Acl {

Ip6AclConfig::~Ip6AclConfig() = default;

Kor::KorType const* Ip6AclConfig::fwkType() const {
  return _fwkType();
}

Kor::KorType* Ip6AclConfig::_fwkType() {
  static Kor::KorType type("Acl::Ip6AclConfig", Kor::Entity::_fwkType());
  return &type;
}

template class AclConfigBase<Ip6AclConfig, Ip6AclRules>;

}  // namespace Acl
