// SPDX-License-Identifier: Apache-2.0
#pragma once

// Scenario: the whole system on virtual time: configuration and statuses, a recording helper, and a
// service-policy machine of test machines. Short functions edit the configuration; nothing is
// programmed before settle() or advance() turns the loop.
//
//   TestSupport::Scenario scenario;
//   scenario.simplePolicy();     // policy-map pm, class c on list acl with rule 10, at Ethernet1
//   scenario.start();
//   scenario.settle();
//   EXPECT_TRUE(scenario.record()->created());

#include "helper/AclHelper.h"
#include "machines/TestAction.h"
#include "machines/TestServicePolicySm.h"

#include <Kor/EventLoop.h>

#include <cstdint>
#include <string>

namespace TestSupport {

using PolicyMap::ClassMapMatchOption;

[[nodiscard]] Vorel::IntfId intf(char const* name);

// Rules that differ only in the given matches.
[[nodiscard]] Acl::IpRuleConfig tcp(Acl::PortMatch const& destination = {},
                                    Acl::PortMatch const& source = {});
[[nodiscard]] Acl::Ip6RuleConfig tcp6(Acl::PortMatch const& destination = {});
[[nodiscard]] Acl::MacRuleConfig ether(std::uint32_t ethertype);

struct ScenarioSettings {
  bool updateActions = false;
  bool expandPortChannels = false;
  bool allowL2 = true;
  bool allowL3 = true;
  bool allowMgmt = true;
};

class Scenario {
 public:
  explicit Scenario(ScenarioSettings const& settings = {},
                    Kor::Ptr<PolicyMapTest::AclHelper> usedHelper = nullptr);
  ~Scenario();
  Scenario(Scenario const&) = delete;
  Scenario& operator=(Scenario const&) = delete;

  Kor::Ptr<PolicyMap::PolicyMapTypeConfig> policies = Kor::make<PolicyMap::PolicyMapTypeConfig>();
  Kor::Ptr<PolicyMap::ClassMapTypeConfig> classes = Kor::make<PolicyMap::ClassMapTypeConfig>();
  Kor::Ptr<PolicyMap::PolicyMapTypeStatus> status = Kor::make<PolicyMap::PolicyMapTypeStatus>();
  Kor::Ptr<Acl::Config> acls = Kor::make<Acl::Config>();
  Kor::Ptr<Lag::Input::Config> lag = Kor::make<Lag::Input::Config>();
  Kor::Ptr<Ip::Status> ip = Kor::make<Ip::Status>();
  Kor::Ptr<Ip6::Status> ip6 = Kor::make<Ip6::Status>();
  Kor::Ptr<Routing::RoutingInfo> routing = Kor::make<Routing::RoutingInfo>();
  Kor::Ptr<Routing6::RoutingInfo> routing6 = Kor::make<Routing6::RoutingInfo>();
  Kor::Ptr<Acl::AclDiff> diff = Kor::make<Acl::AclDiff>();
  Kor::Ptr<PolicyMapTest::AclHelper> helper;
  Kor::Ptr<PolicyMapTest::TestServicePolicySm> machine;

  // start() creates the machine. anotherMachine() returns one more, on the same objects except for
  // the two arguments.
  void start();
  [[nodiscard]] Kor::Ptr<PolicyMapTest::TestServicePolicySm> anotherMachine(
      Kor::Ptr<PolicyMap::PolicyMapTypeConfig> const& policyConfig,
      Kor::Ptr<PolicyMap::PolicyMapTypeStatus> const& publishedStatus) const;
  // Turns the loop until nothing is due. The clock does not advance.
  void settle() const;
  // Advances the clock and runs everything that becomes due.
  void advance(double seconds) const;
  // Delivers the pending asynchronous result and turns the loop.
  void trigger() const;

  // Access lists.
  void rule(char const* list, std::uint32_t seqno, Acl::IpRuleConfig const& rule = tcp()) const;
  void rule(char const* list, std::uint32_t seqno, Acl::Ip6RuleConfig const& rule) const;
  void rule(char const* list, std::uint32_t seqno, Acl::MacRuleConfig const& rule) const;

  // Class-maps. The option selects the kind of list.
  [[nodiscard]] Kor::Ptr<PolicyMap::ClassMapSubConfig> classMap(char const* name) const;
  void classMatches(char const* name, char const* list,
                    ClassMapMatchOption option = ClassMapMatchOption::ipv4,
                    std::uint32_t place = 1) const;

  // Policy-maps.
  [[nodiscard]] Kor::Ptr<PolicyMap::PolicyMapSubConfig> policy(char const* name) const;
  void usesClass(char const* policyName, char const* className, std::uint32_t priority) const;
  // Creates the action of a kind from 1 to 3, or changes the value of the existing action.
  void actionIs(char const* policyName, char const* className, int kind, std::uint32_t value) const;
  void actionDel(char const* policyName, char const* className, int kind) const;
  void attach(char const* policyName, char const* where, char const* direction = "input") const;
  void detach(char const* where, char const* direction = "input") const;

  // Policy-map "pm" with class "c" of priority 10 on list "acl" with rule 10, at Ethernet1 input.
  void simplePolicy() const;
  // The same with one list of each kind, "acl", "acl6", "mac" and "label", for all four options.
  void simplePolicyOfAllOptions() const;

  // The record; null if there is none.
  [[nodiscard]] Kor::Ptr<PolicyMapTest::AclPolicyData> record(
      ClassMapMatchOption option = ClassMapMatchOption::ipv4, char const* direction = "input",
      char const* policyName = "pm") const;
  [[nodiscard]] Kor::Ptr<PolicyMap::PolicyMapStatus> policyStatus(
      char const* policyName = "pm", char const* direction = "input") const;

  [[nodiscard]] static PolicyMap::AclRuleKey ruleKey(
      char const* className, char const* list, std::uint32_t seqno,
      ClassMapMatchOption option = ClassMapMatchOption::ipv4);

 private:
  ScenarioSettings settings_;
};

// The counters and flags of a record as one line, for tables: "create 1, commit 1, update 0/0,
// created, clean".
[[nodiscard]] std::string counts(Kor::Ptr<PolicyMapTest::AclPolicyData> const& record);

}  // namespace TestSupport
