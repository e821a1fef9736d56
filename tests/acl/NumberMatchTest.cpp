// SPDX-License-Identifier: Apache-2.0
#include "acl/ValueChecks.h"

#include <Acl/NumberMatch.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Acl::MatchOp;
using Acl::PortMatch;
using Acl::PortRange;
using Acl::TtlMatch;
using TestSupport::expectTextForm;
using TestSupport::rangeError;

template <class Match>
std::vector<typename Match::Range> rangesOf(Match const& match) {
  auto const ranges = match.ranges();
  return {ranges.begin(), ranges.end()};
}

using Ranges = std::vector<PortRange>;

TEST(PortMatch, EveryOperatorTakesItsPorts) {
  EXPECT_EQ(rangesOf(PortMatch()), (Ranges{{0, 65535}}));
  EXPECT_EQ(rangesOf(PortMatch::any()), (Ranges{{0, 65535}}));
  EXPECT_EQ(rangesOf(PortMatch::eq(80)), (Ranges{{80, 80}}));
  EXPECT_EQ(rangesOf(PortMatch::neq(80)), (Ranges{{0, 79}, {81, 65535}}));
  EXPECT_EQ(rangesOf(PortMatch::lt(80)), (Ranges{{0, 79}}));
  EXPECT_EQ(rangesOf(PortMatch::gt(80)), (Ranges{{81, 65535}}));
  EXPECT_EQ(rangesOf(PortMatch::range(20, 21)), (Ranges{{20, 21}}));
}

TEST(PortMatch, MatchesNothingWhereItHasNoRange) {
  for (std::int64_t const n : {0, 1, 65534, 65535}) {
    for (PortMatch const& match : {PortMatch(), PortMatch::eq(n), PortMatch::neq(n),
                                   PortMatch::lt(n), PortMatch::gt(n), PortMatch::range(n, n)}) {
      EXPECT_EQ(match.matchesNothing(), match.ranges().empty()) << match.describe();
    }
  }
}

TEST(PortMatch, AtTheEndsOfTheNumbersARangeMayBeMissing) {
  EXPECT_EQ(rangesOf(PortMatch::neq(0)), (Ranges{{1, 65535}}));
  EXPECT_EQ(rangesOf(PortMatch::neq(65535)), (Ranges{{0, 65534}}));
  EXPECT_TRUE(PortMatch::lt(0).ranges().empty());
  EXPECT_TRUE(PortMatch::gt(65535).ranges().empty());
  EXPECT_EQ(rangesOf(PortMatch::eq(65535)), (Ranges{{65535, 65535}}));
  EXPECT_EQ(rangesOf(PortMatch::range(0, 65535)), (Ranges{{0, 65535}}));
}

TEST(PortMatch, NumbersOutsideAreRefused) {
  for (std::int64_t const port : {std::int64_t{-1}, std::int64_t{65536}, std::int64_t{1} << 32}) {
    EXPECT_EQ(rangeError([&] { (void)PortMatch::eq(port); }),
              "PortMatch::low < 0 or > 65535 not allowed");
    EXPECT_EQ(rangeError([&] { (void)PortMatch::range(port, 5); }),
              "PortMatch::low < 0 or > 65535 not allowed");
    EXPECT_EQ(rangeError([&] { (void)PortMatch::range(0, port); }),
              "PortMatch::high < 0 or > 65535 not allowed");
  }
  EXPECT_EQ(rangeError([] { (void)PortMatch::range(21, 20); }),
            "PortMatch::high < low not allowed");
}

TEST(PortMatch, EqualMatchesCompareEqualHoweverTheyWereBuilt) {
  EXPECT_EQ(PortMatch(MatchOp::eq, 80, 99), PortMatch::eq(80));
  EXPECT_EQ(PortMatch(MatchOp::any, 80, 99), PortMatch());
  EXPECT_NE(PortMatch::range(80, 80), PortMatch::eq(80));
  TestSupport::expectAscending<PortMatch>({PortMatch(), PortMatch::eq(1), PortMatch::eq(2),
                                           PortMatch::lt(1), PortMatch::range(1, 1),
                                           PortMatch::range(1, 2)});
}

