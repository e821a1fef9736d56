// SPDX-License-Identifier: Apache-2.0
//
// One change in a policy of many classes, or at many interfaces, beside the same change where there
// are ten. A change that needs no other operation than its own should not cost more where there are
// more. A change of rules programs all rules again, which costs as much as there are rules.
//
// Each class has an action and an access list of its own with one rule, the last one with ten.

#include "bench/Contest.h"
#include "machines/PolicyMapTestSm.h"
#include "testkit/Lab.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

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
    maps.append("class-map match-any ").append(name);
    maps.append("\n match access-group ").append(name).append("\n");
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
  static Policy& of(std::int64_t classes, std::int64_t intfs, Kind kind) {
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

struct Work {
  std::string name;  // is followed by the number
  Kind kind;
  bool commits;  // each change, or none
  bool amongIntfs;
  std::function<void(Policy&)> change;
  std::vector<int> numbers = {10000};
};

void measure(benchmark::State& state, Work const& work, int number) {
  Policy& policy =
      work.amongIntfs ? Policy::of(10, number, work.kind) : Policy::of(number, 1, work.kind);
  std::uint32_t const before = policy.commits();
  for (auto _ : state) {
    work.change(policy);
  }
  if (policy.commits() - before != (work.commits ? state.iterations() : 0)) {
    state.SkipWithError("another number of commits than of changes");
  }
}

std::vector<Work> works() {
  auto const action = [](Policy& policy) { policy.changeAction(); };
  auto const intf = [](Policy& policy) { policy.toggleIntf(); };
  return {
      {"one action value", Kind::plain, true, false, action, {100, 1000, 10000}},
      {"one action value", Kind::plain, true, true, action},
      {"one interface", Kind::plain, true, false, intf},
      {"one interface", Kind::plain, true, true, intf},
      // Each class has IPv6 rules, for which there is no interface.
      {"one interface of one family", Kind::dualStack, true, false, intf},
      // The last class has rules that the helper does not support.
      {"one interface of a refused policy", Kind::refused, false, false, intf},
      {"one rule rewritten as it was", Kind::plain, false, false,
       [](Policy& policy) { policy.rewriteRule(); }},
      {"one class without rules", Kind::plain, false, false,
       [](Policy& policy) { policy.toggleClass("without-rules"); }},
      {"one class with rules", Kind::plain, true, false,
       [](Policy& policy) { policy.toggleClass("more"); }},
      {"ten rules", Kind::plain, true, false, [](Policy& policy) { policy.changeRules(10); }},
  };
}

[[maybe_unused]] bool const entered = [] {
  for (Work const& work : works()) {
    auto const measured = [&work](int number) {
      return [work, number](benchmark::State& state) { measure(state, work, number); };
    };
    std::string const things = work.amongIntfs ? "interfaces" : "classes";
    for (int const number : work.numbers) {
      std::string name = work.name;
      name.append(work.amongIntfs ? " at " : " in a policy of ").append(std::to_string(number));
      name.append(" ").append(things);
      Contest::enter(name, "ours", measured(number));
      Contest::enter(name, "10 " + things, measured(10));
    }
  }
  return true;
}();

}  // namespace

BENCHMARK_MAIN();
