// SPDX-License-Identifier: Apache-2.0
#pragma once

// RetryTimer: a timer whose wait doubles from a minimum to a maximum.

#include "Kor/EventLoop.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace PolicyMap {

class RetryTimer {
 public:
  explicit RetryTimer(std::function<void()> retry) : timer_(std::move(retry)) {}

  // Schedules a retry after the next wait, in seconds. Does nothing if a retry is already
  // scheduled.
  void schedule(double min, double max) {
    if (!timer_.scheduled()) {
      wait_ = wait_ == 0 ? min : std::min(2 * wait_, max);
      timer_.scheduleIn(wait_);
    }
  }
  // Cancels the retry. The next wait is the minimum.
  void startOver() {
    wait_ = 0;
    timer_.cancel();
  }
  void loopIs(Kor::EventLoop& loop) { timer_.loopIs(loop); }

 private:
  Kor::Timer timer_;
  double wait_ = 0;  // the last wait; 0 if none since startOver()
};

}  // namespace PolicyMap
