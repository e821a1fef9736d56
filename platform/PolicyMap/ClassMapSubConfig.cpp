// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ClassMapSubConfig.h"

namespace PolicyMap {

ClassMapSubConfig::~ClassMapSubConfig() = default;
ClassMapSubConfig::NotifieeConst::~NotifieeConst() = default;
ClassMapSubConfig::Notifiee::~Notifiee() = default;

Kor::KorType const* ClassMapSubConfig::fwkType() const {
  return _fwkType();
}
Kor::KorType* ClassMapSubConfig::_fwkType() {
  static Kor::KorType type("PolicyMap::ClassMapSubConfig", Entity::_fwkType());
  return &type;
}

void ClassMapSubConfig::matchTypeIs(ClassMapMatchType type) {
  if (type == matchType_) {
    return;
  }
  matchType_ = type;
  attributeChanged<ClassMapSubConfig>(matchTypeId, &NotifieeConst::onMatchType);
}

void ClassMapSubConfig::announceMatch(std::uint32_t place) {
  attributeChanged<ClassMapSubConfig>(matchId, &NotifieeConst::onMatch, place);
}

}  // namespace PolicyMap
