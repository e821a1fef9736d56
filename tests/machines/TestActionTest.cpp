// SPDX-License-Identifier: Apache-2.0
#include "machines/TestAction.h"

#include "machines/TestKinds.h"
#include "support/Watcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::Journal;

template <class Notifiee>
class ActionWatcher : public TestSupport::Watcher<Notifiee> {
 public:
  using TestSupport::Watcher<Notifiee>::Watcher;
  void onValue() override { this->heard("value"); }
};

template <class Kind>
class TestActionOfKind : public testing::Test {
 protected:
  using Watcher = ActionWatcher<typename Kind::Action::NotifieeConst>;

  Kor::Ptr<Watcher> watcher(std::string const& name) {
    return Kor::make<Watcher>(journal, name, action.get());
  }

  Journal journal;
  Kor::Ptr<typename Kind::Action> action = Kind::make("web", Zub::UniqueId("id-7"));
};
TYPED_TEST_SUITE(TestActionOfKind, TestKinds);

TYPED_TEST(TestActionOfKind, IsMadeWithItsKindAndTheValueZero) {
  auto const& made = this->action;
  EXPECT_EQ(made->references(), 1U);
  EXPECT_EQ(made->className(), "web");
  EXPECT_EQ(made->name(), "web");
  EXPECT_EQ(static_cast<int>(made->actionType()), TypeParam::number);
  EXPECT_EQ(made->id(), Zub::UniqueId("id-7"));
  EXPECT_EQ(made->value(), 0U);
}

TYPED_TEST(TestActionOfKind, HooksThatAreNotOverriddenDoNothing) {
  using Action = typename TypeParam::Action;
  auto const plain = Kor::make<typename Action::NotifieeConst>(this->action.get());
  auto const other = Kor::make<typename Action::Notifiee>(this->action.get());
  auto const watcher = this->watcher("w");
  this->action->valueIs(5);
  EXPECT_THAT(this->journal, ElementsAre("w: value"));
  plain->notifierIs(nullptr);
  other->notifierIs(nullptr);
  watcher->notifierIs(nullptr);
}

TYPED_TEST(TestActionOfKind, AWriteIsStoredAndAnnouncedOnce) {
  auto const watcher = this->watcher("w");
  this->action->valueIs(5);
  this->action->valueIs(5);
  EXPECT_EQ(this->action->value(), 5U);
  EXPECT_THAT(this->journal, ElementsAre("w: value"));
}

TYPED_TEST(TestActionOfKind, ZeroOnAFreshActionIsNoChange) {
  auto const watcher = this->watcher("w");
  this->action->valueIs(0);
  EXPECT_THAT(this->journal, IsEmpty());
}

TYPED_TEST(TestActionOfKind, AWriteWithoutNotifieesIsStored) {
  this->action->valueIs(4294967295U);
  EXPECT_EQ(this->action->value(), 4294967295U);
}

TYPED_TEST(TestActionOfKind, NotifieesAreCalledInOrderOfRegistration) {
  auto const first = this->watcher("first");
  auto const second = this->watcher("second");
  auto const third = this->watcher("third");
  this->action->valueIs(1);
  EXPECT_THAT(this->journal, ElementsAre("first: value", "second: value", "third: value"));
}

TYPED_TEST(TestActionOfKind, OneThatAnEarlierHookUnregistersIsSkipped) {
  auto const first = this->watcher("first");
  auto const second = this->watcher("second");
  auto const third = this->watcher("third");
  first->reactionIs([&] { second->notifierIs(nullptr); });
  this->action->valueIs(1);
  EXPECT_THAT(this->journal, ElementsAre("first: value", "third: value"));
}

TYPED_TEST(TestActionOfKind, OneThatRegistersDuringAWalkIsCalledFromTheNextOn) {
  auto const first = this->watcher("first");
  auto const late = Kor::make<typename TestFixture::Watcher>(this->journal, "late");
  first->reactionIs([&] { late->notifierIs(this->action.get()); });
  this->action->valueIs(1);
  EXPECT_THAT(this->journal, ElementsAre("first: value"));
  this->action->valueIs(2);
  EXPECT_THAT(this->journal, ElementsAre("first: value", "first: value", "late: value"));
}

TYPED_TEST(TestActionOfKind, AnExceptionGoesToItsNotifieeAndTheOthersAreCalled) {
  auto const first = this->watcher("first");
  auto const second = this->watcher("second");
  first->reactionIs([] { throw std::runtime_error("no"); });
  first->handlerIs([] { throw 7; });
  EXPECT_NO_THROW(this->action->valueIs(1));
  EXPECT_EQ(this->action->value(), 1U);
  EXPECT_THAT(this->journal,
              ElementsAre("first: value", "first: caught exception no of 386", "second: value"));
}

TYPED_TEST(TestActionOfKind, OnlyNotifieesOfItsOwnClassHear) {
  using Base = TestSupport::Watcher<PolicyMap::Action::NotifieeConst>;
  auto const base = Kor::make<Base>(this->journal, "base", this->action.get());
  auto const modifying = Kor::make<ActionWatcher<typename TypeParam::Action::Notifiee>>(
      this->journal, "modifying", this->action.get());
  this->action->valueIs(1);
  EXPECT_THAT(this->journal, ElementsAre("modifying: value"));
}

