// SPDX-License-Identifier: Apache-2.0
#include "support/Allocations.h"
#include "support/Instances.h"

#include <Kor/Collection.h>
#include <Kor/String.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using Kor::String8;
using testing::ElementsAre;
using testing::IsEmpty;

class LabelledDrawer : public Kor::PtrInterface,
                       public Kor::HashMapLink<LabelledDrawer>,
                       public TestSupport::Instances<LabelledDrawer> {
 public:
  explicit LabelledDrawer(String8 label) : label_(std::move(label)) {}
  [[nodiscard]] String8 const& fwkKey() const { return label_; }
  int content = 0;

 private:
  String8 label_;
};

// A shelf of counted books (values) and drawers (owned objects) that records its notifications.
class BookShelf : public Kor::PtrInterface {
 public:
  std::vector<std::string> announced;
  std::function<void(String8 const&)> hook;

 private:
  void announce(char const* what, String8 const& key) {
    announced.push_back(what + key.stdString());
    if (hook) {
      hook(key);
    }
  }

  KOR_VALUE_COLLECTION(BookShelf, book, Book, String8, int, KOR_ON_CHANGE(announce("book ", key)))
  KOR_OWNED_COLLECTION(BookShelf, drawer, Drawer, String8, LabelledDrawer,
                       KOR_ON_CHANGE(announce("drawer ", key)))
};

Kor::Ptr<BookShelf> shelfOf(int books) {
  auto shelf = Kor::make<BookShelf>();
  for (int i = 0; i < books; ++i) {
    shelf->newBook(std::to_string(i), i);
  }
  return shelf;
}

template <class Iterator>
std::vector<std::string> keysOf(Iterator it) {
  std::vector<std::string> keys;
  for (; it; ++it) {
    keys.push_back(it.key().stdString());
  }
  return keys;
}

template <class Iterator>
constexpr bool canDelete = requires(Iterator it) {
  it.del();
};

// values

TEST(ValueCollection, AnAbsentKeyReadsAsTheDefault) {
  auto const shelf = Kor::make<BookShelf>();
  EXPECT_EQ(shelf->books(), 0U);
  EXPECT_EQ(shelf->book("a"), 0);
  EXPECT_FALSE(shelf->korBook("a"));
  EXPECT_EQ(shelf->bookDel("a"), 0);
  EXPECT_THAT(shelf->announced, IsEmpty()) << "a look-up and a removal without effect are silent";
}

TEST(ValueCollection, WritingCreatesAndAnnounces) {
  auto const shelf = Kor::make<BookShelf>();
  shelf->bookIs("a", 3);
  EXPECT_EQ(shelf->books(), 1U);
  EXPECT_EQ(shelf->book("a"), 3);
  EXPECT_THAT(shelf->announced, ElementsAre("book a"));
}

TEST(ValueCollection, WritingAPresentKeyOverwritesInTheSameEntry) {
  auto const shelf = shelfOf(3);
  auto const entry = shelf->korBook("1");
  shelf->bookIs("1", 77);
  EXPECT_EQ(shelf->korBook("1"), entry);
  EXPECT_EQ(entry->value(), 77);
  EXPECT_EQ(entry->book(), 77) << "the reader named as the attribute";
  EXPECT_EQ(shelf->books(), 3U);
  EXPECT_THAT(shelf->announced, ElementsAre("book 1"));
}

TEST(ValueCollection, WritingAnEqualValueIsSilent) {
  auto const shelf = shelfOf(1);
  shelf->bookIs("0", 0);
  EXPECT_THAT(shelf->announced, IsEmpty());
}

class Plain : public Kor::PtrInterface {
  KOR_VALUE_COLLECTION(Plain, flag, Flag, int, bool)
};

TEST(ValueCollection, WritingAPresentKeyAllocatesNothing) {
  auto const plain = Kor::make<Plain>();
  plain->flagIs(1, true);
  EXPECT_FALSE(TestSupport::allocates([&] { plain->flagIs(1, false); }));
  EXPECT_FALSE(plain->flag(1));
  EXPECT_TRUE(TestSupport::allocates([&] { plain->flagIs(2, false); })) << "the probe sees entries";
}

