// SPDX-License-Identifier: Apache-2.0
//
// From configuration to records: the cost of a policy of N rules, and whether twice the rules cost
// about twice the time and memory.

#include "helper/AclHelper.h"
#include "machines/PolicyMapTestSm.h"

#include <Kor/EventLoop.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using PolicyMap::ClassMapMatchOption;

// Every eighth rule has a port range.
Acl::IpRuleConfig ruleNumber(std::uint32_t number) {
  Acl::IpRuleConfig rule;
  rule.protocolIs(6);
  rule.sourceIs(Acl::IpAddressMatch(0x0a000000U + number, 0xffffffffU));
  rule.dstPortIs(number % 8 == 0 ? Acl::PortMatch::range(1024, 5000)
                                 : Acl::PortMatch::eq(number % 65536));
  return rule;
}

// One policy of one class on one list, attached to one interface, with the objects needed to
// program it.
class Policy {
 public:
  explicit Policy(std::uint32_t rules) {
    Kor::EventLoop::global().virtualTimeIs(true);
    auto const list = acls_->ipAclIs("acl");
    for (std::uint32_t number = 0; number < rules; ++number) {
      list->ruleIs(10 * (number + 1), ruleNumber(number));
    }
    auto const matches = Kor::make<PolicyMap::ClassMapSubConfig>("class");
    matches->matchIs(1, PolicyMap::ClassMapMatch::acl(ClassMapMatchOption::ipv4, "acl"));
    classes_->classMapConfigIs("class")->currentSubConfigIs(matches);
    auto const policy = Kor::make<PolicyMap::PolicyMapSubConfig>("policy");
    policy->classPrioIs("class", 1);
    policies_->policyMapConfigIs("policy")->currentSubConfigIs(policy);
    policies_->servicePolicyIs({Vorel::IntfId(Kor::String("Ethernet1")), "input"}, "policy");
    helper_->subRulesForL4PortsIs(true);
    machine_ = PolicyMapTest::testServicePolicySmFactory(
        policies_, classes_, nullptr, Kor::make<PolicyMap::PolicyMapTypeStatus>(), acls_, nullptr,
        nullptr, nullptr, nullptr, nullptr, helper_, Kor::make<Acl::AclDiff>(), true, true, true);
  }
  void program() { Kor::EventLoop::global().runUntilIdle(); }
  [[nodiscard]] std::uint32_t programmedRules() const {
    auto const record = helper_->testData({{"policy", "input"}, ClassMapMatchOption::ipv4});
    return record ? record->ruleMatchs() : 0;
  }
  void changeOneRule() { acls_->ipAcl("acl")->ruleIs(10, ruleNumber(++changes_ + 1000000)); }

 private:
  Kor::Ptr<Acl::Config> acls_ = Kor::make<Acl::Config>();
  Kor::Ptr<PolicyMap::ClassMapTypeConfig> classes_ = Kor::make<PolicyMap::ClassMapTypeConfig>();
  Kor::Ptr<PolicyMap::PolicyMapTypeConfig> policies_ = Kor::make<PolicyMap::PolicyMapTypeConfig>();
  Kor::Ptr<PolicyMapTest::AclHelper> helper_ = PolicyMapTest::aclHelperFactory(false, false);
  Kor::Ptr<PolicyMapTest::TestServicePolicySm> machine_;
  std::uint32_t changes_ = 0;
};

struct Cost {
  double seconds = 0;
  double bytes = 0;
};

double residentBytes() {
  long pages = 0;
  if (std::FILE* const file = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(file, "%*s %ld", &pages) != 1) {
      pages = 0;
    }
    std::fclose(file);
  }
  return static_cast<double>(pages) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

// Measures in a process of its own. The benchmarks that use it come first: a process that has
// programmed nothing has no free memory for its children to reuse.
Cost costOf(std::uint32_t rules) {
  std::array<int, 2> pipe{};
  if (::pipe(pipe.data()) != 0) {
    return {};
  }
  pid_t const child = fork();
  if (child == 0) {
    double const before = residentBytes();
    auto const start = std::chrono::steady_clock::now();
    Policy policy(rules);
    policy.program();
    std::chrono::duration<double> const took = std::chrono::steady_clock::now() - start;
    Cost const cost{took.count(), residentBytes() - before};
    bool const good = policy.programmedRules() == rules &&
                      write(pipe[1], &cost, sizeof cost) == static_cast<ssize_t>(sizeof cost);
    _exit(good ? 0 : 1);
  }
  close(pipe[1]);
  Cost cost;
  bool const good = read(pipe[0], &cost, sizeof cost) == static_cast<ssize_t>(sizeof cost);
  close(pipe[0]);
  waitpid(child, nullptr, 0);
  return good ? cost : Cost{};
}

Cost medianCostOf(std::uint32_t rules) {
  constexpr std::size_t runs = 5;
  std::vector<double> seconds;
  std::vector<double> bytes;
  for (std::size_t run = 0; run < runs; ++run) {
    Cost const cost = costOf(rules);
    seconds.push_back(cost.seconds);
    bytes.push_back(cost.bytes);
  }
  std::nth_element(seconds.begin(), seconds.begin() + runs / 2, seconds.end());
  std::nth_element(bytes.begin(), bytes.begin() + runs / 2, bytes.end());
  return {seconds[runs / 2], bytes[runs / 2]};
}

// Median of five: the cost of N rules over that of N / 2.
void doubling(benchmark::State& state) {
  auto const rules = static_cast<std::uint32_t>(state.range(0));
  for (auto _ : state) {
    Cost const half = medianCostOf(rules / 2);
    Cost const whole = medianCostOf(rules);
    if (half.seconds <= 0 || half.bytes <= 0) {
      state.SkipWithError("a measurement failed");
      break;
    }
    state.SetIterationTime(whole.seconds);
    state.counters["time_ratio"] = whole.seconds / half.seconds;
    state.counters["memory_ratio"] = whole.bytes / half.bytes;
    state.counters["bytes_per_rule"] = whole.bytes / rules;
  }
}
BENCHMARK(doubling)->Arg(50000)->Arg(100000)->Arg(200000)->Iterations(1)->UseManualTime()->Unit(
    benchmark::kMillisecond);

void fromConfigurationToRecords(benchmark::State& state) {
  auto const rules = static_cast<std::uint32_t>(state.range(0));
  for (auto _ : state) {
    Policy policy(rules);
    policy.program();
    if (policy.programmedRules() != rules) {
      state.SkipWithError("not every rule was programmed");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations() * rules);
}
BENCHMARK(fromConfigurationToRecords)
    ->RangeMultiplier(10)
    ->Range(100, 100000)
    ->Unit(benchmark::kMillisecond);

void oneRuleChanged(benchmark::State& state) {
  Policy policy(static_cast<std::uint32_t>(state.range(0)));
  policy.program();
  for (auto _ : state) {
    policy.changeOneRule();
    policy.program();
  }
}
BENCHMARK(oneRuleChanged)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
