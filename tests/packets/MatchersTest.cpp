// SPDX-License-Identifier: Apache-2.0
#include "packets/Matchers.h"

#include "packets/Labs.h"

namespace PolicyMapPackets::test {
namespace {

using PolicyMapTestKit::Action1;
using PolicyMapTestKit::Action2;
using testing::HasSubstr;
using testing::Not;

template <class Matcher>
std::string explanationOf(Lab const& lab, Matcher const& matcher) {
  testing::StringMatchResultListener listener;
  EXPECT_FALSE(testing::Matcher<Lab const&>(matcher).MatchAndExplain(lab, &listener));
  return listener.str();
}

TEST(ForwardsMatcher, ComparesClassAndActions) {
  Lab lab;
  lab.load(policy);
  EXPECT_THAT(lab, Forwards(webPacket, Class("web")));
  EXPECT_THAT(lab, Forwards(webPacket, Class("web"), Action1(1), Action2(0)));
  EXPECT_THAT(lab, Not(Forwards(webPacket, Class("web"), Action1(2))));
  EXPECT_THAT(lab, Not(Forwards(webPacket, Class("rest"))));
  EXPECT_THAT(lab, Not(Forwards(webPacket, NoClass())));
  EXPECT_THAT(lab, Forwards("udp 10.0.0.1 > 192.0.2.53:53", NoClass()));
  EXPECT_THROW(Forwards("no packet", NoClass()), InputError);
}

TEST(ForwardsMatcher, ShowsTheWay) {
  Lab lab;
  EXPECT_EQ(explanationOf(lab, Forwards(webPacket, Class("web"))),
            "no attached policy has rules for such packets");
  lab.load(policy);
  EXPECT_THAT(explanationOf(lab, Forwards(webPacket, Class("rest"), Action1(2))),
              HasSubstr("\nedge input ipv4      web  web 10  permit tcp any any eq 80"));
  EXPECT_EQ(testing::DescribeMatcher<Lab const&>(Forwards(webPacket, Class("rest"), Action1(2))),
            "forwards tcp 10.0.0.1:4000 > 192.0.2.80:80 by class rest, and has action1 that is "
            "equal to 2");
}

TEST(DoesWhatIsConfiguredMatcher, ShowsThePacketThatFaresOtherwise) {
  Lab lab;
  lab.load(policy);
  EXPECT_THAT(lab, DoesWhatIsConfigured());
  dataOf(lab)->ruleAction1Is(keyOf("web", 10), 7);
  EXPECT_THAT(lab, Not(DoesWhatIsConfigured()));
  EXPECT_THAT(explanationOf(lab, DoesWhatIsConfigured()),
              HasSubstr("tcp 0.0.0.0 > 0.0.0.0:80, as every tcp any any eq 80"));
  EXPECT_THAT(explanationOf(lab, DoesWhatIsConfigured({.budget = 0})), HasSubstr("undecided"));
}

TEST(Treats, ComparesTwoTimes) {
  Lab lab;
  lab.load(policy);
  std::vector<Subject> const before = subjectsOf(lab);
  EXPECT_TRUE(Treats(before).like(lab));
  lab.load("ip access-list web\n no 10\n");
  EXPECT_TRUE(Treats(before).like(lab).exceptFor("tcp any any eq 80"));
  EXPECT_TRUE(Treats(lab).like(before).exceptFor("tcp any any lt 81").exceptFor("udp any any"));
  testing::AssertionResult const result = Treats(before).like(lab).exceptFor("udp any any");
  EXPECT_FALSE(result);
  EXPECT_THAT(result.message(),
              testing::HasSubstr("2^150 packets go from class web to class rest"));
}

}  // namespace
}  // namespace PolicyMapPackets::test
