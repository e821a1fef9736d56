// SPDX-License-Identifier: Apache-2.0
#include "records/AclPolicyData.h"

namespace PolicyMapTest {

AclPolicyData::AclPolicyData(AclPolicyType const& key) : key_(key) {}

AclPolicyData::~AclPolicyData() {
  subRulesForKeyDelAll();
}

Kor::KorType const* AclPolicyData::fwkType() const {
  return _fwkType();
}
Kor::KorType* AclPolicyData::_fwkType() {
  static Kor::KorType type("PolicyMapTest::AclPolicyData", PtrInterface::_fwkType());
  return &type;
}

}  // namespace PolicyMapTest
