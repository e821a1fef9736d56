// SPDX-License-Identifier: Apache-2.0
#include "support/Allocations.h"
#include "support/Instances.h"
#include "support/Watcher.h"

#include <Kor/Entity.h>
#include <Kor/Notifiee.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::Journal;

// A watched class with one attribute, and a derived class with one more.
class Lamp : public Kor::Entity, public TestSupport::Instances<Lamp> {
 public:
  static constexpr Kor::AttributeId brightnessId = 258;
  class NotifieeConst;
  class Notifiee;

  explicit Lamp(Kor::Name name = "lamp") : Entity(std::move(name)) {}

  [[nodiscard]] Kor::KorType const* fwkType() const override { return _fwkType(); }
  [[nodiscard]] static Kor::KorType* _fwkType() {
    static Kor::KorType type("Test::Lamp", Entity::_fwkType());
    return &type;
  }

  [[nodiscard]] int brightness() const { return brightness_; }
  void brightnessIs(int brightness);

 private:
  int brightness_ = 0;
};

class Lamp::NotifieeConst : public Kor::NotifieeOf<Lamp, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  virtual void onBrightness() {}
};
class Lamp::Notifiee : public Lamp::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
};

void Lamp::brightnessIs(int brightness) {
  if (brightness_ != brightness) {
    brightness_ = brightness;
    attributeChanged<Lamp>(brightnessId, [](auto& notifiee) { notifiee.onBrightness(); });
  }
}

class ColourLamp : public Lamp {
 public:
  static constexpr Kor::AttributeId colourId = 386;
  class NotifieeConst;

  [[nodiscard]] Kor::KorType const* fwkType() const override { return _fwkType(); }
  [[nodiscard]] static Kor::KorType* _fwkType() {
    static Kor::KorType type("Test::ColourLamp", Lamp::_fwkType());
    return &type;
  }

  void colourIs(int colour);

 private:
  int colour_ = 0;
};

class ColourLamp::NotifieeConst : public Kor::NotifieeOf<ColourLamp, Lamp::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  virtual void onColour() {}
};

void ColourLamp::colourIs(int colour) {
  if (colour_ != colour) {
    colour_ = colour;
    attributeChanged<ColourLamp>(colourId, [](auto& notifiee) { notifiee.onColour(); });
  }
}

template <class N>
class LampWatcherOf : public TestSupport::Watcher<N>, public TestSupport::Instances<int> {
 public:
  using TestSupport::Watcher<N>::Watcher;
  void onBrightness() override {
    this->heard("brightness " + std::to_string(this->notifier()->brightness()));
  }
};
using LampWatcher = LampWatcherOf<Lamp::NotifieeConst>;
using LampModifier = LampWatcherOf<Lamp::Notifiee>;

class ColourWatcher : public LampWatcherOf<ColourLamp::NotifieeConst> {
 public:
  using LampWatcherOf::LampWatcherOf;
  void onColour() override { heard("colour"); }
};

class EntityWatcher : public TestSupport::Watcher<Kor::Entity::NotifieeConst> {
 public:
  using Watcher::Watcher;
};

class Notification : public testing::Test {
 protected:
  Kor::Ptr<LampWatcher> watcher(std::string name) {
    return Kor::make<LampWatcher>(journal_, std::move(name), lamp_.get());
  }

  Journal journal_;
  Kor::Ptr<Lamp> lamp_ = Kor::make<Lamp>();
};

// registration

TEST_F(Notification, WithoutNotifieesAWriteOnlyStores) {
  EXPECT_FALSE(TestSupport::allocates([&] { lamp_->brightnessIs(5); }));
  EXPECT_EQ(lamp_->brightness(), 5);
}

TEST_F(Notification, AWriteToNotifieesAllocatesNothing) {
  auto const quiet = Kor::make<Lamp::NotifieeConst>(lamp_.get());
  auto const quietToo = Kor::make<Lamp::NotifieeConst>(lamp_.get());
  EXPECT_FALSE(TestSupport::allocates([&] { lamp_->brightnessIs(5); }));
}

TEST_F(Notification, BuildingANotifieeWithItsSubjectRegistersIt) {
  auto const first = watcher("first");
  EXPECT_TRUE(first->registered());
  EXPECT_EQ(first->notifier(), lamp_.get());
  EXPECT_EQ(lamp_->notifiees(), 1U);
  lamp_->brightnessIs(5);
  EXPECT_THAT(journal_, ElementsAre("first: brightness 5"));
}

