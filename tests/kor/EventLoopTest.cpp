// SPDX-License-Identifier: Apache-2.0
#include <Kor/EventLoop.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Task : public Kor::Activity {
 public:
  Task(Kor::EventLoop& loop, std::function<void()> work) : Activity(loop), work_(std::move(work)) {}

 protected:
  void run() override {
    auto const work = work_;  // the call may destroy this task
    work();
  }

 private:
  std::function<void()> work_;
};

class VirtualLoop : public testing::Test {
 protected:
  VirtualLoop() { loop_.virtualTimeIs(true); }

  // A task that records its name and the time.
  std::unique_ptr<Task> noting(std::string name) {
    return std::make_unique<Task>(loop_, [this, name = std::move(name)] { note(name); });
  }
  void note(std::string const& name) {
    std::string time = std::to_string(loop_.now());
    ran_.push_back(name + "@" + time.substr(0, time.find('.') + 2));
  }

  Kor::EventLoop loop_;
  std::vector<std::string> ran_;
};

TEST_F(VirtualLoop, NothingRunsByItself) {
  auto const task = noting("a");
  task->schedule();
  EXPECT_TRUE(task->scheduled());
  EXPECT_EQ(loop_.pending(), 1U);
  EXPECT_THAT(ran_, IsEmpty());
  loop_.runUntilIdle();
  EXPECT_THAT(ran_, ElementsAre("a@0.0"));
  EXPECT_FALSE(task->scheduled());
  loop_.runUntilIdle();
  EXPECT_EQ(ran_.size(), 1U) << "once per scheduling";
}

TEST_F(VirtualLoop, RunsByDueTimeAndThenInTheOrderOfScheduling) {
  auto const a = noting("a");
  auto const b = noting("b");
  auto const c = noting("c");
  auto const d = noting("d");
  a->scheduleIn(2);
  b->scheduleIn(1);
  c->scheduleIn(2);
  d->scheduleIn(1);
  loop_.runFor(5);
  EXPECT_THAT(ran_, ElementsAre("b@1.0", "d@1.0", "a@2.0", "c@2.0"));
  EXPECT_EQ(loop_.now(), 5.0);
}

TEST_F(VirtualLoop, TimeStandsStillUntilItIsMoved) {
  EXPECT_EQ(loop_.now(), 0.0);
  auto const task = noting("a");
  task->scheduleIn(0.5);
  EXPECT_EQ(task->dueTime(), 0.5);
  loop_.runUntilIdle();
  EXPECT_THAT(ran_, IsEmpty());
  EXPECT_EQ(loop_.now(), 0.0);
}

TEST_F(VirtualLoop, RunForEndsAtItsTimeAndLeavesWhatIsLater) {
  auto const atEnd = noting("end");
  auto const later = noting("later");
  atEnd->scheduleIn(3);
  later->scheduleIn(3.5);
  loop_.runFor(3);
  EXPECT_THAT(ran_, ElementsAre("end@3.0"));
  EXPECT_EQ(loop_.now(), 3.0);
  EXPECT_EQ(loop_.pending(), 1U);
  loop_.runFor(0);
  EXPECT_EQ(ran_.size(), 1U);
  loop_.runFor(0.5);
  EXPECT_THAT(ran_, ElementsAre("end@3.0", "later@3.5"));
}

TEST_F(VirtualLoop, WhatIsScheduledMeanwhileRunsWhenItIsDue) {
  auto const second = noting("second");
  auto const third = noting("third");
  Task starter(loop_, [&] {
    note("first");
    second->schedule();
    third->scheduleIn(2);
  });
  starter.scheduleIn(1);
  loop_.runFor(4);
  EXPECT_THAT(ran_, ElementsAre("first@1.0", "second@1.0", "third@3.0"));
}

TEST_F(VirtualLoop, SchedulingAgainForNowKeepsThePlace) {
  auto const a = noting("a");
  auto const b = noting("b");
  a->schedule();
  b->schedule();
  a->schedule();
  loop_.runUntilIdle();
  EXPECT_THAT(ran_, ElementsAre("a@0.0", "b@0.0"));
}

TEST_F(VirtualLoop, SchedulingForNowOvertakesALaterTime) {
  auto const a = noting("a");
  a->scheduleIn(10);
  a->schedule();
  EXPECT_EQ(loop_.pending(), 1U);
  loop_.runUntilIdle();
  EXPECT_THAT(ran_, ElementsAre("a@0.0"));
}

