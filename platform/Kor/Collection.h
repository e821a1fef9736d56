// SPDX-License-Identifier: Apache-2.0
#pragma once

// Collection attributes: what a class gets by writing one line
//
//   KOR_VALUE_COLLECTION(Shelf, book, Book, Isbn, Copies)
//   KOR_OWNED_COLLECTION(Shelf, drawer, Drawer, Label, DrawerObject,
//                        KOR_ON_CHANGE(announceDrawer(key)))
//
// A value collection keeps values in small counted entries KorBook; an owned one keeps counted
// objects built from their key. Each gives
//
//   books()                   the number of members
//   book(k)                   a copy or the default; owned: the object or null
//   newBook(k[, v])           a new entry or object, replaces one of equal key, announces nothing
//   bookIs(k[, v])            value: overwrites in place or creates; owned: finds or creates
//   bookDel(k), bookDelAll()  bookDel returns what was removed, or the default
//   bookNotify(k, member)     runs after bookIs changed something and after any removal, also
//                             one through an iterator
//   bookIterator(), bookIteratorConst(), korBookIterator()   in the order of Kor::HashMap; key(),
//                             value(), and unless const entry(), the entry or object, and del()
//   korBook(k)                value: the entry or null, so a stored default differs from none
//
// KOR_ON_CHANGE gives the statement that bookNotify runs, with `key` and `member` at hand; without
// it, bookNotify does nothing. KOR_VIRTUAL_VALUE_COLLECTION makes bookDel, bookNotify and bookIs
// virtual, in this order of slots. What follows the line in its class is public. A key passed in
// may lie in the entry that the call removes.

#include "Kor/HashMap.h"
#include "Kor/PtrInterface.h"

#include <cstdint>
#include <type_traits>
#include <utility>

namespace Kor {

// One entry of a value collection.
template <class Entry, class K, class V>
class CollectionEntry : public PtrInterface, public HashMapLink<Entry> {
 public:
  using Key = K;
  using Value = V;

  // korCheckKey(key), where the type of the key has it, throws for a key that is not allowed.
  CollectionEntry(K const& key, V const& value) : key_(key), value_(value) {
    if constexpr (requires { korCheckKey(key); }) {
      korCheckKey(key);
    }
  }

  [[nodiscard]] K const& key() const { return key_; }
  [[nodiscard]] K const& fwkKey() const { return key_; }
  [[nodiscard]] V const& value() const { return value_; }
  void valueIs(V const& value) { value_ = value; }

 private:
  K key_;
  V value_;
};

// An owned member that wants to know its owner has korOwnerIs(Owner*), called with the owner when
// it joins a collection and with null when it leaves, also when the owner dies first.
template <class Member>
concept KnowsOwner = requires(Member& member) {
  member.korOwnerIs(nullptr);
};

// The storage of one collection attribute. `Attribute` is what the macros leave in the owner: the
// types, and how the owner is called.
template <class Attribute>
class Collection {
 public:
  using Key = typename Attribute::Key;
  using Value = typename Attribute::Value;
  using Member = typename Attribute::Member;
  static constexpr bool ownsObjects = std::is_same_v<Member, Value>;
  using Removed = std::conditional_t<ownsObjects, Kor::Ptr<Member>, Value>;

  Collection() = default;
  Collection(Collection const&) = delete;
  Collection& operator=(Collection const&) = delete;
  ~Collection() {
    if constexpr (KnowsOwner<Member>) {
      for (Member* member = map_.first(); member != nullptr; member = map_.next(member)) {
        member->korOwnerIs(nullptr);
      }
    }
  }

  [[nodiscard]] std::uint32_t members() const { return map_.members(); }
  [[nodiscard]] Kor::Ptr<Member> find(Key const& key) const { return share(map_.find(key)); }
  [[nodiscard]] Value value(Key const& key) const {
    Member const* const entry = map_.find(key);
    return entry == nullptr ? Value() : entry->value();
  }

  template <class Owner>
  Kor::Ptr<Member> insert(Owner& owner, Kor::Ptr<Member> member) {
    if (Kor::Ptr<Member> const replaced = map_.insert(member)) {
      leave(*replaced);
    }
    if constexpr (KnowsOwner<Member>) {
      member->korOwnerIs(&owner);
    }
    return member;
  }
  // Of a value collection: overwrites in place or creates.
  template <class Owner>
  void set(Owner& owner, Key const& key, Value const& value) {
    Kor::Ptr<Member> entry = find(key);
    if (!entry) {
      entry = Attribute::create(owner, key, value);
    } else if (entry->value() == value) {
      return;
    } else {
      entry->valueIs(value);
    }
    Attribute::notify(owner, entry);
  }
  // Of an owned collection: the object of that key; never null.
  template <class Owner>
  Kor::Ptr<Member> findOrCreate(Owner& owner, Key const& key) {
    Kor::Ptr<Member> member = find(key);
    if (!member) {
      member = validPtr(Attribute::create(owner, key));
      Attribute::notify(owner, member);
    }
    return member;
  }

