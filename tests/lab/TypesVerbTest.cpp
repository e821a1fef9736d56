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
            "   id  attribute   kind       type\n"
            "  130  name        read-only  Kor::Name\n"
            "       name given at construction, which never changes [key, independent domain]\n"
            "  258  className   read-only  Kor::Name\n"
            "       class that the action belongs to; the same as the name [key, independent "
            "domain]\n"
            "  259  actionType  read-only  PolicyMap::ActionType\n"
            "       kind of the action, a number chosen by its class [key, independent domain]\n"
            "  260  id          read-only  Zub::UniqueId\n"
            "       identifier of this action object [key, independent domain]\n"
            "  261  equalTo     function   (other: PolicyMap::Action) → bool\n"
            "       true for an action of this class with the same value [function]\n"
            "  386  value       data       uint32_t\n"
            "       number that the action stores in the rules of its class; default 0 [data, "
            "independent "
            "domain]\n");
}

TEST(TypesVerb, WrapsALongExplanationUnderItsAttribute) {
  EXPECT_THAT(runLab({"types", "SubRuleData"}).out,
              HasSubstr("\n   8  dstPortRange  read-only  bool\n"
                        "       the destination ports need a range checker: value and mask cannot "
                        "express them [key,\n"
                        "       independent domain]\n"));
}

TEST(TypesVerb, ShowsTheValuesOfAnEnumeration) {
  EXPECT_EQ(runLab({"types", "MatchOp"}).out, "Acl::MatchOp (value)\n"
                                              "  values from 0: any, eq, neq, lt, gt, range\n");
  EXPECT_EQ(runLab({"types", "ActionType"}).out, "PolicyMap::ActionType (value)\n")
      << "its values have no names";
  auto const json = nlohmann::json::parse(runLab({"types", "--json"}).out);
  for (auto const& type : json.at("types")) {
    if (type.at("name") == "PolicyMap::ClassMapMatchOption") {
      EXPECT_EQ(type.at("values"), (nlohmann::json{"ipv4", "ipv6", "mac", "mpls"}));
    } else if (!type.at("attributes").empty()) {
      EXPECT_EQ(type.at("values"), nlohmann::json::array()) << type.at("name");
    }
  }
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
  EXPECT_EQ(intf.at("flagNames"), (nlohmann::json{"collection", "independent domain"}));
  EXPECT_EQ(intf.at("prose"), "interfaces to which the policy is applied");
  EXPECT_EQ(intf.at("inherited"), false);
}

TEST(TypesVerb, AFolderThatCannotBeWrittenIsNamed) {
  Outcome const outcome = runLab({"types", "--markdown", "/dev/null/pages"});
  EXPECT_EQ(outcome.status, ExitStatus::badInput);
  EXPECT_THAT(outcome.err, MatchesRegex("policymap-lab: /dev/null/pages/.* cannot be written\n"));
}

}  // namespace
}  // namespace lab::test
