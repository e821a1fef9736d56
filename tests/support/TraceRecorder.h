// SPDX-License-Identifier: Apache-2.0
#pragma once

// TraceRecorder: collects the trace lines that are written during its lifetime, as
// "SOURCE|LEVEL|TEXT", and restores the previous sink at the end.
//
//   TestSupport::TraceRecorder trace("PolicyMapTestSm", 8);   // switches that source on, too
//   ...
//   EXPECT_THAT(trace.lines(), ElementsAre("PolicyMapTestSm|8|virtual ..."));
//
// The level of the named source is set to 0 at the end. Recorders may be nested but not
// interleaved.

#include <Kor/Trace.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace TestSupport {

class TraceRecorder {
 public:
  TraceRecorder()
      : previous_(
            Kor::traceSinkIs([this](std::string_view source, int level, std::string_view text) {
              lines_.push_back(std::string(source) + "|" + std::to_string(level) + "|" +
                               std::string(text));
            })) {}
  TraceRecorder(std::string source, int level) : TraceRecorder() {
    source_ = std::move(source);
    Kor::traceLevelIs(source_, level);
  }
  TraceRecorder(TraceRecorder const&) = delete;
  TraceRecorder& operator=(TraceRecorder const&) = delete;
  ~TraceRecorder() {
    if (!source_.empty()) {
      Kor::traceLevelIs(source_, 0);
    }
    Kor::traceSinkIs(previous_);
  }

  [[nodiscard]] std::vector<std::string> const& lines() const { return lines_; }
  // Returns the lines so far and clears them.
  [[nodiscard]] std::vector<std::string> take() { return std::exchange(lines_, {}); }

 private:
  std::vector<std::string> lines_;
  std::string source_;
  Kor::TraceSink previous_;
};

}  // namespace TestSupport
