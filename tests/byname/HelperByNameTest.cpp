// SPDX-License-Identifier: Apache-2.0
#include "byname/Recording.h"

#include <Kor/ByName.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Kor::construct;
using Kor::GenericRef;
using testing::Contains;
using testing::Not;
using testing::StartsWith;

TEST(ByName, TheProcessHasNoTypeOfTheLibraryBeforeItIsOpened) {
  EXPECT_THAT(typesBefore(), Not(Contains(StartsWith("PolicyMap"))));
  EXPECT_NE(Kor::KorType::named("PolicyMapTest::AclHelper"), nullptr);
}

TEST(ByName, AHelperIsBuiltReadAndWritten) {
  GenericRef const helper = construct("PolicyMapTest::AclHelper", true, false);
  EXPECT_EQ(helper["updateActionSupported"], true);
  EXPECT_EQ(helper["commitError"], "");
  helper["commitError"] = "table full";
  EXPECT_EQ(helper["commitError"].as<std::string>(), "table full");
  EXPECT_EQ(helper["testData"].size(), 0U);
}

}  // namespace
