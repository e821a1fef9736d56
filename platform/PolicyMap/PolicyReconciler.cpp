// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyReconciler.h"

#include "PolicyMap/HitCounts.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace PolicyMap {

PolicyReconciler::PolicyReconciler(Policy& policy)
    : policy_(policy),
      retryTimer_([this] {
        lookAgainAtFailed();
        requestTurn();
      }),
      resultTimer_([this] { timedOut(); }) {}

PolicyReconciler::~PolicyReconciler() {
  serviceIs(nullptr);
}

void PolicyReconciler::serviceIs(Service* service) {
  if (service_ != nullptr) {
    for (auto const& helper : {service_->aclHelper(), helper_, leaving_}) {
      disown(helper);
    }
    leaving_ = nullptr;
    abandonTurn();
    cancel();
    retryTimer_.cancel();
  }
  service_ = service;
}

// What is created there belongs to no client any more.
void PolicyReconciler::disown(Kor::Ptr<PolicyMapAclHelper> const& helper) {
  if (!helper) {
    return;
  }
  HelperArbiter& arbiter = helper->arbiter();
  for (ClassMapMatchOption const option : allMatchOptions) {
    if (arbiter.creator(policy_.key(), option) == this) {
      arbiter.createdIs(policy_.key(), option, nullptr);
    }
  }
  arbiter.withdraw(*this);
}

void PolicyReconciler::abandonTurn() {
  ++turn_;
  if (passRun_) {
    std::exchange(passRun_, nullptr)->abandon();
  }
  resultTimer_.cancel();
  if (helper_) {
    std::exchange(helper_, nullptr)->arbiter().withdraw(*this);
  }
}

// marks -----------------------------------------------------------------------------------

void PolicyReconciler::requestTurn() {
  if (service_ != nullptr) {
    schedule();
  }
}

// What failed is tried again at once, and if it fails again the waits start over.
void PolicyReconciler::relevantChange() {
  retryDelay_ = 0;
  retryTimer_.cancel();
  lookAgainAtFailed();
  requestTurn();
}

void PolicyReconciler::lookAgainAtFailed() {
  for (OptionState& option : state_) {
    option.intfsDue = option.intfsDue || option.retry;
  }
}

void PolicyReconciler::scheduleRetry() {
  if (service_ == nullptr || retryTimer_.scheduled()) {
    return;
  }
  retryDelay_ =
      retryDelay_ == 0 ? service_->retryMin() : std::min(2 * retryDelay_, service_->retryMax());
  retryTimer_.scheduleIn(retryDelay_);
}

bool PolicyReconciler::marked() const {
  return actionsDue() || countsRequested_ ||
         std::any_of(state_.begin(), state_.end(), [](OptionState const& o) { return o.due(); });
}

void PolicyReconciler::rulesChanged(ClassMapMatchOption option) {
  state_[option].rulesDue = true;
  relevantChange();
}

void PolicyReconciler::rulesChanged() {
  for (OptionState& option : state_) {
    option.rulesDue = true;
  }
  relevantChange();
}

void PolicyReconciler::actionsChanged(Kor::Name const& className) {
  changedActions_.insert(className);
  relevantChange();
}

void PolicyReconciler::intfsChanged() {
  for (OptionState& option : state_) {
    option.intfsDue = true;
  }
  relevantChange();
}

void PolicyReconciler::everythingChanged() {
  allActionsDue_ = true;
  rulesChanged();
}

void PolicyReconciler::classChanged(Kor::Name const& className) {
  publisher_.classDue(className);
  rulesChanged();
}

void PolicyReconciler::countsRequested() {
  countsRequested_ = true;
  requestTurn();
}

void PolicyReconciler::reprogram() {
  for (OptionState& option : state_) {
    option.recreate = true;
  }
  rulesChanged();
}

void PolicyReconciler::wantedIs(bool wanted) {
  if (std::exchange(wanted_, wanted) != wanted) {
    rulesChanged();
  }
}

void PolicyReconciler::restart() {
  restart_ = true;
  rulesChanged();
}

// turns -----------------------------------------------------------------------------------

