// SPDX-License-Identifier: Apache-2.0
#include "records/SubRuleDataCollection.h"

namespace PolicyMapTest {

SubRuleDataCollection::SubRuleDataCollection(PolicyMap::AclRuleKey const& key) : key_(key) {}

SubRuleDataCollection::~SubRuleDataCollection() = default;

Kor::KorType const* SubRuleDataCollection::fwkType() const {
  return _fwkType();
}
Kor::KorType* SubRuleDataCollection::_fwkType() {
  static Kor::KorType type("PolicyMapTest::SubRuleDataCollection", PtrInterface::_fwkType());
  return &type;
}

}  // namespace PolicyMapTest
