// SPDX-License-Identifier: Apache-2.0
#include "kor/Shelf.h"

#include <Kor/ByName.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

using Kor::AttributeName;
using Kor::construct;
using Kor::GenericPlace;
using Kor::GenericRef;
using Kor::GenericValue;
using Library::Isbn;
using Library::Shelf;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

template <class Error, class Call>
std::string textOf(Call&& call) {
  try {
    call();
  } catch (Error const& error) {
    return error.what();
  }
  return "nothing raised";
}

GenericRef shelf(char const* name = "s") {
  return construct("Library::Shelf", name);
}

TEST(ByName, DataOfEverySortIsWrittenAndReadBack) {
  GenericRef const object = shelf();
  object["open"] = true;
  object["tilt"] = -3;
  object["serial"] = UINT64_MAX;
  object["load"] = 2;
  object["label"] = std::string("top");
  object["genre"] = "verse";
  object["place"] = "b";
  EXPECT_TRUE(object["open"].as<bool>());
  EXPECT_EQ(object["tilt"].as<int>(), -3);
  EXPECT_EQ(object["serial"].as<std::uint64_t>(), UINT64_MAX);
  EXPECT_EQ(object["load"].as<double>(), 2.0);
  EXPECT_EQ(object["label"].as<std::string>(), "top");
  EXPECT_EQ(object["genre"].as<Library::Genre>(), Library::Genre::verse);
  EXPECT_EQ(object["genre"], "verse");
  EXPECT_EQ(object["genre"], 1);
  EXPECT_EQ(object["place"], "b");
}

TEST(ByName, WhoHasTheClassMixesBothWays) {
  Shelf::Ptr const cpp = Kor::make<Shelf>("both");
  GenericRef const object(cpp);
  object["first"] = Isbn(3, "x");
  EXPECT_EQ(cpp->first(), Isbn(3, "x"));
  EXPECT_EQ(object["first"].as<Isbn>(), Isbn(3, "x"));
  EXPECT_EQ(object.as<Shelf::Ptr>(), cpp);
  object["above"] = Shelf::Ptr(cpp);
  EXPECT_EQ(cpp->above(), cpp);
  object["above"] = nullptr;
  EXPECT_EQ(cpp->above(), nullptr);
}

TEST(ByName, APlaceThatIsAssignedToAnotherWritesThere) {
  GenericRef const from = shelf();
  GenericRef const to = shelf();
  from["width"] = 7;
  to["width"] = from["width"];
  EXPECT_EQ(to["width"], 7);
  GenericPlace place = to["width"];
  place = from["width"];
  from["width"] = 9;
  EXPECT_EQ(place, 7);
  GenericPlace& same = place;
  place = std::move(same);
  EXPECT_EQ(to["width"], 7);
}

TEST(ByName, MembersAreSetFoundWalkedAndTakenOut) {
  GenericRef const object = shelf();
  GenericRef const a = construct("Library::Isbn", 1, "a");
  GenericRef const b = construct("Library::Isbn", 2, "b");
  object["book"][a] = 10;
  object["book"][b] = 20;
  EXPECT_EQ(object["book"].size(), 2U);
  EXPECT_EQ(object["book"][b], 20);
  EXPECT_TRUE(object["book"].contains(a));
  std::vector<int> copies;
  for (auto const& [key, count] : object["book"]) {
    copies.push_back(count.as<int>());
    object["book"][key].del();  // the walk continues after it
  }
  EXPECT_THAT(copies, UnorderedElementsAre(10, 20));
  EXPECT_FALSE(object["book"].contains(a));
}

TEST(ByName, AnOwnedMemberIsCreatedAndReachedThroughItsCollection) {
  GenericRef const object = shelf();
  EXPECT_TRUE(object["drawer"]["left"].get().isNull());
  GenericRef const drawer = object["drawer"]["left"].create();
  drawer["depth"] = 5;
  EXPECT_EQ(object["drawer"]["left"]["depth"], 5);
  EXPECT_EQ(object["drawer"]["left"].create(), drawer);
}

TEST(ByName, AFunctionIsCalledInThreeWays) {
  Shelf::Ptr const cpp = Kor::make<Shelf>("f");
  GenericRef const object(cpp);
  object.call("lift", 2U);
  object["lift"](3);
  object.call(AttributeName("lift"));
  EXPECT_THAT(cpp->journal, ElementsAre("lift 2", "lift 3", "lift"));
  EXPECT_EQ(object["above"].get().isNull(), true);
  object["above"] = object;
  object["above"].call("clear");
  EXPECT_EQ(cpp->journal.back(), "clear");
  object["above"] = nullptr;  // otherwise it would hold itself for ever
}

