// SPDX-License-Identifier: Apache-2.0
#include "support/Death.h"
#include "support/Instances.h"

#include <Kor/HashMap.h>
#include <Kor/PtrInterface.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace {

// keys of several hashes

struct Spread {
  static std::uint32_t hash(std::uint32_t id) { return Kor::hashNumber(id); }
};
struct EverythingCollides {
  static std::uint32_t hash(std::uint32_t /*id*/) { return 0x12345678U; }
};
struct FewValues {
  static std::uint32_t hash(std::uint32_t id) { return id % 3; }
};
struct Extremes {
  static std::uint32_t hash(std::uint32_t id) { return id % 2 == 0 ? 0U : 0xffffffffU; }
};

template <class Hash>
struct Key {
  std::uint32_t id = 0;

  [[nodiscard]] std::uint32_t hash() const {
    ++hashings();
    return Hash::hash(id);
  }
  friend bool operator==(Key const& a, Key const& b) { return a.id == b.id; }
  friend bool operator<(Key const& a, Key const& b) { return a.id < b.id; }

  static int& hashings() {
    static int count = 0;
    return count;
  }
};

template <class Hash>
class Member : public Kor::PtrInterface,
               public Kor::HashMapLink<Member<Hash>>,
               public TestSupport::Instances<Member<Hash>> {
 public:
  explicit Member(std::uint32_t id) : key_{id} {}
  ~Member() override {
    if (atEnd) {
      atEnd();
    }
  }
  [[nodiscard]] Key<Hash> const& fwkKey() const { return key_; }
  [[nodiscard]] std::uint32_t id() const { return key_.id; }

  std::function<void()> atEnd;

 private:
  Key<Hash> key_;
};

template <class Hash>
using Map = Kor::HashMap<Member<Hash>>;
template <class Hash>
using Cursor = typename Map<Hash>::Cursor;

template <class Hash>
std::vector<std::uint32_t> idsOf(Map<Hash>& map) {
  std::vector<std::uint32_t> ids;
  for (Cursor<Hash> cursor(map); cursor.member(); cursor.advance()) {
    ids.push_back(cursor.member()->id());
  }
  return ids;
}

template <class Hash>
void insert(Map<Hash>& map, std::uint32_t id) {
  map.insert(Kor::make<Member<Hash>>(id));
}

// against a model

