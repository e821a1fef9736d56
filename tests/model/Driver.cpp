// SPDX-License-Identifier: Apache-2.0
#include "model/Driver.h"

#include "machines/TestAction.h"
#include "packets/Proof.h"

#include <Kor/EventLoop.h>
#include <PolicyMap/PerOption.h>

#include <algorithm>
#include <sstream>

namespace Model {

using PolicyMap::ClassMapMatch;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::PolicyMapSmKey;
using PolicyMapTest::AclPolicyType;
using TestSupport::NormalForm;

// the helper

namespace {

Coverage& mutableCoverage() {
  static Coverage coverage;
  return coverage;
}

void counted(Kor::String const& error) {
  mutableCoverage().failures += error.empty() ? 0 : 1;
}

}  // namespace

Coverage const& coverage() {
  return mutableCoverage();
}

void OrderedHelper::asyncOperationResultIs(PolicyMap::AsyncOperationResult const& result) {
  counted(result.error());
  AclHelper::asyncOperationResultIs(result);
}

void OrderedHelper::around(PolicyMapTestKit::HelperCall& call, Proceed const& proceed) {
  if (call.operation == "createPolicy" || call.operation == "deletePolicy") {
    order_[{(*call.policy)->policyKey(), *call.option}].clear();
  } else if (call.operation == "commitPolicy" || call.intf) {
    ++waits_;
  } else if (call.operation == "addRule") {
    std::vector<PolicyMap::AclRuleKey>& order = order_[{(*call.policy)->policyKey(), *call.option}];
    if (order.empty() || order.back() != *call.rule) {
      order.push_back(*call.rule);
    }
  }
  proceed();
  if (call.operation != "recreatePolicy") {  // its deletion and creation are counted
    counted(call.error);
  }
}

// names and values

namespace {

Kor::Name numbered(char const* name, std::uint32_t number) {
  return Kor::Name(name + std::to_string(number));
}
Kor::Name listName(std::uint32_t n) {
  return numbered("list", n % 4);
}
Kor::Name className(std::uint32_t n) {
  return numbered("class", n % 4);
}
Kor::Name policyName(std::uint32_t n) {
  return numbered("policy", n % 3);
}
Kor::Name directionOf(std::uint32_t n) {
  return Kor::Name(n % 2 == 0 ? "input" : "output");
}

std::array<Vorel::IntfId, 7> const& allIntfs() {
  static std::array<Vorel::IntfId, 7> const intfs{
      Vorel::IntfId("Ethernet1"),    Vorel::IntfId("PortChannel1"), Vorel::IntfId("Ethernet2"),
      Vorel::IntfId("PortChannel2"), Vorel::IntfId("Vlan10"),       Vorel::IntfId("Management1"),
      Vorel::IntfId("Ethernet3")};
  return intfs;
}
Vorel::IntfId intfOf(std::uint32_t n) {
  return allIntfs()[n % 7];
}

// Digits of a number in varying bases, so that one number encodes several choices.
class Choices {
 public:
  explicit Choices(std::uint32_t number) : number_(number) {}

  std::uint32_t among(std::uint32_t count) {
    std::uint32_t const choice = number_ % count;
    number_ /= count;
    return choice;
  }
  // True for one of `count` values, which is never 0.
  bool oneIn(std::uint32_t count) { return among(count) == count - 1; }

