// SPDX-License-Identifier: Apache-2.0
#pragma once

// PassPlan: computes the steps from what is programmed to what is wanted. Pure: it touches neither
// helper nor status, and equal inputs give equal plans.

#include "Acl/AclDiff.h"
#include "PolicyMap/Pass.h"

#include <optional>
#include <vector>

namespace PolicyMap {

// What is wanted for one option. Without classes or without interfaces, nothing is wanted.
struct WantedPolicy {
  // In priority order. None: the classes that are programmed, with unchanged rules.
  std::optional<ProgrammedClasses> classes = ProgrammedClasses();
  std::vector<Vorel::IntfId> intfs = {};  // ascending, unique
  PolicyFailure refusal = {};             // why the classes cannot be programmed
};

// What exists on the helper for one option of the policy.
struct PresentPolicy {
  bool created = false;
  bool owned = false;                     // created by this client
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

struct OptionPlan {
  // The steps. None: no operation is needed.
  std::optional<Pass> pass = std::nullopt;
  // Present if the option must not be programmed. Its text is empty if there is nothing to program,
  // otherwise the reason why the classes cannot be programmed.
  std::optional<PolicyFailure> refusal = std::nullopt;
  // The wanted classes have the rules that are programmed, so they can replace the programmed ones
  // without an operation.
  bool sameRules = false;
};

// True if the option was created by this client and its programmed classes are known.
[[nodiscard]] inline bool known(PresentPolicy const& present, OptionState const& state) {
  return present.owned && !state.classes.empty();
}

// Without a difference tracker, any other version of a list is treated as different.
[[nodiscard]] POLICYMAP_API OptionPlan
planOption(ClassMapMatchOption option, WantedPolicy const& wanted, PresentPolicy const& present,
           OptionState const& state, HelperTraits const& helper, Acl::AclDiff const* aclDiff);

// Updates the actions of the classes in `changed` (in priority order) that are programmed and have
// pending updates, then commits each affected option. No steps: no update is pending. `present`
// says for which options the programmed classes are known.
[[nodiscard]] POLICYMAP_API Pass
planActionUpdate(std::vector<Kor::Ptr<ClassMapSmCommonData>> const& changed,
                 PerOption<bool> const& present, ProgrammedState const& state);

}  // namespace PolicyMap
