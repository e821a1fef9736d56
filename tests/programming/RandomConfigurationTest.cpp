// SPDX-License-Identifier: Apache-2.0

// Random edits of everything that can be configured. Whenever the loop has turned, the helper holds
// what a short model derives from the configuration, and was never called out of order.

#include "policymap/PolicyBench.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <functional>

namespace policymap {
namespace {

using PolicyMap::AclRuleKey;
using PolicyMap::ActionType;
using PolicyMap::allMatchOptions;
using PolicyMap::ClassMapMatch;
using PolicyMap::ClassMapSubConfig;
using PolicyMap::PolicyMapSmKey;
using PolicyMap::PolicyMapSubConfig;
using PolicyMap::SubRuleData;

// The programmed state of one policy and option: its interfaces, and its rules in order, with what
// they match and the last actions that they were given.
struct Standing {
  struct Rule {
    AclRuleKey key;
    SubRuleData subRule;
    std::string match;
    int action = 0;

    bool operator==(Rule const&) const = default;
  };
  std::set<Vorel::IntfId> intfs;
  std::vector<Rule> rules;

  bool operator==(Standing const&) const = default;
};
using Hardware = std::map<std::pair<PolicyMapSmKey, ClassMapMatchOption>, Standing>;

std::ostream& operator<<(std::ostream& out, Hardware const& hardware) {
  for (auto const& [where, standing] : hardware) {
    out << "\n" << where.first << " " << where.second << ":";
    for (Vorel::IntfId const bound : standing.intfs) {
      out << " " << bound;
    }
    for (Standing::Rule const& rule : standing.rules) {
      out << "\n  " << rule.key << " " << rule.subRule << " " << rule.match << " -> "
          << rule.action;
    }
  }
  return out;
}

// The actions of a class as one number, computed from the class data that the helper receives.
int actionOf(PolicyMap::ClassMapSmCommonData const& data) {
  auto const action = data.action(ActionType{1}).as<NumberAction const>();
  return action ? action->number() + 1 : 0;
}

// Keeps the programmed state and records every call out of order.
class OrderedHelper : public PolicyMapTestKit::ForwardingHelper<PolicyMap::PolicyMapAclHelper> {
 public:
  Hardware hardware;
  std::set<std::pair<PolicyMapSmKey, ClassMapMatchOption>> dirty;  // not committed
  std::vector<std::string> mistakes;
  std::size_t calls = 0;
  Kor::Name updating;      // the class of the open bracket
  PolicyMapSmKey updated;  // the policy of the last bracket, until the next other call

  void hwInit() override { need(calls++ == 0, "hwInit comes first and once"); }

