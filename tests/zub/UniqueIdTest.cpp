// SPDX-License-Identifier: Apache-2.0
#include "acl/ValueChecks.h"

#include <Zub/UniqueId.h>

#include <gtest/gtest.h>

namespace {

using Zub::UniqueId;

TEST(UniqueId, PrintsAndReadsBack) {
  TestSupport::expectTextForm(UniqueId(), "Value('Zub::UniqueId', ** {'value': ''})");
  TestSupport::expectTextForm(UniqueId("it's"), "Value('Zub::UniqueId', ** {'value': 'it\\'s'})");
  EXPECT_EQ(TestSupport::printed(UniqueId("a")), "Value('Zub::UniqueId', ** {'value': 'a'})");
}

TEST(UniqueId, IsFalseOnlyWhenEmpty) {
  EXPECT_TRUE(!UniqueId());
  EXPECT_FALSE(!UniqueId("a"));
}

TEST(UniqueId, SortsByItsText) {
  TestSupport::expectAscending<UniqueId>(
      {UniqueId(), UniqueId("a"), UniqueId("ab"), UniqueId("b")});
}

TEST(UniqueId, NextIsAnotherOneEachTime) {
  UniqueId const first = UniqueId::next();
  UniqueId const second = UniqueId::next();
  EXPECT_NE(first, second);
  auto const numberOf = [](UniqueId const& id) {
    return std::stoul(id.value().stdString().substr(std::string("id-").size()));
  };
  EXPECT_EQ(numberOf(second), numberOf(first) + 1);
}

TEST(UniqueId, ItsTypeIsAValueType) {
  EXPECT_EQ(UniqueId().fwkType()->name(), "Zub::UniqueId");
}

}  // namespace
