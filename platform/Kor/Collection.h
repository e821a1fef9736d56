// SPDX-License-Identifier: Apache-2.0
#pragma once

// Collection attributes: what a class gets by writing one line
//
//   KOR_VALUE_COLLECTION(Shelf, book, Book, Isbn, Copies, , {})
//   KOR_OWNED_COLLECTION(Shelf, drawer, Drawer, Label, DrawerObject, , { announceDrawer(key); })
//
// A value collection keeps values in small counted entries KorBook; an owned one keeps counted
// objects built from their key. Each gives
//
//   books()                   the number of members
//   book(k)                   a copy or the default; owned: the object or null
//   newBook(k[, v])           a new entry or object, replaces one of equal key, tells nobody
//   bookIs(k[, v])            value: overwrites in place or creates; owned: finds or creates
//   bookDel(k), bookDelAll()  bookDel answers what was removed, or the default
//   bookNotify(k, entry)      runs after bookIs changed something and after any removal, also
//                             one through an iterator; the last argument is its body
//   bookIterator(), bookIteratorConst(), korBookIterator()   in the order of Kor::HashMap; the last
//                             answers entry(), the entry or object itself
//   korBook(k)                value: the entry or null, so a stored default differs from none
//
// bookDel, bookNotify and bookIs are declared in this order, with the specifier given last but one
// (`virtual` or nothing). A key passed in may lie in the entry that the call removes.

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

// The storage of one collection attribute: what values and owned objects share.
template <class Member>
class Collection {
 public:
  using Map = HashMap<Member>;

  [[nodiscard]] std::uint32_t members() const { return map_.members(); }
  template <class Key>
  [[nodiscard]] Kor::Ptr<Member> find(Key const& key) const {
    return share(map_.find(key));
  }
  template <class Key>
  [[nodiscard]] Member* peek(Key const& key) const {
    return map_.find(key);
  }
  Kor::Ptr<Member> insert(Kor::Ptr<Member> member) {
    map_.insert(member);
    return member;
  }
  template <class Key>
  Kor::Ptr<Member> remove(Key const& key) {
    return map_.remove(key);
  }
  // One walk in map order that removes and then announces each member.
  template <class Announce>
  void removeAll(Announce&& announce) {
    map_.removeAll(announce);
  }
  // The key of the first member, and of the first one behind the place of `key`, which need not be
  // a member's; null at the end.
  [[nodiscard]] auto const* firstKey() const { return keyOf(map_.first()); }
  template <class Key>
  [[nodiscard]] auto const* keyAfter(Key const& key) const {
    return keyOf(map_.upperBound(key));
  }
  // Iterators of a const owner walk without changing; the map only notes that they are open.
  [[nodiscard]] Map& map() const { return map_; }

 private:
  static auto const* keyOf(Member const* member) {
    return member == nullptr ? nullptr : &member->fwkKey();
  }

  mutable Map map_;
};

template <class Member>
class ValueCollection : public Collection<Member> {
 public:
  using Key = typename Member::Key;
  using Value = typename Member::Value;

  [[nodiscard]] Value value(Key const& key) const {
    Member const* const entry = this->peek(key);
    return entry == nullptr ? Value() : entry->value();
  }
  // Overwrites in place or creates with `create(key, value)`; answers the entry when something
  // changed.
  template <class Create>
  Kor::Ptr<Member> set(Key const& key, Value const& value, Create&& create) {
    if (Member* const entry = this->peek(key)) {
      if (entry->value() == value) {
        return nullptr;
      }
      entry->valueIs(value);
      return share(entry);
    }
    return create(key, value);
  }
};

// An owned member that wants to know its owner has korOwnerIs(Owner*), called with the owner when
// it joins a collection and with null when it leaves, also when the owner dies first.
template <class Member, class Owner>
void memberJoined(Member& member, Owner* owner) {
  if constexpr (requires { member.korOwnerIs(owner); }) {
    member.korOwnerIs(owner);
  }
}
template <class Member>
void memberLeft(Member& member) {
  if constexpr (requires { member.korOwnerIs(nullptr); }) {
    member.korOwnerIs(nullptr);
  }
}

