// SPDX-License-Identifier: Apache-2.0
//
// Paths that are run often, each in a function hot_NAME of its own that repeats it `repeats` times.
// bench/instructions.py counts their instructions.

#include "helper/AclHelper.h"
#include "machines/TestClassCommonData.h"

#include <Kor/ByName.h>
#include <Kor/Collection.h>
#include <Kor/Entity.h>
#include <PolicyMap/AclRuleKey.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr std::uint32_t repeats = 1000;
volatile std::uint64_t sink = 0;

class Lamp : public Kor::Entity {
 public:
  class NotifieeConst;
  static constexpr Kor::AttributeId brightnessId = 258;

  Lamp() : Entity("lamp") {}
  [[nodiscard]] Kor::KorType const* fwkType() const override { return _fwkType(); }
  [[nodiscard]] static Kor::KorType* _fwkType() {
    static Kor::KorType type("Bench::Lamp", Entity::_fwkType());
    return &type;
  }
  void brightnessIs(int brightness);

 private:
  int brightness_ = 0;
};

class Lamp::NotifieeConst : public Kor::NotifieeOf<Lamp, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  virtual void onBrightness() {}
};

void Lamp::brightnessIs(int brightness) {
  if (brightness_ != brightness) {
    brightness_ = brightness;
    attributeChanged<Lamp>(brightnessId, &Lamp::NotifieeConst::onBrightness);
  }
}

class CountingNotifiee : public Lamp::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  void onBrightness() override { sink = sink + 1; }
};

Kor::Ptr<Lamp> lampWith(int observers) {
  auto lamp = Kor::make<Lamp>();
  for (int number = 0; number < observers; ++number) {
    static_cast<void>(Kor::make<CountingNotifiee>(lamp.get()));
  }
  return lamp;
}

struct Policy {
  Kor::Ptr<Acl::Config> acls = Kor::make<Acl::Config>();
  PolicyMap::PolicyMapSmCommonData::Ptr policyData =
      Kor::make<PolicyMap::PolicyMapSmCommonData>(PolicyMap::PolicyMapSmKey("policy", "input"));
  PolicyMapTest::TestClassCommonData::Ptr classData =
      Kor::make<PolicyMapTest::TestClassCommonData>("class", nullptr, acls);
  std::vector<PolicyMap::AclRuleKey> keys;

  Policy() {
    auto const list = acls->ipAclIs("acl");
    for (std::uint32_t seqno = 1; seqno <= repeats; ++seqno) {
      Acl::IpRuleConfig rule;
      rule.protocolIs(6);
      rule.dstPortIs(Acl::PortMatch::eq(seqno));
      list->ruleIs(seqno, rule);
      keys.emplace_back("class", "acl", seqno, PolicyMap::ClassMapMatchOption::ipv4);
    }
  }
};

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
(Kor::GenericRef const& helper, Kor::AttributeName const& name, Policy const& policy) {
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

HOT(print_a_key)(Policy const& policy) {
  for (auto const& key : policy.keys) {
    sink = sink + valueToStrep(key).length();
  }
}

HOT(parse_a_key)(std::vector<Kor::String> const& texts) {
  for (Kor::String const& text : texts) {
    sink = sink + Kor::strepToValue<PolicyMap::AclRuleKey>(text).seqno();
  }
}

HOT(add_a_rule)(PolicyMapTest::AclHelper& helper, Policy const& policy) {
  for (auto const& key : policy.keys) {
    helper.addRule(key, {}, policy.policyData, policy.classData);
  }
}

HOT(update_a_rule)(PolicyMapTest::AclHelper& helper, Policy const& policy) {
  for (auto const& key : policy.keys) {
    helper.updateAction(key, {}, policy.policyData, policy.classData);
  }
}

HOT(find_a_rule)(PolicyMapTest::AclPolicyData const& record, Policy const& policy) {
  for (auto const& key : policy.keys) {
    sink = sink + record.ruleAction1(key);
  }
}

HOT(delete_a_rule)(PolicyMapTest::AclHelper& helper, Policy const& policy) {
  helper.deletePolicy(policy.policyData, PolicyMap::ClassMapMatchOption::ipv4);
}

int main() {
  auto const option = PolicyMap::ClassMapMatchOption::ipv4;
  Policy const policy;
  Kor::GenericRef const generic = Kor::construct("PolicyMapTest::AclHelper", true, false);
  Kor::AttributeName const pseudoAsync("pseudoAsync");
  Kor::AttributeName const commit("commitPolicy");
  generic.call("createPolicy", policy.policyData, option);
  hot_read_by_kept_name(generic, pseudoAsync);
  hot_write_by_kept_name(generic, pseudoAsync);
  hot_call_by_kept_name(generic, commit, policy);

  hot_write_with_one_observer(*lampWith(1));
  hot_write_with_64_observers(*lampWith(64));

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
