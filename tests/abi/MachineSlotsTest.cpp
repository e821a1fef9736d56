// SPDX-License-Identifier: Apache-2.0

// The slot of each virtual function in the table of its class. Binary consumers depend on these
// numbers.

#include "machines/PolicyMapTestSm.h"
#include "support/VirtualSlot.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

namespace {

using PolicyMap::ActionType;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::ClassMapSmCommonData;
using PolicyMapTest::TestClassCommonData;
using PolicyMapTest::TestClassMapSm;
using PolicyMapTest::TestPolicyMapSm;
using PolicyMapTest::TestServicePolicySm;
using TestSupport::virtualSlotOf;

template <class Action>
class TestActionSlots : public testing::Test {};
using Actions = testing::Types<PolicyMapTest::TestAction1, PolicyMapTest::TestAction2,
                               PolicyMapTest::TestAction3>;
TYPED_TEST_SUITE(TestActionSlots, Actions);

TYPED_TEST(TestActionSlots, AddsNoVirtualFunction) {
  using Action = TypeParam;
  EXPECT_EQ(virtualSlotOf(&Action::fwkType), 5);
  EXPECT_EQ(virtualSlotOf(&Action::attributeString), 8);
  EXPECT_EQ(virtualSlotOf(&Action::equalTo), virtualSlotOf(&PolicyMap::Action::equalTo));
  EXPECT_GT(virtualSlotOf(&Action::equalTo), virtualSlotOf(&Action::attributeLogReaderDel));
  EXPECT_EQ(virtualSlotOf(&Action::valueIs), -1);
}

template <class Machine>
class TestActionSmSlots : public testing::Test {};
using ActionMachines = testing::Types<PolicyMapTest::TestAction1Sm, PolicyMapTest::TestAction2Sm,
                                      PolicyMapTest::TestAction3Sm>;
TYPED_TEST_SUITE(TestActionSmSlots, ActionMachines);

TYPED_TEST(TestActionSmSlots, ItsOperationsStandInTheirSlots) {
  using Machine = TypeParam;
  EXPECT_EQ(virtualSlotOf(&Machine::hasNotificationActiveIs), 0);
  EXPECT_EQ(virtualSlotOf(&Machine::korAuditErrors), 1);
  EXPECT_EQ(virtualSlotOf(&Machine::auditErrors), 2);
  EXPECT_EQ(virtualSlotOf(&Machine::isNondestructingIs), 3);
  EXPECT_EQ(virtualSlotOf(&Machine::zeroReferencesIs), 4);
  EXPECT_EQ(virtualSlotOf(&Machine::fwkType), 5);
  EXPECT_EQ(virtualSlotOf(&Machine::cleanup), 8);
  EXPECT_EQ(virtualSlotOf(&Machine::handleAction), 9);
  EXPECT_EQ(virtualSlotOf(&Machine::handleInitialized), 10);
  EXPECT_EQ(virtualSlotOf(&Machine::actionDel), 11);
  EXPECT_EQ(virtualSlotOf(&Machine::actionIs), 12);
  EXPECT_EQ(virtualSlotOf(&Machine::initializedIs), 13);
  EXPECT_EQ(virtualSlotOf(&Machine::korDoZombieReactors), 14);
}

TEST(TestClassCommonData, ItsOperationsStandInTheirSlots) {
  using Data = TestClassCommonData;
  EXPECT_EQ(virtualSlotOf(&Data::zeroReferencesIs), 4);
  EXPECT_EQ(virtualSlotOf(&Data::fwkType), 5);
  EXPECT_EQ(virtualSlotOf(&Data::classMapIs), 8);
  EXPECT_EQ(virtualSlotOf(&Data::classMapStatusIs), 9);
  EXPECT_EQ(virtualSlotOf(&Data::actionDel), 10);
  EXPECT_EQ(virtualSlotOf(&Data::actionNotify), 11);
  EXPECT_EQ(virtualSlotOf(&Data::actionIs), 12);
  EXPECT_EQ(virtualSlotOf(&Data::updateAclActionsInc), 13);
  EXPECT_EQ(virtualSlotOf(&Data::updateAclActionsIs), 14);
  EXPECT_EQ(virtualSlotOf(&Data::action1ValueIs), -1);
  EXPECT_EQ(virtualSlotOf(&Data::action2ValueIs), -1);
  EXPECT_EQ(virtualSlotOf(&Data::action3ValueIs), -1);
}

TEST(TestClassCommonData, ItsHooksFollowTheInheritedOnes) {
  using Hooks = TestClassCommonData::NotifieeConst;
  int const first = virtualSlotOf(&ClassMapSmCommonData::NotifieeConst::onUpdateAclActions) + 1;
  EXPECT_EQ(virtualSlotOf(&Hooks::onAction1Value), first);
  EXPECT_EQ(virtualSlotOf(&Hooks::onAction2Value), first + 1);
  EXPECT_EQ(virtualSlotOf(&Hooks::onAction3Value), first + 2);
}

TEST(TestClassMapSm, ItsOperationsStandInTheirSlots) {
  using Sm = TestClassMapSm;
  EXPECT_EQ(virtualSlotOf(&Sm::hasNotificationActiveIs), 0);
  EXPECT_EQ(virtualSlotOf(&Sm::zeroReferencesIs), 4);
  EXPECT_EQ(virtualSlotOf(&Sm::fwkType), 5);
  EXPECT_EQ(virtualSlotOf(static_cast<void (Sm::*)(ActionType)>(&Sm::handleAction)), 8);
  EXPECT_EQ(virtualSlotOf(static_cast<void (Sm::*)()>(&Sm::handleAction)), 9);
  EXPECT_EQ(virtualSlotOf(static_cast<void (Sm::*)(ClassMapMatchOption)>(&Sm::handleMatch)), 10);
  EXPECT_EQ(virtualSlotOf(static_cast<void (Sm::*)()>(&Sm::handleMatch)), 11);
  EXPECT_EQ(virtualSlotOf(&Sm::createMatchSm), 12);
  EXPECT_EQ(virtualSlotOf(&Sm::createActionSm), 13);
  EXPECT_EQ(virtualSlotOf(&Sm::createCommonData), 14);
  EXPECT_EQ(virtualSlotOf(&Sm::createClassMapStatus), 15);
  EXPECT_EQ(virtualSlotOf(&Sm::handleInitialized), 16);
  EXPECT_EQ(virtualSlotOf(&Sm::cleanup), 17);
  EXPECT_EQ(virtualSlotOf(&Sm::classMapConfigDel), 18);
  EXPECT_EQ(virtualSlotOf(&Sm::classMapConfigIs), 19);
  EXPECT_EQ(virtualSlotOf(&Sm::rawClassMapSubConfigDel), 20);
  EXPECT_EQ(virtualSlotOf(&Sm::rawClassMapSubConfigIs), 21);
  EXPECT_EQ(virtualSlotOf(&Sm::classActionDel), 22);
  EXPECT_EQ(virtualSlotOf(&Sm::classActionIs), 23);
  EXPECT_EQ(virtualSlotOf(&Sm::classMapIs), 24);
  EXPECT_EQ(virtualSlotOf(&Sm::classCommonDataDel), 25);
  EXPECT_EQ(virtualSlotOf(&Sm::classCommonDataIs), 26);
  EXPECT_EQ(virtualSlotOf(&Sm::classMapStatusIs), 27);
  EXPECT_EQ(virtualSlotOf(&Sm::classMapMatchSmDel), 28);
  EXPECT_EQ(virtualSlotOf(&Sm::classMapMatchSmNotify), 29);
  EXPECT_EQ(virtualSlotOf(&Sm::classMapMatchSmIs), 30);
  EXPECT_EQ(virtualSlotOf(&Sm::actionSmDel), 31);
  EXPECT_EQ(virtualSlotOf(&Sm::actionSmNotify), 32);
  EXPECT_EQ(virtualSlotOf(&Sm::actionSmIs), 33);
  EXPECT_EQ(virtualSlotOf(&Sm::actionsActiveIs), 34);
  EXPECT_EQ(virtualSlotOf(&Sm::initializingIs), 35);
  EXPECT_EQ(virtualSlotOf(&Sm::initializedIs), 36);
  EXPECT_EQ(virtualSlotOf(&Sm::korDoZombieReactors), 37);
}

TEST(TestPolicyMapSm, ItsOperationsStandInTheirSlots) {
  using Sm = TestPolicyMapSm;
  EXPECT_EQ(virtualSlotOf(&Sm::hasNotificationActiveIs), 0);
  EXPECT_EQ(virtualSlotOf(&Sm::zeroReferencesIs), 4);
  EXPECT_EQ(virtualSlotOf(&Sm::fwkType), 5);
  EXPECT_EQ(virtualSlotOf(&Sm::createClassMapSm), 8);
  EXPECT_EQ(virtualSlotOf(&Sm::createCommonData), 9);
  EXPECT_EQ(virtualSlotOf(&Sm::handleActiveIntf), 10);
  EXPECT_EQ(virtualSlotOf(&Sm::cleanup), 11);
  EXPECT_EQ(virtualSlotOf(&Sm::handleInitialized), 12);
  EXPECT_EQ(virtualSlotOf(&Sm::policyMapIs), 13);
  EXPECT_EQ(virtualSlotOf(&Sm::classMapSmDel), 14);
  EXPECT_EQ(virtualSlotOf(&Sm::classMapSmNotify), 15);
  EXPECT_EQ(virtualSlotOf(&Sm::classMapSmIs), 16);
  EXPECT_EQ(virtualSlotOf(&Sm::activeIntfDel), 17);
  EXPECT_EQ(virtualSlotOf(&Sm::activeIntfNotify), 18);
  EXPECT_EQ(virtualSlotOf(&Sm::activeIntfIs), 19);
  EXPECT_EQ(virtualSlotOf(&Sm::policyCommonDataDel), 20);
  EXPECT_EQ(virtualSlotOf(&Sm::policyCommonDataIs), 21);
  EXPECT_EQ(virtualSlotOf(&Sm::prioClassDel), 22);
  EXPECT_EQ(virtualSlotOf(&Sm::prioClassNotify), 23);
  EXPECT_EQ(virtualSlotOf(&Sm::prioClassIs), 24);
  EXPECT_EQ(virtualSlotOf(&Sm::classPrioDel), 25);
  EXPECT_EQ(virtualSlotOf(&Sm::classPrioNotify), 26);
  EXPECT_EQ(virtualSlotOf(&Sm::classPrioIs), 27);
  EXPECT_EQ(virtualSlotOf(&Sm::timeProgrammedDel), 28);
  EXPECT_EQ(virtualSlotOf(&Sm::timeProgrammedNotify), 29);
  EXPECT_EQ(virtualSlotOf(&Sm::timeProgrammedIs), 30);
  EXPECT_EQ(virtualSlotOf(&Sm::actionsActiveIs), 31);
  EXPECT_EQ(virtualSlotOf(&Sm::initializedIs), 32);
  EXPECT_EQ(virtualSlotOf(&Sm::korDoZombieReactors), 33);
  EXPECT_EQ(virtualSlotOf(&Sm::policyMapConfigDel), 34);
  EXPECT_EQ(virtualSlotOf(&Sm::policyMapConfigIs), 35);
  EXPECT_EQ(virtualSlotOf(&Sm::classTypeConfigDel), 36);
  EXPECT_EQ(virtualSlotOf(&Sm::classTypeConfigIs), 37);
}

TEST(TestServicePolicySm, ItsHooksStandInTheirSlots) {
  using Sm = TestServicePolicySm;
  EXPECT_EQ(virtualSlotOf(&Sm::hasNotificationActiveIs), 0);
  EXPECT_EQ(virtualSlotOf(&Sm::zeroReferencesIs), 4);
  EXPECT_EQ(virtualSlotOf(&Sm::fwkType), 5);
  EXPECT_EQ(virtualSlotOf(&Sm::intfExists), 8);
  EXPECT_EQ(virtualSlotOf(&Sm::allowedIntf), 9);
  EXPECT_EQ(virtualSlotOf(&Sm::allowedIntfForType), 10);
  EXPECT_EQ(virtualSlotOf(&Sm::createPolicyMapSm), 11);
  EXPECT_EQ(virtualSlotOf(&Sm::createCommonData), 12);
  EXPECT_EQ(virtualSlotOf(&Sm::handlePolicyMap), 13);
  EXPECT_EQ(virtualSlotOf(&Sm::handlePolicyMapConfig), 14);
  EXPECT_EQ(virtualSlotOf(&Sm::handleIntf), 15);
  EXPECT_EQ(virtualSlotOf(&Sm::cleanup), 16);
  EXPECT_EQ(virtualSlotOf(&Sm::handleInitialized), 17);
}

TEST(TestServicePolicySm, ItsWritersFollowInTheirOrder) {
  using Sm = TestServicePolicySm;
  // The base may gain a writer before initializedIs, so only the order is fixed, not the numbers.
  std::vector<int> const slots{
      virtualSlotOf(&Sm::handleInitialized),   virtualSlotOf(&Sm::allowIpAclIs),
      virtualSlotOf(&Sm::allowIp6AclIs),       virtualSlotOf(&Sm::allowMacAclIs),
      virtualSlotOf(&Sm::commonDataDel),       virtualSlotOf(&Sm::commonDataIs),
      virtualSlotOf(&Sm::policyMapSmDel),      virtualSlotOf(&Sm::policyMapSmNotify),
      virtualSlotOf(&Sm::policyMapSmIs),       virtualSlotOf(&Sm::retryMinIs),
      virtualSlotOf(&Sm::retryMaxIs),          virtualSlotOf(&Sm::asyncTimeoutIs),
      virtualSlotOf(&Sm::initializedIs),       virtualSlotOf(&Sm::korDoZombieReactors),
      virtualSlotOf(&Sm::policyConfigDel),     virtualSlotOf(&Sm::policyConfigIs),
      virtualSlotOf(&Sm::classTypeConfigDel),  virtualSlotOf(&Sm::classTypeConfigIs),
      virtualSlotOf(&Sm::statusRequestDirDel), virtualSlotOf(&Sm::statusRequestDirIs),
      virtualSlotOf(&Sm::aclConfigDel),        virtualSlotOf(&Sm::aclConfigIs),
      virtualSlotOf(&Sm::lagConfigDel),        virtualSlotOf(&Sm::lagConfigIs),
      virtualSlotOf(&Sm::ipStatusDel),         virtualSlotOf(&Sm::ipStatusIs),
      virtualSlotOf(&Sm::ip6StatusDel),        virtualSlotOf(&Sm::ip6StatusIs),
      virtualSlotOf(&Sm::routingInfoDel),      virtualSlotOf(&Sm::routingInfoIs),
      virtualSlotOf(&Sm::routing6InfoDel),     virtualSlotOf(&Sm::routing6InfoIs),
      virtualSlotOf(&Sm::aclHelperDel),        virtualSlotOf(&Sm::aclHelperIs)};
  for (std::size_t i = 1; i < slots.size(); ++i) {
    EXPECT_LT(slots[i - 1], slots[i]) << i;
  }
}

TEST(TestServicePolicySm, ItsOwnWritersAreNotVirtual) {
  EXPECT_EQ(virtualSlotOf(&TestServicePolicySm::nonexistentIntfIs), -1);
  EXPECT_EQ(virtualSlotOf(&TestServicePolicySm::nonexistentIntfDel), -1);
  EXPECT_EQ(virtualSlotOf(&TestServicePolicySm::nonexistentIntfNotify), -1);
}

}  // namespace
