// SPDX-License-Identifier: Apache-2.0
#pragma once

// StatusPublisher: writes what is programmed, and what went wrong, into the statuses of one policy.
// Only differences notify. An observer may end the machine; the caller checks for that between two
// calls.

#include "PolicyMap/ClassMapSm.h"
#include "PolicyMap/PassPlan.h"
#include "PolicyMap/PolicyMapTypeStatus.h"

#include <optional>
#include <set>

namespace PolicyMap {

class POLICYMAP_API StatusPublisher {
 public:
  // `state` must outlive the publisher.
  explicit StatusPublisher(ProgrammedState& state) : state_(state) {}

  // What the helper has for one option, since `timeProgrammed` (seconds), and the failure. Time and
  // interfaces of a policy that another machine has programmed stay as they are.
  void publish(PolicyMapStatus& status, ClassMapMatchOption option, PresentPolicy const& present,
               std::optional<double> timeProgrammed);
  // Whether a class is programmed, and its failure.
  void publish(ClassMapSm& machine) const;

  // The classes whose status may differ since takeDueClasses().
  void classDue(Kor::Name const& className) { dueClasses_.insert(className); }
  void allClassesDue() { allDue_ = true; }
  [[nodiscard]] bool allDue() const { return allDue_; }
  [[nodiscard]] std::set<Kor::Name> takeDueClasses();

 private:
  static void publishIntfs(PolicyMapStatus& status, ClassMapMatchOption option,
                           std::vector<Vorel::IntfId> const& intfs);
  [[nodiscard]] Kor::String firstError() const;

  ProgrammedState& state_;
  PerOption<Kor::Name> failedClass_;  // as published
  std::set<Kor::Name> dueClasses_;
  bool allDue_ = true;
};

}  // namespace PolicyMap
