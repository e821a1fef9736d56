// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "helper/AclHelper.h"
#include "machines/TestClassCommonData.h"
#include "support/Watcher.h"

#include <PolicyMap/ClassMapTypeConfig.h>

#include <gtest/gtest.h>

#include <cstdint>

// Records every notification of a helper.
template <class Notifiee>
class HelperWatcher : public TestSupport::Watcher<Notifiee> {
 public:
  using TestSupport::Watcher<Notifiee>::Watcher;
  void onAsyncOperationResult() override { this->heard("result"); }
  void onAsyncTrigger() override { this->heard("asyncTrigger"); }
  void onAsyncError() override { this->heard("asyncError"); }
  void onPseudoAsync() override { this->heard("pseudoAsync"); }
  void onTestData(PolicyMapTest::AclPolicyType key) override {
    this->heard("testData " + key.policyKey().first().stdString());
  }
  void onCreateError() override { this->heard("createError"); }
  void onDeleteError() override { this->heard("deleteError"); }
  void onCommitError() override { this->heard("commitError"); }
  void onAddIntfError() override { this->heard("addIntfError"); }
  void onRemoveIntfError() override { this->heard("removeIntfError"); }
  void onAddRuleError() override { this->heard("addRuleError"); }
  void onUpdateActionError() override { this->heard("updateActionError"); }
  void onRangeCheckerError() override { this->heard("rangeCheckerError"); }
};

// A helper, one policy "pm" in direction "input", and one class "web" with an IPv4 rule at place 1,
// an IPv6 rule at place 2 and a MAC rule at place 3. The values of its actions are 11, 12 and 13.
class HelperFixture : public testing::Test {
 public:
  using Option = PolicyMap::ClassMapMatchOption;

  static PolicyMap::AclRuleKey rule(Option option, std::uint32_t place) {
    return {"web", "", place, option};
  }
  static PolicyMap::SubRuleData subRule(std::uint32_t distinction = 0) {
    PolicyMap::SubRuleData data;
    data.distinctionIs(distinction);
    return data;
  }
  [[nodiscard]] PolicyMapTest::AclPolicyType type(Option option) const {
    return {policy->policyKey(), option};
  }
  [[nodiscard]] PolicyMapTest::AclPolicyData::Ptr record(Option option) const {
    return helper->testData(type(option));
  }

 protected:
  HelperFixture() {
    ip.permitIs(false);
    ip6.fragmentsIs(true);
    mac.mplsLabelIs(17);
    matches->matchIs(1, PolicyMap::ClassMapMatch::rule(ip));
    matches->matchIs(2, PolicyMap::ClassMapMatch::rule(ip6));
    matches->matchIs(3, PolicyMap::ClassMapMatch::rule(mac));
    classData->action1ValueIs(11);
    classData->action2ValueIs(12);
    classData->action3ValueIs(13);
  }

  // Watches the helper until the test ends.
  HelperWatcher<PolicyMapTest::AclHelper::NotifieeConst>& watched() {
    watcher_ = Kor::make<HelperWatcher<PolicyMapTest::AclHelper::NotifieeConst>>(journal, "w",
                                                                                 helper.get());
    return *watcher_;
  }
  void TearDown() override {
    if (watcher_) {
      watcher_->notifierIs(nullptr);
    }
  }

  TestSupport::Journal journal;
  Acl::IpRuleConfig ip;
  Acl::Ip6RuleConfig ip6;
  Acl::MacRuleConfig mac;
  PolicyMapTest::AclHelper::Ptr helper = PolicyMapTest::aclHelperFactory(false, false);
  PolicyMap::PolicyMapSmCommonData::Ptr policy =
      Kor::make<PolicyMap::PolicyMapSmCommonData>(PolicyMap::PolicyMapSmKey("pm", "input"));
  PolicyMap::ClassMapSubConfig::Ptr matches = Kor::make<PolicyMap::ClassMapSubConfig>("web");
  PolicyMapTest::TestClassCommonData::Ptr classData =
      Kor::make<PolicyMapTest::TestClassCommonData>("web", matches, nullptr);
  Vorel::IntfId const e1{"Ethernet3/1"};
  Vorel::IntfId const e2{"Ethernet3/2"};
  Vorel::IntfId const e3{"Ethernet3/3"};
  Vorel::IntfId const e4{"Ethernet3/4"};

 private:
  Kor::Ptr<HelperWatcher<PolicyMapTest::AclHelper::NotifieeConst>> watcher_;
};