TEST_F(VirtualLoop, ANewDelayReplacesTheOldOne) {
  auto const a = noting("a");
  a->scheduleIn(1);
  a->scheduleIn(3);
  EXPECT_EQ(loop_.pending(), 1U);
  loop_.runFor(2);
  EXPECT_THAT(ran_, IsEmpty());
  loop_.runFor(2);
  EXPECT_THAT(ran_, ElementsAre("a@3.0"));
}

TEST_F(VirtualLoop, CancellingTakesItOff) {
  auto const a = noting("a");
  a->schedule();
  a->cancel();
  a->cancel();
  EXPECT_FALSE(a->scheduled());
  loop_.runUntilIdle();
  EXPECT_THAT(ran_, IsEmpty());
}

TEST_F(VirtualLoop, AnActivityMayCancelAnotherThatIsDue) {
  auto const victim = noting("victim");
  Task killer(loop_, [&] { victim->cancel(); });
  killer.schedule();
  victim->schedule();
  loop_.runUntilIdle();
  EXPECT_THAT(ran_, IsEmpty());
}

TEST_F(VirtualLoop, AnActivityMayScheduleItselfAgain) {
  int runs = 0;
  std::unique_ptr<Task> task;
  task = std::make_unique<Task>(loop_, [&] {
    EXPECT_FALSE(task->scheduled());
    if (++runs < 3) {
      task->scheduleIn(1);
    }
  });
  task->schedule();
  loop_.runFor(10);
  EXPECT_EQ(runs, 3);
  EXPECT_FALSE(task->scheduled());
}

TEST_F(VirtualLoop, AnActivityMayDestroyItselfAndOthers) {
  auto victim = noting("victim");
  std::unique_ptr<Task> task;
  task = std::make_unique<Task>(loop_, [&] {
    note("task");
    victim.reset();
    task.reset();
  });
  task->schedule();
  victim->schedule();
  loop_.runUntilIdle();
  EXPECT_THAT(ran_, ElementsAre("task@0.0"));
  EXPECT_EQ(loop_.pending(), 0U);
}

TEST_F(VirtualLoop, DestroyingAScheduledActivityTakesItOff) {
  auto task = noting("a");
  task->scheduleIn(1);
  task.reset();
  EXPECT_EQ(loop_.pending(), 0U);
  loop_.runFor(2);
  EXPECT_THAT(ran_, IsEmpty());
}

TEST_F(VirtualLoop, AnExceptionLeavesTheLoopUsable) {
  Task thrower(loop_, [] { throw std::runtime_error("out"); });
  auto const next = noting("next");
  thrower.schedule();
  next->schedule();
  EXPECT_THROW(loop_.runUntilIdle(), std::runtime_error);
  EXPECT_FALSE(thrower.scheduled());
  loop_.runUntilIdle();
  EXPECT_THAT(ran_, ElementsAre("next@0.0"));
}

TEST_F(VirtualLoop, AnActivityMayTurnTheLoop) {
  auto const inner = noting("inner");
  Task outer(loop_, [&] {
    inner->scheduleIn(1);
    loop_.runFor(2);
    note("outer");
  });
  outer.schedule();
  loop_.runUntilIdle();
  EXPECT_THAT(ran_, ElementsAre("inner@1.0", "outer@2.0"));
}

TEST_F(VirtualLoop, SwitchingItOnAgainStartsAtZero) {
  loop_.runFor(7);
  loop_.virtualTimeIs(true);
  EXPECT_EQ(loop_.now(), 0.0);
}

TEST(EventLoop, ALoopThatDiesLeavesItsActivitiesUnscheduled) {
  auto loop = std::make_unique<Kor::EventLoop>();
  Task task(*loop, [] { FAIL() << "it ran"; });
  task.scheduleIn(1);
  loop.reset();
  EXPECT_FALSE(task.scheduled());
}

TEST(EventLoop, ByDefaultTheClockIsTheMachines) {
  Kor::EventLoop loop;
  EXPECT_FALSE(loop.virtualTime());
  EXPECT_GT(loop.now(), 1.5e9) << "seconds since the epoch";
  double const before = loop.now();
  double ran = 0;
  Task task(loop, [&] { ran = loop.now(); });
  task.scheduleIn(0.002);
  loop.runUntilIdle();
  EXPECT_EQ(ran, 0.0);
  loop.runFor(0.004);
  EXPECT_GE(ran, before + 0.002);
  EXPECT_GE(loop.now(), before + 0.004);
}