template <class Member>
class OwnedCollection : public Collection<Member> {
 public:
  OwnedCollection() = default;
  OwnedCollection(OwnedCollection const&) = delete;
  OwnedCollection& operator=(OwnedCollection const&) = delete;
  ~OwnedCollection() {
    for (Member* member = this->map().first(); member != nullptr;
         member = this->map().next(member)) {
      memberLeft(*member);
    }
  }

  template <class Owner>
  Kor::Ptr<Member> join(Kor::Ptr<Member> member, Owner* owner) {
    if (Kor::Ptr<Member> const replaced = this->map().insert(member)) {
      memberLeft(*replaced);
    }
    memberJoined(*member, owner);
    return member;
  }
  template <class Announce>
  void removeAll(Announce&& announce) {
    Collection<Member>::removeAll([&](Kor::Ptr<Member> const& removed) {
      memberLeft(*removed);
      announce(removed);
    });
  }
};

// What every iterator of a collection offers. True while on a member; `*` gives the iterator
// itself, so that `for (auto const& book : shelf->bookIterator())` reads book.key() and
// book.value().
template <class Iterator, class Member>
class CollectionIterator {
 public:
  explicit operator bool() const { return bool(cursor_.member()); }
  [[nodiscard]] auto const& key() const { return cursor_.member()->fwkKey(); }

  Iterator& operator++() {
    cursor_.advance();
    return static_cast<Iterator&>(*this);
  }
  Iterator begin() const { return static_cast<Iterator const&>(*this); }
  [[nodiscard]] std::nullptr_t end() const { return nullptr; }
  bool operator==(std::nullptr_t) const { return !*this; }
  Iterator const& operator*() const { return static_cast<Iterator const&>(*this); }

 protected:
  explicit CollectionIterator(typename HashMap<Member>::Cursor cursor)
      : cursor_(std::move(cursor)) {}
  CollectionIterator() = default;

  [[nodiscard]] Kor::Ptr<Member> const& member() const { return cursor_.member(); }
  Kor::Ptr<Member> removeMember() { return cursor_.remove(); }

 private:
  typename HashMap<Member>::Cursor cursor_;
};

}  // namespace Kor

// NOLINTBEGIN(bugprone-macro-parentheses): the arguments are types and names
// Iterators shared by both forms; VALUE is the expression that value() answers for the member.
#define KOR_COLLECTION_ITERATOR_(Owner, Iterator, Member, OwnerPtr, VALUE_NAME, VALUE, DELETE) \
  class Iterator : public ::Kor::CollectionIterator<Iterator, Member> {                        \
   public:                                                                                     \
    Iterator() = default;                                                                      \
    explicit Iterator(OwnerPtr owner, ::Kor::HashMap<Member>& map)                             \
        : CollectionIterator(::Kor::HashMap<Member>::Cursor(map)), owner_(owner) {}            \
    [[nodiscard]] auto VALUE_NAME() const { return VALUE; }                                    \
    DELETE                                                                                     \
   private:                                                                                    \
    [[maybe_unused]] OwnerPtr owner_ = nullptr;                                                \
  };

#define KOR_COLLECTION_DELETE_(x, Member)                                        \
  /* Removes the member under the iterator; it is announced like any removal. */ \
  void del() {                                                                   \
    if (auto const removed = this->removeMember()) {                             \
      ::Kor::memberLeft(*removed);                                               \
      deleteNotify(removed);                                                     \
    }                                                                            \
  }                                                                              \
  void deleteNotify(::Kor::Ptr<Member> const& removed) {                         \
    owner_->x##Notify(removed->fwkKey(), removed);                               \
  }

