// SPDX-License-Identifier: Apache-2.0
#include <PolicyMap/PolicyMapGlobalData.h>

#include <gtest/gtest.h>

namespace {

using PolicyMap::PolicyMapGlobalData;

TEST(GlobalData, CarryListsClassMapsAndDifferenceTracker) {
  auto const acls = Kor::make<Acl::Config>();
  auto const classMaps = Kor::make<PolicyMap::ClassMapTypeConfig>();
  auto const diff = Kor::make<Acl::AclDiff>();
  auto const data = Kor::make<PolicyMapGlobalData>(acls, classMaps, diff);
  EXPECT_EQ(data->aclConfig(), acls);
  EXPECT_EQ(data->classTypeConfig(), classMaps);
  EXPECT_EQ(data->aclDiff(), diff);
}

TEST(GlobalData, MayBeWithoutAny) {
  auto const data = Kor::make<PolicyMapGlobalData>(nullptr);
  EXPECT_FALSE(data->aclConfig() || data->classTypeConfig() || data->aclDiff());
}

}  // namespace
