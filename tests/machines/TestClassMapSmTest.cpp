// SPDX-License-Identifier: Apache-2.0
#include "machines/TestClassMapSm.h"

#include "machines/TestActionSm.h"
#include "machines/TestClassCommonData.h"
#include "machines/TestKinds.h"
#include "support/CaughtAssertion.h"
#include "support/Death.h"
#include "support/TraceRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

using PolicyMap::ActionSm;
using PolicyMap::ActionType;
using PolicyMap::ClassMapSmCommonData;
using PolicyMapTest::TestClassCommonData;
using PolicyMapTest::TestClassMapSm;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::assertionOf;
using TestSupport::TraceRecorder;

class ClassMachine : public TestClassMapSm {
 public:
  template <class... Args>
  explicit ClassMachine(Args&&... args) : TestClassMapSm(std::forward<Args>(args)...) {}
};

class TestClassMapMachine : public testing::Test {
 protected:
  // A machine on the members below. Its notifications are off.
  Kor::Ptr<ClassMachine> quietMachine() {
    return Kor::make<ClassMachine>(global, policy, nullptr, rawMap, classAction);
  }
  Kor::Ptr<ClassMachine> machine() {
    auto made = quietMachine();
    made->hasNotificationActiveIs(true);
    return made;
  }
  // A machine that has class data but has not run.
  Kor::Ptr<ClassMachine> machineWithData() {
    auto made = quietMachine();
    made->classCommonDataIs(data);
    return made;
  }
  template <class Kind>
  Kor::Ptr<typename Kind::Action> configure(std::uint32_t value) {
    auto const action = Kind::holding(value);
    classAction->actionIs(ActionType{Kind::number}, action);
    return action;
  }
  Kor::Ptr<PolicyMap::Action> configureKind(int kind) {
    auto const action = Kor::make<PolicyMap::Action>("web", ActionType{kind}, Zub::UniqueId("x"));
    classAction->actionIs(ActionType{kind}, action);
    return action;
  }

  Acl::Config::Ptr acls = Kor::make<Acl::Config>();
  PolicyMap::PolicyMapGlobalData::Ptr global = Kor::make<PolicyMap::PolicyMapGlobalData>(acls);
  PolicyMap::PolicyMapSmCommonData::Ptr policy =
      Kor::make<PolicyMap::PolicyMapSmCommonData>(PolicyMap::PolicyMapSmKey("pm", "input"));
  PolicyMap::ClassMapSubConfig::Ptr rawMap = Kor::make<PolicyMap::ClassMapSubConfig>("web");
  PolicyMap::ClassAction::Ptr classAction = Kor::make<PolicyMap::ClassAction>("web");
  TestClassCommonData::Ptr data = Kor::make<TestClassCommonData>("web", nullptr, nullptr);
};
using TestClassMapMachineDeathTest = TestClassMapMachine;

// createActionSm

template <class Kind>
class TestClassMapMachineOfKind : public TestClassMapMachine {};
TYPED_TEST_SUITE(TestClassMapMachineOfKind, TestKinds);

TYPED_TEST(TestClassMapMachineOfKind, MakesTheActionMachineOfItsKind) {
  auto const action = this->template configure<TypeParam>(9);
  auto const classes = this->machineWithData();
  Kor::Ptr<ActionSm> const made = classes->createActionSm(ActionType{TypeParam::number});
  ASSERT_TRUE(made);
  EXPECT_EQ(made->fwkType(), TypeParam::Machine::_fwkType());
  EXPECT_TRUE(made.template as<typename TypeParam::Machine>());
  EXPECT_EQ(made->globalCommonData(), this->global);
  EXPECT_EQ(made->policyCommonData(), this->policy);
  EXPECT_EQ(made->classCommonData(), this->data);
  EXPECT_EQ(made->action(), action);
  EXPECT_TRUE(made->hasNotificationActive());
}

TYPED_TEST(TestClassMapMachineOfKind, TheClassDataHoldTheValueWhenTheHookReturns) {
  this->template configure<TypeParam>(9);
  auto const made = this->machineWithData()->createActionSm(ActionType{TypeParam::number});
  EXPECT_EQ(TypeParam::value(*this->data), 9U);
  EXPECT_EQ(this->data->updateAclActions(), 1U);
}

TYPED_TEST(TestClassMapMachineOfKind, TracesTheHookAndTheMachinesFirstCall) {
  this->template configure<TypeParam>(9);
  auto const classes = this->machineWithData();
  TraceRecorder const trace("PolicyMapTestSm", 8);
  auto const made = classes->createActionSm(ActionType{TypeParam::number});
  EXPECT_THAT(trace.lines(),
              ElementsAre("PolicyMapTestSm|8|virtual PolicyMap::ActionSm::Ptr "
                          "PolicyMapTest::TestClassMapSm::createActionSm(PolicyMap::ActionType): " +
                              std::to_string(TypeParam::number),
                          std::string("PolicyMapTestSm|8|virtual void ") + TypeParam::machineName +
                              "::handleAction()"));
}