// The reference: a map of keys as a sorted standard map. A cursor of the model is its place in the
// order. It moves to the first member after that place, whatever has changed since.
template <class Hash>
class MapAndModel {
 public:
  void insert(std::uint32_t id) {
    auto member = Kor::make<Member<Hash>>(id);
    auto const replaced = map_->insert(member);
    auto const expected = std::exchange(model_[place(id)], member.get());
    RC_ASSERT(replaced.get() == expected);
  }
  void remove(std::uint32_t id) {
    auto const removed = map_->remove(Key<Hash>{id});
    auto const found = model_.find(place(id));
    RC_ASSERT(removed.get() == (found == model_.end() ? nullptr : found->second));
    if (found != model_.end()) {
      RC_ASSERT(removed->fwkHmNext() == nullptr);
      RC_ASSERT(removed->references() >= 1U);
      model_.erase(found);
    }
  }
  void clear() {
    map_->clear();
    model_.clear();
  }
  // Inserts so many members that the map grows several times. They are all removed later, so that
  // it shrinks when it is next iterated.
  void insertMany() {
    for (std::uint32_t id = 1000; id < 1100; ++id) {
      insert(id);
    }
  }
  void removeMany() {
    for (std::uint32_t id = 1000; id < 1100; ++id) {
      remove(id);
    }
  }
  void open() {
    cursors_.emplace_back(*map_);
    positions_.push_back(model_.empty() ? Position() : Position(*model_.begin()));
    checkCursor(cursors_.size() - 1);
  }
  void copyCursor(std::size_t which) {
    if (!cursors_.empty()) {
      which %= cursors_.size();
      cursors_.emplace_back(*std::next(cursors_.begin(), static_cast<std::ptrdiff_t>(which)));
      positions_.push_back(positions_[which]);
    }
  }
  void advance(std::size_t which) {
    if (!cursors_.empty()) {
      which %= cursors_.size();
      cursor(which).advance();
      if (Position& position = positions_[which]) {
        auto const next = model_.upper_bound(position->first);
        position = next == model_.end() ? Position() : Position(*next);
      }
      checkCursor(which);
    }
  }
  void removeUnder(std::size_t which) {
    if (!cursors_.empty()) {
      which %= cursors_.size();
      auto const removed = cursor(which).remove();
      Position const& position = positions_[which];
      bool const stands = position && model_.contains(position->first) &&
                          model_.at(position->first) == position->second;
      RC_ASSERT(bool(removed) == stands);
      if (stands) {
        model_.erase(position->first);
      }
      checkCursor(which);
    }
  }
  void close(std::size_t which) {
    if (!cursors_.empty()) {
      which %= cursors_.size();
      cursors_.erase(std::next(cursors_.begin(), static_cast<std::ptrdiff_t>(which)));
      positions_.erase(positions_.begin() + static_cast<std::ptrdiff_t>(which));
    }
  }
  void destroyMap() {
    map_.reset();
    for (auto& cursor : cursors_) {
      RC_ASSERT(!cursor.member());
      cursor.advance();
      RC_ASSERT(!cursor.member());
      RC_ASSERT(!cursor.remove());
    }
    map_ = std::make_unique<Map<Hash>>();
    model_.clear();
    for (auto& position : positions_) {
      position.reset();
    }
    // A cursor of a destroyed map stays at its end, even if another map takes its address.
    cursors_.clear();
    positions_.clear();
  }

  void check() {
    RC_ASSERT(map_->members() == model_.size());
    std::vector<Member<Hash>*> expected;
    for (auto const& [where, member] : model_) {
      expected.push_back(member);
      RC_ASSERT(map_->find(member->fwkKey()) == member);
    }
    std::vector<Member<Hash>*> walked;
    for (auto* member = map_->first(); member != nullptr; member = map_->next(member)) {
      walked.push_back(member);
    }
    RC_ASSERT(walked == expected);
    for (std::size_t which = 0; which < positions_.size(); ++which) {
      checkCursor(which);
    }
  }

 private:
  using Place = std::pair<std::uint32_t, std::uint32_t>;  // reversed hash, key
  using Position = std::optional<std::pair<Place, Member<Hash>*>>;

  static Place place(std::uint32_t id) { return {Kor::bitReverse(Hash::hash(id)), id}; }
  Cursor<Hash>& cursor(std::size_t which) {
    return *std::next(cursors_.begin(), static_cast<std::ptrdiff_t>(which));
  }
  void checkCursor(std::size_t which) {
    auto const& member = cursor(which).member();
    RC_ASSERT(member.get() == (positions_[which] ? positions_[which]->second : nullptr));
    if (member) {
      RC_ASSERT(member->id() == positions_[which]->first.second);
    }
  }

  std::unique_ptr<Map<Hash>> map_ = std::make_unique<Map<Hash>>();
  std::map<Place, Member<Hash>*> model_;
  std::list<Cursor<Hash>> cursors_;
  std::vector<Position> positions_;
};

template <class Hash>
void runSteps(std::vector<std::pair<int, std::uint32_t>> const& steps) {
  MapAndModel<Hash> both;
  for (auto const& [step, number] : steps) {
    switch (step) {
    case 0: both.destroyMap(); break;
    case 1: both.clear(); break;
    case 2:
    case 3: both.open(); break;
    case 4: both.copyCursor(number); break;
    case 5: both.close(number); break;
    case 6:
    case 7: both.removeUnder(number); break;
    case 8:
    case 9:
    case 10:
    case 11: both.advance(number); break;
    case 12:
    case 13:
    case 14:
    case 15: both.remove(number); break;
    case 24: both.insertMany(); break;
    case 25:
    case 26: both.removeMany(); break;
    default: both.insert(number); break;
    }
    both.check();
  }
}

