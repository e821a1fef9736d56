// SPDX-License-Identifier: Apache-2.0
#pragma once

// HashMap: an intrusive keyed collection of counted members.
//
// Order: a member is in one of 2^k buckets, chosen by the top k bits of bitReverse(hash). The chain
// of a bucket is ordered by that reversed hash, ties by key `<`. So an iteration visits the members
// in ascending reversed hash, whatever k is. Neither growth, which splits chains, nor shrinking,
// which joins them, disturbs an iteration. Keys are equal by `==`. A member's hash is computed
// once, when it is linked.
//
// Cost: an iteration is linear in the current number of members, not in the largest number so far.
// Removing all members one by one, each time the first, is linear in total.
//
// A member type M derives from HashMapLink<M>, is counted (newRef, deleteRef) and provides
// fwkKey(). A member can be in one map at a time: linking a linked one is the assertion
// "t->fwkHmNext() == 0".
//
// Cursors: a cursor counts its member and stays valid whatever happens to the map. Its member or
// the neighbours may be removed, and the map may grow. After removeAll() the cursor has no next
// member, whatever is linked afterwards. When the map is destroyed the cursor moves to its end.

#include "Kor/Assert.h"
#include "Kor/Hash.h"
#include "Kor/Ptr.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace Kor {

template <class Member>
class HashMap;

// The map's data in a member.
template <class Member>
class HashMapLink {
 public:
  HashMapLink(HashMapLink const&) = delete;
  HashMapLink& operator=(HashMapLink const&) = delete;

  // Null if not linked. The last member of a chain points to itself.
  [[nodiscard]] Member* fwkHmNext() const { return next_; }

 protected:
  HashMapLink() = default;
  ~HashMapLink() = default;

 private:
  friend class HashMap<Member>;

  Member* next_ = nullptr;
  std::uint32_t reversedHash_ = 0;
};

template <class Member>
class HashMap {
 public:
  class Cursor;

  HashMap() = default;
  HashMap(HashMap const&) = delete;
  HashMap& operator=(HashMap const&) = delete;
  ~HashMap() {
    while (cursors_ != nullptr) {
      cursors_->mapGone();
    }
    unlinkAll();
    if (buckets_ != &single_) {
      delete[] buckets_;
    }
  }

  [[nodiscard]] std::uint32_t members() const { return members_; }
  // Number of chains. A full iteration inspects each of them.
  [[nodiscard]] std::uint32_t bucketCount() const { return 1U << bits_; }
  // Where first() starts. The buckets before it are empty.
  [[nodiscard]] std::uint32_t firstBucket() const { return firstBucket_; }

  template <class Key>
  [[nodiscard]] Member* find(Key const& key) const {
    if (members_ == 0) {
      return nullptr;
    }
    std::uint32_t const reversed = bitReverse(hashOf(key));
    for (Member* member = buckets_[bucketOf(reversed)]; member != nullptr; member = after(member)) {
      if (link(member).reversedHash_ >= reversed) {
        if (link(member).reversedHash_ != reversed) {
          return nullptr;
        }
        if (member->fwkKey() == key) {
          return member;
        }
      }
    }
    return nullptr;
  }

  // Links a member. Replaces a member with an equal key and returns the old one.
  Kor::Ptr<Member> insert(Kor::Ptr<Member> const& linked) {
    Member* const t = linked.get();
    KOR_ASSERT_AS("Kor/HashMap", "t->fwkHmNext() == 0", link(t).next_ == nullptr);
    auto const& key = t->fwkKey();
    std::uint32_t const reversed = bitReverse(hashOf(key));
    // At most half full, so most chains have one member.
    if (members_ != 0 && 2 * members_ >= bucketCount()) {
      grow();
    }
    Member* before = nullptr;
    Member* member = buckets_[bucketOf(reversed)];
    while (member != nullptr && precedes(member, reversed, key)) {
      before = member;
      member = after(member);
    }
    link(t).reversedHash_ = reversed;
    std::uint32_t const bucket = bucketOf(reversed);
    Kor::Ptr<Member> replaced;
    if (member != nullptr && link(member).reversedHash_ == reversed && member->fwkKey() == key) {
      replaced = share(member);
      unlink(bucket, before, member);
      member = before == nullptr ? buckets_[bucket] : after(before);
    }
    t->newRef();
    link(t).next_ = member == nullptr ? t : member;
    (before == nullptr ? buckets_[bucket] : link(before).next_) = t;
    ++members_;
    if (bucket < firstBucket_) [[unlikely]] {
      firstBucket_ = bucket;
    }
    return replaced;
  }

  // Unlinks and returns the member at `key`, null if there is none. `key` may be part of that
  // member.
  template <class Key>
  Kor::Ptr<Member> remove(Key const& key) {
    Member* const member = find(key);
    return member == nullptr ? nullptr : remove(member);
  }

