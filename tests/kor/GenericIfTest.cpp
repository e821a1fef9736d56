// SPDX-License-Identifier: Apache-2.0
#include "kor/Shelf.h"

#include <Kor/GenericIf.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace {

using Kor::GenericIf;
using Kor::GenericList;
using Kor::GenericValue;
using Kor::KorType;
using Library::Drawer;
using Library::Genre;
using Library::isbn;
using Library::Isbn;
using Library::Place;
using Library::Shelf;
using Library::Size;
using Library::TallShelf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Code = GenericIf::AttributeOp;

template <class T>
GenericIf adapter(Kor::Ptr<T> const& object, bool isConst = false) {
  return object->fwkType()->genericIf(object, isConst);
}

// The exception that `work` throws, as "EXCEPTION FIELD...". Checks that what() contains each word.
template <class Work>
std::string raised(Work&& work) {
  auto const checked = [](Kor::Exception const& error, std::vector<std::string> const& words) {
    std::string text;
    for (std::string const& word : words) {
      EXPECT_THAT(error.what(), HasSubstr(word));
      text += (text.empty() ? "" : " ") + word;
    }
    return text;
  };
  try {
    std::forward<Work>(work)();
  } catch (Kor::TypeException const& error) {
    std::string const type = error.typeName().stdString();
    return "type " + (type.empty() ? checked(error, {error.name().stdString()})
                                   : checked(error, {type, error.name().stdString()}));
  } catch (Kor::OpNotSupportedException const& error) {
    return "op " + checked(error, {error.name().stdString(), std::to_string(error.code())});
  } catch (Kor::BadIndexAttrException const& error) {
    return "index " + checked(error, {error.name().stdString()});
  } catch (Kor::UnknownArgException const& error) {
    return "surplus " + checked(error, {error.name().stdString()});
  } catch (Kor::ConstException const& error) {
    return std::string("const: ") + error.what();
  } catch (Kor::RangeException const& error) {
    return "range: " + error.text();
  }
  return "nothing";
}

class GenericInterface : public testing::Test {
 protected:
  TallShelf::Ptr shelf = Kor::make<TallShelf>(Kor::Name("north"));
  GenericIf self = adapter(shelf);
  GenericIf constSelf = adapter(shelf, true);

  GenericValue read(Kor::AttributeId id, GenericValue const& index = {}) const {
    return self.attributeOp({id, Code::get, index, {}});
  }
  GenericValue write(Kor::AttributeId id, GenericValue const& value) const {
    return self.attributeOp({id, Code::set, {}, value});
  }
  // The exception that writing the value throws. Checks that the attribute is unchanged.
  std::string refused(Kor::AttributeId id, GenericValue const& value) const {
    GenericValue const before = read(id);
    std::string error = raised([&] { write(id, value); });
    EXPECT_EQ(read(id), before);
    return error;
  }
  std::string raisedBy(GenericIf const& by, Code const& operation) const {
    return raised([&] { (void)by.attributeOp(operation); });
  }
  std::string raisedBy(Code const& operation) const { return raisedBy(self, operation); }
};

// Data

TEST_F(GenericInterface, ReadsWhatTheClassAnswers) {
  shelf->openIs(true);
  shelf->widthIs(7);
  shelf->tiltIs(-3);
  shelf->serialIs(UINT64_MAX);
  shelf->loadIs(1.5);
  shelf->labelIs("A");
  shelf->genreIs(Genre::verse);
  shelf->sizeIs(Size::large);
  shelf->firstIs(Isbn(3, "Emma"));
  shelf->placeIs(Place("q"));
  EXPECT_EQ(read(Kor::Entity::nameId), GenericValue("north"));
  EXPECT_EQ(read(Library::openId), GenericValue(true));
  EXPECT_EQ(read(Library::widthId), GenericValue(7));
  EXPECT_EQ(read(Library::tiltId), GenericValue(-3));
  EXPECT_EQ(read(Library::serialId), GenericValue(UINT64_MAX));
  EXPECT_EQ(read(Library::loadId), GenericValue(1.5));
  EXPECT_EQ(read(Library::labelId), GenericValue("A"));
  EXPECT_EQ(read(Library::genreId), GenericValue("verse"));
  EXPECT_EQ(read(Library::sizeId), GenericValue(1));
  EXPECT_EQ(read(Library::firstId), isbn(3, "Emma"));
  EXPECT_EQ(Kor::valueToStrep(read(Library::placeId)), "'q'");
  EXPECT_TRUE(read(Library::topId).isNull());
  EXPECT_EQ(read(Library::heightId), GenericValue(2));
}

