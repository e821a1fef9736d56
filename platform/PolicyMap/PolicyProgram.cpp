// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyProgram.h"

#include "PolicyMap/PolicyMapSm.h"
#include "PolicyMap/ServicePolicySm.h"
#include "PolicyMap/Trace.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <sstream>

namespace PolicyMap {

namespace {

// As the operations are called in statuses.
Kor::String nameOf(std::uint8_t operation) {
  constexpr std::array<std::string_view, 8> names{
      "createPolicy",         "recreatePolicy", "addRule",      "addIntfToPolicy",
      "removeIntfFromPolicy", "commitPolicy",   "deletePolicy", "updateAction"};
  return names.at(operation);
}

}  // namespace

PolicyProgram::PolicyProgram(PolicyMapSm& policy)
    : policy_(policy), retryTimer_([this] { retry(); }), resultTimer_([this] { timedOut(); }) {}

PolicyProgram::~PolicyProgram() {
  serviceIs(nullptr);
}

void PolicyProgram::serviceIs(ServicePolicySm* service) {
  if (service_ != nullptr) {
    disown(service_->aclHelper());
    disown(helper_);
  }
  service_ = service;
  if (service_ == nullptr) {
    cancel();
    retryTimer_.cancel();
    resultTimer_.cancel();
    leaving_ = false;
    pass_.reset();
    if (helper_) {
      programmer().withdraw(*this);
      helper_ = nullptr;
    }
  }
}

// What stands there is nobody's from now on.
void PolicyProgram::disown(Kor::Ptr<PolicyMapAclHelper> const& helper) {
  for (ClassMapMatchOption const option : allMatchOptions) {
    if (helper && helper->programmer().creator(policy_.key(), option) == this) {
      helper->programmer().createdIs(policy_.key(), option, nullptr);
    }
  }
}

// marks ---------------------------------------------------------------------------------

void PolicyProgram::mark() {
  if (service_ != nullptr) {
    schedule();
  }
}

// What failed is tried again at once, and should it fail again the waits start over.
void PolicyProgram::relevantChange() {
  retryDelay_ = 0;
  retryTimer_.cancel();
  for (Option& option : options_) {
    option.changed = option.changed || option.retry;
  }
  mark();
}

void PolicyProgram::retry() {
  for (Option& option : options_) {
    option.changed = option.changed || option.retry;
  }
  mark();
}

void PolicyProgram::scheduleRetry() {
  if (service_ == nullptr || retryTimer_.scheduled()) {
    return;
  }
  retryDelay_ =
      retryDelay_ == 0 ? service_->retryMin() : std::min(2 * retryDelay_, service_->retryMax());
  retryTimer_.scheduleIn(retryDelay_);
}

void PolicyProgram::rulesChanged(ClassMapMatchOption option) {
  at(option).changed = true;
  relevantChange();
}

void PolicyProgram::rulesChanged() {
  for (Option& option : options_) {
    option.changed = true;
  }
  relevantChange();
}

void PolicyProgram::actionsChanged() {
  actionsChanged_ = true;
  relevantChange();
}

void PolicyProgram::intfsChanged() {
  rulesChanged();
}

void PolicyProgram::everythingChanged() {
  actionsChanged_ = true;
  rulesChanged();
}

void PolicyProgram::countsRequested() {
  countsRequested_ = true;
  mark();
}

void PolicyProgram::reprogram() {
  for (Option& option : options_) {
    option.recreate = true;
  }
  rulesChanged();
}

void PolicyProgram::wantedIs(bool wanted) {
  if (wanted == wanted_) {
    return;
  }
  wanted_ = wanted;
  rulesChanged();
}

void PolicyProgram::restart() {
  restart_ = true;
  rulesChanged();
}

// turns ---------------------------------------------------------------------------------

void PolicyProgram::run() {
  policy_.dropLeftClasses();
  if (pass_ || service_ == nullptr) {
    return;  // the running pass takes the changes up when it ends
  }
  if (!service_->aclHelper()) {
    if (!wanted_ || restart_) {
      service_->policyGone(policy_.key());
    }
    return;
  }
  if (!helper_) {
    helper_ = service_->aclHelper();
  }
  // What a helper does first may end this machine or take the helper away.
  Kor::Ptr<PolicyMapAclHelper> const helper = helper_;
  Kor::Ptr<PolicyMapSm> const policy = Kor::share(&policy_);
  inside([&] { helper->programmer().start(); });
  if (helper_ && service_ != nullptr) {
    programmer().request(*this);
  }
}

void PolicyProgram::programmerGranted() {
  // The last step may give up the machine that owns this program.
  Kor::Ptr<PolicyMapAclHelper> const helper = helper_;
  Kor::Ptr<PolicyMapSm> const policy = Kor::share(&policy_);
  std::optional<Pass> planned;
  inside([&] { planned = nextPass(); });
  if (!helper_) {
    return;  // service machine or helper went away inside
  }
  if (planned) {
    pass_ = std::make_shared<Pass>(std::move(*planned));
    runPass();
  } else {
    inside([&] { readCounts(); });
    passEnded();
  }
}

void PolicyProgram::operationEnded(Kor::String const& error) {
  Kor::Ptr<PolicyMapAclHelper> const helper = helper_;
  Kor::Ptr<PolicyMapSm> const policy = Kor::share(&policy_);
  resultTimer_.cancel();
  Step const step = pass_->steps[pass_->next - 1];
  bool goesOn = true;
  if (error.empty()) {
    succeeded(step);
  } else {
    goesOn = failed(step, error);
  }
  if (pass_ && !goesOn) {
    pass_->next = pass_->steps.size();
  }
  runPass();
}

void PolicyProgram::runPass() {
  while (pass_ && pass_->next < pass_->steps.size()) {
    Step const step = pass_->steps[pass_->next++];
    std::optional<Kor::String> const result = performStep(step);
    if (!pass_) {
      return;  // service machine or helper went away inside the call
    }
    if (!result) {
      resultTimer_.scheduleIn(service_->asyncTimeout());
      return;
    }
    if (result->empty()) {
      succeeded(step);
    } else if (!failed(step, *result)) {
      break;
    }
  }
  if (pass_) {
    passEnded();
  }
}

std::optional<Kor::String> PolicyProgram::performStep(Step const& step) {
  std::shared_ptr<Pass> const pass = pass_;
  std::optional<Kor::String> result;
  inside([&] { result = perform(step); });
  return result;
}

template <class Call>
void PolicyProgram::inside(Call&& call) {
  performing_ = true;
  call();
  performing_ = false;
  if (std::exchange(leaving_, false) && service_ != nullptr && helper_) {
    leave(helper_);
    mark();
  }
}

void PolicyProgram::timedOut() {
  programmer().abandon();
  std::ostringstream text;
  text << "no result within " << service_->asyncTimeout() << " seconds";
  operationEnded(Kor::String(text.str()));
}

void PolicyProgram::passEnded() {
  if (pass_ && pass_->kind == Kind::teardown && !!pass_->failure) {
    ClassMapMatchOption const option = pass_->option;
    PolicyFailure const refused = std::exchange(at(option).failure, pass_->failure);
    if (!!refused) {
      publish(option);  // seen once, then the reason why nothing stands is shown again
      at(option).failure = refused;
    }
  }
  if (pass_) {
    for (ClassMapMatchOption const option : allMatchOptions) {
      publish(option);
    }
    publishClasses();
  }
  bool const planned = pass_ != nullptr;
  pass_.reset();
  if (!helper_) {
    return;  // service machine or helper went away inside a hook of the statuses
  }
  std::exchange(helper_, nullptr)->programmer().release(*this);
  if (planned && anythingToDo()) {
    mark();
  } else if (!planned && (!wanted_ || restart_) && service_ != nullptr) {
    // Unless that was decided only after the plan, by a hook: it has put the program on the loop.
    if (std::none_of(options_.begin(), options_.end(),
                     [](Option const& option) { return option.changed; })) {
      service_->policyGone(policy_.key());
    }
  }
}

// planning ------------------------------------------------------------------------------

bool PolicyProgram::anythingToDo() const {
  return actionsChanged_ || countsRequested_ || !wanted_ || restart_ ||
         std::any_of(options_.begin(), options_.end(),
                     [](Option const& option) { return option.changed; });
}

std::optional<PolicyProgram::Pass> PolicyProgram::nextPass() {
  policy_.dropLeftClasses();
  for (ClassMapMatchOption const option : allMatchOptions) {
    if (std::exchange(at(option).changed, false)) {
      std::optional<Pass> pass = planOption(option);
      if (pass || service_ == nullptr) {
        return pass;
      }
    }
  }
  if (std::exchange(actionsChanged_, false)) {
    return planActionUpdate();
  }
  return std::nullopt;
}

std::optional<PolicyProgram::Pass> PolicyProgram::planOption(ClassMapMatchOption option) {
  Option& state = at(option);
  PolicyFailure refused;
  Classes wanted;
  std::vector<Vorel::IntfId> intfs;
  if (wanted_ && !restart_) {
    // Of an option that is not allowed too: what is wrong with its rules refuses the others.
    wanted = wantedClasses(option, refused);
    if (service_ == nullptr) {
      return std::nullopt;  // a hook of the classes' statuses has ended the service machine
    }
    if (service_->allowsOption(option)) {
      intfs = service_->effectiveIntfs(policy_.key(), option);
    } else {
      refused = PolicyFailure();
      wanted.clear();
    }
  }
  bool const standing = created(option);
  bool const standsAsKnown = mine(option);
  // Whoever changes what a helper can do says so, but a policy that was away then has not heard.
  Capabilities const capabilities(*helper_);
  PortExpansion const expansion =
      helper_->subRulesForL4Ports() ? PortExpansion::alignedBlocks : PortExpansion::rangeChecker;
  bool recreate = !standsAsKnown || state.recreate || state.expansion != expansion ||
                  !sameRules(state.classes, wanted);
  if (!refused && (recreate || state.capabilities != capabilities)) {
    refused = unsupported(wanted, option, capabilities);
  }
  if (wanted.empty() || intfs.empty() || !refused.error().empty()) {
    state.retry = false;
    state.failure = refused;
    if (standsAsKnown) {
      return planTeardown(option);
    }
    publish(option);
    publishClasses();
    return std::nullopt;
  }

  std::set<Vorel::IntfId> const wantedIntfs(intfs.begin(), intfs.end());
  std::vector<Step> leave;
  std::vector<Step> join;
  std::vector<Vorel::IntfId> bound = policyData()->intfs(option);
  std::sort(bound.begin(), bound.end());
  for (Vorel::IntfId const intf : bound) {
    if (wantedIntfs.count(intf) == 0) {
      leave.push_back({Operation::removeIntf, option, intf});
    }
  }
  for (Vorel::IntfId const intf : intfs) {
    if (!policyData()->hasIntf(option, intf)) {
      join.push_back({Operation::addIntf, option, intf});
    }
  }

  bool const intfsDiffer = !leave.empty() || !join.empty();
  recreate = recreate || (intfsDiffer && helper_->reprogramPolicyOnIntfChange());
  if (standsAsKnown) {
    adoptData(state.classes, wanted);
    recreate = recreate || (actionsMoved(state.classes) && !helper_->updateActionSupported());
  }
  if (!recreate && !intfsDiffer) {
    return std::nullopt;
  }

  Pass pass{Kind::program, option, std::move(leave)};
  if (recreate) {
    pass.steps.push_back(
        {standing ? Operation::recreatePolicy : Operation::createPolicy, option, {}});
    pass.steps.push_back({Operation::addRules, option, {}});
    pass.classes = std::move(wanted);
    pass.expansion = expansion;
    pass.capabilities = capabilities;
  }
  pass.steps.insert(pass.steps.end(), join.begin(), join.end());
  pass.steps.push_back({Operation::commitPolicy, option, {}});
  return pass;
}

PolicyProgram::Pass PolicyProgram::planTeardown(ClassMapMatchOption option) const {
  Pass pass{Kind::teardown, option, {}};
  std::vector<Vorel::IntfId> bound = policyData()->intfs(option);
  std::sort(bound.begin(), bound.end());
  for (Vorel::IntfId const intf : bound) {
    pass.steps.push_back({Operation::removeIntf, option, intf});
  }
  pass.steps.push_back({Operation::deletePolicy, option, {}});
  return pass;
}

std::optional<PolicyProgram::Pass> PolicyProgram::planActionUpdate() {
  if (!wanted_ || restart_) {
    return std::nullopt;
  }
  Pass pass{Kind::updateActions, ClassMapMatchOption::ipv4, {}};
  bool concerned = false;
  for (ClassMapMatchOption const option : allMatchOptions) {
    if (!mine(option) || !actionsMoved(at(option).classes)) {
      continue;
    }
    concerned = true;
    if (!helper_->updateActionSupported()) {
      at(option).recreate = true;
      at(option).changed = true;
    }
  }
  if (!concerned) {
    return std::nullopt;
  }
  if (!helper_->updateActionSupported()) {
    return nextPass();
  }
  for (Kor::Ptr<PolicyMap::ClassMapSm> const& machine : policy_.classesInOrder()) {
    if (machine->classCommonData() && actionsMovedFor(*machine->classCommonData())) {
      pass.steps.push_back(
          {Operation::updateActions, ClassMapMatchOption::ipv4, {}, machine->classCommonData()});
    }
  }
  if (pass.steps.empty()) {
    return std::nullopt;
  }
  return pass;  // an option's commit is added with its first update
}

PolicyProgram::Classes PolicyProgram::wantedClasses(ClassMapMatchOption option,
                                                    PolicyFailure& failure) {
  Classes classes;
  for (Kor::Ptr<PolicyMap::ClassMapSm> const& machine : policy_.classesInOrder()) {
    Kor::String const error = machine->ruleError();
    if (!failure && !error.empty()) {
      failure = PolicyFailure(error, {}, machine->className(), {});
    }
    Kor::Ptr<ClassRules const> const rules = machine->rules(option);
    if (!rules->empty() && machine->classCommonData()) {
      classes.push_back({machine->className(), machine->classCommonData(), rules});
    }
  }
  return classes;
}

bool PolicyProgram::sameRules(Classes const& programmed, Classes const& wanted) const {
  return std::equal(programmed.begin(), programmed.end(), wanted.begin(), wanted.end(),
                    [&](ProgrammedClass const& a, ProgrammedClass const& b) {
                      return a.name == b.name &&
                             a.rules->sameEffect(*b.rules, service_->aclDiff().get());
                    });
}

// The rules are the same, but a class machine may have been built anew and has other common data:
// its actions are programmed once more from these.
void PolicyProgram::adoptData(Classes& programmed, Classes const& wanted) {
  if (!sameRules(programmed, wanted)) {
    return;
  }
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    programmed[i].rules = wanted[i].rules;
    if (programmed[i].data != wanted[i].data) {
      programmed[i].data = wanted[i].data;
      programmed[i].actionUpdates = wanted[i].data->updateAclActions() - 1;
      actionsChanged_ = true;
    }
  }
}