void PolicyReconciler::run() {
  Kor::Ptr<Kor::PtrInterface> const pinned = policy_.pinned();
  policy_.dropLeftClasses();
  // A turn that goes on, or a helper that is still to be left, takes the changes up when it ends;
  // a machine that is not active does so when it is activated.
  if (service_ == nullptr || helper_ || leaving_ || (!service_->active() && !unwanted())) {
    return;
  }
  helper_ = service_->aclHelper();
  if (helper_) {
    helper_->arbiter().request(*this);
  } else if (unwanted()) {
    service_->policyGone(policy_.key());
  }
}

void PolicyReconciler::granted() {
  Kor::Ptr<Kor::PtrInterface> const pinned = policy_.pinned();
  Kor::Ptr<PolicyMapAclHelper> const helper = helper_;
  if (!service_->active() && !unwanted()) {
    turnEnded(false);
    return;
  }
  unsigned const turn = turn_;
  std::optional<Pass> pass = nextPass();
  if (turn != turn_) {
    return;
  }
  if (pass) {
    HelperArbiter::Client& client = *this;
    PassRun::Observer& observer = *this;
    auto const passRun = std::make_shared<PassRun>(std::move(*pass), helper, client,
                                                   policy_.commonData(), state_, observer);
    passRun_ = passRun;
    goOn(passRun, passRun->run());
    return;
  }
  readCounts();
  if (turn == turn_) {
    turnEnded(false);
  }
}

void PolicyReconciler::goOn(std::shared_ptr<PassRun> const& passRun, PassRun::Outcome outcome) {
  switch (outcome) {
  case PassRun::Outcome::abandoned: break;
  case PassRun::Outcome::pending: resultTimer_.scheduleIn(service_->asyncTimeout()); break;
  default: passEnded(*passRun);
  }
}

void PolicyReconciler::resultArrived(Kor::String const& error) {
  Kor::Ptr<Kor::PtrInterface> const pinned = policy_.pinned();
  Kor::Ptr<PolicyMapAclHelper> const helper = helper_;
  resultTimer_.cancel();
  std::shared_ptr<PassRun> const passRun = passRun_;
  goOn(passRun, passRun->resultIs(error));
}

void PolicyReconciler::timedOut() {
  helper_->arbiter().abandonResult();
  std::ostringstream text;
  text << "no result within " << service_->asyncTimeout() << " seconds";
  resultArrived(Kor::String(text.str()));
}

void PolicyReconciler::committed(ClassMapMatchOption option) {
  policy_.timeProgrammedIs(option, Kor::now());
}

void PolicyReconciler::deleted(ClassMapMatchOption option) {
  policy_.timeProgrammedIs(option, std::nullopt);
  publisher_.allClassesDue();
  if (state_[option].retry) {
    scheduleRetry();
  }
}

void PolicyReconciler::passEnded(PassRun const& passRun) {
  unsigned const turn = turn_;
  passRun_ = nullptr;
  if (!passRun.pass().classes.empty()) {
    publisher_.allClassesDue();
  }
  if (passRun.deletionThrew()) {
    scheduleRetry();
  }
  if (!passRun.failure()) {
    for (OptionState& option : state_) {
      if (option.leftover && !option.retry) {
        option.failureDel();
      }
    }
  } else if (passRun.pass().kind == PassKind::tearDown) {
    tornDown(passRun);
  }
  if (turn == turn_) {
    publish();
  }
  if (turn == turn_) {
    turnEnded(true);
  }
}

// A teardown that failed: its text is shown. Where the option was refused, that is the lasting
// state, and the text is seen once.
void PolicyReconciler::tornDown(PassRun const& passRun) {
  ClassMapMatchOption const option = passRun.pass().option;
  OptionState& state = state_[option];
  bool const again = passRun.deletionThrew();
  bool const refused = !!state.failure && !state.leftover;
  PolicyFailure const refusal = std::exchange(state.failure, passRun.failure());
  if (refused) {
    unsigned const turn = turn_;
    publish(option);
    if (turn != turn_) {
      return;
    }
    state.failure = refusal;
  } else {
    state.leftover = true;
  }
  if (again) {
    state.retry = true;
  }
}

void PolicyReconciler::turnEnded(bool planned) {
  std::exchange(helper_, nullptr)->arbiter().release(*this);
  if (service_ == nullptr) {
    return;
  }
  if (marked() || (planned && unwanted())) {
    requestTurn();
  } else if (unwanted() && !ownsAnything()) {
    service_->policyGone(policy_.key());
  }
}