TEST_F(GenericInterface, WritesThroughTheWriterAndAnswersNothing) {
  EXPECT_FALSE(write(Library::openId, true).present());
  write(Library::widthId, UINT32_MAX);
  write(Library::tiltId, -128);
  write(Library::serialId, UINT64_MAX);
  write(Library::loadId, 2);
  write(Library::labelId, "B");
  write(Library::genreId, "verse");
  write(Library::sizeId, 1);
  write(Library::firstId, isbn(4, "Ulysses"));
  write(Library::placeId, "z");
  write(Library::heightId, 3);
  EXPECT_TRUE(shelf->open());
  EXPECT_EQ(shelf->width(), UINT32_MAX);
  EXPECT_EQ(shelf->tilt(), -128);
  EXPECT_EQ(shelf->serial(), UINT64_MAX);
  EXPECT_EQ(shelf->load(), 2.0);
  EXPECT_EQ(shelf->label(), "B");
  EXPECT_EQ(shelf->genre(), Genre::verse);
  EXPECT_EQ(shelf->size(), Size::large);
  EXPECT_EQ(shelf->first(), Isbn(4, "Ulysses"));
  EXPECT_EQ(shelf->place(), Place("z"));
  EXPECT_EQ(shelf->height(), 3U);
}

TEST_F(GenericInterface, RefusesAValueThatIsMissingOrOfAnotherType) {
  EXPECT_EQ(refused(Library::widthId, {}), "type width");
  EXPECT_EQ(refused(Library::widthId, nullptr), "type width");
  EXPECT_EQ(refused(Library::widthId, -1), "type width");
  EXPECT_EQ(refused(Library::widthId, std::uint64_t{1} << 32), "type width");
  EXPECT_EQ(refused(Library::widthId, 1.0), "type width");
  EXPECT_EQ(refused(Library::widthId, true), "type width");
  EXPECT_EQ(refused(Library::widthId, "1"), "type width");
  EXPECT_EQ(refused(Library::tiltId, 128), "type tilt");
  EXPECT_EQ(refused(Library::serialId, -1), "type serial");
  EXPECT_EQ(refused(Library::openId, 1), "type open");
  EXPECT_EQ(refused(Library::loadId, "1.0"), "type load");
  EXPECT_EQ(refused(Library::loadId, true), "type load");
  EXPECT_EQ(refused(Library::labelId, 1), "type label");
  EXPECT_EQ(refused(Library::firstId, "3"), "type first");
  EXPECT_EQ(refused(Library::firstId, Kor::Generic<Place>::value(Place("a"))), "type first");
  EXPECT_EQ(refused(Library::placeId, "22"), "type place");
}

TEST_F(GenericInterface, TakesAnyNumberForAnOpenEnumerationAndNumbersInUseForANarrowOne) {
  write(Library::genreId, -7);
  EXPECT_EQ(shelf->genre(), Genre{-7});
  write(Library::genreId, INT32_MAX);
  EXPECT_EQ(shelf->genre(), Genre{INT32_MAX});
  EXPECT_EQ(refused(Library::genreId, std::int64_t{INT32_MAX} + 1), "type genre");
  EXPECT_EQ(refused(Library::genreId, "Verse"), "type genre");
  EXPECT_EQ(refused(Library::genreId, Kor::Generic<Size>::value(Size::large)), "type genre");
  EXPECT_EQ(refused(Library::sizeId, 2), "type size");
  EXPECT_EQ(refused(Library::sizeId, 257), "type size");
  EXPECT_EQ(refused(Library::sizeId, -1), "type size");
}

