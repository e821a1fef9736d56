// SPDX-License-Identifier: Apache-2.0
#pragma once

// RetryTimer: a timer whose wait doubles from a minimum to a maximum.

#include "Kor/EventLoop.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <utility>

namespace PolicyMap {

class RetryTimer {
 public:
  explicit RetryTimer(std::function<void()> retry) : timer_(std::move(retry)) {}

  // Schedules a retry after the next wait, in seconds. Does nothing and returns false if a retry is
  // already scheduled.
  bool schedule(double min, double max) {
    if (timer_.scheduled()) {
      return false;
    }
    wait_ = wait_ == 0 ? min : std::min(2 * wait_, max);
    timer_.scheduleIn(wait_);
    return true;
  }
  // The last wait, in seconds; 0 if none since startOver().
  [[nodiscard]] double wait() const { return wait_; }
  // Cancels the retry. The next wait is the minimum.
  void startOver() {
    wait_ = 0;
    timer_.cancel();
  }
  // When the next retry is due, in seconds of the event loop's clock; none if none is scheduled.
  [[nodiscard]] std::optional<double> dueTime() const {
    return timer_.scheduled() ? std::optional(timer_.dueTime()) : std::nullopt;
  }
  void loopIs(Kor::EventLoop& loop) { timer_.loopIs(loop); }

 private:
  Kor::Timer timer_;
  double wait_ = 0;
};

}  // namespace PolicyMap
