// SPDX-License-Identifier: Apache-2.0
#include "policymap/ValueChecks.h"

#include <PolicyMap/AsyncOperationResult.h>

#include <gtest/gtest.h>

namespace policymap {
namespace {

using PolicyMap::AsyncOperationResult;
using TestSupport::expectTextForm;

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

}  // namespace
}  // namespace policymap