template <class Hash>
void behavesLikeTheModel() {
  runSteps<Hash>(*rc::gen::container<std::vector<std::pair<int, std::uint32_t>>>(
      rc::gen::pair(rc::gen::inRange(0, 27), rc::gen::inRange(0U, 40U))));
  RC_ASSERT(Member<Hash>::alive() == 0);
}

RC_GTEST_PROP(HashMap, BehavesLikeASortedMapWithSpreadHashes, ()) {
  behavesLikeTheModel<Spread>();
}
RC_GTEST_PROP(HashMap, BehavesLikeASortedMapWhenEverythingCollides, ()) {
  behavesLikeTheModel<EverythingCollides>();
}
RC_GTEST_PROP(HashMap, BehavesLikeASortedMapWithFewHashes, ()) {
  behavesLikeTheModel<FewValues>();
}
RC_GTEST_PROP(HashMap, BehavesLikeASortedMapWithTheSmallestAndLargestHash, ()) {
  behavesLikeTheModel<Extremes>();
}

// one behaviour each

template <class Hash>
class HashMapOf : public testing::Test {
 protected:
  Map<Hash> map_;
};
using Hashes = testing::Types<Spread, EverythingCollides, FewValues, Extremes>;
TYPED_TEST_SUITE(HashMapOf, Hashes);

TYPED_TEST(HashMapOf, AnEmptyMapHasNothing) {
  EXPECT_EQ(this->map_.members(), 0U);
  EXPECT_EQ(this->map_.first(), nullptr);
  EXPECT_EQ(this->map_.find(Key<TypeParam>{1}), nullptr);
  EXPECT_FALSE(this->map_.remove(Key<TypeParam>{1}));
  Cursor<TypeParam> cursor(this->map_);
  EXPECT_FALSE(cursor.member());
  cursor.advance();
  EXPECT_FALSE(cursor.member());
  EXPECT_FALSE(cursor.remove());
}

TYPED_TEST(HashMapOf, TheOrderIsTheSameInWhateverOrderMembersCame) {
  Map<TypeParam> backwards;
  for (std::uint32_t id = 0; id < 100; ++id) {
    insert(this->map_, id);
    insert(backwards, 99 - id);
  }
  EXPECT_EQ(idsOf(this->map_), idsOf(backwards));
  EXPECT_EQ(idsOf(this->map_).size(), 100U);
}

TYPED_TEST(HashMapOf, TheMapCountsItsMembersOnceUntilTheyLeave) {
  auto const member = Kor::make<Member<TypeParam>>(1U);
  this->map_.insert(member);
  EXPECT_EQ(member->references(), 2U);
  this->map_.remove(Key<TypeParam>{1});
  EXPECT_EQ(member->references(), 1U);
  this->map_.insert(member);
  this->map_.clear();
  EXPECT_EQ(member->references(), 1U);
  {
    Map<TypeParam> other;
    other.insert(member);
    EXPECT_EQ(member->references(), 2U);
  }
  EXPECT_EQ(member->references(), 1U);
  EXPECT_EQ(member->fwkHmNext(), nullptr);
}

TYPED_TEST(HashMapOf, AMemberOfEqualKeyTakesThePlaceOfTheOld) {
  for (std::uint32_t id = 0; id < 10; ++id) {
    insert(this->map_, id);
  }
  auto const before = idsOf(this->map_);
  auto const replacement = Kor::make<Member<TypeParam>>(4U);
  auto const replaced = this->map_.insert(replacement);
  ASSERT_TRUE(replaced);
  EXPECT_EQ(replaced->id(), 4U);
  EXPECT_EQ(replaced->references(), 1U);
  EXPECT_EQ(replaced->fwkHmNext(), nullptr);
  EXPECT_EQ(this->map_.members(), 10U);
  EXPECT_EQ(this->map_.find(Key<TypeParam>{4}), replacement.get());
  EXPECT_EQ(idsOf(this->map_), before);
}

