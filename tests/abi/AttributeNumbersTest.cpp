// SPDX-License-Identifier: Apache-2.0

// The attributes of base classes and their numbers. Binary consumers depend on these numbers.

#include <Acl/Config.h>
#include <Ip/Status.h>
#include <Ip6/Status.h>
#include <Kor/Entity.h>
#include <Kor/KorAttr.h>
#include <Kor/KorType.h>
#include <Lag/Config.h>
#include <PolicyMap/Action.h>
#include <PolicyMap/PolicyMapAclHelper.h>
#include <PolicyMap/PolicyMapTypeConfig.h>
#include <PolicyMap/PolicyMapTypeStatus.h>
#include <Routing/RoutingInfo.h>
#include <Routing6/RoutingInfo.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using Kor::AttributeId;
using Kor::KorType;
using testing::ElementsAreArray;

using Table = std::vector<std::pair<std::string, AttributeId>>;

// The attributes that a type adds to its base, as registered.
Table ownTable(char const* typeName) {
  Table table;
  KorType const* const type = KorType::named(typeName);
  for (auto const& attr : type->attrs()) {
    if (attr->owner() == type) {
      table.emplace_back(attr->name().stdString(), attr->id());
    }
  }
  return table;
}

// Numbers `names` consecutively from `first`. The hooks of a machine follow, without a number.
Table numbered(AttributeId first, std::vector<std::string> const& names, bool isMachine = false) {
  Table table;
  for (std::string const& name : names) {
    table.emplace_back(name, first++);
  }
  if (isMachine) {
    table.emplace_back("hasNotificationActiveIs", 0);
    table.emplace_back("korDoZombieReactors", 0);
  }
  return table;
}

TEST(BaseTables, OfTheRootsAreShort) {
  EXPECT_THAT(ownTable("Kor::PtrInterface"), ElementsAreArray(Table{}));
  EXPECT_THAT(ownTable("Kor::Entity"), ElementsAreArray(numbered(130, {"name"})));
}

TEST(BaseTables, OfAnAction) {
  EXPECT_THAT(ownTable("PolicyMap::Action"),
              ElementsAreArray(numbered(258, {"className", "actionType", "id", "equalTo"})));
}

TEST(BaseTables, OfTheAclHelper) {
  EXPECT_THAT(ownTable("PolicyMap::PolicyMapAclHelper"),
              ElementsAreArray(numbered(130, {"updateActionSupported",
                                              "reprogramPolicyOnIntfChange",
                                              "expandPortChannels",
                                              "denyRulesAllowed",
                                              "ttlSupported",
                                              "onlyTtlEqSupported",
                                              "ackOrRstSupported",
                                              "establishedSupported",
                                              "subRulesForL4Ports",
                                              "asyncOperations",
                                              "asyncOperationResult",
                                              "hwInit",
                                              "createPolicy",
                                              "recreatePolicy",
                                              "deletePolicy",
                                              "commitPolicy",
                                              "addIntfToPolicy",
                                              "removeIntfFromPolicy",
                                              "addRule",
                                              "beginUpdateActions",
                                              "updateAction",
                                              "endUpdateActions",
                                              "getCountForRule",
                                              "showAclRule",
                                              "showAclSummary"})));
}

TEST(BaseTables, OfTheClassCommonData) {
  EXPECT_THAT(ownTable("PolicyMap::ClassMapSmCommonData"),
              ElementsAreArray(
                  numbered(130, {"name", "classMap", "aclConfig", "classMapStatus", "action",
                                 "updateAclActions", "getIpRule", "getIp6Rule", "getMacRule"})));
}

TEST(BaseTables, OfAnActionMachine) {
  EXPECT_THAT(ownTable("PolicyMap::ActionSm"),
              ElementsAreArray(
                  numbered(130,
                           {"globalCommonData", "policyCommonData", "classCommonData", "action",
                            "initialized", "cleanup", "handleAction", "handleInitialized"},
                           true)));
}

