// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/SourceText.h"

#include "testkit/text/Parsing.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace PolicyMapTestKit::Text::test {
namespace {

using Lines = std::vector<std::string>;

Lines linesOf(std::string text) {
  SourceText const source("t", std::move(text));
  LineReader reader(source);
  Lines lines;
  while (reader.next()) {
    lines.emplace_back(reader.line());
    EXPECT_EQ(reader.number(), lines.size());
  }
  return lines;
}

TEST(SourceText, LineEndsAtTheLineFeedAndTheLastOneNeedsNone) {
  EXPECT_EQ(linesOf("a\nb"), (Lines{"a", "b"}));
  EXPECT_EQ(linesOf("a\n\nb\n"), (Lines{"a", "", "b"}));
  EXPECT_EQ(linesOf(""), Lines{});
}

TEST(SourceText, CarriageReturnBelongsToTheLineEnd) {
  EXPECT_EQ(linesOf("a\r\nb\r"), (Lines{"a", "b"}));
  EXPECT_EQ(linesOf("a\rb\n"), Lines{"a\rb"});
}

TEST(SourceText, ByteOrderMarkIsPassedOver) {
  EXPECT_EQ(linesOf("\xEF\xBB\xBF"
                    "a\n"),
            Lines{"a"});
}

TEST(SourceText, NulByteIsRefusedWithItsPlace) {
  EXPECT_EQ(errorFrom([] { return linesOf(std::string("a\nbc\0d", 6)); }),
            "t:2:3: expected text, found '\\x00d'");
}

TEST(SourceText, ErrorTellsItsParts) {
  InputError const error({std::make_shared<std::string const>("f"), 3, 7}, "a name", "?");
  EXPECT_STREQ(error.what(), "f:3:7: expected a name, found '?'");
  EXPECT_EQ(error.file(), "f");
  EXPECT_EQ(error.line(), 3U);
  EXPECT_EQ(error.column(), 7U);
  EXPECT_EQ(error.expected(), "a name");
  EXPECT_EQ(toText(error.position()), "f:3:7");
}

TEST(SourceText, ExcerptIsPrintableAndShort) {
  EXPECT_EQ(excerpt("word"), "'word'");
  EXPECT_EQ(excerpt(""), "end of line");
  EXPECT_EQ(excerpt("\x1b\xff\t"), "'\\x1b\\xff\\x09'");
  EXPECT_EQ(excerpt(std::string(40, 'x')), "'" + std::string(40, 'x') + "'");
  EXPECT_EQ(excerpt(std::string(41, 'x')), "'" + std::string(40, 'x') + "'...");
}

TEST(SourceText, FileIsReadWholeWithItsNulBytes) {
  auto const path = std::filesystem::temp_directory_path() / "policymap-lab-source-text";
  std::string const content(200000, '\0');
  std::ofstream(path, std::ios::binary) << content;
  SourceText const source = SourceText::fromFile(path.string());
  EXPECT_EQ(source.content(), content);
  EXPECT_EQ(*source.name(), path.string());
  std::filesystem::remove(path);
}

TEST(SourceText, FileWithoutEndIsRefusedWithTheBound) {
  EXPECT_EQ(errorFrom([] { return SourceText::fromFile("/dev/zero", 100000); }),
            "/dev/zero: expected a file of at most 100000 bytes, found 'a longer one'");
  auto const path = std::filesystem::temp_directory_path() / "policymap-lab-bounded-text";
  std::ofstream(path, std::ios::binary) << std::string(100000, 'x');
  EXPECT_EQ(SourceText::fromFile(path.string(), 100000).content().size(), 100000U);
  EXPECT_EQ(errorFrom([&] { return SourceText::fromFile(path.string(), 99999); }),
            path.string() + ": expected a file of at most 99999 bytes, found 'a longer one'");
  std::filesystem::remove(path);
}

TEST(SourceText, MissingFileIsAnErrorOfTheWholeFile) {
  EXPECT_EQ(errorFrom([] { return SourceText::fromFile("/no/such/file"); }),
            "/no/such/file: expected a readable file, found 'No such file or directory'");
}

TEST(SourceText, FolderIsNoFile) {
  EXPECT_EQ(errorFrom([] { return SourceText::fromFile("/"); }),
            "/: expected a readable file, found 'Is a directory'");
}

}  // namespace
}  // namespace PolicyMapTestKit::Text::test
