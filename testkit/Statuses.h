// SPDX-License-Identifier: Apache-2.0
#pragma once

// The state of the policies as published by the machines.

#include "testkit/Export.h"
#include "testkit/Lab.h"

#include <optional>
#include <string>
#include <vector>

namespace PolicyMapTestKit {

// One policy for one option: programmed, failed, or both (an update in place that failed and is not
// repaired yet).
struct StatusRow {
  std::string policy;
  std::string direction;
  PolicyMap::ClassMapMatchOption option{};
  bool programmed = false;
  // Virtual seconds; none while not programmed.
  std::optional<double> timeProgrammed;
  // The interfaces where it is applied, ascending.
  std::vector<Vorel::IntfId> interfaces;
  std::string error;
  // The failed operation of the helper; empty if the core rejected the policy.
  std::string operation;
  std::string className;
  // "LIST SEQ" of the rule that failed; empty for none.
  std::string rule;
};

// By policy, direction and option.
POLICYMAPTESTKIT_API std::vector<StatusRow> readStatuses(Lab const& lab);

}  // namespace PolicyMapTestKit
