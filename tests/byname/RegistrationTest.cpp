// SPDX-License-Identifier: Apache-2.0

// The registered shape of the library's types. Tests and tools access the types by these names, so
// they must not change.

#include "byname/Recording.h"

#include <Kor/ByName.h>
#include <Kor/IntrospectionReactor.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using Kor::KorAttr;
using Kor::KorType;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

// Every registration call. "= NAME ID" is an inherited attribute that is announced again. All
// others are `NAME ID FLAGS/FLAGS INTROSPECTION TYPE`, with the key type in brackets and the
// arguments in parentheses; "key" is followed by the member's attribute from which members are
// created.
constexpr std::string_view registration = R"(
namespace PolicyMapTest
type PolicyMapTest::TestAction1 : PolicyMap::Action
  = name 130, className 258, actionType 259, id 260, equalTo 261
  equalTo 261 0x20001/0x400 8 bool(other: PolicyMap::Action)
  value 386 0x220143/0x400 2 uint32_t
end
type PolicyMapTest::TestAction2 : PolicyMap::Action
  = name 130, className 258, actionType 259, id 260, equalTo 261
  equalTo 261 0x20001/0x400 8 bool(other: PolicyMap::Action)
  value 386 0x220143/0x400 2 uint32_t
end
type PolicyMapTest::TestAction3 : PolicyMap::Action
  = name 130, className 258, actionType 259, id 260, equalTo 261
  equalTo 261 0x20001/0x400 8 bool(other: PolicyMap::Action)
  value 386 0x220143/0x400 2 uint32_t
end
type PolicyMapTest::AclPolicyType
  policyKey 2 0x220109/0x40000400 2 PolicyMap::PolicyMapSmKey
  option 3 0x22010f/0x400 2 PolicyMap::ClassMapMatchOption
  hash 4 0x220001/0x400 0 uint32_t
end
type PolicyMapTest::SubRuleDataCollection : Kor::PtrInterface
  key 130 0x220109/0x40000400 2 PolicyMap::AclRuleKey
  subRule 131 0x1a20103/0x400 2 bool[PolicyMap::SubRuleData]
  fwkKey 0 0x200001/0x400 0 PolicyMap::AclRuleKey
end
type PolicyMapTest::AclPolicyData : Kor::PtrInterface
  key 130 0x220109/0x40000400 2 PolicyMapTest::AclPolicyType
  ruleAction1 131 0x1a20103/0x400 2 uint32_t[PolicyMap::AclRuleKey]
  ruleAction2 132 0x1a20103/0x400 2 uint32_t[PolicyMap::AclRuleKey]
  ruleAction3 133 0x1a20103/0x400 2 uint32_t[PolicyMap::AclRuleKey]
  ruleMatch 134 0x1a20103/0x400 2 Acl::IpRuleConfig[PolicyMap::AclRuleKey]
  ruleMatch6 135 0x1a20103/0x400 2 Acl::Ip6RuleConfig[PolicyMap::AclRuleKey]
  ruleMatchMac 136 0x1a20103/0x400 2 Acl::MacRuleConfig[PolicyMap::AclRuleKey]
  subRulesForKey 137 0x9a20103/0x10000400 34
      PolicyMapTest::SubRuleDataCollection[PolicyMap::AclRuleKey] key
      PolicyMapTest::SubRuleDataCollection.key
  intf 138 0x1a20103/0x400 2 bool[Vorel::IntfId]
  commitCount 139 0x220103/0x400 2 uint32_t
  dirty 140 0x220103/0x400 2 bool
  createCount 141 0x220103/0x400 2 uint32_t
  beginUpdateActionCount 142 0x220103/0x400 2 uint32_t
  endUpdateActionCount 143 0x220103/0x400 2 uint32_t
  created 144 0x220103/0x400 2 bool
  fwkKey 0 0x200001/0x400 0 PolicyMapTest::AclPolicyType
