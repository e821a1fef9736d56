// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/Waits.h"

#include "Kor/Exception.h"

#include <optional>
#include <sstream>

namespace PolicyMap {
namespace {

// The waits are attributes of the service-policy machine, so the message names it.
void require(bool good, char const* attribute, double seconds, char const* requirement,
             std::optional<double> bound = std::nullopt) {
  if (!good) {
    std::ostringstream text;
    text << "ServicePolicySm::" << attribute << " " << seconds << " not allowed, " << requirement;
    if (bound) {
      text << " " << *bound;
    }
    throw Kor::RangeException(text.str());
  }
}

}  // namespace

// The comparisons are written so that NaN is rejected.

void Waits::retryMinIs(double seconds) {
  require(seconds > 0 && seconds <= retryMax_, "retryMin", seconds,
          "must be above 0 and not above retryMax", retryMax_);
  retryMin_ = seconds;
}

void Waits::retryMaxIs(double seconds) {
  require(seconds > 0 && seconds >= retryMin_, "retryMax", seconds,
          "must be above 0 and not below retryMin", retryMin_);
  retryMax_ = seconds;
}

void Waits::asyncTimeoutIs(double seconds) {
  require(seconds > 0, "asyncTimeout", seconds, "must be above 0");
  asyncTimeout_ = seconds;
}

}  // namespace PolicyMap
