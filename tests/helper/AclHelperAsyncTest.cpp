// SPDX-License-Identifier: Apache-2.0

// Asynchronous results of the helper.

#include "helper/HelperFixture.h"

#include <Kor/EventLoop.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace {

using PolicyMap::AsyncOperationResult;
using PolicyMapTest::AclHelper;
using testing::ElementsAre;
using testing::IsEmpty;

// Records what is delivered through its own override.
class DeliveringHelper : public AclHelper {
 public:
  using AclHelper::AclHelper;
  std::vector<std::string> delivered;

  void asyncOperationResultIs(AsyncOperationResult const& result) override {
    delivered.push_back(result.error().stdString() + " at " + std::to_string(result.time()));
    AclHelper::asyncOperationResultIs(result);
  }
};

class AclHelperAsync : public HelperFixture {
 protected:
  AclHelperAsync() {
    Kor::EventLoop::global().virtualTimeIs(true);
    helper = delivering;
    helper->asyncOperationsIs(true);
    helper->newTestData(type(Option::ipv4));
  }
  ~AclHelperAsync() override { Kor::EventLoop::global().virtualTimeIs(false); }

  static void pass(double seconds) { Kor::EventLoop::global().runFor(seconds); }

  Kor::Ptr<DeliveringHelper> delivering = Kor::make<DeliveringHelper>(false, false);
  std::vector<std::string>& delivered = delivering->delivered;
};

TEST_F(AclHelperAsync, TheThreeOperationsAnswerEmptyAndKeepTheirTextPending) {
  helper->commitErrorIs("c");
  helper->addIntfErrorIs("a");
  helper->removeIntfErrorIs("r");
  EXPECT_EQ(helper->commitPolicy(policy, Option::ipv4), "");
  EXPECT_EQ(helper->asyncError(), "c");
  EXPECT_EQ(record(Option::ipv4)->commitCount(), 1U);
  EXPECT_EQ(helper->addIntfToPolicy(policy, e1, Option::ipv4), "");
  EXPECT_EQ(helper->asyncError(), "a");
  EXPECT_TRUE(record(Option::ipv4)->intf(e1));
  EXPECT_EQ(helper->removeIntfFromPolicy(policy, e1, Option::ipv4), "");
  EXPECT_EQ(helper->asyncError(), "r");
  EXPECT_FALSE(record(Option::ipv4)->intf(e1));
  EXPECT_THAT(delivered, IsEmpty());
}

TEST_F(AclHelperAsync, ATriggerDeliversThePendingTextWithThePresentTime) {
  helper->commitErrorIs("e");
  helper->commitPolicy(policy, Option::ipv4);
  pass(2.5);
  EXPECT_EQ(helper->asyncTriggerInc(1), 1U);
  EXPECT_THAT(delivered, ElementsAre("e at 2.500000"));
  EXPECT_EQ(helper->asyncOperationResult(), AsyncOperationResult("e", 2.5));
  EXPECT_EQ(helper->asyncError(), "e");
}

TEST_F(AclHelperAsync, TheTimeIsThatOfTheDeliveryNotOfTheOperation) {
  pass(1);
  helper->commitPolicy(policy, Option::ipv4);
  pass(3);
  helper->asyncTriggerIs(9);
  EXPECT_THAT(delivered, ElementsAre(" at 4.000000"));
}

TEST_F(AclHelperAsync, TheSameTriggerDeliversNothing) {
  helper->asyncTriggerIs(5);
  delivered.clear();
  watched();
  helper->asyncTriggerIs(5);
  EXPECT_EQ(helper->asyncTriggerInc(0), 5U);
  EXPECT_THAT(delivered, IsEmpty());
  EXPECT_THAT(journal, IsEmpty());
}

TEST_F(AclHelperAsync, ATriggerIsStoredThenDeliversThenIsAnnounced) {
  auto& watcher = watched();
  std::vector<std::uint32_t> seen;
  watcher.reactionIs([&] { seen.push_back(helper->asyncTrigger()); });
  helper->asyncTriggerIs(6);
  EXPECT_THAT(journal, ElementsAre("w: result", "w: asyncTrigger"));
  EXPECT_THAT(seen, ElementsAre(6, 6));
  EXPECT_THAT(delivered.size(), 1U);
}

TEST_F(AclHelperAsync, AnIncrementDeliversAndAnnouncesLikeAWrite) {
  watched();
  EXPECT_EQ(helper->asyncTriggerInc(3), 3U);
  EXPECT_EQ(helper->asyncTrigger(), 3U);
  EXPECT_THAT(journal, ElementsAre("w: result", "w: asyncTrigger"));
}

TEST_F(AclHelperAsync, AnIncrementWraps) {
  helper->asyncTriggerIs(std::numeric_limits<std::uint32_t>::max());
  delivered.clear();
  EXPECT_EQ(helper->asyncTriggerInc(1), 0U);
  EXPECT_EQ(helper->asyncTrigger(), 0U);
  EXPECT_THAT(delivered, ElementsAre(" at 0.000000"));
}

TEST_F(AclHelperAsync, ATriggerWithNothingScheduledDeliversTheEmptyText) {
  helper->asyncTriggerIs(1);
  EXPECT_THAT(delivered, ElementsAre(" at 0.000000"));
}

TEST_F(AclHelperAsync, TwoTriggersDeliverTheSameTextTwiceAndEachIsHeard) {
  helper->scheduleAsyncResult("t");
  watched();
  helper->asyncTriggerInc(1);
  helper->asyncTriggerInc(1);
  EXPECT_THAT(delivered, ElementsAre("t at 0.000000", "t at 0.000000"));
  EXPECT_THAT(journal, ElementsAre("w: result", "w: asyncTrigger", "w: result", "w: asyncTrigger"));
}

