// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ClassMapTypeConfig.h"

namespace PolicyMap {

ClassMapTypeConfig::~ClassMapTypeConfig() = default;
ClassMapTypeConfig::NotifieeConst::~NotifieeConst() = default;
ClassMapTypeConfig::Notifiee::~Notifiee() = default;

Kor::KorType const* ClassMapTypeConfig::fwkType() const {
  return _fwkType();
}
Kor::KorType* ClassMapTypeConfig::_fwkType() {
  static Kor::KorType type("PolicyMap::ClassMapTypeConfig", Entity::_fwkType());
  return &type;
}

void ClassMapTypeConfig::announceClassMapConfig(Kor::Name const& name) {
  attributeChanged<ClassMapTypeConfig>(classMapConfigId, &NotifieeConst::onClassMapConfig, name);
}

}  // namespace PolicyMap
