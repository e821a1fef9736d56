// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyMapConfig.h"

namespace PolicyMap {

PolicyMapConfig::~PolicyMapConfig() = default;
PolicyMapConfig::NotifieeConst::~NotifieeConst() = default;
PolicyMapConfig::Notifiee::~Notifiee() = default;

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
  attributeChanged<PolicyMapConfig>(currentSubConfigId, &NotifieeConst::onCurrentSubConfig);
}

}  // namespace PolicyMap
