// SPDX-License-Identifier: Apache-2.0
// How the policies stand, as the machines publish it.
#pragma once

#include "lab/Session.h"

#include <optional>
#include <string>
#include <vector>

namespace lab {

/// One policy for one option: it stands, or it failed, or (a failed update in place that is not
/// mended yet) both.
struct StatusRow {
  std::string policy;
  std::string direction;
  PolicyMap::ClassMapMatchOption option{};
  bool programmed = false;
  /// Virtual seconds; none while it does not stand.
  std::optional<double> timeProgrammed;
  /// Where it is applied, ascending.
  std::vector<Vorel::IntfId> interfaces;
  std::string error;
  /// Of the helper; empty when the core refused the policy.
  std::string operation;
  std::string className;
  /// "LIST SEQ", of the rule that failed; empty for none.
  std::string rule;
};

/// By policy, direction and option.
std::vector<StatusRow> readStatuses(Session const& session);

}  // namespace lab
