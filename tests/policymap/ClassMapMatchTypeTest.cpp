// SPDX-License-Identifier: Apache-2.0
#include "policymap/ValueChecks.h"

#include <PolicyMap/ClassMapMatchType.h>

#include <gtest/gtest.h>

namespace policymap {
namespace {

using PolicyMap::ClassMapMatchType;
using TestSupport::expectTextForm;
using TestSupport::printed;

TEST(MatchType, PrintsAndReadsItsNames) {
  expectTextForm(ClassMapMatchType::matchAny, "'matchAny'");
  expectTextForm(ClassMapMatchType::matchAll, "'matchAll'");
  EXPECT_EQ(printed(ClassMapMatchType::matchAll).substr(0, 8), "matchAll");
  EXPECT_EQ(parseError<ClassMapMatchType>("2"), "ClassMapMatchType < 0 or > 1 not allowed");
}

}  // namespace
}  // namespace policymap
