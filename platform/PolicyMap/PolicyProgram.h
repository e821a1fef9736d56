// SPDX-License-Identifier: Apache-2.0
#pragma once

// PolicyProgram: brings the helper to what one policy-map machine wants, one pass at a time.
//
// Whoever changes something calls ...Changed(), which only marks and puts the program on the event
// loop, so any number of changes before the loop turns cost one pass. In its turn the program asks
// the helper's programmer for a pass, makes a plan, and runs its steps; a step whose result is
// outstanding suspends the pass until the programmer tells the result. Changes that come meanwhile
// are taken up by the next pass.
//
// There are two kinds of passes: one brings one match option to what is wanted (create, re-create,
// interfaces, teardown), one updates the actions of programmed classes in place, over all options.
//
// A step that fails ends its pass and rolls the option back to nothing programmed; it is tried
// again when something relevant changes, and by itself after a wait that doubles from retryMin to
// retryMax. A failed update in place is first followed by a re-creation.

#include "Kor/EventLoop.h"
#include "PolicyMap/Capabilities.h"
#include "PolicyMap/ClassRules.h"
#include "PolicyMap/Export.h"
#include "PolicyMap/PolicyMapAclHelper.h"
#include "PolicyMap/PolicyMapTypeStatus.h"
#include "PolicyMap/Programmer.h"
#include "PolicyMap/SubRules.h"

#include <array>
#include <memory>
#include <optional>
#include <vector>

namespace PolicyMap {

class ClassMapSm;
class PolicyMapSm;
class ServicePolicySm;

class POLICYMAP_API PolicyProgram final : private Kor::Activity, private Programmer::User {
 public:
  explicit PolicyProgram(PolicyMapSm& policy);
  PolicyProgram(PolicyProgram const&) = delete;
  PolicyProgram& operator=(PolicyProgram const&) = delete;
  ~PolicyProgram() override;

  // The machine that gives interfaces and helper; without one nothing is programmed.
  void serviceIs(ServicePolicySm* service);
  [[nodiscard]] bool attached() const { return service_ != nullptr; }

  void rulesChanged(ClassMapMatchOption option);
  void rulesChanged();  // of all options
  void actionsChanged();
  void intfsChanged();
  void everythingChanged();
  // Reads the hit counts of all rules that stand into the class statuses.
  void countsRequested();
  // Programs again even without a difference.
  void reprogram();
  // Not wanted: everything is taken down, then the service machine is told that the policy is gone.
  void wantedIs(bool wanted);
  // Takes everything down and lets the service machine build the policy anew.
  void restart();
  // The helper has been replaced: deletes there, at once, what stands. Called from inside an
  // operation of the helper, or a hook of the statuses, this waits for its end.
  void leaveHelper(Kor::Ptr<PolicyMapAclHelper> const& helper);

  // Whether the policy stands on the helper for an option.
  [[nodiscard]] bool created(ClassMapMatchOption option) const;
  // The same, and it was programmed from here: otherwise it is, or was, another machine's.
  [[nodiscard]] bool mine(ClassMapMatchOption option) const;
  // What keeps an option from standing as it should.
  [[nodiscard]] PolicyFailure const& failure(ClassMapMatchOption option) const;

 private:
  static constexpr std::size_t optionCount = 4;

  // A class whose rules stand in the helper, or are about to.
  struct ProgrammedClass {
    Kor::Name name;
    Kor::Ptr<ClassMapSmCommonData> data;
    Kor::Ptr<ClassRules const> rules;
    std::uint32_t actionUpdates = 0;  // of the data, as its actions were programmed
  };
  using Classes = std::vector<ProgrammedClass>;

  struct Option {
    bool changed = false;   // something happened since the last plan
    bool recreate = false;  // what stands is not trusted, or is to be programmed again
    Classes classes = {};   // as programmed
    PortExpansion expansion = PortExpansion::rangeChecker;  // as programmed
    Capabilities capabilities = {};                         // that allowed it
    PolicyFailure failure;
    bool retry = false;        // the failure is tried again by itself
    bool intfsChanged = true;  // those of the policy's data, since they were published
  };

