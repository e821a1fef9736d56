// SPDX-License-Identifier: Apache-2.0
//
// One change in a policy of many classes: what it costs should not depend on how many there are.
// Every class has an action and a list of its own with ten rules.

#include "bench/Contest.h"
#include "machines/PolicyMapTestSm.h"
#include "testkit/Lab.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace {

using PolicyMapTestKit::Lab;
using PolicyMapTestKit::LabOptions;

std::string policyOf(int classes) {
  std::string lists;
  std::string maps;
  std::string policy = "policy-map edge\n";
  for (int number = 0; number < classes; ++number) {
    std::string const name = std::to_string(number);
    lists += "ip access-list list" + name + "\n";
    for (int rule = 0; rule < 10; ++rule) {
      lists += " permit tcp any any eq " + std::to_string(rule + 1) + "\n";
    }
    maps.append("class-map match-any class").append(name);
    maps.append("\n match access-group list").append(name).append("\n");
    policy += " class class" + name + "\n  set action1 7\n";
  }
  return lists + maps + policy + "interface Ethernet1\n service-policy input edge\n";
}

// A lab of each size, made once.
Lab& labOf(int classes) {
  static std::map<int, std::unique_ptr<Lab>> labs;
  std::unique_ptr<Lab>& lab = labs[classes];
  if (!lab) {
    LabOptions options;
    options.journal = 0;
    options.updateAction = true;
    lab = std::make_unique<Lab>(options);
    lab->load(policyOf(classes));
  }
  return *lab;
}

std::uint32_t commits(Lab const& lab) {
  PolicyMapTest::AclPolicyType const key(PolicyMap::PolicyMapSmKey("edge", "input"),
                                         PolicyMap::ClassMapMatchOption::ipv4);
  return lab.helper()->testData(key)->commitCount();
}

// The action of the class in the middle.
void oneAction(benchmark::State& state, int classes) {
  Lab& lab = labOf(classes);
  auto const sub = lab.policyMaps()->policyMapConfig("edge")->currentSubConfig();
  Kor::Name const name(Kor::String("class" + std::to_string(classes / 2)));
  auto const value = Kor::validPtr(
      sub->classAction(name)->action(PolicyMap::ActionType{1}).as<PolicyMapTest::TestAction1>());
  std::uint32_t const before = commits(lab);
  for (auto _ : state) {
    value->valueIs(value->value() % 1000 + 1);
    lab.settle();
  }
  if (commits(lab) - before < state.iterations()) {
    state.SkipWithError("not every change was programmed");
  }
}

void oneIntf(benchmark::State& state, int classes) {
  Lab& lab = labOf(classes);
  PolicyMap::ServicePolicyKey const key(Vorel::IntfId("Ethernet2"), "input");
  bool attached = false;
  std::uint32_t const before = commits(lab);
  for (auto _ : state) {
    if (attached) {
      lab.policyMaps()->servicePolicyDel(key);
    } else {
      lab.policyMaps()->servicePolicyIs(key, "edge");
    }
    attached = !attached;
    lab.settle();
  }
  if (commits(lab) - before < state.iterations()) {
    state.SkipWithError("not every change was programmed");
  }
  lab.policyMaps()->servicePolicyDel(key);
  lab.settle();
}

[[maybe_unused]] bool const entered = [] {
  using Contest::enter;
  for (auto const& [what, change] :
       {std::pair("one action value", &oneAction), std::pair("one interface", &oneIntf)}) {
    for (int const classes : {100, 1000, 10000}) {
      std::string const work =
          std::string(what) + " in a policy of " + std::to_string(classes) + " classes";
      auto const measure = [change = change](int size) {
        return [change, size](benchmark::State& state) { change(state, size); };
      };
      enter(work, "ours", measure(classes));
      enter(work, "10 classes", measure(10));
    }
  }
  return true;
}();

}  // namespace

BENCHMARK_MAIN();