  Kor::String createPolicy(PolicyData const& data, ClassMapMatchOption option) override {
    need(!standing(data, option), "create only what is not created");
    need(data->intfs(option).empty(), "nothing is bound before the first create");
    hardware[where(data, option)] = {};
    return changed(data, option);
  }
  Kor::String recreatePolicy(PolicyData const& data, ClassMapMatchOption option) override {
    need(standing(data, option), "re-create only what is created");
    auto const bound = data->intfs(option);
    Standing& empty = hardware[where(data, option)];
    need(empty.intfs == std::set<Vorel::IntfId>(bound.begin(), bound.end()),
         "the set holds what was added and not removed");
    empty = {{bound.begin(), bound.end()}, {}};
    return changed(data, option);
  }
  Kor::String deletePolicy(PolicyData const& data, ClassMapMatchOption option) override {
    need(standing(data, option), "delete only what is created");
    hardware.erase(where(data, option));
    dirty.erase(where(data, option));
    return {};
  }
  Kor::String commitPolicy(PolicyData const& data, ClassMapMatchOption option) override {
    need(standing(data, option), "commit only what is created");
    // An update of rules that match no packet changes nothing, but is committed too.
    need(dirty.erase(where(data, option)) == 1 || updated == data->policyKey(),
         "commit only where something changed");
    return {};
  }
  Kor::String addIntfToPolicy(PolicyData const& data, Vorel::IntfId which,
                              ClassMapMatchOption option) override {
    need(standing(data, option), "add interfaces only while created");
    need(!data->hasIntf(option, which), "the set grows after success");
    need(hardware[where(data, option)].intfs.insert(which).second, "add an interface once");
    return changed(data, option);
  }
  Kor::String removeIntfFromPolicy(PolicyData const& data, Vorel::IntfId which,
                                   ClassMapMatchOption option) override {
    need(standing(data, option), "remove interfaces only while created");
    need(data->hasIntf(option, which), "the set shrinks after success");
    need(hardware[where(data, option)].intfs.erase(which) == 1, "remove what was added");
    return changed(data, option);
  }
  Kor::String addRule(AclRuleKey const& key, SubRuleData const& subRule, PolicyData const& data,
                      ClassData const& classData) override {
    need(standing(data, key.matchOption()), "add rules only while created");
    need(find(key, subRule, data) == nullptr, "add a sub-rule once");
    hardware[where(data, key.matchOption())].rules.push_back(
        {key, subRule, match(key, *classData), actionOf(*classData)});
    return changed(data, key.matchOption());
  }
  Kor::String beginUpdateActions(PolicyData const& /*data*/, ClassData const& classData) override {
    need(updating.empty(), "one bracket at a time");
    updating = classData->name();
    return {};
  }
  Kor::String updateAction(AclRuleKey const& key, SubRuleData const& subRule,
                           PolicyData const& data, ClassData const& classData) override {
    need(updating == key.className(), "update inside the bracket of the class");
    Standing::Rule* const rule = find(key, subRule, data);
    need(rule != nullptr, "update only what was added");
    if (rule != nullptr) {
      rule->action = actionOf(*classData);
    }
    return changed(data, key.matchOption());
  }
  Kor::String endUpdateActions(PolicyData const& data, ClassData const& classData) override {
    need(updating == classData->name(), "end what was begun");
    updating = {};
    updated = data->policyKey();
    return {};
  }

 private:
  void need(bool holds, char const* rule) {
    if (!holds) {
      mistakes.emplace_back(rule);
    }
  }
  static std::pair<PolicyMapSmKey, ClassMapMatchOption> where(PolicyData const& data,
                                                              ClassMapMatchOption option) {
    return {data->policyKey(), option};
  }
  [[nodiscard]] bool standing(PolicyData const& data, ClassMapMatchOption option) const {
    return hardware.count(where(data, option)) != 0;
  }
  Kor::String changed(PolicyData const& data, ClassMapMatchOption option) {
    ++calls;
    updated = {};
    dirty.insert(where(data, option));
    return {};
  }
  Standing::Rule* find(AclRuleKey const& key, SubRuleData const& subRule, PolicyData const& data) {
    auto const found = hardware.find(where(data, key.matchOption()));
    if (found == hardware.end()) {
      return nullptr;
    }
    auto const rule =
        std::find_if(found->second.rules.begin(), found->second.rules.end(),
                     [&](Standing::Rule const& r) { return r.key == key && r.subRule == subRule; });
    return rule == found->second.rules.end() ? nullptr : &*rule;
  }
  static std::string match(AclRuleKey const& key, PolicyMap::ClassMapSmCommonData const& data) {
    switch (key.matchOption()) {
    case ClassMapMatchOption::ipv4: return data.getIpRule(key).describe();
    case ClassMapMatchOption::ipv6: return data.getIp6Rule(key).describe();
    default: return data.getMacRule(key).describe();
    }
  }
};

// A number below `count`; uniform at every size of RapidCheck's cases.
std::uint32_t pick(std::size_t count) {
  auto const below = rc::gen::inRange<std::uint32_t>(0, static_cast<std::uint32_t>(count));
  return *rc::gen::resize(rc::kNominalSize, below);
}

// The names that the edits choose from: few, so that edits affect one another.
constexpr std::array<char const*, 3> policyNames{"p", "q", "r"};
constexpr std::array<char const*, 4> classNames{"a", "b", "c", "d"};
constexpr std::array<char const*, 3> listNames{"x", "y", "z"};
constexpr std::array<char const*, 5> intfNames{"Ethernet1", "Ethernet2", "PortChannel3", "Vlan4",
                                               "Management1"};

// The configuration under test, its model, and the edits.
class World {
 public:
  World() {
    bench_.helper = nullptr;
    helper->updateActionSupportedIs(*rc::gen::arbitrary<bool>());
    helper->reprogramPolicyOnIntfChangeIs(*rc::gen::weightedElement<bool>({{3, false}, {1, true}}));
    helper->subRulesForL4PortsIs(*rc::gen::arbitrary<bool>());
    allowL2_ = *rc::gen::weightedElement<bool>({{4, true}, {1, false}});
    allowL3_ = *rc::gen::weightedElement<bool>({{4, true}, {1, false}});
    allowMgmt_ = *rc::gen::arbitrary<bool>();
    if (*rc::gen::weightedElement<bool>({{1, true}, {4, false}})) {
      bench_.diff = nullptr;
    }
    if (likely()) {
      configure();
    }
    bench_.start(allowL2_, allowL3_, allowMgmt_);
    bench_.machine->aclHelperIs(helper);
  }

