// SPDX-License-Identifier: Apache-2.0
#include "Acl/Config.h"

#include <utility>

namespace Acl {

Config::Config(Kor::Name name) : ConfigLists(std::move(name)) {}

Config::~Config() = default;
Config::NotifieeConst::~NotifieeConst() = default;
Config::Notifiee::~Notifiee() = default;

void Config::NotifieeConst::onIpAcl(Kor::Name /*name*/) {}
void Config::NotifieeConst::onIp6Acl(Kor::Name /*name*/) {}
void Config::NotifieeConst::onMacAcl(Kor::Name /*name*/) {}

template <class List>
List Config::adopted(List list) {
  list->owner_ = this;
  return list;
}

IpAclConfig::Ptr Config::newIpAcl(Kor::Name const& name) {
  return adopted(ConfigLists::newIpAcl(name));
}

void ConfigLists::ipAclNotify([[maybe_unused]] Kor::Name const& key,
                              Kor::Ptr<IpAclConfig> const& member) {
  auto& config = static_cast<Config&>(*this);
  config.listChanged(config.adopted(member).get());
}

void Config::listChanged(IpAclConfig const* list) const {
  attributeChanged<Config>(
      ipAclId, [name = list->name()](NotifieeConst& notifiee) { notifiee.onIpAcl(name); });
}

Ip6AclConfig::Ptr Config::newIp6Acl(Kor::Name const& name) {
  return adopted(ConfigLists::newIp6Acl(name));
}

void ConfigLists::ip6AclNotify([[maybe_unused]] Kor::Name const& key,
                               Kor::Ptr<Ip6AclConfig> const& member) {
  auto& config = static_cast<Config&>(*this);
  config.listChanged(config.adopted(member).get());
}

void Config::listChanged(Ip6AclConfig const* list) const {
  attributeChanged<Config>(
      ip6AclId, [name = list->name()](NotifieeConst& notifiee) { notifiee.onIp6Acl(name); });
}

MacAclConfig::Ptr Config::newMacAcl(Kor::Name const& name) {
  return adopted(ConfigLists::newMacAcl(name));
}

void ConfigLists::macAclNotify([[maybe_unused]] Kor::Name const& key,
                               Kor::Ptr<MacAclConfig> const& member) {
  auto& config = static_cast<Config&>(*this);
  config.listChanged(config.adopted(member).get());
}

void Config::listChanged(MacAclConfig const* list) const {
  attributeChanged<Config>(
      macAclId, [name = list->name()](NotifieeConst& notifiee) { notifiee.onMacAcl(name); });
}

Kor::KorType const* Config::fwkType() const {
  return _fwkType();
}

Kor::KorType* Config::_fwkType() {
  static Kor::KorType type("Acl::Config", Kor::Entity::_fwkType());
  return &type;
}

}  // namespace Acl