end
type PolicyMapTest::AclHelper : PolicyMap::PolicyMapAclHelper
  = updateActionSupported 130, reprogramPolicyOnIntfChange 131, expandPortChannels 132,
      denyRulesAllowed 133, ttlSupported 134, onlyTtlEqSupported 135, ackOrRstSupported 136,
      establishedSupported 137, subRulesForL4Ports 138, asyncOperations 139, asyncOperationResult
      140, hwInit 141, createPolicy 142, recreatePolicy 143, deletePolicy 144, commitPolicy 145,
      addIntfToPolicy 146, removeIntfFromPolicy 147, addRule 148, beginUpdateActions 149,
      updateAction 150, endUpdateActions 151, getCountForRule 152, showAclRule 153, showAclSummary
      154
  hwInit 141 0x20001/0x400 8 void()
  createPolicy 142 0x20001/0x400 8 Kor::String(policyData: PolicyMap::PolicyMapSmCommonData,
      matchOption: PolicyMap::ClassMapMatchOption)
  recreatePolicy 143 0x20001/0x400 8 Kor::String(policyData: PolicyMap::PolicyMapSmCommonData,
      matchOption: PolicyMap::ClassMapMatchOption)
  deletePolicy 144 0x20001/0x400 8 Kor::String(policyData: PolicyMap::PolicyMapSmCommonData,
      matchOption: PolicyMap::ClassMapMatchOption)
  commitPolicy 145 0x20001/0x400 8 Kor::String(policyData: PolicyMap::PolicyMapSmCommonData,
      matchOption: PolicyMap::ClassMapMatchOption)
  addIntfToPolicy 146 0x20001/0x400 8 Kor::String(policyData: PolicyMap::PolicyMapSmCommonData,
      intf: Vorel::IntfId, matchOption: PolicyMap::ClassMapMatchOption)
  removeIntfFromPolicy 147 0x20001/0x400 8 Kor::String(policyData:
      PolicyMap::PolicyMapSmCommonData, intf: Vorel::IntfId, matchOption:
      PolicyMap::ClassMapMatchOption)
  addRule 148 0x20001/0x400 8 Kor::String(key: PolicyMap::AclRuleKey, subRule:
      PolicyMap::SubRuleData, policyCommonData: PolicyMap::PolicyMapSmCommonData, classCommonData:
      PolicyMap::ClassMapSmCommonData)
  beginUpdateActions 149 0x20001/0x400 8 Kor::String(policyCommonData:
      PolicyMap::PolicyMapSmCommonData, classCommonData: PolicyMap::ClassMapSmCommonData)
  updateAction 150 0x20001/0x400 8 Kor::String(key: PolicyMap::AclRuleKey, subRuleData:
      PolicyMap::SubRuleData, policyCommonData: PolicyMap::PolicyMapSmCommonData, classCommonData:
      PolicyMap::ClassMapSmCommonData)
  endUpdateActions 151 0x20001/0x400 8 Kor::String(policyCommonData:
      PolicyMap::PolicyMapSmCommonData, classCommonData: PolicyMap::ClassMapSmCommonData)
  getCountForRule 152 0x20001/0x400 8 uint64_t(key: PolicyMap::AclRuleKey, policyCommonData:
      PolicyMap::PolicyMapSmCommonData, classCommonData: PolicyMap::ClassMapSmCommonData)
  scheduleAsyncResult 258 0x20001/0x400 8 void(error: Kor::String)
  asyncTrigger 259 0x220143/0x400 2 uint32_t
  handleAsyncTrigger 260 0x20001/0x400 8 void()
  asyncError 261 0x220143/0x400 2 Kor::String
  pseudoAsync 262 0x220143/0x400 2 bool
  testData 263 0x9a20143/0x10000400 34 PolicyMapTest::AclPolicyData[PolicyMapTest::AclPolicyType]
      key PolicyMapTest::AclPolicyData.key
  createError 264 0x220143/0x400 2 Kor::String
  deleteError 265 0x220143/0x400 2 Kor::String
  commitError 266 0x220143/0x400 2 Kor::String
  addIntfError 267 0x220143/0x400 2 Kor::String
  removeIntfError 268 0x220143/0x400 2 Kor::String
  addRuleError 269 0x220143/0x400 2 Kor::String
  updateActionError 270 0x220143/0x400 2 Kor::String
  rangeCheckerError 271 0x220143/0x400 2 Kor::String
end
type PolicyMapTest::TestAction1Sm : PolicyMap::ActionSm
  = globalCommonData 130, policyCommonData 131, classCommonData 132, action 133, initialized 134,
      cleanup 135, handleAction 136, handleInitialized 137, hasNotificationActiveIs 0,
      korDoZombieReactors 0
  cleanup 135 0x20001/0x400 8 void()
  handleAction 136 0x20001/0x400 8 void()
  hasNotificationActiveIs 0 0x1/0x400 8 void(hasNotificationActiveIs: bool)
  korDoZombieReactors 0 0x1/0x400 8 void(on: bool)
end
type PolicyMapTest::TestAction2Sm : PolicyMap::ActionSm
  = globalCommonData 130, policyCommonData 131, classCommonData 132, action 133, initialized 134,
      cleanup 135, handleAction 136, handleInitialized 137, hasNotificationActiveIs 0,
      korDoZombieReactors 0
  cleanup 135 0x20001/0x400 8 void()
  handleAction 136 0x20001/0x400 8 void()
  hasNotificationActiveIs 0 0x1/0x400 8 void(hasNotificationActiveIs: bool)
  korDoZombieReactors 0 0x1/0x400 8 void(on: bool)
end
type PolicyMapTest::TestAction3Sm : PolicyMap::ActionSm
  = globalCommonData 130, policyCommonData 131, classCommonData 132, action 133, initialized 134,
      cleanup 135, handleAction 136, handleInitialized 137, hasNotificationActiveIs 0,
      korDoZombieReactors 0
  cleanup 135 0x20001/0x400 8 void()
  handleAction 136 0x20001/0x400 8 void()
  hasNotificationActiveIs 0 0x1/0x400 8 void(hasNotificationActiveIs: bool)
  korDoZombieReactors 0 0x1/0x400 8 void(on: bool)
end
type PolicyMapTest::TestClassCommonData : PolicyMap::ClassMapSmCommonData
  = name 130, classMap 131, aclConfig 132, classMapStatus 133, action 134, updateAclActions 135,
      getIpRule 136, getIp6Rule 137, getMacRule 138
  action1Value 258 0x220143/0x400 2 uint32_t
  action2Value 259 0x220143/0x400 2 uint32_t
  action3Value 260 0x220143/0x400 2 uint32_t
