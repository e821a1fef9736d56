// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/DuePasses.h"

#include <algorithm>
#include <utility>

namespace PolicyMap {
namespace {

ProgrammedClass wantedClass(ClassMapSm& machine, ClassMapMatchOption option) {
  return {machine.className(), machine.classCommonData(), machine.rules(option)};
}

}  // namespace

void DuePasses::rulesDue() {
  for (OptionState& option : state_) {
    option.rulesDue = true;
  }
}

void DuePasses::intfsDue() {
  for (OptionState& option : state_) {
    option.intfsDue = true;
  }
}

void DuePasses::everythingDue() {
  allActions_ = true;
  rulesDue();
}

void DuePasses::reprogrammingDue() {
  for (OptionState& option : state_) {
    option.recreate = true;
  }
  rulesDue();
}

void DuePasses::failedDue() {
  for (OptionState& option : state_) {
    option.intfsDue = option.intfsDue || option.retry;
  }
}

bool DuePasses::wantedIs(bool wanted) {
  bool const changed = std::exchange(wanted_, wanted) != wanted;
  if (changed) {
    rulesDue();
  }
  return changed;
}

void DuePasses::restart() {
  restart_ = true;
  rulesDue();
}

bool DuePasses::any() const {
  return anyActions() ||
         std::any_of(state_.begin(), state_.end(), [](OptionState const& o) { return o.due(); });
}

PolicyProgress DuePasses::progress(ClassMapMatchOption option, PolicyHost const& host,
                                   HelperArbiter::Presence const& present,
                                   std::optional<double> nextTry) const {
  OptionState const& state = state_[option];
  PolicyProgress progress{ProgrammingState::noIntf, known(present, state)};
  if (!!state.failure) {
    progress.state =
        state.failure.operation().empty() ? ProgrammingState::refused : ProgrammingState::failed;
    progress.failure = state.failure;
    progress.nextTry = state.retry ? nextTry : std::nullopt;
  } else if (state.due() || (progress.programmed && anyActions())) {
    progress.state = ProgrammingState::due;
  } else if (progress.programmed) {
    progress.state = ProgrammingState::programmed;
  } else if (state.noClasses || state.refused) {
    progress.state = ProgrammingState::nothingToProgram;
  } else if (!host.allowsOption(option)) {
    progress.state = ProgrammingState::optionNotAllowed;
  }
  return progress;
}

std::optional<Pass> DuePasses::next(Turn& turn) {
  for (ClassMapMatchOption const option : allMatchOptions) {
    if (!turn.over() && state_[option].due()) {
      if (std::optional<Pass> pass = optionPass(option, turn)) {
        return pass;
      }
    }
  }
  return !turn.over() && anyActions() ? updatePass(turn) : std::nullopt;
}

std::optional<Pass> DuePasses::optionPass(ClassMapMatchOption option, Turn& turn) {
  OptionState& state = state_[option];
  // A teardown that failed may have been planned for a refusal, which is still to be found.
  ChangedClasses const changed{std::exchange(state.rulesDue, false) || state.retry,
                               std::exchange(state.classesDue, {})};
  state.intfsDue = false;
  if (!changed.any() && (state.noClasses || state.refused) && !unwanted() &&
      !turn.presence(option).owned) {
    return std::nullopt;
  }
  std::string_view const cause = causeOf(state, changed.any());
  HelperTraits const traits(turn.helper());
  WantedPolicy const wanted = wantedPolicy(option, changed, traits, turn);
  if (turn.over()) {
    return std::nullopt;
  }
  OptionPlan plan =
      planOption(option, wanted, turn.present(option), state, traits, turn.host().aclDiff().get());
  if (plan.sameRules && wanted.classes) {
    adopt(state, *wanted.classes, turn);
  }
  if (plan.refusal) {
    state.refused = state.refused || !!*plan.refusal;
    state.refusedIs(*plan.refusal);
    if (!plan.pass) {
      turn.refused(option);
    }
  }
  if (plan.pass) {
    plan.pass->cause = cause;
  }
  return std::move(plan.pass);
}

std::string_view DuePasses::causeOf(OptionState const& state, bool rulesDue) const {
  if (restart_) {
    return "replaced configuration";
  }
  if (!wanted_) {
    return "not wanted";
  }
  if (state.retry) {
    return "retry";
  }
  if (state.recreate) {
    return "to be programmed again";
  }
  return rulesDue ? "rules changed" : "interfaces changed";
}

void DuePasses::adopt(OptionState& state, std::span<ProgrammedClass const> same, Turn& turn) {
  for (Kor::Name const& className : state.classes.adopt(same)) {
    changedActions_.insert(className);
    turn.renewed(className);
  }
}

WantedPolicy DuePasses::wantedPolicy(ClassMapMatchOption option, ChangedClasses const& changed,
                                     HelperTraits const& traits, Turn& turn) {
  WantedPolicy wanted;
  if (unwanted()) {
    return wanted;
  }
  OptionState& state = state_[option];
  bool const isKnown = known(turn.presence(option), state);
  if (turn.host().allowsOption(option)) {
    wanted.intfs = turn.host().effectiveIntfs(policy_.key(), option);
  }
  if (turn.over() || (!changed.any() && isKnown && wanted.intfs.empty())) {
    return wanted;
  }
  bool const compareSome =
      !changed.all && !state.recreate && !state.refused && (traits.updateActions || !anyActions());
  if (compareSome && isKnown && asProgrammed(option, changed.some, traits, turn)) {
    wanted.classes.reset();
  } else if (isKnown || !compareSome || !remainsAbsent(option, changed.some, wanted, traits)) {
    // Compiled even if the option is not allowed: an error in its rules refuses the other options.
    wanted.classes = wantedClasses(option, wanted.refusal);
    state.noClasses = wanted.classes->empty();
    state.refused = !!wanted.refusal;
  }
  if (!turn.over() && !turn.host().allowsOption(option)) {
    return {};
  }
  return wanted;
}

ProgrammedClasses DuePasses::wantedClasses(ClassMapMatchOption option, PolicyFailure& refusal) {
  ProgrammedClasses classes;
  for (Kor::Ptr<ClassMapSm> const& machine : policy_.classesInOrder()) {
    Kor::String const error = machine->ruleError();
    if (!refusal && !error.empty()) {
      refusal = PolicyFailure(error, {}, machine->className(), {});
    }
    ProgrammedClass wanted = wantedClass(*machine, option);
    if (wanted.contributes()) {
      classes.add(std::move(wanted));
    }
  }
  return classes;
}

bool DuePasses::asProgrammed(ClassMapMatchOption option, std::set<Kor::Name> const& changed,
                             HelperTraits const& traits, Turn& turn) {
  if (changed.empty()) {
    return true;
  }
  ProgrammedClasses const& classes = state_[option].classes;
  Kor::Ptr<Acl::AclDiff> const aclDiff = turn.host().aclDiff();
  std::vector<ProgrammedClass> same;
  for (Kor::Ptr<ClassMapSm> const& machine : policy_.classesInOrder(changed)) {
    if (!machine->ruleError().empty()) {
      return false;
    }
    ProgrammedClass const wanted = wantedClass(*machine, option);
    ProgrammedClass const* const programmed = classes.find(wanted.name);
    if (!wanted.contributes() && programmed == nullptr) {
      continue;
    }
    if (!wanted.contributes() || programmed == nullptr ||
        !programmed->rules->sameEffect(*wanted.rules, aclDiff.get()) ||
        (programmed->data != wanted.data && !traits.updateActions)) {
      return false;
    }
    same.push_back(wanted);
  }
  bool const noneLeft = static_cast<std::ptrdiff_t>(same.size()) ==
                        std::count_if(changed.begin(), changed.end(), [&](auto const& name) {
                          return classes.find(name) != nullptr;
                        });
  // Classes that keep their neighbours keep their place.
  std::vector<Kor::Name> const around = classes.around(changed);
  PolicyOwner::Classes const inOrder = policy_.classesInOrder({around.begin(), around.end()});
  if (turn.over() || !noneLeft ||
      !std::equal(around.begin(), around.end(), inOrder.begin(), inOrder.end(),
                  [](Kor::Name const& name, Kor::Ptr<ClassMapSm> const& machine) {
                    return machine->className() == name;
                  })) {
    return false;
  }
  adopt(state_[option], same, turn);
  return true;
}

bool DuePasses::remainsAbsent(ClassMapMatchOption option, std::set<Kor::Name> const& changed,
                              WantedPolicy const& wanted, HelperTraits const& traits) {
  bool const noClasses = state_[option].noClasses;
  if (!noClasses && (!wanted.intfs.empty() || (!changed.empty() && !traits.capabilities.all()))) {
    return false;
  }
  PolicyOwner::Classes const machines = policy_.classesInOrder(changed);
  return (noClasses || machines.size() == changed.size()) &&
         std::all_of(machines.begin(), machines.end(), [&](Kor::Ptr<ClassMapSm> const& machine) {
           return machine->ruleError().empty() &&
                  wantedClass(*machine, option).contributes() != noClasses;
         });
}

std::optional<Pass> DuePasses::updatePass(Turn& turn) {
  bool const all = std::exchange(allActions_, false);
  std::set<Kor::Name> const names = std::exchange(changedActions_, {});
  if (unwanted()) {
    return std::nullopt;
  }
  std::vector<Kor::Ptr<ClassMapSmCommonData>> changed;
  for (auto const& machine : all ? policy_.classesInOrder() : policy_.classesInOrder(names)) {
    if (machine->classCommonData()) {
      changed.push_back(machine->classCommonData());
    }
  }
  PerOption<bool> isKnown;
  for (ClassMapMatchOption const option : allMatchOptions) {
    isKnown[option] = known(turn.presence(option), state_[option]);
  }
  Pass pass = planActionUpdate(changed, isKnown, state_);
  if (pass.steps.empty()) {
    return std::nullopt;
  }
  pass.cause = "actions changed";
  if (turn.helper().updateActionSupported()) {
    return pass;
  }
  for (Step const& step : pass.steps) {
    if (step.operation == HelperOperation::commitPolicy) {
      rulesDue(step.option);
    }
  }
  return next(turn);
}

}  // namespace PolicyMap
