// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/AttachedPolicies.h"

#include <set>

namespace PolicyMap {

void AttachedPolicies::sync() {
  std::set<ServicePolicyKey> places = attachments_.places();
  if (owner_.policyConfig()) {
    for (auto const& entry : owner_.policyConfig()->servicePolicyIteratorConst()) {
      places.insert(entry.key());
    }
  }
  for (ServicePolicyKey const& place : places) {
    syncPlace(place);
  }
  for (PolicyMapSmKey const& key : attachments_.policies()) {
    syncPolicy(key);
  }
}

// Updates `attachments_` completely before it calls anything, because the calls may change the
// attachments again.
void AttachedPolicies::syncPlace(ServicePolicyKey const& place) {
  Kor::Ptr<PolicyMapTypeConfig const> const config = owner_.policyConfig();
  Attachments::Change const change =
      attachments_.set(place, config ? config->servicePolicy(place) : Kor::Name());
  if (change.left) {
    syncIntf(*change.left, place.intf());
    owner_.handlePolicyMap(Kor::Name(change.left->first()));
  }
  if (change.joined) {
    owner_.handlePolicyMap(Kor::Name(change.joined->first()));
    syncIntf(*change.joined, place.intf());
  }
}

void AttachedPolicies::syncPolicyMap(Kor::Name const& name) {
  for (char const* const direction : {"input", "output"}) {
    syncPolicy(PolicyMapSmKey(name, direction));
  }
}

void AttachedPolicies::syncPolicy(PolicyMapSmKey const& key) {
  // A copy: the key may be stored in an entry that is removed during the call.
  settling_.settle(key, [this, held = PolicyMapSmKey(key)] { bring(held); });
}

void AttachedPolicies::bring(PolicyMapSmKey const& key) {
  bool const attached = !noneWanted_ && attachments_.contains(key);
  Kor::Ptr<PolicyMapConfig const> const config =
      owner_.policyConfig() ? owner_.policyConfig()->policyMapConfig(Kor::Name(key.first()))
                            : nullptr;
  if (Kor::Ptr<PolicyMapSm> const machine = owner_.policyMapSm(key)) {
    if (config) {
      machine->policyMapConfigIs(config);
    }
    machine->reconciler().wantedIs(attached && config);
  } else if (attached && config) {
    build(key, config);
  }
}

void AttachedPolicies::build(PolicyMapSmKey const& key,
                             Kor::Ptr<PolicyMapConfig const> const& config) {
  Kor::Ptr<PolicyMapStatus> const status =
      owner_.status() ? owner_.status()->policyMapStatusIs(key) : nullptr;
  Kor::Ptr<PolicyMapSm> const machine = owner_.createPolicyMapSm(key, config, status);
  if (!machine) {
    return;
  }
  owner_.policyMapSmIs(key, machine);
  for (Vorel::IntfId const intf : attachments_.intfsOf(key)) {
    syncIntf(key, intf);
  }
  // The calls above may have changed the configuration.
  syncPolicy(key);
}

void AttachedPolicies::policyGone(PolicyMapSmKey const& key) {
  Kor::Ptr<PolicyMapSm> const machine = owner_.policyMapSm(key);
  if (!machine) {
    return;
  }
  machine->serviceIs(nullptr);
  machine->cleanup();
  machine->korDoZombieReactors(true);
  owner_.policyMapSmDel(key);
  if (owner_.status()) {
    owner_.status()->policyMapStatusDel(key);
  }
  // It may be wanted again, or have to be built again with a different configuration.
  if (owner_.reacting()) {
    syncPolicy(key);
  }
}

void AttachedPolicies::intfChanged(Vorel::IntfId intf, bool force) {
  for (PolicyMapSmKey const& key : attachments_.policiesAt(intf)) {
    syncIntf(key, intf);
    if (Kor::Ptr<PolicyMapSm> const machine = owner_.policyMapSm(key)) {
      if (force) {
        machine->reconciler().reprogram();
      } else {
        machine->reconciler().intfsChanged();
      }
    }
  }
}

void AttachedPolicies::syncIntf(PolicyMapSmKey const& key, Vorel::IntfId intf) {
  Kor::Ptr<PolicyMapSm> const machine = owner_.policyMapSm(key);
  if (!machine) {
    return;
  }
  if (attachments_.contains(key, intf)) {
    machine->activeIntfIs(intf, owner_.mayCarryPolicies(intf));
  } else {
    machine->activeIntfDel(intf);
  }
}

}  // namespace PolicyMap
