// SPDX-License-Identifier: Apache-2.0
#include "machines/TestClassCommonData.h"

#include "machines/TestKinds.h"
#include "support/Watcher.h"

#include <Acl/Config.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using PolicyMap::ClassMapSmCommonData;
using PolicyMapTest::TestClassCommonData;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::Journal;

template <class Notifiee>
class DataWatcher : public TestSupport::Watcher<Notifiee> {
 public:
  using TestSupport::Watcher<Notifiee>::Watcher;
  void onAction1Value() override { this->heard("value 1"); }
  void onAction2Value() override { this->heard("value 2"); }
  void onAction3Value() override { this->heard("value 3"); }
  void onUpdateAclActions() override { this->heard("updateAclActions"); }
};
using Watcher = DataWatcher<TestClassCommonData::NotifieeConst>;

TEST(TestClassCommonData, TakesItsArgumentsAndStartsWithZeros) {
  auto const classMap = Kor::make<PolicyMap::ClassMapSubConfig>("sub");
  auto const acls = Kor::make<Acl::Config>();
  auto const data = Kor::make<TestClassCommonData>("web", classMap, acls);
  EXPECT_EQ(data->name(), "web");
  EXPECT_EQ(data->classMap(), classMap);
  EXPECT_EQ(data->aclConfig(), acls);
  EXPECT_EQ(data->action1Value(), 0U);
  EXPECT_EQ(data->action2Value(), 0U);
  EXPECT_EQ(data->action3Value(), 0U);
  EXPECT_EQ(data->updateAclActions(), 0U);
}

TEST(TestClassCommonData, HooksThatAreNotOverriddenDoNothing) {
  auto const data = Kor::make<TestClassCommonData>("web", nullptr, nullptr);
  auto const plain = Kor::make<TestClassCommonData::NotifieeConst>(data.get());
  auto const other = Kor::make<TestClassCommonData::Notifiee>(data.get());
  Journal journal;
  auto const watcher = Kor::make<Watcher>(journal, "w", data.get());
  data->action1ValueIs(1);
  data->action2ValueIs(2);
  data->action3ValueIs(3);
  EXPECT_THAT(journal, ElementsAre("w: value 1", "w: value 2", "w: value 3"));
  for (auto const& each : {plain, Kor::Ptr<TestClassCommonData::NotifieeConst>(other)}) {
    each->notifierIs(nullptr);
  }
  watcher->notifierIs(nullptr);
}

template <class Kind>
class TestClassCommonDataValue : public testing::Test {
 protected:
  static std::string heard(std::string const& who) {
    return who + ": value " + std::to_string(Kind::number);
  }

  Journal journal;
  TestClassCommonData::Ptr data = Kor::make<TestClassCommonData>("web", nullptr, nullptr);
  Kor::Ptr<Watcher> watcher = Kor::make<Watcher>(journal, "w", data.get());
};
TYPED_TEST_SUITE(TestClassCommonDataValue, TestKinds);

TYPED_TEST(TestClassCommonDataValue, IsStoredAndAnnouncedWhenItChanges) {
  TypeParam::valueIs(*this->data, 0);
  EXPECT_THAT(this->journal, IsEmpty());
  TypeParam::valueIs(*this->data, 5);
  TypeParam::valueIs(*this->data, 5);
  EXPECT_EQ(TypeParam::value(*this->data), 5U);
  EXPECT_THAT(this->journal, ElementsAre(this->heard("w")));
}

TYPED_TEST(TestClassCommonDataValue, TouchesNoOtherValue) {
  TypeParam::valueIs(*this->data, 5);
  EXPECT_EQ(this->data->action1Value() + this->data->action2Value() + this->data->action3Value(),
            5U);
}

TYPED_TEST(TestClassCommonDataValue, AsksForNoProgramming) {
  TypeParam::valueIs(*this->data, 5);
  EXPECT_EQ(this->data->updateAclActions(), 0U);
}

TYPED_TEST(TestClassCommonDataValue, IsStoredBeforeItIsAnnounced) {
  std::uint32_t seen = 0;
  this->watcher->reactionIs([&] { seen = TypeParam::value(*this->data); });
  TypeParam::valueIs(*this->data, 5);
  EXPECT_EQ(seen, 5U);
}

TYPED_TEST(TestClassCommonDataValue, AnExceptionGoesToItsNotifieeWithTheAttribute) {
  auto const second = Kor::make<Watcher>(this->journal, "second", this->data.get());
  this->watcher->reactionIs([] { throw 7; });
  TypeParam::valueIs(*this->data, 5);
  EXPECT_THAT(this->journal, ElementsAre(this->heard("w"),
                                         "w: caught int 7 of " + std::to_string(TypeParam::valueId),
                                         this->heard("second")));
}

TYPED_TEST(TestClassCommonDataValue, OnlyNotifieesOfItsOwnClassHear) {
  using Base = TestSupport::Watcher<ClassMapSmCommonData::NotifieeConst>;
  auto const base = Kor::make<Base>(this->journal, "base", this->data.get());
  auto const modifying = Kor::make<DataWatcher<TestClassCommonData::Notifiee>>(
      this->journal, "modifying", this->data.get());
  TypeParam::valueIs(*this->data, 5);
  EXPECT_THAT(this->journal, ElementsAre(this->heard("w"), this->heard("modifying")));
}

TYPED_TEST(TestClassCommonDataValue, AHookMayDropTheLastReference) {
  auto const second = Kor::make<Watcher>(this->journal, "second", this->data.get());
  this->watcher->reactionIs([&] { this->data = nullptr; });
  auto* const dying = this->data.get();
  TypeParam::valueIs(*dying, 5);
  EXPECT_THAT(this->journal, ElementsAre(this->heard("w"), this->heard("second")));
}

TEST(TestClassCommonData, NotifieesOfTheBaseAndItsOwnHearOfTheCounter) {
  Journal journal;
  auto const data = Kor::make<TestClassCommonData>("web", nullptr, nullptr);
  auto const watcher = Kor::make<Watcher>(journal, "w", data.get());
  EXPECT_EQ(data->updateAclActionsInc(2), 2U);
  EXPECT_THAT(journal, ElementsAre("w: updateAclActions"));
}

TEST(TestClassCommonData, HasATypeBelowThatOfClassData) {
  Kor::PtrInterface::Ptr const data = Kor::make<TestClassCommonData>("web", nullptr, nullptr);
  EXPECT_EQ(data->fwkType(), TestClassCommonData::_fwkType());
  EXPECT_EQ(data->fwkType()->name(), "PolicyMapTest::TestClassCommonData");
  EXPECT_EQ(data->fwkType()->base(), ClassMapSmCommonData::_fwkType());
}

}  // namespace
