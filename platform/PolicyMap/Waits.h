// SPDX-License-Identifier: Apache-2.0
#pragma once

// Waits: how long, in seconds, a failed policy waits until it is tried again, and how long an
// asynchronous result may take. A wait is above 0, and retryMin is not above retryMax. Anything
// else is refused by a Kor::RangeException, which names the attribute, and changes nothing.

#include "PolicyMapExport.h"

namespace PolicyMap {

class POLICYMAP_API Waits {
 public:
  // The first and the longest wait before a failed policy is tried again.
  [[nodiscard]] double retryMin() const { return retryMin_; }
  [[nodiscard]] double retryMax() const { return retryMax_; }
  // How long an asynchronous result may take.
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