TEST(PortMatch, PrintsAndReadsBack) {
  expectTextForm(PortMatch(), "Value('Acl::PortMatch', ** {'op': 'any', 'low': 0, 'high': 0})");
  expectTextForm(PortMatch::range(20, 21),
                 "Value('Acl::PortMatch', ** {'op': 'range', 'low': 20, 'high': 21})");
  EXPECT_EQ(Kor::strepToValue<PortMatch>("Value('Acl::PortMatch', ** {'low': 80, 'op': 1})"),
            PortMatch::eq(80));
  EXPECT_EQ(TestSupport::printed(PortMatch::eq(10)),
            "Value('Acl::PortMatch', ** {'op': 'eq', 'low': 10, 'high': 10})");
}

TEST(PortMatch, ABadTextFormIsRefused) {
  auto const read = [](char const* fields) {
    return rangeError([&] {
      (void)Kor::strepToValue<PortMatch>(
          Kor::String8("Value('Acl::PortMatch', ** {" + std::string(fields) + "})"));
    });
  };
  EXPECT_EQ(read("'op': 'range', 'low': 2, 'high': 1"), "PortMatch::high < low not allowed");
  EXPECT_EQ(read("'op': 'near'"), "attribute 'op': MatchOp has no such value: near");
  EXPECT_EQ(read("'op': 6"), "attribute 'op': MatchOp < 0 or > 5 not allowed");
  EXPECT_EQ(read("'op': -1"), "attribute 'op': MatchOp < 0 or > 5 not allowed");
  EXPECT_EQ(read("'port': 6"), "PortMatch has no such attribute: port");
  EXPECT_EQ(read("'low': 65536"), "attribute 'low': 65536 out of range at column 35");
}

TEST(PortMatch, DescribesItselfAsInAConfiguration) {
  EXPECT_EQ(PortMatch().describe(), "");
  EXPECT_EQ(PortMatch::eq(80).describe(), "eq 80");
  EXPECT_EQ(PortMatch::neq(80).describe(), "neq 80");
  EXPECT_EQ(PortMatch::lt(80).describe(), "lt 80");
  EXPECT_EQ(PortMatch::gt(80).describe(), "gt 80");
  EXPECT_EQ(PortMatch::range(20, 21).describe(), "range 20 21");
}

TEST(TtlMatch, HasTheRangeOfATtl) {
  EXPECT_EQ(rangesOf(TtlMatch()), (std::vector<TtlMatch::Range>{{0, 255}}));
  EXPECT_EQ(rangesOf(TtlMatch::neq(7)), (std::vector<TtlMatch::Range>{{0, 6}, {8, 255}}));
  EXPECT_EQ(rangesOf(TtlMatch::gt(254)), (std::vector<TtlMatch::Range>{{255, 255}}));
  EXPECT_EQ(rangeError([] { (void)TtlMatch::eq(256); }), "TtlMatch::low < 0 or > 255 not allowed");
  EXPECT_EQ(rangeError([] { (void)TtlMatch::range(0, -1); }),
            "TtlMatch::high < 0 or > 255 not allowed");
  expectTextForm(TtlMatch::eq(255),
                 "Value('Acl::TtlMatch', ** {'op': 'eq', 'low': 255, 'high': 255})");
  EXPECT_EQ(TtlMatch::_fwkType()->name(), "Acl::TtlMatch");
  EXPECT_EQ(PortMatch().fwkType()->name(), "Acl::PortMatch");
}

TEST(MatchOp, WritesItsBareName) {
  EXPECT_EQ(TestSupport::printed(MatchOp::range), "range");
}

}  // namespace
