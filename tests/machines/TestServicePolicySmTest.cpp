// SPDX-License-Identifier: Apache-2.0
#include "machines/TestServicePolicySm.h"

#include "helper/AclHelper.h"
#include "machines/TestClassMapSm.h"
#include "machines/TestPolicyMapSm.h"
#include "support/TraceRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using PolicyMap::PolicyMapSmKey;
using PolicyMapTest::TestPolicyMapSm;
using PolicyMapTest::TestServicePolicySm;
using PolicyMapTest::testServicePolicySmFactory;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using TestSupport::TraceRecorder;
using Vorel::IntfId;

IntfId const e1("Ethernet3/1");
IntfId const e2("Ethernet3/2");
IntfId const e3("Ethernet3/3");

// A machine without configuration that records the interfaces it must evaluate.
class EvaluatingMachine : public TestServicePolicySm {
 public:
  EvaluatingMachine()
      : TestServicePolicySm(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                            nullptr, nullptr, nullptr, nullptr, true, true, true) {}

  std::vector<std::string>* calls = nullptr;  // outlives the machine
  std::function<void()> reaction;

  void handleIntf(IntfId intf, bool force) override {
    calls->push_back(intf.name().stdString() + (force ? " forced" : "") +
                     (intfExists(intf) ? " exists" : " is gone"));
    TestServicePolicySm::handleIntf(intf, force);
    if (reaction) {
      reaction();
    }
  }
};

class NonexistentIntf : public testing::Test {
 protected:
  NonexistentIntf() { machine->calls = &calls; }

  std::vector<std::string> calls;
  Kor::Ptr<EvaluatingMachine> machine = Kor::make<EvaluatingMachine>();
};

// nonexistentIntf and intfExists

TEST_F(NonexistentIntf, WithoutEntriesEveryInterfaceExists) {
  EXPECT_EQ(machine->nonexistentIntfs(), 0U);
  EXPECT_TRUE(machine->intfExists(e1));
  EXPECT_TRUE(machine->intfExists(IntfId()));
  EXPECT_FALSE(machine->nonexistentIntf(e1));
  EXPECT_EQ(machine->nonexistentIntfs(), 0U);
}

TEST_F(NonexistentIntf, AnEntryHoldingTrueTakesItsInterfaceAwayAndEvaluatesItOnce) {
  machine->nonexistentIntfIs(e1, true);
  EXPECT_TRUE(machine->nonexistentIntf(e1));
  EXPECT_FALSE(machine->intfExists(e1));
  EXPECT_TRUE(machine->intfExists(e2));
  EXPECT_THAT(calls, ElementsAre("Ethernet3/1 is gone"));
  machine->nonexistentIntfIs(e1, true);
  EXPECT_THAT(calls, ElementsAre("Ethernet3/1 is gone"));
}

TEST_F(NonexistentIntf, AnEntryHoldingFalseLeavesItsInterfaceButIsAChange) {
  machine->nonexistentIntfIs(e1, false);
  EXPECT_TRUE(machine->intfExists(e1));
  EXPECT_EQ(machine->nonexistentIntfs(), 1U);
  EXPECT_TRUE(machine->korNonexistentIntf(e1));
  EXPECT_THAT(calls, ElementsAre("Ethernet3/1 exists"));
  machine->nonexistentIntfIs(e1, false);
  EXPECT_EQ(calls.size(), 1U);
}

TEST_F(NonexistentIntf, AChangedValueIsStoredInTheSameEntryAndEvaluated) {
  machine->nonexistentIntfIs(e1, true);
  auto const entry = machine->korNonexistentIntf(e1);
  machine->nonexistentIntfIs(e1, false);
  EXPECT_EQ(machine->korNonexistentIntf(e1), entry);
  EXPECT_EQ(entry->key(), e1);
  EXPECT_FALSE(entry->nonexistentIntf());
  EXPECT_TRUE(machine->intfExists(e1));
  EXPECT_THAT(calls, ElementsAre("Ethernet3/1 is gone", "Ethernet3/1 exists"));
}

