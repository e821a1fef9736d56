// SPDX-License-Identifier: Apache-2.0
#include <Acl/AclDiff.h>
#include <Acl/Config.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

using Acl::AclDiff;
using Acl::AclRules;
using Acl::Config;
using Acl::IpRuleConfig;
using testing::ElementsAre;

IpRuleConfig rule(std::int64_t protocol) {
  IpRuleConfig rule;
  rule.protocolIs(protocol);
  return rule;
}

using RulesPtr = AclRules<IpRuleConfig>::PtrConst;

RulesPtr rules(std::vector<std::pair<std::uint32_t, IpRuleConfig>> entries) {
  return Kor::make<AclRules<IpRuleConfig> const>(std::move(entries));
}

TEST(AclDiff, TellsWhatWasAddedRemovedAndChanged) {
  AclDiff const diff;
  auto const before = rules({{10, rule(1)}, {20, rule(2)}, {30, rule(3)}, {50, rule(5)}});
  auto const after = rules({{5, rule(9)}, {10, rule(1)}, {20, rule(7)}, {40, rule(4)}, {60, {}}});
  auto const change = diff.changes(before, after);
  EXPECT_THAT(change.added, ElementsAre(5U, 40U, 60U));
  EXPECT_THAT(change.removed, ElementsAre(30U, 50U));
  EXPECT_THAT(change.changed, ElementsAre(20U));
  EXPECT_FALSE(!change);
  EXPECT_FALSE(diff.sameEffect(before, after));
}

TEST(AclDiff, EqualVersionsAreTheSameWhateverTheObjects) {
  AclDiff const diff;
  auto const before = rules({{10, rule(1)}, {20, rule(2)}});
  auto const after = rules({{20, rule(2)}, {10, rule(1)}});
  EXPECT_TRUE(diff.sameEffect(before, after));
  EXPECT_TRUE(diff.sameEffect(before, before));
  EXPECT_TRUE(!diff.changes(before, after));
}

TEST(AclDiff, TheSameRulesUnderOtherNumbersAreAChange) {
  AclDiff const diff;
  EXPECT_FALSE(diff.sameEffect(rules({{10, rule(1)}}), rules({{11, rule(1)}})));
}

TEST(AclDiff, RulesThatMatchNothingMakeNoDifference) {
  AclDiff const diff;
  IpRuleConfig none = rule(6);
  none.dstPortIs(Acl::PortMatch::lt(0));
  IpRuleConfig nothing = rule(17);
  nothing.ttlIs(Acl::TtlMatch::gt(255));
  auto const plain = rules({{10, rule(1)}, {20, rule(2)}});
  EXPECT_TRUE(diff.sameEffect(plain, rules({{5, none}, {10, rule(1)}, {15, none}, {20, rule(2)}})));
  EXPECT_TRUE(diff.sameEffect(rules({{10, rule(1)}, {30, none}, {40, none}}),
                              rules({{10, rule(1)}, {30, nothing}})));
  EXPECT_TRUE(diff.sameEffect(rules({{1, none}}), RulesPtr()));
  EXPECT_FALSE(diff.sameEffect(plain, rules({{10, none}, {20, rule(2)}})));
  EXPECT_FALSE(diff.sameEffect(plain, rules({{10, rule(1)}, {20, none}})));
  EXPECT_THAT(diff.changes(plain, rules({{10, rule(1)}, {20, none}})).changed, ElementsAre(20U))
      << "the list itself has changed";
}

TEST(AclDiff, NoVersionIsAnEmptyList) {
  AclDiff const diff;
  auto const some = rules({{10, rule(1)}});
  EXPECT_THAT(diff.changes(RulesPtr(), some).added, ElementsAre(10U));
  EXPECT_THAT(diff.changes(some, RulesPtr()).removed, ElementsAre(10U));
  EXPECT_TRUE(diff.sameEffect(RulesPtr(), RulesPtr()));
  EXPECT_TRUE(diff.sameEffect(RulesPtr(), rules({})));
  EXPECT_FALSE(diff.sameEffect(RulesPtr(), some));
}

TEST(AclDiff, WorksOnAllKindsOfLists) {
  AclDiff const diff;
  auto const config = Kor::make<Config>();
  auto const ip6 = config->ip6AclIs("a");
  auto const mac = config->macAclIs("a");
  auto const ip6Before = ip6->rulesBySeq();
  auto const macBefore = mac->rulesBySeq();
  ip6->ruleIs(10, {});
  mac->ruleIs(20, {});
  EXPECT_THAT(diff.changes(ip6Before, ip6->rulesBySeq()).added, ElementsAre(10U));
  EXPECT_THAT(diff.changes(macBefore, mac->rulesBySeq()).added, ElementsAre(20U));
}

TEST(AclDiff, IsACountedObject) {
  auto const diff = Kor::make<AclDiff>();
  EXPECT_EQ(diff->fwkType()->name(), "Acl::AclDiff");
  EXPECT_EQ(diff->fwkType()->level(), 1U);
}

}  // namespace