TEST(ValueCollection, ReadingAllocatesNothing) {
  auto const plain = Kor::make<Plain>();
  plain->flagIs(1, true);
  EXPECT_FALSE(TestSupport::allocates([&] {
    EXPECT_TRUE(plain->flag(1));
    EXPECT_TRUE(plain->korFlag(1));
    for (auto it = plain->flagIterator(); it; ++it) {
      EXPECT_TRUE(it.value());
    }
  }));
}

TEST(ValueCollection, AnEntryThatHoldsFalseCountsAndIterates) {
  auto const plain = Kor::make<Plain>();
  plain->flagIs(1, false);
  EXPECT_EQ(plain->flags(), 1U);
  EXPECT_TRUE(plain->flagIterator());
  EXPECT_FALSE(plain->flagIterator().value());
  EXPECT_TRUE(plain->korFlag(1)) << "a stored false is told from absence";
  EXPECT_FALSE(plain->korFlag(2));
}

TEST(ValueCollection, NewOnAPresentKeyReplacesTheEntrySilently) {
  auto const shelf = shelfOf(5);
  auto const old = shelf->korBook("2");
  auto const before = keysOf(shelf->bookIterator());
  auto const fresh = shelf->newBook("2", 22);
  EXPECT_NE(fresh, old);
  EXPECT_EQ(shelf->korBook("2"), fresh);
  EXPECT_EQ(shelf->books(), 5U);
  EXPECT_EQ(old->key(), "2") << "a handle to the old entry stays valid";
  EXPECT_EQ(old->value(), 2);
  EXPECT_EQ(keysOf(shelf->bookIterator()), before);
  EXPECT_THAT(shelf->announced, IsEmpty());
}

TEST(ValueCollection, AnIteratorOnAReplacedEntryGoesOnBehindIt) {
  auto const shelf = shelfOf(5);
  auto const order = keysOf(shelf->bookIterator());
  auto it = shelf->bookIterator();
  ++it;
  shelf->newBook(it.key(), 99);
  EXPECT_NE(it.value(), 99) << "it still stands on the old entry";
  ++it;
  EXPECT_EQ(it.key(), String8(order[2]));
}

TEST(ValueCollection, RemovingAnswersTheValueAndAnnounces) {
  auto const shelf = shelfOf(3);
  EXPECT_EQ(shelf->bookDel("2"), 2);
  EXPECT_EQ(shelf->books(), 2U);
  EXPECT_THAT(shelf->announced, ElementsAre("book 2"));
}

TEST(ValueCollection, TheKeyMayLieInTheEntryThatDies) {
  auto const shelf = shelfOf(3);
  String8 seen;
  shelf->hook = [&](String8 const& key) { seen = key; };
  auto* const entry = shelf->korBook("1").get();
  EXPECT_EQ(shelf->bookDel(entry->key()), 1);
  EXPECT_EQ(seen, "1");
  shelf->newBook("1", 1);
  auto* const again = shelf->korBook("1").get();
  EXPECT_EQ(shelf->newBook(again->key(), 5)->key(), "1");
  shelf->hook = [&](String8 const& key) {
    if (shelf->korBook(key)) {
      shelf->bookDel(key);  // the hook's own key
    }
    seen = key;
  };
  shelf->bookIs("9", 9);
  EXPECT_EQ(seen, "9");
  EXPECT_FALSE(shelf->korBook("9"));
}

TEST(ValueCollection, RemovalThroughAnIteratorAnnouncesThatEntry) {
  auto const shelf = shelfOf(4);
  auto const order = keysOf(shelf->bookIterator());
  auto it = shelf->bookIterator();
  ++it;
  it.del();
  EXPECT_EQ(it.key(), String8(order[1])) << "key and value stay readable";
  EXPECT_EQ(std::to_string(it.value()), order[1]);
  EXPECT_THAT(shelf->announced, ElementsAre("book " + order[1]));
  it.del();
  EXPECT_EQ(shelf->announced.size(), 1U) << "a second removal has no effect";
  ++it;
  EXPECT_EQ(it.key(), String8(order[2]));
  EXPECT_EQ(shelf->books(), 3U);
}

TEST(ValueCollection, TheKorIteratorAnswersEntriesAndRemoves) {
  auto const shelf = shelfOf(2);
  auto it = shelf->korBookIterator();
  EXPECT_EQ(it.entry(), shelf->korBook(it.key()));
  EXPECT_EQ(it.entry()->fwkKey(), it.key());
  it.del();
  EXPECT_EQ(shelf->books(), 1U);
  EXPECT_EQ(shelf->announced.size(), 1U);
}

