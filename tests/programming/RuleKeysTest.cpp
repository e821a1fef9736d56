// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"

#include <gmock/gmock.h>

#include <ctime>
#include <limits>

namespace policymap {
namespace {

using PolicyMap::ClassMapMatch;
using PolicyMap::ClassMapMatchType;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t highest = std::numeric_limits<std::uint32_t>::max();

// Class "c" of policy "pm". Rules are identified by list name, number and destination port.
class RuleKeys : public testing::Test {
 protected:
  PolicyBench bench;

  void SetUp() override {
    bench.policy("pm")->classPrioIs(Kor::Name("c"), 10);
    bench.attach("pm", "Ethernet1");
    bench.start();
  }

  static Acl::IpRuleConfig toPort(std::int64_t port) {
    Acl::IpRuleConfig rule;
    rule.dstPortIs(Acl::PortMatch::eq(port));
    return rule;
  }
  static Acl::IpRuleConfig toNetwork(char const* destination) {
    Acl::IpRuleConfig rule;
    rule.destinationIs(Acl::IpAddressMatch(std::string_view(destination)));
    return rule;
  }

  void list(char const* name, std::uint32_t seqno, Acl::IpRuleConfig const& rule) const {
    bench.acls->ipAclIs(Kor::Name(name))->ruleIs(seqno, rule);
  }
  void own(char const* classMap, std::uint32_t place, Acl::IpRuleConfig const& rule) const {
    bench.classMap(classMap)->matchIs(place, ClassMapMatch::rule(rule));
  }
  void nest(char const* classMap, std::uint32_t place, char const* nested) const {
    bench.classMap(classMap)->matchIs(place, ClassMapMatch::classMap(nested));
  }
  // Configures a match-all class-map over these lists, nested in "c" at `place`.
  void matchAll(char const* name, std::uint32_t place,
                std::vector<char const*> const& lists) const {
    bench.classMap(name)->matchTypeIs(ClassMapMatchType::matchAll);
    std::uint32_t next = 0;
    for (char const* const each : lists) {
      bench.classMatches(name, each, ++next);
    }
    nest("c", place, name);
  }

