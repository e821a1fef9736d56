// SPDX-License-Identifier: Apache-2.0
#pragma once

// The environment for tests of the core: a helper that records every call, machines that create
// only base machines, and short functions to configure.

#include "testkit/ForwardingHelper.h"

#include <Kor/EventLoop.h>
#include <PolicyMap/PolicyMapAclHelper.h>
#include <PolicyMap/ServicePolicySm.h>

#include <map>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace policymap {

using PolicyMap::ClassMapMatchOption;

inline Vorel::IntfId intf(char const* name) {
  return Vorel::IntfId(Kor::String8(name));
}

inline std::string text(auto const& value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

// Matches the packets of an IPv4 access list.
inline PolicyMap::ClassMapMatch ipList(char const* name) {
  return PolicyMap::ClassMapMatch::acl(ClassMapMatchOption::ipv4, name);
}

// Records every call as one line and returns the text that is set for it, or "". The line begins
// with the operation without its object: "create", "addIntf".
class CallLog : public PolicyMapTestKit::ForwardingHelper<PolicyMap::PolicyMapAclHelper> {
 public:
  std::vector<std::string> calls;
  std::map<std::string, std::string> answers;  // by the first word of the line

  std::map<PolicyMap::AclRuleKey, std::uint64_t> counts;
  std::uint32_t countCalls = 0;

  // Returns the lines since the last call and clears them.
  std::vector<std::string> taken() { return std::exchange(calls, {}); }

  // The first word of the line of a call.
  static std::string wordOf(PolicyMapTestKit::HelperCall const& call) {
    for (std::string_view const object :
         {"ToPolicy", "FromPolicy", "Policy", "UpdateActions", "Action"}) {
      if (call.operation.ends_with(object)) {
        return std::string(call.operation.substr(0, call.operation.size() - object.size()));
      }
    }
    return std::string(call.operation);
  }

 protected:
  void around(PolicyMapTestKit::HelperCall& call, Proceed const& /*proceed*/) override {
    if (call.operation == "getCountForRule") {
      ++countCalls;
      auto const found = counts.find(*call.rule);
      call.count = found == counts.end() ? 0 : found->second;
      return;
    }
    calls.push_back(lineOf(call));
    auto const answer = answers.find(wordOf(call));
    if (answer != answers.end()) {
      call.error = answer->second;
    }
  }

 private:
  static std::string lineOf(PolicyMapTestKit::HelperCall const& call) {
    std::string line = wordOf(call);
    if (call.policy != nullptr) {
      line += " " + policy(*call.policy) + (call.option ? "/" + text(*call.option) : "");
    }
    if (call.operation == "createPolicy") {
      for (Vorel::IntfId const bound : (*call.policy)->intfs(*call.option)) {
        line += " " + text(bound);
      }
    }
    if (call.intf) {
      line += " " + text(*call.intf);
    }
    if (call.rule != nullptr) {
      line += " " + rule(*call.rule) + ports(*call.subRule);
      line += call.operation == "addRule" ? " " + match(*call.rule, **call.classData) : "";
    } else if (call.classData != nullptr) {
      line += " " + text((*call.classData)->name());
    }
    return line;
  }
  static std::string policy(PolicyData const& data) {
    return text(data->policyKey().first()) + "/" + text(data->policyKey().second());
  }
  static std::string rule(PolicyMap::AclRuleKey const& key) {
    return text(key.className()) + ":" + text(key.aclName()) + ":" + std::to_string(key.seqno());
  }
  static std::string ports(PolicyMap::SubRuleData const& subRule) {
    auto const bounds = [](unsigned low, unsigned high, bool flag) {
      return low == 0 && high == 65535
                 ? std::string("*")
                 : std::to_string(low) + "-" + std::to_string(high) + (flag ? "!" : "");
    };
    if (!subRule) {
      return "";
    }
    return " " + bounds(subRule.srcPortLow(), subRule.srcPortHigh(), subRule.srcPortRange()) + ">" +
           bounds(subRule.dstPortLow(), subRule.dstPortHigh(), subRule.dstPortRange());
  }
  static std::string match(PolicyMap::AclRuleKey const& key,
                           PolicyMap::ClassMapSmCommonData const& data) {
    switch (key.matchOption()) {
    case ClassMapMatchOption::ipv4: return data.getIpRule(key).describe();
    case ClassMapMatchOption::ipv6: return data.getIp6Rule(key).describe();
    default: return data.getMacRule(key).describe();
    }
  }
};

// An action with a number, and its machine.
class NumberAction : public PolicyMap::Action {
 public:
  NumberAction(char const* className, int kind)
      : Action(Kor::Name(className), PolicyMap::ActionType{kind}, Zub::UniqueId()) {}
  [[nodiscard]] int number() const { return number_; }
  void numberIs(int number) {
    number_ = number;
    attributeChanged<Action>(386, [](auto&) {});
  }

 private:
  int number_ = 0;
};

// The toggles that every machine derived from the base machines needs: a toggle that changes
// nothing is ignored, the machine is marked after its reactors have stopped, and destruction stops
// the reactors first.
template <class Machine>
class Toggled : public Machine {
 public:
  template <class... Args>
  explicit Toggled(Args&&... args) : Machine(std::forward<Args>(args)...) {}
  ~Toggled() override { Toggled::korDoZombieReactors(true); }

  void hasNotificationActiveIs(bool active) override {
    if (active != this->hasNotificationActive()) {
      Machine::hasNotificationActiveIs(active);
    }
  }
  void korDoZombieReactors(bool zombie) override {
    if (zombie != this->korMarkedForDeletion()) {
      Machine::korDoZombieReactors(zombie);
      this->korMarkedForDeletionIs(zombie);
    }
  }
};

class NumberActionSm : public Toggled<PolicyMap::ActionSm> {
 public:
  NumberActionSm(Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& global,
                 Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policy,
                 Kor::Ptr<PolicyMap::ClassMapSmCommonData> const& classData,
                 Kor::Ptr<PolicyMap::Action const> const& watched)
      : Toggled(global, policy, classData, watched) {}
  void handleAction() override { classCommonData()->updateAclActionsInc(1); }
  void cleanup() override { classCommonData()->updateAclActionsInc(1); }
};

class ClassSm : public Toggled<PolicyMap::ClassMapSm> {
 public:
  ClassSm(Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& global,
          Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policy,
          Kor::Ptr<PolicyMap::ClassMapConfig const> const& map,
          Kor::Ptr<PolicyMap::ClassMapSubConfig const> const& rawMap,
          Kor::Ptr<PolicyMap::ClassAction const> const& action)
      : Toggled(global, policy, map, rawMap, action) {}
  Kor::Ptr<PolicyMap::ActionSm> createActionSm(PolicyMap::ActionType type) override {
    auto machine = Kor::make<NumberActionSm>(globalCommonData(), policyCommonData(),
                                             classCommonData(), classAction()->action(type));
    machine->handleAction();
    machine->hasNotificationActiveIs(true);
    return machine;
  }
};

class PolicySm : public Toggled<PolicyMap::PolicyMapSm> {
 public:
  PolicySm(Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& global,
           PolicyMap::PolicyMapSmKey const& key,
           Kor::Ptr<PolicyMap::PolicyMapConfig const> const& config,
           Kor::Ptr<PolicyMap::ClassMapTypeConfig const> const& classes,
           Kor::Ptr<PolicyMap::PolicyMapStatus> const& status)
      : Toggled(global, key, config, classes, status) {}
  Kor::Ptr<PolicyMap::ClassMapSm> createClassMapSm(
      Kor::Ptr<PolicyMap::ClassMapConfig const> const& map,
      Kor::Ptr<PolicyMap::ClassMapSubConfig const> const& rawMap,
      Kor::Ptr<PolicyMap::ClassAction const> const& action) override {
    auto machine = Kor::make<ClassSm>(globalCommonData(), policyCommonData(), map, rawMap, action);
    machine->hasNotificationActiveIs(true);
    return machine;
  }
};

class ServiceSm : public Toggled<PolicyMap::ServicePolicySm> {
 public:
  template <class... Args>
  explicit ServiceSm(Args const&... args) : Toggled(args...) {}
  std::set<Vorel::IntfId> nonexistent;

  [[nodiscard]] bool intfExists(Vorel::IntfId asked) const override {
    return nonexistent.count(asked) == 0;
  }
  Kor::Ptr<PolicyMap::PolicyMapSm> createPolicyMapSm(
      PolicyMap::PolicyMapSmKey const& key,
      Kor::Ptr<PolicyMap::PolicyMapConfig const> const& config,
      Kor::Ptr<PolicyMap::PolicyMapStatus> const& status) override {
    auto machine = Kor::make<PolicySm>(commonData(), key, config, classTypeConfig(), status);
    machine->hasNotificationActiveIs(true);
    return machine;
  }
};

// The configuration, statuses, helper and machine of one test, on virtual time.
class PolicyBench {
 public:
  PolicyBench() { Kor::EventLoop::global().virtualTimeIs(true); }
  ~PolicyBench() {
    machine = nullptr;
    Kor::EventLoop::global().virtualTimeIs(false);
  }
  PolicyBench(PolicyBench const&) = delete;
  PolicyBench& operator=(PolicyBench const&) = delete;

  Kor::Ptr<PolicyMap::PolicyMapTypeConfig> policies = Kor::make<PolicyMap::PolicyMapTypeConfig>();
  Kor::Ptr<PolicyMap::ClassMapTypeConfig> classes = Kor::make<PolicyMap::ClassMapTypeConfig>();
  Kor::Ptr<PolicyMap::PolicyMapTypeStatus> status = Kor::make<PolicyMap::PolicyMapTypeStatus>();
  Kor::Ptr<PolicyMap::PolicyMapStatusRequestDir> requests =
      Kor::make<PolicyMap::PolicyMapStatusRequestDir>();
  Kor::Ptr<Acl::Config> acls = Kor::make<Acl::Config>();
  Kor::Ptr<Lag::Input::Config> lag = Kor::make<Lag::Input::Config>();
  Kor::Ptr<Ip::Status> ip = Kor::make<Ip::Status>();
  Kor::Ptr<Ip6::Status> ip6 = Kor::make<Ip6::Status>();
  Kor::Ptr<Routing::RoutingInfo> routing = Kor::make<Routing::RoutingInfo>();
  Kor::Ptr<Routing6::RoutingInfo> routing6 = Kor::make<Routing6::RoutingInfo>();
  Kor::Ptr<CallLog> helper = Kor::make<CallLog>();
  Kor::Ptr<Acl::AclDiff> diff = Kor::make<Acl::AclDiff>();
  Kor::Ptr<ServiceSm> machine;

  template <class Machine = ServiceSm>
  void start(bool allowL2 = true, bool allowL3 = true, bool allowMgmt = true) {
    machine = Kor::make<Machine>(
        Kor::Ptr<PolicyMap::PolicyMapTypeConfig const>(policies),
        Kor::Ptr<PolicyMap::ClassMapTypeConfig const>(classes),
        Kor::Ptr<PolicyMap::PolicyMapStatusRequestDir const>(requests), status,
        Kor::Ptr<Acl::Config const>(acls), Kor::Ptr<Lag::Input::Config const>(lag),
        Kor::Ptr<Ip::Status const>(ip), Kor::Ptr<Ip6::Status const>(ip6),
        Kor::Ptr<Routing::RoutingInfo const>(routing),
        Kor::Ptr<Routing6::RoutingInfo const>(routing6),
        Kor::Ptr<PolicyMap::PolicyMapAclHelper>(helper), diff, allowL2, allowL3, allowMgmt);
    machine->hasNotificationActiveIs(true);
  }
  // Turns the loop and returns the calls of the helper during it.
  std::vector<std::string> settle() {
    Kor::EventLoop::global().runUntilIdle();
    return helper->taken();
  }

  void rule(char const* list, std::uint32_t seqno, Acl::PortMatch const& dstPort = {}) const {
    Acl::IpRuleConfig config;
    config.protocolIs(6);
    config.dstPortIs(dstPort);
    acls->ipAclIs(Kor::Name(list))->ruleIs(seqno, config);
  }
  Kor::Ptr<PolicyMap::ClassMapSubConfig> classMap(char const* name) const {
    auto const config = classes->classMapConfigIs(Kor::Name(name));
    if (!config->currentSubConfig()) {
      config->currentSubConfigIs(Kor::make<PolicyMap::ClassMapSubConfig>(Kor::Name(name)));
    }
    return config->currentSubConfig();
  }
  void classMatches(char const* name, char const* list, std::uint32_t place = 1,
                    ClassMapMatchOption option = ClassMapMatchOption::ipv4) const {
    classMap(name)->matchIs(place, PolicyMap::ClassMapMatch::acl(option, Kor::Name(list)));
  }
  Kor::Ptr<PolicyMap::PolicyMapSubConfig> policy(char const* name) const {
    auto const config = policies->policyMapConfigIs(Kor::Name(name));
    if (!config->currentSubConfig()) {
      config->currentSubConfigIs(Kor::make<PolicyMap::PolicyMapSubConfig>(Kor::Name(name)));
    }
    return config->currentSubConfig();
  }
  Kor::Ptr<NumberAction> action(char const* policyName, char const* className, int kind = 1) const {
    auto created = Kor::make<NumberAction>(className, kind);
    policy(policyName)
        ->classActionIs(Kor::Name(className))
        ->actionIs(PolicyMap::ActionType{kind}, created);
    return created;
  }
  void attach(char const* name, char const* where, char const* direction = "input") const {
    policies->servicePolicyIs({intf(where), Kor::Name(direction)}, Kor::Name(name));
  }
  void detach(char const* where, char const* direction = "input") const {
    policies->servicePolicyDel({intf(where), Kor::Name(direction)});
  }

  // Policy-map "pm" with class "c" on list "acl" with rule 10, attached at Ethernet1 input.
  void simplePolicy() const {
    rule("acl", 10);
    classMatches("c", "acl");
    policy("pm")->classPrioIs(Kor::Name("c"), 10);
    attach("pm", "Ethernet1");
  }
};

}  // namespace policymap
