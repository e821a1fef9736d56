// SPDX-License-Identifier: Apache-2.0
#include "Kor/EventLoop.h"

#include "Kor/Thread.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <thread>
#include <utility>

namespace Kor {

namespace {

EventLoop* currentLoop = nullptr;  // null: the global loop

}  // namespace

Activity::Activity() : loop_(&EventLoop::current()) {}

Activity::~Activity() {
  cancel();
}

Timer::~Timer() = default;

void Activity::schedule() {
  double const now = loop_->now();
  if (scheduled_ && due_ <= now) {
    return;
  }
  cancel();
  loop_->add(*this, now);
}

void Activity::scheduleIn(double seconds) {
  cancel();
  double const now = loop_->now();
  double due = now + seconds;
  if (seconds > 0 && due <= now) {
    due = std::nextafter(now, std::numeric_limits<double>::infinity());
  }
  loop_->add(*this, due);
}

void Activity::cancel() {
  if (scheduled_) {
    loop_->remove(*this);
  }
}

void Activity::loopIs(EventLoop& loop) {
  bool const scheduled = scheduled_;
  double const wait = scheduled ? due_ - loop_->now() : 0;
  cancel();
  loop_ = &loop;
  if (scheduled) {
    loop.add(*this, loop.now() + std::max(wait, 0.0));
  }
}

EventLoop& EventLoop::global() {
  static EventLoop loop;
  return loop;
}

EventLoop& EventLoop::current() {
  return currentLoop != nullptr ? *currentLoop : global();
}

EventLoop::Scope::Scope(EventLoop& loop) : before_(std::exchange(currentLoop, &loop)) {}

EventLoop::Scope::~Scope() {
  currentLoop = before_;
}

EventLoop::~EventLoop() {
  while (!queue_.empty()) {
    remove(**queue_.begin());
  }
}

double EventLoop::now() const {
  if (virtual_) {
    return virtualNow_;
  }
  auto const sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration<double>(sinceEpoch).count();
}

void EventLoop::virtualTimeIs(bool isVirtual) {
  virtual_ = isVirtual;
  virtualNow_ = 0;
}

void EventLoop::runUntilIdle() {
  runDue();
}

void EventLoop::runFor(double seconds) {
  double const end = now() + seconds;
  runDue();
  while (!queue_.empty() && (*queue_.begin())->due_ <= end) {
    waitUntil((*queue_.begin())->due_);
    runDue();
  }
  waitUntil(end);
}

void EventLoop::add(Activity& activity, double due) {
  KOR_ASSERT_OWNING_THREAD();
  activity.due_ = due;
  activity.sequence_ = ++scheduled_;
  activity.scheduled_ = true;
  queue_.insert(&activity);
}

void EventLoop::remove(Activity& activity) {
  KOR_ASSERT_OWNING_THREAD();
  queue_.erase(&activity);
  activity.scheduled_ = false;
}

void EventLoop::runDue() {
  KOR_ASSERT_OWNING_THREAD();
  Scope const scope(*this);
  while (!queue_.empty() && (*queue_.begin())->due_ <= now()) {
    Activity& activity = **queue_.begin();
    remove(activity);
    activity.run();
  }
}

void EventLoop::waitUntil(double time) {
  double const seconds = time - now();
  if (seconds <= 0) {
    return;
  }
  if (virtual_) {
    virtualNow_ = time;
  } else {
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
  }
}

double now() {
  return EventLoop::current().now();
}

}  // namespace Kor
