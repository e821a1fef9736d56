// SPDX-License-Identifier: Apache-2.0
#pragma once

// The event loop: activities run when somebody turns it, never by itself.
//
// Order: by due time, and among equal times in the order of scheduling. Time is the machine's
// clock, or virtual: then it stands still except where runFor() moves it, and every run gives the
// same order.

#include "Kor/Export.h"

#include <cstdint>
#include <functional>
#include <set>
#include <utility>

namespace Kor {

class EventLoop;

// Something to be done later on the loop. Destroying it takes it off.
class KOR_API Activity {
 public:
  Activity();  // on the process's own loop
  explicit Activity(EventLoop& loop) : loop_(&loop) {}
  Activity(Activity const&) = delete;
  Activity& operator=(Activity const&) = delete;
  virtual ~Activity();

  // Puts it at the end of what is due now; nothing when it is scheduled for now or earlier already.
  void schedule();
  // Due `seconds` from now, instead of whatever was scheduled. More than 0 seconds is later than
  // now, however little it is.
  void scheduleIn(double seconds);
  void cancel();
  [[nodiscard]] bool scheduled() const { return scheduled_; }
  // When it is due, in seconds of the loop's clock; meaningful while scheduled.
  [[nodiscard]] double dueTime() const { return due_; }

 protected:
  // Runs once per scheduling, no longer scheduled when it starts.
  virtual void run() = 0;

 private:
  friend class EventLoop;

  EventLoop* loop_;
  double due_ = 0;
  std::uint64_t sequence_ = 0;
  bool scheduled_ = false;
};

class KOR_API EventLoop {
 public:
  // The process's loop: the one whose clock Kor::now() reads.
  static EventLoop& global();

  EventLoop() = default;
  EventLoop(EventLoop const&) = delete;
  EventLoop& operator=(EventLoop const&) = delete;
  ~EventLoop();

  // Seconds: since the epoch, or since virtual time was switched on.
  [[nodiscard]] double now() const;
  // Switching it on starts virtual time at 0, also when it was on.
  void virtualTimeIs(bool isVirtual);
  [[nodiscard]] bool virtualTime() const { return virtual_; }

  // Runs all that is due, and what that makes due, until nothing is due at the present time.
  void runUntilIdle();
  // Runs what comes due during the next `seconds`, and answers when they have passed.
  void runFor(double seconds);
  // Scheduled activities, due or not.
  [[nodiscard]] std::size_t pending() const { return queue_.size(); }

 private:
  friend class Activity;

  struct Earlier {
    bool operator()(Activity const* a, Activity const* b) const {
      return std::pair(a->due_, a->sequence_) < std::pair(b->due_, b->sequence_);
    }
  };

  void add(Activity& activity, double due);
  void remove(Activity& activity);
  void runDue();
  void waitUntil(double time);

  std::set<Activity*, Earlier> queue_;
  std::uint64_t scheduled_ = 0;  // number of schedulings so far
  bool virtual_ = false;
  double virtualNow_ = 0;
};

// An activity that calls a function.
class KOR_API Timer final : public Activity {
 public:
  explicit Timer(std::function<void()> call) : call_(std::move(call)) {}
  ~Timer() override;

 protected:
  void run() override { call_(); }

 private:
  std::function<void()> call_;
};

// The time of the process's loop in seconds.
KOR_API double now();

}  // namespace Kor
