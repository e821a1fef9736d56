// SPDX-License-Identifier: Apache-2.0
#include "testkit/Journal.h"

#include "testkit/Labs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace PolicyMapTestKit::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> linesOf(Journal const& journal) {
  std::vector<std::string> lines;
  for (JournalEntry const& entry : journal) {
    lines.push_back(entry.describe());
  }
  return lines;
}

TEST(Journal, HasEveryCallInOrderWithItsArguments) {
  Lab lab;
  load(lab, simplePolicy);
  EXPECT_THAT(linesOf(lab.journal()),
              ElementsAre("hwInit", "[load t]", "createPolicy P/input ipv4",
                          "addRule P/input ipv4 P P 10 permit tcp any any eq 80 "
                          "(dst 80) action1=1",
                          "addIntfToPolicy P/input ipv4 Ethernet1", "commitPolicy P/input ipv4"));
}

TEST(Journal, HasUpdatesOfActionsAndRemovals) {
  Lab lab({.updateAction = true});
  load(lab, simplePolicy);
  lab.journal().clear();
  load(lab, "policy-map P\n class P\n  set action2 5\n");
  EXPECT_THAT(linesOf(lab.journal().calls()),
              ElementsAre("beginUpdateActions P/input P",
                          "updateAction P/input ipv4 P P 10 (dst 80) action1=1 action2=5",
                          "endUpdateActions P/input P", "commitPolicy P/input ipv4"));
  lab.journal().clear();
  load(lab, "no policy-map P\n");
  EXPECT_THAT(
      linesOf(lab.journal().calls()),
      ElementsAre("removeIntfFromPolicy P/input ipv4 Ethernet1", "deletePolicy P/input ipv4"));
}

TEST(Journal, ACallThatIsNotCarriedOutDoesNotChangeTheOrderOfRules) {
  Lab lab;
  load(lab, simplePolicy);
  load(lab, "ip access-list P\n 20 permit udp any any\n");
  lab.aroundIs([](HelperCall& /*call*/, std::function<void()> const& /*proceed*/) {});
  load(lab, "ip access-list P\n no 10\n 5 permit icmp any any\n");
  std::vector<std::string> rules;
  for (RuleRecord const& rule : lab.record("P")) {
    rules.push_back(rule.matchText());
  }
  EXPECT_THAT(rules, ElementsAre("permit tcp any any eq 80", "permit udp any any"));
}

TEST(Journal, HasWhatATestWrites) {
  Lab lab;
  load(lab, simplePolicy);
  lab.journal().clear();
  lab.acls()->ipAcl("P")->ruleIs(20, Acl::IpRuleConfig());
  lab.acls()->ipAcl("P")->ruleIs(30, Acl::IpRuleConfig());
  lab.policyMaps()->servicePolicyIs({Vorel::IntfId("Ethernet2"), "input"}, "P");
  lab.settle();
  EXPECT_THAT(linesOf(lab.journal()),
              testing::IsSupersetOf(
                  {"[write ip access-list P]", "[write service-policy input at Ethernet2]"}));
  EXPECT_EQ(lab.journal().calls("addRule").begin()->text,
            "write ip access-list P, service-policy input at Ethernet2");
}

TEST(Journal, HasEveryKindOfWrite) {
  Lab lab;
  load(lab, simplePolicy);
  lab.journal().clear();
  Vorel::IntfId const one("Ethernet1");
  lab.classMaps()->classMapConfigDel("P");
  lab.policyMaps()->policyMapConfigDel("P");
  lab.ip()->intfAddressIs(one, Ip::Address({192, 0, 2, 1}, 24));
  lab.lag()->memberOfIs(one, Vorel::IntfId("PortChannel1"));
  lab.routing()->routingIs(!lab.routing()->routing());
  lab.helper()->ttlSupportedIs(false);
  lab.requests()->countRequestIs({"P", "input"}, 1);
  lab.acls()->ip6AclIs("six");
  lab.acls()->macAclIs("mac");
  EXPECT_THAT(linesOf(lab.journal()),
              ElementsAre("[write class-map P]", "[write policy-map P]",
                          "[write interface Ethernet1]", "[write port-channel of Ethernet1]",
                          "[write routing]", "[write capabilities of the helper]",
                          "[write request for counts of P/input]", "[write ipv6 access-list six]",
                          "[write mac access-list mac]"));
}

