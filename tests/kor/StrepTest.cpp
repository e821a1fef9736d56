// SPDX-License-Identifier: Apache-2.0
#include <Kor/Strep.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <tuple>

namespace {

using namespace std::string_view_literals;
using Kor::strepToValue;
using Kor::String8;
using Kor::valueToStrep;

// The text of the RangeException that reading `text` as a T throws; "no error" if it throws none.
template <class T>
std::string errorOf(String8 const& text) {
  try {
    static_cast<void>(strepToValue<T>(text));
  } catch (Kor::RangeException const& error) {
    return error.text();
  }
  return "no error";
}

std::string readText(std::string_view literal) {
  return strepToValue<String8>(literal).stdString();
}

// texts

TEST(TextStrep, PrintsASingleQuotedPythonLiteral) {
  EXPECT_EQ(valueToStrep(String8("Ethernet3/1")), "'Ethernet3/1'");
  EXPECT_EQ(valueToStrep(String8()), "''");
  EXPECT_EQ(valueToStrep(Kor::Name("pm")), "'pm'");
  EXPECT_EQ(valueToStrep(String8("it's")), R"('it\'s')");
  EXPECT_EQ(valueToStrep(String8("say \"hi\"")), R"('say "hi"')");
  EXPECT_EQ(valueToStrep(String8("a\\b")), R"('a\\b')");
  EXPECT_EQ(valueToStrep(String8("\n\r\t")), R"('\n\r\t')");
  EXPECT_EQ(valueToStrep(String8("\0\x01\x7f"sv)), R"('\x00\x01\x7f')");
}

TEST(TextStrep, KeepsUtf8AndEscapesBytesThatAreNone) {
  EXPECT_EQ(valueToStrep(String8("é€😀")), "'é€😀'");
  EXPECT_EQ(valueToStrep(String8("\xff\x80")), R"('\xff\x80')");
  EXPECT_EQ(valueToStrep(String8("\xc0\xaf")), R"('\xc0\xaf')") << "overlong";
  EXPECT_EQ(valueToStrep(String8("\xed\xa0\x80")), R"('\xed\xa0\x80')") << "a surrogate";
  EXPECT_EQ(valueToStrep(String8("\xe2\x82")), R"('\xe2\x82')") << "cut short";
  EXPECT_EQ(valueToStrep(String8("\xf4\x90\x80\x80")), R"('\xf4\x90\x80\x80')") << "too large";
}

RC_GTEST_PROP(TextStrep, WhatPrintsReadsBack, (std::vector<char> const& bytes)) {
  String8 const text(std::string(bytes.begin(), bytes.end()));
  RC_ASSERT(strepToValue<String8>(valueToStrep(text)) == text);
}

TEST(TextStrep, EitherQuoteOpensAndCloses) {
  EXPECT_EQ(readText("'single'"), "single");
  EXPECT_EQ(readText("\"double\""), "double");
  EXPECT_EQ(readText("'with \" inside'"), "with \" inside");
  EXPECT_EQ(readText("\"with ' inside\""), "with ' inside");
  EXPECT_EQ(readText("''"), "");
  EXPECT_EQ(readText("\"\""), "");
}

TEST(TextStrep, TripleQuotesHoldQuotesAndLineEnds) {
  EXPECT_EQ(readText("'''a 'quoted' word'''"), "a 'quoted' word");
  EXPECT_EQ(readText("\"\"\"two\nlines\"\"\""), "two\nlines");
  EXPECT_EQ(readText("''''''"), "");
  EXPECT_EQ(readText("\"\"\"\"\"\""), "");
  EXPECT_EQ(readText("'''ends with \\''''"), "ends with '");
  EXPECT_EQ(readText("'''two '' here'''"), "two '' here");
}

TEST(TextStrep, PrefixesAreAcceptedInEitherCaseAndOrder) {
  for (std::string const prefix :
       {"", "r", "R", "u", "U", "b", "B", "rb", "br", "Rb", "bR", "RB", "BR", "rB", "Br"}) {
    EXPECT_EQ(readText(prefix + "'plain'"), "plain") << prefix;
    EXPECT_EQ(readText(prefix + "\"\"\"plain\"\"\""), "plain") << prefix;
  }
}

TEST(TextStrep, OtherPrefixesAreRefused) {
  for (std::string const prefix : {"ur", "ru", "rr", "bb", "ub", "bu", "uu", "rbr", "f", "rf"}) {
    EXPECT_EQ(errorOf<String8>(" " + prefix + "'x'"), "expected a string at column 1") << prefix;
  }
}

TEST(TextStrep, OneLiteralIsATextAndTheNextIsNot) {
  EXPECT_EQ(errorOf<String8>("'a' 'b'"), "junk at column 4 deserializing 'a' 'b'");
  EXPECT_EQ(errorOf<String8>("'a''b'"), "junk at column 3 deserializing 'a''b'");
}

TEST(TextStrep, EveryLineEndIsRead) {
  for (std::string const end : {"\n", "\r\n", "\r"}) {
    EXPECT_EQ(readText("'''a" + end + "b'''"), "a\nb");
    EXPECT_EQ(readText("'a\\" + end + "b'"), "ab");
    EXPECT_EQ(readText("r'a\\" + end + "b'"), "a\\\nb");
    EXPECT_EQ(errorOf<String8>("'a" + end + "b'"), "unterminated string at column 0");
  }
  EXPECT_EQ(readText("'''\n\r'''"), "\n\n");
}

TEST(TextStrep, RawLiteralsKeepTheirBackslashes) {
  EXPECT_EQ(readText(R"(r'a\nb')"), R"(a\nb)");
  EXPECT_EQ(readText(R"(r'a\'b')"), R"(a\'b)") << "the quote does not close, the backslash stays";
  EXPECT_EQ(readText(R"(R"\\")"), R"(\\)");
  EXPECT_EQ(readText(R"(rb'\x41')"), R"(\x41)");
  EXPECT_EQ(readText(R"(br'\x41')"), R"(\x41)");
}

TEST(TextStrep, LetterEscapesMeanWhatTheyMeanInPython) {
  EXPECT_EQ(readText(R"('\a\b\f\n\r\t\v')"), "\a\b\f\n\r\t\v");
  EXPECT_EQ(readText(R"('\\\'\"')"), "\\'\"");
  EXPECT_EQ(readText("'one \\\nline'"), "one line") << "an escaped line end is nothing";
}

TEST(TextStrep, OctalEscapesTakeOneToThreeDigits) {
  EXPECT_EQ(readText(R"('\0')"), "\0"sv);
  EXPECT_EQ(readText(R"('\7z')"), "\az");
  EXPECT_EQ(readText(R"('\101\60')"), "A0");
  EXPECT_EQ(readText(R"('\1011')"), "A1");
  EXPECT_EQ(readText(R"('\08')"), "\0"
                                  "8"sv);
  EXPECT_EQ(readText(R"('\377')"), "\xff");
}

TEST(TextStrep, HexadecimalEscapesAreBytes) {
  EXPECT_EQ(readText(R"('\x41\x0a')"), "A\n");
  EXPECT_EQ(readText(R"('\xFf\xfF')"), "\xff\xff");
  EXPECT_EQ(readText(R"(b'\xe9')"), "\xe9");
  EXPECT_EQ(readText(R"('\x00')"), "\0"sv);
}

TEST(TextStrep, UnicodeEscapesBecomeUtf8) {
  EXPECT_EQ(readText(R"('\u0041')"), "A");
  EXPECT_EQ(readText(R"('\u00e9')"), "é");
  EXPECT_EQ(readText(R"('\u20AC')"), "€");
  EXPECT_EQ(readText(R"('\U0001f600')"), "😀");
  EXPECT_EQ(readText(R"('\ud7ff\ue000\U0010ffff')"), "\xed\x9f\xbf\xee\x80\x80\xf4\x8f\xbf\xbf");
  EXPECT_EQ(readText(R"(u'\u00e9')"), "é");
}

TEST(TextStrep, InABytesLiteralUnicodeEscapesStandForThemselves) {
  EXPECT_EQ(readText(R"(b'\u0041')"), R"(\u0041)");
  EXPECT_EQ(readText(R"(B'\U00000041')"), R"(\U00000041)");
  EXPECT_EQ(readText(R"(b'\N{DASH}')"), R"(\N{DASH})");
  EXPECT_EQ(readText(R"(r'\N{DASH}\400')"), R"(\N{DASH}\400)") << "nor in a raw one";
}

TEST(TextStrep, AnUnknownEscapeStandsForItself) {
  EXPECT_EQ(readText(R"('\q\.')"), R"(\q\.)");
}

TEST(TextStrep, NoStringIsRefusedWithTheColumnBehindTheWhiteSpace) {
  EXPECT_EQ(errorOf<String8>(""), "expected a string at column 0");
  EXPECT_EQ(errorOf<String8>("  7"), "expected a string at column 2");
  EXPECT_EQ(errorOf<String8>("\t\n\v\f\r x"), "expected a string at column 6");
  EXPECT_EQ(errorOf<String8>(" rb"), "expected a string at column 1") << "a prefix is no string";
  EXPECT_EQ(errorOf<String8>(" None"), "expected a string at column 1");
}

TEST(TextStrep, OnlyTheSixBlanksOfAsciiAreWhiteSpace) {
  EXPECT_EQ(errorOf<String8>("\0'x'"sv), "expected a string at column 0");
  EXPECT_EQ(errorOf<String8>("\xc2\xa0'x'"), "expected a string at column 0");
  EXPECT_EQ(errorOf<String8>("\x1f'x'"), "expected a string at column 0");
  EXPECT_EQ(errorOf<String8>(" \x0e'x'"), "expected a string at column 1");
  EXPECT_EQ(readText(" \t\n\v\f\r'x'"), "x");
}

TEST(TextStrep, AnUnclosedStringIsRefusedWithTheColumnOfItsOpeningQuote) {
  EXPECT_EQ(errorOf<String8>("'abc"), "unterminated string at column 0");
  EXPECT_EQ(errorOf<String8>("  'abc\""), "unterminated string at column 2");
  EXPECT_EQ(errorOf<String8>("'abc\\"), "unterminated string at column 0");
  EXPECT_EQ(errorOf<String8>("'abc\\'"), "unterminated string at column 0");
  EXPECT_EQ(errorOf<String8>("'two\nlines'"), "unterminated string at column 0");
  EXPECT_EQ(errorOf<String8>("'''abc''"), "unterminated string at column 0");
  EXPECT_EQ(errorOf<String8>(" r'abc\\'"), "unterminated string at column 2");
  EXPECT_EQ(errorOf<String8>(" rb\"abc"), "unterminated string at column 3");
}

TEST(TextStrep, ABrokenEscapeIsRefusedWithItsColumn) {
  EXPECT_EQ(errorOf<String8>(R"('ab\x4')"), "bad escape at column 3");
  EXPECT_EQ(errorOf<String8>(R"('\xg0')"), "bad escape at column 1");
  EXPECT_EQ(errorOf<String8>(R"('\u12')"), "bad escape at column 1");
  EXPECT_EQ(errorOf<String8>(R"('\U00110000')"), "bad escape at column 1");
  EXPECT_EQ(errorOf<String8>(R"('\x)"), "bad escape at column 1");
  EXPECT_EQ(errorOf<String8>(R"('\400')"), "bad escape at column 1") << "no byte";
  EXPECT_EQ(errorOf<String8>(R"(b'a\777')"), "bad escape at column 3") << "no byte";
  EXPECT_EQ(errorOf<String8>(R"('\ud800')"), "bad escape at column 1") << "a surrogate";
  EXPECT_EQ(errorOf<String8>(R"('\ud83d\ude00')"), "bad escape at column 1") << "a pair of them";
  EXPECT_EQ(errorOf<String8>(R"('\U0000dfff')"), "bad escape at column 1");
  EXPECT_EQ(errorOf<String8>(R"('a\N{DASH}')"), "bad escape at column 2") << "a character's name";
  EXPECT_EQ(errorOf<String8>(R"('\N')"), "bad escape at column 1");
}

// numbers

template <class Number>
class IntegerStrep : public testing::Test {};
using Integers = testing::Types<std::int8_t, std::uint8_t, std::int16_t, std::uint16_t,
                                std::int32_t, std::uint32_t, std::int64_t, std::uint64_t>;
TYPED_TEST_SUITE(IntegerStrep, Integers);

TYPED_TEST(IntegerStrep, TheWholeRangeReadsBack) {
  using Limits = std::numeric_limits<TypeParam>;
  for (TypeParam const number : {Limits::min(), TypeParam{0}, TypeParam{7}, Limits::max()}) {
    EXPECT_EQ(valueToStrep(number), String8(std::to_string(number)));
    EXPECT_EQ(strepToValue<TypeParam>(valueToStrep(number)), number);
  }
}

TYPED_TEST(IntegerStrep, OneBeyondTheRangeIsRefused) {
  using Limits = std::numeric_limits<TypeParam>;
  // The decimal texts of max + 1 and min - 1. No limit ends in 9.
  std::string above = std::to_string(Limits::max());
  ++above.back();
  EXPECT_EQ(errorOf<TypeParam>(above), above + " out of range at column 0");
  EXPECT_EQ(errorOf<TypeParam>("  " + above), above + " out of range at column 2");
  std::string below = std::is_signed_v<TypeParam> ? std::to_string(Limits::min()) : "-0";
  ++below.back();
  EXPECT_EQ(errorOf<TypeParam>(below), below + " out of range at column 0");
  EXPECT_EQ(errorOf<TypeParam>("99999999999999999999999"),
            "99999999999999999999999 out of range at column 0");
}

TYPED_TEST(IntegerStrep, WhatIsNoNumberIsRefused) {
  EXPECT_EQ(errorOf<TypeParam>(""), "expected an integer at column 0");
  EXPECT_EQ(errorOf<TypeParam>(" x"), "expected an integer at column 1");
  EXPECT_EQ(errorOf<TypeParam>("-"), "expected an integer at column 0");
  EXPECT_EQ(errorOf<TypeParam>("--1"), "expected an integer at column 0");
  EXPECT_EQ(errorOf<TypeParam>("'7'"), "expected an integer at column 0");
  EXPECT_EQ(errorOf<TypeParam>("1.5"), "junk at column 1 deserializing 1.5");
}

TEST(IntegerStrep, ASignIsAccepted) {
  EXPECT_EQ(strepToValue<int>("+5"), 5);
  EXPECT_EQ(strepToValue<unsigned>("+5"), 5U);
  EXPECT_EQ(strepToValue<int>("-0"), 0);
  EXPECT_EQ(strepToValue<unsigned>("-0"), 0U);
}

TEST(IntegerStrep, EveryLiteralOfPythonIsAccepted) {
  EXPECT_EQ(strepToValue<int>("0x1F"), 31);
  EXPECT_EQ(strepToValue<int>("-0Xff"), -255);
  EXPECT_EQ(strepToValue<int>("0b101"), 5);
  EXPECT_EQ(strepToValue<int>("0o17"), 15);
  EXPECT_EQ(strepToValue<int>("1_000_000"), 1000000);
  EXPECT_EQ(strepToValue<int>("0x_f_f"), 255);
  EXPECT_EQ(strepToValue<std::uint64_t>("0xffffffffffffffff"),
            std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(strepToValue<std::int64_t>("-0x8000000000000000"),
            std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(errorOf<std::int8_t>("0x80"), "0x80 out of range at column 0");
  EXPECT_EQ(errorOf<std::int64_t>("0x8000000000000000"),
            "0x8000000000000000 out of range at column 0");
  EXPECT_EQ(errorOf<int>("0x"), "junk at column 1 deserializing 0x");
  EXPECT_EQ(errorOf<int>("0xg"), "junk at column 1 deserializing 0xg");
  EXPECT_EQ(errorOf<int>("1__0"), "junk at column 1 deserializing 1__0");
  EXPECT_EQ(errorOf<int>("1_"), "junk at column 1 deserializing 1_");
  EXPECT_EQ(errorOf<int>("_1"), "expected an integer at column 0");
}

TEST(BoolStrep, PrintsAndReadsTrueAndFalse) {
  EXPECT_EQ(valueToStrep(true), "True");
  EXPECT_EQ(valueToStrep(false), "False");
  EXPECT_TRUE(strepToValue<bool>(" True"));
  EXPECT_FALSE(strepToValue<bool>("False"));
  EXPECT_EQ(errorOf<bool>("true"), "expected True or False at column 0");
  EXPECT_EQ(errorOf<bool>(" 1"), "expected True or False at column 1");
  EXPECT_EQ(errorOf<bool>("Truest"), "junk at column 4 deserializing Truest");
}

TEST(DoubleStrep, PrintsTheShortestTextThatReadsBack) {
  EXPECT_EQ(valueToStrep(0.0), "0.0");
  EXPECT_EQ(valueToStrep(-0.0), "-0.0");
  EXPECT_EQ(valueToStrep(0.1), "0.1");
  EXPECT_EQ(valueToStrep(1.0), "1.0");
  EXPECT_EQ(valueToStrep(-2.5), "-2.5");
  EXPECT_EQ(valueToStrep(1e100), "1e+100");
  EXPECT_EQ(valueToStrep(1.0 / 3.0), "0.3333333333333333");
}

TEST(DoubleStrep, InfinityAndNotANumberAreExpressionsToo) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(valueToStrep(infinity), "float('inf')");
  EXPECT_EQ(valueToStrep(-infinity), "float('-inf')");
  EXPECT_EQ(valueToStrep(std::nan("")), "float('nan')");
  EXPECT_EQ(strepToValue<double>("float('inf')"), infinity);
  EXPECT_EQ(strepToValue<double>("float('-inf')"), -infinity);
  EXPECT_TRUE(std::isnan(strepToValue<double>(" float('nan')")));
}

RC_GTEST_PROP(DoubleStrep, EveryNumberReadsBackToTheBit, (std::uint64_t bits)) {
  auto const number = std::bit_cast<double>(bits);
  RC_PRE(!std::isnan(number));
  double const back = strepToValue<double>(valueToStrep(number));
  RC_ASSERT(std::bit_cast<std::uint64_t>(back) == bits);
}

TEST(DoubleStrep, TheSmallestAndTheLargestReadBack) {
  using Limits = std::numeric_limits<double>;
  for (double const number :
       {Limits::denorm_min(), Limits::min(), Limits::max(), Limits::lowest(), Limits::epsilon()}) {
    EXPECT_EQ(strepToValue<double>(valueToStrep(number)), number);
  }
}

TEST(DoubleStrep, ReadsWhatPythonReads) {
  EXPECT_EQ(strepToValue<double>("5"), 5.0);
  EXPECT_EQ(strepToValue<double>("5."), 5.0);
  EXPECT_EQ(strepToValue<double>(".5"), 0.5);
  EXPECT_EQ(strepToValue<double>("+1.5E2"), 150.0);
  EXPECT_EQ(strepToValue<double>("-1e-2"), -0.01);
  EXPECT_EQ(strepToValue<double>("1_000.2_5e1_0"), 1000.25e10);
  EXPECT_EQ(strepToValue<double>("-0x10"), -16.0);
}

TEST(DoubleStrep, WhatIsNoNumberIsRefused) {
  EXPECT_EQ(errorOf<double>(""), "expected a number at column 0");
  EXPECT_EQ(errorOf<double>("  inf"), "expected a number at column 2");
  EXPECT_EQ(errorOf<double>("nan"), "expected a number at column 0");
  EXPECT_EQ(errorOf<double>("+-5"), "expected a number at column 0");
  EXPECT_EQ(errorOf<double>("-."), "expected a number at column 0");
  EXPECT_EQ(errorOf<double>("1e"), "junk at column 1 deserializing 1e");
  EXPECT_EQ(errorOf<double>("1.5_"), "junk at column 3 deserializing 1.5_");
  EXPECT_EQ(errorOf<double>(" 1e999"), "1e999 out of range at column 1");
}

// enumerations

constexpr std::array<std::string_view, 3> signalNames{"red", "yellow", "green"};
constexpr Kor::EnumNames signalEnum{"Signal", signalNames.data(), signalNames.size()};

enum class Signal : std::int32_t {};

void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end, Signal& signal) {
  signal = static_cast<Signal>(Kor::sequenceToEnum(it, end, signalEnum));
}
String8 valueToStrep(Signal signal) {
  return Kor::enumToStrep(signalEnum, static_cast<std::int32_t>(signal));
}

std::int32_t readSignal(String8 const& text) {
  return static_cast<std::int32_t>(strepToValue<Signal>(text));
}

TEST(EnumStrep, ANamedValuePrintsAsAQuotedNameAndOthersAsNumbers) {
  EXPECT_EQ(Kor::enumToStrep(signalEnum, 0), "'red'");
  EXPECT_EQ(Kor::enumToStrep(signalEnum, 2), "'green'");
  EXPECT_EQ(Kor::enumToStrep(signalEnum, 3), "3");
  EXPECT_EQ(Kor::enumToStrep(signalEnum, -1), "-1");
  EXPECT_EQ(Kor::enumToText(signalEnum, 1), "yellow");
  EXPECT_EQ(Kor::enumToText(signalEnum, 7), "7");
}

TEST(EnumStrep, ReadsNamesAndEverySignedNumber) {
  EXPECT_EQ(readSignal("'green'"), 2);
  EXPECT_EQ(readSignal("\"yellow\""), 1);
  EXPECT_EQ(readSignal("  2"), 2);
  EXPECT_EQ(readSignal("2147483647"), 2147483647);
  EXPECT_EQ(readSignal("-2147483648"), std::numeric_limits<std::int32_t>::min());
}

TEST(EnumStrep, RefusesWhatItDoesNotKnow) {
  EXPECT_EQ(errorOf<Signal>("'Red'"), "Signal has no such value: Red");
  EXPECT_EQ(errorOf<Signal>("'red '"), "Signal has no such value: red ");
  EXPECT_EQ(errorOf<Signal>("''"), "Signal has no such value: ");
  EXPECT_EQ(errorOf<Signal>(""), "expected Signal at column 0");
  EXPECT_EQ(errorOf<Signal>("  red"), "expected Signal at column 2");
  EXPECT_EQ(errorOf<Signal>("-"), "expected Signal at column 0");
  EXPECT_EQ(errorOf<Signal>(" 2147483648"), "2147483648 out of range at column 1");
  EXPECT_EQ(errorOf<Signal>("-2147483649"), "-2147483649 out of range at column 0");
  EXPECT_EQ(errorOf<Signal>("'red"), "unterminated string at column 0");
}

// values with attributes

class Point {
 public:
  static constexpr std::string_view korTypeName = "Test::Point";
  static constexpr auto korFields() {
    return std::tuple(Kor::field("x", &Point::x, &Point::xIs),
                      Kor::field("label", &Point::label, &Point::labelIs));
  }

