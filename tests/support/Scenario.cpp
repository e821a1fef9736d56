// SPDX-License-Identifier: Apache-2.0
#include "support/Scenario.h"

#include <utility>

namespace TestSupport {

using PolicyMapTest::AclHelper;
using PolicyMapTest::AclPolicyData;
using PolicyMapTest::AclPolicyType;

Vorel::IntfId intf(char const* name) {
  return Vorel::IntfId(Kor::String8(name));
}

Acl::IpRuleConfig tcp(Acl::PortMatch const& destination, Acl::PortMatch const& source) {
  Acl::IpRuleConfig rule;
  rule.protocolIs(6);
  rule.dstPortIs(destination);
  rule.srcPortIs(source);
  return rule;
}

Acl::Ip6RuleConfig tcp6(Acl::PortMatch const& destination) {
  Acl::Ip6RuleConfig rule;
  rule.protocolIs(6);
  rule.dstPortIs(destination);
  return rule;
}

Acl::MacRuleConfig ether(std::uint32_t ethertype) {
  Acl::MacRuleConfig rule;
  rule.ethertypeIs(ethertype);
  return rule;
}

Scenario::Scenario(ScenarioSettings const& settings, Kor::Ptr<AclHelper> usedHelper)
    : helper(usedHelper ? std::move(usedHelper)
                        : PolicyMapTest::aclHelperFactory(settings.updateActions,
                                                          settings.expandPortChannels)),
      settings_(settings) {
  Kor::EventLoop::global().virtualTimeIs(true);
}

Scenario::~Scenario() {
  machine = nullptr;
  Kor::EventLoop::global().virtualTimeIs(false);
}

void Scenario::start() {
  machine = anotherMachine(policies, status);
}

Kor::Ptr<PolicyMapTest::TestServicePolicySm> Scenario::anotherMachine(
    Kor::Ptr<PolicyMap::PolicyMapTypeConfig> const& policyConfig,
    Kor::Ptr<PolicyMap::PolicyMapTypeStatus> const& publishedStatus) const {
  return PolicyMapTest::testServicePolicySmFactory(
      policyConfig, classes, nullptr, publishedStatus, acls, lag, ip, ip6, routing, routing6,
      helper, diff, settings_.allowL2, settings_.allowL3, settings_.allowMgmt);
}

// The functions are const: they edit the objects that the members point to.

void Scenario::settle() const {
  Kor::EventLoop::global().runUntilIdle();
}
void Scenario::advance(double seconds) const {
  Kor::EventLoop::global().runFor(seconds);
}
void Scenario::trigger() const {
  helper->asyncTriggerInc(1);
  settle();
}

void Scenario::rule(char const* list, std::uint32_t seqno, Acl::IpRuleConfig const& rule) const {
  acls->ipAclIs(Kor::Name(list))->ruleIs(seqno, rule);
}
void Scenario::rule(char const* list, std::uint32_t seqno, Acl::Ip6RuleConfig const& rule) const {
  acls->ip6AclIs(Kor::Name(list))->ruleIs(seqno, rule);
}
void Scenario::rule(char const* list, std::uint32_t seqno, Acl::MacRuleConfig const& rule) const {
  acls->macAclIs(Kor::Name(list))->ruleIs(seqno, rule);
}

Kor::Ptr<PolicyMap::ClassMapSubConfig> Scenario::classMap(char const* name) const {
  auto const config = classes->classMapConfigIs(Kor::Name(name));
  if (!config->currentSubConfig()) {
    config->currentSubConfigIs(Kor::make<PolicyMap::ClassMapSubConfig>(Kor::Name(name)));
  }
  return config->currentSubConfig();
}
void Scenario::classMatches(char const* name, char const* list, ClassMapMatchOption option,
                            std::uint32_t place) const {
  classMap(name)->matchIs(place, PolicyMap::ClassMapMatch::acl(option, Kor::Name(list)));
}

Kor::Ptr<PolicyMap::PolicyMapSubConfig> Scenario::policy(char const* name) const {
  auto const config = policies->policyMapConfigIs(Kor::Name(name));
  if (!config->currentSubConfig()) {
    config->currentSubConfigIs(Kor::make<PolicyMap::PolicyMapSubConfig>(Kor::Name(name)));
  }
  return config->currentSubConfig();
}
void Scenario::usesClass(char const* policyName, char const* className,
                         std::uint32_t priority) const {
  policy(policyName)->classPrioIs(Kor::Name(className), priority);
}

namespace {

template <class Action>
bool valueGiven(Kor::Ptr<PolicyMap::Action> const& action, std::uint32_t value) {
  Kor::Ptr<Action> const test = action.as<Action>();
  if (test) {
    test->valueIs(value);
  }
  return bool(test);
}

template <class Action>
Kor::Ptr<PolicyMap::Action> made(char const* className, std::uint32_t value) {
  auto const action = Kor::make<Action>(Kor::Name(className), Zub::UniqueId::next());
  action->valueIs(value);
  return action;
}

}  // namespace

void Scenario::actionIs(char const* policyName, char const* className, int kind,
                        std::uint32_t value) const {
  using namespace PolicyMapTest;
  auto const actions = policy(policyName)->classActionIs(Kor::Name(className));
  Kor::Ptr<PolicyMap::Action> const present = actions->action(PolicyMap::ActionType{kind});
  if (present) {
    valueGiven<TestAction1>(present, value) || valueGiven<TestAction2>(present, value) ||
        valueGiven<TestAction3>(present, value);
    return;
  }
  actions->actionIs(PolicyMap::ActionType{kind}, kind == 1   ? made<TestAction1>(className, value)
                                                 : kind == 2 ? made<TestAction2>(className, value)
                                                             : made<TestAction3>(className, value));
}
void Scenario::actionDel(char const* policyName, char const* className, int kind) const {
  policy(policyName)->classActionIs(Kor::Name(className))->actionDel(PolicyMap::ActionType{kind});
}

void Scenario::attach(char const* policyName, char const* where, char const* direction) const {
  policies->servicePolicyIs({intf(where), Kor::Name(direction)}, Kor::Name(policyName));
}
void Scenario::detach(char const* where, char const* direction) const {
  policies->servicePolicyDel({intf(where), Kor::Name(direction)});
}

void Scenario::simplePolicy() const {
  rule("acl", 10);
  classMatches("c", "acl");
  usesClass("pm", "c", 10);
  attach("pm", "Ethernet1");
}

void Scenario::simplePolicyOfAllOptions() const {
  simplePolicy();
  rule("acl6", 10, tcp6());
  rule("mac", 10, ether(0x800));
  rule("label", 10, ether(0x8847));
  classMatches("c", "acl6", ClassMapMatchOption::ipv6, 2);
  classMatches("c", "mac", ClassMapMatchOption::mac, 3);
  classMatches("c", "label", ClassMapMatchOption::mpls, 4);
  routing->routingIs(true);  // MPLS requires it
}

Kor::Ptr<AclPolicyData> Scenario::record(ClassMapMatchOption option, char const* direction,
                                         char const* policyName) const {
  return helper->testData(AclPolicyType(PolicyMap::PolicyMapSmKey(policyName, direction), option));
}

Kor::Ptr<PolicyMap::PolicyMapStatus> Scenario::policyStatus(char const* policyName,
                                                            char const* direction) const {
  return status->policyMapStatus(PolicyMap::PolicyMapSmKey(policyName, direction));
}

PolicyMap::AclRuleKey Scenario::ruleKey(char const* className, char const* list,
                                        std::uint32_t seqno, ClassMapMatchOption option) {
  return {Kor::Name(className), Kor::Name(list), seqno, option};
}

std::string counts(Kor::Ptr<AclPolicyData> const& record) {
  if (!record) {
    return "no record";
  }
  return "create " + std::to_string(record->createCount()) + ", commit " +
         std::to_string(record->commitCount()) + ", update " +
         std::to_string(record->beginUpdateActionCount()) + "/" +
         std::to_string(record->endUpdateActionCount()) +
         (record->created() ? ", created" : ", not created") +
         (record->dirty() ? ", dirty" : ", clean");
}

}  // namespace TestSupport
