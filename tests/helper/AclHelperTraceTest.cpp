// SPDX-License-Identifier: Apache-2.0

// The helper's trace lines, byte for byte.

#include "helper/HelperFixture.h"
#include "support/CaughtAssertion.h"
#include "support/TraceRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::assertionOf;
using TestSupport::TraceRecorder;

class AclHelperTrace : public HelperFixture {
 protected:
  std::string const policyArguments =
      "(const PolicyMap::PolicyMapSmCommonData::PtrConst&, PolicyMap::ClassMapMatchOption)";
  std::string const intfArguments =
      "(const PolicyMap::PolicyMapSmCommonData::PtrConst&, Vorel::IntfId, "
      "PolicyMap::ClassMapMatchOption)";
  std::string const ruleArguments = "(const PolicyMap::AclRuleKey&, const PolicyMap::SubRuleData&, "
                                    "const PolicyMap::PolicyMapSmCommonData::PtrConst&, "
                                    "const PolicyMap::ClassMapSmCommonData::PtrConst&)";
  std::string const classArguments = "(const PolicyMap::PolicyMapSmCommonData::PtrConst&, "
                                     "const PolicyMap::ClassMapSmCommonData::PtrConst&)";
  std::string const keyText =
      "Value('PolicyMap::PolicyMapSmKey', ** {'first': 'pm', 'second': 'input'})";
  std::string const ruleText =
      "Value('PolicyMap::AclRuleKey', ** {'className': 'web', 'aclName': '', 'seqno': 1, "
      "'matchOption': 'ipv4'})";
  std::string const subRuleText =
      "Value('PolicyMap::SubRuleData', ** {'srcPortLow': 0, 'srcPortHigh': 65535, 'dstPortLow': 0, "
      "'dstPortHigh': 65535, 'distinction': 0, 'srcPortRange': False, 'dstPortRange': False})";

  static std::string entry(std::string const& rest) { return "PolicyMapTestSm|8|" + rest; }
  static std::string operation(std::string const& rest) {
    return entry("virtual Kor::String PolicyMapTest::AclHelper::" + rest);
  }
};

TEST_F(AclHelperTrace, EachPolicyOperationSaysWhatItIsGiven) {
  TraceRecorder const trace("PolicyMapTestSm", 8);
  helper->createPolicy(policy, Option::ipv4);
  helper->commitPolicy(policy, Option::ipv4);
  helper->addIntfToPolicy(policy, e1, Option::ipv4);
  helper->removeIntfFromPolicy(policy, e1, Option::ipv4);
  helper->deletePolicy(policy, Option::ipv4);
  std::string const given = ": policyData=" + keyText;
  EXPECT_THAT(
      trace.lines(),
      ElementsAre(operation("createPolicy" + policyArguments + given + ", matchOption=ipv4"),
                  operation("commitPolicy" + policyArguments + given + ", matchOption=ipv4"),
                  operation("addIntfToPolicy" + intfArguments + given +
                            ", intf=Ethernet3/1, matchOption=ipv4"),
                  operation("removeIntfFromPolicy" + intfArguments + given +
                            ", intf=Ethernet3/1, matchOption=ipv4"),
                  operation("deletePolicy" + policyArguments + given + ", matchOption=ipv4")));
}

TEST_F(AclHelperTrace, ReCreatingTracesItselfTheDeleteAndTheCreate) {
  helper->createPolicy(policy, Option::mac);
  TraceRecorder const trace("PolicyMapTestSm", 8);
  helper->recreatePolicy(policy, Option::mac);
  std::string const given = policyArguments + ": policyData=" + keyText + ", matchOption=mac";
  EXPECT_THAT(trace.lines(),
              ElementsAre(operation("recreatePolicy" + given), operation("deletePolicy" + given),
                          operation("createPolicy" + given)));
}

TEST_F(AclHelperTrace, OptionsAreBareNamesOrNumbers) {
  TraceRecorder trace("PolicyMapTestSm", 8);
  std::vector<std::string> options;
  for (int const number : {0, 1, 2, 3, 4, -1}) {
    helper->createPolicy(policy, Option{number});
    std::string const line = trace.take().at(0);
    options.push_back(line.substr(line.find("matchOption=")));
  }
  EXPECT_THAT(options, ElementsAre("matchOption=ipv4", "matchOption=ipv6", "matchOption=mac",
                                   "matchOption=mpls", "matchOption=4", "matchOption=-1"));
}

