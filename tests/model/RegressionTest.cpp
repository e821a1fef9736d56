// SPDX-License-Identifier: Apache-2.0

// Shrunk runs on which core and model have disagreed, as lists of steps in the form in which the
// random runs print them.

#include "model/Trial.h"

#include <gtest/gtest.h>

namespace Model {

static std::string trialOf(char const* steps) {
  return trial(operationsOf(steps));
}

TEST(ModelRegression, PortChannelThatIsAMemberOfItselfIsNoEndlessLoop) {
  EXPECT_EQ(trialOf("member 3 1\n"
                    "settle\n"),
            "");
}

TEST(ModelRegression, PortChannelsThatAreMembersOfEachOtherAreNoEndlessLoop) {
  EXPECT_EQ(trialOf("rule 0 0 0 0\n"
                    "attach 1 0 0\n"
                    "capability 2 3\n"
                    "member 3 0\n"
                    "member 1 1\n"
                    "settle\n"),
            "");
}

// A capability of the helper changes while the policy has no interface.
TEST(ModelRegression, PolicyThatWasAwayMeetsTheHelperAsItIsNow) {
  EXPECT_EQ(trialOf("rule 0 0 0 10964\n"
                    "attach 3 1 0\n"
                    "turn\n"
                    "attach 3 1 1\n"
                    "capability 0 1\n"
                    "attach 0 1 0\n"
                    "settle\n"),
            "");
}

// A programmed policy is refused after its class is changed to match both IP and MAC.
TEST(ModelRegression, ReasonOfARefusalIsShownAfterTheTeardownThatItCauses) {
  EXPECT_EQ(trialOf("rule 0 0 0 0\n"
                    "attach 0 0 0\n"
                    "settle\n"
                    "matchType 0 0 1\n"
                    "match 0 0 1 28\n"
                    "settle\n"),
            "");
}

TEST(ModelRegression, ReasonOfARefusalIsShownAfterATeardownThatFails) {
  EXPECT_EQ(trialOf("rule 0 0 0 100000\n"
                    "rule 0 0 1 45\n"
                    "attach 0 0 0\n"
                    "turn\n"
                    "fault 1 1\n"
                    "capability 4 3\n"
                    "turn\n"
                    "settle\n"),
            "");
}

// Deleting the only list that is not a MAC list also makes the other options valid.
TEST(ModelRegression, ErrorThatComesOrGoesWithAListOfOneOptionRefusesOrFreesTheOthers) {
  EXPECT_EQ(trialOf("rule 0 0 0 0\n"
                    "matchType 0 0 1\n"
                    "match 0 0 1 48\n"
                    "rule 2 0 0 0\n"
                    "attach 0 0 0\n"
                    "settle\n"
                    "listDel 0 0\n"
                    "settle\n"
                    "rule 0 0 0 0\n"
                    "settle\n"),
            "");
}

// Rules of different class-maps at the same place, each intersected with the same list.
TEST(ModelRegression, IntersectionsOfOneNameAndDifferentRulesAllStand) {
  EXPECT_EQ(trialOf("rule 0 0 0 0\n"
                    "matchType 1 0 1\n"
                    "match 1 0 0 0\n"
                    "match 1 0 1 40\n"
                    "matchType 2 0 1\n"
                    "match 2 0 0 0\n"
                    "match 2 0 1 76\n"
                    "match 0 0 0 5\n"
                    "match 0 0 1 125\n"
                    "attach 0 0 0\n"
                    "settle\n"),
            "");
}

TEST(ModelRegression, RepeatedMatchOfAMatchAllBesideTheSameListGivesNoRuleTwice) {
  EXPECT_EQ(trialOf("rule 0 0 0 0\n"
                    "matchType 1 0 1\n"
                    "match 1 0 0 0\n"
                    "match 1 0 1 0\n"
                    "match 0 0 1 5\n"
                    "attach 0 0 0\n"
                    "settle\n"),
            "");
}

TEST(ModelRegression, ErrorInAnOptionThatIsNotAllowedRefusesTheOthers) {
  EXPECT_EQ(trialOf("allowOption 0 3\n"
                    "attach 0 0 0\n"
                    "matchType 1 0 1\n"
                    "match 1 0 0 80275169\n"
                    "match 1 0 1 790\n"
                    "settle\n"
                    "rule 0 3 0 0\n"
                    "settle\n"),
            "");
}

}  // namespace Model
