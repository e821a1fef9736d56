// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"

#include <PolicyMap/Action.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace policymap {
namespace {

using PolicyMap::ActionType;

TEST(Actions, NameTheirAttributes) {
  NumberAction const action("web", 7);
  EXPECT_EQ(action.className(), "web");
  EXPECT_EQ(action.name(), "web");
  EXPECT_EQ(action.actionType(), ActionType{7});
  EXPECT_EQ(action.attributeString(258), "className");
  EXPECT_EQ(action.attributeString(259), "actionType");
  EXPECT_EQ(action.attributeString(260), "id");
  EXPECT_EQ(action.attributeString(261), "equalTo");
  EXPECT_EQ(action.attributeString(130), "name");
  EXPECT_EQ(action.attributeString(386), "unknown");
  EXPECT_EQ(action.attributeString(0), "unknown");
}

TEST(Actions, EqualOnlyThemselvesUnlessTheySayOtherwise) {
  auto const action = Kor::make<NumberAction>("web", 7);
  EXPECT_TRUE(action->equalTo(Kor::Ptr<PolicyMap::Action const>(action)));
  EXPECT_FALSE(
      action->equalTo(Kor::Ptr<PolicyMap::Action const>(Kor::make<NumberAction>("web", 7))));
  EXPECT_FALSE(action->equalTo(nullptr));
}

}  // namespace
}  // namespace policymap