end
type PolicyMapTest::TestClassMapSm : PolicyMap::ClassMapSm
  = globalCommonData 130, policyCommonData 131, classMapConfig 132, rawClassMapSubConfig 133,
      classAction 134, classMap 135, classCommonData 136, classMapStatus 137, classMapMatchSm 138,
      actionSm 139, actionsActive 140, initializing 141, initialized 142, handleAction 143,
      handleMatch 144, createMatchSm 145, createActionSm 146, createCommonData 147,
      createClassMapStatus 148, handleInitialized 149, cleanup 150, name 151,
      hasNotificationActiveIs 0, korDoZombieReactors 0
  createActionSm 146 0x8020001/0x400 8 PolicyMap::ActionSm(actionType: PolicyMap::ActionType)
  createCommonData 147 0x8020001/0x400 8 PolicyMap::ClassMapSmCommonData()
  hasNotificationActiveIs 0 0x1/0x400 8 void(hasNotificationActiveIs: bool)
  korDoZombieReactors 0 0x1/0x400 8 void(on: bool)
end
type PolicyMapTest::TestPolicyMapSm : PolicyMap::PolicyMapSm
  = globalCommonData 130, key 131, policyMapConfig 132, classTypeConfig 133, status 134, policyMap
      135, classMapSm 136, policyCommonData 137, prioClass 138, classPrio 139, timeProgrammed 140,
      activeIntf 141, createClassMapSm 142, createCommonData 143, handleActiveIntf 144, cleanup
      145, handleInitialized 146, actionsActive 147, initialized 148, hasNotificationActiveIs 0,
      korDoZombieReactors 0
  createClassMapSm 142 0x8020001/0x400 8 PolicyMap::ClassMapSm(map: PolicyMap::ClassMapConfig,
      rawMap: PolicyMap::ClassMapSubConfig, action: PolicyMap::ClassAction)
  hasNotificationActiveIs 0 0x1/0x400 8 void(hasNotificationActiveIs: bool)
  korDoZombieReactors 0 0x1/0x400 8 void(on: bool)
end
type PolicyMapTest::TestServicePolicySm : PolicyMap::ServicePolicySm
  = policyConfig 130, classTypeConfig 131, statusRequestDir 132, status 133, aclConfig 134,
      lagConfig 135, ipStatus 136, ip6Status 137, routingInfo 138, routing6Info 139, aclHelper
      140, aclDiff 141, allowL2Intf 142, allowL3Intf 143, allowMgmtIntf 144, allowIpAcl 145,
      allowIp6Acl 146, allowMacAcl 147, commonData 148, policyMapSm 149, initialized 150,
      intfExists 151, allowedIntf 152, allowedIntfForType 153, memberIntfs 154, effectiveIntfs
      155, createPolicyMapSm 156, createCommonData 157, handlePolicyMap 158, handlePolicyMapConfig
      159, handleIntf 160, cleanup 161, handleInitialized 162, retryMin 163, retryMax 164,
      asyncTimeout 165, hasNotificationActiveIs 0, korDoZombieReactors 0
  intfExists 151 0x20001/0x400 8 bool(intf: Vorel::IntfId)
  createPolicyMapSm 156 0x8020001/0x400 8 PolicyMap::PolicyMapSm(key: PolicyMap::PolicyMapSmKey,
      policyMap: PolicyMap::PolicyMapConfig, status: PolicyMap::PolicyMapStatus)
  nonexistentIntf 258 0x1a20103/0x400 2 bool[Vorel::IntfId]
  hasNotificationActiveIs 0 0x1/0x400 8 void(hasNotificationActiveIs: bool)
  korDoZombieReactors 0 0x1/0x400 8 void(on: bool)
end
end
)";

// The final list of each type: inherited names in the order of the base with replaced ones in
// place, then those that were deleted and defined again, then new ones.
constexpr std::string_view listings = R"(
TestAction1: name 130, className 258, actionType 259, id 260, equalTo 261, value 386
TestAction2: name 130, className 258, actionType 259, id 260, equalTo 261, value 386
TestAction3: name 130, className 258, actionType 259, id 260, equalTo 261, value 386
AclPolicyType: policyKey 2, option 3, hash 4
SubRuleDataCollection: key 130, subRule 131, fwkKey 0
AclPolicyData: key 130, ruleAction1 131, ruleAction2 132, ruleAction3 133, ruleMatch 134,
    ruleMatch6 135, ruleMatchMac 136, subRulesForKey 137, intf 138, commitCount 139, dirty 140,
    createCount 141, beginUpdateActionCount 142, endUpdateActionCount 143, created 144, fwkKey 0
