# SPDX-License-Identifier: Apache-2.0
#
# Seeded bugs: one text replacement each. `old` occurs exactly once in `file`. `note` says which
# configuration, edit and failing call show the bug, and where it is seen.

E = "platform/PolicyMap/"

MUTANTS = []


def m(id, file, old, new, note):
    MUTANTS.append({"id": id, "file": file, "old": old, "new": new, "note": note})


# --- one pass: calls, failures, clean-up ----------------------------------------------------------

m("M01-joined-unpublished", E + "PassRun.cpp",
  """    policyData_->intfAdd(step.option, step.intf);
    state.intfsUnpublished = true;
""",
  """    policyData_->intfAdd(step.option, step.intf);
""",
  "Attached and programmed at Ethernet1; an edit attaches the same policy at Ethernet2. No fault. "
  "The record has both interfaces, the status only Ethernet1.")

m("M02-failure-not-retried", E + "PassRun.cpp",
  """  state.failureIs(failure);
  state.retry = true;
""",
  """  state.failureIs(failure);
""",
  "Any policy; `commitPolicy once`, then time: no retry is scheduled, the policy stays deleted and "
  "the failure stays in the status.")

m("M03-failed-commit-not-deleted", E + "PassRun.cpp",
  """  Outcome const deletion = deletePolicy(step.option);
""",
  """  Outcome const deletion = step.operation == HelperOperation::commitPolicy
                               ? Outcome::done
                               : deletePolicy(step.option);
""",
  "Any policy; `commitPolicy once`: deletePolicy is not called, the record stays created, and since "
  "deleted() schedules the retry, nothing is tried again.")

m("M04-failure-kept", E + "PassRun.cpp",
  """      state.failureDel();
      observer_.committed(step.option);
""",
  """      observer_.committed(step.option);
""",
  "Any policy; `commitPolicy once`, then one second: programmed again, but the status (policy and "
  "class) keeps the failure and its text.")

m("M05-recreate-threw-forgotten", E + "PassRun.cpp",
  """  if (outcome == Outcome::failed && !carriedOut_ && !(again && threw_)) {
""",
  """  if (outcome == Outcome::failed && !carriedOut_) {
""",
  "Programmed policy, an edit of a list, `recreatePolicy throws once`: the core takes the policy for "
  "deleted, does not delete it, and creates it a second time (assertion of the helper, or a finding).")

m("M06-actions-counted-as-old", E + "PassRun.cpp",
  """    programmed.actionUpdates = programmed.data->updateAclActions();
    programmed.data->rulesIs(option, programmed.rules);
""",
  """    programmed.data->rulesIs(option, programmed.rules);
""",
  "One edit changes a rule and the action of its class: the re-creation has the new action already, but "
  "it looks changed, so a needless update follows (--update-action: beginUpdateActionCount 1, otherwise "
  "one more createCount). No fault.")

m("M07-failed-rule-lost", E + "PassRun.cpp",
  """        outcome =
            call([&] { return helper_->addRule(key, subRule, policyData_, programmed.data); });
        return outcome == Outcome::done;
      });
      if (outcome == Outcome::failed) {
        failedRule_ = key;
      }
""",
  """        outcome =
            call([&] { return helper_->addRule(key, subRule, policyData_, programmed.data); });
        return outcome == Outcome::done;
      });
""",
  "Any policy; `addRule nth=2 once`: the failure in the status has neither class nor rule, and the "
  "status of the class has no error.")

m("M08-begin-failure-ignored", E + "PassRun.cpp",
  """      updateFailed(option, programmed->name, "beginUpdateActions");
""",
  """      continue;
""",
  "--update-action, an edit `set action1 9`, `beginUpdateActions before once`: the actions count as "
  "programmed and the policy is not created again; the record keeps the old value.")

m("M09-update-failure-not-due", E + "PassRun.cpp",
  """  state.recreate = true;
  state.rulesDue = true;
  AclRuleKey""",
  """  state.recreate = true;
  AclRuleKey""",
  "--update-action, an action edit, `updateAction once`: the policy is not created again, old values "
  "and the failure stay for good.")

m("M10-failed-deletion-disowned", E + "PassRun.cpp",
  """    arbiter_.createdIs(policyData_->policyKey(), option, &client_);
    state_[option].recreate = true;
    deletionThrew_ = true;
""",
  """    state_[option].recreate = true;
    deletionThrew_ = true;
""",
  "Programmed policy, an edit detaches it, `deletePolicy throws once`: it has no creator any more, so "
  "the deletion is not repeated and the record stays created.")

