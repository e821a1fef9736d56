// SPDX-License-Identifier: Apache-2.0
#include "policymap/RecordingMachines.h"

#include <PolicyMap/PolicyClasses.h>

#include <gmock/gmock.h>

#include <functional>

namespace policymap {
namespace {

using PolicyMap::ClassAction;
using PolicyMap::ClassMapConfig;
using PolicyMap::ClassMapSm;
using PolicyMap::ClassMapSubConfig;
using PolicyMap::ClassMapTypeConfig;
using PolicyMap::ClassMapWatches;
using PolicyMap::PolicyClasses;
using PolicyMap::PolicyMapGlobalData;
using PolicyMap::PolicyMapSmKey;
using PolicyMap::PolicyMapStatus;
using PolicyMap::PolicyMapSubConfig;
using testing::ElementsAre;
using testing::IsEmpty;

// A class machine that runs a function once, when it is cleaned up.
class LeavingClassSm final : public RecordingClassSm {
 public:
  using RecordingClassSm::RecordingClassSm;
  std::function<void()> deed;

  void cleanup() override {
    RecordingClassSm::cleanup();
    if (auto const once = std::exchange(deed, nullptr)) {
      once();
    }
  }
};

// Holds class machines, as a policy-map machine does, and records its notifications.
class PlainPolicy final : public PolicyClasses::Policy {
 public:
  Hooks hooks;
  Kor::Ptr<PolicyMapGlobalData> global;
  Kor::Ptr<PolicyMapSubConfig> classes = Kor::make<PolicyMapSubConfig>("pm");
  Kor::Ptr<PolicyMapSubConfig const> inForce = classes;
  std::map<Kor::Name, Kor::Ptr<ClassMapSm>> machines;
  bool later = false;

  Kor::Ptr<PolicyMapSubConfig const> const& policyMap() const override { return inForce; }
  void mirrorPrio(Kor::Name const& /*name*/) override {}
  std::vector<Kor::Name> machineNames() const override {
    std::vector<Kor::Name> names;
    for (auto const& [name, machine] : machines) {
      names.push_back(name);
    }
    return names;
  }
  Kor::Ptr<ClassMapSm> classMapSm(Kor::Name const& name) const override {
    auto const found = machines.find(name);
    return found == machines.end() ? nullptr : found->second;
  }
  Kor::Ptr<ClassMapSm> createClassMapSm(Kor::Ptr<ClassMapConfig const> const& map,
                                        Kor::Ptr<ClassMapSubConfig const> const& rawMap,
                                        Kor::Ptr<ClassAction const> const& action) override {
    hooks.say("create " + text(map ? map->name() : rawMap->name()));
    if (hooks.refuseClasses) {
      return nullptr;
    }
    auto const machine = Kor::make<LeavingClassSm>(hooks, global, nullptr, map, rawMap, action);
    machine->hasNotificationActiveIs(true);
    return machine;
  }
  void classMapSmIs(Kor::Name const& name, Kor::Ptr<ClassMapSm> const& machine) override {
    machines[name] = machine;
  }
  void classMapSmDel(Kor::Name const& name) override { machines.erase(name); }
  bool dropsLeftLater() const override { return later; }
  void classChanged(Kor::Name const& name) override { hooks.say("changed " + text(name)); }
  void classRulesChanged(Kor::Name const& name, ClassMapMatchOption option) override {
    hooks.say("rules changed " + text(name) + " " + text(option));
  }
  void classActionsChanged(Kor::Name const& name) override {
    hooks.say("actions changed " + text(name));
  }
};

class ConfiguredClasses : public testing::Test {
 protected:
  Kor::Ptr<ClassMapTypeConfig> classMaps = Kor::make<ClassMapTypeConfig>();
  Kor::Ptr<PolicyMapGlobalData> global =
      Kor::make<PolicyMapGlobalData>(Kor::make<Acl::Config>(), classMaps);
  Kor::Ptr<PolicyMapStatus> status = Kor::make<PolicyMapStatus>(PolicyMapSmKey("pm", "input"));
  std::vector<std::string> watched;
  ClassMapWatches watches{global, [this](Kor::Name const& name) { watched.push_back(text(name)); }};
  PlainPolicy policy;
  PolicyClasses classes{policy, watches, status};

