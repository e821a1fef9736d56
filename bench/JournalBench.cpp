// SPDX-License-Identifier: Apache-2.0
//
// What a journal costs: a policy is programmed again through the helper of a lab, with and without
// a journal, beside the plain helper of the library. The argument is the number of rules.

#include "testkit/Lab.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

namespace {

using PolicyMapTestKit::Lab;
using PolicyMapTestKit::LabOptions;

std::string policyOf(std::int64_t rules) {
  std::string text = "ip access-list web\n";
  for (std::int64_t rule = 1; rule <= rules; ++rule) {
    text += " permit tcp any any eq " + std::to_string(rule) + "\n";
  }
  return text + "class-map match-any web\n match access-group web\n"
                "policy-map edge\n class web\n  set action1 7\n"
                "interface Ethernet1\n service-policy input edge\n";
}

// One changed rule: the policy is created again, and every rule added.
void program(benchmark::State& state, Lab& lab) {
  lab.load(policyOf(state.range(0)));
  auto const list = lab.acls()->ipAcl("web");
  Acl::IpRuleConfig const first = list->rule(10);
  Acl::IpRuleConfig const second = list->rule(20);
  bool isFirst = true;
  for (auto _ : state) {
    list->ruleIs(10, isFirst ? second : first);
    isFirst = !isFirst;
    lab.settle();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void plainHelper(benchmark::State& state) {
  Lab lab(LabOptions{.journal = 0});
  lab.machine()->aclHelperIs(PolicyMapTest::aclHelperFactory(false, false));
  program(state, lab);
}

void labWithoutJournal(benchmark::State& state) {
  Lab lab(LabOptions{.journal = 0});
  program(state, lab);
}

void labWithJournal(benchmark::State& state) {
  Lab lab;
  program(state, lab);
}

BENCHMARK(plainHelper)->Arg(10)->Arg(1000);
BENCHMARK(labWithoutJournal)->Arg(10)->Arg(1000);
BENCHMARK(labWithJournal)->Arg(10)->Arg(1000);

}  // namespace

BENCHMARK_MAIN();
