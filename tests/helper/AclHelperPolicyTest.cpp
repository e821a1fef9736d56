// SPDX-License-Identifier: Apache-2.0

// The helper's operations on whole policies.

#include "helper/HelperFixture.h"
#include "support/CaughtAssertion.h"
#include "support/Death.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using PolicyMap::PolicyMapSmCommonData;
using PolicyMapTest::AclHelper;
using PolicyMapTest::AclPolicyData;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using TestSupport::assertionOf;

using Watcher = HelperWatcher<AclHelper::NotifieeConst>;

class AclHelperPolicy : public HelperFixture {
 protected:
  std::vector<std::string> intfs(Option option) const {
    std::vector<std::string> names;
    for (auto const& entry : record(option)->intfIteratorConst()) {
      EXPECT_TRUE(entry.value());
      names.push_back(entry.key().name().stdString());
    }
    return names;
  }
  // Lists one interface for each of the four options.
  void listInterfaces() {
    policy->intf4Is(e1, true);
    policy->intf6Is(e2, true);
    policy->intfMacIs(e3, true);
    policy->intfMplsIs(e4, true);
  }
  // Puts something into every part of the record.
  void fill(AclPolicyData& data) {
    data.ruleMatchIs(rule(Option::ipv4, 1), ip);
    data.ruleMatch6Is(rule(Option::ipv6, 2), ip6);
    data.ruleMatchMacIs(rule(Option::mac, 3), mac);
    data.subRulesForKeyIs(rule(Option::ipv4, 1));
    data.ruleAction1Is(rule(Option::ipv4, 1), 1);
    data.ruleAction2Is(rule(Option::ipv4, 1), 2);
    data.ruleAction3Is(rule(Option::ipv4, 1), 3);
    data.intfIs(e1, true);
  }
  static void expectEmpty(AclPolicyData const& data) {
    EXPECT_EQ(data.ruleMatchs(), 0U);
    EXPECT_EQ(data.ruleMatch6s(), 0U);
    EXPECT_EQ(data.ruleMatchMacs(), 0U);
    EXPECT_EQ(data.subRulesForKeys(), 0U);
    EXPECT_EQ(data.ruleAction1s(), 0U);
    EXPECT_EQ(data.ruleAction2s(), 0U);
    EXPECT_EQ(data.ruleAction3s(), 0U);
    EXPECT_EQ(data.intfs(), 0U);
  }
};
using AclHelperPolicyDeathTest = AclHelperPolicy;

// createPolicy

TEST_F(AclHelperPolicy, CreatingMakesACreatedRecordAndAnnouncesIt) {
  watched();
  EXPECT_EQ(helper->createPolicy(policy, Option::ipv4), "");
  ASSERT_TRUE(record(Option::ipv4));
  EXPECT_TRUE(record(Option::ipv4)->created());
  EXPECT_EQ(record(Option::ipv4)->createCount(), 1U);
  EXPECT_EQ(record(Option::ipv4)->commitCount(), 0U);
  EXPECT_FALSE(record(Option::ipv4)->dirty());
  EXPECT_THAT(journal, ElementsAre("w: testData pm"));
  EXPECT_EQ(helper->testDatas(), 1U);
}

TEST_F(AclHelperPolicy, CreatingUsesTheRecordThatIsThere) {
  AclPolicyData::Ptr const data = helper->newTestData(type(Option::ipv4));
  watched();
  helper->createPolicy(policy, Option::ipv4);
  EXPECT_EQ(record(Option::ipv4), data);
  EXPECT_TRUE(data->created());
  EXPECT_THAT(journal, IsEmpty());
}

TEST_F(AclHelperPolicy, CreatingRecordsTheInterfacesOfItsOptionAlone) {
  listInterfaces();
  helper->createPolicy(policy, Option::ipv4);
  helper->createPolicy(policy, Option::ipv6);
  helper->createPolicy(policy, Option::mac);
  helper->createPolicy(policy, Option::mpls);
  EXPECT_THAT(intfs(Option::ipv4), ElementsAre("Ethernet3/1"));
  EXPECT_THAT(intfs(Option::ipv6), ElementsAre("Ethernet3/2"));
  EXPECT_THAT(intfs(Option::mac), ElementsAre("Ethernet3/3"));
  EXPECT_THAT(intfs(Option::mpls), ElementsAre("Ethernet3/4"));
}

