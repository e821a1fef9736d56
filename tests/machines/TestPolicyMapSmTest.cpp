// SPDX-License-Identifier: Apache-2.0
#include "machines/TestPolicyMapSm.h"

#include "machines/TestClassMapSm.h"
#include "machines/TestKinds.h"
#include "support/TraceRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

using PolicyMap::ClassMapSm;
using PolicyMapTest::TestClassMapSm;
using PolicyMapTest::TestPolicyMapSm;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::TraceRecorder;

class PolicyMachine : public TestPolicyMapSm {
 public:
  template <class... Args>
  explicit PolicyMachine(Args&&... args) : TestPolicyMapSm(std::forward<Args>(args)...) {}
};

class TestPolicyMapMachine : public testing::Test {
 protected:
  // A machine whose notifications are off.
  Kor::Ptr<PolicyMachine> quietMachine() {
    return Kor::make<PolicyMachine>(global, PolicyMap::PolicyMapSmKey("pm", "input"), config,
                                    classTypeConfig, nullptr);
  }
  Kor::Ptr<PolicyMachine> machine() {
    auto made = quietMachine();
    made->hasNotificationActiveIs(true);
    return made;
  }

  std::string const signature = "PolicyMapTestSm|8|virtual PolicyMap::ClassMapSm::Ptr "
                                "PolicyMapTest::TestPolicyMapSm::createClassMapSm("
                                "const PolicyMap::ClassMapConfig::PtrConst&, "
                                "const PolicyMap::ClassMapSubConfig::PtrConst&, "
                                "const PolicyMap::ClassAction::PtrConst&)";
  Acl::Config::Ptr acls = Kor::make<Acl::Config>();
  PolicyMap::PolicyMapGlobalData::Ptr global = Kor::make<PolicyMap::PolicyMapGlobalData>(acls);
  PolicyMap::ClassMapTypeConfig::Ptr classTypeConfig = Kor::make<PolicyMap::ClassMapTypeConfig>();
  PolicyMap::PolicyMapConfig::Ptr config = Kor::make<PolicyMap::PolicyMapConfig>("pm");
  PolicyMap::ClassMapConfig::Ptr map = Kor::make<PolicyMap::ClassMapConfig>("named");
  PolicyMap::ClassMapSubConfig::Ptr rawMap = Kor::make<PolicyMap::ClassMapSubConfig>("raw");
  PolicyMap::ClassAction::Ptr action = Kor::make<PolicyMap::ClassAction>("web");
};

TEST_F(TestPolicyMapMachine, MakesAClassMachineWithWhatItIsGiven) {
  auto const policy = machine();
  Kor::Ptr<ClassMapSm> const made = policy->createClassMapSm(map, rawMap, action);
  ASSERT_TRUE(made);
  EXPECT_EQ(made->fwkType(), TestClassMapSm::_fwkType());
  EXPECT_TRUE(made.as<TestClassMapSm>());
  EXPECT_EQ(made->references(), 1U);
  EXPECT_EQ(made->globalCommonData(), global);
  EXPECT_TRUE(made->policyCommonData());
  EXPECT_EQ(made->policyCommonData(), policy->policyCommonData());
  EXPECT_EQ(made->classMapConfig(), map);
  EXPECT_EQ(made->rawClassMapSubConfig(), rawMap);
  EXPECT_EQ(made->classAction(), action);
}

TEST_F(TestPolicyMapMachine, AClassMachineComesWithItsNotificationsOn) {
  auto const made = machine()->createClassMapSm(map, rawMap, action);
  EXPECT_TRUE(made->hasNotificationActive());
  action->actionIs(PolicyMap::ActionType{1}, Kind1::holding(4));
  EXPECT_TRUE(made->korActionSm(PolicyMap::ActionType{1}));
}

TEST_F(TestPolicyMapMachine, EachEmptyArgumentLeavesItsReactorEmpty) {
  auto const policy = machine();
  auto const withoutAction = policy->createClassMapSm(map, rawMap, nullptr);
  EXPECT_FALSE(withoutAction->classAction());
  EXPECT_EQ(withoutAction->classMapConfig(), map);
  auto const raw = policy->createClassMapSm(nullptr, rawMap, action);
  EXPECT_FALSE(raw->classMapConfig());
  EXPECT_EQ(raw->name(), "raw");
  auto const named = policy->createClassMapSm(map, nullptr, action);
  EXPECT_FALSE(named->rawClassMapSubConfig());
  EXPECT_EQ(named->name(), "named");
}

TEST_F(TestPolicyMapMachine, WithoutPolicyDataTheClassMachineHasNone) {
  auto const made = quietMachine()->createClassMapSm(map, nullptr, action);
  EXPECT_FALSE(made->policyCommonData());
  EXPECT_EQ(made->globalCommonData(), global);
}

TEST_F(TestPolicyMapMachine, WithoutGlobalDataTheClassMachineMakesNoClassData) {
  auto const policy = Kor::make<PolicyMachine>(nullptr, PolicyMap::PolicyMapSmKey("pm", "input"),
                                               nullptr, nullptr, nullptr);
  auto const made = policy->createClassMapSm(map, nullptr, action);
  EXPECT_FALSE(made->globalCommonData());
  EXPECT_FALSE(made->classCommonData());
  EXPECT_TRUE(made->hasNotificationActive());
}

