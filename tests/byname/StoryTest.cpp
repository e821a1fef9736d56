// SPDX-License-Identifier: Apache-2.0

// From configuration to recorded rules and published statuses, by name throughout: no class header
// of the library or of the core is included.

#include "byname/World.h"

#include <Kor/EventLoop.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

using Kor::construct;
using Kor::GenericPlace;
using Kor::GenericRef;
using testing::HasSubstr;

GenericRef ruleTo(std::uint32_t low, std::uint32_t high) {
  GenericRef rule = construct("Acl::IpRuleConfig");
  rule["protocol"] = 6;
  rule["dstPort"] = construct("Acl::PortMatch", low == high ? "eq" : "range", low, high);
  return rule;
}

// Policy-map "edge" with class "browsing", attached at Ethernet1 and Ethernet2, and its whole
// environment. The class matches access list "web" and has actions 1 and 2.
class Story : public testing::Test {
 protected:
  Story() {
    Kor::EventLoop::global().virtualTimeIs(true);
    web["rule"][10] = ruleTo(80, 80);
    web["rule"][20] = ruleTo(8080, 8083);
    browsing["match"][1] = construct("PolicyMap::ClassMapMatch", "acl", "ipv4", "web", nullptr);
    classes["classMapConfig"]["browsing"].create()["currentSubConfig"] = browsing;
    edge["classPrio"]["browsing"] = 10;
    action1["value"] = 7;
    action2["value"] = 8;
    GenericRef const actions = edge["classAction"]["browsing"].create();
    actions["action"][1] = action1;
    actions["action"][2] = action2;
    policies["policyMapConfig"]["edge"].create()["currentSubConfig"] = edge;
    attach("Ethernet1");
    attach("Ethernet2");
  }
  ~Story() override {
    machine = {};
    Kor::EventLoop::global().virtualTimeIs(false);
  }

  void attach(char const* where) const { place(where) = "edge"; }
  void detach(char const* where) const { place(where).del(); }
  void start() {
    machine = construct("PolicyMapTest::TestServicePolicySm", policies, classes, requests, status,
                        acls, construct("Lag::Input::Config", ""), construct("Ip::Status", ""),
                        construct("Ip6::Status", ""), construct("Routing::RoutingInfo", ""),
                        construct("Routing6::RoutingInfo", ""), helper, construct("Acl::AclDiff"),
                        true, true, true);
    settle();
  }
  static void settle() { Kor::EventLoop::global().runUntilIdle(); }
  // Waits long enough for every retry.
  static void wait() { Kor::EventLoop::global().runFor(200); }
  void trigger() const {
    helper["asyncTrigger"] = helper["asyncTrigger"].as<std::uint32_t>() + 1;
    settle();
  }

  [[nodiscard]] GenericRef record() const {
    return helper["testData"][construct("PolicyMapTest::AclPolicyType", key, "ipv4")].get();
  }
  [[nodiscard]] GenericRef policyStatus() const { return status["policyMapStatus"][key].get(); }
  [[nodiscard]] bool programmed() const {
    return bool(policyStatus()) && policyStatus()["programmed"]["ipv4"].as<bool>();
  }
  [[nodiscard]] std::string error() const {
    return policyStatus() ? policyStatus()["error"].as<std::string>() : "no status";
  }
  // The operation and text of the IPv4 failure.
  [[nodiscard]] std::string failure() const {
    GenericRef const now = policyStatus()["failure"]["ipv4"].get();
    return now["operation"].as<std::string>() + ": " + now["error"].as<std::string>();
  }
  [[nodiscard]] static GenericRef rule(std::uint32_t seqno) {
    return construct("PolicyMap::AclRuleKey", "browsing", "web", seqno, "ipv4");
  }
  [[nodiscard]] std::string counts() const {
    std::ostringstream out;
    GenericRef const of = record();
    out << "create " << of["createCount"] << ", commit " << of["commitCount"] << ", update "
        << of["beginUpdateActionCount"] << '/' << of["endUpdateActionCount"] << ", created "
        << of["created"] << ", dirty " << of["dirty"];
    return out.str();
  }
  // What is programmed, independent of history.
  [[nodiscard]] std::string programmedContent() const {
    std::ostringstream out;
    for (auto const& [policyType, of] : helper["testData"]) {
      if (!of["created"].as<bool>()) {
        continue;
      }
      out << policyType << " dirty " << of["dirty"];
      for (char const* const name : {"ruleMatch", "ruleMatch6", "ruleMatchMac", "ruleAction1",
                                     "ruleAction2", "ruleAction3", "intf"}) {
        for (auto const& [member, value] : of[name]) {
          out << "\n " << name << ' ' << member << ' ' << value;
        }
      }
      for (auto const& [member, subRules] : of["subRulesForKey"]) {
        for (auto const& [subRule, present] : subRules["subRule"]) {
          out << "\n " << member << ' ' << subRule << ' ' << present;
        }
      }
    }
    return out.str();
  }

