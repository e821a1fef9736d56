// SPDX-License-Identifier: Apache-2.0
#include "policymap/RecordingMachines.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace policymap {
namespace {

using PolicyMap::ClassMapSubConfig;
using PolicyMap::PolicyMapConfig;
using PolicyMap::PolicyMapGlobalData;
using PolicyMap::PolicyMapSmKey;
using PolicyMap::PolicyMapStatus;
using PolicyMap::PolicyMapSubConfig;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class PolicyMachine : public testing::Test {
 protected:
  Hooks hooks;
  Kor::Ptr<PolicyMap::ClassMapTypeConfig> classMaps = Kor::make<PolicyMap::ClassMapTypeConfig>();
  Kor::Ptr<PolicyMapGlobalData> global =
      Kor::make<PolicyMapGlobalData>(Kor::make<Acl::Config>(), classMaps);
  Kor::Ptr<PolicyMapConfig> config = Kor::make<PolicyMapConfig>("pm");
  Kor::Ptr<PolicyMapSubConfig> classes = Kor::make<PolicyMapSubConfig>("pm");
  Kor::Ptr<PolicyMapStatus> status = Kor::make<PolicyMapStatus>(PolicyMapSmKey("pm", "input"));
  Kor::Ptr<RecordingPolicySm> machine;

  PolicyMachine() { config->currentSubConfigIs(classes); }
  ~PolicyMachine() override { machine = nullptr; }

  void make() {
    machine = Kor::make<RecordingPolicySm>(hooks, global, PolicyMapSmKey("pm", "input"), config,
                                           classMaps, status);
  }
  void activate() {
    make();
    machine->hasNotificationActiveIs(true);
  }
  void classMap(char const* name) {
    classMaps->classMapConfigIs(name)->currentSubConfigIs(Kor::make<ClassMapSubConfig>(name));
    global->dependencies().changed(PolicyMap::DependencyKind::classMap, name);
  }
  void classMapGone(char const* name) {
    classMaps->classMapConfigDel(name);
    global->dependencies().changed(PolicyMap::DependencyKind::classMap, name);
  }
};

TEST_F(PolicyMachine, StandingAloneItSeesClassMapsThatComeAndGo) {
  classes->classPrioIs("c", 10);
  activate();
  EXPECT_FALSE(machine->classMapSm("c"));
  classMaps->classMapConfigIs("c");
  EXPECT_TRUE(machine->classMapSm("c"));
  classMaps->classMapConfigIs("other");
  EXPECT_EQ(machine->classMapSms(), 1U);
  classMaps->classMapConfigDel("c");
  EXPECT_FALSE(machine->classMapSm("c"));
}

TEST_F(PolicyMachine, WithoutGlobalDataItSeesClassMapsToo) {
  classes->classPrioIs("c", 10);
  machine = Kor::make<RecordingPolicySm>(hooks, nullptr, PolicyMapSmKey("pm", "input"), config,
                                         classMaps, status);
  machine->hasNotificationActiveIs(true);
  classMaps->classMapConfigIs("c");
  EXPECT_TRUE(machine->classMapSm("c"));
}

TEST_F(PolicyMachine, WatchesTheClassMapsItIsGiven) {
  classes->classPrioIs("c", 10);
  activate();
  auto const others = Kor::make<PolicyMap::ClassMapTypeConfig>();
  machine->classTypeConfigIs(others);
  classMaps->classMapConfigIs("c");
  EXPECT_FALSE(machine->classMapSm("c"));
  others->classMapConfigIs("c");
  EXPECT_TRUE(machine->classMapSm("c"));
  machine->classTypeConfigDel();
  EXPECT_FALSE(machine->classMapSm("c"));
}

TEST_F(PolicyMachine, AsAZombieItIsQuietAboutClassMaps) {
  classes->classPrioIs("c", 10);
  activate();
  machine->korDoZombieReactors(true);
  classMaps->classMapConfigIs("c");
  EXPECT_FALSE(machine->classMapSm("c"));
  EXPECT_EQ(machine->classTypeConfig(), classMaps);
}

// A machine that is not marked for deletion when its reactors stop. It counts the requests for
// class machines and creates none.
class UnmarkedPolicySm final : public PolicyMap::PolicyMapSm {
 public:
  template <class... Args>
  explicit UnmarkedPolicySm(Args const&... args) : PolicyMapSm(args...) {}
  unsigned asked = 0;