TEST(ByName, AKeptNameServesObjectsOfEveryType) {
  AttributeName const width("width");
  GenericRef const low = shelf();
  GenericRef const tall = construct("Library::TallShelf", "t");
  for (std::uint32_t i = 1; i < 4; ++i) {
    low.set(width, i);
    tall.set(width, 10 * i);
    EXPECT_EQ(low.get(width), GenericValue(i));
    EXPECT_EQ(tall.get(width), GenericValue(10 * i));
  }
  GenericRef const drawer = construct("Library::Drawer", "d");
  EXPECT_EQ(textOf<Kor::RangeException>([&] { static_cast<void>(drawer.get(width)); }),
            "Drawer has no such attribute: width");
  EXPECT_EQ(low.get(width), GenericValue(3U));
}

TEST(ByName, AWriteByAKeptNameThatIsRefusedChangesNothing) {
  AttributeName const width("width");
  GenericRef const object = shelf();
  object.set(width, 7);
  EXPECT_EQ(textOf<Kor::TypeException>([&] { object.set(width, "wide"); }), "type error: width");
  EXPECT_EQ(textOf<Kor::TypeException>([&] { object.set(width, -1); }), "type error: width");
  EXPECT_EQ(textOf<Kor::ConstException>([&] { object.asConst().set(width, 8); }),
            "attempting to modify a const instance");
  EXPECT_EQ(object.get(width), GenericValue(7U));
  EXPECT_EQ(
      textOf<Kor::OpNotSupportedException>([&] { object.set(AttributeName("name"), "other"); }),
      "operation 128 not supported: name");
  EXPECT_EQ(textOf<Kor::TypeException>([&] { object.set(AttributeName("book"), 1); }),
            "type error: kor_index");
  EXPECT_EQ(textOf<Kor::OpNotSupportedException>([&] { object.set(AttributeName("clear"), 1); }),
            "operation 128 not supported: clear");
}

TEST(ByName, ReadingACollectionOrAFunctionAsDataIsRefused) {
  GenericRef const object = shelf();
  EXPECT_EQ(textOf<Kor::TypeException>([&] { static_cast<void>(object["book"].get()); }),
            "type error: kor_index");
  EXPECT_EQ(
      textOf<Kor::TypeException>([&] { static_cast<void>(object.get(AttributeName("book"))); }),
      "type error: kor_index");
  EXPECT_EQ(textOf<Kor::OpNotSupportedException>([&] { static_cast<void>(object["weigh"].get()); }),
            "operation 0 not supported: weigh");
}

TEST(ByName, ACallChecksItsArgumentsInOrderAndThenTheirNumber) {
  GenericRef const object = shelf();
  using Kor::TypeException;
  EXPECT_EQ(textOf<TypeException>([&] { object.call("weigh", "x", 3); }), "type error: scale");
  EXPECT_EQ(textOf<TypeException>([&] { object.call("weigh", 1.0); }), "type error: unit");
  EXPECT_EQ(textOf<TypeException>([&] { object.call("weigh", Isbn(3, "x"), "kg"); }),
            "type error: scale");
  EXPECT_EQ(textOf<TypeException>([&] { object.call("weigh", 1.0, 3, "more"); }),
            "type error: unit");
  EXPECT_EQ(textOf<Kor::UnknownArgException>([&] { object.call("weigh", 1.0, "kg", "more"); }),
            "too many arguments: weigh");
  EXPECT_EQ(textOf<Kor::UnknownArgException>([&] { object.call("clear", 1); }),
            "too many arguments: clear");
}

TEST(ByName, AFunctionIsNotCalledByReadingIt) {
  Shelf::Ptr const cpp = Kor::make<Shelf>("f");
  GenericRef const object(cpp);
  EXPECT_EQ(textOf<Kor::OpNotSupportedException>(
                [&] { static_cast<void>(object.get(AttributeName("clear"))); }),
            "operation 0 not supported: clear");
  EXPECT_TRUE(cpp->journal.empty());
}

TEST(ByName, WhatIsNoFunctionCannotBeCalled) {
  GenericRef const object = shelf();
  object["drawer"]["left"].create();
  auto const refused = [](auto&& call) { return textOf<Kor::OpNotSupportedException>(call); };
  EXPECT_EQ(refused([&] { object.call("width"); }), "operation 0 not supported: width");
  EXPECT_EQ(refused([&] { object.call("width", 3); }), "operation 0 not supported: width");
  EXPECT_EQ(refused([&] { object.call(AttributeName("book")); }),
            "operation 0 not supported: book");
  EXPECT_EQ(refused([&] { object["width"](); }), "operation 0 not supported: width");
  EXPECT_EQ(refused([&] { object["book"](); }), "operation 0 not supported: book");
  EXPECT_EQ(refused([&] { object["drawer"]["left"](); }), "operation 0 not supported: drawer");
  EXPECT_EQ(refused([&] { object["drawer"]["left"].call("depth"); }),
            "operation 0 not supported: depth");
  EXPECT_EQ(refused([&] { object["width"].invoke(Kor::GenericList::of()); }),
            "operation 0 not supported: width");
}