  enum class Operation : std::uint8_t {
    createPolicy,
    recreatePolicy,
    addRules,
    addIntf,
    removeIntf,
    commitPolicy,
    deletePolicy,
    updateActions,
  };
  struct Step {
    Operation operation;
    ClassMapMatchOption option;
    Vorel::IntfId intf;                                // of an interface operation
    Kor::Ptr<ClassMapSmCommonData> updatedClass = {};  // of an action update
  };
  enum class Kind : std::uint8_t { program, teardown, updateActions };
  struct Pass {
    Kind kind;
    ClassMapMatchOption option;  // of no meaning for an action update
    std::vector<Step> steps;
    std::size_t next = 0;
    Classes classes = {};  // to be programmed
    PortExpansion expansion = PortExpansion::rangeChecker;
    Capabilities capabilities = {};
    PolicyFailure failure = {};                 // the first
    std::optional<AclRuleKey> failedRule = {};  // of the step that failed
  };

  void run() override;
  void programmerGranted() override;
  void operationEnded(Kor::String const& error) override;

  void disown(Kor::Ptr<PolicyMapAclHelper> const& helper);
  void mark();
  void relevantChange();
  void retry();
  void scheduleRetry();
  void timedOut();
  Option& at(ClassMapMatchOption option) { return options_[static_cast<std::size_t>(option)]; }
  [[nodiscard]] Option const& at(ClassMapMatchOption option) const {
    return options_[static_cast<std::size_t>(option)];
  }
  [[nodiscard]] Programmer& programmer() const { return helper_->programmer(); }
  [[nodiscard]] Kor::Ptr<PolicyMapAclHelper> helperInUse() const;
  [[nodiscard]] PolicyMapSmCommonData::PtrConst policyData() const;

  // Planning.
  [[nodiscard]] bool anythingToDo() const;
  std::optional<Pass> nextPass();
  std::optional<Pass> planOption(ClassMapMatchOption option);
  [[nodiscard]] Pass planTeardown(ClassMapMatchOption option) const;
  std::optional<Pass> planActionUpdate();
  [[nodiscard]] Classes wantedClasses(ClassMapMatchOption option, PolicyFailure& failure);
  // What the helper cannot do; the default value: it can do all of it.
  [[nodiscard]] static PolicyFailure unsupported(Classes const& classes, ClassMapMatchOption option,
                                                 Capabilities const& capabilities);
  [[nodiscard]] bool sameRules(Classes const& programmed, Classes const& wanted) const;
  void adoptData(Classes& programmed, Classes const& wanted);
  [[nodiscard]] bool actionsMoved(Classes const& classes) const;
  [[nodiscard]] bool actionsMovedFor(ClassMapSmCommonData const& data) const;

  void readCounts();
  void readCountsOf(ClassMapSm const& machine);

  // Performing.
  void runPass();
  // Runs what may call out, so that a helper that is taken away meanwhile is left only afterwards.
  template <class Call>
  void inside(Call&& call);
  [[nodiscard]] std::optional<Kor::String> performStep(Step const& step);
  std::optional<Kor::String> perform(Step const& step);
  Kor::String addRules(ClassMapMatchOption option);
  Kor::String updateActions(Kor::Ptr<ClassMapSmCommonData> const& data);
  Kor::String updateActionsOf(ProgrammedClass& programmed, ClassMapMatchOption option);
  void commitDue(ClassMapMatchOption option);
  void succeeded(Step const& step);
  // Answers whether the pass goes on.
  bool failed(Step const& step, Kor::String const& error);
  // Answers the text of a failing deletion.
  Kor::String rollBack(ClassMapMatchOption option);
  void leave(Kor::Ptr<PolicyMapAclHelper> const& helper);
  void passEnded();
  void publish(ClassMapMatchOption option);
  void publishIntfs(PolicyMapStatus& status, ClassMapMatchOption option);
  void publishClasses();

  PolicyMapSm& policy_;
  ServicePolicySm* service_ = nullptr;
  Kor::Ptr<PolicyMapAclHelper> helper_;  // of the pass that runs or is asked for; null otherwise
  std::array<Option, optionCount> options_;
  bool actionsChanged_ = false;
  bool countsRequested_ = false;
  bool wanted_ = true;
  bool restart_ = false;
  // Shared with the calls that run it, which a machine's end may interrupt.
  std::shared_ptr<Pass> pass_;
  bool performing_ = false;  // a step of the pass, or its planning, is on the stack
  bool leaving_ = false;     // the helper was replaced meanwhile
  Kor::Timer retryTimer_;
  double retryDelay_ = 0;  // seconds; 0: nothing has failed of late
  Kor::Timer resultTimer_;
};

}  // namespace PolicyMap