# --- planning of a pass ---------------------------------------------------------------------------

m("M11-new-capabilities-ignored", E + "PassPlan.cpp",
  """  if (!refusal && (recreate || state.capabilities != helper.capabilities)) {
""",
  """  if (!refusal && recreate) {
""",
  "A programmed policy with a deny rule (or TTL), then denyRulesAllowed (ttlSupported) of the helper "
  "becomes false: it stays programmed instead of being refused. No fault.")

m("M12-commit-forgotten-after-join", E + "PassPlan.cpp",
  """  pass.steps.push_back({HelperOperation::commitPolicy, option});
  plan.pass = std::move(pass);
""",
  """  if (recreate || join.empty()) {
    pass.steps.push_back({HelperOperation::commitPolicy, option});
  }
  plan.pass = std::move(pass);
""",
  "Programmed policy, an edit attaches it at one more interface: addIntf without commit: commitCount "
  "and the time of the status are not those of a commit; a failed addIntf that is repaired is.")

m("M13-commit-before-join", E + "PassPlan.cpp",
  """  pass.steps.insert(pass.steps.end(), join.begin(), join.end());
  pass.steps.push_back({HelperOperation::commitPolicy, option});
""",
  """  if (recreate) {
    pass.steps.insert(pass.steps.end(), join.begin(), join.end());
  }
  pass.steps.push_back({HelperOperation::commitPolicy, option});
  if (!recreate) {
    pass.steps.insert(pass.steps.end(), join.begin(), join.end());
  }
""",
  "Programmed policy, an edit attaches it at one more interface: the journal has commitPolicy before "
  "addIntfToPolicy; with that addIntf failing the time programmed is wrong for a moment.")

m("M14-names-of-classes-ignored", E + "PassPlan.cpp",
  """                      return a.name == b.name && a.rules->sameEffect(*b.rules, aclDiff);
""",
  """                      return a.rules->sameEffect(*b.rules, aclDiff);
""",
  "Two classes match the same list (actions 1 and 2); an edit puts the second before the first: the "
  "policy is not created again, the record keeps the old order. No fault.")

# --- what is kept per option ----------------------------------------------------------------------

m("M15-class-back-with-old-actions", E + "ProgrammedState.cpp",
  """      programmed.actionUpdates = wanted.data->updateAclActions() - 1;
""",
  "",
  "--async --update-action: while a commit is waited for, one edit removes a class, a second one adds "
  "it again with the same list and another action: the class has a new machine, which has counted as "
  "many updates as the old one, so the action stays old in the record.")

m("M16-teardown-failure-dropped", E + "ProgrammedState.cpp",
  """  if (!refusal && leftover) {
    return;
  }
""",
  "",
  "Programmed policy, an edit removes its list, `deletePolicy once` (carried out, fails): the failure "
  "stays in the status until a pass succeeds; here an edit of the class-map that needs no pass (a match "
  "of a list without rules) clears it.")

m("M17-due-rules-read-as-none", E + "DuePasses.cpp",
  """  if (!changed.any() && (state.noClasses || state.refused) && !unwanted() &&
""",
  """  if ((state.noClasses || state.refused) && !unwanted() &&
""",
  "Programmed policy; edit 1 removes its only list, edit 2 creates it again: never programmed again, "
  "because the option once had no classes. No fault.")

m("M18-only-ipv4-after-action", E + "DuePasses.cpp",
  """    if (step.operation == HelperOperation::commitPolicy) {
      rulesDue(step.option);
""",
  """    if (step.operation == HelperOperation::updateAction) {
      rulesDue(step.option);
""",
  "Helper without updateActionSupported, a class with IPv6 or MAC rules, an edit of its action: only "
  "the IPv4 policy is created again, the others keep the old value. No fault.")

m("M19-last-refusal", E + "DuePasses.cpp",
  """    if (!refusal && !error.empty()) {
""",
  """    if (!error.empty()) {
""",
  "Two classes of one policy cannot be programmed (match-all over IP and MAC): the failure in the "
  "status must name the first class and its text, here it names the second.")

# --- turns, retries, results ----------------------------------------------------------------------

m("M20-wait-not-reset", E + "PolicyReconciler.cpp",
  """  retryTimer_.startOver();
  due_.failedDue();
""",
  """  due_.failedDue();
""",
  "commitError for good, time passes (waits 1, 2, 4), then an edit fails too: the next retry must be "
  "after 1 s, here the old timer goes on; seen in the times of the calls.")