bool PolicyProgram::actionsMoved(Classes const& classes) const {
  return std::any_of(classes.begin(), classes.end(), [](ProgrammedClass const& programmed) {
    return programmed.actionUpdates != programmed.data->updateAclActions();
  });
}

bool PolicyProgram::actionsMovedFor(ClassMapSmCommonData const& data) const {
  for (ClassMapMatchOption const option : allMatchOptions) {
    for (ProgrammedClass const& programmed : at(option).classes) {
      if (mine(option) && programmed.data == &data &&
          programmed.actionUpdates != data.updateAclActions()) {
        return true;
      }
    }
  }
  return false;
}

// performing ----------------------------------------------------------------------------

PolicyMapSmCommonData::PtrConst PolicyProgram::policyData() const {
  return policy_.policyCommonData();
}

std::optional<Kor::String> PolicyProgram::perform(Step const& step) {
  PolicyMapAclHelper& helper = *helper_;
  PolicyMapSmCommonData::PtrConst const data = policyData();
  PolicyMapSmKey const& key = policy_.key();
  switch (step.operation) {
  case Operation::createPolicy:
    programmer().createdIs(key, step.option, this);
    return answerOf([&] { return helper.createPolicy(data, step.option); },
                    [&] { helper.programmer().createdDel(key, step.option); });
  case Operation::recreatePolicy:
    programmer().createdIs(key, step.option, this);
    return answerOf([&] { return helper.recreatePolicy(data, step.option); });
  case Operation::addRules: return addRules(step.option);
  case Operation::addIntf:
    return programmer().operate(
        [&] { return helper.addIntfToPolicy(data, step.intf, step.option); });
  case Operation::removeIntf:
    return programmer().operate(
        [&] { return helper.removeIntfFromPolicy(data, step.intf, step.option); });
  case Operation::commitPolicy:
    if (pass_->kind == Kind::updateActions && (at(step.option).recreate || !created(step.option))) {
      return Kor::String();  // the re-creation that follows commits
    }
    return programmer().operate([&] { return helper.commitPolicy(data, step.option); });
  case Operation::deletePolicy: return rollBack(step.option);
  case Operation::updateActions: return updateActions(step.updatedClass);
  }
  return Kor::String();
}