#define KOR_COLLECTION_ATTRIBUTE_(Owner, x, X, K, OwnerRef, ValueType, SET)                  \
  /* What the generic interface needs to know of the collection. */                          \
  struct X##Attribute {                                                                      \
    using Key = K;                                                                           \
    using Value = ValueType;                                                                 \
    static std::uint32_t members(Owner const& owner) { return owner.x##s(); }                \
    static auto value(OwnerRef owner, K const& key) { return owner.x(key); }                 \
    static void remove(Owner& owner, K const& key) { owner.x##Del(key); }                    \
    static K const* firstKey(Owner const& owner) { return owner.x##Collection_.firstKey(); } \
    static K const* keyAfter(Owner const& owner, K const& key) {                             \
      return owner.x##Collection_.keyAfter(key);                                             \
    }                                                                                        \
    SET                                                                                      \
  };

#define KOR_VALUE_COLLECTION(Owner, x, X, K, V, VIRTUAL, ...)                                  \
 public:                                                                                       \
  class Kor##X final : public ::Kor::CollectionEntry<Kor##X, K, V> {                           \
   public:                                                                                     \
    using CollectionEntry::CollectionEntry;                                                    \
    [[nodiscard]] V x() const { return value(); }                                              \
  };                                                                                           \
  KOR_COLLECTION_ITERATOR_(Owner, X##IteratorConst, Kor##X, Owner const*, value,               \
                           this->member()->value(), )                                          \
  KOR_COLLECTION_ITERATOR_(Owner, X##Iterator, Kor##X, Owner*, value, this->member()->value(), \
                           KOR_COLLECTION_DELETE_(x, Kor##X))                                  \
  KOR_COLLECTION_ITERATOR_(Owner, Kor##X##Iterator, Kor##X, Owner*, entry, this->member(),     \
                           KOR_COLLECTION_DELETE_(x, Kor##X))                                  \
  KOR_COLLECTION_ATTRIBUTE_(                                                                   \
      Owner, x, X, K, Owner const&, V,                                                         \
      static void set(Owner& owner, K const& key, V const& v) { owner.x##Is(key, v); })        \
  [[nodiscard]] std::uint32_t x##s() const {                                                   \
    return x##Collection_.members();                                                           \
  }                                                                                            \
  [[nodiscard]] V x(K const& key) const {                                                      \
    return x##Collection_.value(key);                                                          \
  }                                                                                            \
  [[nodiscard]] ::Kor::Ptr<Kor##X> kor##X(K const& key) const {                                \
    return x##Collection_.find(key);                                                           \
  }                                                                                            \
  ::Kor::Ptr<Kor##X> new##X(K const& key, V const& value) {                                    \
    return x##Collection_.insert(::Kor::Ptr<Kor##X>(new Kor##X(key, value)));                  \
  }                                                                                            \
  VIRTUAL V x##Del(K const& key) {                                                             \
    ::Kor::Ptr<Kor##X> const removed = x##Collection_.remove(key);                             \
    if (!removed) {                                                                            \
      return V();                                                                              \
    }                                                                                          \
    x##Notify(removed->key(), removed);                                                        \
    return removed->value();                                                                   \
  }                                                                                            \
  VIRTUAL void x##Notify([[maybe_unused]] K const& key,                                        \
                         [[maybe_unused]] ::Kor::Ptr<Kor##X> const& entry)                     \
      __VA_ARGS__ VIRTUAL void x##Is(K const& key, V const& value) {                           \
    auto const create = [this](K const& k, V const& v) { return new##X(k, v); };               \
    if (::Kor::Ptr<Kor##X> const changed = x##Collection_.set(key, value, create)) {           \
      x##Notify(changed->key(), changed);                                                      \
    }                                                                                          \
  }                                                                                            \
  void x##DelAll() {                                                                           \
    x##Collection_.removeAll(                                                                  \
        [this](::Kor::Ptr<Kor##X> const& removed) { x##Notify(removed->key(), removed); });    \
  }                                                                                            \
  [[nodiscard]] X##Iterator x##Iterator() {                                                    \
    return X##Iterator(this, x##Collection_.map());                                            \
  }                                                                                            \
  [[nodiscard]] X##IteratorConst x##IteratorConst() const {                                    \
    return X##IteratorConst(this, x##Collection_.map());                                       \
  }                                                                                            \
  [[nodiscard]] Kor##X##Iterator kor##X##Iterator() {                                          \
    return Kor##X##Iterator(this, x##Collection_.map());                                       \
  }                                                                                            \
                                                                                               \
 private:                                                                                      \
  ::Kor::ValueCollection<Kor##X> x##Collection_;

