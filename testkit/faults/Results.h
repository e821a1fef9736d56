// SPDX-License-Identifier: Apache-2.0
#pragma once

// Results: the asynchronous results of a helper on their way to the core. A result is delivered as
// it arrives, or is held, dropped, delayed or delivered twice, as a fault of a plan says.

#include "testkit/Export.h"
#include "testkit/faults/FaultInjector.h"

#include <Kor/EventLoop.h>
#include <Kor/String.h>
#include <PolicyMap/AsyncOperationResult.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace PolicyMapTestKit {

// A result that waits for Lab::release().
struct HeldResult {
  // Counts from 1 in each lab.
  std::uint64_t number = 0;
  // In seconds of the lab's clock, when the operation was called.
  double since = 0;
  // "commitPolicy(edge/input ipv4)".
  std::string call;
  // Empty for a success.
  Kor::String error;
};

class POLICYMAPTESTKIT_API Results {
 public:
  using Deliver = std::function<void(PolicyMap::AsyncOperationResult const&)>;

  // `deliver` gives a result to the core. On the loop that is current now.
  explicit Results(Deliver deliver);
  Results(Results const&) = delete;
  Results& operator=(Results const&) = delete;

  // Without a fault, results are delivered after this time; none: as they arrive.
  void delayIs(std::optional<double> seconds) { delay_ = seconds; }

  // An asynchronous operation is about to be called. Its result may arrive inside it.
  void expect(HelperCall const& call, FaultInjector::Injection const& injection);
  // The operation was accepted, with this result.
  void accepted(Kor::String const& error);
  // The operation was refused: no result follows.
  void refused() { expected_.reset(); }
  // The helper reports a result.
  void arrived(PolicyMap::AsyncOperationResult const& result);

  [[nodiscard]] std::vector<HeldResult> held() const;
  // Delivers a held result. Returns false if there is none of this number.
  bool release(std::uint64_t number);
  // Drops what is held or delayed. From now on results are delivered as they arrive, and the loop
  // is not used.
  void end();

 private:
  struct Expected {
    std::string call;  // only for a result that is held
    FaultEffect effect = FaultEffect::fails;
    std::optional<double> delay;
    Kor::String text;  // replaces the error that arrives; empty: it stays
  };

  // True if the result was put away.
  bool putAway(Kor::String const& error);
  void deliverDue();

  Kor::EventLoop& loop_;
  Deliver deliver_;
  std::optional<double> delay_;
  std::optional<Expected> expected_;
  bool putAway_ = false;  // the result of the last operation must not arrive any more
  std::map<std::uint64_t, HeldResult> held_;
  std::uint64_t heldSoFar_ = 0;
  struct Delayed {
    Kor::String error;
    bool twice = false;
  };
  std::multimap<double, Delayed> delayed_;  // by due time
  Kor::Timer timer_;
};

}  // namespace PolicyMapTestKit
