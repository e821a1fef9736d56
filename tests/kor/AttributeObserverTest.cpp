// SPDX-License-Identifier: Apache-2.0
#include <Kor/Callable.h>
#include <Kor/Entity.h>
#include <Kor/Notifiee.h>

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Kor::GenericList;
using Kor::GenericValue;
using testing::ElementsAre;

// An entity with a value and a collection.
class Board : public Kor::Entity {
 public:
  class NotifieeConst;
  Board() : Entity("board") {}
  [[nodiscard]] static Kor::KorType* _fwkType() {
    static Kor::KorType type("Test::Board", Entity::_fwkType());
    return &type;
  }
  void change();
  void change(Kor::Name const& key);
};

class Board::NotifieeConst : public Kor::NotifieeOf<Board, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  virtual void onColour() {}
  virtual void onPin(Kor::Name const& /*key*/) {}
};

void Board::change() {
  attributeChanged<Board>(258, &NotifieeConst::onColour);
}
void Board::change(Kor::Name const& key) {
  attributeChanged<Board>(259, &NotifieeConst::onPin, key);
}

std::vector<std::string>& heard() {
  static std::vector<std::string> all;
  return all;
}

class Observer final : public Kor::AttributeObserver {
 public:
  void onAttribute(Kor::AttributeId id, GenericValue const& key) override {
    heard().push_back(std::to_string(id) +
                      (key.present() ? " " + valueToStrep(key).stdString() : std::string()));
    if (fails) {
      throw std::runtime_error("no");
    }
  }
  void onNotificationException(Kor::AttributeId id) override {
    heard().push_back("caught " + std::to_string(id));
  }
  bool fails = false;
};

class Hook final : public Board::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  void onPin(Kor::Name const& key) override { heard().push_back("hook " + key.stdString()); }
};

class AttributeObservers : public testing::Test {
 protected:
  AttributeObservers() { heard().clear(); }
  Kor::Ptr<Board> board_ = Kor::make<Board>();
  Kor::Ptr<Observer> observer_ = Kor::make<Observer>();
};

TEST_F(AttributeObservers, AreCalledWithIdentifierAndKeyInTheOrderOfRegistration) {
  auto const first = Kor::make<Hook>(board_.get());
  EXPECT_TRUE(observer_->notifierIs(board_.get()));
  auto const last = Kor::make<Hook>(board_.get());
  board_->change();
  board_->change("a");
  EXPECT_THAT(heard(), ElementsAre("258", "hook a", "259 'a'", "hook a"));
}

TEST_F(AttributeObservers, AnExceptionGoesToTheObserverAndNoFurther) {
  observer_->notifierIs(board_.get());
  auto const last = Kor::make<Hook>(board_.get());
  observer_->fails = true;
  board_->change("a");
  EXPECT_THAT(heard(), ElementsAre("259 'a'", "caught 259", "hook a"));
}

TEST_F(AttributeObservers, StopForAnotherObjectAndForNone) {
  observer_->notifierIs(board_.get());
  auto const other = Kor::make<Board>();
  observer_->notifierIs(other.get());
  board_->change();
  EXPECT_THAT(heard(), ElementsAre());
  EXPECT_TRUE(observer_->notifierIs(nullptr));
  other->change();
  EXPECT_THAT(heard(), ElementsAre());
  EXPECT_FALSE(observer_->registered());
}

TEST_F(AttributeObservers, RefuseAnObjectThatNotifiesNobody) {
  auto const silent = Kor::callable([](GenericList const&) { return GenericValue(); });
  EXPECT_FALSE(observer_->notifierIs(silent.get()));
  EXPECT_FALSE(observer_->registered());
}

TEST_F(AttributeObservers, AreReleasedWithTheirObject) {
  observer_->notifierIs(board_.get());
  board_ = nullptr;
  EXPECT_FALSE(observer_->registered());
}

TEST(Callable, IsCalledWithItsArguments) {
  auto const twice =
      Kor::callable([](GenericList const& args) { return GenericValue(2 * args[0].integer()); });
  EXPECT_EQ(twice->call(*GenericList::of(21)), GenericValue(42));
  EXPECT_EQ(twice->fwkType()->name(), "Kor::Callable");
}

TEST(Callable, ItsExceptionIsThatOfTheCaller) {
  auto const fails = Kor::callable(
      [](GenericList const&) -> GenericValue { throw Kor::RangeException("too much"); });
  EXPECT_THROW(fails->call(*GenericList::of()), Kor::RangeException);
}

}  // namespace
