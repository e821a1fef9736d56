// SPDX-License-Identifier: Apache-2.0
#include "helper/AclHelper.h"

#include "helper/HelperFixture.h"
#include "support/VirtualSlot.h"
#include "support/Watcher.h"

#include <Kor/KorAttr.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using PolicyMap::ClassMapMatchOption;
using PolicyMap::PolicyMapAclHelper;
using PolicyMap::PolicyMapSmKey;
using PolicyMapTest::AclHelper;
using PolicyMapTest::aclHelperFactory;
using PolicyMapTest::AclPolicyData;
using PolicyMapTest::AclPolicyType;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::UnorderedElementsAre;
using TestSupport::Journal;
using TestSupport::virtualSlotOf;

using Watcher = HelperWatcher<AclHelper::NotifieeConst>;

AclPolicyType policy(char const* name) {
  return {PolicyMapSmKey(name, "input"), ClassMapMatchOption::ipv4};
}

// factory and defaults

TEST(AclHelperFactory, TakesTheUpdateOfActionsFirstAndTheExpansionOfPortChannelsSecond) {
  auto const updates = aclHelperFactory(true, false);
  EXPECT_TRUE(updates->updateActionSupported());
  EXPECT_FALSE(updates->expandPortChannels());
  auto const expands = aclHelperFactory(false, true);
  EXPECT_FALSE(expands->updateActionSupported());
  EXPECT_TRUE(expands->expandPortChannels());
}

TEST(AclHelperFactory, MakesACountedHelper) {
  EXPECT_EQ(aclHelperFactory(false, false)->references(), 1U);
}

TEST(AclHelper, StartsWithoutTextsAndRecords) {
  auto const helper = aclHelperFactory(false, false);
  EXPECT_EQ(helper->asyncTrigger(), 0U);
  EXPECT_FALSE(helper->pseudoAsync());
  EXPECT_EQ(helper->asyncError(), "");
  EXPECT_EQ(helper->createError(), "");
  EXPECT_EQ(helper->deleteError(), "");
  EXPECT_EQ(helper->commitError(), "");
  EXPECT_EQ(helper->addIntfError(), "");
  EXPECT_EQ(helper->removeIntfError(), "");
  EXPECT_EQ(helper->addRuleError(), "");
  EXPECT_EQ(helper->updateActionError(), "");
  EXPECT_EQ(helper->rangeCheckerError(), "");
  EXPECT_EQ(helper->testDatas(), 0U);
}

// Hooks that are not overridden ignore every change, and the next notifiee is still notified.
template <class Notifiee>
void expectHooksOfItsOwnPassBy() {
  auto const helper = aclHelperFactory(true, false);
  auto const plain = Kor::make<Notifiee>(helper.get());
  Journal journal;
  auto const watcher = Kor::make<Watcher>(journal, "w", helper.get());
  helper->asyncTriggerInc(1);
  helper->asyncErrorIs("e");
  helper->pseudoAsyncIs(true);
  helper->testDataIs(policy("pm"));
  helper->createErrorIs("e");
  helper->deleteErrorIs("e");
  helper->commitErrorIs("e");
  helper->addIntfErrorIs("e");
  helper->removeIntfErrorIs("e");
  helper->addRuleErrorIs("e");
  helper->updateActionErrorIs("e");
  helper->rangeCheckerErrorIs("e");
  EXPECT_THAT(journal,
              IsSupersetOf({"w: asyncTrigger", "w: asyncError", "w: pseudoAsync", "w: testData pm",
                            "w: createError", "w: deleteError", "w: commitError", "w: addIntfError",
                            "w: removeIntfError", "w: addRuleError", "w: updateActionError",
                            "w: rangeCheckerError"}));
  plain->notifierIs(nullptr);
  watcher->notifierIs(nullptr);
}

TEST(AclHelper, HooksThatAreNotOverriddenDoNothing) {
  expectHooksOfItsOwnPassBy<AclHelper::NotifieeConst>();
  expectHooksOfItsOwnPassBy<AclHelper::Notifiee>();
}

