// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ClassMapMatchSm.h"

namespace PolicyMap {

ClassMapMatchSm::~ClassMapMatchSm() = default;

Kor::KorType const* ClassMapMatchSm::fwkType() const {
  return _fwkType();
}
Kor::KorType* ClassMapMatchSm::_fwkType() {
  static Kor::KorType type("PolicyMap::ClassMapMatchSm", PtrInterface::_fwkType());
  return &type;
}

bool ClassMapMatchSm::rulesIs(Kor::Ptr<ClassRules const> const& rules,
                              Acl::AclDiff const* aclDiff) {
  if (rules_ && rules_->sameEffect(*rules, aclDiff)) {
    return false;
  }
  rules_ = rules;
  return true;
}

}  // namespace PolicyMap
