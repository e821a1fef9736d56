// SPDX-License-Identifier: Apache-2.0
#include "policymap/RecordingMachines.h"

#include <gmock/gmock.h>

#include <functional>

namespace policymap {
namespace {

using PolicyMap::ActionType;
using PolicyMap::ClassAction;
using PolicyMap::ClassMapMatch;
using PolicyMap::ClassMapSubConfig;
using PolicyMap::PolicyMapGlobalData;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

// Records the reports of a class machine.
class RecordingOwner final : public PolicyMap::ClassMapSm::Owner {
 public:
  std::vector<std::string> reports;

  void classRulesChanged(Kor::Name const& className, ClassMapMatchOption option) override {
    reports.push_back("rules " + text(className) + " " + text(option));
  }
  void classActionsChanged(Kor::Name const& className) override {
    reports.push_back("actions " + text(className));
  }
  std::vector<std::string> taken() { return std::exchange(reports, {}); }
};

class ClassMachine : public testing::Test {
 protected:
  Hooks hooks;
  RecordingOwner owner;
  Kor::Ptr<Acl::Config> acls = Kor::make<Acl::Config>();
  Kor::Ptr<PolicyMap::ClassMapTypeConfig> classMaps = Kor::make<PolicyMap::ClassMapTypeConfig>();
  Kor::Ptr<PolicyMapGlobalData> global =
      Kor::make<PolicyMapGlobalData>(acls, classMaps, Kor::make<Acl::AclDiff>());
  Kor::Ptr<PolicyMap::ClassMapConfig> config = classMaps->classMapConfigIs("c");
  Kor::Ptr<ClassAction> actions = Kor::make<ClassAction>("c");
  Kor::Ptr<RecordingClassSm> machine;

  ClassMachine() { config->currentSubConfigIs(Kor::make<ClassMapSubConfig>("c")); }
  ~ClassMachine() override { machine = nullptr; }