TEST_F(NonexistentIntf, ANewEntryIsSilent) {
  auto const entry = machine->newNonexistentIntf(e1, true);
  EXPECT_THAT(calls, IsEmpty());
  EXPECT_FALSE(machine->intfExists(e1));
  EXPECT_EQ(machine->korNonexistentIntf(e1), entry);
}

TEST_F(NonexistentIntf, RemovingAnswersTheValueAndEvaluatesAfterwards) {
  machine->newNonexistentIntf(e1, true);
  machine->newNonexistentIntf(e2, false);
  EXPECT_TRUE(machine->nonexistentIntfDel(e1));
  EXPECT_FALSE(machine->nonexistentIntfDel(e2));
  EXPECT_THAT(calls, ElementsAre("Ethernet3/1 exists", "Ethernet3/2 exists"));
  EXPECT_EQ(machine->nonexistentIntfs(), 0U);
}

TEST_F(NonexistentIntf, RemovingAnAbsentEntryAnswersFalseAndEvaluatesNothing) {
  EXPECT_FALSE(machine->nonexistentIntfDel(e2));
  EXPECT_THAT(calls, IsEmpty());
}

TEST_F(NonexistentIntf, TheKeyOfTheEntryThatGoesMayNameIt) {
  machine->newNonexistentIntf(e1, true);
  EXPECT_TRUE(machine->nonexistentIntfDel(machine->korNonexistentIntf(e1)->key()));
  EXPECT_THAT(calls, ElementsAre("Ethernet3/1 exists"));
}

TEST_F(NonexistentIntf, RemovingAllEvaluatesEachInterfaceOnce) {
  machine->newNonexistentIntf(e1, true);
  machine->newNonexistentIntf(e2, false);
  machine->newNonexistentIntf(e3, true);
  machine->nonexistentIntfDelAll();
  EXPECT_THAT(calls, UnorderedElementsAre("Ethernet3/1 exists", "Ethernet3/2 exists",
                                          "Ethernet3/3 exists"));
  EXPECT_EQ(machine->nonexistentIntfs(), 0U);
}

TEST_F(NonexistentIntf, RemovingAllEvaluatesEachWhileLaterOnesAreStillThere) {
  for (IntfId const intf : {e1, e2, e3}) {
    machine->newNonexistentIntf(intf, true);
  }
  std::vector<std::uint32_t> left;
  machine->reaction = [&] { left.push_back(machine->nonexistentIntfs()); };
  machine->nonexistentIntfDelAll();
  EXPECT_THAT(left, ElementsAre(2, 1, 0));
}

TEST_F(NonexistentIntf, TheNotifyHookEvaluates) {
  machine->nonexistentIntfNotify(e1, nullptr);
  EXPECT_THAT(calls, ElementsAre("Ethernet3/1 exists"));
  EXPECT_EQ(machine->nonexistentIntfs(), 0U);
}

TEST_F(NonexistentIntf, IteratorsEvaluateWhatTheyRemove) {
  machine->newNonexistentIntf(e1, true);
  machine->newNonexistentIntf(e2, true);
  auto it = machine->nonexistentIntfIterator();
  IntfId const first = it.key();
  EXPECT_TRUE(it.value());
  it.del();
  EXPECT_THAT(calls, ElementsAre(first.name().stdString() + " exists"));
  auto entries = machine->korNonexistentIntfIterator();
  EXPECT_TRUE(entries.entry()->nonexistentIntf());
  entries.del();
  EXPECT_EQ(calls.size(), 2U);
  EXPECT_EQ(machine->nonexistentIntfs(), 0U);
}

TEST_F(NonexistentIntf, ConstIteratorsWalkTheEntries) {
  machine->newNonexistentIntf(e1, true);
  machine->newNonexistentIntf(e2, false);
  std::vector<std::string> seen;
  TestServicePolicySm const& constant = *machine;
  for (auto const& entry : constant.nonexistentIntfIteratorConst()) {
    seen.push_back(entry.key().name().stdString() + (entry.value() ? " true" : " false"));
  }
  EXPECT_THAT(seen, UnorderedElementsAre("Ethernet3/1 true", "Ethernet3/2 false"));
}

