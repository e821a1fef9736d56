// SPDX-License-Identifier: Apache-2.0
#include "lab/Session.h"

#include "lab/SettingsEditor.h"

#include <Acl/AclDiff.h>
#include <Kor/EventLoop.h>

#include <string>

namespace lab {

namespace {

// Counts the rules added to it for a progress bar.
class WatchedHelper : public PolicyMapTest::AclHelper {
 public:
  WatchedHelper(SessionOptions const& options, Progress& progress)
      : AclHelper(options.updateAction, options.expandPortChannels), progress_(progress) {}

  Kor::String addRule(PolicyMap::AclRuleKey const& key, PolicyMap::SubRuleData const& subRule,
                      PolicyMap::PolicyMapSmCommonData::PtrConst const& policyCommonData,
                      PolicyMap::ClassMapSmCommonData::PtrConst const& classCommonData) override {
    if (key != last_) {
      last_ = key;
      progress_.step();
    }
    return AclHelper::addRule(key, subRule, policyCommonData, classCommonData);
  }

 private:
  Progress& progress_;
  PolicyMap::AclRuleKey last_;
};

Kor::Ptr<PolicyMapTest::AclHelper> makeHelper(SessionOptions const& options, Progress* progress) {
  Kor::Ptr<PolicyMapTest::AclHelper> helper;
  if (progress != nullptr && progress->wanted()) {
    helper = Kor::make<WatchedHelper>(options, *progress);
  } else {
    helper = PolicyMapTest::aclHelperFactory(options.updateAction, options.expandPortChannels);
  }
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
    inject(*helper, fault);
  }
  return helper;
}

std::uint64_t rulesIn(Settings const& settings) {
  std::uint64_t rules = 0;
  for (Settings::Lists const& lists : settings.lists) {
    for (auto const& [name, list] : lists) {
      rules += list->entries.size();
    }
  }
  return rules;
}

// Adds one class with its class-map and access list of the same name.
void addClass(Settings& settings, std::string const& name, PolicyMapSettings& policyMap) {
  policyMap.order.append(name);
  policyMap.actions.try_emplace(name);
  ClassMap& classMap = settings.classMaps[name].edit();
  classMap.match = ClassMatch::any;
}

Settings settingsOf(FilterSet const& set, FilterLayout const& layout) {
  Settings settings;
  std::string const policyName = "rules";
  PolicyMapSettings& policyMap = settings.policyMaps[policyName].edit();
  for (std::size_t i = 0; i != layout.classes; ++i) {
    std::string const name = policyName + "-" + std::to_string(i + 1);
    addClass(settings, name, policyMap);
    auto& entries = settings.listsOf(set.family)[name].edit().entries;
    std::size_t const end = set.rules.size() * (i + 1) / layout.classes;
    for (std::size_t rule = set.rules.size() * i / layout.classes; rule != end; ++rule) {
      entries.put(entries.nextNumber().value(), configuredRule(set.rules[rule], set.family));
    }
    auto& matches = settings.classMaps[name].edit().matches;
    matches.put(matches.nextNumber().value(),
                PolicyMap::ClassMapMatch::acl(matchOption(set.family), name));
  }
  for (std::size_t i = 0; i != layout.interfaces; ++i) {
    Vorel::IntfId const intf("Ethernet" + std::to_string(i + 1));
    settings.interfaces[intf].policyMaps[static_cast<std::size_t>(Direction::input)] = policyName;
  }
  return settings;
}

}  // namespace

Session::Session(SessionOptions const& options, Progress* progress)
    : progress_(progress),
      requests_(Kor::make<PolicyMap::PolicyMapStatusRequestDir>("requests")),
      status_(Kor::make<PolicyMap::PolicyMapTypeStatus>("status")),
      helper_(makeHelper(options, progress)) {
  Kor::EventLoop::global().virtualTimeIs(true);
  machine_ = PolicyMapTest::testServicePolicySmFactory(
      configuration_.policyMaps(), configuration_.classMaps(), requests_, status_,
      configuration_.acls(), configuration_.lag(), configuration_.ip(), configuration_.ip6(),
      configuration_.routing(), configuration_.routing6(), helper_, Kor::make<Acl::AclDiff>(),
      options.layer2, options.layer3, options.management);
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
}

void Session::load(SourceText const& source, Reading reading) {
  PolicyText text = parsePolicyText(source, reading);
  Settings settings = configuration_.settings();
  editSettings(settings, text, reading);
  for (auto const& [kind, lines] : text.skipped.byKind()) {
    skipped_.add(kind, lines);
  }
  settingsAre(settings);
}

void Session::load(FilterSet const& rules, FilterLayout const& layout) {
  settingsAre(settingsOf(rules, layout));
}

void Session::perform(Step const& step) {
  switch (step.kind) {
  case Step::Kind::clear: clearFaults(*helper_); break;
  case Step::Kind::trigger: helper_->asyncTriggerInc(1); break;
  case Step::Kind::advance: Kor::EventLoop::global().runFor(step.seconds); break;
  }
  Kor::EventLoop::global().runUntilIdle();
}

void Session::settingsAre(Settings const& settings) {
  if (progress_ != nullptr) {
    progress_->begin("programming", rulesIn(settings));
  }
  configuration_.settingsAre(settings);
  Kor::EventLoop::global().runUntilIdle();
  if (progress_ != nullptr) {
    progress_->clear();
  }
}

}  // namespace lab
