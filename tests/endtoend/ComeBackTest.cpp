// SPDX-License-Identifier: Apache-2.0

// Observers of the class common data and of the statuses that, during a teardown, destroy the
// machines or restore what is being removed.

#include "machines/TestClassCommonData.h"
#include "support/Scenario.h"

#include <Kor/Ptr.h>

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <utility>

namespace endtoend {
namespace {

using PolicyMapTest::TestClassCommonData;
using TestSupport::Scenario;
using Deed = std::function<void()>;

// Runs a function once, when an action value becomes 0, as when its machine is cleaned up.
class ValueHook : public TestClassCommonData::NotifieeConst {
 public:
  ValueHook(TestClassCommonData const* data, Deed deed)
      : NotifieeConst(data), deed_(std::move(deed)) {}
  void onAction1Value() override {
    if (deed_ && notifier()->action1Value() == 0) {
      std::exchange(deed_, nullptr)();
    }
  }

 private:
  Deed deed_;
};

// Runs a function once, after the status of a class was removed.
class ClassGoneHook : public PolicyMap::PolicyMapStatus::NotifieeConst {
 public:
  ClassGoneHook(PolicyMap::PolicyMapStatus const* status, Deed deed)
      : NotifieeConst(status), deed_(std::move(deed)) {}
  void onClassMapStatus(Kor::Name const& name) override {
    if (deed_ && !notifier()->classMapStatus(name)) {
      std::exchange(deed_, nullptr)();
    }
  }

 private:
  Deed deed_;
};

// Policy-map "pm" with classes "c" (action 1 of value 7, action 2 of value 8) and "d" (action 1 of
// value 9), programmed.
class ComeBack : public testing::Test {
 protected:
  ComeBack() {
    scenario.simplePolicy();
    scenario.rule("acl-d", 10);
    scenario.classMatches("d", "acl-d");
    scenario.usesClass("pm", "d", 20);
    scenario.actionIs("pm", "c", 1, 7);
    scenario.actionIs("pm", "c", 2, 8);
    scenario.actionIs("pm", "d", 1, 9);
    scenario.start();
    scenario.settle();
  }

  [[nodiscard]] Kor::Ptr<PolicyMap::PolicyMapSm> policy() const {
    return scenario.machine->policyMapSm({"pm", "input"});
  }
  [[nodiscard]] Kor::Ptr<PolicyMap::ClassMapSm> classMachine(char const* name) const {
    return policy() ? policy()->classMapSm(name) : nullptr;
  }
  [[nodiscard]] Kor::Ptr<TestClassCommonData> data(char const* name) const {
    return classMachine(name)->classCommonData().as<TestClassCommonData>();
  }
  void whenCleanedUp(char const* className, Deed deed) {
    valueHook = Kor::make<ValueHook>(data(className).get(), std::move(deed));
  }
  void whenGone(Deed deed) {
    goneHook = Kor::make<ClassGoneHook>(scenario.policyStatus().get(), std::move(deed));
  }
  void leaves(char const* className) { scenario.policy("pm")->classPrioDel(className); }
  void expectProgrammed(char const* className, char const* list, std::uint32_t value) {
    scenario.settle();
    ASSERT_TRUE(classMachine(className));
    EXPECT_TRUE(classMachine(className)->actionSm(PolicyMap::ActionType{1}));
    EXPECT_EQ(data(className)->action1Value(), value);
    auto const key = Scenario::ruleKey(className, list, 10);
    EXPECT_TRUE(scenario.record()->korRuleMatch(key));
    EXPECT_EQ(scenario.record()->ruleAction1(key), value);
    EXPECT_TRUE(scenario.policyStatus()->classMapStatus(className)->programmed());
  }

