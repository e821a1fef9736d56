// SPDX-License-Identifier: Apache-2.0
#include "Lag/Config.h"

#include <algorithm>
#include <utility>

namespace Lag::Input {

Config::Config(Kor::Name name) : ConfigMembers(std::move(name)) {}

Config::~Config() = default;
Config::NotifieeConst::~NotifieeConst() = default;
Config::Notifiee::~Notifiee() = default;

void Config::NotifieeConst::onMember(Vorel::IntfId /*member*/) {}

void Config::memberChanged(Vorel::IntfId member) {
  reindex(member);
  attributeChanged<Config>(memberOfId, &NotifieeConst::onMember, member);
}

Kor::Ptr<Config::KorMemberOf> Config::newMemberOf(Vorel::IntfId const& member,
                                                  Vorel::IntfId const& portChannel) {
  auto entry = ConfigMembers::newMemberOf(member, portChannel);
  reindex(member);
  return entry;
}

std::vector<Vorel::IntfId> const& Config::members(Vorel::IntfId portChannel) const {
  static std::vector<Vorel::IntfId> const none;
  auto const at = members_.find(portChannel);
  return at == members_.end() ? none : at->second;
}

void Config::reindex(Vorel::IntfId member) {
  Vorel::IntfId const portChannel = memberOf(member);
  auto const known = indexedUnder_.find(member);
  Vorel::IntfId const before = known == indexedUnder_.end() ? Vorel::IntfId() : known->second;
  if (portChannel == before) {
    return;
  }
  if (!!before) {
    auto const at = members_.find(before);
    std::vector<Vorel::IntfId>& members = at->second;
    members.erase(std::lower_bound(members.begin(), members.end(), member));
    if (members.empty()) {
      members_.erase(at);
    }
    indexedUnder_.erase(known);
  }
  if (!!portChannel) {
    std::vector<Vorel::IntfId>& members = members_[portChannel];
    members.insert(std::lower_bound(members.begin(), members.end(), member), member);
    indexedUnder_.emplace(member, portChannel);
  }
}

Kor::KorType const* Config::fwkType() const {
  return _fwkType();
}

Kor::KorType* Config::_fwkType() {
  static Kor::KorType type("Lag::Input::Config", Kor::Entity::_fwkType());
  return &type;
}

}  // namespace Lag::Input
