// SPDX-License-Identifier: Apache-2.0
#pragma once

// ForwardingHelper<Base>: a helper whose operations all go through one function, around(). Test
// doubles derive from it and override around() or single operations, so that the operations are
// listed only here.
//
//   class Counting final : public ForwardingHelper<PolicyMapTest::AclHelper> {
//    public:
//     using ForwardingHelper::ForwardingHelper;
//     std::map<std::string_view, int> calls;
//
//    protected:
//     void around(HelperCall& call, Proceed const& proceed) override {
//       ++calls[call.operation];
//       proceed();
//     }
//   };
//
// Base is a helper, or PolicyMap::PolicyMapAclHelper itself, whose operations do nothing and
// succeed.

#include <PolicyMap/PolicyMapAclHelper.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <type_traits>

namespace PolicyMapTestKit {

// One call of an operation: its arguments, absent if the operation does not have them, and its
// result. It holds no counted references, so an argument that the operation drops is not kept
// alive.
struct HelperCall {
  using PolicyData = PolicyMap::PolicyMapSmCommonData::PtrConst;
  using ClassData = PolicyMap::ClassMapSmCommonData::PtrConst;

  std::string_view operation;  // the name of the function
  PolicyData const* policy = nullptr;
  ClassData const* classData = nullptr;
  std::optional<PolicyMap::ClassMapMatchOption> option = {};  // for a rule, its option
  std::optional<Vorel::IntfId> intf = {};
  PolicyMap::AclRuleKey const* rule = nullptr;
  PolicyMap::SubRuleData const* subRule = nullptr;

  Kor::String error = {};
  std::uint64_t count = 0;  // the result of getCountForRule()
};

template <class Base>
class ForwardingHelper : public Base {
 public:
  using Base::Base;
  using PolicyData = HelperCall::PolicyData;
  using ClassData = HelperCall::ClassData;
  using Option = PolicyMap::ClassMapMatchOption;

  void hwInit() override {
    HelperCall call{.operation = "hwInit"};
    perform(call, [](auto& base) { base.Base::hwInit(); });
  }
  Kor::String createPolicy(PolicyData const& policyData, Option option) override {
    HelperCall call{.operation = "createPolicy", .policy = &policyData, .option = option};
    return perform(call,
                   [&](auto& base) { call.error = base.Base::createPolicy(policyData, option); });
  }
  Kor::String recreatePolicy(PolicyData const& policyData, Option option) override {
    HelperCall call{.operation = "recreatePolicy", .policy = &policyData, .option = option};
    return perform(call,
                   [&](auto& base) { call.error = base.Base::recreatePolicy(policyData, option); });
  }
  Kor::String deletePolicy(PolicyData const& policyData, Option option) override {
    HelperCall call{.operation = "deletePolicy", .policy = &policyData, .option = option};
    return perform(call,
                   [&](auto& base) { call.error = base.Base::deletePolicy(policyData, option); });
  }
  Kor::String commitPolicy(PolicyData const& policyData, Option option) override {
    HelperCall call{.operation = "commitPolicy", .policy = &policyData, .option = option};
    return perform(call,
                   [&](auto& base) { call.error = base.Base::commitPolicy(policyData, option); });
  }
  Kor::String addIntfToPolicy(PolicyData const& policyData, Vorel::IntfId intf,
                              Option option) override {
    HelperCall call{
        .operation = "addIntfToPolicy", .policy = &policyData, .option = option, .intf = intf};
    return perform(call, [&](auto& base) {
      call.error = base.Base::addIntfToPolicy(policyData, intf, option);
    });
  }
  Kor::String removeIntfFromPolicy(PolicyData const& policyData, Vorel::IntfId intf,
                                   Option option) override {
    HelperCall call{
        .operation = "removeIntfFromPolicy", .policy = &policyData, .option = option, .intf = intf};
    return perform(call, [&](auto& base) {
      call.error = base.Base::removeIntfFromPolicy(policyData, intf, option);
    });
  }
  Kor::String addRule(PolicyMap::AclRuleKey const& key, PolicyMap::SubRuleData const& subRule,
                      PolicyData const& policyData, ClassData const& classData) override {
    HelperCall call = ruleCall("addRule", key, policyData, classData);
    call.subRule = &subRule;
    return perform(call, [&](auto& base) {
      call.error = base.Base::addRule(key, subRule, policyData, classData);
    });
  }
  Kor::String beginUpdateActions(PolicyData const& policyData,
                                 ClassData const& classData) override {
    HelperCall call{
        .operation = "beginUpdateActions", .policy = &policyData, .classData = &classData};
    return perform(call, [&](auto& base) {
      call.error = base.Base::beginUpdateActions(policyData, classData);
    });
  }
  Kor::String updateAction(PolicyMap::AclRuleKey const& key, PolicyMap::SubRuleData const& subRule,
                           PolicyData const& policyData, ClassData const& classData) override {
    HelperCall call = ruleCall("updateAction", key, policyData, classData);
    call.subRule = &subRule;
    return perform(call, [&](auto& base) {
      call.error = base.Base::updateAction(key, subRule, policyData, classData);
    });
  }
  Kor::String endUpdateActions(PolicyData const& policyData, ClassData const& classData) override {
    HelperCall call{
        .operation = "endUpdateActions", .policy = &policyData, .classData = &classData};
    return perform(
        call, [&](auto& base) { call.error = base.Base::endUpdateActions(policyData, classData); });
  }
  std::uint64_t getCountForRule(PolicyMap::AclRuleKey const& key, PolicyData const& policyData,
                                ClassData const& classData) override {
    HelperCall call = ruleCall("getCountForRule", key, policyData, classData);
    perform(call, [&](auto& base) {
      call.count = base.Base::getCountForRule(key, policyData, classData);
    });
    return call.count;
  }

 protected:
  using Proceed = std::function<void()>;

  // Called in place of each operation. proceed() carries out the operation in Base and stores its
  // result in `call`. The caller receives the result in `call`.
  virtual void around(HelperCall& /*call*/, Proceed const& proceed) { proceed(); }

 private:
  static HelperCall ruleCall(std::string_view operation, PolicyMap::AclRuleKey const& key,
                             PolicyData const& policyData, ClassData const& classData) {
    return {.operation = operation,
            .policy = &policyData,
            .classData = &classData,
            .option = key.matchOption(),
            .rule = &key};
  }
  template <class Operation>
  Kor::String perform(HelperCall& call, Operation operation) {
    around(call, [&] {
      if constexpr (!std::is_abstract_v<Base>) {
        operation(static_cast<Base&>(*this));
      }
    });
    return call.error;
  }
};

}  // namespace PolicyMapTestKit