Kor::String PolicyProgram::addRules(ClassMapMatchOption option) {
  // Any call may end the service machine, and the pass with it.
  std::shared_ptr<Pass> const pass = pass_;
  PolicyMapAclHelper& helper = *helper_;
  PolicyMapSmCommonData::PtrConst const data = policyData();
  Kor::String error;
  for (ProgrammedClass& programmed : pass->classes) {
    // Noted first: an update that comes while the rules are added must still be programmed.
    programmed.actionUpdates = programmed.data->updateAclActions();
    programmed.data->rulesIs(option, programmed.rules);
    programmed.rules->forEach([&](auto const& rule) {
      AclRuleKey const key(programmed.name, rule.aclName, rule.seqno, option);
      forEachSubRule(rule, pass_->expansion, [&](SubRuleData const& subRule) {
        error = answerOf([&] { return helper.addRule(key, subRule, data, programmed.data); });
        return pass_ && error.empty();
      });
      if (!error.empty()) {
        pass->failedRule = key;
      }
      return pass_ && error.empty();
    });
    if (!pass_ || !error.empty()) {
      break;
    }
  }
  return error;
}

Kor::String PolicyProgram::updateActions(Kor::Ptr<ClassMapSmCommonData> const& data) {
  PolicyMapAclHelper& helper = *helper_;
  Kor::String error = answerOf([&] { return helper.beginUpdateActions(policyData(), data); });
  std::uint32_t const updates = data->updateAclActions();
  for (ClassMapMatchOption const option : allMatchOptions) {
    for (ProgrammedClass& programmed : at(option).classes) {
      // An option that failed is programmed anew, and one that was re-created meanwhile has the
      // actions already; the others go on.
      if (pass_ && mine(option) && !at(option).recreate && programmed.data == data &&
          programmed.actionUpdates != updates) {
        programmed.actionUpdates = updates;
        commitDue(option);
        Kor::String const failed = updateActionsOf(programmed, option);
        error = error.empty() ? failed : error;
      }
    }
  }
  // The bracket is closed whatever happened inside.
  Kor::String const endError =
      answerOf([&] { return helper.endUpdateActions(policyData(), data); });
  return error.empty() ? endError : error;
}