AclHelper: updateActionSupported 130, reprogramPolicyOnIntfChange 131, expandPortChannels 132,
    denyRulesAllowed 133, ttlSupported 134, onlyTtlEqSupported 135, ackOrRstSupported 136,
    establishedSupported 137, subRulesForL4Ports 138, asyncOperations 139, asyncOperationResult
    140, hwInit 141, showAclRule 153, showAclSummary 154, createPolicy 142, recreatePolicy 143,
    deletePolicy 144, commitPolicy 145, addIntfToPolicy 146, removeIntfFromPolicy 147, addRule
    148, beginUpdateActions 149, updateAction 150, endUpdateActions 151, getCountForRule 152,
    scheduleAsyncResult 258, asyncTrigger 259, handleAsyncTrigger 260, asyncError 261, pseudoAsync
    262, testData 263, createError 264, deleteError 265, commitError 266, addIntfError 267,
    removeIntfError 268, addRuleError 269, updateActionError 270, rangeCheckerError 271
TestAction1Sm: globalCommonData 130, policyCommonData 131, classCommonData 132, action 133,
    initialized 134, cleanup 135, handleAction 136, handleInitialized 137, hasNotificationActiveIs
    0, korDoZombieReactors 0
TestAction2Sm: globalCommonData 130, policyCommonData 131, classCommonData 132, action 133,
    initialized 134, cleanup 135, handleAction 136, handleInitialized 137, hasNotificationActiveIs
    0, korDoZombieReactors 0
TestAction3Sm: globalCommonData 130, policyCommonData 131, classCommonData 132, action 133,
    initialized 134, cleanup 135, handleAction 136, handleInitialized 137, hasNotificationActiveIs
    0, korDoZombieReactors 0
TestClassCommonData: name 130, classMap 131, aclConfig 132, classMapStatus 133, action 134,
    updateAclActions 135, getIpRule 136, getIp6Rule 137, getMacRule 138, action1Value 258,
    action2Value 259, action3Value 260
TestClassMapSm: globalCommonData 130, policyCommonData 131, classMapConfig 132,
    rawClassMapSubConfig 133, classAction 134, classMap 135, classCommonData 136, classMapStatus
    137, classMapMatchSm 138, actionSm 139, actionsActive 140, initializing 141, initialized 142,
    handleAction 143, handleMatch 144, createMatchSm 145, createCommonData 147,
    createClassMapStatus 148, handleInitialized 149, cleanup 150, name 151, createActionSm 146,
    hasNotificationActiveIs 0, korDoZombieReactors 0
TestPolicyMapSm: globalCommonData 130, key 131, policyMapConfig 132, classTypeConfig 133, status
    134, policyMap 135, classMapSm 136, policyCommonData 137, prioClass 138, classPrio 139,
    timeProgrammed 140, activeIntf 141, createCommonData 143, handleActiveIntf 144, cleanup 145,
    handleInitialized 146, actionsActive 147, initialized 148, createClassMapSm 142,
    hasNotificationActiveIs 0, korDoZombieReactors 0
TestServicePolicySm: policyConfig 130, classTypeConfig 131, statusRequestDir 132, status 133,
    aclConfig 134, lagConfig 135, ipStatus 136, ip6Status 137, routingInfo 138, routing6Info 139,
    aclHelper 140, aclDiff 141, allowL2Intf 142, allowL3Intf 143, allowMgmtIntf 144, allowIpAcl
    145, allowIp6Acl 146, allowMacAcl 147, commonData 148, policyMapSm 149, initialized 150,
    allowedIntf 152, allowedIntfForType 153, memberIntfs 154, effectiveIntfs 155, createCommonData
    157, handlePolicyMap 158, handlePolicyMapConfig 159, handleIntf 160, cleanup 161,
    handleInitialized 162, retryMin 163, retryMax 164, asyncTimeout 165, intfExists 151,
    createPolicyMapSm 156, nonexistentIntf 258, hasNotificationActiveIs 0, korDoZombieReactors 0
)";

// The lines of a text. A line that is indented by four or more spaces continues the line before it.
std::vector<std::string> linesOf(std::string_view text) {
  std::vector<std::string> lines;
  std::istringstream stream{std::string(text)};
  for (std::string line; std::getline(stream, line);) {
    auto const indent = line.find_first_not_of(' ');
    if (indent == std::string::npos) {
      continue;
    }
    if (indent >= 4) {
      lines.back() += ' ' + line.substr(indent);
    } else {
      lines.push_back(line.substr(indent));
    }
  }
  return lines;
}

// Splits at ", ".
std::vector<std::string> partsOf(std::string const& text) {
  std::vector<std::string> parts;
  for (std::size_t from = 0; from < text.size();) {
    auto const to = std::min(text.find(", ", from), text.size());
    parts.push_back(text.substr(from, to - from));
    from = to + 2;
  }
  return parts;
}

// The expected calls, one per line. "." is the exit of an attribute.
std::vector<std::string> expectedCalls() {
  std::vector<std::string> calls;
  for (std::string const& line : linesOf(registration)) {
    if (line.starts_with("= ")) {
      for (std::string const& inherited : partsOf(line.substr(2))) {
        calls.push_back("= " + inherited);
        calls.emplace_back(".");
      }
      continue;
    }
    calls.push_back(line);
    if (!line.starts_with("namespace ") && !line.starts_with("type ") && line != "end") {
      calls.emplace_back(".");
    }
  }
  return calls;
}