TEST_F(AclHelperPolicy, CreatingForAnyOtherOptionRecordsTheInterfacesOfMpls) {
  listInterfaces();
  for (int const number : {4, 1000, -1}) {
    helper->createPolicy(policy, Option{number});
    EXPECT_THAT(intfs(Option{number}), ElementsAre("Ethernet3/4")) << number;
  }
}

TEST_F(AclHelperPolicy, AnInterfaceListedWithFalseIsRecordedLikeAnyOther) {
  policy->intf4Is(e1, false);
  policy->intf4Is(e2, true);
  helper->createPolicy(policy, Option::ipv4);
  EXPECT_THAT(intfs(Option::ipv4), UnorderedElementsAre("Ethernet3/1", "Ethernet3/2"));
}

TEST_F(AclHelperPolicy, AFailingCreateHasCreated) {
  policy->intf4Is(e1, true);
  helper->createErrorIs("x");
  EXPECT_EQ(helper->createPolicy(policy, Option::ipv4), "x");
  EXPECT_TRUE(record(Option::ipv4)->created());
  EXPECT_EQ(record(Option::ipv4)->createCount(), 1U);
  EXPECT_THAT(intfs(Option::ipv4), ElementsAre("Ethernet3/1"));
}

TEST_F(AclHelperPolicy, CreatingAnswersTheTextAsItIsAtTheEnd) {
  Watcher& watcher = watched();
  watcher.reactionIs([&] {
    watcher.reactionIs({});
    helper->createErrorIs("late");
  });
  EXPECT_EQ(helper->createPolicy(policy, Option::ipv4), "late");
}

TEST_F(AclHelperPolicy, CreatingOutlivesAHookThatDropsTheHelper) {
  Watcher& watcher = watched();
  helper->createErrorIs("x");
  helper->addIntfErrorIs("y");
  watcher.reactionIs([&] { helper = nullptr; });
  AclHelper* const dying = helper.get();
  EXPECT_EQ(dying->createPolicy(policy, Option::ipv4), "x");
}

TEST_F(AclHelperPolicy, CreatingNeverAnswersAsynchronously) {
  helper->asyncOperationsIs(true);
  helper->pseudoAsyncIs(true);
  helper->createErrorIs("x");
  EXPECT_EQ(helper->createPolicy(policy, Option::ipv4), "x");
  EXPECT_EQ(helper->asyncError(), "");
}

TEST_F(AclHelperPolicyDeathTest, CreatingTwiceIsAFault) {
  helper->createPolicy(policy, Option::ipv4);
  EXPECT_ASSERTION(helper->createPolicy(policy, Option::ipv4), "PolicyMapTestSm",
                   "!data->created()", "helper/AclHelper.cpp");
}

struct Leftover {
  char const* assertion;
  std::function<void(AclPolicyData&)> leave;
};
std::vector<Leftover> const& leftovers() {
  using Option = HelperFixture::Option;
  static auto const key = HelperFixture::rule(Option::ipv4, 1);
  static std::vector<Leftover> const all{
      {"data->ruleMatchs() == 0", [](auto& data) { data.ruleMatchIs(key, {}); }},
      {"data->ruleMatch6s() == 0", [](auto& data) { data.ruleMatch6Is(key, {}); }},
      {"data->ruleMatchMacs() == 0", [](auto& data) { data.ruleMatchMacIs(key, {}); }},
      {"data->ruleAction1s() == 0", [](auto& data) { data.ruleAction1Is(key, 0); }},
      {"data->ruleAction2s() == 0", [](auto& data) { data.ruleAction2Is(key, 0); }},
      {"data->ruleAction3s() == 0", [](auto& data) { data.ruleAction3Is(key, 0); }},
  };
  return all;
}

TEST_F(AclHelperPolicyDeathTest, CreatingOnLeftoverRulesOrActionsIsAFault) {
  for (Leftover const& leftover : leftovers()) {
    SCOPED_TRACE(leftover.assertion);
    helper->testDataDelAll();
    leftover.leave(*helper->newTestData(type(Option::ipv4)));
    EXPECT_ASSERTION(helper->createPolicy(policy, Option::ipv4), "PolicyMapTestSm",
                     leftover.assertion, "helper/AclHelper.cpp");
  }
}

