// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PassRun.h"

#include "PolicyMap/PassTrace.h"

#include <algorithm>

namespace PolicyMap {

PassRun::PassRun(Pass pass, Kor::Ptr<PolicyMapAclHelper> helper,
                 HelperArbiter::Client const& client, Kor::Ptr<PolicyMapSmCommonData> policyData,
                 ProgrammedState& state, Observer& observer)
    : pass_(std::move(pass)),
      helper_(std::move(helper)),
      arbiter_(helper_->arbiter()),
      client_(client),
      policyData_(std::move(policyData)),
      state_(state),
      observer_(observer) {
  tracePass(policyData_->policyKey(), pass_);
}

// calls -----------------------------------------------------------------------------------

PassRun::Outcome PassRun::outcomeOf(HelperArbiter::Result const& result) {
  if (abandoned_) {
    return Outcome::abandoned;
  }
  error_ = result.error;
  carriedOut_ = result.carriedOut;
  threw_ = result.threw;
  return error_.empty() ? Outcome::done : Outcome::failed;
}

template <class Operation>
PassRun::Outcome PassRun::call(Operation&& operation) {
  return outcomeOf(arbiter_.call(operation));
}

template <class Operation>
PassRun::Outcome PassRun::callAsync(Operation&& operation) {
  auto const result = arbiter_.callAsync(operation, [this] { return helper_->asyncOperations(); });
  if (!result && !abandoned_) {
    return Outcome::pending;
  }
  return outcomeOf(result.value_or(HelperArbiter::Result()));
}

// the pass --------------------------------------------------------------------------------

PassRun::Outcome PassRun::run() {
  arbiter_.causeIs(pass_.cause);
  while (next_ < pass_.steps.size()) {
    Step const step = pass_.steps[next_++];  // copied, because steps may be added
    Outcome outcome = perform(step);
    if (outcome == Outcome::done || outcome == Outcome::failed) {
      outcome = settle(step, outcome);
    }
    if (outcome == Outcome::pending) {
      traceStep(policyData_->policyKey(), step, "pending");
    }
    if (outcome != Outcome::done) {
      return outcome;
    }
  }
  return !failure_ ? Outcome::done : Outcome::failed;
}

PassRun::Outcome PassRun::resultIs(Kor::String const& error) {
  error_ = error;
  Outcome const outcome = settle(pendingStep(), error.empty() ? Outcome::done : Outcome::failed);
  return outcome == Outcome::done ? run() : outcome;
}

PassRun::Outcome PassRun::settle(Step const& step, Outcome outcome) {
  traceStep(policyData_->policyKey(), step, outcome == Outcome::failed ? error_.view() : "done");
  if (outcome == Outcome::failed) {
    return failed(step);
  }
  succeeded(step);
  return Outcome::done;
}

void PassRun::succeeded(Step const& step) {
  OptionState& state = state_[step.option];
  switch (step.operation) {
  case HelperOperation::addIntf:
    policyData_->intfAdd(step.option, step.intf);
    state.intfsUnpublished = true;
    break;
  case HelperOperation::removeIntf:
    policyData_->intfRemove(step.option, step.intf);
    state.intfsUnpublished = true;
    break;
  case HelperOperation::addRule:
    state.classes = pass_.classes;
    state.expansion = pass_.expansion;
    state.capabilities = pass_.capabilities;
    state.recreate = false;
    break;
  case HelperOperation::commitPolicy:
    if (!state.recreate) {
      state.failureDel();
      observer_.committed(step.option);
    }
    break;
  default: break;
  }
}

PassRun::Outcome PassRun::failed(Step const& step) {
  AclRuleKey const rule = std::exchange(failedRule_, std::nullopt).value_or(AclRuleKey());
  PolicyFailure const failure(error_, Kor::String(nameOf(step.operation)), rule.className(), rule);
  traceFailure(policyData_->policyKey(), failure);
  if (!failure_) {
    failure_ = failure;
  } else {
    KOR_TRACE_LINE(traceHandle(), 1, "second failure of a pass: " << error_);
  }
  if (pass_.kind == PassKind::tearDown) {
    return Outcome::done;
  }
  if (step.operation == HelperOperation::updateAction) {
    observer_.updateFailed();
    return abandoned_ ? Outcome::abandoned : Outcome::done;
  }
  OptionState& state = state_[step.option];
  state.failureIs(failure);
  state.retry = true;
  Outcome const deletion = deletePolicy(step.option);
  if (deletion == Outcome::abandoned) {
    return deletion;
  }
  if (deletion == Outcome::failed) {
    KOR_TRACE_LINE(traceHandle(), 1, "second failure of a pass: " << error_);
  }
  return pass_.kind == PassKind::updateActions ? Outcome::done : Outcome::failed;
}

// steps -----------------------------------------------------------------------------------

PassRun::Outcome PassRun::perform(Step const& step) {
  PolicyMapAclHelper& helper = *helper_;
  switch (step.operation) {
  case HelperOperation::createPolicy:
  case HelperOperation::recreatePolicy: return create(step);
  case HelperOperation::addRule: return addRules(step.option);
  case HelperOperation::addIntf:
    return callAsync([&] { return helper.addIntfToPolicy(policyData_, step.intf, step.option); });
  case HelperOperation::removeIntf:
    return callAsync(
        [&] { return helper.removeIntfFromPolicy(policyData_, step.intf, step.option); });
  case HelperOperation::commitPolicy:
    if (pass_.kind == PassKind::updateActions && state_[step.option].recreate) {
      return Outcome::done;  // the re-creation that follows commits
    }
    return callAsync([&] { return helper.commitPolicy(policyData_, step.option); });
  case HelperOperation::deletePolicy: return deletePolicy(step.option);
  case HelperOperation::updateAction: return updateActions(step.updatedClass);
  }
  return Outcome::done;
}

PassRun::Outcome PassRun::create(Step const& step) {
  PolicyMapSmKey const& key = policyData_->policyKey();
  // Recorded before the call: the policy exists, without rules, whatever the operation returns.
  arbiter_.createdIs(key, step.option, &client_);
  state_[step.option].classes.clear();
  bool const again = step.operation == HelperOperation::recreatePolicy;
  Outcome const outcome = call([&] {
    return again ? helper_->recreatePolicy(policyData_, step.option)
                 : helper_->createPolicy(policyData_, step.option);
  });
  // A re-creation that threw has not even deleted the policy.
  if (outcome == Outcome::failed && !carriedOut_ && !(again && threw_)) {
    arbiter_.createdDel(key, step.option);
  }
  return outcome;
}

PassRun::Outcome PassRun::addRules(ClassMapMatchOption option) {
  Outcome outcome = Outcome::done;
  for (ProgrammedClass& programmed : pass_.classes) {
    // Recorded first, so that an update requested while rules are added is still programmed.
    programmed.actionUpdates = programmed.data->updateAclActions();
    programmed.data->rulesIs(option, programmed.rules);
    programmed.rules->forEach([&](auto const& rule) {
      AclRuleKey const key(programmed.name, rule.aclName, rule.seqno, option);
      forEachSubRule(rule, pass_.expansion, [&](SubRuleData const& subRule) {
        outcome =
            call([&] { return helper_->addRule(key, subRule, policyData_, programmed.data); });
        return outcome == Outcome::done;
      });
      if (outcome == Outcome::failed) {
        failedRule_ = key;
      }
      return outcome == Outcome::done;
    });
    if (outcome != Outcome::done) {
      break;
    }
  }
  return outcome;
}

PassRun::Outcome PassRun::updateActions(Kor::Ptr<ClassMapSmCommonData> const& data) {
  PerOption<bool> concerned;
  Outcome outcome = call([&] { return helper_->beginUpdateActions(policyData_, data); });
  Kor::String firstError = error_;  // empty if the update has begun
  bool const begun = outcome == Outcome::done;
  std::uint32_t const updates = data->updateAclActions();
  for (ClassMapMatchOption const option : allMatchOptions) {
    if (outcome == Outcome::abandoned) {
      return outcome;
    }
    ProgrammedClass* const programmed = moved(option, data.get(), updates);
    if (programmed == nullptr) {
      continue;
    }
    programmed->actionUpdates = updates;
    concerned[option] = true;
    commitDue(option);
    if (!begun) {
      updateFailed(option, programmed->name, "beginUpdateActions");
    } else if ((outcome = updateRules(*programmed, option)) == Outcome::failed) {
      firstError = firstError.empty() ? error_ : firstError;
      updateFailed(option, programmed->name, nameOf(HelperOperation::updateAction));
    }
  }
  return outcome == Outcome::abandoned ? outcome : endUpdateActions(data, concerned, firstError);
}

// The plan contains the commits of the options affected at planning time. A change during the pass
// may affect others. Commits come last, in the order of the options.
void PassRun::commitDue(ClassMapMatchOption option) {
  std::vector<Step>& steps = pass_.steps;
  auto const isEarlier = [option](Step const& step) {
    return step.operation != HelperOperation::commitPolicy || step.option < option;
  };
  // From the end, because a pass may update many classes.
  auto const place = std::find_if(steps.rbegin(), steps.rend(), isEarlier).base();
  if (place == steps.end() || place->option != option) {
    steps.insert(place, {HelperOperation::commitPolicy, option});
  }
}

// Called even after a failure, so that the helper always sees the end of the update.
PassRun::Outcome PassRun::endUpdateActions(Kor::Ptr<ClassMapSmCommonData> const& data,
                                           PerOption<bool> const& concerned,
                                           Kor::String const& firstError) {
  Outcome const outcome = call([&] { return helper_->endUpdateActions(policyData_, data); });
  if (outcome == Outcome::abandoned) {
    return outcome;
  }
  if (outcome == Outcome::failed) {
    for (ClassMapMatchOption const option : allMatchOptions) {
      ProgrammedClass const* const programmed = state_[option].classes.find(data.get());
      if (concerned[option] && programmed != nullptr) {
        updateFailed(option, programmed->name, "endUpdateActions");
      }
    }
  }
  if (!firstError.empty()) {
    error_ = firstError;
  }
  return error_.empty() ? Outcome::done : Outcome::failed;
}

// The class in an option, if its actions are to be updated. A failed option will be created again,
// and an option created again in the meantime already has the actions.
ProgrammedClass* PassRun::moved(ClassMapMatchOption option, ClassMapSmCommonData const* data,
                                std::uint32_t updates) {
  OptionState& state = state_[option];
  ProgrammedClass* const programmed = state.classes.find(data);
  bool const update =
      programmed != nullptr && !state.recreate && programmed->actionUpdates != updates;
  return update ? programmed : nullptr;
}

PassRun::Outcome PassRun::updateRules(ProgrammedClass const& programmed,
                                      ClassMapMatchOption option) {
  Outcome outcome = Outcome::done;
  PortExpansion const expansion = state_[option].expansion;
  // Copied, because an operation may drop the class.
  ProgrammedClass const updated = programmed;
  updated.rules->forEach([&](auto const& rule) {
    AclRuleKey const key(updated.name, rule.aclName, rule.seqno, option);
    forEachSubRule(rule, expansion, [&](SubRuleData const& subRule) {
      outcome =
          call([&] { return helper_->updateAction(key, subRule, policyData_, updated.data); });
      return outcome == Outcome::done;
    });
    if (outcome == Outcome::failed) {
      failedRule_ = key;
    }
    return outcome == Outcome::done;
  });
  return outcome;
}

void PassRun::updateFailed(ClassMapMatchOption option, Kor::Name const& className,
                           std::string_view operation) {
  OptionState& state = state_[option];
  state.recreate = true;
  state.rulesDue = true;
  AclRuleKey const rule = std::exchange(failedRule_, std::nullopt).value_or(AclRuleKey());
  state.failureIs(PolicyFailure(error_, Kor::String(operation), className, rule));
  state.updateFailed = true;
}

PassRun::Outcome PassRun::deletePolicy(ClassMapMatchOption option) {
  Outcome const outcome =
      outcomeOf(takeDown(*helper_, client_, policyData_, option, state_[option]));
  if (outcome == Outcome::abandoned) {
    return outcome;
  }
  if (!carriedOut_) {
    arbiter_.createdIs(policyData_->policyKey(), option, &client_);
    state_[option].recreate = true;
    deletionThrew_ = true;
  } else {
    observer_.deleted(option);
  }
  return outcome;
}

HelperArbiter::Result PassRun::takeDown(PolicyMapAclHelper& helper,
                                        HelperArbiter::Client const& client,
                                        Kor::Ptr<PolicyMapSmCommonData> const& policyData,
                                        ClassMapMatchOption option, OptionState& state) {
  HelperArbiter& arbiter = helper.arbiter();
  PolicyMapSmKey const& key = policyData->policyKey();
  HelperArbiter::Client const* const creator = arbiter.creator(key, option);
  HelperArbiter::Result result;
  if (arbiter.created(key, option) && (creator == nullptr || creator == &client)) {
    arbiter.createdDel(key, option);
    result = arbiter.call([&] { return helper.deletePolicy(policyData, option); });
    if (!result.carriedOut) {
      arbiter.createdIs(key, option, nullptr);
      return result;
    }
  }
  policyData->intfRemoveAll(option);
  state.forget();
  return result;
}

}  // namespace PolicyMap
