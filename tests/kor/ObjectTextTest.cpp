// SPDX-License-Identifier: Apache-2.0
#include "kor/Shelf.h"

#include <Kor/Entity.h>
#include <Kor/ObjectText.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using Kor::valueToStrep;
using Library::Drawer;
using Library::Shelf;
using Library::TallShelf;

template <class T>
Kor::Ptr<T> parsed(Kor::String8 const& text) {
  return Kor::strepToValue<Kor::Ptr<T>>(text);
}
template <class T>
std::string parseError(Kor::String8 const& text) {
  try {
    return "no error: " + valueToStrep(parsed<T>(text)).stdString();
  } catch (Kor::RangeException const& error) {
    return error.text();
  }
}

// The number in the text of an object.
std::string numberIn(Kor::String8 const& text) {
  std::string const all = text.stdString();
  std::size_t const from = all.find(", ") + 2;
  return all.substr(from, all.find_first_of(",)", from) - from);
}

TEST(ObjectText, NamesTheTypeTheObjectAndAnEntitysName) {
  auto const shelf = Kor::make<Shelf>(Kor::Name("north's"));
  auto const drawer = Kor::make<Drawer>(Kor::Name("d"));
  Kor::String8 const text = valueToStrep(shelf);
  EXPECT_EQ(text, Kor::String8("Ptr('Library::Shelf', " + numberIn(text) + ", 'north\\'s')"));
  EXPECT_EQ(valueToStrep(drawer),
            Kor::String8("Ptr('Library::Drawer', " + numberIn(valueToStrep(drawer)) + ")"));
  EXPECT_EQ(valueToStrep(shelf), text) << "the same as long as it lives";
}

TEST(ObjectText, ReadsBackAsTheSameObjectSeenAsItsTypeOrABase) {
  auto const shelf = Kor::make<TallShelf>(Kor::Name("north"));
  Kor::String8 const text = valueToStrep(shelf);
  EXPECT_EQ(parsed<TallShelf>(text), shelf);
  EXPECT_EQ(parsed<Shelf>(text), shelf);
  EXPECT_EQ(parsed<Kor::Entity>(text), shelf);
  EXPECT_EQ(parsed<Kor::PtrInterface>(text), shelf);
  EXPECT_EQ(parsed<Shelf const>(valueToStrep(Kor::Ptr<Shelf const>(shelf))), shelf);
  EXPECT_EQ(parsed<Shelf>(Kor::String8(" Ptr ( \"Library::TallShelf\" , " + numberIn(text) +
                                       " , 'north' ) ")),
            shelf);
}

TEST(ObjectText, OfANullPointerIsNone) {
  EXPECT_EQ(valueToStrep(Shelf::Ptr()), "None");
  EXPECT_EQ(valueToStrep(static_cast<Kor::PtrInterface const*>(nullptr)), "None");
  EXPECT_EQ(parsed<Shelf>("None"), nullptr);
}

TEST(ObjectText, IsOfNoUseForAPointerToAnotherType) {
  auto const shelf = Kor::make<Shelf>(Kor::Name("north"));
  EXPECT_EQ(parseError<Drawer>(valueToStrep(shelf)),
            "Library::Drawer expected, not Library::Shelf");
  EXPECT_EQ(parseError<TallShelf>(valueToStrep(shelf)),
            "Library::TallShelf expected, not Library::Shelf");
}

TEST(ObjectText, StandsForNothingOnceTheObjectIsGone) {
  auto shelf = Kor::make<Shelf>(Kor::Name("north"));
  Kor::String8 const text = valueToStrep(shelf);
  shelf = nullptr;
  EXPECT_EQ(parseError<Shelf>(text), "no such object: " + text.stdString());
  auto const next = Kor::make<Shelf>(Kor::Name("north"));
  EXPECT_NE(valueToStrep(next), text) << "a number is never given again";
  EXPECT_EQ(parseError<Shelf>(text), "no such object: " + text.stdString());
}

TEST(ObjectText, OfADyingObjectReadsBackNoMore) {
  struct Last : Kor::PtrInterface {
    explicit Last(std::string& outcome) : outcome_(outcome) {}
    ~Last() override { outcome_ = parseError<Kor::PtrInterface>(text_); }
    void printedNow() { text_ = valueToStrep(this); }

   private:
    std::string& outcome_;
    Kor::String8 text_;
  };
  std::string outcome;
  {
    auto const last = Kor::make<Last>(outcome);
    last->printedNow();
  }
  EXPECT_EQ(outcome.substr(0, 15), "no such object:");
}

TEST(ObjectText, MustTellTypeAndNameRight) {
  auto const shelf = Kor::make<Shelf>(Kor::Name("north"));
  auto const drawer = Kor::make<Drawer>(Kor::Name("d"));
  std::string const number = numberIn(valueToStrep(shelf));
  std::string const drawerNumber = numberIn(valueToStrep(drawer));
  for (std::string const& wrong :
       {"Ptr('Library::Shelf', " + number + ")", "Ptr('Library::Shelf', " + number + ", 'south')",
        "Ptr('Library::Drawer', " + number + ", 'north')",
        "Ptr('Library::Drawer', " + drawerNumber + ", 'd')",
        std::string("Ptr('Library::Shelf', 18446744073709551615, 'north')"),
        std::string("Ptr('Library::Shelf', 0, 'north')")}) {
    EXPECT_EQ(parseError<Kor::PtrInterface>(Kor::String8(wrong)), "no such object: " + wrong);
  }
}

TEST(ObjectText, IsRefusedWithTheColumnOfWhatIsMissing) {
  EXPECT_EQ(parseError<Shelf>("Library::Shelf"), "expected Ptr at column 0");
  EXPECT_EQ(parseError<Shelf>("Ptr(Library::Shelf, 1)"), "expected a string at column 4");
  EXPECT_EQ(parseError<Shelf>("Ptr('Library::Shelf')"), "expected , at column 20");
  EXPECT_EQ(parseError<Shelf>("Ptr('Library::Shelf', x)"), "expected an integer at column 22");
  EXPECT_EQ(parseError<Shelf>("Ptr('Library::Shelf', 1, 2)"), "expected a string at column 25");
  EXPECT_EQ(parseError<Shelf>("Ptr('Library::Shelf', 1"), "expected ) at column 23");
}

}  // namespace
