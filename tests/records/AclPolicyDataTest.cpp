// SPDX-License-Identifier: Apache-2.0
#include "records/AclPolicyData.h"

#include "acl/ValueChecks.h"
#include "support/Allocations.h"
#include "support/VirtualSlot.h"

#include <Kor/Exception.h>
#include <Kor/Hash.h>
#include <Kor/MemoryPool.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace {

using PolicyMap::AclRuleKey;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::PolicyMapSmKey;
using PolicyMapTest::AclPolicyData;
using PolicyMapTest::AclPolicyType;
using PolicyMapTest::SubRuleDataCollection;
using TestSupport::rangeError;
using TestSupport::virtualSlotOf;
using Vorel::IntfId;

AclPolicyType const policy(PolicyMapSmKey("pm", "input"), ClassMapMatchOption::ipv6);

AclPolicyData::Ptr newRecord() {
  return Kor::make<AclPolicyData>(policy);
}

AclRuleKey rule(std::uint32_t seqno) {
  return {"web", "acl", seqno, ClassMapMatchOption::ipv4};
}

// names of the seven value collections, with keys and values for them

template <class K>
K keyOf(std::uint32_t number);
template <>
AclRuleKey keyOf<AclRuleKey>(std::uint32_t number) {
  return rule(number);
}
template <>
IntfId keyOf<IntfId>(std::uint32_t number) {
  return IntfId("Ethernet3/" + std::to_string(number));
}

// Two values that differ from the default and from each other, if the type has that many.
template <class V>
struct Values;
template <>
struct Values<std::uint32_t> {
  static std::uint32_t one() { return 5; }
  static std::uint32_t other() { return 9; }
};
template <>
struct Values<bool> {
  static bool one() { return true; }
  static bool other() { return false; }
};
template <class Rule>
Rule refused() {
  Rule config;
  config.permitIs(false);
  return config;
}
template <>
struct Values<Acl::IpRuleConfig> {
  static Acl::IpRuleConfig one() { return refused<Acl::IpRuleConfig>(); }
  static Acl::IpRuleConfig other() {
    Acl::IpRuleConfig config;
    config.tniIs(7);
    return config;
  }
};
template <>
struct Values<Acl::Ip6RuleConfig> {
  static Acl::Ip6RuleConfig one() { return refused<Acl::Ip6RuleConfig>(); }
  static Acl::Ip6RuleConfig other() {
    Acl::Ip6RuleConfig config;
    config.vniIs(7);
    return config;
  }
};
template <>
struct Values<Acl::MacRuleConfig> {
  static Acl::MacRuleConfig one() { return refused<Acl::MacRuleConfig>(); }
  static Acl::MacRuleConfig other() {
    Acl::MacRuleConfig config;
    config.mplsLabelIs(7);
    return config;
  }
};