TEST_F(GenericInterface, TakesNullAndObjectsOfThePointersTypeAndDerivedOnes) {
  auto const drawer = Kor::make<Drawer>(Kor::Name("d"));
  write(Library::topId, adapter(drawer).value());
  EXPECT_EQ(shelf->top(), drawer);
  EXPECT_EQ(read(Library::topId).object(), drawer.get());
  EXPECT_EQ(refused(Library::topId, self.value()), "type top");
  EXPECT_EQ(refused(Library::topId, adapter(drawer, true).value()), "type top")
      << "a const object is no good for a pointer that may change it";
  write(Library::topId, nullptr);
  EXPECT_EQ(shelf->top(), nullptr);

  write(Library::aboveId, constSelf.value());
  EXPECT_EQ(shelf->above(), shelf);
  EXPECT_TRUE(read(Library::aboveId).isConst());
  write(Library::aboveId, nullptr);
}

TEST_F(GenericInterface, TakesNoIndexAndNoOtherOperationOnData) {
  for (std::uint32_t const code : {0U, 1U, 128U, 129U}) {
    EXPECT_EQ(raisedBy({Library::widthId, code, 1, 2}), "index width") << code;
  }
  for (std::uint32_t const code : {1U, 2U, 3U, 4U, 127U, 129U, 255U, 256U}) {
    EXPECT_EQ(raisedBy({Library::widthId, code, {}, 2}), "op width " + std::to_string(code));
  }
  EXPECT_EQ(raisedBy({Kor::Entity::nameId, Code::set, {}, "south"}), "op name 128");
  EXPECT_EQ(raisedBy({Kor::Entity::nameId, Code::set, 1, "south"}), "index name");
  EXPECT_EQ(shelf->width(), 0U);
}

TEST_F(GenericInterface, IgnoresAValueThatComesWithARead) {
  EXPECT_EQ(self.attributeOp({Library::widthId, Code::get, {}, 9}), GenericValue(0));
}

// Value collections

TEST_F(GenericInterface, SetsReadsAndDeletesMembersOfACollection) {
  EXPECT_FALSE(self.attributeOp({Library::bookId, Code::set, isbn(1, "a"), 5}).present());
  EXPECT_EQ(shelf->book(Isbn(1, "a")), 5U);
  EXPECT_EQ(read(Library::bookId, isbn(1, "a")), GenericValue(5));
  EXPECT_EQ(read(Library::bookId, isbn(2, "b")), GenericValue(0)) << "the default of an absent one";
  EXPECT_FALSE(self.attributeOp({Library::bookId, Code::del, isbn(1, "a"), {}}).present());
  EXPECT_FALSE(self.attributeOp({Library::bookId, Code::del, isbn(1, "a"), {}}).present());
  EXPECT_EQ(shelf->books(), 0U);
  EXPECT_THAT(shelf->journal, ElementsAre("book a", "book a")) << "set and deleted, and no more";
}

TEST_F(GenericInterface, AsksAnIndexOfItsTypeFirstAndThenTheValue) {
  for (std::uint32_t const code : {0U, 3U, 128U, 129U}) {
    EXPECT_EQ(raisedBy({Library::bookId, code, {}, true}), "type kor_index") << code;
    EXPECT_EQ(raisedBy({Library::bookId, code, "a", true}), "type kor_index") << code;
  }
  EXPECT_EQ(raisedBy({Library::bookId, Code::set, isbn(1, "a"), {}}), "type book");
  EXPECT_EQ(raisedBy({Library::bookId, Code::set, isbn(1, "a"), "5"}), "type book");
  EXPECT_EQ(raisedBy({Library::bookId, 4, {}, {}}), "op book 4");
  EXPECT_EQ(raisedBy({Library::bookId, 130, isbn(1, "a"), 5}), "op book 130");
  EXPECT_EQ(shelf->books(), 0U);
}

std::vector<std::string> walked(GenericIf const& self, Kor::AttributeId id) {
  std::vector<std::string> keys;
  for (GenericValue key = self.attributeOp({id, Code::first, {}, {}}); key.present();
       key = self.attributeOp({id, Code::next, key, {}})) {
    keys.push_back(Kor::valueToStrep(key).stdString());
  }
  return keys;
}