TEST_F(NonexistentIntf, AWriteInsideTheEvaluationIsEvaluatedInItsTurn) {
  machine->reaction = [&] {
    machine->reaction = nullptr;
    machine->nonexistentIntfIs(e2, true);
  };
  machine->nonexistentIntfIs(e1, true);
  EXPECT_THAT(calls, ElementsAre("Ethernet3/1 is gone", "Ethernet3/2 is gone"));
}

TEST_F(NonexistentIntf, AWriteEvaluatesWhateverTheToggles) {
  EXPECT_FALSE(machine->hasNotificationActive());
  machine->nonexistentIntfIs(e1, true);
  machine->hasNotificationActiveIs(true);
  machine->nonexistentIntfIs(e2, true);
  machine->korDoZombieReactors(true);
  machine->nonexistentIntfIs(e3, true);
  EXPECT_THAT(calls,
              ElementsAre("Ethernet3/1 is gone", "Ethernet3/2 is gone", "Ethernet3/3 is gone"));
}

TEST_F(NonexistentIntf, TheEndOfTheMachineEvaluatesNothing) {
  machine->newNonexistentIntf(e1, true);
  machine->newNonexistentIntf(e2, true);
  auto const entry = machine->korNonexistentIntf(e1);
  machine = nullptr;
  EXPECT_THAT(calls, IsEmpty());
  EXPECT_EQ(entry->references(), 1U);
}

TEST_F(NonexistentIntf, EverythingHereIsSilent) {
  TraceRecorder const trace("PolicyMapTestSm", 9);
  machine->nonexistentIntfIs(e1, true);
  EXPECT_FALSE(machine->intfExists(e1));
  machine->nonexistentIntfDelAll();
  machine->hasNotificationActiveIs(true);
  auto const made = machine->createPolicyMapSm(PolicyMapSmKey("pm", "input"), nullptr, nullptr);
  machine->korDoZombieReactors(true);
  EXPECT_THAT(trace.lines(), IsEmpty());
}

// factory

class ServicePolicyFactory : public testing::Test {
 protected:
  TestServicePolicySm::Ptr machine() {
    return testServicePolicySmFactory(policyConfig, classTypeConfig, statusRequestDir, status, acls,
                                      lagConfig, ipStatus, ip6Status, routingInfo, routing6Info,
                                      helper, aclDiff, false, true, false);
  }

  PolicyMap::PolicyMapTypeConfig::Ptr policyConfig = Kor::make<PolicyMap::PolicyMapTypeConfig>();
  PolicyMap::ClassMapTypeConfig::Ptr classTypeConfig = Kor::make<PolicyMap::ClassMapTypeConfig>();
  PolicyMap::PolicyMapStatusRequestDir::Ptr statusRequestDir =
      Kor::make<PolicyMap::PolicyMapStatusRequestDir>();
  PolicyMap::PolicyMapTypeStatus::Ptr status = Kor::make<PolicyMap::PolicyMapTypeStatus>();
  Acl::Config::Ptr acls = Kor::make<Acl::Config>();
  Lag::Input::Config::Ptr lagConfig = Kor::make<Lag::Input::Config>();
  Ip::Status::Ptr ipStatus = Kor::make<Ip::Status>();
  Ip6::Status::Ptr ip6Status = Kor::make<Ip6::Status>();
  Routing::RoutingInfo::Ptr routingInfo = Kor::make<Routing::RoutingInfo>();
  Routing6::RoutingInfo::Ptr routing6Info = Kor::make<Routing6::RoutingInfo>();
  PolicyMapTest::AclHelper::Ptr helper = PolicyMapTest::aclHelperFactory(false, false);
  Acl::AclDiff::Ptr aclDiff = Kor::make<Acl::AclDiff>();
};

