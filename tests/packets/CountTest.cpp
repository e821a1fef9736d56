// SPDX-License-Identifier: Apache-2.0
#include "packets/space/Count.h"

#include <gmock/gmock.h>

#include <limits>
#include <random>

namespace PolicyMapPackets::test {
namespace {

constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();

TEST(Count, AddsWithCarries) {
  Count count(most);
  count += Count(most);
  EXPECT_EQ(count.decimal(), "36893488147419103230");
  Count large = Count::powerOfTwo(256);
  large += Count::powerOfTwo(256);
  EXPECT_EQ(large, Count::powerOfTwo(257));
}

TEST(Count, MultipliesAsItAdds) {
  std::mt19937_64 random(1);
  for (int i = 0; i != 100; ++i) {
    std::uint64_t const factor = random();
    std::uint64_t const number = random();
    Count product = Count(number).shifted(static_cast<unsigned>(i) * 3);
    product *= factor;
    Count sum;
    for (unsigned bit = 0; bit != 64; ++bit) {
      if ((factor >> bit & 1U) != 0) {
        sum += Count(number).shifted(static_cast<unsigned>(i) * 3 + bit);
      }
    }
    ASSERT_EQ(product, sum);
  }
}

TEST(Count, IsOrdered) {
  EXPECT_LT(Count(most), Count::powerOfTwo(64));
  EXPECT_LT(Count::powerOfTwo(300), Count::powerOfTwo(301));
  EXPECT_TRUE(Count().isZero());
  EXPECT_FALSE(Count::powerOfTwo(511).isZero());
}

TEST(Count, PrintsAllDigits) {
  EXPECT_EQ(Count().decimal(), "0");
  EXPECT_EQ(Count(1000000000).decimal(), "1000000000");
  EXPECT_EQ(Count::powerOfTwo(150).decimal(), "1427247692705959881058285969449495136382746624");
}

TEST(Count, PrintsForPeople) {
  EXPECT_EQ(Count().text(), "0");
  EXPECT_EQ(Count(65536).text(), "65,536");
  EXPECT_EQ(Count(1234567).text(), "1,234,567");
  EXPECT_EQ(Count::powerOfTwo(40).text(), "2^40");
  Count more = Count::powerOfTwo(81);
  more *= 3;
  EXPECT_EQ(more.text(), "2^82.58");
}

}  // namespace
}  // namespace PolicyMapPackets::test