  // The added rules, each with its key and match, without the text that is common to all lines.
  std::vector<std::string> rules() {
    std::string const start = "addRule pm/input/ipv4 c:";
    std::vector<std::string> found;
    for (std::string const& call : bench.settle()) {
      if (call.rfind(start, 0) == 0) {
        found.push_back(call.substr(start.size()));
      }
    }
    return found;
  }
  std::string error() { return text(bench.status->policyMapStatus({"pm", "input"})->error()); }
};

// numbers of rules of class-maps

TEST_F(RuleKeys, ARuleOfAClassMapKeepsItsPlaceWhateverIsNestedBeforeIt) {
  own("inner", 50, toNetwork("10.0.0.0/8"));
  nest("c", 1, "inner");
  own("c", 2, toNetwork("11.0.0.0/8"));
  EXPECT_THAT(rules(), ElementsAre(":50 permit ip any 10.0.0.0/8", ":2 permit ip any 11.0.0.0/8"));
}

TEST_F(RuleKeys, OfTwoAtOnePlaceTheLaterTakesTheNextThatNoOtherHas) {
  own("one", 10, toNetwork("10.0.0.0/8"));
  own("two", 10, toNetwork("11.0.0.0/8"));
  own("three", 11, toNetwork("12.0.0.0/8"));
  nest("c", 1, "one");
  nest("c", 2, "two");
  nest("c", 3, "three");
  EXPECT_THAT(rules(), ElementsAre(":10 permit ip any 10.0.0.0/8", ":12 permit ip any 11.0.0.0/8",
                                   ":11 permit ip any 12.0.0.0/8"));
}

TEST_F(RuleKeys, EachOptionNumbersItsOwnRules) {
  own("inner", 2, toNetwork("10.0.0.0/8"));
  nest("c", 1, "inner");
  Acl::Ip6RuleConfig const six;
  bench.classMap("c")->matchIs(2, ClassMapMatch::rule(six));
  auto const calls = bench.settle();
  EXPECT_THAT(calls, testing::Contains("addRule pm/input/ipv4 c::2 permit ip any 10.0.0.0/8"));
  EXPECT_THAT(calls, testing::Contains("addRule pm/input/ipv6 c::2 " + six.describe()));
}

TEST_F(RuleKeys, ARuleThatMatchesNothingKeepsItsNumber) {
  Acl::IpRuleConfig nothing;
  nothing.dstPortIs(Acl::PortMatch::lt(0));
  own("one", 10, nothing);
  own("two", 10, toNetwork("11.0.0.0/8"));
  nest("c", 1, "one");
  nest("c", 2, "two");
  EXPECT_THAT(rules(), ElementsAre(":11 permit ip any 11.0.0.0/8"));
}

TEST_F(RuleKeys, AfterTheHighestPlaceComesTheNextBeforeIt) {
  own("one", highest, toNetwork("10.0.0.0/8"));
  own("two", highest, toNetwork("11.0.0.0/8"));
  own("three", highest, toNetwork("12.0.0.0/8"));
  own("four", highest - 1, toNetwork("13.0.0.0/8"));
  nest("c", 1, "one");
  nest("c", 2, "two");
  nest("c", 3, "three");
  nest("c", 4, "four");
  EXPECT_THAT(rules(), ElementsAre(":4294967295 permit ip any 10.0.0.0/8",
                                   ":4294967293 permit ip any 11.0.0.0/8",
                                   ":4294967292 permit ip any 12.0.0.0/8",
                                   ":4294967294 permit ip any 13.0.0.0/8"));
}

TEST_F(RuleKeys, RulesAroundListsAreFoundByTheirKeys) {
  own("c", 1, toNetwork("10.0.0.0/8"));
  list("web", 10, toNetwork("11.0.0.0/8"));
  bench.classMatches("c", "web", 2);
  own("c", 3, toNetwork("12.0.0.0/8"));
  bench.acls->ipAclIs("empty");
  bench.classMatches("c", "empty", 4);
  own("c", 5, toNetwork("13.0.0.0/8"));
  EXPECT_THAT(rules(), ElementsAre(":1 permit ip any 10.0.0.0/8", "web:10 permit ip any 11.0.0.0/8",
                                   ":3 permit ip any 12.0.0.0/8", ":5 permit ip any 13.0.0.0/8"));
}

TEST_F(RuleKeys, AnEmptyListBetweenRulesOfTheClassMapIsNoChange) {
  own("c", 1, toNetwork("10.0.0.0/8"));
  own("c", 3, toNetwork("12.0.0.0/8"));
  bench.settle();
  bench.acls->ipAclIs("empty");
  bench.classMatches("c", "empty", 2);
  EXPECT_THAT(bench.settle(), IsEmpty());
  list("empty", 10, toNetwork("11.0.0.0/8"));
  EXPECT_THAT(rules(),
              ElementsAre(":1 permit ip any 10.0.0.0/8", "empty:10 permit ip any 11.0.0.0/8",
                          ":3 permit ip any 12.0.0.0/8"));
}

// names of intersections

TEST_F(RuleKeys, AListNamedLikeAnIntersectionKeepsItsKeyAndTheIntersectionTakesTheNextNumber) {
  list("web", 10, toNetwork("10.0.0.0/8"));
  list("dmz", 30, toNetwork("10.1.0.0/16"));
  list("web & dmz:30", 10, toNetwork("11.0.0.0/8"));
  list("web & dmz:30", 11, toNetwork("12.0.0.0/8"));
  matchAll("both", 1, {"web", "dmz"});
  bench.classMatches("c", "web & dmz:30", 2);
  EXPECT_THAT(rules(), ElementsAre("web & dmz:30:12 permit ip any 10.1.0.0/16",
                                   "web & dmz:30:10 permit ip any 11.0.0.0/8",
                                   "web & dmz:30:11 permit ip any 12.0.0.0/8"));
}

TEST_F(RuleKeys, AListNamedLikeAnIntersectionTakesOnlyTheNumbersThatItHas) {
  list("web", 10, toNetwork("10.0.0.0/8"));
  list("dmz", 30, toNetwork("10.1.0.0/16"));
  list("web & dmz:30", 20, toNetwork("11.0.0.0/8"));
  bench.classMatches("c", "web & dmz:30", 1);
  matchAll("both", 2, {"web", "dmz"});
  EXPECT_THAT(rules(), ElementsAre("web & dmz:30:20 permit ip any 11.0.0.0/8",
                                   "web & dmz:30:10 permit ip any 10.1.0.0/16"));
}

TEST_F(RuleKeys, AListNamedLikeAnIntersectionIsFollowedByItsNumberAsAWhole) {
  list("x", 1, toNetwork("10.0.0.0/8"));
  list("a & b:10", 7, toNetwork("10.1.0.0/16"));
  matchAll("both", 1, {"x", "a & b:10"});
  EXPECT_THAT(rules(), ElementsAre("x & a & b:10:7:1 permit ip any 10.1.0.0/16"));
}

TEST_F(RuleKeys, DifferentListsWhoseNamesJoinToOneGetDifferentNumbers) {
  list("a", 7, toNetwork("10.0.0.0/8"));
  list("b", 10, toNetwork("10.1.0.0/16"));
  list("d", 5, toNetwork("any"));
  list("a & b:10", 7, toNetwork("10.0.0.0/7"));
  matchAll("three", 1, {"a", "b", "d"});
  matchAll("two", 2, {"a & b:10", "d"});
  EXPECT_THAT(rules(), ElementsAre("a & b:10 & d:5:7 permit ip any 10.1.0.0/16",
                                   "a & b:10 & d:5:8 permit ip any 10.0.0.0/7"));
}

TEST_F(RuleKeys, NamesWithColonsAndAmpersandsJoinLikeOthers) {
  list("a:1", 10, toNetwork("10.0.0.0/8"));
  list("&", 20, toNetwork("10.1.0.0/16"));
  list("b&c", 30, toNetwork("10.1.1.0/24"));
  matchAll("all", 1, {"a:1", "&", "b&c"});
  EXPECT_THAT(rules(), ElementsAre("a:1 & &:20 & b&c:30:10 permit ip any 10.1.1.0/24"));
}

TEST_F(RuleKeys, RulesOfClassMapsInIntersectionsHaveNoListName) {
  list("web", 10, toNetwork("10.0.0.0/8"));
  bench.classMap("all")->matchTypeIs(ClassMapMatchType::matchAll);
  own("all", 1, toNetwork("10.0.0.0/7"));
  bench.classMatches("all", "web", 2);
  own("all", 3, toNetwork("10.1.0.0/16"));
  nest("c", 1, "all");
  EXPECT_THAT(rules(), ElementsAre(" & web:10 & :3:1 permit ip any 10.1.0.0/16"));
}

TEST_F(RuleKeys, ANestedIntersectionIsFollowedByAllItsNumbers) {
  list("a", 1, toNetwork("10.0.0.0/8"));
  list("b & x", 2, toNetwork("10.0.0.0/9"));
  list("d", 3, toNetwork("10.1.0.0/16"));
  bench.classMap("c")->matchTypeIs(ClassMapMatchType::matchAll);
  bench.classMatches("c", "a", 1);
  list("e", 4, toNetwork("10.1.0.0/17"));
  matchAll("inner", 2, {"b & x", "d", "e"});
  EXPECT_THAT(rules(), ElementsAre("a & b & x:2 & d:3 & e:4:1 permit ip any 10.1.0.0/17"));
}

TEST_F(RuleKeys, IntersectionsWithRulesAtEqualPlacesGetDifferentNumbers) {
  list("web", highest, toNetwork("10.0.0.0/8"));
  list("web", 4, toNetwork("11.0.0.0/8"));
  for (char const* const name : {"one", "two"}) {
    bench.classMap(name)->matchTypeIs(ClassMapMatchType::matchAll);
    bench.classMatches(name, "web", 1);
  }
  own("one", 2, toPort(80));
  own("two", 2, toPort(443));
  nest("c", 1, "one");
  nest("c", 2, "two");
  EXPECT_THAT(rules(),
              ElementsAre("web & :2:4 *>80-80 permit ip any 11.0.0.0/8 eq 80",
                          "web & :2:4294967295 *>80-80 permit ip any 10.0.0.0/8 eq 80",
                          "web & :2:5 *>443-443 permit ip any 11.0.0.0/8 eq 443",
                          "web & :2:4294967294 *>443-443 permit ip any 10.0.0.0/8 eq 443"));
}

TEST_F(RuleKeys, AnIntersectionThatIsThereAlreadyAddsNothing) {
  list("web", 10, toNetwork("10.0.0.0/8"));
  list("web", 11, toNetwork("10.0.0.0/8"));
  for (char const* const name : {"one", "two", "three"}) {
    bench.classMap(name)->matchTypeIs(ClassMapMatchType::matchAll);
    bench.classMatches(name, "web", 1);
  }
  own("one", 2, toPort(80));
  own("two", 2, toPort(443));
  own("three", 2, toPort(80));
  nest("c", 1, "one");
  nest("c", 2, "two");
  nest("c", 3, "three");
  EXPECT_THAT(rules(), ElementsAre("web & :2:10 *>80-80 permit ip any 10.0.0.0/8 eq 80",
                                   "web & :2:11 *>80-80 permit ip any 10.0.0.0/8 eq 80",
                                   "web & :2:12 *>443-443 permit ip any 10.0.0.0/8 eq 443",
                                   "web & :2:13 *>443-443 permit ip any 10.0.0.0/8 eq 443"));
}

// cost

double processorSeconds() {
  return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

// An implementation that probes numbers one by one, or searches all matches for each, is far
// slower.
TEST_F(RuleKeys, ManyIntersectionsWithRulesAtEqualPlacesAreNumberedInTime) {
  constexpr std::uint32_t many = 20000;
  list("web", 10, toNetwork("10.0.0.0/8"));
  for (std::uint32_t i = 0; i < many; ++i) {
    std::string const name = "nested" + std::to_string(i);
    bench.classMap(name.c_str())->matchTypeIs(ClassMapMatchType::matchAll);
    bench.classMatches(name.c_str(), "web", 1);
    own(name.c_str(), 2, toPort(i));
    nest("c", i, name.c_str());
  }
  double const before = processorSeconds();
  auto const found = rules();
  EXPECT_LT(processorSeconds() - before, 15);
  ASSERT_EQ(found.size(), many);
  EXPECT_EQ(found.front(), "web & :2:10 *>0-0 permit ip any 10.0.0.0/8 eq 0");
  EXPECT_EQ(found.back(), "web & :2:20009 *>19999-19999 permit ip any 10.0.0.0/8 eq 19999");
}

TEST_F(RuleKeys, AMatchAllWithManyMatchesIsPutTogetherInTime) {
  constexpr std::uint32_t many = 60000;
  list("web", 10, toNetwork("10.0.0.0/8"));
  bench.classMap("c")->matchTypeIs(ClassMapMatchType::matchAll);
  bench.classMatches("c", "web", 0);
  for (std::uint32_t i = 1; i <= many; ++i) {
    own("c", i, toPort(i));
  }
  double const before = processorSeconds();
  EXPECT_THAT(rules(), IsEmpty());
  EXPECT_LT(processorSeconds() - before, 15);
  EXPECT_EQ(error(), "");
}

}  // namespace
}  // namespace policymap