  Kor::Ptr<OrderedHelper> helper = Kor::make<OrderedHelper>();

  void edit() {
    static constexpr std::array<void (World::*)(), 16> edits{
        &World::editRule,     &World::editRule,       &World::dropList,     &World::editMatch,
        &World::editMatch,    &World::dropClassMap,   &World::swapClassMap, &World::editPriority,
        &World::editPriority, &World::editRawMatches, &World::editAction,   &World::dropPolicyMap,
        &World::attach,       &World::attach,         &World::editIntf,     &World::editMachine};
    (this->*edits.at(pick(edits.size())))();
  }
  static void settle() { Kor::EventLoop::global().runUntilIdle(); }

  // The expected state, from the configuration alone.
  [[nodiscard]] Hardware expected() const {
    Hardware hardware;
    for (auto const& attached : bench_.policies->servicePolicyIteratorConst()) {
      for (ClassMapMatchOption const option : allMatchOptions) {
        if (counts(attached.key().intf(), option)) {
          PolicyMapSmKey const key(attached.value(), attached.key().direction());
          hardware[{key, option}].intfs.insert(attached.key().intf());
        }
      }
    }
    for (auto& [where, standing] : hardware) {
      standing.rules = rulesOf(where.first, where.second);
    }
    std::erase_if(hardware, [&](auto const& entry) {
      return !wantsRules(entry.first.first, entry.first.second);
    });
    return hardware;
  }

 private:
  template <std::size_t count>
  static char const* any(std::array<char const*, count> const& names) {
    return names.at(pick(count));
  }
  static bool likely() { return *rc::gen::weightedElement<bool>({{3, true}, {1, false}}); }
  static ClassMapMatchOption anyOption() { return allMatchOptions.at(pick(4)); }

  // Configures something of each kind, so that edits have something to change.
  void configure() {
    for (char const* name : listNames) {
      for (std::uint32_t seqno = 1; seqno < 3; ++seqno) {
        bench_.acls->ipAclIs(name)->ruleIs(seqno, anyIpRule<Acl::IpRuleConfig>());
        bench_.acls->ip6AclIs(name)->ruleIs(seqno, anyIpRule<Acl::Ip6RuleConfig>());
        bench_.acls->macAclIs(name)->ruleIs(seqno, anyMacRule());
      }
    }
    for (char const* name : classNames) {
      for (std::uint32_t place = 1; place < 3; ++place) {
        bench_.classMap(name)->matchIs(place, anyMatch());
      }
    }
    for (char const* name : policyNames) {
      for (std::uint32_t prio = 1; prio < 3; ++prio) {
        bench_.policy(name)->classPrioIs(any(classNames), prio);
      }
    }
    for (char const* where : intfNames) {
      bench_.attach(any(policyNames), where);
      bench_.ip->intfAddressIs(intf(where), Ip::Address("10.0.0.1/24"));
    }
    bench_.routing->routingIs(true);
  }

  // Edits