 private:
  std::uint32_t number_;
};

Acl::PortMatch portsOf(std::uint32_t n) {
  using Acl::PortMatch;
  switch (n) {
  case 1: return PortMatch::eq(80);
  case 2: return PortMatch::range(1000, 2000);
  case 3: return PortMatch::gt(1023);
  case 4: return PortMatch::neq(80);
  case 5: return PortMatch::lt(1024);
  case 6: return PortMatch::range(79, 81);
  case 7: return PortMatch::range(0, 65535);
  case 8: return PortMatch::lt(0);
  default: return {};
  }
}

Acl::TtlMatch ttlOf(std::uint32_t n) {
  using Acl::TtlMatch;
  switch (n) {
  case 1: return TtlMatch::eq(5);
  case 2: return TtlMatch::gt(4);
  case 3: return TtlMatch::neq(7);
  case 4: return TtlMatch::gt(255);
  default: return {};
  }
}

template <class Match>
Match addressesOf(std::uint32_t n) {
  typename Match::Bytes address{};
  address[0] = 10;
  switch (n) {
  case 1: return Match::prefix(address, 8);
  case 2: address[1] = 1; return Match::prefix(address, 16);
  case 3: address[0] = 11; return Match::prefix(address, 8);
  default: return {};
  }
}

template <class Rule>
Rule ipRuleOf(std::uint32_t variant) {
  Choices choices(variant);
  Rule rule;
  rule.dstPortIs(portsOf(choices.among(9)));
  rule.permitIs(!choices.oneIn(6));
  rule.sourceIs(addressesOf<typename Rule::AddressMatch>(choices.among(4)));
  std::uint32_t const protocol = choices.among(4);
  if (protocol != 0) {
    rule.protocolIs(protocol == 1 ? 6 : 17);
  }
  rule.ttlIs(choices.oneIn(4) ? ttlOf(choices.among(5)) : Acl::TtlMatch());
  rule.establishedIs(choices.oneIn(8));
  rule.ackOrRstIs(choices.oneIn(10));
  rule.srcPortIs(choices.oneIn(3) ? portsOf(choices.among(9)) : Acl::PortMatch());
  if (choices.oneIn(4)) {
    rule.dscpIs(choices.among(2));
    rule.tcpFlagsIs(choices.oneIn(2) ? Acl::TcpFlags(2, 18) : Acl::TcpFlags(16, 16));
    rule.destinationIs(addressesOf<typename Rule::AddressMatch>(choices.among(4)));
  }
  return rule;
}

Acl::MacRuleConfig macRuleOf(std::uint32_t variant) {
  Choices choices(variant);
  Acl::MacRuleConfig rule;
  rule.permitIs(!choices.oneIn(6));
  if (std::uint32_t const type = choices.among(3); type != 0) {
    rule.ethertypeIs(0x800 + type);
  }
  rule.sourceIs(addressesOf<Acl::MacAddressMatch>(choices.among(4)));
  if (choices.oneIn(4)) {
    rule.vlanIs(1 + choices.among(2));
  }
  if (choices.oneIn(4)) {
    rule.cosIs(choices.among(2));
  }
  if (choices.oneIn(8)) {
    rule.mplsExperimentalIs(choices.among(2));
  }
  return rule;
}

ClassMapMatch ownRuleOf(Choices& choices) {
  switch (choices.among(6)) {
  case 3: return ClassMapMatch::rule(ipRuleOf<Acl::Ip6RuleConfig>(choices.among(10000)));
  case 4: return ClassMapMatch::rule(macRuleOf(choices.among(1000)));
  case 5: return ClassMapMatch::rule(macRuleOf(choices.among(1000)), ClassMapMatchOption::mpls);
  default: return ClassMapMatch::rule(ipRuleOf<Acl::IpRuleConfig>(choices.among(10000)));
  }
}

ClassMapMatch listMatchOf(Choices& choices) {
  std::uint32_t const choice = choices.among(10);
  auto const option = static_cast<ClassMapMatchOption>(choice < 7 ? 0 : choice - 6);
  return ClassMapMatch::acl(option, listName(choices.among(4)));
}

// A match of a class-map. Nested class-maps mostly have later numbers, so that loops are rare.
ClassMapMatch matchOf(std::uint32_t classMap, std::uint32_t variant) {
  Choices choices(variant);
  std::uint32_t const kind = choices.among(6);
  if (kind == 4) {
    return ownRuleOf(choices);
  }
  if (kind == 5) {
    bool const anyClassMap = choices.oneIn(20);
    std::uint32_t const later = classMap % 4 + 1 + choices.among(3);
    if (anyClassMap || later < 4) {
      return ClassMapMatch::classMap(className(anyClassMap ? choices.among(4) : later));
    }
  }
  return listMatchOf(choices);
}

}  // namespace

// life

Driver::Driver() : helper_(Kor::make<OrderedHelper>()) {
  Kor::EventLoop::global().virtualTimeIs(true);
  // Every class-map matches a list of its own and every policy-map has all classes; only rules and
  // attachments are missing.
  for (std::uint32_t i = 0; i < classVersions_.size(); ++i) {
    for (auto& subConfig : classVersions_[i]) {
      subConfig = Kor::make<PolicyMap::ClassMapSubConfig>(className(i));
      subConfig->matchIs(0, ClassMapMatch::acl(ClassMapMatchOption::ipv4, listName(i)));
    }
    classMaps_->classMapConfigIs(className(i))->currentSubConfigIs(classVersions_[i][0]);
  }
  for (std::uint32_t i = 0; i < policyVersions_.size(); ++i) {
    for (auto& subConfig : policyVersions_[i]) {
      subConfig = Kor::make<PolicyMap::PolicyMapSubConfig>(policyName(i));
      for (std::uint32_t j = 0; j < classVersions_.size(); ++j) {
        subConfig->classPrioIs(className(j), 10 * j);
      }
    }
    policies_->policyMapConfigIs(policyName(i))->currentSubConfigIs(policyVersions_[i][0]);
  }
  machineIs(flags_);
}

Driver::~Driver() {
  machine_ = nullptr;
  Kor::EventLoop::global().virtualTimeIs(false);
}

void Driver::machineIs(std::uint32_t flags) {
  machineDel();
  flags_ = flags;
  machine_ = PolicyMapTest::testServicePolicySmFactory(
      policies_, classMaps_, requests_, status_, acls_, lag_, ip_, ip6_, routing_, routing6_,
      helper_, diff_, (flags_ & 1) != 0, (flags_ & 2) != 0, (flags_ & 4) != 0);
}

void Driver::machineDel() {
  if (machine_) {
    machine_ = nullptr;
    leftBehind_ = TestSupport::normalForm(*helper_);
    for (auto const& entry : status_->policyMapStatusIteratorConst()) {
      leftStatuses_.insert(entry.key());
    }
  }
}

std::string Driver::perform(Operation const& operation) {
  if (operation.verb == Verb::settle) {
    return settle();
  }
  configure(operation.verb, operation.numbers) ||
      configurePolicies(operation.verb, operation.numbers) ||
      configureIntfs(operation.verb, operation.numbers) ||
      disturb(operation.verb, operation.numbers);
  return std::exchange(problem_, {});
}

// configuration

bool Driver::configure(Verb verb, Numbers const& n) {
  auto const& classVersion = classVersions_[n[0] % 4][n[1] % 2];
  switch (verb) {
  case Verb::rule: rule(n); return true;
  case Verb::ruleDel: ruleDel(n); return true;
  case Verb::listDel: listDel(n); return true;
  case Verb::match: classVersion->matchIs(n[2] % 4, matchOf(n[0], n[3])); return true;
  case Verb::matchDel: classVersion->matchDel(n[2] % 4); return true;
  case Verb::matchType:
    classVersion->matchTypeIs(n[2] % 2 == 0 ? PolicyMap::ClassMapMatchType::matchAny
                                            : PolicyMap::ClassMapMatchType::matchAll);
    return true;
  case Verb::classMap:
    classMaps_->classMapConfigIs(className(n[0]))
        ->currentSubConfigIs(n[1] % 3 == 2 ? nullptr : classVersion);
    return true;
  case Verb::classMapDel: classMaps_->classMapConfigDel(className(n[0])); return true;
  default: return false;
  }
}

void Driver::rule(Numbers const& n) {
  Kor::Name const list = listName(n[1]);
  std::uint32_t const number = 10 * (n[2] % 6);
  switch (n[0] % 3) {
  case 0: acls_->ipAclIs(list)->ruleIs(number, ipRuleOf<Acl::IpRuleConfig>(n[3])); break;
  case 1: acls_->ip6AclIs(list)->ruleIs(number, ipRuleOf<Acl::Ip6RuleConfig>(n[3])); break;
  default: acls_->macAclIs(list)->ruleIs(number, macRuleOf(n[3])); break;
  }
}

void Driver::ruleDel(Numbers const& n) {
  Kor::Name const name = listName(n[1]);
  auto const remove = [&](auto const& list) {
    if (list) {
      list->ruleDel(10 * (n[2] % 6));
    }
  };
  switch (n[0] % 3) {
  case 0: remove(acls_->ipAcl(name)); break;
  case 1: remove(acls_->ip6Acl(name)); break;
  default: remove(acls_->macAcl(name)); break;
  }
}

void Driver::listDel(Numbers const& n) {
  switch (n[0] % 3) {
  case 0: acls_->ipAclDel(listName(n[1])); break;
  case 1: acls_->ip6AclDel(listName(n[1])); break;
  default: acls_->macAclDel(listName(n[1])); break;
  }
}

namespace {

template <class Action>
void actionIs(PolicyMap::ClassAction& actions, Kor::Name const& name, std::uint32_t value) {
  auto const kind = Action::testActionType;
  Kor::Ptr<PolicyMap::Action> const there = actions.action(kind);
  auto const present = there.as<Action>();
  if (present && value % 2 == 0) {
    present->valueIs(value);
    return;
  }
  auto const action = Kor::make<Action>(name, Zub::UniqueId::next());
  action->valueIs(value);
  actions.actionIs(kind, action);
}

}  // namespace

void Driver::action(Numbers const& n) {
  Kor::Name const name = className(n[1]);
  for (auto const& subConfig : policyVersions_[n[0] % 3]) {
    PolicyMap::ClassAction& actions = *subConfig->classActionIs(name);
    switch (n[2] % 3) {
    case 0: actionIs<PolicyMapTest::TestAction1>(actions, name, n[3]); break;
    case 1: actionIs<PolicyMapTest::TestAction2>(actions, name, n[3]); break;
    default: actionIs<PolicyMapTest::TestAction3>(actions, name, n[3]); break;
    }
  }
}

void Driver::rawClassMap(Numbers const& n) {
  auto const& policy = policyVersions_[n[0] % 3][n[1] % 2];
  if (n[3] % 3 == 2) {
    policy->rawClassMapDel(className(n[2]));
  } else {
    policy->rawClassMapIs(className(n[2]), classVersions_[n[2] % 4][n[3] % 3]);
  }
}

bool Driver::configurePolicies(Verb verb, Numbers const& n) {
  auto const& version = policyVersions_[n[0] % 3][n[1] % 2];
  switch (verb) {
  case Verb::usesClass: version->classPrioIs(className(n[2]), 10 * (n[3] % 4)); return true;
  case Verb::usesClassDel: version->classPrioDel(className(n[2])); return true;
  case Verb::action: action(n); return true;
  case Verb::actionDel:
    for (auto const& subConfig : policyVersions_[n[0] % 3]) {
      if (auto const actions = subConfig->classAction(className(n[1]))) {
        actions->actionDel(PolicyMap::ActionType{static_cast<int>(n[2] % 3) + 1});
      }
    }
    return true;
  case Verb::actionsDel:
    for (auto const& subConfig : policyVersions_[n[0] % 3]) {
      subConfig->classActionDel(className(n[1]));
    }
    return true;
  case Verb::rawClassMap: rawClassMap(n); return true;
  case Verb::policyMap:
    policies_->policyMapConfigIs(policyName(n[0]))
        ->currentSubConfigIs(n[1] % 3 == 2 ? nullptr : version);
    return true;
  case Verb::policyMapDel: policies_->policyMapConfigDel(policyName(n[0])); return true;
  case Verb::attach:
    policies_->servicePolicyIs({intfOf(n[0]), directionOf(n[1])}, policyName(n[2]));
    return true;
  case Verb::detach: policies_->servicePolicyDel({intfOf(n[0]), directionOf(n[1])}); return true;
  default: return false;
  }
}

bool Driver::configureIntfs(Verb verb, Numbers const& n) {
  Vorel::IntfId const intf = intfOf(n[0]);
  bool const on = n[1] % 2 == 1;
  switch (verb) {
  case Verb::ipAddress:
    on ? ip_->intfAddressIs(intf, Ip::Address("10.0.0.1/24")) : void(ip_->intfAddressDel(intf));
    return true;
  case Verb::ip6Address:
    on ? ip6_->intfAddressIs(intf, Ip6::Address("2001:db8::1/64"))
       : void(ip6_->intfAddressDel(intf));
    return true;
  case Verb::routed: routing_->routedIntfIs(intf, on); return true;
  case Verb::routed6: routing6_->routedIntfIs(intf, on); return true;
  case Verb::routing: routing_->routingIs(n[0] % 2 == 1); return true;
  case Verb::member: member(n); return true;
  case Verb::nonexistent:
    if (machine_) {
      on ? machine_->nonexistentIntfIs(intf, true) : void(machine_->nonexistentIntfDel(intf));
    }
    return true;
  default: return false;
  }
}

// Any interface may become a member, port-channels included.
void Driver::member(Numbers const& n) {
  if (n[1] % 3 == 2) {
    lag_->memberOfDel(intfOf(n[0]));
  } else {
    lag_->memberOfIs(intfOf(n[0]), n[1] % 3 == 0 ? intfOf(1) : intfOf(3));
  }
}

// disturbances

namespace {

using ErrorSetter = void (PolicyMapTest::AclHelper::*)(Kor::String8);
constexpr std::array<ErrorSetter, 8> errors{
    &PolicyMapTest::AclHelper::createErrorIs,       &PolicyMapTest::AclHelper::deleteErrorIs,
    &PolicyMapTest::AclHelper::commitErrorIs,       &PolicyMapTest::AclHelper::addIntfErrorIs,
    &PolicyMapTest::AclHelper::removeIntfErrorIs,   &PolicyMapTest::AclHelper::addRuleErrorIs,
    &PolicyMapTest::AclHelper::updateActionErrorIs, &PolicyMapTest::AclHelper::rangeCheckerErrorIs};

}  // namespace

bool Driver::disturb(Verb verb, Numbers const& n) {
  Kor::EventLoop& loop = Kor::EventLoop::global();
  switch (verb) {
  case Verb::allowOption:
    if (machine_) {
      bool const allow = n[1] % 4 != 3;
      switch (n[0] % 3) {
      case 0: machine_->allowIpAclIs(allow); break;
      case 1: machine_->allowIp6AclIs(allow); break;
      default: machine_->allowMacAclIs(allow); break;
      }
    }
    return true;
  case Verb::fault:
    ((*helper_).*errors[n[0] % 8])(n[1] % 2 == 0 ? "" : "fault " + std::to_string(n[0] % 8));
    return true;
  case Verb::async: helper_->asyncOperationsIs(n[0] % 2 == 1); return true;
  case Verb::pseudoAsync: helper_->pseudoAsyncIs(n[0] % 2 == 1); return true;
  case Verb::trigger:
    for (std::uint32_t i = 0; i <= n[0] % 4; ++i) {
      helper_->asyncTriggerInc(1);
    }
    return true;
  case Verb::advance: loop.runFor((n[0] % 1000 + 1) * 0.1); return true;
  case Verb::turn: loop.runUntilIdle(); return true;
  case Verb::capability: capability(n); return true;
  case Verb::otherHelper: otherHelper(n[0] % 3); return true;
  case Verb::otherMachine: n[0] % 2 == 0 ? machineIs(7 - n[1] % 8) : machineDel(); return true;
  case Verb::notifications:
    if (machine_) {
      machine_->hasNotificationActiveIs(n[0] % 2 == 0);
    }
    return true;
  case Verb::countRequest:
    requests_->countRequestIs({policyName(n[0]), directionOf(n[1])}, ++requestsSoFar_);
    return true;
  default: return false;
  }
}

void Driver::capability(Numbers const& n) {
  // Expansions are common; capabilities that refuse rules are rare.
  bool const other = n[0] % 8 < 4 ? n[1] % 2 == 1 : n[1] % 4 == 3;
  switch (n[0] % 8) {
  case 0: helper_->subRulesForL4PortsIs(other); break;
  case 1: helper_->updateActionSupportedIs(other); break;
  case 2: helper_->expandPortChannelsIs(other); break;
  case 3: helper_->reprogramPolicyOnIntfChangeIs(other); break;
  case 4: helper_->denyRulesAllowedIs(!other); break;
  case 5: helper_->ttlSupportedIs(!other); break;
  case 6: helper_->onlyTtlEqSupportedIs(other); break;
  default:
    helper_->ackOrRstSupportedIs(!other);
    helper_->establishedSupportedIs(!other);
    break;
  }
  force();
}

// Capabilities are not configuration: after a change, the machine must be asked to program again.
void Driver::force() {
  if (!machine_ || !machine_->hasNotificationActive()) {
    forceDue_ = true;
    return;
  }
  for (Vorel::IntfId const intf : allIntfs()) {
    machine_->handleIntf(intf, true);
  }
}

void Driver::otherHelper(std::uint32_t how) {
  if (!machine_) {
    return;
  }
  if (how == 2) {
    machine_->aclHelperIs(helper_);
    return;
  }
  bool const inUse = bool(machine_->aclHelper());
  machine_->aclHelperIs(nullptr);
  NormalForm const left = TestSupport::normalForm(*helper_);
  for (auto const& [type, record] : left) {
    auto const earlier = leftBehind_.find(type);
    if (inUse && (earlier == leftBehind_.end() || earlier->second != record)) {
      problem_ = "left on a helper that was taken away:\n" + TestSupport::describe(left);
    }
  }
  if (how == 0) {
    bool const async = helper_->asyncOperations();
    helper_ = Kor::make<OrderedHelper>();
    helper_->asyncOperationsIs(async);
    leftBehind_.clear();
    machine_->aclHelperIs(helper_);
  }
}

// settling

void Driver::deliver() {
  Kor::EventLoop& loop = Kor::EventLoop::global();
  std::size_t waits = 0;
  loop.runUntilIdle();
  do {
    waits = helper_->waits();
    helper_->asyncTriggerInc(1);
    loop.runUntilIdle();
  } while (helper_->waits() != waits);
}

std::string Driver::settle() {
  for (ErrorSetter const setter : errors) {
    ((*helper_).*setter)("");
  }
  if (!machine_) {
    machineIs(flags_);
  }
  machine_->hasNotificationActiveIs(true);
  machine_->aclHelperIs(helper_);
  if (std::exchange(forceDue_, false)) {
    force();
  }
  constexpr int patience = 20;
  for (int i = 0; i < patience; ++i) {
    deliver();
    if (Kor::EventLoop::global().pending() == 0) {
      return compare();
    }
    Kor::EventLoop::global().runFor(10);
  }
  return "nothing is wrong, and yet it does not come to rest";
}

Inputs Driver::inputs() const {
  Inputs inputs{*acls_,
                *classMaps_,
                *policies_,
                *lag_,
                *ip_,
                *ip6_,
                *routing_,
                *routing6_,
                *helper_,
                {},
                machine_->allowL2Intf(),
                machine_->allowL3Intf(),
                machine_->allowMgmtIntf(),
                {}};
  for (Vorel::IntfId const intf : allIntfs()) {
    if (machine_->nonexistentIntf(intf)) {
      inputs.nonexistent.insert(intf);
    }
  }
  for (ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
    if (!machine_->allowsOption(option)) {
      inputs.forbiddenOptions.insert(option);
    }
  }
  return inputs;
}

namespace {

void countCoverage(Expected const& wanted) {
  Coverage& coverage = mutableCoverage();
  ++coverage.comparisons;
  coverage.records += wanted.records.size();
  coverage.refused += wanted.refused.size();
  for (auto const& [type, record] : wanted.records) {
    coverage.rules += record.rules.size();
    for (auto const& [key, rule] : record.rules) {
      coverage.subRules += rule.subRules.size();
      coverage.intersections += key.aclName().view().find('&') != std::string_view::npos ? 1 : 0;
    }
  }
}

}  // namespace

namespace {

std::vector<PolicyMapTestKit::RuleRecord> rulesOf(PolicyMapTest::AclPolicyData const& data,
                                                  std::vector<PolicyMap::AclRuleKey> const& order) {
  std::vector<PolicyMapTestKit::RuleRecord> rules;
  for (PolicyMap::AclRuleKey const& key : order) {
    PolicyMapTestKit::RuleRecord& rule = rules.emplace_back();
    rule.key = key;
    PolicyMap::forOption(
        key.matchOption(), [&] { rule.match = data.ruleMatch(key); },
        [&] { rule.match = data.ruleMatch6(key); }, [&] { rule.match = data.ruleMatchMac(key); },
        [&] { rule.match = data.ruleMatchMac(key); });
    rule.actions = {data.ruleAction1(key), data.ruleAction2(key), data.ruleAction3(key)};
    data.forEachSubRule(key, [&rule](auto const& subRule) { rule.subRules.push_back(subRule); });
  }
  return rules;
}

}  // namespace

std::string Driver::compare() {
  Expected const wanted = expected(inputs());
  countCoverage(wanted);
  for (auto const check : {&Driver::compareRecords, &Driver::comparePackets,
                           &Driver::compareStatuses, &Driver::compareCounts}) {
    if (std::string difference = (this->*check)(wanted); !difference.empty()) {
      return difference;
    }
  }
  return {};
}

std::string Driver::compareRecords(Expected const& wanted) {
  NormalForm actual = TestSupport::normalForm(*helper_);
  for (auto const& [type, record] : leftBehind_) {
    auto const there = actual.find(type);
    if (wanted.records.count(type) == 0 && there != actual.end() && there->second == record) {
      actual.erase(there);  // nothing owns it any more
    }
  }
  if (actual != wanted.records) {
    return "expected:\n" + TestSupport::describe(wanted.records) + "recorded:\n" +
           TestSupport::describe(actual);
  }
  for (auto const& [type, order] : wanted.order) {
    if (helper_->order(type) != order) {
      std::ostringstream text;
      text << "expected order:\n";
      for (PolicyMap::AclRuleKey const& key : order) {
        text << "  " << key << '\n';
      }
      text << "recorded order:\n";
      for (PolicyMap::AclRuleKey const& key : helper_->order(type)) {
        text << "  " << key << '\n';
      }
      return text.str();
    }
  }
  return {};
}

// The records treat every packet as the configuration says, whatever the model says.
std::string Driver::comparePackets(Expected const& wanted) {
  for (auto const& [type, order] : wanted.order) {
    PolicyMapPackets::Subject subject;
    subject.policy = type.policyKey();
    subject.option = type.option();
    subject.recorded = rulesOf(*helper_->testData(type), order);
    subject.configured = PolicyMapPackets::configuredPolicy(
        {acls_, classMaps_, policies_}, type.policyKey().first().view(), type.option());
    PolicyMapPackets::Proof const proof = PolicyMapPackets::prove(subject);
    if (proof.verdict != PolicyMapPackets::Verdict::same) {
      std::ostringstream text;
      text << proof;
      return text.str();
    }
    ++mutableCoverage().proofs;
  }
  return {};
}

std::string Driver::compareStatuses(Expected const& wanted) {
  std::set<PolicyMapSmKey> keys = wanted.policies;
  for (PolicyMapSmKey const& key : keys) {
    leftStatuses_.erase(key);
  }
  for (auto const& entry : status_->policyMapStatusIteratorConst()) {
    if (leftStatuses_.count(entry.key()) == 0) {
      keys.insert(entry.key());
    }
  }
  for (PolicyMapSmKey const& key : keys) {
    if (std::string difference = compareStatus(key, wanted); !difference.empty()) {
      std::ostringstream text;
      text << "status of " << key << ": " << difference;
      return text.str();
    }
  }
  return {};
}

std::string Driver::compareStatus(PolicyMapSmKey const& key, Expected const& wanted) {
  auto const status = status_->policyMapStatus(key);
  if (bool(status) != (wanted.policies.count(key) != 0)) {
    return status ? "it should be gone" : "there is none";
  }
  for (ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
    std::string const where = PolicyMap::valueToStrep(option).stdString();
    AclPolicyType const type(key, option);
    auto const record = helper_->testData(type);
    if (status->programmed(option) != (record && record->created())) {
      return where + (status->programmed(option) ? " says programmed" : " says not programmed");
    }
    if (std::string const difference = compareProgramming(*status, type, wanted);
        !difference.empty()) {
      return where + difference;
    }
    PolicyMap::PolicyFailure const failure = status->failure(option);
    auto const refused = wanted.refused.find(type);
    if (refused != wanted.refused.end()) {
      if (failure.className() != refused->second || failure.error().empty()) {
        return where + " should be refused because of " + refused->second.stdString() +
               " but says '" + failure.error().stdString() + "'";
      }
    } else if (!!failure && failure.operation() != "deletePolicy" &&
               failure.operation() != "removeIntfFromPolicy") {
      return where + " says '" + failure.error().stdString() + "' of " +
             failure.operation().stdString();
    } else if (!!failure && wanted.records.count(type) != 0) {
      return where + " stands and says '" + failure.error().stdString() + "'";
    }
  }
  return {};
}

// Checks time and interfaces of a policy, unless an earlier machine left it behind.
std::string Driver::compareProgramming(PolicyMap::PolicyMapStatus const& status,
                                       AclPolicyType const& type, Expected const& wanted) const {
  auto const record = wanted.records.find(type);
  if (record == wanted.records.end() && leftBehind_.count(type) != 0) {
    return {};
  }
  auto const time = status.korTimeProgrammed(type.option());
  bool const stands = record != wanted.records.end();
  if (bool(time) != stands || (time && time->value() > Kor::now())) {
    return time ? " has the time " + std::to_string(time->value()) : " has no time";
  }
  std::vector<Vorel::IntfId> const intfs = status.intfs(type.option());
  if (std::set<Vorel::IntfId>(intfs.begin(), intfs.end()) !=
      (stands ? record->second.intfs : std::set<Vorel::IntfId>())) {
    std::string text = " is applied to:";
    for (Vorel::IntfId const intf : intfs) {
      text += " " + intf.name().stdString();
    }
    return text;
  }
  return {};
}

// Checks that, on request, exactly the programmed rules have counts.
std::string Driver::compareCounts(Expected const& wanted) {
  ++requestsSoFar_;
  for (PolicyMapSmKey const& key : wanted.policies) {
    requests_->countRequestIs(key, requestsSoFar_);
  }
  Kor::EventLoop::global().runUntilIdle();
  for (PolicyMapSmKey const& key : wanted.policies) {
    std::set<PolicyMap::AclRuleKey> counted;
    for (auto const& entry : status_->policyMapStatus(key)->classMapStatusIteratorConst()) {
      for (auto const& count : entry.value()->hitCountIteratorConst()) {
        counted.insert(count.key());
      }
    }
    for (ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
      auto const order = wanted.order.find(AclPolicyType(key, option));
      if (order == wanted.order.end()) {
        continue;
      }
      for (PolicyMap::AclRuleKey const& rule : order->second) {
        if (counted.erase(rule) == 0) {
          std::ostringstream text;
          text << "no count for " << rule << " in " << key;
          return text.str();
        }
      }
    }
  }
  return {};
}

std::string run(Operations const& operations, std::function<void(std::size_t)> const& performed) {
  Driver driver;
  for (std::size_t i = 0; i < operations.size(); ++i) {
    if (performed) {
      performed(i + 1);
    }
    if (std::string const problem = driver.perform(operations[i]); !problem.empty()) {
      return "after step " + std::to_string(i + 1) + ", " + textOf(operations[i]) + ": " + problem;
    }
  }
  return {};
}

}  // namespace Model
