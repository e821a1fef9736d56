// SPDX-License-Identifier: Apache-2.0
#include "policymap/RecordingMachines.h"

#include <gmock/gmock.h>

namespace policymap {
namespace {

using PolicyMap::PolicyMapSmKey;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class ServiceMachine : public testing::Test {
 protected:
  RecordingBench bench;
  PolicyMapSmKey const input{"pm", "input"};
};

Kor::Ptr<RecordingServiceSm> machineOfNothing(Hooks& hooks) {
  return Kor::make<RecordingServiceSm>(
      hooks, Kor::Ptr<PolicyMap::PolicyMapTypeConfig const>(),
      Kor::Ptr<PolicyMap::ClassMapTypeConfig const>(),
      Kor::Ptr<PolicyMap::PolicyMapStatusRequestDir const>(),
      Kor::Ptr<PolicyMap::PolicyMapTypeStatus>(), Kor::Ptr<Acl::Config const>(),
      Kor::Ptr<Lag::Input::Config const>(), Kor::Ptr<Ip::Status const>(),
      Kor::Ptr<Ip6::Status const>(), Kor::Ptr<Routing::RoutingInfo const>(),
      Kor::Ptr<Routing6::RoutingInfo const>(), Kor::Ptr<PolicyMap::PolicyMapAclHelper>(),
      Kor::Ptr<Acl::AclDiff>(), false, true, false);
}

TEST_F(ServiceMachine, CallsNoHookWhileItIsBuiltOrEnds) {
  bench.simplePolicy();
  bench.make();
  EXPECT_THAT(bench.hooks.taken(), IsEmpty());
  EXPECT_FALSE(bench.service->commonData());
  EXPECT_FALSE(bench.service->initialized());
  EXPECT_EQ(bench.service->policyMapSms(), 0U);
  EXPECT_THAT(bench.helper->taken(), IsEmpty());
  bench.service = nullptr;
  EXPECT_THAT(bench.hooks.taken(), IsEmpty());
  EXPECT_THAT(bench.settle(), IsEmpty());
}

TEST_F(ServiceMachine, CarriesItsArgumentsAndItsDefaults) {
  bench.make();
  auto const& machine = *bench.service;
  EXPECT_EQ(machine.policyConfig(), bench.policies);
  EXPECT_EQ(machine.classTypeConfig(), bench.classes);
  EXPECT_EQ(machine.status(), bench.status);
  EXPECT_EQ(machine.aclConfig(), bench.acls);
  EXPECT_EQ(machine.lagConfig(), bench.lag);
  EXPECT_EQ(machine.ipStatus(), bench.ip);
  EXPECT_EQ(machine.ip6Status(), bench.ip6);
  EXPECT_EQ(machine.routingInfo(), bench.routing);
  EXPECT_EQ(machine.routing6Info(), bench.routing6);
  EXPECT_EQ(machine.aclHelper(), bench.helper);
  EXPECT_EQ(machine.aclDiff(), bench.diff);
  EXPECT_TRUE(machine.allowL2Intf() && machine.allowL3Intf() && machine.allowMgmtIntf());
  EXPECT_TRUE(machine.allowIpAcl() && machine.allowIp6Acl() && machine.allowMacAcl());
  EXPECT_TRUE(machine.allowsOption(ClassMapMatchOption::mpls));
  EXPECT_EQ(machine.retryMin(), 1);
  EXPECT_EQ(machine.retryMax(), 60);
  EXPECT_EQ(machine.asyncTimeout(), 30);
  EXPECT_TRUE(machine.intfExists(intf("Ethernet1")));
}

TEST_F(ServiceMachine, HasGlobalDataBeforeItAsksForPolicyMachines) {
  bench.simplePolicy();
  bench.activate();
  auto const journal = bench.hooks.taken();
  ASSERT_FALSE(journal.empty());
  EXPECT_EQ(journal.front(), "createCommonData");
  EXPECT_EQ(journal.back(), "initialized");
  EXPECT_THAT(journal, Contains("createPolicyMapSm pm/input global config status").Times(1));
  ASSERT_TRUE(bench.service->policyMapSm(input));
  EXPECT_EQ(bench.service->policyMapSm(input)->globalCommonData(), bench.service->commonData());
  EXPECT_EQ(bench.service->commonData()->aclConfig(), bench.acls);
}

TEST_F(ServiceMachine, APolicyNeedsPolicyMapAndAttachmentInWhateverOrder) {
  bench.activate();
  bench.attach("pm", "Ethernet1");
  EXPECT_FALSE(bench.service->policyMapSm(input));
  bench.policies->policyMapConfigIs("pm");
  EXPECT_TRUE(bench.service->policyMapSm(input));
  bench.policies->policyMapConfigIs("other");
  EXPECT_FALSE(bench.service->policyMapSm({"other", "output"}));
  bench.attach("other", "Ethernet1", "output");
  EXPECT_TRUE(bench.service->policyMapSm({"other", "output"}));
  EXPECT_EQ(bench.service->policyMapSms(), 2U);
}

TEST_F(ServiceMachine, OnePolicyMachineServesAllInterfacesOfItsDirection) {
  bench.simplePolicy();
  bench.attach("pm", "Ethernet2");
  bench.activate();
  EXPECT_EQ(bench.service->policyMapSms(), 1U);
  EXPECT_EQ(bench.service->policyMapSm(input)->activeIntfs(), 2U);
}

TEST_F(ServiceMachine, TellsOfPolicyMapsThatComeAndGo) {
  bench.activate();
  bench.hooks.taken();
  bench.policies->policyMapConfigIs("pm");
  EXPECT_THAT(bench.hooks.taken(), ElementsAre("handlePolicyMapConfig pm", "handlePolicyMap pm"));
  bench.policies->policyMapConfigDel("pm");
  EXPECT_THAT(bench.hooks.taken(), ElementsAre("handlePolicyMapConfig pm", "handlePolicyMap pm"));
  bench.attach("pm", "Ethernet1");
  EXPECT_THAT(bench.hooks.taken(), ElementsAre("handlePolicyMap pm"));
  bench.detach("Ethernet1");
  EXPECT_THAT(bench.hooks.taken(), ElementsAre("handlePolicyMap pm"));
}

TEST_F(ServiceMachine, APolicyMachineIsCleanedUpThenAZombieThenReleased) {
  bench.simplePolicy();
  bench.activate();
  bench.settle();
  bench.hooks.taken();
  bench.detach("Ethernet1");
  EXPECT_TRUE(bench.service->policyMapSm(input)) << "until the helper has let it go";
  bench.settle();
  EXPECT_FALSE(bench.service->policyMapSm(input));
  auto const journal = bench.hooks.taken();
  EXPECT_THAT(std::vector<std::string>(journal.end() - 4, journal.end()),
              ElementsAre("pm/input: cleanup", "c: cleanup", "c: zombie", "pm/input: zombie"));
}

TEST_F(ServiceMachine, AnAttachmentChangedAgainWhileItIsTakenUpIsOfTheLastPolicy) {
  bench.simplePolicy();
  bench.policies->policyMapConfigIs("other");
  bench.policies->policyMapConfigIs("last");
  bench.activate();
  bench.settle();
  bench.hooks.deeds["handlePolicyMap pm"] = [this] { bench.attach("last", "Ethernet1"); };
  bench.attach("other", "Ethernet1");
  bench.settle();
  EXPECT_TRUE(bench.service->policyMapSm({"last", "input"}));
  EXPECT_FALSE(bench.service->policyMapSm({"other", "input"}));
  EXPECT_EQ(bench.service->policyMapSms(), 1U);
}

TEST_F(ServiceMachine, CleanupWhileAPolicyMachineIsMadeLetsItGoToo) {
  bench.activate();
  bench.hooks.deeds["createPolicyMapSm pm/input global config status"] = [this] {
    bench.service->cleanup();
  };
  bench.simplePolicy();
  EXPECT_THAT(bench.hooks.deeds, IsEmpty());
  EXPECT_THAT(bench.settle(), ElementsAre("hwInit"));
  EXPECT_EQ(bench.service->policyMapSms(), 0U);
}

TEST_F(ServiceMachine, AttachmentsItFindsUnchangedAreNotTakenUpAgain) {
  bench.simplePolicy();
  bench.activate();
  bench.settle();
  bench.service->hasNotificationActiveIs(false);
  bench.hooks.taken();
  bench.service->hasNotificationActiveIs(true);
  auto const journal = bench.hooks.taken();
  EXPECT_THAT(journal, Contains("handleIntf Ethernet1"));
  EXPECT_THAT(journal, Not(Contains("handlePolicyMap pm")));
  EXPECT_THAT(journal, Not(Contains(StartsWith("pm/input: activeIntf"))));
  EXPECT_THAT(bench.settle(), IsEmpty());
}

TEST_F(ServiceMachine, MayBeRefusedAPolicyMachine) {
  bench.hooks.refusePolicies = true;
  bench.simplePolicy();
  bench.activate();
  EXPECT_EQ(bench.service->policyMapSms(), 0U);
  EXPECT_THAT(bench.settle(), ElementsAre("hwInit"));
}

// Only the dependency index reports class-maps here. A second observer would request twice.
TEST_F(ServiceMachine, AClassMapThatComesIsOneReasonToAskForAClassMachine) {
  bench.policy("pm")->classPrioIs(Kor::Name("c"), 10);
  bench.attach("pm", "Ethernet1");
  bench.activate();
  bench.hooks.refuseClasses = true;
  bench.hooks.taken();
  bench.classes->classMapConfigIs("c");
  EXPECT_THAT(bench.hooks.taken(), Contains(StartsWith("pm/input: createClassMapSm c")).Times(1));
}

TEST_F(ServiceMachine, MayBeRefusedTheCommonDataOfAClass) {
  bench.hooks.refuseClassData = true;
  bench.simplePolicy();
  bench.activate();
  EXPECT_THAT(bench.settle(), ElementsAre("hwInit"));
}

TEST_F(ServiceMachine, WithoutPolicyConfigurationItProgramsNothing) {
  bench.simplePolicy();
  auto const kept = bench.policies;
  bench.policies = nullptr;
  bench.activate();
  EXPECT_THAT(bench.settle(), ElementsAre("hwInit"));
  bench.service->policyConfigIs(kept);
  EXPECT_EQ(bench.settle().size(), 4U);
  bench.service->policyConfigDel();
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4"));
  EXPECT_EQ(bench.service->policyMapSms(), 0U);
}

TEST_F(ServiceMachine, WithoutAccessListsItProgramsNothing) {
  bench.simplePolicy();
  auto const kept = bench.acls;
  bench.acls = nullptr;
  bench.activate();
  EXPECT_THAT(bench.settle(), ElementsAre("hwInit"));
  bench.service->aclConfigIs(kept);
  EXPECT_EQ(bench.settle().size(), 4U);
  bench.service->aclConfigDel();
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4"));
}

TEST_F(ServiceMachine, WithoutClassMapsItProgramsNothing) {
  bench.simplePolicy();
  auto const kept = bench.classes;
  bench.classes = nullptr;
  bench.activate();
  EXPECT_THAT(bench.settle(), ElementsAre("hwInit"));
  bench.service->classTypeConfigIs(kept);
  EXPECT_EQ(bench.settle().size(), 4U);
}

TEST_F(ServiceMachine, WithoutAHelperItProgramsNothing) {
  bench.simplePolicy();
  auto const kept = bench.helper;
  bench.helper = nullptr;
  bench.activate();
  Kor::EventLoop::global().runUntilIdle();
  EXPECT_TRUE(bench.service->policyMapSm(input));
  EXPECT_FALSE(bench.status->policyMapStatus(input)->programmed(ClassMapMatchOption::ipv4));
  bench.detach("Ethernet1");
  Kor::EventLoop::global().runUntilIdle();
  EXPECT_FALSE(bench.service->policyMapSm(input)) << "a policy still goes";
  bench.attach("pm", "Ethernet1");
  bench.service->aclHelperIs(kept);
  bench.helper = kept;
  EXPECT_THAT(bench.settle(),
              ElementsAre("hwInit", "create pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                          "addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
}

TEST_F(ServiceMachine, OfNothingAtAllLivesAndDies) {
  auto machine = machineOfNothing(bench.hooks);
  machine->hasNotificationActiveIs(true);
  EXPECT_TRUE(machine->initialized() && machine->commonData());
  EXPECT_FALSE(machine->commonData()->aclConfig());
  machine->handleIntf(intf("Ethernet1"), true);
  machine->handlePolicyMap("pm");
  machine->policyConfigIs(bench.policies);
  bench.simplePolicy();
  Kor::EventLoop::global().runUntilIdle();
  EXPECT_EQ(machine->policyMapSms(), 1U);
  machine->cleanup();
  Kor::EventLoop::global().runUntilIdle();
  EXPECT_EQ(machine->policyMapSms(), 0U);
  EXPECT_THAT(machine->memberIntfs(intf("PortChannel1")), ElementsAre(intf("PortChannel1")));
  EXPECT_THAT(machine->effectiveIntfs({"pm", "input"}, ClassMapMatchOption::ipv4), IsEmpty());
}

TEST_F(ServiceMachine, AnOptionThatIsNotAllowedIsNotProgrammed) {
  bench.simplePolicy();
  bench.activate();
  bench.settle();
  bench.service->allowIpAclIs(false);
  EXPECT_FALSE(bench.service->allowIpAcl());
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4"));
  bench.service->allowIp6AclIs(false);
  bench.service->allowMacAclIs(false);
  EXPECT_THAT(bench.settle(), IsEmpty());
  bench.service->allowIpAclIs(true);
  EXPECT_EQ(bench.settle().size(), 4U);
}

TEST_F(ServiceMachine, AnInterfaceIsReEvaluatedAtOnceAndProgrammedWhenTheLoopTurns) {
  bench.simplePolicy();
  bench.activate();
  bench.settle();
  bench.hooks.taken();
  bench.routing->routedIntfIs(intf("Ethernet1"), true);
  EXPECT_THAT(bench.hooks.taken(), Contains("handleIntf Ethernet1").Times(1));
  EXPECT_THAT(bench.helper->taken(), IsEmpty());
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4"));
}

TEST_F(ServiceMachine, AnInterfaceWithoutAPolicyIsNoQuestion) {
  bench.simplePolicy();
  bench.activate();
  bench.settle();
  bench.hooks.taken();
  bench.ip->intfAddressIs(intf("Ethernet9"), Ip::Address("10.0.0.1/24"));
  bench.service->handleIntf(intf("Ethernet8"), true);
  EXPECT_THAT(bench.settle(), IsEmpty());
}

TEST_F(ServiceMachine, AMemberThatMovesIsLookedAtWithBothItsChannels) {
  bench.lag->memberOfIs(intf("Ethernet3"), intf("PortChannel1"));
  bench.activate();
  bench.hooks.taken();
  bench.lag->memberOfIs(intf("Ethernet3"), intf("PortChannel2"));
  EXPECT_THAT(bench.hooks.taken(), ElementsAre("handleIntf PortChannel1", "handleIntf PortChannel2",
                                               "handleIntf Ethernet3"));
}

// A policy at a port-channel of Ethernet3 and Ethernet4, on a helper that expands port-channels.
class ServiceMachineWithChannel : public ServiceMachine {
 protected:
  void SetUp() override {
    bench.helper->expandPortChannelsIs(true);
    bench.lag->memberOfIs(intf("Ethernet3"), intf("PortChannel7"));
    bench.lag->memberOfIs(intf("Ethernet4"), intf("PortChannel7"));
    bench.simplePolicy();
    bench.detach("Ethernet1");
    bench.attach("pm", "PortChannel7");
    bench.activate();
    EXPECT_THAT(bench.settle(), Contains("addIntf pm/input/ipv4 Ethernet3"));
  }
};

TEST_F(ServiceMachineWithChannel, FollowsAMemberThatItFoundAtTheStart) {
  bench.lag->memberOfDel(intf("Ethernet3"));
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet3", "commit pm/input/ipv4"));
}

TEST_F(ServiceMachineWithChannel, LooksAtTheChannelWhenItIsToldOfAMember) {
  bench.service->handleIntf(intf("Ethernet3"), false);
  EXPECT_THAT(bench.settle(), IsEmpty());
  bench.service->handleIntf(intf("Ethernet3"), true);
  EXPECT_THAT(bench.settle(), ElementsAre("recreate pm/input/ipv4",
                                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                                          "commit pm/input/ipv4"));
}

TEST_F(ServiceMachine, HandleIntfIsLegalInsideAnother) {
  class Nesting : public RecordingServiceSm {
   public:
    using RecordingServiceSm::RecordingServiceSm;
    [[nodiscard]] bool intfExists(Vorel::IntfId asked) const override {
      if (depth < 3) {
        ++depth;
        const_cast<Nesting*>(this)->handleIntf(asked, false);
        --depth;
      }
      return exists;
    }
    mutable int depth = 0;
    bool exists = true;
  };
  bench.simplePolicy();
  bench.attach("pm", "Ethernet2");
  auto const machine = Kor::make<Nesting>(
      bench.hooks, Kor::Ptr<PolicyMap::PolicyMapTypeConfig const>(bench.policies),
      Kor::Ptr<PolicyMap::ClassMapTypeConfig const>(bench.classes),
      Kor::Ptr<PolicyMap::PolicyMapStatusRequestDir const>(), bench.status,
      Kor::Ptr<Acl::Config const>(bench.acls), Kor::Ptr<Lag::Input::Config const>(bench.lag),
      Kor::Ptr<Ip::Status const>(bench.ip), Kor::Ptr<Ip6::Status const>(bench.ip6),
      Kor::Ptr<Routing::RoutingInfo const>(bench.routing),
      Kor::Ptr<Routing6::RoutingInfo const>(bench.routing6),
      Kor::Ptr<PolicyMap::PolicyMapAclHelper>(bench.helper), bench.diff, true, true, true);
  machine->hasNotificationActiveIs(true);
  EXPECT_EQ(bench.settle().size(), 6U);
  machine->exists = false;
  machine->handleIntf(intf("Ethernet1"), false);
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
}

TEST_F(ServiceMachine, HandleIntfInsideAHelperOperationOnlyMarks) {
  class Meddling : public CallLog {
   public:
    Kor::String addIntfToPolicy(PolicyData const& data, Vorel::IntfId bound,
                                ClassMapMatchOption option) override {
      Kor::String const answer = CallLog::addIntfToPolicy(data, bound, option);
      if (machine) {
        machine->handleIntf(bound, false);
        bench->rule("acl", 20);
      }
      return answer;
    }
    ServiceSm* machine = nullptr;
    PolicyBench* bench = nullptr;
  };
  auto const meddling = Kor::make<Meddling>();
  bench.helper = meddling;
  bench.simplePolicy();
  bench.start();
  meddling->bench = &bench;
  meddling->machine = bench.machine.get();
  EXPECT_THAT(bench.settle(), ElementsAre("hwInit", "create pm/input/ipv4",
                                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                                          "addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4",
                                          "recreate pm/input/ipv4",
                                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                                          "addRule pm/input/ipv4 c:acl:20 permit tcp any any",
                                          "commit pm/input/ipv4"));
}

TEST_F(ServiceMachine, IsQuietUntilItsNotificationsAreOn) {
  bench.make();
  bench.simplePolicy();
  bench.service->handlePolicyMap("pm");
  bench.service->handleIntf(intf("Ethernet1"), true);
  EXPECT_EQ(bench.service->policyMapSms(), 0U);
  EXPECT_THAT(bench.settle(), IsEmpty());
  bench.service->hasNotificationActiveIs(true);
  EXPECT_EQ(bench.settle().size(), 5U);
}

TEST_F(ServiceMachine, InactiveItReEvaluatesNothing) {
  bench.simplePolicy();
  bench.attach("pm", "Vlan10");
  bench.activate();
  bench.settle();
  bench.service->hasNotificationActiveIs(false);
  bench.hooks.taken();
  bench.attach("pm", "Ethernet2");
  bench.ip->intfAddressIs(intf("Vlan10"), Ip::Address("10.0.0.1/24"));
  bench.service->handleIntf(intf("Vlan10"), true);
  EXPECT_THAT(bench.hooks.taken(), ElementsAre("handleIntf Vlan10 force"));
  EXPECT_THAT(bench.settle(), IsEmpty());
}

TEST_F(ServiceMachine, TakesUpWhatItMissedWhenItIsActivatedAgain) {
  bench.simplePolicy();
  bench.activate();
  bench.settle();
  bench.service->hasNotificationActiveIs(false);
  bench.attach("pm", "Ethernet2");
  bench.detach("Ethernet1");
  bench.rule("acl", 20);
  EXPECT_THAT(bench.settle(), IsEmpty());
  bench.service->hasNotificationActiveIs(true);
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "recreate pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                          "addRule pm/input/ipv4 c:acl:20 permit tcp any any",
                          "addIntf pm/input/ipv4 Ethernet2", "commit pm/input/ipv4"));
}

TEST_F(ServiceMachine, IsInitializedByItsFirstActivationOnly) {
  bench.activate();
  EXPECT_THAT(bench.hooks.taken(), Contains("initialized").Times(1));
  bench.service->hasNotificationActiveIs(false);
  bench.service->hasNotificationActiveIs(true);
  EXPECT_THAT(bench.hooks.taken(), Not(Contains("initialized")));
}

TEST_F(ServiceMachine, AccessListsGivenWhileItIsInactiveAreUsedAfterwards) {
  bench.simplePolicy();
  bench.activate();
  bench.settle();
  bench.service->hasNotificationActiveIs(false);
  auto const other = Kor::make<Acl::Config>();
  Acl::IpRuleConfig rule;
  rule.protocolIs(17);
  other->ipAclIs("acl")->ruleIs(30, rule);
  bench.service->aclConfigIs(other);
  EXPECT_THAT(bench.settle(), IsEmpty());
  bench.service->hasNotificationActiveIs(true);
  EXPECT_THAT(bench.settle(),
              testing::Contains("addRule pm/input/ipv4 c:acl:30 permit udp any any"));
}

TEST_F(ServiceMachine, AZombieIsQuietAndKeepsItsPointers) {
  bench.simplePolicy();
  bench.activate();
  bench.settle();
  bench.service->korDoZombieReactors(true);
  bench.hooks.taken();
  bench.attach("pm", "Ethernet2");
  bench.policies->policyMapConfigIs("other");
  bench.routing->routingIs(true);
  bench.rule("acl", 20);
  EXPECT_THAT(bench.hooks.taken(), IsEmpty());
  bench.service->handleIntf(intf("Ethernet1"), true);
  EXPECT_THAT(bench.settle(), IsEmpty());
  EXPECT_EQ(bench.service->policyConfig(), bench.policies);
  EXPECT_EQ(bench.service->aclConfig(), bench.acls);
  EXPECT_EQ(bench.service->aclHelper(), bench.helper);
}

TEST_F(ServiceMachine, AFormerZombieHearsAgain) {
  bench.simplePolicy();
  bench.activate();
  bench.settle();
  bench.service->korDoZombieReactors(true);
  bench.service->korDoZombieReactors(false);
  bench.rule("acl", 20);
  EXPECT_THAT(bench.settle(), Contains("recreate pm/input/ipv4"));
}

TEST_F(ServiceMachine, SwitchingNotificationsOnForAZombieOnlyStoresTheState) {
  bench.simplePolicy();
  bench.make();
  bench.service->korDoZombieReactors(true);
  bench.service->hasNotificationActiveIs(true);
  EXPECT_TRUE(bench.service->hasNotificationActive());
  EXPECT_FALSE(bench.service->initialized());
  EXPECT_THAT(bench.hooks.taken(), IsEmpty());
  EXPECT_THAT(bench.settle(), IsEmpty());
}

TEST_F(ServiceMachine, CleanupLetsAllPoliciesGoUntilItIsActivatedAgain) {
  bench.simplePolicy();
  bench.activate();
  bench.settle();
  bench.service->cleanup();
  EXPECT_THAT(bench.helper->taken(), IsEmpty()) << "only when the loop turns";
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4"));
  EXPECT_EQ(bench.service->policyMapSms(), 0U);
  EXPECT_EQ(bench.status->policyMapStatuss(), 0U);
  bench.attach("pm", "Ethernet2");
  EXPECT_THAT(bench.settle(), IsEmpty());
  bench.service->hasNotificationActiveIs(false);
  bench.service->hasNotificationActiveIs(true);
  EXPECT_EQ(bench.settle().size(), 5U);
}

TEST_F(ServiceMachine, OtherStatusesOfTheSameContentProgramNothing) {
  bench.simplePolicy();
  bench.activate();
  bench.settle();
  bench.service->ipStatusIs(Kor::make<Ip::Status>());
  bench.service->ip6StatusIs(Kor::make<Ip6::Status>());
  bench.service->routingInfoIs(Kor::make<Routing::RoutingInfo>());
  bench.service->routing6InfoIs(Kor::make<Routing6::RoutingInfo>());
  bench.service->lagConfigIs(Kor::make<Lag::Input::Config>());
  EXPECT_THAT(bench.settle(), IsEmpty());
}

TEST_F(ServiceMachine, KeepsTheWaitsItIsGiven) {
  bench.make();
  auto& machine = *bench.service;
  machine.retryMaxIs(90);
  machine.retryMinIs(70);
  machine.asyncTimeoutIs(5);
  EXPECT_THROW(machine.retryMinIs(91), Kor::RangeException);
  EXPECT_EQ(machine.retryMin(), 70);
  EXPECT_EQ(machine.retryMax(), 90);
  EXPECT_EQ(machine.asyncTimeout(), 5);
}

TEST_F(ServiceMachine, WithWaitsTooSmallForTheClockTheLoopStillEnds) {
  bench.simplePolicy();
  bench.activate();
  Kor::EventLoop::global().runFor(1e9);
  bench.helper->answers["addRule"] = "no room";
  bench.service->retryMinIs(1e-300);
  bench.service->retryMaxIs(1e-300);
  bench.rule("acl", 20);
  EXPECT_THAT(bench.settle(), Contains("delete pm/input/ipv4"));
}

TEST_F(ServiceMachine, HooksCalledDirectlyInsertNothing) {
  bench.policies->policyMapConfigIs("pm");
  bench.activate();
  EXPECT_TRUE(
      bench.service->createPolicyMapSm(input, bench.policies->policyMapConfig("pm"), nullptr));
  EXPECT_TRUE(bench.service->createCommonData());
  EXPECT_EQ(bench.service->policyMapSms(), 0U);
}

TEST_F(ServiceMachine, PolicyMachinesMayOutliveIt) {
  bench.simplePolicy();
  bench.activate();
  bench.settle();
  auto const kept = bench.service->policyMapSm(input);
  bench.service = nullptr;
  bench.rule("acl", 20);
  bench.policy("pm")->classPrioIs("d", 1);
  kept->handleActiveIntf(intf("Ethernet1"));
  kept->cleanup();
  EXPECT_THAT(bench.settle(), IsEmpty());
}

TEST_F(ServiceMachine, APolicyMachineTakenFromTheCollectionCanStillDeleteItsPolicy) {
  bench.simplePolicy();
  bench.activate();
  bench.settle();
  auto const kept = bench.service->policyMapSm(input);
  bench.service->policyMapSmDel(input);
  kept->reconciler().wantedIs(false);
  EXPECT_THAT(bench.settle(), Contains("delete pm/input/ipv4"));
  kept->serviceIs(nullptr);
}

TEST_F(ServiceMachine, APolicyMachineTakenFromTheCollectionOutlivesIt) {
  bench.simplePolicy();
  bench.activate();
  bench.settle();
  auto const kept = bench.service->policyMapSm(input);
  bench.service->policyMapSmDel(input);
  kept->reconciler().everythingChanged();
  bench.service = nullptr;
  EXPECT_FALSE(kept->reconciler().attached());
  bench.rule("acl", 20);
  EXPECT_THAT(bench.settle(), IsEmpty());
}

TEST_F(ServiceMachine, ObjectsThatItAlreadyHasChangeNothing) {
  bench.simplePolicy();
  bench.activate();
  bench.settle();
  bench.hooks.taken();
  bench.service->policyConfigIs(bench.policies);
  bench.service->classTypeConfigIs(bench.classes);
  bench.service->aclConfigIs(bench.acls);
  bench.service->aclHelperIs(bench.helper);
  EXPECT_THAT(bench.settle(), IsEmpty());
  EXPECT_THAT(bench.hooks.taken(), IsEmpty());
}

TEST_F(ServiceMachine, NewAccessListsMeanNewGlobalDataAndANewTree) {
  bench.simplePolicy();
  bench.activate();
  bench.settle();
  auto const oldData = bench.service->commonData();
  auto const oldMachine = bench.service->policyMapSm(input);
  bench.service->aclConfigIs(Kor::make<Acl::Config>());
  EXPECT_NE(bench.service->commonData(), oldData);
  bench.settle();
  EXPECT_NE(bench.service->policyMapSm(input), oldMachine);
  EXPECT_EQ(bench.service->policyMapSm(input)->globalCommonData(), bench.service->commonData());
  EXPECT_EQ(oldMachine->globalCommonData(), oldData);
}

// A deletion on the former helper turns the event loop while the other policy is still programmed
// there.
TEST_F(ServiceMachine, ProgramsNothingOnAnotherHelperWhilePoliciesLeaveTheFormerOne) {
  class Turning : public CallLog {
   public:
    Kor::String deletePolicy(PolicyData const& data, ClassMapMatchOption option) override {
      Kor::EventLoop::global().runUntilIdle();
      ofOther.push_back(other->calls.size());
      return CallLog::deletePolicy(data, option);
    }
    Kor::Ptr<CallLog> other;
    std::vector<std::size_t> ofOther;  // calls of the other helper at each deletion
  };
  auto const former = Kor::make<Turning>();
  former->other = Kor::make<CallLog>();
  bench.helper = former;
  bench.simplePolicy();
  bench.attach("pm", "Ethernet2", "output");
  bench.activate();
  bench.settle();
  bench.rule("acl", 20);
  bench.service->aclHelperIs(former->other);
  EXPECT_THAT(former->ofOther, ElementsAre(0U, 0U));
  bench.helper = former->other;
  auto const calls = bench.settle();
  EXPECT_EQ(calls.size(), 11U);
  EXPECT_EQ(calls.front(), "hwInit");
}

TEST_F(ServiceMachine, MayEndInsideAHelperCall) {
  class Ending : public CallLog {
   public:
    Kor::String addRule(PolicyMap::AclRuleKey const& key, PolicyMap::SubRuleData const& subRule,
                        PolicyData const& data, ClassData const& classData) override {
      if (end) {
        std::exchange(end, nullptr)();
      }
      return CallLog::addRule(key, subRule, data, classData);
    }
    std::function<void()> end;
  };
  auto const ending = Kor::make<Ending>();
  bench.helper = ending;
  bench.simplePolicy();
  bench.rule("acl", 20);
  bench.start();
  ending->end = [this] { bench.machine = nullptr; };
  EXPECT_THAT(bench.settle(), ElementsAre("hwInit", "create pm/input/ipv4",
                                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any"));
}

TEST_F(ServiceMachine, MayEndInsideEachHelperCallOfAPass) {
  class Ending : public CallLog {
   public:
    Kor::String commitPolicy(PolicyData const& data, ClassMapMatchOption option) override {
      return ended(CallLog::commitPolicy(data, option));
    }
    Kor::String deletePolicy(PolicyData const& data, ClassMapMatchOption option) override {
      return ended(CallLog::deletePolicy(data, option));
    }
    Kor::String beginUpdateActions(PolicyData const& data, ClassData const& classData) override {
      return ended(CallLog::beginUpdateActions(data, classData));
    }
    Kor::String ended(Kor::String const& answer) {
      if (calls.back().rfind(endAt, 0) == 0) {
        end();
      }
      return answer;
    }
    std::string endAt;
    std::function<void()> end;
  };
  for (char const* where : {"commit", "delete", "begin"}) {
    PolicyBench each;
    auto const ending = Kor::make<Ending>();
    ending->updateActionSupportedIs(true);
    ending->endAt = where;
    ending->end = [&] { each.machine = nullptr; };
    each.helper = ending;
    each.simplePolicy();
    auto const action = each.action("pm", "c");
    each.start();
    each.settle();
    action->numberIs(5);
    each.settle();
    each.detach("Ethernet1");
    each.settle();
    EXPECT_FALSE(each.machine) << where;
  }
}

}  // namespace
}  // namespace policymap
