// SPDX-License-Identifier: Apache-2.0
#pragma once

// PassRun: carries out the steps of one pass on a helper and keeps the programmed state in step
// with their results.
//
// Every operation of the helper goes through one call, whose outcome says how to go on: done,
// failed, pending, or abandoned. Abandoned means that the machine or the helper went away inside
// the operation. That outcome is passed up at once; nothing else here asks who is still present.
//
// A step that fails ends its pass, and what the option has on the helper is deleted. Teardown goes
// on to its end. Of an action update only the options that fail stop; they are marked to be created
// again.

#include "PolicyMap/HelperArbiter.h"
#include "PolicyMap/Pass.h"
#include "PolicyMap/PolicyMapAclHelper.h"

#include <optional>
#include <utility>

namespace PolicyMap {

class POLICYMAP_API PassRun {
 public:
  enum class Outcome : std::uint8_t { done, failed, pending, abandoned };

  // What the owner does while a pass runs.
  class Observer {
   public:
    // The option was committed as wanted.
    virtual void committed(ClassMapMatchOption option) = 0;
    // Nothing of the option is programmed any more.
    virtual void deleted(ClassMapMatchOption option) = 0;
    // An action update has failed; the pass goes on, and may have to wait.
    virtual void updateFailed() = 0;

   protected:
    ~Observer() = default;
  };

  // `client` holds the arbiter of `helper`. `state`, `observer` and `client` must outlive the run,
  // or abandon it before.
  PassRun(Pass pass, Kor::Ptr<PolicyMapAclHelper> helper, HelperArbiter::Client const& client,
          Kor::Ptr<PolicyMapSmCommonData> policyData, ProgrammedState& state, Observer& observer);
  PassRun(PassRun const&) = delete;
  PassRun& operator=(PassRun const&) = delete;

  // Runs until the end, which is `done` or `failed`, or until a result is pending.
  Outcome run();
  // Goes on with the result of the operation that was pending.
  Outcome resultIs(Kor::String const& error);
  // Calls nothing more, and does not touch what the constructor was given.
  void abandon() { abandoned_ = true; }

  [[nodiscard]] Pass const& pass() const { return pass_; }
  // The first failure; the default value: none.
  [[nodiscard]] PolicyFailure const& failure() const { return failure_; }
  // A deletion threw, so that the policy is still created.
  [[nodiscard]] bool deletionThrew() const { return deletionThrew_; }

  // Deletes what the client has created for one option, and empties state and policy data. Policies
  // of other clients are left alone; a policy whose client is gone is deleted too. After an
  // exception state and policy data are as before, and the policy is still created and belongs to
  // no client.
  static HelperArbiter::Answer takeDown(PolicyMapAclHelper& helper,
                                        HelperArbiter::Client const& client,
                                        Kor::Ptr<PolicyMapSmCommonData> const& policyData,
                                        ClassMapMatchOption option, OptionState& state);

 private:
  // The one call: operation() returns a text.
  template <class Operation>
  Outcome call(Operation&& operation);
  template <class Operation>
  Outcome callAsync(Operation&& operation);
  Outcome outcomeOf(HelperArbiter::Answer const& answer);

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
  // The option is to be created again, since some of its rules may have the new actions.
  void updateFailed(ClassMapMatchOption option, Kor::Name const& className,
                    std::string_view operation);
  Outcome deletePolicy(ClassMapMatchOption option);

  // Takes the outcome of a step. Returns done when the pass goes on, failed when it ends.
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
  bool threw_ = false;
  bool deletionThrew_ = false;
  bool abandoned_ = false;
};

}  // namespace PolicyMap