#define VALUE_COLLECTION(x, X, K, V)                                                               \
  struct X {                                                                                       \
    using Key = K;                                                                                 \
    using Value = V;                                                                               \
    using Entry = AclPolicyData::Kor##X;                                                           \
    static std::uint32_t count(AclPolicyData const& data) { return data.x##s(); }                  \
    static V get(AclPolicyData const& data, K const& key) { return data.x(key); }                  \
    static Kor::Ptr<Entry> entry(AclPolicyData const& data, K const& key) {                        \
      return data.kor##X(key);                                                                     \
    }                                                                                              \
    static Kor::Ptr<Entry> create(AclPolicyData& data, K const& key, V const& value) {             \
      return data.new##X(key, value);                                                              \
    }                                                                                              \
    static void set(AclPolicyData& data, K const& key, V const& value) { data.x##Is(key, value); } \
    static V remove(AclPolicyData& data, K const& key) { return data.x##Del(key); }                \
    static void removeAll(AclPolicyData& data) { data.x##DelAll(); }                               \
    static void notify(AclPolicyData& data, K const& key, Kor::Ptr<Entry> const& entry) {          \
      data.x##Notify(key, entry);                                                                  \
    }                                                                                              \
    static auto iterator(AclPolicyData& data) { return data.x##Iterator(); }                       \
    static auto iteratorConst(AclPolicyData const& data) { return data.x##IteratorConst(); }       \
    static auto entryIterator(AclPolicyData& data) { return data.kor##X##Iterator(); }             \
    static V own(Entry const& entry) { return entry.x(); }                                         \
    static int slot() { return virtualSlotOf(&AclPolicyData::x##Is); }                             \
  };
VALUE_COLLECTION(ruleAction1, RuleAction1, AclRuleKey, std::uint32_t)
VALUE_COLLECTION(ruleAction2, RuleAction2, AclRuleKey, std::uint32_t)
VALUE_COLLECTION(ruleAction3, RuleAction3, AclRuleKey, std::uint32_t)
VALUE_COLLECTION(ruleMatch, RuleMatch, AclRuleKey, Acl::IpRuleConfig)
VALUE_COLLECTION(ruleMatch6, RuleMatch6, AclRuleKey, Acl::Ip6RuleConfig)
VALUE_COLLECTION(ruleMatchMac, RuleMatchMac, AclRuleKey, Acl::MacRuleConfig)
VALUE_COLLECTION(intf, Intf, IntfId, bool)

template <class Collection>
class AclPolicyDataCollection : public testing::Test {
 protected:
  using Key = typename Collection::Key;
  using Value = typename Collection::Value;

  [[nodiscard]] Key key(std::uint32_t number) const { return keyOf<Key>(number); }

  Value const one = Values<Value>::one();
  Value const other = Values<Value>::other();
  AclPolicyData::Ptr record = newRecord();
  AclPolicyData& data = *record;
};

using Collections = testing::Types<RuleAction1, RuleAction2, RuleAction3, RuleMatch, RuleMatch6,
                                   RuleMatchMac, Intf>;
TYPED_TEST_SUITE(AclPolicyDataCollection, Collections);

TYPED_TEST(AclPolicyDataCollection, AMissingKeyReadsAsTheDefaultAndIsNotMade) {
  EXPECT_EQ(TypeParam::get(this->data, this->key(1)), typename TypeParam::Value());
  EXPECT_EQ(TypeParam::count(this->data), 0U);
  EXPECT_FALSE(TypeParam::entry(this->data, this->key(1)));
}

TYPED_TEST(AclPolicyDataCollection, ASecondWriteOverwritesInTheSameEntry) {
  TypeParam::set(this->data, this->key(1), this->one);
  auto const entry = TypeParam::entry(this->data, this->key(1));
  TypeParam::set(this->data, this->key(1), this->other);
  EXPECT_EQ(TypeParam::count(this->data), 1U);
  EXPECT_EQ(TypeParam::get(this->data, this->key(1)), this->other);
  EXPECT_EQ(TypeParam::entry(this->data, this->key(1)), entry);
  EXPECT_EQ(TypeParam::own(*entry), this->other);
}

TYPED_TEST(AclPolicyDataCollection, OverwritingAllocatesNothing) {
  auto const key = this->key(1);
  TypeParam::set(this->data, key, this->one);
  EXPECT_FALSE(TestSupport::allocates([&] { TypeParam::set(this->data, key, this->other); }));
  EXPECT_EQ(TypeParam::get(this->data, key), this->other);
}

TYPED_TEST(AclPolicyDataCollection, AnEntryHoldingTheDefaultIsPresent) {
  TypeParam::set(this->data, this->key(1), typename TypeParam::Value());
  EXPECT_EQ(TypeParam::count(this->data), 1U);
  ASSERT_TRUE(TypeParam::entry(this->data, this->key(1)));
  EXPECT_EQ(TypeParam::entry(this->data, this->key(1))->key(), this->key(1));
}

TYPED_TEST(AclPolicyDataCollection, RemovingAnswersTheValueAndLeavesTheDefault) {
  TypeParam::set(this->data, this->key(1), this->one);
  EXPECT_EQ(TypeParam::remove(this->data, this->key(1)), this->one);
  EXPECT_EQ(TypeParam::get(this->data, this->key(1)), typename TypeParam::Value());
  EXPECT_EQ(TypeParam::count(this->data), 0U);
}

TYPED_TEST(AclPolicyDataCollection, RemovingAMissingKeyChangesNothing) {
  TypeParam::set(this->data, this->key(1), this->one);
  EXPECT_EQ(TypeParam::remove(this->data, this->key(2)), typename TypeParam::Value());
  EXPECT_EQ(TypeParam::count(this->data), 1U);
  EXPECT_EQ(TypeParam::get(this->data, this->key(1)), this->one);
}

TYPED_TEST(AclPolicyDataCollection, RemovesAll) {
  TypeParam::removeAll(this->data);
  for (std::uint32_t i = 1; i <= 20; ++i) {
    TypeParam::set(this->data, this->key(i), this->one);
  }
  EXPECT_EQ(TypeParam::count(this->data), 20U);
  TypeParam::removeAll(this->data);
  EXPECT_EQ(TypeParam::count(this->data), 0U);
}

TYPED_TEST(AclPolicyDataCollection, ANewEntryReplacesThatOfAnEqualKey) {
  auto const old = TypeParam::create(this->data, this->key(1), this->one);
  auto const replacement = TypeParam::create(this->data, this->key(1), this->other);
  EXPECT_EQ(TypeParam::count(this->data), 1U);
  EXPECT_EQ(TypeParam::entry(this->data, this->key(1)), replacement);
  EXPECT_EQ(TypeParam::own(*old), this->one);
}

TYPED_TEST(AclPolicyDataCollection, TheChangeHookHasNoEffect) {
  auto const entry = TypeParam::create(this->data, this->key(1), this->one);
  TypeParam::notify(this->data, this->key(1), entry);
  EXPECT_EQ(TypeParam::count(this->data), 1U);
  EXPECT_EQ(TypeParam::get(this->data, this->key(1)), this->one);
}

TYPED_TEST(AclPolicyDataCollection, IteratesInOrderOfTheReversedHash) {
  std::vector<typename TypeParam::Key> expected;
  for (std::uint32_t i = 1; i <= 30; ++i) {
    TypeParam::set(this->data, this->key(i), this->one);
    expected.push_back(this->key(i));
  }
  std::sort(expected.begin(), expected.end(), [](auto const& a, auto const& b) {
    return Kor::bitReverse(a.hash()) < Kor::bitReverse(b.hash());
  });
  std::vector<typename TypeParam::Key> walked;
  for (auto const& entry : TypeParam::iteratorConst(this->data)) {
    walked.push_back(entry.key());
    EXPECT_EQ(entry.value(), this->one);
  }
  EXPECT_EQ(walked, expected);
}

TYPED_TEST(AclPolicyDataCollection, EntriesMayBeRemovedUnderAnIterator) {
  for (std::uint32_t i = 1; i <= 10; ++i) {
    TypeParam::set(this->data, this->key(i), this->one);
  }
  int steps = 0;
  for (auto it = TypeParam::iterator(this->data); it; ++it, ++steps) {
    TypeParam::remove(this->data, it.key());
    EXPECT_EQ(it.value(), this->one);
  }
  EXPECT_EQ(steps, 10);
  EXPECT_EQ(TypeParam::count(this->data), 0U);
}

TYPED_TEST(AclPolicyDataCollection, EntryIteratorsGiveEntriesAndRemoveThem) {
  TypeParam::set(this->data, this->key(1), this->one);
  auto it = TypeParam::entryIterator(this->data);
  EXPECT_EQ(it.entry(), TypeParam::entry(this->data, this->key(1)));
  it.del();
  EXPECT_EQ(TypeParam::count(this->data), 0U);
}

TYPED_TEST(AclPolicyDataCollection, ItsWriterIsNotVirtual) {
  EXPECT_EQ(TypeParam::slot(), -1);
}

// the record itself

TEST(AclPolicyData, IsBuiltEmpty) {
  auto const record = newRecord();
  EXPECT_EQ(record->references(), 1U);
  EXPECT_EQ(record->key(), policy);
  EXPECT_EQ(record->fwkKey(), policy);
  EXPECT_EQ(record->commitCount(), 0U);
  EXPECT_EQ(record->createCount(), 0U);
  EXPECT_EQ(record->beginUpdateActionCount(), 0U);
  EXPECT_EQ(record->endUpdateActionCount(), 0U);
  EXPECT_FALSE(record->dirty());
  EXPECT_FALSE(record->created());
  EXPECT_EQ(record->ruleAction1s(), 0U);
  EXPECT_EQ(record->ruleAction2s(), 0U);
  EXPECT_EQ(record->ruleAction3s(), 0U);
  EXPECT_EQ(record->ruleMatchs(), 0U);
  EXPECT_EQ(record->ruleMatch6s(), 0U);
  EXPECT_EQ(record->ruleMatchMacs(), 0U);
  EXPECT_EQ(record->subRulesForKeys(), 0U);
  EXPECT_EQ(record->intfs(), 0U);
}

struct Counter {
  char const* name;
  std::uint32_t (AclPolicyData::*get)() const;
  void (AclPolicyData::*set)(std::uint32_t);
  std::uint32_t (AclPolicyData::*add)(std::uint32_t);
};
std::vector<Counter> const counters{
    {"commitCount", &AclPolicyData::commitCount, &AclPolicyData::commitCountIs,
     &AclPolicyData::commitCountInc},
    {"createCount", &AclPolicyData::createCount, &AclPolicyData::createCountIs,
     &AclPolicyData::createCountInc},
    {"beginUpdateActionCount", &AclPolicyData::beginUpdateActionCount,
     &AclPolicyData::beginUpdateActionCountIs, &AclPolicyData::beginUpdateActionCountInc},
    {"endUpdateActionCount", &AclPolicyData::endUpdateActionCount,
     &AclPolicyData::endUpdateActionCountIs, &AclPolicyData::endUpdateActionCountInc},
};

TEST(AclPolicyData, CountersAddTheirArgumentAndAnswerTheNewValue) {
  for (Counter const& counter : counters) {
    SCOPED_TRACE(counter.name);
    auto const record = newRecord();
    ((*record).*counter.set)(4);
    EXPECT_EQ(((*record).*counter.get)(), 4U);
    EXPECT_EQ(((*record).*counter.add)(3), 7U);
    EXPECT_EQ(((*record).*counter.get)(), 7U);
  }
}

TEST(AclPolicyData, CountersWrap) {
  for (Counter const& counter : counters) {
    SCOPED_TRACE(counter.name);
    auto const record = newRecord();
    ((*record).*counter.set)(std::numeric_limits<std::uint32_t>::max());
    EXPECT_EQ(((*record).*counter.add)(1), 0U);
    EXPECT_EQ(((*record).*counter.get)(), 0U);
  }
}

TEST(AclPolicyData, CountersAreIndependentOfEachOther) {
  for (Counter const& counter : counters) {
    auto const record = newRecord();
    ((*record).*counter.set)(1);
    for (Counter const& other : counters) {
      EXPECT_EQ(((*record).*other.get)(), counter.get == other.get ? 1U : 0U) << other.name;
    }
  }
}

TEST(AclPolicyData, FlagsAreStored) {
  auto const record = newRecord();
  record->dirtyIs(true);
  EXPECT_TRUE(record->dirty());
  EXPECT_FALSE(record->created());
  record->createdIs(true);
  EXPECT_TRUE(record->created());
  record->dirtyIs(false);
  record->createdIs(false);
  EXPECT_FALSE(record->dirty());
  EXPECT_FALSE(record->created());
}

TEST(AclPolicyData, AnInterfaceHoldingFalseIsPresentAndReadsAsAnAbsentOne) {
  auto const record = newRecord();
  IntfId const intf("Ethernet3/1");
  record->intfIs(intf, false);
  EXPECT_EQ(record->intfs(), 1U);
  EXPECT_FALSE(record->intf(intf));
  record->intfDel(intf);
  EXPECT_EQ(record->intfs(), 0U);
  EXPECT_FALSE(record->intf(intf));
}

// sub-rules

TEST(AclPolicyDataSubRules, ALookUpNeverCreates) {
  auto const record = newRecord();
  EXPECT_FALSE(record->subRulesForKey(rule(1)));
  EXPECT_EQ(record->subRulesForKeys(), 0U);
}

TEST(AclPolicyDataSubRules, AreMadeOnceForEachRule) {
  auto const record = newRecord();
  auto const subRules = record->subRulesForKeyIs(rule(1));
  ASSERT_TRUE(subRules);
  EXPECT_EQ(subRules->key(), rule(1));
  EXPECT_EQ(record->subRulesForKeyIs(rule(1)), subRules);
  EXPECT_EQ(record->subRulesForKey(rule(1)), subRules);
  EXPECT_EQ(record->subRulesForKeys(), 1U);
}

TEST(AclPolicyDataSubRules, AreFoundAfterNew) {
  auto const record = newRecord();
  auto const subRules = record->newSubRulesForKey(rule(1));
  EXPECT_EQ(record->subRulesForKey(rule(1)), subRules);
  EXPECT_EQ(record->subRulesForKeyIs(rule(1)), subRules);
}

TEST(AclPolicyDataSubRules, NewReplacesTheOnesOfAnEqualKey) {
  auto const record = newRecord();
  auto const old = record->newSubRulesForKey(rule(1));
  old->subRuleIs(PolicyMap::SubRuleData(), true);
  auto const replacement = record->newSubRulesForKey(rule(1));
  EXPECT_EQ(record->subRulesForKeys(), 1U);
  EXPECT_EQ(record->subRulesForKey(rule(1)), replacement);
  EXPECT_EQ(replacement->subRules(), 0U);
  EXPECT_EQ(old->subRules(), 1U);
}

TEST(AclPolicyDataSubRules, StayWithWhoHoldsThemWhenRemoved) {
  auto const record = newRecord();
  auto const subRules = record->subRulesForKeyIs(rule(1));
  subRules->subRuleIs(PolicyMap::SubRuleData(), true);
  EXPECT_EQ(record->subRulesForKeyDel(rule(1)), subRules);
  EXPECT_FALSE(record->subRulesForKey(rule(1)));
  EXPECT_TRUE(subRules->subRule(PolicyMap::SubRuleData()));
  EXPECT_FALSE(record->subRulesForKeyDel(rule(1)));
}

TEST(AclPolicyDataSubRules, TheKeyOfTheOnesThatGoMayNameThem) {
  auto const record = newRecord();
  record->subRulesForKeyIs(rule(1));
  AclRuleKey const& inside = record->subRulesForKey(rule(1))->key();
  record->subRulesForKeyDel(inside);
  EXPECT_EQ(record->subRulesForKeys(), 0U);
}

TEST(AclPolicyDataSubRules, AreRemovedAllAtOnce) {
  auto const record = newRecord();
  auto const held = record->subRulesForKeyIs(rule(1));
  record->subRulesForKeyIs(rule(2));
  record->subRulesForKeyDelAll();
  EXPECT_EQ(record->subRulesForKeys(), 0U);
  EXPECT_EQ(held->references(), 1U);
}

TEST(AclPolicyDataSubRules, LeaveTheRecordThatEnds) {
  auto record = newRecord();
  auto const held = record->subRulesForKeyIs(rule(1));
  held->subRuleIs(PolicyMap::SubRuleData(), true);
  auto it = record->subRulesForKeyIterator();
  record = nullptr;
  EXPECT_EQ(held->fwkHmNext(), nullptr);
  EXPECT_TRUE(held->subRule(PolicyMap::SubRuleData()));
  EXPECT_FALSE(it);
}

// The pool reuses the block that was released last, which reveals the order of two releases.
TEST(AclPolicyDataSubRules, LeaveTheRecordThatEndsBeforeItsInterfaces) {
  if (Kor::MemoryPool::passesThrough()) {
    GTEST_SKIP() << "in this build the pool keeps no free blocks";
  }
  constexpr std::size_t size = sizeof(AclPolicyData::KorIntf);
  auto record = newRecord();
  void const* const intf = record->newIntf(IntfId("Ethernet1"), true).get();
  void const* name = nullptr;
  {
    // A name that fills a block of the size of the interface's entry. Only the sub-rules hold it.
    Kor::Name const className(std::string(size - 20, 'c'));
    name = className.view().data();
    record->newSubRulesForKey({className, "", 1, ClassMapMatchOption::ipv4});
  }
  record = nullptr;
  void* const last = Kor::MemoryPool::allocate(size);
  void* const beforeLast = Kor::MemoryPool::allocate(size);
  EXPECT_EQ(last, intf);
  EXPECT_LT(beforeLast, name);
  EXPECT_LT(name, static_cast<char*>(beforeLast) + size);
  Kor::MemoryPool::release(beforeLast, size);
  Kor::MemoryPool::release(last, size);
}

TEST(AclPolicyDataSubRules, AreSeenReadOnlyFromAConstRecord) {
  auto const record = newRecord();
  auto const subRules = record->subRulesForKeyIs(rule(1));
  AclPolicyData const& constant = *record;
  SubRuleDataCollection::PtrConst const seen = constant.subRulesForKey(rule(1));
  EXPECT_EQ(seen, subRules);
  static_assert(
      std::is_same_v<decltype(constant.subRulesForKey(rule(1))), SubRuleDataCollection::PtrConst>);
}

TEST(AclPolicyDataSubRules, AreIterated) {
  auto const record = newRecord();
  for (std::uint32_t i = 1; i <= 5; ++i) {
    record->subRulesForKeyIs(rule(i));
  }
  std::vector<std::uint32_t> seen;
  for (auto const& entry : record->subRulesForKeyIteratorConst()) {
    EXPECT_EQ(entry.value()->key(), entry.key());
    seen.push_back(entry.key().seqno());
  }
  EXPECT_THAT(seen, testing::UnorderedElementsAre(1, 2, 3, 4, 5));
  for (auto it = record->subRulesForKeyIterator(); it; ++it) {
    it.del();
  }
  EXPECT_EQ(record->subRulesForKeys(), 0U);
}

TEST(AclPolicyDataSubRules, TheChangeHookHasNoEffect) {
  auto const record = newRecord();
  auto const subRules = record->subRulesForKeyIs(rule(1));
  record->subRulesForKeyNotify(rule(1), subRules);
  record->subRulesForKeyNotify(rule(2), nullptr);
  EXPECT_EQ(record->subRulesForKey(rule(1)), subRules);
  EXPECT_EQ(record->subRulesForKeys(), 1U);
}

// configurations with their own ranges

TEST(AclPolicyData, ConfigurationsRefuseValuesOutOfRangeBeforeAnythingIsStored) {
  Acl::IpRuleConfig ip;
  EXPECT_EQ(rangeError([&] { ip.tniIs(16777216); }),
            "IpFilterBase::tni < 0 or > 16777215 not allowed");
  EXPECT_EQ(rangeError([&] { ip.vniIs(-1); }), "IpFilterBase::vni < 0 or > 16777215 not allowed");
  EXPECT_EQ(ip, Acl::IpRuleConfig());
  Acl::MacRuleConfig mac;
  EXPECT_EQ(rangeError([&] { mac.mplsLabelIs(1048576); }),
            "MacFilter::mplsLabel < 0 or > 1048575 not allowed");
  EXPECT_EQ(rangeError([&] { mac.mplsInnerLabelIs(1048576); }),
            "MacFilter::mplsInnerLabel < 0 or > 1048575 not allowed");
  EXPECT_EQ(mac, Acl::MacRuleConfig());
}

TEST(AclPolicyData, HasATypeBelowTheRoot) {
  Kor::PtrInterface::Ptr const record = newRecord();
  EXPECT_EQ(record->fwkType(), AclPolicyData::_fwkType());
  EXPECT_EQ(record->fwkType()->name(), "PolicyMapTest::AclPolicyData");
  EXPECT_EQ(record->fwkType()->base(), Kor::PtrInterface::_fwkType());
  EXPECT_EQ(virtualSlotOf(&AclPolicyData::fwkType), 5);
}

}  // namespace