TYPED_TEST(HashMapOf, AWalkGoesOnWhereverItsNeighboursAreRemoved) {
  for (std::uint32_t id = 0; id < 30; ++id) {
    insert(this->map_, id);
  }
  auto const order = idsOf(this->map_);
  for (std::size_t at = 1; at + 2 < order.size(); ++at) {
    Map<TypeParam> map;
    for (std::uint32_t id = 0; id < 30; ++id) {
      insert(map, id);
    }
    Cursor<TypeParam> cursor(map);
    for (std::size_t i = 0; i < at; ++i) {
      cursor.advance();
    }
    ASSERT_EQ(cursor.member()->id(), order[at]);
    map.remove(Key<TypeParam>{order[at - 1]});
    map.remove(Key<TypeParam>{order[at]});
    map.remove(Key<TypeParam>{order[at + 1]});
    EXPECT_EQ(cursor.member()->id(), order[at]) << "readable after removal";
    cursor.advance();
    EXPECT_EQ(cursor.member()->id(), order[at + 2]);
  }
}

TYPED_TEST(HashMapOf, GrowthDisturbsNoWalk) {
  for (std::uint32_t id = 0; id < 8; ++id) {
    insert(this->map_, id);
  }
  std::vector<std::uint32_t> seen;
  std::uint32_t next = 100;
  for (Cursor<TypeParam> cursor(this->map_); cursor.member(); cursor.advance()) {
    if (cursor.member()->id() < 100) {
      seen.push_back(cursor.member()->id());
      for (int i = 0; i < 64; ++i) {
        insert(this->map_, next++);
      }
    }
  }
  std::sort(seen.begin(), seen.end());
  EXPECT_EQ(seen, (std::vector<std::uint32_t>{0, 1, 2, 3, 4, 5, 6, 7})) << "each once";
}

TYPED_TEST(HashMapOf, ShrinkingDisturbsNoWalk) {
  constexpr std::uint32_t many = 1000;
  for (std::uint32_t id = 0; id < many; ++id) {
    insert(this->map_, id);
  }
  auto const order = idsOf(this->map_);
  auto const wide = this->map_.bucketCount();
  std::vector<std::uint32_t> seen;
  for (Cursor<TypeParam> cursor(this->map_); cursor.member(); cursor.advance()) {
    seen.push_back(cursor.member()->id());
    if (seen.size() == 10) {
      // Removes all but every hundredth, including the one under the cursor and its neighbours.
      for (std::size_t at = 0; at < order.size(); ++at) {
        if (at % 100 != 0) {
          this->map_.remove(Key<TypeParam>{order[at]});
        }
      }
      ASSERT_NE(this->map_.first(), nullptr);
      EXPECT_LT(this->map_.bucketCount(), wide);
    }
  }
  std::vector<std::uint32_t> expected(order.begin(), order.begin() + 10);
  for (std::size_t at = 100; at < order.size(); at += 100) {
    expected.push_back(order[at]);
  }
  EXPECT_EQ(seen, expected);
  for (std::size_t at = 0; at < order.size(); ++at) {
    EXPECT_EQ(this->map_.find(Key<TypeParam>{order[at]}) != nullptr, at % 100 == 0);
  }
}

TEST(HashMap, AMapThatWasLargeHasFewBuckets) {
  Map<Spread> map;
  for (std::uint32_t id = 0; id < 100000; ++id) {
    insert(map, id);
  }
  EXPECT_GE(map.bucketCount(), 100000U);
  for (std::uint32_t id = 100; id < 100000; ++id) {
    map.remove(Key<Spread>{id});
  }
  EXPECT_LE(map.bucketCount(), 16 * 100U) << "before anything is iterated";
  EXPECT_EQ(idsOf(map).size(), 100U);
  for (std::uint32_t id = 3; id < 100; ++id) {
    map.remove(Key<Spread>{id});
  }
  EXPECT_LE(map.bucketCount(), 64U);
  EXPECT_EQ(idsOf(map).size(), 3U);
}

