// SPDX-License-Identifier: Apache-2.0
#include "lab/TypesVerb.h"

#include "lab/Labs.h"

#include <Kor/KorType.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace lab::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;

TEST(TypesVerb, ListsEveryType) {
  Outcome const outcome = runLab({"types"});
  EXPECT_EQ(outcome.status, ExitStatus::success);
  for (Kor::KorType const* const type : Kor::KorType::all()) {
    EXPECT_THAT(outcome.out, HasSubstr(type->name()));
  }
}

TEST(TypesVerb, ShowsATypeWithItsAttributes) {
  Outcome const outcome = runLab({"types", "PolicyMapTest::TestAction2"});
  EXPECT_EQ(outcome.out,
            "PolicyMapTest::TestAction2 (entity, base PolicyMap::Action)\n"
            "  built by name with (className: Kor::Name, id: Zub::UniqueId)\n"
            "   id  attribute   kind       flags                type\n"
            "  130  name        read-only  0x220109 0x40000400  Kor::Name\n"
            "  258  className   read-only  0x220109 0x40000400  Kor::Name\n"
            "  259  actionType  read-only  0x220109 0x40000400  PolicyMap::ActionType\n"
            "  260  id          read-only  0x220109 0x40000400  Zub::UniqueId\n"
            "  261  equalTo     function   0x20001 0x400        (other: PolicyMap::Action) → bool\n"
            "  386  value       data       0x220143 0x400       uint32_t\n");
}

TEST(TypesVerb, AShortNameWillDo) {
  EXPECT_THAT(runLab({"types", "AclHelper"}).out,
              AllOf(HasSubstr("PolicyMapTest::AclHelper"), HasSubstr("owned collection")));
}

TEST(TypesVerb, AWrongNameIsAnsweredWithTheNearest) {
  Outcome const outcome = runLab({"types", "PolicyMapTest::AclHelpers"});
  EXPECT_EQ(outcome.status, ExitStatus::badInput);
  EXPECT_EQ(outcome.err, "policymap-lab: no such type: PolicyMapTest::AclHelpers (did you mean "
                         "PolicyMapTest::AclHelper?)\n");
}

TEST(TypesVerb, AVeryLongNameIsNotRepeatedWhole) {
  Outcome const outcome = runLab({"types", std::string(10000, 'x')});
  EXPECT_EQ(outcome.status, ExitStatus::badInput);
  EXPECT_EQ(outcome.err, "policymap-lab: no such type: " + std::string(40, 'x') + "...\n");
}

TEST(TypesVerb, JsonHoldsWhatTheTablesHold) {
  auto const json = nlohmann::json::parse(runLab({"types", "--json", "AclPolicyData"}).out);
  auto const& type = json.at("types").at(0);
  EXPECT_EQ(type.at("name"), "PolicyMapTest::AclPolicyData");
  EXPECT_EQ(type.at("base"), "Kor::PtrInterface");
  EXPECT_EQ(type.at("constructorArgs").at(0).at("type"), "PolicyMapTest::AclPolicyType");
  auto const& attributes = type.at("attributes");
  EXPECT_EQ(attributes.size(), 16U);
  auto const& intf = attributes.at(8);
  EXPECT_EQ(intf.at("name"), "intf");
  EXPECT_EQ(intf.at("id"), 138);
  EXPECT_EQ(intf.at("kind"), "collection");
  EXPECT_EQ(intf.at("key"), "Vorel::IntfId");
  EXPECT_EQ(intf.at("type"), "bool");
  EXPECT_EQ(intf.at("flags"), (nlohmann::json{0x1a20103, 0x400}));
  EXPECT_EQ(intf.at("introspection"), 2);
  EXPECT_EQ(intf.at("inherited"), false);
}

TEST(TypesVerb, AFolderThatCannotBeWrittenIsNamed) {
  Outcome const outcome = runLab({"types", "--markdown", "/dev/null/pages"});
  EXPECT_EQ(outcome.status, ExitStatus::badInput);
  EXPECT_THAT(outcome.err, MatchesRegex("policymap-lab: /dev/null/pages/.* cannot be written\n"));
}

}  // namespace
}  // namespace lab::test
