// SPDX-License-Identifier: Apache-2.0

// Asynchronous results that are held, delayed, dropped or delivered twice.

#include "testkit/Labs.h"
#include "testkit/Matchers.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace PolicyMapTestKit::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// Both kinds of asynchronous helper.
class HeldResults : public testing::TestWithParam<bool> {
 protected:
  static LabOptions options() { return {.async = true, .pseudoAsync = GetParam()}; }
  // Delivers what is not held, if nothing delivers it by itself.
  static void triggerAll(Lab& lab) {
    for (int i = 0; !GetParam() && i != 5; ++i) {
      lab.trigger();
    }
  }
};

TEST_P(HeldResults, ArriveWhenTheyAreReleased) {
  Lab lab(options());
  FaultScope const faults = lab.plan("addIntfToPolicy hold");
  load(lab, simplePolicy);
  ASSERT_THAT(lab.heldResults(), SizeIs(1));
  EXPECT_EQ(lab.heldResults()[0].call, "addIntfToPolicy(P/input ipv4 Ethernet1)");
  triggerAll(lab);
  EXPECT_THAT(lab.journal().calls("commitPolicy"), IsEmpty()) << "a trigger does not release it";
  lab.release();
  triggerAll(lab);
  EXPECT_THAT(lab.record("P"), Programmed());
  EXPECT_THAT(lab.heldResults(), IsEmpty());
  EXPECT_THROW(lab.release(), std::out_of_range);
}

TEST_P(HeldResults, MayFail) {
  Lab lab(options());
  FaultScope const faults = lab.plan("addIntfToPolicy hold once text=\"no port\"");
  load(lab, simplePolicy);
  EXPECT_EQ(lab.heldResults().at(0).error, "no port");
  lab.release();
  EXPECT_EQ(lab.failure("P").error(), "no port");
}

TEST_P(HeldResults, AreNumberedAndReleasedInAnyOrder) {
  Lab lab(options());
  FaultScope const faults = lab.plan("addIntfToPolicy hold first=2");
  load(lab, simplePolicy);
  lab.advance(std::chrono::seconds(32));  // the core gives up, and tries again
  ASSERT_THAT(lab.heldResults(), SizeIs(2));
  EXPECT_THROW(lab.release(3), std::out_of_range);
  lab.release(2);
  triggerAll(lab);
  EXPECT_THAT(lab.record("P"), Programmed());
  lab.release(1);
  EXPECT_THAT(lab.record("P"), Programmed()) << "a late result concerns nobody";
}

TEST_P(HeldResults, AreReleasedTogether) {
  Lab lab(options());
  FaultScope const faults = lab.plan("addIntfToPolicy hold first=2");
  load(lab, simplePolicy);
  lab.advance(std::chrono::seconds(32));
  lab.releaseAll();
  EXPECT_THAT(lab.heldResults(), IsEmpty());
}

TEST_P(HeldResults, DroppedOnesNeverArrive) {
  Lab lab(options());
  FaultScope const faults = lab.plan("commitPolicy drop once");
  load(lab, simplePolicy);
  triggerAll(lab);
  EXPECT_EQ(lab.failure("P"), PolicyMap::PolicyFailure());
  lab.advance(std::chrono::seconds(30));
  EXPECT_EQ(lab.failure("P").error(), "no result within 30 seconds");
}

TEST_P(HeldResults, DelayedOnesArriveInTime) {
  Lab lab(options());
  FaultScope const faults =
      lab.plan("addIntfToPolicy delay=2; commitPolicy delay=3 once text=full");
  load(lab, simplePolicy);
  triggerAll(lab);
  lab.advance(std::chrono::milliseconds(1999));
  EXPECT_THAT(lab.journal().calls("commitPolicy"), IsEmpty());
  lab.advance(std::chrono::milliseconds(1));
  EXPECT_THAT(lab.journal().calls("commitPolicy"), SizeIs(1));
  lab.advance(std::chrono::seconds(3));
  EXPECT_EQ(lab.failure("P").error(), "full");
}

TEST_P(HeldResults, DelayedLongerThanTheCoreWaitsTheyAreTooLate) {
  Lab lab(options());
  FaultScope const faults = lab.plan("commitPolicy delay=40 once");
  load(lab, simplePolicy);
  triggerAll(lab);
  lab.advance(std::chrono::seconds(35));
  triggerAll(lab);
  EXPECT_THAT(lab.record("P"), Programmed());
  EXPECT_EQ(lab.record("P").createCount, 2U);
  lab.advance(std::chrono::seconds(10));
  EXPECT_THAT(lab.record("P"), Programmed());
}

