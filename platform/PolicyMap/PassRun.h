// SPDX-License-Identifier: Apache-2.0
#pragma once

// PassRun: carries out the steps of one pass on a helper and updates the programmed state with
// their results.
//
// All operations of the helper go through one call whose outcome is done, failed, pending or
// abandoned. Abandoned means that the machine or the helper went away inside the operation. It is
// returned to the caller at once; nothing else in this class checks for that.
//
// A failed step ends its pass, and the option is deleted on the helper. A teardown continues to its
// end. In an action update only the failed options stop; they are marked to be created again.

#include "PolicyMap/HelperArbiter.h"
#include "PolicyMap/Pass.h"
#include "PolicyMap/PolicyMapAclHelper.h"

#include <optional>
#include <utility>

namespace PolicyMap {

class POLICYMAP_API PassRun {
 public:
  enum class Outcome : std::uint8_t { done, failed, pending, abandoned };

  // The owner, notified while a pass runs.
  class Observer {
   public:
    // The option was committed as wanted.
    virtual void committed(ClassMapMatchOption option) = 0;
    // Nothing is programmed for the option any more.
    virtual void deleted(ClassMapMatchOption option) = 0;
    // An action update has failed. The pass continues, and may have to wait for a result.
    virtual void updateFailed() = 0;

   protected:
    ~Observer() = default;
  };

  // `client` holds the arbiter of `helper`. `state`, `observer` and `client` must outlive the run,
  // unless abandon() is called before.
  PassRun(Pass pass, Kor::Ptr<PolicyMapAclHelper> helper, HelperArbiter::Client const& client,
          Kor::Ptr<PolicyMapSmCommonData> policyData, ProgrammedState& state, Observer& observer);
  PassRun(PassRun const&) = delete;
  PassRun& operator=(PassRun const&) = delete;

  // Runs to the end, which is `done` or `failed`, or until a result is pending.
  Outcome run();
  // Continues with the result of the pending operation.
  Outcome resultIs(Kor::String const& error);
  // After this, the run calls no operation and does not access the constructor's arguments.
  void abandon() { abandoned_ = true; }

  [[nodiscard]] Pass const& pass() const { return pass_; }
  // True if the pass reconciles the option, or updates actions, which may be those of any option.
  [[nodiscard]] bool concerns(ClassMapMatchOption option) const {
    return pass_.kind == PassKind::updateActions || pass_.option == option;
  }
  // The step whose result is pending. Valid only while one is.
  [[nodiscard]] Step const& pendingStep() const { return pass_.steps[next_ - 1]; }
  // The first failure of the run. Default value: no failure.
  [[nodiscard]] PolicyFailure const& failure() const { return failure_; }
  // True if a deletion was not carried out, so that the policy is still created.
  [[nodiscard]] bool deletionThrew() const { return deletionThrew_; }

  // Deletes the policy that the client has created for one option, and clears state and policy
  // data. A policy of another client is left alone; a policy without a client is deleted. If the
  // deletion throws, state and policy data are unchanged, and the policy remains created without a
  // client.
  static HelperArbiter::Result takeDown(PolicyMapAclHelper& helper,
                                        HelperArbiter::Client const& client,
                                        Kor::Ptr<PolicyMapSmCommonData> const& policyData,
                                        ClassMapMatchOption option, OptionState& state);

 private:
  // The only path to the helper: operation() returns a text.
  template <class Operation>
  Outcome call(Operation&& operation);
  template <class Operation>
  Outcome callAsync(Operation&& operation);
  Outcome outcomeOf(HelperArbiter::Result const& result);

  Outcome perform(Step const& step);
  Outcome create(Step const& step);
  Outcome addRules(ClassMapMatchOption option);
  Outcome updateActions(Kor::Ptr<ClassMapSmCommonData> const& data);
  void commitDue(ClassMapMatchOption option);
  Outcome endUpdateActions(Kor::Ptr<ClassMapSmCommonData> const& data,
                           PerOption<bool> const& concerned, Kor::String const& firstError);
  ProgrammedClass* moved(ClassMapMatchOption option, ClassMapSmCommonData const* data,
                         std::uint32_t updates);
  Outcome updateRules(ProgrammedClass const& programmed, ClassMapMatchOption option);
  // Marks the option to be created again, because some of its rules may already have the new
  // actions.
  void updateFailed(ClassMapMatchOption option, Kor::Name const& className,
                    std::string_view operation);
  Outcome deletePolicy(ClassMapMatchOption option);

  // Handles the outcome of a step. Returns done if the pass continues, failed if it ends.
  Outcome settle(Step const& step, Outcome outcome);
  void succeeded(Step const& step);
  Outcome failed(Step const& step);

  Pass pass_;
  std::size_t next_ = 0;
  Kor::Ptr<PolicyMapAclHelper> helper_;
  HelperArbiter& arbiter_;
  HelperArbiter::Client const& client_;
  Kor::Ptr<PolicyMapSmCommonData> policyData_;
  ProgrammedState& state_;
  Observer& observer_;
  PolicyFailure failure_ = {};
  Kor::String error_ = {};                     // of the operation that failed last
  std::optional<AclRuleKey> failedRule_ = {};  // of that operation
  bool carriedOut_ = true;
  bool threw_ = false;
  bool deletionThrew_ = false;
  bool abandoned_ = false;
};

}  // namespace PolicyMap