// The recorded calls, starting with the library's namespace.
std::vector<RegistrationCall> recordedCalls() {
  auto const& all = recording().calls();
  auto const from = std::find_if(all.begin(), all.end(), [](RegistrationCall const& call) {
    return call.kind == RegistrationCall::nameSpace && call.name == "PolicyMapTest";
  });
  return {from, all.end()};
}

std::vector<std::string> shown(std::vector<RegistrationCall> const& calls) {
  std::vector<std::string> lines;
  std::string type;
  for (RegistrationCall const& call : calls) {
    switch (call.kind) {
    case RegistrationCall::nameSpace: lines.push_back("namespace " + call.name); break;
    case RegistrationCall::type:
      type = call.name;
      lines.push_back("type " + type +
                      (call.base == nullptr ? "" : " : " + std::string(call.base->name())));
      break;
    case RegistrationCall::attr:
      lines.push_back(call.attrRecord->owner()->name() == type
                          ? call.attrText
                          : "= " + call.name + ' ' + std::to_string(call.attrRecord->id()));
      break;
    case RegistrationCall::attrContextExit: lines.emplace_back("."); break;
    case RegistrationCall::scopeExit: lines.emplace_back("end"); break;
    }
  }
  return lines;
}

// The fourteen names, in order.
std::vector<std::string> qualifiedNames() {
  std::vector<std::string> names;
  for (std::string const& line : linesOf(registration)) {
    if (line.starts_with("type ")) {
      names.push_back(line.substr(5, line.find(' ', 5) - 5));
    }
  }
  return names;
}

KorType const& typeOf(std::string_view shortName) {
  return Kor::typeNamed("PolicyMapTest::" + std::string(shortName));
}

std::vector<std::string> listed(KorType const& type) {
  std::vector<std::string> names;
  for (KorAttr::Ptr const& attr : type.attrs()) {
    names.push_back(attr->name().stdString() + ' ' + std::to_string(attr->id()));
  }
  return names;
}

std::vector<std::string> shown(std::vector<Kor::ArgumentSpec> const& args) {
  std::vector<std::string> lines;
  lines.reserve(args.size());
  for (Kor::ArgumentSpec const& arg : args) {
    lines.push_back(arg.name.stdString() + ": " + arg.typeName.stdString());
  }
  return lines;
}

// The calls

TEST(Registration, MakesExactlyTheExpectedCalls) {
  EXPECT_THAT(shown(recordedCalls()), ElementsAreArray(expectedCalls()));
}

TEST(Registration, MakesOneHundredAndNinetyTwoCallsBesidesTheInheritedAttributes) {
  auto const lines = shown(recordedCalls());
  auto const inherited = std::count_if(
      lines.begin(), lines.end(), [](std::string const& line) { return line.starts_with("= "); });
  EXPECT_EQ(static_cast<std::ptrdiff_t>(lines.size()) - 2 * inherited, 192);
  auto const exits = std::count(lines.begin(), lines.end(), ".");
  EXPECT_EQ(exits - inherited, 81);
}

TEST(Registration, OpensTheLibrarysNamespaceOnceAndLast) {
  auto const& all = recording().calls();
  std::vector<std::string> nameSpaces;
  for (RegistrationCall const& call : all) {
    if (call.kind == RegistrationCall::nameSpace) {
      nameSpaces.push_back(call.name);
    }
  }
  EXPECT_EQ(std::count(nameSpaces.begin(), nameSpaces.end(), "PolicyMapTest"), 1);
  EXPECT_EQ(nameSpaces.back(), "PolicyMapTest");
}

TEST(Registration, AnnouncesATypeBeforeItsRecordIsFilled) {
  std::size_t types = 0;
  for (RegistrationCall const& call : recordedCalls()) {
    if (call.kind == RegistrationCall::type) {
      ++types;
      EXPECT_EQ(call.typeSize, 0U) << call.name;
      EXPECT_EQ(call.constructorArgs, 0U) << call.name;
      EXPECT_FALSE(call.hasGenericIfSupport) << call.name;
    }
  }
  EXPECT_EQ(types, 14U);
}

TEST(Registration, FillsTheTypesRecordBeforeItsFirstAttribute) {
  auto const calls = recordedCalls();
  std::size_t types = 0;
  for (std::size_t i = 0; i + 1 < calls.size(); ++i) {
    if (calls[i].kind == RegistrationCall::type) {
      ++types;
      RegistrationCall const& next = calls[i + 1];
      EXPECT_EQ(next.kind, RegistrationCall::attr) << calls[i].name;
      EXPECT_NE(next.typeSize, 0U) << calls[i].name;
      EXPECT_TRUE(next.hasGenericIfSupport) << calls[i].name;
      EXPECT_EQ(next.constructorArgs, Kor::typeNamed(calls[i].name).constructorArgs().size());
    }
  }
  EXPECT_EQ(types, 14U);
}

TEST(Registration, LeavesTheRecordsAsTheyWereAnnounced) {
  for (RegistrationCall const& call : recordedCalls()) {
    if (call.kind == RegistrationCall::attr) {
      EXPECT_EQ(textOf(*call.attrRecord), call.attrText);
    }
  }
}

// Types

