// SPDX-License-Identifier: Apache-2.0
#include "records/AclPolicyType.h"

#include "support/VirtualSlot.h"

#include <Kor/Exception.h>
#include <Kor/Hash.h>
#include <Kor/HashMap.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdint>
#include <iomanip>
#include <limits>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

namespace {

using PolicyMap::ClassMapMatchOption;
using PolicyMap::PolicyMapSmKey;
using PolicyMapTest::AclPolicyType;

AclPolicyType policyType(char const* first, char const* second, int option) {
  return {PolicyMapSmKey(first, second), ClassMapMatchOption{option}};
}

AclPolicyType parsed(std::string const& text) {
  return Kor::strepToValue<AclPolicyType>(text);
}

std::string errorOf(std::string const& text) {
  try {
    parsed(text);
  } catch (Kor::RangeException const& error) {
    return error.text();
  }
  return "no error";
}

std::string const head = "Value('PolicyMapTest::AclPolicyType', ** {";
std::string const keyText =
    "Value('PolicyMap::PolicyMapSmKey', ** {'first': 'pm', 'second': 'input'})";
std::string const whole = head + "'policyKey': " + keyText + ", 'option': 'ipv6'})";

// comparison

TEST(AclPolicyType, ADefaultBuiltIdentityIsEmpty) {
  AclPolicyType const empty;
  EXPECT_EQ(empty.policyKey(), PolicyMapSmKey("", ""));
  EXPECT_EQ(static_cast<int>(empty.option()), 0);
  EXPECT_TRUE(!empty);
}

TEST(AclPolicyType, HoldsTheKeyAndTheOptionThatItIsBuiltFrom) {
  AclPolicyType const type = policyType("pm", "input", 2);
  EXPECT_EQ(type.policyKey(), PolicyMapSmKey("pm", "input"));
  EXPECT_EQ(type.option(), ClassMapMatchOption::mac);
  AclPolicyType copy = type;
  EXPECT_EQ(copy, type);
  copy = policyType("x", "y", 0);
  EXPECT_EQ(copy, policyType("x", "y", 0));
}

TEST(AclPolicyType, EachPartMakesItNotEmpty) {
  EXPECT_TRUE(!policyType("", "", 0));
  EXPECT_FALSE(!policyType("a", "", 0));
  EXPECT_FALSE(!policyType("", "a", 0));
  EXPECT_FALSE(!policyType("", "", 1));
  EXPECT_FALSE(!policyType("", "", -1));
}

TEST(AclPolicyType, EqualityTakesKeyAndOption) {
  EXPECT_TRUE(policyType("a", "b", 1) == policyType("a", "b", 1));
  EXPECT_FALSE(policyType("a", "b", 1) == policyType("a", "b", 2));
  EXPECT_FALSE(policyType("a", "b", 1) == policyType("a", "c", 1));
  EXPECT_FALSE(policyType("a", "b", 1) == policyType("b", "b", 1));
}

TEST(AclPolicyType, TheKeyOrdersFirstWhateverTheOptions) {
  EXPECT_TRUE(policyType("a", "z", 3) < policyType("b", "a", 0));
  EXPECT_FALSE(policyType("b", "a", 0) < policyType("a", "z", 3));
  EXPECT_TRUE(policyType("a", "a", 3) < policyType("a", "b", 0));
}

TEST(AclPolicyType, TheOptionOrdersEqualKeysAsASignedNumber) {
  EXPECT_TRUE(policyType("a", "b", 0) < policyType("a", "b", 1));
  EXPECT_FALSE(policyType("a", "b", 1) < policyType("a", "b", 0));
  EXPECT_TRUE(policyType("a", "b", -1) < policyType("a", "b", 0));
  EXPECT_TRUE(policyType("a", "b", std::numeric_limits<int>::min()) < policyType("a", "b", -1));
}

TEST(AclPolicyType, AnIdentityIsNeitherLessNorGreaterThanItself) {
  AclPolicyType const a = policyType("a", "b", 1);
  AclPolicyType const same = a;
  EXPECT_TRUE(a <= same);
  EXPECT_TRUE(a >= same);
  EXPECT_FALSE(a < same);
  EXPECT_FALSE(a > same);
  EXPECT_FALSE(a != same);
}

RC_GTEST_PROP(AclPolicyType, OrderIsThatOfTheTupleOfItsParts,
              (std::string const& a1, std::string const& a2, std::string const& b1,
               std::string const& b2)) {
  int const optionA = *rc::gen::inRange(-2, 3);
  int const optionB = *rc::gen::inRange(-2, 3);
  bool const sameKey = *rc::gen::arbitrary<bool>();
  std::string const& c1 = sameKey ? a1 : b1;
  std::string const& c2 = sameKey ? a2 : b2;
  AclPolicyType const a(PolicyMapSmKey(a1, a2), ClassMapMatchOption{optionA});
  AclPolicyType const b(PolicyMapSmKey(c1, c2), ClassMapMatchOption{optionB});
  auto const left = std::tuple(a1, a2, optionA);
  auto const right = std::tuple(c1, c2, optionB);
  RC_ASSERT((a == b) == (left == right));
  RC_ASSERT((a != b) == (left != right));
  RC_ASSERT((a < b) == (left < right));
  RC_ASSERT((a <= b) == (left <= right));
  RC_ASSERT((a > b) == (left > right));
  RC_ASSERT((a >= b) == (left >= right));
}

// hash

constexpr std::uint32_t mixed(std::uint32_t first, std::uint32_t second, int option) {
  return AclPolicyType::hashOfParts(first, second, ClassMapMatchOption{option});
}

TEST(AclPolicyTypeHash, MixesTheKeyAndAddsTheOption) {
  // 1 ^ 2 = 3; * 9 = 27, which has no bit above the eleventh; 27 + 27 * 32768.
  static_assert(mixed(1, 2, 0) == 884763U);
  static_assert(mixed(1, 2, 3) == 884766U);
  // 0xfffffff7, then 0xffe00008; the shift adds 0x40000.
  static_assert(mixed(0xffffffffU, 0, 0) == 0xffe40008U);
  static_assert(mixed(0, 0xffffffffU, 3) == 0xffe4000bU);
  // 0x12345678 ^ 0x9abcdef0 = 0x88888888; * 9 = 0xcccccccc8 mod 2^32 = 0xccccccc8;
  // ^ 0x00199999 = 0xccd55551; << 15 = 0xaaa88000; sum 0x777dd551.
  static_assert(mixed(0x12345678U, 0x9abcdef0U, 0) == 0x777dd551U);
  SUCCEED();
}

TEST(AclPolicyTypeHash, WrapsAround) {
  static_assert(mixed(0, 0, -1) == 0xffffffffU);
  static_assert(mixed(0, 0, std::numeric_limits<int>::min()) == 0x80000000U);
  SUCCEED();
}

TEST(AclPolicyTypeHash, IsMadeOfTheStringHashesOfTheKeysTexts) {
  AclPolicyType const type = policyType("pm", "input", 2);
  EXPECT_EQ(type.hash(), mixed(Kor::hashBytes("pm"), Kor::hashBytes("input"), 2));
  EXPECT_EQ(type.hash(), policyType("input", "pm", 2).hash());
}

RC_GTEST_PROP(AclPolicyTypeHash, IdentitiesThatDifferInTheOptionDifferByThatDifference,
              (std::string const& first, std::string const& second, std::int32_t a,
               std::int32_t b)) {
  AclPolicyType const one(PolicyMapSmKey(first, second), ClassMapMatchOption{a});
  AclPolicyType const other(PolicyMapSmKey(first, second), ClassMapMatchOption{b});
  RC_ASSERT(one.hash() - other.hash() ==
            static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

TEST(AclPolicyTypeHash, TheFourOptionsOfOneKeyPartInTheTopBitsOfTheReversedHash) {
  std::set<std::uint32_t> quarters;
  for (int option = 0; option < 4; ++option) {
    quarters.insert(Kor::bitReverse(policyType("pm", "input", option).hash()) >> 30);
  }
  EXPECT_THAT(quarters, testing::ElementsAre(0, 1, 2, 3));
}

// text form

TEST(AclPolicyTypeText, NamesTheTypeAndBothAttributesInOrder) {
  EXPECT_EQ(valueToStrep(policyType("pm", "input", 1)), whole.c_str());
  EXPECT_EQ(valueToStrep(AclPolicyType()),
            "Value('PolicyMapTest::AclPolicyType', ** {'policyKey': "
            "Value('PolicyMap::PolicyMapSmKey', ** {'first': '', 'second': ''}), "
            "'option': 'ipv4'})");
}

TEST(AclPolicyTypeText, AnOptionWithoutANameIsANumber) {
  EXPECT_EQ(valueToStrep(policyType("pm", "input", -1)),
            (head + "'policyKey': " + keyText + ", 'option': -1})").c_str());
  EXPECT_EQ(valueToStrep(policyType("pm", "input", 7)),
            (head + "'policyKey': " + keyText + ", 'option': 7})").c_str());
}

TEST(AclPolicyTypeText, AStreamGetsTheTextAloneWhateverItsWidthFillAndBase) {
  std::ostringstream out;
  out << std::setw(500) << std::setfill('*') << std::hex << std::showbase << std::left
      << policyType("pm", "input", 1);
  EXPECT_EQ(out.str(), whole);
}

TEST(AclPolicyTypeText, AStreamGetsEveryByteOfATextWithANul) {
  PolicyMapSmKey const key(Kor::String8(std::string_view("a\0b", 3)), "x");
  AclPolicyType const type(key, ClassMapMatchOption::ipv4);
  std::ostringstream out;
  out << type;
  EXPECT_EQ(out.str(), valueToStrep(type).stdString());
  EXPECT_EQ(parsed(out.str()), type);
}

RC_GTEST_PROP(AclPolicyTypeText, ReadsBackAsAnEqualIdentity,
              (std::string const& first, std::string const& second, std::int32_t option)) {
  AclPolicyType const type(PolicyMapSmKey(first, second), ClassMapMatchOption{option});
  RC_ASSERT(Kor::strepToValue<AclPolicyType>(valueToStrep(type)) == type);
}

// parser

TEST(AclPolicyTypeParser, ReadsWhatIsPrinted) {
  EXPECT_EQ(parsed(whole), policyType("pm", "input", 1));
}

TEST(AclPolicyTypeParser, BothSpellingsOfTheWholeTextParseExist) {
  EXPECT_EQ(Kor::strepToValue(whole, static_cast<AclPolicyType*>(nullptr)),
            policyType("pm", "input", 1));
  AclPolicyType ignored = policyType("other", "other", 3);
  EXPECT_EQ(Kor::strepToValue(whole, &ignored), policyType("pm", "input", 1));
  EXPECT_EQ(ignored, policyType("other", "other", 3));
}

TEST(AclPolicyTypeParser, NothingBetweenTheBracesIsTheEmptyIdentity) {
  EXPECT_EQ(parsed(head + "})"), AclPolicyType());
}

TEST(AclPolicyTypeParser, AttributesMayComeInReverseOrder) {
  EXPECT_EQ(parsed(head + "'option': 'ipv6', 'policyKey': " + keyText + "})"), parsed(whole));
}

TEST(AclPolicyTypeParser, AMissingAttributeStaysEmpty) {
  EXPECT_EQ(parsed(head + "'policyKey': " + keyText + "})"), policyType("pm", "input", 0));
  EXPECT_EQ(parsed(head + "'option': 3})"), policyType("", "", 3));
}

TEST(AclPolicyTypeParser, TheLastOfARepeatedAttributeCounts) {
  EXPECT_EQ(parsed(head + "'option': 'mac', 'option': 'mpls'})"), policyType("", "", 3));
}

TEST(AclPolicyTypeParser, ARepeatedKeyIsReplacedAsAWhole) {
  EXPECT_EQ(parsed(head + "'policyKey': " + keyText +
                   ", 'policyKey': Value('PolicyMap::PolicyMapSmKey', ** {'second': 'output'})})"),
            policyType("", "output", 0));
}

TEST(AclPolicyTypeParser, WhiteSpaceIsFreeBetweenTokens) {
  EXPECT_EQ(parsed(" \t\n\v\f\rValue ( 'PolicyMapTest::AclPolicyType' , ** { 'policyKey' : "
                   "Value ( 'PolicyMap::PolicyMapSmKey' , ** { 'first' : 'pm' , 'second' : "
                   "'input' } ) , 'option' : 'ipv6' } ) \n"),
            policyType("pm", "input", 1));
  EXPECT_EQ(parsed("Value('PolicyMapTest::AclPolicyType',**{'option':2})"), policyType("", "", 2));
}

TEST(AclPolicyTypeParser, AnOptionIsANameOrANumber) {
  EXPECT_EQ(parsed(head + "'option': 'ipv4'})"), parsed(head + "'option': 0})"));
  EXPECT_EQ(parsed(head + "'option': -2147483648})"),
            policyType("", "", std::numeric_limits<int>::min()));
}

TEST(AclPolicyTypeParser, TheIteratorConstructorStopsBehindTheValueAndItsWhiteSpace) {
  Kor::String8 const text = "  " + whole + " \n rest";
  Kor::String8::IteratorConst it = text.begin();
  AclPolicyType const type(it, text.end());
  EXPECT_EQ(type, policyType("pm", "input", 1));
  EXPECT_EQ(it.position(), 2 + whole.size() + 3);
}

TEST(AclPolicyTypeParser, AnyRestOfAWholeTextIsJunkAtItsColumn) {
  EXPECT_EQ(errorOf(whole + "x"),
            "junk at column " + std::to_string(whole.size()) + " deserializing " + whole + "x");
  EXPECT_EQ(errorOf(whole + "  x"), "junk at column " + std::to_string(whole.size() + 2) +
                                        " deserializing " + whole + "  x");
  EXPECT_EQ(errorOf(whole + "%s%n"),
            "junk at column " + std::to_string(whole.size()) + " deserializing " + whole + "%s%n");
}

TEST(AclPolicyTypeParser, JunkIsShownWithItsNulBytes) {
  std::string const text = whole + std::string("\0x", 2);
  EXPECT_EQ(errorOf(text),
            "junk at column " + std::to_string(whole.size()) + " deserializing " + text);
}

TEST(AclPolicyTypeParser, ATextThatEndsInsideTheBracesIsAPrematureEnd) {
  std::string const error = "premature end of value type AclPolicyType";
  EXPECT_EQ(errorOf(head), error);
  EXPECT_EQ(errorOf(head + " \t"), error);
  EXPECT_EQ(errorOf(head + "'option': 'ipv6'"), error);
  EXPECT_EQ(errorOf(head + "'option': 1 "), error);
  EXPECT_EQ(errorOf(head + "'policyKey': " + keyText), error);
}

TEST(AclPolicyTypeParser, ATextThatEndsElsewhereGetsTheErrorOfWhatIsMissing) {
  EXPECT_EQ(errorOf(""), "expected Value at column 0");
  EXPECT_EQ(errorOf("Value"), "expected ( at column 5");
  EXPECT_EQ(errorOf("Value("), "expected 'PolicyMapTest::AclPolicyType' at column 6");
  EXPECT_EQ(errorOf("Value('PolicyMapTest::AclPolicyType'"), "expected , at column 36");
  EXPECT_EQ(errorOf("Value('PolicyMapTest::AclPolicyType',"), "expected ** at column 37");
  EXPECT_EQ(errorOf("Value('PolicyMapTest::AclPolicyType', **"), "expected { at column 40");
  EXPECT_EQ(errorOf(head + "}"), "expected ) at column 43");
  EXPECT_EQ(errorOf(head + "'option'"), "expected : at column 50");
  EXPECT_EQ(errorOf(head + "'option': 1,"), "expected a string at column 54");
  EXPECT_EQ(errorOf(head + "'option"), "unterminated string at column 42");
}

TEST(AclPolicyTypeParser, AMissingTokenIsNamedWithItsColumn) {
  EXPECT_EQ(errorOf("  value"), "expected Value at column 2");
  EXPECT_EQ(errorOf("Value['PolicyMapTest::AclPolicyType']"), "expected ( at column 5");
  EXPECT_EQ(errorOf("Value('PolicyMapTest::AclPolicyData', ** {})"),
            "expected 'PolicyMapTest::AclPolicyType' at column 6");
  EXPECT_EQ(errorOf("Value(\"PolicyMapTest::AclPolicyType\", ** {})"),
            "expected 'PolicyMapTest::AclPolicyType' at column 6");
  EXPECT_EQ(errorOf("Value('PolicyMapTest::AclPolicyType' ** {})"), "expected , at column 37");
  EXPECT_EQ(errorOf("Value('PolicyMapTest::AclPolicyType', * {})"), "expected ** at column 38");
  EXPECT_EQ(errorOf("Value('PolicyMapTest::AclPolicyType', ** ())"), "expected { at column 41");
  EXPECT_EQ(errorOf(head + "'option': 1 'option': 2})"), "expected , at column 54");
  EXPECT_EQ(errorOf(head + "'option' 1})"), "expected : at column 51");
  EXPECT_EQ(errorOf(head + "}}"), "expected ) at column 43");
}

TEST(AclPolicyTypeParser, ThereIsNoLeadingAndNoTrailingComma) {
  EXPECT_EQ(errorOf(head + ", 'option': 1})"), "expected a string at column 42");
  EXPECT_EQ(errorOf(head + "'option': 1, })"), "expected a string at column 55");
}

TEST(AclPolicyTypeParser, AnUnknownAttributeIsNamed) {
  EXPECT_EQ(errorOf(head + "'colour': 1})"), "AclPolicyType has no such attribute: colour");
  EXPECT_EQ(errorOf(head + "'hash': 1})"), "AclPolicyType has no such attribute: hash");
  EXPECT_EQ(errorOf(head + "'fwkKey': 1})"), "AclPolicyType has no such attribute: fwkKey");
  EXPECT_EQ(errorOf(head + "'Option': 1})"), "AclPolicyType has no such attribute: Option");
}

TEST(AclPolicyTypeParser, AnAttributeNameMayBeWrittenAsAnyString) {
  EXPECT_EQ(parsed(head + "\"option\": 2})"), policyType("", "", 2));
  EXPECT_EQ(parsed(head + "'opt\\x69on': 2})"), policyType("", "", 2));
}

TEST(AclPolicyTypeParser, AnErrorInTheOptionNamesTheAttribute) {
  EXPECT_EQ(errorOf(head + "'option': 'ipv5'})"),
            "attribute 'option': ClassMapMatchOption has no such value: ipv5");
  EXPECT_EQ(errorOf(head + "'option': 2147483648})"),
            "attribute 'option': 2147483648 out of range at column 52");
  EXPECT_EQ(errorOf(head + "'option': })"),
            "attribute 'option': expected ClassMapMatchOption at column 52");
}

TEST(AclPolicyTypeParser, AnErrorInTheKeyNamesTheAttributeOncePerLevel) {
  std::string const key = head + "'policyKey': Value('PolicyMap::PolicyMapSmKey', ** {";
  EXPECT_EQ(errorOf(head + "'policyKey': 7})"),
            "attribute 'policyKey': expected Value at column 55");
  EXPECT_EQ(errorOf(key + "'first': 7})})"), "attribute 'policyKey': attribute 'first': expected a "
                                             "string at column " +
                                                 std::to_string(key.size() + 9));
  EXPECT_EQ(errorOf(key), "attribute 'policyKey': premature end of value type PolicyMapSmKey");
  EXPECT_EQ(errorOf(key + "'third': 'x'})})"),
            "attribute 'policyKey': PolicyMapSmKey has no such attribute: third");
}

// type

TEST(AclPolicyType, IsAValueTypeOfItsOwn) {
  AclPolicyType const type;
  EXPECT_EQ(type.fwkType(), AclPolicyType::_fwkType());
  EXPECT_EQ(type.fwkType()->name(), "PolicyMapTest::AclPolicyType");
  EXPECT_EQ(type.fwkType()->base(), nullptr);
  static_assert(std::is_final_v<AclPolicyType>);
  EXPECT_EQ(TestSupport::virtualSlotOf(&AclPolicyType::fwkType), 0);
}

}  // namespace
