// SPDX-License-Identifier: Apache-2.0
//
// Paths that are run often, each in a function hot_NAME of its own that repeats it `repeats` times.
// bench/instructions.py counts their instructions.

#include "bench/Lamp.h"
#include "bench/RuleArguments.h"
#include "helper/AclHelper.h"

#include <Kor/ByName.h>

#include <cstdint>
#include <vector>

namespace {

using Bench::Lamp;
using Bench::RuleArguments;

constexpr std::uint32_t repeats = Bench::ruleCount;
volatile std::uint64_t sink = 0;

}  // namespace

#define HOT(name) extern "C" [[gnu::noinline]] void hot_##name

HOT(read_by_kept_name)(Kor::GenericRef const& helper, Kor::AttributeName const& name) {
  for (std::uint32_t n = 0; n != repeats; ++n) {
    sink = sink + static_cast<std::uint64_t>(helper.get(name).boolean());
  }
}

HOT(write_by_kept_name)(Kor::GenericRef const& helper, Kor::AttributeName const& name) {
  for (std::uint32_t n = 0; n != repeats; ++n) {
    helper.set(name, n % 2 == 0);
  }
}

HOT(call_by_kept_name)
(Kor::GenericRef const& helper, Kor::AttributeName const& name, RuleArguments const& policy) {
  for (std::uint32_t n = 0; n != repeats; ++n) {
    helper.call(name, policy.policyData, PolicyMap::ClassMapMatchOption::ipv4);
  }
}

HOT(write_with_one_observer)(Lamp& lamp) {
  for (std::uint32_t n = 1; n <= repeats; ++n) {
    lamp.brightnessIs(static_cast<int>(n));
  }
}

HOT(write_with_64_observers)(Lamp& lamp) {
  for (std::uint32_t n = 1; n <= repeats; ++n) {
    lamp.brightnessIs(static_cast<int>(n));
  }
}

HOT(print_a_key)(RuleArguments const& policy) {
  for (auto const& key : policy.keys) {
    sink = sink + valueToStrep(key).length();
  }
}

HOT(parse_a_key)(std::vector<Kor::String> const& texts) {
  for (Kor::String const& text : texts) {
    sink = sink + Kor::strepToValue<PolicyMap::AclRuleKey>(text).seqno();
  }
}

HOT(add_a_rule)(PolicyMapTest::AclHelper& helper, RuleArguments const& policy) {
  for (auto const& key : policy.keys) {
    helper.addRule(key, {}, policy.policyData, policy.classData);
  }
}

HOT(update_a_rule)(PolicyMapTest::AclHelper& helper, RuleArguments const& policy) {
  for (auto const& key : policy.keys) {
    helper.updateAction(key, {}, policy.policyData, policy.classData);
  }
}

HOT(find_a_rule)(PolicyMapTest::AclPolicyData const& record, RuleArguments const& policy) {
  for (auto const& key : policy.keys) {
    sink = sink + record.ruleAction1(key);
  }
}

HOT(delete_a_rule)(PolicyMapTest::AclHelper& helper, RuleArguments const& policy) {
  helper.deletePolicy(policy.policyData, PolicyMap::ClassMapMatchOption::ipv4);
}

int main() {
  auto const option = PolicyMap::ClassMapMatchOption::ipv4;
  RuleArguments const policy;
  Kor::GenericRef const generic = Kor::construct("PolicyMapTest::AclHelper", true, false);
  Kor::AttributeName const pseudoAsync("pseudoAsync");
  Kor::AttributeName const commit("commitPolicy");
  generic.call("createPolicy", policy.policyData, option);
  hot_read_by_kept_name(generic, pseudoAsync);
  hot_write_by_kept_name(generic, pseudoAsync);
  hot_call_by_kept_name(generic, commit, policy);

  hot_write_with_one_observer(*Bench::lampWith(1));
  hot_write_with_64_observers(*Bench::lampWith(64));

  std::vector<Kor::String> texts;
  texts.reserve(repeats);
  for (auto const& key : policy.keys) {
    texts.push_back(valueToStrep(key));
  }
  hot_print_a_key(policy);
  hot_parse_a_key(texts);

  auto const helper = PolicyMapTest::aclHelperFactory(true, false);
  helper->createPolicy(policy.policyData, option);
  hot_add_a_rule(*helper, policy);
  hot_update_a_rule(*helper, policy);
  hot_find_a_rule(*helper->testData({policy.policyData->policyKey(), option}), policy);
  hot_delete_a_rule(*helper, policy);
  return sink == 0 ? 1 : 0;
}
