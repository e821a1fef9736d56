// SPDX-License-Identifier: Apache-2.0
#pragma once

// HashTable: the buckets of a HashMap.
//
// Order: an iteration visits the members in ascending reversed hash, members with equal hashes by
// key `<`, whatever the number of buckets is (see BucketOrder.h). So neither growth nor shrinking
// disturbs it. The chain of a bucket is in this order, too. Keys are equal by `==`. A member's hash
// is computed once, when it is linked.
//
// Few members are in one chain without a table, and are found by their keys alone. A table shrinks
// when few of its members are left, so that an iteration costs no more than they are, and is
// released when the last one leaves.

#include "Kor/Assert.h"
#include "Kor/BucketOrder.h"
#include "Kor/Hash.h"
#include "Kor/HashMapLink.h"
#include "Kor/MemoryPool.h"
#include "Kor/Ptr.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <type_traits>

namespace Kor {

template <class Member>
class HashTable {
 public:
  HashTable(HashTable const&) = delete;
  HashTable& operator=(HashTable const&) = delete;

  [[nodiscard]] std::uint32_t members() const { return members_; }
  // Number of chains. A full iteration inspects each of them.
  [[nodiscard]] std::uint32_t bucketCount() const { return order_.count(); }
  // Where first() starts. The buckets before it are empty.
  [[nodiscard]] std::uint32_t firstBucket() const { return firstBucket_; }

  template <class Key>
  [[nodiscard]] Member* find(Key const& key) const {
    return lookUp(key,
                  [](Member** /*chain*/, Member* /*before*/, Member* member) { return member; });
  }

  // Unlinks and returns the member at `key`, null if there is none. `key` may be part of that
  // member.
  template <class Key>
  Kor::Ptr<Member> remove(Key const& key) {
    return Kor::Ptr<Member>(lookUp(key, [this](Member** chain, Member* before, Member* member) {
      return member == nullptr ? nullptr : unlink(*chain, before, member).release();
    }));
  }

  // Unlinks a member of this map.
  Kor::Ptr<Member> remove(Member* member) {
    Member*& chain = chainOf(link(member).hash_);
    Member* before = nullptr;
    for (Member* m = chain; m != member; m = after(m)) {
      KOR_ASSERT_AS("Kor/HashMap", "member of this map", m != nullptr);
      before = m;
    }
    return unlink(chain, before, member);
  }

  void clear() { unlinkAll(); }

  // The first member, null if empty; the next after a linked member, null after the last.
  [[nodiscard]] Member* first() const {
    if (members_ == 0) {
      return nullptr;
    }
    Member* const member = firstFrom(firstBucket_);
    firstBucket_ = order_.bucketOf(link(member).hash_);
    return member;
  }
  [[nodiscard]] Member* next(Member const* member) const {
    Member* const successor = after(member);
    return successor != nullptr ? successor : firstFrom(order_.bucketOf(link(member).hash_) + 1);
  }
  // The first member after the place of `key`, whether or not `key` is present.
  template <class Key>
  [[nodiscard]] Member* upperBound(Key const& key) const {
    return upperBound(hashOf(key), key);
  }

 protected:
  HashTable() = default;
  // The table must be empty.
  ~HashTable() { replaceBuckets(&single_, BucketOrder()); }

  // Links a member that is in no map. Replaces a member with an equal key and returns the old one.
  // Inlined, because most types insert at one place.
  [[gnu::always_inline]] Kor::Ptr<Member> insertUnlinked(Member* t) {
    auto const& key = t->fwkKey();
    std::uint32_t const hash = hashOf(key);
    if (members_ >= full_) [[unlikely]] {
      rebuild(std::clamp(2 * bucketCount(), fewestBuckets, BucketOrder::most));
    }
    std::uint32_t const bucket = order_.bucketOf(hash);
    Member*& chain = buckets_[bucket];
    Member* before = nullptr;
    Member* member = chain;
    while (member != nullptr && precedes(member, hash, key)) {
      before = member;
      member = after(member);
    }
    link(t).hash_ = hash;
    t->newRef();
    (before == nullptr ? chain : link(before).next_) = t;
    if (member != nullptr && link(member).hash_ == hash && member->fwkKey() == key) {
      Member* const successor = after(member);
      link(t).next_ = successor == nullptr ? t : successor;
      link(member).next_ = nullptr;
      ++removals_;
      return Kor::Ptr<Member>(member);
    }
    link(t).next_ = member == nullptr ? t : member;
    ++members_;
    if (bucket < firstBucket_) [[unlikely]] {
      firstBucket_ = bucket;
    }
    return nullptr;
  }