TEST(AclHelper, KeepsTheBasesDefaultsOfOtherCapabilities) {
  auto const helper = aclHelperFactory(true, true);
  EXPECT_FALSE(helper->reprogramPolicyOnIntfChange());
  EXPECT_TRUE(helper->denyRulesAllowed());
  EXPECT_TRUE(helper->ttlSupported());
  EXPECT_FALSE(helper->onlyTtlEqSupported());
  EXPECT_TRUE(helper->ackOrRstSupported());
  EXPECT_TRUE(helper->establishedSupported());
  EXPECT_FALSE(helper->subRulesForL4Ports());
  EXPECT_FALSE(helper->asyncOperations());
  EXPECT_EQ(helper->asyncOperationResult(), PolicyMap::AsyncOperationResult("", 0.0));
}

TEST(AclHelper, InitialisingTheHardwareChangesNothing) {
  auto const helper = aclHelperFactory(true, false);
  Journal journal;
  auto const watcher = Kor::make<Watcher>(journal, "w", helper.get());
  helper->hwInit();
  EXPECT_THAT(journal, IsEmpty());
  EXPECT_EQ(helper->testDatas(), 0U);
  EXPECT_TRUE(helper->updateActionSupported());
}

// collection of records

class AclHelperRecords : public testing::Test {
 protected:
  // The helper notifies of its remaining records when it is destroyed.
  void TearDown() override { watcher->notifierIs(nullptr); }

  Journal journal;
  AclHelper::Ptr helper = aclHelperFactory(false, false);
  Kor::Ptr<Watcher> watcher = Kor::make<Watcher>(journal, "w", helper.get());
};

TEST_F(AclHelperRecords, ALookUpCreatesNothing) {
  EXPECT_FALSE(helper->testData(policy("a")));
  EXPECT_EQ(helper->testDatas(), 0U);
  EXPECT_THAT(journal, IsEmpty());
}

TEST_F(AclHelperRecords, AreMadeAndAnnouncedOnce) {
  AclPolicyData::Ptr const record = helper->testDataIs(policy("a"));
  ASSERT_TRUE(record);
  EXPECT_EQ(record->key(), policy("a"));
  EXPECT_THAT(journal, ElementsAre("w: testData a"));
  EXPECT_EQ(helper->testDataIs(policy("a")), record);
  EXPECT_EQ(helper->testData(policy("a")), record);
  EXPECT_THAT(journal, ElementsAre("w: testData a"));
  EXPECT_EQ(record->references(), 2U);
}

TEST_F(AclHelperRecords, AreOnePerKeyAndOption) {
  AclPolicyType const other(PolicyMapSmKey("a", "input"), ClassMapMatchOption::mpls);
  EXPECT_FALSE(helper->testDataIs(policy("a")) == helper->testDataIs(other));
  EXPECT_EQ(helper->testDatas(), 2U);
}

TEST_F(AclHelperRecords, AreAnnouncedWhenTheyAreInAndWhenTheyAreOut) {
  std::vector<bool> found;
  watcher->reactionIs([&] { found.push_back(bool(helper->testData(policy("a")))); });
  helper->testDataIs(policy("a"));
  helper->testDataDel(policy("a"));
  EXPECT_THAT(found, ElementsAre(true, false));
}

TEST_F(AclHelperRecords, ANewOneIsSilentAndEmpty) {
  AclPolicyData::Ptr const record = helper->newTestData(policy("a"));
  EXPECT_THAT(journal, IsEmpty());
  EXPECT_EQ(helper->testData(policy("a")), record);
  EXPECT_FALSE(record->created());
  EXPECT_EQ(record->createCount(), 0U);
}

TEST_F(AclHelperRecords, RemovingOneIsAnnouncedRemovingNoneIsNot) {
  AclPolicyData::Ptr const record = helper->newTestData(policy("a"));
  EXPECT_FALSE(helper->testDataDel(policy("b")));
  EXPECT_THAT(journal, IsEmpty());
  EXPECT_EQ(helper->testDataDel(policy("a")), record);
  EXPECT_THAT(journal, ElementsAre("w: testData a"));
  EXPECT_EQ(record->references(), 1U);
}

TEST_F(AclHelperRecords, TheKeyOfTheOneThatGoesMayNameIt) {
  helper->newTestData(policy("a"));
  helper->testDataDel(helper->testData(policy("a"))->key());
  EXPECT_THAT(journal, ElementsAre("w: testData a"));
  EXPECT_EQ(helper->testDatas(), 0U);
}