TEST(Journal, NamesTheFirstObjectsOfManyWrites) {
  Lab lab;
  load(lab, simplePolicy);
  for (char const* const name : {"a", "b", "c", "d", "e", "f"}) {
    lab.acls()->ipAclIs(name);
  }
  lab.policyMaps()->servicePolicyDel({Vorel::IntfId("Ethernet1"), "input"});
  lab.settle();
  EXPECT_EQ(lab.journal().calls("deletePolicy").begin()->text,
            "write ip access-list a, ip access-list b, ip access-list c, ip access-list d, ...");
  lab.clearFaults();
  lab.policyMaps()->servicePolicyIs({Vorel::IntfId("Ethernet1"), "input"}, "P");
  lab.settle();
  EXPECT_EQ(lab.journal().calls("createPolicy").begin()->text, "load t");
  EXPECT_EQ((--lab.journal().calls("createPolicy").end())->text,
            "write service-policy input at Ethernet1");
}

TEST(Journal, PrintsTheCauseOfTheFirstCallOfSeveral) {
  Lab lab({.faults = {{"commitError", "full"}}});
  load(lab, simplePolicy);
  lab.clearFaults();
  lab.advance(1s);
  EXPECT_THAT(lab.journal().calls().lines(),
              ElementsAre("1 t=0 hwInit", "3 t=0 createPolicy P/input ipv4 (rules changed)",
                          testing::StartsWith("4 t=0 addRule"), testing::_,
                          "6 t=0 commitPolicy P/input ipv4 -> full", testing::_,
                          "10 t=1 createPolicy P/input ipv4 (retry)", testing::_, testing::_,
                          "13 t=1 commitPolicy P/input ipv4"));
}

TEST(Journal, SaysWhyTheCoreMakesACall) {
  Lab lab({.faults = {{"commitError", "full"}}});
  load(lab, simplePolicy);
  EXPECT_EQ(lab.journal().calls("createPolicy").begin()->cause, "rules changed");
  EXPECT_EQ(lab.journal().calls("createPolicy").begin()->text, "load t");
  lab.clearFaults();
  lab.journal().clear();
  lab.advance(1s);
  EXPECT_EQ(lab.journal().calls("createPolicy").begin()->cause, "retry");
  lab.journal().clear();
  load(lab, "interface Ethernet2\n service-policy input P\n");
  EXPECT_EQ(lab.journal().calls("addIntfToPolicy").begin()->cause, "interfaces changed");
  lab.journal().clear();
  lab.machine()->aclHelperDel();
  EXPECT_EQ(lab.journal().calls("deletePolicy").begin()->cause, "replaced helper");
}

TEST(Journal, ACallByTheTestHasNoCause) {
  Lab lab({.strictness = Strictness::none()});
  load(lab, simplePolicy);
  lab.journal().clear();
  lab.helper()->commitPolicy(lab.machine()->policyMapSm({"P", "input"})->policyCommonData(),
                             PolicyMap::ClassMapMatchOption::ipv4);
  EXPECT_EQ(lab.journal().begin()->cause, "");
}

TEST(Journal, KnowsTheInnermostOpenCall) {
  Lab lab;
  std::vector<std::string> open;
  lab.aroundIs([&](HelperCall& /*call*/, std::function<void()> const& proceed) {
    proceed();
    open.push_back(lab.journal().openCall()->describe());
  });
  load(lab, simplePolicy);
  EXPECT_EQ(open.back(), "commitPolicy P/input ipv4");
  EXPECT_EQ(lab.journal().openCall(), nullptr);
}

TEST(Journal, HasFailuresWithTheirTexts) {
  Lab lab({.faults = {{"commitError", "table full"}}});
  load(lab, simplePolicy);
  EXPECT_THAT(linesOf(lab.journal().failed()),
              ElementsAre("commitPolicy P/input ipv4 -> table full"));
}

TEST(Journal, HasExceptions) {
  Lab lab;
  lab.aroundIs([](HelperCall& call, std::function<void()> const& proceed) {
    if (call.operation == "commitPolicy") {
      throw std::runtime_error("no link");
    }
    proceed();
  });
  load(lab, simplePolicy);
  EXPECT_THAT(linesOf(lab.journal().failed()),
              ElementsAre("commitPolicy P/input ipv4 -> throws no link"));
}

