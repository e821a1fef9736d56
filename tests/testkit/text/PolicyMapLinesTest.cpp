// SPDX-License-Identifier: Apache-2.0

// The lines of policy-maps on real devices: what they become.

#include "testkit/Labs.h"
#include "testkit/Matchers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace PolicyMapTestKit::test {
namespace {

using testing::ElementsAre;

std::string const twoClasses = "ip access-list a\n 10 permit tcp any any eq 1\n"
                               "ip access-list b\n 10 permit tcp any any eq 2\n"
                               "class-map match-any a\n match access-group a\n"
                               "class-map match-any b\n match access-group b\n";

// The three actions of class a after these lines of it; 0 for none.
std::vector<std::uint32_t> actionsAfter(std::string const& lines) {
  Lab lab;
  lab.load(twoClasses + "policy-map p\n class a\n" + lines +
           "interface Ethernet1\n service-policy input p\n");
  RuleRecord const rule = lab.record("p").rules.front();
  return {rule.action(1), rule.action(2), rule.action(3)};
}

TEST(ClassActions, MarkingsAreTheFirst) {
  EXPECT_THAT(actionsAfter("  set dscp ef\n"), ElementsAre(46, 0, 0));
  EXPECT_THAT(actionsAfter("  set ip dscp 10\n"), ElementsAre(10, 0, 0));
  EXPECT_THAT(actionsAfter("  set precedence flash\n"), ElementsAre(3, 0, 0));
  EXPECT_THAT(actionsAfter("  set cos 5\n"), ElementsAre(5, 0, 0));
  EXPECT_THAT(actionsAfter("  set qos-group 12\n"), ElementsAre(12, 0, 0));
  EXPECT_THAT(actionsAfter("  set mpls experimental topmost 4\n"), ElementsAre(4, 0, 0));
  EXPECT_THAT(actionsAfter("  set traffic-class 2\n"), ElementsAre(2, 0, 0));
  EXPECT_THAT(actionsAfter("  assign-queue 5\n"), ElementsAre(5, 0, 0));
  EXPECT_THAT(actionsAfter("  set dscp ef\n  no set dscp\n"), ElementsAre(0, 0, 0));
}

TEST(ClassActions, RatesInKilobitsAreTheSecond) {
  EXPECT_THAT(actionsAfter("  police 64000\n"), ElementsAre(0, 64, 0));
  EXPECT_THAT(actionsAfter("  police cir 8500 bc 100 conform-action transmit\n"),
              ElementsAre(0, 9, 1))
      << "rounded up";
  EXPECT_THAT(actionsAfter("  police rate 10 mbps\n"), ElementsAre(0, 10000, 0));
  EXPECT_THAT(actionsAfter("  police cir 2g\n"), ElementsAre(0, 2000000, 0));
  EXPECT_THAT(actionsAfter("  shape average 64k\n"), ElementsAre(0, 64, 0));
  EXPECT_THAT(actionsAfter("  bandwidth 500\n"), ElementsAre(0, 500, 0));
  EXPECT_THAT(actionsAfter("  priority 100\n"), ElementsAre(0, 100, 0));
  EXPECT_THAT(actionsAfter("  police 64000\n  no police\n"), ElementsAre(0, 0, 0));
  EXPECT_THAT(actionsAfter("  priority\n  no priority\n"), ElementsAre(0, 0, 0));
  EXPECT_THAT(actionsAfter("  police-simple 64 64 conform-action transmit\n"),
              ElementsAre(0, 64, 1));
}

TEST(ClassActions, ARateThatIsNoValueOfAnActionIsAnError) {
  EXPECT_THAT(actionsAfter("  police 4294967295000\n"), ElementsAre(0, 4294967295U, 0));
  EXPECT_THAT(actionsAfter("  police 4294 gbps\n"), ElementsAre(0, 4294000000U, 0));
  for (char const* const rate :
       {"4294967295001", "4295 gbps", "18446744073709551615 gbps", "4295g"}) {
    EXPECT_THAT([&] { actionsAfter("  police " + std::string(rate) + "\n"); },
                testing::ThrowsMessage<Text::InputError>(testing::HasSubstr(
                    ":10: expected a rate of at most 4294967295 kbit/s, found '")))
        << rate;
  }
}

TEST(ClassActions, AFurtherLineOfAKeywordReplacesTheFirst) {
  auto const otherActionOf = [](std::string const& text) {
    Lab lab;
    lab.load(twoClasses + "policy-map p\n class a\n" + text +
             "interface Ethernet1\n service-policy input p\n");
    std::uint32_t const number = lab.record("p").rules.front().action(3);
    return number == 0 ? "" : lab.configuration().settings().otherActions->at(number - 1);
  };
  EXPECT_EQ(otherActionOf("  queue-limit 64\n  queue-limit 128\n"), "queue-limit 128");
  EXPECT_EQ(otherActionOf("  queue-limit 64\n  inspect\n  no queue-limit\n"), "inspect");
  EXPECT_EQ(otherActionOf("  police 8000 conform-action drop exceed-action drop\n"),
            "conform-action drop; exceed-action drop");
  EXPECT_EQ(otherActionOf("  police 8000\n   conform-action drop\n   exceed-action drop\n"
                          "  police 9000\n   conform-action transmit\n"),
            "conform-action transmit");
  EXPECT_EQ(otherActionOf("  police 8000\n   conform-action drop\n  no police\n  inspect\n"),
            "inspect");
  EXPECT_EQ(otherActionOf("  police rate 500 pps\n"), "police rate 500 pps");
  EXPECT_EQ(otherActionOf("  police cir percent 10\n  police 8000\n"), "");
  EXPECT_EQ(otherActionOf("  police cir percent 10\n  no police\n"), "");
}

TEST(ClassActions, ExitLeavesAPoliceBlockFirst) {
  EXPECT_THAT(actionsAfter("  police 64000\n  conform-action transmit\n  exit\n  set dscp ef\n"),
              ElementsAre(46, 64, testing::Gt(0U)));
}

TEST(ClassActions, EverythingElseIsANumberPerText) {
  EXPECT_THAT(actionsAfter("  inspect\n"), ElementsAre(0, 0, 1));
  EXPECT_THAT(actionsAfter("  bandwidth percent 10\n"), ElementsAre(0, 0, 1));
  Lab lab;
  lab.load(twoClasses + "policy-map p\n class a\n  drop log\n class b\n  inspect\n"
                        "interface Ethernet1\n service-policy input p\n");
  EXPECT_THAT(lab.record("p"), HasRule("a 10", Action3(1)));
  EXPECT_THAT(lab.record("p"), HasRule("b 10", Action3(2)));
  EXPECT_THAT(*lab.configuration().settings().otherActions, ElementsAre("drop log", "inspect"));
  lab.load("policy-map p\n class b\n  no inspect\n  drop   log\n");
  EXPECT_THAT(lab.record("p"), HasRule("b 10", Action3(1))) << "the same text";
}

TEST(ClassActions, AChangedRateIsAnUpdateOfActions) {
  Lab lab({.updateAction = true});
  lab.load(twoClasses + "policy-map p\n class a\n  police 64000\n"
                        "interface Ethernet1\n service-policy input p\n");
  std::uint64_t const next = lab.journal().next();
  lab.load("policy-map p\n class a\n  police 128000\n");
  EXPECT_THAT(lab.journal().since(next),
              Calls("beginUpdateActions", "updateAction", "endUpdateActions", "commitPolicy"));
}

}  // namespace
}  // namespace PolicyMapTestKit::test