TEST_F(AclHelperRecords, AKeyThatGoesWithItsRecordIsAnnouncedToAll) {
  AclPolicyData* const record = helper->newTestData(policy("a")).get();
  auto const later = Kor::make<Watcher>(journal, "later", helper.get());
  watcher->reactionIs([&] {
    watcher->reactionIs(nullptr);
    helper->testDataDel(policy("a"));
  });
  helper->testDataNotify(record->key(), nullptr);
  EXPECT_THAT(journal, ElementsAre("w: testData a", "w: testData a", "later: testData a",
                                   "later: testData a"));
}

TEST_F(AclHelperRecords, RemovingAllIsAnnouncedOncePerRecord) {
  helper->newTestData(policy("a"));
  helper->newTestData(policy("b"));
  helper->newTestData(policy("c"));
  helper->testDataDelAll();
  EXPECT_THAT(journal, UnorderedElementsAre("w: testData a", "w: testData b", "w: testData c"));
  EXPECT_EQ(helper->testDatas(), 0U);
}

TEST_F(AclHelperRecords, RemovingAllAnnouncesEachWhileLaterOnesAreStillThere) {
  for (char const* const name : {"a", "b", "c"}) {
    helper->newTestData(policy(name));
  }
  std::vector<std::uint32_t> left;
  watcher->reactionIs([&] { left.push_back(helper->testDatas()); });
  helper->testDataDelAll();
  EXPECT_THAT(left, ElementsAre(2, 1, 0));
}

TEST_F(AclHelperRecords, AnnouncingOneChangesNothing) {
  helper->testDataNotify(policy("a"), nullptr);
  EXPECT_THAT(journal, ElementsAre("w: testData a"));
  EXPECT_EQ(helper->testDatas(), 0U);
}

TEST_F(AclHelperRecords, AnIteratorAnnouncesWhatItRemoves) {
  helper->newTestData(policy("a"));
  auto it = helper->testDataIterator();
  it.del();
  EXPECT_THAT(journal, ElementsAre("w: testData a"));
  EXPECT_EQ(helper->testDatas(), 0U);
}

TEST_F(AclHelperRecords, AnIteratorAnnouncesTheKeyOfTheRecordThatItIsTold) {
  AclPolicyData::Ptr const record = helper->newTestData(policy("a"));
  helper->testDataIterator().deleteNotify(record);
  EXPECT_THAT(journal, ElementsAre("w: testData a"));
  EXPECT_EQ(helper->testDatas(), 1U);
}

TEST_F(AclHelperRecords, AreWalkedByConstIterators) {
  helper->newTestData(policy("a"));
  helper->newTestData(policy("b"));
  std::vector<std::string> seen;
  AclHelper const& constant = *helper;
  for (auto const& entry : constant.testDataIteratorConst()) {
    AclPolicyData::PtrConst const value = entry.value();
    EXPECT_EQ(value->key(), entry.key());
    seen.push_back(entry.key().policyKey().first().stdString());
  }
  EXPECT_THAT(seen, UnorderedElementsAre("a", "b"));
}

TEST_F(AclHelperRecords, AHookThatRemovesTheNewRecordLeavesTheCallerWithAValidOne) {
  watcher->reactionIs([&] {
    watcher->reactionIs({});
    helper->testDataDel(policy("a"));
  });
  AclPolicyData::Ptr const record = helper->testDataIs(policy("a"));
  ASSERT_TRUE(record);
  EXPECT_EQ(record->references(), 1U);
  EXPECT_FALSE(helper->testData(policy("a")));
}

TEST_F(AclHelperRecords, TheEndOfAHelperAnnouncesEachOfItsRecords) {
  helper->newTestData(policy("a"));
  helper->newTestData(policy("b"));
  helper = nullptr;
  EXPECT_THAT(journal, UnorderedElementsAre("w: testData a", "w: testData b"));
  EXPECT_FALSE(watcher->registered());
}

TEST_F(AclHelperRecords, AHookMayHoldTheHelperWhileItEnds) {
  AclHelper* const dying = helper.get();
  helper->newTestData(policy("a"));
  std::vector<std::uint32_t> left;
  watcher->reactionIs([&] {
    AclHelper::Ptr const held = Kor::share(dying);
    left.push_back(held->testDatas());
  });
  helper = nullptr;
  EXPECT_THAT(left, ElementsAre(0));
}