TEST_F(Notification, ANotifieeMayBeBuiltWithACountedPointer) {
  auto const first = Kor::make<LampWatcher>(journal_, "first", Kor::Ptr<Lamp const>(lamp_));
  EXPECT_EQ(first->notifier(), lamp_.get());
  EXPECT_EQ(lamp_->references(), 1U) << "a notifiee does not count its subject";
}

TEST_F(Notification, TheHooksRunInTheOrderOfRegistration) {
  auto const a = watcher("a");
  auto const b = watcher("b");
  auto const c = watcher("c");
  a->notifierIs(nullptr);
  a->notifierIs(lamp_.get());
  lamp_->brightnessIs(1);
  EXPECT_THAT(journal_, ElementsAre("b: brightness 1", "c: brightness 1", "a: brightness 1"));
}

TEST_F(Notification, RegisteringTwiceIsOnceAndKeepsThePlace) {
  auto const a = watcher("a");
  auto const b = watcher("b");
  a->notifierIs(lamp_.get());
  EXPECT_EQ(lamp_->notifiees(), 2U);
  lamp_->brightnessIs(1);
  EXPECT_THAT(journal_, ElementsAre("a: brightness 1", "b: brightness 1"));
}

TEST_F(Notification, ANotifieeThatIsTakenOutHearsNothing) {
  auto const a = watcher("a");
  a->notifierIs(nullptr);
  EXPECT_FALSE(a->registered());
  EXPECT_EQ(a->notifier(), nullptr);
  a->notifierIs(nullptr);
  lamp_->brightnessIs(1);
  EXPECT_THAT(journal_, IsEmpty());
}

TEST_F(Notification, ANotifieeMovesToAnotherSubject) {
  auto const a = watcher("a");
  auto const other = Kor::make<Lamp>();
  a->notifierIs(other.get());
  EXPECT_EQ(lamp_->notifiees(), 0U);
  EXPECT_EQ(other->notifiees(), 1U);
  lamp_->brightnessIs(1);
  other->brightnessIs(2);
  EXPECT_THAT(journal_, ElementsAre("a: brightness 2"));
}

TEST_F(Notification, AWriteThatChangesNothingIsSilent) {
  auto const a = watcher("a");
  lamp_->brightnessIs(0);
  EXPECT_THAT(journal_, IsEmpty());
}

// lifetimes

TEST_F(Notification, ARegisteredNotifieeLivesThoughNobodyHoldsIt) {
  watcher("a");
  EXPECT_EQ(LampWatcher::alive(), 1);
  lamp_->brightnessIs(1);
  EXPECT_THAT(journal_, ElementsAre("a: brightness 1"));
}

TEST_F(Notification, ASubjectThatDiesLeavesItsNotifieeWithNone) {
  auto const a = watcher("a");
  watcher("b");
  lamp_ = nullptr;
  EXPECT_EQ(a->notifier(), nullptr);
  EXPECT_FALSE(a->registered());
  EXPECT_EQ(LampWatcher::alive(), 1) << "the other one was held by the list alone";
  auto const other = Kor::make<Lamp>();
  a->notifierIs(other.get());
  other->brightnessIs(1);
  EXPECT_THAT(journal_, ElementsAre("a: brightness 1"));
}

TEST_F(Notification, TakingOutTheLastReferenceEndsTheNotifiee) {
  auto* const raw = watcher("a").get();
  raw->announcesEndIs(true);
  raw->notifierIs(nullptr);
  EXPECT_THAT(journal_, ElementsAre("a: gone"));
  EXPECT_EQ(LampWatcher::alive(), 0);
}

TEST_F(Notification, MovingTheLastReferenceKeepsTheNotifiee) {
  auto* const raw = watcher("a").get();
  auto const other = Kor::make<Lamp>();
  raw->notifierIs(other.get());
  EXPECT_EQ(LampWatcher::alive(), 1);
  other->brightnessIs(1);
  EXPECT_THAT(journal_, ElementsAre("a: brightness 1"));
}

TEST_F(Notification, ANotifieeOnTheStackLeavesTheListWhenItsScopeEnds) {
  {
    LampWatcher local(journal_, "local", lamp_.get());
    lamp_->brightnessIs(1);
  }
  EXPECT_EQ(lamp_->notifiees(), 0U);
  lamp_->brightnessIs(2);
  EXPECT_THAT(journal_, ElementsAre("local: brightness 1"));
}

