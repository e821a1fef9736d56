// SPDX-License-Identifier: Apache-2.0

// The slot of each virtual function in the table of its class. Binary consumers depend on these
// numbers.

#include "support/VirtualSlot.h"

#include <gtest/gtest.h>

#include <helper/AclHelper.h>

namespace {

using PolicyMap::PolicyMapAclHelper;
using PolicyMapTest::AclHelper;
using TestSupport::virtualSlotOf;

TEST(AclHelperShape, ItsOperationsStandInTheirSlots) {
  EXPECT_EQ(virtualSlotOf(&AclHelper::hasNotificationActiveIs), 0);
  EXPECT_EQ(virtualSlotOf(&AclHelper::fwkType), 5);
  EXPECT_EQ(virtualSlotOf(&AclHelper::hwInit), 8);
  EXPECT_EQ(virtualSlotOf(&AclHelper::createPolicy), 9);
  EXPECT_EQ(virtualSlotOf(&AclHelper::recreatePolicy), 10);
  EXPECT_EQ(virtualSlotOf(&AclHelper::deletePolicy), 11);
  EXPECT_EQ(virtualSlotOf(&AclHelper::commitPolicy), 12);
  EXPECT_EQ(virtualSlotOf(&AclHelper::addIntfToPolicy), 13);
  EXPECT_EQ(virtualSlotOf(&AclHelper::removeIntfFromPolicy), 14);
  EXPECT_EQ(virtualSlotOf(&AclHelper::addRule), 15);
  EXPECT_EQ(virtualSlotOf(&AclHelper::beginUpdateActions), 16);
  EXPECT_EQ(virtualSlotOf(&AclHelper::updateAction), 17);
  EXPECT_EQ(virtualSlotOf(&AclHelper::endUpdateActions), 18);
  EXPECT_EQ(virtualSlotOf(&AclHelper::getCountForRule), 19);
  EXPECT_EQ(virtualSlotOf(&AclHelper::showAclRule), 20);
  EXPECT_EQ(virtualSlotOf(&AclHelper::showAclSummary), 21);
  EXPECT_EQ(virtualSlotOf(&AclHelper::updateActionSupportedIs), 22);
  EXPECT_EQ(virtualSlotOf(&AclHelper::reprogramPolicyOnIntfChangeIs), 23);
  EXPECT_EQ(virtualSlotOf(&AclHelper::expandPortChannelsIs), 24);
  EXPECT_EQ(virtualSlotOf(&AclHelper::denyRulesAllowedIs), 25);
  EXPECT_EQ(virtualSlotOf(&AclHelper::ttlSupportedIs), 26);
  EXPECT_EQ(virtualSlotOf(&AclHelper::onlyTtlEqSupportedIs), 27);
  EXPECT_EQ(virtualSlotOf(&AclHelper::ackOrRstSupportedIs), 28);
  EXPECT_EQ(virtualSlotOf(&AclHelper::establishedSupportedIs), 29);
  EXPECT_EQ(virtualSlotOf(&AclHelper::subRulesForL4PortsIs), 30);
  EXPECT_EQ(virtualSlotOf(&AclHelper::asyncOperationsIs), 31);
  EXPECT_EQ(virtualSlotOf(&AclHelper::asyncOperationResultIs), 32);
}

TEST(AclHelperShape, ItsOwnOperationsAreNotVirtual) {
  EXPECT_EQ(virtualSlotOf(&AclHelper::asyncTriggerIs), -1);
  EXPECT_EQ(virtualSlotOf(&AclHelper::asyncTriggerInc), -1);
  EXPECT_EQ(virtualSlotOf(&AclHelper::pseudoAsyncIs), -1);
  EXPECT_EQ(virtualSlotOf(&AclHelper::scheduleAsyncResult), -1);
  EXPECT_EQ(virtualSlotOf(&AclHelper::handleAsyncTrigger), -1);
  EXPECT_EQ(virtualSlotOf(&AclHelper::testDataIs), -1);
  EXPECT_EQ(virtualSlotOf(&AclHelper::testDataDel), -1);
  EXPECT_EQ(virtualSlotOf(&AclHelper::testDataNotify), -1);
}

TEST(AclHelperShape, ItsHooksFollowTheInheritedOnesInOrderOfTheAttributes) {
  using Hooks = AclHelper::NotifieeConst;
  int const first = virtualSlotOf(&PolicyMapAclHelper::NotifieeConst::onAsyncOperationResult) + 1;
  EXPECT_EQ(virtualSlotOf(&Hooks::onAsyncTrigger), first);
  EXPECT_EQ(virtualSlotOf(&Hooks::onAsyncError), first + 1);
  EXPECT_EQ(virtualSlotOf(&Hooks::onPseudoAsync), first + 2);
  EXPECT_EQ(virtualSlotOf(&Hooks::onTestData), first + 3);
  EXPECT_EQ(virtualSlotOf(&Hooks::onCreateError), first + 4);
  EXPECT_EQ(virtualSlotOf(&Hooks::onDeleteError), first + 5);
  EXPECT_EQ(virtualSlotOf(&Hooks::onCommitError), first + 6);
  EXPECT_EQ(virtualSlotOf(&Hooks::onAddIntfError), first + 7);
  EXPECT_EQ(virtualSlotOf(&Hooks::onRemoveIntfError), first + 8);
  EXPECT_EQ(virtualSlotOf(&Hooks::onAddRuleError), first + 9);
  EXPECT_EQ(virtualSlotOf(&Hooks::onUpdateActionError), first + 10);
  EXPECT_EQ(virtualSlotOf(&Hooks::onRangeCheckerError), first + 11);
}

}  // namespace