TEST(ValueCollection, IteratorsServeARangeFor) {
  auto const shelf = shelfOf(5);
  BookShelf const& constShelf = *shelf;
  int sum = 0;
  for (auto const& book : constShelf.bookIteratorConst()) {
    EXPECT_EQ(book.key(), String8(std::to_string(book.value())));
    sum += book.value();
  }
  for (auto const& book : shelf->bookIterator()) {
    sum += book.value();
  }
  EXPECT_EQ(sum, 20);
  EXPECT_EQ(keysOf(constShelf.bookIteratorConst()), keysOf(shelf->korBookIterator()));
  static_assert(canDelete<BookShelf::BookIterator> && !canDelete<BookShelf::BookIteratorConst>);
}

TEST(ValueCollection, EveryEntryMayBeRemovedOnTheWalk) {
  auto const shelf = shelfOf(50);
  for (auto it = shelf->bookIterator(); it; ++it) {
    it.del();
  }
  EXPECT_EQ(shelf->books(), 0U);
  EXPECT_EQ(shelf->announced.size(), 50U);
}

TEST(ValueCollection, RemovingAllIsOneWalkThatAnnouncesEachRemovalWhileLaterOnesStand) {
  auto const shelf = shelfOf(3);
  std::vector<std::uint32_t> left;
  shelf->hook = [&](String8 const& /*key*/) { left.push_back(shelf->books()); };
  auto const order = keysOf(shelf->bookIterator());
  shelf->bookDelAll();
  EXPECT_THAT(left, ElementsAre(2U, 1U, 0U));
  EXPECT_THAT(shelf->announced,
              ElementsAre("book " + order[0], "book " + order[1], "book " + order[2]));
}

TEST(ValueCollection, WhatAHookInsertsAheadOfRemovingAllGoesTooAndWhatIsBehindStays) {
  auto const shelf = shelfOf(20);
  auto const order = keysOf(shelf->bookIterator());
  auto const other = Kor::make<BookShelf>();
  other->newBook(order[5], 0);
  bool inserted = false;
  shelf->hook = [&](String8 const& key) {
    if (key == order[5].c_str() && !inserted) {
      inserted = true;
      shelf->newBook(order[2], 0);   // already passed
      shelf->newBook(order[10], 1);  // not yet passed: replaces one that is to be removed
    }
  };
  shelf->bookDelAll();
  EXPECT_THAT(keysOf(shelf->bookIterator()), ElementsAre(order[2]));
}

TEST(ValueCollection, RemovingAllEndsOtherWalks) {
  auto const shelf = shelfOf(10);
  auto it = shelf->bookIterator();
  ++it;
  auto const key = it.key();
  shelf->bookDelAll();
  EXPECT_EQ(it.key(), key);
  ++it;
  EXPECT_FALSE(it);
}

TEST(ValueCollection, AWalkThatRemovingAllHasEndedDoesNotComeToWhatIsInsertedLater) {
  auto const shelf = shelfOf(10);
  auto it = shelf->bookIterator();
  shelf->bookDelAll();
  for (int i = 0; i < 10; ++i) {
    shelf->newBook(std::to_string(i), i);
  }
  ++it;
  EXPECT_FALSE(it);
  EXPECT_EQ(keysOf(shelf->bookIterator()).size(), 10U);
}

TEST(ValueCollection, RemovingAllInsideTheHookOfRemovingAllEndsBoth) {
  auto const shelf = shelfOf(10);
  shelf->hook = [&](String8 const& /*key*/) {
    shelf->hook = nullptr;
    shelf->bookDelAll();
  };
  shelf->bookDelAll();
  EXPECT_EQ(shelf->books(), 0U);
  EXPECT_EQ(shelf->announced.size(), 10U);
}

TEST(ValueCollection, AnOwnerThatDiesPutsItsIteratorsAtTheEnd) {
  auto shelf = shelfOf(3);
  auto it = shelf->bookIterator();
  auto korIt = shelf->korBookIterator();
  auto constIt = std::as_const(*shelf).bookIteratorConst();
  shelf = nullptr;
  EXPECT_FALSE(it);
  EXPECT_FALSE(korIt);
  EXPECT_FALSE(constIt);
  ++it;
  it.del();
  EXPECT_FALSE(it);
}