  [[nodiscard]] std::int32_t x() const { return x_; }
  void xIs(std::int32_t x) { x_ = x; }
  [[nodiscard]] String8 const& label() const { return label_; }
  void labelIs(String8 const& label) { label_ = label; }

 private:
  std::int32_t x_ = -7;
  String8 label_ = "unset";
};

class Stop {
 public:
  static constexpr std::string_view korTypeName = "Test::Deep::Stop";
  static constexpr auto korFields() {
    return std::tuple(Kor::field("point", &Stop::point, &Stop::pointIs),
                      Kor::field("signal", &Stop::signal, &Stop::signalIs));
  }

  [[nodiscard]] Point const& point() const { return point_; }
  void pointIs(Point const& point) { point_ = point; }
  [[nodiscard]] Signal signal() const { return signal_; }
  void signalIs(Signal signal) { signal_ = signal; }

 private:
  Point point_;
  Signal signal_{};
};

Point readPoint(std::string_view text) {
  return strepToValue<Point>(text);
}

TEST(ValueStrep, PrintsItsTypeAndItsAttributesInOrder) {
  Point point;
  point.xIs(3);
  point.labelIs("a'b");
  EXPECT_EQ(valueToStrep(point), R"(Value('Test::Point', ** {'x': 3, 'label': 'a\'b'}))");
  Stop stop;
  stop.pointIs(point);
  stop.signalIs(Signal{2});
  EXPECT_EQ(valueToStrep(stop), R"(Value('Test::Deep::Stop', ** {'point': Value('Test::Point', ** )"
                                R"({'x': 3, 'label': 'a\'b'}), 'signal': 'green'}))");
}

TEST(ValueStrep, WhatPrintsReadsBack) {
  Point point;
  point.xIs(-12);
  point.labelIs("a\0%'\"\\"sv);
  Stop stop;
  stop.pointIs(point);
  stop.signalIs(Signal{9});
  Stop const back = strepToValue<Stop>(valueToStrep(stop));
  EXPECT_EQ(back.point().x(), -12);
  EXPECT_EQ(back.point().label(), point.label());
  EXPECT_EQ(back.signal(), Signal{9});
}

TEST(ValueStrep, BothSpellingsOfTheWholeTextParseDoTheSame) {
  String8 const text("Value('Test::Point', ** {'x': 4})");
  EXPECT_EQ(strepToValue<Point>(text).x(), 4);
  EXPECT_EQ(strepToValue<Point>(text, static_cast<Point*>(nullptr)).x(), 4);
  EXPECT_EQ(strepToValue(text, static_cast<Point*>(nullptr)).x(), 4);
}

TEST(ValueStrep, TheOrderOfAttributesIsFree) {
  Point const point = readPoint("Value('Test::Point', ** {'label': 'p', 'x': 1})");
  EXPECT_EQ(point.x(), 1);
  EXPECT_EQ(point.label(), "p");
}

TEST(ValueStrep, AMissingAttributeKeepsItsDefault) {
  EXPECT_EQ(readPoint("Value('Test::Point', ** {'x': 1})").label(), "unset");
  Point const empty = readPoint("Value('Test::Point', ** {})");
  EXPECT_EQ(empty.x(), -7);
  EXPECT_EQ(empty.label(), "unset");
}

TEST(ValueStrep, OfARepeatedAttributeTheLastCounts) {
  EXPECT_EQ(readPoint("Value('Test::Point', ** {'x': 1, 'label': 'p', 'x': 2})").x(), 2);
  Stop const stop = strepToValue<Stop>("Value('Test::Deep::Stop', ** {"
                                       "'point': Value('Test::Point', ** {'x': 1, 'label': 'p'}), "
                                       "'point': Value('Test::Point', ** {'x': 2})})");
  EXPECT_EQ(stop.point().x(), 2);
  EXPECT_EQ(stop.point().label(), "unset") << "the whole value is replaced";
}

TEST(ValueStrep, WhiteSpaceIsFreeBetweenTokens) {
  EXPECT_EQ(readPoint("Value('Test::Point',**{'x':1})").x(), 1);
  EXPECT_EQ(readPoint(" \t\nValue \v( \f'Test::Point' \r, ** { 'x' : 1 , 'label' : 'p' } )  ").x(),
            1);
}

TEST(ValueStrep, AnAttributeNameIsAnyStringLiteral) {
  EXPECT_EQ(readPoint("Value('Test::Point', ** {\"x\": 1, r'label': 'p'})").x(), 1);
  EXPECT_EQ(readPoint(R"(Value('Test::Point', ** {'\x78': 5}))").x(), 5);
}

TEST(ValueStrep, TheTypeNameIsAFixedToken) {
  EXPECT_EQ(errorOf<Point>("Value(\"Test::Point\", ** {})"), "expected 'Test::Point' at column 6");
  EXPECT_EQ(errorOf<Point>("Value( 'Test::Paint', ** {})"), "expected 'Test::Point' at column 7");
}

TEST(ValueStrep, AMissingTokenIsNamedWithItsColumn) {
  EXPECT_EQ(errorOf<Point>(""), "expected Value at column 0");
  EXPECT_EQ(errorOf<Point>("  value('Test::Point')"), "expected Value at column 2");
  EXPECT_EQ(errorOf<Point>("Value 'Test::Point'"), "expected ( at column 6");
  EXPECT_EQ(errorOf<Point>("Value('Test::Point' ** {})"), "expected , at column 20");
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', * * {})"), "expected ** at column 21");
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** ()"), "expected { at column 24");
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {'x' 1})"), "expected : at column 29");
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {'x': 1 'label': 'p'})"),
            "expected , at column 32");
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {'x': 1} "), "expected ) at column 33");
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {'x': 1}]"), "expected ) at column 32");
}

