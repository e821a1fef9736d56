// SPDX-License-Identifier: Apache-2.0

// Several policies, classes, lists and options at once: a change affects exactly what depends on
// it, in the right order.

#include "policymap/PolicyBench.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace policymap {
namespace {

using PolicyMap::ClassMapMatch;
using PolicyMap::ClassMapSubConfig;
using PolicyMap::PolicyMapSubConfig;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

// Records the interfaces whose eligibility is checked.
class AskingServiceSm : public ServiceSm {
 public:
  using ServiceSm::ServiceSm;
  mutable std::set<std::string> asked;

  [[nodiscard]] bool intfExists(Vorel::IntfId which) const override {
    asked.insert(text(which));
    return ServiceSm::intfExists(which);
  }
  bool allowedIntfForType(Vorel::IntfId which, ClassMapMatchOption option) override {
    asked.insert(text(which));
    return ServiceSm::allowedIntfForType(which, option);
  }
};

class ManyPolicies : public testing::Test {
 protected:
  PolicyBench bench;
  Kor::Ptr<AskingServiceSm> asking;

  ~ManyPolicies() override { asking = nullptr; }

  // Configures policy `name` with one class on one list, attached at an interface.
  void policy(char const* name, char const* className, char const* list, char const* where) {
    bench.classMatches(className, list);
    bench.policy(name)->classPrioIs(className, 10);
    bench.attach(name, where);
  }
  // Creates a second machine on the bench's objects.
  template <class Machine>
  Kor::Ptr<Machine> another(Kor::Ptr<PolicyMap::PolicyMapTypeConfig> const& policies,
                            Kor::Ptr<PolicyMap::PolicyMapTypeStatus> const& status) {
    auto made = Kor::make<Machine>(
        Kor::Ptr<PolicyMap::PolicyMapTypeConfig const>(policies),
        Kor::Ptr<PolicyMap::ClassMapTypeConfig const>(bench.classes),
        Kor::Ptr<PolicyMap::PolicyMapStatusRequestDir const>(), status,
        Kor::Ptr<Acl::Config const>(bench.acls), Kor::Ptr<Lag::Input::Config const>(bench.lag),
        Kor::Ptr<Ip::Status const>(bench.ip), Kor::Ptr<Ip6::Status const>(bench.ip6),
        Kor::Ptr<Routing::RoutingInfo const>(bench.routing),
        Kor::Ptr<Routing6::RoutingInfo const>(bench.routing6),
        Kor::Ptr<PolicyMap::PolicyMapAclHelper>(bench.helper), bench.diff, true, true, true);
    made->hasNotificationActiveIs(true);
    return made;
  }
  void startAsking() { asking = another<AskingServiceSm>(bench.policies, bench.status); }
};

// The lines without those on rules.
std::vector<std::string> withoutRules(std::vector<std::string> calls) {
  std::erase_if(calls, [](std::string const& line) {
    return line.rfind("addRule", 0) == 0 || line.rfind("update ", 0) == 0;
  });
  return calls;
}

// Lists

TEST_F(ManyPolicies, ASharedListReProgramsExactlyThosePoliciesThatUseIt) {
  bench.rule("shared", 10);
  bench.rule("own", 10);
  policy("a", "ca", "shared", "Ethernet1");
  policy("b", "cb", "own", "Ethernet2");
  policy("d", "cd", "shared", "Ethernet3");
  bench.start();
  bench.settle();
  bench.rule("shared", 10, Acl::PortMatch::eq(80));
  EXPECT_THAT(withoutRules(bench.settle()),
              ElementsAre("recreate a/input/ipv4", "commit a/input/ipv4", "recreate d/input/ipv4",
                          "commit d/input/ipv4"));
}

TEST_F(ManyPolicies, APolicyThatIsNotConcernedIsNotEvenAskedAbout) {
  bench.rule("first", 10);
  bench.rule("second", 10);
  policy("a", "ca", "first", "Ethernet1");
  policy("b", "cb", "second", "Ethernet2");
  auto const action = bench.action("a", "ca");
  bench.helper->updateActionSupportedIs(true);
  startAsking();
  bench.settle();
  asking->asked.clear();
  bench.rule("first", 20);
  EXPECT_THAT(bench.settle(), Not(Contains(testing::HasSubstr(" b/input"))));
  EXPECT_THAT(asking->asked, ElementsAre("Ethernet1"));
  asking->asked.clear();
  action->numberIs(5);
  EXPECT_THAT(withoutRules(bench.settle()),
              ElementsAre("begin a/input ca", "end a/input ca", "commit a/input/ipv4"));
  EXPECT_THAT(asking->asked, Not(Contains("Ethernet2")));
  asking->asked.clear();
  bench.ip->intfAddressIs(intf("Ethernet1"), Ip::Address("10.0.0.1/24"));
  EXPECT_THAT(bench.settle(), IsEmpty());
  EXPECT_THAT(asking->asked, ElementsAre("Ethernet1"));
}

TEST_F(ManyPolicies, AListThatNobodyUsesIsNobodysBusiness) {
  bench.simplePolicy();
  startAsking();
  bench.settle();
  asking->asked.clear();
  bench.rule("unused", 10);
  bench.acls->ip6AclIs("acl")->ruleIs(10, Acl::Ip6RuleConfig());
  bench.acls->ipAclDel("unused");
  EXPECT_THAT(bench.settle(), IsEmpty());
  EXPECT_THAT(asking->asked, IsEmpty());
}

TEST_F(ManyPolicies, AListSharedByTwoClassesOfOnePolicyIsProgrammedForBoth) {
  bench.simplePolicy();
  bench.classMatches("d", "acl");
  bench.policy("pm")->classPrioIs("d", 20);
  bench.start();
  EXPECT_THAT(bench.settle(),
              ElementsAre("hwInit", "create pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                          "addRule pm/input/ipv4 d:acl:10 permit tcp any any",
                          "addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
}

TEST_F(ManyPolicies, AListUsedDirectlyAndThroughANestedClassMapIsProgrammedOnce) {
  bench.simplePolicy();
  bench.classMatches("inner", "acl");
  bench.classMap("c")->matchIs(2, ClassMapMatch::classMap("inner"));
  bench.classMap("c")->matchIs(3, ClassMapMatch::classMap("inner"));
  bench.start();
  EXPECT_THAT(bench.settle(), SizeIs(5));
  bench.classMap("c")->matchDel(1);
  EXPECT_THAT(bench.settle(), IsEmpty()) << "the same list, by the other way";
  bench.classMap("c")->matchDel(2);
  EXPECT_THAT(bench.settle(), IsEmpty());
}

TEST_F(ManyPolicies, ARemovedListTakesItsRulesOnly) {
  bench.simplePolicy();
  bench.rule("other", 5);
  bench.classMatches("c", "other", 2);
  bench.start();
  bench.settle();
  bench.acls->ipAclDel("acl");
  EXPECT_THAT(bench.settle(), ElementsAre("recreate pm/input/ipv4",
                                          "addRule pm/input/ipv4 c:other:5 permit tcp any any",
                                          "commit pm/input/ipv4"));
  bench.rule("acl", 10);
  EXPECT_THAT(bench.settle(), SizeIs(4));
}

TEST_F(ManyPolicies, ANestedClassMapReProgramsEveryPolicyAbove) {
  bench.rule("acl", 10);
  bench.rule("next", 10);
  bench.classMatches("inner", "acl");
  bench.classMap("ca")->matchIs(1, ClassMapMatch::classMap("inner"));
  bench.classMap("cb")->matchIs(1, ClassMapMatch::classMap("inner"));
  for (auto const& [name, className, where] :
       {std::tuple("a", "ca", "Ethernet1"), std::tuple("b", "cb", "Ethernet2")}) {
    bench.policy(name)->classPrioIs(className, 10);
    bench.attach(name, where);
  }
  bench.start();
  bench.settle();
  auto const next = Kor::make<ClassMapSubConfig>("inner");
  next->matchIs(1, ClassMapMatch::acl(ClassMapMatchOption::ipv4, "next"));
  bench.classes->classMapConfig("inner")->currentSubConfigIs(next);
  EXPECT_THAT(bench.settle(), ElementsAre("recreate a/input/ipv4",
                                          "addRule a/input/ipv4 ca:next:10 permit tcp any any",
                                          "commit a/input/ipv4", "recreate b/input/ipv4",
                                          "addRule b/input/ipv4 cb:next:10 permit tcp any any",
                                          "commit b/input/ipv4"));
}

// Options

class ManyOptions : public ManyPolicies {
 protected:
  ManyOptions() {
    bench.helper->updateActionSupportedIs(true);
    auto const classMap = bench.classMap("c");
    classMap->matchIs(1, ClassMapMatch::rule(Acl::MacRuleConfig()));
    classMap->matchIs(2, ClassMapMatch::rule(Acl::Ip6RuleConfig()));
    bench.simplePolicy();
    classMap->matchIs(3, ClassMapMatch::acl(ClassMapMatchOption::ipv4, "acl"));
    classMap->matchDel(1);
    classMap->matchIs(4, ClassMapMatch::rule(Acl::MacRuleConfig()));
  }
};

TEST_F(ManyOptions, AreProgrammedOneAfterTheOtherEachInAPassOfItsOwn) {
  bench.start();
  EXPECT_THAT(withoutRules(bench.settle()),
              ElementsAre("hwInit", "create pm/input/ipv4", "addIntf pm/input/ipv4 Ethernet1",
                          "commit pm/input/ipv4", "create pm/input/ipv6",
                          "addIntf pm/input/ipv6 Ethernet1", "commit pm/input/ipv6",
                          "create pm/input/mac", "addIntf pm/input/mac Ethernet1",
                          "commit pm/input/mac"));
}

TEST_F(ManyOptions, ARuleChangeOfOneLeavesTheOthersAlone) {
  bench.start();
  bench.settle();
  bench.rule("acl", 20);
  EXPECT_THAT(withoutRules(bench.settle()),
              ElementsAre("recreate pm/input/ipv4", "commit pm/input/ipv4"));
}

TEST_F(ManyOptions, AnActionUpdateIsOneBracketPerClassAndOneCommitPerOption) {
  auto const action = bench.action("pm", "c");
  bench.start();
  bench.settle();
  action->numberIs(7);
  EXPECT_THAT(bench.settle(),
              ElementsAre("begin pm/input c", "update pm/input/ipv4 c:acl:10",
                          "update pm/input/ipv6 c::2", "update pm/input/mac c::4", "end pm/input c",
                          "commit pm/input/ipv4", "commit pm/input/ipv6", "commit pm/input/mac"));
}

TEST_F(ManyOptions, AnActionUpdateCommitsOnlyWhereTheClassHasRules) {
  bench.rule("other", 5);
  bench.classMatches("d", "other");
  bench.policy("pm")->classPrioIs("d", 20);
  auto const action = bench.action("pm", "d");
  bench.start();
  bench.settle();
  action->numberIs(7);
  EXPECT_THAT(bench.settle(), ElementsAre("begin pm/input d", "update pm/input/ipv4 d:other:5",
                                          "end pm/input d", "commit pm/input/ipv4"));
}

TEST_F(ManyOptions, TwoClassesUpdatedInOneTurnComeInPriorityOrder) {
  bench.rule("other", 5);
  bench.classMatches("a", "other");
  bench.policy("pm")->classPrioIs("a", 20);
  auto const first = bench.action("pm", "c");
  auto const second = bench.action("pm", "a");
  bench.start();
  bench.settle();
  second->numberIs(1);
  first->numberIs(1);
  second->numberIs(2);
  EXPECT_THAT(bench.settle(),
              ElementsAre("begin pm/input c", "update pm/input/ipv4 c:acl:10",
                          "update pm/input/ipv6 c::2", "update pm/input/mac c::4", "end pm/input c",
                          "begin pm/input a", "update pm/input/ipv4 a:other:5", "end pm/input a",
                          "commit pm/input/ipv4", "commit pm/input/ipv6", "commit pm/input/mac"));
}

TEST_F(ManyOptions, WhatIsReCreatedInTheSameTurnIsNotUpdatedOnceMore) {
  auto const action = bench.action("pm", "c");
  bench.start();
  bench.settle();
  action->numberIs(7);
  bench.rule("acl", 20);
  EXPECT_THAT(
      bench.settle(),
      ElementsAre("recreate pm/input/ipv4", "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                  "addRule pm/input/ipv4 c:acl:20 permit tcp any any", "commit pm/input/ipv4",
                  "begin pm/input c", "update pm/input/ipv6 c::2", "update pm/input/mac c::4",
                  "end pm/input c", "commit pm/input/ipv6", "commit pm/input/mac"));
}

TEST_F(ManyOptions, WithoutUpdatesInPlaceEachOptionIsReCreated) {
  bench.helper->updateActionSupportedIs(false);
  auto const action = bench.action("pm", "c");
  bench.start();
  bench.settle();
  action->numberIs(7);
  EXPECT_THAT(withoutRules(bench.settle()),
              ElementsAre("recreate pm/input/ipv4", "commit pm/input/ipv4",
                          "recreate pm/input/ipv6", "commit pm/input/ipv6", "recreate pm/input/mac",
                          "commit pm/input/mac"));
}

TEST_F(ManyOptions, AnUpdateCoversEverySubRule) {
  bench.helper->subRulesForL4PortsIs(true);
  bench.rule("acl", 10, Acl::PortMatch::range(5004, 5008));
  auto const action = bench.action("pm", "c");
  bench.start();
  bench.settle();
  action->numberIs(7);
  auto const calls = bench.settle();
  EXPECT_THAT(calls, Contains("update pm/input/ipv4 c:acl:10 *>5004-5007"));
  EXPECT_THAT(calls, Contains("update pm/input/ipv4 c:acl:10 *>5008-5008"));
  EXPECT_THAT(calls, SizeIs(9));
}

// Classes

TEST_F(ManyPolicies, AddedAndRemovedClassesReCreateThePolicy) {
  bench.simplePolicy();
  bench.rule("other", 5);
  bench.classMatches("d", "other");
  bench.start();
  bench.settle();
  bench.policy("pm")->classPrioIs("d", 5);
  EXPECT_THAT(bench.settle(), ElementsAre("recreate pm/input/ipv4",
                                          "addRule pm/input/ipv4 d:other:5 permit tcp any any",
                                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                                          "commit pm/input/ipv4"));
  bench.policy("pm")->classPrioDel("c");
  EXPECT_THAT(bench.settle(), ElementsAre("recreate pm/input/ipv4",
                                          "addRule pm/input/ipv4 d:other:5 permit tcp any any",
                                          "commit pm/input/ipv4"));
  bench.policy("pm")->classPrioDel("d");
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4"));
}

TEST_F(ManyPolicies, AClassRemovedAndBroughtBackInOneTurnProgramsNothing) {
  bench.simplePolicy();
  auto const action = bench.action("pm", "c");
  bench.start();
  bench.settle();
  bench.policy("pm")->classPrioDel("c");
  bench.policy("pm")->classPrioIs("c", 10);
  EXPECT_THAT(bench.settle(), IsEmpty());
}

TEST_F(ManyPolicies, ARemovedClassWithAnActionCausesNoUpdate) {
  bench.helper->updateActionSupportedIs(true);
  bench.simplePolicy();
  bench.rule("other", 5);
  bench.classMatches("d", "other");
  bench.policy("pm")->classPrioIs("d", 20);
  bench.action("pm", "d");
  bench.start();
  bench.settle();
  bench.policy("pm")->classPrioDel("d");
  EXPECT_THAT(bench.settle(), ElementsAre("recreate pm/input/ipv4",
                                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                                          "commit pm/input/ipv4"));
}

TEST_F(ManyPolicies, ADeletedPolicyWithActionsCausesNoUpdate) {
  bench.helper->updateActionSupportedIs(true);
  bench.simplePolicy();
  auto const action = bench.action("pm", "c");
  bench.start();
  bench.settle();
  action->numberIs(3);
  bench.policies->policyMapConfigDel("pm");
  action->numberIs(4);
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4"));
  action->numberIs(5);
  EXPECT_THAT(bench.settle(), IsEmpty());
}

TEST_F(ManyPolicies, ARemovedActionIsUpdatedInPlace) {
  bench.helper->updateActionSupportedIs(true);
  bench.simplePolicy();
  bench.action("pm", "c");
  bench.start();
  bench.settle();
  bench.policy("pm")->classAction("c")->actionDel(PolicyMap::ActionType{1});
  EXPECT_THAT(bench.settle(), ElementsAre("begin pm/input c", "update pm/input/ipv4 c:acl:10",
                                          "end pm/input c", "commit pm/input/ipv4"));
  bench.action("pm", "c");
  bench.settle();
  bench.policy("pm")->classActionDel("c");
  EXPECT_THAT(bench.settle(), SizeIs(4));
}

TEST_F(ManyPolicies, AnUpdateOfAClassThatProgramsNothingDoesNothing) {
  bench.helper->updateActionSupportedIs(true);
  bench.simplePolicy();
  bench.classMap("empty");
  bench.policy("pm")->classPrioIs("empty", 20);
  auto const action = bench.action("pm", "empty");
  bench.start();
  bench.settle();
  action->numberIs(4);
  EXPECT_THAT(bench.settle(), IsEmpty());
}

TEST_F(ManyPolicies, RawMatchesAreProgrammedUnderTheNameOfTheClass) {
  Acl::IpRuleConfig rule;
  rule.dscpIs(46);
  auto const raw = Kor::make<ClassMapSubConfig>("voice");
  raw->matchIs(3, ClassMapMatch::rule(rule));
  bench.policy("pm")->rawClassMapIs("voice", raw);
  bench.policy("pm")->classPrioIs("voice", 10);
  bench.attach("pm", "Ethernet1");
  bench.start();
  EXPECT_THAT(bench.settle(), Contains("addRule pm/input/ipv4 voice::3 permit ip any any dscp 46"));
  rule.dscpIs(34);
  raw->matchIs(3, ClassMapMatch::rule(rule));
  EXPECT_THAT(bench.settle(),
              ElementsAre("recreate pm/input/ipv4",
                          "addRule pm/input/ipv4 voice::3 permit ip any any dscp 34",
                          "commit pm/input/ipv4"));
  bench.rule("acl", 10);
  bench.classMatches("voice", "acl");
  EXPECT_THAT(bench.settle(), Contains("addRule pm/input/ipv4 voice:acl:10 permit tcp any any"));
}

TEST_F(ManyPolicies, ClassesThatShareRawMatchesKeepTheirRulesApart) {
  auto const raw = Kor::make<ClassMapSubConfig>("shared");
  raw->matchIs(1, ClassMapMatch::rule(Acl::IpRuleConfig()));
  for (auto const& [name, prio] : {std::pair("a", 10U), std::pair("b", 20U)}) {
    bench.policy("pm")->rawClassMapIs(name, raw);
    bench.policy("pm")->classPrioIs(name, prio);
  }
  bench.attach("pm", "Ethernet1");
  bench.start();
  EXPECT_THAT(bench.settle(),
              ElementsAre("hwInit", "create pm/input/ipv4",
                          "addRule pm/input/ipv4 a::1 permit ip any any",
                          "addRule pm/input/ipv4 b::1 permit ip any any",
                          "addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
}

// Sub-configurations

TEST_F(ManyPolicies, AnotherPolicyMapSubConfigurationIsProgrammedByItsDifference) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  auto const same = Kor::make<PolicyMapSubConfig>("pm");
  same->classPrioIs("c", 70);
  bench.policies->policyMapConfig("pm")->currentSubConfigIs(same);
  EXPECT_THAT(bench.settle(), IsEmpty());
  bench.rule("other", 5);
  bench.classMatches("d", "other");
  auto const different = Kor::make<PolicyMapSubConfig>("pm");
  different->classPrioIs("d", 1);
  bench.policies->policyMapConfig("pm")->currentSubConfigIs(different);
  EXPECT_THAT(bench.settle(), ElementsAre("recreate pm/input/ipv4",
                                          "addRule pm/input/ipv4 d:other:5 permit tcp any any",
                                          "commit pm/input/ipv4"));
  bench.policies->policyMapConfig("pm")->currentSubConfigIs(nullptr);
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4"));
}

TEST_F(ManyPolicies, AnotherClassMapSubConfigurationIsProgrammedByItsDifference) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  auto const same = Kor::make<ClassMapSubConfig>("c");
  same->matchIs(99, ClassMapMatch::acl(ClassMapMatchOption::ipv4, "acl"));
  bench.classes->classMapConfig("c")->currentSubConfigIs(same);
  EXPECT_THAT(bench.settle(), IsEmpty());
  auto const different = Kor::make<ClassMapSubConfig>("c");
  different->matchIs(1, ClassMapMatch::rule(Acl::IpRuleConfig()));
  bench.classes->classMapConfig("c")->currentSubConfigIs(different);
  EXPECT_THAT(bench.settle(),
              ElementsAre("recreate pm/input/ipv4", "addRule pm/input/ipv4 c::1 permit ip any any",
                          "commit pm/input/ipv4"));
}

// Attachments

TEST_F(ManyPolicies, AnotherPolicyAtTheSameInterfaceTakesOver) {
  bench.rule("first", 10);
  bench.rule("second", 10);
  policy("a", "ca", "first", "Ethernet1");
  policy("b", "cb", "second", "Ethernet2");
  bench.start();
  bench.settle();
  bench.attach("b", "Ethernet1");
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf a/input/ipv4 Ethernet1", "delete a/input/ipv4",
                          "addIntf b/input/ipv4 Ethernet1", "commit b/input/ipv4"));
  EXPECT_EQ(bench.machine->policyMapSms(), 1U);
}

TEST_F(ManyPolicies, DirectionsAreAttachedAndDetachedApart) {
  bench.simplePolicy();
  bench.attach("pm", "Ethernet1", "output");
  bench.attach("pm", "Ethernet2", "output");
  bench.start();
  bench.settle();
  bench.detach("Ethernet1");
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4"));
  bench.detach("Ethernet1", "output");
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/output/ipv4 Ethernet1", "commit pm/output/ipv4"));
}

TEST_F(ManyPolicies, OneListChangeReachesBothDirections) {
  bench.simplePolicy();
  bench.attach("pm", "Ethernet1", "output");
  bench.start();
  bench.settle();
  bench.rule("acl", 20);
  EXPECT_THAT(withoutRules(bench.settle()),
              ElementsAre("recreate pm/input/ipv4", "commit pm/input/ipv4",
                          "recreate pm/output/ipv4", "commit pm/output/ipv4"));
}

TEST_F(ManyPolicies, AttachingBeforeConfiguringComesToTheSame) {
  bench.attach("pm", "Ethernet1");
  bench.start();
  EXPECT_THAT(bench.settle(), ElementsAre("hwInit"));
  bench.policy("pm")->classPrioIs("c", 10);
  EXPECT_THAT(bench.settle(), IsEmpty());
  bench.classMatches("c", "acl");
  EXPECT_THAT(bench.settle(), IsEmpty());
  bench.rule("acl", 10);
  EXPECT_THAT(bench.settle(),
              ElementsAre("create pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                          "addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
}

TEST_F(ManyPolicies, AnAttachmentTakenBackInOneTurnIsNeverSeen) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  bench.attach("pm", "Ethernet2");
  bench.detach("Ethernet2");
  EXPECT_THAT(bench.settle(), IsEmpty());
  bench.detach("Ethernet1");
  bench.attach("pm", "Ethernet1");
  EXPECT_THAT(bench.settle(), IsEmpty());
}

// Machines and helpers

TEST_F(ManyPolicies, TwoMachinesOnOneHelperProgramTheirOwnPolicies) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  auto const otherPolicies = Kor::make<PolicyMap::PolicyMapTypeConfig>();
  auto const subConfig = Kor::make<PolicyMapSubConfig>("other");
  subConfig->classPrioIs("c", 10);
  otherPolicies->policyMapConfigIs("other")->currentSubConfigIs(subConfig);
  otherPolicies->servicePolicyIs({intf("Ethernet5"), "input"}, "other");
  auto const second = another<ServiceSm>(otherPolicies, nullptr);
  EXPECT_THAT(bench.settle(),
              ElementsAre("create other/input/ipv4",
                          "addRule other/input/ipv4 c:acl:10 permit tcp any any",
                          "addIntf other/input/ipv4 Ethernet5", "commit other/input/ipv4"));
  bench.rule("acl", 20);
  EXPECT_THAT(withoutRules(bench.settle()),
              ElementsAre("recreate pm/input/ipv4", "commit pm/input/ipv4",
                          "recreate other/input/ipv4", "commit other/input/ipv4"));
}

TEST_F(ManyPolicies, ASecondMachineWithTheSameKeyStartsWithAReCreation) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  bench.machine = nullptr;
  EXPECT_THAT(bench.settle(), IsEmpty());
  bench.start();
  EXPECT_THAT(bench.settle(),
              ElementsAre("recreate pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                          "addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
  bench.detach("Ethernet1");
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4"));
}

TEST_F(ManyPolicies, AReplacedHelperLosesEveryPolicyAndTheNewOneGetsThem) {
  bench.simplePolicy();
  bench.attach("pm", "Ethernet2", "output");
  bench.start();
  bench.settle();
  auto const old = bench.helper;
  bench.helper = Kor::make<CallLog>();
  bench.machine->aclHelperIs(bench.helper);
  EXPECT_THAT(old->taken(),
              testing::UnorderedElementsAre("delete pm/input/ipv4", "delete pm/output/ipv4"));
  auto const calls = bench.settle();
  EXPECT_EQ(calls.front(), "hwInit");
  EXPECT_THAT(calls, SizeIs(9));
  auto const ofDirection = [&](char const* direction) {
    std::vector<std::string> found = calls;
    std::erase_if(
        found, [&](std::string const& line) { return line.find(direction) == std::string::npos; });
    return found;
  };
  EXPECT_THAT(ofDirection("input"),
              ElementsAre("create pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                          "addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
  EXPECT_THAT(ofDirection("output"),
              ElementsAre("create pm/output/ipv4",
                          "addRule pm/output/ipv4 c:acl:10 permit tcp any any",
                          "addIntf pm/output/ipv4 Ethernet2", "commit pm/output/ipv4"));
  EXPECT_THAT(old->taken(), IsEmpty());
}

TEST_F(ManyPolicies, AHelperTakenAwayAndPutBackStartsOver) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  bench.machine->aclHelperDel();
  EXPECT_THAT(bench.settle(), ElementsAre("delete pm/input/ipv4"));
  EXPECT_FALSE(
      bench.status->policyMapStatus({"pm", "input"})->programmed(ClassMapMatchOption::ipv4));
  bench.rule("acl", 20);
  bench.attach("pm", "Ethernet2");
  EXPECT_THAT(bench.settle(), IsEmpty());
  bench.machine->aclHelperIs(bench.helper);
  EXPECT_THAT(bench.settle(),
              ElementsAre("create pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                          "addRule pm/input/ipv4 c:acl:20 permit tcp any any",
                          "addIntf pm/input/ipv4 Ethernet1", "addIntf pm/input/ipv4 Ethernet2",
                          "commit pm/input/ipv4"));
}

TEST_F(ManyPolicies, ARuleThatTakesNoPortIsNoSubRule) {
  bench.simplePolicy();
  bench.rule("acl", 20, Acl::PortMatch::lt(0));
  bench.start();
  EXPECT_THAT(bench.settle(), SizeIs(5));
}

TEST_F(ManyPolicies, AnOptionWhoseRulesMatchNothingIsNotProgrammed) {
  bench.simplePolicy();
  bench.rule("acl", 10, Acl::PortMatch::lt(0));
  Acl::IpRuleConfig own;
  own.ttlIs(Acl::TtlMatch::gt(255));
  bench.classMap("c")->matchIs(2, PolicyMap::ClassMapMatch::rule(own));
  bench.start();
  EXPECT_THAT(bench.settle(), ElementsAre("hwInit"));
  auto const status = bench.status->policyMapStatus({"pm", "input"});
  EXPECT_EQ(status->programmeds(), 0U);
  EXPECT_EQ(status->error(), "");
  EXPECT_FALSE(status->classMapStatus("c")->programmed());
  bench.rule("acl", 20);
  EXPECT_THAT(bench.settle(),
              ElementsAre("create pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:20 permit tcp any any",
                          "addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
  bench.acls->ipAcl("acl")->ruleDel(20);
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4"));
}

TEST_F(ManyPolicies, ARuleThatMatchesNothingAsksNothingOfTheHelper) {
  bench.helper->denyRulesAllowedIs(false);
  bench.simplePolicy();
  Acl::IpRuleConfig deny;
  deny.permitIs(false);
  deny.dstPortIs(Acl::PortMatch::gt(65535));
  bench.acls->ipAcl("acl")->ruleIs(20, deny);
  bench.start();
  EXPECT_THAT(bench.settle(), SizeIs(5)) << "denial of nothing is no denial";
  bench.requests->countRequestIs({"pm", "input"}, 1);
  bench.settle();
  EXPECT_EQ(bench.helper->countCalls, 1U);
}

TEST_F(ManyPolicies, EachPassNotesWhenItsOptionWasProgrammed) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  auto const machine = bench.machine->policyMapSm({"pm", "input"});
  EXPECT_EQ(machine->timeProgrammed(ClassMapMatchOption::ipv4), 0);
  Kor::EventLoop::global().runFor(5);
  bench.rule("acl", 20);
  bench.settle();
  EXPECT_EQ(machine->timeProgrammed(ClassMapMatchOption::ipv4), 5);
  EXPECT_EQ(machine->timeProgrammeds(), 1U);
  bench.acls->ipAclDel("acl");
  bench.settle();
  EXPECT_EQ(machine->timeProgrammeds(), 0U);
}

}  // namespace
}  // namespace policymap