TEST_F(Notification, ANotifieeOnTheStackOutlivesItsSubject) {
  LampWatcher local(journal_, "local", lamp_.get());
  lamp_ = nullptr;
  EXPECT_FALSE(local.registered());
}

TEST_F(Notification, ANotifieeThatDiesWithTheSubjectMayTakeOthersOutOfItsList) {
  struct Owner : LampWatcher {
    using LampWatcher::LampWatcher;
    ~Owner() override { other->notifierIs(nullptr); }
    Kor::Ptr<LampWatcher> other;
  };
  auto owner = Kor::make<Owner>(journal_, "owner", lamp_.get());
  owner->other = watcher("later");
  owner = nullptr;
  lamp_ = nullptr;
  EXPECT_EQ(LampWatcher::alive(), 0);
}

// walks

TEST_F(Notification, ANewcomerIsCalledFromTheNextWalkOn) {
  auto const a = watcher("a");
  Kor::Ptr<LampWatcher> newcomer;
  a->reactionIs([&] { newcomer = newcomer ? newcomer : watcher("new"); });
  lamp_->brightnessIs(1);
  lamp_->brightnessIs(2);
  EXPECT_THAT(journal_, ElementsAre("a: brightness 1", "a: brightness 2", "new: brightness 2"));
}

TEST_F(Notification, ManyNewcomersDuringAWalkDisturbNothing) {
  auto const a = watcher("a");
  auto const b = watcher("b");
  a->reactionIs([&] {
    a->reactionIs(nullptr);
    for (int i = 0; i < 50; ++i) {
      watcher("n");
    }
  });
  lamp_->brightnessIs(1);
  EXPECT_THAT(journal_, ElementsAre("a: brightness 1", "b: brightness 1"));
  EXPECT_EQ(lamp_->notifiees(), 52U);
}

TEST_F(Notification, AnEntryThatLeftIsSkipped) {
  auto const a = watcher("a");
  Kor::Ptr<LampWatcher> const b = watcher("b");
  watcher("c");
  a->reactionIs([&] { b->notifierIs(nullptr); });
  lamp_->brightnessIs(1);
  EXPECT_THAT(journal_, ElementsAre("a: brightness 1", "c: brightness 1"))
      << "though somebody holds the notifiee";
}

TEST_F(Notification, ANotifieeThatOnlyTheListHeldDiesWhenItIsTakenOutOfAWalk) {
  auto const a = watcher("a");
  auto* const b = watcher("b").get();
  b->announcesEndIs(true);
  a->reactionIs([&] { b->notifierIs(nullptr); });
  lamp_->brightnessIs(1);
  EXPECT_THAT(journal_, ElementsAre("a: brightness 1", "b: gone"));
}

TEST_F(Notification, WhoLeftAndCameBackIsANewcomer) {
  auto const a = watcher("a");
  auto const b = watcher("b");
  a->reactionIs([&] {
    b->notifierIs(nullptr);
    b->notifierIs(lamp_.get());
  });
  lamp_->brightnessIs(1);
  EXPECT_THAT(journal_, ElementsAre("a: brightness 1"));
  lamp_->brightnessIs(2);
  EXPECT_THAT(journal_, ElementsAre("a: brightness 1", "a: brightness 2"));
  a->reactionIs(nullptr);
  lamp_->brightnessIs(3);
  EXPECT_EQ(journal_.back(), "b: brightness 3");
}

TEST_F(Notification, ANotifieeMayTakeItselfOutInItsHook) {
  auto* const a = watcher("a").get();
  watcher("b");
  a->announcesEndIs(true);
  a->reactionIs([a] { a->notifierIs(nullptr); });
  lamp_->brightnessIs(1);
  EXPECT_EQ(journal_.size(), 3U);
  EXPECT_EQ(journal_[0], "a: brightness 1");
  EXPECT_THAT(journal_, testing::Contains("b: brightness 1"));
  EXPECT_EQ(LampWatcher::alive(), 1);
}

TEST_F(Notification, WhoLeavesInANestedCallLivesUntilItsOutermostCallHasReturned) {
  auto* const a = watcher("a").get();
  watcher("b");
  a->announcesEndIs(true);
  a->reactionIs([&] {
    if (lamp_->brightness() == 1) {
      lamp_->brightnessIs(2);
      EXPECT_EQ(LampWatcher::alive(), 2);
    } else {
      a->notifierIs(nullptr);
    }
  });
  lamp_->brightnessIs(1);
  EXPECT_EQ(LampWatcher::alive(), 1);
  EXPECT_EQ(std::count(journal_.begin(), journal_.end(), "a: gone"), 1);
  EXPECT_EQ(lamp_->notifiees(), 1U);
}