m("M21-change-does-not-retry", E + "PolicyReconciler.cpp",
  """  retryTimer_.startOver();
  due_.failedDue();
""",
  """  retryTimer_.startOver();
""",
  "A policy with IPv4 and IPv6 rules, `commitPolicy option=ipv6 once`, then before the retry an edit "
  "of the IPv4 list: the timer is cancelled and ipv6 is never tried again.")

m("M22-late-result-accepted", E + "PolicyReconciler.cpp",
  """  helper_->arbiter().abandonResult();
""",
  "",
  "--async with a result delayed by 35 s (`commitPolicy delay=35 once`, or hold and release): after "
  "the timeout the late result is taken for that of the retry, or reaches nobody (crash).")

m("M23-time-kept-after-deletion", E + "PolicyReconciler.cpp",
  """  policy_.timeProgrammedIs(option, std::nullopt);
  publisher_.allClassesDue();
  if (state_[option].retry) {
""",
  """  publisher_.allClassesDue();
  if (state_[option].retry) {
""",
  "Programmed policy, an edit removes its list (or a list edit with `commitPolicy once`): the status "
  "keeps a time programmed although nothing is programmed.")

m("M24-class-programmed-after-teardown", E + "PolicyReconciler.cpp",
  """  policy_.timeProgrammedIs(option, std::nullopt);
  publisher_.allClassesDue();
  if (state_[option].retry) {
""",
  """  policy_.timeProgrammedIs(option, std::nullopt);
  if (state_[option].retry) {
""",
  "Programmed policy, an edit shuts its only interface (or attaches a second one with `addIntfToPolicy "
  "once`): everything is deleted, but the status of the class stays programmed.")

m("M25-deletion-not-retried", E + "PolicyReconciler.cpp",
  """  if (passRun.deletionThrew()) {
    scheduleRetry();
  }
""",
  "",
  "Programmed policy, an edit removes the policy-map, `deletePolicy before once`: the deletion is not "
  "repeated, the record stays created.")

# --- statuses -------------------------------------------------------------------------------------

m("M26-former-failed-class", E + "StatusPublisher.cpp",
  """       {std::exchange(failedClass_[option], state.failure.className()), failedClass_[option]}) {
""",
  """       {failedClass_[option] = state.failure.className()}) {
""",
  "--no-deny-rules, classes a and b, both with a deny rule: refused because of a. An edit removes the "
  "deny of a: refused because of b, without a pass; the status of class a keeps its error.")

# --- policy-maps and classes ----------------------------------------------------------------------

m("M27-class-order-not-noticed", E + "PolicyMapSm.cpp",
  """  if (known && (!configured || configured->value() != known->value())) {
    if (prioClass(known->value()) == name) {
      prioClassDel(known->value());
    }
    classPrioDel(name);
    reconciler_->classChanged(name);
  }
  if (configured && (!known || configured->value() != known->value())) {
""",
  """  if (known && !configured) {
    if (prioClass(known->value()) == name) {
      prioClassDel(known->value());
    }
    classPrioDel(name);
    reconciler_->classChanged(name);
  }
  if (configured && !known) {
""",
  "Two classes with different lists; an edit `class b insert-before a`: not created again, the record "
  "keeps the old order. No fault.")

m("M28-joined-class-map-unwatched", E + "PolicyClasses.cpp",
  """  classMaps_.watch(name);
  Kor::Ptr<ClassMapConfig const> const map = classMaps_.classMapConfig(name);
""",
  """  Kor::Ptr<ClassMapConfig const> const map = classMaps_.classMapConfig(name);
  if (map) {
    classMaps_.watch(name);
  }
""",
  "An attached policy-map names a class-map that does not exist; an edit defines it: it is never "
  "programmed, and its status says that it is missing. No fault.")

m("M29-status-of-removed-class", E + "PolicyClasses.cpp",
  """  policy_.classMapSmDel(name);
  if (status_) {
    status_->classMapStatusDel(name);
  }
""",
  """  policy_.classMapSmDel(name);
""",
  "An attached policy; an edit removes a class-map (`no class-map`) but not the class: its status must "
  "be a new one with `missing class-map`, here it is the old one, which still says programmed.")

m("M30-own-rules-not-compiled-again", E + "ClassMapSm.cpp",
  """  compiledRules_.makeStale();
  if (owner_ != nullptr) {
""",
  """  if (owner_ != nullptr) {
""",
  "An edit of the class-map itself (one more `match access-group`, a rule in it removed): the rules "
  "compiled before are programmed again. No fault.")

