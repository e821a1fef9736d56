// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/Lexer.h"

#include <gtest/gtest.h>

#include <string>

namespace PolicyMapTestKit::Text {
namespace {

// "COLUMN: expected X, found Y" of the failure that `take` throws.
template <typename Take>
std::string failureOf(Take take) {
  try {
    take();
  } catch (SyntaxFailure const& failure) {
    return std::to_string(failure.found.column) + ": expected " + failure.expected + ", found " +
           std::string(failure.found.text.substr(0, 20));
  }
  return "no failure";
}

TEST(Lexer, WordsAreCutAtBlanksAndTabsWithTheirColumns) {
  Lexer lexer("  one\ttwo  ");
  EXPECT_EQ(lexer.peek().text, "one");
  EXPECT_EQ(lexer.peekSecond().text, "two");
  EXPECT_EQ(lexer.next().column, 3U);
  Token const two = lexer.next();
  EXPECT_EQ(two.text, "two");
  EXPECT_EQ(two.column, 7U);
}

TEST(Lexer, EndOfLineStandsBehindTheLastWord) {
  Lexer lexer("one  \t");
  lexer.next();
  EXPECT_TRUE(lexer.peek().atEnd());
  EXPECT_EQ(lexer.next().column, 4U);
  EXPECT_TRUE(lexer.next().atEnd());
  EXPECT_TRUE(Lexer("").peek().atEnd());
  EXPECT_EQ(Lexer(" \t ").peek().column, 1U);
}

TEST(Lexer, KeywordsAreTakenInAnyCaseAndWhole) {
  Lexer lexer("PerMit permits");
  EXPECT_TRUE(lexer.accept("permit"));
  EXPECT_FALSE(lexer.accept("permit"));
  EXPECT_EQ(lexer.peek().text, "permits");
}

TEST(Lexer, RestIsTheLineWithoutBlanksAround) {
  Lexer lexer("remark  a  b  ");
  lexer.next();
  Token const rest = lexer.rest();
  EXPECT_EQ(rest.text, "a  b");
  EXPECT_EQ(rest.column, 9U);
  EXPECT_TRUE(lexer.peek().atEnd());
}

TEST(Lexer, WordsLeftOverAreAFailureAtTheFirst) {
  Lexer lexer("a b c");
  lexer.next();
  EXPECT_EQ(failureOf([&] { lexer.expectEnd(); }), "3: expected end of line, found b");
}

TEST(Lexer, NumbersAreDecimalAndWithinTheirBounds) {
  std::uint64_t value = 7;
  for (std::string_view const text : {"", "-1", "+1", "1x", "0x1", " 1", "99999999999999999999"}) {
    EXPECT_FALSE(parseNumber(text, 0, UINT64_MAX, value)) << text;
  }
  EXPECT_FALSE(parseNumber("4", 5, 6, value));
  EXPECT_FALSE(parseNumber("7", 5, 6, value));
  EXPECT_EQ(value, 7U);
  EXPECT_TRUE(parseNumber("18446744073709551615", 0, UINT64_MAX, value));
  EXPECT_EQ(value, UINT64_MAX);
}

TEST(Lexer, HexadecimalNumbersStartWithTheirMark) {
  std::uint64_t value = 7;
  for (std::string_view const text : {"", "0x", "ff", "0xg", "0x-1", "0x100"}) {
    EXPECT_FALSE(parseHexNumber(text, 0xff, value)) << text;
  }
  EXPECT_EQ(value, 7U);
  EXPECT_TRUE(parseHexNumber("0XfF", 0xff, value));
  EXPECT_EQ(value, 255U);
}

TEST(Lexer, NumberOutOfBoundsNamesTheBounds) {
  Lexer lexer("a 64");
  lexer.next();
  EXPECT_EQ(failureOf([&] { takeNumber(lexer, "dscp", 0, 63); }),
            "3: expected dscp 0-63, found 64");
}

TEST(Lexer, NameIsPrintableAndShort) {
  std::string const longest(255, 'n');
  std::string const tooLong(256, 'n');
  Lexer good(longest);
  EXPECT_EQ(takeName(good, "a name").text, longest);
  Lexer bad(tooLong);
  EXPECT_EQ(failureOf([&] { takeName(bad, "a name"); }),
            "1: expected a name of at most 255 characters, found nnnnnnnnnnnnnnnnnnnn");
  Lexer binary("a\x01");
  EXPECT_EQ(failureOf([&] { takeName(binary, "a name"); }), "1: expected a name, found a\x01");
  Lexer none("");
  EXPECT_EQ(failureOf([&] { takeName(none, "a name"); }), "1: expected a name, found ");
}

}  // namespace
}  // namespace PolicyMapTestKit::Text