TEST_F(AclHelperRecords, ARecordInsertedWhileTheHelperEndsIsReleased) {
  AclHelper* const dying = helper.get();
  helper->newTestData(policy("a"));
  AclPolicyData::Ptr late;
  watcher->reactionIs([&] {
    watcher->reactionIs({});
    late = dying->newTestData(policy("late"));
  });
  helper = nullptr;
  ASSERT_TRUE(late);
  EXPECT_EQ(late->references(), 1U);
}

// setters

struct Text {
  char const* name;
  Kor::String8 const& (AclHelper::*get)() const;
  void (AclHelper::*set)(Kor::String8);
  Kor::AttributeId id;
};
std::vector<Text> const texts{
    {"asyncError", &AclHelper::asyncError, &AclHelper::asyncErrorIs, 261},
    {"createError", &AclHelper::createError, &AclHelper::createErrorIs, 264},
    {"deleteError", &AclHelper::deleteError, &AclHelper::deleteErrorIs, 265},
    {"commitError", &AclHelper::commitError, &AclHelper::commitErrorIs, 266},
    {"addIntfError", &AclHelper::addIntfError, &AclHelper::addIntfErrorIs, 267},
    {"removeIntfError", &AclHelper::removeIntfError, &AclHelper::removeIntfErrorIs, 268},
    {"addRuleError", &AclHelper::addRuleError, &AclHelper::addRuleErrorIs, 269},
    {"updateActionError", &AclHelper::updateActionError, &AclHelper::updateActionErrorIs, 270},
    {"rangeCheckerError", &AclHelper::rangeCheckerError, &AclHelper::rangeCheckerErrorIs, 271},
};

class AclHelperText : public AclHelperRecords, public testing::WithParamInterface<Text> {
 protected:
  [[nodiscard]] Kor::String8 get() const { return ((*helper).*GetParam().get)(); }
  void set(Kor::String8 const& text) { ((*helper).*GetParam().set)(text); }
  [[nodiscard]] std::string heard(std::string const& who) const {
    return who + ": " + GetParam().name;
  }
};
INSTANTIATE_TEST_SUITE_P(All, AclHelperText, testing::ValuesIn(texts),
                         [](auto const& text) { return std::string(text.param.name); });

TEST_P(AclHelperText, IsStoredAndAnnouncedWhenItChanges) {
  set("x");
  EXPECT_EQ(get(), "x");
  EXPECT_THAT(journal, ElementsAre(heard("w")));
  set("x");
  EXPECT_THAT(journal, ElementsAre(heard("w")));
  set("");
  EXPECT_EQ(get(), "");
  EXPECT_THAT(journal, ElementsAre(heard("w"), heard("w")));
}

TEST_P(AclHelperText, TheEmptyTextOfAFreshHelperIsNoChange) {
  set("");
  EXPECT_THAT(journal, IsEmpty());
}

TEST_P(AclHelperText, IsStoredBeforeItIsAnnounced) {
  Kor::String8 seen;
  watcher->reactionIs([&] { seen = get(); });
  set("x");
  EXPECT_EQ(seen, "x");
}

TEST_P(AclHelperText, TouchesNoOtherText) {
  set("x");
  for (Text const& other : texts) {
    if (other.id != GetParam().id) {
      EXPECT_EQ(((*helper).*other.get)(), "") << other.name;
    }
  }
}

TEST_P(AclHelperText, AnExceptionGoesToItsNotifieeWithTheAttributeAndDeliveryGoesOn) {
  auto const second = Kor::make<Watcher>(journal, "second", helper.get());
  watcher->reactionIs([] { throw std::runtime_error("no"); });
  set("x");
  EXPECT_THAT(journal,
              ElementsAre(heard("w"), "w: caught exception no of " + std::to_string(GetParam().id),
                          heard("second")));
  EXPECT_EQ(get(), "x");
}