  void make() {
    machine = Kor::make<RecordingClassSm>(hooks, global, nullptr, config, nullptr, actions);
  }
  void activate() {
    make();
    machine->hasNotificationActiveIs(true);
  }
  Kor::Ptr<NumberAction> action(int kind) {
    auto created = Kor::make<NumberAction>("c", kind);
    actions->actionIs(ActionType{kind}, created);
    return created;
  }
  void list(char const* name, std::uint32_t seqno, int protocol = 6) {
    Acl::IpRuleConfig rule;
    rule.protocolIs(protocol);
    acls->ipAclIs(name)->ruleIs(seqno, rule);
    global->dependencies().changed(PolicyMap::DependencyKind::ipAcl, name);
  }
  void matches(std::uint32_t place, char const* name) {
    config->currentSubConfig()->matchIs(place, ClassMapMatch::acl(ClassMapMatchOption::ipv4, name));
  }
  std::vector<std::string> rules() {
    std::vector<std::string> found;
    machine->rules(ClassMapMatchOption::ipv4)->forEach([&](auto const& rule) {
      found.push_back(text(rule.aclName) + ":" + std::to_string(rule.seqno));
      return true;
    });
    return found;
  }
};

TEST_F(ClassMachine, CallsNoHookWhileItIsBuiltOrEnds) {
  action(1);
  make();
  EXPECT_THAT(hooks.taken(), IsEmpty());
  EXPECT_FALSE(machine->classCommonData());
  EXPECT_FALSE(machine->classMap());
  EXPECT_FALSE(machine->classMapStatus());
  EXPECT_EQ(machine->actionSms(), 0U);
  EXPECT_FALSE(machine->initialized() || machine->initializing() || machine->actionsActive());
  machine = nullptr;
  EXPECT_THAT(hooks.taken(), IsEmpty());
}

TEST_F(ClassMachine, IsCompleteWhenItsNotificationsAreOn) {
  action(1);
  action(3);
  activate();
  EXPECT_EQ(machine->classMap(), config->currentSubConfig());
  ASSERT_TRUE(machine->classCommonData());
  EXPECT_EQ(machine->classCommonData()->name(), "c");
  EXPECT_EQ(machine->classCommonData()->classMap(), config->currentSubConfig());
  EXPECT_EQ(machine->classCommonData()->aclConfig(), acls);
  EXPECT_EQ(machine->classCommonData()->classMapStatus(), machine->classMapStatus());
  EXPECT_TRUE(machine->classMapStatus());
  EXPECT_EQ(machine->actionSms(), 2U);
  EXPECT_TRUE(machine->actionSm(ActionType{1}));
  EXPECT_TRUE(machine->actionSm(ActionType{3}));
  EXPECT_TRUE(machine->initialized() && machine->actionsActive());
  EXPECT_FALSE(machine->initializing());
}

TEST_F(ClassMachine, HasClassMapAndCommonDataBeforeItAsksForActionMachines) {
  action(1);
  activate();
  EXPECT_THAT(hooks.taken(),
              ElementsAre("c: createCommonData map global", "c: createActionSm 1 data action",
                          "c/1: handleAction 0", "c/1: initialized", "c: initialized"));
}

TEST_F(ClassMachine, AsksForConfiguredKindsOnly) {
  activate();
  EXPECT_THAT(hooks.taken(), Not(Contains(testing::HasSubstr("createActionSm"))));
  action(2);
  EXPECT_THAT(hooks.taken(), ElementsAre("c: createActionSm 2 data action", "c/2: handleAction 0",
                                         "c/2: initialized"));
}

TEST_F(ClassMachine, WithoutAClassActionItAsksForNone) {
  actions = nullptr;
  activate();
  EXPECT_FALSE(machine->classAction());
  EXPECT_EQ(machine->actionSms(), 0U);
  machine->handleAction();
  machine->handleAction(ActionType{1});
  EXPECT_THAT(hooks.taken(), Not(Contains(testing::HasSubstr("createActionSm"))));
}

TEST_F(ClassMachine, TakesAnEmptyAnswerOnceUntilTheConfigurationChanges) {
  hooks.refusedKinds = {4};
  action(4);
  activate();
  EXPECT_THAT(hooks.taken(), Contains("c: createActionSm 4 data action"));
  EXPECT_EQ(machine->actionSms(), 0U);
  machine->handleAction();
  machine->handleAction(ActionType{4});
  action(1);
  EXPECT_THAT(hooks.taken(), Not(Contains("c: createActionSm 4 data action")));
  action(4);
  EXPECT_THAT(hooks.taken(), ElementsAre("c: createActionSm 4 data action"));
  actions->actionDel(ActionType{4});
  hooks.refusedKinds.clear();
  action(4);
  EXPECT_TRUE(machine->actionSm(ActionType{4}));
}

TEST_F(ClassMachine, AnActionThatWasRefusedAMachineLeavesNoTrace) {
  hooks.refusedKinds = {4};
  auto const refused = action(4);
  activate();
  EXPECT_TRUE(machine->classCommonData()->action(ActionType{4}));
  actions->actionDel(ActionType{4});
  EXPECT_FALSE(machine->classCommonData()->action(ActionType{4}));
  hooks.taken();
  actions->actionIs(ActionType{4}, refused);
  EXPECT_THAT(hooks.taken(), ElementsAre("c: createActionSm 4 data action"));
}

TEST_F(ClassMachine, ARemovedActionMachineIsAZombieAlsoWhenACallerHoldsIt) {
  auto const watched = action(1);
  activate();
  auto const held = machine->actionSm(ActionType{1});
  actions->actionDel(ActionType{1});
  EXPECT_TRUE(held->korMarkedForDeletion());
  hooks.taken();
  watched->numberIs(7);
  EXPECT_THAT(hooks.taken(), IsEmpty());
}

TEST_F(ClassMachine, IsInitializingWhileItBuildsWhatItNeeds) {
  class Looking : public RecordingClassSm {
   public:
    using RecordingClassSm::RecordingClassSm;
    std::vector<bool> seen;
    Kor::Ptr<PolicyMap::ClassMapSmCommonData> createCommonData() override {
      seen.push_back(initializing());
      return RecordingClassSm::createCommonData();
    }
    Kor::Ptr<PolicyMap::ActionSm> createActionSm(ActionType type) override {
      seen.push_back(initializing());
      return RecordingClassSm::createActionSm(type);
    }
    void handleInitialized() override { seen.push_back(initializing()); }
  };
  action(1);
  auto const looking = Kor::make<Looking>(hooks, global, nullptr, config, nullptr, actions);
  looking->hasNotificationActiveIs(true);
  EXPECT_THAT(looking->seen, ElementsAre(true, true, false));
}

TEST_F(ClassMachine, CleansARemovedActionUpOnceThenMakesItAZombieThenReleasesIt) {
  action(1);
  activate();
  hooks.taken();
  actions->actionDel(ActionType{1});
  EXPECT_THAT(hooks.taken(), ElementsAre("c/1: cleanup data", "c/1: zombie", "c/1: gone"));
  EXPECT_EQ(machine->actionSms(), 0U);
  EXPECT_FALSE(machine->actionsActive());
  machine->handleAction();
  machine->cleanup();
  EXPECT_THAT(hooks.taken(), ElementsAre("c: cleanup"));
}

TEST_F(ClassMachine, AReplacedActionOfTheSameKindKeepsItsMachine) {
  action(1);
  activate();
  auto const kept = machine->actionSm(ActionType{1});
  hooks.taken();
  auto const other = Kor::make<NumberAction>("c", 1);
  other->numberIs(5);
  actions->actionIs(ActionType{1}, other);
  EXPECT_THAT(hooks.taken(), ElementsAre("c/1: handleAction 5")) << "no passing 0";
  EXPECT_EQ(machine->actionSm(ActionType{1}), kept);
  EXPECT_EQ(kept->action(), other);
}

TEST_F(ClassMachine, AReplacedClassActionWithAnActionOfTheSameKindKeepsItsMachine) {
  action(1);
  activate();
  auto const kept = machine->actionSm(ActionType{1});
  hooks.taken();
  auto const other = Kor::make<ClassAction>("c");
  auto const action = Kor::make<NumberAction>("c", 1);
  other->actionIs(ActionType{1}, action);
  other->actionIs(ActionType{2}, Kor::make<NumberAction>("c", 2));
  machine->classActionIs(other);
  EXPECT_EQ(machine->actionSm(ActionType{1}), kept);
  EXPECT_EQ(kept->action(), action);
  EXPECT_TRUE(machine->actionSm(ActionType{2}));
}

TEST_F(ClassMachine, ALostClassActionTakesAllActionMachinesWithIt) {
  action(1);
  action(2);
  activate();
  hooks.taken();
  machine->classActionDel();
  EXPECT_FALSE(machine->classAction());
  auto const calls = hooks.taken();
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "c/1: cleanup data"), 1);
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "c/2: cleanup data"), 1);
  EXPECT_EQ(machine->actionSms(), 0U);
  machine->classActionIs(actions);
  EXPECT_EQ(machine->actionSms(), 2U);
}

