// SPDX-License-Identifier: Apache-2.0
#include "records/SubRuleDataCollection.h"

#include "support/Allocations.h"
#include "support/VirtualSlot.h"

#include <Kor/Hash.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

using PolicyMap::AclRuleKey;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::SubRuleData;
using PolicyMapTest::SubRuleDataCollection;
using TestSupport::virtualSlotOf;

AclRuleKey const key("web", "acl", 10, ClassMapMatchOption::ipv4);

SubRuleData subRule(std::uint32_t distinction) {
  SubRuleData data;
  data.distinctionIs(distinction);
  return data;
}

SubRuleDataCollection::Ptr newSet() {
  return Kor::make<SubRuleDataCollection>(key);
}

TEST(SubRuleDataCollection, IsBuiltEmptyForItsKey) {
  auto const set = newSet();
  EXPECT_EQ(set->references(), 1U);
  EXPECT_EQ(set->key(), key);
  EXPECT_EQ(set->fwkKey(), key);
  EXPECT_EQ(set->subRules(), 0U);
  EXPECT_FALSE(set->subRule(subRule(1)));
}

TEST(SubRuleDataCollection, AFlagIsWrittenIntoTheOneEntry) {
  auto const set = newSet();
  set->subRuleIs(subRule(1), true);
  auto const entry = set->korSubRule(subRule(1));
  EXPECT_TRUE(set->subRule(subRule(1)));
  set->subRuleIs(subRule(1), false);
  EXPECT_EQ(set->subRules(), 1U);
  EXPECT_FALSE(set->subRule(subRule(1)));
  EXPECT_EQ(set->korSubRule(subRule(1)), entry);
  EXPECT_FALSE(entry->subRule());
}

TEST(SubRuleDataCollection, OverwritingAFlagAllocatesNothing) {
  auto const set = newSet();
  set->subRuleIs(subRule(1), true);
  SubRuleData const same = subRule(1);
  EXPECT_FALSE(TestSupport::allocates([&] { set->subRuleIs(same, false); }));
  EXPECT_FALSE(set->subRule(same));
}

TEST(SubRuleDataCollection, ASubRuleWithAFalseFlagIsPresent) {
  auto const set = newSet();
  set->subRuleIs(subRule(1), false);
  EXPECT_EQ(set->subRules(), 1U);
  EXPECT_TRUE(set->korSubRule(subRule(1)));
  EXPECT_FALSE(set->subRule(subRule(1)));
  EXPECT_FALSE(set->korSubRule(subRule(2)));
}

TEST(SubRuleDataCollection, SubRulesThatDifferInAFlagWordAreTwo) {
  auto const set = newSet();
  SubRuleData plain;
  SubRuleData ranged;
  ranged.srcPortRangeIs(true);
  set->subRuleIs(plain, true);
  EXPECT_FALSE(set->subRule(ranged));
  set->subRuleIs(ranged, true);
  EXPECT_EQ(set->subRules(), 2U);
}

TEST(SubRuleDataCollection, ANewEntryHoldsKeyAndFlag) {
  auto const set = newSet();
  auto const entry = set->newSubRule(subRule(4), true);
  EXPECT_EQ(entry->key(), subRule(4));
  EXPECT_EQ(entry->fwkKey(), subRule(4));
  EXPECT_TRUE(entry->subRule());
  EXPECT_EQ(set->korSubRule(subRule(4)), entry);
}

TEST(SubRuleDataCollection, ANewEntryReplacesThatOfAnEqualSubRule) {
  auto const set = newSet();
  auto const old = set->newSubRule(subRule(4), true);
  auto const replacement = set->newSubRule(subRule(4), false);
  EXPECT_EQ(set->subRules(), 1U);
  EXPECT_EQ(set->korSubRule(subRule(4)), replacement);
  EXPECT_TRUE(old->subRule());
}

TEST(SubRuleDataCollection, RemovingAnAbsentSubRuleChangesNothing) {
  auto const set = newSet();
  set->subRuleDelAll();
  EXPECT_FALSE(set->subRuleDel(subRule(1)));
  set->subRuleIs(subRule(1), true);
  EXPECT_FALSE(set->subRuleDel(subRule(2)));
  EXPECT_EQ(set->subRules(), 1U);
}

TEST(SubRuleDataCollection, RemovesOneAndAll) {
  auto const set = newSet();
  for (std::uint32_t i = 0; i < 20; ++i) {
    set->subRuleIs(subRule(i), true);
  }
  EXPECT_TRUE(set->subRuleDel(subRule(7)));
  EXPECT_FALSE(set->subRule(subRule(7)));
  EXPECT_EQ(set->subRules(), 19U);
  set->subRuleDelAll();
  EXPECT_EQ(set->subRules(), 0U);
}