TEST_P(AclHelperText, AWriteInsideTheHookRunsToItsEndFirst) {
  auto const second = Kor::make<Watcher>(journal, "second", helper.get());
  watcher->reactionIs([&] {
    watcher->reactionIs({});
    set("y");
  });
  set("x");
  EXPECT_THAT(journal, ElementsAre(heard("w"), heard("w"), heard("second"), heard("second")));
  EXPECT_EQ(get(), "y");
}

TEST_P(AclHelperText, AHookMayDropTheLastReferenceToTheHelper) {
  auto const second = Kor::make<Watcher>(journal, "second", helper.get());
  watcher->reactionIs([&] { helper = nullptr; });
  AclHelper* const dying = helper.get();
  (dying->*GetParam().set)("x");
  EXPECT_THAT(journal, ElementsAre(heard("w"), heard("second")));
  EXPECT_FALSE(watcher->registered());
}

TEST_P(AclHelperText, OnlyNotifieesOfTheHelpersOwnClassHear) {
  class BaseWatcher : public TestSupport::Watcher<PolicyMapAclHelper::NotifieeConst> {
   public:
    using Watcher::Watcher;
    void onUpdateActionSupported() override { heard("updateActionSupported"); }
  };
  auto const base = Kor::make<BaseWatcher>(journal, "base", helper.get());
  auto const full = Kor::make<HelperWatcher<AclHelper::Notifiee>>(journal, "full", helper.get());
  set("x");
  EXPECT_THAT(journal, ElementsAre(heard("w"), heard("full")));
  helper->updateActionSupportedIs(true);
  EXPECT_EQ(journal.back(), "base: updateActionSupported");
}

TEST_P(AclHelperText, ItsSetterIsNotVirtual) {
  EXPECT_EQ(virtualSlotOf(GetParam().set), -1);
}

TEST_F(AclHelperRecords, PseudoAsyncIsAnnouncedWhenItChanges) {
  helper->pseudoAsyncIs(false);
  EXPECT_THAT(journal, IsEmpty());
  helper->pseudoAsyncIs(true);
  helper->pseudoAsyncIs(true);
  EXPECT_TRUE(helper->pseudoAsync());
  EXPECT_THAT(journal, ElementsAre("w: pseudoAsync"));
}

TEST_F(AclHelperRecords, ExceptionsCarryTheIdentifierOfTheirAttribute) {
  watcher->reactionIs([] { throw 7; });
  helper->pseudoAsyncIs(true);
  EXPECT_THAT(journal, ElementsAre("w: pseudoAsync", "w: caught int 7 of 262"));
  journal.clear();
  helper->testDataIs(policy("a"));
  EXPECT_THAT(journal, ElementsAre("w: testData a", "w: caught int 7 of 263"));
  journal.clear();
  helper->asyncTriggerIs(1);
  EXPECT_THAT(journal, ElementsAre("w: result", "w: caught int 7 of 140", "w: asyncTrigger",
                                   "w: caught int 7 of 259"));
}

// shape

TEST(AclHelperShape, HasATypeBelowThatOfTheInterface) {
  Kor::PtrInterface::Ptr const helper = aclHelperFactory(false, false);
  EXPECT_EQ(helper->fwkType(), AclHelper::_fwkType());
  EXPECT_EQ(helper->fwkType()->name(), "PolicyMapTest::AclHelper");
  EXPECT_EQ(helper->fwkType()->base(), PolicyMapAclHelper::_fwkType());
}

TEST(AclHelperIds, AreThoseOfTheRegisteredAttributes) {
  std::vector<std::pair<char const*, Kor::AttributeId>> const ids{
      {"scheduleAsyncResult", AclHelper::scheduleAsyncResultId},
      {"asyncTrigger", AclHelper::asyncTriggerId},
      {"handleAsyncTrigger", AclHelper::handleAsyncTriggerId},
      {"asyncError", AclHelper::asyncErrorId},
      {"pseudoAsync", AclHelper::pseudoAsyncId},
      {"testData", AclHelper::testDataId},
#define ROW(name, Name, prose) {#name, AclHelper::name##Id},
      POLICYMAPTEST_HELPER_ERRORS(ROW)
#undef ROW
  };
  for (auto const& [name, id] : ids) {
    EXPECT_EQ(Kor::KorAttr::attr(AclHelper::_fwkType(), name)->id(), id) << name;
  }
}

}  // namespace