TEST(EventLoop, NowReadsTheClockOfTheProcessesLoop) {
  auto& loop = Kor::EventLoop::global();
  loop.virtualTimeIs(true);
  loop.runFor(12.5);
  EXPECT_EQ(Kor::now(), 12.5);
  class Own : public Kor::Activity {
   public:
    bool ran = false;

   protected:
    void run() override { ran = true; }
  } own;
  own.schedule();
  EXPECT_EQ(loop.pending(), 1U);
  loop.runUntilIdle();
  EXPECT_TRUE(own.ran);
  loop.virtualTimeIs(false);
  EXPECT_GT(Kor::now(), 1.5e9);
}

TEST(EventLoop, TheCurrentLoopIsTheInnermostScopes) {
  Kor::EventLoop outer;
  Kor::EventLoop inner;
  EXPECT_EQ(&Kor::EventLoop::current(), &Kor::EventLoop::global());
  {
    Kor::EventLoop::Scope const first(outer);
    EXPECT_EQ(&Kor::EventLoop::current(), &outer);
    {
      Kor::EventLoop::Scope const second(inner);
      EXPECT_EQ(&Kor::EventLoop::current(), &inner);
    }
    EXPECT_EQ(&Kor::EventLoop::current(), &outer);
  }
  EXPECT_EQ(&Kor::EventLoop::current(), &Kor::EventLoop::global());
}

TEST(EventLoop, NewActivitiesAndTheTimeAreThoseOfTheCurrentLoop) {
  Kor::EventLoop loop;
  loop.virtualTimeIs(true);
  loop.runFor(7);
  Kor::EventLoop::Scope const scope(loop);
  EXPECT_EQ(Kor::now(), 7);
  Kor::Timer timer([] {});
  timer.schedule();
  EXPECT_EQ(loop.pending(), 1U);
}

TEST(EventLoop, ALoopThatRunsIsTheCurrentOne) {
  Kor::EventLoop loop;
  Kor::EventLoop* seen = nullptr;
  Task task(loop, [&] { seen = &Kor::EventLoop::current(); });
  task.schedule();
  loop.runUntilIdle();
  EXPECT_EQ(seen, &loop);
  EXPECT_EQ(&Kor::EventLoop::current(), &Kor::EventLoop::global());
}

TEST(EventLoop, AnActivityMovedToAnotherLoopKeepsItsRemainingWait) {
  Kor::EventLoop first;
  Kor::EventLoop second;
  first.virtualTimeIs(true);
  second.virtualTimeIs(true);
  second.runFor(100);
  Task task(first, [] {});
  task.scheduleIn(5);
  first.runFor(2);
  task.loopIs(second);
  EXPECT_EQ(first.pending(), 0U);
  EXPECT_EQ(second.pending(), 1U);
  EXPECT_EQ(task.dueTime(), 103);
  Task idle(first, [] {});
  idle.loopIs(second);
  EXPECT_FALSE(idle.scheduled());
  idle.schedule();
  EXPECT_EQ(second.pending(), 2U);
}

TEST(EventLoop, AnOverdueActivityIsDueAtOnceInItsNewLoop) {
  Kor::EventLoop first;
  Kor::EventLoop second;
  first.virtualTimeIs(true);
  second.virtualTimeIs(true);
  first.runFor(5);
  Task task(first, [] {});
  task.schedule();
  first.virtualTimeIs(true);  // back to 0
  second.runFor(1);
  task.loopIs(second);
  EXPECT_EQ(task.dueTime(), 6) << "five seconds are left";
  task.cancel();
  task.loopIs(first);
  task.schedule();
  first.virtualTimeIs(false);
  first.virtualTimeIs(true);
  task.loopIs(second);
  EXPECT_EQ(task.dueTime(), 1);
}

TEST(EventLoop, AWaitTooShortForTheClockIsLaterThanNow) {
  Kor::EventLoop loop;
  loop.virtualTimeIs(true);
  loop.runFor(1e9);
  int runs = 0;
  class Again : public Kor::Activity {
   public:
    Again(Kor::EventLoop& on, int& count) : Activity(on), count_(count) {}

   private:
    void run() override {
      ++count_;
      scheduleIn(1e-300);
    }
    int& count_;
  } again(loop, runs);
  again.schedule();
  loop.runUntilIdle();
  EXPECT_EQ(runs, 1);
  EXPECT_GT(again.dueTime(), loop.now());
}

}  // namespace
