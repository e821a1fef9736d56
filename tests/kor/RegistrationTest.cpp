// SPDX-License-Identifier: Apache-2.0

// What registration derives from a table.

#include "kor/Shelf.h"

#include <Kor/KorAttr.h>
#include <Kor/KorType.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using Kor::KorAttr;
using Kor::KorType;
using Library::Drawer;
using Library::Isbn;
using Library::Shelf;
using Library::TallShelf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

std::vector<std::pair<std::string, Kor::AttributeId>> table(KorType const* type) {
  std::vector<std::pair<std::string, Kor::AttributeId>> lines;
  for (auto const& attr : type->attrs()) {
    lines.emplace_back(attr->name().stdString(), attr->id());
  }
  return lines;
}

std::vector<std::string> args(std::vector<Kor::ArgumentSpec> const& specs) {
  std::vector<std::string> texts;
  for (Kor::ArgumentSpec const& spec : specs) {
    texts.push_back(spec.name.stdString() + ": " + spec.typeName.stdString());
  }
  return texts;
}

std::string typeName(KorType const* type) {
  return type == nullptr ? "-" : std::string(type->name());
}

TEST(Registration, NumbersOwnAttributesFrom2Behind128TimesTheLevel) {
  EXPECT_THAT(table(Isbn::_fwkType()), ElementsAre(Pair("group", 2), Pair("title", 3)));
  EXPECT_THAT(table(Drawer::_fwkType()),
              ElementsAre(Pair("key", 130), Pair("depth", 131), Pair("fwkKey", 0)));
  EXPECT_THAT(table(Shelf::_fwkType()),
              ElementsAre(Pair("name", 130), Pair("open", 258), Pair("width", 259),
                          Pair("tilt", 260), Pair("serial", 261), Pair("load", 262),
                          Pair("label", 263), Pair("genre", 264), Pair("size", 265),
                          Pair("first", 266), Pair("place", 267), Pair("top", 268),
                          Pair("above", 269), Pair("book", 270), Pair("drawer", 271),
                          Pair("weigh", 272), Pair("clear", 273), Pair("lift", 274),
                          Pair("titles", 275), Pair("createDrawer", 276), Pair("rustle", 0)));
}

TEST(Registration, GivesAnOverrideTheNumberOfTheBaseAndOfOwnOnesCountsTheOthersAlone) {
  auto const tall = table(TallShelf::_fwkType());
  ASSERT_EQ(tall.size(), 22U);
  EXPECT_EQ(tall[20], std::pair(std::string("weigh"), Kor::AttributeId{272}))
      << "with arguments it is deleted and defined again, behind what is inherited";
  EXPECT_EQ(tall[21], std::pair(std::string("height"), Kor::AttributeId{386}));
  EXPECT_EQ(TallShelf::_fwkType()->attr("weigh")->owner(), TallShelf::_fwkType());
  EXPECT_EQ(Shelf::_fwkType()->attr("weigh")->owner(), Shelf::_fwkType());
  EXPECT_EQ(TallShelf::_fwkType()->attr("width"), Shelf::_fwkType()->attr("width"));
}

TEST(Registration, TellsKindSizeAndConstructorOfTheType) {
  KorType const* const shelf = TallShelf::_fwkType();
  EXPECT_EQ(KorType::named("Library::TallShelf"), shelf);
  EXPECT_EQ(shelf->size(), sizeof(TallShelf));
  EXPECT_TRUE(shelf->isEntity());
  EXPECT_FALSE(shelf->isValue());
  EXPECT_TRUE(shelf->hasGenericIfSupport());
  EXPECT_THAT(args(shelf->constructorArgs()), ElementsAre("name: Kor::Name"));
  EXPECT_FALSE(Drawer::_fwkType()->isEntity());
  EXPECT_FALSE(Drawer::_fwkType()->isValue());
  KorType const* const isbn = Isbn::_fwkType();
  EXPECT_TRUE(isbn->isValue());
  EXPECT_FALSE(isbn->isEntity());
  EXPECT_EQ(isbn->size(), sizeof(Isbn));
  EXPECT_THAT(args(isbn->constructorArgs()), ElementsAre("group: uint32_t", "title: Kor::String"));
  EXPECT_TRUE(KorType::named("Library::Genre")->isValue());
  EXPECT_EQ(KorType::named("Library::Size")->size(), 1U);
}

TEST(Registration, NamesTheTypesOfDataCollectionsAndFunctions) {
  auto const types = [](char const* name) {
    KorAttr const* const attr = Shelf::_fwkType()->attr(name);
    return typeName(attr->keyType()) + " > " + typeName(attr->valueType());
  };
  EXPECT_EQ(types("open"), "- > bool");
  EXPECT_EQ(types("tilt"), "- > int8_t");
  EXPECT_EQ(types("serial"), "- > uint64_t");
  EXPECT_EQ(types("load"), "- > double");
  EXPECT_EQ(types("label"), "- > Kor::String");
  EXPECT_EQ(types("genre"), "- > Library::Genre");
  EXPECT_EQ(types("first"), "- > Library::Isbn");
  EXPECT_EQ(types("top"), "- > Library::Drawer");
  EXPECT_EQ(types("above"), "- > Library::Shelf");
  EXPECT_EQ(types("book"), "Library::Isbn > uint32_t");
  EXPECT_EQ(types("drawer"), "Kor::Name > Library::Drawer");
  EXPECT_EQ(types("weigh"), "- > double");
  EXPECT_EQ(types("clear"), "- > void");
  EXPECT_EQ(types("titles"), "- > Kor::GenericIf::List_");
}