  GenericRef acls = construct("Acl::Config", "acls");
  GenericRef web = acls["ipAcl"]["web"].create();
  GenericRef classes = construct("PolicyMap::ClassMapTypeConfig", "classes");
  GenericRef browsing = construct("PolicyMap::ClassMapSubConfig", "browsing");
  GenericRef policies = construct("PolicyMap::PolicyMapTypeConfig", "policies");
  GenericRef edge = construct("PolicyMap::PolicyMapSubConfig", "edge");
  GenericRef action1 = World::action(1);
  GenericRef action2 = World::action(2);
  GenericRef requests = construct("PolicyMap::PolicyMapStatusRequestDir", "requests");
  GenericRef status = construct("PolicyMap::PolicyMapTypeStatus", "status");
  GenericRef helper = construct("PolicyMapTest::AclHelper", true, false);
  GenericRef key = construct("PolicyMap::PolicyMapSmKey", "edge", "input");
  GenericRef machine;

 private:
  [[nodiscard]] GenericPlace place(char const* where) const {
    return policies["servicePolicy"][construct("PolicyMap::ServicePolicyKey", where, "input")];
  }
};

TEST_F(Story, ConfigurationIsProgrammedAndPublished) {
  start();
  ASSERT_TRUE(record());
  EXPECT_EQ(counts(), "create 1, commit 1, update 0/0, created True, dirty False");
  GenericRef const of = record();
  EXPECT_EQ(of["ruleMatch"].size(), 2U);
  EXPECT_EQ(of["ruleMatch"][rule(10)], ruleTo(80, 80));
  EXPECT_EQ(of["ruleMatch"][rule(20)], ruleTo(8080, 8083));
  EXPECT_EQ(of["ruleMatch6"].size() + of["ruleMatchMac"].size(), 0U);
  for (std::uint32_t const seqno : {10U, 20U}) {
    EXPECT_EQ(of["ruleAction1"][rule(seqno)], 7);
    EXPECT_EQ(of["ruleAction2"][rule(seqno)], 8);
    EXPECT_EQ(of["ruleAction3"][rule(seqno)], 0);
    EXPECT_EQ(of["subRulesForKey"][rule(seqno)]["subRule"].size(), 1U);
  }
  EXPECT_EQ(of["intf"].size(), 2U);
  EXPECT_EQ(of["intf"]["Ethernet1"], true);
  EXPECT_EQ(of["intf"]["Ethernet2"], true);

  EXPECT_TRUE(programmed());
  EXPECT_EQ(error(), "");
  EXPECT_EQ(policyStatus()["classMapStatus"]["browsing"]["programmed"], true);
  EXPECT_EQ(policyStatus()["classMapStatus"]["browsing"]["error"], "");
}

