// SPDX-License-Identifier: Apache-2.0
#pragma once

// PolicyReconciler: brings the helper to what one policy-map machine wants, one pass at a time.
//
// A caller that changes something calls ...Changed(), which only marks and puts the reconciler on
// the event loop, so any number of changes before the loop turns cost one pass. In its turn it asks
// the helper's arbiter for the helper, plans a pass (PassPlan), runs it (PassRun) and publishes the
// result (StatusPublisher). Changes that come meanwhile are taken up by the next pass.
//
// There are two kinds of passes: one brings one match option to what is wanted (create, re-create,
// interfaces, teardown), one updates the actions of programmed classes in place, over all options.
//
// What failed is tried again when something relevant changes, and by itself after a wait that
// doubles from retryMin to retryMax.
//
// Helper operations, the machines' overridables and observers of statuses may do anything, also end
// the machine or take its helper away. `turn_` changes then, and the function that called out
// returns at once when it finds another number than before.

#include "Kor/EventLoop.h"
#include "PolicyMap/ClassMapSm.h"
#include "PolicyMap/HelperArbiter.h"
#include "PolicyMap/PassRun.h"
#include "PolicyMap/StatusPublisher.h"

#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace PolicyMap {

class POLICYMAP_API PolicyReconciler final : private Kor::Activity,
                                             private HelperArbiter::Client,
                                             private PassRun::Observer {
 public:
  // The policy-map machine that owns the reconciler.
  class Policy {
   public:
    using Classes = std::vector<Kor::Ptr<ClassMapSm>>;

    virtual ~Policy() = default;
    // Keeps the machine alive.
    [[nodiscard]] virtual Kor::Ptr<Kor::PtrInterface> pinned() = 0;
    [[nodiscard]] virtual PolicyMapSmKey const& key() const = 0;
    [[nodiscard]] virtual Kor::Ptr<PolicyMapSmCommonData> const& commonData() const = 0;
    [[nodiscard]] virtual Kor::Ptr<PolicyMapStatus> const& status() const = 0;
    [[nodiscard]] virtual Classes classesInOrder() const = 0;
    // Those of the named classes that there are, in priority order.
    [[nodiscard]] virtual Classes classesInOrder(std::set<Kor::Name> const& names) const = 0;
    virtual void dropLeftClasses() = 0;
    // When an option was last programmed, in seconds of the event loop's clock; none: it is not.
    [[nodiscard]] virtual std::optional<double> timeProgrammed(
        ClassMapMatchOption option) const = 0;
    virtual void timeProgrammedIs(ClassMapMatchOption option, std::optional<double> time) = 0;
  };

  // The service-policy machine: gives helper and interfaces.
  class Service {
   public:
    virtual ~Service() = default;
    [[nodiscard]] virtual Kor::Ptr<PolicyMapAclHelper> const& aclHelper() const = 0;
    [[nodiscard]] virtual Kor::Ptr<Acl::AclDiff> const& aclDiff() const = 0;
    // Whether the machine is active. Otherwise only teardown goes on.
    [[nodiscard]] virtual bool active() const = 0;
    [[nodiscard]] virtual bool allowsOption(ClassMapMatchOption option) const = 0;
    // Ascending, each once.
    [[nodiscard]] virtual std::vector<Vorel::IntfId> effectiveIntfs(PolicyMapSmKey const& key,
                                                                    ClassMapMatchOption option) = 0;
    // Seconds.
    [[nodiscard]] virtual double retryMin() const = 0;
    [[nodiscard]] virtual double retryMax() const = 0;
    [[nodiscard]] virtual double asyncTimeout() const = 0;
    // Nothing of the policy is programmed any more: it may be dropped, or built again.
    virtual void policyGone(PolicyMapSmKey const& key) = 0;
  };

  explicit PolicyReconciler(Policy& policy);
  PolicyReconciler(PolicyReconciler const&) = delete;
  PolicyReconciler& operator=(PolicyReconciler const&) = delete;
  ~PolicyReconciler() override;

  // Without a service machine nothing is programmed; what is stays as it is.
  void serviceIs(Service* service);
  [[nodiscard]] bool attached() const { return service_ != nullptr; }

  void rulesChanged(ClassMapMatchOption option);
  void rulesChanged();  // of all options
  void actionsChanged(Kor::Name const& className);
  void intfsChanged();
  void everythingChanged();
  // The class has another machine.
  void classChanged(Kor::Name const& className);
  // Reads the hit counts of all programmed rules into the class statuses.
  void countsRequested();
  // Programs again even without a difference.
  void reprogram();
  // False: deletes everything, then tells the service machine that the policy is gone.
  void wantedIs(bool wanted);
  // Deletes everything and lets the service machine build the policy again.
  void restart();
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

  // Marks.
  void requestTurn();
  void relevantChange();
  void lookAgainAtFailed();
  void scheduleRetry();
  [[nodiscard]] bool actionsDue() const { return allActionsDue_ || !changedActions_.empty(); }
  [[nodiscard]] bool marked() const;
  [[nodiscard]] bool unwanted() const { return !wanted_ || restart_; }

  // Planning.
  std::optional<Pass> nextPass();
  std::optional<Pass> planPass(ClassMapMatchOption option);
  std::optional<Pass> planUpdate();
  WantedPolicy wantedPolicy(ClassMapMatchOption option, bool rulesDue, HelperTraits const& traits);
  ProgrammedClasses wantedClasses(ClassMapMatchOption option, PolicyFailure& refusal);
  [[nodiscard]] PresentPolicy presentPolicy(ClassMapMatchOption option) const;
  [[nodiscard]] bool ownsAnything() const;

  // Turns.
  void goOn(std::shared_ptr<PassRun> const& passRun, PassRun::Outcome outcome);
  void passEnded(PassRun const& passRun);
  void tornDown(PassRun const& passRun);
  void turnEnded(bool planned);
  void timedOut();
  void readCounts();
  void abandonTurn();
  void leave();
  void disown(Kor::Ptr<PolicyMapAclHelper> const& helper);

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
  std::set<Kor::Name> changedActions_;  // classes
  bool allActionsDue_ = false;
  bool countsRequested_ = false;
  bool wanted_ = true;
  bool restart_ = false;
  std::shared_ptr<PassRun> passRun_;  // shared with the calls that run it
  Kor::Timer retryTimer_;
  double retryDelay_ = 0;  // seconds; 0 after a relevant change
  Kor::Timer resultTimer_;
};

}  // namespace PolicyMap
