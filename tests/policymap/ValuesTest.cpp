// SPDX-License-Identifier: Apache-2.0
#include "acl/ValueChecks.h"
#include "policymap/PolicyBench.h"

#include <PolicyMap/AclRuleKey.h>
#include <PolicyMap/ActionType.h>
#include <PolicyMap/AsyncOperationResult.h>
#include <PolicyMap/PolicyMapSmKey.h>
#include <PolicyMap/PolicyMapTypeConfig.h>
#include <PolicyMap/PolicyMapTypeStatus.h>
#include <PolicyMap/SubRuleData.h>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <limits>

namespace policymap {
namespace {

using PolicyMap::AclRuleKey;
using PolicyMap::ActionType;
using PolicyMap::AsyncOperationResult;
using PolicyMap::OptionIntf;
using PolicyMap::PolicyFailure;
using PolicyMap::PolicyMapSmKey;
using PolicyMap::ServicePolicyKey;
using PolicyMap::SubRuleData;
using TestSupport::expectAscending;
using TestSupport::expectTextForm;
using TestSupport::printed;
using TestSupport::rangeError;

template <class T>
std::string parseError(char const* text) {
  return rangeError([&] { (void)Kor::strepToValue<T>(Kor::String8(text)); });
}

SubRuleData subRule(std::uint16_t srcLow, std::uint16_t srcHigh, std::uint16_t dstLow,
                    std::uint16_t dstHigh) {
  SubRuleData data;
  data.srcPortLowIs(srcLow);
  data.srcPortHighIs(srcHigh);
  data.dstPortLowIs(dstLow);
  data.dstPortHighIs(dstHigh);
  return data;
}

// What generic code sees that knows nothing of these types: the text by look-up, and by <<.
template <class T>
void expectFoundText(T const& value, std::string const& text) {
  EXPECT_EQ(valueToStrep(value), Kor::String8(text));
  EXPECT_EQ(printed(value), text);
}

// All six comparisons, of a lesser and a greater value.
template <class T>
void expectLess(T const& a, T const& b) {
  EXPECT_TRUE(a < b && a <= b && a != b && b > a && b >= a && a <= a && a >= a && a == a);
  EXPECT_FALSE(b < a || b <= a || a == b || a > b || a >= b || a != a || a < a || a > a);
}

// PolicyMapSmKey

TEST(PolicyMapSmKeyValue, OrdersByFirstThenSecond) {
  expectAscending<PolicyMapSmKey>(
      {{"", ""}, {"", "input"}, {"a", "output"}, {"a", "output2"}, {"b", "input"}, {"\xff", ""}});
}

TEST(PolicyMapSmKeyValue, PrintsAsAValueWithTwoTexts) {
  PolicyMapSmKey const key("pm", "input");
  expectTextForm(key, "Value('PolicyMap::PolicyMapSmKey', ** {'first': 'pm', 'second': 'input'})");
  EXPECT_EQ(printed(key),
            "Value('PolicyMap::PolicyMapSmKey', ** {'first': 'pm', 'second': 'input'})");
}

TEST(PolicyMapSmKeyValue, IsNotTrueExactlyForTheDefault) {
  EXPECT_TRUE(!PolicyMapSmKey());
  EXPECT_FALSE(!PolicyMapSmKey("", "input"));
  EXPECT_FALSE(!PolicyMapSmKey("pm", ""));
}

TEST(PolicyMapSmKeyValue, ReadsAttributesInAnyOrderAndTheLastOfARepeatedOne) {
  EXPECT_EQ(Kor::strepToValue<PolicyMapSmKey>("Value('PolicyMap::PolicyMapSmKey', ** {\"second\": "
                                              "'output', 'first': 'a', 'first': \"pm\"})"),
            PolicyMapSmKey("pm", "output"));
  EXPECT_EQ(Kor::strepToValue<PolicyMapSmKey>("Value('PolicyMap::PolicyMapSmKey', ** {})"),
            PolicyMapSmKey());
}

TEST(PolicyMapSmKeyValue, NamesAttributeAndColumnOfWhatItCannotRead) {
  EXPECT_EQ(parseError<PolicyMapSmKey>(
                "Value('PolicyMap::PolicyMapSmKey', ** {'first': 5, 'second': 'input'})"),
            "attribute 'first': expected a string at column 48");
  EXPECT_EQ(parseError<PolicyMapSmKey>(
                "Value('PolicyMap::PolicyMapSmKey', ** {'first': 'pm', 'second': 'input})"),
            "attribute 'second': unterminated string at column 64");
  EXPECT_EQ(parseError<PolicyMapSmKey>("Value('PolicyMap::PolicyMapSmKey', ** {'third': 'pm'})"),
            "PolicyMapSmKey has no such attribute: third");
  EXPECT_EQ(parseError<PolicyMapSmKey>("Value('PolicyMap::PolicyMapSmKey', ** {"),
            "premature end of value type PolicyMapSmKey");
  EXPECT_EQ(parseError<PolicyMapSmKey>("Value('PolicyMap::AclRuleKey', ** {})"),
            "expected 'PolicyMap::PolicyMapSmKey' at column 6");
}

// AclRuleKey

TEST(AclRuleKeyValue, OrdersByClassThenListThenNumberThenOption) {
  expectAscending<AclRuleKey>({{"a", "x", 2, ClassMapMatchOption::ipv4},
                               {"a", "x", 10, ClassMapMatchOption::ipv4},
                               {"a", "x", 10, ClassMapMatchOption::ipv6},
                               {"a", "x & y:3", 1, ClassMapMatchOption::ipv4},
                               {"a", "y", 1, ClassMapMatchOption::ipv4},
                               {"b", "", 1, ClassMapMatchOption::ipv4},
                               {"b", "", 1, ClassMapMatchOption::mpls}});
}

TEST(AclRuleKeyValue, OptionsOrderAsSignedNumbers) {
  auto const negative = static_cast<ClassMapMatchOption>(-1);
  EXPECT_LT(AclRuleKey("a", "x", 1, negative), AclRuleKey("a", "x", 1, ClassMapMatchOption::ipv4));
}

TEST(AclRuleKeyValue, PrintsAsAValueWithFourAttributes) {
  expectTextForm(AclRuleKey("web", "acl", 10, ClassMapMatchOption::ipv6),
                 "Value('PolicyMap::AclRuleKey', ** {'className': 'web', 'aclName': 'acl', "
                 "'seqno': 10, 'matchOption': 'ipv6'})");
  expectTextForm(AclRuleKey("web", "", 4294967295U, static_cast<ClassMapMatchOption>(7)),
                 "Value('PolicyMap::AclRuleKey', ** {'className': 'web', 'aclName': '', "
                 "'seqno': 4294967295, 'matchOption': 7})");
}

TEST(AclRuleKeyValue, KeepsItsHashInStepWithItsWriters) {
  AclRuleKey key;
  key.classNameIs("web");
  key.aclNameIs("acl");
  key.seqnoIs(10);
  key.matchOptionIs(ClassMapMatchOption::mac);
  AclRuleKey const built("web", "acl", 10, ClassMapMatchOption::mac);
  EXPECT_EQ(key, built);
  EXPECT_EQ(key.hash(), built.hash());
}

TEST(AclRuleKeyValue, IsNotTrueExactlyForTheDefault) {
  EXPECT_TRUE(!AclRuleKey());
  EXPECT_FALSE(!AclRuleKey("", "", 1, ClassMapMatchOption::ipv4));
  EXPECT_FALSE(!AclRuleKey("", "", 0, ClassMapMatchOption::ipv6));
}

TEST(AclRuleKeyValue, NamesAttributeAndColumnOfWhatItCannotRead) {
  EXPECT_EQ(parseError<AclRuleKey>(
                "Value('PolicyMap::AclRuleKey', ** {'className': 'c', 'seqno': 4294967296})"),
            "attribute 'seqno': 4294967296 out of range at column 62");
  EXPECT_EQ(parseError<AclRuleKey>("Value('PolicyMap::AclRuleKey', ** {'matchOption': 'ipv5'})"),
            "attribute 'matchOption': ClassMapMatchOption has no such value: ipv5");
  EXPECT_EQ(parseError<AclRuleKey>("Value('PolicyMap::AclRuleKey', ** {'matchOption': True})"),
            "attribute 'matchOption': expected ClassMapMatchOption at column 50");
}

// SubRuleData

TEST(SubRuleDataValue, TakesEveryPortAtFirst) {
  SubRuleData const all;
  EXPECT_TRUE(!all);
  EXPECT_EQ(all, subRule(0, 65535, 0, 65535));
  EXPECT_FALSE(all.needsRangeChecker());
}

TEST(SubRuleDataValue, OrdersByItsFourWords) {
  SubRuleData distinct = subRule(1, 2, 3, 4);
  distinct.distinctionIs(9);
  SubRuleData flagged = distinct;
  flagged.srcPortRangeIs(true);
  SubRuleData otherFlag = distinct;
  otherFlag.dstPortRangeIs(true);
  SubRuleData both = flagged;
  both.dstPortRangeIs(true);
  expectAscending<SubRuleData>({subRule(1, 2, 3, 4), distinct, flagged, otherFlag, both,
                                subRule(1, 2, 3, 5), subRule(1, 2, 4, 4), subRule(1, 3, 0, 0),
                                subRule(2, 2, 0, 0), subRule(65535, 65535, 0, 0)});
}

TEST(SubRuleDataValue, EachWriterChangesItsOwnPartAlone) {
  SubRuleData data;
  data.srcPortHighIs(7);
  data.dstPortLowIs(5);
  EXPECT_EQ(data.srcPortLow(), 0);
  EXPECT_EQ(data.srcPortHigh(), 7);
  EXPECT_EQ(data.dstPortLow(), 5);
  EXPECT_EQ(data.dstPortHigh(), 65535);
  data.dstPortRangeIs(true);
  EXPECT_FALSE(data.srcPortRange());
  EXPECT_TRUE(data.needsRangeChecker());
  data.dstPortRangeIs(false);
  EXPECT_FALSE(data.needsRangeChecker());
}

TEST(SubRuleDataValue, PrintsBoundsDistinctionAndFlags) {
  SubRuleData data = subRule(1024, 65535, 80, 80);
  data.srcPortRangeIs(true);
  data.distinctionIs(3);
  expectTextForm(data,
                 "Value('PolicyMap::SubRuleData', ** {'srcPortLow': 1024, 'srcPortHigh': 65535, "
                 "'dstPortLow': 80, 'dstPortHigh': 80, 'distinction': 3, 'srcPortRange': True, "
                 "'dstPortRange': False})");
}

TEST(SubRuleDataValue, NamesAttributeAndColumnOfWhatItCannotRead) {
  EXPECT_EQ(parseError<SubRuleData>("Value('PolicyMap::SubRuleData', ** {'srcPortLow': 65536})"),
            "attribute 'srcPortLow': 65536 out of range at column 50");
  EXPECT_EQ(parseError<SubRuleData>("Value('PolicyMap::SubRuleData', ** {'flags': 1})"),
            "SubRuleData has no such attribute: flags");
}

RC_GTEST_PROP(SubRuleDataValue, WhatIsPrintedReadsBackAndHashesAlike,
              (std::uint16_t a, std::uint16_t b, std::uint16_t c, std::uint16_t d,
               std::uint32_t distinction, bool srcRange, bool dstRange)) {
  SubRuleData data = subRule(a, b, c, d);
  data.distinctionIs(distinction);
  data.srcPortRangeIs(srcRange);
  data.dstPortRangeIs(dstRange);
  auto const read = Kor::strepToValue<SubRuleData>(valueToStrep(data));
  RC_ASSERT(read == data);
  RC_ASSERT(read.hash() == data.hash());
}

// AsyncOperationResult

TEST(AsyncOperationResultValue, ComparesTextAndTime) {
  AsyncOperationResult const result("busy", 1.5);
  EXPECT_EQ(result, AsyncOperationResult("busy", 1.5));
  EXPECT_NE(result, AsyncOperationResult("busy", 2));
  EXPECT_NE(result, AsyncOperationResult("", 1.5));
  EXPECT_TRUE(!AsyncOperationResult("", 0));
  EXPECT_FALSE(!AsyncOperationResult("", 1));
}

TEST(AsyncOperationResultValue, PrintsTextAndSeconds) {
  expectTextForm(AsyncOperationResult(),
                 "Value('PolicyMap::AsyncOperationResult', ** {'error': '', 'time': 0.0})");
  expectTextForm(AsyncOperationResult("can't", 2.25),
                 "Value('PolicyMap::AsyncOperationResult', ** {'error': 'can\\'t', 'time': 2.25})");
}

// ClassMapMatchOption

TEST(ClassMapMatchOptionValue, PrintsQuotedNamesAndOtherNumbersBare) {
  expectTextForm(ClassMapMatchOption::ipv4, "'ipv4'");
  expectTextForm(ClassMapMatchOption::ipv6, "'ipv6'");
  expectTextForm(ClassMapMatchOption::mac, "'mac'");
  expectTextForm(ClassMapMatchOption::mpls, "'mpls'");
  expectTextForm(static_cast<ClassMapMatchOption>(4), "4");
  expectTextForm(static_cast<ClassMapMatchOption>(-1), "-1");
}

TEST(ClassMapMatchOptionValue, IsWrittenToAStreamByItsBareName) {
  EXPECT_EQ(text(ClassMapMatchOption::mpls), "mpls");
  EXPECT_EQ(text(static_cast<ClassMapMatchOption>(7)), "7");
  EXPECT_EQ(text(static_cast<ClassMapMatchOption>(-1)), "-1");
}

TEST(ClassMapMatchOptionValue, ReadsNumbersTooOverTheWholeSignedRange) {
  using Limits = std::numeric_limits<std::int32_t>;
  EXPECT_EQ(Kor::strepToValue<ClassMapMatchOption>("0"), ClassMapMatchOption::ipv4);
  EXPECT_EQ(Kor::strepToValue<ClassMapMatchOption>("3"), ClassMapMatchOption::mpls);
  EXPECT_EQ(Kor::strepToValue<ClassMapMatchOption>("2147483647"),
            static_cast<ClassMapMatchOption>(Limits::max()));
  EXPECT_EQ(Kor::strepToValue<ClassMapMatchOption>("-2147483648"),
            static_cast<ClassMapMatchOption>(Limits::min()));
  EXPECT_EQ(parseError<ClassMapMatchOption>("2147483648"), "2147483648 out of range at column 0");
  EXPECT_EQ(parseError<ClassMapMatchOption>("-2147483649"), "-2147483649 out of range at column 0");
}

TEST(ClassMapMatchOptionValue, RefusesNamesThatAreNotExactlyItsOwn) {
  EXPECT_EQ(parseError<ClassMapMatchOption>("'ipv5'"),
            "ClassMapMatchOption has no such value: ipv5");
  EXPECT_EQ(parseError<ClassMapMatchOption>("'IPv4'"),
            "ClassMapMatchOption has no such value: IPv4");
  EXPECT_EQ(parseError<ClassMapMatchOption>("  ipv4"), "expected ClassMapMatchOption at column 2");
}

// ActionType

TEST(ActionTypeValue, IsAlwaysADecimalNumber) {
  expectTextForm(ActionType{0}, "0");
  expectTextForm(ActionType{1}, "1");
  expectTextForm(ActionType{-5}, "-5");
  EXPECT_EQ(text(ActionType{42}), "42");
  EXPECT_EQ(parseError<ActionType>("2147483648"), "2147483648 out of range at column 0");
}

// ServicePolicyKey

TEST(ServicePolicyKeyValue, OrdersByInterfaceThenDirection) {
  std::vector<ServicePolicyKey> const keys{{},
                                           {intf("Ethernet1"), "input"},
                                           {intf("Ethernet1"), "output"},
                                           {intf("Ethernet2"), "input"},
                                           {intf("Ethernet10"), "input"},
                                           {intf("Vlan1"), ""}};
  expectAscending(keys);
}

TEST(ServicePolicyKeyValue, PrintsInterfaceAndDirection) {
  expectTextForm(ServicePolicyKey(intf("Ethernet3/1"), "input"),
                 "Value('PolicyMap::ServicePolicyKey', ** {'intf': 'Ethernet3/1', "
                 "'direction': 'input'})");
  EXPECT_TRUE(!ServicePolicyKey());
  EXPECT_FALSE(!ServicePolicyKey(intf("Ethernet1"), ""));
}

TEST(ServicePolicyKeyValue, HasEveryComparisonAndItsTextIsFound) {
  ServicePolicyKey const key(intf("Ethernet3/1"), "input");
  expectLess(key, ServicePolicyKey(intf("Ethernet3/1"), "output"));
  expectLess(key, ServicePolicyKey(intf("Ethernet3/2"), "input"));
  expectFoundText(
      key,
      "Value('PolicyMap::ServicePolicyKey', ** {'intf': 'Ethernet3/1', 'direction': 'input'})");
}

TEST(ServicePolicyKeyValue, NamesAttributeAndColumnOfWhatItCannotRead) {
  EXPECT_EQ(
      parseError<ServicePolicyKey>("Value('PolicyMap::ServicePolicyKey', ** {'intf': 'Nothing0'})"),
      "attribute 'intf': IntfId: 'Nothing0' is not an interface name at column 49");
}

// OptionIntf

TEST(OptionIntfValue, OrdersByOptionThenInterface) {
  expectAscending<OptionIntf>({{},
                               {ClassMapMatchOption::ipv4, intf("Ethernet2")},
                               {ClassMapMatchOption::ipv4, intf("Ethernet10")},
                               {ClassMapMatchOption::mac, intf("Ethernet1")}});
}

TEST(OptionIntfValue, PrintsOptionAndInterface) {
  expectTextForm(OptionIntf(ClassMapMatchOption::mac, intf("Ethernet3/1")),
                 "Value('PolicyMap::OptionIntf', ** {'option': 'mac', 'intf': 'Ethernet3/1'})");
  EXPECT_TRUE(!OptionIntf());
  EXPECT_FALSE(!OptionIntf(ClassMapMatchOption::ipv6, {}));
}

TEST(OptionIntfValue, HasEveryComparisonAndItsTextIsFound) {
  OptionIntf const where(ClassMapMatchOption::ipv6, intf("Ethernet2"));
  expectLess(where, OptionIntf(ClassMapMatchOption::ipv6, intf("Ethernet10")));
  expectLess(where, OptionIntf(ClassMapMatchOption::mac, intf("Ethernet1")));
  expectFoundText(where,
                  "Value('PolicyMap::OptionIntf', ** {'option': 'ipv6', 'intf': 'Ethernet2'})");
}

TEST(OptionIntfValue, NamesAttributeAndColumnOfWhatItCannotRead) {
  EXPECT_EQ(parseError<OptionIntf>("Value('PolicyMap::OptionIntf', ** {'option': 'ipv5'})"),
            "attribute 'option': ClassMapMatchOption has no such value: ipv5");
}

// PolicyFailure

TEST(PolicyFailureValue, ItsTextIsFound) {
  PolicyFailure const failure("table full", "addRule", "web",
                              AclRuleKey("web", "list", 10, ClassMapMatchOption::ipv4));
  std::string const text =
      "Value('PolicyMap::PolicyFailure', ** {'error': 'table full', 'operation': 'addRule', "
      "'className': 'web', 'rule': Value('PolicyMap::AclRuleKey', ** {'className': 'web', "
      "'aclName': 'list', 'seqno': 10, 'matchOption': 'ipv4'})})";
  expectFoundText(failure, text);
  EXPECT_EQ(Kor::strepToValue<PolicyFailure>(Kor::String8(text)), failure);
}

// Those that print by the same rule.

TEST(ValueText, IsFoundForEveryValueWithFields) {
  expectFoundText(PolicyMapSmKey("pm", "input"),
                  "Value('PolicyMap::PolicyMapSmKey', ** {'first': 'pm', 'second': 'input'})");
  expectFoundText(AsyncOperationResult("full", 1),
                  "Value('PolicyMap::AsyncOperationResult', ** {'error': 'full', 'time': 1.0})");
  expectFoundText(Acl::PortMatch(), Kor::valueToStrep(Acl::PortMatch()).stdString());
}

}  // namespace
}  // namespace policymap