  // The first member after the place of `member`, which may have left the table.
  [[nodiscard]] Member* afterPlaceOf(Member const* member) const {
    return upperBound(link(member).hash_, member->fwkKey());
  }
  // Changes with each removal.
  [[nodiscard]] std::uint32_t removals() const { return removals_; }

  // Iterates by place, not by bucket: a destroyed member may insert or remove others and so change
  // the number of buckets.
  void unlinkAll() {
    std::uint32_t place = 0;
    while (members_ != 0) {
      Member* const head = firstFrom(order_.bucketOf(place));
      if (head == nullptr) {
        return;  // the rest was inserted before the current place
      }
      place = link(head).hash_;
      Kor::Ptr<Member> const removed = unlink(chainOf(place), nullptr, head);
    }
  }

 private:
  static constexpr std::uint32_t mostInOneChain = 4;
  static constexpr std::uint32_t fewestBuckets = 16;

  static HashMapLink<Member>& link(Member* member) { return *member; }
  static HashMapLink<Member> const& link(Member const* member) { return *member; }

  // The next of the chain, null at its end.
  static Member* after(Member const* member) {
    Member* const next = link(member).next_;
    return next == member ? nullptr : next;
  }
  template <class Key>
  static bool precedes(Member const* member, std::uint32_t hash, Key const& key) {
    std::uint32_t const own = link(member).hash_;
    return own == hash ? member->fwkKey() < key : BucketOrder::comesBefore(own, hash);
  }

  [[nodiscard]] bool hasTable() const { return buckets_ != &single_; }
  [[nodiscard]] Member*& chainOf(std::uint32_t hash) const {
    return buckets_[order_.bucketOf(hash)];
  }

  // Calls found(chain, before, member) with the member at `key`, or with null.
  template <class Key, class Found>
  [[gnu::always_inline]] Member* lookUp(Key const& key, Found const& found) const {
    if (!hasTable()) {
      return inChain(
          *buckets_, [&key](Member const* member) { return member->fwkKey() == key; }, found);
    }
    std::uint32_t const hash = hashOf(key);
    return inChain(
        chainOf(hash),
        [hash, &key](Member const* member) {
          if constexpr (std::is_integral_v<Key> || std::is_enum_v<Key>) {
            static_cast<void>(hash);
            return member->fwkKey() == key;  // is no more work than to compare hashes
          } else {
            return link(member).hash_ == hash && member->fwkKey() == key;
          }
        },
        found);
  }
  template <class Wanted, class Found>
  [[gnu::always_inline]] static Member* inChain(Member*& chain, Wanted const& wanted,
                                                Found const& found) {
    Member* before = nullptr;
    for (Member* member = chain; member != nullptr; member = after(member)) {
      if (wanted(member)) {
        return found(&chain, before, member);
      }
      before = member;
    }
    return found(nullptr, nullptr, nullptr);
  }

  [[nodiscard]] Member* firstFrom(std::uint32_t bucket) const {
    // Prefetches the heads of chains, then their next members.
    constexpr std::uint32_t headsAhead = 24;
    constexpr std::uint32_t nextsAhead = 8;
    for (std::uint32_t const count = bucketCount(); bucket < count; ++bucket) {
      if (bucket + headsAhead < count) {
        __builtin_prefetch(buckets_[bucket + headsAhead]);
        if (Member const* const head = buckets_[bucket + nextsAhead]) {
          __builtin_prefetch(link(head).next_);
        }
      }
      if (buckets_[bucket] != nullptr) {
        return buckets_[bucket];
      }
    }
    return nullptr;
  }
  template <class Key>
  [[nodiscard]] Member* upperBound(std::uint32_t hash, Key const& key) const {
    for (Member* member = chainOf(hash); member != nullptr; member = after(member)) {
      if (!precedes(member, hash, key) &&
          !(link(member).hash_ == hash && member->fwkKey() == key)) {
        return member;
      }
    }
    return firstFrom(order_.bucketOf(hash) + 1);
  }