TEST(ValueCollection, AHookMayEndTheOwnerInTheMiddleOfRemovingAll) {
  auto shelf = shelfOf(3);
  auto* const raw = shelf.get();
  int calls = 0;
  std::vector<std::string> announced;
  raw->hook = [&](String8 const& /*key*/) { ++calls; };
  {
    Kor::Ptr<BookShelf> const pinned = shelf;
    raw->hook = [&](String8 const& /*key*/) {
      ++calls;
      shelf = nullptr;
    };
    raw->bookDelAll();
  }
  EXPECT_EQ(calls, 3);
}

// owned objects

TEST(OwnedCollection, WritingFindsOrCreatesAndAnnouncesOnlyTheCreation) {
  auto const shelf = Kor::make<BookShelf>();
  auto const created = shelf->drawerIs("top");
  EXPECT_THAT(shelf->announced, ElementsAre("drawer top"));
  EXPECT_EQ(shelf->drawerIs("top"), created);
  EXPECT_EQ(shelf->announced.size(), 1U);
  EXPECT_EQ(shelf->drawers(), 1U);
  EXPECT_EQ(shelf->drawer("top"), created);
}

TEST(OwnedCollection, AnAbsentKeyReadsAsNull) {
  auto const shelf = Kor::make<BookShelf>();
  EXPECT_FALSE(shelf->drawer("top"));
  EXPECT_FALSE(shelf->drawerDel("top"));
  EXPECT_THAT(shelf->announced, IsEmpty());
}

TEST(OwnedCollection, AConstOwnerAnswersPointersToConst) {
  static_assert(std::is_same_v<decltype(std::declval<BookShelf const&>().drawer("")),
                               Kor::Ptr<LabelledDrawer const>>);
  static_assert(
      std::is_same_v<decltype(std::declval<BookShelf&>().drawer("")), Kor::Ptr<LabelledDrawer>>);
  static_assert(std::is_same_v<decltype(std::declval<BookShelf::DrawerIteratorConst>().value()),
                               Kor::Ptr<LabelledDrawer const>>);
  auto const shelf = Kor::make<BookShelf>();
  auto const drawer = shelf->newDrawer("top");
  EXPECT_EQ(std::as_const(*shelf).drawer("top"), drawer);
  EXPECT_EQ(std::as_const(*shelf).drawerIteratorConst().value(), drawer);
}

TEST(OwnedCollection, NewReplacesSilentlyAndHandlesStayValid) {
  auto const shelf = Kor::make<BookShelf>();
  auto const old = shelf->newDrawer("top");
  old->content = 5;
  auto it = shelf->drawerIterator();
  auto const fresh = shelf->newDrawer("top");
  EXPECT_NE(fresh, old);
  EXPECT_EQ(old->content, 5);
  EXPECT_EQ(it.value(), old);
  ++it;
  EXPECT_FALSE(it) << "it goes on behind the place";
  EXPECT_EQ(shelf->drawers(), 1U);
  EXPECT_THAT(shelf->announced, IsEmpty());
}

TEST(OwnedCollection, RemovingAnswersTheMember) {
  auto const shelf = Kor::make<BookShelf>();
  auto const drawer = shelf->newDrawer("top");
  EXPECT_EQ(shelf->drawerDel(drawer->fwkKey()), drawer);
  EXPECT_EQ(shelf->drawers(), 0U);
  EXPECT_THAT(shelf->announced, ElementsAre("drawer top"));
}

TEST(OwnedCollection, ARemovedMemberThatNobodyHoldsLivesUntilTheHookHasRun) {
  auto const shelf = Kor::make<BookShelf>();
  static_cast<void>(shelf->newDrawer("top"));
  int aliveInHook = 0;
  shelf->hook = [&](String8 const& /*key*/) { aliveInHook = LabelledDrawer::alive(); };
  static_cast<void>(shelf->drawerDel(shelf->drawer("top")->fwkKey()));
  EXPECT_EQ(aliveInHook, 1);
  EXPECT_EQ(LabelledDrawer::alive(), 0);
}

