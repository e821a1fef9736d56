// SPDX-License-Identifier: Apache-2.0

// Limits of the simulated hardware.

#include "testkit/Labs.h"
#include "testkit/Matchers.h"

#include <gmock/gmock.h>

namespace PolicyMapTestKit::test {
namespace {

using testing::HasSubstr;

// Policy-map `name` at Ethernet`name`, with a rule for each port from 1 on.
std::string policyOf(int name, int ports) {
  std::string const number = std::to_string(name);
  std::string text = "class-map match-any p" + number + "\n";
  for (int port = 1; port <= ports; ++port) {
    text += " match ip tcp any any eq " + std::to_string(port) + "\n";
  }
  return text + "policy-map p" + number + "\n class p" + number + "\ninterface Ethernet" + number +
         "\n service-policy input p" + number + "\n";
}

// The same in place of the class-map that is there.
std::string changedTo(int name, int ports) {
  return "no class-map p" + std::to_string(name) + "\n" + policyOf(name, ports);
}

TEST(CapacityFault, OfRulesIsForAllPolicies) {
  Lab lab({.plan = parseFaultPlan("capacity rules=5")});
  load(lab, policyOf(1, 3));
  EXPECT_THAT(lab.record("p1"), Programmed());
  load(lab, policyOf(2, 3));
  EXPECT_EQ(lab.failure("p2").error(),
            "no room, rules=5: injected #1 at addRule(p2/input ipv4 p2 30)");
  EXPECT_THAT(lab.record("p1"), Programmed());
}

TEST(CapacityFault, IsFreedWhenRulesGo) {
  Lab lab({.plan = parseFaultPlan("capacity rules=5")});
  load(lab, policyOf(1, 3));
  load(lab, policyOf(2, 3));
  load(lab, changedTo(1, 2));
  lab.advance(std::chrono::seconds(1));
  EXPECT_THAT(lab.record("p2"), Programmed()) << "a re-created policy gives up its rules";
  lab.load("interface Ethernet2\n no service-policy input p2\n");
  load(lab, changedTo(1, 5));
  EXPECT_THAT(lab.record("p1"), Programmed()) << "and so does a deleted one";
}

TEST(CapacityFault, OfRulesIsExact) {
  for (int const rules : {4, 5, 6}) {
    Lab lab({.plan = parseFaultPlan("capacity rules=5")});
    load(lab, policyOf(1, rules));
    EXPECT_EQ(lab.record("p1").created, rules <= 5) << rules;
  }
}

TEST(CapacityFault, OfOnePolicyDoesNotConcernOthers) {
  Lab lab({.plan = parseFaultPlan("capacity rules-per-policy=3")});
  load(lab, policyOf(1, 3) + policyOf(2, 3) + policyOf(3, 4));
  EXPECT_THAT(lab.record("p1"), Programmed());
  EXPECT_THAT(lab.record("p2"), Programmed());
  EXPECT_THAT(lab.failure("p3").error().stdString(), HasSubstr("rules-per-policy=3"));
}

TEST(CapacityFault, CountsSubRulesAndRangeCheckers) {
  std::string const range = "class-map match-any r\n match ip tcp any any range 5004 5008\n"
                            "policy-map r\n class r\n"
                            "interface Ethernet1\n service-policy input r\n";
  Lab split({.subRulesForPorts = true, .plan = parseFaultPlan("capacity rules=1")});
  load(split, range);
  EXPECT_THAT(split.failure("r").error().stdString(), HasSubstr("rules=1"));
  Lab checked({.plan = parseFaultPlan("capacity range-checkers=0")});
  load(checked, range);
  EXPECT_THAT(checked.failure("r").error().stdString(), HasSubstr("range-checkers=0"));
  Lab enough({.plan = parseFaultPlan("capacity rules=1 range-checkers=1")});
  load(enough, range);
  EXPECT_THAT(enough.record("r"), Programmed());
}

TEST(CapacityFault, OfPoliciesAndInterfaces) {
  Lab lab({.plan = parseFaultPlan("capacity policies=1 interfaces-per-policy=2")});
  load(lab, policyOf(1, 1));
  load(lab, policyOf(2, 1));
  EXPECT_THAT(lab.failure("p2").error().stdString(), HasSubstr("policies=1"));
  lab.load("interface Ethernet3\n service-policy input p1\n");
  EXPECT_THAT(lab.record("p1"), Programmed());
  lab.load("interface Ethernet4\n service-policy input p1\n");
  EXPECT_THAT(lab.failure("p1").error().stdString(), HasSubstr("interfaces-per-policy=2"));
  lab.load("interface Ethernet4\n no service-policy input p1\n");
  EXPECT_THAT(lab.record("p1"), Programmed());
}

TEST(CapacityFault, CountsWhatWasProgrammedBefore) {
  Lab lab;
  load(lab, policyOf(1, 3));
  FaultScope const faults = lab.plan("capacity rules=4");
  load(lab, policyOf(2, 2));
  EXPECT_THAT(lab.failure("p2").error().stdString(), HasSubstr("rules=4"));
}

TEST(CapacityFault, TheLowestOfSeveralLimitsCounts) {
  Lab lab({.plan = parseFaultPlan("capacity rules=9")});
  load(lab, policyOf(1, 3));
  {
    FaultScope const faults = lab.plan("capacity rules=3; capacity rules=4");
    load(lab, policyOf(2, 2));
    EXPECT_THAT(lab.failure("p2").error().stdString(), HasSubstr("rules=4"))
        << "the last line of a plan counts";
  }
  lab.advance(std::chrono::seconds(1));
  EXPECT_THAT(lab.record("p2"), Programmed());
}

}  // namespace
}  // namespace PolicyMapTestKit::test
