// SPDX-License-Identifier: Apache-2.0
#include "kor/Shelf.h"

#include <Kor/GenericIf.h>
#include <Kor/GenericValue.h>
#include <Kor/Strep.h>

#include <gtest/gtest.h>

#include <compare>
#include <cstdint>
#include <iomanip>
#include <limits>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using Kor::GenericList;
using Kor::GenericValue;
using Library::Drawer;
using Library::Genre;
using Library::isbn;
using Kind = GenericValue::Kind;

GenericValue verse() {
  return Kor::Generic<Genre>::value(Genre::verse);
}

// One value of each kind.
std::vector<GenericValue> everyKind() {
  return {GenericValue(),
          nullptr,
          true,
          -1,
          UINT64_MAX,
          0.5,
          verse(),
          "text",
          GenericList::of(1, "a"),
          isbn(1, "a"),
          GenericValue(Kor::make<Drawer>(Kor::Name("d")), false)};
}

// [[[…]]], with a number beside each inner list; the innermost value is `last`.
GenericValue nested(std::size_t depth, int last) {
  GenericValue value = GenericList::of(last);
  for (std::size_t i = 1; i < depth; ++i) {
    value = GenericList::of(1, std::move(value));
  }
  return value;
}

TEST(GenericValue, ListsMayBeNestedDeeperThanTheStackBears) {
  constexpr std::size_t deep = 1000000;
  GenericValue value = nested(deep, 7);
  GenericValue const same = nested(deep, 7);
  EXPECT_TRUE(value == same);
  EXPECT_FALSE(value == nested(deep, 8));
  EXPECT_FALSE(value == nested(deep + 1, 7));
  std::string expected;
  for (std::size_t i = 1; i < deep; ++i) {
    expected += "[1, ";
  }
  expected += "[7" + std::string(deep, ']');
  EXPECT_TRUE(Kor::valueToStrep(value).view() == expected);
  GenericValue copy = value;
  value = nullptr;
  EXPECT_TRUE(copy == same);
  copy = 3;
  EXPECT_EQ(copy, GenericValue(3));
}

TEST(GenericValue, AListThatHoldsAnotherSeveralTimesGivesItUpOnce) {
  auto const drawer = Kor::make<Drawer>(Kor::Name("d"));
  GenericList::Ptr const kept = GenericList::of(GenericValue(drawer, false));
  GenericValue value(kept);
  for (int i = 0; i < 100000; ++i) {
    value = GenericList::of(value, value);
  }
  EXPECT_EQ(drawer->references(), 2U);
  value = GenericValue();
  EXPECT_EQ(drawer->references(), 2U) << "the list that is kept is not emptied";
  EXPECT_EQ(kept->size(), 1U);
  EXPECT_EQ((*kept)[0].object(), drawer.get());
}

TEST(GenericValue, ListsCompareAndPrintElementByElement) {
  auto const list = [](auto const&... elements) {
    return GenericValue(GenericList::of(elements...));
  };
  GenericValue const value = list(1, list(), list("a", list(2), nullptr), list(3));
  EXPECT_EQ(Kor::valueToStrep(value), "[1, [], ['a', [2], None], [3]]");
  EXPECT_EQ(value, list(1.0, list(), list("a", list(2), nullptr), list(3)));
  EXPECT_FALSE(value == list(1, list(), list("a", list(), nullptr), list(3)));
  EXPECT_FALSE(value == list(1, list(), list("a", list(2), nullptr), 3));
  EXPECT_FALSE(value == list(1, list(), list("a", list(2), nullptr)));
}

TEST(GenericValue, KnowsItsKind) {
  std::vector<GenericValue> const values = everyKind();
  for (std::size_t i = 0; i < values.size(); ++i) {
    EXPECT_EQ(values[i].kind(), static_cast<Kind>(i));
    EXPECT_EQ(values[i].present(), i != 0);
    EXPECT_EQ(values[i].isNull(), values[i].kind() == Kind::null);
  }
  EXPECT_EQ(GenericValue(INT64_MAX).kind(), Kind::integer);
  EXPECT_EQ(GenericValue(std::uint64_t{INT64_MAX} + 1).kind(), Kind::natural);
  EXPECT_EQ(GenericValue(std::uint8_t{7}).integer(), 7);
}

TEST(GenericValue, EqualsACopyOfItselfAndNothingOfAnotherKind) {
  std::vector<GenericValue> const values = everyKind();
  for (std::size_t i = 0; i < values.size(); ++i) {
    for (std::size_t j = 0; j < values.size(); ++j) {
      GenericValue const copy = values[j];
      EXPECT_EQ(values[i] == copy, i == j) << i << " and " << j;
    }
  }
}