TEST(HashMap, AMapThatIsEmptyHasNoBuckets) {
  Map<Spread> map;
  for (std::uint32_t turn = 0; turn < 4; ++turn) {
    EXPECT_EQ(map.bucketCount(), 1U);
    for (std::uint32_t id = 0; id < 1000; ++id) {
      insert(map, id);
    }
    EXPECT_GE(map.bucketCount(), 1000U);
    switch (turn) {
    case 0: map.removeAll([](auto const&) {}); break;
    case 1: map.clear(); break;
    case 2:
      for (std::uint32_t id = 0; id < 1000; ++id) {
        map.remove(Key<Spread>{id});
      }
      break;
    default:
      for (Cursor<Spread> cursor(map); cursor.member(); cursor.advance()) {
        cursor.remove();
      }
    }
  }
  EXPECT_EQ(map.bucketCount(), 1U);
}

TEST(HashMap, AFewMembersNeedNoBuckets) {
  Map<Spread> map;
  for (std::uint32_t id = 0; id < 4; ++id) {
    insert(map, id);
    EXPECT_EQ(map.bucketCount(), 1U);
  }
  Key<Spread>::hashings() = 0;
  for (std::uint32_t id = 0; id < 5; ++id) {
    EXPECT_EQ(map.find(Key<Spread>{id}) != nullptr, id < 4);
  }
  EXPECT_EQ(Key<Spread>::hashings(), 0) << "they are compared";
  insert(map, 4);
  EXPECT_GT(map.bucketCount(), 1U);
  EXPECT_EQ(idsOf(map).size(), 5U);
}

TEST(HashMap, AMapAtTheEdgeDoesNotGrowAndShrinkInTurns) {
  for (std::uint32_t const members : {4U, 16U, 32U, 1024U}) {
    Map<Spread> map;
    for (std::uint32_t id = 0; id < members; ++id) {
      insert(map, id);
    }
    auto const narrow = map.bucketCount();
    insert(map, members);
    auto wide = map.bucketCount();
    EXPECT_GT(wide, narrow) << members;
    auto const staysAsItIs = [&] {
      for (std::uint32_t turn = 0; turn < 10; ++turn) {
        map.remove(map.first());
        EXPECT_EQ(map.bucketCount(), wide) << members;
        insert(map, 5000 + turn);
        EXPECT_EQ(map.bucketCount(), wide) << members;
      }
    };
    staysAsItIs();
    while (members > 32 && map.bucketCount() == wide) {
      map.remove(map.first());
    }
    wide = map.bucketCount();
    staysAsItIs();
  }
}

TEST(HashMap, TakingOutTheFirstUntilThereIsNoneLooksAtEachBucketOnce) {
  constexpr std::uint32_t many = 200000;
  Map<Spread> map;
  for (std::uint32_t id = 0; id < many; ++id) {
    insert(map, id);
  }
  auto const order = idsOf(map);
  std::uint64_t const atFirst = map.bucketCount();
  std::uint64_t looked = 0;
  for (std::uint32_t const expected : order) {
    std::uint64_t const from = map.firstBucket();
    std::uint64_t const count = map.bucketCount();
    Member<Spread>* const first = map.first();
    ASSERT_EQ(first->id(), expected);
    // The bucket of the member, by the definition of the order.
    std::uint64_t const bucket = Kor::bitReverse(first->fwkKey().hash()) * count >> 32U;
    ASSERT_LE(from, bucket);
    ASSERT_EQ(map.firstBucket(), bucket);
    looked += bucket - from + 1;
    map.remove(first);
    if (map.bucketCount() < count) {
      looked += count;  // shrinking visits all of them
    }
  }
  EXPECT_EQ(map.members(), 0U);
  EXPECT_LE(looked, 3 * atFirst + many);
}