TEST(Registration, EntersTheFourteenTypesUnderTheirNamesInOrder) {
  std::vector<std::string> entered;
  for (KorType const* const type : KorType::all()) {
    if (type->name().starts_with("PolicyMapTest::")) {
      entered.emplace_back(type->name());
      EXPECT_EQ(KorType::named(type->name()), type);
    }
  }
  EXPECT_THAT(entered, SizeIs(14));
  EXPECT_THAT(entered, ElementsAreArray(qualifiedNames()));
}

TEST(Registration, EntersATypeOnceHoweverOftenItIsBound) {
  auto const before = KorType::all();
  KorType const& type = typeOf("AclHelper");
  KorType::typeNodeIs(const_cast<KorType*>(&type), "PolicyMapTest::AclHelper");
  EXPECT_EQ(KorType::all(), before);
  EXPECT_EQ(KorType::named("PolicyMapTest::AclHelper"), &type);
}

TEST(RegistrationDeathTest, BindsNoTypeToAnotherName) {
  auto* const type = const_cast<KorType*>(&typeOf("AclHelper"));
  EXPECT_DEATH(KorType::typeNodeIs(type, "PolicyMapTest::AclHelperToo"),
               "assertion \"type->name_ == name\" failed");
}

TEST(Registration, MarksTheActionsAsEntitiesAndThePolicyIdentityAsAValue) {
  std::set<std::string> const entities{"PolicyMapTest::TestAction1", "PolicyMapTest::TestAction2",
                                       "PolicyMapTest::TestAction3"};
  for (std::string const& name : qualifiedNames()) {
    KorType const& type = Kor::typeNamed(name);
    EXPECT_EQ(type.isEntity(), entities.contains(name)) << name;
    EXPECT_EQ(type.isValue(), name == "PolicyMapTest::AclPolicyType") << name;
    EXPECT_TRUE(type.hasGenericIfSupport()) << name;
  }
}

TEST(Registration, KnowsSizesThatHoldWhatTheBaseHolds) {
  for (std::string const& name : qualifiedNames()) {
    KorType const& type = Kor::typeNamed(name);
    EXPECT_GT(type.size(), 0U) << name;
    if (type.base() != nullptr) {
      EXPECT_GE(type.size(), type.base()->size()) << name;
    }
  }
  EXPECT_GT(typeOf("TestClassCommonData").size(),
            Kor::typeNamed("PolicyMap::ClassMapSmCommonData").size());
  EXPECT_GT(typeOf("AclHelper").size(), Kor::typeNamed("PolicyMap::PolicyMapAclHelper").size());
}

TEST(Registration, KnowsTheConstructorsArguments) {
  auto const args = [](std::string_view name) { return shown(typeOf(name).constructorArgs()); };
  for (char const* const action : {"TestAction1", "TestAction2", "TestAction3"}) {
    EXPECT_THAT(args(action), ElementsAre("className: Kor::Name", "id: Zub::UniqueId"));
  }
  EXPECT_THAT(args("AclPolicyType"), ElementsAre("policyKey: PolicyMap::PolicyMapSmKey",
                                                 "option: PolicyMap::ClassMapMatchOption"));
  EXPECT_THAT(args("SubRuleDataCollection"), ElementsAre("key: PolicyMap::AclRuleKey"));
  EXPECT_THAT(args("AclPolicyData"), ElementsAre("key: PolicyMapTest::AclPolicyType"));
  EXPECT_THAT(args("AclHelper"),
              ElementsAre("updateActionSupported: bool", "expandPortChannels: bool"));
  for (char const* const machine : {"TestAction1Sm", "TestAction2Sm", "TestAction3Sm"}) {
    EXPECT_THAT(args(machine), ElementsAre("globalCommonData: PolicyMap::PolicyMapGlobalData",
                                           "policyCommonData: PolicyMap::PolicyMapSmCommonData",
                                           "classCommonData: PolicyMap::ClassMapSmCommonData",
                                           "action: PolicyMap::Action"));
  }
  EXPECT_THAT(args("TestClassCommonData"),
              ElementsAre("name: Kor::Name", "classMap: PolicyMap::ClassMapSubConfig",
                          "aclConfig: Acl::Config"));
  EXPECT_THAT(args("TestClassMapSm"),
              ElementsAre("globalCommonData: PolicyMap::PolicyMapGlobalData",
                          "policyCommonData: PolicyMap::PolicyMapSmCommonData",
                          "classMapConfig: PolicyMap::ClassMapConfig",
                          "rawClassMapSubConfig: PolicyMap::ClassMapSubConfig",
                          "classAction: PolicyMap::ClassAction"));
  EXPECT_THAT(args("TestPolicyMapSm"),
              ElementsAre("globalCommonData: PolicyMap::PolicyMapGlobalData",
                          "key: PolicyMap::PolicyMapSmKey",
                          "policyMapConfig: PolicyMap::PolicyMapConfig",
                          "classTypeConfig: PolicyMap::ClassMapTypeConfig",
                          "status: PolicyMap::PolicyMapStatus"));
  EXPECT_THAT(args("TestServicePolicySm"),
              ElementsAre("policyConfig: PolicyMap::PolicyMapTypeConfig",
                          "classTypeConfig: PolicyMap::ClassMapTypeConfig",
                          "statusRequestDir: PolicyMap::PolicyMapStatusRequestDir",
                          "status: PolicyMap::PolicyMapTypeStatus", "aclConfig: Acl::Config",
                          "lagConfig: Lag::Input::Config", "ipStatus: Ip::Status",
                          "ip6Status: Ip6::Status", "routingInfo: Routing::RoutingInfo",
                          "routing6Info: Routing6::RoutingInfo",
                          "aclHelper: PolicyMap::PolicyMapAclHelper", "aclDiff: Acl::AclDiff",
                          "allowL2Intf: bool", "allowL3Intf: bool", "allowMgmtIntf: bool"));
}