void PolicyReconciler::leaveHelper(Kor::Ptr<PolicyMapAclHelper> const& helper) {
  if (service_ == nullptr || !helper || leaving_) {
    return;
  }
  leaving_ = helper;
  if (helper->arbiter().calling()) {
    helper->arbiter().afterCall(*this);
  } else {
    leave();
  }
}

void PolicyReconciler::leave() {
  // The operation may drop the last references.
  Kor::Ptr<Kor::PtrInterface> const pinned = policy_.pinned();
  Kor::Ptr<PolicyMapAclHelper> const helper = leaving_;
  abandonTurn();
  unsigned const turn = turn_;
  for (ClassMapMatchOption const option : allMatchOptions) {
    HelperArbiter::Answer const answer =
        PassRun::takeDown(*helper, *this, policy_.commonData(), option, state_[option]);
    if (turn != turn_) {
      return;
    }
    policy_.timeProgrammedIs(option, std::nullopt);
    policy_.commonData()->intfRemoveAll(option);
    state_[option].forget();
    state_[option].failureDel();
    if (!answer.error.empty()) {
      state_[option].failure =
          PolicyFailure(answer.error, Kor::String(nameOf(HelperOperation::deletePolicy)), {}, {});
      state_[option].leftover = true;
    }
  }
  leaving_ = nullptr;
  publisher_.allClassesDue();
  requestTurn();
  publish();
}

void PolicyReconciler::readCounts() {
  if (!std::exchange(countsRequested_, false)) {
    return;
  }
  unsigned const turn = turn_;
  Kor::Ptr<PolicyMapAclHelper> const helper = helper_;
  for (Kor::Ptr<ClassMapSm> const& machine : policy_.classesInOrder()) {
    if (!machine->classMapStatus()) {
      continue;
    }
    // Held: an observer may take it away from the machine.
    Kor::Ptr<ClassMapStatus> const status = machine->classMapStatus();
    HitCounts const counts =
        readHitCounts(*helper, policy_.commonData(), machine->classCommonData(), state_,
                      [&] { return turn == turn_; });
    if (turn == turn_) {
      publishHitCounts(*status, counts);
    }
    if (turn != turn_) {
      return;
    }
  }
}

// planning --------------------------------------------------------------------------------

std::optional<Pass> PolicyReconciler::nextPass() {
  unsigned const turn = turn_;
  for (ClassMapMatchOption const option : allMatchOptions) {
    if (turn == turn_ && state_[option].due()) {
      if (std::optional<Pass> pass = planPass(option)) {
        return pass;
      }
    }
  }
  return turn == turn_ && actionsDue() ? planUpdate() : std::nullopt;
}

std::optional<Pass> PolicyReconciler::planPass(ClassMapMatchOption option) {
  unsigned const turn = turn_;
  OptionState& state = state_[option];
  bool const rulesDue = std::exchange(state.rulesDue, false);
  state.intfsDue = false;
  if (!rulesDue && state.noClasses && !unwanted() && !presentPolicy(option).owned) {
    return std::nullopt;
  }
  HelperTraits const traits(*helper_);
  WantedPolicy const wanted = wantedPolicy(option, rulesDue, traits);
  if (turn != turn_) {
    return std::nullopt;
  }
  OptionPlan plan =
      planOption(option, wanted, presentPolicy(option), state, traits, service_->aclDiff().get());
  if (plan.sameRules && wanted.classes) {
    for (Kor::Name const& renewed : state.classes.adopt(*wanted.classes)) {
      changedActions_.insert(renewed);
      publisher_.classDue(renewed);
    }
  }
  if (plan.refusal) {
    state.refusedIs(*plan.refusal);
    if (!plan.pass) {
      publish(option);
      if (turn == turn_) {
        publishClasses();
      }
    }
  }
  return turn == turn_ ? std::move(plan.pass) : std::nullopt;
}