// The commits stand at the end of the pass, in the order of the options.
void PolicyProgram::commitDue(ClassMapMatchOption option) {
  std::vector<Step>& steps = pass_->steps;
  auto const place = std::find_if(steps.begin(), steps.end(), [option](Step const& step) {
    return step.operation == Operation::commitPolicy && step.option >= option;
  });
  if (place == steps.end() || place->option != option) {
    steps.insert(place, {Operation::commitPolicy, option, {}});
  }
}

Kor::String PolicyProgram::updateActionsOf(ProgrammedClass& programmed,
                                           ClassMapMatchOption option) {
  std::shared_ptr<Pass> const pass = pass_;
  PolicyMapAclHelper& helper = *helper_;
  Kor::String error;
  PortExpansion const expansion = at(option).expansion;
  programmed.rules->forEach([&](auto const& rule) {
    AclRuleKey const key(programmed.name, rule.aclName, rule.seqno, option);
    forEachSubRule(rule, expansion, [&](SubRuleData const& subRule) {
      error = answerOf(
          [&] { return helper.updateAction(key, subRule, policyData(), programmed.data); });
      return pass_ && error.empty();
    });
    if (!error.empty()) {
      pass->failedRule = key;
    }
    return pass_ && error.empty();
  });
  if (!error.empty()) {
    // Some rules may have the new actions and some the old: programmed anew.
    at(option).recreate = true;
    at(option).changed = true;
    at(option).failure =
        PolicyFailure(error, nameOf(static_cast<std::uint8_t>(Operation::updateActions)),
                      programmed.name, *pass->failedRule);
  }
  return error;
}

