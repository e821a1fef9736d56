// SPDX-License-Identifier: Apache-2.0
#pragma once

// HashMap: an intrusive keyed collection of counted members.
//
// Order: by the reversed hash of the key (see HashTable.h). Changes of the number of buckets do not
// disturb an iteration. Keys are equal by `==`. A member's hash is computed once, when it is
// linked.
//
// Cost: an iteration is linear in the current number of members, not in the largest number so far.
// Removing all members one by one, each time the first, is linear in total. An empty map holds no
// memory.
//
// A member type M derives from HashMapLink<M>, is counted (newRef, deleteRef) and provides
// fwkKey(). A member can be in one map at a time: linking a linked one is the assertion
// "t->fwkHmNext() == 0".
//
// Cursors: a cursor counts its member and stays valid whatever happens to the map. Its member or
// the neighbours may be removed, and the map may grow. After removeAll() the cursor has no next
// member, whatever is linked afterwards. When the map is destroyed the cursor moves to its end.

#include "Kor/Assert.h"
#include "Kor/HashMapLink.h"
#include "Kor/HashTable.h"
#include "Kor/Ptr.h"

#include <cstdint>
#include <utility>

namespace Kor {

template <class Member>
class HashMap : public HashTable<Member> {
 public:
  class Cursor;

  HashMap() = default;
  HashMap(HashMap const&) = delete;
  HashMap& operator=(HashMap const&) = delete;
  ~HashMap() {
    while (cursors_ != nullptr) {
      cursors_->mapGone();
    }
    this->unlinkAll();
  }

  // Links a member. Replaces a member with an equal key and returns the old one.
  Kor::Ptr<Member> insert(Kor::Ptr<Member> const& linked) {
    Member* const t = linked.get();
    KOR_ASSERT_AS("Kor/HashMap", "t->fwkHmNext() == 0", t->fwkHmNext() == nullptr);
    return this->insertUnlinked(t);
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
      if (removed->fwkHmNext() != nullptr) {
        this->remove(removed.get());
        announce(removed);
      }
      if (cursor.map_ == nullptr) {
        return;  // the map was destroyed
      }
      // The link of a removed member still holds its place.
      cursor.member_ = share(this->afterPlaceOf(removed.get()));
      cursor.removals_ = this->removals();
    }
  }

 private:
  Cursor* cursors_ = nullptr;  // open on this map
};

// A position in a map, or its end.
template <class Member>
class HashMap<Member>::Cursor {
 public:
  Cursor() = default;
  // At the first member.
  explicit Cursor(HashMap& map) : member_(share(map.first())), removals_(map.removals()) {
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
    } else if (removals_ == map_->removals()) {
      member_ = share(map_->next(member_.get()));
    } else {
      removals_ = map_->removals();
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