TEST_F(AclHelperTrace, EachRuleOperationSaysWhatItIsGiven) {
  helper->createPolicy(policy, Option::ipv4);
  TraceRecorder const trace("PolicyMapTestSm", 8);
  auto const key = rule(Option::ipv4, 1);
  helper->addRule(key, subRule(), policy, classData);
  helper->updateAction(key, subRule(), policy, classData);
  helper->getCountForRule(key, policy, classData);
  std::string const data = ", policyCommonData=" + keyText + ", classCommonData=web";
  EXPECT_THAT(trace.lines(),
              ElementsAre(operation("addRule" + ruleArguments + ": key=" + ruleText +
                                    ", subRule=" + subRuleText + data),
                          operation("updateAction" + ruleArguments + ": key=" + ruleText +
                                    ", subRuleData=" + subRuleText + data),
                          entry("virtual uint64_t PolicyMapTest::AclHelper::getCountForRule("
                                "const PolicyMap::AclRuleKey&, "
                                "const PolicyMap::PolicyMapSmCommonData::PtrConst&, "
                                "const PolicyMap::ClassMapSmCommonData::PtrConst&): key=" +
                                ruleText + data)));
}

TEST_F(AclHelperTrace, ABracketCountsAtLevelFiveBehindItsOwnLine) {
  helper->createPolicy(policy, Option::mac);
  helper->createPolicy(policy, Option::ipv4);
  helper->newTestData(type(Option::ipv6));
  helper->beginUpdateActions(policy, classData);
  TraceRecorder const trace("PolicyMapTestSm", 8);
  helper->beginUpdateActions(policy, classData);
  helper->endUpdateActions(policy, classData);
  std::string const given = ": policyCommonData=" + keyText + ", classCommonData=web";
  auto const counted = [&](char const* what, char const* option, int count) {
    return std::string("PolicyMapTestSm|5|") + what + " update count for " + keyText + " - web[" +
           option + "] is now " + std::to_string(count);
  };
  EXPECT_THAT(trace.lines(), ElementsAre(operation("beginUpdateActions" + classArguments + given),
                                         counted("begin", "ipv4", 2), counted("begin", "mac", 2),
                                         operation("endUpdateActions" + classArguments + given),
                                         counted("end", "ipv4", 1), counted("end", "mac", 1)));
}

TEST_F(AclHelperTrace, LevelFiveShowsTheCountsAlone) {
  helper->createPolicy(policy, Option::mpls);
  TraceRecorder const trace("PolicyMapTestSm", 5);
  helper->beginUpdateActions(policy, classData);
  EXPECT_THAT(trace.lines(), ElementsAre("PolicyMapTestSm|5|begin update count for " + keyText +
                                         " - web[mpls] is now 1"));
}

TEST_F(AclHelperTrace, AnAsynchronousOperationTracesItsScheduleAndDelivery) {
  helper->newTestData(type(Option::ipv4));
  helper->asyncOperationsIs(true);
  helper->pseudoAsyncIs(true);
  helper->commitErrorIs("bad, 'very' %s");
  TraceRecorder const trace("PolicyMapTestSm", 8);
  helper->commitPolicy(policy, Option::ipv4);
  EXPECT_THAT(trace.lines(),
              ElementsAre(operation("commitPolicy" + policyArguments + ": policyData=" + keyText +
                                    ", matchOption=ipv4"),
                          entry("void PolicyMapTest::AclHelper::scheduleAsyncResult(Kor::String): "
                                "error=bad, 'very' %s"),
                          entry("void PolicyMapTest::AclHelper::handleAsyncTrigger()")));
}