  // Returns the removed object or null; of a value collection, the removed value or the default.
  template <class Owner>
  Removed remove(Owner& owner, Key const& key) {
    Kor::Ptr<Member> removed = map_.remove(key);
    if (removed) {
      announceRemoval(owner, removed);
    }
    if constexpr (ownsObjects) {
      return removed;
    } else {
      return removed ? removed->value() : Value();
    }
  }
  // One walk in map order that removes and then announces each member.
  template <class Owner>
  void removeAll(Owner& owner) {
    map_.removeAll([&owner](Kor::Ptr<Member> const& removed) { announceRemoval(owner, removed); });
  }
  template <class Owner>
  static void announceRemoval(Owner& owner, Kor::Ptr<Member> const& removed) {
    leave(*removed);
    Attribute::notify(owner, removed);
  }

  // The key of the first member, and of the first one after the place of `key`, which need not be
  // a member's; null at the end.
  [[nodiscard]] Key const* firstKey() const { return keyOf(map_.first()); }
  [[nodiscard]] Key const* keyAfter(Key const& key) const { return keyOf(map_.upperBound(key)); }
  // Iterators of a const owner walk without changing; the map only notes that they are open.
  [[nodiscard]] HashMap<Member>& map() const { return map_; }

 private:
  static Key const* keyOf(Member const* member) {
    return member == nullptr ? nullptr : &member->fwkKey();
  }
  static void leave([[maybe_unused]] Member& member) {
    if constexpr (KnowsOwner<Member>) {
      member.korOwnerIs(nullptr);
    }
  }

  mutable HashMap<Member> map_;
};

// True while on a member; `*` gives the iterator itself, so that
// `for (auto const& book : shelf->bookIterator())` reads book.key() and book.value(). That of a
// const owner removes nothing and gives pointers to const.
template <class Attribute, class Owner>
class CollectionIterator {
 public:
  using Member = typename Attribute::Member;

  CollectionIterator() = default;
  CollectionIterator(Owner* owner, HashMap<Member>& map) : cursor_(map), owner_(owner) {}

  explicit operator bool() const { return bool(cursor_.member()); }
  [[nodiscard]] auto const& key() const { return cursor_.member()->fwkKey(); }
  // A copy of the value of an entry; an owned object itself.
  [[nodiscard]] auto value() const {
    if constexpr (!Collection<Attribute>::ownsObjects) {
      return cursor_.member()->value();
    } else if constexpr (std::is_const_v<Owner>) {
      return Kor::Ptr<Member const>(cursor_.member());
    } else {
      return entry();
    }
  }
  [[nodiscard]] Kor::Ptr<Member> entry() const requires(!std::is_const_v<Owner>) {
    return cursor_.member();
  }

  CollectionIterator& operator++() {
    cursor_.advance();
    return *this;
  }
  CollectionIterator begin() const { return *this; }
  [[nodiscard]] std::nullptr_t end() const { return nullptr; }
  bool operator==(std::nullptr_t) const { return !*this; }
  CollectionIterator const& operator*() const { return *this; }

  // Removes the member under the iterator; it is announced like any removal.
  void del() requires(!std::is_const_v<Owner>) {
    if (Kor::Ptr<Member> const removed = cursor_.remove()) {
      Collection<Attribute>::announceRemoval(*owner_, removed);
    }
  }
  void deleteNotify(Kor::Ptr<Member> const& removed) requires(!std::is_const_v<Owner>) {
    Attribute::notify(*owner_, removed);
  }

 private:
  typename HashMap<Member>::Cursor cursor_;
  Owner* owner_ = nullptr;
};

}  // namespace Kor

// NOLINTBEGIN(bugprone-macro-parentheses): the arguments are types and names

// The statement that xNotify runs.
#define KOR_ON_CHANGE(...) __VA_ARGS__;

