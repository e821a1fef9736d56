// SPDX-License-Identifier: Apache-2.0
#pragma once

// PassPlan: computes the steps from what is programmed to what is wanted. Pure: it touches neither
// helper nor status, and equal inputs give equal plans.

#include "Acl/AclDiff.h"
#include "PolicyMap/HelperArbiter.h"
#include "PolicyMap/Pass.h"

#include <optional>
#include <vector>

namespace PolicyMap {

// What is wanted for one option. Without interfaces, nothing is wanted.
struct WantedPolicy {
  // In priority order. nullopt: the programmed classes, with unchanged rules. Empty: nothing is
  // wanted.
  std::optional<ProgrammedClasses> classes = ProgrammedClasses();
  std::vector<Vorel::IntfId> intfs = {};  // ascending, unique
  PolicyFailure refusal = {};             // why the classes cannot be programmed
};

// What exists on the helper for one option of the policy.
struct PresentPolicy : HelperArbiter::Presence {
  std::vector<Vorel::IntfId> intfs = {};  // where the policy is applied, ascending
};

// The properties of the helper that affect the steps.
struct POLICYMAP_API HelperTraits {
  Capabilities capabilities = {};
  PortExpansion expansion = PortExpansion::rangeChecker;
  bool updateActions = false;
  bool reprogramOnIntfChange = false;

  HelperTraits() = default;
  explicit HelperTraits(PolicyMapAclHelper const& helper);
};

// The result of planOption().
struct OptionPlan {
  // The steps; nullopt if no operation is needed.
  std::optional<Pass> pass = std::nullopt;
  // Set if the option is not to be programmed: with an empty text if there is nothing to program,
  // otherwise with the reason.
  std::optional<PolicyFailure> refusal = std::nullopt;
  // True if the wanted classes have the programmed rules. The state may take them over without a
  // helper operation.
  bool sameRules = false;
};

// True if the option was created by this client and its programmed classes are known.
[[nodiscard]] inline bool known(HelperArbiter::Presence const& present, OptionState const& state) {
  return present.owned && !state.classes.empty();
}

// Plans the steps for one option from `present` and `state` to `wanted`. With a null `aclDiff`, two
// versions of a list always differ.
[[nodiscard]] POLICYMAP_API OptionPlan
planOption(ClassMapMatchOption option, WantedPolicy const& wanted, PresentPolicy const& present,
           OptionState const& state, HelperTraits const& helper, Acl::AclDiff const* aclDiff);

// Updates the actions of the classes in `changed` (in priority order) that are programmed and have
// pending updates, then commits each affected option. The pass has no steps if no update is
// pending. `known` says for which options the programmed classes are known.
[[nodiscard]] POLICYMAP_API Pass
planActionUpdate(std::vector<Kor::Ptr<ClassMapSmCommonData>> const& changed,
                 PerOption<bool> const& known, ProgrammedState const& state);

}  // namespace PolicyMap
