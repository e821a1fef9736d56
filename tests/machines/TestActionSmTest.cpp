// SPDX-License-Identifier: Apache-2.0
#include "machines/TestActionSm.h"

#include "machines/TestKinds.h"
#include "support/CaughtAssertion.h"
#include "support/Death.h"
#include "support/TraceRecorder.h"
#include "support/Watcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using PolicyMap::ActionSm;
using PolicyMap::ClassMapSmCommonData;
using PolicyMapTest::TestClassCommonData;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::assertionOf;
using TestSupport::Journal;
using TestSupport::TraceRecorder;

class EffectWatcher : public TestSupport::Watcher<TestClassCommonData::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onAction1Value() override { heard("value"); }
  void onAction2Value() override { heard("value"); }
  void onAction3Value() override { heard("value"); }
  void onUpdateAclActions() override { heard("update"); }
};

// A machine derived by the test.
template <class Machine>
class Derived : public Machine {
 public:
  Derived(Kor::Ptr<ClassMapSmCommonData> const& data,
          Kor::Ptr<PolicyMap::Action const> const& action)
      : Machine(nullptr, nullptr, data, action) {}
};

template <class Kind>
class TestActionSmOfKind : public testing::Test {
 protected:
  // A machine of an action with `value`. The calls of its creation are cleared.
  Kor::Ptr<typename Kind::Machine> machineFor(std::uint32_t value) {
    action->valueIs(value);
    auto machine = Kind::machine(data, action);
    journal.clear();
    return machine;
  }
  [[nodiscard]] std::uint32_t value() const { return Kind::value(*data); }
  [[nodiscard]] std::uint32_t bumps() const { return data->updateAclActions(); }

  Journal journal;
  Kor::Ptr<typename Kind::Action> action = Kind::holding(0);
  TestClassCommonData::Ptr data = Kor::make<TestClassCommonData>("web", nullptr, nullptr);
  Kor::Ptr<EffectWatcher> watcher = Kor::make<EffectWatcher>(journal, "data", data.get());
};
TYPED_TEST_SUITE(TestActionSmOfKind, TestKinds);

template <class Kind>
using TestActionSmDeathTest = TestActionSmOfKind<Kind>;
TYPED_TEST_SUITE(TestActionSmDeathTest, TestKinds);

// creation

TYPED_TEST(TestActionSmOfKind, IsMadeWithItsFields) {
  auto const global = Kor::make<PolicyMap::PolicyMapGlobalData>(nullptr);
  auto const policy =
      Kor::make<PolicyMap::PolicyMapSmCommonData>(PolicyMap::PolicyMapSmKey("pm", "input"));
  Kor::Ptr<ActionSm> machine;
  if constexpr (TypeParam::number == 1) {
    machine =
        PolicyMapTest::TestAction1Sm::TestAction1SmIs(global, policy, this->data, this->action);
  } else if constexpr (TypeParam::number == 2) {
    machine =
        PolicyMapTest::TestAction2Sm::TestAction2SmIs(global, policy, this->data, this->action);
  } else {
    machine =
        PolicyMapTest::TestAction3Sm::TestAction3SmIs(global, policy, this->data, this->action);
  }
  EXPECT_EQ(machine->references(), 1U);
  EXPECT_EQ(machine->globalCommonData(), global);
  EXPECT_EQ(machine->policyCommonData(), policy);
  EXPECT_EQ(machine->classCommonData(), this->data);
  EXPECT_EQ(machine->action(), this->action);
  EXPECT_TRUE(machine->hasNotificationActive());
  EXPECT_FALSE(machine->korMarkedForDeletion());
}

TYPED_TEST(TestActionSmOfKind, AnActionHoldingZeroWritesNothing) {
  auto const machine = TypeParam::machine(this->data, this->action);
  EXPECT_THAT(this->journal, IsEmpty());
  EXPECT_EQ(this->bumps(), 0U);
}

TYPED_TEST(TestActionSmOfKind, WritesTheValueDuringItsCreationAndBumpsOnce) {
  this->action->valueIs(9);
  auto const machine = TypeParam::machine(this->data, this->action);
  EXPECT_EQ(this->value(), 9U);
  EXPECT_EQ(this->bumps(), 1U);
  EXPECT_THAT(this->journal, ElementsAre("data: value", "data: update"));
}

TYPED_TEST(TestActionSmOfKind, WritesItsOwnValueAlone) {
  auto const machine = this->machineFor(9);
  EXPECT_EQ(this->data->action1Value() + this->data->action2Value() + this->data->action3Value(),
            9U);
}

TYPED_TEST(TestActionSmOfKind, HandlesItsActionBeforeItListens) {
  this->action->valueIs(9);
  this->watcher->reactionIs([&] { this->action->valueIs(10); });
  auto const machine = TypeParam::machine(this->data, this->action);
  EXPECT_EQ(this->value(), 9U);
  machine->handleAction();
  EXPECT_EQ(this->value(), 10U);
}

