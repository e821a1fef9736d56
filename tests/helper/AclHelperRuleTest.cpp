// SPDX-License-Identifier: Apache-2.0

// The helper's operations on rules and their actions.

#include "helper/HelperFixture.h"
#include "support/CaughtAssertion.h"
#include "support/Death.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using PolicyMap::AclRuleKey;
using PolicyMap::ClassMapSmCommonData;
using PolicyMap::SubRuleData;
using PolicyMapTest::AclPolicyData;
using TestSupport::assertionOf;

class AclHelperRule : public HelperFixture {
 protected:
  AclRuleKey const key = rule(Option::ipv4, 1);

  Kor::String add(AclRuleKey const& ruleKey, SubRuleData const& data = subRule()) {
    return helper->addRule(ruleKey, data, policy, classData);
  }
  Kor::String update(AclRuleKey const& ruleKey, SubRuleData const& data = subRule()) {
    return helper->updateAction(ruleKey, data, policy, classData);
  }
  void actionsAre(std::uint32_t one, std::uint32_t two, std::uint32_t three) {
    classData->action1ValueIs(one);
    classData->action2ValueIs(two);
    classData->action3ValueIs(three);
  }
  static void expectActions(AclPolicyData const& data, AclRuleKey const& ruleKey, std::uint32_t one,
                            std::uint32_t two, std::uint32_t three) {
    EXPECT_EQ(data.ruleAction1(ruleKey), one);
    EXPECT_EQ(data.ruleAction2(ruleKey), two);
    EXPECT_EQ(data.ruleAction3(ruleKey), three);
  }
  static void expectNoRule(AclPolicyData const& data) {
    EXPECT_EQ(data.ruleMatchs() + data.ruleMatch6s() + data.ruleMatchMacs(), 0U);
    EXPECT_EQ(data.subRulesForKeys(), 0U);
    EXPECT_EQ(data.ruleAction1s() + data.ruleAction2s() + data.ruleAction3s(), 0U);
    EXPECT_FALSE(data.dirty());
  }
  static SubRuleData ranged(bool source, bool destination) {
    SubRuleData data;
    data.srcPortRangeIs(source);
    data.dstPortRangeIs(destination);
    return data;
  }
};
using AclHelperRuleDeathTest = AclHelperRule;

// addRule

TEST_F(AclHelperRule, AddingRecordsMatchSubRuleActionsAndDirt) {
  helper->createPolicy(policy, Option::ipv4);
  EXPECT_EQ(add(key), "");
  auto const data = record(Option::ipv4);
  EXPECT_EQ(data->ruleMatchs(), 1U);
  EXPECT_EQ(data->ruleMatch(key), ip);
  EXPECT_EQ(data->ruleMatch6s() + data->ruleMatchMacs(), 0U);
  EXPECT_EQ(data->subRulesForKeys(), 1U);
  ASSERT_TRUE(data->subRulesForKey(key));
  EXPECT_EQ(data->subRulesForKey(key)->subRules(), 1U);
  EXPECT_TRUE(data->subRulesForKey(key)->subRule(subRule()));
  expectActions(*data, key, 11, 12, 13);
  EXPECT_TRUE(data->dirty());
}

TEST_F(AclHelperRule, AnIpv6RuleIsRecordedAsSuch) {
  AclRuleKey const key6 = rule(Option::ipv6, 2);
  helper->createPolicy(policy, Option::ipv6);
  EXPECT_EQ(add(key6), "");
  auto const data = record(Option::ipv6);
  EXPECT_EQ(data->ruleMatch6s(), 1U);
  EXPECT_EQ(data->ruleMatch6(key6), ip6);
  EXPECT_EQ(data->ruleMatchs() + data->ruleMatchMacs(), 0U);
}

TEST_F(AclHelperRule, EveryOtherOptionIsRecordedAsAMacRule) {
  for (int const number : {2, 3, 4, -1}) {
    SCOPED_TRACE(number);
    AclRuleKey const macKey = rule(Option{number}, 3);
    helper->createPolicy(policy, Option{number});
    EXPECT_EQ(add(macKey), "");
    auto const data = record(Option{number});
    EXPECT_EQ(data->ruleMatchMacs(), 1U);
    EXPECT_EQ(data->ruleMatchMac(macKey), mac);
    EXPECT_EQ(data->ruleMatchs() + data->ruleMatch6s(), 0U);
  }
}

