// SPDX-License-Identifier: Apache-2.0
#pragma once

// HashTable: the buckets of a HashMap.
//
// Order: a member is in one of 2^k buckets, chosen by the top k bits of bitReverse(hash). The chain
// of a bucket is ordered by that reversed hash, ties by key `<`. So an iteration visits the members
// in ascending reversed hash, whatever k is. Neither growth, which splits chains, nor shrinking,
// which joins them, disturbs an iteration. Keys are equal by `==`. A member's hash is computed
// once, when it is linked.
//
// A table shrinks when an iteration starts, not when members are removed: only iterations visit
// empty buckets, and a table that is emptied and filled again need not grow again.

#include "Kor/Hash.h"
#include "Kor/HashMapLink.h"
#include "Kor/Ptr.h"

#include <cstddef>
#include <cstdint>
#include <new>

namespace Kor {

template <class Member>
class HashTable {
 public:
  HashTable(HashTable const&) = delete;
  HashTable& operator=(HashTable const&) = delete;

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
    return removed;
  }

  void clear() { unlinkAll(); }

  // The first member, null if empty; the next after a linked member, null after the last.
  [[nodiscard]] Member* first() const {
    shrinkIfSparse();
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

 protected:
  HashTable() = default;
  // The table must be empty.
  ~HashTable() {
    if (buckets_ != &single_) {
      delete[] buckets_;
    }
  }

  // Links a member that is in no map. Replaces a member with an equal key and returns the old one.
  // Inlined, because most types insert at one place.
  [[gnu::always_inline]] Kor::Ptr<Member> insertUnlinked(Member* t) {
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

  // The first member after the place of `member`, which may have left the table.
  [[nodiscard]] Member* afterPlaceOf(Member const* member) const {
    return upperBound(link(member).reversedHash_, member->fwkKey());
  }
  // Changes with each removal.
  [[nodiscard]] std::uint32_t removals() const { return removals_; }

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
  [[gnu::noinline]] void grow() {
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
  void shrinkIfSparse() const {
    constexpr std::uint32_t smallest = 16;
    while (members_ < bucketCount() / 16 && bucketCount() > smallest)
      [[unlikely]] {
        if (!shrink()) {
          return;
        }
      }
  }

  // Halves the buckets. Each new chain joins two neighbours, so the order stays. Without memory the
  // map stays as it is, because an iteration must not fail.
  [[gnu::noinline]] bool shrink() const {
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

  void replaceBuckets(Member** buckets) const {
    if (buckets_ != &single_) {
      delete[] buckets_;
    }
    buckets_ = buckets;
  }

  // Mutable: the number of buckets is not part of the table's value.
  mutable Member** buckets_ = &single_;  // small tables need no allocation
  mutable Member* single_ = nullptr;
  mutable std::uint32_t bits_ = 0;
  std::uint32_t members_ = 0;
  std::uint32_t removals_ = 0;
  mutable std::uint32_t firstBucket_ = 0;  // advances when first() finds nothing
};

}  // namespace Kor