TEST(BaseTables, OfAClassMapMachine) {
  EXPECT_THAT(ownTable("PolicyMap::ClassMapSm"), ElementsAreArray(numbered(130,
                                                                           {"globalCommonData",
                                                                            "policyCommonData",
                                                                            "classMapConfig",
                                                                            "rawClassMapSubConfig",
                                                                            "classAction",
                                                                            "classMap",
                                                                            "classCommonData",
                                                                            "classMapStatus",
                                                                            "classMapMatchSm",
                                                                            "actionSm",
                                                                            "actionsActive",
                                                                            "initializing",
                                                                            "initialized",
                                                                            "handleAction",
                                                                            "handleMatch",
                                                                            "createMatchSm",
                                                                            "createActionSm",
                                                                            "createCommonData",
                                                                            "createClassMapStatus",
                                                                            "handleInitialized",
                                                                            "cleanup",
                                                                            "name"},
                                                                           true)));
}

TEST(BaseTables, OfAPolicyMapMachine) {
  EXPECT_THAT(
      ownTable("PolicyMap::PolicyMapSm"),
      ElementsAreArray(numbered(130,
                                {"globalCommonData", "key", "policyMapConfig", "classTypeConfig",
                                 "status", "policyMap", "classMapSm", "policyCommonData",
                                 "prioClass", "classPrio", "timeProgrammed", "activeIntf",
                                 "createClassMapSm", "createCommonData", "handleActiveIntf",
                                 "cleanup", "handleInitialized", "actionsActive", "initialized"},
                                true)));
}

TEST(BaseTables, OfAServicePolicyMachine) {
  EXPECT_THAT(ownTable("PolicyMap::ServicePolicySm"),
              ElementsAreArray(
                  numbered(130, {"policyConfig",     "classTypeConfig", "statusRequestDir",
                                 "status",           "aclConfig",       "lagConfig",
                                 "ipStatus",         "ip6Status",       "routingInfo",
                                 "routing6Info",     "aclHelper",       "aclDiff",
                                 "allowL2Intf",      "allowL3Intf",     "allowMgmtIntf",
                                 "allowIpAcl",       "allowIp6Acl",     "allowMacAcl",
                                 "commonData",       "policyMapSm",     "initialized",
                                 "intfExists",       "allowedIntf",     "allowedIntfForType",
                                 "memberIntfs",      "effectiveIntfs",  "createPolicyMapSm",
                                 "createCommonData", "handlePolicyMap", "handlePolicyMapConfig",
                                 "handleIntf",       "cleanup",         "handleInitialized",
                                 "retryMin",         "retryMax",        "asyncTimeout"},
                           true)));
}

