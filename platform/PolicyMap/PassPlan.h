// SPDX-License-Identifier: Apache-2.0
#pragma once

// PassPlan: which steps lead from what is programmed to what is wanted. Pure: neither helper nor
// status is touched, and equal inputs give equal plans.

#include "Acl/AclDiff.h"
#include "PolicyMap/Pass.h"

#include <optional>
#include <vector>

namespace PolicyMap {

// What is wanted for one option. Without classes or without interfaces nothing is.
struct WantedPolicy {
  // In priority order; none: those that are programmed, with their rules unchanged.
  std::optional<ProgrammedClasses> classes = ProgrammedClasses();
  std::vector<Vorel::IntfId> intfs = {};  // ascending, each once
  PolicyFailure refusal = {};             // why the classes cannot be programmed
};

// What the helper has of the policy for one option.
struct PresentPolicy {
  bool created = false;
  bool owned = false;                     // it was created from here
  std::vector<Vorel::IntfId> intfs = {};  // to which it is applied, ascending
};

// What the helper can do, as far as it decides about steps.
struct POLICYMAP_API HelperTraits {
  Capabilities capabilities = {};
  PortExpansion expansion = PortExpansion::rangeChecker;
  bool updateActions = false;
  bool reprogramOnIntfChange = false;

  HelperTraits() = default;
  explicit HelperTraits(PolicyMapAclHelper const& helper);
};

struct OptionPlan {
  // The steps; none: nothing is to be called.
  std::optional<Pass> pass = std::nullopt;
  // Present when the option is not to be programmed. Its text is empty when there is nothing to
  // program, else why the classes cannot be.
  std::optional<PolicyFailure> refusal = std::nullopt;
  // The wanted classes have the rules that are programmed: they can be taken over in their place.
  bool sameRules = false;
};

// Whether the option was created from here and what is programmed is known.
[[nodiscard]] inline bool known(PresentPolicy const& present, OptionState const& state) {
  return present.owned && !state.classes.empty();
}

// Without a difference tracker every other version of a list is taken for a difference.
[[nodiscard]] POLICYMAP_API OptionPlan
planOption(ClassMapMatchOption option, WantedPolicy const& wanted, PresentPolicy const& present,
           OptionState const& state, HelperTraits const& helper, Acl::AclDiff const* aclDiff);

// Updates the actions of those of `changed` (in priority order) that are programmed and have moved,
// then commits each option concerned. No steps: nothing has moved. `present` says which options are
// known.
[[nodiscard]] POLICYMAP_API Pass
planActionUpdate(std::vector<Kor::Ptr<ClassMapSmCommonData>> const& changed,
                 PerOption<bool> const& present, ProgrammedState const& state);

}  // namespace PolicyMap