m("M31-error-refuses-one-option", E + "ClassMapSm.cpp",
  """  if (errorChanged && owner_ != nullptr) {
    for (ClassMapMatchOption const option : allMatchOptions) {
      owner_->classRulesChanged(className_, option);
    }
  }
""",
  """  if (errorChanged && owner_ != nullptr) {
    owner_->classRulesChanged(className_, ClassMapMatchOption::ipv4);
  }
""",
  "A policy with a match-all class of two IPv4 lists and a class with an IPv6 list; an edit of an IPv4 "
  "list makes the TTL matches uncombinable: ipv6 must be refused too, here it stays programmed. The "
  "way back: what was refused is not programmed again.")

# --- attachments, interfaces, port-channels -------------------------------------------------------

m("M32-left-policy-keeps-interface", E + "AttachedPolicies.cpp",
  """    syncIntf(*change.left, place.intf());
    owner_.handlePolicyMap(Kor::Name(change.left->first()));
""",
  """    owner_.handlePolicyMap(Kor::Name(change.left->first()));
""",
  "edge is attached at Ethernet1 and Ethernet2; an edit detaches it from Ethernet2 or attaches another "
  "policy-map there: edge stays applied at Ethernet2. No fault.")

m("M33-interface-change-unnoticed", E + "AttachedPolicies.cpp",
  """        machine->reconciler().intfsChanged();
""",
  """        continue;
""",
  "Attached at a layer-3 interface with an IPv4 address, IPv4 and IPv6 rules; an edit adds an IPv6 "
  "address: the IPv6 rules are not programmed. Also members of a port-channel that is expanded.")

m("M34-down-interface-carries", E + "ServicePolicySm.cpp",
  """      if (entry.value() && allowedIntfForType(entry.key(), matchOption)) {
""",
  """      if (allowedIntfForType(entry.key(), matchOption)) {
""",
  "Attached at Ethernet1 and at Ethernet2, which is shut down (or with --no-mgmt at Management1): the "
  "record has the second one too. No fault.")

m("M35-down-member-programmed", E + "ServicePolicySm.cpp",
  """      if (intfExists(member)) {
        members.push_back(member);
      }
""",
  """      members.push_back(member);
""",
  "--expand-port-channels, a port-channel with two members, one of them shut down, or by an edit: the "
  "record has the member that is down. No fault.")

m("M36-former-channel-forgotten", E + "PortChannels.cpp",
  """    concerned.push_back(known->second);
""",
  """    concerned.push_back(member);
""",
  "--expand-port-channels, an edit `no channel-group` (or another channel) at a member: the policy of "
  "the channel it left stays applied at it. No fault.")

m("M37-state-of-member-unnoticed", E + "PortChannels.cpp",
  """  return {found->second, intf};
""",
  """  return {intf};
""",
  "--expand-port-channels, an edit shuts a member down (or brings it up): the policy of its channel is "
  "not changed. No fault.")

m("M38-routed-interface-unnoticed", E + "ServicePolicyWatches.cpp",
  """  void onRoutedIntf(Vorel::IntfId intf) override { this->owner_.intfChanged(intf); }
""",
  """  void onRoutedIntf(Vorel::IntfId /*intf*/) override {}
""",
  "A layer-2 interface with a policy; an edit `no switchport` (no address): the IPv4 and IPv6 rules "
  "must go, here they stay; `switchport` again: they must come back. No fault.")

m("M39-ipv6-lists-as-ipv4", E + "ServicePolicyWatches.cpp",
  """  void onIp6Acl(Kor::Name name) override { owner_.dependencyChanged(DependencyKind::ip6Acl, name); }
""",
  """  void onIp6Acl(Kor::Name name) override { owner_.dependencyChanged(DependencyKind::ipAcl, name); }
""",
  "An attached policy with an IPv6 list; an edit of one of its rules: the record keeps the old rule. "
  "No fault.")

m("M40-layer3-mac", E + "IntfEligibility.cpp",
  """        return unless(isLayer2(intf) || (isLayer3(intf) && intf.isPhysical()),
""",
  """        return unless(isLayer2(intf) || isLayer3(intf),
""",
  "A policy with MAC rules at Vlan10 with an address, or at a routed port-channel: the MAC policy has "
  "this interface. No fault.")

# --- rules ----------------------------------------------------------------------------------------

m("M41-missing-list-not-awaited", E + "RuleCompiler.cpp",
  """    dependencies.add(name);
    auto const list = acls_ ? RuleLists<Rule>::find(*acls_, name) : nullptr;
    if (list) {
""",
  """    auto const list = acls_ ? RuleLists<Rule>::find(*acls_, name) : nullptr;
    if (list) {
      dependencies.add(name);
""",
  "A class names two lists; edit 1 removes one, edit 2 creates it again: its rules do not come back. "
  "No fault.")