TEST_F(AclHelperRule, ARuleThatTheClassDoesNotKnowIsRecordedWithTheDefaultMatch) {
  helper->createPolicy(policy, Option::ipv4);
  AclRuleKey const unknown = rule(Option::ipv4, 99);
  EXPECT_EQ(add(unknown), "");
  EXPECT_EQ(record(Option::ipv4)->ruleMatchs(), 1U);
  EXPECT_EQ(record(Option::ipv4)->ruleMatch(unknown), Acl::IpRuleConfig());
}

TEST_F(AclHelperRule, AddingNeedsARecordButNoCreatedPolicy) {
  helper->newTestData(type(Option::ipv4));
  EXPECT_EQ(add(key), "");
  EXPECT_EQ(record(Option::ipv4)->ruleMatchs(), 1U);
  EXPECT_FALSE(record(Option::ipv4)->created());
}

TEST_F(AclHelperRule, AddingRecordsUnderTheOptionOfTheKey) {
  helper->createPolicy(policy, Option::ipv4);
  helper->createPolicy(policy, Option::ipv6);
  add(rule(Option::ipv6, 2));
  expectNoRule(*record(Option::ipv4));
}

TEST_F(AclHelperRule, ASecondSubRuleOfOneKeyIsAddedAndRewritesMatchAndActions) {
  helper->createPolicy(policy, Option::ipv4);
  add(key, subRule(1));
  actionsAre(21, 22, 23);
  ip.fragmentsIs(true);
  matches->matchIs(1, PolicyMap::ClassMapMatch::rule(ip));
  EXPECT_EQ(add(key, subRule(2)), "");
  auto const data = record(Option::ipv4);
  EXPECT_EQ(data->ruleMatchs(), 1U);
  EXPECT_EQ(data->ruleMatch(key), ip);
  EXPECT_EQ(data->subRulesForKeys(), 1U);
  EXPECT_EQ(data->subRulesForKey(key)->subRules(), 2U);
  expectActions(*data, key, 21, 22, 23);
}

TEST_F(AclHelperRule, ASubRuleWhoseFlagIsFalseMayBeAdded) {
  helper->createPolicy(policy, Option::ipv4);
  record(Option::ipv4)->subRulesForKeyIs(key)->subRuleIs(subRule(), false);
  EXPECT_EQ(add(key), "");
  EXPECT_TRUE(record(Option::ipv4)->subRulesForKey(key)->subRule(subRule()));
}

TEST_F(AclHelperRule, AddingIgnoresAsynchronousOperations) {
  helper->createPolicy(policy, Option::ipv4);
  helper->asyncOperationsIs(true);
  helper->addRuleErrorIs("a");
  EXPECT_EQ(add(key), "a");
  EXPECT_EQ(helper->asyncError(), "");
}

TEST_F(AclHelperRule, AnInjectedTextRefusesTheRuleBeforeAnythingIsRecorded) {
  helper->createPolicy(policy, Option::ipv4);
  helper->addRuleErrorIs("a");
  EXPECT_EQ(add(key), "a");
  EXPECT_EQ(add(key, ranged(true, true)), "a");
  expectNoRule(*record(Option::ipv4));
  helper->addRuleErrorIs("");
  EXPECT_EQ(add(key), "");
}

TEST_F(AclHelperRule, TheRangeCheckersTextComesFirstForASubRuleWithEitherRangeFlag) {
  helper->createPolicy(policy, Option::ipv4);
  helper->rangeCheckerErrorIs("r");
  helper->addRuleErrorIs("a");
  EXPECT_EQ(add(key, ranged(true, false)), "r");
  EXPECT_EQ(add(key, ranged(false, true)), "r");
  EXPECT_EQ(add(key, ranged(true, true)), "r");
  EXPECT_EQ(add(key, ranged(false, false)), "a");
  expectNoRule(*record(Option::ipv4));
}

TEST_F(AclHelperRule, TheRangeCheckersTextSparesASubRuleWithoutFlags) {
  helper->createPolicy(policy, Option::ipv4);
  helper->rangeCheckerErrorIs("r");
  EXPECT_EQ(add(key), "");
  EXPECT_EQ(add(key, ranged(true, false)), "r");
  EXPECT_EQ(record(Option::ipv4)->subRulesForKey(key)->subRules(), 1U);
}

