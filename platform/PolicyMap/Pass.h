// SPDX-License-Identifier: Apache-2.0
#pragma once

// Pass: one sequence of helper operations, planned as a whole.

#include "PolicyMap/ProgrammedState.h"
#include "Vorel/IntfId.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace PolicyMap {

enum class HelperOperation : std::uint8_t {
  createPolicy,
  recreatePolicy,
  addRule,  // all rules of a pass
  addIntf,
  removeIntf,
  commitPolicy,
  deletePolicy,
  updateAction,  // all rules of one class, in every option
};

// As statuses call the operation.
[[nodiscard]] constexpr std::string_view nameOf(HelperOperation operation) {
  switch (operation) {
  case HelperOperation::createPolicy: return "createPolicy";
  case HelperOperation::recreatePolicy: return "recreatePolicy";
  case HelperOperation::addRule: return "addRule";
  case HelperOperation::addIntf: return "addIntfToPolicy";
  case HelperOperation::removeIntf: return "removeIntfFromPolicy";
  case HelperOperation::commitPolicy: return "commitPolicy";
  case HelperOperation::deletePolicy: return "deletePolicy";
  case HelperOperation::updateAction: return "updateAction";
  }
  return {};
}

struct Step {
  HelperOperation operation;
  ClassMapMatchOption option = ClassMapMatchOption::ipv4;  // of no meaning for an action update
  Vorel::IntfId intf = {};                                 // of an interface operation
  Kor::Ptr<ClassMapSmCommonData> updatedClass = {};        // of an action update

  bool operator==(Step const&) const = default;
};

enum class PassKind : std::uint8_t {
  program,
  tearDown,
  updateActions,  // of all options
};

struct Pass {
  PassKind kind;
  ClassMapMatchOption option;  // of no meaning for an action update
  std::vector<Step> steps;
  // What addRule programs.
  ProgrammedClasses classes = {};
  PortExpansion expansion = PortExpansion::rangeChecker;
  Capabilities capabilities = {};
};

}  // namespace PolicyMap
