// SPDX-License-Identifier: Apache-2.0
#pragma once

// PolicyReconciler: brings the helper to what one policy-map machine wants, one pass at a time.
//
// A caller that changes something calls ...Changed(), which only marks and puts the reconciler on
// the event loop, so any number of changes before the loop turns cost one pass. In its turn it asks
// the helper's arbiter for the helper, takes the next pass that is due (DuePasses), runs it
// (PassRun) and publishes the result (StatusPublisher). Changes that come meanwhile are taken up by
// the next pass.
//
// What failed is tried again when something relevant changes, and by itself after a wait that
// doubles from retryMin to retryMax.
//
// Helper operations, the machines' overridables and observers of statuses may do anything, also end
// the machine or take its helper away. `turn_` changes then, and the function that called out
// returns at once when it finds another number than before.

#include "Kor/EventLoop.h"
#include "PolicyMap/DuePasses.h"
#include "PolicyMap/HelperArbiter.h"
#include "PolicyMap/PassRun.h"
#include "PolicyMap/PolicyHost.h"
#include "PolicyMap/PolicyOwner.h"
#include "PolicyMap/RetryTimer.h"
#include "PolicyMap/StatusPublisher.h"

#include <memory>

namespace PolicyMap {

class POLICYMAP_API PolicyReconciler final : private Kor::Activity,
                                             private HelperArbiter::Client,
                                             private PassRun::Observer {
 public:
  using Policy = PolicyOwner;
  using Service = PolicyHost;

  explicit PolicyReconciler(Policy& policy);
  PolicyReconciler(PolicyReconciler const&) = delete;
  PolicyReconciler& operator=(PolicyReconciler const&) = delete;
  ~PolicyReconciler() override;

  // Without a service machine nothing is programmed; what is stays as it is.
  void serviceIs(Service* service);
  [[nodiscard]] bool attached() const { return service_ != nullptr; }

  void rulesChanged(ClassMapMatchOption option) {
    due_.rulesDue(option);
    relevantChange();
  }
  // Of all options.
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
  // Programs again even without a difference.
  void reprogram() {
    due_.reprogrammingDue();
    relevantChange();
  }
  // Reads the hit counts of all programmed rules into the class statuses.
  void countsRequested();
  // False: deletes everything, then tells the service machine that the policy is gone.
  void wantedIs(bool wanted);
  // Deletes everything and lets the service machine build the policy again.
  void restart() {
    due_.restart();
    relevantChange();
  }
  // The helper was replaced: deletes at once what is created there, or, inside an operation of the
  // helper, after its return. What cannot be deleted is not tried again.
  void leaveHelper(Kor::Ptr<PolicyMapAclHelper> const& helper);

 private:
  void run() override;
  void granted() override;
  void resultArrived(Kor::String const& error) override;
  void callEnded() override { leave(); }
  void committed(ClassMapMatchOption option) override;
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
  [[nodiscard]] PresentPolicy presentPolicy(ClassMapMatchOption option) const;
  [[nodiscard]] bool ownsAnything() const;

  void publish();
  void publish(ClassMapMatchOption option);
  void publishClasses();

  Policy& policy_;
  Service* service_ = nullptr;
  Kor::Ptr<PolicyMapAclHelper> helper_;   // held, or asked for; null otherwise
  Kor::Ptr<PolicyMapAclHelper> leaving_;  // to be left when the operation on the stack returns
  unsigned turn_ = 0;                     // changes when service machine or helper go away
  ProgrammedState state_;
  StatusPublisher publisher_{state_};
  DuePasses due_{policy_, state_};
  bool countsRequested_ = false;
  std::shared_ptr<PassRun> passRun_;  // shared with the calls that run it
  RetryTimer retryTimer_;
  Kor::Timer resultTimer_;
};

}  // namespace PolicyMap
