// SPDX-License-Identifier: Apache-2.0
#include "testkit/Explanations.h"

#include "testkit/Labs.h"

#include <gmock/gmock.h>

#include <sstream>
#include <string>

namespace PolicyMapTestKit::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string const policyAt = "ip access-list L\n 10 permit tcp any any eq 80\n"
                             "class-map match-any C\n match access-group L\n"
                             "policy-map P\n class C\n  set action1 1\n";

std::vector<std::string> linesAfter(std::string const& text, LabOptions const& options = {}) {
  Lab lab(options);
  load(lab, policyAt + text);
  return lab.explain().lines();
}

TEST(Explanations, NamesEveryMissingClassMap) {
  Lab lab;
  lab.load(policyAt + "policy-map P\n class wob insert-before C\n class wbe\n"
                      "interface Ethernet1\n service-policy input P\n");
  std::string const line = "P/input ipv4: programmed at Ethernet1; class wob: missing class-map "
                           "wob; class wbe: missing class-map wbe";
  EXPECT_THAT(lab.explain("P").lines(), ElementsAre(line));
  EXPECT_THAT(lab.explain("P").notProgrammed(), ElementsAre(line));
}

TEST(Explanations, NamesTheMembersOfAPortChannel) {
  std::string const text = std::string(simplePolicy) +
                           "interface PortChannel1\n service-policy input P\n"
                           "interface Ethernet7\n channel-group 1\n"
                           "interface Ethernet8\n channel-group 1\n";
  for (bool const expand : {false, true}) {
    Lab lab({.expandPortChannels = expand});
    lab.load(text);
    EXPECT_THAT(lab.explain("P").lines(),
                ElementsAre("P/input ipv4: programmed at Ethernet1, PortChannel1" +
                            std::string(expand ? " (members Ethernet7, Ethernet8)" : "")));
  }
}

TEST(Explanations, SayWhereItIsProgrammed) {
  EXPECT_THAT(linesAfter("interface Ethernet1\n service-policy input P\n"),
              ElementsAre("P/input ipv4: programmed at Ethernet1"));
  EXPECT_THAT(linesAfter("interface Ethernet1\n service-policy input P\n"
                         "interface Vlan2\n service-policy input P\n"),
              ElementsAre("P/input ipv4: programmed at Ethernet1; not at Vlan2 (neither layer 2 "
                          "nor has an address)"));
}

TEST(Explanations, SayWhyNoInterfaceIsEligible) {
  EXPECT_THAT(
      linesAfter("interface Vlan2\n ipv6 address 2001:db8::1/64\n service-policy input P\n"
                 "interface Ethernet3\n shutdown\n service-policy input P\n"
                 "interface Loopback1\n service-policy input P\n"),
      ElementsAre("P/input ipv4: no interface is eligible: Ethernet3 (does not exist or is shut "
                  "down), Vlan2 (no IPv4 address), Loopback1 (neither layer 2 nor has an "
                  "address)"));
  EXPECT_THAT(linesAfter("interface Ethernet1\n service-policy output P\n", {.layer2 = false}),
              ElementsAre("P/output ipv4: no interface is eligible: Ethernet1 (interfaces of its "
                          "kind are not served)"));
  EXPECT_THAT(
      linesAfter("interface PortChannel1\n service-policy input P\n", {.expandPortChannels = true}),
      ElementsAre("P/input ipv4: no interface is eligible: PortChannel1 (has no members)"));
}

TEST(Explanations, SayWhatIsMissing) {
  EXPECT_THAT(linesAfter("policy-map Q\n class D\nclass-map match-any D\n match access-group M\n"
                         "interface Ethernet1\n service-policy input Q\n"),
              ElementsAre("Q/input: nothing to program: no class has rules; class D: missing ip "
                          "access-list M"));
  EXPECT_THAT(linesAfter("interface Ethernet1\n service-policy input Q\n"),
              ElementsAre("Q/input: policy-map Q does not exist"));
}

TEST(Explanations, SayWhatFailedAndWhenItIsTriedAgain) {
  Lab lab({.faults = {{"addRuleError", "table full"}}});
  load(lab, simplePolicy);
  EXPECT_THAT(lab.explain("P").lines(),
              ElementsAre("P/input ipv4: failed: addRule of class P, rule P 10: table full; next "
                          "try in 1 s"));
  lab.advance(std::chrono::milliseconds(1500));
  EXPECT_THAT(lab.explain("P").lines(),
              ElementsAre("P/input ipv4: failed: addRule of class P, rule P 10: table full; next "
                          "try in 1.5 s"));
}

