// SPDX-License-Identifier: Apache-2.0
#include "policymap/PlainHost.h"

#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace policymap {
namespace {

using PolicyMap::PolicyMapSmKey;
using testing::Contains;
using testing::Each;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

using enum PolicyMap::ClassMapMatchOption;
PolicyMapSmKey const input("pm", "input");

// deletePolicy() throws while `thrown` is set. commitPolicy() and deletePolicy() run a function
// once.
class FaultyLog final : public CallLog {
 public:
  std::function<void()> deed;
  std::function<void()> deletionDeed;
  std::string thrown;

  Kor::String deletePolicy(PolicyData const& data, ClassMapMatchOption option) override {
    if (!thrown.empty()) {
      throw std::runtime_error(thrown);
    }
    if (auto const once = std::exchange(deletionDeed, nullptr)) {
      once();
    }
    return CallLog::deletePolicy(data, option);
  }
  Kor::String commitPolicy(PolicyData const& data, ClassMapMatchOption option) override {
    Kor::String const error = CallLog::commitPolicy(data, option);
    if (auto const once = std::exchange(deed, nullptr)) {
      once();
    }
    return error;
  }
};

// Records for which options and interfaces eligibility is requested. Runs a function once, at the
// next request.
class AskedServiceSm final : public ServiceSm {
 public:
  using ServiceSm::ServiceSm;
  std::vector<ClassMapMatchOption> asked;
  std::vector<Vorel::IntfId> askedIntfs;
  std::function<void()> deed;

  bool allowedIntfForType(Vorel::IntfId which, ClassMapMatchOption option) override {
    asked.push_back(option);
    askedIntfs.push_back(which);
    if (auto const once = std::exchange(deed, nullptr)) {
      once();
    }
    return ServiceSm::allowedIntfForType(which, option);
  }
};

class Reconciling : public testing::Test {
 protected:
  Reconciling() { bench.simplePolicy(); }

  void ipv6Too() {
    bench.acls->ip6AclIs("acl")->ruleIs(10, {});
    bench.classMatches("c", "acl", 2, ipv6);
  }
  std::vector<std::string> advance(double seconds) {
    Kor::EventLoop::global().runFor(seconds);
    return bench.helper->taken();
  }
  Kor::Ptr<AskedServiceSm> startAsked() {
    auto const asked = Kor::make<AskedServiceSm>(
        Kor::Ptr<PolicyMap::PolicyMapTypeConfig const>(bench.policies),
        Kor::Ptr<PolicyMap::ClassMapTypeConfig const>(bench.classes),
        Kor::Ptr<PolicyMap::PolicyMapStatusRequestDir const>(bench.requests), bench.status,
        Kor::Ptr<Acl::Config const>(bench.acls), Kor::Ptr<Lag::Input::Config const>(bench.lag),
        Kor::Ptr<Ip::Status const>(bench.ip), Kor::Ptr<Ip6::Status const>(bench.ip6),
        Kor::Ptr<Routing::RoutingInfo const>(bench.routing),
        Kor::Ptr<Routing6::RoutingInfo const>(bench.routing6),
        Kor::Ptr<PolicyMap::PolicyMapAclHelper>(bench.helper), bench.diff, true, true, true);
    bench.machine = asked;
    asked->hasNotificationActiveIs(true);
    return asked;
  }