TEST(ValueStrep, NoLeadingAndNoTrailingComma) {
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {, 'x': 1})"),
            "expected a string at column 25");
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {'x': 1, })"),
            "expected a string at column 33");
}

TEST(ValueStrep, AnUnknownAttributeIsRefusedByTheShortTypeNameWithoutAColumn) {
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {'y': 1})"), "Point has no such attribute: y");
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {'X': 1})"), "Point has no such attribute: X");
  EXPECT_EQ(errorOf<Stop>("Value('Test::Deep::Stop', ** {'': 1})"), "Stop has no such attribute: ");
}

TEST(ValueStrep, AnEndAtTheHeadOfTheAttributeLoopIsPremature) {
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {"), "premature end of value type Point");
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {  "), "premature end of value type Point");
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {'x': 1"), "premature end of value type Point");
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {'x': 1 \n"),
            "premature end of value type Point");
  EXPECT_EQ(errorOf<Stop>("Value('Test::Deep::Stop', ** {'signal': 1"),
            "premature end of value type Stop");
}

TEST(ValueStrep, AnEndElsewhereGivesTheErrorOfWhatIsMissing) {
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** "), "expected { at column 24");
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {'x': 1,"), "expected a string at column 32");
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {'x"), "unterminated string at column 25");
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {'x'"), "expected : at column 28");
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {'x':"),
            "attribute 'x': expected an integer at column 29");
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {'x': 1}"), "expected ) at column 32");
}

TEST(ValueStrep, AnInnerErrorNamesTheAttributesAndTheColumnInTheWholeText) {
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {'x': '1'})"),
            "attribute 'x': expected an integer at column 30");
  EXPECT_EQ(errorOf<Stop>("Value('Test::Deep::Stop', ** {'point': Value('Test::Point', ** {'x': "
                          "'1'})})"),
            "attribute 'point': attribute 'x': expected an integer at column 69");
  EXPECT_EQ(errorOf<Stop>("Value('Test::Deep::Stop', ** {'signal': 'pink'})"),
            "attribute 'signal': Signal has no such value: pink");
  EXPECT_EQ(errorOf<Stop>("Value('Test::Deep::Stop', ** {'point': Value('Test::Point', ** {'y': "
                          "1})})"),
            "attribute 'point': Point has no such attribute: y");
  EXPECT_EQ(errorOf<Stop>("Value('Test::Deep::Stop', ** {'point': Value('Test::Point', ** {"),
            "attribute 'point': premature end of value type Point");
}

TEST(ValueStrep, ARestBehindTheValueIsJunkBehindTheWhiteSpace) {
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {})x"),
            "junk at column 27 deserializing Value('Test::Point', ** {})x");
  EXPECT_EQ(errorOf<Point>("Value('Test::Point', ** {})  \tx"),
            "junk at column 30 deserializing Value('Test::Point', ** {})  \tx");
  EXPECT_EQ(errorOf<int>("5  x"), "junk at column 3 deserializing 5  x");
  EXPECT_EQ(errorOf<String8>("'a' 'b'"), "junk at column 4 deserializing 'a' 'b'");
}

TEST(ValueStrep, WhiteSpaceBehindAnyValueIsNoJunk) {
  EXPECT_EQ(strepToValue<int>("5 \n"), 5);
  EXPECT_EQ(readText("'a' "), "a");
  EXPECT_TRUE(strepToValue<bool>("True\t"));
  EXPECT_EQ(strepToValue<double>("1.5 "), 1.5);
  EXPECT_EQ(readSignal("'red' "), 0);
}

TEST(ValueStrep, JunkIsQuotedByLength) {
  std::string_view const text = "Value('Test::Point', ** {}) %s\0%n"sv;
  EXPECT_EQ(errorOf<Point>(text),
            std::string("junk at column 28 deserializing ") + std::string(text));
}

TEST(ValueStrep, AFailedReadLeavesTheTargetAlone) {
  Point point;
  point.xIs(99);
  String8 const text("Value('Test::Point', ** {'x': 1, 'label': 2})");
  auto it = text.begin();
  EXPECT_THROW(Kor::sequenceToValue(it, text.end(), point), Kor::RangeException);
  EXPECT_EQ(point.x(), 99);
  EXPECT_EQ(point.label(), "unset");
}

class Coordinate {
 public:
  Coordinate(Kor::TextIterator& it, Kor::TextIterator const& end)
      : number(Kor::deserializeAttr<std::int32_t>(it, end, "number")) {}
  std::int32_t number;
};

TEST(DeserializeAttr, ReadsByConstructorAndNamesTheAttributeInErrors) {
  EXPECT_EQ(strepToValue<Coordinate>(" 12").number, 12);
  EXPECT_EQ(errorOf<Coordinate>(" x"), "attribute 'number': expected an integer at column 1");
}

class Fragile {
 public:
  Fragile(Kor::TextIterator& /*it*/, Kor::TextIterator const& /*end*/) {
    throw std::length_error("own");
  }
};

TEST(DeserializeAttr, LetsOtherExceptionsPassAsTheyAre) {
  String8 const text("x");
  auto it = text.begin();
  try {
    static_cast<void>(Kor::deserializeAttr<Fragile>(it, text.end(), "attr"));
    FAIL() << "no exception";
  } catch (std::length_error const& error) {
    EXPECT_STREQ(error.what(), "own");
  }
}

TEST(NeedString, TakesOptionalWhiteSpaceWhereThePatternHasABlank) {
  String8 const text("a  bc d");
  auto it = text.begin();
  Kor::needString(it, text.end(), "a bc");
  EXPECT_EQ(it.position(), 5U);
  Kor::needString(it, text.end(), " d ");
  EXPECT_EQ(it.position(), 7U);
  it.positionIs(0);
  EXPECT_THROW(Kor::needString(it, text.end(), "abc"), Kor::RangeException);
}

}  // namespace
