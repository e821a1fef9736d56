// SPDX-License-Identifier: Apache-2.0
#pragma once

// PassTrace: the trace lines of passes, of the source "PolicyMap".
//
//   level 2  failures and retries: "edge/input: next try in 1 s"
//   level 3  each pass, with its cause and its plan:
//            "edge/input: interfaces changed: addIntfToPolicy ipv4 Ethernet2, commitPolicy ipv4"
//   level 4  each step with its result: "edge/input: addRule ipv4: table full"
//
// A line that is off costs one load and one branch.

#include "PolicyMap/Pass.h"
#include "PolicyMap/PolicyMapSmKey.h"
#include "PolicyMap/Trace.h"

#include <ostream>
#include <string_view>

namespace PolicyMap {

inline std::ostream& operator<<(std::ostream& out, Step const& step) {
  out << nameOf(step.operation);
  if (step.updatedClass) {
    return out << " class " << step.updatedClass->name();
  }
  out << " " << step.option;
  return !step.intf ? out : out << " " << step.intf;
}

struct TracedPolicy {
  PolicyMapSmKey const& key;

  friend std::ostream& operator<<(std::ostream& out, TracedPolicy const& policy) {
    return out << policy.key.first() << "/" << policy.key.second();
  }
};

struct TracedSteps {
  std::vector<Step> const& steps;

  friend std::ostream& operator<<(std::ostream& out, TracedSteps const& traced) {
    std::string_view separator;
    for (Step const& step : traced.steps) {
      out << separator << step;
      separator = ", ";
    }
    return out;
  }
};

inline void tracePass(PolicyMapSmKey const& policy, Pass const& pass) {
  KOR_TRACE_LINE(traceHandle(), 3,
                 (TracedPolicy{policy}) << ": " << pass.cause << ": " << (TracedSteps{pass.steps}));
}

// `result` is a text of the helper, or "done" or "pending".
inline void traceStep(PolicyMapSmKey const& policy, Step const& step, std::string_view result) {
  KOR_TRACE_LINE(traceHandle(), 4, (TracedPolicy{policy}) << ": " << step << ": " << result);
}

inline void traceFailure(PolicyMapSmKey const& policy, PolicyFailure const& failure) {
  KOR_TRACE_LINE(traceHandle(), 2,
                 (TracedPolicy{policy})
                     << ": " << failure.operation() << " failed: " << failure.error());
}

inline void traceRetry(PolicyMapSmKey const& policy, double wait) {
  KOR_TRACE_LINE(traceHandle(), 2, (TracedPolicy{policy}) << ": next try in " << wait << " s");
}

}  // namespace PolicyMap