  PolicyBench bench;
};

TEST_F(Reconciling, OptionsThatFailTogetherAreTriedAgainAfterOneWait) {
  ipv6Too();
  bench.helper->answers["addRule"] = "no room";
  bench.start();
  bench.settle();
  bench.helper->answers.clear();
  auto const calls = advance(1);
  EXPECT_THAT(calls, Contains("commit pm/input/ipv4"));
  EXPECT_THAT(calls, Contains("commit pm/input/ipv6"));
}

// At 0 s ipv4 is deleted, which succeeds. At 0.5 s the result of ipv6 fails.
TEST_F(Reconciling, TheWaitBeginsWithTheFailureNotWithADeletionThatSucceeds) {
  ipv6Too();
  bench.start();
  bench.settle();
  bench.helper->asyncOperationsIs(true);
  bench.classMap("c")->matchDel(1);
  bench.acls->ip6AclIs("acl")->ruleIs(20, {});
  bench.settle();
  bench.helper->asyncOperationResultIs({"", 1});
  ASSERT_THAT(bench.settle(), Contains("commit pm/input/ipv6"));
  advance(0.5);
  bench.helper->asyncOperationResultIs({"full", 2});
  bench.settle();
  EXPECT_THAT(advance(0.75), IsEmpty());
  EXPECT_THAT(advance(0.25), Contains("create pm/input/ipv6"));
}

TEST_F(Reconciling, AnInterfaceIsNoMatterOfOptionsWithoutRules) {
  auto const machine = startAsked();
  bench.settle();
  machine->asked.clear();
  bench.attach("pm", "Ethernet2");
  EXPECT_THAT(bench.settle(), Contains("addIntf pm/input/ipv4 Ethernet2"));
  EXPECT_THAT(machine->asked, Not(IsEmpty()));
  EXPECT_THAT(machine->asked, Each(ipv4));
}

TEST_F(Reconciling, OnlyTheOptionThatFailedIsLookedAtAgain) {
  ipv6Too();
  auto const machine = startAsked();
  bench.settle();
  bench.helper->answers["addRule"] = "no room";
  bench.rule("acl", 20);
  bench.settle();
  bench.helper->answers.clear();
  machine->asked.clear();
  EXPECT_THAT(advance(1), Contains("commit pm/input/ipv4"));
  EXPECT_THAT(machine->asked, Not(IsEmpty()));
  EXPECT_THAT(machine->asked, Each(ipv4));
}

// The helper is due to be released when the commit returns, but the service is removed first.
TEST_F(Reconciling, ANewServiceMachineIsServedThoughTheOldOneWasLeavingItsHelper) {
  auto const helper = Kor::make<FaultyLog>();
  bench.helper = helper;
  bench.start();
  auto const policy = bench.machine->policyMapSm(input);
  PlainHost next;
  helper->deed = [&] {
    bench.machine->aclHelperIs(Kor::make<CallLog>());
    policy->serviceIs(nullptr);
  };
  bench.settle();
  EXPECT_THAT(helper->calls, Each(Not(StartsWith("delete"))));
  policy->serviceIs(&next);
  policy->reconciler().everythingChanged();
  bench.settle();
  EXPECT_THAT(next.helper.as<CallLog>()->calls, Contains("commit pm/input/ipv4"));
  policy->serviceIs(nullptr);
}

TEST_F(Reconciling, AnInterfaceIsNoMatterOfPoliciesThatHaveLeftIt) {
  bench.attach("pm", "Ethernet2");
  bench.policy("other")->classPrioIs(Kor::Name("c"), 10);
  auto const machine = startAsked();
  bench.attach("other", "Ethernet1");
  bench.settle();
  machine->askedIntfs.clear();
  machine->handleIntf(intf("Ethernet1"), false);
  bench.settle();
  EXPECT_THAT(machine->askedIntfs, Not(IsEmpty()));
  EXPECT_THAT(machine->askedIntfs, Each(intf("Ethernet1")));
}

TEST_F(Reconciling, AMachineThatIsNotActiveLooksAtNoInterface) {
  bench.start();
  bench.settle();
  bench.machine->hasNotificationActiveIs(false);
  bench.machine->nonexistent = {intf("Ethernet1")};
  bench.machine->handleIntf(intf("Ethernet1"), false);
  EXPECT_TRUE(bench.machine->policyMapSm(input)->activeIntf(intf("Ethernet1")));
  bench.machine->hasNotificationActiveIs(true);
  EXPECT_FALSE(bench.machine->policyMapSm(input)->activeIntf(intf("Ethernet1")));
}

// The rule is refused because the helper does not support it.
TEST_F(Reconciling, ARefusalIsShownAtTheClassAndStaysWithoutInterfaces) {
  Acl::IpRuleConfig deny;
  deny.permitIs(false);
  bench.acls->ipAclIs("acl")->ruleIs(10, deny);
  bench.helper->denyRulesAllowedIs(false);
  bench.start();
  bench.settle();
  auto const status = bench.status->policyMapStatus(input);
  std::string const refusal = text(status->error());
  EXPECT_NE(refusal, "");
  EXPECT_EQ(text(status->classMapStatus("c")->error()), refusal);
  bench.machine->nonexistent = {intf("Ethernet1")};
  bench.machine->handleIntf(intf("Ethernet1"), false);
  bench.settle();
  EXPECT_EQ(text(status->error()), refusal);
}

TEST_F(Reconciling, AFailureGoesWithTheHelperThatHadIt) {
  bench.helper->answers["addRule"] = "no room";
  bench.start();
  bench.settle();
  auto const status = bench.status->policyMapStatus(input);
  ASSERT_EQ(status->error(), "no room");
  bench.machine->aclHelperDel();
  EXPECT_EQ(status->error(), "");
  EXPECT_EQ(status->failures(), 0U);
}

TEST_F(Reconciling, ATeardownThatFailsAgainShowsItsLastText) {
  auto const helper = Kor::make<FaultyLog>();
  bench.helper = helper;
  bench.start();
  bench.settle();
  helper->thrown = "first";
  bench.detach("Ethernet1");
  bench.settle();
  auto const status = bench.status->policyMapStatus(input);
  ASSERT_EQ(status->error(), "exception: first");
  helper->thrown = "second";
  advance(1);
  EXPECT_EQ(status->error(), "exception: second");
  helper->thrown = "";
  advance(2);
  EXPECT_FALSE(bench.status->policyMapStatus(input));
}

// The helper is replaced during the commit of one policy, and the loop turns before the commit
// returns. The other policy is programmed on the new helper, with its interface.
TEST_F(Reconciling, AHelperIsLeftBeforeTheNextOneIsProgrammed) {
  bench.policy("other")->classPrioIs(Kor::Name("c"), 10);
  bench.attach("other", "Ethernet2");
  auto const helper = Kor::make<FaultyLog>();
  auto const next = Kor::make<CallLog>();
  bench.helper = helper;
  bench.start();
  bench.settle();
  helper->deed = [&] {
    bench.machine->aclHelperIs(next);
    Kor::EventLoop::global().runUntilIdle();
    EXPECT_THAT(next->calls, Each(Not(StartsWith("create"))));
  };
  bench.attach("pm", "Ethernet3");
  bench.settle();
  EXPECT_THAT(next->calls, Contains("addIntf other/input/ipv4 Ethernet2"));
  EXPECT_THAT(next->calls, Contains("commit other/input/ipv4"));
}

TEST_F(Reconciling, OfTwoReplacementsInsideAnOperationTheFirstHelperIsLeftToo) {
  auto const helper = Kor::make<FaultyLog>();
  auto const last = Kor::make<CallLog>();
  bench.helper = helper;
  bench.start();
  helper->deed = [&] {
    bench.machine->aclHelperIs(Kor::make<CallLog>());
    bench.machine->aclHelperIs(last);
  };
  EXPECT_THAT(bench.settle(), Contains("delete pm/input/ipv4"));
  EXPECT_THAT(last->calls, Contains("commit pm/input/ipv4"));
}

// Delivers a result during each deletion.
class LateResults final : public CallLog {
 public:
  Kor::String deletePolicy(PolicyData const& data, ClassMapMatchOption option) override {
    asyncOperationResultIs({"late", Kor::now()});
    return CallLog::deletePolicy(data, option);
  }
};

TEST_F(Reconciling, AResultThatComesDuringTheRollBackAfterItsTimeOutIsDropped) {
  bench.helper = Kor::make<LateResults>();
  bench.helper->asyncOperationsIs(true);
  bench.start();
  bench.settle();
  EXPECT_THAT(advance(30), testing::ElementsAre("delete pm/input/ipv4"));
  EXPECT_EQ(bench.status->policyMapStatus(input)->error(), "no result within 30 seconds");
}

// The text stays while nothing of the policy is programmed on the new helper.
TEST_F(Reconciling, TheFailureOfLeavingAHelperStaysUntilAPassEndsWell) {
  bench.start();
  bench.settle();
  bench.helper->answers["delete"] = "stuck";
  auto const next = Kor::make<CallLog>();
  bench.machine->aclHelperIs(next);
  bench.acls->ipAclDel("acl");
  bench.settle();
  auto const status = bench.status->policyMapStatus(input);
  EXPECT_EQ(status->error(), "stuck");
  bench.rule("acl", 10);
  bench.settle();
  EXPECT_THAT(next->calls, Contains("commit pm/input/ipv4"));
  EXPECT_EQ(status->error(), "");
}

TEST_F(Reconciling, AnInterfaceIsNoMatterOfOptionsThatAreRefused) {
  bench.classMap("c")->matchIs(1, PolicyMap::ClassMapMatch::classMap(Kor::Name("c")));
  auto const machine = startAsked();
  bench.settle();
  ASSERT_NE(bench.status->policyMapStatus(input)->error(), "");
  machine->asked.clear();
  bench.attach("pm", "Ethernet2");
  bench.settle();
  EXPECT_THAT(machine->asked, IsEmpty());
}

// Runs a function once, after the status of a class was removed.
class ClassGoneHook final : public PolicyMap::PolicyMapStatus::NotifieeConst {
 public:
  ClassGoneHook(PolicyMap::PolicyMapStatus const* status, std::function<void()> deed)
      : NotifieeConst(status), deed_(std::move(deed)) {}
  void onClassMapStatus(Kor::Name const& name) override {
    if (auto const once =
            notifier()->classMapStatus(name) ? nullptr : std::exchange(deed_, nullptr)) {
      once();
    }
  }

