// SPDX-License-Identifier: Apache-2.0
#include "support/Death.h"

#include <Kor/KorType.h>

#include <gtest/gtest.h>

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
