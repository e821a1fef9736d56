// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyMapTypeConfig.h"

#include <algorithm>

namespace PolicyMap {

ClassAction::~ClassAction() = default;
ClassAction::NotifieeConst::~NotifieeConst() = default;
ClassAction::Notifiee::~Notifiee() = default;
PolicyMapSubConfig::~PolicyMapSubConfig() = default;
PolicyMapSubConfig::NotifieeConst::~NotifieeConst() = default;
PolicyMapSubConfig::Notifiee::~Notifiee() = default;
PolicyMapConfig::~PolicyMapConfig() = default;
PolicyMapConfig::NotifieeConst::~NotifieeConst() = default;
PolicyMapConfig::Notifiee::~Notifiee() = default;
PolicyMapTypeConfig::~PolicyMapTypeConfig() = default;
PolicyMapTypeConfig::NotifieeConst::~NotifieeConst() = default;
PolicyMapTypeConfig::Notifiee::~Notifiee() = default;

Kor::KorType* ServicePolicyKey::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

void korCheckKey(ServicePolicyKey const& key) {
  if (key.direction() != "input" && key.direction() != "output") {
    throw Kor::RangeException("ServicePolicyKey::direction '" + key.direction().stdString() +
                              "' not allowed, must be 'input' or 'output'");
  }
}

Kor::KorType const* ClassAction::fwkType() const {
  return _fwkType();
}
Kor::KorType* ClassAction::_fwkType() {
  static Kor::KorType type("PolicyMap::ClassAction", Entity::_fwkType());
  return &type;
}

void ClassAction::announceAction(ActionType type) {
  attributeChanged<ClassAction>(actionId, [type](NotifieeConst& n) { n.onAction(type); });
}

Kor::KorType const* PolicyMapSubConfig::fwkType() const {
  return _fwkType();
}
Kor::KorType* PolicyMapSubConfig::_fwkType() {
  static Kor::KorType type("PolicyMap::PolicyMapSubConfig", Entity::_fwkType());
  return &type;
}

namespace {

using ClassesByPrio = std::vector<std::pair<std::uint32_t, Kor::Name>>;

// Equal priorities by name.
std::vector<Kor::Name> inOrder(ClassesByPrio byPrio) {
  std::sort(byPrio.begin(), byPrio.end());
  std::vector<Kor::Name> classes;
  classes.reserve(byPrio.size());
  for (auto& [prio, name] : byPrio) {
    classes.push_back(std::move(name));
  }
  return classes;
}

}  // namespace

std::vector<Kor::Name> PolicyMapSubConfig::classesInOrder() const {
  ClassesByPrio byPrio;
  for (auto const& entry : classPrioIteratorConst()) {
    byPrio.emplace_back(entry.value(), entry.key());
  }
  return inOrder(std::move(byPrio));
}

std::vector<Kor::Name> PolicyMapSubConfig::classesInOrder(std::set<Kor::Name> const& names) const {
  ClassesByPrio byPrio;
  for (Kor::Name const& name : names) {
    if (Kor::Ptr<KorClassPrio> const prio = korClassPrio(name)) {
      byPrio.emplace_back(prio->value(), name);
    }
  }
  return inOrder(std::move(byPrio));
}

void PolicyMapSubConfig::announceClassPrio(Kor::Name const& name) {
  Ptr const pinned = Kor::share(this);
  if (auto const old = prioTaken_.find(name); old != prioTaken_.end()) {
    std::uint32_t const prio = old->second;
    prioTaken_.erase(old);
    if (prioClass(prio) == name) {
      prioClassDel(prio);
    }
  }
  if (Kor::Ptr<KorClassPrio> const entry = korClassPrio(name)) {
    prioTaken_.emplace(name, entry->value());
    prioClassIs(entry->value(), name);
  }
  attributeChanged<PolicyMapSubConfig>(classPrioId,
                                       [name](NotifieeConst& n) { n.onClassPrio(name); });
}

void PolicyMapSubConfig::announcePrioClass(std::uint32_t prio) {
  attributeChanged<PolicyMapSubConfig>(prioClassId,
                                       [prio](NotifieeConst& n) { n.onPrioClass(prio); });
}

void PolicyMapSubConfig::announceClassAction(Kor::Name const& name) {
  attributeChanged<PolicyMapSubConfig>(classActionId,
                                       [name](NotifieeConst& n) { n.onClassAction(name); });
}

void PolicyMapSubConfig::announceRawClassMap(Kor::Name const& name) {
  attributeChanged<PolicyMapSubConfig>(rawClassMapId,
                                       [name](NotifieeConst& n) { n.onRawClassMap(name); });
}

Kor::KorType const* PolicyMapConfig::fwkType() const {
  return _fwkType();
}
Kor::KorType* PolicyMapConfig::_fwkType() {
  static Kor::KorType type("PolicyMap::PolicyMapConfig", Entity::_fwkType());
  return &type;
}

void PolicyMapConfig::currentSubConfigIs(Kor::Ptr<PolicyMapSubConfig> const& subConfig) {
  if (subConfig == current_) {
    return;
  }
  current_ = subConfig;
  attributeChanged<PolicyMapConfig>(currentSubConfigId,
                                    [](NotifieeConst& n) { n.onCurrentSubConfig(); });
}

Kor::KorType const* PolicyMapTypeConfig::fwkType() const {
  return _fwkType();
}
Kor::KorType* PolicyMapTypeConfig::_fwkType() {
  static Kor::KorType type("PolicyMap::PolicyMapTypeConfig", Entity::_fwkType());
  return &type;
}

void PolicyMapTypeConfig::announcePolicyMapConfig(Kor::Name const& name) {
  attributeChanged<PolicyMapTypeConfig>(policyMapConfigId,
                                        [name](NotifieeConst& n) { n.onPolicyMapConfig(name); });
}

void PolicyMapTypeConfig::announceServicePolicy(ServicePolicyKey const& key) {
  attributeChanged<PolicyMapTypeConfig>(servicePolicyId,
                                        [key](NotifieeConst& n) { n.onServicePolicy(key); });
}

}  // namespace PolicyMap