  template <class Rule>
  static Rule anyIpRule() {
    Rule rule;
    rule.protocolIs(*rc::gen::element(6, 17));
    switch (pick(4)) {
    case 0: rule.dstPortIs(Acl::PortMatch::range(5004, 5008)); break;
    case 1: rule.srcPortIs(Acl::PortMatch::neq(2)); break;
    case 2: rule.dstPortIs(Acl::PortMatch::lt(0)); break;
    default: break;
    }
    return rule;
  }
  static Acl::MacRuleConfig anyMacRule() {
    Acl::MacRuleConfig rule;
    rule.vlanIs(1 + pick(3));
    return rule;
  }
  template <class List, class Rule>
  static void editRuleOf(List const& list, Rule const& rule) {
    auto const seqno = 1 + pick(3);
    if (likely()) {
      list->ruleIs(seqno, rule);
    } else {
      list->ruleDel(seqno);
    }
  }
  void editRule() {
    Kor::Name const name(any(listNames));
    switch (pick(3)) {
    case 0: editRuleOf(bench_.acls->ipAclIs(name), anyIpRule<Acl::IpRuleConfig>()); break;
    case 1: editRuleOf(bench_.acls->ip6AclIs(name), anyIpRule<Acl::Ip6RuleConfig>()); break;
    default: editRuleOf(bench_.acls->macAclIs(name), anyMacRule()); break;
    }
  }
  void dropList() {
    Kor::Name const name(any(listNames));
    switch (pick(3)) {
    case 0: bench_.acls->ipAclDel(name); break;
    case 1: bench_.acls->ip6AclDel(name); break;
    default: bench_.acls->macAclDel(name); break;
    }
  }
  static ClassMapMatch anyMatch() {
    switch (pick(7)) {
    case 0: return ClassMapMatch::rule(anyIpRule<Acl::IpRuleConfig>());
    case 1: return ClassMapMatch::rule(anyIpRule<Acl::Ip6RuleConfig>());
    case 2:
      return ClassMapMatch::rule(
          anyMacRule(), *rc::gen::element(ClassMapMatchOption::mac, ClassMapMatchOption::mpls));
    case 3: return ClassMapMatch::classMap(any(classNames));
    default: return ClassMapMatch::acl(anyOption(), any(listNames));
    }
  }
  static void editMatchOf(ClassMapSubConfig& matches) {
    auto const place = 1 + pick(3);
    if (likely()) {
      matches.matchIs(place, anyMatch());
    } else {
      matches.matchDel(place);
    }
  }
  void editMatch() { editMatchOf(*bench_.classMap(any(classNames))); }
  void dropClassMap() { bench_.classes->classMapConfigDel(any(classNames)); }
  void swapClassMap() {
    Kor::Name const name(any(classNames));
    auto const next = Kor::make<ClassMapSubConfig>(name);
    editMatchOf(*next);
    bench_.classes->classMapConfigIs(name)->currentSubConfigIs(likely() ? next : nullptr);
  }
  void editPriority() {
    auto const subConfig = bench_.policy(any(policyNames));
    Kor::Name const name(any(classNames));
    if (likely()) {
      subConfig->classPrioIs(name, 1 + pick(4));
    } else {
      subConfig->classPrioDel(name);
    }
  }
  void editRawMatches() {
    auto const subConfig = bench_.policy(any(policyNames));
    Kor::Name const name(any(classNames));
    auto const raw = subConfig->rawClassMap(name);
    if (raw && likely()) {
      editMatchOf(*raw);
    } else if (raw) {
      subConfig->rawClassMapDel(name);
    } else {
      subConfig->rawClassMapIs(name, Kor::make<ClassMapSubConfig>(name));
    }
  }
  void editAction() {
    auto const subConfig = bench_.policy(any(policyNames));
    Kor::Name const name(any(classNames));
    switch (pick(4)) {
    case 0: subConfig->classActionDel(name); break;
    case 1: subConfig->classActionIs(name)->actionDel(ActionType{1}); break;
    default: {
      auto const actions = subConfig->classActionIs(name);
      if (auto const action = actions->action(ActionType{1}); action && likely()) {
        action.as<NumberAction>()->numberIs(static_cast<int>(pick(100)));
      } else {
        auto const created = Kor::make<NumberAction>(name.stdString().c_str(), 1);
        created->numberIs(static_cast<int>(pick(100)));
        actions->actionIs(ActionType{1}, created);
      }
    }
    }
  }
  void dropPolicyMap() {
    Kor::Name const name(any(policyNames));
    auto const config = bench_.policies->policyMapConfigIs(name);
    switch (pick(4)) {
    case 0: bench_.policies->policyMapConfigDel(name); break;
    case 1: config->currentSubConfigIs(nullptr); break;
    default: {
      auto const next = Kor::make<PolicyMapSubConfig>(name);
      next->classPrioIs(any(classNames), 2);
      config->currentSubConfigIs(next);
    }
    }
  }
  void attach() {
    char const* const where = any(intfNames);
    char const* const direction = likely() ? "input" : "output";
    if (likely()) {
      bench_.attach(any(policyNames), where, direction);
    } else {
      bench_.detach(where, direction);
    }
  }
  void editIntf() {
    Vorel::IntfId const where = intf(any(intfNames));
    bool const on = *rc::gen::arbitrary<bool>();
    switch (pick(5)) {
    case 0:
      if (on) {
        bench_.ip->intfAddressIs(where, Ip::Address("10.0.0.1/24"));
      } else {
        bench_.ip->intfAddressDel(where);
      }
      break;
    case 1:
      if (on) {
        bench_.ip6->intfAddressIs(where, Ip6::Address("2001:db8::1/64"));
      } else {
        bench_.ip6->intfAddressDel(where);
      }
      break;
    case 2: bench_.routing->routedIntfIs(where, on); break;
    case 3: bench_.routing->routingIs(on); break;
    default:
      if (on) {
        bench_.machine->nonexistent.insert(where);
      } else {
        bench_.machine->nonexistent.erase(where);
      }
      bench_.machine->handleIntf(where, *rc::gen::arbitrary<bool>());
    }
  }
  void editMachine() {
    bool const on = likely();
    switch (pick(6)) {
    case 0: bench_.machine->allowIpAclIs(on); break;
    case 1: bench_.machine->allowIp6AclIs(on); break;
    case 2: bench_.machine->allowMacAclIs(on); break;
    case 3:
      bench_.machine->hasNotificationActiveIs(false);
      attach();
      editRule();
      editMatch();
      bench_.machine->hasNotificationActiveIs(true);
      break;
    case 4: helper->updateActionSupportedIs(on); break;
    default: bench_.machine->aclHelperDel(); bench_.machine->aclHelperIs(helper);
    }
  }