TEST_F(Notification, WhoLeavesComesBackAndLeavesAgainInItsHookEndsOnce) {
  auto* const a = watcher("a").get();
  a->announcesEndIs(true);
  a->reactionIs([&] {
    a->notifierIs(nullptr);
    a->notifierIs(lamp_.get());
    a->notifierIs(nullptr);
    EXPECT_EQ(LampWatcher::alive(), 1);
  });
  lamp_->brightnessIs(1);
  EXPECT_EQ(LampWatcher::alive(), 0);
  EXPECT_EQ(std::count(journal_.begin(), journal_.end(), "a: gone"), 1);
}

TEST_F(Notification, AllMayBeTakenOutInAHook) {
  auto const a = watcher("a");
  auto const b = watcher("b");
  auto const c = watcher("c");
  b->reactionIs([&] {
    for (auto const& each : {a, b, c}) {
      each->notifierIs(nullptr);
    }
  });
  lamp_->brightnessIs(1);
  EXPECT_THAT(journal_, ElementsAre("a: brightness 1", "b: brightness 1"));
  EXPECT_EQ(lamp_->notifiees(), 0U);
}

TEST_F(Notification, ANotifieeWhoseEndTakesOutTheNextOneKeepsItFromBeingCalled) {
  struct Last : LampWatcher {
    using LampWatcher::LampWatcher;
    ~Last() override { other->notifierIs(nullptr); }
    Kor::Ptr<LampWatcher> other;
  };
  auto* const last = Kor::make<Last>(journal_, "last", lamp_.get()).get();
  last->other = watcher("next");
  last->reactionIs([last] { last->notifierIs(nullptr); });
  auto const after = watcher("after");
  lamp_->brightnessIs(1);
  EXPECT_THAT(journal_, ElementsAre("last: brightness 1", "after: brightness 1"));
}

TEST_F(Notification, AWriteInAHookRunsToItsEndFirstAndLaterNotifieesReadTheNewestValue) {
  auto const a = watcher("a");
  auto const b = watcher("b");
  a->reactionIs([&] {
    a->reactionIs(nullptr);
    lamp_->brightnessIs(2);
  });
  lamp_->brightnessIs(1);
  EXPECT_THAT(journal_, ElementsAre("a: brightness 1", "a: brightness 2", "b: brightness 2",
                                    "b: brightness 2"));
}

TEST_F(Notification, AHookMayDropTheLastReferenceToTheSubject) {
  auto const a = watcher("a");
  auto const b = watcher("b");
  int aliveInB = 0;
  a->reactionIs([&] { lamp_ = nullptr; });
  b->reactionIs([&] { aliveInB = Lamp::alive(); });
  lamp_->brightnessIs(1);
  EXPECT_THAT(journal_, ElementsAre("a: brightness 1", "b: brightness 1"));
  EXPECT_EQ(aliveInB, 1) << "the write holds its object until it is over";
  EXPECT_EQ(Lamp::alive(), 0);
  EXPECT_FALSE(a->registered());
}

class Obituary : public Lamp {
 public:
  using Lamp::Lamp;
  ~Obituary() override { brightnessIs(-1); }
};

TEST_F(Notification, AHookDuringDestructionMayTakeAndDropAPointer) {
  auto dying = Kor::make<Obituary>();
  auto const a = Kor::make<LampWatcher>(journal_, "a", dying.get());
  a->reactionIs([&] { Kor::Ptr<Lamp const> const pointer = Kor::share(a->notifier()); });
  dying = nullptr;
  EXPECT_THAT(journal_, ElementsAre("a: brightness -1"));
  EXPECT_EQ(Lamp::alive(), 1) << "only the fixture's own lamp";
}

// kinds

TEST_F(Notification, OnlyNotifieesOfTheAttributesOwnClassAreCalled) {
  auto const lamp = Kor::make<ColourLamp>();
  auto const plain = Kor::make<LampWatcher>(journal_, "plain", lamp.get());
  auto const colour = Kor::make<ColourWatcher>(journal_, "colour", lamp.get());
  auto const entity = Kor::make<EntityWatcher>(journal_, "entity", lamp.get());
  lamp->colourIs(3);
  EXPECT_THAT(journal_, ElementsAre("colour: colour"));
  journal_.clear();
  lamp->brightnessIs(1);
  EXPECT_THAT(journal_, ElementsAre("plain: brightness 1", "colour: brightness 1"));
}