TEST_F(AclHelperRule, InjectedTextsComeBeforeAnyAssertion) {
  helper->addRuleErrorIs("a");
  helper->rangeCheckerErrorIs("r");
  EXPECT_EQ(helper->addRule(key, subRule(), nullptr, nullptr), "a");
  EXPECT_EQ(helper->addRule(key, ranged(true, false), nullptr, nullptr), "r");
  EXPECT_EQ(helper->testDatas(), 0U);
}

TEST_F(AclHelperRuleDeathTest, AddingWithoutTestClassDataIsAFault) {
  helper->createPolicy(policy, Option::ipv4);
  EXPECT_ASSERTION(helper->addRule(key, subRule(), policy, nullptr), "PolicyMapTestSm",
                   "testClassData", "helper/AclHelper.cpp");
  auto const plain = Kor::make<ClassMapSmCommonData>("web", nullptr, nullptr);
  EXPECT_ASSERTION(helper->addRule(key, subRule(), policy, plain), "PolicyMapTestSm",
                   "testClassData", "helper/AclHelper.cpp");
}

TEST_F(AclHelperRuleDeathTest, AddingWithoutARecordIsAFault) {
  helper->createPolicy(policy, Option::ipv6);
  EXPECT_ASSERTION(add(key), "PolicyMapTestSm", "data", "helper/AclHelper.cpp");
}

TEST_F(AclHelperRuleDeathTest, AddingASubRuleTwiceIsAFault) {
  helper->createPolicy(policy, Option::ipv4);
  add(key);
  EXPECT_ASSERTION(add(key), "PolicyMapTestSm", "!subrules->subRule( subRule )",
                   "helper/AclHelper.cpp");
}

TEST_F(AclHelperRuleDeathTest, ANullPolicyEndsTheProcessByThePointersOwnAssertion) {
  EXPECT_ASSERTION(helper->addRule(key, subRule(), nullptr, classData), "Kor/Ptr",
                   "object_ != nullptr", "Kor/Ptr.h");
  EXPECT_ASSERTION(helper->updateAction(key, subRule(), nullptr, classData), "Kor/Ptr",
                   "object_ != nullptr", "Kor/Ptr.h");
  EXPECT_ASSERTION(helper->beginUpdateActions(nullptr, classData), "Kor/Ptr", "object_ != nullptr",
                   "Kor/Ptr.h");
  EXPECT_ASSERTION(helper->endUpdateActions(nullptr, classData), "Kor/Ptr", "object_ != nullptr",
                   "Kor/Ptr.h");
}

TEST_F(AclHelperRule, TheClassDataAreAssertedBeforeTheRecord) {
  EXPECT_EQ(assertionOf([&] { helper->addRule(key, subRule(), policy, nullptr); }),
            "PolicyMapTestSm: testClassData");
  EXPECT_EQ(assertionOf([&] { helper->updateAction(key, subRule(), policy, nullptr); }),
            "PolicyMapTestSm: testClassData");
}

TEST_F(AclHelperRule, TheMatchIsRecordedBeforeTheSubRuleIsAssertedAndTheActionsAfterIt) {
  helper->createPolicy(policy, Option::ipv4);
  add(key);
  auto const data = record(Option::ipv4);
  data->dirtyIs(false);
  actionsAre(21, 22, 23);
  ip.fragmentsIs(true);
  matches->matchIs(1, PolicyMap::ClassMapMatch::rule(ip));
  EXPECT_EQ(assertionOf([&] { add(key); }), "PolicyMapTestSm: !subrules->subRule( subRule )");
  EXPECT_EQ(data->ruleMatch(key), ip);
  expectActions(*data, key, 11, 12, 13);
  EXPECT_FALSE(data->dirty());
}

// updateAction

TEST_F(AclHelperRule, UpdatingRewritesTheActionsAlone) {
  helper->createPolicy(policy, Option::ipv4);
  add(key);
  auto const data = record(Option::ipv4);
  data->dirtyIs(false);
  ip.fragmentsIs(true);
  auto const old = data->ruleMatch(key);
  matches->matchIs(1, PolicyMap::ClassMapMatch::rule(ip));
  actionsAre(21, 22, 23);
  EXPECT_EQ(update(key), "");
  expectActions(*data, key, 21, 22, 23);
  EXPECT_EQ(data->ruleMatch(key), old);
  EXPECT_FALSE(data->dirty());
  EXPECT_EQ(data->subRulesForKey(key)->subRules(), 1U);
}

