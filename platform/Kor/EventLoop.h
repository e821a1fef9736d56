// SPDX-License-Identifier: Apache-2.0
#pragma once

// The event loop. Activities run only while a caller runs the loop.
//
// Order: by due time; activities with equal due times run in scheduling order. Time is the
// machine's clock or virtual. Virtual time advances only in runFor(), so every run gives the same
// order.
//
// A process may have several loops, each with its own time and activities. Machines and helpers use
// the loop that is current when they are created.

#include "Kor/Export.h"

#include <cstdint>
#include <functional>
#include <set>
#include <utility>

namespace Kor {

class EventLoop;

// An action to be run later by the loop. Destroying it cancels it.
class KOR_API Activity {
 public:
  Activity();  // on the current loop
  explicit Activity(EventLoop& loop) : loop_(&loop) {}
  Activity(Activity const&) = delete;
  Activity& operator=(Activity const&) = delete;
  virtual ~Activity();

  // Schedules it after everything that is due now. Does nothing if it is already scheduled for now
  // or earlier.
  void schedule();
  // Schedules it `seconds` from now and replaces an earlier schedule. Any positive value is later
  // than now, however small.
  void scheduleIn(double seconds);
  void cancel();
  // Moves it to another loop. If it is scheduled, the remaining wait stays.
  void loopIs(EventLoop& loop);
  [[nodiscard]] bool scheduled() const { return scheduled_; }
  // Due time in seconds of the loop's clock. Valid only while scheduled.
  [[nodiscard]] double dueTime() const { return due_; }

 protected:
  // Runs once per schedule. scheduled() is already false when it starts.
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
  // The loop of the process.
  static EventLoop& global();
  // The loop that new activities use and whose clock Kor::now() reads: the one that runs, or that
  // of the innermost Scope; otherwise the global loop.
  static EventLoop& current();

  // Makes a loop the current one until the end of the scope.
  class KOR_API Scope {
   public:
    explicit Scope(EventLoop& loop);
    Scope(Scope const&) = delete;
    Scope& operator=(Scope const&) = delete;
    ~Scope();

   private:
    EventLoop* before_;
  };

  EventLoop() = default;
  EventLoop(EventLoop const&) = delete;
  EventLoop& operator=(EventLoop const&) = delete;
  ~EventLoop();

  // Seconds since the epoch, or since virtual time was switched on.
  [[nodiscard]] double now() const;
  // Switching virtual time on resets it to 0, even if it was already on.
  void virtualTimeIs(bool isVirtual);
  [[nodiscard]] bool virtualTime() const { return virtual_; }

  // Runs everything that is due, including what becomes due meanwhile. Does not wait.
  void runUntilIdle();
  // Runs everything that becomes due within `seconds`; returns when they have elapsed.
  void runFor(double seconds);
  // Number of scheduled activities, due or not.
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
  std::uint64_t scheduled_ = 0;  // schedules so far
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

// The time of the current loop in seconds.
KOR_API double now();

}  // namespace Kor
