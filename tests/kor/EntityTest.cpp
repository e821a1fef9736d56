// SPDX-License-Identifier: Apache-2.0
#include <Kor/Entity.h>

#include <gtest/gtest.h>

namespace {

TEST(Entity, HasANameAndTellsTheNamesOfItsAttributes) {
  Kor::Entity const entity("pm1");
  EXPECT_EQ(entity.name(), "pm1");
  EXPECT_EQ(entity.attributeString(Kor::Entity::nameId), "name");
  EXPECT_EQ(entity.attributeString(9999), "unknown");
}

TEST(Entity, IsOneLevelBelowTheRoot) {
  Kor::Entity const entity("pm1");
  EXPECT_EQ(entity.fwkType(), Kor::Entity::_fwkType());
  EXPECT_EQ(entity.fwkType()->name(), "Kor::Entity");
  EXPECT_EQ(entity.fwkType()->base(), Kor::PtrInterface::_fwkType());
  EXPECT_EQ(entity.fwkType()->level(), 1U);
}

}  // namespace