#define KOR_OWNED_COLLECTION(Owner, x, X, K, Member, VIRTUAL, ...)                             \
 public:                                                                                       \
  KOR_COLLECTION_ITERATOR_(Owner, X##IteratorConst, Member, Owner const*, value,               \
                           ::Kor::Ptr<Member const>(this->member()), )                         \
  KOR_COLLECTION_ITERATOR_(Owner, X##Iterator, Member, Owner*, value, this->member(),          \
                           KOR_COLLECTION_DELETE_(x, Member))                                  \
  KOR_COLLECTION_ITERATOR_(Owner, Kor##X##Iterator, Member, Owner*, entry, this->member(),     \
                           KOR_COLLECTION_DELETE_(x, Member))                                  \
  KOR_COLLECTION_ATTRIBUTE_(                                                                   \
      Owner, x, X, K, Owner&, Member,                                                          \
      static auto make(Owner& owner, K const& key) { return owner.x##Is(key); })               \
  [[nodiscard]] std::uint32_t x##s() const {                                                   \
    return x##Collection_.members();                                                           \
  }                                                                                            \
  [[nodiscard]] ::Kor::Ptr<Member> x(K const& key) {                                           \
    return x##Collection_.find(key);                                                           \
  }                                                                                            \
  [[nodiscard]] ::Kor::Ptr<Member const> x(K const& key) const {                               \
    return x##Collection_.find(key);                                                           \
  }                                                                                            \
  ::Kor::Ptr<Member> new##X(K const& key) {                                                    \
    return x##Collection_.join(::Kor::Ptr<Member>(new Member(key)), this);                     \
  }                                                                                            \
  VIRTUAL ::Kor::Ptr<Member> x##Del(K const& key) {                                            \
    ::Kor::Ptr<Member> removed = x##Collection_.remove(key);                                   \
    if (removed) {                                                                             \
      ::Kor::memberLeft(*removed);                                                             \
      x##Notify(removed->fwkKey(), removed);                                                   \
    }                                                                                          \
    return removed;                                                                            \
  }                                                                                            \
  VIRTUAL void x##Notify([[maybe_unused]] K const& key,                                        \
                         [[maybe_unused]] ::Kor::Ptr<Member> const& member)                    \
      __VA_ARGS__ VIRTUAL ::Kor::Ptr<Member>                                                   \
          x##Is(K const& key) {                                                                \
    if (::Kor::Ptr<Member> existing = x##Collection_.find(key)) {                              \
      return existing;                                                                         \
    }                                                                                          \
    ::Kor::Ptr<Member> created = ::Kor::validPtr(new##X(key));                                 \
    x##Notify(created->fwkKey(), created);                                                     \
    return created;                                                                            \
  }                                                                                            \
  void x##DelAll() {                                                                           \
    x##Collection_.removeAll(                                                                  \
        [this](::Kor::Ptr<Member> const& removed) { x##Notify(removed->fwkKey(), removed); }); \
  }                                                                                            \
  [[nodiscard]] X##Iterator x##Iterator() {                                                    \
    return X##Iterator(this, x##Collection_.map());                                            \
  }                                                                                            \
  [[nodiscard]] X##IteratorConst x##IteratorConst() const {                                    \
    return X##IteratorConst(this, x##Collection_.map());                                       \
  }                                                                                            \
  [[nodiscard]] Kor##X##Iterator kor##X##Iterator() {                                          \
    return Kor##X##Iterator(this, x##Collection_.map());                                       \
  }                                                                                            \
                                                                                               \
 private:                                                                                      \
  ::Kor::OwnedCollection<Member> x##Collection_;
// NOLINTEND(bugprone-macro-parentheses)