TEST_F(Notification, ANotifieeThatModifiesCounts) {
  auto const a = Kor::make<LampModifier>(journal_, "a", lamp_.get());
  lamp_->brightnessIs(1);
  EXPECT_THAT(journal_, ElementsAre("a: brightness 1"));
}

// exceptions

TEST_F(Notification, AnExceptionGoesOnceToTheNotifieesOwnHandler) {
  auto const a = watcher("a");
  auto const b = watcher("b");
  a->reactionIs([] { throw Kor::RangeException("no"); });
  EXPECT_NO_THROW(lamp_->brightnessIs(1));
  EXPECT_EQ(lamp_->brightness(), 1) << "the value stays stored";
  EXPECT_THAT(journal_, ElementsAre("a: brightness 1", "a: caught RangeException no of 258",
                                    "b: brightness 1"));
}

TEST_F(Notification, ExceptionsOfAnyTypeAreHandled) {
  auto const a = watcher("a");
  auto const b = watcher("b");
  auto const c = watcher("c");
  struct Odd {};
  a->reactionIs([] { throw 7; });
  b->reactionIs([] { throw std::logic_error("std"); });
  c->reactionIs([] { throw Odd(); });
  EXPECT_NO_THROW(lamp_->brightnessIs(1));
  EXPECT_THAT(journal_, ElementsAre("a: brightness 1", "a: caught int 7 of 258", "b: brightness 1",
                                    "b: caught exception std of 258", "c: brightness 1",
                                    "c: caught something else of 258"));
}

TEST_F(Notification, WhatTheHandlerThrowsGoesNoFurther) {
  auto const a = watcher("a");
  auto const b = watcher("b");
  a->reactionIs([] { throw 1; });
  a->handlerIs([] { throw 2; });
  EXPECT_NO_THROW(lamp_->brightnessIs(1));
  EXPECT_THAT(journal_,
              ElementsAre("a: brightness 1", "a: caught int 1 of 258", "b: brightness 1"));
}

TEST_F(Notification, TheHandlerMayTakeItsNotifieeOut) {
  auto const a = watcher("a");
  auto const b = watcher("b");
  a->reactionIs([] { throw 1; });
  a->handlerIs([&] { a->notifierIs(nullptr); });
  lamp_->brightnessIs(1);
  lamp_->brightnessIs(2);
  EXPECT_THAT(journal_, ElementsAre("a: brightness 1", "a: caught int 1 of 258", "b: brightness 1",
                                    "b: brightness 2"));
}

TEST_F(Notification, AnExceptionOfANestedWriteStaysWithTheNestedHook) {
  auto const a = watcher("a");
  auto const b = watcher("b");
  a->reactionIs([&] {
    a->reactionIs(nullptr);
    lamp_->brightnessIs(2);
  });
  b->reactionIs([&] {
    b->reactionIs(nullptr);
    throw 5;
  });
  lamp_->brightnessIs(1);
  EXPECT_THAT(journal_, ElementsAre("a: brightness 1", "a: brightness 2", "b: brightness 2",
                                    "b: caught int 5 of 258", "b: brightness 2"));
}

TEST_F(Notification, TheDefaultHandlerSwallows) {
  struct Thrower : Lamp::NotifieeConst {
    using NotifieeConst::NotifieeConst;
    void onBrightness() override { throw 1; }
  };
  auto const thrower = Kor::make<Thrower>(lamp_.get());
  EXPECT_NO_THROW(lamp_->brightnessIs(1));
}

// the attribute log

class LogReader : public TestSupport::Watcher<Kor::AttributeLogReader> {
 public:
  using Watcher::Watcher;
  void onAttribute(Kor::Entity const& entity, Kor::AttributeId id) override {
    heard(entity.name().stdString() + " " + std::to_string(id));
  }
};

TEST_F(Notification, LogReadersLearnOfAChangeBeforeAnyNotifiee) {
  auto const a = watcher("a");
  auto const reader = Kor::make<LogReader>(journal_, "log");
  lamp_->attributeLogReaderIs(reader);
  lamp_->brightnessIs(1);
  EXPECT_THAT(journal_, ElementsAre("log: lamp 258", "a: brightness 1"));
}

