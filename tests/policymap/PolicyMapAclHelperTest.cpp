// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"
#include "support/Watcher.h"

#include <PolicyMap/PolicyMapAclHelper.h>

#include <gmock/gmock.h>

namespace policymap {
namespace {

using PolicyMap::AsyncOperationResult;
using PolicyMap::PolicyMapAclHelper;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::Journal;
using TestSupport::Watcher;

class HelperWatcher : public Watcher<PolicyMapAclHelper::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onUpdateActionSupported() override { heard("updateActionSupported"); }
  void onReprogramPolicyOnIntfChange() override { heard("reprogramPolicyOnIntfChange"); }
  void onExpandPortChannels() override { heard("expandPortChannels"); }
  void onDenyRulesAllowed() override { heard("denyRulesAllowed"); }
  void onTtlSupported() override { heard("ttlSupported"); }
  void onOnlyTtlEqSupported() override { heard("onlyTtlEqSupported"); }
  void onAckOrRstSupported() override { heard("ackOrRstSupported"); }
  void onEstablishedSupported() override { heard("establishedSupported"); }
  void onSubRulesForL4Ports() override { heard("subRulesForL4Ports"); }
  void onAsyncOperations() override { heard("asyncOperations"); }
  void onAsyncOperationResult() override { heard("asyncOperationResult"); }
};

class Helper : public testing::Test {
 protected:
  Kor::Ptr<CallLog> helper = Kor::make<CallLog>();
  Journal journal;
};

TEST_F(Helper, AcceptsEveryValidRuleAndAnswersAtOnceAtFirst) {
  EXPECT_FALSE(helper->updateActionSupported());
  EXPECT_FALSE(helper->reprogramPolicyOnIntfChange());
  EXPECT_FALSE(helper->expandPortChannels());
  EXPECT_TRUE(helper->denyRulesAllowed());
  EXPECT_TRUE(helper->ttlSupported());
  EXPECT_FALSE(helper->onlyTtlEqSupported());
  EXPECT_TRUE(helper->ackOrRstSupported());
  EXPECT_TRUE(helper->establishedSupported());
  EXPECT_FALSE(helper->subRulesForL4Ports());
  EXPECT_FALSE(helper->asyncOperations());
  EXPECT_EQ(helper->asyncOperationResult(), AsyncOperationResult("", 0));
}

TEST_F(Helper, EachCapabilityAnnouncesItsOwnChange) {
  auto const watcher = Kor::make<HelperWatcher>(journal, "w", helper.get());
  for (int round = 0; round < 2; ++round) {
    helper->updateActionSupportedIs(true);
    helper->reprogramPolicyOnIntfChangeIs(true);
    helper->expandPortChannelsIs(true);
    helper->denyRulesAllowedIs(false);
    helper->ttlSupportedIs(false);
    helper->onlyTtlEqSupportedIs(true);
    helper->ackOrRstSupportedIs(false);
    helper->establishedSupportedIs(false);
    helper->subRulesForL4PortsIs(true);
    helper->asyncOperationsIs(true);
  }
  EXPECT_THAT(journal, ElementsAre("w: updateActionSupported", "w: reprogramPolicyOnIntfChange",
                                   "w: expandPortChannels", "w: denyRulesAllowed",
                                   "w: ttlSupported", "w: onlyTtlEqSupported",
                                   "w: ackOrRstSupported", "w: establishedSupported",
                                   "w: subRulesForL4Ports", "w: asyncOperations"));
  EXPECT_TRUE(helper->updateActionSupported() && helper->subRulesForL4Ports());
  EXPECT_FALSE(helper->denyRulesAllowed() || helper->ttlSupported());
}

TEST_F(Helper, EveryResultIsAnnouncedAlsoAnEqualOne) {
  auto const watcher = Kor::make<HelperWatcher>(journal, "w", helper.get());
  helper->asyncOperationResultIs({"busy", 1});
  helper->asyncOperationResultIs({"busy", 1});
  helper->asyncOperationResultIs({});
  EXPECT_EQ(journal.size(), 3U);
  EXPECT_THAT(journal, Each("w: asyncOperationResult"));
  EXPECT_EQ(helper->asyncOperationResult(), AsyncOperationResult());
}

TEST_F(Helper, AHookMayGiveUpTheHelperThatAnnouncesAResult) {
  auto const watcher = Kor::make<HelperWatcher>(journal, "w", helper.get());
  watcher->reactionIs([this] { helper = nullptr; });
  CallLog* const announced = helper.get();
  announced->asyncOperationResultIs({"busy", 1});
  EXPECT_EQ(journal.size(), 1U);
  EXPECT_FALSE(watcher->registered());
}

TEST_F(Helper, AnExceptionOfAHookReachesItsOwnHandlerWithTheAttribute) {
  auto const watcher = Kor::make<HelperWatcher>(journal, "w", helper.get());
  watcher->reactionIs([] { throw 5; });
  helper->denyRulesAllowedIs(false);
  helper->asyncOperationResultIs({});
  EXPECT_THAT(journal, ElementsAre("w: denyRulesAllowed", "w: caught int 5 of 133",
                                   "w: asyncOperationResult", "w: caught int 5 of 140"));
  EXPECT_FALSE(helper->denyRulesAllowed());
}

TEST_F(Helper, HasNothingToShow) {
  EXPECT_EQ(helper->showAclRule({"c", "a", 10, ClassMapMatchOption::ipv4}), "");
  EXPECT_EQ(helper->showAclSummary(), "");
}

TEST_F(Helper, IsInitialisedOnceWhateverNumberOfMachinesUsesIt) {
  PolicyBench first;
  first.helper = helper;
  first.start();
  PolicyBench second;
  second.helper = helper;
  second.start();
  first.machine->aclHelperDel();
  first.machine->aclHelperIs(helper);
  EXPECT_THAT(helper->taken(), ElementsAre("hwInit"));
}

TEST_F(Helper, GivenToAQuietMachineIsInitialisedWhenThatIsActivated) {
  PolicyBench bench;
  bench.helper = nullptr;
  bench.start();
  bench.machine->hasNotificationActiveIs(false);
  bench.machine->aclHelperIs(helper);
  EXPECT_THAT(helper->taken(), IsEmpty());
  bench.machine->hasNotificationActiveIs(true);
  EXPECT_THAT(helper->taken(), ElementsAre("hwInit"));
}

}  // namespace
}  // namespace policymap