TEST_F(AclHelperTrace, NullPointersAreNoneAndTheLineComesBeforeTheAssertion) {
  TraceRecorder trace("PolicyMapTestSm", 8);
  auto const key = rule(Option::ipv4, 1);
  std::string const none = ": policyData=None";
  std::string const noData = ", policyCommonData=None, classCommonData=None";
  std::string const null = "Kor/Ptr: object_ != nullptr";
  std::string const noClass = "PolicyMapTestSm: testClassData";

  EXPECT_EQ(assertionOf([&] { helper->createPolicy(nullptr, Option::ipv4); }), null);
  EXPECT_EQ(assertionOf([&] { helper->recreatePolicy(nullptr, Option::ipv4); }), null);
  EXPECT_EQ(assertionOf([&] { helper->commitPolicy(nullptr, Option::ipv4); }), null);
  EXPECT_THAT(
      trace.take(),
      ElementsAre(operation("createPolicy" + policyArguments + none + ", matchOption=ipv4"),
                  operation("recreatePolicy" + policyArguments + none + ", matchOption=ipv4"),
                  operation("deletePolicy" + policyArguments + none + ", matchOption=ipv4"),
                  operation("commitPolicy" + policyArguments + none + ", matchOption=ipv4")));

  EXPECT_EQ(assertionOf([&] { helper->addIntfToPolicy(nullptr, e1, Option::ipv4); }), null);
  EXPECT_EQ(assertionOf([&] { helper->removeIntfFromPolicy(nullptr, e1, Option::ipv4); }), null);
  EXPECT_THAT(trace.take(), ElementsAre(operation("addIntfToPolicy" + intfArguments + none +
                                                  ", intf=Ethernet3/1, matchOption=ipv4"),
                                        operation("removeIntfFromPolicy" + intfArguments + none +
                                                  ", intf=Ethernet3/1, matchOption=ipv4")));

  EXPECT_EQ(assertionOf([&] { helper->addRule(key, subRule(), nullptr, nullptr); }), noClass);
  EXPECT_EQ(assertionOf([&] { helper->updateAction(key, subRule(), nullptr, nullptr); }), noClass);
  EXPECT_EQ(assertionOf([&] { helper->beginUpdateActions(nullptr, nullptr); }), null);
  EXPECT_EQ(assertionOf([&] { helper->endUpdateActions(nullptr, nullptr); }), null);
  EXPECT_EQ(assertionOf([&] { helper->getCountForRule(key, nullptr, nullptr); }), "none");
  EXPECT_THAT(trace.take(),
              ElementsAre(operation("addRule" + ruleArguments + ": key=" + ruleText +
                                    ", subRule=" + subRuleText + noData),
                          operation("updateAction" + ruleArguments + ": key=" + ruleText +
                                    ", subRuleData=" + subRuleText + noData),
                          operation("beginUpdateActions" + classArguments +
                                    ": policyCommonData=None, classCommonData=None"),
                          operation("endUpdateActions" + classArguments +
                                    ": policyCommonData=None, classCommonData=None"),
                          testing::EndsWith(": key=" + ruleText + noData)));
  EXPECT_EQ(helper->testDatas(), 0U);
}

TEST_F(AclHelperTrace, ACountWithoutClassDataSaysNone) {
  helper->createPolicy(policy, Option::ipv4);
  TraceRecorder const trace("PolicyMapTestSm", 5);
  helper->beginUpdateActions(policy, nullptr);
  EXPECT_THAT(trace.lines(), ElementsAre("PolicyMapTestSm|5|begin update count for " + keyText +
                                         " - None[ipv4] is now 1"));
}

TEST_F(AclHelperTrace, TheEntryLineComesBeforeAnyEffect) {
  helper->newTestData(type(Option::ipv4));
  std::vector<std::uint32_t> commits;
  Kor::traceLevelIs("PolicyMapTestSm", 8);
  Kor::TraceSink const previous = Kor::traceSinkIs(
      [&](auto, int, auto) { commits.push_back(record(Option::ipv4)->commitCount()); });
  helper->commitPolicy(policy, Option::ipv4);
  Kor::traceSinkIs(previous);
  Kor::traceLevelIs("PolicyMapTestSm", 0);
  EXPECT_THAT(commits, ElementsAre(0));
}

TEST_F(AclHelperTrace, EverythingElseIsSilent) {
  TraceRecorder const trace("PolicyMapTestSm", 9);
  helper->hwInit();
  helper->commitErrorIs("x");
  helper->asyncErrorIs("x");
  helper->pseudoAsyncIs(true);
  helper->testDataIs(type(Option::ipv4))->ruleAction1Is(rule(Option::ipv4, 1), 1);
  helper->testDataDelAll();
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(AclHelperTrace, BelowItsLevelNothingIsWritten) {
  TraceRecorder const trace("PolicyMapTestSm", 7);
  helper->createPolicy(policy, Option::ipv4);
  helper->addRule(rule(Option::ipv4, 1), subRule(), policy, classData);
  helper->scheduleAsyncResult("x");
  helper->handleAsyncTrigger();
  EXPECT_THAT(trace.lines(), IsEmpty());
}

}  // namespace