void PolicyProgram::succeeded(Step const& step) {
  Option& state = at(step.option);
  PolicyMapSmCommonData& data = *policy_.policyCommonData();
  switch (step.operation) {
  case Operation::addIntf:
    data.intfAdd(step.option, step.intf);
    state.intfsChanged = true;
    break;
  case Operation::removeIntf:
    data.intfRemove(step.option, step.intf);
    state.intfsChanged = true;
    break;
  case Operation::addRules:
    state.classes = pass_->classes;
    state.expansion = pass_->expansion;
    state.capabilities = pass_->capabilities;
    state.recreate = false;
    break;
  case Operation::commitPolicy:
    if (!state.recreate) {
      state.failure = PolicyFailure();
      state.retry = false;
      policy_.timeProgrammedIs(step.option, Kor::now());
    }
    break;
  default: break;
  }
}

bool PolicyProgram::failed(Step const& step, Kor::String const& error) {
  AclRuleKey const rule = std::exchange(pass_->failedRule, std::nullopt).value_or(AclRuleKey());
  PolicyFailure const failure(error, nameOf(static_cast<std::uint8_t>(step.operation)),
                              rule.className(), rule);
  if (!pass_->failure) {
    pass_->failure = failure;
  } else {
    KOR_TRACE_LINE(traceHandle(), 1, "second failure of a pass: " << error);
  }
  if (pass_->kind == Kind::teardown) {
    return true;
  }
  if (step.operation == Operation::updateActions) {
    // Told at once: what follows may have to wait for a result.
    inside([&] {
      for (ClassMapMatchOption const option : allMatchOptions) {
        publish(option);
      }
      publishClasses();
    });
    return true;
  }
  Kor::String const second = rollBack(step.option);
  if (!second.empty()) {
    KOR_TRACE_LINE(traceHandle(), 1, "second failure of a pass: " << second);
  }
  if (!pass_) {
    return false;
  }
  at(step.option).failure = failure;
  at(step.option).retry = true;
  scheduleRetry();
  return pass_->kind == Kind::updateActions;
}

