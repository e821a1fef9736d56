// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"
#include "policymap/ValueChecks.h"

#include <PolicyMap/ActionType.h>

#include <gtest/gtest.h>

namespace policymap {
namespace {

using PolicyMap::ActionType;
using TestSupport::expectTextForm;

TEST(ActionTypeValue, IsAlwaysADecimalNumber) {
  expectTextForm(ActionType{0}, "0");
  expectTextForm(ActionType{1}, "1");
  expectTextForm(ActionType{-5}, "-5");
  EXPECT_EQ(text(ActionType{42}), "42");
  EXPECT_EQ(parseError<ActionType>("2147483648"), "2147483648 out of range at column 0");
}

}  // namespace
}  // namespace policymap
