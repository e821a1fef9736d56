// SPDX-License-Identifier: Apache-2.0
#include "support/CaughtAssertion.h"
#include "support/Death.h"

#include <Kor/Entity.h>
#include <Kor/GenericIf.h>
#include <Kor/KorAttr.h>
#include <Kor/KorType.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <list>

namespace {

TEST(KorType, TellsItsNamesBaseAndLevel) {
  Kor::KorType const root("Ns::Root", nullptr);
  Kor::KorType const child("Ns::Inner::Child", &root);
  EXPECT_EQ(root.level(), 0U);
  EXPECT_EQ(child.level(), 1U);
  EXPECT_EQ(child.base(), &root);
  EXPECT_EQ(child.name(), "Ns::Inner::Child");
  EXPECT_EQ(child.shortName(), "Child");
  EXPECT_EQ(Kor::KorType("Bare", nullptr).shortName(), "Bare");
}

TEST(KorType, IsItselfAndEachOfItsBasesAndNothingElse) {
  Kor::KorType const root("Root", nullptr);
  Kor::KorType const left("Left", &root);
  Kor::KorType const right("Right", &root);
  Kor::KorType const leaf("Leaf", &left);
  EXPECT_TRUE(leaf.isA(&leaf));
  EXPECT_TRUE(leaf.isA(&left));
  EXPECT_TRUE(leaf.isA(&root));
  EXPECT_FALSE(leaf.isA(&right));
  EXPECT_FALSE(left.isA(&leaf));
  EXPECT_FALSE(root.isA(&left));
  Kor::KorType const sameName("Left", &root);
  EXPECT_FALSE(leaf.isA(&sameName)) << "records compare by address";
}

TEST(KorType, HasWhatItDoesNotSayOfItselfFromItsBase) {
  Kor::KorType root("Root", nullptr);
  Kor::KorType const child("Child", &root);
  EXPECT_FALSE(child.isEntity());
  root.isEntityIs(true);
  EXPECT_TRUE(child.isEntity());
  root.isValueIs(true);
  EXPECT_FALSE(child.isValue()) << "being a value is not inherited";
}

TEST(KorType, KeepsConstructorArgumentsInTheirOrder) {
  Kor::KorType type("Type", nullptr);
  type.newConstructorArg(Kor::Name("b"), Kor::Name("bool"));
  type.newConstructorArg(Kor::Name("a"), Kor::Name("Not::YetThere"));
  ASSERT_EQ(type.constructorArgs().size(), 2U);
  EXPECT_EQ(type.constructorArgs()[0].name, "b");
  EXPECT_EQ(type.constructorArgs()[1].typeName, "Not::YetThere");
}

TEST(KorType, NamesTheAttributesOfItsBaseWhileItIsNotRegistered) {
  Kor::KorType const unregistered("Type", Kor::Entity::_fwkType());
  EXPECT_EQ(unregistered.attributeString(130), "name");
  EXPECT_EQ(unregistered.attributeString(258), "unknown");
  EXPECT_EQ(Kor::KorType("Root", nullptr).attributeString(130), "unknown");
}

TEST(KorType, IsFoundByItsNameOnceItIsEntered) {
  static Kor::KorType type("Ns::Entered", nullptr);
  EXPECT_EQ(Kor::KorType::named("Ns::Entered"), nullptr);
  Kor::KorType::typeNodeIs(&type, "Ns::Entered");
  Kor::KorType::typeNodeIs(&type, "Ns::Entered");
  EXPECT_EQ(Kor::KorType::named("Ns::Entered"), &type);
  auto const& all = Kor::KorType::all();
  EXPECT_EQ(std::count(all.begin(), all.end(), &type), 1);
  EXPECT_EQ(Kor::KorType::named("Ns::entered"), nullptr);
}

TEST(KorType, IsEnteredUnderNoNameButItsOwnAndInNoOthersPlace) {
  Kor::KorType impostor("Kor::Entity", nullptr);
  EXPECT_EQ(TestSupport::assertionOf([&] { Kor::KorType::typeNodeIs(&impostor, "Kor::Other"); }),
            "Kor/KorType: type->name_ == name");
  EXPECT_EQ(TestSupport::assertionOf([&] { Kor::KorType::typeNodeIs(&impostor, "Kor::Entity"); }),
            "Kor/KorType: at->second == type");
  EXPECT_EQ(Kor::KorType::named("Kor::Entity"), Kor::Entity::_fwkType());
}

TEST(KorType, OfTheFrameworkItselfAreEntered) {
  for (std::string_view const name :
       {"void", "bool", "int8_t", "int16_t", "int32_t", "int64_t", "uint8_t", "uint16_t",
        "uint32_t", "uint64_t", "double", "Kor::String", "Kor::Name", "Kor::GenericIf::List_"}) {
    Kor::KorType const* const type = Kor::KorType::named(name);
    ASSERT_NE(type, nullptr) << name;
    EXPECT_TRUE(type->isValue()) << name;
    EXPECT_EQ(type->size() == 0, name == "void") << name;
  }
  EXPECT_TRUE(Kor::KorType::named("Kor::PtrInterface")->attrs().empty());
  Kor::KorType const* const entity = Kor::KorType::named("Kor::Entity");
  ASSERT_EQ(entity->attrs().size(), 1U);
  EXPECT_EQ(entity->attr(130U)->name(), "name");
  EXPECT_TRUE(entity->isEntity());
}

TEST(KorTypeDeathTest, TooDeepAnInheritanceIsAnAssertion) {
  EXPECT_ASSERTION(
      {
        std::list<Kor::KorType> types;
        Kor::KorType const* base = nullptr;
        for (int level = 0; level < 9; ++level) {
          base = &types.emplace_back("Type", base);
        }
      },
      "Kor/KorType", "level_ < deepest", "Kor/KorType.cpp");
}

}  // namespace