 private:
  std::function<void()> deed_;
};

// The class is configured again while its machine is dropped, so it has a new machine with the same
// rules. The pass that the other option needs ends first.
TEST_F(Reconciling, AClassThatWasBuiltAgainIsShownAsProgrammed) {
  bench.acls->ip6AclIs("six")->ruleIs(10, {});
  bench.classMatches("d", "six", 1, ipv6);
  bench.policy("pm")->classPrioIs(Kor::Name("d"), 20);
  bench.helper->updateActionSupportedIs(true);
  bench.start();
  bench.settle();
  auto const policy = bench.machine->policyMapSm(input);
  auto const status = bench.status->policyMapStatus(input);
  auto const before = policy->classMapSm("d");
  auto const hook = Kor::make<ClassGoneHook>(
      status.get(), [&] { bench.policy("pm")->classPrioIs(Kor::Name("d"), 20); });
  bench.policy("pm")->classPrioDel(Kor::Name("d"));
  bench.attach("pm", "Ethernet2");
  auto const calls = bench.settle();
  EXPECT_THAT(calls, Contains("addIntf pm/input/ipv4 Ethernet2"));
  EXPECT_THAT(calls, Not(Contains("recreate pm/input/ipv6")));
  ASSERT_NE(policy->classMapSm("d"), before);
  EXPECT_TRUE(status->classMapStatus("d")->programmed());
}

// Deletes the first policy. The turn of the second policy follows at once and destroys the machine.
TEST_F(Reconciling, TheNextTurnMayEndTheMachineOfThePolicyThatHadTheLast) {
  bench.policy("zz")->classPrioIs(Kor::Name("c"), 10);
  bench.attach("zz", "Ethernet2");
  auto const helper = Kor::make<FaultyLog>();
  bench.helper = helper;
  bench.start();
  bench.settle();
  helper->taken();
  helper->deed = [&] { bench.machine = nullptr; };
  bench.detach("Ethernet1");
  bench.attach("zz", "Ethernet3");
  EXPECT_THAT(bench.settle(), Contains("delete pm/input/ipv4"));
  EXPECT_FALSE(bench.machine);
}

// Only the actions of the class have changed.
TEST_F(Reconciling, ActionsThatMovedWhileTheMachineWasOffAreUpdatedWhenItIsOn) {
  bench.helper->updateActionSupportedIs(true);
  bench.start();
  bench.settle();
  auto const machine = bench.machine->policyMapSm(input)->classMapSm("c");
  machine->hasNotificationActiveIs(false);
  bench.machine->hasNotificationActiveIs(false);
  machine->classCommonData()->updateAclActionsInc(1);
  bench.machine->hasNotificationActiveIs(true);
  EXPECT_THAT(bench.settle(), Contains("update pm/input/ipv4 c:acl:10"));
}

// The service machine is removed from the policy while the first option is deleted.
TEST_F(Reconciling, WithoutItsServiceMachineItLeavesNothingMoreOfItsHelper) {
  ipv6Too();
  auto const helper = Kor::make<FaultyLog>();
  bench.helper = helper;
  bench.start();
  bench.settle();
  helper->deletionDeed = [&] { bench.machine->policyMapSm(input)->serviceIs(nullptr); };
  bench.machine->aclHelperDel();
  EXPECT_THAT(bench.settle(), testing::ElementsAre("delete pm/input/ipv4"));
}

TEST_F(Reconciling, APassThatHasEndedKeepsNoClassThatHasLeft) {
  bench.helper->answers["addRule"] = "no room";
  bench.start();
  bench.settle();
  auto const data = bench.machine->policyMapSm(input)->classMapSm("c")->classCommonData();
  bench.policy("pm")->classPrioDel(Kor::Name("c"));
  bench.settle();
  EXPECT_EQ(data->references(), 1U);
}

// The policy counts as still created on that helper.
TEST_F(Reconciling, AHelperThatComesBackAfterADeletionThatThrewIsCreatedAgain) {
  auto const helper = Kor::make<FaultyLog>();
  bench.helper = helper;
  bench.start();
  bench.settle();
  helper->thrown = "stuck";
  bench.machine->aclHelperDel();
  helper->thrown = "";
  bench.machine->aclHelperIs(helper);
  EXPECT_THAT(bench.settle(), Contains("recreate pm/input/ipv4"));
}

// The machine is switched off while the first policy waits for a result and the second is next.
TEST_F(Reconciling, ATurnThatComesWhileTheMachineIsOffProgramsNothing) {
  bench.policy("zz")->classPrioIs(Kor::Name("c"), 10);
  bench.attach("zz", "Ethernet2");
  bench.helper->asyncOperationsIs(true);
  bench.start();
  bench.settle();
  bench.machine->hasNotificationActiveIs(false);
  bench.helper->asyncOperationResultIs({"", 1});
  bench.helper->asyncOperationResultIs({"", 2});
  EXPECT_THAT(bench.settle(), Each(Not(StartsWith("create zz"))));
  bench.machine->hasNotificationActiveIs(true);
  EXPECT_THAT(bench.settle(), Contains("create zz/input/ipv4"));
}

// The helper is replaced while the pass is planned.
TEST_F(Reconciling, CountsRequestedInATurnThatEndsEarlyAreReadInTheNext) {
  auto const machine = startAsked();
  bench.settle();
  auto const next = Kor::make<CallLog>();
  machine->deed = [&] { machine->aclHelperIs(next); };
  bench.rule("acl", 20);
  bench.requests->countRequestIs(input, 1);
  bench.settle();
  EXPECT_EQ(bench.helper->countCalls, 0U);
  EXPECT_EQ(next->countCalls, 2U);
}

// Runs a function once, after an option has failed.
class FailureHook final : public PolicyMap::PolicyMapStatus::NotifieeConst {
 public:
  FailureHook(PolicyMap::PolicyMapStatus const* status, std::function<void()> deed)
      : NotifieeConst(status), deed_(std::move(deed)) {}
  void onFailure(ClassMapMatchOption /*option*/) override {
    if (auto const once = std::exchange(deed_, nullptr)) {
      once();
    }
  }

 private:
  std::function<void()> deed_;
};

TEST_F(Reconciling, AnObserverOfARefusalThatTakesTheMachineAwayEndsThePublication) {
  Acl::IpRuleConfig deny;
  deny.permitIs(false);
  bench.acls->ipAclIs("acl")->ruleIs(10, deny);
  bench.helper->denyRulesAllowedIs(false);
  bench.start();
  auto const status = bench.status->policyMapStatus(input);
  auto const hook = Kor::make<FailureHook>(
      status.get(), [&] { bench.machine->policyMapSm(input)->serviceIs(nullptr); });
  bench.settle();
  EXPECT_EQ(status->failures(), 1U);
  EXPECT_EQ(status->classMapStatus("c")->error(), "");
}

}  // namespace
}  // namespace policymap