TEST(Explanations, SayWhatIsRefusedOrNotServed) {
  EXPECT_THAT(linesAfter("ip access-list L\n 20 deny ip any any\n"
                         "interface Ethernet1\n service-policy input P\n",
                         {.denyRules = false}),
              ElementsAre("P/input ipv4: refused: class C: rule 20 of L: deny rules are not "
                          "allowed"));
  EXPECT_THAT(linesAfter("interface Ethernet1\n service-policy input P\n", {.ipLists = false}),
              ElementsAre("P/input ipv4: IPv4 rules are not served"));
}

TEST(Explanations, SayForWhichResultItWaits) {
  Lab lab({.async = true});
  load(lab, simplePolicy);
  lab.advance(std::chrono::seconds(3));
  EXPECT_THAT(lab.explain("P").lines(), testing::Contains("P/input ipv4: waiting for the result "
                                                          "of addIntfToPolicy for 3 s"));
}

TEST(Explanations, OptionsThatAreNotLookedAtYetAreLeftOut) {
  Lab lab({.async = true});
  load(lab, simplePolicy);
  EXPECT_THAT(lab.explain().lines(),
              ElementsAre("P/input ipv4: waiting for the result of addIntfToPolicy for 0 s"));
  Lab idle;
  load(idle, simplePolicy);
  idle.machine()->policyMapSm({"P", "input"})->reconciler().reprogram();
  EXPECT_THAT(idle.explain().lines(),
              ElementsAre("P/input ipv4: programmed; a change is not processed yet"));
}

TEST(Explanations, OfAPolicyThatIsNotLookedAtYetAreOneLine) {
  Lab lab;
  load(lab, policyAt);
  lab.policyMaps()->servicePolicyIs({Vorel::IntfId(Kor::String("Ethernet1")), "input"}, "P");
  EXPECT_THAT(lab.explain().lines(), ElementsAre("P/input: not programmed yet"));
}

TEST(Explanations, OfOtherStatesAndObstacles) {
  using enum PolicyMap::ProgrammingState;
  PolicyMap::Explanation explanation;
  explanation.policy = {"P", "input"};
  auto const textOf = [&](PolicyMap::ProgrammingState state) {
    explanation.state = state;
    return describe(explanation, 0);
  };
  EXPECT_EQ(textOf(noHelper), "P/input ipv4: there is no helper");
  EXPECT_EQ(textOf(noMachine), "P/input ipv4: no machine programs it");
  EXPECT_EQ(textOf(due), "P/input ipv4: not programmed yet");
  EXPECT_EQ(textOf(nothingToProgram), "P/input ipv4: nothing to program: no class has IPv4 rules");
  explanation.failure = PolicyMap::PolicyFailure("x", "commitPolicy", {}, {});
  EXPECT_EQ(textOf(failed),
            "P/input ipv4: failed: commitPolicy: x; tried again after the next change");
  using PolicyMap::ClassMapMatchOption;
  using PolicyMap::IntfObstacle;
  EXPECT_EQ(describe(IntfObstacle::excluded, ClassMapMatchOption::mac), "excluded by the machine");
  EXPECT_EQ(describe(IntfObstacle::notPhysical, ClassMapMatchOption::mac),
            "layer 3, but not physical");
  EXPECT_EQ(describe(IntfObstacle::notRouting, ClassMapMatchOption::mpls), "routing is off");
  EXPECT_EQ(describe(IntfObstacle::none, ClassMapMatchOption::mpls), "");
}

TEST(Explanations, TellWhatIsNotProgrammed) {
  Lab lab;
  EXPECT_THAT(lab.explain(), IsEmpty());
  load(lab, policyAt + "interface Ethernet1\n service-policy input P\n"
                       "interface Vlan2\n service-policy output P\n");
  EXPECT_THAT(lab.explain().lines(), testing::SizeIs(2));
  EXPECT_THAT(lab.explain().notProgrammed(),
              ElementsAre("P/output ipv4: no interface is eligible: Vlan2 (neither layer 2 nor has "
                          "an address)"));
}

TEST(Explanations, OfAPolicyMapThatIsNotAttachedNameTheNearest) {
  Lab lab;
  load(lab, simplePolicy);
  EXPECT_THAT([&] { static_cast<void>(lab.explain("PP")); },
              testing::ThrowsMessage<LookupError>(testing::HasSubstr("PP")));
}

TEST(Explanations, PrintTheirLines) {
  Lab lab;
  std::ostringstream none;
  none << lab.explain();
  EXPECT_EQ(none.str(), "nothing is attached");
  load(lab, simplePolicy + "interface Ethernet2\n service-policy output P\n");
  std::ostringstream two;
  two << lab.explain();
  EXPECT_EQ(two.str(), "P/input ipv4: programmed at Ethernet1\n"
                       "P/output ipv4: programmed at Ethernet2");
}

}  // namespace
}  // namespace PolicyMapTestKit::test
