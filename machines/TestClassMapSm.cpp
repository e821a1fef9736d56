// SPDX-License-Identifier: Apache-2.0
#include "machines/TestClassMapSm.h"

#include "machines/TestActionSm.h"
#include "machines/TestClassCommonData.h"
#include "records/Trace.h"

#include <Kor/Assert.h>

namespace PolicyMapTest {

TestClassMapSm::TestClassMapSm(
    Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
    Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,
    Kor::Ptr<PolicyMap::ClassMapConfig const> const& classMapConfig,
    Kor::Ptr<PolicyMap::ClassMapSubConfig const> const& rawClassMapSubConfig,
    Kor::Ptr<PolicyMap::ClassAction const> const& classAction)
    : Toggles(globalCommonData, policyCommonData, classMapConfig, rawClassMapSubConfig,
              classAction) {}

TestClassMapSm::~TestClassMapSm() = default;

Kor::KorType const* TestClassMapSm::fwkType() const {
  return _fwkType();
}
Kor::KorType* TestClassMapSm::_fwkType() {
  static Kor::KorType type("PolicyMapTest::TestClassMapSm", ClassMapSm::_fwkType());
  return &type;
}

Kor::Ptr<TestClassMapSm> TestClassMapSm::make(
    Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
    Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,
    Kor::Ptr<PolicyMap::ClassMapConfig const> const& classMapConfig,
    Kor::Ptr<PolicyMap::ClassMapSubConfig const> const& rawClassMapSubConfig,
    Kor::Ptr<PolicyMap::ClassAction const> const& classAction) {
  auto machine = Kor::validPtr(Kor::Ptr<TestClassMapSm>(new TestClassMapSm(
      globalCommonData, policyCommonData, classMapConfig, rawClassMapSubConfig, classAction)));
  machine->hasNotificationActiveIs(true);
  return machine;
}

Kor::Ptr<PolicyMap::ActionSm> TestClassMapSm::createActionSm(PolicyMap::ActionType actionType) {
  KOR_TRACE_LINE(traceHandle(), 8,
                 "virtual PolicyMap::ActionSm::Ptr PolicyMapTest::TestClassMapSm::"
                 "createActionSm(PolicyMap::ActionType): "
                     << actionType);
  Kor::Ptr<PolicyMap::Action const> const action = classAction()->action(actionType);
  KOR_ASSERT_AS(sourceName, "action", action);
  switch (actionType) {
#define POLICYMAPTEST_ROW(kind)                                                                 \
  case TestAction##kind::testActionType:                                                        \
    return TestAction##kind##Sm::TestAction##kind##SmIs(globalCommonData(), policyCommonData(), \
                                                        classCommonData(), action);
    POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
  default:
    KOR_TRACE_LINE(traceHandle(), 0, "Unexpected action type " << actionType);
    return nullptr;
  }
}

Kor::Ptr<PolicyMap::ClassMapSmCommonData> TestClassMapSm::createCommonData() {
  KOR_TRACE_LINE(traceHandle(), 8,
                 "virtual PolicyMap::ClassMapSmCommonData::Ptr PolicyMapTest::TestClassMapSm::"
                 "createCommonData()");
  return Kor::validPtr(
      Kor::make<TestClassCommonData>(name(), classMap(), globalCommonData()->aclConfig()));
}

}  // namespace PolicyMapTest
