// SPDX-License-Identifier: Apache-2.0
#include "policymap/RecordingMachines.h"

#include <gmock/gmock.h>

namespace policymap {
namespace {

using PolicyMap::ClassMapSmCommonData;
using testing::ElementsAre;
using testing::IsEmpty;

class ActionMachine : public testing::Test {
 protected:
  Hooks hooks;
  Kor::Ptr<ClassMapSmCommonData> data = Kor::make<ClassMapSmCommonData>("c", nullptr, nullptr);
  Kor::Ptr<NumberAction> action = Kor::make<NumberAction>("c", 1);
  Kor::Ptr<RecordingActionSm> machine =
      Kor::make<RecordingActionSm>(hooks, nullptr, nullptr, data, action);

  ~ActionMachine() override { machine = nullptr; }
};

TEST_F(ActionMachine, CarriesWhatItWasBuiltWith) {
  EXPECT_FALSE(machine->globalCommonData());
  EXPECT_FALSE(machine->policyCommonData());
  EXPECT_EQ(machine->classCommonData(), data);
  EXPECT_EQ(machine->action(), action);
  EXPECT_FALSE(machine->initialized());
  EXPECT_THAT(hooks.journal, IsEmpty()) << "no hook while it is built";
}

TEST_F(ActionMachine, IsBuiltFromNothingAtAll) {
  auto const bare = Kor::make<RecordingActionSm>(hooks, nullptr, nullptr, nullptr, nullptr);
  EXPECT_FALSE(bare->action());
  bare->hasNotificationActiveIs(true);
  bare->korDoZombieReactors(true);
  EXPECT_TRUE(bare->korMarkedForDeletion());
}

TEST_F(ActionMachine, IsQuietUntilItsNotificationsAreOn) {
  action->numberIs(1);
  EXPECT_THAT(hooks.taken(), IsEmpty());
  machine->hasNotificationActiveIs(true);
  EXPECT_TRUE(machine->initialized());
  EXPECT_THAT(hooks.taken(), ElementsAre("c/1: initialized"));
  action->numberIs(2);
  EXPECT_THAT(hooks.taken(), ElementsAre("c/1: handleAction 2"));
  machine->hasNotificationActiveIs(false);
  action->numberIs(3);
  EXPECT_THAT(hooks.taken(), IsEmpty());
}

TEST_F(ActionMachine, IsInitializedOnce) {
  machine->hasNotificationActiveIs(true);
  machine->hasNotificationActiveIs(false);
  machine->hasNotificationActiveIs(true);
  EXPECT_THAT(hooks.taken(), ElementsAre("c/1: initialized"));
}

TEST_F(ActionMachine, HearsTheActionBeforeItsNotifieesDo) {
  class ActionWatcher : public PolicyMap::Action::NotifieeConst {
   public:
    using NotifieeConst::NotifieeConst;
  };
  machine->hasNotificationActiveIs(true);
  hooks.taken();
  class LoudAction : public NumberAction {
   public:
    using NumberAction::NumberAction;
    void changed(Hooks& journal) {
      attributeChanged<Action>(386, [&](auto&) { journal.say("notifiee"); });
    }
  };
  auto const loud = Kor::make<LoudAction>("c", 1);
  auto const watcher = Kor::make<ActionWatcher>(loud.get());
  machine->actionIs(loud);
  loud->changed(hooks);
  EXPECT_THAT(hooks.taken(), ElementsAre("c/1: handleAction 0", "notifiee"));
}

TEST_F(ActionMachine, AZombieIsQuietAndKeepsItsAction) {
  machine->hasNotificationActiveIs(true);
  hooks.taken();
  machine->korDoZombieReactors(true);
  EXPECT_TRUE(machine->korMarkedForDeletion());
  EXPECT_EQ(machine->action(), action);
  action->numberIs(2);
  EXPECT_THAT(hooks.taken(), ElementsAre("c/1: zombie"));
}

TEST_F(ActionMachine, AFormerZombieHearsAgainIfItsNotificationsAreOn) {
  machine->hasNotificationActiveIs(true);
  machine->korDoZombieReactors(true);
  machine->korDoZombieReactors(false);
  hooks.taken();
  action->numberIs(2);
  EXPECT_THAT(hooks.taken(), ElementsAre("c/1: handleAction 2"));
  machine->hasNotificationActiveIs(false);
  machine->korDoZombieReactors(true);
  machine->korDoZombieReactors(false);
  hooks.taken();
  action->numberIs(3);
  EXPECT_THAT(hooks.taken(), IsEmpty());
}

TEST_F(ActionMachine, SwitchingNotificationsOnForAZombieOnlyStoresTheState) {
  machine->korDoZombieReactors(true);
  hooks.taken();
  machine->hasNotificationActiveIs(true);
  EXPECT_TRUE(machine->hasNotificationActive());
  EXPECT_FALSE(machine->initialized());
  action->numberIs(2);
  EXPECT_THAT(hooks.taken(), IsEmpty());
  machine->korDoZombieReactors(false);
  action->numberIs(3);
  EXPECT_THAT(hooks.taken(), ElementsAre("c/1: no zombie", "c/1: handleAction 3"));
}

TEST_F(ActionMachine, WatchesAnotherActionWithoutHandlingItByItself) {
  machine->hasNotificationActiveIs(true);
  hooks.taken();
  auto const other = Kor::make<NumberAction>("c", 1);
  machine->actionIs(other);
  EXPECT_EQ(machine->action(), other);
  EXPECT_THAT(hooks.taken(), IsEmpty());
  action->numberIs(2);
  EXPECT_THAT(hooks.taken(), IsEmpty());
  other->numberIs(4);
  EXPECT_THAT(hooks.taken(), ElementsAre("c/1: handleAction 4"));
  machine->actionDel();
  EXPECT_FALSE(machine->action());
  other->numberIs(5);
  EXPECT_THAT(hooks.taken(), IsEmpty());
}

TEST_F(ActionMachine, HoldsItsActionAndLetsGoWithItsEnd) {
  machine->hasNotificationActiveIs(true);
  NumberAction* const raw = action.get();
  action = nullptr;
  raw->numberIs(7);
  action = Kor::share(raw);
  machine = nullptr;
  hooks.taken();
  action->numberIs(8);
  EXPECT_THAT(hooks.taken(), IsEmpty());
  EXPECT_EQ(action->references(), 1U);
}

TEST_F(ActionMachine, CleanupLeavesTheActionWatched) {
  machine->hasNotificationActiveIs(true);
  machine->cleanup();
  hooks.taken();
  EXPECT_EQ(machine->action(), action);
  action->numberIs(2);
  EXPECT_THAT(hooks.taken(), ElementsAre("c/1: handleAction 2"));
}

TEST_F(ActionMachine, EndsWithoutCleanup) {
  machine->hasNotificationActiveIs(true);
  hooks.taken();
  machine = nullptr;
  EXPECT_THAT(hooks.taken(), ElementsAre("c/1: zombie", "c/1: gone"));
}

}  // namespace
}  // namespace policymap
