// SPDX-License-Identifier: Apache-2.0
#include <PolicyMap/NumberPool.h>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <limits>
#include <set>

namespace policymap {
namespace {

using PolicyMap::NumberPool;

constexpr std::uint32_t highest = std::numeric_limits<std::uint32_t>::max();

TEST(NumberPool, GivesEveryNumberOutOnce) {
  NumberPool pool;
  EXPECT_TRUE(pool.take(0));
  EXPECT_TRUE(pool.take(highest));
  EXPECT_FALSE(pool.take(0));
  EXPECT_FALSE(pool.take(highest));
  EXPECT_TRUE(pool.take(1));
  EXPECT_FALSE(pool.take(1));
}

TEST(NumberPool, TheNextIsTheFirstFreeOneAfterIt) {
  NumberPool pool;
  pool.take(10);
  pool.take(11);
  pool.take(13);
  EXPECT_EQ(pool.takeNext(10), 12U);
  EXPECT_EQ(pool.takeNext(10), 14U);
  EXPECT_EQ(pool.takeNext(13), 15U);
}

TEST(NumberPool, AfterTheHighestItIsTheFirstFreeOneBefore) {
  NumberPool pool;
  pool.take(highest);
  EXPECT_EQ(pool.takeNext(highest), highest - 1);
  pool.take(highest - 3);
  EXPECT_EQ(pool.takeNext(highest), highest - 2);
  EXPECT_EQ(pool.takeNext(highest - 3), highest - 4);
}

// The reference: one number after the other.
class PlainPool {
 public:
  bool take(std::uint32_t number) { return taken_.insert(number).second; }
  std::uint32_t takeNext(std::uint32_t from) {
    std::uint32_t next = from;
    while (next < highest && taken_.count(next) != 0) {
      ++next;
    }
    if (taken_.count(next) != 0) {
      for (next = from; taken_.count(next) != 0;) {
        --next;
      }
    }
    taken_.insert(next);
    return next;
  }
  [[nodiscard]] bool isTaken(std::uint32_t number) const { return taken_.count(number) != 0; }

 private:
  std::set<std::uint32_t> taken_;
};

RC_GTEST_PROP(NumberPool, DoesAsASetOfNumbers, ()) {
  NumberPool pool;
  PlainPool plain;
  for (int i = 0; i < 60; ++i) {
    auto const step = *rc::gen::inRange<std::uint32_t>(0, 20);
    std::uint32_t const number = *rc::gen::arbitrary<bool>() ? step : highest - step;
    if (plain.isTaken(number) && *rc::gen::arbitrary<bool>()) {
      RC_ASSERT(pool.takeNext(number) == plain.takeNext(number));
    } else {
      RC_ASSERT(pool.take(number) == plain.take(number));
    }
  }
}

}  // namespace
}  // namespace policymap
