// SPDX-License-Identifier: Apache-2.0
//
// The cost of a change to one policy among few and among many policies. It should be the same.

#include "helper/AclHelper.h"
#include "machines/PolicyMapTestSm.h"

#include <Kor/EventLoop.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace {

using PolicyMap::ClassMapMatchOption;

Kor::Name nameOf(char const* kind, std::uint32_t number) {
  return Kor::Name(Kor::String(kind + std::to_string(number)));
}

// Policies of one class with a list of ten rules each, each attached to its own interface.
class Policies {
 public:
  explicit Policies(std::uint32_t count) {
    Kor::EventLoop::global().virtualTimeIs(true);
    for (std::uint32_t number = 0; number < count; ++number) {
      auto const list = acls_->ipAclIs(nameOf("acl", number));
      for (std::uint32_t seqno = 10; seqno <= 100; seqno += 10) {
        list->ruleIs(seqno, rule(seqno));
      }
      Kor::Name const className = nameOf("class", number);
      auto const matches = Kor::make<PolicyMap::ClassMapSubConfig>(className);
      matches->matchIs(
          1, PolicyMap::ClassMapMatch::acl(ClassMapMatchOption::ipv4, nameOf("acl", number)));
      classes_->classMapConfigIs(className)->currentSubConfigIs(matches);
      Kor::Name const policyName = nameOf("policy", number);
      auto const policy = Kor::make<PolicyMap::PolicyMapSubConfig>(policyName);
      policy->classPrioIs(className, 1);
      auto const action = PolicyMapTest::testAction1Factory(className, Zub::UniqueId::next());
      policy->classActionIs(className)->actionIs(action->actionType(), action);
      if (number == count / 2) {
        action_ = action;
      }
      policies_->policyMapConfigIs(policyName)->currentSubConfigIs(policy);
      policies_->servicePolicyIs({intf(number), "input"}, policyName);
    }
    changed_ = count / 2;
    machine_ = PolicyMapTest::testServicePolicySmFactory(
        policies_, classes_, nullptr, Kor::make<PolicyMap::PolicyMapTypeStatus>(), acls_, nullptr,
        nullptr, nullptr, nullptr, nullptr, helper_, Kor::make<Acl::AclDiff>(), true, true, true);
    Kor::EventLoop::global().runUntilIdle();
  }

  // Each of these functions makes the one policy be programmed again.
  void changeRule() {
    acls_->ipAcl(nameOf("acl", changed_))->ruleIs(10, rule(++changes_ % 60000));
    Kor::EventLoop::global().runUntilIdle();
  }
  void changeAction() {
    action_->valueIs(++changes_);
    Kor::EventLoop::global().runUntilIdle();
  }
  void changeInterface() {
    machine_->nonexistentIntfIs(intf(changed_), ++changes_ % 2 == 0);
    Kor::EventLoop::global().runUntilIdle();
  }

 private:
  static Acl::IpRuleConfig rule(std::uint32_t port) {
    Acl::IpRuleConfig config;
    config.protocolIs(6);
    config.dstPortIs(Acl::PortMatch::eq(port));
    return config;
  }
  static Vorel::IntfId intf(std::uint32_t number) {
    return Vorel::IntfId(Kor::String("Ethernet" + std::to_string(number / 1000 + 1) + "/" +
                                     std::to_string(number % 1000 + 1)));
  }

  Kor::Ptr<Acl::Config> acls_ = Kor::make<Acl::Config>();
  Kor::Ptr<PolicyMap::ClassMapTypeConfig> classes_ = Kor::make<PolicyMap::ClassMapTypeConfig>();
  Kor::Ptr<PolicyMap::PolicyMapTypeConfig> policies_ = Kor::make<PolicyMap::PolicyMapTypeConfig>();
  Kor::Ptr<PolicyMapTest::AclHelper> helper_ = PolicyMapTest::aclHelperFactory(true, false);
  Kor::Ptr<PolicyMapTest::TestServicePolicySm> machine_;
  Kor::Ptr<PolicyMapTest::TestAction1> action_;
  std::uint32_t changed_ = 0;
  std::uint32_t changes_ = 0;
};

template <void (Policies::*change)()>
double medianSeconds(Policies& policies) {
  constexpr std::size_t runs = 501;
  std::vector<double> seconds(runs);
  for (double& one : seconds) {
    auto const start = std::chrono::steady_clock::now();
    (policies.*change)();
    one = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }
  std::nth_element(seconds.begin(), seconds.begin() + runs / 2, seconds.end());
  return seconds[runs / 2];
}

// `ratio`: the median time of a change among many policies over that among ten, measured
// alternately.
template <void (Policies::*change)()>
void oneOf(benchmark::State& state) {
  Policies few(10);
  Policies many(static_cast<std::uint32_t>(state.range(0)));
  for (auto _ : state) {
    double const amongFew = medianSeconds<change>(few);
    double const amongMany = medianSeconds<change>(many);
    state.SetIterationTime(amongMany);
    state.counters["ratio"] = amongMany / amongFew;
  }
}
BENCHMARK_TEMPLATE(oneOf, &Policies::changeRule)
    ->Arg(10000)
    ->Iterations(3)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(oneOf, &Policies::changeAction)
    ->Arg(10000)
    ->Iterations(3)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(oneOf, &Policies::changeInterface)
    ->Arg(10000)
    ->Iterations(3)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
