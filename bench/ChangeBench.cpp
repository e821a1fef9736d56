// SPDX-License-Identifier: Apache-2.0
//
// One change in a policy of N classes, or at N interfaces. A change that needs no other operation
// than its own should not cost more where N is greater. A change of rules programs all rules again,
// which costs as much as there are rules.
//
// Each class has an action and an access list of its own with one rule, the last one with ten.

#include "machines/PolicyMapTestSm.h"
#include "testkit/Lab.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace {

using PolicyMap::ActionType;
using PolicyMap::ClassMapMatch;
using PolicyMap::ClassMapMatchOption;
using PolicyMapTestKit::Lab;

enum class Kind { plain, dualStack, refused };

std::string numbered(char const* what, std::int64_t number) {
  return what + std::to_string(number);
}

std::string textOf(std::int64_t classes, std::int64_t intfs, Kind kind) {
  std::string lists;
  std::string maps;
  std::string policy = "policy-map edge\n";
  for (std::int64_t number = 0; number < classes; ++number) {
    std::string const name = numbered("c", number);
    bool const isLast = number == classes - 1;
    lists += "ip access-list " + name + "\n";
    for (int rule = 0; rule < (isLast ? 10 : 1); ++rule) {
      lists += isLast && kind == Kind::refused ? " deny" : " permit";
      lists += " tcp any any eq " + std::to_string(rule + 1) + "\n";
    }
    maps += "class-map match-any " + name + "\n match access-group " + name + "\n";
    if (kind == Kind::dualStack) {
      lists += "ipv6 access-list " + name + "\n permit tcp any any eq 1\n";
      maps += " match ipv6 access-group " + name + "\n";
    }
    policy += " class " + name + "\n  set action1 7\n";
  }
  std::string text = lists + maps + policy;
  for (std::int64_t number = 0; number <= intfs; ++number) {
    text += "interface " + numbered("Ethernet", number + 1) + "\n ip address 192.0.2.1/24\n";
    text += number < intfs ? " service-policy input edge\n" : "";
  }
  return text;
}

// The policy, programmed, at all interfaces but the last.
class Policy {
 public:
  Policy(std::int64_t classes, std::int64_t intfs, Kind kind)
      : lab_({.updateAction = true, .denyRules = kind != Kind::refused, .journal = 0}),
        place_(Vorel::IntfId(Kor::String(numbered("Ethernet", intfs + 1))), "input"),
        last_(Kor::String(numbered("c", classes - 1))) {
    lab_.load(textOf(classes, intfs, kind));
    rule_ = list().rule(10);
    lab_.acls()->ipAclIs("empty");
    classMap("without-rules", "empty");
    classMap("more", last_);
  }
  // Made once, because a large one takes long.
  static Policy& of(std::int64_t classes, std::int64_t intfs, Kind kind = Kind::plain) {
    static std::map<std::pair<std::int64_t, std::int64_t>, std::unique_ptr<Policy>> made;
    static Kind madeKind = kind;
    if (std::exchange(madeKind, kind) != kind) {
      made.clear();
    }
    auto& policy = made[{classes, intfs}];
    if (!policy) {
      policy = std::make_unique<Policy>(classes, intfs, kind);
    }
    return *policy;
  }

  // Every change is programmed when the function returns.

  void changeAction() {
    auto const action = subConfig().classAction(last_)->action(ActionType{1});
    auto const value = action.as<PolicyMapTest::TestAction1>();
    value->valueIs(value->value() + 1);
    lab_.settle();
  }
  void toggleIntf() {
    if (lab_.policyMaps()->servicePolicy(place_).empty()) {
      lab_.policyMaps()->servicePolicyIs(place_, "edge");
    } else {
      lab_.policyMaps()->servicePolicyDel(place_);
    }
    lab_.settle();
  }
  void toggleClass(char const* name) {
    if (subConfig().korClassPrio(name)) {
      subConfig().classPrioDel(name);
    } else {
      subConfig().classPrioIs(name, 1U << 31U);
    }
    lab_.settle();
  }
  void changeRules(std::uint32_t number) {
    ++changes_;
    for (std::uint32_t i = 0; i < number; ++i) {
      rule_.dstPortIs(Acl::PortMatch::eq(static_cast<std::uint16_t>(1 + (changes_ + i) % 60000)));
      list().ruleIs(10 * (i + 1), rule_);
    }
    lab_.settle();
  }
  void rewriteRule() {
    Acl::IpRuleConfig const rule = list().rule(10);
    list().ruleDel(10);
    list().ruleIs(10, rule);
    lab_.settle();
  }
  [[nodiscard]] std::uint32_t commits() const {
    auto const record = lab_.helper()->testData({{"edge", "input"}, ClassMapMatchOption::ipv4});
    return record ? record->commitCount() : 0;
  }

