// SPDX-License-Identifier: Apache-2.0
#pragma once

// Pass: a sequence of helper operations that is planned as a whole.

#include "PolicyMap/ProgrammedState.h"
#include "Vorel/IntfId.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace PolicyMap {

// The operations that passes consist of, and their names in statuses. One addRule adds all rules of
// a pass; one updateAction updates all rules of one class in every option.
#define POLICYMAP_HELPER_OPERATIONS(ROW)  \
  ROW(createPolicy, "createPolicy")       \
  ROW(recreatePolicy, "recreatePolicy")   \
  ROW(addRule, "addRule")                 \
  ROW(addIntf, "addIntfToPolicy")         \
  ROW(removeIntf, "removeIntfFromPolicy") \
  ROW(commitPolicy, "commitPolicy")       \
  ROW(deletePolicy, "deletePolicy")       \
  ROW(updateAction, "updateAction")

enum class HelperOperation : std::uint8_t {
#define POLICYMAP_ROW(operation, name) operation,
  POLICYMAP_HELPER_OPERATIONS(POLICYMAP_ROW)
#undef POLICYMAP_ROW
};

[[nodiscard]] constexpr std::string_view nameOf(HelperOperation operation) {
  switch (operation) {
#define POLICYMAP_ROW(operation, name) \
  case HelperOperation::operation: return name;
    POLICYMAP_HELPER_OPERATIONS(POLICYMAP_ROW)
#undef POLICYMAP_ROW
  }
  return {};
}

struct Step {
  HelperOperation operation;
  ClassMapMatchOption option = ClassMapMatchOption::ipv4;  // unused for an action update
  Vorel::IntfId intf = {};                                 // for an interface operation
  Kor::Ptr<ClassMapSmCommonData> updatedClass = {};        // for an action update

  bool operator==(Step const&) const = default;
};

enum class PassKind : std::uint8_t {
  program,
  tearDown,
  updateActions,  // over all options
};

struct Pass {
  PassKind kind;
  ClassMapMatchOption option;  // unused for an action update
  std::vector<Step> steps;
  // What addRule programs, and how.
  ProgrammedClasses classes = {};
  PortExpansion expansion = PortExpansion::rangeChecker;
  Capabilities capabilities = {};
  // Why the pass is due, for the trace.
  std::string_view cause = {};
};

}  // namespace PolicyMap