TEST_F(Story, TheMachinesBelowAreTheLibrarys) {
  start();
  EXPECT_EQ(machine["policyMapSm"].size(), 1U);
  GenericRef const policyMachine = machine["policyMapSm"][key].get();
  EXPECT_EQ(policyMachine.type()->name(), "PolicyMapTest::TestPolicyMapSm");
  EXPECT_EQ(policyMachine["key"], key);
  GenericRef const classMachine = policyMachine["classMapSm"]["browsing"].get();
  EXPECT_EQ(classMachine.type()->name(), "PolicyMapTest::TestClassMapSm");
  GenericRef const classData = classMachine["classCommonData"].get();
  EXPECT_EQ(classData.type()->name(), "PolicyMapTest::TestClassCommonData");
  EXPECT_EQ(classData["action1Value"], 7);
  EXPECT_EQ(classData["action2Value"], 8);
  EXPECT_EQ(classMachine["actionSm"].size(), 2U);
  EXPECT_EQ(classMachine["actionSm"][1].get().type()->name(), "PolicyMapTest::TestAction1Sm");
  EXPECT_EQ(classMachine["actionSm"][2].get().type()->name(), "PolicyMapTest::TestAction2Sm");
  EXPECT_EQ(classMachine["actionSm"][1]["action"], action1);
}

TEST_F(Story, AChangedActionIsUpdatedInPlace) {
  start();
  action1["value"] = 42;
  settle();
  EXPECT_EQ(record()["ruleAction1"][rule(10)], 42);
  EXPECT_EQ(record()["ruleAction1"][rule(20)], 42);
  EXPECT_EQ(record()["ruleAction2"][rule(10)], 8);
  EXPECT_EQ(counts(), "create 1, commit 2, update 1/1, created True, dirty False");
}

TEST_F(Story, AChangedActionIsProgrammedAnewWhereThereAreNoUpdates) {
  helper["updateActionSupported"] = false;
  start();
  action1["value"] = 42;
  settle();
  EXPECT_EQ(record()["ruleAction1"][rule(10)], 42);
  EXPECT_EQ(counts(), "create 2, commit 2, update 0/0, created True, dirty False");
}

TEST_F(Story, AChangedRuleIsProgrammedAnew) {
  start();
  web["rule"][20].del();
  web["rule"][30] = ruleTo(443, 443);
  settle();
  EXPECT_EQ(record()["ruleMatch"].size(), 2U);
  EXPECT_EQ(record()["ruleMatch"][rule(30)], ruleTo(443, 443));
  EXPECT_EQ(counts(), "create 2, commit 2, update 0/0, created True, dirty False");
}

TEST_F(Story, AnIdenticalRuleProgramsNothing) {
  start();
  web["rule"][20] = ruleTo(8080, 8083);
  web["rule"][10].del();
  web["rule"][10] = ruleTo(80, 80);
  settle();
  EXPECT_EQ(counts(), "create 1, commit 1, update 0/0, created True, dirty False");
}

TEST_F(Story, AnInterfaceThatDoesNotExistLeavesAndComesBack) {
  start();
  machine["nonexistentIntf"]["Ethernet2"] = true;
  settle();
  EXPECT_EQ(machine.call("intfExists", "Ethernet2"), false);
  EXPECT_EQ(record()["intf"].size(), 1U);
  EXPECT_EQ(counts(), "create 1, commit 2, update 0/0, created True, dirty False");

  machine["nonexistentIntf"]["Ethernet1"] = true;
  settle();
  EXPECT_EQ(record()["created"], false);
  EXPECT_EQ(record()["intf"].size() + record()["ruleMatch"].size(), 0U);
  EXPECT_FALSE(programmed());

  machine["nonexistentIntf"]["Ethernet1"].del();
  machine["nonexistentIntf"]["Ethernet2"] = false;  // listed, but existing
  settle();
  EXPECT_EQ(record()["intf"].size(), 2U);
  EXPECT_EQ(record()["created"], true);
  EXPECT_TRUE(programmed());
}

TEST_F(Story, APolicyThatIsTakenAwayIsDeletedAndItsStatusGoes) {
  start();
  detach("Ethernet1");
  detach("Ethernet2");
  settle();
  EXPECT_EQ(record()["created"], false);
  EXPECT_TRUE(policyStatus().isNull());
  EXPECT_EQ(machine["policyMapSm"].size(), 0U);
  attach("Ethernet2");
  settle();
  EXPECT_EQ(record()["created"], true);
  EXPECT_EQ(record()["intf"].size(), 1U);
  EXPECT_TRUE(programmed());
}

