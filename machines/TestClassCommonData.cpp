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
  notify<NotifieeConst>(this, _fwkType(), id,
                        [hook](NotifieeConst& notifiee) { (notifiee.*hook)(); });
}

void TestClassCommonData::action1ValueIs(std::uint32_t value) {
  valueIs(action1Value_, value, action1ValueId, &NotifieeConst::onAction1Value);
}
void TestClassCommonData::action2ValueIs(std::uint32_t value) {
  valueIs(action2Value_, value, action2ValueId, &NotifieeConst::onAction2Value);
}
void TestClassCommonData::action3ValueIs(std::uint32_t value) {
  valueIs(action3Value_, value, action3ValueId, &NotifieeConst::onAction3Value);
}

}  // namespace PolicyMapTest