Kor::String PolicyProgram::rollBack(ClassMapMatchOption option) {
  Kor::Ptr<PolicyMapAclHelper> const helper = helper_;
  Programmer& programmer = helper->programmer();
  User const* const creator = programmer.creator(policy_.key(), option);
  Kor::String error;
  // What another machine that lives has programmed is left to it.
  if (programmer.created(policy_.key(), option) && (creator == nullptr || creator == this)) {
    programmer.createdDel(policy_.key(), option);
    error = answerOf([&] { return helper->deletePolicy(policyData(), option); },
                     [&] { programmer.createdIs(policy_.key(), option, nullptr); });
  }
  policy_.policyCommonData()->intfRemoveAll(option);
  policy_.timeProgrammedDel(option);
  Option& state = at(option);
  state.classes.clear();
  state.recreate = false;
  state.intfsChanged = true;
  return error;
}

void PolicyProgram::readCounts() {
  if (!std::exchange(countsRequested_, false)) {
    return;
  }
  for (Kor::Ptr<PolicyMap::ClassMapSm> const& machine : policy_.classesInOrder()) {
    if (machine->classMapStatus() && service_ != nullptr) {
      readCountsOf(*machine);
    }
  }
}

void PolicyProgram::readCountsOf(ClassMapSm const& machine) {
  Kor::Ptr<PolicyMapAclHelper> const helper = helper_;
  std::map<AclRuleKey, std::uint64_t> counts;
  for (ClassMapMatchOption const option : allMatchOptions) {
    for (ProgrammedClass const& programmed : at(option).classes) {
      if (programmed.data != machine.classCommonData()) {
        continue;
      }
      programmed.rules->forEach([&](auto const& rule) {
        AclRuleKey const key(programmed.name, rule.aclName, rule.seqno, option);
        std::uint64_t count = 0;
        Kor::String const failed = answerOf([&] {
          count = helper->getCountForRule(key, policyData(), programmed.data);
          return Kor::String();
        });
        if (failed.empty()) {
          counts.emplace(key, count);
        } else {
          KOR_TRACE_LINE(traceHandle(), 1, "no hit count for " << key << ": " << failed);
        }
        return service_ != nullptr;
      });
    }
  }
  if (service_ == nullptr) {
    return;  // the service machine ended inside
  }
  // Counted: a hook may take it away from the machine.
  Kor::Ptr<ClassMapStatus> const status = Kor::share(machine.classMapStatus().get());
  for (auto iterator = status->hitCountIterator(); iterator; ++iterator) {
    if (counts.count(iterator.key()) == 0) {
      iterator.del();
    }
  }
  for (auto const& [key, count] : counts) {
    status->hitCountIs(key, count);
  }
}

