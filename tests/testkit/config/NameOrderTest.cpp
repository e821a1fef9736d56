// SPDX-License-Identifier: Apache-2.0
#include "testkit/config/NameOrder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace PolicyMapTestKit::Text::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(NameOrder, NamesGoBehindTheLastOrBeforeAnother) {
  NameOrder order;
  EXPECT_THAT(order.names(), IsEmpty());
  order.append("a");
  order.append("b");
  order.insertBefore("c", "b");
  order.insertBefore("d", "a");
  EXPECT_THAT(order.names(), ElementsAre("d", "a", "c", "b"));
}

TEST(NameOrder, CopyIsOneOfItsOwn) {
  NameOrder order;
  order.append("a");
  order.append("b");
  NameOrder copy = order;
  copy.erase("a");
  copy.append("c");
  EXPECT_THAT(order.names(), ElementsAre("a", "b"));
  EXPECT_THAT(copy.names(), ElementsAre("b", "c"));
}

RC_GTEST_PROP(NameOrder, AgreesWithAVector, ()) {
  NameOrder order;
  std::vector<std::string> model;
  auto const steps = *rc::gen::inRange(0, 60);
  for (int i = 0; i != steps; ++i) {
    auto const name = std::to_string(*rc::gen::inRange(0, 8));
    auto const other = std::to_string(*rc::gen::inRange(0, 8));
    auto const at = std::find(model.begin(), model.end(), name);
    RC_ASSERT(order.has(name) == (at != model.end()));
    if (at != model.end()) {
      order.erase(name);
      model.erase(at);
    } else if (order.has(other)) {
      order.insertBefore(name, other);
      model.insert(std::find(model.begin(), model.end(), other), name);
    } else {
      order.append(name);
      model.push_back(name);
    }
    RC_ASSERT(order.names() == model);
  }
}

}  // namespace
}  // namespace PolicyMapTestKit::Text::test
