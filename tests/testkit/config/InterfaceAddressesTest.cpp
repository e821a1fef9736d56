// SPDX-License-Identifier: Apache-2.0
#include "testkit/config/InterfaceAddresses.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <optional>
#include <vector>

namespace PolicyMapTestKit::Text::test {
namespace {

InterfacePrefix prefix(std::uint8_t last, std::uint8_t length = 24) {
  InterfacePrefix made;
  made.address[3] = last;
  made.length = length;
  return made;
}

std::vector<InterfacePrefix> listOf(InterfaceAddresses const& addresses) {
  std::vector<InterfacePrefix> list;
  for (auto const& [number, value] : addresses.byNumber()) {
    list.push_back(value);
  }
  return list;
}

TEST(InterfaceAddresses, PrefixesOfDifferentLengthsAreDifferent) {
  InterfaceAddresses addresses;
  addresses.addSecondary(prefix(1, 24));
  addresses.addSecondary(prefix(1, 25));
  EXPECT_EQ(addresses.size(), 2U);
  EXPECT_FALSE(addresses.erase(prefix(1, 26)));
  EXPECT_TRUE(addresses.erase(prefix(1, 24)));
  EXPECT_EQ(addresses.first(), prefix(1, 25));
}

TEST(InterfaceAddresses, EqualIsWhatHasTheSameAddressesInTheSameOrder) {
  InterfaceAddresses one;
  one.addPrimary(prefix(1));
  one.addSecondary(prefix(2));
  InterfaceAddresses other;
  other.addSecondary(prefix(3));
  other.addSecondary(prefix(2));
  other.addPrimary(prefix(1));
  EXPECT_FALSE(one == other);
  other.erase(prefix(3));
  EXPECT_TRUE(one == other);
  InterfaceAddresses withoutPrimary;
  withoutPrimary.addSecondary(prefix(1));
  withoutPrimary.addSecondary(prefix(2));
  EXPECT_FALSE(one == withoutPrimary);
}

RC_GTEST_PROP(InterfaceAddresses, AgreeWithAList, ()) {
  InterfaceAddresses addresses;
  std::optional<InterfacePrefix> primary;
  std::vector<InterfacePrefix> others;
  auto const eraseFromModel = [&](InterfacePrefix const& which) {
    bool const wasPrimary = primary == which;
    if (wasPrimary) {
      primary.reset();
    }
    return std::erase(others, which) != 0 || wasPrimary;
  };
  auto const steps = *rc::gen::inRange(0, 60);
  for (int i = 0; i != steps; ++i) {
    InterfacePrefix const which = prefix(*rc::gen::inRange<std::uint8_t>(0, 6));
    switch (*rc::gen::inRange(0, 3)) {
    case 0: RC_ASSERT(addresses.erase(which) == eraseFromModel(which)); break;
    case 1:
      eraseFromModel(which);
      primary = which;
      addresses.addPrimary(which);
      break;
    default:
      if (std::find(others.begin(), others.end(), which) == others.end()) {
        eraseFromModel(which);
        others.push_back(which);
      }
      addresses.addSecondary(which);
    }
    std::vector<InterfacePrefix> expected = others;
    if (primary) {
      expected.insert(expected.begin(), *primary);
    }
    RC_ASSERT(listOf(addresses) == expected);
  }
}

}  // namespace
}  // namespace PolicyMapTestKit::Text::test