  Kor::Ptr<PolicyMap::ClassMapSm> createClassMapSm(
      Kor::Ptr<PolicyMap::ClassMapConfig const> const& /*map*/,
      Kor::Ptr<PolicyMap::ClassMapSubConfig const> const& /*rawMap*/,
      Kor::Ptr<PolicyMap::ClassAction const> const& /*action*/) override {
    ++asked;
    return nullptr;
  }
};

TEST_F(PolicyMachine, WithoutReactorsItSeesNoClassMapThoughItIsNotMarked) {
  classes->classPrioIs("c", 10);
  auto const unmarked =
      Kor::make<UnmarkedPolicySm>(global, PolicyMapSmKey("pm", "input"), config, classMaps, status);
  unmarked->hasNotificationActiveIs(true);
  classMaps->classMapConfigIs("c");
  EXPECT_EQ(unmarked->asked, 1U);
  unmarked->korDoZombieReactors(true);
  classMaps->classMapConfigDel("c");
  classMaps->classMapConfigIs("c");
  EXPECT_EQ(unmarked->asked, 1U);
}

TEST_F(PolicyMachine, IsInitializedByItsFirstActivationOnly) {
  activate();
  EXPECT_THAT(hooks.taken(), Contains("pm/input: initialized").Times(1));
  machine->hasNotificationActiveIs(false);
  machine->hasNotificationActiveIs(true);
  EXPECT_THAT(hooks.taken(), Not(Contains("pm/input: initialized")));
}

TEST_F(PolicyMachine, CallsNoHookWhileItIsBuiltOrEnds) {
  classMap("c");
  classes->classPrioIs("c", 10);
  make();
  EXPECT_THAT(hooks.taken(), IsEmpty());
  EXPECT_FALSE(machine->policyCommonData() || machine->policyMap());
  EXPECT_FALSE(machine->initialized() || machine->actionsActive());
  EXPECT_EQ(machine->key(), PolicyMapSmKey("pm", "input"));
  EXPECT_EQ(machine->policyMapConfig(), config);
  EXPECT_EQ(machine->classTypeConfig(), classMaps);
  EXPECT_EQ(machine->status(), status);
  EXPECT_EQ(machine->globalCommonData(), global);
  machine = nullptr;
  EXPECT_THAT(hooks.taken(), IsEmpty());
}

TEST_F(PolicyMachine, HasItsCommonDataBeforeItAsksForClassMachines) {
  classMap("c");
  classes->classPrioIs("c", 10);
  classes->classActionIs("c");
  activate();
  EXPECT_THAT(hooks.taken(), ElementsAre("pm/input: createCommonData",
                                         "pm/input: createClassMapSm c - action policyData",
                                         "c: createCommonData map global", "c: initialized",
                                         "pm/input: initialized"));
  ASSERT_TRUE(machine->classMapSm("c"));
  EXPECT_EQ(machine->classMapSm("c")->policyCommonData(), machine->policyCommonData());
  EXPECT_EQ(machine->policyCommonData()->policyKey(), machine->key());
  EXPECT_EQ(machine->policyMap(), classes);
}

TEST_F(PolicyMachine, MirrorsThePrioritiesOfItsClasses) {
  classMap("a");
  classMap("b");
  classes->classPrioIs("a", 20);
  classes->classPrioIs("b", 10);
  activate();
  EXPECT_EQ(machine->classPrio("a"), 20U);
  EXPECT_EQ(machine->prioClass(10), "b");
  ASSERT_EQ(machine->classesInOrder().size(), 2U);
  EXPECT_EQ(machine->classesInOrder()[0]->name(), "b");
  classes->classPrioIs("b", 30);
  EXPECT_EQ(machine->classPrio("b"), 30U);
  EXPECT_FALSE(machine->korPrioClass(10));
  EXPECT_EQ(machine->prioClass(30), "b");
  EXPECT_EQ(machine->classesInOrder()[0]->name(), "a");
  classes->classPrioDel("a");
  EXPECT_EQ(machine->classPrios(), 1U);
  EXPECT_EQ(machine->prioClasss(), 1U);
}

TEST_F(PolicyMachine, AClassWithoutClassMapAndRawMatchesHasNoMachineYet) {
  classes->classPrioIs("c", 10);
  activate();
  EXPECT_EQ(machine->classMapSms(), 0U);
  EXPECT_THAT(hooks.taken(), Not(Contains(HasSubstr("createClassMapSm"))));
  classMap("c");
  EXPECT_THAT(hooks.taken(), Contains("pm/input: createClassMapSm c - no-action policyData"));
  EXPECT_EQ(machine->classMapSms(), 1U);
}

TEST_F(PolicyMachine, RawMatchesServeWhereNoClassMapExists) {
  classes->classPrioIs("c", 10);
  classes->rawClassMapIs("c", Kor::make<ClassMapSubConfig>("c"));
  activate();
  EXPECT_THAT(hooks.taken(), Contains("pm/input: createClassMapSm - c no-action policyData"));
  auto const kept = machine->classMapSm("c");
  ASSERT_TRUE(kept);
  classMap("c");
  EXPECT_EQ(machine->classMapSm("c"), kept);
  EXPECT_EQ(kept->classMap(), classMaps->classMapConfig("c")->currentSubConfig());
  classMapGone("c");
  EXPECT_EQ(machine->classMapSm("c"), kept);
  EXPECT_EQ(kept->classMap(), classes->rawClassMap("c"));
}

TEST_F(PolicyMachine, AClassIsItsPriorityNotItsAction) {
  classMap("c");
  classes->classActionIs("c");
  activate();
  EXPECT_EQ(machine->classMapSms(), 0U);
  classes->classPrioIs("c", 10);
  EXPECT_TRUE(machine->classMapSm("c")->classAction());
  classes->classActionDel("c");
  EXPECT_FALSE(machine->classMapSm("c")->classAction());
}

TEST_F(PolicyMachine, ARemovedClassIsCleanedUpThenAZombieThenReleased) {
  classMap("c");
  classes->classPrioIs("c", 10);
  classes->classActionIs("c")->actionIs(PolicyMap::ActionType{1}, Kor::make<NumberAction>("c", 1));
  activate();
  EXPECT_TRUE(status->classMapStatus("c"));
  hooks.taken();
  classes->classPrioDel("c");
  EXPECT_THAT(hooks.taken(), ElementsAre("c: cleanup", "c/1: cleanup data", "c/1: zombie",
                                         "c/1: gone", "c: zombie"));
  EXPECT_EQ(machine->classMapSms(), 0U);
  EXPECT_FALSE(status->classMapStatus("c"));
}

TEST_F(PolicyMachine, AClassWhoseClassMapGoesIsLetGo) {
  classMap("c");
  classes->classPrioIs("c", 10);
  activate();
  hooks.taken();
  classMapGone("c");
  EXPECT_THAT(hooks.taken(), Contains("c: cleanup"));
  EXPECT_EQ(machine->classMapSms(), 0U);
  EXPECT_EQ(machine->classPrio("c"), 10U) << "it stays configured";
}

TEST_F(PolicyMachine, AnotherSubConfigurationKeepsTheClassesOfBoth) {
  for (char const* name : {"a", "b", "c"}) {
    classMap(name);
  }
  classes->classPrioIs("a", 10);
  classes->classPrioIs("b", 20);
  activate();
  auto const kept = machine->classMapSm("b");
  auto const next = Kor::make<PolicyMapSubConfig>("pm");
  next->classPrioIs("b", 5);
  next->classPrioIs("c", 6);
  auto const action = next->classActionIs("b");
  config->currentSubConfigIs(next);
  EXPECT_EQ(machine->policyMap(), next);
  EXPECT_EQ(machine->classMapSms(), 2U);
  EXPECT_EQ(machine->classMapSm("b"), kept);
  EXPECT_EQ(kept->classAction(), action);
  EXPECT_TRUE(machine->classMapSm("c"));
  hooks.taken();
  classes->classPrioIs("d", 1);
  EXPECT_THAT(hooks.taken(), IsEmpty()) << "the old one is edited freely";
  config->currentSubConfigIs(nullptr);
  EXPECT_EQ(machine->classMapSms(), 0U);
  EXPECT_EQ(machine->classPrios(), 0U);
}

TEST_F(PolicyMachine, AnotherPolicyMapConfigurationTakesOver) {
  classMap("a");
  classes->classPrioIs("a", 10);
  activate();
  auto const other = Kor::make<PolicyMapConfig>("pm");
  machine->policyMapConfigIs(other);
  EXPECT_EQ(machine->classMapSms(), 0U);
  auto const subConfig = Kor::make<PolicyMapSubConfig>("pm");
  subConfig->classPrioIs("a", 1);
  other->currentSubConfigIs(subConfig);
  EXPECT_EQ(machine->classMapSms(), 1U);
  machine->policyMapConfigDel();
  EXPECT_EQ(machine->classMapSms(), 0U);
  EXPECT_FALSE(machine->policyMapConfig());
}

TEST_F(PolicyMachine, MayBeRefusedAClassMachine) {
  hooks.refuseClasses = true;
  classMap("c");
  classes->classPrioIs("c", 10);
  activate();
  EXPECT_EQ(machine->classMapSms(), 0U);
  EXPECT_THAT(machine->classesInOrder(), IsEmpty());
}

TEST_F(PolicyMachine, AsksOnceForAClassMachineThatItIsRefused) {
  hooks.refuseClasses = true;
  classMap("c");
  classes->classPrioIs("c", 10);
  activate();
  auto const calls = hooks.taken();
  EXPECT_EQ(
      std::count(calls.begin(), calls.end(), "pm/input: createClassMapSm c - no-action policyData"),
      1);
  machine->classTypeConfigIs(classMaps);
  EXPECT_THAT(hooks.taken(), IsEmpty()) << "nothing has changed";
}

TEST_F(PolicyMachine, ClassesMayExchangeTheirPriorities) {
  classMap("a");
  classMap("b");
  classes->classPrioIs("a", 10);
  classes->classPrioIs("b", 20);
  activate();
  classes->classPrioIs("a", 20);
  classes->classPrioIs("b", 10);
  EXPECT_EQ(machine->prioClass(10), "b");
  EXPECT_EQ(machine->prioClass(20), "a");
  EXPECT_EQ(machine->prioClasss(), 2U);
}

TEST_F(PolicyMachine, NamedClassesAreInOrderAsFarAsTheyHaveAMachine) {
  for (char const* name : {"a", "b", "c"}) {
    classMap(name);
  }
  classes->classPrioIs("c", 10);
  classes->classPrioIs("b", 20);
  classes->classPrioIs("a", 20);
  classes->classPrioIs("no-map", 5);
  activate();
  auto const names = [this](std::set<Kor::Name> const& some) {
    std::vector<std::string> found;
    for (auto const& one : machine->classesInOrder(some)) {
      found.push_back(text(one->className()));
    }
    return found;
  };
  EXPECT_THAT(names({"a", "b", "c", "no-map", "no-class"}), ElementsAre("c", "a", "b"));
  EXPECT_THAT(names({"b"}), ElementsAre("b"));
  config->currentSubConfigIs(nullptr);
  EXPECT_THAT(names({"a"}), IsEmpty());
}

TEST_F(PolicyMachine, AcceptsEmptyPointersEverywhere) {
  machine = Kor::make<RecordingPolicySm>(hooks, nullptr, PolicyMapSmKey("pm", "input"), nullptr,
                                         nullptr, nullptr);
  machine->hasNotificationActiveIs(true);
  EXPECT_TRUE(machine->initialized() && machine->policyCommonData());
  machine->policyMapConfigIs(config);
  classes->rawClassMapIs("c", Kor::make<ClassMapSubConfig>("c"));
  classes->classPrioIs("c", 10);
  EXPECT_TRUE(machine->classMapSm("c"));
  EXPECT_FALSE(machine->classMapSm("c")->classCommonData());
  machine->cleanup();
  EXPECT_EQ(machine->classMapSms(), 0U);
}

TEST_F(PolicyMachine, IsQuietUntilItsNotificationsAreOn) {
  make();
  classMap("c");
  classes->classPrioIs("c", 10);
  config->currentSubConfigIs(nullptr);
  config->currentSubConfigIs(classes);
  EXPECT_THAT(hooks.taken(), IsEmpty());
  EXPECT_EQ(machine->classMapSms(), 0U);
}

TEST_F(PolicyMachine, TakesUpWhatItMissedWhenItIsActivatedAgain) {
  classMap("a");
  classes->classPrioIs("a", 10);
  classes->classPrioIs("late", 30);
  activate();
  machine->hasNotificationActiveIs(false);
  hooks.taken();
  classMap("b");
  classMap("late");
  classes->classPrioDel("a");
  classes->classPrioIs("b", 20);
  EXPECT_THAT(hooks.taken(), IsEmpty());
  machine->hasNotificationActiveIs(true);
  EXPECT_FALSE(machine->classMapSm("a"));
  EXPECT_TRUE(machine->classMapSm("b"));
  EXPECT_TRUE(machine->classMapSm("late"));
}

TEST_F(PolicyMachine, AZombieIsQuietAndAFormerOneHearsAgain) {
  activate();
  classes->classPrioIs("late", 30);
  machine->korDoZombieReactors(true);
  hooks.taken();
  classMap("c");
  classMap("late");
  classes->classPrioIs("c", 10);
  config->currentSubConfigIs(nullptr);
  config->currentSubConfigIs(classes);
  EXPECT_THAT(hooks.taken(), IsEmpty());
  EXPECT_EQ(machine->policyMapConfig(), config);
  EXPECT_EQ(machine->policyMap(), classes);
  machine->korDoZombieReactors(false);
  classes->classPrioIs("c", 11);
  EXPECT_TRUE(machine->classMapSm("c"));
}

TEST_F(PolicyMachine, SwitchingNotificationsOnForAZombieOnlyStoresTheState) {
  classMap("c");
  classes->classPrioIs("c", 10);
  make();
  machine->korDoZombieReactors(true);
  hooks.taken();
  machine->hasNotificationActiveIs(true);
  EXPECT_TRUE(machine->hasNotificationActive());
  EXPECT_FALSE(machine->initialized() || machine->policyCommonData());
  EXPECT_THAT(hooks.taken(), IsEmpty());
}

TEST_F(PolicyMachine, TellsOfEveryInterfaceThatCountsDifferently) {
  activate();
  hooks.taken();
  machine->activeIntfIs(intf("Ethernet1"), true);
  machine->activeIntfIs(intf("Ethernet1"), true);
  machine->activeIntfIs(intf("Ethernet1"), false);
  machine->activeIntfDel(intf("Ethernet1"));
  machine->activeIntfDel(intf("Ethernet1"));
  EXPECT_THAT(hooks.taken(),
              ElementsAre("pm/input: activeIntf Ethernet1 on", "pm/input: activeIntf Ethernet1 off",
                          "pm/input: activeIntf Ethernet1 off"));
}

TEST_F(PolicyMachine, HooksCalledDirectlyInsertNothing) {
  activate();
  classMap("c");
  EXPECT_TRUE(machine->createClassMapSm(classMaps->classMapConfig("c"), nullptr, nullptr));
  EXPECT_TRUE(machine->createCommonData());
  EXPECT_EQ(machine->classMapSms(), 0U);
}

TEST_F(PolicyMachine, ClassMachinesMayOutliveIt) {
  classMap("c");
  classes->classPrioIs("c", 10);
  activate();
  auto const kept = machine->classMapSm("c");
  machine = nullptr;
  classMaps->classMapConfig("c")->currentSubConfig()->matchIs(
      1, PolicyMap::ClassMapMatch::acl(ClassMapMatchOption::ipv4, "a"));
  kept->classCommonData()->updateAclActionsInc(1);
  EXPECT_EQ(kept->name(), "c");
}

}  // namespace
}  // namespace policymap
