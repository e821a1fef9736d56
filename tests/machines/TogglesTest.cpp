// SPDX-License-Identifier: Apache-2.0
#include "machines/Toggles.h"

#include <Kor/PtrInterface.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A base machine that records the calls that reach it, and whether it is marked at that time.
class BaseMachine : public Kor::PtrInterface {
 public:
  explicit BaseMachine(std::vector<std::string>& calls) : calls_(&calls) {}
  ~BaseMachine() override { calls_->push_back("end"); }
  void hasNotificationActiveIs(bool active) override {
    PtrInterface::hasNotificationActiveIs(active);
    calls_->push_back(active ? "on" : "off");
  }
  virtual void korDoZombieReactors(bool zombie) {
    calls_->push_back(std::string(zombie ? "quiet" : "loud") +
                      (korMarkedForDeletion() ? ", marked" : ""));
  }

 private:
  std::vector<std::string>* calls_;
};

class ToggledMachine : public PolicyMapTest::Toggles<BaseMachine> {
 public:
  explicit ToggledMachine(std::vector<std::string>& calls) : Toggles(calls) {}
};

class MachineToggles : public testing::Test {
 protected:
  std::vector<std::string> calls;
  Kor::Ptr<ToggledMachine> machine{new ToggledMachine(calls)};
};

TEST_F(MachineToggles, NotificationsArePassedOnOnlyWhenTheyChange) {
  machine->hasNotificationActiveIs(false);
  EXPECT_THAT(calls, IsEmpty());
  machine->hasNotificationActiveIs(true);
  machine->hasNotificationActiveIs(true);
  machine->hasNotificationActiveIs(false);
  machine->hasNotificationActiveIs(false);
  EXPECT_THAT(calls, ElementsAre("on", "off"));
}

TEST_F(MachineToggles, TheZombieCallIsPassedOnOnlyWhenItChanges) {
  machine->korDoZombieReactors(false);
  EXPECT_THAT(calls, IsEmpty());
  machine->korDoZombieReactors(true);
  EXPECT_TRUE(machine->korMarkedForDeletion());
  machine->korDoZombieReactors(true);
  EXPECT_THAT(calls, ElementsAre("quiet"));
}

TEST_F(MachineToggles, TheMarkStillHasItsOldValueWhileTheReactorsAreToggled) {
  machine->korDoZombieReactors(true);
  machine->korDoZombieReactors(false);
  EXPECT_THAT(calls, ElementsAre("quiet", "loud, marked"));
  EXPECT_FALSE(machine->korMarkedForDeletion());
}

TEST_F(MachineToggles, DestructionQuietsTheReactorsBeforeTheBaseEnds) {
  machine = nullptr;
  EXPECT_THAT(calls, ElementsAre("quiet", "end"));
}

TEST_F(MachineToggles, TheDestructionOfAZombieQuietsNothing) {
  machine->korDoZombieReactors(true);
  calls.clear();
  machine = nullptr;
  EXPECT_THAT(calls, ElementsAre("end"));
}

TEST_F(MachineToggles, TheTwoTogglesAreIndependent) {
  machine->korDoZombieReactors(true);
  machine->hasNotificationActiveIs(true);
  EXPECT_THAT(calls, ElementsAre("quiet", "on"));
  EXPECT_TRUE(machine->hasNotificationActive());
}

}  // namespace
