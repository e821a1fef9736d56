// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyReconciler.h"

#include "PolicyMap/HitCounts.h"
#include "PolicyMap/PassTrace.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace PolicyMap {

PolicyReconciler::PolicyReconciler(Policy& policy)
    : policy_(policy),
      retryTimer_([this] {
        due_.failedDue();
        schedule();
      }),
      resultTimer_([this] { timedOut(); }) {
  due_.rulesDue();
}

PolicyReconciler::~PolicyReconciler() {
  serviceIs(nullptr);
}

void PolicyReconciler::serviceIs(Service* service) {
  if (service_ != nullptr) {
    for (auto const& helper : {service_->aclHelper(), helper_, leaving_}) {
      if (helper) {
        helper->arbiter().disown(policy_.key(), *this);
        helper->arbiter().withdraw(*this);
      }
    }
    leaving_ = nullptr;
    abandonTurn();
    service_->userDel(*this);
  }
  service_ = service;
  if (service != nullptr) {
    service->userIs(*this);
    Kor::EventLoop& loop = service->eventLoop();
    loopIs(loop);
    retryTimer_.loopIs(loop);
    resultTimer_.loopIs(loop);
  }
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

// A relevant change retries what failed at once and resets the waits.
void PolicyReconciler::relevantChange() {
  retryTimer_.startOver();
  due_.failedDue();
  schedule();
}

void PolicyReconciler::scheduleRetry() {
  if (service_ != nullptr && retryTimer_.schedule(service_->retryMin(), service_->retryMax())) {
    traceRetry(policy_.key(), retryTimer_.wait());
  }
}

// Over as soon as the turn number has changed.
class PolicyReconciler::PlanningTurn final : public DuePasses::Turn {
 public:
  PlanningTurn(PolicyReconciler& reconciler, PolicyMapAclHelper const& helper)
      : reconciler_(reconciler), helper_(helper), turn_(reconciler.turn_) {}

  bool over() const override { return turn_ != reconciler_.turn_; }
  PolicyHost& host() override { return *reconciler_.service_; }
  PolicyMapAclHelper const& helper() const override { return helper_; }
  HelperArbiter::Presence presence(ClassMapMatchOption option) const override {
    return reconciler_.presence(option);
  }
  PresentPolicy present(ClassMapMatchOption option) const override {
    return reconciler_.presentPolicy(option);
  }
  void refused(ClassMapMatchOption option) override {
    reconciler_.publish(option);
    if (!over()) {
      reconciler_.publishClasses();
    }
  }
  void renewed(Kor::Name const& className) override { reconciler_.publisher_.classDue(className); }

 private:
  PolicyReconciler& reconciler_;
  PolicyMapAclHelper const& helper_;
  unsigned turn_;
};

// turns -----------------------------------------------------------------------------------

void PolicyReconciler::run() {
  Kor::Ptr<Kor::PtrInterface> const pinned = policy_.pinned();
  policy_.dropLeftClasses();
  // A turn in progress, or a helper still to be left, handles the changes when it ends. An inactive
  // machine handles them when it is activated.
  if (service_ == nullptr || helper_ || leaving_ || (!service_->active() && !due_.unwanted())) {
    return;
  }
  helper_ = service_->aclHelper();
  if (helper_) {
    helper_->arbiter().request(*this);
  } else if (due_.unwanted()) {
    service_->policyGone(policy_.key());
  }
}

void PolicyReconciler::granted() {
  Kor::Ptr<Kor::PtrInterface> const pinned = policy_.pinned();
  Kor::Ptr<PolicyMapAclHelper> const helper = helper_;
  if (!service_->active() && !due_.unwanted()) {
    turnEnded();
    return;
  }
  PlanningTurn planning(*this, *helper);
  std::optional<Pass> pass = due_.next(planning);
  if (planning.over()) {
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
  if (!planning.over()) {
    turnEnded();
  }
}

void PolicyReconciler::goOn(std::shared_ptr<PassRun> const& passRun, PassRun::Outcome outcome) {
  switch (outcome) {
  case PassRun::Outcome::abandoned: break;
  case PassRun::Outcome::pending:
    waitingSince_ = service_->eventLoop().now();
    resultTimer_.scheduleIn(service_->asyncTimeout());
    break;
  default: passEnded(*passRun);
  }
}

void PolicyReconciler::resultArrived(Kor::String const& error) {
  auto const pinned = policy_.pinned();
  auto const helper = helper_;
  resultTimer_.cancel();
  auto const passRun = passRun_;
  goOn(passRun, passRun->resultIs(error));
}

void PolicyReconciler::timedOut() {
  helper_->arbiter().abandonResult();
  std::ostringstream text;
  text << "no result within " << service_->asyncTimeout() << " seconds";
  resultArrived(text.str());
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
    turnEnded();
  }
}

// Publishes the failure of a teardown. If the option is refused, the refusal is its lasting
// failure, so the text of the teardown is published only once.
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

void PolicyReconciler::turnEnded() {
  // The next client runs inside release() and may destroy the service machine.
  std::exchange(helper_, nullptr)->arbiter().release(*this);
  if (service_ == nullptr) {
    return;
  }
  if (due_.any() || countsRequested_) {
    schedule();
  } else if (due_.unwanted() && !ownsAnything()) {
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
  // The operation may drop the last references to the machine and the helper.
  Kor::Ptr<Kor::PtrInterface> const pinned = policy_.pinned();
  Kor::Ptr<PolicyMapAclHelper> const helper = leaving_;
  helper->arbiter().causeIs("replaced helper");
  abandonTurn();
  unsigned const turn = turn_;
  for (ClassMapMatchOption const option : allMatchOptions) {
    HelperArbiter::Result const result =
        PassRun::takeDown(*helper, *this, policy_.commonData(), option, state_[option]);
    if (turn != turn_) {
      return;
    }
    policy_.timeProgrammedIs(option, std::nullopt);
    policy_.commonData()->intfRemoveAll(option);
    state_[option].forget();
    state_[option].failureDel();
    if (!result.error.empty()) {
      state_[option].failure =
          PolicyFailure(result.error, Kor::String(nameOf(HelperOperation::deletePolicy)), {}, {});
      state_[option].leftover = true;
    }
  }
  leaving_ = nullptr;
  publisher_.allClassesDue();
  schedule();
  publish();
}

void PolicyReconciler::readCounts() {
  if (std::exchange(countsRequested_, false)) {
    Kor::Ptr<PolicyMapAclHelper> const helper = helper_;
    updateHitCounts(policy_.classesInOrder(), *helper, policy_.commonData(), state_,
                    [this, turn = turn_] { return turn == turn_; });
  }
}

bool PolicyReconciler::ownsAnything() const {
  return std::any_of(allMatchOptions.begin(), allMatchOptions.end(),
                     [this](auto const option) { return presence(option).owned; });
}

PolicyProgress PolicyReconciler::progress(ClassMapMatchOption option) const {
  if (service_ == nullptr || !service_->active()) {
    return {};
  }
  auto progress = due_.progress(option, *service_, presence(option), retryTimer_.dueTime());
  if (passRun_ && resultTimer_.scheduled() && passRun_->concerns(option)) {
    progress.state = ProgrammingState::waiting;
    progress.waitingFor = nameOf(passRun_->pendingStep().operation);
    progress.waitingSince = waitingSince_;
  }
  return progress;
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
    PresentPolicy const present =
        state_[option].intfsUnpublished ? presentPolicy(option) : PresentPolicy{presence(option)};
    publisher_.publish(*status, option, present, policy_.timeProgrammed(option));
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
