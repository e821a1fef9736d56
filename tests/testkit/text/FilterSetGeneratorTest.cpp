// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/FilterSetGenerator.h"

#include "testkit/text/FilterSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace PolicyMapTestKit::Text {
namespace {

FilterSet generated(std::size_t rules, std::uint64_t seed, Family family) {
  return readFilterSet(SourceText("generated", generateFilterSet(rules, seed, family)));
}

TEST(FilterSetGenerator, SetHasTheRulesAskedForAndIsReadWithoutOptions) {
  EXPECT_EQ(generateFilterSet(0), "");
  EXPECT_EQ(generated(1000, 1, Family::ip4).rules.size(), 1000U);
  FilterSet const six = generated(1000, 1, Family::ip6);
  EXPECT_EQ(six.rules.size(), 1000U);
  EXPECT_EQ(six.family, Family::ip6);
}

TEST(FilterSetGenerator, EqualArgumentsGiveEqualTexts) {
  EXPECT_EQ(generateFilterSet(100, 7), generateFilterSet(100, 7));
  EXPECT_NE(generateFilterSet(100, 7), generateFilterSet(100, 8));
  EXPECT_EQ(generateFilterSet(1, 1),
            "@108.92.103.236/32\t178.201.185.181/32\t0 : 65535\t34165 : 34165\t0x11/0xFF\t"
            "0x0000/0x0000\t\n");
}

TEST(FilterSetGenerator, SmallerSetIsTheBeginningOfALarger) {
  std::string const small = generateFilterSet(10);
  EXPECT_EQ(generateFilterSet(20).substr(0, small.size()), small);
}

TEST(FilterSetGenerator, AboutOneRuleInEightHasARangeAndOneHasNoPorts) {
  FilterSet const set = generated(8000, 1, Family::ip4);
  auto const ranges = std::count_if(set.rules.begin(), set.rules.end(), [](FilterRule const& rule) {
    return rule.destinationPort == PortRange{1024, 65535};
  });
  auto const portless = std::count_if(set.rules.begin(), set.rules.end(),
                                      [](FilterRule const& rule) { return rule.protocol == 47; });
  EXPECT_NEAR(static_cast<double>(ranges), 1000, 150);
  EXPECT_NEAR(static_cast<double>(portless), 1000, 150);
}

}  // namespace
}  // namespace PolicyMapTestKit::Text
