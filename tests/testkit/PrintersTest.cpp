// SPDX-License-Identifier: Apache-2.0

// What a failing assertion prints.

#include "testkit/Printers.h"

#include "testkit/Collections.h"
#include "testkit/Labs.h"
#include "testkit/Matchers.h"

#include <Kor/ByName.h>

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

#include <set>
#include <string>

namespace PolicyMapTestKit::test {
namespace {

using PolicyMap::ClassMapMatchOption;
using testing::HasSubstr;
using testing::PrintToString;

std::string const portPolicy = "ip access-list web\n 10 permit tcp any any range 80 90\n"
                               "class-map match-any web\n match access-group web\n"
                               "policy-map edge\n class web\n  set action1 7\n"
                               "interface Ethernet1\n service-policy input edge\n";

// The text of the one failure of a statement.
template <class Statement>
std::string failureOf(Statement const& statement) {
  testing::TestPartResultArray results;
  {
    testing::ScopedFakeTestPartResultReporter const reporter(
        testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
    statement();
  }
  return results.size() == 1 ? results.GetTestPartResult(0).message() : "no failure";
}

TEST(Printers, AViewAndALiteralAsTexts) {
  std::string_view const operation = "addRule";
  EXPECT_EQ(failureOf([&] { EXPECT_NE(operation, "addRule"); }),
            "Expected: (operation) != (\"addRule\"), actual: \"addRule\" vs \"addRule\"");
}

TEST(Printers, ARecordWithItsUnusualCounters) {
  Record record;
  record.policy = "edge";
  record.direction = "input";
  record.created = true;
  record.createCount = 1;
  record.commitCount = 1;
  EXPECT_EQ(PrintToString(record), "edge/input ipv4, on no interface");
  record.createCount = 2;
  record.commitCount = 0;
  record.beginUpdateActionCount = 4;
  record.endUpdateActionCount = 3;
  record.ruleCount = 5;
  record.subRuleCount = 6;
  EXPECT_EQ(PrintToString(record),
            "edge/input ipv4, on no interface, createCount 2, commitCount 0, "
            "beginUpdateActionCount 4, endUpdateActionCount 3, ruleCount 5, subRuleCount 6");
}

TEST(Printers, ValuesAsAPersonWritesThem) {
  PolicyMap::PolicyMapSmKey const policy("edge", "input");
  PolicyMap::AclRuleKey const rule("web", "list", 10, ClassMapMatchOption::ipv4);
  Vorel::IntfId const intf(Kor::String("Ethernet1"));
  Acl::IpRuleConfig match;
  match.protocolIs(6);
  match.dstPortIs(Acl::PortMatch::eq(80));

  EXPECT_EQ(PrintToString(Kor::String("a \"text\"")), R"("a \"text\"")");
  EXPECT_EQ(PrintToString(policy), "edge/input");
  EXPECT_EQ(PrintToString(PolicyMapTest::AclPolicyType(policy, ClassMapMatchOption::mac)),
            "edge/input mac");
  EXPECT_EQ(PrintToString(rule), "list 10 of class web, ipv4");
  EXPECT_EQ(PrintToString(PolicyMap::AclRuleKey("web", "", 20, ClassMapMatchOption::mac)),
            "20 of class web, mac");
  EXPECT_EQ(PrintToString(match), "permit tcp any any eq 80");
  EXPECT_EQ(PrintToString(Acl::PortMatch::range(1, 5)), "range 1 5");
  EXPECT_EQ(PrintToString(PolicyMap::SubRuleData()), "any ports");
  EXPECT_EQ(PrintToString(intf), "Ethernet1");
  EXPECT_EQ(PrintToString(ClassMapMatchOption::ipv6), "ipv6");
  EXPECT_EQ(PrintToString(PolicyMap::ServicePolicyKey(intf, "input")), "Ethernet1 input");
  EXPECT_EQ(PrintToString(PolicyMap::OptionIntf(ClassMapMatchOption::ipv4, intf)),
            "Ethernet1, ipv4");
  EXPECT_EQ(PrintToString(PolicyMap::AsyncOperationResult("", 2)), "success at 2 s");
  EXPECT_EQ(PrintToString(PolicyMap::AsyncOperationResult("full", 2)), "full at 2 s");
  using Match = PolicyMap::ClassMapMatch;
  EXPECT_EQ(PrintToString(Match::acl(ClassMapMatchOption::ipv4, "web")), "access-group web");
  EXPECT_EQ(PrintToString(Match::acl(ClassMapMatchOption::ipv6, "web")), "ipv6 access-group web");
  EXPECT_EQ(PrintToString(Match::classMap("inner")), "class-map inner");
  EXPECT_EQ(PrintToString(Match::rule(match)), "permit tcp any any eq 80");
}

TEST(Printers, Explanations) {
  Lab lab({.faults = {{"commitError", "full"}}});
  load(lab, portPolicy);
  PolicyMap::Explanation const explanation = *lab.explain().begin();
  EXPECT_EQ(PrintToString(explanation),
            "edge/input ipv4: failed: commitPolicy: full; next try at t=1");
  EXPECT_EQ(PrintToString(explanation.state), "failed");
  EXPECT_EQ(PrintToString(explanation.intfs.at(0).obstacle), "none");
  Lab waiting({.async = true});
  load(waiting, portPolicy);
  EXPECT_EQ(PrintToString(*waiting.explain().begin()),
            "edge/input ipv4: waiting for the result of addIntfToPolicy since t=0");
}

// A name for each value, and a different one.
template <class Enum>
std::set<std::string> namesUpTo(Enum last) {
  std::set<std::string> names;
  for (int value = 0; value <= static_cast<int>(last); ++value) {
    names.insert(PrintToString(static_cast<Enum>(value)));
  }
  return names;
}

TEST(Printers, StatesAndObstaclesByTheirNames) {
  using PolicyMap::IntfObstacle;
  using PolicyMap::ProgrammingState;
  EXPECT_THAT(namesUpTo(ProgrammingState::noIntf),
              testing::AllOf(testing::SizeIs(11), testing::Contains("programmed"),
                             testing::Not(testing::Contains(""))));
  EXPECT_THAT(namesUpTo(IntfObstacle::noMembers),
              testing::AllOf(testing::SizeIs(9), testing::Contains("noAddress"),
                             testing::Not(testing::Contains(""))));
}

TEST(Printers, Failures) {
  PolicyMap::AclRuleKey const rule("web", "list", 10, ClassMapMatchOption::ipv4);
  EXPECT_EQ(PrintToString(PolicyMap::PolicyFailure()), "no failure");
  EXPECT_EQ(PrintToString(PolicyMap::PolicyFailure("full", "commitPolicy", {}, {})),
            "commitPolicy: full");
  EXPECT_EQ(PrintToString(PolicyMap::PolicyFailure("full", "addRule", "web", rule)),
            "addRule: full, at list 10 of class web, ipv4");
  EXPECT_EQ(PrintToString(PolicyMap::PolicyFailure("refused", "", {}, {})), "refused");
}

TEST(Printers, Objects) {
  Lab lab;
  load(lab, portPolicy);
  auto const record = lab.helper()->testData(
      PolicyMapTest::AclPolicyType({"edge", "input"}, ClassMapMatchOption::ipv4));
  EXPECT_EQ(PrintToString(record), "record edge/input ipv4: created, 1 rule, at Ethernet1");
  auto const status = lab.status()->policyMapStatus({"edge", "input"});
  EXPECT_EQ(PrintToString(status), "status of edge/input: programmed for ipv4");
  EXPECT_EQ(PrintToString(status->classMapStatus("web")), "status of class web: programmed");
  EXPECT_EQ(PrintToString(lab.policyMaps()->policyMapConfig("edge")),
            "PolicyMap::PolicyMapConfig edge");
  EXPECT_EQ(PrintToString(lab.machine()), "PolicyMapTest::TestServicePolicySm");
  EXPECT_EQ(PrintToString(Kor::Ptr<Kor::Entity>()), "null");
  lab.inject({"commitError", "full"});
  load(lab, "ip access-list web\n 20 permit ip any any\n");
  EXPECT_EQ(PrintToString(status),
            "status of edge/input: not programmed; ipv4 failed: commitPolicy: full");
  EXPECT_EQ(PrintToString(record), "record edge/input ipv4: not created, 0 rules");
}

TEST(Printers, ATextAndALiteralAreBothPrintedAsTexts) {
  Kor::String const text("table full");
  EXPECT_EQ(failureOf([&] { EXPECT_EQ(text, "full"); }),
            "Expected equality of these values:\n  text\n    Which is: \"table full\"\n  \"full\"");
  EXPECT_EQ(failureOf([&] { EXPECT_EQ("full", text); }),
            "Expected equality of these values:\n  \"full\"\n  text\n    Which is: \"table full\"");
  EXPECT_EQ(failureOf([&] { EXPECT_NE(text, "table full"); }),
            "Expected: (text) != (\"table full\"), actual: \"table full\" vs \"table full\"");
}

TEST(Printers, TextsWorkWithStringMatchers) {
  Kor::String const text("table full");
  EXPECT_THAT(text, HasSubstr("full"));
  EXPECT_THAT(text, testing::StartsWith("table"));
  EXPECT_THAT(text, testing::EndsWith("full"));
  EXPECT_THAT(text, testing::ContainsRegex("b.e"));
  EXPECT_THAT(text, testing::StrEq("table full"));
  EXPECT_THAT(text, testing::StrCaseEq("Table Full"));
  EXPECT_THAT(text, "table full");
  EXPECT_THAT(Kor::String(), testing::IsEmpty());
  EXPECT_EQ(failureOf([&] { EXPECT_THAT(text, HasSubstr("empty")); }),
            "Value of: text\nExpected: has substring \"empty\"\n  Actual: \"table full\" (of type "
            "Kor::String8)");
}

TEST(Printers, ARulesMatchInAFailure) {
  Lab lab;
  load(lab, portPolicy);
  auto const record = lab.helper()->testData(
      PolicyMapTest::AclPolicyType({"edge", "input"}, ClassMapMatchOption::ipv4));
  PolicyMap::AclRuleKey const key("web", "web", 10, ClassMapMatchOption::ipv4);
  EXPECT_EQ(
      failureOf([&] { EXPECT_EQ(record->ruleMatch(key), Acl::IpRuleConfig()); }),
      "Expected equality of these values:\n  record->ruleMatch(key)\n    Which is: permit tcp "
      "any any range 80 90\n  Acl::IpRuleConfig()\n    Which is: permit ip any any");
}

TEST(Printers, CollectionsAsContainers) {
  Lab lab;
  load(lab, portPolicy + "interface Ethernet2\n service-policy input edge\n");
  auto const record = lab.helper()->testData(
      PolicyMapTest::AclPolicyType({"edge", "input"}, ClassMapMatchOption::ipv4));
  Vorel::IntfId const first(Kor::String("Ethernet1"));
  Vorel::IntfId const second(Kor::String("Ethernet2"));
  EXPECT_THAT(keysOf(record->intfIteratorConst()), testing::UnorderedElementsAre(first, second));
  EXPECT_THAT(entriesOf(record->ruleAction1IteratorConst()),
              testing::ElementsAre(testing::Pair(testing::_, 7U)));
  EXPECT_EQ(
      failureOf(
          [&] { EXPECT_THAT(entriesOf(record->ruleAction1IteratorConst()), testing::SizeIs(2)); }),
      "Value of: entriesOf(record->ruleAction1IteratorConst())\nExpected: size is equal to 2\n  "
      "Actual: { (web 10 of class web, ipv4, 7) }, whose size 1 doesn't match");
  EXPECT_EQ(PrintToString(entriesOf(record->subRulesForKeyIteratorConst())),
            "{ (web 10 of class web, ipv4, PolicyMapTest::SubRuleDataCollection) }");
}

TEST(Printers, PlacesByName) {
  Lab lab;
  load(lab, portPolicy);
  Kor::GenericRef const helper(lab.helper());
  EXPECT_EQ(PrintToString(helper["commitError"]), "''");
  EXPECT_EQ(failureOf([&] { EXPECT_EQ(helper["pseudoAsync"], true); }),
            "Expected equality of these values:\n  helper[\"pseudoAsync\"]\n    Which is: False\n  "
            "true");
}

}  // namespace
}  // namespace PolicyMapTestKit::test