  // Unlinks a member of this map.
  Kor::Ptr<Member> remove(Member* member) {
    std::uint32_t const bucket = bucketOf(link(member).reversedHash_);
    Member* before = nullptr;
    for (Member* m = buckets_[bucket]; m != member; m = after(m)) {
      before = m;
    }
    Kor::Ptr<Member> removed = share(member);
    unlink(bucket, before, member);
    shrinkIfSparse();
    return removed;
  }

  void clear() {
    unlinkAll();
    shrinkIfSparse();
  }

  // Unlinks each member in order and then calls announce(Ptr<Member>), which may change the map: a
  // member linked ahead of the current place is removed too, one linked before it stays. Cursors
  // that are open at the start keep their member and then move to their end.
  template <class Announce>
  void removeAll(Announce&& announce) {
    for (Cursor* open = cursors_; open != nullptr; open = open->older_) {
      open->over_ = !open->removesAll_;
    }
    Cursor cursor(*this);
    cursor.removesAll_ = true;
    while (Kor::Ptr<Member> const removed = cursor.member_) {
      // Destroying the previous member may have removed this one.
      if (link(removed.get()).next_ != nullptr) {
        remove(removed.get());
        announce(removed);
      }
      if (cursor.map_ == nullptr) {
        return;  // the map was destroyed
      }
      // The link of a removed member still holds its place.
      cursor.member_ = share(upperBound(link(removed.get()).reversedHash_, removed->fwkKey()));
      cursor.removals_ = removals_;
    }
  }

  // The first member, null if empty; the next after a linked member, null after the last.
  [[nodiscard]] Member* first() const {
    if (members_ == 0) {
      return nullptr;
    }
    Member* const member = firstFrom(firstBucket_);
    firstBucket_ = bucketOf(link(member).reversedHash_);
    return member;
  }
  [[nodiscard]] Member* next(Member const* member) const {
    Member* const successor = after(member);
    return successor != nullptr ? successor : firstFrom(bucketOf(link(member).reversedHash_) + 1);
  }
  // The first member after the place of `key`, whether or not `key` is present.
  template <class Key>
  [[nodiscard]] Member* upperBound(Key const& key) const {
    return upperBound(bitReverse(hashOf(key)), key);
  }

 private:
  static HashMapLink<Member>& link(Member* member) { return *member; }
  static HashMapLink<Member> const& link(Member const* member) { return *member; }

  // The next of the chain, null at its end.
  static Member* after(Member const* member) {
    Member* const next = link(member).next_;
    return next == member ? nullptr : next;
  }
  template <class Key>
  static bool precedes(Member const* member, std::uint32_t reversed, Key const& key) {
    std::uint32_t const own = link(member).reversedHash_;
    return own < reversed || (own == reversed && member->fwkKey() < key);
  }

