// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"
#include "policymap/ValueChecks.h"

#include <PolicyMap/ClassMapMatchOption.h>

#include <gtest/gtest.h>

#include <limits>

namespace policymap {
namespace {

using TestSupport::expectTextForm;

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

}  // namespace
}  // namespace policymap
