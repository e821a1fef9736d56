// SPDX-License-Identifier: Apache-2.0
#pragma once

// AttachedPolicies: keeps a policy-map machine for each policy that is attached and configured,
// requests the removal of the others, and keeps the active interfaces of each machine.
//
// The machine of a policy that is no longer wanted exists until its reconciler reports that nothing
// of it is programmed (policyGone).
//
// Creating, changing or dropping a machine runs code that may change the configuration again. Each
// policy is therefore settled (see Settling): it ends as configured at that time.

#include "PolicyMap/Attachments.h"
#include "PolicyMap/PolicyMapSm.h"
#include "PolicyMap/PolicyMapTypeConfig.h"
#include "PolicyMap/PolicyMapTypeStatus.h"
#include "PolicyMap/Settling.h"
#include "PolicyMapExport.h"

#include <vector>

namespace PolicyMap {

class POLICYMAP_API AttachedPolicies {
 public:
  // The service-policy machine, which holds the policy machines.
  class Owner {
   public:
    // Null: nothing is attached or configured.
    [[nodiscard]] virtual Kor::Ptr<PolicyMapTypeConfig const> const& policyConfig() const = 0;
    // Null: nothing is published.
    [[nodiscard]] virtual Kor::Ptr<PolicyMapTypeStatus> const& status() const = 0;
    // False: machines are not built again when they are gone.
    [[nodiscard]] virtual bool reacting() const = 0;
    // True if the interface exists and is of a kind that may carry policies.
    virtual bool mayCarryPolicies(Vorel::IntfId intf) = 0;
    // The attachments of a policy-map have changed. Calls syncPolicyMap().
    virtual void handlePolicyMap(Kor::Name const& name) = 0;

    [[nodiscard]] virtual Kor::Ptr<PolicyMapSm> policyMapSm(PolicyMapSmKey const& key) const = 0;
    // Creates the machine of one policy; null if it is not to be programmed.
    virtual Kor::Ptr<PolicyMapSm> createPolicyMapSm(PolicyMapSmKey const& key,
                                                    Kor::Ptr<PolicyMapConfig const> const& config,
                                                    Kor::Ptr<PolicyMapStatus> const& status) = 0;
    // The machine was created; its reconciler gets its service from this call.
    virtual void policyMapSmIs(PolicyMapSmKey const& key, Kor::Ptr<PolicyMapSm> const& machine) = 0;
    virtual void policyMapSmDel(PolicyMapSmKey const& key) = 0;

   protected:
    ~Owner() = default;
  };

  // `owner` must outlive this object.
  explicit AttachedPolicies(Owner& owner) : owner_(owner) {}

  [[nodiscard]] Attachments const& attachments() const { return attachments_; }

  // During all of these calls the caller keeps the service-policy machine alive.

  // Reconcile all policies, one place, or one policy-map with the configuration.
  void sync();
  void syncPlace(ServicePolicyKey const& place);
  void syncPolicyMap(Kor::Name const& name);
  // True: no policy is wanted from now on, whatever is configured. Takes effect with the next sync.
  void noneWantedIs(bool noneWanted) { noneWanted_ = noneWanted; }
  // Nothing of the policy is programmed any more: drops its machine and status. If it is wanted
  // again, it is built again.
  void policyGone(PolicyMapSmKey const& key);
  // The interface or its members changed: the policies attached to it are checked. With `force`
  // they are programmed again even if nothing differs.
  void intfChanged(Vorel::IntfId intf, bool force);

 private:
  void syncPolicy(PolicyMapSmKey const& key);
  void bring(PolicyMapSmKey const& key);
  void build(PolicyMapSmKey const& key, Kor::Ptr<PolicyMapConfig const> const& config);
  void syncIntf(PolicyMapSmKey const& key, Vorel::IntfId intf);

  Owner& owner_;
  Attachments attachments_;
  Settling<PolicyMapSmKey> settling_;
  bool noneWanted_ = false;
};

}  // namespace PolicyMap
