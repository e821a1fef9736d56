// SPDX-License-Identifier: Apache-2.0
#include "testkit/Lab.h"

#include "machines/PolicyMapTestSm.h"
#include "testkit/Assertions.h"
#include "testkit/Printing.h"
#include "testkit/config/FilterSettings.h"
#include "testkit/config/SettingsEditor.h"

#include <Acl/AclDiff.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace PolicyMapTestKit {

namespace {

void applyOptions(PolicyMapTest::AclHelper* helper, LabOptions const& options) {
  helper->subRulesForL4PortsIs(options.subRulesForPorts);
  helper->reprogramPolicyOnIntfChangeIs(options.reprogramOnIntfChange);
  helper->denyRulesAllowedIs(options.denyRules);
  helper->ttlSupportedIs(options.ttl);
  helper->onlyTtlEqSupportedIs(options.onlyTtlEq);
  helper->ackOrRstSupportedIs(options.ackOrRst);
  helper->establishedSupportedIs(options.established);
  helper->asyncOperationsIs(options.async || options.pseudoAsync);
  helper->pseudoAsyncIs(options.pseudoAsync);
  for (Fault const& fault : options.faults) {
    PolicyMapTestKit::inject(*helper, fault);
  }
}

std::string placeOf(Caller const& where) {
  std::string const file = where.file;
  return file.substr(file.find_last_of('/') + 1) + ":" + std::to_string(where.line);
}

}  // namespace

Lab::Lab(LabOptions const& options, HelperMaker const& makeHelper)
    : journal_(loop_, options.journal),
      writes_(journal_),
      actions_(options.actions),
      requests_(Kor::make<PolicyMap::PolicyMapStatusRequestDir>("requests")),
      status_(Kor::make<PolicyMap::PolicyMapTypeStatus>("status")) {
  Kor::EventLoop::Scope const scope(loop_);
  usedJournalIs(&journal_);
  loop_.virtualTimeIs(true);
  configuration_.accessGroupsIs(options.accessGroups);
  recorded_ = makeHelper(options.updateAction, options.expandPortChannels);
  Recorder& recorder = *recorded_.recorder;
  recorder.journalIs(options.journal == 0 ? nullptr : &journal_);
  recorder.faults().findingsAre(&findings_);
  recorder.strictness().findingsAre(&findings_);
  recorder.strictness().strictnessIs(options.strictness);
  recorder.results().delayIs(options.asyncDelay);
  if (options.plan != FaultPlan()) {
    plan_.emplace(recorder.faults().add(options.plan));
  }
  applyOptions(helper().get(), options);
  machine_ = PolicyMapTest::testServicePolicySmFactory(
      policyMaps(), classMaps(), requests_, status_, acls(), lag(), ip(), ip6(), routing(),
      routing6(), helper(), Kor::make<Acl::AclDiff>(), options.layer2, options.layer3,
      options.management);
  machine_->allowIpAclIs(options.ipLists);
  machine_->allowIp6AclIs(options.ip6Lists);
  machine_->allowMacAclIs(options.macLists);
  configuration_.onShutdownIs([this](Vorel::IntfId intf, bool down) {
    if (down) {
      machine_->nonexistentIntfIs(intf, true);
    } else {
      machine_->nonexistentIntfDel(intf);
    }
  });
  if (options.journalStatuses) {
    statusWatch_.emplace(status_,
                         [this](auto const&... change) { journal_.statusChanged(change...); });
  }
  if (options.journal != 0) {
    writes_.observe(configuration_, requests_, helper());
  }
}

// A test may hold the helper, which must not refer to the lab after it.
Lab::~Lab() {
  machine_ = nullptr;
  Recorder& recorder = *recorded_.recorder;
  recorder.faults().endAll();
  recorder.faults().findingsAre(nullptr);
  recorder.strictness().findingsAre(nullptr);
  recorder.results().end();
  recorder.aroundIs({});
  recorder.journalIs(nullptr);
  if (usedJournal() == &journal_) {
    usedJournalIs(nullptr);
  }
}

