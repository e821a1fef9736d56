// SPDX-License-Identifier: Apache-2.0
#pragma once

// PolicyOwner: the policy-map machine as its reconciler sees it.

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
  // Keeps the machine, and with it the reconciler, alive.
  [[nodiscard]] virtual Kor::Ptr<Kor::PtrInterface> pinned() = 0;
  [[nodiscard]] virtual PolicyMapSmKey const& key() const = 0;
  [[nodiscard]] virtual Kor::Ptr<PolicyMapSmCommonData> const& commonData() const = 0;
  // May be null: nothing is published then.
  [[nodiscard]] virtual Kor::Ptr<PolicyMapStatus> const& status() const = 0;
  // In priority order.
  [[nodiscard]] virtual Classes classesInOrder() const = 0;
  // Those of the named classes that exist, in priority order.
  [[nodiscard]] virtual Classes classesInOrder(std::set<Kor::Name> const& names) const = 0;
  // Drops the machines of classes that have left the configuration.
  virtual void dropLeftClasses() = 0;
  // When an option was last programmed, in seconds of the event loop's clock; none: it is not.
  [[nodiscard]] virtual std::optional<double> timeProgrammed(ClassMapMatchOption option) const = 0;
  virtual void timeProgrammedIs(ClassMapMatchOption option, std::optional<double> time) = 0;
};

}  // namespace PolicyMap