 private:
  Acl::IpAclConfig& list() { return *lab_.acls()->ipAcl(last_); }
  PolicyMap::PolicyMapSubConfig& subConfig() {
    return *lab_.policyMaps()->policyMapConfig("edge")->currentSubConfig();
  }
  void classMap(char const* name, Kor::Name const& list) {
    auto const matches = Kor::make<PolicyMap::ClassMapSubConfig>(Kor::Name(name));
    matches->matchIs(1, ClassMapMatch::acl(ClassMapMatchOption::ipv4, list));
    lab_.classMaps()->classMapConfigIs(name)->currentSubConfigIs(matches);
  }

  Lab lab_;
  PolicyMap::ServicePolicyKey place_;
  Kor::Name last_;
  Acl::IpRuleConfig rule_;
  std::uint32_t changes_ = 0;
};

// Measures `change` and checks that each one commits the policy, or that none does.
template <class Change>
void measure(benchmark::State& state, Policy& policy, bool commits, Change&& change) {
  std::uint32_t const before = policy.commits();
  for (auto _ : state) {
    change(policy);
  }
  std::uint32_t const done = policy.commits() - before;
  if (done != (commits ? state.iterations() : 0)) {
    state.SkipWithError("another number of commits than of changes");
  }
}

void amongClasses(benchmark::internal::Benchmark* bench) {
  bench->RangeMultiplier(10)->Range(10, 10000)->Unit(benchmark::kMicrosecond);
}

void oneAction(benchmark::State& state) {
  measure(state, Policy::of(state.range(0), 1), true, [](Policy& p) { p.changeAction(); });
}
BENCHMARK(oneAction)->Apply(amongClasses);

void oneIntf(benchmark::State& state) {
  measure(state, Policy::of(state.range(0), 1), true, [](Policy& p) { p.toggleIntf(); });
}
BENCHMARK(oneIntf)->Apply(amongClasses);

void ruleRewrittenAsItWas(benchmark::State& state) {
  measure(state, Policy::of(state.range(0), 1), false, [](Policy& p) { p.rewriteRule(); });
}
BENCHMARK(ruleRewrittenAsItWas)->Apply(amongClasses);

void classWithoutRulesAddedOrRemoved(benchmark::State& state) {
  measure(state, Policy::of(state.range(0), 1), false,
          [](Policy& p) { p.toggleClass("without-rules"); });
}
BENCHMARK(classWithoutRulesAddedOrRemoved)->Apply(amongClasses);

// Programs all rules again.
void oneRule(benchmark::State& state) {
  measure(state, Policy::of(state.range(0), 1), true, [](Policy& p) { p.changeRules(1); });
}
BENCHMARK(oneRule)->Apply(amongClasses);

void tenRules(benchmark::State& state) {
  measure(state, Policy::of(state.range(0), 1), true, [](Policy& p) { p.changeRules(10); });
}
BENCHMARK(tenRules)->Apply(amongClasses);

void classAddedOrRemovedAtTheEnd(benchmark::State& state) {
  measure(state, Policy::of(state.range(0), 1), true, [](Policy& p) { p.toggleClass("more"); });
}
BENCHMARK(classAddedOrRemovedAtTheEnd)->Apply(amongClasses);

// Each class has IPv6 rules, for which there is no interface.
void oneIntfOfOneFamily(benchmark::State& state) {
  measure(state, Policy::of(state.range(0), 1, Kind::dualStack), true,
          [](Policy& p) { p.toggleIntf(); });
}
BENCHMARK(oneIntfOfOneFamily)->Apply(amongClasses);

// The last class has rules that the helper does not support.
void oneIntfOfARefusedPolicy(benchmark::State& state) {
  measure(state, Policy::of(state.range(0), 1, Kind::refused), false,
          [](Policy& p) { p.toggleIntf(); });
}
BENCHMARK(oneIntfOfARefusedPolicy)->Apply(amongClasses);

void oneActionAtManyIntfs(benchmark::State& state) {
  measure(state, Policy::of(10, state.range(0)), true, [](Policy& p) { p.changeAction(); });
}
BENCHMARK(oneActionAtManyIntfs)->Apply(amongClasses);

void oneIntfOfMany(benchmark::State& state) {
  measure(state, Policy::of(10, state.range(0)), true, [](Policy& p) { p.toggleIntf(); });
}
BENCHMARK(oneIntfOfMany)->Apply(amongClasses);

}  // namespace

BENCHMARK_MAIN();