TEST_F(AclHelperPolicy, LeftoversAreLookedForInTheirOrderAndAfterTheRecording) {
  auto const create = [&] { helper->createPolicy(policy, Option::ipv4); };
  auto const data = helper->newTestData(type(Option::ipv4));
  std::uint32_t count = 0;
  // In reverse order: each leftover is found before those that are already present.
  for (auto leftover = leftovers().rbegin(); leftover != leftovers().rend(); ++leftover) {
    leftover->leave(*data);
    EXPECT_EQ(assertionOf(create), std::string("PolicyMapTestSm: ") + leftover->assertion);
    EXPECT_TRUE(data->created());
    EXPECT_EQ(data->createCount(), ++count);
    data->createdIs(false);
  }
  data->createdIs(true);
  EXPECT_EQ(assertionOf(create), "PolicyMapTestSm: !data->created()");
  EXPECT_EQ(data->createCount(), count);
}

TEST_F(AclHelperPolicy, LeftoverInterfacesAndSubRulesAreNoFault) {
  auto const data = helper->newTestData(type(Option::ipv4));
  data->intfIs(e1, true);
  data->subRulesForKeyIs(rule(Option::ipv4, 1));
  EXPECT_EQ(helper->createPolicy(policy, Option::ipv4), "");
  EXPECT_THAT(intfs(Option::ipv4), ElementsAre("Ethernet3/1"));
  EXPECT_EQ(data->subRulesForKeys(), 1U);
}

// deletePolicy

TEST_F(AclHelperPolicy, DeletingEmptiesTheRecordAndKeepsItsCounts) {
  helper->createPolicy(policy, Option::ipv4);
  auto const data = record(Option::ipv4);
  fill(*data);
  data->dirtyIs(true);
  data->commitCountIs(3);
  data->beginUpdateActionCountIs(4);
  data->endUpdateActionCountIs(5);
  EXPECT_EQ(helper->deletePolicy(policy, Option::ipv4), "");
  EXPECT_EQ(record(Option::ipv4), data);
  EXPECT_FALSE(data->created());
  expectEmpty(*data);
  EXPECT_TRUE(data->dirty());
  EXPECT_EQ(data->createCount(), 1U);
  EXPECT_EQ(data->commitCount(), 3U);
  EXPECT_EQ(data->beginUpdateActionCount(), 4U);
  EXPECT_EQ(data->endUpdateActionCount(), 5U);
}

TEST_F(AclHelperPolicy, AFailingDeleteHasDeleted) {
  helper->createPolicy(policy, Option::ipv4);
  fill(*record(Option::ipv4));
  helper->deleteErrorIs("x");
  EXPECT_EQ(helper->deletePolicy(policy, Option::ipv4), "x");
  EXPECT_FALSE(record(Option::ipv4)->created());
  expectEmpty(*record(Option::ipv4));
}

TEST_F(AclHelperPolicy, DeletingNeverAnswersAsynchronously) {
  helper->createPolicy(policy, Option::ipv4);
  helper->asyncOperationsIs(true);
  helper->deleteErrorIs("x");
  EXPECT_EQ(helper->deletePolicy(policy, Option::ipv4), "x");
  EXPECT_EQ(helper->asyncError(), "");
}

TEST_F(AclHelperPolicy, DeletingTouchesTheRecordOfItsOptionAlone) {
  helper->createPolicy(policy, Option::ipv4);
  helper->createPolicy(policy, Option::ipv6);
  helper->deletePolicy(policy, Option::ipv6);
  EXPECT_TRUE(record(Option::ipv4)->created());
}

TEST_F(AclHelperPolicy, CreatingAfterADeleteCountsOn) {
  helper->createPolicy(policy, Option::ipv4);
  helper->deletePolicy(policy, Option::ipv4);
  helper->createPolicy(policy, Option::ipv4);
  EXPECT_EQ(record(Option::ipv4)->createCount(), 2U);
  EXPECT_TRUE(record(Option::ipv4)->created());
}

TEST_F(AclHelperPolicyDeathTest, DeletingWithoutARecordIsAFault) {
  EXPECT_ASSERTION(helper->deletePolicy(policy, Option::ipv4), "PolicyMapTestSm", "data",
                   "helper/AclHelper.cpp");
}

