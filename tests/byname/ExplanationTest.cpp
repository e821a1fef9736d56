// SPDX-License-Identifier: Apache-2.0

// What the registry says about itself: a line for each attribute, the names of enumerations and of
// flags.

#include <Kor/ByName.h>
#include <Kor/FlagNames.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using Kor::KorAttr;
using Kor::KorType;
using testing::ElementsAre;
using testing::IsEmpty;

std::string_view prose(std::string_view type, std::string_view attr) {
  return Kor::typeNamed(type).attr(attr)->prose();
}

std::string fullName(KorType const& type, KorAttr const& attr) {
  return std::string(type.name()) + "::" + attr.name().stdString();
}

TEST(Explanation, IsOneShortLineForEachRegisteredAttribute) {
  std::size_t attrs = 0;
  for (KorType const* const type : KorType::all()) {
    for (KorAttr::Ptr const& attr : type->attrs()) {
      std::string_view const line = attr->prose();
      ASSERT_FALSE(line.empty()) << fullName(*type, *attr);
      EXPECT_LE(line.size(), 100U) << fullName(*type, *attr) << ": " << line;
      EXPECT_NE(line.back(), '.') << fullName(*type, *attr) << ": " << line;
      EXPECT_EQ(line.find_first_of("|\n"), std::string_view::npos) << "it is a cell of a table";
      EXPECT_NE(line, attr->name().view()) << fullName(*type, *attr);
      ++attrs;
    }
  }
  EXPECT_GT(attrs, 400U) << "the library is not open";
}

TEST(Explanation, OfAnOverrideIsItsOwnOrThatOfTheBase) {
  EXPECT_EQ(prose("PolicyMapTest::TestClassMapSm", "createCommonData"),
            "creates a TestClassCommonData");
  EXPECT_NE(prose("PolicyMap::ClassMapSm", "createCommonData"),
            prose("PolicyMapTest::TestClassMapSm", "createCommonData"));
  EXPECT_EQ(prose("PolicyMapTest::TestClassMapSm", "createActionSm"),
            prose("PolicyMap::ClassMapSm", "createActionSm"));
}

TEST(Explanation, OfTheWaitsTellsUnitAndDefault) {
  EXPECT_EQ(prose("PolicyMap::ServicePolicySm", "retryMin"),
            "first wait before a failed policy is retried, in seconds above 0; default 1");
}

TEST(Explanation, NamesTheValuesOfEnumerations) {
  auto const names = [](std::string_view type) { return Kor::typeNamed(type).enumNames(); };
  EXPECT_THAT(names("PolicyMap::ClassMapMatchOption"), ElementsAre("ipv4", "ipv6", "mac", "mpls"));
  EXPECT_THAT(names("PolicyMap::ClassMapMatchType"), ElementsAre("matchAny", "matchAll"));
  EXPECT_THAT(names("PolicyMap::ClassMapMatch::Kind"), ElementsAre("acl", "classMap", "rule"));
  EXPECT_THAT(names("Acl::MatchOp"), ElementsAre("any", "eq", "neq", "lt", "gt", "range"));
  EXPECT_THAT(names("PolicyMap::ActionType"), IsEmpty()) << "an open set of numbers";
  EXPECT_THAT(names("PolicyMapTest::AclHelper"), IsEmpty());
  EXPECT_THAT(names("bool"), IsEmpty());
}

// A value that prints as a name has that name at its number.
TEST(Explanation, NamesTheValuesAsTheyPrint) {
  for (KorType const* const type : KorType::all()) {
    for (std::size_t i = 0; i != type->enumNames().size(); ++i) {
      Kor::String const text(std::to_string(i));
      auto it = text.begin();
      Kor::GenericValue const value = type->operations().parse(it, text.end());
      EXPECT_EQ(type->operations().print(value).stdString(),
                "'" + std::string(type->enumNames()[i]) + "'");
    }
  }
}

TEST(Explanation, NamesTheFlagsOfEachRegisteredAttribute) {
  for (KorType const* const type : KorType::all()) {
    for (KorAttr::Ptr const& attr : type->attrs()) {
      std::string const first = Kor::flagNames(*attr).front();
      EXPECT_FALSE(first.starts_with("0x")) << fullName(*type, *attr) << ": " << first;
    }
  }
}

}  // namespace
