// SPDX-License-Identifier: Apache-2.0
#include <PolicyMap/PerOption.h>

#include <gmock/gmock.h>

#include <vector>

namespace policymap {
namespace {

using PolicyMap::ClassMapMatchOption;
using PolicyMap::forOption;
using PolicyMap::PerOption;
using testing::ElementsAre;

std::vector<int> listed(PerOption<int> const& values) {
  return {values.begin(), values.end()};
}

TEST(PerOption, HoldsOneValueForEachOptionInTheOrderOfTheOptions) {
  PerOption<int> values;
  EXPECT_THAT(listed(values), ElementsAre(0, 0, 0, 0));
  int next = 1;
  for (ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
    values[option] = next++;
  }
  EXPECT_THAT(listed(values), ElementsAre(1, 2, 3, 4));
}

TEST(PerOption, ServesEveryFurtherOptionAsMpls) {
  PerOption<int> values;
  values[ClassMapMatchOption{9}] = 5;
  EXPECT_THAT(listed(values), ElementsAre(0, 0, 0, 5));
  EXPECT_EQ(values[ClassMapMatchOption{-1}], 5);
}

TEST(ForOption, CallsTheFunctionOfTheOptionAlone) {
  auto const called = [](ClassMapMatchOption option) {
    return forOption(
        option, [] { return '4'; }, [] { return '6'; }, [] { return 'm'; }, [] { return 'l'; });
  };
  EXPECT_EQ(called(ClassMapMatchOption::ipv4), '4');
  EXPECT_EQ(called(ClassMapMatchOption::ipv6), '6');
  EXPECT_EQ(called(ClassMapMatchOption::mac), 'm');
  EXPECT_EQ(called(ClassMapMatchOption::mpls), 'l');
  EXPECT_EQ(called(ClassMapMatchOption{9}), 'l');
  EXPECT_EQ(called(ClassMapMatchOption{-1}), 'l');
}

}  // namespace
}  // namespace policymap