TEST_F(ClassMachine, TellsTheCommonDataWhichActionsAreConfigured) {
  auto const first = action(1);
  activate();
  EXPECT_EQ(machine->classCommonData()->action(ActionType{1}), first);
  auto const second = action(1);
  EXPECT_EQ(machine->classCommonData()->action(ActionType{1}), second);
  actions->actionDel(ActionType{1});
  EXPECT_EQ(machine->classCommonData()->actions(), 0U);
}

TEST_F(ClassMachine, AValueWrittenToALiveActionReachesItsMachine) {
  auto const live = action(1);
  activate();
  hooks.taken();
  live->numberIs(9);
  EXPECT_THAT(hooks.taken(), ElementsAre("c/1: handleAction 9"));
}

TEST_F(ClassMachine, ItsNameIsThatOfTheClassMapElseOfTheRawMatchesElseEmpty) {
  auto const raw = Kor::make<ClassMapSubConfig>("raw");
  auto const both = Kor::make<RecordingClassSm>(hooks, global, nullptr, config, raw, nullptr);
  EXPECT_EQ(both->name(), "c");
  auto const rawOnly = Kor::make<RecordingClassSm>(hooks, global, nullptr, nullptr, raw, nullptr);
  EXPECT_EQ(rawOnly->name(), "raw");
  auto const none = Kor::make<RecordingClassSm>(hooks, nullptr, nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(none->name(), "");
}

TEST_F(ClassMachine, TheClassMapIsInForceElseTheRawMatches) {
  auto const raw = Kor::make<ClassMapSubConfig>("c");
  machine = Kor::make<RecordingClassSm>(hooks, global, nullptr, config, raw, nullptr);
  machine->hasNotificationActiveIs(true);
  EXPECT_EQ(machine->classMap(), config->currentSubConfig());
  machine->classMapConfigDel();
  EXPECT_EQ(machine->classMap(), raw);
  EXPECT_EQ(machine->classCommonData()->classMap(), raw);
  machine->rawClassMapSubConfigDel();
  EXPECT_FALSE(machine->classMap());
  machine->classMapConfigIs(config);
  EXPECT_EQ(machine->classMap(), config->currentSubConfig());
}

TEST_F(ClassMachine, AnotherSubConfigurationTakesOver) {
  activate();
  list("a", 10);
  auto const next = Kor::make<ClassMapSubConfig>("c");
  next->matchIs(1, ClassMapMatch::acl(ClassMapMatchOption::ipv4, "a"));
  EXPECT_THAT(rules(), IsEmpty());
  config->currentSubConfigIs(next);
  EXPECT_EQ(machine->classMap(), next);
  EXPECT_THAT(rules(), ElementsAre("a:10"));
  config->currentSubConfigIs(nullptr);
  EXPECT_THAT(rules(), IsEmpty());
}

TEST_F(ClassMachine, FollowsItsMatchesAndItsLists) {
  list("a", 10);
  list("b", 5);
  activate();
  matches(2, "a");
  EXPECT_THAT(rules(), ElementsAre("a:10"));
  matches(1, "b");
  EXPECT_THAT(rules(), ElementsAre("b:5", "a:10"));
  list("a", 3);
  EXPECT_THAT(rules(), ElementsAre("b:5", "a:3", "a:10"));
  config->currentSubConfig()->matchDel(1);
  EXPECT_THAT(rules(), ElementsAre("a:3", "a:10"));
}

TEST_F(ClassMachine, AnIdenticalRewriteKeepsTheRulesObject) {
  list("a", 10);
  activate();
  matches(1, "a");
  auto const before = machine->rules(ClassMapMatchOption::ipv4);
  acls->ipAcl("a")->ruleDelAll();
  list("a", 10);
  EXPECT_EQ(machine->rules(ClassMapMatchOption::ipv4), before);
  list("a", 10, 17);
  EXPECT_NE(machine->rules(ClassMapMatchOption::ipv4), before);
}

TEST_F(ClassMachine, RulesOfAnOptionThatIsNotMatchedAreEmptyAndNeedNoMachine) {
  activate();
  for (ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
    EXPECT_TRUE(machine->rules(option)->empty());
  }
  EXPECT_EQ(machine->classMapMatchSms(), 0U);
  EXPECT_EQ(machine->ruleError(), "");
}

TEST_F(ClassMachine, AListThatIsMatchedTwiceIsThereOnce) {
  list("a", 10);
  list("b", 5);
  activate();
  matches(1, "a");
  matches(2, "b");
  matches(3, "a");
  EXPECT_THAT(rules(), ElementsAre("a:10", "b:5"));
}

TEST_F(ClassMachine, AMatchWithoutANameMatchesNothing) {
  Acl::IpRuleConfig own;
  own.protocolIs(17);
  list("", 1);
  activate();
  config->currentSubConfig()->matchIs(1, ClassMapMatch::rule(own));
  config->currentSubConfig()->matchIs(2, ClassMapMatch());
  EXPECT_THAT(rules(), ElementsAre(":1")) << "the rule of the class-map alone";
}

TEST_F(ClassMachine, AcceptsEmptyPointersEverywhere) {
  machine = Kor::make<RecordingClassSm>(hooks, nullptr, nullptr, nullptr, nullptr, nullptr);
  machine->hasNotificationActiveIs(true);
  EXPECT_FALSE(machine->classCommonData());
  EXPECT_FALSE(machine->classMap());
  EXPECT_TRUE(machine->initialized());
  EXPECT_THAT(rules(), IsEmpty());
  EXPECT_EQ(machine->ruleError(), "");
  machine->classActionIs(actions);
  action(1);
  EXPECT_THAT(hooks.taken(), Not(Contains(testing::HasSubstr("create"))))
      << "without global data there are no common data and no action machines";
  machine->cleanup();
  machine->korDoZombieReactors(true);
}

TEST_F(ClassMachine, MayBeRefusedCommonDataStatusAndMatchMachines) {
  hooks.refuseClassData = hooks.refuseClassStatus = hooks.refuseMatchSm = true;
  list("a", 10);
  action(1);
  activate();
  matches(1, "a");
  EXPECT_FALSE(machine->classCommonData() || machine->classMapStatus());
  EXPECT_THAT(rules(), IsEmpty());
  EXPECT_EQ(machine->actionSms(), 0U);
}

TEST_F(ClassMachine, IsQuietUntilItsNotificationsAreOn) {
  make();
  action(1);
  matches(1, "a");
  config->currentSubConfigIs(nullptr);
  machine->classActionIs(nullptr);
  machine->classActionIs(actions);
  EXPECT_THAT(hooks.taken(), IsEmpty());
  machine->hasNotificationActiveIs(true);
  EXPECT_EQ(machine->actionSms(), 1U);
}

TEST_F(ClassMachine, TakesUpWhatItMissedWhenItIsActivatedAgain) {
  list("a", 10);
  action(1);
  activate();
  matches(1, "a");
  EXPECT_THAT(rules(), ElementsAre("a:10"));
  machine->hasNotificationActiveIs(false);
  hooks.taken();
  auto const next = Kor::make<ClassMapSubConfig>("c");
  config->currentSubConfigIs(next);
  actions->actionDel(ActionType{1});
  action(2);
  EXPECT_THAT(hooks.taken(), IsEmpty());
  machine->hasNotificationActiveIs(true);
  EXPECT_EQ(machine->classMap(), next);
  EXPECT_THAT(rules(), IsEmpty());
  EXPECT_FALSE(machine->actionSm(ActionType{1}));
  EXPECT_TRUE(machine->actionSm(ActionType{2}));
}

TEST_F(ClassMachine, IsInitializedByItsFirstActivationOnly) {
  activate();
  EXPECT_THAT(hooks.taken(), Contains("c: initialized").Times(1));
  machine->hasNotificationActiveIs(false);
  machine->hasNotificationActiveIs(true);
  EXPECT_THAT(hooks.taken(), Not(Contains("c: initialized")));
}

TEST_F(ClassMachine, AZombieReportsNothingToItsOwner) {
  activate();
  machine->classNameIs("c");
  machine->ownerIs(&owner);
  machine->classCommonData()->updateAclActionsInc(1);
  EXPECT_THAT(owner.taken(), ElementsAre("actions c"));
  machine->korDoZombieReactors(true);
  machine->classCommonData()->updateAclActionsInc(1);
  matches(1, "a");
  EXPECT_THAT(owner.reports, IsEmpty());
}

TEST_F(ClassMachine, AClassMapThatWasSetStaysUntilTheConfigurationChanges) {
  activate();
  auto const other = Kor::make<ClassMapSubConfig>("other");
  machine->classMapIs(other);
  machine->classMapConfigIs(config);
  machine->rawClassMapSubConfigIs(nullptr);
  EXPECT_EQ(machine->classMap(), other) << "nothing has changed";
  auto const changed = Kor::make<ClassMapSubConfig>("c");
  config->currentSubConfigIs(changed);
  EXPECT_EQ(machine->classMap(), changed);
}

TEST_F(ClassMachine, AListConcernsOnlyTheOptionsOfItsKind) {
  using PolicyMap::DependencyKind;
  activate();
  matches(1, "a");
  config->currentSubConfig()->matchIs(2, ClassMapMatch::acl(ClassMapMatchOption::ipv6, "a"));
  config->currentSubConfig()->matchIs(3, ClassMapMatch::acl(ClassMapMatchOption::mac, "a"));
  ASSERT_THAT(rules(), IsEmpty());
  machine->classNameIs("c");
  machine->ownerIs(&owner);
  global->dependencies().changed(DependencyKind::ipAcl, "a");
  EXPECT_THAT(owner.taken(), ElementsAre("rules c ipv4"));
  global->dependencies().changed(DependencyKind::ip6Acl, "a");
  EXPECT_THAT(owner.taken(), ElementsAre("rules c ipv6"));
  global->dependencies().changed(DependencyKind::macAcl, "a");
  EXPECT_THAT(owner.taken(), ElementsAre("rules c mac", "rules c mpls"));
}

TEST_F(ClassMachine, AZombieIsQuietAndKeepsItsPointers) {
  list("a", 10);
  activate();
  auto const rawMap = Kor::make<ClassMapSubConfig>("c");
  machine->rawClassMapSubConfigIs(rawMap);
  ASSERT_THAT(rules(), IsEmpty());
  machine->korDoZombieReactors(true);
  hooks.taken();
  action(1);
  matches(1, "a");
  EXPECT_THAT(rules(), IsEmpty());
  config->currentSubConfigIs(nullptr);
  rawMap->matchIs(1, ClassMapMatch::acl(ClassMapMatchOption::ipv4, "a"));
  EXPECT_THAT(hooks.taken(), IsEmpty());
  EXPECT_EQ(machine->classMapConfig(), config);
  EXPECT_EQ(machine->classAction(), actions);
  EXPECT_TRUE(machine->classMap() && machine->classCommonData());
}

TEST_F(ClassMachine, AZombieIsNotToldOfItsListsButKnowsThemWhenAsked) {
  class CountingClassSm : public RecordingClassSm {
   public:
    using RecordingClassSm::handleMatch;
    using RecordingClassSm::RecordingClassSm;
    void handleMatch(ClassMapMatchOption option) override {
      ++matchesHandled;
      RecordingClassSm::handleMatch(option);
    }
    int matchesHandled = 0;
  };
  list("a", 10);
  matches(1, "a");
  auto const counting =
      Kor::make<CountingClassSm>(hooks, global, nullptr, config, nullptr, actions);
  machine = counting;
  counting->hasNotificationActiveIs(true);
  EXPECT_THAT(rules(), ElementsAre("a:10"));
  counting->matchesHandled = 0;
  list("a", 20);
  EXPECT_EQ(counting->matchesHandled, 1);
  counting->korDoZombieReactors(true);
  list("a", 30);
  EXPECT_EQ(counting->matchesHandled, 1);
  EXPECT_THAT(rules(), ElementsAre("a:10", "a:20", "a:30"));
}

TEST_F(ClassMachine, AFormerZombieHearsAgain) {
  activate();
  machine->korDoZombieReactors(true);
  machine->korDoZombieReactors(false);
  hooks.taken();
  action(1);
  EXPECT_THAT(hooks.taken(), Contains("c: createActionSm 1 data action"));
}

TEST_F(ClassMachine, SwitchingNotificationsOnForAZombieOnlyStoresTheState) {
  action(1);
  make();
  machine->korDoZombieReactors(true);
  hooks.taken();
  machine->hasNotificationActiveIs(true);
  EXPECT_TRUE(machine->hasNotificationActive());
  EXPECT_FALSE(machine->initialized() || machine->classCommonData());
  EXPECT_THAT(hooks.taken(), IsEmpty());
}

TEST_F(ClassMachine, CleanupLetsEveryActionMachineGo) {
  action(1);
  activate();
  hooks.taken();
  machine->cleanup();
  EXPECT_THAT(hooks.taken(),
              ElementsAre("c: cleanup", "c/1: cleanup data", "c/1: zombie", "c/1: gone"));
}

TEST_F(ClassMachine, AfterCleanupNoActionIsActive) {
  action(1);
  activate();
  ASSERT_TRUE(machine->actionsActive());
  machine->cleanup();
  EXPECT_FALSE(machine->actionsActive());
}

TEST_F(ClassMachine, AnActionThatIsConfiguredDuringTheCleanupGetsNoMachine) {
  class Adder : public PolicyMap::ClassMapSmCommonData::NotifieeConst {
   public:
    Adder(PolicyMap::ClassMapSmCommonData const* data, std::function<void()> deed)
        : NotifieeConst(data), deed_(std::move(deed)) {}
    void onUpdateAclActions() override {
      if (auto const once = std::exchange(deed_, nullptr)) {
        once();
      }
    }

   private:
    std::function<void()> deed_;
  };
  action(1);
  activate();
  auto const adder = Kor::make<Adder>(machine->classCommonData().get(), [&] {
    action(2);
    machine->handleAction();
  });
  hooks.taken();
  machine->cleanup();
  EXPECT_THAT(hooks.taken(),
              ElementsAre("c: cleanup", "c/1: cleanup data", "c/1: zombie", "c/1: gone"));
  EXPECT_EQ(machine->actionSms(), 0U);
}

TEST_F(ClassMachine, OtherCommonDataAreGivenItsStatus) {
  activate();
  auto const other = machine->createCommonData();
  EXPECT_FALSE(other->classMapStatus());
  machine->classCommonDataIs(other);
  EXPECT_EQ(machine->classCommonData(), other);
  EXPECT_EQ(other->classMapStatus(), machine->classMapStatus());
  machine->classCommonDataDel();
  EXPECT_FALSE(machine->classCommonData());
  auto const status = machine->classMapStatus();
  machine->classMapStatusIs(nullptr);
  machine->classCommonDataIs(other);
  EXPECT_EQ(other->classMapStatus(), status) << "a machine without status takes none away";
}

TEST_F(ClassMachine, AListThatComesWhenTheStatusSaysThatItIsMissingIsFollowed) {
  class Adder : public PolicyMap::ClassMapStatus::NotifieeConst {
   public:
    Adder(PolicyMap::ClassMapStatus const* status, std::function<void()> deed)
        : NotifieeConst(status), deed_(std::move(deed)) {}
    void onError() override {
      if (auto const once = std::exchange(deed_, nullptr)) {
        once();
      }
    }

   private:
    std::function<void()> deed_;
  };
  activate();
  auto const adder = Kor::make<Adder>(machine->classMapStatus().get(), [&] { list("a", 10); });
  matches(1, "a");
  rules();
  EXPECT_THAT(rules(), ElementsAre("a:10"));
  EXPECT_EQ(machine->classMapStatus()->error(), "");
}

TEST_F(ClassMachine, RulesThatAreCompiledAgainInAHookAreNotReplacedByOlderOnes) {
  class EditingSm : public RecordingClassSm {
   public:
    using RecordingClassSm::RecordingClassSm;
    std::function<void()> deed;
    Kor::Ptr<PolicyMap::ClassMapMatchSm> createMatchSm(ClassMapMatchOption option) override {
      if (auto const once = std::exchange(deed, nullptr)) {
        once();
      }
      return RecordingClassSm::createMatchSm(option);
    }
  };
  list("a", 10);
  matches(1, "a");
  auto const editing = Kor::make<EditingSm>(hooks, global, nullptr, config, nullptr, actions);
  machine = editing;
  editing->hasNotificationActiveIs(true);
  editing->deed = [&] {
    list("a", 20);
    editing->handleMatch(ClassMapMatchOption::ipv4);
    rules();
  };
  rules();
  EXPECT_THAT(rules(), ElementsAre("a:10", "a:20"));
}

TEST_F(ClassMachine, EndsWithoutCleaningItsActionMachinesUp) {
  action(1);
  activate();
  hooks.taken();
  machine = nullptr;
  EXPECT_THAT(hooks.taken(), ElementsAre("c/1: zombie", "c/1: gone"));
}

TEST_F(ClassMachine, HooksCalledDirectlyInsertNothing) {
  action(1);
  activate();
  EXPECT_TRUE(machine->createActionSm(ActionType{1}));
  EXPECT_TRUE(machine->createCommonData());
  EXPECT_TRUE(machine->createMatchSm(ClassMapMatchOption::mac));
  EXPECT_EQ(machine->actionSms(), 1U);
  EXPECT_EQ(machine->classMapMatchSms(), 0U);
}

TEST(BaseClassMachine, AnswersNoActionMachineAndMakesPlainCommonData) {
  class PlainClassSm : public Toggled<PolicyMap::ClassMapSm> {
   public:
    using Toggled::Toggled;
  };
  auto const global = Kor::make<PolicyMapGlobalData>(Kor::make<Acl::Config>());
  auto const actions = Kor::make<ClassAction>("c");
  actions->actionIs(ActionType{1}, Kor::make<NumberAction>("c", 1));
  auto const raw = Kor::make<ClassMapSubConfig>("c");
  auto const machine = Kor::make<PlainClassSm>(global, Kor::Ptr<PolicyMap::PolicyMapSmCommonData>(),
                                               Kor::Ptr<PolicyMap::ClassMapConfig const>(),
                                               Kor::Ptr<ClassMapSubConfig const>(raw),
                                               Kor::Ptr<ClassAction const>(actions));
  machine->hasNotificationActiveIs(true);
  EXPECT_EQ(machine->createActionSm(ActionType{1}), nullptr);
  EXPECT_EQ(machine->actionSms(), 0U);
  EXPECT_EQ(machine->classCommonData()->fwkType(), PolicyMap::ClassMapSmCommonData::_fwkType());
}

}  // namespace
}  // namespace policymap
