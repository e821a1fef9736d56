// SPDX-License-Identifier: Apache-2.0
#pragma once

// PolicyReconciler: reconciles the helper with what one policy-map machine wants, one pass at a
// time.
//
// A change is reported by ...Changed(), which only marks it and schedules the reconciler on the
// event loop. Any number of changes before the loop runs cost one pass. In its turn the reconciler
// requests the helper from its arbiter, plans the next due pass (DuePasses), runs it (PassRun) and
// publishes the result (StatusPublisher). Changes made during a pass are handled by the next one.
//
// A failed option is retried after a relevant change, and automatically after a wait that doubles
// from retryMin to retryMax.
//
// Helper operations, overrides of the machines and observers of statuses may do anything, including
// destroying the machine or replacing its helper. In that case `turn_` changes. A function that
// calls out compares it afterwards and returns at once if it differs.

#include "Kor/EventLoop.h"
#include "PolicyMap/DuePasses.h"
#include "PolicyMap/HelperArbiter.h"
#include "PolicyMap/PassRun.h"
#include "PolicyMap/PolicyHost.h"
#include "PolicyMap/PolicyOwner.h"
#include "PolicyMap/PolicyProgress.h"
#include "PolicyMap/RetryTimer.h"
#include "PolicyMap/StatusPublisher.h"

#include <memory>

namespace PolicyMap {

class POLICYMAP_API PolicyReconciler final : private Kor::Activity,
                                             private HelperArbiter::Client,
                                             private PassRun::Observer,
                                             private PolicyHost::User {
 public:
  using Policy = PolicyOwner;
  using Service = PolicyHost;

  explicit PolicyReconciler(Policy& policy);
  PolicyReconciler(PolicyReconciler const&) = delete;
  PolicyReconciler& operator=(PolicyReconciler const&) = delete;
  ~PolicyReconciler() override;

  // Null: nothing is programmed from now on; what is programmed remains.
  void serviceIs(Service* service);
  [[nodiscard]] bool attached() const { return service_ != nullptr; }

  // The rules of one class, for one option.
  void classChanged(Kor::Name const& name, ClassMapMatchOption option) {
    due_.classDue(name, option);
    relevantChange();
  }
  // A class was added or removed, or has another machine or priority.
  void classChanged(Kor::Name const& name) {
    for (ClassMapMatchOption const option : allMatchOptions) {
      due_.classDue(name, option);
    }
    relevantChange();
  }
  // The rules of all classes, for all options.
  void rulesChanged() {
    due_.rulesDue();
    relevantChange();
  }
  void actionsChanged(Kor::Name const& name) {
    due_.actionsDue(name);
    relevantChange();
  }
  void intfsChanged() {
    due_.intfsDue();
    relevantChange();
  }
  void everythingChanged() {
    due_.everythingDue();
    relevantChange();
  }
  // Programs everything again, even if nothing differs.
  void reprogram() {
    due_.reprogrammingDue();
    relevantChange();
  }
  // Schedules a read of the hit counts of all programmed rules into the class statuses.
  void countsRequested() {
    countsRequested_ = true;
    schedule();
  }
  // False: deletes everything, then calls policyGone() of the service machine.
  void wantedIs(bool wanted) {
    if (due_.wantedIs(wanted)) {
      relevantChange();
    }
  }
  // Deletes everything, then lets the service machine build the policy again.
  void restart() {
    due_.restart();
    relevantChange();
  }
  // What has become of one option.
  [[nodiscard]] PolicyProgress progress(ClassMapMatchOption option) const;
  // Called when the helper was replaced. Deletes what this policy created on it: at once, or,
  // inside an operation of the helper, after that returns. A failed deletion is not retried.
  void leaveHelper(Kor::Ptr<PolicyMapAclHelper> const& helper);

 private:
  void run() override;
  void granted() override;
  void resultArrived(Kor::String const& error) override;
  void callEnded() override { leave(); }
  void hostEnds() override { serviceIs(nullptr); }
  void committed(ClassMapMatchOption option) override {
    policy_.timeProgrammedIs(option, service_->eventLoop().now());
  }
  void deleted(ClassMapMatchOption option) override;
  void updateFailed() override { publish(); }

  class PlanningTurn;

  void relevantChange();
  void scheduleRetry();

  void goOn(std::shared_ptr<PassRun> const& passRun, PassRun::Outcome outcome);
  void passEnded(PassRun const& passRun);
  void tornDown(PassRun const& passRun);
  void turnEnded();
  void timedOut();
  void readCounts();
  void abandonTurn();
  void leave();
  [[nodiscard]] HelperArbiter::Presence presence(ClassMapMatchOption option) const {
    Kor::Ptr<PolicyMapAclHelper> const& helper = helper_ ? helper_ : service_->aclHelper();
    return helper ? helper->arbiter().presence(policy_.key(), option, *this)
                  : HelperArbiter::Presence();
  }
  [[nodiscard]] PresentPolicy presentPolicy(ClassMapMatchOption option) const {
    return {presence(option), policy_.commonData()->sortedIntfs(option)};
  }
  [[nodiscard]] bool ownsAnything() const;

  void publish();
  void publish(ClassMapMatchOption option);
  void publishClasses();

  Policy& policy_;
  Service* service_ = nullptr;
  Kor::Ptr<PolicyMapAclHelper> helper_;   // held or requested, otherwise null
  Kor::Ptr<PolicyMapAclHelper> leaving_;  // to be left when the operation on the stack returns
  unsigned turn_ = 0;  // changes when the service machine or the helper goes away
  ProgrammedState state_;
  StatusPublisher publisher_{state_};
  DuePasses due_{policy_, state_};
  bool countsRequested_ = false;
  std::shared_ptr<PassRun> passRun_;  // shared with the calls that run it
  RetryTimer retryTimer_;
  Kor::Timer resultTimer_;
  double waitingSince_ = 0;  // while resultTimer_ is scheduled
};

}  // namespace PolicyMap