  // The model

  [[nodiscard]] bool counts(Vorel::IntfId which, ClassMapMatchOption option) const {
    bool const ip = bool(bench_.ip->korIntfAddress(which));
    bool const ip6 = bool(bench_.ip6->korIntfAddress(which));
    bool const layer3 = ip || ip6 || bench_.routing->routedIntf(which);
    bool const layer2 = !layer3 && (which.isPhysical() || which.isPortChannel());
    bool const allowed = which.isManagement() ? allowMgmt_ : layer3 ? allowL3_ : layer2 && allowL2_;
    if (!allowed || bench_.machine->nonexistent.count(which) != 0) {
      return false;
    }
    switch (option) {
    case ClassMapMatchOption::ipv4: return bench_.machine->allowIpAcl() && (layer2 || ip);
    case ClassMapMatchOption::ipv6: return bench_.machine->allowIp6Acl() && (layer2 || ip6);
    case ClassMapMatchOption::mac:
      return bench_.machine->allowMacAcl() && (layer2 || (layer3 && which.isPhysical()));
    default: return bench_.routing->routing();
    }
  }

  // The matches of a class-map with nested class-maps expanded in place, each list and each
  // class-map once. Returns false if a class-map nests itself.
  bool flatten(ClassMapSubConfig const& matches, std::vector<Kor::Name>& path,
               std::set<Kor::Name>& walked,
               std::vector<std::pair<std::uint32_t, ClassMapMatch>>& flat) const {
    std::map<std::uint32_t, ClassMapMatch> inOrder;
    for (auto const& entry : matches.matchIteratorConst()) {
      inOrder.emplace(entry.key(), entry.value());
    }
    for (auto const& [place, match] : inOrder) {
      if (match.kind() != ClassMapMatch::Kind::classMap) {
        flat.emplace_back(place, match);
        continue;
      }
      if (std::find(path.begin(), path.end(), match.name()) != path.end()) {
        return false;
      }
      auto const inner = bench_.classes->classMapConfig(match.name());
      if (!inner || !inner->currentSubConfig() || !walked.insert(match.name()).second) {
        continue;
      }
      path.push_back(match.name());
      if (!flatten(*inner->currentSubConfig(), path, walked, flat)) {
        return false;
      }
      path.pop_back();
    }
    return true;
  }