TEST_F(GenericInterface, CountsAndWalksACollectionInItsOwnOrder) {
  EXPECT_THAT(walked(self, Library::bookId), IsEmpty());
  std::vector<std::string> expected;
  for (std::uint32_t i = 0; i < 40; ++i) {
    shelf->bookIs(Isbn(i, "t"), i);
  }
  for (auto const& entry : shelf->bookIteratorConst()) {
    expected.push_back(Kor::valueToStrep(entry.key()).stdString());
  }
  EXPECT_EQ(self.attributeOp({Library::bookId, Code::count, {}, {}}), GenericValue(40));
  EXPECT_EQ(walked(self, Library::bookId), expected);
  EXPECT_EQ(walked(constSelf, Library::bookId), expected);
  EXPECT_EQ(raisedBy({Library::bookId, Code::count, isbn(1, "a"), {}}), "index book");
  EXPECT_EQ(raisedBy({Library::bookId, Code::first, isbn(1, "a"), {}}), "index book");
}

TEST_F(GenericInterface, ResumesAWalkBehindAKeyThatIsGone) {
  for (std::uint32_t i = 0; i < 20; ++i) {
    shelf->bookIs(Isbn(i, "t"), i);
  }
  std::size_t steps = 0;
  for (GenericValue key = self.attributeOp({Library::bookId, Code::first, {}, {}}); key.present();
       key = self.attributeOp({Library::bookId, Code::next, key, {}})) {
    self.attributeOp({Library::bookId, Code::del, key, {}});
    ++steps;
  }
  EXPECT_EQ(steps, 20U);
  EXPECT_EQ(shelf->books(), 0U);
}

// Owned collections

TEST_F(GenericInterface, MakesReadsAndDeletesOwnedMembers) {
  GenericValue const made =
      self.attributeOp({Library::drawerId, Code::set, "d", GenericList::of()});
  ASSERT_EQ(made.kind(), GenericValue::Kind::object);
  EXPECT_EQ(made.object(), shelf->drawer(Kor::Name("d")).get());
  EXPECT_FALSE(made.isConst());
  EXPECT_EQ(self.attributeOp({Library::drawerId, Code::set, "d", GenericList::of("d")}), made)
      << "the same member once more";
  EXPECT_EQ(read(Library::drawerId, "d"), made);
  EXPECT_TRUE(read(Library::drawerId, "e").isNull());
  EXPECT_EQ(self.attributeOp({Library::drawerId, Code::count, {}, {}}), GenericValue(1));
  EXPECT_FALSE(self.attributeOp({Library::drawerId, Code::del, "d", {}}).present());
  EXPECT_EQ(shelf->drawers(), 0U);
  EXPECT_THAT(shelf->journal, ElementsAre("drawer d", "drawer d"));
}

TEST_F(GenericInterface, AsksForAMembersIndexThenTheListThenItsKey) {
  auto const set = [&](GenericValue const& index, GenericValue const& value) {
    return raisedBy({Library::drawerId, Code::set, index, value});
  };
  EXPECT_EQ(set({}, GenericList::of()), "type kor_index");
  EXPECT_EQ(set(1, {}), "type kor_index");
  EXPECT_EQ(set("d", {}), "type Kor::GenericIf::List_ List");
  EXPECT_EQ(set("d", "d"), "type Kor::GenericIf::List_ List");
  EXPECT_EQ(set("d", GenericList::of("e")), "type key");
  EXPECT_EQ(set("d", GenericList::of(1)), "type key");
  EXPECT_EQ(set("d", GenericList::of("e", "f")), "type key") << "the element before the surplus";
  EXPECT_EQ(set("d", GenericList::of("d", "d")), "surplus Drawer");
  EXPECT_EQ(raisedBy({Library::drawerId, 131, "d", {}}), "op drawer 131");
  EXPECT_EQ(shelf->drawers(), 0U);
}

// Functions

