// SPDX-License-Identifier: Apache-2.0
#include "policymap/ValueChecks.h"

#include <PolicyMap/SubRuleData.h>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace policymap {
namespace {

using PolicyMap::SubRuleData;
using TestSupport::expectAscending;
using TestSupport::expectTextForm;

SubRuleData subRule(std::uint16_t srcLow, std::uint16_t srcHigh, std::uint16_t dstLow,
                    std::uint16_t dstHigh) {
  SubRuleData data;
  data.srcPortLowIs(srcLow);
  data.srcPortHighIs(srcHigh);
  data.dstPortLowIs(dstLow);
  data.dstPortHighIs(dstHigh);
  return data;
}

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

}  // namespace
}  // namespace policymap
