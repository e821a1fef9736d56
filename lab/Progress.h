// SPDX-License-Identifier: Apache-2.0
#pragma once

// A progress bar for the terminal.

#include <chrono>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

namespace lab {

// Redraws one line once the work has taken a noticeable time. Without a stream it does nothing.
class Progress {
 public:
  using Clock = std::chrono::steady_clock;
  // Nothing is drawn before this time has passed.
  static constexpr std::chrono::milliseconds patience{500};

  explicit Progress(std::ostream* out = nullptr, std::chrono::milliseconds delay = patience)
      : out_(out), delay_(delay), start_(Clock::now()), drawn_(start_) {}
  Progress(Progress const&) = delete;
  Progress& operator=(Progress const&) = delete;
  ~Progress() { clear(); }

  bool wanted() const { return out_ != nullptr; }

  // Starts a piece of work with an estimated number of steps.
  void begin(std::string_view what, std::uint64_t total);
  // Completes one step.
  void step() {
    ++done_;
    if (out_ != nullptr && (done_ & stepMask) == 0) {
      draw();
    }
  }
  // Removes the bar from the screen.
  void clear();

 private:
  // The clock is read once per this many steps.
  static constexpr std::uint64_t stepMask = 0xff;

  void draw();

  std::ostream* out_;
  std::chrono::milliseconds delay_;
  Clock::time_point start_;
  Clock::time_point drawn_;
  std::string what_;
  std::uint64_t done_ = 0;
  std::uint64_t total_ = 0;
  bool visible_ = false;
};

}  // namespace lab
