// SPDX-License-Identifier: Apache-2.0
#pragma once

// Waits: the waits before a failed policy is retried, and the time limit for an asynchronous
// result, all in seconds. Each is above 0, and retryMin is not above retryMax. Any other value
// throws Kor::RangeException, which names the attribute, and changes nothing.

#include "PolicyMapExport.h"

namespace PolicyMap {

class POLICYMAP_API Waits {
 public:
  // The first and the longest wait before a failed policy is retried.
  [[nodiscard]] double retryMin() const { return retryMin_; }
  [[nodiscard]] double retryMax() const { return retryMax_; }
  // The time limit for an asynchronous result.
  [[nodiscard]] double asyncTimeout() const { return asyncTimeout_; }

  void retryMinIs(double seconds);
  void retryMaxIs(double seconds);
  void asyncTimeoutIs(double seconds);

 private:
  double retryMin_ = 1;
  double retryMax_ = 60;
  double asyncTimeout_ = 30;
};

}  // namespace PolicyMap
