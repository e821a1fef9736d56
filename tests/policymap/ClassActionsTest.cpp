// SPDX-License-Identifier: Apache-2.0
#include "policymap/RecordingMachines.h"
#include "support/Instances.h"

#include <PolicyMap/ClassActions.h>

#include <gmock/gmock.h>

#include <functional>

namespace policymap {
namespace {

using PolicyMap::Action;
using PolicyMap::ActionSm;
using PolicyMap::ActionType;
using PolicyMap::ClassAction;
using PolicyMap::ClassActions;
using PolicyMap::ClassMapSmCommonData;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr ActionType kindOne{1};

// Holds action machines, as a class machine does.
class PlainClass final : public ClassActions::Class {
 public:
  Hooks hooks;
  Kor::Ptr<ClassAction> configured = Kor::make<ClassAction>("c");
  Kor::Ptr<ClassAction const> configuredConst = configured;
  Kor::Ptr<ClassMapSmCommonData> data = Kor::make<ClassMapSmCommonData>("c", nullptr, nullptr);
  std::map<ActionType, Kor::Ptr<ActionSm>> machines;
  std::function<void()> deed;  // runs once, when a machine is created

  Kor::Ptr<ClassAction const> const& classAction() const override { return configuredConst; }
  Kor::Ptr<ClassMapSmCommonData> const& classCommonData() const override { return data; }
  std::vector<ActionType> machineKinds() const override {
    std::vector<ActionType> kinds;
    for (auto const& [kind, machine] : machines) {
      kinds.push_back(kind);
    }
    return kinds;
  }
  Kor::Ptr<ActionSm> actionSm(ActionType kind) const override {
    auto const found = machines.find(kind);
    return found == machines.end() ? nullptr : found->second;
  }
  Kor::Ptr<ActionSm> createActionSm(ActionType kind) override {
    hooks.say("create " + text(kind));
    if (auto const once = std::exchange(deed, nullptr)) {
      once();
    }
    if (hooks.refusedKinds.contains(static_cast<int>(kind))) {
      return nullptr;
    }
    return Kor::make<RecordingActionSm>(hooks, nullptr, nullptr, data,
                                        Kor::Ptr<Action const>(configured->action(kind)));
  }
  void actionSmIs(ActionType kind, Kor::Ptr<ActionSm> const& machine) override {
    machines[kind] = machine;
  }
  void actionSmDel(ActionType kind) override { machines.erase(kind); }
};

class ConfiguredActions : public testing::Test {
 protected:
  PlainClass holder;
  ClassActions actions{holder};

