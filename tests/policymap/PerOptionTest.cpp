// SPDX-License-Identifier: Apache-2.0
#include <PolicyMap/PerOption.h>

#include <gmock/gmock.h>

#include <vector>

namespace policymap {
namespace {

using PolicyMap::allMatchOptions;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::forOption;
using PolicyMap::PerOption;
using testing::Each;
using testing::ElementsAre;

TEST(PerOption, HoldsOneValuePerOption) {
  PerOption<int> values;
  EXPECT_THAT(std::vector(values.begin(), values.end()), Each(0));
  int next = 0;
  for (ClassMapMatchOption const option : allMatchOptions) {
    values[option] = ++next;
  }
  EXPECT_THAT(std::vector(values.begin(), values.end()), ElementsAre(1, 2, 3, 4));
  EXPECT_EQ(values[ClassMapMatchOption::ipv4], 1);
  EXPECT_EQ(values[ClassMapMatchOption::ipv6], 2);
  EXPECT_EQ(values[ClassMapMatchOption::mac], 3);
  EXPECT_EQ(values[ClassMapMatchOption::mpls], 4);
}

TEST(PerOption, OfAnUnknownOptionIsThatOfMpls) {
  PerOption<int> values;
  values[ClassMapMatchOption{77}] = 5;
  EXPECT_EQ(values[ClassMapMatchOption::mpls], 5);
  PerOption<int> const& constant = values;
  EXPECT_EQ(constant[ClassMapMatchOption{99}], 5);
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
