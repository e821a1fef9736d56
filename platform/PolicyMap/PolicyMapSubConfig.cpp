// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyMapSubConfig.h"

#include <algorithm>
#include <utility>

namespace PolicyMap {

PolicyMapSubConfig::~PolicyMapSubConfig() = default;
PolicyMapSubConfig::NotifieeConst::~NotifieeConst() = default;
PolicyMapSubConfig::Notifiee::~Notifiee() = default;

Kor::KorType const* PolicyMapSubConfig::fwkType() const {
  return _fwkType();
}
Kor::KorType* PolicyMapSubConfig::_fwkType() {
  static Kor::KorType type("PolicyMap::PolicyMapSubConfig", Entity::_fwkType());
  return &type;
}

namespace {

using ClassesByPrio = std::vector<std::pair<std::uint32_t, Kor::Name>>;

// Equal priorities are ordered by name.
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
  attributeChanged<PolicyMapSubConfig>(classPrioId, &NotifieeConst::onClassPrio, name);
}

void PolicyMapSubConfig::announcePrioClass(std::uint32_t prio) {
  attributeChanged<PolicyMapSubConfig>(prioClassId, &NotifieeConst::onPrioClass, prio);
}

void PolicyMapSubConfig::announceClassAction(Kor::Name const& name) {
  attributeChanged<PolicyMapSubConfig>(classActionId, &NotifieeConst::onClassAction, name);
}

void PolicyMapSubConfig::announceRawClassMap(Kor::Name const& name) {
  attributeChanged<PolicyMapSubConfig>(rawClassMapId, &NotifieeConst::onRawClassMap, name);
}

}  // namespace PolicyMap