TEST_F(ServicePolicyFactory, PassesItsFifteenArgumentsOn) {
  auto const made = machine();
  ASSERT_TRUE(made);
  EXPECT_EQ(made->references(), 1U);
  EXPECT_EQ(made->policyConfig(), policyConfig);
  EXPECT_EQ(made->classTypeConfig(), classTypeConfig);
  EXPECT_EQ(made->statusRequestDir(), statusRequestDir);
  EXPECT_EQ(made->status(), status);
  EXPECT_EQ(made->aclConfig(), acls);
  EXPECT_EQ(made->lagConfig(), lagConfig);
  EXPECT_EQ(made->ipStatus(), ipStatus);
  EXPECT_EQ(made->ip6Status(), ip6Status);
  EXPECT_EQ(made->routingInfo(), routingInfo);
  EXPECT_EQ(made->routing6Info(), routing6Info);
  EXPECT_EQ(made->aclHelper(), helper);
  EXPECT_EQ(made->aclDiff(), aclDiff);
  EXPECT_FALSE(made->allowL2Intf());
  EXPECT_TRUE(made->allowL3Intf());
  EXPECT_FALSE(made->allowMgmtIntf());
}

TEST_F(ServicePolicyFactory, PassesEachOfTheThreeFlagsOn) {
  auto const made = [](bool layer2, bool layer3, bool management) {
    return testServicePolicySmFactory(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                      nullptr, nullptr, nullptr, nullptr, nullptr, layer2, layer3,
                                      management);
  };
  EXPECT_TRUE(made(true, false, false)->allowL2Intf());
  EXPECT_FALSE(made(true, false, false)->allowL3Intf());
  EXPECT_FALSE(made(true, false, false)->allowMgmtIntf());
  EXPECT_TRUE(made(false, false, true)->allowMgmtIntf());
  EXPECT_FALSE(made(false, false, true)->allowL2Intf());
}

TEST_F(ServicePolicyFactory, SwitchesNotificationsOn) {
  auto const made = machine();
  EXPECT_TRUE(made->hasNotificationActive());
  EXPECT_EQ(made->nonexistentIntfs(), 0U);
  EXPECT_TRUE(made->commonData());
}

TEST_F(ServicePolicyFactory, AcceptsEmptyPointers) {
  auto const made =
      testServicePolicySmFactory(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                 nullptr, nullptr, nullptr, nullptr, nullptr, true, true, true);
  ASSERT_TRUE(made);
  EXPECT_TRUE(made->hasNotificationActive());
  EXPECT_EQ(made->policyMapSms(), 0U);
}

TEST_F(ServicePolicyFactory, AnEndedMachineLetsItsObjectsGo) {
  auto made = machine();
  made = nullptr;
  EXPECT_EQ(policyConfig->references(), 1U);
  EXPECT_EQ(ipStatus->references(), 1U);
  EXPECT_EQ(acls->references(), 1U);
  EXPECT_EQ(helper->references(), 1U);
}

// Data that are destroyed with the base of the machine, and change its configuration then.
class LateWriter : public PolicyMap::PolicyMapGlobalData {
 public:
  explicit LateWriter(PolicyMap::PolicyMapTypeConfig::Ptr config)
      : PolicyMapGlobalData(nullptr), config_(std::move(config)) {}
  ~LateWriter() override {
    config_->servicePolicyIs(PolicyMap::ServicePolicyKey(e1, "input"), "pm");
  }

 private:
  PolicyMap::PolicyMapTypeConfig::Ptr config_;
};

TEST_F(ServicePolicyFactory, ADyingMachineHearsNothing) {
  policyConfig->policyMapConfigIs("pm");
  auto made = machine();
  made->commonDataIs(Kor::make<LateWriter>(policyConfig));
  // Otherwise it would create a policy machine from members that are already destroyed.
  made = nullptr;
  EXPECT_EQ(policyConfig->servicePolicy(PolicyMap::ServicePolicyKey(e1, "input")), "pm");
  EXPECT_EQ(policyConfig->references(), 1U);
}

// createPolicyMapSm

