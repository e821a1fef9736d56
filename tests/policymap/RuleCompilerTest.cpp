// SPDX-License-Identifier: Apache-2.0
#include <PolicyMap/RuleCompiler.h>

#include <gmock/gmock.h>

#include <string>

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
  // A list of so many rules; each takes another block of addresses or ports.
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
    result.rules[0]->forEach([&](auto const&) {
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
  auto const rules = compiled().rules[0];
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
    result.rules[0]->forEach([&](auto const&) { return ++visits < enough; });
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

// limits ------------------------------------------------------------------------------------------

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

// Class-map "c" nests "once"; each of the operands of its match-all nests "leaf" again.
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