  // If several rules of class-maps have the same place, all but the first get the next free place.
  static void giveNumbers(std::vector<std::pair<std::uint32_t, ClassMapMatch>>& flat) {
    std::set<std::uint32_t> taken;
    std::vector<std::uint32_t*> late;
    for (auto& [place, match] : flat) {
      if (match.kind() == ClassMapMatch::Kind::rule && !taken.insert(place).second) {
        late.push_back(&place);
      }
    }
    for (std::uint32_t* const place : late) {
      while (!taken.insert(*place).second) {
        ++*place;
      }
    }
  }

  // Calls visit(list name, number, rule) for each rule of a class. Returns true if the class has no
  // error.
  template <class Visit>
  bool visitRules(Kor::Name const& className, PolicyMapSubConfig const& subConfig,
                  ClassMapMatchOption option, Visit&& visit) const {
    auto const config = bench_.classes->classMapConfig(className);
    auto const matches = config ? config->currentSubConfig() : subConfig.rawClassMap(className);
    if (!matches) {
      return true;
    }
    std::vector<std::pair<std::uint32_t, ClassMapMatch>> flat;
    std::vector<Kor::Name> path{className};
    std::set<Kor::Name> walked;
    if (!flatten(*matches, path, walked, flat)) {
      return false;
    }
    std::erase_if(flat, [option](auto const& each) { return each.second.option() != option; });
    giveNumbers(flat);
    std::set<Kor::Name> lists;
    for (auto const& [place, match] : flat) {
      if (match.kind() == ClassMapMatch::Kind::rule) {
        std::visit([&, number = place](auto const& rule) { visit(Kor::Name(), number, rule); },
                   match.rule());
      } else if (lists.insert(match.name()).second) {
        visitList(match.name(), option, visit);
      }
    }
    return true;
  }
  template <class Visit>
  void visitList(Kor::Name const& name, ClassMapMatchOption option, Visit&& visit) const {
    auto const each = [&](auto const& list) {
      if (list) {
        for (std::uint32_t seqno = 0; seqno < 10; ++seqno) {
          if (auto const entry = list->korRule(seqno)) {
            visit(name, seqno, entry->value());
          }
        }
      }
    };
    switch (option) {
    case ClassMapMatchOption::ipv4: each(bench_.acls->ipAcl(name)); break;
    case ClassMapMatchOption::ipv6: each(bench_.acls->ip6Acl(name)); break;
    default: each(bench_.acls->macAcl(name)); break;
    }
  }

  [[nodiscard]] Kor::Ptr<PolicyMapSubConfig> subConfigOf(PolicyMapSmKey const& key) const {
    auto const config = bench_.policies->policyMapConfig(Kor::Name(key.first()));
    return config ? config->currentSubConfig() : nullptr;
  }

  // A policy is programmed if at least one of its rules matches packets and no class has an error.
  [[nodiscard]] bool wantsRules(PolicyMapSmKey const& key, ClassMapMatchOption option) const {
    auto const subConfig = subConfigOf(key);
    bool some = false;
    bool good = true;
    if (subConfig) {
      for (Kor::Name const& name : subConfig->classesInOrder()) {
        auto const visit = [&](auto const&, std::uint32_t, auto const& rule) {
          some = some || !subRulesOf(rule).empty();
        };
        good = visitRules(name, *subConfig, option, visit) && good;
      }
    }
    return some && good;
  }

  [[nodiscard]] std::vector<Standing::Rule> rulesOf(PolicyMapSmKey const& key,
                                                    ClassMapMatchOption option) const {
    std::vector<Standing::Rule> rules;
    auto const subConfig = subConfigOf(key);
    if (!subConfig) {
      return rules;
    }
    for (Kor::Name const& name : subConfig->classesInOrder()) {
      auto const actions = subConfig->classAction(name);
      auto const action =
          actions ? actions->action(ActionType{1}).template as<NumberAction>() : nullptr;
      visitRules(name, *subConfig, option,
                 [&](Kor::Name const& list, std::uint32_t number, auto const& rule) {
                   for (SubRuleData const& subRule : subRulesOf(rule)) {
                     rules.push_back({{name, list, number, option},
                                      subRule,
                                      rule.describe(),
                                      action ? action->number() + 1 : 0});
                   }
                 });
    }
    return rules;
  }