TEST_F(AclHelperPolicyDeathTest, DeletingWhatIsNotCreatedIsAFault) {
  helper->newTestData(type(Option::ipv4));
  EXPECT_ASSERTION(helper->deletePolicy(policy, Option::ipv4), "PolicyMapTestSm", "data->created()",
                   "helper/AclHelper.cpp");
}

// recreatePolicy

TEST_F(AclHelperPolicy, ReCreatingEmptiesAndCreatesAndAnswersForTheCreation) {
  policy->intf4Is(e2, true);
  helper->createPolicy(policy, Option::ipv4);
  fill(*record(Option::ipv4));
  helper->deleteErrorIs("deleted");
  helper->createErrorIs("created");
  EXPECT_EQ(helper->recreatePolicy(policy, Option::ipv4), "created");
  auto const data = record(Option::ipv4);
  EXPECT_TRUE(data->created());
  EXPECT_EQ(data->createCount(), 2U);
  EXPECT_THAT(intfs(Option::ipv4), ElementsAre("Ethernet3/2"));
  data->intfDelAll();
  expectEmpty(*data);
}

TEST_F(AclHelperPolicy, ReCreatingHidesTheTextOfTheDelete) {
  helper->createPolicy(policy, Option::ipv4);
  helper->deleteErrorIs("deleted");
  EXPECT_EQ(helper->recreatePolicy(policy, Option::ipv4), "");
}

TEST_F(AclHelperPolicy, ReCreatingNeverAnswersAsynchronously) {
  helper->createPolicy(policy, Option::ipv4);
  helper->asyncOperationsIs(true);
  helper->createErrorIs("x");
  EXPECT_EQ(helper->recreatePolicy(policy, Option::ipv4), "x");
  EXPECT_EQ(helper->asyncError(), "");
}

class DerivedHelper : public AclHelper {
 public:
  using AclHelper::AclHelper;
  std::vector<std::string> calls;

  Kor::String createPolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                           PolicyMap::ClassMapMatchOption matchOption) override {
    calls.emplace_back("create");
    AclHelper::createPolicy(policyData, matchOption);
    return "derived create";
  }
  Kor::String deletePolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                           PolicyMap::ClassMapMatchOption matchOption) override {
    calls.emplace_back("delete");
    AclHelper::deletePolicy(policyData, matchOption);
    return "derived delete";
  }
};

TEST_F(AclHelperPolicy, ReCreatingGoesThroughTheOverridesOfADerivedHelper) {
  auto const derived = Kor::make<DerivedHelper>(false, false);
  derived->createPolicy(policy, Option::ipv4);
  EXPECT_EQ(derived->recreatePolicy(policy, Option::ipv4), "derived create");
  EXPECT_THAT(derived->calls, ElementsAre("create", "delete", "create"));
}

// Throws inside one of the operations of a re-creation: after the deletion, or before the creation.
class ThrowingHelper : public AclHelper {
 public:
  using AclHelper::AclHelper;
  bool throwsInDeletion = false;
  bool throwsInCreation = false;

  Kor::String createPolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                           PolicyMap::ClassMapMatchOption matchOption) override {
    if (throwsInCreation) {
      throw std::runtime_error("lost the card");
    }
    return AclHelper::createPolicy(policyData, matchOption);
  }
  Kor::String deletePolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                           PolicyMap::ClassMapMatchOption matchOption) override {
    Kor::String const error = AclHelper::deletePolicy(policyData, matchOption);
    if (throwsInDeletion) {
      throw std::runtime_error("lost the card");
    }
    return error;
  }
};

TEST_F(AclHelperPolicy, ReCreatingLeavesThePolicyCreatedIfTheDeletionInsideThrows) {
  auto const throwing = Kor::make<ThrowingHelper>(false, false);
  throwing->createPolicy(policy, Option::ipv4);
  throwing->throwsInDeletion = true;
  EXPECT_THROW(throwing->recreatePolicy(policy, Option::ipv4), std::runtime_error);
  auto const data = throwing->testData(type(Option::ipv4));
  ASSERT_TRUE(data->created());
  EXPECT_EQ(data->createCount(), 1U);
  throwing->throwsInDeletion = false;
  EXPECT_EQ(throwing->recreatePolicy(policy, Option::ipv4), "");
  EXPECT_EQ(data->createCount(), 2U);
}