TEST_F(GenericInterface, CallsAFunctionWithItsArgumentsConverted) {
  shelf->loadIs(10);
  EXPECT_EQ(self.attributeOp({Library::weighId, Code::get, {}, GenericList::of(2, "kg")}),
            GenericValue(40.0))
      << "the override of the class itself";
  EXPECT_THAT(shelf->journal, ElementsAre("weigh in kg"));
}

TEST_F(GenericInterface, ChecksCodeIndexListElementsAndSurplusInThisOrder) {
  auto const call = [&](std::uint32_t code, GenericValue const& index, GenericValue const& value) {
    return raisedBy({Library::weighId, code, index, value});
  };
  EXPECT_EQ(call(1, 1, 1), "op weigh 1");
  EXPECT_EQ(call(128, 1, GenericList::of(2.0, "kg")), "op weigh 128");
  EXPECT_EQ(call(0, 1, 1), "index weigh");
  EXPECT_EQ(call(0, {}, {}), "type Kor::GenericIf::List_ List");
  EXPECT_EQ(call(0, {}, 1), "type Kor::GenericIf::List_ List");
  EXPECT_EQ(call(0, {}, GenericList::of()), "type scale");
  EXPECT_EQ(call(0, {}, GenericList::of("kg", "kg", "kg")), "type scale");
  EXPECT_EQ(call(0, {}, GenericList::of(2.0)), "type unit");
  EXPECT_EQ(call(0, {}, GenericList::of(2.0, 1, 2)), "type unit");
  EXPECT_EQ(call(0, {}, GenericList::of(2.0, "kg", 1)), "surplus weigh");
  EXPECT_THAT(shelf->journal, IsEmpty());
}

TEST_F(GenericInterface, CallsAFunctionWithoutArgumentsWithOrWithoutAList) {
  EXPECT_FALSE(self.attributeOp({Library::clearId, Code::get, {}, {}}).present());
  self.attributeOp({Library::clearId, Code::get, {}, GenericList::of()});
  EXPECT_EQ(raisedBy({Library::clearId, Code::get, {}, GenericList::of(1)}), "surplus clear");
  EXPECT_EQ(raisedBy({Library::clearId, Code::get, {}, 1}), "type Kor::GenericIf::List_ List");
  EXPECT_EQ(raisedBy({Library::clearId, Code::get, {}, nullptr}),
            "type Kor::GenericIf::List_ List");
  EXPECT_THAT(shelf->journal, ElementsAre("clear", "clear"));
}

TEST_F(GenericInterface, ChoosesBetweenOverloadsByTheNumberOfElements) {
  self.attributeOp({Library::liftId, Code::get, {}, {}});
  self.attributeOp({Library::liftId, Code::get, {}, GenericList::of()});
  self.attributeOp({Library::liftId, Code::get, {}, GenericList::of(4)});
  EXPECT_EQ(raisedBy({Library::liftId, Code::get, {}, GenericList::of("4")}), "type by");
  EXPECT_EQ(raisedBy({Library::liftId, Code::get, {}, GenericList::of(4, 4)}), "surplus lift");
  EXPECT_THAT(shelf->journal, ElementsAre("lift", "lift", "lift 4"));
}

TEST_F(GenericInterface, AnswersListsAndNewObjects) {
  shelf->bookIs(Isbn(1, "Emma"), 1);
  EXPECT_EQ(self.attributeOp({Library::titlesId, Code::get, {}, {}}),
            GenericValue(GenericList::of("Emma")));
  GenericValue const made =
      self.attributeOp({Library::createDrawerId, Code::get, {}, GenericList::of("new")});
  EXPECT_EQ(made.object()->fwkType(), Drawer::_fwkType());
  EXPECT_EQ(made.object()->references(), 1U);
}

TEST_F(GenericInterface, ReachesWhatHasNoNumberByItsRecordAlone) {
  Kor::KorAttr const* const rustle = TallShelf::_fwkType()->attr("rustle");
  ASSERT_NE(rustle, nullptr);
  self.attributeOp(*rustle, {0, Code::get, {}, GenericList::of(true)});
  EXPECT_THAT(shelf->journal, ElementsAre("rustle"));
  EXPECT_EQ(raisedBy({0, Code::get, {}, GenericList::of(true)}), "op unknown 0");
  auto const drawer = Kor::make<Drawer>(Kor::Name("d"));
  EXPECT_EQ(adapter(drawer).attributeOp({0, Code::get, {}, {}}), GenericValue("d"))
      << "under 0 a type that has one answers its key";
}

