// SPDX-License-Identifier: Apache-2.0
#include "lab/Progress.h"

#include <algorithm>
#include <cstddef>

namespace lab {

namespace {

constexpr std::size_t width = 40;
constexpr std::chrono::milliseconds pause{100};

}  // namespace

void Progress::begin(std::string_view what, std::uint64_t total) {
  what_ = what;
  total_ = std::max<std::uint64_t>(total, 1);
  done_ = 0;
}

void Progress::draw() {
  Clock::time_point const now = Clock::now();
  if (now - start_ < delay_ || (visible_ && now - drawn_ < pause)) {
    return;
  }
  drawn_ = now;
  visible_ = true;
  // The total is an estimate: the bar stays full if there are more steps.
  std::uint64_t const done = std::min(done_, total_);
  std::size_t const filled = static_cast<std::size_t>(done * width / total_);
  *out_ << "\r" << what_ << " [" << std::string(filled, '#') << std::string(width - filled, '.')
        << "] " << done * 100 / total_ << "%\033[K" << std::flush;
}

void Progress::clear() {
  if (visible_) {
    *out_ << "\r\033[K" << std::flush;
    visible_ = false;
  }
}

}  // namespace lab
