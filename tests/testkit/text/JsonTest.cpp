// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/Json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace PolicyMapTestKit::Text {
namespace {

using testing::HasSubstr;

std::string errorOf(std::string const& text) {
  try {
    return "read as " + Json::parse(text).text();
  } catch (JsonError const& error) {
    return error.what();
  }
}

TEST(Json, WritesEachKindOfValue) {
  EXPECT_EQ(Json().text(), "null");
  EXPECT_EQ(Json(true).text(), "true");
  EXPECT_EQ(Json(18446744073709551615U).text(), "18446744073709551615");
  EXPECT_EQ(Json("a").text(), "\"a\"");
  EXPECT_EQ(Json(Json::Array{}).text(), "[]");
  EXPECT_EQ(Json(Json::Object{{"b", 1U}, {"a", Json::Array{Json(), false}}}).text(),
            R"({"b":1,"a":[null,false]})");
}

TEST(Json, WritesNumbersAsTheirShortestText) {
  EXPECT_EQ(Json(0.0).text(), "0.0");
  EXPECT_EQ(Json(3.0).text(), "3.0");
  EXPECT_EQ(Json(-0.1).text(), "-0.1");
  EXPECT_EQ(Json(1e6).text(), "1000000.0");
  EXPECT_EQ(Json(1e300).text(), "1e+300");
  EXPECT_EQ(Json(std::numeric_limits<double>::infinity()).text(), "null");
}

TEST(Json, WritesALinePerValueIfIndented) {
  Json const json(Json::Object{{"a", Json::Array{1U, 2U}}, {"b", Json::Array{}}});
  EXPECT_EQ(json.text(2), "{\n  \"a\": [\n    1,\n    2\n  ],\n  \"b\": []\n}");
}

TEST(Json, EscapesWhatAStringMayNotHold) {
  EXPECT_EQ(Json(std::string_view("\"\\/\b\f\n\r\t\0\x1f\x7fß", 13)).text(),
            "\"\\\"\\\\/\\b\\f\\n\\r\\t\\u0000\\u001f\x7fß\"");
  EXPECT_EQ(Json("a\x9b\xc3").text(), "\"a\ufffd\ufffd\"") << "invalid UTF-8";
}

TEST(Json, ReadsWhatItWrites) {
  Json const json(Json::Object{{"text", "a\"\n\x01 ß \U0001f600"},
                               {"numbers", Json::Array{7U, 0.5, -2.0, 1e300, 0.1}},
                               {"nested", Json::Object{{"none", Json()}, {"yes", true}}}});
  EXPECT_EQ(Json::parse(json.text()), json);
  EXPECT_EQ(Json::parse(json.text(3)), json);
}

TEST(Json, ReadsEscapes) {
  Json const json = Json::parse(R"( "\u0041\u00e9\u20ac\ud83d\ude00\/\b" )");
  EXPECT_EQ(*json.as<std::string>(), "A\u00e9\u20ac\U0001f600/\b");
}

TEST(Json, ReadsNumbersByTheirForm) {
  EXPECT_EQ(*Json::parse("7").as<std::uint64_t>(), 7U);
  EXPECT_EQ(*Json::parse("-7").as<double>(), -7.0);
  EXPECT_EQ(*Json::parse("7e2").as<double>(), 700.0);
  EXPECT_EQ(*Json::parse("18446744073709551616").as<double>(), 18446744073709551616.0);
  EXPECT_TRUE(std::signbit(*Json::parse("-0").as<double>()));
}

TEST(Json, FindsMembers) {
  Json const json = Json::parse(R"({"a":1,"b":2,"a":3})");
  EXPECT_EQ(*json.member("a")->as<std::uint64_t>(), 3U);
  EXPECT_EQ(json.member("c"), nullptr);
  EXPECT_EQ(Json(7U).member("a"), nullptr);
  EXPECT_EQ(json.as<std::string>(), nullptr);
  EXPECT_TRUE(Json::parse("null").isNull());
}

TEST(Json, NamesThePlaceOfAnError) {
  EXPECT_EQ(errorOf(""), "expected a value, at byte 1");
  EXPECT_EQ(errorOf("[1,]"), "expected a value, at byte 4");
  EXPECT_EQ(errorOf("[1 2]"), "expected a comma or ], at byte 4");
  EXPECT_EQ(errorOf("{\"a\" 1}"), "expected a colon, at byte 6");
  EXPECT_EQ(errorOf("{a:1}"), "expected a name in quotes, at byte 2");
  EXPECT_EQ(errorOf("{\"a\":1,}"), "expected a name in quotes, at byte 8");
  EXPECT_EQ(errorOf("{} {}"), "expected the end, at byte 4");
  EXPECT_EQ(errorOf("01"), "expected the end, at byte 2");
  EXPECT_EQ(errorOf("1."), "expected a digit, at byte 3");
  EXPECT_EQ(errorOf("-"), "expected a digit, at byte 2");
  EXPECT_EQ(errorOf("1e999"), "expected a number in the range of a double, at byte 1");
  EXPECT_EQ(errorOf("nul"), "expected a value, at byte 1");
  EXPECT_EQ(errorOf("\"a"), "expected a closing quote, at byte 3");
  EXPECT_EQ(errorOf("\"\\x\""), "expected an escape, at byte 3");
  EXPECT_EQ(errorOf("\"\\u12g4\""), "expected four hexadecimal digits, at byte 4");
  EXPECT_THAT(errorOf(R"("\ud800")"), HasSubstr("expected a pair of surrogates"));
  EXPECT_THAT(errorOf(R"("\ud800\u0041")"), HasSubstr("expected a pair of surrogates"));
  EXPECT_THAT(errorOf(R"("\udc00")"), HasSubstr("expected a pair of surrogates"));
  EXPECT_THAT(errorOf("\"\n\""), HasSubstr("no control character, at byte 2"));
  EXPECT_THAT(errorOf("\"\x9b\""), HasSubstr("a character in UTF-8"));
}

TEST(Json, LimitsTheDepth) {
  EXPECT_THAT(errorOf(std::string(200, '[') + std::string(200, ']')), HasSubstr("read as"));
  EXPECT_EQ(errorOf(std::string(100000, '[')), "expected at most 200 levels, at byte 201");
}

}  // namespace
}  // namespace PolicyMapTestKit::Text