TEST(Registration, NamesOnlyArgumentTypesThatAreEntered) {
  for (KorType const* const type : KorType::all()) {
    for (Kor::ArgumentSpec const& arg : type->constructorArgs()) {
      EXPECT_NE(KorType::named(arg.typeName.view()), nullptr)
          << type->name() << ": " << arg.typeName;
    }
    for (KorAttr::Ptr const& attr : type->attrs()) {
      EXPECT_EQ(KorType::named(attr->valueType()->name()), attr->valueType())
          << type->name() << ' ' << attr->name() << ": " << attr->valueType()->name();
      for (Kor::ArgumentSpec const& arg : attr->args()) {
        EXPECT_NE(KorType::named(arg.typeName.view()), nullptr)
            << type->name() << ' ' << attr->name() << ": " << arg.typeName;
      }
    }
  }
}

// Attributes

TEST(Registration, ListsEachTypesAttributesInTheirOrder) {
  auto const lines = linesOf(listings);
  EXPECT_THAT(lines, SizeIs(14));
  for (std::string const& line : lines) {
    auto const colon = line.find(": ");
    std::string const name = line.substr(0, colon);
    EXPECT_THAT(listed(typeOf(name)), ElementsAreArray(partsOf(line.substr(colon + 2)))) << name;
  }
}

TEST(Registration, ListsEachNameOnce) {
  for (std::string const& name : qualifiedNames()) {
    std::multiset<std::string> names;
    for (KorAttr::Ptr const& attr : Kor::typeNamed(name).attrs()) {
      names.insert(attr->name().stdString());
    }
    for (std::string const& attr : names) {
      EXPECT_EQ(names.count(attr), 1U) << name << '.' << attr;
    }
  }
}

TEST(Registration, ListsTheRecordsAttributesExactly) {
  EXPECT_THAT(listed(typeOf("AclPolicyData")),
              ElementsAre("key 130", "ruleAction1 131", "ruleAction2 132", "ruleAction3 133",
                          "ruleMatch 134", "ruleMatch6 135", "ruleMatchMac 136",
                          "subRulesForKey 137", "intf 138", "commitCount 139", "dirty 140",
                          "createCount 141", "beginUpdateActionCount 142",
                          "endUpdateActionCount 143", "created 144", "fwkKey 0"));
}

TEST(Registration, KnowsEqualToOfEachActionAsAFunctionOfTheOther) {
  for (char const* const name : {"TestAction1", "TestAction2", "TestAction3"}) {
    KorAttr const& equalTo = Kor::attributeNamed(&typeOf(name), "equalTo");
    EXPECT_TRUE(equalTo.isFunction());
    EXPECT_EQ(equalTo.id(), 261U);
    EXPECT_EQ(equalTo.owner(), &typeOf(name));
    EXPECT_THAT(shown(equalTo.args()), ElementsAre("other: PolicyMap::Action"));
  }
}

TEST(Registration, GivesTheValueOfEachActionTheSameNumber) {
  for (char const* const name : {"TestAction1", "TestAction2", "TestAction3"}) {
    EXPECT_EQ(Kor::attributeNamed(&typeOf(name), "value").id(), 386U) << name;
  }
}

TEST(Registration, GivesTheHooksOfTheFrameworkNoNumberAndOneBoolArgumentEach) {
  for (char const* const name : {"TestAction1Sm", "TestAction2Sm", "TestAction3Sm",
                                 "TestClassMapSm", "TestPolicyMapSm", "TestServicePolicySm"}) {
    KorAttr const& active = Kor::attributeNamed(&typeOf(name), "hasNotificationActiveIs");
    KorAttr const& zombie = Kor::attributeNamed(&typeOf(name), "korDoZombieReactors");
    EXPECT_EQ(active.id(), 0U) << name;
    EXPECT_EQ(zombie.id(), 0U) << name;
    EXPECT_EQ(active.owner(), &typeOf(name));
    EXPECT_EQ(zombie.owner(), &typeOf(name));
    EXPECT_THAT(shown(active.args()), ElementsAre("hasNotificationActiveIs: bool"));
    EXPECT_THAT(shown(zombie.args()), ElementsAre("on: bool"));
  }
}

TEST(Registration, TakesIntrospectionFlagsUpToSixBits) {
  using Flags = KorAttr::KorAttrIntrospectionFlags;
  EXPECT_EQ(Flags(63).value(), 63U);
  EXPECT_EQ(Flags(0).value(), 0U);
  for (std::uint32_t const refused : {64U, 65U, 0x80000000U, 0xffffffffU}) {
    try {
      Flags const flags(refused);
      ADD_FAILURE() << flags.value();
    } catch (Kor::RangeException const& e) {
      EXPECT_STREQ(e.what(), "KorAttrIntrospectionFlags::value > 0x3f not allowed");
    }
  }
}

