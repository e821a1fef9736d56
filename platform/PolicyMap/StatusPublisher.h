// SPDX-License-Identifier: Apache-2.0
#pragma once

// StatusPublisher: writes what is programmed, and the failures, into the statuses of one policy.
// Only values that differ notify. An observer may destroy the machine; the caller checks for that
// between two calls.

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

  // Publishes what exists on the helper for one option, the time at which it was programmed
  // (seconds), and the failure. If another machine programmed the policy, its time and interfaces
  // are left unchanged.
  void publish(PolicyMapStatus& status, ClassMapMatchOption option, PresentPolicy const& present,
               std::optional<double> timeProgrammed);
  // Publishes whether a class is programmed, and its failure.
  void publish(ClassMapSm& machine) const;

  // The classes whose status may have changed since the last takeDueClasses().
  void classDue(Kor::Name const& className) { dueClasses_.insert(className); }
  void allClassesDue() { allDue_ = true; }
  [[nodiscard]] bool allDue() const { return allDue_; }
  [[nodiscard]] std::set<Kor::Name> takeDueClasses();

 private:
  static void publishIntfs(PolicyMapStatus& status, ClassMapMatchOption option,
                           std::vector<Vorel::IntfId> const& intfs);
  [[nodiscard]] Kor::String firstError() const;

  ProgrammedState& state_;
  PerOption<Kor::Name> failedClass_;  // as last published
  std::set<Kor::Name> dueClasses_;
  bool allDue_ = true;
};

}  // namespace PolicyMap