TYPED_TEST(TestActionSmOfKind, AnActionOfASubclassIsReadLikeOne) {
  class Special : public TypeParam::Action {
   public:
    using TypeParam::Action::Action;
  };
  auto const special = Kor::make<Special>("web", Zub::UniqueId("x"));
  special->valueIs(3);
  auto const machine = TypeParam::machine(this->data, special);
  EXPECT_EQ(this->value(), 3U);
}

TYPED_TEST(TestActionSmDeathTest, MissingOrForeignClassDataAreAFault) {
  char const* const file = "machines/TestActionSm.cpp";
  EXPECT_ASSERTION(TypeParam::machine(nullptr, this->action), "PolicyMapTestSm", "classData", file);
  auto const plain = Kor::make<ClassMapSmCommonData>("web", nullptr, nullptr);
  EXPECT_ASSERTION(TypeParam::machine(plain, this->action), "PolicyMapTestSm", "classData", file);
  auto const machine = Kor::make<Derived<typename TypeParam::Machine>>(plain, this->action);
  EXPECT_ASSERTION(machine->cleanup(), "PolicyMapTestSm", "classData", file);
  EXPECT_ASSERTION(machine->handleAction(), "PolicyMapTestSm", "classData", file);
}

TYPED_TEST(TestActionSmDeathTest, ANullActionEndsTheProcessByThePointersOwnAssertion) {
  EXPECT_ASSERTION(TypeParam::machine(this->data, nullptr), "Kor/Ptr", "object_ != nullptr",
                   "Kor/Ptr.h");
}

TYPED_TEST(TestActionSmOfKind, ClassDataAreAssertedBeforeTheActionIsTouched) {
  EXPECT_EQ(assertionOf([&] { TypeParam::machine(nullptr, nullptr); }),
            "PolicyMapTestSm: classData");
}

TYPED_TEST(TestActionSmOfKind, AnActionOfAnotherKindIsNotTaken) {
  auto const plain = Kor::make<PolicyMap::Action>("web", PolicyMap::ActionType{TypeParam::number},
                                                  Zub::UniqueId("x"));
  EXPECT_EQ(assertionOf([&] { TypeParam::machine(this->data, plain); }),
            "Kor/Ptr: object_ != nullptr");
}

// handleAction

TYPED_TEST(TestActionSmOfKind, HandlingAnUnchangedActionWritesNothing) {
  auto const machine = this->machineFor(9);
  machine->handleAction();
  EXPECT_THAT(this->journal, IsEmpty());
  EXPECT_EQ(this->bumps(), 1U);
}

TYPED_TEST(TestActionSmOfKind, FollowsItsActionBeforeTheActionsNotifieesHear) {
  class ActionWatcher : public TestSupport::Watcher<typename TypeParam::Action::NotifieeConst> {
   public:
    using TestSupport::Watcher<typename TypeParam::Action::NotifieeConst>::Watcher;
    void onValue() override { this->heard("value"); }
  };
  auto const early = Kor::make<ActionWatcher>(this->journal, "action", this->action.get());
  auto const machine = this->machineFor(9);
  this->action->valueIs(12);
  EXPECT_EQ(this->value(), 12U);
  EXPECT_EQ(this->bumps(), 2U);
  EXPECT_THAT(this->journal, ElementsAre("data: value", "data: update", "action: value"));
}

TYPED_TEST(TestActionSmOfKind, RestoresAValueThatATestHasOverwritten) {
  auto const machine = this->machineFor(9);
  TypeParam::valueIs(*this->data, 1);
  EXPECT_EQ(this->bumps(), 1U);
  machine->handleAction();
  EXPECT_EQ(this->value(), 9U);
  EXPECT_EQ(this->bumps(), 2U);
}

TYPED_TEST(TestActionSmOfKind, FollowsAReplacedActionOnceToldToHandleIt) {
  auto const machine = this->machineFor(9);
  auto const other = TypeParam::holding(4);
  machine->actionIs(other);
  machine->handleAction();
  EXPECT_EQ(this->value(), 4U);
  this->action->valueIs(100);
  EXPECT_EQ(this->value(), 4U);
  other->valueIs(5);
  EXPECT_EQ(this->value(), 5U);
}

TYPED_TEST(TestActionSmOfKind, SurvivesAHookThatEndsTheMachine) {
  auto machine = this->machineFor(9);
  this->watcher->reactionIs([&] { machine = nullptr; });
  this->action->valueIs(12);
  EXPECT_FALSE(machine);
  EXPECT_EQ(this->value(), 12U);
  EXPECT_EQ(this->bumps(), 2U);
}

// cleanup

TYPED_TEST(TestActionSmOfKind, CleanupWritesZeroAndBumps) {
  auto const machine = this->machineFor(9);
  machine->cleanup();
  EXPECT_EQ(this->value(), 0U);
  EXPECT_EQ(this->bumps(), 2U);
  EXPECT_THAT(this->journal, ElementsAre("data: value", "data: update"));
}

TYPED_TEST(TestActionSmOfKind, CleanupBumpsEvenWhenTheValueIsZeroAlready) {
  auto const machine = this->machineFor(0);
  machine->cleanup();
  EXPECT_EQ(this->bumps(), 1U);
  EXPECT_THAT(this->journal, ElementsAre("data: update"));
}