  Kor::Ptr<NumberAction> configure(int kind) {
    auto const action = Kor::make<NumberAction>("c", kind);
    holder.configured->actionIs(ActionType{kind}, action);
    return action;
  }
  std::vector<std::string> synced(int kind = 1) {
    holder.hooks.taken();
    actions.sync(ActionType{kind});
    return holder.hooks.taken();
  }
};

TEST_F(ConfiguredActions, GetAMachineWhenTheyAreConfiguredAndLoseItAfterwards) {
  EXPECT_THAT(synced(), IsEmpty());
  auto const action = configure(1);
  EXPECT_THAT(synced(), ElementsAre("create 1"));
  EXPECT_EQ(holder.data->action(kindOne), action);
  EXPECT_THAT(synced(), IsEmpty());
  holder.configured->actionDel(kindOne);
  EXPECT_THAT(synced(), ElementsAre("c/1: cleanup data", "c/1: zombie", "c/1: gone"));
  EXPECT_THAT(holder.machines, IsEmpty());
  EXPECT_EQ(holder.data->actions(), 0U);
}

TEST_F(ConfiguredActions, OfTheSameKindKeepTheMachine) {
  configure(1);
  actions.sync(kindOne);
  auto const kept = holder.actionSm(kindOne);
  auto const other = configure(1);
  other->numberIs(5);
  EXPECT_THAT(synced(), ElementsAre("c/1: handleAction 5"));
  EXPECT_EQ(holder.actionSm(kindOne), kept);
  EXPECT_EQ(kept->action(), other);
}

TEST_F(ConfiguredActions, GetNoMachineWithoutCommonData) {
  holder.data = nullptr;
  configure(1);
  EXPECT_THAT(synced(), IsEmpty());
  holder.data = Kor::make<ClassMapSmCommonData>("c", nullptr, nullptr);
  EXPECT_THAT(synced(), ElementsAre("create 1"));
}

TEST_F(ConfiguredActions, ThatWereRefusedAreAskedAboutAgainWhenAnotherOneTakesTheirPlace) {
  holder.hooks.refusedKinds = {1};
  auto const refused = configure(1);
  EXPECT_THAT(synced(), ElementsAre("create 1"));
  EXPECT_THAT(synced(), IsEmpty());
  configure(1);
  EXPECT_THAT(synced(), ElementsAre("create 1"));
  holder.configured->actionIs(kindOne, refused);
  EXPECT_THAT(synced(), ElementsAre("create 1"));
  holder.configured->actionDel(kindOne);
  EXPECT_THAT(synced(), IsEmpty());
  holder.configured->actionIs(kindOne, refused);
  EXPECT_THAT(synced(), ElementsAre("create 1"));
}

TEST_F(ConfiguredActions, ThatWereRefusedAreNotKeptAliveAfterAnotherOneGotItsMachine) {
  class CountedAction final : public NumberAction, public TestSupport::Instances<CountedAction> {
   public:
    using NumberAction::NumberAction;
  };
  holder.hooks.refusedKinds = {1};
  holder.configured->actionIs(kindOne, Kor::make<CountedAction>("c", 1));
  actions.sync(kindOne);
  ASSERT_EQ(CountedAction::alive(), 1);
  holder.hooks.refusedKinds.clear();
  configure(1);
  actions.sync(kindOne);
  EXPECT_TRUE(holder.actionSm(kindOne));
  EXPECT_EQ(CountedAction::alive(), 0);
}

TEST_F(ConfiguredActions, KindsAreThoseConfiguredBuiltOrRefused) {
  configure(1);
  actions.sync(kindOne);
  holder.hooks.refusedKinds = {2};
  configure(2);
  actions.sync(ActionType{2});
  holder.configured->actionDelAll();
  configure(3);
  EXPECT_THAT(actions.kinds(), ElementsAre(ActionType{1}, ActionType{2}, ActionType{3}));
  holder.configuredConst = nullptr;
  EXPECT_THAT(actions.kinds(), ElementsAre(ActionType{1}, ActionType{2}));
}

TEST_F(ConfiguredActions, ThatLeaveWhileTheirMachineIsCreatedHaveNone) {
  configure(1);
  holder.deed = [&] {
    holder.configured->actionDel(kindOne);
    actions.sync(kindOne);
  };
  actions.sync(kindOne);
  EXPECT_THAT(holder.machines, IsEmpty());
  EXPECT_EQ(holder.data->actions(), 0U);
}

TEST_F(ConfiguredActions, AreLookedAtAgainWhenTheCallerSaysSo) {
  configure(1);
  holder.deed = [&] {
    holder.configured->actionDel(kindOne);
    actions.lookAgain();
  };
  actions.sync(kindOne);
  EXPECT_THAT(holder.machines, IsEmpty());
}

TEST_F(ConfiguredActions, AreTakenDownTogether) {
  configure(1);
  configure(2);
  actions.sync(kindOne);
  actions.sync(ActionType{2});
  holder.hooks.taken();
  actions.takeDownAll();
  EXPECT_THAT(holder.hooks.taken(), ElementsAre("c/1: cleanup data", "c/1: zombie", "c/1: gone",
                                                "c/2: cleanup data", "c/2: zombie", "c/2: gone"));
  EXPECT_THAT(holder.machines, IsEmpty());
}

}  // namespace
}  // namespace policymap