TEST(HashMap, TheFirstIsFoundWhereverMembersCameAfterOneWasTakenOut) {
  Map<Spread> map;
  for (std::uint32_t id = 0; id < 1000; ++id) {
    insert(map, id);
  }
  auto const order = idsOf(map);
  for (std::size_t at = 0; at < 500; ++at) {
    map.remove(map.first());
  }
  EXPECT_EQ(map.first()->id(), order[500]);
  insert(map, order[3]);
  EXPECT_EQ(map.first()->id(), order[3]) << "one that comes before";
  map.remove(map.first());
  EXPECT_EQ(map.first()->id(), order[500]);
  for (std::uint32_t id = 1000; id < 3000; ++id) {
    insert(map, id);
  }
  EXPECT_EQ(map.first()->id(), idsOf(map).front()) << "after growth";
  map.clear();
  EXPECT_EQ(map.first(), nullptr);
  insert(map, order[0]);
  EXPECT_EQ(map.first()->id(), order[0]) << "after it was empty";
}

TEST(HashMap, IsWalkedInAscendingReversedHashAndTiesByKey) {
  Map<FewValues> map;
  for (std::uint32_t id = 0; id < 9; ++id) {
    insert(map, id);
  }
  // Hashes 0, 2, 1 reversed are 0, 0x40000000, 0x80000000.
  EXPECT_EQ(idsOf(map), (std::vector<std::uint32_t>{0, 3, 6, 2, 5, 8, 1, 4, 7}));
}

TEST(HashMap, ComputesTheHashOfAMemberOnce) {
  Map<Spread> map;
  Key<Spread>::hashings() = 0;
  for (std::uint32_t id = 0; id < 1000; ++id) {
    insert(map, id);
  }
  for (auto const* member = map.first(); member != nullptr; member = map.next(member)) {
  }
  EXPECT_EQ(Key<Spread>::hashings(), 1000) << "growing and walking hash nothing";
}

TEST(HashMap, TheLastOfAChainIsItsOwnNext) {
  Map<EverythingCollides> map;
  insert(map, 1);
  insert(map, 2);
  auto const* const first = map.first();
  EXPECT_EQ(first->fwkHmNext(), map.next(first));
  auto const* const last = map.next(first);
  EXPECT_EQ(last->fwkHmNext(), last);
}

TEST(HashMap, AMemberMayMoveToAnotherMapUnderACursor) {
  Map<Spread> from;
  Map<Spread> to;
  for (std::uint32_t id = 0; id < 10; ++id) {
    insert(from, id);
  }
  auto const order = idsOf(from);
  std::vector<std::uint32_t> walked;
  for (Cursor<Spread> cursor(from); cursor.member(); cursor.advance()) {
    walked.push_back(cursor.member()->id());
    to.insert(cursor.remove());
  }
  EXPECT_EQ(walked, order);
  EXPECT_EQ(from.members(), 0U);
  EXPECT_EQ(idsOf(to), order);
}

TEST(HashMap, ACursorOnAReplacedMemberGoesOnBehindItsPlace) {
  Map<EverythingCollides> map;
  for (std::uint32_t id = 0; id < 5; ++id) {
    insert(map, id);
  }
  Cursor<EverythingCollides> cursor(map);
  cursor.advance();
  cursor.advance();
  auto const old = cursor.member();
  insert(map, 2);
  EXPECT_EQ(cursor.member(), old);
  EXPECT_FALSE(cursor.remove()) << "the one that stands there now is another";
  EXPECT_EQ(map.members(), 5U);
  cursor.advance();
  EXPECT_EQ(cursor.member()->id(), 3U);
}

TEST(HashMap, AMapThatDiesPutsItsCursorsAtTheEnd) {
  auto map = std::make_unique<Map<Spread>>();
  for (std::uint32_t id = 0; id < 4; ++id) {
    insert(*map, id);
  }
  Cursor<Spread> cursor(*map);
  Cursor<Spread> copy = cursor;
  Cursor<Spread> assigned;
  assigned = copy;
  map.reset();
  for (Cursor<Spread>* const each : {&cursor, &copy, &assigned}) {
    EXPECT_FALSE(each->member());
    each->advance();
    EXPECT_FALSE(each->member());
  }
  EXPECT_EQ(Member<Spread>::alive(), 0);
}