TYPED_TEST(TestActionSmOfKind, CleanupLeavesTheOtherValues) {
  auto const machine = this->machineFor(9);
  this->data->action1ValueIs(1);
  this->data->action2ValueIs(2);
  this->data->action3ValueIs(3);
  machine->cleanup();
  EXPECT_EQ(this->data->action1Value() + this->data->action2Value() + this->data->action3Value(),
            static_cast<std::uint32_t>(6 - TypeParam::number));
}

TYPED_TEST(TestActionSmOfKind, CleanupLeavesTheActionWatched) {
  auto const machine = this->machineFor(9);
  machine->cleanup();
  EXPECT_EQ(machine->action(), this->action);
  this->action->valueIs(10);
  EXPECT_EQ(this->value(), 10U);
}

TYPED_TEST(TestActionSmOfKind, ItsEndRunsNoCleanup) {
  auto machine = this->machineFor(9);
  machine = nullptr;
  EXPECT_EQ(this->value(), 9U);
  EXPECT_EQ(this->bumps(), 1U);
  EXPECT_THAT(this->journal, IsEmpty());
}

// toggles

TYPED_TEST(TestActionSmOfKind, WithoutNotificationsItReactsToCallsOnly) {
  auto const machine = this->machineFor(9);
  machine->hasNotificationActiveIs(false);
  this->action->valueIs(10);
  EXPECT_EQ(this->value(), 9U);
  machine->handleAction();
  EXPECT_EQ(this->value(), 10U);
  machine->hasNotificationActiveIs(true);
  this->action->valueIs(11);
  EXPECT_EQ(this->value(), 11U);
}

TYPED_TEST(TestActionSmOfKind, AsAZombieItReactsToCallsOnlyAndKeepsItsAction) {
  auto const machine = this->machineFor(9);
  machine->korDoZombieReactors(true);
  EXPECT_TRUE(machine->korMarkedForDeletion());
  EXPECT_EQ(machine->action(), this->action);
  this->action->valueIs(10);
  EXPECT_EQ(this->value(), 9U);
  machine->handleAction();
  EXPECT_EQ(this->value(), 10U);
  machine->korDoZombieReactors(false);
  EXPECT_FALSE(machine->korMarkedForDeletion());
  this->action->valueIs(11);
  EXPECT_EQ(this->value(), 11U);
}

TYPED_TEST(TestActionSmOfKind, AnEndedMachineHearsNothing) {
  auto machine = this->machineFor(9);
  machine = nullptr;
  this->action->valueIs(10);
  EXPECT_EQ(this->value(), 9U);
}

TYPED_TEST(TestActionSmOfKind, MayBeDerivedFrom) {
  auto const machine = Kor::make<Derived<typename TypeParam::Machine>>(this->data, this->action);
  EXPECT_FALSE(machine->hasNotificationActive());
  EXPECT_THAT(this->journal, IsEmpty());
  machine->hasNotificationActiveIs(true);
  this->action->valueIs(3);
  EXPECT_EQ(this->value(), 3U);
}

// traces and shape

TYPED_TEST(TestActionSmOfKind, TracesItsHooksAlone) {
  std::string const head = std::string("PolicyMapTestSm|8|virtual void ") + TypeParam::machineName;
  this->action->valueIs(9);
  TraceRecorder const trace("PolicyMapTestSm", 9);
  auto const machine = TypeParam::machine(this->data, this->action);
  machine->cleanup();
  machine->korDoZombieReactors(true);
  EXPECT_THAT(trace.lines(), ElementsAre(head + "::handleAction()", head + "::cleanup()"));
}

TYPED_TEST(TestActionSmOfKind, TracesBeforeItAsserts) {
  std::string const head = std::string("PolicyMapTestSm|8|virtual void ") + TypeParam::machineName;
  auto const machine = Kor::make<Derived<typename TypeParam::Machine>>(nullptr, this->action);
  TraceRecorder const trace("PolicyMapTestSm", 8);
  EXPECT_EQ(assertionOf([&] { machine->handleAction(); }), "PolicyMapTestSm: classData");
  EXPECT_EQ(assertionOf([&] { machine->cleanup(); }), "PolicyMapTestSm: classData");
  EXPECT_THAT(trace.lines(), ElementsAre(head + "::handleAction()", head + "::cleanup()"));
}

TYPED_TEST(TestActionSmOfKind, IsSilentBelowItsLevel) {
  TraceRecorder const trace("PolicyMapTestSm", 7);
  this->machineFor(9)->cleanup();
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TYPED_TEST(TestActionSmOfKind, HasATypeBelowThatOfActionMachines) {
  Kor::PtrInterface::Ptr const machine = this->machineFor(0);
  EXPECT_EQ(machine->fwkType(), TypeParam::Machine::_fwkType());
  EXPECT_EQ(machine->fwkType()->name(), TypeParam::machineName);
  EXPECT_EQ(machine->fwkType()->base(), ActionSm::_fwkType());
}

}  // namespace
