// SPDX-License-Identifier: Apache-2.0
#include "Acl/Config.h"

#include <utility>

namespace Acl {

Config::Config(Kor::Name name) : Entity(std::move(name)) {}

Config::~Config() = default;
Config::NotifieeConst::~NotifieeConst() = default;
Config::Notifiee::~Notifiee() = default;

void Config::NotifieeConst::onIpAcl(Kor::Name /*name*/) {}
void Config::NotifieeConst::onIp6Acl(Kor::Name /*name*/) {}
void Config::NotifieeConst::onMacAcl(Kor::Name /*name*/) {}

void Config::listChanged(IpAclConfig const& list) {
  attributeChanged<Config>(ipAclId, &NotifieeConst::onIpAcl, list.name());
}

void Config::listChanged(Ip6AclConfig const& list) {
  attributeChanged<Config>(ip6AclId, &NotifieeConst::onIp6Acl, list.name());
}

void Config::listChanged(MacAclConfig const& list) {
  attributeChanged<Config>(macAclId, &NotifieeConst::onMacAcl, list.name());
}

Kor::KorType const* Config::fwkType() const {
  return _fwkType();
}

Kor::KorType* Config::_fwkType() {
  static Kor::KorType type("Acl::Config", Kor::Entity::_fwkType());
  return &type;
}

}  // namespace Acl
