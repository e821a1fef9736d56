// SPDX-License-Identifier: Apache-2.0
#include "machines/TestClassCommonData.h"

#include <utility>

namespace PolicyMapTest {

TestClassCommonData::TestClassCommonData(Kor::Name name,
                                         Kor::Ptr<PolicyMap::ClassMapSubConfig const> classMap,
                                         Kor::Ptr<Acl::Config const> aclConfig)
    : ClassMapSmCommonData(std::move(name), std::move(classMap), std::move(aclConfig)) {}

TestClassCommonData::~TestClassCommonData() = default;
TestClassCommonData::NotifieeConst::~NotifieeConst() = default;
TestClassCommonData::Notifiee::~Notifiee() = default;

Kor::KorType const* TestClassCommonData::fwkType() const {
  return _fwkType();
}
Kor::KorType* TestClassCommonData::_fwkType() {
  static Kor::KorType type("PolicyMapTest::TestClassCommonData", ClassMapSmCommonData::_fwkType());
  return &type;
}

void TestClassCommonData::valueIs(std::uint32_t& stored, std::uint32_t value, Kor::AttributeId id,
                                  Hook hook) {
  if (value == stored) {
    return;
  }
  stored = value;
  notify<NotifieeConst>(this, _fwkType(), id, hook);
}

#define POLICYMAPTEST_ROW(kind)                                          \
  void TestClassCommonData::action##kind##ValueIs(std::uint32_t value) { \
    valueIs(values_[(kind)-1], value, action##kind##ValueId,             \
            &NotifieeConst::onAction##kind##Value);                      \
  }
POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW

}  // namespace PolicyMapTest
