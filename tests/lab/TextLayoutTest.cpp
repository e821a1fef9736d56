// SPDX-License-Identifier: Apache-2.0
#include "lab/TextLayout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace lab::test {
namespace {

using testing::ElementsAre;

TEST(TextLayout, ColorIsLeftOutUnlessWanted) {
  EXPECT_EQ(tinted({}, Tint::good, "text"), "text");
  EXPECT_EQ(tinted({.color = true}, Tint::good, "text"), "\033[32mtext\033[0m");
  EXPECT_EQ(tinted({.color = true}, Tint::none, "text"), "text");
  EXPECT_EQ(tinted({.color = true}, Tint::good, ""), "");
}

TEST(TextLayout, TextIsCutAtBlanks) {
  EXPECT_THAT(wrapped("one two three", 7), ElementsAre("one two", "three"));
  EXPECT_THAT(wrapped("one two three", 13), ElementsAre("one two three"));
  EXPECT_THAT(wrapped("", 7), ElementsAre(""));
}

TEST(TextLayout, LongWordIsNotCut) {
  EXPECT_THAT(wrapped("a abcdefgh b", 4), ElementsAre("a", "abcdefgh", "b"));
  EXPECT_THAT(wrapped("abcdefgh", 4), ElementsAre("abcdefgh"));
}

TEST(TextLayout, ItemsStayWhole) {
  EXPECT_THAT(wrappedItems({"a b", "c d", "e f"}, " | ", 9), ElementsAre("a b | c d", "e f"));
  EXPECT_THAT(wrappedItems({}, " | ", 9), ElementsAre());
}

TEST(TextLayout, TableAlignsItsColumnsAndWrapsTheLast) {
  Table table({{"name"}, {"n", Table::Align::right}, {"text"}}, 1);
  table.add({"a", "10", "short"}, {"   below"});
  table.add({"longer", "7", "this one is longer than its column"});
  std::ostringstream out;
  table.print(out, {.color = false, .width = 44});
  EXPECT_EQ(out.str(), " name     n  text\n"
                       " a       10  short\n"
                       "   below\n"
                       " longer   7  this one is longer than its\n"
                       "             column\n");
}

TEST(TextLayout, RowWhoseLastCellsAreEmptyEndsWithItsText) {
  Table table({{"a"}, {"b"}, {"c"}}, 2);
  table.add({"1", "", ""});
  table.add({"", "", ""});
  std::ostringstream out;
  table.print(out, {});
  EXPECT_EQ(out.str(), "  a  b  c\n"
                       "  1\n"
                       "\n");
}

TEST(TextLayout, NounHasAPluralForAllButOne) {
  EXPECT_EQ(counted(0, "rule"), "0 rules");
  EXPECT_EQ(counted(1, "rule"), "1 rule");
  EXPECT_EQ(counted(2, "rule"), "2 rules");
}

}  // namespace
}  // namespace lab::test