TEST_F(ServicePolicyFactory, MakesAPolicyMachineWithWhatItHasAndIsGiven) {
  auto const service = machine();
  auto const config = Kor::make<PolicyMap::PolicyMapConfig>("pm");
  PolicyMapSmKey const key("pm", "input");
  auto const policyStatus = Kor::make<PolicyMap::PolicyMapStatus>(key);
  Kor::Ptr<PolicyMap::PolicyMapSm> const made =
      service->createPolicyMapSm(key, config, policyStatus);
  ASSERT_TRUE(made);
  EXPECT_EQ(made->fwkType(), TestPolicyMapSm::_fwkType());
  EXPECT_TRUE(made.as<TestPolicyMapSm>());
  EXPECT_EQ(made->references(), 1U);
  EXPECT_EQ(made->globalCommonData(), service->commonData());
  EXPECT_EQ(made->key(), key);
  EXPECT_EQ(made->policyMapConfig(), config);
  EXPECT_EQ(made->classTypeConfig(), classTypeConfig);
  EXPECT_EQ(made->status(), policyStatus);
  EXPECT_TRUE(made->hasNotificationActive());
  EXPECT_EQ(service->policyMapSms(), 0U);
}

TEST_F(NonexistentIntf, AMachineWithoutConfigurationMakesPolicyMachinesWithout) {
  auto const made = machine->createPolicyMapSm(PolicyMapSmKey("pm", "input"), nullptr, nullptr);
  EXPECT_FALSE(made->globalCommonData());
  EXPECT_FALSE(made->policyMapConfig());
  EXPECT_FALSE(made->classTypeConfig());
  EXPECT_FALSE(made->status());
  EXPECT_TRUE(made->hasNotificationActive());
}

TEST_F(ServicePolicyFactory, TheTreeBelowIsMadeOfTestMachines) {
  auto const config = policyConfig->policyMapConfigIs("pm");
  auto const sub = Kor::make<PolicyMap::PolicyMapSubConfig>("pm");
  sub->rawClassMapIs("web", Kor::make<PolicyMap::ClassMapSubConfig>("web"));
  sub->classPrioIs("web", 10);
  config->currentSubConfigIs(sub);
  policyConfig->servicePolicyIs(PolicyMap::ServicePolicyKey(e1, "input"), "pm");
  auto const service = machine();
  auto const policy = service->policyMapSm(PolicyMapSmKey("pm", "input")).as<TestPolicyMapSm>();
  ASSERT_TRUE(policy);
  EXPECT_TRUE(policy->classMapSm("web").as<PolicyMapTest::TestClassMapSm>());
}

TEST_F(ServicePolicyFactory, AnInterfaceThatIsTakenAwayStopsToCountAtOnce) {
  policyConfig->policyMapConfigIs("pm");
  policyConfig->servicePolicyIs(PolicyMap::ServicePolicyKey(e1, "input"), "pm");
  auto const service = testServicePolicySmFactory(policyConfig, classTypeConfig, nullptr, nullptr,
                                                  acls, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                  helper, nullptr, true, true, true);
  auto const policy = service->policyMapSm(PolicyMapSmKey("pm", "input"));
  ASSERT_TRUE(policy);
  EXPECT_TRUE(policy->activeIntf(e1));
  service->nonexistentIntfIs(e1, true);
  EXPECT_FALSE(policy->activeIntf(e1));
  service->nonexistentIntfDel(e1);
  EXPECT_TRUE(policy->activeIntf(e1));
}

TEST_F(ServicePolicyFactory, AZombieHearsNothingOfItsConfiguration) {
  policyConfig->policyMapConfigIs("pm");
  auto const service = machine();
  service->korDoZombieReactors(true);
  EXPECT_TRUE(service->korMarkedForDeletion());
  policyConfig->servicePolicyIs(PolicyMap::ServicePolicyKey(e1, "input"), "pm");
  EXPECT_EQ(service->policyMapSms(), 0U);
}

// shape

TEST_F(NonexistentIntf, ItsMachineHasATypeBelowThatOfServicePolicies) {
  Kor::PtrInterface::Ptr const object = machine;
  EXPECT_EQ(object->fwkType(), TestServicePolicySm::_fwkType());
  EXPECT_EQ(object->fwkType()->name(), "PolicyMapTest::TestServicePolicySm");
  EXPECT_EQ(object->fwkType()->base(), PolicyMap::ServicePolicySm::_fwkType());
}

}  // namespace
