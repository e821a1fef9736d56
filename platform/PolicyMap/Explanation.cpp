// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/Explanation.h"

#include "PolicyMap/ServicePolicySm.h"

#include <map>
#include <set>
#include <utility>

namespace PolicyMap {
namespace {

using Attached = std::map<PolicyMapSmKey, std::set<Vorel::IntfId>>;

Attached attachedPolicies(ServicePolicySm const& machine) {
  Attached attached;
  if (machine.policyConfig()) {
    for (auto const& entry : machine.policyConfig()->servicePolicyIteratorConst()) {
      PolicyMapSmKey const policy(entry.value(), entry.key().direction());
      attached[policy].insert(entry.key().intf());
    }
  }
  return attached;
}

IntfObstacle obstacle(ServicePolicySm& machine, Vorel::IntfId intf, ClassMapMatchOption option) {
  IntfEligibility const eligibility = machine.eligibility();
  // A machine may decide otherwise than the statuses.
  auto const reason = [](IntfObstacle known) {
    return known == IntfObstacle::none ? IntfObstacle::excluded : known;
  };
  if (!machine.intfExists(intf)) {
    return IntfObstacle::absent;
  }
  if (!machine.allowedIntf(intf)) {
    return reason(eligibility.obstacle(intf, machine.allowedKinds()));
  }
  if (!machine.allowedIntfForType(intf, option)) {
    return reason(eligibility.obstacle(intf, option));
  }
  return machine.memberIntfs(intf).empty() ? IntfObstacle::noMembers : IntfObstacle::none;
}

Explanation::Intf explained(ServicePolicySm& machine, Vorel::IntfId intf,
                            ClassMapMatchOption option) {
  Explanation::Intf explained{intf, obstacle(machine, intf, option)};
  if (explained.obstacle == IntfObstacle::none) {
    explained.members = machine.memberIntfs(intf);
    if (explained.members == std::vector{intf}) {
      explained.members.clear();
    }
  }
  return explained;
}

PolicyProgress progress(ServicePolicySm const& machine, PolicyMapSmKey const& policy,
                        ClassMapMatchOption option) {
  if (!machine.policyConfig()->policyMapConfig(Kor::Name(policy.first()))) {
    return {ProgrammingState::noPolicyMap};
  }
  if (!machine.aclHelper()) {
    return {ProgrammingState::noHelper};
  }
  Kor::Ptr<PolicyMapSm> const policyMachine = machine.policyMapSm(policy);
  return policyMachine ? policyMachine->reconciler().progress(option)
                       : PolicyProgress{ProgrammingState::noMachine};
}

std::vector<Kor::Name> classesByPriority(ServicePolicySm const& machine,
                                         PolicyMapSmKey const& policy) {
  std::set<std::pair<std::uint32_t, Kor::Name>> byPriority;  // several may have the same
  auto const config = machine.policyConfig()->policyMapConfig(Kor::Name(policy.first()));
  if (config && config->currentSubConfig()) {
    for (auto const& entry : config->currentSubConfig()->classPrioIteratorConst()) {
      byPriority.emplace(entry.value(), entry.key());
    }
  }
  std::vector<Kor::Name> classes;
  classes.reserve(byPriority.size());
  for (auto const& [priority, className] : byPriority) {
    classes.push_back(className);
  }
  return classes;
}

std::vector<Explanation::Missing> missing(ServicePolicySm const& machine,
                                          PolicyMapSmKey const& policy) {
  std::vector<Explanation::Missing> all;
  Kor::Ptr<PolicyMapSm> const policyMachine = machine.policyMapSm(policy);
  for (Kor::Name const& className : classesByPriority(machine, policy)) {
    Kor::Ptr<ClassMapSm> const classMachine =
        policyMachine ? policyMachine->classMapSm(className) : nullptr;
    if (!classMachine) {
      all.push_back({className, "class-map " + className.stdString()});
      continue;
    }
    for (std::string const& object : classMachine->missing()) {
      all.push_back({className, object});
    }
  }
  return all;
}

void explain(ServicePolicySm& machine, Attached::value_type const& attached,
             std::vector<Explanation>& explanations) {
  auto const& [policy, intfs] = attached;
  for (ClassMapMatchOption const option : allMatchOptions) {
    Explanation explanation;
    static_cast<PolicyProgress&>(explanation) = progress(machine, policy, option);
    explanation.policy = policy;
    explanation.option = option;
    for (Vorel::IntfId const intf : intfs) {
      explanation.intfs.push_back(explained(machine, intf, option));
    }
    explanation.missing = missing(machine, policy);
    explanations.push_back(std::move(explanation));
  }
}

}  // namespace

std::vector<Explanation> explain(ServicePolicySm& machine) {
  std::vector<Explanation> explanations;
  for (auto const& attached : attachedPolicies(machine)) {
    explain(machine, attached, explanations);
  }
  return explanations;
}

std::vector<Explanation> explain(ServicePolicySm& machine, PolicyMapSmKey const& policy) {
  std::vector<Explanation> explanations;
  Attached const attached = attachedPolicies(machine);
  if (auto const found = attached.find(policy); found != attached.end()) {
    explain(machine, *found, explanations);
  }
  return explanations;
}

}  // namespace PolicyMap