TEST(SubRuleDataCollection, TheKeyOfTheEntryThatGoesMayNameIt) {
  auto const set = newSet();
  set->subRuleIs(subRule(7), true);
  EXPECT_TRUE(set->subRuleDel(set->korSubRule(subRule(7))->key()));
  EXPECT_EQ(set->subRules(), 0U);
}

TEST(SubRuleDataCollection, IteratesInOrderOfTheReversedHash) {
  auto const set = newSet();
  std::vector<SubRuleData> expected;
  for (std::uint32_t i = 0; i < 50; ++i) {
    set->subRuleIs(subRule(i), i % 2 == 0);
    expected.push_back(subRule(i));
  }
  std::sort(expected.begin(), expected.end(), [](SubRuleData const& a, SubRuleData const& b) {
    return Kor::bitReverse(a.hash()) < Kor::bitReverse(b.hash());
  });
  std::vector<SubRuleData> walked;
  for (auto const& entry : set->subRuleIteratorConst()) {
    walked.push_back(entry.key());
    EXPECT_EQ(entry.value(), entry.key().distinction() % 2 == 0);
  }
  EXPECT_EQ(walked, expected);
}

TEST(SubRuleDataCollection, AnEntryMayBeRemovedUnderAnIterator) {
  auto const set = newSet();
  for (std::uint32_t i = 0; i < 10; ++i) {
    set->subRuleIs(subRule(i), true);
  }
  int steps = 0;
  for (auto it = set->subRuleIterator(); it; ++it) {
    set->subRuleDel(it.key());
    ++steps;
  }
  EXPECT_EQ(steps, 10);
  EXPECT_EQ(set->subRules(), 0U);
}

TEST(SubRuleDataCollection, IteratorsRemoveWhatTheyStandOn) {
  auto const set = newSet();
  set->subRuleIs(subRule(1), true);
  set->subRuleIs(subRule(2), false);
  auto it = set->subRuleIterator();
  it.del();
  EXPECT_EQ(set->subRules(), 1U);
  auto entries = set->korSubRuleIterator();
  EXPECT_EQ(entries.entry()->key(), entries.key());
  entries.del();
  EXPECT_EQ(set->subRules(), 0U);
}

TEST(SubRuleDataCollection, TheChangeHookHasNoEffect) {
  auto const set = newSet();
  auto const entry = set->newSubRule(subRule(1), true);
  set->subRuleNotify(subRule(1), entry);
  set->subRuleNotify(subRule(2), nullptr);
  EXPECT_EQ(set->subRules(), 1U);
  EXPECT_TRUE(set->subRule(subRule(1)));
}

TEST(SubRuleDataCollection, TwoOfOneKeyAreDistinctObjects) {
  auto const a = newSet();
  auto const b = newSet();
  a->subRuleIs(subRule(1), true);
  EXPECT_FALSE(b->subRule(subRule(1)));
  EXPECT_FALSE(a == b);
}

TEST(SubRuleDataCollection, EntriesOutliveTheSetForWhoHoldsThem) {
  auto set = newSet();
  auto const entry = set->newSubRule(subRule(1), true);
  set = nullptr;
  EXPECT_EQ(entry->references(), 1U);
  EXPECT_EQ(entry->key(), subRule(1));
  EXPECT_EQ(entry->fwkHmNext(), nullptr);
}

TEST(SubRuleDataCollection, HasATypeBelowTheRoot) {
  Kor::PtrInterface::Ptr const set = newSet();
  EXPECT_EQ(set->fwkType(), SubRuleDataCollection::_fwkType());
  EXPECT_EQ(set->fwkType()->name(), "PolicyMapTest::SubRuleDataCollection");
  EXPECT_EQ(set->fwkType()->base(), Kor::PtrInterface::_fwkType());
  EXPECT_EQ(virtualSlotOf(&SubRuleDataCollection::fwkType), 5);
}

TEST(SubRuleDataCollection, ItsOwnOperationsAreNotVirtual) {
  EXPECT_EQ(virtualSlotOf(&SubRuleDataCollection::subRuleIs), -1);
  EXPECT_EQ(virtualSlotOf(&SubRuleDataCollection::subRuleDel), -1);
  EXPECT_EQ(virtualSlotOf(&SubRuleDataCollection::subRuleNotify), -1);
}

}  // namespace