TEST(Registration, ListsTheArgumentsOfFunctions) {
  auto const of = [](char const* name) { return args(Shelf::_fwkType()->attr(name)->args()); };
  EXPECT_THAT(of("weigh"), ElementsAre("scale: double", "unit: Kor::String"));
  EXPECT_THAT(of("clear"), IsEmpty());
  EXPECT_THAT(of("lift"), ElementsAre("by: uint32_t")) << "the overload with the argument";
  EXPECT_THAT(of("createDrawer"), ElementsAre("key: Kor::Name"));
  EXPECT_THAT(of("rustle"), ElementsAre("on: bool"));
}

TEST(Registration, KeepsTheLineThatExplainsAnAttribute) {
  auto const prose = [](KorType const* type, char const* name) {
    return type->attr(name)->prose();
  };
  KorType const* const shelf = Shelf::_fwkType();
  EXPECT_EQ(prose(shelf, "width"), "in centimetres");
  EXPECT_EQ(prose(shelf, "drawer"), "drawers by label");
  EXPECT_EQ(prose(shelf, "weigh"), "weight of all books");
  EXPECT_EQ(prose(shelf, "open"), "") << "the table says nothing";
  EXPECT_EQ(prose(Isbn::_fwkType(), "group"), "publisher, 0 to 99") << "of the listed field";
  EXPECT_EQ(prose(Isbn::_fwkType(), "title"), "");
  EXPECT_EQ(prose(KorType::named("Library::Stamp"), "day"), "day of the month; 0: none");
  EXPECT_FALSE(prose(Drawer::_fwkType(), "fwkKey").empty());
}

TEST(Registration, ExplainsAnOverrideWithoutALineOfItsOwnLikeTheOverridden) {
  KorType const* const tall = TallShelf::_fwkType();
  EXPECT_NE(tall->attr("weigh"), Shelf::_fwkType()->attr("weigh"));
  EXPECT_EQ(tall->attr("weigh")->prose(), "weight of all books");
  EXPECT_EQ(tall->attr("height")->prose(), "number of boards");
}

TEST(Registration, KeepsTheNamesOfAnEnumeration) {
  EXPECT_THAT(KorType::named("Library::Genre")->enumNames(), ElementsAre("prose", "verse"));
  EXPECT_THAT(KorType::named("Library::Size")->enumNames(), ElementsAre("small", "large"));
  EXPECT_THAT(Shelf::_fwkType()->enumNames(), IsEmpty());
  EXPECT_THAT(Isbn::_fwkType()->enumNames(), IsEmpty());
}

TEST(Registration, FlagsAttributesByWhatTheyAre) {
  struct Line {
    KorType const* type;
    char const* name;
    KorAttr::AttrFlags flags;
    std::uint32_t introspection;
    bool isWritable;
  };
  KorType const* const shelf = Shelf::_fwkType();
  KorType const* const drawer = Drawer::_fwkType();
  using Flags = KorAttr::AttrFlags;
  std::vector<Line> const lines{
      {shelf, "width", Flags(0x220143, 0x400), 2, true},
      {shelf, "name", Flags(0x220109, 0x40000400), 2, false},
      {shelf, "book", Flags(0x1a20103, 0x400), 2, true},
      {shelf, "drawer", Flags(0x9a20103, 0x10000400), 34, true},
      {shelf, "weigh", Flags(0x20001, 0x400), 8, false},
      {shelf, "createDrawer", Flags(0x8020001, 0x400), 8, false},
      {shelf, "rustle", Flags(0x1, 0x400), 8, false},
      {drawer, "key", Flags(0x220109, 0x40000400), 2, false},
      {drawer, "fwkKey", Flags(0x200001, 0x400), 0, false},
  };
  for (Line const& line : lines) {
    KorAttr const* const attr = line.type->attr(line.name);
    EXPECT_EQ(attr->flags(), line.flags) << line.name;
    EXPECT_EQ(attr->introspectionFlags().value(), line.introspection) << line.name;
    EXPECT_EQ(attr->isWritable(), line.isWritable) << line.name;
  }
}

TEST(Registration, TakesForTheKeyOfOwnedMembersTheirKeyOrWhatTheyAreBuiltFrom) {
  KorAttr const* const drawers = Shelf::_fwkType()->attr("drawer");
  EXPECT_TRUE(drawers->isOwnedCollection());
  EXPECT_EQ(drawers->keyAttr().get(), Drawer::_fwkType()->attr("key"));
}

}  // namespace