TEST(ByName, AskingForAMemberNeedsAKeyOfTheRightType) {
  GenericRef const object = shelf();
  object["drawer"]["left"].create();
  auto const refused = [&](GenericValue const& key) {
    return textOf<Kor::TypeException>([&] { static_cast<void>(object["book"].contains(key)); });
  };
  std::string const text = "type error: kor_index";
  EXPECT_EQ(refused("a"), text);
  EXPECT_EQ(refused(7), text);
  EXPECT_EQ(refused(nullptr), text);
  object["book"][construct("Library::Isbn", 1, "a")] = 10;
  EXPECT_EQ(refused("a"), text) << "also when there are members";
  EXPECT_EQ(textOf<Kor::TypeException>([&] { static_cast<void>(object["drawer"].contains(1)); }),
            text);
  EXPECT_TRUE(object["drawer"].contains("left"));
  EXPECT_FALSE(object["drawer"].contains("right"));
  EXPECT_EQ(object["drawer"].size(), 1U);
}

TEST(ByName, OnlyAWholeCollectionIsWalked) {
  GenericRef const object = shelf();
  object["drawer"]["left"].create();
  auto const walk = [](GenericPlace const& place) {
    for (auto const& [key, member] : place) {
      static_cast<void>(key);
    }
  };
  EXPECT_EQ(textOf<Kor::BadIndexAttrException>([&] { walk(object["drawer"]["left"]); }),
            "attribute takes no index: drawer");
  EXPECT_EQ(textOf<Kor::BadIndexAttrException>(
                [&] { static_cast<void>(object["drawer"]["left"].contains("left")); }),
            "attribute takes no index: drawer");
  EXPECT_EQ(textOf<Kor::OpNotSupportedException>([&] { walk(object["width"]); }),
            "operation 2 not supported: width");
  EXPECT_EQ(
      textOf<Kor::OpNotSupportedException>([&] { static_cast<void>(object["clear"].contains(1)); }),
      "operation 2 not supported: clear");
}

TEST(ByName, WrongNamesAreAnsweredWithTheNearestOnes) {
  GenericRef const object = shelf();
  EXPECT_EQ(textOf<Kor::RangeException>([&] { static_cast<void>(object["widht"]); }),
            "Shelf has no such attribute: widht (did you mean width?)");
  EXPECT_EQ(textOf<Kor::RangeException>([&] { static_cast<void>(object["LABEL"]); }),
            "Shelf has no such attribute: LABEL (did you mean label?)");
  EXPECT_EQ(textOf<Kor::RangeException>([&] { static_cast<void>(object["entirelyElse"]); }),
            "Shelf has no such attribute: entirelyElse");
  EXPECT_EQ(textOf<Kor::RangeException>([] { static_cast<void>(construct("Library::Shelv", "")); }),
            "no such type: Library::Shelv (did you mean Library::Shelf?)");
}

TEST(ByName, AConversionThatFailsNamesTheTypeAndTheAttribute) {
  GenericRef const object = shelf();
  object["label"] = "seven";
  EXPECT_EQ(textOf<Kor::TypeException>([&] { static_cast<void>(object["label"].as<int>()); }),
            "type error: int32_t expected for label");
  EXPECT_EQ(textOf<Kor::TypeException>([&] { object["width"] = "wide"; }), "type error: width");
}

TEST(ByName, WhatIsNoObjectHasNoAttributes) {
  EXPECT_EQ(textOf<Kor::RangeException>([] { static_cast<void>(GenericRef(7)["x"]); }),
            "7 has no attributes");
  EXPECT_EQ(textOf<Kor::RangeException>(
                [] { static_cast<void>(GenericRef(nullptr).get(AttributeName("x"))); }),
            "None has no attributes");
  EXPECT_FALSE(GenericRef());
  EXPECT_FALSE(GenericRef(nullptr));
  EXPECT_TRUE(GenericRef(0));
}

TEST(ByName, AConstViewReadsAndRefusesEveryChange) {
  GenericRef const object = shelf();
  object["drawer"]["left"].create();
  GenericRef const view = object.asConst();
  EXPECT_TRUE(view.isConst());
  EXPECT_FALSE(object.isConst());
  EXPECT_EQ(view["width"], 0);
  std::string const refused = "attempting to modify a const instance";
  EXPECT_EQ(textOf<Kor::ConstException>([&] { view["width"] = 1; }), refused);
  EXPECT_EQ(textOf<Kor::ConstException>([&] { view["drawer"]["left"]["depth"] = 1; }), refused);
  EXPECT_EQ(textOf<Kor::ConstException>([&] { view["drawer"]["left"].del(); }), refused);
}

TEST(ByName, WhatIsReadPrintsAsItIsWritten) {
  std::ostringstream out;
  GenericRef const object = shelf();
  object["label"] = "it's";
  object["first"] = construct("Library::Isbn", 1, "a");
  out << object["label"] << " " << object["first"] << " " << object["open"] << " " << object["top"];
  EXPECT_EQ(out.str(), "'it\\'s' Value('Library::Isbn', ** {'group': 1, 'title': 'a'}) False None");
}

}  // namespace
