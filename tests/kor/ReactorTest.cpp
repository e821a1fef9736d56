// SPDX-License-Identifier: Apache-2.0
#include "support/Instances.h"

#include <Kor/Entity.h>
#include <Kor/Reactor.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Valve : public Kor::Entity, public TestSupport::Instances<Valve> {
 public:
  static constexpr Kor::AttributeId openingId = 258;
  Valve() : Entity("valve") {}
  void openingIs(int /*opening*/) {
    attributeChanged<Kor::Entity>(openingId, [](auto& /*notifiee*/) {});
  }
};

class Machine {
 public:
  using Watch = Kor::LogWatch<Machine>;

  void handle(Kor::AttributeId id) { handled.push_back(id); }

  std::vector<Kor::AttributeId> handled;
  Kor::Reactor<Valve, Watch> reactor{Kor::make<Watch>(this, &Machine::handle)};
};

class Reactor : public testing::Test {
 protected:
  Kor::Ptr<Valve> valve_ = Kor::make<Valve>();
  Machine machine_;
};

TEST_F(Reactor, IsQuietUntilItIsActivated) {
  machine_.reactor.objectIs(valve_);
  valve_->openingIs(1);
  EXPECT_THAT(machine_.handled, IsEmpty());
  EXPECT_FALSE(machine_.reactor.listening());
  machine_.reactor.hasNotificationActiveIs(true);
  EXPECT_THAT(machine_.handled, IsEmpty()) << "activation itself reacts to nothing";
  valve_->openingIs(2);
  EXPECT_THAT(machine_.handled, ElementsAre(Valve::openingId));
  machine_.reactor.hasNotificationActiveIs(false);
  valve_->openingIs(3);
  EXPECT_EQ(machine_.handled.size(), 1U);
}

TEST_F(Reactor, HoldsTheObjectThatItWatches) {
  machine_.reactor.objectIs(valve_);
  auto* const raw = valve_.get();
  valve_ = nullptr;
  EXPECT_EQ(Valve::alive(), 1);
  EXPECT_EQ(machine_.reactor.object().get(), raw);
  machine_.reactor.objectIs(nullptr);
  EXPECT_EQ(Valve::alive(), 0);
}

TEST_F(Reactor, FollowsANewObject) {
  machine_.reactor.hasNotificationActiveIs(true);
  machine_.reactor.objectIs(valve_);
  auto const other = Kor::make<Valve>();
  machine_.reactor.objectIs(other);
  valve_->openingIs(1);
  EXPECT_THAT(machine_.handled, IsEmpty());
  other->openingIs(1);
  EXPECT_EQ(machine_.handled.size(), 1U);
}

TEST_F(Reactor, LetsGoAsAZombieAndKeepsItsPointer) {
  machine_.reactor.hasNotificationActiveIs(true);
  machine_.reactor.objectIs(valve_);
  machine_.reactor.korDoZombieReactors(true);
  EXPECT_EQ(machine_.reactor.object(), valve_);
  EXPECT_FALSE(machine_.reactor.listening());
  valve_->openingIs(1);
  EXPECT_THAT(machine_.handled, IsEmpty());
}

TEST_F(Reactor, ListensAgainAfterZombieOnlyWhenItIsActive) {
  machine_.reactor.objectIs(valve_);
  machine_.reactor.korDoZombieReactors(true);
  machine_.reactor.hasNotificationActiveIs(true);
  valve_->openingIs(1);
  EXPECT_THAT(machine_.handled, IsEmpty()) << "switching on a zombie only stores the state";
  machine_.reactor.korDoZombieReactors(false);
  valve_->openingIs(2);
  EXPECT_EQ(machine_.handled.size(), 1U);
  machine_.reactor.hasNotificationActiveIs(false);
  machine_.reactor.korDoZombieReactors(true);
  machine_.reactor.korDoZombieReactors(false);
  valve_->openingIs(3);
  EXPECT_EQ(machine_.handled.size(), 1U);
}

TEST_F(Reactor, IsQuietAfterItsEndWhoeverHoldsTheNotifiee) {
  auto machine = std::make_unique<Machine>();
  auto const watch = Kor::make<Machine::Watch>(machine.get(), &Machine::handle);
  {
    Kor::Reactor<Valve, Machine::Watch> reactor(watch);
    reactor.hasNotificationActiveIs(true);
    reactor.objectIs(valve_);
    EXPECT_TRUE(watch->registered());
  }
  EXPECT_FALSE(watch->registered());
  machine.reset();
  valve_->openingIs(1);
}

}  // namespace