m("M42-one-port-in-common", E + "FieldMeeting.cpp",
  """      if (low <= high) {
""",
  """      if (low < high) {
""",
  "A match-all class of two lists, `tcp any any eq 443` and `tcp any any range 400 500`: the "
  "intersection is empty, nothing is programmed. No fault.")

m("M43-first-dependent-only", E + "DependencyIndex.cpp",
  """    next->second->reaction_(kind, name);
    found = names.find(name);
""",
  """    next->second->reaction_(kind, name);
    return;
""",
  "Two classes, or two policies, match the same list; an edit of the list: only the first of them gets "
  "the new rules. No fault.")

# --- the helper, the machines of the tests, the records -------------------------------------------

m("M44-interfaces-survive-deletion", "helper/AclHelper.cpp",
  """  data->intfDelAll();
  return deleteError_;
""",
  """  return deleteError_;
""",
  "Any policy with `commitPolicy once`: the deleted record still has its interfaces until the retry; "
  "if an edit moves the policy to another interface meanwhile, the record has both.")

m("M45-destination-ranges-unchecked", "helper/AclHelper.cpp",
  """(subRule.srcPortRange() || subRule.dstPortRange())""",
  """subRule.srcPortRange()""",
  "A rule with a range of destination ports, --inject rangeCheckerError=TEXT: it is added, exit "
  "status 0.")

m("M46-recreated-without-interfaces", "helper/AclHelper.cpp",
  """  for (Vorel::IntfId const intf : policy->intfs(matchOption)) {
    data->intfIs(intf, true);
  }
""",
  "",
  "Programmed policy, any edit of its rules: created again, the record has no interfaces.")

m("M47-end-counted-as-begin", "helper/AclHelper.cpp",
  """                       &AclPolicyData::endUpdateActionCountInc);
""",
  """                       &AclPolicyData::beginUpdateActionCountInc);
""",
  "--update-action, an action edit: the record has beginUpdateActionCount 2 and "
  "endUpdateActionCount 0.")

m("M48-counted-for-deleted", "helper/AclHelper.cpp",
  """    if (data && data->created()) {
""",
  """    if (data) {
""",
  "--update-action, IPv4 and IPv6 rules; edit 1 removes the IPv6 list, edit 2 changes the action: the "
  "record of the deleted IPv6 policy counts the update.")

m("M49-async-error-twice", "helper/AclHelper.cpp",
  """  scheduleAsyncResult(error);
  return {};
""",
  """  scheduleAsyncResult(error);
  return error;
""",
  "--async --inject commitError=TEXT: refused at once instead of by its result; the result then "
  "arrives without anyone waiting.")

m("M50-stale-async-error", "helper/AclHelper.cpp",
  """  asyncErrorIs(std::move(error));
""",
  """  if (!error.empty()) {
    asyncErrorIs(std::move(error));
  }
""",
  "--async --inject commitError=TEXT, trigger, clear, one second, trigger ...: the success of the "
  "retry is reported with the old error, again and again.")

m("M51-addintf-without-result", "helper/AclHelper.cpp",
  """  return result(addIntfError_);
""",
  """  return addIntfError_;
""",
  "--async --async-delay 1: the result of addIntfToPolicy never arrives; after 30 s the status has "
  "`no result within 30 seconds`.")

m("M52-removed-action-not-announced", "machines/TestActionSm.cpp",
  """  ((*classData).*Kind<Action>::valueIs)(0);
  classData->updateAclActionsInc(1);
""",
  """  ((*classData).*Kind<Action>::valueIs)(0);
""",
  "A class with action1 and action2; an edit `no set action2`: the value in the class data is 0, but "
  "the record keeps the old one. No fault.")

m("M53-down-interface-exists", "machines/TestServicePolicySm.cpp",
  """  return !nonexistentIntf(intf);
""",
  """  return !nonexistentIntf(intf) || intf.isPortChannel();
""",
  "A policy at a port-channel that is shut down, without --expand-port-channels: it is programmed "
  "there. No fault.")

m("M54-option-of-key-not-read", "records/AclPolicyType.cpp",
  """      option_ = Kor::deserializeAttr<PolicyMap::ClassMapMatchOption>(at, last, name);
""",
  """      static_cast<void>(Kor::deserializeAttr<PolicyMap::ClassMapMatchOption>(at, last, name));
""",
  "Shell: helper.testData[Value('PolicyMapTest::AclPolicyType', ** {..., 'option': 'ipv6'})] reads the "
  "record of ipv4. Found by tests/records.")
