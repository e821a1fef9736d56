// SPDX-License-Identifier: Apache-2.0
#include "support/Death.h"
#include "support/Instances.h"

#include <Kor/Ptr.h>
#include <Kor/PtrInterface.h>

#include <gtest/gtest.h>

#include <functional>
#include <type_traits>
#include <utility>

namespace {

class Animal : public Kor::PtrInterface, public TestSupport::Instances<Animal> {
 public:
  int legs = 4;
};
class Dog : public Animal {};
class Bird : public Animal {};

// Forbidden conversions.
static_assert(sizeof(Kor::Ptr<Animal>) == sizeof(Animal*));
static_assert(std::is_convertible_v<Kor::Ptr<Dog>, Kor::Ptr<Animal>>);
static_assert(std::is_convertible_v<Kor::Ptr<Dog>, Kor::Ptr<Animal const>>);
static_assert(!std::is_convertible_v<Kor::Ptr<Animal>, Kor::Ptr<Dog>>);
static_assert(!std::is_constructible_v<Kor::Ptr<Dog>, Kor::Ptr<Animal>>);
static_assert(!std::is_constructible_v<Kor::Ptr<Animal>, Kor::Ptr<Animal const>>);
static_assert(!std::is_convertible_v<Animal*, Kor::Ptr<Animal>>, "adoption is said aloud");
static_assert(!std::is_convertible_v<Kor::Ptr<Animal>, bool>, "the test for null is explicit");
static_assert(std::is_nothrow_move_constructible_v<Kor::Ptr<Animal>>);

TEST(Ptr, ANewObjectHasACountOfOneAndThePointerAdoptsIt) {
  Kor::Ptr<Animal> const animal(new Animal());
  EXPECT_EQ(animal->references(), 1U);
  EXPECT_EQ(Animal::alive(), 1);
}

TEST(Ptr, TheLastPointerEndsTheObject) {
  Kor::Ptr<Animal> first(new Animal());
  Kor::Ptr<Animal> second = first;
  EXPECT_EQ(first->references(), 2U);
  first = nullptr;
  EXPECT_EQ(Animal::alive(), 1);
  EXPECT_EQ(second->references(), 1U);
  second = nullptr;
  EXPECT_EQ(Animal::alive(), 0);
}

TEST(Ptr, MakeBuildsAnObjectInAPointer) {
  auto const animal = Kor::make<Animal>();
  EXPECT_EQ(animal->references(), 1U);
}

TEST(Ptr, ShareAddsToTheCountOfAnObjectThatOthersHold) {
  auto const animal = Kor::make<Animal>();
  {
    Kor::Ptr<Animal> const shared = Kor::share(animal.get());
    EXPECT_EQ(animal->references(), 2U);
    EXPECT_EQ(shared, animal);
  }
  EXPECT_EQ(animal->references(), 1U);
}

TEST(Ptr, ShareOfNullIsNull) {
  EXPECT_FALSE(Kor::share(static_cast<Animal*>(nullptr)));
}

TEST(Ptr, MovingTakesTheCountAlongAndLeavesNull) {
  auto first = Kor::make<Animal>();
  Kor::Ptr<Animal> second = std::move(first);
  EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move): null is promised
  EXPECT_EQ(second->references(), 1U);
  Kor::Ptr<Animal const> third = std::move(second);
  EXPECT_FALSE(second);  // NOLINT(bugprone-use-after-move): null is promised
  EXPECT_EQ(third->references(), 1U);
}

TEST(Ptr, AssigningReleasesTheOldObject) {
  auto pointer = Kor::make<Animal>();
  auto const other = Kor::make<Animal>();
  EXPECT_EQ(Animal::alive(), 2);
  pointer = other;
  EXPECT_EQ(Animal::alive(), 1);
  EXPECT_EQ(other->references(), 2U);
}

TEST(Ptr, AssigningAPointerToItselfChangesNothing) {
  auto pointer = Kor::make<Animal>();
  auto& alias = pointer;
  pointer = alias;
  EXPECT_EQ(pointer->references(), 1U);
  pointer = std::move(alias);
  ASSERT_TRUE(pointer);
  EXPECT_EQ(pointer->references(), 1U);
}

