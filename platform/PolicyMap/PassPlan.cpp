// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PassPlan.h"

#include <algorithm>
#include <iterator>

namespace PolicyMap {
namespace {

bool sameRules(ProgrammedClasses const& programmed, ProgrammedClasses const& wanted,
               Acl::AclDiff const* aclDiff) {
  return std::equal(programmed.begin(), programmed.end(), wanted.begin(), wanted.end(),
                    [aclDiff](ProgrammedClass const& a, ProgrammedClass const& b) {
                      return a.name == b.name && a.rules->sameEffect(*b.rules, aclDiff);
                    });
}

// The first rule that the helper cannot program. Default value: all can be programmed.
PolicyFailure unsupported(ProgrammedClasses const& classes, ClassMapMatchOption option,
                          Capabilities const& capabilities) {
  PolicyFailure failure;
  if (capabilities.all()) {
    return failure;
  }
  for (ProgrammedClass const& wanted : classes) {
    wanted.rules->forEach([&](auto const& rule) {
      std::string_view const reason = capabilities.reasonAgainst(rule.rule);
      if (!reason.empty()) {
        AclRuleKey const key(wanted.name, rule.aclName, rule.seqno, option);
        failure = PolicyFailure(refusal(key, reason), {}, key.className(), key);
      }
      return reason.empty();
    });
    if (!!failure) {
      break;
    }
  }
  return failure;
}

// True if actions must be programmed again: an update is pending, or the class has new common data.
bool actionsMoved(ProgrammedClasses const& programmed,
                  std::optional<ProgrammedClasses> const& same) {
  if (!same) {
    return false;  // action updates have their own pass
  }
  return !std::equal(programmed.begin(), programmed.end(), same->begin(), same->end(),
                     [](ProgrammedClass const& a, ProgrammedClass const& b) {
                       return a.data == b.data && !a.actionsMoved();
                     });
}

Pass tearDown(ClassMapMatchOption option, std::vector<Vorel::IntfId> const& intfs) {
  Pass pass{PassKind::tearDown, option, {}};
  for (Vorel::IntfId const intf : intfs) {
    pass.steps.push_back({HelperOperation::removeIntf, option, intf});
  }
  pass.steps.push_back({HelperOperation::deletePolicy, option});
  return pass;
}

std::vector<Step> intfSteps(HelperOperation operation, ClassMapMatchOption option,
                            std::vector<Vorel::IntfId> const& of,
                            std::vector<Vorel::IntfId> const& without) {
  std::vector<Vorel::IntfId> intfs;
  std::set_difference(of.begin(), of.end(), without.begin(), without.end(),
                      std::back_inserter(intfs));
  std::vector<Step> steps;
  steps.reserve(intfs.size());
  for (Vorel::IntfId const intf : intfs) {
    steps.push_back({operation, option, intf});
  }
  return steps;
}

}  // namespace

HelperTraits::HelperTraits(PolicyMapAclHelper const& helper)
    : capabilities(Capabilities::of(helper)),
      expansion(helper.subRulesForL4Ports() ? PortExpansion::alignedBlocks
                                            : PortExpansion::rangeChecker),
      updateActions(helper.updateActionSupported()),
      reprogramOnIntfChange(helper.reprogramPolicyOnIntfChange()) {}

OptionPlan planOption(ClassMapMatchOption option, WantedPolicy const& wanted,
                      PresentPolicy const& present, OptionState const& state,
                      HelperTraits const& helper, Acl::AclDiff const* aclDiff) {
  ProgrammedClasses const& classes = wanted.classes ? *wanted.classes : state.classes;
  OptionPlan plan;
  bool const asWanted = known(present, state) &&
                        (!wanted.classes || sameRules(state.classes, *wanted.classes, aclDiff));
  bool recreate = !asWanted || state.recreate || state.expansion != helper.expansion;

  PolicyFailure refusal = wanted.refusal;
  if (!refusal && (recreate || state.capabilities != helper.capabilities)) {
    refusal = unsupported(classes, option, helper.capabilities);
  }
  if (classes.empty() || wanted.intfs.empty() || !!refusal) {
    plan.refusal = refusal;
    if (present.owned) {
      plan.pass = tearDown(option, present.intfs);
    }
    return plan;
  }

  plan.sameRules = asWanted;
  Pass pass{PassKind::program, option,
            intfSteps(HelperOperation::removeIntf, option, present.intfs, wanted.intfs)};
  std::vector<Step> const join =
      intfSteps(HelperOperation::addIntf, option, wanted.intfs, present.intfs);
  bool const intfsDiffer = !pass.steps.empty() || !join.empty();
  recreate = recreate || (intfsDiffer && helper.reprogramOnIntfChange) ||
             (!helper.updateActions && actionsMoved(state.classes, wanted.classes));
  if (!recreate && !intfsDiffer) {
    return plan;
  }
  if (recreate) {
    pass.steps.push_back(
        {present.created ? HelperOperation::recreatePolicy : HelperOperation::createPolicy,
         option});
    pass.steps.push_back({HelperOperation::addRule, option});
    pass.classes = classes;
    pass.expansion = helper.expansion;
    pass.capabilities = helper.capabilities;
  }
  pass.steps.insert(pass.steps.end(), join.begin(), join.end());
  pass.steps.push_back({HelperOperation::commitPolicy, option});
  plan.pass = std::move(pass);
  return plan;
}

Pass planActionUpdate(std::vector<Kor::Ptr<ClassMapSmCommonData>> const& changed,
                      PerOption<bool> const& known, ProgrammedState const& state) {
  Pass pass{PassKind::updateActions, ClassMapMatchOption::ipv4, {}};
  PerOption<bool> concerned;
  for (Kor::Ptr<ClassMapSmCommonData> const& data : changed) {
    bool moved = false;
    for (ClassMapMatchOption const option : allMatchOptions) {
      ProgrammedClass const* const programmed = state[option].classes.find(data.get());
      if (known[option] && programmed != nullptr && programmed->actionsMoved()) {
        concerned[option] = moved = true;
      }
    }
    if (moved) {
      Step step{HelperOperation::updateAction};
      step.updatedClass = data;
      pass.steps.push_back(step);
    }
  }
  for (ClassMapMatchOption const option : allMatchOptions) {
    if (concerned[option]) {
      pass.steps.push_back({HelperOperation::commitPolicy, option});
    }
  }
  return pass;
}

}  // namespace PolicyMap
