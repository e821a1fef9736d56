// SPDX-License-Identifier: Apache-2.0
#include "machines/TestActionSm.h"

#include "records/Trace.h"

#include <Kor/Assert.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace PolicyMapTest {
namespace {

// What tells the three kinds apart.
struct Kind {
  std::string_view typeName;
  std::string_view cleanupTrace;
  std::string_view handleActionTrace;
  std::uint32_t (TestClassCommonData::*value)() const;
  void (TestClassCommonData::*valueIs)(std::uint32_t);
};

constexpr std::array<Kind, 3> kinds{{
    {"PolicyMapTest::TestAction1Sm", "virtual void PolicyMapTest::TestAction1Sm::cleanup()",
     "virtual void PolicyMapTest::TestAction1Sm::handleAction()",
     &TestClassCommonData::action1Value, &TestClassCommonData::action1ValueIs},
    {"PolicyMapTest::TestAction2Sm", "virtual void PolicyMapTest::TestAction2Sm::cleanup()",
     "virtual void PolicyMapTest::TestAction2Sm::handleAction()",
     &TestClassCommonData::action2Value, &TestClassCommonData::action2ValueIs},
    {"PolicyMapTest::TestAction3Sm", "virtual void PolicyMapTest::TestAction3Sm::cleanup()",
     "virtual void PolicyMapTest::TestAction3Sm::handleAction()",
     &TestClassCommonData::action3Value, &TestClassCommonData::action3ValueIs},
}};

template <class Action>
constexpr Kind const& kindOf = kinds[static_cast<std::size_t>(Action::testActionType) - 1];

// Counted: what a write sets off may take the data away from the machine, or end it.
Kor::Ptr<TestClassCommonData> testDataOf(PolicyMap::ActionSm const& machine) {
  auto classData = machine.classCommonData().as<TestClassCommonData>();
  KOR_ASSERT_AS(sourceName, "classData", classData);
  return classData;
}

}  // namespace

template <class Self, class Action>
TestActionSmOf<Self, Action>::TestActionSmOf(
    Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
    Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,
    Kor::Ptr<PolicyMap::ClassMapSmCommonData> const& classCommonData,
    Kor::Ptr<PolicyMap::Action const> const& action)
    : Toggles(globalCommonData, policyCommonData, classCommonData, action) {}

template <class Self, class Action>
TestActionSmOf<Self, Action>::~TestActionSmOf() = default;

template <class Self, class Action>
Kor::KorType const* TestActionSmOf<Self, Action>::fwkType() const {
  return _fwkType();
}
template <class Self, class Action>
Kor::KorType* TestActionSmOf<Self, Action>::_fwkType() {
  static Kor::KorType type(kindOf<Action>.typeName, ActionSm::_fwkType());
  return &type;
}

template <class Self, class Action>
void TestActionSmOf<Self, Action>::cleanup() {
  KOR_TRACE_LINE(traceHandle(), 8, kindOf<Action>.cleanupTrace);
  auto const classData = testDataOf(*this);
  ((*classData).*kindOf<Action>.valueIs)(0);
  classData->updateAclActionsInc(1);
}

template <class Self, class Action>
void TestActionSmOf<Self, Action>::handleAction() {
  KOR_TRACE_LINE(traceHandle(), 8, kindOf<Action>.handleActionTrace);
  auto const classData = testDataOf(*this);
  std::uint32_t const value = this->action().template as<Action const>()->value();
  if (((*classData).*kindOf<Action>.value)() != value) {
    ((*classData).*kindOf<Action>.valueIs)(value);
    classData->updateAclActionsInc(1);
  }
}

template <class Self, class Action>
Kor::Ptr<Self> TestActionSmOf<Self, Action>::create(
    Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
    Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,
    Kor::Ptr<PolicyMap::ClassMapSmCommonData> const& classCommonData,
    Kor::Ptr<PolicyMap::Action const> const& action) {
  Kor::Ptr<Self> machine(new Self(globalCommonData, policyCommonData, classCommonData, action));
  machine->handleAction();
  machine->hasNotificationActiveIs(true);
  return machine;
}

template class TestActionSmOf<TestAction1Sm, TestAction1>;
template class TestActionSmOf<TestAction2Sm, TestAction2>;
template class TestActionSmOf<TestAction3Sm, TestAction3>;

TestAction1Sm::~TestAction1Sm() = default;
TestAction2Sm::~TestAction2Sm() = default;
TestAction3Sm::~TestAction3Sm() = default;

Kor::Ptr<TestAction1Sm> TestAction1Sm::TestAction1SmIs(
    Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
    Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,
    Kor::Ptr<PolicyMap::ClassMapSmCommonData> const& classCommonData,
    Kor::Ptr<PolicyMap::Action const> const& action) {
  return create(globalCommonData, policyCommonData, classCommonData, action);
}
Kor::Ptr<TestAction2Sm> TestAction2Sm::TestAction2SmIs(
    Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
    Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,
    Kor::Ptr<PolicyMap::ClassMapSmCommonData> const& classCommonData,
    Kor::Ptr<PolicyMap::Action const> const& action) {
  return create(globalCommonData, policyCommonData, classCommonData, action);
}
Kor::Ptr<TestAction3Sm> TestAction3Sm::TestAction3SmIs(
    Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
    Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,
    Kor::Ptr<PolicyMap::ClassMapSmCommonData> const& classCommonData,
    Kor::Ptr<PolicyMap::Action const> const& action) {
  return create(globalCommonData, policyCommonData, classCommonData, action);
}

}  // namespace PolicyMapTest
