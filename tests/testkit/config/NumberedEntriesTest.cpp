// SPDX-License-Identifier: Apache-2.0
#include "testkit/config/NumberedEntries.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <string>

namespace PolicyMapTestKit::Text::test {
namespace {

// Has only two hashes, so that unequal values collide.
struct CoarseHash {
  std::uint32_t operator()(std::string const& text) const {
    return static_cast<std::uint32_t>(text.size() % 2);
  }
};
using Entries = NumberedEntries<std::string, CoarseHash>;

TEST(NumberedEntries, EntryWithoutNumberGoesTenBehindTheLast) {
  Entries entries;
  EXPECT_EQ(entries.nextNumber(), 10U);
  entries.put(25, "a");
  entries.put(3, "b");
  EXPECT_EQ(entries.nextNumber(), 35U);
}

TEST(NumberedEntries, NothingGoesBehindTheHighestNumbers) {
  Entries entries;
  entries.put(4294967285U, "a");
  EXPECT_EQ(entries.nextNumber(), 4294967295U);
  entries.put(4294967286U, "b");
  EXPECT_EQ(entries.nextNumber(), std::nullopt);
}

TEST(NumberedEntries, EqualValuesAreFoundLowestNumberFirst) {
  Entries entries;
  entries.put(30, "same");
  entries.put(10, "else");
  entries.put(20, "same");
  EXPECT_EQ(entries.numberOf("same"), 20U);
  EXPECT_TRUE(entries.erase(20));
  EXPECT_EQ(entries.numberOf("same"), 30U);
  EXPECT_EQ(entries.numberOf("other"), std::nullopt);
}

TEST(NumberedEntries, PutReplacesTheEntryOfItsNumber) {
  Entries entries;
  entries.put(10, "a");
  EXPECT_EQ(entries.numberOf("a"), 10U);
  entries.put(10, "b");
  EXPECT_EQ(entries.size(), 1U);
  EXPECT_EQ(entries.numberOf("a"), std::nullopt);
  EXPECT_EQ(entries.numberOf("b"), 10U);
}

TEST(NumberedEntries, EraseAnswersWhetherThereWasSuchAnEntry) {
  Entries entries;
  entries.put(10, "a");
  EXPECT_FALSE(entries.erase(20));
  EXPECT_TRUE(entries.erase(10));
  EXPECT_EQ(entries.size(), 0U);
}

RC_GTEST_PROP(NumberedEntries, LookingUpByValueAgreesWithASearch, ()) {
  Entries entries;
  std::map<std::uint32_t, std::string> model;
  auto const steps = *rc::gen::inRange(0, 60);
  for (int i = 0; i != steps; ++i) {
    auto const number = *rc::gen::inRange<std::uint32_t>(1, 12);
    auto const value = *rc::gen::element<std::string>("a", "bb", "ccc", "dddd");
    switch (*rc::gen::inRange(0, 3)) {
    case 0: RC_ASSERT(entries.erase(number) == (model.erase(number) != 0)); break;
    case 1: {
      auto const same = [&](auto const& entry) { return entry.second == value; };
      auto const found = std::find_if(model.begin(), model.end(), same);
      RC_ASSERT(entries.numberOf(value) ==
                (found == model.end() ? std::nullopt : std::optional(found->first)));
      break;
    }
    default: entries.put(number, value); model.insert_or_assign(number, value);
    }
    RC_ASSERT(entries.byNumber() == model);
  }
}

}  // namespace
}  // namespace PolicyMapTestKit::Text::test