// The numbers with which classes announce changes are those assigned at registration.
TEST(BaseTables, AgreeWithTheConstantsOfTheClasses) {
  auto const expectNames = [](char const* typeName, Table const& constants) {
    for (auto const& [name, id] : constants) {
      EXPECT_EQ(KorType::named(typeName)->attributeString(id), name.c_str()) << typeName;
    }
  };
  using Helper = PolicyMap::PolicyMapAclHelper;
  expectNames("Kor::Entity", {{"name", Kor::Entity::nameId}});
  expectNames("Acl::Config", {{"ipAcl", Acl::Config::ipAclId},
                              {"ip6Acl", Acl::Config::ip6AclId},
                              {"macAcl", Acl::Config::macAclId}});
  expectNames("Acl::IpAclConfig", {{"rule", Acl::IpAclConfig::ruleId}});
  expectNames("Acl::Ip6AclConfig", {{"rule", Acl::Ip6AclConfig::ruleId}});
  expectNames("Acl::MacAclConfig", {{"rule", Acl::MacAclConfig::ruleId}});
  expectNames("Lag::Input::Config", {{"memberOf", Lag::Input::Config::memberOfId}});
  expectNames("Ip::Status", {{"intfAddress", Ip::Status::intfAddressId}});
  expectNames("Ip6::Status", {{"intfAddress", Ip6::Status::intfAddressId}});
  expectNames("Routing::RoutingInfo", {{"routing", Routing::RoutingInfo::routingId},
                                       {"routedIntf", Routing::RoutingInfo::routedIntfId}});
  expectNames("Routing6::RoutingInfo", {{"routing", Routing6::RoutingInfo::routingId},
                                        {"routedIntf", Routing6::RoutingInfo::routedIntfId}});
  expectNames("PolicyMap::Action", {{"className", PolicyMap::Action::classNameId},
                                    {"actionType", PolicyMap::Action::actionTypeId},
                                    {"id", PolicyMap::Action::idId},
                                    {"equalTo", PolicyMap::Action::equalToId}});
  expectNames("PolicyMap::ClassMapSubConfig",
              {{"matchType", PolicyMap::ClassMapSubConfig::matchTypeId},
               {"match", PolicyMap::ClassMapSubConfig::matchId}});
  expectNames("PolicyMap::ClassMapConfig",
              {{"currentSubConfig", PolicyMap::ClassMapConfig::currentSubConfigId}});
  expectNames("PolicyMap::ClassMapTypeConfig",
              {{"classMapConfig", PolicyMap::ClassMapTypeConfig::classMapConfigId}});
  expectNames("PolicyMap::ClassAction", {{"action", PolicyMap::ClassAction::actionId}});
  expectNames("PolicyMap::PolicyMapSubConfig",
              {{"classPrio", PolicyMap::PolicyMapSubConfig::classPrioId},
               {"prioClass", PolicyMap::PolicyMapSubConfig::prioClassId},
               {"classAction", PolicyMap::PolicyMapSubConfig::classActionId},
               {"rawClassMap", PolicyMap::PolicyMapSubConfig::rawClassMapId}});
  expectNames("PolicyMap::PolicyMapConfig",
              {{"currentSubConfig", PolicyMap::PolicyMapConfig::currentSubConfigId}});
  expectNames("PolicyMap::PolicyMapTypeConfig",
              {{"policyMapConfig", PolicyMap::PolicyMapTypeConfig::policyMapConfigId},
               {"servicePolicy", PolicyMap::PolicyMapTypeConfig::servicePolicyId}});
  expectNames("PolicyMap::ClassMapStatus", {{"error", PolicyMap::ClassMapStatus::errorId},
                                            {"programmed", PolicyMap::ClassMapStatus::programmedId},
                                            {"hitCount", PolicyMap::ClassMapStatus::hitCountId}});
  expectNames("PolicyMap::PolicyMapStatus",
              {{"key", PolicyMap::PolicyMapStatus::keyId},
               {"error", PolicyMap::PolicyMapStatus::errorId},
               {"programmed", PolicyMap::PolicyMapStatus::programmedId},
               {"failure", PolicyMap::PolicyMapStatus::failureId},
               {"classMapStatus", PolicyMap::PolicyMapStatus::classMapStatusId},
               {"timeProgrammed", PolicyMap::PolicyMapStatus::timeProgrammedId},
               {"appliedIntf", PolicyMap::PolicyMapStatus::appliedIntfId}});
  expectNames("PolicyMap::PolicyMapTypeStatus",
              {{"policyMapStatus", PolicyMap::PolicyMapTypeStatus::policyMapStatusId}});
  expectNames("PolicyMap::PolicyMapStatusRequestDir",
              {{"countRequest", PolicyMap::PolicyMapStatusRequestDir::countRequestId}});
  expectNames("PolicyMap::PolicyMapAclHelper",
              {{"updateActionSupported", Helper::updateActionSupportedId},
               {"asyncOperationResult", Helper::asyncOperationResultId}});
}

}  // namespace
