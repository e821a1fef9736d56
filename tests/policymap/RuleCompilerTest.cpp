// SPDX-License-Identifier: Apache-2.0
#include <PolicyMap/RuleCompiler.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace policymap {
namespace {

using PolicyMap::ClassMapMatch;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::ClassMapMatchType;
using PolicyMap::ClassMapSubConfig;
using PolicyMap::compileClass;
using PolicyMap::CompiledClass;
using PolicyMap::RuleLimits;
using testing::ElementsAre;

class Compiling : public testing::Test {
 protected:
  Kor::Ptr<PolicyMap::ClassMapTypeConfig> classes = Kor::make<PolicyMap::ClassMapTypeConfig>();
  Kor::Ptr<Acl::Config> acls = Kor::make<Acl::Config>();
  RuleLimits limits;

  Kor::Ptr<ClassMapSubConfig> classMap(std::string const& name) const {
    Kor::Name const key{Kor::String8(name)};
    auto const config = classes->classMapConfigIs(key);
    if (!config->currentSubConfig()) {
      config->currentSubConfigIs(Kor::make<ClassMapSubConfig>(key));
    }
    return config->currentSubConfig();
  }
  Kor::Ptr<ClassMapSubConfig> matchAll(std::string const& name) const {
    auto const config = classMap(name);
    config->matchTypeIs(ClassMapMatchType::matchAll);
    return config;
  }
  void nest(std::string const& name, std::uint32_t place, std::string const& nested) const {
    classMap(name)->matchIs(place, ClassMapMatch::classMap(Kor::String8(nested)));
  }
  // A list of `rules` rules, each with an address block or a port of its own.
  void list(char const* name, std::uint32_t rules, bool byPort = false) const {
    auto const config = acls->ipAclIs(Kor::Name(name));
    for (std::uint32_t i = 0; i < rules; ++i) {
      Acl::IpRuleConfig rule;
      if (byPort) {
        rule.dstPortIs(Acl::PortMatch::eq(i));
      } else {
        rule.sourceIs(Acl::IpAddressMatch(i << 8, 0xffffff00U));
      }
      config->ruleIs(i, rule);
    }
  }
  void match(std::string const& name, std::uint32_t place, char const* acl) const {
    classMap(name)->matchIs(place, ClassMapMatch::acl(ClassMapMatchOption::ipv4, acl));
  }
  [[nodiscard]] CompiledClass compiled(char const* name = "c") const {
    return compileClass(Kor::Ptr<ClassMapSubConfig const>(classMap(name)),
                        Kor::Ptr<PolicyMap::ClassMapTypeConfig const>(classes),
                        Kor::Ptr<Acl::Config const>(acls), limits);
  }
  [[nodiscard]] std::size_t rulesOf(CompiledClass const& result) const {
    std::size_t count = 0;
    result.rules[ClassMapMatchOption::ipv4]->forEach([&](auto const&) {
      ++count;
      return true;
    });
    return count;
  }
};

TEST_F(Compiling, ARuleIsFoundByItsKeyAndByNoOther) {
  Acl::IpRuleConfig own;
  own.protocolIs(47);
  list("web", 2);
  classMap("c")->matchIs(9, ClassMapMatch::rule(own));
  match("c", 10, "web");
  auto const rules = compiled().rules[ClassMapMatchOption::ipv4];
  auto const find = [&](char const* name, std::uint32_t seqno) {
    return rules->find<Acl::IpRuleConfig>({"c", name, seqno, ClassMapMatchOption::ipv4});
  };
  ASSERT_NE(find("", 9), nullptr);
  EXPECT_EQ(*find("", 9), own);
  ASSERT_NE(find("web", 1), nullptr);
  EXPECT_EQ(*find("web", 1), acls->ipAcl("web")->rule(1));
  EXPECT_EQ(find("", 10), nullptr);
  EXPECT_EQ(find("web", 2), nullptr);
  EXPECT_EQ(find("dmz", 1), nullptr);
  EXPECT_EQ(rules->find<Acl::MacRuleConfig>({"c", "web", 1, ClassMapMatchOption::mac}), nullptr);
}

TEST_F(Compiling, AWalkThroughTheRulesEndsWhenTheVisitorHasEnough) {
  list("web", 3);
  match("c", 1, "web");
  classMap("c")->matchIs(2, ClassMapMatch::rule(Acl::IpRuleConfig()));
  classMap("c")->matchIs(3, ClassMapMatch::rule(Acl::IpRuleConfig()));
  auto const result = compiled();
  EXPECT_EQ(rulesOf(result), 5U);
  for (int const enough : {1, 3, 4, 5}) {
    int visits = 0;
    result.rules[ClassMapMatchOption::ipv4]->forEach(
        [&](auto const&) { return ++visits < enough; });
    EXPECT_EQ(visits, enough);
  }
}

TEST_F(Compiling, WhatAClassNeedsIsListedOnceWhetherOrNotItIsThere) {
  list("web", 1);
  nest("c", 1, "inner");
  nest("c", 2, "absent");
  match("c", 3, "web");
  match("inner", 1, "dmz");
  nest("inner", 2, "absent");
  match("inner", 3, "web");
  auto const result = compiled();
  EXPECT_THAT(result.missing, ElementsAre("ip access-list dmz", "class-map absent"));
  EXPECT_THAT(result.ipAcls, ElementsAre("dmz", "web"));
  EXPECT_THAT(result.classMaps, ElementsAre("inner", "absent"));
  EXPECT_EQ(result.error, "");
}

TEST_F(Compiling, AMatchAllMeetsOnEveryOption) {
  Acl::IpRuleConfig ip;
  Acl::Ip6RuleConfig ip6;
  ip.protocolIs(6);
  ip6.protocolIs(6);
  Acl::MacRuleConfig mac;
  mac.vlanIs(7);
  auto const rulesOfBoth = [&](ClassMapMatch const& one, ClassMapMatch const& other) {
    matchAll("c")->matchIs(1, one);
    classMap("c")->matchIs(2, other);
    auto const result = compiled();
    std::vector<std::string> found;
    for (PolicyMap::ClassRules::PtrConst const& rules : result.rules) {
      std::string texts;
      rules->forEach([&](auto const& rule) {
        texts += rule.rule.describe();
        return true;
      });
      found.push_back(texts);
    }
    return found;
  };
  EXPECT_THAT(rulesOfBoth(ClassMapMatch::rule(ip), ClassMapMatch::rule(Acl::IpRuleConfig())),
              ElementsAre("permit tcp any any", "", "", ""));
  EXPECT_THAT(rulesOfBoth(ClassMapMatch::rule(ip6), ClassMapMatch::rule(Acl::Ip6RuleConfig())),
              ElementsAre("", "permit tcp any any", "", ""));
  EXPECT_THAT(rulesOfBoth(ClassMapMatch::rule(mac), ClassMapMatch::rule(Acl::MacRuleConfig())),
              ElementsAre("", "", "permit any any vlan 7", ""));
  auto const mpls = ClassMapMatchOption::mpls;
  EXPECT_THAT(
      rulesOfBoth(ClassMapMatch::rule(mac, mpls), ClassMapMatch::rule(Acl::MacRuleConfig(), mpls)),
      ElementsAre("", "", "", "permit any any vlan 7"));
}

TEST_F(Compiling, RulesOfIpAndOfMacAreRefusedInAMatchAll) {
  auto const mpls = ClassMapMatchOption::mpls;
  for (ClassMapMatch const& ip :
       {ClassMapMatch::rule(Acl::IpRuleConfig()), ClassMapMatch::rule(Acl::Ip6RuleConfig())}) {
    for (ClassMapMatch const& mac : {ClassMapMatch::rule(Acl::MacRuleConfig()),
                                     ClassMapMatch::rule(Acl::MacRuleConfig(), mpls)}) {
      matchAll("c")->matchIs(1, ip);
      classMap("c")->matchIs(2, mac);
      EXPECT_EQ(compiled().error,
                "class-map c: match-all over IP and MAC matches cannot be programmed");
    }
  }
}

TEST_F(Compiling, AMatchAllOfOneListIsThatListWhichCountsOnce) {
  list("web", 2);
  matchAll("inner");
  match("inner", 5, "web");
  match("c", 1, "web");
  nest("c", 2, "inner");
  EXPECT_EQ(rulesOf(compiled()), 2U);
}

TEST_F(Compiling, ARuleThatMatchesNothingIsNoObstacle) {
  Acl::IpRuleConfig nothing;
  nothing.dstPortIs(Acl::PortMatch::lt(0));
  nothing.ttlIs(Acl::TtlMatch::neq(5));
  Acl::IpRuleConfig other;
  other.ttlIs(Acl::TtlMatch::neq(7));
  Acl::IpRuleConfig something;
  something.protocolIs(47);
  acls->ipAclIs("a")->ruleIs(10, nothing);
  acls->ipAclIs("a")->ruleIs(20, something);
  acls->ipAclIs("b")->ruleIs(10, other);
  matchAll("c");
  match("c", 1, "a");
  match("c", 2, "b");
  EXPECT_EQ(compiled().error, "");
  EXPECT_EQ(rulesOf(compiled()), 1U);
  classMap("c")->matchIs(1, ClassMapMatch::rule(nothing));
  EXPECT_EQ(compiled().error, "");
}

// A long path of nested class-maps is reported with its first and last members only.
TEST_F(Compiling, AClassMapThatMatchesItselfIsToldWithBothEndsOfThePath) {
  auto const circle = [this](int length) {
    classes = Kor::make<PolicyMap::ClassMapTypeConfig>();
    for (int i = 0; i < length; ++i) {
      nest(i == 0 ? "c" : "n" + std::to_string(i), 1,
           i + 1 == length ? "c" : "n" + std::to_string(i + 1));
    }
    return compiled().error;
  };
  std::string const start = "class-map c matches itself: c > n1 > n2 > n3 > n4 > n5 > n6 > n7 > ";
  EXPECT_EQ(circle(1), "class-map c matches itself: c > c");
  EXPECT_EQ(circle(16), start + "n8 > n9 > n10 > n11 > n12 > n13 > n14 > n15 > c");
  EXPECT_EQ(circle(17), start + "... > n9 > n10 > n11 > n12 > n13 > n14 > n15 > n16 > c");
  EXPECT_EQ(circle(99), start + "... > n91 > n92 > n93 > n94 > n95 > n96 > n97 > n98 > c");
}

// limits

TEST_F(Compiling, TheUsualLimits) {
  EXPECT_EQ(limits.composedRules, 1000000U);
  EXPECT_EQ(limits.pairs, 50000000U);
  EXPECT_EQ(limits.repeatedWalks, 100000U);
}

TEST_F(Compiling, AMatchAllMakesAsManyRulesAsTheLimitAndNoMore) {
  limits.composedRules = 12;
  list("networks", 4);
  list("ports", 3, true);
  matchAll("c");
  match("c", 1, "networks");
  match("c", 2, "ports");
  auto const most = compiled();
  EXPECT_EQ(most.error, "");
  EXPECT_EQ(rulesOf(most), 12U);
  limits.composedRules = 11;
  EXPECT_EQ(compiled().error, "class-map c: match-all makes more than 11 rules");
}

TEST_F(Compiling, TheMatchAllsOfAClassCompareAsManyPairsAsTheLimitAndNoMore) {
  limits.pairs = 14;
  list("networks", 4);
  list("ports", 3, true);
  list("few", 1);
  list("two", 2, true);
  matchAll("twelve");
  match("twelve", 1, "networks");
  match("twelve", 2, "ports");
  matchAll("two");
  match("two", 1, "few");
  match("two", 2, "two");
  nest("c", 1, "twelve");
  nest("c", 2, "two");
  EXPECT_EQ(compiled().error, "");
  limits.pairs = 13;
  EXPECT_EQ(compiled().error, "class-map c: match-all compares more than 13 pairs of rules");
  EXPECT_EQ(compiled("twelve").error, "");
}

// "first" denies all before it permits all, so each rule of "ports" is composed with its deny.
TEST_F(Compiling, AMatchAnyMakesAsManyRulesAndComparesAsManyPairsAsTheLimitsAndNoMore) {
  Acl::IpRuleConfig deny;
  deny.permitIs(false);
  auto const first = acls->ipAclIs("first");
  first->ruleIs(1, deny);
  first->ruleIs(2, Acl::IpRuleConfig());
  list("ports", 3, true);
  match("c", 1, "first");
  match("c", 2, "ports");
  limits.composedRules = 3;
  EXPECT_EQ(compiled().error, "");
  EXPECT_EQ(rulesOf(compiled()), 8U);
  limits.composedRules = 2;
  EXPECT_EQ(compiled().error, "class-map c: match-any makes more than 2 rules");
  limits.composedRules = 3;
  limits.pairs = 7;  // with the later list to see whether it permits, its own rest, and to compose
  EXPECT_EQ(compiled().error, "");
  limits.pairs = 6;
  EXPECT_EQ(compiled().error, "class-map c: match-any compares more than 6 pairs of rules");
}

TEST_F(Compiling, DisjointListsOfManyRulesAreRefusedInTime) {
  list("networks", 10000);
  list("others", 5001);
  matchAll("c");
  match("c", 1, "networks");
  match("c", 2, "others");
  EXPECT_EQ(compiled().error, "class-map c: match-all compares more than 50000000 pairs of rules");
}

TEST_F(Compiling, TenThousandRulesMeetAThousand) {
  list("networks", 10000);
  list("others", 1000);
  matchAll("c");
  match("c", 1, "networks");
  match("c", 2, "others");
  auto const result = compiled();
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(rulesOf(result), 1000U);
}

TEST_F(Compiling, TheFirstErrorIsTold) {
  limits.composedRules = 3;
  list("networks", 2);
  list("ports", 2, true);
  for (std::uint32_t place = 1; place <= 3; ++place) {
    std::string const name = "nested" + std::to_string(place);
    matchAll(name);
    match(name, 1, "networks");
    match(name, 2, "ports");
    nest("c", place, name);
  }
  EXPECT_EQ(compiled().error, "class-map nested1: match-all makes more than 3 rules");
}

TEST_F(Compiling, OfTwoOptionsTheErrorOfTheFirstIsTold) {
  limits.composedRules = 0;
  matchAll("c");
  for (std::uint32_t place = 1; place <= 2; ++place) {
    Acl::IpRuleConfig ip;
    ip.ttlIs(Acl::TtlMatch::neq(place));
    std::string const name = "n" + std::to_string(place);
    classMap(name)->matchIs(1, ClassMapMatch::rule(ip));
    classMap(name)->matchIs(2, ClassMapMatch::rule(Acl::Ip6RuleConfig()));
    nest("c", place, name);
  }
  EXPECT_EQ(compiled().error, "class-map c: the TTL matches of rules 1 and 1 cannot be combined");
}

// Each operand of the match-all nests "leaf": all but the first repeat the walk.
TEST_F(Compiling, ClassMapsAreWalkedAgainAsOftenAsTheLimitAndNoMore) {
  matchAll("c");
  for (std::uint32_t i = 0; i < 6; ++i) {
    std::string const name = "operand" + std::to_string(i);
    nest("c", i, name);
    nest(name, 1, "leaf");
  }
  classMap("leaf");
  limits.repeatedWalks = 5;
  EXPECT_EQ(compiled().error, "");
  limits.repeatedWalks = 4;
  EXPECT_EQ(compiled().error, "class-map c: nested class-maps branch too often");
}

}  // namespace
}  // namespace policymap
