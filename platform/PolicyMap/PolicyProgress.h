// SPDX-License-Identifier: Apache-2.0
#pragma once

// PolicyProgress: how far one policy is programmed for one match option, and why no further.

#include "PolicyMap/PolicyFailure.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace PolicyMap {

// The first that applies.
enum class ProgrammingState : std::uint8_t {
  noPolicyMap,       // the attached policy-map is not configured
  noHelper,          // the service-policy machine has no helper
  noMachine,         // the service-policy machine is inactive, or does not program this policy
  waiting,           // for the result of an operation
  failed,            // an operation of the helper failed
  refused,           // by the core, before any operation
  due,               // a change is to be processed when the event loop runs
  programmed,        // as configured, at the interfaces without an obstacle
  nothingToProgram,  // no class has a rule of the option
  optionNotAllowed,  // the service-policy machine does not program the option
  noIntf,            // no interface may carry rules of the option
};

// The part that the policy's reconciler knows.
struct PolicyProgress {
  ProgrammingState state = ProgrammingState::noMachine;
  // True if the policy is programmed, even if not, or no longer, as configured.
  bool programmed = false;
  // If failed or refused.
  PolicyFailure failure = {};
  // If failed: when it is tried again, in seconds of the event loop's clock. None: after the next
  // change.
  std::optional<double> nextTry = {};
  // If waiting: the operation, and when it was called.
  std::string_view waitingFor = {};
  double waitingSince = 0;
};

}  // namespace PolicyMap
