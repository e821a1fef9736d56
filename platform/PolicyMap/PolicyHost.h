// SPDX-License-Identifier: Apache-2.0
#pragma once

// PolicyHost: the service-policy machine as the reconciler of a policy sees it. It gives helper and
// interfaces.

#include "Acl/AclDiff.h"
#include "PolicyMap/PolicyMapAclHelper.h"
#include "PolicyMap/PolicyMapSmKey.h"
#include "Vorel/IntfId.h"

#include <vector>

namespace PolicyMap {

class PolicyHost {
 public:
  virtual ~PolicyHost() = default;
  // Null: nothing is programmed.
  [[nodiscard]] virtual Kor::Ptr<PolicyMapAclHelper> const& aclHelper() const = 0;
  // Null: every other version of a list is treated as a difference.
  [[nodiscard]] virtual Kor::Ptr<Acl::AclDiff> const& aclDiff() const = 0;
  // Whether the machine is active. Otherwise only teardown goes on.
  [[nodiscard]] virtual bool active() const = 0;
  [[nodiscard]] virtual bool allowsOption(ClassMapMatchOption option) const = 0;
  // Where the policy is to be applied for an option: ascending, each once.
  [[nodiscard]] virtual std::vector<Vorel::IntfId> effectiveIntfs(PolicyMapSmKey const& key,
                                                                  ClassMapMatchOption option) = 0;
  // The shortest and the longest wait before a failed policy is tried again, and how long a result
  // may take, in seconds.
  [[nodiscard]] virtual double retryMin() const = 0;
  [[nodiscard]] virtual double retryMax() const = 0;
  [[nodiscard]] virtual double asyncTimeout() const = 0;
  // Nothing of the policy is programmed any more: it may be dropped, or built again.
  virtual void policyGone(PolicyMapSmKey const& key) = 0;
};

}  // namespace PolicyMap
