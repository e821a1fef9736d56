// SPDX-License-Identifier: Apache-2.0

// The collections of a record that show parts of the same rules.

#include "records/AclPolicyData.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <random>
#include <vector>

namespace {

using PolicyMap::AclRuleKey;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::SubRuleData;
using PolicyMapTest::AclPolicyData;
using PolicyMapTest::AclPolicyType;
using PolicyMapTest::RecordedRule;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

AclPolicyData::Ptr recordFor(ClassMapMatchOption option) {
  return Kor::make<AclPolicyData>(AclPolicyType(PolicyMap::PolicyMapSmKey("pm", "input"), option));
}

AclRuleKey recordedRule(std::uint32_t seqno,
                        ClassMapMatchOption option = ClassMapMatchOption::ipv4) {
  return {"web", "acl", seqno, option};
}

SubRuleData subRuleWith(std::uint32_t distinction) {
  SubRuleData data;
  data.distinctionIs(distinction);
  return data;
}

Acl::IpRuleConfig refused() {
  Acl::IpRuleConfig config;
  config.permitIs(false);
  return config;
}

class RecordedRules : public testing::Test {
 protected:
  RecordedRules() {
    for (std::uint32_t seqno = 1; seqno <= 20; ++seqno) {
      RecordedRule& added = data.ruleOf(recordedRule(seqno));
      data.recordMatch(added, refused());
      data.recordSubRule(added, subRuleWith(seqno));
      data.recordActions(added, {seqno, 2 * seqno, 3 * seqno});
    }
  }

