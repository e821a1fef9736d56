// SPDX-License-Identifier: Apache-2.0

// What the terminal receives of external texts.

#include "testkit/text/ShownText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace PolicyMapTestKit::Text::test {
namespace {

TEST(ShownText, ReadableTextStaysAsItIs) {
  for (std::string const text :
       {"", "plain text, 'quoted' \\ and ~", "Zürich → 東京 𝄞 \u00a0\u00ad"}) {
    EXPECT_EQ(shownText(text), text);
  }
}

TEST(ShownText, ControlCharactersAreEscapedByteForByte) {
  EXPECT_EQ(shownText(std::string("a\0b\x1b[2J\t\r\n\x7f", 11)),
            "a\\x00b\\x1b[2J\\x09\\x0d\\x0a\\x7f");
  EXPECT_EQ(shownText("\u0080|\u009b2J|\u009f"), "\\xc2\\x80|\\xc2\\x9b2J|\\xc2\\x9f");
}

TEST(ShownText, SeparatorsAndMarksOfDirectionAreEscaped) {
  for (std::string const mark : {"\u061c", "\u200e", "\u200f", "\u2028", "\u2029", "\u202a",
                                 "\u202b", "\u202c", "\u202d", "\u202e", "\u2066", "\u2069"}) {
    EXPECT_EQ(shownText(mark).size(), 4 * mark.size()) << shownText(mark);
  }
  EXPECT_EQ(shownText("a\u202eb"), "a\\xe2\\x80\\xaeb");
  EXPECT_EQ(shownText("\u2027\u202f\u2065\u206a"), "\u2027\u202f\u2065\u206a");
}

TEST(ShownText, BytesThatAreNoUtf8AreEscaped) {
  EXPECT_EQ(shownText("\x9b|\xff|\x80"), "\\x9b|\\xff|\\x80");
  EXPECT_EQ(shownText("\xc3"), "\\xc3");                             // cut off
  EXPECT_EQ(shownText("\xe2\x80|"), "\\xe2\\x80|");                  // truncated
  EXPECT_EQ(shownText("\xc0\x9b"), "\\xc0\\x9b");                    // overlong
  EXPECT_EQ(shownText("\xed\xa0\x80"), "\\xed\\xa0\\x80");           // surrogate
  EXPECT_EQ(shownText("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");  // above U+10FFFF
}

RC_GTEST_PROP(ShownText, HasNoControlCharactersAndStaysAsItIs, (std::string const& text)) {
  std::string const shown = shownText(text);
  RC_ASSERT(std::all_of(shown.begin(), shown.end(), [](char c) {
    auto const byte = static_cast<unsigned char>(c);
    return byte >= 0x20 && byte != 0x7f;
  }));
  RC_ASSERT(shownText(shown) == shown);
}

TEST(ShownText, LongWordsAndLongMessagesAreCut) {
  EXPECT_EQ(shortened("no such  type: x "), "no such  type: x ");
  EXPECT_EQ(shortened("a " + std::string(64, 'x')), "a " + std::string(64, 'x'));
  EXPECT_EQ(shortened("a " + std::string(65, 'x') + " b"), "a " + std::string(40, 'x') + "... b");
  std::string words;
  for (int i = 0; i != 1000; ++i) {
    words += "word ";
  }
  EXPECT_EQ(shortened(words), words.substr(0, 1000) + "...");
  EXPECT_EQ(shortened("a" + std::string(2000, ' ')).size(), 1003U);
}

}  // namespace
}  // namespace PolicyMapTestKit::Text::test