  [[nodiscard]] std::uint32_t bucketOf(std::uint32_t reversed) const {
    // Two steps: a shift by the full width, for a single bucket, is undefined.
    return (reversed >> 1) >> (31U - bits_);
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
  [[nodiscard]] Member* upperBound(std::uint32_t reversed, Key const& key) const {
    if (members_ == 0) {
      return nullptr;
    }
    std::uint32_t const bucket = bucketOf(reversed);
    for (Member* member = buckets_[bucket]; member != nullptr; member = after(member)) {
      if (!precedes(member, reversed, key) &&
          !(link(member).reversedHash_ == reversed && member->fwkKey() == key)) {
        return member;
      }
    }
    return firstFrom(bucket + 1);
  }

  void unlink(std::uint32_t bucket, Member* before, Member* member) {
    Member* const successor = after(member);
    if (before == nullptr) {
      buckets_[bucket] = successor;
    } else {
      link(before).next_ = successor == nullptr ? before : successor;
    }
    link(member).next_ = nullptr;
    --members_;
    ++removals_;
    member->deleteRef();
  }

  // Doubles the buckets. A chain is ordered by reversed hash, so it is cut at the first member
  // whose next bit is set. No key is hashed again.
  void grow() {
    std::uint32_t const oldCount = bucketCount();
    auto* const wider = new Member*[std::size_t{2} * oldCount];
    std::uint32_t const bit = 0x80000000U >> bits_;
    for (std::uint32_t bucket = 0; bucket < oldCount; ++bucket) {
      Member* const head = buckets_[bucket];
      Member* last = nullptr;
      Member* member = head;
      while (member != nullptr && (link(member).reversedHash_ & bit) == 0) {
        last = member;
        member = after(member);
      }
      if (last != nullptr) {
        link(last).next_ = last;
      }
      wider[2 * bucket] = last == nullptr ? nullptr : head;
      wider[2 * bucket + 1] = member;
    }
    replaceBuckets(wider);
    ++bits_;
    firstBucket_ *= 2;
  }

  // Growth leaves a map a quarter full, so a map that has just grown or shrunk is far from the
  // other threshold.
  void shrinkIfSparse() {
    constexpr std::uint32_t smallest = 16;
    while (members_ < bucketCount() / 16 && bucketCount() > smallest)
      [[unlikely]] {
        if (!shrink()) {
          return;
        }
      }
  }

  // Halves the buckets. Each new chain joins two neighbours, so the order stays. Without memory the
  // map stays as it is, because a removal must not fail.
  bool shrink() {
    std::uint32_t const newCount = bucketCount() / 2;
    auto* const narrower = new (std::nothrow) Member*[newCount];
    if (narrower == nullptr) {
      return false;
    }
    for (std::uint32_t bucket = 0; bucket < newCount; ++bucket) {
      Member* const head = buckets_[2 * bucket];
      Member* const upper = buckets_[2 * bucket + 1];
      narrower[bucket] = head == nullptr ? upper : head;
      if (head != nullptr && upper != nullptr) {
        Member* last = head;
        while (Member* const next = after(last)) {
          last = next;
        }
        link(last).next_ = upper;
      }
    }
    replaceBuckets(narrower);
    --bits_;
    firstBucket_ /= 2;
    return true;
  }

  void replaceBuckets(Member** buckets) {
    if (buckets_ != &single_) {
      delete[] buckets_;
    }
    buckets_ = buckets;
  }

  // Iterates by place, not by bucket: a destroyed member may insert or remove others and so change
  // the number of buckets.
  void unlinkAll() {
    std::uint32_t place = 0;
    while (members_ != 0) {
      Member* const head = firstFrom(bucketOf(place));
      if (head == nullptr) {
        return;  // the rest was inserted before the current place
      }
      place = link(head).reversedHash_;
      Kor::Ptr<Member> const removed = share(head);
      unlink(bucketOf(place), nullptr, head);
    }
  }

  Member** buckets_ = &single_;  // small maps need no allocation
  Member* single_ = nullptr;
  Cursor* cursors_ = nullptr;  // open on this map
  std::uint32_t members_ = 0;
  std::uint32_t removals_ = 0;  // lets a cursor detect that its neighbours may have changed
  std::uint32_t bits_ = 0;
  mutable std::uint32_t firstBucket_ = 0;  // advances when first() finds nothing
};

// A position in a map, or its end.
template <class Member>
class HashMap<Member>::Cursor {
 public:
  Cursor() = default;
  // At the first member.
  explicit Cursor(HashMap& map) : member_(share(map.first())), removals_(map.removals_) {
    attach(&map);
  }
  Cursor(Cursor const& other)
      : member_(other.member_), removals_(other.removals_), over_(other.over_) {
    attach(other.map_);
  }
  Cursor& operator=(Cursor const& other) {
    if (this != &other) {
      detach();
      member_ = other.member_;
      removals_ = other.removals_;
      over_ = other.over_;
      attach(other.map_);
    }
    return *this;
  }
  ~Cursor() { detach(); }

  // The member at the cursor, even if it has left the map; null at the end.
  [[nodiscard]] Kor::Ptr<Member> const& member() const { return member_; }

  void advance() {
    if (map_ == nullptr || !member_ || over_) {
      member_ = nullptr;
    } else if (removals_ == map_->removals_) {
      member_ = share(map_->next(member_.get()));
    } else {
      removals_ = map_->removals_;
      member_ = share(map_->upperBound(member_->fwkKey()));
    }
  }

  // Removes and returns the member at the cursor, which the cursor keeps; null if it is already
  // gone.
  Kor::Ptr<Member> remove() {
    if (map_ == nullptr || !member_ || map_->find(member_->fwkKey()) != member_.get()) {
      return nullptr;
    }
    return map_->remove(member_.get());
  }

 private:
  friend class HashMap;

// g++ 12 warns that the map keeps the address of a cursor on the stack. It does not see that
// detach() always runs.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdangling-pointer"
#endif
  void attach(HashMap* map) {
    map_ = map;
    if (map_ != nullptr) {
      older_ = map_->cursors_;
      if (older_ != nullptr) {
        older_->newer_ = this;
      }
      map_->cursors_ = this;
    }
  }
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
  void detach() {
    if (map_ != nullptr) {
      (newer_ == nullptr ? map_->cursors_ : newer_->older_) = older_;
      if (older_ != nullptr) {
        older_->newer_ = newer_;
      }
      newer_ = older_ = nullptr;
      map_ = nullptr;
    }
  }
  // Moves to the end for good. Releases the member last: that may destroy other cursors, even this
  // one.
  void mapGone() {
    Kor::Ptr<Member> const held = std::move(member_);
    detach();
  }

  HashMap* map_ = nullptr;
  Kor::Ptr<Member> member_;
  std::uint32_t removals_ = 0;
  bool removesAll_ = false;
  bool over_ = false;  // the map was emptied by removeAll(): there is no next member
  Cursor* newer_ = nullptr;
  Cursor* older_ = nullptr;
};

}  // namespace Kor