PolicyFailure PolicyProgram::unsupported(Classes const& classes, ClassMapMatchOption option,
                                         Capabilities const& capabilities) {
  PolicyFailure failure;
  if (capabilities.all()) {
    return failure;
  }
  for (ProgrammedClass const& wanted : classes) {
    wanted.rules->forEach([&](auto const& rule) {
      std::string_view const reason = capabilities.reasonAgainst(rule.rule);
      if (reason.empty()) {
        return true;
      }
      AclRuleKey const key(wanted.name, rule.aclName, rule.seqno, option);
      failure = PolicyFailure(refusal(key, reason), {}, key.className(), key);
      return false;
    });
    if (!failure.error().empty()) {
      break;
    }
  }
  return failure;
}

void PolicyProgram::leaveHelper(Kor::Ptr<PolicyMapAclHelper> const& helper) {
  if (performing_) {
    leaving_ = leaving_ || helper == helper_;
  } else if (service_ != nullptr && helper) {
    leave(helper);
  }
}

void PolicyProgram::leave(Kor::Ptr<PolicyMapAclHelper> const& helper) {
  // The references may be let go.
  Kor::Ptr<PolicyMapAclHelper> const left = Kor::share(helper.get());
  Kor::Ptr<PolicyMapSm> const policy = Kor::share(&policy_);
  pass_.reset();
  resultTimer_.cancel();
  left->programmer().withdraw(*this);
  for (ClassMapMatchOption const option : allMatchOptions) {
    if (service_ == nullptr) {
      return;  // a deletion has ended the service machine
    }
    helper_ = left;
    performing_ = true;
    Kor::String const error = rollBack(option);
    performing_ = leaving_ = false;
    at(option).retry = false;
    at(option).failure =
        error.empty()
            ? PolicyFailure()
            : PolicyFailure(error, nameOf(static_cast<std::uint8_t>(Operation::deletePolicy)), {},
                            {});
  }
  helper_ = nullptr;
  for (ClassMapMatchOption const option : allMatchOptions) {
    publish(option);
  }
  publishClasses();
}