TEST_F(AclHelperRule, AFailingUpdateHasUpdated) {
  helper->createPolicy(policy, Option::ipv4);
  add(key);
  actionsAre(21, 22, 23);
  helper->updateActionErrorIs("u");
  EXPECT_EQ(update(key), "u");
  expectActions(*record(Option::ipv4), key, 21, 22, 23);
}

TEST_F(AclHelperRule, UpdatingConsultsNoOtherText) {
  helper->createPolicy(policy, Option::ipv4);
  add(key, ranged(true, true));
  helper->addRuleErrorIs("a");
  helper->rangeCheckerErrorIs("r");
  EXPECT_EQ(update(key, ranged(true, true)), "");
}

TEST_F(AclHelperRule, UpdatingDoesNotAskWhetherItIsSupported) {
  helper->createPolicy(policy, Option::ipv4);
  add(key);
  helper->updateActionSupportedIs(false);
  EXPECT_EQ(update(key), "");
  helper->updateActionSupportedIs(true);
  EXPECT_EQ(update(key), "");
}

TEST_F(AclHelperRule, UpdatingIgnoresAsynchronousOperations) {
  helper->createPolicy(policy, Option::ipv4);
  add(key);
  helper->asyncOperationsIs(true);
  helper->updateActionErrorIs("u");
  EXPECT_EQ(update(key), "u");
  EXPECT_EQ(helper->asyncError(), "");
}

TEST_F(AclHelperRule, UpdatingAnMplsRuleWithoutSubRulesSucceeds) {
  AclRuleKey const mpls = rule(Option::mpls, 3);
  helper->createPolicy(policy, Option::mpls);
  EXPECT_EQ(update(mpls), "");
  expectActions(*record(Option::mpls), mpls, 11, 12, 13);
  EXPECT_EQ(record(Option::mpls)->subRulesForKeys(), 0U);
}

TEST_F(AclHelperRuleDeathTest, UpdatingWithoutTestClassDataIsAFault) {
  helper->createPolicy(policy, Option::ipv4);
  EXPECT_ASSERTION(helper->updateAction(key, subRule(), policy, nullptr), "PolicyMapTestSm",
                   "testClassData", "helper/AclHelper.cpp");
  auto const plain = Kor::make<ClassMapSmCommonData>("web", nullptr, nullptr);
  EXPECT_ASSERTION(helper->updateAction(key, subRule(), policy, plain), "PolicyMapTestSm",
                   "testClassData", "helper/AclHelper.cpp");
}

TEST_F(AclHelperRuleDeathTest, UpdatingWhatIsMissingOrNotCreatedIsAFault) {
  EXPECT_ASSERTION(update(key), "PolicyMapTestSm", "data && data->created()",
                   "helper/AclHelper.cpp");
  helper->newTestData(type(Option::ipv4));
  EXPECT_ASSERTION(update(key), "PolicyMapTestSm", "data && data->created()",
                   "helper/AclHelper.cpp");
}

TEST_F(AclHelperRuleDeathTest, UpdatingARuleWithoutSubRulesIsAFaultForAllOptionsButMpls) {
  for (int const number : {0, 1, 2, 4, -1}) {
    SCOPED_TRACE(number);
    helper->createPolicy(policy, Option{number});
    EXPECT_ASSERTION(update(rule(Option{number}, 1)), "PolicyMapTestSm", "subRules",
                     "helper/AclHelper.cpp");
  }
}

TEST_F(AclHelperRuleDeathTest, UpdatingASubRuleThatWasNotAddedIsAFault) {
  helper->createPolicy(policy, Option::ipv4);
  add(key, subRule(1));
  EXPECT_ASSERTION(update(key, subRule(2)), "PolicyMapTestSm", "subRules->subRule( subRule )",
                   "helper/AclHelper.cpp");
  record(Option::ipv4)->subRulesForKey(key)->subRuleIs(subRule(2), false);
  EXPECT_ASSERTION(update(key, subRule(2)), "PolicyMapTestSm", "subRules->subRule( subRule )",
                   "helper/AclHelper.cpp");
}