TEST_F(Story, APolicyMapThatTurnsUpLaterIsProgrammedThen) {
  policies["policyMapConfig"]["edge"].del();
  start();
  EXPECT_EQ(helper["testData"].size(), 0U);
  policies["policyMapConfig"]["edge"].create()["currentSubConfig"] = edge;
  settle();
  EXPECT_TRUE(programmed());
  EXPECT_EQ(record()["ruleMatch"].size(), 2U);
}

// Faults

// A fault during the first programming.
struct Fault {
  char const* attribute;
  char const* operation;
  // The state of the record while the fault lasts.
  bool dirty;
};

class Faults : public Story, public testing::WithParamInterface<Fault> {};

TEST_P(Faults, AreReportedAndLeaveNothingBehindOnceTheyAreCleared) {
  std::string const good = [this] {
    start();
    std::string content = programmedContent();
    detach("Ethernet1");
    detach("Ethernet2");
    settle();
    return content;
  }();
  ASSERT_THAT(good, HasSubstr("ruleMatch"));
  ASSERT_EQ(programmedContent(), "");

  Fault const& fault = GetParam();
  auto const text = std::string("no ") + fault.attribute;
  helper[fault.attribute] = text;
  attach("Ethernet1");
  attach("Ethernet2");
  settle();
  EXPECT_FALSE(programmed());
  EXPECT_EQ(error(), text);
  EXPECT_EQ(failure(), fault.operation + (": " + text));
  EXPECT_EQ(record()["created"], false);
  EXPECT_EQ(record()["ruleMatch"].size() + record()["intf"].size(), 0U);
  EXPECT_EQ(programmedContent(), "");
  wait();  // every retry fails as well
  EXPECT_EQ(error(), text);
  EXPECT_EQ(programmedContent(), "");

  helper[fault.attribute] = "";
  wait();
  EXPECT_TRUE(programmed());
  EXPECT_EQ(error(), "");
  EXPECT_EQ(programmedContent(), good);
  EXPECT_EQ(record()["dirty"], false);
}

INSTANTIATE_TEST_SUITE_P(Of, Faults,
                         testing::Values(Fault{"createError", "createPolicy", false},
                                         Fault{"commitError", "commitPolicy", false},
                                         Fault{"addIntfError", "addIntfToPolicy", true},
                                         Fault{"addRuleError", "addRule", false},
                                         Fault{"rangeCheckerError", "addRule", true}),
                         [](auto const& which) { return std::string(which.param.attribute); });

TEST_F(Story, AnInterfaceThatCannotBeRemovedHealsWithTheNextCreation) {
  start();
  helper["removeIntfError"] = "stuck";
  detach("Ethernet2");
  settle();
  EXPECT_FALSE(programmed());
  EXPECT_EQ(error(), "stuck");
  EXPECT_EQ(failure(), "removeIntfFromPolicy: stuck");
  EXPECT_EQ(record()["created"], false);
  wait();  // the retry succeeds
  EXPECT_TRUE(programmed());
  EXPECT_EQ(error(), "");
  EXPECT_EQ(record()["intf"].size(), 1U);
  helper["removeIntfError"] = "";
  attach("Ethernet2");
  settle();
  EXPECT_EQ(record()["intf"].size(), 2U);
  EXPECT_TRUE(programmed());
}

TEST_F(Story, APolicyThatCannotBeDeletedSaysSoBeforeItsStatusGoes) {
  start();
  GenericRef const last = policyStatus();
  helper["deleteError"] = "wedged";
  detach("Ethernet1");
  detach("Ethernet2");
  settle();
  EXPECT_TRUE(policyStatus().isNull());
  EXPECT_EQ(last["error"], "wedged");
  EXPECT_EQ(record()["created"], false);
  helper["deleteError"] = "";
  attach("Ethernet1");
  settle();
  EXPECT_TRUE(programmed());
  EXPECT_EQ(error(), "");
  EXPECT_EQ(counts(), "create 2, commit 2, update 0/0, created True, dirty False");
}