TEST_F(Notification, ALogReaderReadsTheStoredValue) {
  auto const reader = Kor::make<LogReader>(journal_, "log");
  lamp_->attributeLogReaderIs(reader);
  int seen = 0;
  reader->reactionIs([&] { seen = lamp_->brightness(); });
  lamp_->brightnessIs(6);
  EXPECT_EQ(seen, 6);
}

TEST_F(Notification, LogReadersHearAttributesOfEveryClassOfTheEntity) {
  auto const lamp = Kor::make<ColourLamp>();
  auto const reader = Kor::make<LogReader>(journal_, "log");
  reader->notifierIs(lamp.get());
  lamp->brightnessIs(1);
  lamp->colourIs(1);
  lamp->colourIs(1);
  EXPECT_THAT(journal_, ElementsAre("log: lamp 258", "log: lamp 386"));
}

TEST_F(Notification, TheLogIsApartFromTheNotifieeList) {
  auto const reader = Kor::make<LogReader>(journal_, "log");
  lamp_->attributeLogReaderIs(reader);
  EXPECT_EQ(lamp_->notifiees(), 0U);
  EXPECT_TRUE(reader->registered());
}

TEST_F(Notification, AttachingAndDetachingMayRepeat) {
  auto const reader = Kor::make<LogReader>(journal_, "log");
  lamp_->attributeLogReaderIs(reader);
  lamp_->attributeLogReaderIs(reader);
  lamp_->brightnessIs(1);
  EXPECT_EQ(journal_.size(), 1U);
  auto const other = Kor::make<Lamp>();
  other->attributeLogReaderDel(reader);
  EXPECT_TRUE(reader->registered()) << "another entity's log does not detach it";
  lamp_->attributeLogReaderDel(reader);
  lamp_->attributeLogReaderDel(reader);
  lamp_->brightnessIs(2);
  EXPECT_EQ(journal_.size(), 1U);
}

TEST_F(Notification, ALogReadersExceptionGoesToItsOwnHandler) {
  auto const a = watcher("a");
  auto const reader = Kor::make<LogReader>(journal_, "log");
  lamp_->attributeLogReaderIs(reader);
  reader->reactionIs([] { throw 3; });
  lamp_->brightnessIs(1);
  EXPECT_THAT(journal_,
              ElementsAre("log: lamp 258", "log: caught int 3 of 258", "a: brightness 1"));
}

TEST_F(Notification, ALogReaderMayDropTheLastReferenceToTheEntity) {
  auto const a = watcher("a");
  auto const reader = Kor::make<LogReader>(journal_, "log");
  lamp_->attributeLogReaderIs(reader);
  reader->reactionIs([&] { lamp_ = nullptr; });
  lamp_->brightnessIs(1);
  EXPECT_THAT(journal_, ElementsAre("log: lamp 258", "a: brightness 1"));
  EXPECT_EQ(Lamp::alive(), 0);
  EXPECT_FALSE(reader->registered());
}

TEST_F(Notification, AnEntityThatDiesLeavesItsLogReaderWithNone) {
  auto const reader = Kor::make<LogReader>(journal_, "log");
  lamp_->attributeLogReaderIs(reader);
  lamp_ = nullptr;
  EXPECT_FALSE(reader->registered());
}

// watching something that is no entity

class Meter : public Kor::PtrInterface, public Kor::NotifieeList {
 public:
  class NotifieeConst;
  [[nodiscard]] static Kor::KorType* _fwkType() {
    static Kor::KorType type("Test::Meter", PtrInterface::_fwkType());
    return &type;
  }
  void tick();
};

class Meter::NotifieeConst : public Kor::NotifieeOf<Meter> {
 public:
  using NotifieeOf::NotifieeOf;
  virtual void onTick() {}
};

void Meter::tick() {
  notify<NotifieeConst>(this, _fwkType(), 130, [](auto& notifiee) { notifiee.onTick(); });
}

TEST(NotifieeList, IsOnePointerWideAndMakesAnyClassWatchable) {
  static_assert(sizeof(Kor::NotifieeList) == sizeof(void*));
  struct Counter : Meter::NotifieeConst {
    using NotifieeConst::NotifieeConst;
    void onTick() override { ++ticks; }
    int ticks = 0;
  };
  auto const meter = Kor::make<Meter>();
  auto const counter = Kor::make<Counter>(meter.get());
  EXPECT_EQ(counter->notifier(), meter.get());
  meter->tick();
  meter->tick();
  EXPECT_EQ(counter->ticks, 2);
}

}  // namespace