void Lab::load(std::string_view policyText, Caller const& where) {
  edit(Text::SourceText(placeOf(where) + ": policy text", std::string(policyText)),
       Text::Reading::strict, "policy text");
}

void Lab::load(Text::SourceText const& source, Text::Reading reading) {
  edit(source, reading, *source.name());
}

void Lab::edit(Text::SourceText const& source, Text::Reading reading, std::string const& name) {
  Text::PolicyText text = Text::parsePolicyText(source, reading, actions_);
  Text::Settings settings = configuration_.settings();
  Text::editSettings(settings, text, reading);
  skipped_.add(text.skipped);
  journal_.testDid("load", Kor::String(name));
  configure(settings);
}

void Lab::load(Text::FilterSet rules, FilterLayout const& layout) {
  std::string const name = std::to_string(rules.rules.size()) + " rules";
  Text::Settings const settings = Text::filterSettings(rules, layout.classes, layout.interfaces);
  rules = {};  // may be large, and is not needed while the settings are programmed
  load(settings, name);
}

void Lab::load(Text::Settings const& settings, std::string const& name) {
  journal_.testDid("load", Kor::String(name));
  configure(settings);
}

void Lab::detachAll() {
  journal_.testDid("detach", {});
  attached_ = configuration_.settings();
  configure(Text::withoutAttachments(*attached_));
}

void Lab::attachAll() {
  journal_.testDid("attach", {});
  if (attached_) {
    configure(*std::exchange(attached_, std::nullopt));
  }
}

void Lab::configure(Text::Settings const& settings) {
  if (onLoad_) {
    onLoad_(settings);
  }
  usedJournalIs(&journal_);
  Kor::EventLoop::Scope const scope(loop_);
  {
    WriteLog::Pause const pause(writes_);  // the text is the write
    configuration_.settingsAre(settings);
  }
  run();
}

void Lab::settle() {
  usedJournalIs(&journal_);
  run();
}

void Lab::run() {
  StrictnessWatch& strictness = recorded_.recorder->strictness();
  strictness.somethingChanged();
  loop_.runUntilIdle();
  bool const isSettled = loop_.pending() == 0 && machine_->aclHelper() == helper() &&
                         recorded_.recorder->results().held().empty();
  if (isSettled) {
    strictness.isSettled();
    if (policyMaps()->servicePolicys() == 0) {
      strictness.isUnconfigured();
    }
  }
}

void Lab::advance(std::chrono::duration<double> time) {
  std::ostringstream text;
  text << time.count() << " s";
  if (!(time.count() >= 0) || std::isinf(time.count())) {
    throw std::invalid_argument("time advances by 0 s or more, not by " + text.str());
  }
  journal_.testDid("advance", Kor::String(text.str()));
  usedJournalIs(&journal_);
  loop_.runFor(time.count());
  settle();
}

void Lab::inject(Fault const& fault) {
  PolicyMapTestKit::inject(*helper(), fault);
  journal_.testDid("inject", Kor::String(fault.name + "=" + fault.text));
  settle();
}

void Lab::clearFaults() {
  journal_.testDid("clear", {});
  PolicyMapTestKit::clearFaults(*helper());
  recorded_.recorder->faults().clear();
  settle();
}

FaultScope Lab::plan(std::string_view plan, Caller const& where) {
  return Lab::plan(
      parseFaultPlan(Text::SourceText(placeOf(where) + ": fault plan", std::string(plan))));
}

FaultScope Lab::plan(FaultPlan const& plan) {
  FaultScope scope(recorded_.recorder->faults().add(plan));
  for (FaultState const& state : scope.faults()) {
    journal_.testDid("plan", Kor::String(toText(state.fault)));
  }
  return scope;
}

std::vector<HeldResult> Lab::heldResults() const {
  return recorded_.recorder->results().held();
}