  AclPolicyData::Ptr record = recordFor(ClassMapMatchOption::ipv4);
  AclPolicyData& data = *record;
};

TEST_F(RecordedRules, AreInEachCollection) {
  EXPECT_EQ(data.ruleMatchs(), 20U);
  EXPECT_EQ(data.ruleMatch(recordedRule(3)), refused());
  EXPECT_EQ(data.ruleAction1(recordedRule(3)), 3U);
  EXPECT_EQ(data.ruleAction2(recordedRule(3)), 6U);
  EXPECT_EQ(data.ruleAction3(recordedRule(3)), 9U);
  EXPECT_EQ(data.subRulesForKeys(), 20U);
  EXPECT_TRUE(data.subRulesForKey(recordedRule(3))->subRule(subRuleWith(3)));
  EXPECT_EQ(data.ruleMatch6s() + data.ruleMatchMacs(), 0U);
}

TEST_F(RecordedRules, LeaveOneCollectionAlone) {
  data.ruleAction2Del(recordedRule(3));
  EXPECT_EQ(data.ruleAction2s(), 19U);
  EXPECT_FALSE(data.korRuleAction2(recordedRule(3)));
  EXPECT_EQ(data.ruleAction1(recordedRule(3)), 3U);
  EXPECT_EQ(data.ruleMatchs(), 20U);
  data.ruleAction1DelAll();
  EXPECT_EQ(data.ruleAction1s(), 0U);
  EXPECT_EQ(data.ruleAction3s(), 20U);
  EXPECT_EQ(data.subRulesForKeys(), 20U);
}

TEST_F(RecordedRules, DefaultIsReadAfterAPartWasRemovedAndAddedAgain) {
  data.ruleAction2Del(recordedRule(3));
  EXPECT_EQ(data.ruleAction2(recordedRule(3)), 0U);
  data.ruleAction2Is(recordedRule(3), 7);
  EXPECT_EQ(data.ruleAction2(recordedRule(3)), 7U);
}

TEST_F(RecordedRules, ShareTheOrderOfAllCollections) {
  data.ruleAction2Del(recordedRule(3));
  std::vector<AclRuleKey> matches;
  for (auto const& entry : data.ruleMatchIteratorConst()) {
    if (!(entry.key() == recordedRule(3))) {
      matches.push_back(entry.key());
    }
  }
  std::vector<AclRuleKey> actions;
  for (auto const& entry : data.ruleAction2IteratorConst()) {
    actions.push_back(entry.key());
  }
  EXPECT_EQ(actions, matches);
}

TEST_F(RecordedRules, AreDrainedFromTheFrontOfOneCollection) {
  std::uint32_t left = 20;
  while (auto it = data.ruleAction1Iterator()) {
    it.del();
    EXPECT_EQ(data.ruleAction1s(), --left);
  }
  EXPECT_EQ(left, 0U);
  data.ruleAction1Is(recordedRule(5), 1);
  EXPECT_EQ(data.ruleAction1Iterator().key(), recordedRule(5));
  EXPECT_EQ(data.ruleMatchs(), 20U);
}

TEST_F(RecordedRules, EntriesHoldTheValueFromThenOn) {
  auto const entry = data.korRuleAction1(recordedRule(3));
  data.recordActions(data.ruleOf(recordedRule(3)), {8, 8, 8});
  EXPECT_EQ(entry->ruleAction1(), 8U);
  entry->valueIs(9);
  EXPECT_EQ(data.ruleAction1(recordedRule(3)), 9U);
  EXPECT_EQ(data.ruleAction2(recordedRule(3)), 8U);
  data.ruleAction1Del(recordedRule(3));
  data.ruleAction1Is(recordedRule(3), 4);
  EXPECT_EQ(entry->ruleAction1(), 9U);
  EXPECT_EQ(entry->references(), 1U);
  EXPECT_NE(data.korRuleAction1(recordedRule(3)), entry);
}

TEST_F(RecordedRules, AnIteratorKeepsThePartThatWasRemovedUnderIt) {
  auto it = data.ruleAction1Iterator();
  auto const matches = data.ruleMatchIterator();
  AclRuleKey const key = it.key();
  std::uint32_t const value = it.value();
  ASSERT_EQ(matches.key(), key);
  data.ruleAction1Del(key);
  data.ruleAction1Is(key, 77);
  data.ruleMatchIs(key, Acl::IpRuleConfig());
  EXPECT_EQ(it.value(), value);
  EXPECT_EQ(it.entry()->value(), value);
  EXPECT_EQ(matches.value(), Acl::IpRuleConfig());
  it.del();
  EXPECT_EQ(data.ruleAction1(key), 77U);
  std::uint32_t others = 0;
  for (++it; it; ++it) {
    ++others;
    EXPECT_FALSE(it.key() == key);
  }
  EXPECT_EQ(others, 19U);
}

TEST_F(RecordedRules, AnIteratorEndsAfterAllMembersOfItsCollectionWereRemoved) {
  auto it = data.ruleAction1Iterator();
  auto others = data.ruleAction2Iterator();
  std::uint32_t const value = it.value();
  data.ruleAction1DelAll();
  data.ruleAction1Is(recordedRule(5), 1);
  data.ruleAction1Is(recordedRule(6), 1);
  EXPECT_EQ(it.value(), value);
  EXPECT_FALSE(++it);
  EXPECT_TRUE(++others);
}

TEST_F(RecordedRules, AreRemovedAllAtOnceEvenUnderIterators) {
  auto it = data.ruleMatchIterator();
  auto subRules = data.subRulesForKeyIterator();
  AclRuleKey const key = it.key();
  auto const copy = it;
  data.rulesDelAll();
  EXPECT_EQ(it.key(), key);
  EXPECT_EQ(it.value(), refused());
  EXPECT_EQ(copy.value(), refused());
  EXPECT_EQ(subRules.value()->key(), key);
  EXPECT_EQ(data.ruleMatchs() + data.ruleAction1s() + data.subRulesForKeys(), 0U);
  EXPECT_FALSE(++it);
  EXPECT_FALSE(++subRules);
  record = nullptr;
  EXPECT_FALSE(copy);
}

TEST_F(RecordedRules, SubRulesAreVisitedWithoutAndWithTheirObjects) {
  data.recordSubRule(data.ruleOf(recordedRule(3)), subRuleWith(30));
  data.subRulesForKey(recordedRule(4))->subRuleDelAll();
  auto const of = [this](std::uint32_t seqno) {
    std::vector<std::uint32_t> seen;
    data.forEachSubRule(recordedRule(seqno),
                        [&seen](SubRuleData const& each) { seen.push_back(each.distinction()); });
    return seen;
  };
  EXPECT_THAT(of(2), ElementsAre(2));
  EXPECT_THAT(of(3), UnorderedElementsAre(3, 30));
  EXPECT_THAT(of(4), testing::IsEmpty());
  EXPECT_THAT(of(99), testing::IsEmpty());
  std::uint32_t all = 0;
  data.forEachSubRule([&all](SubRuleData const& /*each*/) { ++all; });
  EXPECT_EQ(all, 20U);
}

TEST(RecordedRule, OfAnotherOptionIsHeldLikeAnyOther) {
  for (int const option : {0, 1, 2, 3, 4, -1}) {
    auto const record = recordFor(ClassMapMatchOption{option});
    Acl::MacRuleConfig mac;
    mac.permitIs(false);
    Acl::Ip6RuleConfig ip6;
    ip6.vniIs(7);
    record->ruleMatchIs(recordedRule(1), refused());
    record->ruleMatchMacIs(recordedRule(1), mac);
    record->ruleMatch6Is(recordedRule(1), ip6);
    record->ruleAction1Is(recordedRule(1), 5);
    record->ruleAction1Is(recordedRule(1, ClassMapMatchOption::mac), 6);
    EXPECT_EQ(record->ruleMatch(recordedRule(1)), refused());
    EXPECT_EQ(record->ruleMatchMac(recordedRule(1)), mac);
    EXPECT_EQ(record->ruleMatch6(recordedRule(1)), ip6);
    EXPECT_EQ(record->ruleAction1s(), 2U);
    EXPECT_EQ(record->ruleMatch6Del(recordedRule(1)), ip6);
    EXPECT_EQ(record->ruleAction1(recordedRule(1)), 5U);
    EXPECT_EQ(record->ruleAction1(recordedRule(1, ClassMapMatchOption::mac)), 6U);
  }
}

// Random writes and removals, with an iterator that moves meanwhile, beside one map per collection.
TEST(RecordedRule, CollectionsAreAsIndependentAsMaps) {
  std::mt19937 random(7);
  for (int round = 0; round < 50; ++round) {
    auto const record = recordFor(ClassMapMatchOption::ipv4);
    std::map<AclRuleKey, std::uint32_t> first;
    std::map<AclRuleKey, std::uint32_t> second;
    auto it = record->ruleAction1Iterator();
    for (std::uint32_t step = 0; step < 300; ++step) {
      AclRuleKey const key = recordedRule(static_cast<std::uint32_t>(random() % 40));
      switch (random() % 9) {
      case 0:
      case 1: record->ruleAction1Is(key, first[key] = step); break;
      case 2: record->ruleAction2Is(key, second[key] = step); break;
      case 3:
        record->ruleAction1Del(key);
        first.erase(key);
        break;
      case 4:
        EXPECT_EQ(record->ruleAction2Del(key), second[key]);
        second.erase(key);
        break;
      case 5:
        record->newRuleAction2(key, step);
        second[key] = step;
        break;
      case 6:
        if (it) {
          first.erase(it.key());
          record->ruleAction1Del(it.key());
          ++it;
        } else {
          it = record->ruleAction1Iterator();
        }
        break;
      case 7: EXPECT_EQ(bool(record->korRuleAction2(key)), second.count(key) != 0); break;
      default:
        if (random() % 40 == 0) {
          record->ruleAction2DelAll();
          second.clear();
        }
        break;
      }
      ASSERT_EQ(record->ruleAction1s(), first.size());
      ASSERT_EQ(record->ruleAction2s(), second.size());
    }
    std::map<AclRuleKey, std::uint32_t> seen;
    for (auto const& entry : record->ruleAction1IteratorConst()) {
      seen[entry.key()] = entry.value();
    }
    EXPECT_EQ(seen, first);
    seen.clear();
    for (auto const& entry : record->ruleAction2IteratorConst()) {
      seen[entry.key()] = entry.value();
    }
    EXPECT_EQ(seen, second);
  }
}

}  // namespace