// Const

TEST_F(GenericInterface, RefusesModifyingCodesOnAConstAdapterBeforeAnythingElse) {
  for (std::uint32_t const code : {128U, 129U, 200U, 255U}) {
    for (Kor::AttributeId const id : {Kor::AttributeId{Library::widthId},
                                      Kor::AttributeId{Library::weighId}, Kor::AttributeId{9999}}) {
      EXPECT_EQ(raisedBy(constSelf, {id, code, 1, {}}),
                "const: attempting to modify a const instance");
    }
  }
  EXPECT_EQ(raisedBy(constSelf, {Library::widthId, 256, {}, {}}), "op width 256");
  EXPECT_EQ(shelf->width(), 0U);
}

TEST_F(GenericInterface, HandsConstDownToWhatAConstAdapterReaches) {
  shelf->topIs(Kor::make<Drawer>(Kor::Name("t")));
  shelf->drawerIs(Kor::Name("d"));
  EXPECT_TRUE(constSelf.attributeOp({Library::topId, Code::get, {}, {}}).isConst());
  EXPECT_TRUE(constSelf.attributeOp({Library::drawerId, Code::get, "d", {}}).isConst());
  EXPECT_FALSE(read(Library::topId).isConst());
  EXPECT_FALSE(read(Library::drawerId, "d").isConst());
  GenericValue const made =
      constSelf.attributeOp({Library::createDrawerId, Code::get, {}, GenericList::of("new")});
  EXPECT_FALSE(made.isConst()) << "a new object belongs to nobody else";
}

TEST_F(GenericInterface, CallsFunctionsThroughAConstAdapter) {
  constSelf.attributeOp({Library::clearId, Code::get, {}, {}});
  EXPECT_THAT(shelf->journal, ElementsAre("clear"));
}

TEST_F(GenericInterface, GivesValuesAwayAsConstCopies) {
  GenericValue const first = read(Library::firstId);
  EXPECT_TRUE(first.isConst());
  EXPECT_EQ(raisedBy(GenericIf(first), {2, Code::set, {}, 1}),
            "const: attempting to modify a const instance");
}

// Levels

TEST_F(GenericInterface, AnswersIdentifiersOfAllLevelsAndNoOthers) {
  EXPECT_EQ(self.attributeString(Library::heightId), "height");
  EXPECT_EQ(self.attributeString(Library::widthId), "width");
  EXPECT_EQ(self.attributeString(Kor::Entity::nameId), "name");
  EXPECT_EQ(self.attributeString(387), "unknown");
  EXPECT_EQ(self.attributeString(0), "unknown");
  EXPECT_EQ(raisedBy({387, Code::get, {}, {}}), "op unknown 0");
  EXPECT_EQ(raisedBy({UINT32_MAX, Code::set, {}, {}}), "op unknown 128");
}

TEST_F(GenericInterface, SeesAnObjectAsItsBaseTypes) {
  auto const base = Kor::GenericIfPtrInterface(self).baseGenericIf();
  EXPECT_EQ(base.type(), Shelf::_fwkType());
  EXPECT_EQ(base.attributeOp({Library::widthId, Code::get, {}, {}}), GenericValue(0));
  EXPECT_EQ(raisedBy(base, {Library::heightId, Code::get, {}, {}}), "op unknown 0");
  auto const root = base.baseGenericIf().baseGenericIf();
  EXPECT_EQ(root.type(), Kor::PtrInterface::_fwkType());
  EXPECT_EQ(root.baseGenericIf().type(), Kor::PtrInterface::_fwkType());
  EXPECT_EQ(raisedBy(root, {Kor::Entity::nameId, 5, {}, {}}), "op unknown 5");
  EXPECT_TRUE(Kor::GenericIfPtrInterface(constSelf).baseGenericIf().isConst());
}