TEST(GenericValue, ValuesOfOneTypeHaveTheOrderOfThatType) {
  EXPECT_EQ(orderOf(isbn(1, "a"), isbn(2, "a")), std::partial_ordering::less);
  EXPECT_EQ(orderOf(isbn(2, "a"), isbn(1, "b")), std::partial_ordering::greater);
  EXPECT_EQ(orderOf(isbn(1, "a"), isbn(1, "a")), std::partial_ordering::equivalent);
  for (GenericValue const& other : everyKind()) {
    if (other.kind() != Kind::value) {
      EXPECT_EQ(orderOf(isbn(1, "a"), other), std::partial_ordering::unordered);
      EXPECT_EQ(orderOf(other, other), std::partial_ordering::unordered);
    }
  }
}

TEST(GenericValue, ComparesNumbersByValueWhateverTheirKind) {
  EXPECT_EQ(GenericValue(1), GenericValue(1.0));
  EXPECT_EQ(GenericValue(1), verse());
  EXPECT_EQ(GenericValue(1.0), verse());
  EXPECT_NE(GenericValue(1), GenericValue(1.5));
  EXPECT_NE(GenericValue(1), GenericValue(true));
  EXPECT_NE(GenericValue(-1), GenericValue(UINT64_MAX));
  EXPECT_NE(GenericValue(UINT64_MAX), GenericValue(-1.0));
}

TEST(GenericValue, ComparesAnEnumerationWithItsNames) {
  EXPECT_EQ(verse(), GenericValue("verse"));
  EXPECT_EQ(GenericValue("verse"), verse());
  EXPECT_NE(verse(), GenericValue("prose"));
  EXPECT_NE(verse(), GenericValue("1"));
}

TEST(GenericValue, ComparesValuesByContentAndObjectsByIdentity) {
  EXPECT_EQ(isbn(1, "a"), isbn(1, "a"));
  EXPECT_NE(isbn(1, "a"), isbn(1, "b"));
  EXPECT_NE(isbn(1, "a"), Kor::Generic<Library::Stamp>::value({}));
  auto const drawer = Kor::make<Drawer>(Kor::Name("d"));
  GenericValue const object(drawer, false);
  EXPECT_EQ(object, GenericValue(drawer, true));
  EXPECT_NE(object, GenericValue(Kor::make<Drawer>(Kor::Name("d")), false));
  EXPECT_EQ(GenericValue(GenericList::of(1, "a")), GenericValue(GenericList::of(1.0, "a")));
  EXPECT_NE(GenericValue(GenericList::of(1, "a")), GenericValue(GenericList::of(1)));
}

TEST(GenericValue, CountsWhatItRefersTo) {
  auto const drawer = Kor::make<Drawer>(Kor::Name("d"));
  {
    GenericValue value(drawer, false);
    EXPECT_EQ(drawer->references(), 2U);
    GenericValue copy = value;
    EXPECT_EQ(drawer->references(), 3U);
    GenericValue moved = std::move(copy);
    EXPECT_EQ(drawer->references(), 3U);
    EXPECT_FALSE(copy.present());  // NOLINT(bugprone-use-after-move): moving leaves no value
    value = 5;
    EXPECT_EQ(drawer->references(), 2U);
    GenericValue& same = moved;
    moved = same;
    EXPECT_EQ(drawer->references(), 2U);
    EXPECT_EQ(moved.object(), drawer.get());
  }
  EXPECT_EQ(drawer->references(), 1U);
}

TEST(GenericValue, SharesTheListWithItsCopies) {
  auto const list = GenericList::of(1);
  GenericValue const value = list;
  GenericValue const copy = value;
  list->append("b");
  EXPECT_EQ(copy.list().size(), 2U);
  EXPECT_EQ(copy.list()[1], GenericValue("b"));
  EXPECT_FALSE(copy.list()[2].present()) << "behind the end is no value";
}

TEST(GenericValue, HasAConstFlagWhenItRefersToABoxOrAnObject) {
  auto const drawer = Kor::make<Drawer>(Kor::Name("d"));
  EXPECT_FALSE(GenericValue(drawer, false).isConst());
  EXPECT_TRUE(GenericValue(drawer, true).isConst());
  GenericValue value(drawer, false);
  value.makeConst();
  EXPECT_TRUE(value.isConst());
  EXPECT_TRUE(isbn(1, "a").isConst());
  GenericValue number(5);
  number.makeConst();
  EXPECT_FALSE(number.isConst());
  EXPECT_FALSE(GenericValue(Drawer::Ptr(), true).isConst()) << "null can be changed by nobody";
}

