// SPDX-License-Identifier: Apache-2.0
#include "machines/TestPolicyMapSm.h"

#include "machines/TestClassMapSm.h"
#include "records/Trace.h"

namespace PolicyMapTest {

TestPolicyMapSm::TestPolicyMapSm(
    Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
    PolicyMap::PolicyMapSmKey const& key,
    Kor::Ptr<PolicyMap::PolicyMapConfig const> const& policyMapConfig,
    Kor::Ptr<PolicyMap::ClassMapTypeConfig const> const& classTypeConfig,
    Kor::Ptr<PolicyMap::PolicyMapStatus> const& status)
    : Toggles(globalCommonData, key, policyMapConfig, classTypeConfig, status) {}

TestPolicyMapSm::~TestPolicyMapSm() = default;

Kor::KorType const* TestPolicyMapSm::fwkType() const {
  return _fwkType();
}
Kor::KorType* TestPolicyMapSm::_fwkType() {
  static Kor::KorType type("PolicyMapTest::TestPolicyMapSm", PolicyMapSm::_fwkType());
  return &type;
}

Kor::Ptr<TestPolicyMapSm> TestPolicyMapSm::make(
    Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
    PolicyMap::PolicyMapSmKey const& key,
    Kor::Ptr<PolicyMap::PolicyMapConfig const> const& policyMapConfig,
    Kor::Ptr<PolicyMap::ClassMapTypeConfig const> const& classTypeConfig,
    Kor::Ptr<PolicyMap::PolicyMapStatus> const& status) {
  auto machine = Kor::validPtr(Kor::Ptr<TestPolicyMapSm>(
      new TestPolicyMapSm(globalCommonData, key, policyMapConfig, classTypeConfig, status)));
  machine->hasNotificationActiveIs(true);
  return machine;
}

Kor::Ptr<PolicyMap::ClassMapSm> TestPolicyMapSm::createClassMapSm(
    Kor::Ptr<PolicyMap::ClassMapConfig const> const& map,
    Kor::Ptr<PolicyMap::ClassMapSubConfig const> const& rawMap,
    Kor::Ptr<PolicyMap::ClassAction const> const& action) {
  KOR_TRACE_LINE(traceHandle(), 8,
                 "virtual PolicyMap::ClassMapSm::Ptr PolicyMapTest::TestPolicyMapSm::"
                 "createClassMapSm(const PolicyMap::ClassMapConfig::PtrConst&, "
                 "const PolicyMap::ClassMapSubConfig::PtrConst&, "
                 "const PolicyMap::ClassAction::PtrConst&)");
  if (map) {
    KOR_TRACE_LINE(traceHandle(), 8, " map : " << map->name());
  } else {
    KOR_TRACE_LINE(traceHandle(), 8, " rawMap : " << (rawMap ? rawMap->name() : Kor::Name()));
  }
  return TestClassMapSm::make(globalCommonData(), policyCommonData(), map, rawMap, action);
}

}  // namespace PolicyMapTest