class Link : public Kor::PtrInterface, public TestSupport::Instances<Link> {
 public:
  Kor::Ptr<Link> next;
};

TEST(Ptr, AssigningAMemberOfTheObjectThatDiesByItIsSafe) {
  auto head = Kor::make<Link>();
  head->next = Kor::make<Link>();
  Link const* const second = head->next.get();
  head = head->next;
  EXPECT_EQ(head.get(), second);
  EXPECT_EQ(head->references(), 1U);
  EXPECT_EQ(Link::alive(), 1);
}

TEST(Ptr, ReleaseGivesTheReferenceUpWithoutCounting) {
  auto pointer = Kor::make<Animal>();
  Animal* const raw = pointer.release();
  EXPECT_FALSE(pointer);
  EXPECT_EQ(raw->references(), 1U);
  Kor::Ptr<Animal> const adopted(raw);
  EXPECT_EQ(adopted->references(), 1U);
}

TEST(Ptr, SwapExchangesWithoutCounting) {
  auto a = Kor::make<Animal>();
  auto b = Kor::make<Animal>();
  Animal const* const rawA = a.get();
  a.swap(b);
  EXPECT_EQ(b.get(), rawA);
  EXPECT_EQ(a->references(), 1U);
}

TEST(Ptr, ConvertsToTheBaseAndToConst) {
  auto const dog = Kor::make<Dog>();
  Kor::Ptr<Animal> const animal = dog;
  Kor::Ptr<Animal const> const seen = dog;
  Kor::PtrInterface::PtrConst const root = animal;
  EXPECT_EQ(dog->references(), 4U);
  EXPECT_EQ(seen, animal);
  EXPECT_EQ(seen->legs, 4);
  EXPECT_EQ(root, dog);
}

TEST(Ptr, ADynamicViewSharesTheObject) {
  Kor::Ptr<Animal> const animal = Kor::make<Dog>();
  Kor::Ptr<Dog> const dog = animal.as<Dog>();
  ASSERT_TRUE(dog);
  EXPECT_EQ(dog, animal);
  EXPECT_EQ(animal->references(), 2U);
}

TEST(Ptr, ADynamicViewOfAnotherTypeIsNullAndCountsNothing) {
  Kor::Ptr<Animal> const animal = Kor::make<Dog>();
  EXPECT_FALSE(animal.as<Bird>());
  EXPECT_EQ(animal->references(), 1U);
  EXPECT_FALSE(Kor::Ptr<Animal>().as<Dog>());
}

TEST(Ptr, ComparesByObject) {
  auto const a = Kor::make<Animal>();
  auto const b = Kor::make<Animal>();
  Kor::Ptr<Animal> const null;
  EXPECT_EQ(a, Kor::Ptr<Animal>(a));
  EXPECT_NE(a, b);
  EXPECT_EQ(null, nullptr);
  EXPECT_NE(a, nullptr);
  EXPECT_TRUE(a == a.get());
  EXPECT_EQ(a < b, std::less<>()(a.get(), b.get()));
}

TEST(PtrDeathTest, UsingANullPointerIsAnAssertion) {
  Kor::Ptr<Animal> const null;
  EXPECT_ASSERTION(static_cast<void>(null->legs), "Kor/Ptr", "object_ != nullptr", "Kor/Ptr.h");
  EXPECT_ASSERTION(static_cast<void>((*null).legs), "Kor/Ptr", "object_ != nullptr", "Kor/Ptr.h");
}

TEST(ValidPtr, PassesAnObjectThroughAndRefusesNull) {
  auto const animal = Kor::make<Animal>();
  EXPECT_EQ(Kor::validPtr(animal), animal);
  try {
    static_cast<void>(Kor::validPtr(Kor::Ptr<Animal>()));
    FAIL() << "null passed";
  } catch (Kor::RangeException const& error) {
    EXPECT_STREQ(error.what(), "null ValidPtr");
  }
}

}  // namespace