TYPED_TEST(TestClassMapMachineOfKind, AKnownKindIsNeverReportedAsUnexpected) {
  this->template configure<TypeParam>(9);
  auto const classes = this->machineWithData();
  TraceRecorder const trace;
  auto const made = classes->createActionSm(ActionType{TypeParam::number});
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(TestClassMapMachine, TheHookInsertsNothing) {
  configure<Kind1>(9);
  auto const classes = machineWithData();
  auto const made = classes->createActionSm(ActionType{1});
  EXPECT_EQ(classes->actionSms(), 0U);
  EXPECT_EQ(made->references(), 1U);
}

TEST_F(TestClassMapMachine, AnUnknownKindIsReportedAndGetsNoMachine) {
  for (int const kind : {4, 0, -1, 1000}) {
    configureKind(kind);
    auto const classes = machineWithData();
    TraceRecorder const trace;
    EXPECT_FALSE(classes->createActionSm(ActionType{kind}));
    EXPECT_THAT(trace.lines(),
                ElementsAre("PolicyMapTestSm|0|Unexpected action type " + std::to_string(kind)));
  }
  EXPECT_EQ(data->updateAclActions(), 0U);
}

TEST_F(TestClassMapMachine, AnUnknownKindIsReportedBehindTheHooksOwnLine) {
  configureKind(4);
  auto const classes = machineWithData();
  TraceRecorder const trace("PolicyMapTestSm", 8);
  EXPECT_FALSE(classes->createActionSm(ActionType{4}));
  EXPECT_THAT(trace.lines(),
              ElementsAre("PolicyMapTestSm|8|virtual PolicyMap::ActionSm::Ptr "
                          "PolicyMapTest::TestClassMapSm::createActionSm(PolicyMap::ActionType): 4",
                          "PolicyMapTestSm|0|Unexpected action type 4"));
}

TEST_F(TestClassMapMachineDeathTest, AKindWithoutAConfiguredActionIsAFault) {
  configure<Kind1>(9);
  auto const classes = machineWithData();
  EXPECT_ASSERTION(classes->createActionSm(ActionType{2}), "PolicyMapTestSm", "action",
                   "machines/TestClassMapSm.cpp");
}

TEST_F(TestClassMapMachineDeathTest, AMissingClassActionEndsTheProcessByThePointersOwnAssertion) {
  auto const classes = Kor::make<ClassMachine>(global, policy, nullptr, rawMap, nullptr);
  EXPECT_ASSERTION(classes->createActionSm(ActionType{1}), "Kor/Ptr", "object_ != nullptr",
                   "Kor/Ptr.h");
}

TEST_F(TestClassMapMachine, TheActionIsAssertedBeforeTheKindIsLookedAtAndAfterTheTrace) {
  auto const classes = machineWithData();
  TraceRecorder const trace("PolicyMapTestSm", 8);
  EXPECT_EQ(assertionOf([&] { classes->createActionSm(ActionType{4}); }),
            "PolicyMapTestSm: action");
  EXPECT_THAT(
      trace.lines(),
      ElementsAre("PolicyMapTestSm|8|virtual PolicyMap::ActionSm::Ptr "
                  "PolicyMapTest::TestClassMapSm::createActionSm(PolicyMap::ActionType): 4"));
}

TEST_F(TestClassMapMachine, AMachineForAnActionOfAnotherClassIsAFaultOfTheConfiguration) {
  configureKind(2);
  auto const classes = machineWithData();
  EXPECT_EQ(assertionOf([&] { classes->createActionSm(ActionType{2}); }),
            "Kor/Ptr: object_ != nullptr");
}

// createCommonData

TEST_F(TestClassMapMachine, MakesTestClassDataWithItsNameClassMapAndAccessLists) {
  auto const classes = quietMachine();
  classes->classMapIs(rawMap);
  Kor::Ptr<ClassMapSmCommonData> const made = classes->createCommonData();
  auto const testData = made.as<TestClassCommonData>();
  ASSERT_TRUE(testData);
  EXPECT_EQ(made->fwkType(), TestClassCommonData::_fwkType());
  EXPECT_EQ(made->name(), "web");
  EXPECT_EQ(made->classMap(), rawMap);
  EXPECT_EQ(made->aclConfig(), acls);
  EXPECT_EQ(testData->action1Value(), 0U);
  EXPECT_EQ(testData->action2Value(), 0U);
  EXPECT_EQ(testData->action3Value(), 0U);
}

TEST_F(TestClassMapMachine, MakesNewClassDataEachTimeAndInsertsNone) {
  auto const classes = quietMachine();
  EXPECT_FALSE(classes->createCommonData() == classes->createCommonData());
  EXPECT_FALSE(classes->classCommonData());
}

TEST_F(TestClassMapMachine, TracesTheCreationOfClassData) {
  auto const classes = quietMachine();
  TraceRecorder const trace("PolicyMapTestSm", 8);
  auto const made = classes->createCommonData();
  EXPECT_THAT(trace.lines(),
              ElementsAre("PolicyMapTestSm|8|virtual PolicyMap::ClassMapSmCommonData::Ptr "
                          "PolicyMapTest::TestClassMapSm::createCommonData()"));
}

TEST_F(TestClassMapMachineDeathTest, MissingGlobalDataEndTheProcessByThePointersOwnAssertion) {
  auto const classes = Kor::make<ClassMachine>(nullptr, policy, nullptr, rawMap, classAction);
  EXPECT_ASSERTION(classes->createCommonData(), "Kor/Ptr", "object_ != nullptr", "Kor/Ptr.h");
}

// the running machine

TEST_F(TestClassMapMachine, KindsOneAndThreeGetTheirMachinesAndTheSecondValueStaysZero) {
  configure<Kind1>(5);
  configure<Kind3>(7);
  auto const classes = machine();
  EXPECT_EQ(classes->actionSms(), 2U);
  EXPECT_TRUE(classes->actionSm(ActionType{1}).as<PolicyMapTest::TestAction1Sm>());
  EXPECT_TRUE(classes->actionSm(ActionType{3}).as<PolicyMapTest::TestAction3Sm>());
  auto const classData = classes->classCommonData().as<TestClassCommonData>();
  ASSERT_TRUE(classData);
  EXPECT_EQ(classData->action1Value(), 5U);
  EXPECT_EQ(classData->action2Value(), 0U);
  EXPECT_EQ(classData->action3Value(), 7U);
  EXPECT_EQ(classData->updateAclActions(), 2U);
}

TEST_F(TestClassMapMachine, AnActionThatIsTakenAwayCleansUpItsValue) {
  configure<Kind1>(5);
  configure<Kind3>(7);
  auto const classes = machine();
  auto const classData = classes->classCommonData().as<TestClassCommonData>();
  classAction->actionDel(ActionType{1});
  EXPECT_EQ(classData->action1Value(), 0U);
  EXPECT_EQ(classData->action3Value(), 7U);
  EXPECT_EQ(classData->updateAclActions(), 3U);
  EXPECT_FALSE(classes->korActionSm(ActionType{1}));
}

TEST_F(TestClassMapMachine, AReplacedActionKeepsItsMachineAndBumpsAtMostOnce) {
  configure<Kind2>(5);
  auto const classes = machine();
  auto const classData = classes->classCommonData().as<TestClassCommonData>();
  auto const before = classes->actionSm(ActionType{2});
  configure<Kind2>(5);
  EXPECT_EQ(classData->updateAclActions(), 1U);
  configure<Kind2>(6);
  EXPECT_EQ(classes->actionSm(ActionType{2}), before);
  EXPECT_EQ(classData->action2Value(), 6U);
  EXPECT_EQ(classData->updateAclActions(), 2U);
}

TEST_F(TestClassMapMachine, AZombieReactsToNothingUntilItIsRevived) {
  auto const classes = machine();
  classes->korDoZombieReactors(true);
  EXPECT_TRUE(classes->korMarkedForDeletion());
  configure<Kind1>(5);
  EXPECT_EQ(classes->actionSms(), 0U);
  classes->korDoZombieReactors(false);
  configure<Kind2>(5);
  EXPECT_TRUE(classes->korActionSm(ActionType{2}));
}

TEST_F(TestClassMapMachine, SwitchingNotificationsOnAgainIsNotPassedOn) {
  auto const classes = machine();
  TraceRecorder const trace("PolicyMapTestSm", 8);
  classes->classCommonDataDel();
  classes->hasNotificationActiveIs(true);
  EXPECT_THAT(trace.lines(), IsEmpty());
  EXPECT_FALSE(classes->classCommonData());
}

TEST_F(TestClassMapMachine, AnEndedMachineLetsItsObjectsGo) {
  auto classes = machine();
  classes = nullptr;
  EXPECT_EQ(classAction->references(), 1U);
  EXPECT_EQ(rawMap->references(), 1U);
  EXPECT_EQ(policy->references(), 1U);
}

// shape

TEST_F(TestClassMapMachine, HasATypeBelowThatOfClassMachines) {
  Kor::PtrInterface::Ptr const classes = quietMachine();
  EXPECT_EQ(classes->fwkType(), TestClassMapSm::_fwkType());
  EXPECT_EQ(classes->fwkType()->name(), "PolicyMapTest::TestClassMapSm");
  EXPECT_EQ(classes->fwkType()->base(), PolicyMap::ClassMapSm::_fwkType());
}

}  // namespace
