// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/SkippedLines.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace PolicyMapTestKit::Text {
namespace {

// The kind of a line whose word at `column` was not understood.
std::string kindOf(std::string_view line, std::uint32_t column) {
  Lexer lexer(line);
  while (lexer.peek().column < column && !lexer.peek().atEnd()) {
    lexer.next();
  }
  return skippedKind(line, {"", lexer.peek()});
}

TEST(SkippedLines, KindIsTheFirstKeyword) {
  EXPECT_EQ(kindOf("object-group network x", 1), "object-group");
  EXPECT_EQ(kindOf("  SNMP-server enable", 3), "snmp-server");
  EXPECT_EQ(kindOf("description: text", 1), "description");
}

TEST(SkippedLines, KindHasMoreWordsWhereTheFirstSaysLittle) {
  EXPECT_EQ(kindOf("match protocol tcp", 7), "match protocol");
  EXPECT_EQ(kindOf("match ip dscp 40", 10), "match ip dscp");
  EXPECT_EQ(kindOf("no ip source-route now", 7), "no ip source-route");
  EXPECT_EQ(kindOf("no 10 permit", 4), "no (value)");
}

TEST(SkippedLines, UnknownPartOfAKnownCommandStandsInBrackets) {
  EXPECT_EQ(kindOf("permit ip any addrgroup g", 15), "permit (addrgroup)");
  EXPECT_EQ(kindOf("10 permit ip any any precedence 5", 22), "permit (precedence)");
  EXPECT_EQ(kindOf("access-list 101 permit ip any any time-range t", 35), "permit (time-range)");
  EXPECT_EQ(kindOf("ip address 1.2.3.4 1.2.3.4", 20), "ip address (value)");
  EXPECT_EQ(kindOf("match access-group", 99), "match access-group (incomplete)");
}

TEST(SkippedLines, LineWithoutAKeywordIsText) {
  for (std::string_view const line : {"*****", "\x01\x02", "1.2.3.4", "a\x01", "(c) 2024"}) {
    EXPECT_EQ(kindOf(line, 1), "(text)") << line;
  }
}

TEST(SkippedLines, KindIsShortWhateverTheLine) {
  std::string const word(1000, 'w');
  EXPECT_EQ(kindOf(word, 1), std::string(32, 'w'));
  EXPECT_EQ(kindOf("no ip " + word + " " + word, 1008),
            "no ip " + std::string(32, 'w') + " (" + std::string(32, 'w') + ")");
}

TEST(SkippedLines, LinesAreCountedByKind) {
  SkippedLines skipped;
  skipped.add("a", {});
  skipped.add("b", {});
  skipped.add("b", {});
  skipped.add("a", {});
  EXPECT_EQ(skipped.total(), 4U);
  EXPECT_EQ(skipped.byKind(), (std::map<std::string, std::uint64_t>{{"a", 2}, {"b", 2}}));
}

TEST(SkippedLines, KindsBeyondTheLimitAreCountedTogether) {
  SkippedLines skipped;
  for (int kind = 0; kind != 1000; ++kind) {
    skipped.add("k" + std::to_string(kind), {});
  }
  skipped.add("k0", {});
  EXPECT_EQ(skipped.byKind().size(), 257U);
  EXPECT_EQ(skipped.byKind().at("other"), 744U);
  EXPECT_EQ(skipped.byKind().at("k0"), 2U);
  EXPECT_EQ(skipped.total(), 1001U);
}

TEST(SkippedLines, AreListedInOrderAndBounded) {
  auto const file = std::make_shared<std::string const>("f");
  SkippedLines one;
  one.add("a", {file, 3, 1});
  SkippedLines all;
  all.add("b", {file, 1, 1});
  all.sawPolicyLine(true);
  one.sawPolicyLine(false);
  all.add(one);
  ASSERT_EQ(all.lines().size(), 2U);
  EXPECT_EQ(toText(all.lines()[1].place) + " " + all.lines()[1].kind, "f:3:1 a");
  EXPECT_EQ(all.total(), 2U);
  EXPECT_EQ(all.understood(), 1U);
  EXPECT_EQ(all.missed(), 1U);
  for (std::size_t i = 0; i != SkippedLines::mostLines; ++i) {
    all.add("c", {file, 5, 1});
  }
  EXPECT_EQ(all.lines().size(), SkippedLines::mostLines);
  EXPECT_EQ(all.total(), SkippedLines::mostLines + 2);
}

}  // namespace
}  // namespace PolicyMapTestKit::Text