  ConfiguredClasses() {
    policy.global = global;
    watches.classTypeConfigIs(classMaps);
  }
  void classMap(char const* name) const {
    classMaps->classMapConfigIs(name)->currentSubConfigIs(Kor::make<ClassMapSubConfig>(name));
  }
  // Configures a class and creates its machine.
  void build(char const* name = "c") {
    classMap(name);
    policy.classes->classPrioIs(name, 10);
    classes.sync(name);
    policy.hooks.taken();
  }
  std::vector<std::string> leaves(char const* name = "c") {
    policy.classes->classPrioDel(name);
    return synced(name);
  }
  std::vector<std::string> synced(char const* name = "c") {
    policy.hooks.taken();
    classes.sync(name);
    return policy.hooks.taken();
  }
  void whenCleanedUp(std::function<void()> deed) {
    policy.machines["c"].as<LeavingClassSm>()->deed = std::move(deed);
  }
};

TEST_F(ConfiguredClasses, GetAMachineWithNameOwnerAndStatus) {
  classMap("c");
  policy.classes->classPrioIs("c", 10);
  EXPECT_THAT(synced(), ElementsAre("create c", "c: createCommonData map global", "c: initialized",
                                    "changed c"));
  auto const machine = policy.classMapSm("c");
  ASSERT_TRUE(machine);
  EXPECT_EQ(machine->className(), "c");
  EXPECT_EQ(machine->classMapStatus(), status->classMapStatus("c"));
  machine->handleMatch(ClassMapMatchOption::mac);
  machine->classCommonData()->updateAclActionsInc(1);
  EXPECT_THAT(policy.hooks.taken(), ElementsAre("rules changed c mac", "actions changed c"));
}

TEST_F(ConfiguredClasses, NamesThatAreNoClassAreLeftAlone) {
  classMap("c");
  EXPECT_THAT(synced(), IsEmpty());
  policy.inForce = nullptr;
  EXPECT_THAT(synced(), IsEmpty());
}

TEST_F(ConfiguredClasses, ThatAreRefusedAMachineAreAskedAboutEachTime) {
  policy.hooks.refuseClasses = true;
  classMap("c");
  policy.classes->classPrioIs("c", 10);
  EXPECT_THAT(synced(), ElementsAre("create c"));
  EXPECT_THAT(policy.machines, IsEmpty());
}

TEST_F(ConfiguredClasses, ThatReferToNoClassMapHaveAStatusThatSaysSo) {
  policy.classes->classPrioIs("c", 10);
  EXPECT_THAT(synced(), IsEmpty());
  auto const missing = status->classMapStatus("c");
  ASSERT_TRUE(missing);
  EXPECT_EQ(missing->error(), "missing class-map c");
  EXPECT_THAT(synced(), IsEmpty());
  EXPECT_EQ(status->classMapStatus("c"), missing) << "it stays the same";
  build();
  EXPECT_EQ(status->classMapStatus("c"), missing);
  EXPECT_EQ(missing->error(), "");
}

TEST_F(ConfiguredClasses, ThatLeaveBeforeTheyHadAMachineLoseTheirStatus) {
  policy.classes->classPrioIs("c", 10);
  classes.sync("c");
  leaves();
  EXPECT_FALSE(status->classMapStatus("c"));
}

TEST_F(ConfiguredClasses, NeedNoStatus) {
  PolicyClasses bare{policy, watches, nullptr};
  policy.classes->classPrioIs("c", 10);
  bare.sync("c");
  policy.classes->classPrioDel("c");
  bare.sync("c");
  classMap("c");
  policy.classes->classPrioIs("c", 10);
  bare.sync("c");
  EXPECT_TRUE(policy.classMapSm("c"));
  bare.takeDownAll();
  EXPECT_THAT(policy.machines, IsEmpty());
}

TEST_F(ConfiguredClasses, AreWatchedWhileTheyAreConfigured) {
  auto const changed = [this] {
    watched.clear();
    global->dependencies().changed(PolicyMap::DependencyKind::classMap, "c");
    return watched;
  };
  policy.classes->classPrioIs("c", 10);
  classes.sync("c");
  EXPECT_THAT(changed(), ElementsAre("c"));
  leaves();
  EXPECT_THAT(changed(), IsEmpty());
}

TEST_F(ConfiguredClasses, ThatLeaveAreTakenDownAndTellNothingAnyMore) {
  build();
  auto const kept = policy.classMapSm("c");
  EXPECT_THAT(leaves(), ElementsAre("c: cleanup", "c: zombie", "changed c"));
  EXPECT_THAT(policy.machines, IsEmpty());
  EXPECT_FALSE(status->classMapStatus("c"));
  kept->handleMatch(ClassMapMatchOption::mac);
  EXPECT_THAT(policy.hooks.taken(), IsEmpty());
}

TEST_F(ConfiguredClasses, ThatLeaveStayUntilTheyAreDroppedWhereThatHappensLater) {
  policy.later = true;
  build();
  EXPECT_THAT(leaves(), ElementsAre("changed c"));
  EXPECT_TRUE(policy.classMapSm("c"));
  classes.dropLeft();
  EXPECT_THAT(policy.hooks.taken(), ElementsAre("c: cleanup", "c: zombie", "changed c"));
  EXPECT_THAT(policy.machines, IsEmpty());
  classes.dropLeft();
  EXPECT_THAT(policy.hooks.taken(), IsEmpty());
}

TEST_F(ConfiguredClasses, ThatAreBackBeforeTheyAreDroppedKeepTheirMachineAndTheirStatusIsDue) {
  policy.later = true;
  build();
  auto const kept = policy.classMapSm("c");
  leaves();
  policy.classes->classPrioIs("c", 10);
  EXPECT_THAT(synced(), ElementsAre("changed c"));
  EXPECT_THAT(synced(), IsEmpty());
  classes.dropLeft();
  EXPECT_EQ(policy.classMapSm("c"), kept);
}

TEST_F(ConfiguredClasses, ThatComeBackWhileTheyAreDroppedAreBuiltOnce) {
  policy.later = true;
  build();
  leaves();
  whenCleanedUp([&] {
    policy.classes->classPrioIs("c", 10);
    classes.sync("c");
  });
  classes.dropLeft();
  EXPECT_THAT(policy.hooks.taken(),
              ElementsAre("c: cleanup", "c: zombie", "changed c", "create c",
                          "c: createCommonData map global", "c: initialized", "changed c"));
  EXPECT_TRUE(policy.classMapSm("c"));
}

TEST_F(ConfiguredClasses, ThatAreConfiguredWhileAllAreTakenDownGetNoMachine) {
  build();
  classMap("d");
  whenCleanedUp([&] {
    policy.classes->classPrioIs("d", 20);
    classes.sync("c");
    classes.sync("d");
    classes.takeDownAll();
    classes.sync("d");
  });
  classes.takeDownAll();
  EXPECT_THAT(policy.machines, IsEmpty());
  classes.sync("d");
  EXPECT_TRUE(policy.classMapSm("d"));
}

}  // namespace
}  // namespace policymap