  // Written out for the few port matches that the edits use.
  template <class Rule>
  [[nodiscard]] std::vector<SubRuleData> subRulesOf(Rule const& rule) const {
    SubRuleData all;
    if constexpr (std::is_base_of_v<Acl::IpFilterBase, Rule>) {
      bool const blocks = helper->subRulesForL4Ports();
      if (rule.dstPort() == Acl::PortMatch::lt(0)) {
        return {};
      }
      if (rule.dstPort() == Acl::PortMatch::range(5004, 5008)) {
        return blocks ? std::vector{dst(5004, 5007, false), dst(5008, 5008, false)}
                      : std::vector{dst(5004, 5008, true)};
      }
      if (rule.srcPort() == Acl::PortMatch::neq(2)) {
        std::vector<SubRuleData> parts;
        if (blocks) {
          parts = {src(0, 1, false), src(3, 3, false)};
          for (std::uint32_t low = 4; low < 65536; low *= 2) {
            parts.push_back(src(low, 2 * low - 1, false));
          }
        } else {
          parts = {src(0, 1, true), src(3, 65535, true)};
        }
        return parts;
      }
    }
    return {all};
  }
  static SubRuleData dst(std::uint32_t low, std::uint32_t high, bool range) {
    SubRuleData data;
    data.dstPortLowIs(static_cast<std::uint16_t>(low));
    data.dstPortHighIs(static_cast<std::uint16_t>(high));
    data.dstPortRangeIs(range);
    return data;
  }
  static SubRuleData src(std::uint32_t low, std::uint32_t high, bool range) {
    SubRuleData data;
    data.srcPortLowIs(static_cast<std::uint16_t>(low));
    data.srcPortHighIs(static_cast<std::uint16_t>(high));
    data.srcPortRangeIs(range);
    return data;
  }

  PolicyBench bench_;
  bool allowL2_ = true;
  bool allowL3_ = true;
  bool allowMgmt_ = true;
};

void helperHoldsWhatIsConfigured() {
  World world;
  auto const batches = 1 + pick(25);
  for (std::uint32_t batch = 0; batch < batches; ++batch) {
    bool const likelyHandful = *rc::gen::weightedElement<bool>({{4, true}, {1, false}});
    auto const edits = 1 + pick(likelyHandful ? 6 : 40);
    for (std::uint32_t i = 0; i < edits; ++i) {
      world.edit();
    }
    World::settle();
    if (!world.helper->mistakes.empty()) {
      RC_FAIL(world.helper->mistakes.front());
    }
    Hardware const expected = world.expected();
    if (world.helper->hardware != expected) {
      std::ostringstream difference;
      difference << "stands:" << world.helper->hardware << "\nexpected:" << expected;
      RC_FAIL(difference.str());
    }
    RC_ASSERT(world.helper->dirty.empty());
    // Once settled, another turn of the loop changes nothing.
    std::size_t const calls = world.helper->calls;
    World::settle();
    RC_ASSERT(world.helper->calls == calls);
  }
}

// Runs twice as many cases as configured, 200 by default. RapidCheck prints the seed.
TEST(RandomConfiguration, IsWhatTheHelperHoldsAndItIsCalledInOrder) {
  rc::detail::TestMetadata metadata;
  metadata.id = "RandomConfiguration";
  metadata.description = "the helper holds what is configured and is called in order";
  rc::detail::TestParams params = rc::detail::configuration().testParams;
  params.maxSuccess *= 2;
  auto const result = rc::detail::checkTestable(helperHoldsWhatIsConfigured, metadata, params);
  std::ostringstream report;
  rc::detail::printResultMessage(result, report);
  EXPECT_TRUE(result.is<rc::detail::SuccessResult>()) << report.str();
}

}  // namespace
}  // namespace policymap