TEST_F(AclHelperPolicy, ReCreatingLeavesThePolicyCreatedIfTheCreationInsideThrows) {
  auto const throwing = Kor::make<ThrowingHelper>(false, false);
  throwing->createPolicy(policy, Option::ipv4);
  throwing->throwsInCreation = true;
  EXPECT_THROW(throwing->recreatePolicy(policy, Option::ipv4), std::runtime_error);
  auto const data = throwing->testData(type(Option::ipv4));
  ASSERT_TRUE(data->created());
  EXPECT_EQ(data->createCount(), 1U);
  throwing->throwsInCreation = false;
  EXPECT_EQ(throwing->recreatePolicy(policy, Option::ipv4), "");
  EXPECT_EQ(data->createCount(), 2U);
}

TEST_F(AclHelperPolicyDeathTest, ReCreatingNeedsACreatedPolicy) {
  EXPECT_ASSERTION(helper->recreatePolicy(policy, Option::ipv4), "PolicyMapTestSm", "data",
                   "helper/AclHelper.cpp");
  helper->newTestData(type(Option::ipv4));
  EXPECT_ASSERTION(helper->recreatePolicy(policy, Option::ipv4), "PolicyMapTestSm",
                   "data->created()", "helper/AclHelper.cpp");
}

// commitPolicy

TEST_F(AclHelperPolicy, CommittingCountsAndCleans) {
  helper->createPolicy(policy, Option::ipv4);
  record(Option::ipv4)->dirtyIs(true);
  EXPECT_EQ(helper->commitPolicy(policy, Option::ipv4), "");
  EXPECT_EQ(record(Option::ipv4)->commitCount(), 1U);
  EXPECT_FALSE(record(Option::ipv4)->dirty());
  helper->commitPolicy(policy, Option::ipv4);
  EXPECT_EQ(record(Option::ipv4)->commitCount(), 2U);
}

TEST_F(AclHelperPolicy, AFailingCommitHasCountedAndCleaned) {
  helper->newTestData(type(Option::ipv4))->dirtyIs(true);
  helper->commitErrorIs("x");
  EXPECT_EQ(helper->commitPolicy(policy, Option::ipv4), "x");
  EXPECT_EQ(record(Option::ipv4)->commitCount(), 1U);
  EXPECT_FALSE(record(Option::ipv4)->dirty());
}

TEST_F(AclHelperPolicy, CommittingWhatIsNotCreatedIsAccepted) {
  helper->newTestData(type(Option::ipv4));
  EXPECT_EQ(helper->commitPolicy(policy, Option::ipv4), "");
  EXPECT_FALSE(record(Option::ipv4)->created());
  EXPECT_EQ(record(Option::ipv4)->commitCount(), 1U);
}

TEST_F(AclHelperPolicyDeathTest, CommittingWithoutARecordIsAFault) {
  EXPECT_ASSERTION(helper->commitPolicy(policy, Option::ipv4), "PolicyMapTestSm", "data",
                   "helper/AclHelper.cpp");
}

// interfaces

TEST_F(AclHelperPolicy, AddingAnInterfaceMakesARecordThatIsNotCreated) {
  watched();
  EXPECT_EQ(helper->addIntfToPolicy(policy, e1, Option::ipv4), "");
  EXPECT_THAT(journal, ElementsAre("w: testData pm"));
  EXPECT_FALSE(record(Option::ipv4)->created());
  EXPECT_EQ(record(Option::ipv4)->createCount(), 0U);
  EXPECT_THAT(intfs(Option::ipv4), ElementsAre("Ethernet3/1"));
}

TEST_F(AclHelperPolicy, AddingAnInterfaceTwiceRecordsItOnce) {
  helper->addIntfToPolicy(policy, e1, Option::ipv4);
  helper->addIntfToPolicy(policy, e1, Option::ipv4);
  EXPECT_THAT(intfs(Option::ipv4), ElementsAre("Ethernet3/1"));
}

TEST_F(AclHelperPolicy, AFailingAddOfAnInterfaceHasAdded) {
  helper->addIntfErrorIs("x");
  EXPECT_EQ(helper->addIntfToPolicy(policy, e1, Option::ipv4), "x");
  EXPECT_THAT(intfs(Option::ipv4), ElementsAre("Ethernet3/1"));
}