TYPED_TEST(TestActionOfKind, AWriteInsideAHookRunsToItsEndFirst) {
  auto const first = this->watcher("first");
  auto const second = this->watcher("second");
  std::vector<std::uint32_t> seen;
  second->reactionIs([&] { seen.push_back(this->action->value()); });
  first->reactionIs([&] {
    first->reactionIs({});
    this->action->valueIs(2);
  });
  this->action->valueIs(1);
  EXPECT_THAT(seen, ElementsAre(2, 2));
}

TYPED_TEST(TestActionOfKind, AHookMayDropTheLastReferenceToTheAction) {
  auto const first = this->watcher("first");
  auto const second = this->watcher("second");
  first->reactionIs([&] { this->action = nullptr; });
  auto* const dying = this->action.get();
  dying->valueIs(1);
  EXPECT_THAT(this->journal, ElementsAre("first: value", "second: value"));
  EXPECT_FALSE(first->registered());
}

TYPED_TEST(TestActionOfKind, ReadersOfTheAttributeLogComeBeforeTheNotifiees) {
  class Reader : public Kor::AttributeLogReader {
   public:
    explicit Reader(Journal& journal) : journal_(&journal) {}
    void onAttribute(Kor::Entity const&, Kor::AttributeId id) override {
      journal_->push_back("log " + std::to_string(id));
    }

   private:
    Journal* journal_;
  };
  auto const watcher = this->watcher("w");
  auto const reader = Kor::make<Reader>(this->journal);
  this->action->attributeLogReaderIs(reader);
  this->action->valueIs(1);
  EXPECT_THAT(this->journal, ElementsAre("log 386", "w: value"));
}

TYPED_TEST(TestActionOfKind, IsNotEqualToNothing) {
  EXPECT_FALSE(this->action->equalTo(nullptr));
}

TYPED_TEST(TestActionOfKind, IsEqualToOneOfItsClassWithTheSameValueWhateverNameAndId) {
  auto const other = TypeParam::make("other", Zub::UniqueId("other"));
  EXPECT_TRUE(this->action->equalTo(this->action));
  EXPECT_TRUE(this->action->equalTo(other));
  this->action->valueIs(7);
  EXPECT_FALSE(this->action->equalTo(other));
  other->valueIs(7);
  EXPECT_TRUE(this->action->equalTo(other));
}

TYPED_TEST(TestActionOfKind, IsEqualToOneOfASubclassWithTheSameValue) {
  class Special : public TypeParam::Action {
   public:
    using TypeParam::Action::Action;
  };
  auto const special = Kor::make<Special>("web", Zub::UniqueId("x"));
  EXPECT_TRUE(this->action->equalTo(special));
  special->valueIs(1);
  EXPECT_FALSE(this->action->equalTo(special));
}

TYPED_TEST(TestActionOfKind, IsNotEqualToAnActionThatOnlyHasItsKindNumber) {
  auto const plain = Kor::make<PolicyMap::Action>("web", PolicyMap::ActionType{TypeParam::number},
                                                  Zub::UniqueId("x"));
  EXPECT_FALSE(this->action->equalTo(plain));
}

TEST(TestActions, OfDifferentKindsAreNotEqual) {
  EXPECT_FALSE(Kind1::holding(7)->equalTo(Kind2::holding(7)));
  EXPECT_FALSE(Kind2::holding(7)->equalTo(Kind3::holding(7)));
  EXPECT_FALSE(Kind3::holding(7)->equalTo(Kind1::holding(7)));
}

TYPED_TEST(TestActionOfKind, NamesItsAttributes) {
  EXPECT_EQ(this->action->attributeString(386), "value");
  Kor::Ptr<PolicyMap::Action> const plain = Kor::make<PolicyMap::Action>(
      "web", PolicyMap::ActionType{TypeParam::number}, Zub::UniqueId("x"));
  for (Kor::AttributeId const id : {0U, 1U, 130U, 258U, 259U, 260U, 261U, 385U, 387U}) {
    EXPECT_EQ(this->action->attributeString(id), plain->attributeString(id)) << id;
  }
  EXPECT_EQ(this->action->attributeString(130), "name");
  EXPECT_EQ(this->action->attributeString(387), "unknown");
}

TYPED_TEST(TestActionOfKind, HasATypeBelowThatOfActions) {
  Kor::PtrInterface::Ptr const object = this->action;
  EXPECT_EQ(object->fwkType(), TypeParam::Action::_fwkType());
  EXPECT_EQ(object->fwkType()->name(), TypeParam::actionName);
  EXPECT_EQ(object->fwkType()->base(), PolicyMap::Action::_fwkType());
}

TEST(TestActions, AreTypesOfTheirOwn) {
  EXPECT_NE(PolicyMapTest::TestAction1::_fwkType(), PolicyMapTest::TestAction2::_fwkType());
  EXPECT_NE(PolicyMapTest::TestAction2::_fwkType(), PolicyMapTest::TestAction3::_fwkType());
  EXPECT_NE(PolicyMapTest::TestAction3::_fwkType(), PolicyMapTest::TestAction1::_fwkType());
}

}  // namespace