// A change of interfaces alone does not ask the classes, unless they are to be programmed again.
WantedPolicy PolicyReconciler::wantedPolicy(ClassMapMatchOption option, bool rulesDue,
                                            HelperTraits const& traits) {
  WantedPolicy wanted;
  if (unwanted()) {
    return wanted;
  }
  OptionState& state = state_[option];
  bool const isKnown = known(presentPolicy(option), state);
  unsigned const turn = turn_;
  if (service_->allowsOption(option)) {
    wanted.intfs = service_->effectiveIntfs(policy_.key(), option);
  }
  if (turn != turn_ || (!rulesDue && wanted.intfs.empty() && (isKnown || !state.failure))) {
    return wanted;
  }
  if (rulesDue || !isKnown || state.recreate || state.expansion != traits.expansion ||
      state.capabilities != traits.capabilities || (actionsDue() && !traits.updateActions)) {
    // Of an option that is not allowed too: what is wrong with its rules refuses the others.
    wanted.classes = wantedClasses(option, wanted.refusal);
    state.noClasses = wanted.classes->empty() || !!wanted.refusal;
  } else {
    wanted.classes.reset();
  }
  if (turn == turn_ && !service_->allowsOption(option)) {
    return {};
  }
  return wanted;
}

ProgrammedClasses PolicyReconciler::wantedClasses(ClassMapMatchOption option,
                                                  PolicyFailure& refusal) {
  ProgrammedClasses classes;
  for (Kor::Ptr<ClassMapSm> const& machine : policy_.classesInOrder()) {
    Kor::String const error = machine->ruleError();
    if (!refusal && !error.empty()) {
      refusal = PolicyFailure(error, {}, machine->className(), {});
    }
    Kor::Ptr<ClassRules const> const rules = machine->rules(option);
    if (!rules->empty() && machine->classCommonData()) {
      classes.add({machine->className(), machine->classCommonData(), rules});
    }
  }
  return classes;
}

std::optional<Pass> PolicyReconciler::planUpdate() {
  bool const all = std::exchange(allActionsDue_, false);
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
  PerOption<bool> present;
  for (ClassMapMatchOption const option : allMatchOptions) {
    present[option] = known(presentPolicy(option), state_[option]);
  }
  Pass pass = planActionUpdate(changed, present, state_);
  if (pass.steps.empty()) {
    return std::nullopt;
  }
  if (helper_->updateActionSupported()) {
    return pass;
  }
  for (Step const& step : pass.steps) {
    if (step.operation == HelperOperation::commitPolicy) {
      state_[step.option].recreate = true;
      state_[step.option].rulesDue = true;
    }
  }
  return nextPass();
}

PresentPolicy PolicyReconciler::presentPolicy(ClassMapMatchOption option) const {
  PresentPolicy present;
  if (Kor::Ptr<PolicyMapAclHelper> const helper = helper_ ? helper_ : service_->aclHelper()) {
    HelperArbiter const& arbiter = helper->arbiter();
    present.created = arbiter.created(policy_.key(), option);
    present.owned = arbiter.creator(policy_.key(), option) == this;
  }
  present.intfs = policy_.commonData()->intfs(option);
  std::sort(present.intfs.begin(), present.intfs.end());
  return present;
}

bool PolicyReconciler::ownsAnything() const {
  return std::any_of(allMatchOptions.begin(), allMatchOptions.end(),
                     [this](auto const option) { return presentPolicy(option).owned; });
}

// publishing ------------------------------------------------------------------------------

void PolicyReconciler::publish() {
  unsigned const turn = turn_;
  for (ClassMapMatchOption const option : allMatchOptions) {
    if (turn == turn_) {
      publish(option);
    }
  }
  if (turn == turn_) {
    publishClasses();
  }
}

void PolicyReconciler::publish(ClassMapMatchOption option) {
  if (Kor::Ptr<PolicyMapStatus> const status = policy_.status()) {
    publisher_.publish(*status, option, presentPolicy(option), policy_.timeProgrammed(option));
  }
}

void PolicyReconciler::publishClasses() {
  unsigned const turn = turn_;
  bool const all = publisher_.allDue();
  std::set<Kor::Name> const names = publisher_.takeDueClasses();
  for (auto const& machine : all ? policy_.classesInOrder() : policy_.classesInOrder(names)) {
    if (turn == turn_) {
      publisher_.publish(*machine);
    }
  }
}

}  // namespace PolicyMap