  Scenario scenario{{.updateActions = true}};
  Kor::Ptr<ValueHook> valueHook;
  Kor::Ptr<ClassGoneHook> goneHook;
};

TEST_F(ComeBack, AnActionThatIsConfiguredAgainDuringItsCleanupHasAMachine) {
  whenCleanedUp("c", [&] { scenario.actionIs("pm", "c", 1, 70); });
  scenario.actionDel("pm", "c", 1);
  expectProgrammed("c", "acl", 70);
}

TEST_F(ComeBack, AnActionThatIsTakenAwayWhileItsMachineIsBuiltHasNone) {
  scenario.actionDel("pm", "c", 1);
  scenario.settle();
  class Remover : public TestClassCommonData::NotifieeConst {
   public:
    Remover(TestClassCommonData const* data, Deed deed)
        : NotifieeConst(data), deed_(std::move(deed)) {}
    void onAction1Value() override {
      if (notifier()->action1Value() != 0) {
        deed_();
      }
    }

   private:
    Deed deed_;
  };
  auto const hook = Kor::make<Remover>(data("c").get(), [&] { scenario.actionDel("pm", "c", 1); });
  scenario.actionIs("pm", "c", 1, 70);
  EXPECT_FALSE(classMachine("c")->actionSm(PolicyMap::ActionType{1}));
  EXPECT_EQ(data("c")->action1Value(), 0U);
  scenario.settle();
  EXPECT_EQ(scenario.record()->ruleAction1(Scenario::ruleKey("c", "acl", 10)), 0U);
}

TEST_F(ComeBack, AnActionThatLeavesWhenTheCommonDataTellOfItGetsNoMachine) {
  scenario.actionDel("pm", "c", 2);
  class Remover : public PolicyMap::ClassMapSmCommonData::NotifieeConst {
   public:
    Remover(PolicyMap::ClassMapSmCommonData const* data, Deed deed)
        : NotifieeConst(data), deed_(std::move(deed)) {}
    void onAction(PolicyMap::ActionType /*type*/) override {
      if (deed_) {
        std::exchange(deed_, nullptr)();
      }
    }

   private:
    Deed deed_;
  };
  auto const hook = Kor::make<Remover>(classMachine("c")->classCommonData().get(),
                                       [&] { scenario.actionDel("pm", "c", 2); });
  scenario.actionIs("pm", "c", 2, 5);
  EXPECT_FALSE(classMachine("c")->actionSm(PolicyMap::ActionType{2}));
}

TEST_F(ComeBack, AClassThatIsConfiguredAgainDuringItsCleanupHasAMachine) {
  whenCleanedUp("c", [&] { scenario.usesClass("pm", "c", 10); });
  leaves("c");
  expectProgrammed("c", "acl", 7);
}

TEST_F(ComeBack, AClassThatIsConfiguredAgainWhenItsStatusGoesHasAMachine) {
  whenGone([&] { scenario.usesClass("pm", "c", 10); });
  leaves("c");
  expectProgrammed("c", "acl", 7);
}

TEST_F(ComeBack, AClassMapThatIsConfiguredAgainDuringTheCleanupIsMatched) {
  whenCleanedUp("c", [&] { scenario.classMatches("c", "acl"); });
  scenario.classes->classMapConfigDel("c");
  expectProgrammed("c", "acl", 7);
}

TEST_F(ComeBack, AnActionOfAClassThatIsTakenDownIsThatOfTheNextMachine) {
  whenCleanedUp("c", [&] {
    scenario.actionIs("pm", "c", 1, 70);
    scenario.usesClass("pm", "c", 10);
  });
  leaves("c");
  expectProgrammed("c", "acl", 70);
}

TEST_F(ComeBack, ASecondClassThatLeavesInTheSameTurnAndIsPutBackKeepsItsMachine) {
  auto const machine = classMachine("d");
  whenCleanedUp("c", [&] { scenario.usesClass("pm", "d", 20); });
  leaves("c");
  leaves("d");
  expectProgrammed("d", "acl-d", 9);
  EXPECT_EQ(classMachine("d"), machine);
  EXPECT_FALSE(classMachine("c"));
}

TEST_F(ComeBack, AClassThatWasAwayWhileAPassEndedIsPublished) {
  scenario.helper->asyncOperationsIs(true);
  scenario.rule("acl", 20);
  scenario.settle();
  leaves("c");
  scenario.helper->asyncTriggerInc(1);
  scenario.usesClass("pm", "c", 10);
  scenario.helper->asyncOperationsIs(false);
  scenario.settle();
  EXPECT_TRUE(scenario.policyStatus()->classMapStatus("c")->programmed());
  EXPECT_TRUE(scenario.policyStatus()->classMapStatus("d")->programmed());
}

TEST_F(ComeBack, WhatAFormerZombieMissedIsProgrammed) {
  scenario.machine->korDoZombieReactors(true);
  leaves("c");
  scenario.settle();
  EXPECT_TRUE(scenario.record()->korRuleMatch(Scenario::ruleKey("c", "acl", 10)));
  scenario.machine->korDoZombieReactors(false);
  scenario.settle();
  EXPECT_FALSE(scenario.record()->korRuleMatch(Scenario::ruleKey("c", "acl", 10)));
}

TEST_F(ComeBack, APolicyThatIsAttachedAgainDuringItsCleanupIsProgrammed) {
  whenCleanedUp("c", [&] { scenario.attach("pm", "Ethernet1"); });
  scenario.detach("Ethernet1");
  expectProgrammed("c", "acl", 7);
  EXPECT_TRUE(scenario.record()->created());
}

TEST_F(ComeBack, APolicyThatIsAttachedAgainWhenItsStatusComesIsBuiltOnce) {
  scenario.detach("Ethernet1");
  scenario.settle();
  class Attacher : public PolicyMap::PolicyMapTypeStatus::NotifieeConst {
   public:
    Attacher(PolicyMap::PolicyMapTypeStatus const* status, Deed deed)
        : NotifieeConst(status), deed_(std::move(deed)) {}
    void onPolicyMapStatus(PolicyMap::PolicyMapSmKey const& /*key*/) override {
      if (deed_) {
        std::exchange(deed_, nullptr)();
      }
    }

   private:
    Deed deed_;
  };
  auto const hook =
      Kor::make<Attacher>(scenario.status.get(), [&] { scenario.attach("pm", "Ethernet2"); });
  auto const built = scenario.record()->createCount();
  scenario.attach("pm", "Ethernet1");
  auto const machine = policy();
  scenario.settle();
  EXPECT_EQ(policy(), machine);
  EXPECT_EQ(scenario.record()->createCount(), built + 1);
  EXPECT_TRUE(scenario.record()->intf(TestSupport::intf("Ethernet1")));
  EXPECT_TRUE(scenario.record()->intf(TestSupport::intf("Ethernet2")));
}

// Object lifetimes. Under the sanitizers these tests fail on any use after free.

TEST_F(ComeBack, TheTreeMayEndWhenAClassStatusGoes) {
  whenGone([&] { scenario.machine = nullptr; });
  leaves("c");
  scenario.settle();
  EXPECT_FALSE(scenario.machine);
  EXPECT_TRUE(scenario.record()->created());
}

TEST_F(ComeBack, TheTreeMayEndDuringTheCleanupOfAnAction) {
  whenCleanedUp("c", [&] { scenario.machine = nullptr; });
  scenario.actionDel("pm", "c", 1);
  scenario.settle();
  EXPECT_FALSE(scenario.machine);
}

TEST_F(ComeBack, TheTreeMayEndDuringTheCleanupOfAClass) {
  whenCleanedUp("c", [&] { scenario.machine = nullptr; });
  leaves("c");
  leaves("d");
  scenario.settle();
  EXPECT_FALSE(scenario.machine);
}

TEST_F(ComeBack, TheTreeMayEndDuringTheCleanupOfAPolicy) {
  whenCleanedUp("c", [&] { scenario.machine = nullptr; });
  scenario.detach("Ethernet1");
  scenario.settle();
  EXPECT_FALSE(scenario.machine);
}

TEST_F(ComeBack, TheTreeMayEndWhenAClassMapGoes) {
  whenCleanedUp("c", [&] { scenario.machine = nullptr; });
  scenario.classes->classMapConfigDel("c");
  scenario.settle();
  EXPECT_FALSE(scenario.machine);
}

TEST_F(ComeBack, TheTreeMayEndWhenTheClassesChangeAsAWhole) {
  whenCleanedUp("c", [&] { scenario.machine = nullptr; });
  scenario.policies->policyMapConfig("pm")->currentSubConfigIs(nullptr);
  scenario.settle();
  EXPECT_FALSE(scenario.machine);
}

TEST_F(ComeBack, AMachineThatStandsAloneMayEndDuringTheCleanupOfAClass) {
  PolicyMap::PolicyMapSmKey const key("alone", "input");
  auto const status = scenario.status->policyMapStatusIs(key);
  Kor::Ptr<PolicyMap::PolicyMapSm> alone =
      scenario.machine->createPolicyMapSm(key, scenario.policies->policyMapConfig("pm"), status);
  auto const common = alone->classMapSm("c")->classCommonData().as<TestClassCommonData>();
  auto const hook = Kor::make<ValueHook>(common.get(), [&] { alone = nullptr; });
  leaves("c");
  EXPECT_FALSE(alone);
}

TEST_F(ComeBack, AClassMachineThatStandsAloneMayEndDuringTheCleanupOfAnAction) {
  Kor::Ptr<PolicyMap::ClassMapSm> alone = policy()->createClassMapSm(
      scenario.classes->classMapConfig("c"), nullptr, scenario.policy("pm")->classAction("c"));
  auto const common = alone->classCommonData().as<TestClassCommonData>();
  auto const hook = Kor::make<ValueHook>(common.get(), [&] { alone = nullptr; });
  scenario.actionDel("pm", "c", 1);
  EXPECT_FALSE(alone);
}

}  // namespace
}  // namespace endtoend