TEST_F(AclHelperPolicy, AddingAnInterfaceOutlivesAHookThatDropsTheHelper) {
  Watcher& watcher = watched();
  helper->addIntfErrorIs("x");
  watcher.reactionIs([&] { helper = nullptr; });
  AclHelper* const dying = helper.get();
  EXPECT_EQ(dying->addIntfToPolicy(policy, e1, Option::ipv4), "x");
}

TEST_F(AclHelperPolicy, AddingAnInterfaceLeavesThePolicysOwnSetsAlone) {
  helper->addIntfToPolicy(policy, e1, Option::ipv4);
  EXPECT_EQ(policy->intf4s(), 0U);
}

TEST_F(AclHelperPolicy, RemovingAnInterfaceForgetsIt) {
  helper->addIntfToPolicy(policy, e1, Option::ipv4);
  helper->addIntfToPolicy(policy, e2, Option::ipv4);
  EXPECT_EQ(helper->removeIntfFromPolicy(policy, e1, Option::ipv4), "");
  EXPECT_THAT(intfs(Option::ipv4), ElementsAre("Ethernet3/2"));
  EXPECT_EQ(helper->removeIntfFromPolicy(policy, e1, Option::ipv4), "");
  EXPECT_THAT(intfs(Option::ipv4), ElementsAre("Ethernet3/2"));
}

TEST_F(AclHelperPolicy, AFailingRemovalOfAnInterfaceHasRemoved) {
  helper->addIntfToPolicy(policy, e1, Option::ipv4);
  helper->removeIntfErrorIs("x");
  EXPECT_EQ(helper->removeIntfFromPolicy(policy, e1, Option::ipv4), "x");
  EXPECT_EQ(record(Option::ipv4)->intfs(), 0U);
}

TEST_F(AclHelperPolicy, RemovingAnInterfaceWithoutARecordCreatesNone) {
  helper->removeIntfErrorIs("x");
  EXPECT_EQ(helper->removeIntfFromPolicy(policy, e1, Option::ipv4), "x");
  EXPECT_EQ(helper->testDatas(), 0U);
  helper->asyncOperationsIs(true);
  EXPECT_EQ(helper->removeIntfFromPolicy(policy, e1, Option::ipv4), "");
  EXPECT_EQ(helper->asyncError(), "x");
  EXPECT_EQ(helper->testDatas(), 0U);
}

// results

TEST_F(AclHelperPolicy, TextsArePassedOnByteForByte) {
  Kor::String8 const text(std::string_view("%s\0\n\xff", 5));
  helper->createErrorIs(text);
  helper->deleteErrorIs(text);
  helper->commitErrorIs(text);
  helper->addIntfErrorIs(text);
  helper->removeIntfErrorIs(text);
  EXPECT_EQ(helper->createPolicy(policy, Option::ipv4), text);
  EXPECT_EQ(helper->addIntfToPolicy(policy, e1, Option::ipv4), text);
  EXPECT_EQ(helper->removeIntfFromPolicy(policy, e1, Option::ipv4), text);
  EXPECT_EQ(helper->commitPolicy(policy, Option::ipv4), text);
  EXPECT_EQ(helper->deletePolicy(policy, Option::ipv4), text);
}

TEST_F(AclHelperPolicyDeathTest, ANullPolicyEndsTheProcessByThePointersOwnAssertion) {
  EXPECT_ASSERTION(helper->createPolicy(nullptr, Option::ipv4), "Kor/Ptr", "object_ != nullptr",
                   "Kor/Ptr.h");
  EXPECT_ASSERTION(helper->deletePolicy(nullptr, Option::ipv4), "Kor/Ptr", "object_ != nullptr",
                   "Kor/Ptr.h");
  EXPECT_ASSERTION(helper->commitPolicy(nullptr, Option::ipv4), "Kor/Ptr", "object_ != nullptr",
                   "Kor/Ptr.h");
  EXPECT_ASSERTION(helper->addIntfToPolicy(nullptr, e1, Option::ipv4), "Kor/Ptr",
                   "object_ != nullptr", "Kor/Ptr.h");
  EXPECT_ASSERTION(helper->removeIntfFromPolicy(nullptr, e1, Option::ipv4), "Kor/Ptr",
                   "object_ != nullptr", "Kor/Ptr.h");
}

}  // namespace