TEST_F(GenericInterface, WalksAttributesInTheOrderOfTheType) {
  std::vector<std::string> names;
  for (auto it = Kor::GenericIfEntity(self).attributeIterator_iterObj(); it; ++it) {
    names.push_back(it->name().stdString());
  }
  EXPECT_THAT(names,
              ElementsAre("name", "open", "width", "tilt", "serial", "load", "label", "genre",
                          "size", "first", "place", "top", "above", "book", "drawer", "clear",
                          "lift", "titles", "createDrawer", "rustle", "weigh", "height"));
}

// Values

TEST(GenericInterfaceOfValues, ReadsFieldsAndWritesThoseThatCanBeWritten) {
  GenericIf const stamp =
      Kor::genericConstruct(*KorType::named("Library::Stamp"), GenericList::of());
  stamp.attributeOp({2, Code::set, {}, 30});
  EXPECT_EQ(stamp.attributeOp({2, Code::get, {}, {}}), GenericValue(30));
  EXPECT_EQ(raised([&] {
              stamp.attributeOp({2, Code::set, {}, 32});
            }),
            "range: Stamp::day > 31 not allowed");
  EXPECT_EQ(raised([&] { stamp.attributeOp({2, Code::set, {}, 256}); }), "type day");
  EXPECT_EQ(Kor::valueToStrep(stamp.value()), "Value('Library::Stamp', ** {'day': 30})");

  GenericIf const book =
      Kor::genericConstruct(*KorType::named("Library::Isbn"), GenericList::of(3, "Emma"));
  EXPECT_EQ(book.attributeOp({2, Code::get, {}, {}}), GenericValue(3));
  EXPECT_EQ(book.attributeOp({3, Code::get, {}, {}}), GenericValue("Emma"));
  EXPECT_EQ(raised([&] { book.attributeOp({2, Code::set, {}, 1}); }), "op group 128");
}

// Constructors by name

class Construction : public testing::Test {
 protected:
  static std::string raisedBy(char const* type, GenericValue const& arguments) {
    return raised([&] { (void)Kor::genericConstruct(*KorType::named(type), arguments); });
  }
};

TEST_F(Construction, BuildsFromAListOfItsArguments) {
  GenericIf const made =
      Kor::genericConstruct(*KorType::named("Library::Shelf"), GenericList::of("south"));
  EXPECT_FALSE(made.isConst());
  EXPECT_EQ(made.type(), Shelf::_fwkType());
  EXPECT_EQ(made.attributeOp({Kor::Entity::nameId, Code::get, {}, {}}), GenericValue("south"));
  EXPECT_FALSE(made.value().isConst());
}

TEST_F(Construction, ChecksTheListThenItsElementsThenTheSurplus) {
  EXPECT_EQ(raisedBy("Library::Isbn", {}), "type Kor::GenericIf::List_ List");
  EXPECT_EQ(raisedBy("Library::Isbn", 3), "type Kor::GenericIf::List_ List");
  EXPECT_EQ(raisedBy("Library::Isbn", GenericList::of()), "type group");
  EXPECT_EQ(raisedBy("Library::Isbn", GenericList::of("x", 3, 4)), "type group");
  EXPECT_EQ(raisedBy("Library::Isbn", GenericList::of(3, 3, 4)), "type title");
  EXPECT_EQ(raisedBy("Library::Isbn", GenericList::of(3, "Emma", 4)), "surplus Isbn");
  EXPECT_EQ(raisedBy("Library::Stamp", GenericList::of(1)), "surplus Stamp");
}

TEST_F(Construction, PassesTheRefusalsOfTheConstructorOn) {
  EXPECT_EQ(raisedBy("Library::Isbn", GenericList::of(100, "Emma")),
            "range: Isbn::group > 99 not allowed");
}

TEST_F(Construction, IsRefusedByATypeWithoutAConstructor) {
  EXPECT_EQ(raisedBy("Kor::Entity", GenericList::of("x")),
            "range: Kor::Entity cannot be constructed by name");
  EXPECT_EQ(raisedBy("bool", GenericList::of()), "range: bool cannot be constructed by name");
}

}  // namespace
