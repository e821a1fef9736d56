// SPDX-License-Identifier: Apache-2.0
#include "machines/TestActionSm.h"

#include "records/Trace.h"

#include <Kor/Assert.h>

#include <cstdint>
#include <string_view>

namespace PolicyMapTest {
namespace {

// The attribute that the machine of an action writes, and its trace texts.
template <class Action>
struct Kind;

#define POLICYMAPTEST_ROW(kind)                                                  \
  template <>                                                                    \
  struct Kind<TestAction##kind> {                                                \
    static constexpr std::string_view cleanupTrace =                             \
        "virtual void PolicyMapTest::TestAction" #kind "Sm::cleanup()";          \
    static constexpr std::string_view handleActionTrace =                        \
        "virtual void PolicyMapTest::TestAction" #kind "Sm::handleAction()";     \
    static constexpr auto value = &TestClassCommonData::action##kind##Value;     \
    static constexpr auto valueIs = &TestClassCommonData::action##kind##ValueIs; \
  };
POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW

// Returns a counted reference: an observer of the write may detach the data from the machine or
// destroy it.
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
  static Kor::KorType type(Self::korTypeName, ActionSm::_fwkType());
  return &type;
}

template <class Self, class Action>
void TestActionSmOf<Self, Action>::cleanup() {
  KOR_TRACE_LINE(traceHandle(), 8, Kind<Action>::cleanupTrace);
  auto const classData = testDataOf(*this);
  ((*classData).*Kind<Action>::valueIs)(0);
  classData->updateAclActionsInc(1);
}

template <class Self, class Action>
void TestActionSmOf<Self, Action>::handleAction() {
  KOR_TRACE_LINE(traceHandle(), 8, Kind<Action>::handleActionTrace);
  auto const classData = testDataOf(*this);
  std::uint32_t const value = this->action().template as<Action const>()->value();
  if (((*classData).*Kind<Action>::value)() != value) {
    ((*classData).*Kind<Action>::valueIs)(value);
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

// NOLINTBEGIN(readability-identifier-naming): the published names
#define POLICYMAPTEST_ROW(kind)                                                 \
  template class TestActionSmOf<TestAction##kind##Sm, TestAction##kind>;        \
  TestAction##kind##Sm::~TestAction##kind##Sm() = default;                      \
  Kor::Ptr<TestAction##kind##Sm> TestAction##kind##Sm::TestAction##kind##SmIs(  \
      Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,         \
      Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,       \
      Kor::Ptr<PolicyMap::ClassMapSmCommonData> const& classCommonData,         \
      Kor::Ptr<PolicyMap::Action const> const& action) {                        \
    return create(globalCommonData, policyCommonData, classCommonData, action); \
  }

POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
// NOLINTEND(readability-identifier-naming)

}  // namespace PolicyMapTest