TEST(Journal, HasWhatTheTestDidAndTheResultsThatCame) {
  Lab lab({.async = true});
  load(lab, simplePolicy);
  lab.journal().clear();
  lab.trigger();
  lab.inject({"commitError", "full"});
  lab.advance(1500ms);
  lab.clearFaults();
  EXPECT_THAT(linesOf(lab.journal()),
              ElementsAre("[trigger]", "result: done", "commitPolicy P/input ipv4",
                          "[inject commitError=full]", "[advance 1.5 s]", "[clear]"));
}

TEST(Journal, HasTimesAndTheStepBeforeEachCall) {
  Lab lab({.faults = {{"commitError", "full"}}});
  load(lab, simplePolicy);
  lab.clearFaults();
  lab.advance(2s);
  Journal const commits = lab.journal().calls("commitPolicy");
  ASSERT_EQ(commits.size(), 2U);
  EXPECT_EQ(commits.begin()->time, 0);
  EXPECT_EQ(commits.begin()->text, "load t");
  EXPECT_EQ(std::next(commits.begin())->time, 1) << "the first retry";
  EXPECT_EQ(std::next(commits.begin())->text, "advance 2 s");
}

TEST(Journal, IsQueriedByPolicyClassAndRule) {
  Lab lab;
  load(lab, simplePolicy);
  load(lab, "ip access-list Q\n 5 deny udp any any\n"
            "class-map match-any Q\n match access-group Q\n"
            "policy-map Q\n class Q\n class P\n"
            "interface Ethernet1\n service-policy output Q\n");
  EXPECT_EQ(lab.journal().ofPolicy("Q").calls("addRule").size(), 2U);
  EXPECT_EQ(lab.journal().ofClass("P").size(), 2U);
  EXPECT_THAT(linesOf(lab.journal().ofRule("Q 5")),
              ElementsAre("addRule Q/output ipv4 Q Q 5 deny udp any any"));
  EXPECT_THAT(lab.journal().ofPolicy("R"), IsEmpty());
}

TEST(Journal, SaysFromWhichEntryOn) {
  Lab lab;
  load(lab, simplePolicy);
  std::uint64_t const next = lab.journal().next();
  load(lab, "interface Ethernet2\n service-policy input P\n");
  EXPECT_THAT(linesOf(lab.journal().since(next)),
              ElementsAre("[load t]", "addIntfToPolicy P/input ipv4 Ethernet2",
                          "commitPolicy P/input ipv4"));
}

TEST(Journal, KeepsTheNewestEntries) {
  Lab lab({.journal = 2});
  load(lab, simplePolicy);
  EXPECT_THAT(linesOf(lab.journal()),
              ElementsAre("addIntfToPolicy P/input ipv4 Ethernet1", "commitPolicy P/input ipv4"));
  EXPECT_EQ(lab.journal().dropped(), 4U);
  EXPECT_EQ(lab.journal().begin()->number, 5U);
}

TEST(Journal, MayBeOff) {
  Lab lab({.journal = 0});
  load(lab, simplePolicy);
  lab.trigger();
  EXPECT_THAT(lab.journal(), IsEmpty());
  EXPECT_EQ(lab.record("P").rule("P 10").action(1), 1U);
}

TEST(Journal, ARecreationIsOneCall) {
  Lab lab;
  load(lab, simplePolicy);
  lab.journal().clear();
  load(lab, "ip access-list P\n no 10\n 20 permit tcp any any eq 81\n");
  EXPECT_EQ(linesOf(lab.journal().calls()).front(), "recreatePolicy P/input ipv4");
  EXPECT_THAT(lab.journal().calls("deletePolicy"), IsEmpty());
  EXPECT_THAT(lab.journal().calls("createPolicy"), IsEmpty());
}

TEST(Journal, PrintsALinePerEntryWithNumberAndTime) {
  Lab lab({.journal = 2});
  load(lab, simplePolicy);
  std::ostringstream out;
  out << lab.journal();
  EXPECT_EQ(out.str(), "4 earlier entries\n"
                       "5 t=0 addIntfToPolicy P/input ipv4 Ethernet1 (rules changed)\n"
                       "6 t=0 commitPolicy P/input ipv4\n");
}

}  // namespace
}  // namespace PolicyMapTestKit::test
