// SPDX-License-Identifier: Apache-2.0
#include "policymap/ValueChecks.h"

#include <PolicyMap/PolicyMapSmKey.h>

#include <gtest/gtest.h>

namespace policymap {
namespace {

using PolicyMap::PolicyMapSmKey;
using TestSupport::expectAscending;
using TestSupport::expectTextForm;
using TestSupport::printed;

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

}  // namespace
}  // namespace policymap
