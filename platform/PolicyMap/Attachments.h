// SPDX-License-Identifier: Apache-2.0
#pragma once

// Attachments: which policy-map is attached where, indexed by policy and by interface. Plain data:
// it makes no calls and sends no notifications.
//
//   Attachments::Change const change = attachments.set({intf, "input"}, "web");
//   // change.left and change.joined are the policies whose set of interfaces has changed

#include "PolicyMap/PolicyMapSmKey.h"
#include "PolicyMap/PolicyMapTypeConfig.h"
#include "PolicyMapExport.h"
#include "Vorel/IntfId.h"

#include <map>
#include <optional>
#include <set>
#include <vector>

namespace PolicyMap {

class POLICYMAP_API Attachments {
 public:
  struct Change {
    std::optional<PolicyMapSmKey> left;    // the policy previously attached at the place
    std::optional<PolicyMapSmKey> joined;  // the policy attached there now
  };

  // Attaches a policy-map at a place. An empty name detaches. Both members of the result are empty
  // if that policy-map is already attached there.
  Change set(ServicePolicyKey const& place, Kor::Name const& policyMapName);

  [[nodiscard]] bool contains(PolicyMapSmKey const& policy) const {
    return intfsOf_.contains(policy);
  }
  [[nodiscard]] bool contains(PolicyMapSmKey const& policy, Vorel::IntfId intf) const;

  // Each of these returns a copy in ascending order, so a caller may change attachments while
  // iterating over it.
  [[nodiscard]] std::set<ServicePolicyKey> places() const;
  [[nodiscard]] std::vector<PolicyMapSmKey> policies() const;
  [[nodiscard]] std::vector<Vorel::IntfId> intfs() const;
  [[nodiscard]] std::set<Vorel::IntfId> intfsOf(PolicyMapSmKey const& policy) const;
  [[nodiscard]] std::set<PolicyMapSmKey> policiesAt(Vorel::IntfId intf) const;

 private:
  void join(PolicyMapSmKey const& policy, Vorel::IntfId intf);
  void leave(PolicyMapSmKey const& policy, Vorel::IntfId intf);

  std::map<ServicePolicyKey, Kor::Name> attachedAt_;
  // No set in these maps is empty.
  std::map<PolicyMapSmKey, std::set<Vorel::IntfId>> intfsOf_;
  std::map<Vorel::IntfId, std::set<PolicyMapSmKey>> policiesAt_;
};

}  // namespace PolicyMap