// What both forms share. M is the type of the members; V that of the values, for owned objects M.
#define KOR_COLLECTION_(VIRTUAL, Owner, x, X, K, V, M, ...)                        \
  struct X##Attribute {                                                            \
    using Key = K;                                                                 \
    using Value = V;                                                               \
    using Member = M;                                                              \
    static ::Kor::Collection<X##Attribute> const& collection(Owner const& owner) { \
      return owner.x##Collection_;                                                 \
    }                                                                              \
    static auto value(auto& owner, K const& key) { return owner.x(key); }          \
    static auto is(Owner& owner, K const& key, auto const&... v) {                 \
      return owner.x##Is(key, v...);                                               \
    }                                                                              \
    static void remove(Owner& owner, K const& key) { owner.x##Del(key); }          \
    static ::Kor::Ptr<M> create(Owner& owner, K const& key, auto const&... v) {    \
      return owner.new##X(key, v...);                                              \
    }                                                                              \
    static void notify(Owner& owner, ::Kor::Ptr<M> const& member) {                \
      owner.x##Notify(member->fwkKey(), member);                                   \
    }                                                                              \
  };                                                                               \
  using X##Iterator = ::Kor::CollectionIterator<X##Attribute, Owner>;              \
  using X##IteratorConst = ::Kor::CollectionIterator<X##Attribute, Owner const>;   \
  using Kor##X##Iterator = X##Iterator;                                            \
  [[nodiscard]] X##Iterator x##Iterator() {                                        \
    return {this, x##Collection_.map()};                                           \
  }                                                                                \
  [[nodiscard]] X##IteratorConst x##IteratorConst() const {                        \
    return {this, x##Collection_.map()};                                           \
  }                                                                                \
  [[nodiscard]] Kor##X##Iterator kor##X##Iterator() {                              \
    return x##Iterator();                                                          \
  }                                                                                \
                                                                                   \
  [[nodiscard]] std::uint32_t x##s() const {                                       \
    return x##Collection_.members();                                               \
  }                                                                                \
  VIRTUAL ::Kor::Collection<X##Attribute>::Removed x##Del(K const& key) {          \
    return x##Collection_.remove(*this, key);                                      \
  }                                                                                \
  void x##DelAll() {                                                               \
    x##Collection_.removeAll(*this);                                               \
  }                                                                                \
  VIRTUAL void x##Notify([[maybe_unused]] K const& key,                            \
                         [[maybe_unused]] ::Kor::Ptr<M> const& member) {           \
    __VA_ARGS__                                                                    \
  }                                                                                \
                                                                                   \
 private:                                                                          \
  ::Kor::Collection<X##Attribute> x##Collection_;                                  \
                                                                                   \
 public:

#define KOR_VALUE_COLLECTION_(VIRTUAL, Owner, x, X, K, V, ...)                       \
 public:                                                                             \
  class Kor##X final : public ::Kor::CollectionEntry<Kor##X, K, V> {                 \
   public:                                                                           \
    using CollectionEntry::CollectionEntry;                                          \
    [[nodiscard]] V x() const { return value(); }                                    \
  };                                                                                 \
  KOR_COLLECTION_(VIRTUAL, Owner, x, X, K, V, Kor##X, __VA_ARGS__)                   \
  [[nodiscard]] V x(K const& key) const {                                            \
    return x##Collection_.value(key);                                                \
  }                                                                                  \
  [[nodiscard]] ::Kor::Ptr<Kor##X> kor##X(K const& key) const {                      \
    return x##Collection_.find(key);                                                 \
  }                                                                                  \
  ::Kor::Ptr<Kor##X> new##X(K const& key, V const& value) {                          \
    return x##Collection_.insert(*this, ::Kor::Ptr<Kor##X>(new Kor##X(key, value))); \
  }                                                                                  \
  VIRTUAL void x##Is(K const& key, V const& value) {                                 \
    x##Collection_.set(*this, key, value);                                           \
  }

#define KOR_VALUE_COLLECTION(Owner, x, X, K, V, ...) \
  KOR_VALUE_COLLECTION_(, Owner, x, X, K, V, __VA_ARGS__)
#define KOR_VIRTUAL_VALUE_COLLECTION(Owner, x, X, K, V, ...) \
  KOR_VALUE_COLLECTION_(virtual, Owner, x, X, K, V, __VA_ARGS__)

#define KOR_OWNED_COLLECTION(Owner, x, X, K, M, ...)                \
 public:                                                            \
  KOR_COLLECTION_(, Owner, x, X, K, M, M, __VA_ARGS__)              \
  [[nodiscard]] ::Kor::Ptr<M> x(K const& key) {                     \
    return x##Collection_.find(key);                                \
  }                                                                 \
  [[nodiscard]] ::Kor::Ptr<M const> x(K const& key) const {         \
    return x##Collection_.find(key);                                \
  }                                                                 \
  ::Kor::Ptr<M> new##X(K const& key) {                              \
    return x##Collection_.insert(*this, ::Kor::Ptr<M>(new M(key))); \
  }                                                                 \
  ::Kor::Ptr<M> x##Is(K const& key) {                               \
    return x##Collection_.findOrCreate(*this, key);                 \
  }
// NOLINTEND(bugprone-macro-parentheses)