  // Returns the table's reference.
  Kor::Ptr<Member> unlink(Member*& chain, Member* before, Member* member) {
    Member* const successor = after(member);
    if (before == nullptr) {
      chain = successor;
    } else {
      link(before).next_ = successor == nullptr ? before : successor;
    }
    link(member).next_ = nullptr;
    ++removals_;
    if (--members_ <= sparse_) [[unlikely]] {
      shrink();
    }
    return Kor::Ptr<Member>(member);
  }

  // How many members a table has before it grows. One that fits in the nearest caches has room, so
  // most chains have one member; for a larger one, each line of it that is visited costs more than
  // longer chains.
  static std::uint32_t capacityOf(std::uint32_t buckets) {
    constexpr std::uint32_t mostNear = 4096;
    return buckets == 1                  ? mostInOneChain
           : buckets <= mostNear         ? buckets / 2
           : buckets < BucketOrder::most ? buckets
                                         : std::numeric_limits<std::uint32_t>::max();
  }

  // Growth and shrinking leave a table not more than half full, far from both thresholds.
  void shrink() {
    if (members_ == 0) {
      replaceBuckets(&single_, BucketOrder());
      return;
    }
    try {
      std::uint32_t const few = bucketCount() / 4;
      rebuild(capacityOf(few) < 2 * members_ ? 2 * few : few);
    } catch (std::bad_alloc const&) {
      // The table stays as it is, because a removal must not fail.
    }
  }

  // Distributes the members to another number of buckets. No key is hashed again.
  [[gnu::noinline]] void rebuild(std::uint32_t count) {
    auto** const buckets = static_cast<Member**>(MemoryPool::allocate(count * sizeof(Member*)));
    std::fill_n(buckets, count, nullptr);
    BucketOrder const order(count);
    Member* previous = nullptr;
    // In the order, so the members of a new bucket are consecutive.
    auto const move = [&](Member* member) {
      while (member != nullptr) {
        Member* const following = after(member);
        Member*& head = buckets[order.bucketOf(link(member).hash_)];
        link(member).next_ = member;
        (head == nullptr ? head : link(previous).next_) = member;
        previous = member;
        member = following;
      }
    };
    constexpr std::uint32_t ahead = 16;
    for (std::uint32_t i = 0; i < bucketCount(); ++i) {
      if (Member* const soon = buckets_[std::min(i + ahead, bucketCount() - 1)]) {
        __builtin_prefetch(soon);
      }
      move(buckets_[i]);
    }
    replaceBuckets(buckets, order);
  }

  void replaceBuckets(Member** buckets, BucketOrder order) {
    if (hasTable()) {
      MemoryPool::release(buckets_, bucketCount() * sizeof(Member*));
    }
    // Of the buckets before the first, as many of the new ones are empty in proportion.
    firstBucket_ =
        static_cast<std::uint32_t>(std::uint64_t{firstBucket_} * order.count() / bucketCount());
    buckets_ = buckets;
    order_ = order;
    full_ = capacityOf(bucketCount());
    sparse_ = bucketCount() <= 4 * fewestBuckets ? 0 : full_ / 8;
    single_ = nullptr;
  }

  Member** buckets_ = &single_;
  Member* single_ = nullptr;  // the one chain if there is no table
  BucketOrder order_;
  std::uint32_t members_ = 0;
  std::uint32_t sparse_ = 0;             // with so few members the table shrinks
  std::uint32_t full_ = mostInOneChain;  // with so many members it grows
  std::uint32_t removals_ = 0;
  mutable std::uint32_t firstBucket_ = 0;  // advances when first() finds nothing
};

}  // namespace Kor
