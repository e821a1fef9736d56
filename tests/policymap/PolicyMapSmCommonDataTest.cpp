// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"

#include <PolicyMap/PolicyMapSmCommonData.h>

#include <gmock/gmock.h>

namespace policymap {
namespace {

using PolicyMap::PolicyMapSmCommonData;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class PolicyData : public testing::Test {
 protected:
  Kor::Ptr<PolicyMapSmCommonData> data =
      Kor::make<PolicyMapSmCommonData>(PolicyMap::PolicyMapSmKey("pm", "input"));
  Vorel::IntfId const e1 = intf("Ethernet1");
  Vorel::IntfId const e2 = intf("Ethernet2");
};

TEST_F(PolicyData, KnowsItsKeyAndStartsWithoutInterfaces) {
  EXPECT_EQ(data->policyKey(), PolicyMap::PolicyMapSmKey("pm", "input"));
  for (ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
    EXPECT_THAT(data->intfs(option), IsEmpty());
  }
}

TEST_F(PolicyData, HasASetForEachOption) {
  data->intfAdd(ClassMapMatchOption::ipv4, e1);
  data->intfAdd(ClassMapMatchOption::mac, e2);
  EXPECT_THAT(data->intfs(ClassMapMatchOption::ipv4), ElementsAre(e1));
  EXPECT_THAT(data->intfs(ClassMapMatchOption::ipv6), IsEmpty());
  EXPECT_THAT(data->intfs(ClassMapMatchOption::mac), ElementsAre(e2));
  EXPECT_THAT(data->intfs(ClassMapMatchOption::mpls), IsEmpty());
  EXPECT_TRUE(data->korIntf4(e1));
  EXPECT_TRUE(data->korIntfMac(e2));
  EXPECT_FALSE(data->hasIntf(ClassMapMatchOption::ipv6, e1));
  data->intfAdd(ClassMapMatchOption::ipv6, e1);
  EXPECT_TRUE(data->korIntf6(e1));
}

TEST_F(PolicyData, OtherOptionsShareTheSetOfMpls) {
  data->intfAdd(static_cast<ClassMapMatchOption>(7), e1);
  EXPECT_TRUE(data->korIntfMpls(e1));
  EXPECT_TRUE(data->hasIntf(static_cast<ClassMapMatchOption>(-1), e1));
  data->intfRemove(ClassMapMatchOption::mpls, e1);
  EXPECT_THAT(data->intfs(static_cast<ClassMapMatchOption>(7)), IsEmpty());
}

TEST_F(PolicyData, MembershipAloneCounts) {
  data->intf4Is(e1, false);
  EXPECT_TRUE(data->hasIntf(ClassMapMatchOption::ipv4, e1));
  EXPECT_THAT(data->intfs(ClassMapMatchOption::ipv4), ElementsAre(e1));
}

TEST_F(PolicyData, ASetIsEmptiedWithoutTouchingTheOthers) {
  data->intfAdd(ClassMapMatchOption::ipv4, e1);
  data->intfAdd(ClassMapMatchOption::ipv4, e2);
  data->intfAdd(ClassMapMatchOption::ipv6, e1);
  EXPECT_THAT(data->intfs(ClassMapMatchOption::ipv4), UnorderedElementsAre(e1, e2));
  EXPECT_THAT(data->sortedIntfs(ClassMapMatchOption::ipv4), ElementsAre(e1, e2));
  data->intfRemoveAll(ClassMapMatchOption::ipv4);
  EXPECT_THAT(data->intfs(ClassMapMatchOption::ipv4), IsEmpty());
  EXPECT_THAT(data->intfs(ClassMapMatchOption::ipv6), ElementsAre(e1));
}

}  // namespace
}  // namespace policymap
