// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/JsonLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace PolicyMapTestKit::Text {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// The second line of a file "f".
template <class Use>
void useLine(std::string const& text, Use const& use) {
  SourceText const source("f", "{}\n" + text + "\n");
  LineReader reader(source);
  reader.next();
  reader.next();
  use(JsonLine(reader));
}

template <class Use>
std::string errorOfLine(std::string const& text, Use const& use) {
  try {
    useLine(text, use);
  } catch (InputError const& error) {
    return error.what();
  }
  return "no error";
}

TEST(JsonLine, ReadsMembersWithTheirTypes) {
  useLine(R"({"n":7,"r":0.5,"f":true,"t":"x<\n","l":["a","b"]})", [](JsonLine const& line) {
    EXPECT_EQ(line.number("n"), 7U);
    EXPECT_EQ(line.real("r"), 0.5);
    EXPECT_EQ(line.real("n"), 7.0) << "a whole number is a number";
    EXPECT_TRUE(line.flag("f"));
    EXPECT_EQ(line.text("t"), "x<\n");
    EXPECT_THAT(line.texts("l"), ElementsAre("a", "b"));
    EXPECT_TRUE(line.has("n"));
    EXPECT_FALSE(line.has("m"));
    EXPECT_EQ(line.json().member("n")->text(), "7");
  });
}

TEST(JsonLine, TextsThatAreMissingAreEmpty) {
  useLine("{}", [](JsonLine const& line) {
    EXPECT_EQ(line.text("t"), "");
    EXPECT_THAT(line.texts("l"), IsEmpty());
  });
}

TEST(JsonLine, OtherMembersMustBeThere) {
  EXPECT_EQ(errorOfLine("{}", [](JsonLine const& line) { (void)line.number("n"); }),
            "f:2:1: expected a whole number as member \"n\", found '{}'");
  EXPECT_EQ(errorOfLine("{}", [](JsonLine const& line) { (void)line.real("r"); }),
            "f:2:1: expected a number as member \"r\", found '{}'");
  EXPECT_EQ(errorOfLine("{}", [](JsonLine const& line) { (void)line.flag("f"); }),
            "f:2:1: expected true or false as member \"f\", found '{}'");
}

TEST(JsonLine, MembersOfAnotherTypeAreRefused) {
  std::string const text = R"({"a":-1,"b":"x","c":[1],"d":1})";
  EXPECT_THAT(errorOfLine(text, [](JsonLine const& line) { (void)line.number("a"); }),
              HasSubstr("f:2:1: expected a whole number as member \"a\""));
  EXPECT_THAT(errorOfLine(text, [](JsonLine const& line) { (void)line.real("b"); }),
              HasSubstr("f:2:1: expected a number as member \"b\""));
  EXPECT_THAT(errorOfLine(text, [](JsonLine const& line) { (void)line.flag("d"); }),
              HasSubstr("f:2:1: expected true or false as member \"d\""));
  EXPECT_THAT(errorOfLine(text, [](JsonLine const& line) { (void)line.text("d"); }),
              HasSubstr("f:2:1: expected a text as member \"d\""));
  EXPECT_THAT(errorOfLine(text, [](JsonLine const& line) { (void)line.texts("b"); }),
              HasSubstr("f:2:1: expected a list as member \"b\""));
  EXPECT_THAT(errorOfLine(text, [](JsonLine const& line) { (void)line.texts("c"); }),
              HasSubstr("f:2:1: expected texts in member \"c\""));
}

TEST(JsonLine, IsAnObject) {
  auto const nothing = [](JsonLine const&) {};
  EXPECT_EQ(errorOfLine("[1]", nothing), "f:2:1: expected a JSON object, found '[1]'");
  EXPECT_THAT(errorOfLine("{\"a\":x}", nothing), HasSubstr("f:2:6: expected "));
  EXPECT_THAT(errorOfLine("{\"a\":", nothing), HasSubstr("f:2:6: expected "));
}

TEST(JsonLine, FailsAtAPlace) {
  EXPECT_EQ(errorOfLine("{\"a\":1}", [](JsonLine const& line) { line.fail(5, "two"); }),
            "f:2:6: expected two, found '1}'");
  EXPECT_EQ(errorOfLine("{}", [](JsonLine const& line) { line.fail(9, "more"); }),
            "f:2:10: expected more, found end of line");
}

}  // namespace
}  // namespace PolicyMapTestKit::Text