TEST_P(HeldResults, DuplicatesArriveTwice) {
  Lab lab(options());
  FaultScope const faults = lab.plan("commitPolicy duplicate once");
  load(lab, simplePolicy);
  triggerAll(lab);
  EXPECT_THAT(lab.record("P"), Programmed());
  std::vector<std::string> after;
  bool committed = false;
  for (JournalEntry const& entry : lab.journal()) {
    committed = committed || entry.operation == "commitPolicy";
    if (committed && entry.kind == JournalEntry::Kind::result) {
      after.push_back(entry.describe());
    }
  }
  after.resize(2);
  EXPECT_THAT(after, ElementsAre("result: done", "result: done"));
}

TEST_P(HeldResults, AFaultWithoutAnEffectOnResultsFailsTheResult) {
  for (char const* const how : {"", " after"}) {
    Lab lab(options());
    FaultScope const faults = lab.plan(std::string("commitPolicy once text=full") + how);
    load(lab, simplePolicy);
    triggerAll(lab);
    EXPECT_EQ(lab.failure("P").error(), "full") << how;
    EXPECT_EQ(lab.journal().calls("commitPolicy").begin()->error, "") << "accepted";
  }
}

TEST_P(HeldResults, BeforeIsRefusedAtOnce) {
  Lab lab(options());
  FaultScope const faults = lab.plan("addIntfToPolicy before once text=full");
  load(lab, simplePolicy);
  EXPECT_EQ(lab.failure("P").error(), "full");
  EXPECT_EQ(lab.journal().calls("addIntfToPolicy").begin()->error, "full");
}

INSTANTIATE_TEST_SUITE_P(Results, HeldResults, testing::Bool(), [](auto const& mode) {
  return mode.param ? "PseudoAsynchronous" : "Asynchronous";
});

TEST(Results, OfASynchronousHelperCannotBeHeld) {
  CollectedFindings const findings;
  Lab lab;
  FaultScope faults = lab.plan("commitPolicy hold");
  load(lab, simplePolicy);
  EXPECT_THAT(lab.record("P"), Programmed());
  faults.end();
  EXPECT_THAT(findings.all(), SizeIs(1)) << "the fault was not met";
}

TEST(Results, ArriveByThemselvesAfterADelay) {
  for (double const seconds : {0.0, 0.5}) {
    Lab lab({.async = true, .asyncDelay = seconds});
    load(lab, simplePolicy);
    lab.advance(std::chrono::duration<double>(2 * seconds));
    EXPECT_THAT(lab.record("P"), Programmed());
    EXPECT_EQ(lab.journal().calls("commitPolicy").begin()->time, seconds);
  }
}

TEST(Results, DuplicatesArriveAfterTheUsualDelay) {
  Lab lab({.async = true, .asyncDelay = 0.5});
  FaultScope const faults = lab.plan("commitPolicy duplicate once");
  load(lab, simplePolicy);
  lab.advance(std::chrono::seconds(1));
  EXPECT_THAT(lab.record("P"), Programmed());
  auto const results =
      std::count_if(lab.journal().begin(), lab.journal().end(), [](JournalEntry const& entry) {
        return entry.kind == JournalEntry::Kind::result;
      });
  EXPECT_EQ(results, 3) << "one of the interface, two of the commit";
}

TEST(Results, AreNotDelayedAfterTheEndOfTheLab) {
  Kor::Ptr<PolicyMapTest::AclHelper> helper;
  PolicyMap::PolicyMapSmCommonData::PtrConst policy;
  {
    Lab lab({.async = true, .asyncDelay = 0});
    load(lab, simplePolicy);
    helper = lab.helper();
    policy = lab.machine()->policyMapSm({"P", "input"})->policyCommonData();
  }
  helper->commitErrorIs("late");
  helper->commitPolicy(policy, PolicyMap::ClassMapMatchOption::ipv4);
  helper->asyncTriggerInc(1);
  EXPECT_EQ(helper->asyncOperationResult().error(), "late");
}

TEST(Results, AFaultChangesTheUsualDelay) {
  Lab lab({.async = true, .asyncDelay = 0});
  FaultScope const faults = lab.plan("addIntfToPolicy hold; commitPolicy once text=full");
  load(lab, simplePolicy);
  lab.release();
  EXPECT_EQ(lab.failure("P").error(), "full");
}

}  // namespace
}  // namespace PolicyMapTestKit::test
