// SPDX-License-Identifier: Apache-2.0
#include <Acl/IpRuleConfig.h>
#include <Acl/MacRuleConfig.h>
#include <PolicyMap/SubRules.h>

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <set>
#include <utility>
#include <vector>

namespace {

using Acl::PortMatch;
using PolicyMap::alignedBlocks;
using PolicyMap::PortBlock;
using PolicyMap::portBlocks;
using PolicyMap::PortExpansion;
using PolicyMap::SubRuleData;
using testing::ElementsAre;
using testing::IsEmpty;

PortBlock block(std::uint16_t low, std::uint16_t high) {
  return {low, high, false};
}
PortBlock checked(std::uint16_t low, std::uint16_t high) {
  return {low, high, true};
}

// Halves [low, high] of the port space until each part lies wholly inside or outside the wanted
// range. This gives the fewest aligned blocks.
void splitPrefixes(std::uint32_t low, std::uint32_t high, std::uint32_t wantedLow,
                   std::uint32_t wantedHigh, std::vector<PortBlock>& blocks) {
  if (high < wantedLow || low > wantedHigh) {
    return;
  }
  if (low >= wantedLow && high <= wantedHigh) {
    blocks.push_back(block(static_cast<std::uint16_t>(low), static_cast<std::uint16_t>(high)));
    return;
  }
  std::uint32_t const middle = low + (high - low) / 2;
  splitPrefixes(low, middle, wantedLow, wantedHigh, blocks);
  splitPrefixes(middle + 1, high, wantedLow, wantedHigh, blocks);
}

template <class Rule, class Visit>
void visitSubRules(Rule const& rule, PortExpansion expansion, Visit&& visit) {
  Kor::Name const list("acl");
  PolicyMap::PortRanges const asTheRuleSays;
  PolicyMap::RuleRef<Rule> const ref{list, 10, rule, asTheRuleSays, asTheRuleSays};
  PolicyMap::forEachSubRule(ref, expansion, visit);
}

std::vector<SubRuleData> subRulesOf(PortMatch const& src, PortMatch const& dst,
                                    PortExpansion expansion) {
  Acl::IpRuleConfig rule;
  rule.srcPortIs(src);
  rule.dstPortIs(dst);
  std::vector<SubRuleData> all;
  visitSubRules(rule, expansion, [&](SubRuleData const& subRule) {
    all.push_back(subRule);
    return true;
  });
  return all;
}

struct Expansion {
  std::uint16_t low;
  std::uint16_t high;
  std::size_t blocks;
};
class KnownRanges : public testing::TestWithParam<Expansion> {};

TEST_P(KnownRanges, MakeAsManyBlocksAsTheyMust) {
  auto const [low, high, expected] = GetParam();
  EXPECT_EQ(alignedBlocks(low, high).size(), expected);
}

INSTANTIATE_TEST_SUITE_P(
    AlignedBlocks, KnownRanges,
    testing::Values(Expansion{4000, 8000, 8}, Expansion{333, 777, 8}, Expansion{5004, 5008, 2},
                    Expansion{1024, 65535, 6}, Expansion{1025, 65535, 15},
                    Expansion{33434, 33600, 6}, Expansion{514, 1023, 8}, Expansion{16384, 32767, 1},
                    Expansion{49152, 57500, 6}, Expansion{1, 65534, 30}, Expansion{0, 1022, 10},
                    Expansion{0, 65535, 1}, Expansion{0, 0, 1}, Expansion{65535, 65535, 1}),
    [](auto const& range) {
      return std::to_string(range.param.low) + "to" + std::to_string(range.param.high);
    });

TEST(AlignedBlocks, AreTheBlocksThemselvesInOrder) {
  EXPECT_THAT(alignedBlocks(5004, 5008), ElementsAre(block(5004, 5007), block(5008, 5008)));
  EXPECT_THAT(alignedBlocks(0, 65535), ElementsAre(block(0, 65535)));
  EXPECT_THAT(alignedBlocks(65534, 65535), ElementsAre(block(65534, 65535)));
  EXPECT_THAT(alignedBlocks(1, 2), ElementsAre(block(1, 1), block(2, 2)));
}

RC_GTEST_PROP(AlignedBlocks, AreContiguousAlignedAndTheFewestPossible,
              (std::uint16_t one, std::uint16_t other)) {
  auto const [low, high] = std::minmax(one, other);
  std::vector<PortBlock> const blocks = alignedBlocks(low, high);
  std::uint32_t next = low;
  for (PortBlock const& part : blocks) {
    RC_ASSERT(part.low == next);
    std::uint32_t const size = std::uint32_t{part.high} - part.low + 1;
    RC_ASSERT(std::has_single_bit(size));
    RC_ASSERT(part.low % size == 0);
    RC_ASSERT(!part.needsRangeChecker);
    next = std::uint32_t{part.high} + 1;
  }
  RC_ASSERT(next == std::uint32_t{high} + 1);
  std::vector<PortBlock> fewest;
  splitPrefixes(0, 65535, low, high, fewest);
  RC_ASSERT(blocks == fewest);
}

TEST(PortBlocks, AnyPortIsOneBlockInBothForms) {
  EXPECT_THAT(portBlocks({}, PortExpansion::alignedBlocks), ElementsAre(block(0, 65535)));
  EXPECT_THAT(portBlocks({}, PortExpansion::rangeChecker), ElementsAre(block(0, 65535)));
}

TEST(PortBlocks, OnePortNeedsNoRangeChecker) {
  EXPECT_THAT(portBlocks(PortMatch::eq(80), PortExpansion::rangeChecker),
              ElementsAre(block(80, 80)));
  EXPECT_THAT(portBlocks(PortMatch::range(80, 80), PortExpansion::rangeChecker),
              ElementsAre(block(80, 80)));
  EXPECT_THAT(portBlocks(PortMatch::eq(80), PortExpansion::alignedBlocks),
              ElementsAre(block(80, 80)));
}

TEST(PortBlocks, ARangeIsOneBlockThatNeedsARangeCheckerOrManyThatDoNot) {
  EXPECT_THAT(portBlocks(PortMatch::range(5004, 5008), PortExpansion::rangeChecker),
              ElementsAre(checked(5004, 5008)));
  EXPECT_THAT(portBlocks(PortMatch::range(5004, 5008), PortExpansion::alignedBlocks),
              ElementsAre(block(5004, 5007), block(5008, 5008)));
}

TEST(PortBlocks, TheWholeRangeNeedsNoRangeChecker) {
  EXPECT_THAT(portBlocks(PortMatch::range(0, 65535), PortExpansion::rangeChecker),
              ElementsAre(block(0, 65535)));
}

TEST(PortBlocks, NotEqualIsWhatLiesBelowAndAbove) {
  EXPECT_THAT(portBlocks(PortMatch::neq(80), PortExpansion::rangeChecker),
              ElementsAre(checked(0, 79), checked(81, 65535)));
  EXPECT_THAT(portBlocks(PortMatch::neq(0), PortExpansion::rangeChecker),
              ElementsAre(checked(1, 65535)));
  EXPECT_THAT(portBlocks(PortMatch::neq(65535), PortExpansion::rangeChecker),
              ElementsAre(checked(0, 65534)));
  EXPECT_EQ(portBlocks(PortMatch::neq(80), PortExpansion::alignedBlocks).size(), 16U);
}

TEST(PortBlocks, LessAndGreaterLeaveTheNumberItselfOut) {
  EXPECT_THAT(portBlocks(PortMatch::lt(1024), PortExpansion::alignedBlocks),
              ElementsAre(block(0, 1023)));
  EXPECT_THAT(portBlocks(PortMatch::lt(1), PortExpansion::rangeChecker), ElementsAre(block(0, 0)));
  EXPECT_THAT(portBlocks(PortMatch::gt(65534), PortExpansion::rangeChecker),
              ElementsAre(block(65535, 65535)));
  EXPECT_EQ(portBlocks(PortMatch::gt(1023), PortExpansion::alignedBlocks).size(), 6U);
}

TEST(PortBlocks, ExactRangesAreTakenInsteadOfTheMatch) {
  PolicyMap::PortRanges const exact{{1, 2}, {8, 15}};
  EXPECT_THAT(portBlocks(PortMatch::gt(0), PortExpansion::alignedBlocks, exact),
              ElementsAre(block(1, 1), block(2, 2), block(8, 15)));
  EXPECT_THAT(portBlocks(PortMatch::gt(0), PortExpansion::rangeChecker, exact),
              ElementsAre(checked(1, 2), checked(8, 15)));
}

TEST(PortBlocks, AMatchThatTakesNoPortHasNone) {
  for (PortExpansion const expansion :
       {PortExpansion::alignedBlocks, PortExpansion::rangeChecker}) {
    EXPECT_THAT(portBlocks(PortMatch::lt(0), expansion), IsEmpty());
    EXPECT_THAT(portBlocks(PortMatch::gt(65535), expansion), IsEmpty());
  }
}

TEST(SubRules, ARuleWithoutPortsIsOne) {
  EXPECT_THAT(subRulesOf({}, {}, PortExpansion::alignedBlocks), ElementsAre(SubRuleData()));
  EXPECT_THAT(subRulesOf({}, {}, PortExpansion::rangeChecker), ElementsAre(SubRuleData()));
}

TEST(SubRules, AMacRuleIsOne) {
  std::vector<SubRuleData> all;
  visitSubRules(Acl::MacRuleConfig(), PortExpansion::alignedBlocks,
                [&](SubRuleData const& subRule) {
                  all.push_back(subRule);
                  return true;
                });
  EXPECT_THAT(all, ElementsAre(SubRuleData()));
}

TEST(SubRules, BothPortsMakeTheCrossProductSourceOutsideDestinationInside) {
  auto const all = subRulesOf(PortMatch::range(1, 2), PortMatch::range(5004, 5008),
                              PortExpansion::alignedBlocks);
  std::vector<std::pair<int, int>> lows;
  for (SubRuleData const& subRule : all) {
    lows.emplace_back(subRule.srcPortLow(), subRule.dstPortLow());
    EXPECT_FALSE(subRule.needsRangeChecker());
    EXPECT_EQ(subRule.distinction(), 0U);
  }
  EXPECT_THAT(lows, ElementsAre(std::pair(1, 5004), std::pair(1, 5008), std::pair(2, 5004),
                                std::pair(2, 5008)));
}

TEST(SubRules, EachSideHasItsOwnRangeCheckerFlag) {
  auto const all =
      subRulesOf(PortMatch::range(10, 20), PortMatch::eq(80), PortExpansion::rangeChecker);
  ASSERT_EQ(all.size(), 1U);
  EXPECT_TRUE(all[0].srcPortRange());
  EXPECT_FALSE(all[0].dstPortRange());
  auto const both =
      subRulesOf(PortMatch::neq(80), PortMatch::gt(1023), PortExpansion::rangeChecker);
  ASSERT_EQ(both.size(), 2U);
  EXPECT_TRUE(both[0].srcPortRange() && both[0].dstPortRange());
  EXPECT_TRUE(both[1].srcPortRange() && both[1].dstPortRange());
}

TEST(SubRules, ARuleThatTakesNoPortHasNone) {
  EXPECT_THAT(subRulesOf(PortMatch::lt(0), PortMatch::eq(80), PortExpansion::alignedBlocks),
              IsEmpty());
  EXPECT_THAT(subRulesOf({}, PortMatch::gt(65535), PortExpansion::rangeChecker), IsEmpty());
}

TEST(SubRules, AVisitorThatHasEnoughEndsTheWalk) {
  Acl::IpRuleConfig rule;
  rule.srcPortIs(PortMatch::range(1, 65534));
  int visits = 0;
  visitSubRules(rule, PortExpansion::alignedBlocks,
                [&](SubRuleData const&) { return ++visits < 3; });
  EXPECT_EQ(visits, 3);
}

rc::Gen<PortMatch> anyPortMatch() {
  return rc::gen::exec([] {
    auto const low = *rc::gen::arbitrary<std::uint16_t>();
    auto const high = *rc::gen::arbitrary<std::uint16_t>();
    switch (*rc::gen::inRange(0, 6)) {
    case 0: return PortMatch::eq(low);
    case 1: return PortMatch::neq(low);
    case 2: return PortMatch::lt(low);
    case 3: return PortMatch::gt(low);
    case 4: return PortMatch::range(std::min(low, high), std::max(low, high));
    default: return PortMatch::any();
    }
  });
}

bool takes(PortMatch const& match, std::uint32_t port) {
  switch (match.op()) {
  case Acl::MatchOp::eq: return port == match.low();
  case Acl::MatchOp::neq: return port != match.low();
  case Acl::MatchOp::lt: return port < match.low();
  case Acl::MatchOp::gt: return port > match.low();
  case Acl::MatchOp::range: return port >= match.low() && port <= match.high();
  default: return true;
  }
}

RC_GTEST_PROP(SubRules, TakeExactlyThePortsOfTheRuleEachOnce, ()) {
  auto const src = *anyPortMatch();
  auto const dst = *anyPortMatch();
  auto const expansion =
      *rc::gen::element(PortExpansion::alignedBlocks, PortExpansion::rangeChecker);
  auto const all = subRulesOf(src, dst, expansion);
  RC_ASSERT(std::set<SubRuleData>(all.begin(), all.end()).size() == all.size());
  // Errors show at the bounds.
  std::vector<std::uint32_t> ports{0, 65535};
  for (PortMatch const& match : {src, dst}) {
    for (int const near : {-1, 0, 1}) {
      ports.push_back(static_cast<std::uint32_t>(match.low() + near) & 0xffffU);
      ports.push_back(static_cast<std::uint32_t>(match.high() + near) & 0xffffU);
    }
  }
  for (std::uint32_t const srcPort : ports) {
    for (std::uint32_t const dstPort : ports) {
      int taken = 0;
      for (SubRuleData const& subRule : all) {
        taken += srcPort >= subRule.srcPortLow() && srcPort <= subRule.srcPortHigh() &&
                         dstPort >= subRule.dstPortLow() && dstPort <= subRule.dstPortHigh()
                     ? 1
                     : 0;
      }
      RC_ASSERT(taken == (takes(src, srcPort) && takes(dst, dstPort) ? 1 : 0));
    }
  }
}

}  // namespace
