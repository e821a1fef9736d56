// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyMapGlobalData.h"

#include <utility>

namespace PolicyMap {

PolicyMapGlobalData::PolicyMapGlobalData(Kor::Ptr<Acl::Config const> aclConfig,
                                         Kor::Ptr<ClassMapTypeConfig const> classTypeConfig,
                                         Kor::Ptr<Acl::AclDiff> aclDiff)
    : aclConfig_(std::move(aclConfig)),
      classTypeConfig_(std::move(classTypeConfig)),
      aclDiff_(std::move(aclDiff)) {}

PolicyMapGlobalData::~PolicyMapGlobalData() = default;

Kor::KorType const* PolicyMapGlobalData::fwkType() const {
  return _fwkType();
}
Kor::KorType* PolicyMapGlobalData::_fwkType() {
  static Kor::KorType type("PolicyMap::PolicyMapGlobalData", PtrInterface::_fwkType());
  return &type;
}

}  // namespace PolicyMap