// state ---------------------------------------------------------------------------------

Kor::Ptr<PolicyMapAclHelper> PolicyProgram::helperInUse() const {
  return helper_ || service_ == nullptr ? helper_ : service_->aclHelper();
}

bool PolicyProgram::created(ClassMapMatchOption option) const {
  Kor::Ptr<PolicyMapAclHelper> const helper = helperInUse();
  return helper && helper->programmer().created(policy_.key(), option);
}

bool PolicyProgram::mine(ClassMapMatchOption option) const {
  Kor::Ptr<PolicyMapAclHelper> const helper = helperInUse();
  return helper && helper->programmer().creator(policy_.key(), option) == this &&
         !at(option).classes.empty();
}

PolicyFailure const& PolicyProgram::failure(ClassMapMatchOption option) const {
  return at(option).failure;
}

void PolicyProgram::publish(ClassMapMatchOption option) {
  Kor::Ptr<PolicyMapStatus> const status = policy_.status();
  if (!status || service_ == nullptr) {
    return;  // nobody asked, or the service machine went away inside a hook
  }
  bool const stands = created(option);
  bool const left = stands && !mine(option);
  if (stands) {
    status->programmedIs(option, true);
  } else {
    status->programmedDel(option);
  }
  // When and where another machine programmed what it left is not known better here.
  if (!left) {
    if (auto const time = policy_.korTimeProgrammed(option)) {
      status->timeProgrammedIs(option, time->value());
    } else {
      status->timeProgrammedDel(option);
    }
    publishIntfs(*status, option);
  }
  PolicyFailure const& failure = at(option).failure;
  if (!failure) {
    status->failureDel(option);
  } else {
    status->failureIs(option, failure);
  }
  Kor::String first;
  for (Option const& state : options_) {
    if (first.empty()) {
      first = state.failure.error();
    }
  }
  status->errorIs(first);
}

void PolicyProgram::publishIntfs(PolicyMapStatus& status, ClassMapMatchOption option) {
  if (!std::exchange(at(option).intfsChanged, false)) {
    return;
  }
  PolicyMapSmCommonData::PtrConst const data = policyData();
  for (Vorel::IntfId const intf : status.intfs(option)) {
    if (!data->hasIntf(option, intf)) {
      status.appliedIntfDel({option, intf});
    }
  }
  for (Vorel::IntfId const intf : data->intfs(option)) {
    status.appliedIntfIs({option, intf}, true);
  }
}

void PolicyProgram::publishClasses() {
  for (Kor::Ptr<PolicyMap::ClassMapSm> const& machine : policy_.classesInOrder()) {
    Kor::String error;
    bool programmed = false;
    for (Option const& state : options_) {
      if (error.empty() && state.failure.className() == machine->className()) {
        error = state.failure.error();
      }
      programmed = programmed || std::any_of(state.classes.begin(), state.classes.end(),
                                             [&](ProgrammedClass const& c) {
                                               return c.data == machine->classCommonData();
                                             });
    }
    machine->programStateIs(programmed, error);
  }
}

}  // namespace PolicyMap
