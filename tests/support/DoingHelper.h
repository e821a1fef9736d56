// SPDX-License-Identifier: Apache-2.0
#pragma once

// DoingHelper: a recording helper that writes down its calls, and does something, once, inside the
// operation of a name, before it is carried out. What is done may throw.

#include "helper/AclHelper.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

using PolicyMap::ClassMapMatchOption;
using Deed = std::function<void()>;

// Calls a deed once, the first time that it is due.
inline void once(Deed& deed) {
  if (deed) {
    std::exchange(deed, nullptr)();
  }
}

// Does something inside the operation of that name, before it is carried out.
class DoingHelper final : public PolicyMapTest::AclHelper {
  using PolicyData = PolicyMap::PolicyMapSmCommonData::PtrConst;
  using ClassData = PolicyMap::ClassMapSmCommonData::PtrConst;

 public:
  using AclHelper::AclHelper;

  void doInside(std::string operation, Deed deed) {
    operation_ = std::move(operation);
    deed_ = std::move(deed);
  }
  // Whether it was done.
  [[nodiscard]] bool doneInside() const { return !deed_; }
  [[nodiscard]] std::vector<std::string> const& calls() const { return calls_; }
  void forgetCalls() { calls_.clear(); }

  void hwInit() override { called("hwInit"); }
  Kor::String createPolicy(PolicyData const& data, ClassMapMatchOption option) override {
    called("createPolicy");
    return AclHelper::createPolicy(data, option);
  }
  Kor::String recreatePolicy(PolicyData const& data, ClassMapMatchOption option) override {
    called("recreatePolicy");
    return AclHelper::recreatePolicy(data, option);
  }
  Kor::String deletePolicy(PolicyData const& data, ClassMapMatchOption option) override {
    called("deletePolicy");
    return AclHelper::deletePolicy(data, option);
  }
  Kor::String commitPolicy(PolicyData const& data, ClassMapMatchOption option) override {
    called("commitPolicy");
    return AclHelper::commitPolicy(data, option);
  }
  Kor::String addIntfToPolicy(PolicyData const& data, Vorel::IntfId where,
                              ClassMapMatchOption option) override {
    called("addIntfToPolicy");
    return AclHelper::addIntfToPolicy(data, where, option);
  }
  Kor::String removeIntfFromPolicy(PolicyData const& data, Vorel::IntfId where,
                                   ClassMapMatchOption option) override {
    called("removeIntfFromPolicy");
    return AclHelper::removeIntfFromPolicy(data, where, option);
  }
  Kor::String addRule(PolicyMap::AclRuleKey const& key, PolicyMap::SubRuleData const& subRule,
                      PolicyData const& policy, ClassData const& data) override {
    called("addRule");
    return AclHelper::addRule(key, subRule, policy, data);
  }
  Kor::String beginUpdateActions(PolicyData const& policy, ClassData const& data) override {
    called("beginUpdateActions");
    return AclHelper::beginUpdateActions(policy, data);
  }
  Kor::String updateAction(PolicyMap::AclRuleKey const& key, PolicyMap::SubRuleData const& subRule,
                           PolicyData const& policy, ClassData const& data) override {
    called("updateAction");
    Kor::String answer = AclHelper::updateAction(key, subRule, policy, data);
    updateActionErrorIs("");  // what is set inside fails one call
    return answer;
  }
  Kor::String endUpdateActions(PolicyData const& policy, ClassData const& data) override {
    called("endUpdateActions");
    return AclHelper::endUpdateActions(policy, data);
  }
  std::uint64_t getCountForRule(PolicyMap::AclRuleKey const& key, PolicyData const& policy,
                                ClassData const& data) override {
    called("getCountForRule");
    return AclHelper::getCountForRule(key, policy, data);
  }

 private:
  void called(std::string const& operation) {
    calls_.push_back(operation);
    if (operation == operation_) {
      once(deed_);
    }
  }

  std::string operation_;
  Deed deed_;
  std::vector<std::string> calls_;
};

}  // namespace TestSupport
