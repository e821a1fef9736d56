// SPDX-License-Identifier: Apache-2.0
#pragma once

// PolicyOwner: the policy-map machine as seen by its reconciler.

#include "PolicyMap/ClassMapSm.h"
#include "PolicyMap/PolicyMapSmCommonData.h"
#include "PolicyMap/PolicyMapTypeStatus.h"

#include <optional>
#include <set>
#include <vector>

namespace PolicyMap {

class PolicyOwner {
 public:
  using Classes = std::vector<Kor::Ptr<ClassMapSm>>;

  virtual ~PolicyOwner() = default;
  // Keeps the machine, and so the reconciler, alive.
  [[nodiscard]] virtual Kor::Ptr<Kor::PtrInterface> pinned() = 0;
  [[nodiscard]] virtual PolicyMapSmKey const& key() const = 0;
  [[nodiscard]] virtual Kor::Ptr<PolicyMapSmCommonData> const& commonData() const = 0;
  // Null: nothing is published.
  [[nodiscard]] virtual Kor::Ptr<PolicyMapStatus> const& status() const = 0;
  // In priority order.
  [[nodiscard]] virtual Classes classesInOrder() const = 0;
  // The named classes that exist, in priority order.
  [[nodiscard]] virtual Classes classesInOrder(std::set<Kor::Name> const& names) const = 0;
  // Drops the machines of classes that left the configuration.
  virtual void dropLeftClasses() = 0;
  // The time at which an option was last programmed, in seconds of the event loop's clock. None: it
  // is not programmed.
  [[nodiscard]] virtual std::optional<double> timeProgrammed(ClassMapMatchOption option) const = 0;
  virtual void timeProgrammedIs(ClassMapMatchOption option, std::optional<double> time) = 0;
};

}  // namespace PolicyMap