TEST(OwnedCollection, AHookThatRemovesTheNewMemberLeavesTheWriterWithAValidOne) {
  auto const shelf = Kor::make<BookShelf>();
  shelf->hook = [&](String8 const& key) {
    shelf->hook = nullptr;
    static_cast<void>(shelf->drawerDel(key));
  };
  auto const drawer = shelf->drawerIs("top");
  ASSERT_TRUE(drawer);
  EXPECT_EQ(drawer->fwkKey(), "top");
  EXPECT_EQ(shelf->drawers(), 0U);
}

TEST(OwnedCollection, RemovalThroughAnIteratorAnnounces) {
  auto const shelf = Kor::make<BookShelf>();
  static_cast<void>(shelf->newDrawer("top"));
  auto it = shelf->drawerIterator();
  it.del();
  EXPECT_THAT(shelf->announced, ElementsAre("drawer top"));
  EXPECT_EQ(it.value()->fwkKey(), "top");
  ++it;
  EXPECT_FALSE(it);
  EXPECT_EQ(LabelledDrawer::alive(), 0);
}

TEST(OwnedCollection, TheKorIteratorAnswersMembersAndRemoves) {
  auto const shelf = Kor::make<BookShelf>();
  auto const drawer = shelf->newDrawer("top");
  auto it = shelf->korDrawerIterator();
  EXPECT_EQ(it.entry(), drawer);
  it.del();
  EXPECT_THAT(shelf->announced, ElementsAre("drawer top"));
  EXPECT_EQ(shelf->drawers(), 0U);
}

class Registry;

// A member that is given its owner.
class Guest : public Kor::PtrInterface, public Kor::HashMapLink<Guest> {
 public:
  explicit Guest(int number) : number_(number) {}
  [[nodiscard]] int const& fwkKey() const { return number_; }
  void korOwnerIs(Registry* owner) { owner_ = owner; }
  [[nodiscard]] Registry* owner() const { return owner_; }

 private:
  int number_;
  Registry* owner_ = nullptr;
};

class Registry : public Kor::PtrInterface {
 public:
  std::vector<Registry*> ownersInHook;

  KOR_OWNED_COLLECTION(Registry, guest, Guest, int, Guest,
                       KOR_ON_CHANGE(ownersInHook.push_back(member->owner())))
};

TEST(OwnedCollection, AMemberThatAsksKnowsItsOwnerWhileItIsAMember) {
  auto const registry = Kor::make<Registry>();
  auto const written = registry->guestIs(1);
  auto const created = registry->newGuest(2);
  EXPECT_EQ(written->owner(), registry.get());
  EXPECT_EQ(created->owner(), registry.get());
  auto const successor = registry->newGuest(2);
  EXPECT_EQ(created->owner(), nullptr) << "replaced";
  EXPECT_EQ(successor->owner(), registry.get());
}

TEST(OwnedCollection, AMemberThatAsksHasNoOwnerOnceItIsRemoved) {
  auto const registry = Kor::make<Registry>();
  auto const deleted = registry->newGuest(1);
  auto const walked = registry->newGuest(2);
  auto const last = registry->newGuest(3);
  registry->guestDel(1);
  for (auto it = registry->guestIterator(); it; ++it) {
    if (it.key() == 2) {
      it.del();
    }
  }
  registry->guestDelAll();
  for (auto const& guest : {deleted, walked, last}) {
    EXPECT_EQ(guest->owner(), nullptr);
  }
  EXPECT_THAT(registry->ownersInHook, ElementsAre(nullptr, nullptr, nullptr));
}

TEST(OwnedCollection, AMemberThatAsksHasNoOwnerOnceThatHasDied) {
  auto registry = Kor::make<Registry>();
  auto const guest = registry->newGuest(1);
  registry = nullptr;
  EXPECT_EQ(guest->owner(), nullptr);
}

TEST(OwnedCollection, MembersDieWithTheirOwnerUnlessSomebodyHoldsThem) {
  auto shelf = Kor::make<BookShelf>();
  static_cast<void>(shelf->newDrawer("a"));
  auto const held = shelf->newDrawer("b");
  EXPECT_EQ(LabelledDrawer::alive(), 2);
  shelf = nullptr;
  EXPECT_EQ(LabelledDrawer::alive(), 1);
  EXPECT_EQ(held->fwkHmNext(), nullptr);
}

}  // namespace