TEST(GenericValue, TakesNullPointersForNull) {
  EXPECT_TRUE(GenericValue(Drawer::Ptr(), false).isNull());
  EXPECT_TRUE(GenericValue(GenericList::Ptr()).isNull());
}

// Text forms

GenericValue parsed(std::string const& text) {
  return Kor::strepToValue<GenericValue>(Kor::String8(text));
}
std::string parseError(std::string const& text) {
  try {
    return "no error: " + Kor::valueToStrep(parsed(text)).stdString();
  } catch (Kor::RangeException const& error) {
    return error.text();
  }
}

TEST(GenericText, OfEveryKindReadsBackAsAnEqualValue) {
  std::vector<GenericValue> values = everyKind();
  values.emplace_back(GenericList::of());
  values.emplace_back(GenericList::of(GenericList::of(isbn(2, "it's")), nullptr, 1.0));
  values.emplace_back(std::numeric_limits<double>::infinity());
  values.emplace_back(-std::numeric_limits<double>::infinity());
  values.emplace_back(1e300);
  values.emplace_back(INT64_MIN);
  values.emplace_back("a\n'\"\\\x80");
  for (GenericValue const& value : values) {
    Kor::String8 const text = Kor::valueToStrep(value);
    EXPECT_EQ(parsed(text.stdString()), value.present() ? value : GenericValue(nullptr)) << text;
    EXPECT_EQ(Kor::valueToStrep(parsed(text.stdString())), text);
  }
}

TEST(GenericText, IsThatOfTheValueItself) {
  EXPECT_EQ(Kor::valueToStrep(GenericValue()), "None");
  EXPECT_EQ(Kor::valueToStrep(GenericValue(nullptr)), "None");
  EXPECT_EQ(Kor::valueToStrep(GenericValue(true)), "True");
  EXPECT_EQ(Kor::valueToStrep(GenericValue(2.0)), "2.0");
  EXPECT_EQ(Kor::valueToStrep(verse()), "'verse'");
  EXPECT_EQ(Kor::valueToStrep(GenericValue(GenericList::of(1, "a", nullptr))), "[1, 'a', None]");
  EXPECT_EQ(Kor::valueToStrep(isbn(1, "a")),
            "Value('Library::Isbn', ** {'group': 1, 'title': 'a'})");
  std::ostringstream out;
  out << std::setw(40) << std::hex << GenericValue(255);
  EXPECT_EQ(out.str(), "255");
}

TEST(GenericText, MayHaveWhiteSpaceAndAnyLiteralForm) {
  EXPECT_EQ(parsed(" [ 1 ,\t'a' , [ ] ] "),
            GenericValue(GenericList::of(1, "a", GenericList::of())));
  EXPECT_EQ(parsed("\"a\""), GenericValue("a"));
  EXPECT_EQ(parsed("-7"), GenericValue(-7));
  EXPECT_EQ(parsed("1e3").kind(), Kind::real);
  EXPECT_EQ(parsed("18446744073709551615"), GenericValue(UINT64_MAX));
}

TEST(GenericText, IsRefusedWithTheColumnOfWhatIsWrong) {
  EXPECT_EQ(parseError(""), "expected a value at column 0");
  EXPECT_EQ(parseError("  truth"), "expected a value at column 2");
  EXPECT_EQ(parseError("[1, ?]"), "expected a value at column 4");
  EXPECT_EQ(parseError("[1 2]"), "expected , at column 3");
  EXPECT_EQ(parseError("[1"), "expected , at column 2");
  EXPECT_EQ(parseError("'a"), "unterminated string at column 0");
  EXPECT_EQ(parseError("1 2"), "junk at column 2 deserializing 1 2");
  EXPECT_EQ(parseError("18446744073709551616"), "18446744073709551616 out of range at column 0");
  EXPECT_EQ(parseError("Value('Library::Nothing', ** {})"),
            "no such value type: Library::Nothing at column 6");
  EXPECT_EQ(parseError("Value('Library::Shelf', ** {})"),
            "no such value type: Library::Shelf at column 6");
  EXPECT_EQ(parseError("Value('Library::Isbn', ** {'pages': 1})"),
            "Isbn has no such attribute: pages");
}

}  // namespace
