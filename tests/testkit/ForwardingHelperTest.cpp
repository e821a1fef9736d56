// SPDX-License-Identifier: Apache-2.0
#include "testkit/ForwardingHelper.h"

#include "helper/HelperFixture.h"
#include "testkit/Printers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace {

using PolicyMapTestKit::ForwardingHelper;
using PolicyMapTestKit::HelperCall;
using testing::Each;
using testing::ElementsAre;

// Lists the calls and carries them out.
template <class Base>
class Listing final : public ForwardingHelper<Base> {
 public:
  using ForwardingHelper<Base>::ForwardingHelper;
  std::vector<std::string> calls;

 protected:
  void around(HelperCall& call, typename Listing::Proceed const& proceed) override {
    calls.emplace_back(call.operation);
    proceed();
  }
};

class Forwarding : public HelperFixture {
 protected:
  // Calls each operation once, in an order that the recording helper accepts.
  std::vector<Kor::String> callAll(PolicyMap::PolicyMapAclHelper& on) {
    Option const option = Option::ipv4;
    auto const key = rule(option, 1);
    on.hwInit();
    return {on.createPolicy(policy, option),
            on.addRule(key, subRule(), policy, classData),
            on.addIntfToPolicy(policy, e1, option),
            on.removeIntfFromPolicy(policy, e1, option),
            on.commitPolicy(policy, option),
            on.beginUpdateActions(policy, classData),
            on.updateAction(key, subRule(), policy, classData),
            on.endUpdateActions(policy, classData),
            on.recreatePolicy(policy, option),
            on.deletePolicy(policy, option)};
  }
};

TEST_F(Forwarding, EachOperationIsCarriedOutAndReturnsItsResult) {
  auto const listing = Kor::make<Listing<PolicyMapTest::AclHelper>>(true, false);
  listing->createErrorIs("create");
  listing->addIntfErrorIs("add");
  listing->removeIntfErrorIs("remove");
  listing->commitErrorIs("commit");
  listing->updateActionErrorIs("update");
  listing->deleteErrorIs("delete");
  EXPECT_THAT(callAll(*listing), ElementsAre("create", "", "add", "remove", "commit", "", "update",
                                             "", "create", "delete"));
  EXPECT_THAT(listing->calls,
              ElementsAre("hwInit", "createPolicy", "addRule", "addIntfToPolicy",
                          "removeIntfFromPolicy", "commitPolicy", "beginUpdateActions",
                          "updateAction", "endUpdateActions", "recreatePolicy", "deletePolicy",
                          "createPolicy", "deletePolicy"));
  auto const record = listing->testData(type(Option::ipv4));
  EXPECT_EQ(record->createCount(), 2U);
  EXPECT_EQ(record->beginUpdateActionCount(), 1U);
  EXPECT_EQ(record->endUpdateActionCount(), 1U);
  EXPECT_EQ(listing->getCountForRule(rule(Option::ipv4, 1), policy, classData), 10U);
}

TEST_F(Forwarding, WithoutAHelperBelowEachOperationSucceeds) {
  auto const listing = Kor::make<Listing<PolicyMap::PolicyMapAclHelper>>();
  EXPECT_THAT(callAll(*listing), Each(Kor::String()));
  EXPECT_EQ(listing->calls.size(), 11U);
  EXPECT_EQ(listing->getCountForRule(rule(Option::ipv4, 1), policy, classData), 0U);
}

// Stores the last call instead of carrying it out, and returns a result of its own.
class Keeping final : public ForwardingHelper<PolicyMapTest::AclHelper> {
 public:
  using ForwardingHelper::ForwardingHelper;
  HelperCall last;

 protected:
  void around(HelperCall& call, Proceed const& /*proceed*/) override {
    call.error = "kept";
    last = call;
  }
};

TEST_F(Forwarding, ACallThatDoesNotProceedDoesNothing) {
  auto const keeping = Kor::make<Keeping>(true, false);
  EXPECT_THAT(callAll(*keeping), Each(Kor::String("kept")));
  EXPECT_EQ(keeping->testDatas(), 0U);
}

TEST_F(Forwarding, ACallHasTheArgumentsOfItsOperationAndNoOthers) {
  auto const keeping = Kor::make<Keeping>(true, false);
  PolicyMap::PolicyMapSmCommonData::PtrConst const policyData = policy;
  PolicyMap::ClassMapSmCommonData::PtrConst const data = classData;
  keeping->addIntfToPolicy(policyData, e1, Option::ipv4);
  EXPECT_EQ(keeping->last.policy, &policyData);
  EXPECT_EQ(keeping->last.classData, nullptr);
  EXPECT_EQ(keeping->last.option, Option::ipv4);
  EXPECT_EQ(keeping->last.intf, e1);
  EXPECT_EQ(keeping->last.rule, nullptr);
  auto const key = rule(Option::mac, 3);
  auto const ports = subRule();
  keeping->updateAction(key, ports, policyData, data);
  EXPECT_EQ(keeping->last.classData, &data);
  EXPECT_EQ(keeping->last.option, Option::mac);
  EXPECT_EQ(keeping->last.intf, std::nullopt);
  EXPECT_EQ(keeping->last.rule, &key);
  EXPECT_EQ(keeping->last.subRule, &ports);
}

}  // namespace
