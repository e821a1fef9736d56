// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/ActionMapping.h"

#include "testkit/Labs.h"
#include "testkit/Matchers.h"
#include "testkit/text/Parsing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace PolicyMapTestKit::test {
namespace {

using testing::ElementsAre;
using Text::ActionMapping;

ActionMapping mappingOf(std::string const& text) {
  return ActionMapping(Text::SourceText("m", text));
}

// The three actions of a class with these lines.
std::vector<std::uint32_t> mappedActions(std::string const& mapping, std::string const& lines) {
  Lab lab({.actions = mappingOf(mapping)});
  lab.load("class-map match-any C\n match any\npolicy-map P\n class C\n" + lines +
           "interface Ethernet1\n service-policy input P\n");
  RuleRecord const rule = *lab.record("P", "input", PolicyMap::ClassMapMatchOption::ipv4).begin();
  return {rule.action(1), rule.action(2), rule.action(3)};
}

TEST(ActionMapping, TheLongestWordsCount) {
  ActionMapping const mapping = mappingOf("! a comment\n# another\n\nset = action1\n"
                                          "Set  COS = action3\nset cos inner = none\n");
  EXPECT_EQ(mapping.actionOf("set dscp ef"), 1);
  EXPECT_EQ(mapping.actionOf("set cos 5"), 3);
  EXPECT_EQ(mapping.actionOf("SET COS INNER 5"), 0);
  EXPECT_EQ(mapping.actionOf("police 8000"), std::nullopt);
  EXPECT_EQ(mapping.actionOf("settle"), std::nullopt);
  EXPECT_EQ(ActionMapping().actionOf("set"), std::nullopt);
}

TEST(ActionMapping, MovesMarkingsRatesAndTexts) {
  EXPECT_THAT(mappedActions("set dscp = action2\n", "  set dscp 10\n"), ElementsAre(0, 10, 0));
  EXPECT_THAT(mappedActions("police = action1\n", "  police 64000\n"), ElementsAre(64, 0, 0));
  EXPECT_THAT(mappedActions("police = action1\n", "  police 64000\n  no police\n"),
              ElementsAre(0, 0, 0));
  EXPECT_THAT(mappedActions("inspect = action2\n", "  inspect\n  drop\n"), ElementsAre(0, 1, 2));
  EXPECT_THAT(mappedActions("inspect = none\npolice = none\n", "  inspect\n  police 64000\n"),
              ElementsAre(0, 0, 0));
  EXPECT_THAT(mappedActions("conform-action = none\n",
                            "  police 64000 conform-action transmit exceed-action drop\n"),
              ElementsAre(0, 64, 1));
  EXPECT_THAT(mappedActions("set = action3\n", "  set action1 7\n"), ElementsAre(7, 0, 0))
      << "a number that is set as such";
}

TEST(ActionMapping, MistakesAreErrorsAtTheirPlaces) {
  auto const errorOfMapping = [](std::string const& text) {
    return Text::test::errorFrom([&] { return mappingOf(text); });
  };
  EXPECT_EQ(errorOfMapping("police = action4\n"),
            "m:1:10: expected action1, action2, action3 or none, found 'action4'");
  EXPECT_EQ(errorOfMapping("police\n"),
            "m:1:7: expected the first words of a line of a class, = and an action, found end of "
            "line");
  EXPECT_EQ(errorOfMapping("= action1\n"),
            "m:1:1: expected the first words of a line of a class, = and an action, found '='");
  EXPECT_EQ(errorOfMapping("police = action1 x\n"), "m:1:18: expected end of line, found 'x'");
  EXPECT_EQ(errorOfMapping("police = none\nPOLICE = action1\n"),
            "m:2:1: expected words that no earlier line maps, found 'POLICE'");
}

}  // namespace
}  // namespace PolicyMapTestKit::test