TEST_F(TestPolicyMapMachine, TheHookInsertsNothing) {
  auto const policy = machine();
  auto const made = policy->createClassMapSm(map, rawMap, action);
  EXPECT_EQ(policy->classMapSms(), 0U);
}

// traces

TEST_F(TestPolicyMapMachine, TracesTheNameOfTheMapWhenThereIsOne) {
  auto const policy = quietMachine();
  TraceRecorder trace("PolicyMapTestSm", 8);
  policy->createClassMapSm(map, rawMap, action);
  EXPECT_THAT(trace.lines().at(0), signature);
  EXPECT_THAT(trace.lines().at(1), "PolicyMapTestSm|8| map : named");
}

TEST_F(TestPolicyMapMachine, TracesTheNameOfTheRawMapOtherwise) {
  auto const policy = quietMachine();
  TraceRecorder trace("PolicyMapTestSm", 8);
  policy->createClassMapSm(nullptr, rawMap, action);
  EXPECT_THAT(trace.lines().at(0), signature);
  EXPECT_THAT(trace.lines().at(1), "PolicyMapTestSm|8| rawMap : raw");
}

TEST_F(TestPolicyMapMachine, WithoutBothTheSecondLineEndsBehindItsBlank) {
  auto const policy = quietMachine();
  TraceRecorder trace("PolicyMapTestSm", 8);
  EXPECT_TRUE(policy->createClassMapSm(nullptr, nullptr, nullptr));
  EXPECT_THAT(trace.lines().at(0), signature);
  EXPECT_THAT(trace.lines().at(1), "PolicyMapTestSm|8| rawMap : ");
}

TEST_F(TestPolicyMapMachine, TracesBeforeTheClassMachineStarts) {
  auto const policy = quietMachine();
  TraceRecorder const trace("PolicyMapTestSm", 8);
  auto const made = policy->createClassMapSm(map, nullptr, nullptr);
  EXPECT_THAT(trace.lines(),
              ElementsAre(signature, "PolicyMapTestSm|8| map : named",
                          "PolicyMapTestSm|8|virtual PolicyMap::ClassMapSmCommonData::Ptr "
                          "PolicyMapTest::TestClassMapSm::createCommonData()"));
}

TEST_F(TestPolicyMapMachine, IsSilentBelowItsLevel) {
  auto const policy = quietMachine();
  TraceRecorder const trace("PolicyMapTestSm", 7);
  policy->createClassMapSm(map, rawMap, action);
  EXPECT_THAT(trace.lines(), IsEmpty());
}

// the running machine

TEST_F(TestPolicyMapMachine, ItsClassMachinesAreTestMachines) {
  auto const sub = Kor::make<PolicyMap::PolicyMapSubConfig>("pm");
  sub->rawClassMapIs("raw", rawMap);
  sub->classPrioIs("raw", 10);
  sub->classActionIs("raw")->actionIs(PolicyMap::ActionType{3}, Kind3::holding(8));
  config->currentSubConfigIs(sub);
  auto const policy = machine();
  auto const made = policy->classMapSm("raw").as<TestClassMapSm>();
  ASSERT_TRUE(made);
  auto const data = made->classCommonData().as<PolicyMapTest::TestClassCommonData>();
  ASSERT_TRUE(data);
  EXPECT_EQ(data->action3Value(), 8U);
}

TEST_F(TestPolicyMapMachine, AZombieReactsToNothingUntilItIsRevived) {
  auto const policy = machine();
  auto const sub = Kor::make<PolicyMap::PolicyMapSubConfig>("pm");
  policy->korDoZombieReactors(true);
  EXPECT_TRUE(policy->korMarkedForDeletion());
  config->currentSubConfigIs(sub);
  EXPECT_FALSE(policy->policyMap());
  policy->korDoZombieReactors(false);
  EXPECT_FALSE(policy->korMarkedForDeletion());
  auto const other = Kor::make<PolicyMap::PolicyMapSubConfig>("pm");
  config->currentSubConfigIs(other);
  EXPECT_EQ(policy->policyMap(), other);
}

TEST_F(TestPolicyMapMachine, AnEndedMachineLetsItsObjectsGo) {
  auto policy = machine();
  policy = nullptr;
  EXPECT_EQ(config->references(), 1U);
  EXPECT_EQ(global->references(), 1U);
  EXPECT_EQ(classTypeConfig->references(), 1U);
}

// shape

TEST_F(TestPolicyMapMachine, HasATypeBelowThatOfPolicyMachines) {
  Kor::PtrInterface::Ptr const policy = quietMachine();
  EXPECT_EQ(policy->fwkType(), TestPolicyMapSm::_fwkType());
  EXPECT_EQ(policy->fwkType()->name(), "PolicyMapTest::TestPolicyMapSm");
  EXPECT_EQ(policy->fwkType()->base(), PolicyMap::PolicyMapSm::_fwkType());
}

}  // namespace