void Lab::release() {
  std::vector<HeldResult> const held = heldResults();
  if (held.empty()) {
    throw std::out_of_range("no result is held");
  }
  release(held.front().number);
}

void Lab::release(std::uint64_t number) {
  Kor::EventLoop::Scope const scope(loop_);
  journal_.testDid("release", Kor::String(std::to_string(number)));
  usedJournalIs(&journal_);
  if (!recorded_.recorder->results().release(number)) {
    throw std::out_of_range("no result " + std::to_string(number) + " is held");
  }
  settle();
}

void Lab::releaseAll() {
  for (HeldResult const& result : heldResults()) {
    release(result.number);
  }
}

void Lab::trigger() {
  Kor::EventLoop::Scope const scope(loop_);
  journal_.testDid("trigger", {});
  usedJournalIs(&journal_);
  helper()->asyncTriggerInc(1);
  settle();
}

Snapshot Lab::snapshot(WithRules withRules) const {
  return snapshotOf(recorded_, withRules);
}

Record Lab::record(std::string_view policyMap, std::string_view direction,
                   std::optional<PolicyMap::ClassMapMatchOption> option) const {
  Snapshot const all = snapshot();
  try {
    return all.record(policyMap, direction, option);
  } catch (LookupError const& error) {
    bool const recorded = std::any_of(all.begin(), all.end(), [&](Record const& each) {
      return each.policy == policyMap && each.direction == direction;
    });
    PolicyMap::PolicyMapSmKey const key{Kor::Name(policyMap), Kor::Name(direction)};
    if (recorded) {
      throw;
    }
    std::string text = error.what();
    for (std::string const& line : explanationsOf(PolicyMap::explain(*machine_, key)).lines()) {
      text += "\n" + line;
    }
    throw LookupError(text);
  }
}

PolicyMap::PolicyFailure Lab::failure(std::string_view policyMap, std::string_view direction,
                                      std::optional<PolicyMap::ClassMapMatchOption> option) const {
  PolicyMap::PolicyMapSmKey const key{Kor::Name(policyMap), Kor::Name(direction)};
  Kor::Ptr<PolicyMap::PolicyMapStatus> const status = status_->policyMapStatus(key);
  if (!status) {
    needAttached(key);
  }
  for (PolicyMap::ClassMapMatchOption const each : PolicyMap::allMatchOptions) {
    if (status && (!option || *option == each) && !(!status->failure(each))) {
      return status->failure(each);
    }
  }
  return {};
}

void Lab::needAttached(PolicyMap::PolicyMapSmKey const& policy) const {
  std::set<std::string> attached;
  for (auto const& entry : policyMaps()->servicePolicyIteratorConst()) {
    PolicyMap::PolicyMapSmKey const each(entry.value(), entry.key().direction());
    if (each == policy) {
      return;
    }
    attached.insert(describe(each));
  }
  throw LookupError("attached policy-map", describe(policy), {attached.begin(), attached.end()});
}

Explanations Lab::explanationsOf(std::vector<PolicyMap::Explanation> const& all) const {
  IntfNames names;
  for (auto const& [intf, interface] : configuration_.settings().interfaces) {
    if (!interface.written.empty()) {
      names.emplace(intf, interface.written);
    }
  }
  return {all, now(), std::move(names)};
}

Explanations Lab::explain() const {
  return explanationsOf(PolicyMap::explain(*machine_));
}

Explanations Lab::explain(std::string_view policyMap) const {
  std::vector<PolicyMap::Explanation> some;
  std::set<std::string> attached;
  for (PolicyMap::Explanation const& explanation : PolicyMap::explain(*machine_)) {
    attached.insert(explanation.policy.first().stdString());
    if (explanation.policy.first().view() == policyMap) {
      some.push_back(explanation);
    }
  }
  if (some.empty()) {
    throw LookupError("attached policy-map", policyMap, {attached.begin(), attached.end()});
  }
  return explanationsOf(some);
}

}  // namespace PolicyMapTestKit