TEST_F(AclHelperRule, UpdatingWritesBeforeItAssertsTheSubRuleAndMakesNone) {
  helper->createPolicy(policy, Option::ipv4);
  EXPECT_EQ(assertionOf([&] { update(key); }), "PolicyMapTestSm: subRules");
  expectActions(*record(Option::ipv4), key, 11, 12, 13);
  EXPECT_EQ(record(Option::ipv4)->subRulesForKeys(), 0U);
}

// beginUpdateActions, endUpdateActions

TEST_F(AclHelperRule, ABracketCountsOnEveryCreatedRecordOfThePolicy) {
  helper->createPolicy(policy, Option::ipv4);
  helper->createPolicy(policy, Option::mac);
  helper->newTestData(type(Option::ipv6));
  EXPECT_EQ(helper->beginUpdateActions(policy, classData), "");
  EXPECT_EQ(record(Option::ipv4)->beginUpdateActionCount(), 1U);
  EXPECT_EQ(record(Option::mac)->beginUpdateActionCount(), 1U);
  EXPECT_EQ(record(Option::ipv6)->beginUpdateActionCount(), 0U);
  EXPECT_EQ(record(Option::ipv4)->endUpdateActionCount(), 0U);
  EXPECT_EQ(helper->endUpdateActions(policy, classData), "");
  EXPECT_EQ(helper->endUpdateActions(policy, classData), "");
  EXPECT_EQ(record(Option::ipv4)->endUpdateActionCount(), 2U);
  EXPECT_EQ(record(Option::mac)->endUpdateActionCount(), 2U);
  EXPECT_EQ(record(Option::ipv6)->endUpdateActionCount(), 0U);
  EXPECT_EQ(record(Option::ipv4)->beginUpdateActionCount(), 1U);
  EXPECT_FALSE(record(Option::mpls));
  EXPECT_EQ(helper->testDatas(), 3U);
}

TEST_F(AclHelperRule, ABracketKnowsTheFourOptionsOnly) {
  helper->createPolicy(policy, Option{4});
  helper->createPolicy(policy, Option{-1});
  helper->beginUpdateActions(policy, classData);
  helper->endUpdateActions(policy, classData);
  EXPECT_EQ(record(Option{4})->beginUpdateActionCount(), 0U);
  EXPECT_EQ(record(Option{-1})->endUpdateActionCount(), 0U);
}

TEST_F(AclHelperRule, ABracketOfOnePolicyLeavesOthersAlone) {
  auto const other =
      Kor::make<PolicyMap::PolicyMapSmCommonData>(PolicyMap::PolicyMapSmKey("pm", "output"));
  helper->createPolicy(policy, Option::ipv4);
  helper->createPolicy(other, Option::ipv4);
  helper->beginUpdateActions(other, classData);
  EXPECT_EQ(record(Option::ipv4)->beginUpdateActionCount(), 0U);
}

TEST_F(AclHelperRule, ABracketAsksNothingOfTheClassData) {
  helper->createPolicy(policy, Option::ipv4);
  EXPECT_EQ(helper->beginUpdateActions(policy, nullptr), "");
  EXPECT_EQ(helper->endUpdateActions(policy, nullptr), "");
  EXPECT_EQ(record(Option::ipv4)->beginUpdateActionCount(), 1U);
  EXPECT_EQ(record(Option::ipv4)->endUpdateActionCount(), 1U);
}

TEST_F(AclHelperRule, ABracketHasNoInjectedText) {
  helper->createPolicy(policy, Option::ipv4);
  helper->updateActionErrorIs("u");
  helper->asyncOperationsIs(true);
  EXPECT_EQ(helper->beginUpdateActions(policy, classData), "");
  EXPECT_EQ(helper->endUpdateActions(policy, classData), "");
  EXPECT_EQ(helper->asyncError(), "");
}

// getCountForRule

TEST_F(AclHelperRule, EveryRuleHasTheCountTen) {
  EXPECT_EQ(helper->getCountForRule(key, policy, classData), 10U);
  EXPECT_EQ(helper->getCountForRule(key, nullptr, nullptr), 10U);
  EXPECT_EQ(helper->testDatas(), 0U);
  helper->createPolicy(policy, Option::ipv4);
  add(key);
  EXPECT_EQ(helper->getCountForRule(key, policy, classData), 10U);
}

}  // namespace
