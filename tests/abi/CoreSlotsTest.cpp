// SPDX-License-Identifier: Apache-2.0

// The slot of each virtual function in the table of its class. Binary consumers depend on these
// numbers.

#include "support/VirtualSlot.h"

#include <PolicyMap/Action.h>
#include <PolicyMap/ActionSm.h>
#include <PolicyMap/ClassMapSm.h>
#include <PolicyMap/ClassMapSmCommonData.h>
#include <PolicyMap/PolicyMapAclHelper.h>
#include <PolicyMap/PolicyMapSm.h>
#include <PolicyMap/ServicePolicySm.h>

#include <gmock/gmock.h>

#include <vector>

namespace {

using PolicyMap::Action;
using PolicyMap::ActionSm;
using PolicyMap::ActionType;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::ClassMapSm;
using PolicyMap::ClassMapSmCommonData;
using PolicyMap::PolicyMapAclHelper;
using PolicyMap::PolicyMapSm;
using PolicyMap::ServicePolicySm;
using testing::ElementsAreArray;
using TestSupport::virtualSlotOf;

template <class... Members>
std::vector<int> slotsOf(Members... members) {
  return {virtualSlotOf(members)...};
}

std::vector<int> consecutive(int first, std::size_t count) {
  std::vector<int> slots;
  for (std::size_t i = 0; i < count; ++i) {
    slots.push_back(first + static_cast<int>(i));
  }
  return slots;
}

// The slots are first, first + 1, ... in the given order.
#define EXPECT_SLOTS_FROM(first, ...)                                       \
  do {                                                                      \
    std::vector<int> const slots = slotsOf(__VA_ARGS__);                    \
    EXPECT_THAT(slots, ElementsAreArray(consecutive(first, slots.size()))); \
  } while (false)

// The slots with which every class begins.
template <class T>
void expectRootSlots() {
  EXPECT_EQ(virtualSlotOf(&T::hasNotificationActiveIs), 0);
  EXPECT_EQ(virtualSlotOf(&T::korAuditErrors), 1);
  EXPECT_EQ(virtualSlotOf(&T::auditErrors), 2);
  EXPECT_EQ(virtualSlotOf(&T::isNondestructingIs), 3);
  EXPECT_EQ(virtualSlotOf(&T::zeroReferencesIs), 4);
  EXPECT_EQ(virtualSlotOf(&T::fwkType), 5);
}

TEST(Slots, EveryBaseClassBeginsWithThoseOfTheRoot) {
  expectRootSlots<PolicyMapAclHelper>();
  expectRootSlots<ClassMapSmCommonData>();
  expectRootSlots<Action>();
  expectRootSlots<ActionSm>();
  expectRootSlots<ClassMapSm>();
  expectRootSlots<PolicyMapSm>();
  expectRootSlots<ServicePolicySm>();
}

TEST(Slots, OfTheHelper) {
  using H = PolicyMapAclHelper;
  EXPECT_SLOTS_FROM(8, &H::hwInit, &H::createPolicy, &H::recreatePolicy, &H::deletePolicy,
                    &H::commitPolicy, &H::addIntfToPolicy, &H::removeIntfFromPolicy, &H::addRule,
                    &H::beginUpdateActions, &H::updateAction, &H::endUpdateActions,
                    &H::getCountForRule, &H::showAclRule, &H::showAclSummary,
                    &H::updateActionSupportedIs, &H::reprogramPolicyOnIntfChangeIs,
                    &H::expandPortChannelsIs, &H::denyRulesAllowedIs, &H::ttlSupportedIs,
                    &H::onlyTtlEqSupportedIs, &H::ackOrRstSupportedIs, &H::establishedSupportedIs,
                    &H::subRulesForL4PortsIs, &H::asyncOperationsIs, &H::asyncOperationResultIs);
}

TEST(Slots, OfTheClassCommonData) {
  using D = ClassMapSmCommonData;
  EXPECT_SLOTS_FROM(8, &D::classMapIs, &D::classMapStatusIs, &D::actionDel, &D::actionNotify,
                    &D::actionIs, &D::updateAclActionsInc, &D::updateAclActionsIs);
}

TEST(Slots, OfTheCommonDataAreNoneForWhatIsNotVirtual) {
  using D = ClassMapSmCommonData;
  EXPECT_EQ(virtualSlotOf(&D::getIpRule), -1);
  EXPECT_EQ(virtualSlotOf(&D::getIp6Rule), -1);
  EXPECT_EQ(virtualSlotOf(&D::getMacRule), -1);
  EXPECT_EQ(virtualSlotOf(&D::newAction), -1);
  EXPECT_EQ(virtualSlotOf(&D::actionDelAll), -1);
}

TEST(Slots, OfAnActionEndWithTheComparison) {
  EXPECT_EQ(virtualSlotOf(&Action::attributeString), 8);
  EXPECT_SLOTS_FROM(9, &Action::attributeLogReaderIs, &Action::attributeLogReaderDel,
                    &Action::equalTo);
}

TEST(Slots, OfTheActionMachine) {
  using M = ActionSm;
  EXPECT_SLOTS_FROM(8, &M::cleanup, &M::handleAction, &M::handleInitialized, &M::actionDel,
                    &M::actionIs, &M::initializedIs, &M::korDoZombieReactors);
}

TEST(Slots, OfTheClassMachine) {
  using M = ClassMapSm;
  EXPECT_SLOTS_FROM(8, static_cast<void (M::*)(ActionType)>(&M::handleAction),
                    static_cast<void (M::*)()>(&M::handleAction),
                    static_cast<void (M::*)(ClassMapMatchOption)>(&M::handleMatch),
                    static_cast<void (M::*)()>(&M::handleMatch), &M::createMatchSm,
                    &M::createActionSm, &M::createCommonData, &M::createClassMapStatus,
                    &M::handleInitialized, &M::cleanup, &M::classMapConfigDel, &M::classMapConfigIs,
                    &M::rawClassMapSubConfigDel, &M::rawClassMapSubConfigIs, &M::classActionDel,
                    &M::classActionIs, &M::classMapIs, &M::classCommonDataDel,
                    &M::classCommonDataIs, &M::classMapStatusIs, &M::classMapMatchSmDel,
                    &M::classMapMatchSmNotify, &M::classMapMatchSmIs, &M::actionSmDel,
                    &M::actionSmNotify, &M::actionSmIs, &M::actionsActiveIs, &M::initializingIs,
                    &M::initializedIs, &M::korDoZombieReactors);
}

TEST(Slots, OfThePolicyMachine) {
  using M = PolicyMapSm;
  EXPECT_SLOTS_FROM(8, &M::createClassMapSm, &M::createCommonData, &M::handleActiveIntf,
                    &M::cleanup, &M::handleInitialized, &M::policyMapIs, &M::classMapSmDel,
                    &M::classMapSmNotify, &M::classMapSmIs, &M::activeIntfDel, &M::activeIntfNotify,
                    &M::activeIntfIs, &M::policyCommonDataDel, &M::policyCommonDataIs,
                    &M::prioClassDel, &M::prioClassNotify, &M::prioClassIs, &M::classPrioDel,
                    &M::classPrioNotify, &M::classPrioIs, &M::timeProgrammedDel,
                    &M::timeProgrammedNotify, &M::timeProgrammedIs, &M::actionsActiveIs,
                    &M::initializedIs, &M::korDoZombieReactors, &M::policyMapConfigDel,
                    &M::policyMapConfigIs, &M::classTypeConfigDel, &M::classTypeConfigIs);
}

TEST(Slots, OfTheServicePolicyMachine) {
  using M = ServicePolicySm;
  EXPECT_SLOTS_FROM(
      8, &M::intfExists, &M::allowedIntf, &M::allowedIntfForType, &M::createPolicyMapSm,
      &M::createCommonData, &M::handlePolicyMap, &M::handlePolicyMapConfig, &M::handleIntf,
      &M::cleanup, &M::handleInitialized, &M::allowIpAclIs, &M::allowIp6AclIs, &M::allowMacAclIs,
      &M::commonDataDel, &M::commonDataIs, &M::policyMapSmDel, &M::policyMapSmNotify,
      &M::policyMapSmIs, &M::retryMinIs, &M::retryMaxIs, &M::asyncTimeoutIs, &M::initializedIs,
      &M::korDoZombieReactors, &M::policyConfigDel, &M::policyConfigIs, &M::classTypeConfigDel,
      &M::classTypeConfigIs, &M::statusRequestDirDel, &M::statusRequestDirIs, &M::aclConfigDel,
      &M::aclConfigIs, &M::lagConfigDel, &M::lagConfigIs, &M::ipStatusDel, &M::ipStatusIs,
      &M::ip6StatusDel, &M::ip6StatusIs, &M::routingInfoDel, &M::routingInfoIs, &M::routing6InfoDel,
      &M::routing6InfoIs, &M::aclHelperDel, &M::aclHelperIs);
  EXPECT_EQ(virtualSlotOf(&M::memberIntfs), -1);
  EXPECT_EQ(virtualSlotOf(&M::effectiveIntfs), -1);
}

TEST(Slots, OfNotifieesAddTheirHooksBehindTheInheritedOnes) {
  int const inherited = virtualSlotOf(&Kor::NotifieeBase::onNotificationException);
  using D = ClassMapSmCommonData::NotifieeConst;
  EXPECT_SLOTS_FROM(inherited + 1, &D::onClassMap, &D::onClassMapStatus, &D::onAction,
                    &D::onUpdateAclActions);
  using H = PolicyMapAclHelper::NotifieeConst;
  EXPECT_SLOTS_FROM(inherited + 1, &H::onUpdateActionSupported, &H::onReprogramPolicyOnIntfChange,
                    &H::onExpandPortChannels, &H::onDenyRulesAllowed, &H::onTtlSupported,
                    &H::onOnlyTtlEqSupported, &H::onAckOrRstSupported, &H::onEstablishedSupported,
                    &H::onSubRulesForL4Ports, &H::onAsyncOperations, &H::onAsyncOperationResult);
}

}  // namespace