TEST(HashMap, AMemberThatHoldsACursorOfItsOwnMapMayBeTheLastToDie) {
  auto map = std::make_unique<Map<Spread>>();
  insert(*map, 1);
  auto inner = std::make_unique<Cursor<Spread>>(*map);
  auto outer = std::make_unique<Cursor<Spread>>(*map);
  {
    auto const held = map->remove(Key<Spread>{1});
    held->atEnd = [&inner] { inner.reset(); };
  }
  // Only the cursors hold the member now. The one that releases it last destroys the other.
  inner = std::make_unique<Cursor<Spread>>(*map);
  map.reset();
  EXPECT_EQ(inner, nullptr);
  EXPECT_FALSE(outer->member());
  EXPECT_EQ(Member<Spread>::alive(), 0);
}

TEST(HashMap, AMemberMayInsertAnotherWhileTheMapIsCleared) {
  Map<Spread> map;
  auto member = Kor::make<Member<Spread>>(1U);
  member->atEnd = [&map] { insert(map, 2); };
  map.insert(member);
  member = nullptr;
  map.clear();
  for (auto const id : idsOf(map)) {
    EXPECT_EQ(id, 2U);
  }
  map.clear();
  EXPECT_EQ(map.members(), 0U);
}

TEST(HashMap, AMemberMayRemoveAllOthersWhileTheMapIsCleared) {
  Map<Spread> map;
  for (std::uint32_t id = 0; id < 1000; ++id) {
    insert(map, id);
  }
  auto const order = idsOf(map);
  // Most of the table is empty then; the last member must not be missed.
  map.find(Key<Spread>{order[500]})->atEnd = [&] {
    for (std::size_t at = 501; at + 1 < order.size(); ++at) {
      map.remove(Key<Spread>{order[at]});
    }
  };
  map.clear();
  EXPECT_EQ(map.members(), 0U);
  EXPECT_EQ(Member<Spread>::alive(), 0);
}

TEST(HashMap, AMemberMayRemoveTheNextWhileAllAreRemoved) {
  Map<Spread> map;
  for (std::uint32_t id = 0; id < 10; ++id) {
    insert(map, id);
  }
  auto const order = idsOf(map);
  map.find(Key<Spread>{order[3]})->atEnd = [&] { map.remove(Key<Spread>{order[4]}); };
  std::vector<std::uint32_t> announced;
  map.removeAll([&](auto const& removed) { announced.push_back(removed->id()); });
  auto expected = order;
  expected.erase(expected.begin() + 4);
  EXPECT_EQ(announced, expected);
  EXPECT_EQ(map.members(), 0U);
}

TEST(HashMapDeathTest, RemovingAMemberOfAnotherMapIsAnAssertion) {
  Map<Spread> map;
  Map<Spread> other;
  auto const member = Kor::make<Member<Spread>>(1U);
  other.insert(member);
  EXPECT_ASSERTION(map.remove(member.get()), "Kor/HashMap", "member of this map",
                   "Kor/HashTable.h");
  insert(map, 1);
  EXPECT_ASSERTION(map.remove(member.get()), "Kor/HashMap", "member of this map",
                   "Kor/HashTable.h");
}

TEST(HashMapDeathTest, LinkingALinkedMemberIsAnAssertion) {
  Map<Spread> map;
  auto const member = Kor::make<Member<Spread>>(1U);
  map.insert(member);
  EXPECT_ASSERTION(map.insert(member), "Kor/HashMap", "t->fwkHmNext() == 0", "Kor/HashMap.h");
  Map<Spread> other;
  EXPECT_ASSERTION(other.insert(member), "Kor/HashMap", "t->fwkHmNext() == 0", "Kor/HashMap.h");
}

}  // namespace