TEST_F(Story, AnActionThatCannotBeUpdatedIsProgrammedAnew) {
  start();
  helper["updateActionError"] = "no update";
  action1["value"] = 42;
  settle();
  EXPECT_EQ(counts(), "create 2, commit 2, update 1/1, created True, dirty False");
  EXPECT_EQ(record()["ruleAction1"][rule(10)], 42);
  EXPECT_TRUE(programmed());
  EXPECT_EQ(error(), "");
  helper["updateActionError"] = "";
  action1["value"] = 43;
  settle();
  EXPECT_EQ(counts(), "create 2, commit 3, update 2/2, created True, dirty False");
  EXPECT_EQ(record()["ruleAction1"][rule(20)], 43);
}

// Asynchronous results

TEST_F(Story, EachInterfaceAndTheCommitWaitForTheirTrigger) {
  helper["asyncOperations"] = true;
  start();
  EXPECT_EQ(counts(), "create 1, commit 0, update 0/0, created True, dirty True");
  EXPECT_EQ(record()["intf"].size(), 1U);
  trigger();
  EXPECT_EQ(record()["intf"].size(), 2U);
  EXPECT_FALSE(programmed());
  trigger();
  EXPECT_EQ(counts(), "create 1, commit 1, update 0/0, created True, dirty False");
  EXPECT_FALSE(programmed());
  trigger();
  EXPECT_TRUE(programmed());
  EXPECT_EQ(error(), "");
  trigger();  // the result is ignored: no wait is active
  EXPECT_TRUE(programmed());
  EXPECT_EQ(counts(), "create 1, commit 1, update 0/0, created True, dirty False");
}

TEST_F(Story, ALateErrorIsAFailureLikeAnyOther) {
  helper["asyncOperations"] = true;
  helper["commitError"] = "table full";
  start();
  trigger();
  trigger();
  EXPECT_EQ(error(), "");
  trigger();
  EXPECT_EQ(error(), "table full");
  EXPECT_EQ(failure(), "commitPolicy: table full");
  EXPECT_EQ(record()["created"], false);
  helper["commitError"] = "";
  helper["pseudoAsync"] = true;
  wait();
  EXPECT_TRUE(programmed());
  EXPECT_EQ(error(), "");
}

TEST_F(Story, ResultsThatComeAtOnceNeedNoTrigger) {
  helper["asyncOperations"] = true;
  helper["pseudoAsync"] = true;
  start();
  EXPECT_TRUE(programmed());
  EXPECT_EQ(counts(), "create 1, commit 1, update 0/0, created True, dirty False");
  EXPECT_EQ(helper["asyncTrigger"], 0);
  EXPECT_EQ(helper["asyncOperationResult"]["error"], "");
}

TEST_F(Story, AResultThatNeverComesTimesOut) {
  helper["asyncOperations"] = true;
  start();
  machine["asyncTimeout"] = 5;
  Kor::EventLoop::global().runFor(40);
  EXPECT_FALSE(programmed());
  EXPECT_NE(error(), "");
  helper["asyncOperations"] = false;
  wait();
  EXPECT_TRUE(programmed());
  EXPECT_EQ(error(), "");
}

// Other attributes

TEST_F(Story, HitCountsAreReadWhereTheyAreRequested) {
  start();
  EXPECT_EQ(policyStatus()["classMapStatus"]["browsing"]["hitCount"].size(), 0U);
  requests["countRequest"][key] = 1;
  settle();
  GenericRef const counted = policyStatus()["classMapStatus"]["browsing"].get();
  EXPECT_EQ(counted["hitCount"].size(), 2U);
  EXPECT_EQ(counted["hitCount"][rule(10)], 10);
}

TEST_F(Story, RecordsStayWhenTheMachineGoes) {
  start();
  std::string const content = programmedContent();
  machine = {};
  settle();
  EXPECT_EQ(programmedContent(), content);
}

}  // namespace