TEST_F(AclHelperAsync, SchedulingTwiceKeepsTheSecondText) {
  helper->scheduleAsyncResult("one");
  helper->scheduleAsyncResult("two");
  helper->asyncTriggerInc(1);
  EXPECT_THAT(delivered, ElementsAre("two at 0.000000"));
}

TEST_F(AclHelperAsync, SchedulingAnnouncesThePendingTextWhenItChanges) {
  watched();
  helper->scheduleAsyncResult("t");
  helper->scheduleAsyncResult("t");
  EXPECT_THAT(journal, ElementsAre("w: asyncError"));
  EXPECT_THAT(delivered, IsEmpty());
}

TEST_F(AclHelperAsync, WritingThePendingTextDeliversNothing) {
  helper->pseudoAsyncIs(true);
  helper->asyncErrorIs("x");
  EXPECT_THAT(delivered, IsEmpty());
}

TEST_F(AclHelperAsync, PseudoAsynchronousResultsComeInsideTheOperation) {
  helper->pseudoAsyncIs(true);
  helper->addIntfErrorIs("x");
  pass(1);
  EXPECT_EQ(helper->addIntfToPolicy(policy, e1, Option::ipv4), "");
  EXPECT_THAT(delivered, ElementsAre("x at 1.000000"));
  helper->commitErrorIs("c");
  EXPECT_EQ(helper->commitPolicy(policy, Option::ipv4), "");
  helper->removeIntfErrorIs("r");
  EXPECT_EQ(helper->removeIntfFromPolicy(policy, e1, Option::ipv4), "");
  EXPECT_THAT(delivered, ElementsAre("x at 1.000000", "c at 1.000000", "r at 1.000000"));
}

TEST_F(AclHelperAsync, PseudoAsynchronousResultsFollowTheAnnouncementOfTheText) {
  helper->pseudoAsyncIs(true);
  watched();
  helper->scheduleAsyncResult("x");
  EXPECT_THAT(journal, ElementsAre("w: asyncError", "w: result"));
}

TEST_F(AclHelperAsync, TheModeIsReadAfterTheAnnouncementOfTheText) {
  auto& watcher = watched();
  watcher.reactionIs([&] {
    watcher.reactionIs({});
    helper->pseudoAsyncIs(true);
  });
  helper->scheduleAsyncResult("x");
  EXPECT_THAT(delivered, ElementsAre("x at 0.000000"));
}

TEST_F(AclHelperAsync, WhetherToWaitIsReadAfterTheRecording) {
  auto& watcher = watched();
  watcher.reactionIs([&] { helper->asyncOperationsIs(false); });
  helper->addIntfErrorIs("x");
  helper->asyncOperationsIs(true);
  EXPECT_EQ(helper->addIntfToPolicy(policy, e1, Option::ipv6), "x");
}

TEST_F(AclHelperAsync, TurningPseudoAsynchronousDeliversNoPendingText) {
  helper->commitErrorIs("e");
  helper->commitPolicy(policy, Option::ipv4);
  helper->pseudoAsyncIs(true);
  EXPECT_THAT(delivered, IsEmpty());
  helper->asyncTriggerInc(1);
  EXPECT_THAT(delivered, ElementsAre("e at 0.000000"));
}

TEST_F(AclHelperAsync, WithoutAsynchronousOperationsNothingIsScheduled) {
  helper->asyncOperationsIs(false);
  helper->pseudoAsyncIs(true);
  helper->commitErrorIs("c");
  EXPECT_EQ(helper->commitPolicy(policy, Option::ipv4), "c");
  EXPECT_EQ(helper->asyncError(), "");
  EXPECT_THAT(delivered, IsEmpty());
}

TEST_F(AclHelperAsync, DeliveringByHandLeavesTheTrigger) {
  helper->asyncErrorIs("x");
  watched();
  helper->handleAsyncTrigger();
  EXPECT_THAT(delivered, ElementsAre("x at 0.000000"));
  EXPECT_THAT(journal, ElementsAre("w: result"));
  EXPECT_EQ(helper->asyncTrigger(), 0U);
}

TEST_F(AclHelperAsync, ATriggerOutlivesWhoeverDropsTheHelperOnTheResult) {
  auto& watcher = watched();
  std::vector<std::string> const& heard = journal;
  watcher.reactionIs([&] {
    watcher.reactionIs({});
    helper = nullptr;
    delivering = nullptr;
  });
  AclHelper* const dying = helper.get();
  dying->asyncTriggerIs(1);
  EXPECT_THAT(heard, ElementsAre("w: result", "w: asyncTrigger", "w: testData pm"));
}

TEST_F(AclHelperAsync, SchedulingOutlivesWhoeverDropsTheHelperOnTheText) {
  helper->pseudoAsyncIs(true);
  auto& watcher = watched();
  watcher.reactionIs([&] {
    watcher.reactionIs({});
    helper = nullptr;
    delivering = nullptr;
  });
  AclHelper* const dying = helper.get();
  dying->scheduleAsyncResult("x");
  EXPECT_THAT(journal, ElementsAre("w: asyncError", "w: result", "w: testData pm"));
}

TEST_F(AclHelperAsync, ATriggerInsideAnAnnouncementDeliversAgain) {
  auto& watcher = watched();
  watcher.reactionIs([&] {
    watcher.reactionIs({});
    helper->asyncTriggerInc(1);
  });
  EXPECT_EQ(helper->asyncTriggerInc(1), 1U);
  EXPECT_EQ(helper->asyncTrigger(), 2U);
  EXPECT_EQ(delivered.size(), 2U);
}

}  // namespace