TEST(Registration, NamesIntrospectionFlagsOneBitEach) {
  using Flags = KorAttr::KorAttrIntrospectionFlags;
  EXPECT_EQ(Flags::isIndependentDomainAttr_().value(), 2U);
  EXPECT_EQ(Flags::isFunction_().value(), 8U);
  EXPECT_EQ(Flags::hasInternalIndex_().value(), 32U);
  EXPECT_EQ((Flags::hasInternalIndex_() | Flags::isIndependentDomainAttr_()).value(), 34U);
}

// An attribute that a type declares first has the number given by its level and place. Every other
// attribute has the number of the base.
TEST(Registration, NumbersTheAttributesOfEveryTypeByLevelAndPlace) {
  std::size_t checked = 0;
  for (KorType const* const type : KorType::all()) {
    Kor::AttributeId next = 128 * type->level() + 2;
    for (KorAttr::Ptr const& attr : type->attrs()) {
      KorAttr const* const inherited =
          type->base() == nullptr ? nullptr : type->base()->attr(attr->name().view());
      if (inherited != nullptr) {
        EXPECT_EQ(attr->id(), inherited->id()) << type->name() << '.' << attr->name();
      } else if (attr->id() != 0) {
        EXPECT_EQ(attr->id(), next++) << type->name() << '.' << attr->name();
        ++checked;
      } else {
        EXPECT_THAT(attr->name().stdString(),
                    testing::AnyOf("fwkKey", "hasNotificationActiveIs", "korDoZombieReactors"));
      }
    }
  }
  EXPECT_GE(checked, 160U);
}

TEST(Registration, AnswersTheNameOfEachNumberAndUnknownForEveryOther) {
  for (std::string const& line : linesOf(listings)) {
    auto const colon = line.find(": ");
    KorType const& type = typeOf(line.substr(0, colon));
    std::map<Kor::AttributeId, std::string> names;
    for (std::string const& part : partsOf(line.substr(colon + 2))) {
      auto const blank = part.find(' ');
      if (auto const id = std::stoul(part.substr(blank)); id != 0) {
        names.emplace(id, part.substr(0, blank));
      }
    }
    for (Kor::AttributeId id = 1; id < 700; ++id) {
      EXPECT_EQ(type.attributeString(id), names.contains(id) ? names.at(id) : "unknown")
          << type.name() << ' ' << id;
    }
    EXPECT_EQ(type.attributeString(0xffffffffU), "unknown");
  }
}

// File and loader

// The content of a section of a 64-bit ELF file.
std::vector<std::string> sectionsNamed(std::string const& path, std::string_view wanted) {
  std::ifstream file(path, std::ios::binary);
  std::string const bytes{std::istreambuf_iterator<char>(file), {}};
  auto const read = [&]<class T>(std::size_t at, T value) {
    EXPECT_LE(at + sizeof value, bytes.size());
    std::memcpy(&value, bytes.data() + at, sizeof value);
    return value;
  };
  auto const header = read(0, Elf64_Ehdr{});
  auto const section = [&](std::size_t i) {
    return read(header.e_shoff + i * header.e_shentsize, Elf64_Shdr{});
  };
  auto const names = section(header.e_shstrndx);
  std::vector<std::string> found;
  for (std::size_t i = 0; i < header.e_shnum; ++i) {
    auto const entry = section(i);
    if (std::string_view(bytes.c_str() + names.sh_offset + entry.sh_name) == wanted) {
      found.push_back(bytes.substr(entry.sh_offset, entry.sh_size));
    }
  }
  return found;
}

TEST(Registration, LeavesTheTypesNamesInASectionOfTheFile) {
  std::string expected;
  for (std::string const& name : qualifiedNames()) {
    expected += name;
    expected += '\0';
  }
  ASSERT_EQ(expected.size(), 419U);
  EXPECT_THAT(sectionsNamed(LIBRARY_TO_OPEN, ".kor.type"), ElementsAre(expected));
}

TEST(Registration, RunsOnceHoweverOftenTheLibraryIsOpened) {
  Recording again;
  Kor::IntrospectionReactor::globalIs(&again);
  void* const handle = dlopen(LIBRARY_TO_OPEN, RTLD_NOW | RTLD_LOCAL);
  Kor::IntrospectionReactor::globalIs(nullptr);
  ASSERT_NE(handle, nullptr);
  EXPECT_THAT(again.calls(), IsEmpty());
  dlclose(handle);
}

TEST(Registration, StaysWhenTheLibraryIsClosed) {
  void* const handle = dlopen(LIBRARY_TO_OPEN, RTLD_NOW | RTLD_NOLOAD);
  ASSERT_NE(handle, nullptr);
  dlclose(handle);
  dlclose(handle);  // the reference of the program itself
  void* const still = dlopen(LIBRARY_TO_OPEN, RTLD_NOW | RTLD_NOLOAD);
  EXPECT_NE(still, nullptr);
  EXPECT_EQ(Kor::construct("PolicyMapTest::AclHelper", true, false)["commitError"], "");
}

}  // namespace
