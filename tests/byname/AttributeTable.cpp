// SPDX-License-Identifier: Apache-2.0
#include "byname/AttributeTable.h"

#include <algorithm>

namespace {

using Kor::construct;
using Kor::GenericList;
using Kor::GenericRef;
using Kor::GenericValue;
using Kind = AttributeSpec::Kind;
using Values = std::vector<GenericValue>;

// Domains

Domain domain(Values right, Values wrong, GenericValue const& absent) {
  return {[right](World const& /*world*/) { return right; },
          [wrong](World const& /*world*/) { return wrong; }, [absent] { return absent; }, false};
}

Domain const& boolean() {
  static Domain const it =
      domain({true, false}, {0, 1, 1.0, "True", nullptr, GenericList::of()}, false);
  return it;
}
// For attributes that are true by default.
Domain const& trueAtFirst() {
  static Domain const it = domain({false, true}, {0, 1, "False", nullptr}, false);
  return it;
}
Domain const& number() {
  static Domain const it = domain(
      {7U, 0U, 4294967295U},
      {-1, 4294967296, UINT64_MAX, INT64_MIN, true, 7.0, "7", nullptr, GenericList::of(7)}, 0U);
  return it;
}
Domain const& real() {
  static Domain const it = domain({2.5, 3, 0.25}, {true, "2.5", nullptr, GenericList::of()}, 0.0);
  return it;
}
// Seconds that are not below the minimum wait.
Domain const& longWait() {
  static Domain const it = [] {
    Domain wait = real();
    wait.right = [](World const& /*world*/) { return Values{2.5, 3, 61}; };
    return wait;
  }();
  return it;
}
Domain const& text() {
  static Domain const it =
      domain({"table full", "", "'\"\\"}, {5, 0, true, 1.5, nullptr, GenericList::of()}, "");
  return it;
}
// For keys: several representations of one value.
Domain const& numberKey() {
  static Domain const it = [] {
    Domain key = number();
    key.right = [](World const& /*world*/) { return Values{7U, std::uint64_t{7}}; };
    return key;
  }();
  return it;
}
Domain const& textKey() {
  static Domain const it = [] {
    Domain key = text();
    key.right = [](World const& /*world*/) { return Values{"web"}; };
    return key;
  }();
  return it;
}
Domain const& option() {
  static Domain const it = domain({1, "ipv6", World::policyType()["option"].get().value()},
                                  {"ipv5", "IPV6", "1", "", true, 1.0, 2147483648, -2147483649,
                                   nullptr, World::action(1)["actionType"].get().value()},
                                  GenericValue());
  return it;
}
Domain actionType(int kind) {
  return domain({kind, World::action(kind)["actionType"].get().value()},
                {"1", "", true, 1.0, 2147483648, -2147483649, nullptr,
                 World::policyType()["option"].get().value()},
                GenericValue());
}

// A value of a registered type.
Domain model(std::function<GenericValue()> const& make,
             std::function<GenericValue()> const& absent) {
  return {[make](World const& /*world*/) {
            return Values{make(), GenericRef(make()).asConst()};
          },
          [](World const& world) {
            return Values{5,
                          true,
                          nullptr,
                          GenericList::of(),
                          "no such value",
                          world["Acl::AclDiff"],
                          construct("PolicyMap::AsyncOperationResult", "wrong type", 1.0)};
          },
          absent, false};
}
Domain policyKey() {
  return model([] { return World::policyKey(); }, [] { return GenericValue(); });
}
Domain ruleKey() {
  return model([] { return World::ruleKey(); }, [] { return GenericValue(); });
}
Domain subRule() {
  return model([] { return World::subRule(); }, [] { return GenericValue(); });
}
Domain policyType() {
  return model([] { return World::policyType(); }, [] { return GenericValue(); });
}
Domain rule(char const* type) {
  auto const empty = [type] { return construct(type); };
  return model(
      [empty] {
        GenericRef changed = empty();
        changed["permit"] = !changed["permit"].as<bool>();
        return changed;
      },
      empty);
}
Domain asyncResult() {
  Domain it = model([] { return construct("PolicyMap::AsyncOperationResult", "late", 2.5); },
                    [] { return GenericValue(); });
  it.wrong = [](World const& world) {
    return Values{5, "late", nullptr, world["Acl::AclDiff"], World::policyKey()};
  };
  return it;
}
// Its text form is a plain text, so texts are accepted too.
Domain intf() {
  Domain it = model([] { return World::intf(); }, [] { return GenericValue(); });
  it.right = [](World const& /*world*/) {
    return Values{World::intf(), World::intf().asConst(), "Ethernet3/1"};
  };
  return it;
}

Domain uniqueId() {
  return model([] { return construct("Zub::UniqueId", "a1"); }, [] { return GenericValue(); });
}

Domain pointer(std::string const& type, bool toConst) {
  return {[=](World const& world) {
            GenericValue const good = world.another(type);
            Values right{good, world.another(type)};
            if (toConst) {
              right.push_back(GenericRef(good).asConst());
            }
            return right;
          },
          [=](World const& world) {
            GenericValue const unrelated =
                world[type == "Acl::AclDiff" ? "Acl::Config" : "Acl::AclDiff"];
            Values wrong{5, true, "None", unrelated, World::policyKey(), GenericList::of()};
            if (!toConst) {
              wrong.push_back(world.another(type).asConst());
            }
            return wrong;
          },
          [] { return GenericValue(nullptr); }, toConst};
}
Domain object(std::string const& type) {
  return pointer(type, false);
}
Domain constObject(std::string const& type) {
  return pointer(type, true);
}

// Lines of the table

using Initial = std::function<GenericValue(World const&)>;

Initial always(GenericValue const& value) {
  return [value](World const& /*world*/) { return value; };
}
Initial given(std::string const& type) {
  return [type](World const& world) { return world[type].value(); };
}

AttributeSpec data(std::string name, Kor::AttributeId id, Domain value, Initial initial = {}) {
  AttributeSpec spec;
  spec.name = std::move(name);
  spec.id = id;
  spec.value = std::move(value);
  spec.initial = std::move(initial);
  return spec;
}
AttributeSpec readOnly(std::string name, Kor::AttributeId id, Domain value, Initial initial = {}) {
  AttributeSpec spec = data(std::move(name), id, std::move(value), std::move(initial));
  spec.kind = Kind::readOnly;
  return spec;
}
AttributeSpec collection(std::string name, Kor::AttributeId id, Domain key,
                         std::function<GenericValue()> otherKey, Domain value) {
  AttributeSpec spec = data(std::move(name), id, std::move(value));
  spec.kind = Kind::collection;
  spec.key = std::move(key);
  spec.otherKey = std::move(otherKey);
  return spec;
}
AttributeSpec owned(std::string name, Kor::AttributeId id, Domain key,
                    std::function<GenericValue()> otherKey, std::string member) {
  AttributeSpec spec = collection(std::move(name), id, std::move(key), std::move(otherKey), {});
  spec.kind = Kind::owned;
  spec.member = std::move(member);
  return spec;
}
AttributeSpec function(std::string name, Kor::AttributeId id, std::vector<Argument> args,
                       std::string result) {
  AttributeSpec spec;
  spec.name = std::move(name);
  spec.id = id;
  spec.kind = Kind::function;
  spec.args = std::move(args);
  spec.result = std::move(result);
  return spec;
}

GenericValue otherRuleKey() {
  return World::ruleKey(20);
}
GenericValue otherIntf() {
  return World::intf("Vlan10");
}
GenericValue otherName() {
  return "other";
}
GenericValue otherKind() {
  return 3;
}

std::vector<AttributeSpec> hooks() {
  return {
      function("hasNotificationActiveIs", 0, {{"hasNotificationActiveIs", boolean()}}, "nothing"),
      function("korDoZombieReactors", 0, {{"on", boolean()}}, "nothing")};
}

std::vector<AttributeSpec> joined(std::vector<std::vector<AttributeSpec>> const& parts) {
  std::vector<AttributeSpec> all;
  for (auto const& part : parts) {
    all.insert(all.end(), part.begin(), part.end());
  }
  return all;
}

// The types

std::vector<AttributeSpec> ofAction(int kind) {
  return {
      readOnly("name", 130, text(), always("mark")),
      readOnly("className", 258, text(), always("mark")),
      readOnly("actionType", 259, actionType(kind), always(kind)),
      readOnly("id", 260, uniqueId(),
               [](World const& /*world*/) { return construct("Zub::UniqueId", "a1").value(); }),
      function("equalTo", 261, {{"other", constObject("PolicyMap::Action")}}, "True"),
      data("value", 386, number(), always(0)),
  };
}

std::vector<AttributeSpec> ofPolicyType() {
  return {
      readOnly("policyKey", 2, policyKey(),
               [](World const& /*world*/) { return World::policyKey().value(); }),
      readOnly("option", 3, option(), always("ipv6")),
      readOnly("hash", 4, number()),
  };
}

std::vector<AttributeSpec> ofSubRules() {
  auto const key = [](World const& /*world*/) { return World::ruleKey().value(); };
  return {
      readOnly("key", 130, ruleKey(), key),
      collection(
          "subRule", 131, subRule(), [] { return World::subRule(1); }, boolean()),
      readOnly("fwkKey", 0, ruleKey(), key),
  };
}

std::vector<AttributeSpec> ofPolicyData() {
  auto const key = [](World const& /*world*/) { return World::policyType().value(); };
  return {
      readOnly("key", 130, policyType(), key),
      collection("ruleAction1", 131, ruleKey(), otherRuleKey, number()),
      collection("ruleAction2", 132, ruleKey(), otherRuleKey, number()),
      collection("ruleAction3", 133, ruleKey(), otherRuleKey, number()),
      collection("ruleMatch", 134, ruleKey(), otherRuleKey, rule("Acl::IpRuleConfig")),
      collection("ruleMatch6", 135, ruleKey(), otherRuleKey, rule("Acl::Ip6RuleConfig")),
      collection("ruleMatchMac", 136, ruleKey(), otherRuleKey, rule("Acl::MacRuleConfig")),
      owned("subRulesForKey", 137, ruleKey(), otherRuleKey, "SubRuleDataCollection"),
      collection("intf", 138, intf(), otherIntf, boolean()),
      data("commitCount", 139, number(), always(0)),
      data("dirty", 140, boolean(), always(false)),
      data("createCount", 141, number(), always(0)),
      data("beginUpdateActionCount", 142, number(), always(0)),
      data("endUpdateActionCount", 143, number(), always(0)),
      data("created", 144, boolean(), always(false)),
      readOnly("fwkKey", 0, policyType(), key),
  };
}

void createPolicy(World const& world, GenericRef const& helper) {
  helper.call("createPolicy", world["PolicyMap::PolicyMapSmCommonData"], 1);
}
void addRule(World const& world, GenericRef const& helper) {
  createPolicy(world, helper);
  helper.call("addRule", World::ruleKey(), World::subRule(),
              world["PolicyMap::PolicyMapSmCommonData"], world["PolicyMap::ClassMapSmCommonData"]);
}

std::vector<AttributeSpec> ofHelper() {
  Argument const policyData{"policyData", constObject("PolicyMap::PolicyMapSmCommonData")};
  Argument const matchOption{"matchOption", option()};
  Argument const place{"intf", intf()};
  Argument const key{"key", ruleKey()};
  Argument const policyCommonData{"policyCommonData",
                                  constObject("PolicyMap::PolicyMapSmCommonData")};
  Argument const classCommonData{"classCommonData", constObject("PolicyMap::ClassMapSmCommonData")};
  auto const after = [](AttributeSpec spec, auto const& prepare) {
    spec.prepare = prepare;
    return spec;
  };
  return {
      data("updateActionSupported", 130, trueAtFirst(), always(true)),
      data("reprogramPolicyOnIntfChange", 131, boolean(), always(false)),
      data("expandPortChannels", 132, boolean(), always(false)),
      data("denyRulesAllowed", 133, trueAtFirst(), always(true)),
      data("ttlSupported", 134, trueAtFirst(), always(true)),
      data("onlyTtlEqSupported", 135, boolean(), always(false)),
      data("ackOrRstSupported", 136, trueAtFirst(), always(true)),
      data("establishedSupported", 137, trueAtFirst(), always(true)),
      data("subRulesForL4Ports", 138, boolean(), always(false)),
      data("asyncOperations", 139, boolean(), always(false)),
      data("asyncOperationResult", 140, asyncResult(),
           [](World const& /*world*/) {
             return construct("PolicyMap::AsyncOperationResult", "", 0.0).value();
           }),
      function("hwInit", 141, {}, "nothing"),
      function("showAclRule", 153, {key}, "''"),
      function("showAclSummary", 154, {}, "''"),
      function("createPolicy", 142, {policyData, matchOption}, "''"),
      after(function("recreatePolicy", 143, {policyData, matchOption}, "''"), createPolicy),
      after(function("deletePolicy", 144, {policyData, matchOption}, "''"), createPolicy),
      after(function("commitPolicy", 145, {policyData, matchOption}, "''"), createPolicy),
      function("addIntfToPolicy", 146, {policyData, place, matchOption}, "''"),
      function("removeIntfFromPolicy", 147, {policyData, place, matchOption}, "''"),
      after(function("addRule", 148,
                     {key, {"subRule", subRule()}, policyCommonData, classCommonData}, "''"),
            createPolicy),
      function("beginUpdateActions", 149, {policyCommonData, classCommonData}, "''"),
      after(function("updateAction", 150,
                     {key, {"subRuleData", subRule()}, policyCommonData, classCommonData}, "''"),
            addRule),
      function("endUpdateActions", 151, {policyCommonData, classCommonData}, "''"),
      function("getCountForRule", 152, {key, policyCommonData, classCommonData}, "10"),
      function("scheduleAsyncResult", 258, {{"error", text()}}, "nothing"),
      data("asyncTrigger", 259, number(), always(0)),
      function("handleAsyncTrigger", 260, {}, "nothing"),
      data("asyncError", 261, text(), always("")),
      data("pseudoAsync", 262, boolean(), always(false)),
      owned(
          "testData", 263, policyType(), [] { return World::policyType("core"); }, "AclPolicyData"),
      data("createError", 264, text(), always("")),
      data("deleteError", 265, text(), always("")),
      data("commitError", 266, text(), always("")),
      data("addIntfError", 267, text(), always("")),
      data("removeIntfError", 268, text(), always("")),
      data("addRuleError", 269, text(), always("")),
      data("updateActionError", 270, text(), always("")),
      data("rangeCheckerError", 271, text(), always("")),
  };
}

std::vector<AttributeSpec> ofActionSm() {
  return joined(
      {{
           readOnly("globalCommonData", 130, object("PolicyMap::PolicyMapGlobalData"),
                    given("PolicyMap::PolicyMapGlobalData")),
           readOnly("policyCommonData", 131, object("PolicyMap::PolicyMapSmCommonData"),
                    given("PolicyMap::PolicyMapSmCommonData")),
           readOnly("classCommonData", 132, object("PolicyMap::ClassMapSmCommonData"),
                    given("PolicyMap::ClassMapSmCommonData")),
           data("action", 133, constObject("PolicyMap::Action"), given("PolicyMap::Action")),
           data("initialized", 134, boolean()),
           function("cleanup", 135, {}, "nothing"),
           function("handleAction", 136, {}, "nothing"),
           function("handleInitialized", 137, {}, "nothing"),
       },
       hooks()});
}

std::vector<AttributeSpec> ofClassCommonData() {
  Argument const key{"key", ruleKey()};
  auto const emptyRule = [](char const* type) {
    return Kor::valueToStrep(construct(type).value()).stdString();
  };
  return {
      readOnly("name", 130, text(), always("web")),
      data("classMap", 131, constObject("PolicyMap::ClassMapSubConfig"),
           given("PolicyMap::ClassMapSubConfig")),
      readOnly("aclConfig", 132, constObject("Acl::Config"), given("Acl::Config")),
      data("classMapStatus", 133, object("PolicyMap::ClassMapStatus"), always(nullptr)),
      collection("action", 134, actionType(1), otherKind, constObject("PolicyMap::Action")),
      data("updateAclActions", 135, number(), always(0)),
      function("getIpRule", 136, {key}, emptyRule("Acl::IpRuleConfig")),
      function("getIp6Rule", 137, {key}, emptyRule("Acl::Ip6RuleConfig")),
      function("getMacRule", 138, {key}, emptyRule("Acl::MacRuleConfig")),
      data("action1Value", 258, number(), always(0)),
      data("action2Value", 259, number(), always(0)),
      data("action3Value", 260, number(), always(0)),
  };
}

std::vector<AttributeSpec> ofClassMapSm() {
  auto const overloaded = [](AttributeSpec spec) {
    spec.argsCanBeMissing = true;
    return spec;
  };
  AttributeSpec createActionSm = function("createActionSm", 146, {{"actionType", actionType(1)}},
                                          "new PolicyMapTest::TestAction1Sm");
  createActionSm.prepareWorld = [](World const& world) {
    world["PolicyMap::ClassAction"]["action"][1] = world["PolicyMap::Action"];
  };
  return joined(
      {{
           readOnly("globalCommonData", 130, object("PolicyMap::PolicyMapGlobalData"),
                    given("PolicyMap::PolicyMapGlobalData")),
           readOnly("policyCommonData", 131, object("PolicyMap::PolicyMapSmCommonData"),
                    given("PolicyMap::PolicyMapSmCommonData")),
           data("classMapConfig", 132, constObject("PolicyMap::ClassMapConfig"),
                given("PolicyMap::ClassMapConfig")),
           data("rawClassMapSubConfig", 133, constObject("PolicyMap::ClassMapSubConfig"),
                always(nullptr)),
           data("classAction", 134, constObject("PolicyMap::ClassAction"),
                given("PolicyMap::ClassAction")),
           data("classMap", 135, constObject("PolicyMap::ClassMapSubConfig")),
           data("classCommonData", 136, object("PolicyMap::ClassMapSmCommonData")),
           data("classMapStatus", 137, object("PolicyMap::ClassMapStatus")),
           collection("classMapMatchSm", 138, option(), otherKind,
                      object("PolicyMap::ClassMapMatchSm")),
           collection("actionSm", 139, actionType(1), otherKind, object("PolicyMap::ActionSm")),
           data("actionsActive", 140, boolean()),
           data("initializing", 141, boolean()),
           data("initialized", 142, boolean()),
           overloaded(function("handleAction", 143, {{"actionType", actionType(1)}}, "nothing")),
           overloaded(function("handleMatch", 144, {{"option", option()}}, "nothing")),
           function("createMatchSm", 145, {{"option", option()}}, "new PolicyMap::ClassMapMatchSm"),
           function("createCommonData", 147, {}, "new PolicyMapTest::TestClassCommonData"),
           function("createClassMapStatus", 148, {}, "new PolicyMap::ClassMapStatus"),
           function("handleInitialized", 149, {}, "nothing"),
           function("cleanup", 150, {}, "nothing"),
           readOnly("name", 151, text(), always("web")),
           createActionSm,
       },
       hooks()});
}

std::vector<AttributeSpec> ofPolicyMapSm() {
  return joined(
      {{
           readOnly("globalCommonData", 130, object("PolicyMap::PolicyMapGlobalData"),
                    given("PolicyMap::PolicyMapGlobalData")),
           readOnly("key", 131, policyKey(),
                    [](World const& /*world*/) { return World::policyKey().value(); }),
           data("policyMapConfig", 132, constObject("PolicyMap::PolicyMapConfig"),
                given("PolicyMap::PolicyMapConfig")),
           data("classTypeConfig", 133, constObject("PolicyMap::ClassMapTypeConfig"),
                given("PolicyMap::ClassMapTypeConfig")),
           readOnly("status", 134, object("PolicyMap::PolicyMapStatus"),
                    given("PolicyMap::PolicyMapStatus")),
           data("policyMap", 135, constObject("PolicyMap::PolicyMapSubConfig")),
           collection("classMapSm", 136, textKey(), otherName, object("PolicyMap::ClassMapSm")),
           data("policyCommonData", 137, object("PolicyMap::PolicyMapSmCommonData")),
           collection("prioClass", 138, numberKey(), otherKind, text()),
           collection("classPrio", 139, textKey(), otherName, number()),
           collection("timeProgrammed", 140, option(), otherKind, real()),
           collection("activeIntf", 141, intf(), otherIntf, boolean()),
           function("createCommonData", 143, {}, "new PolicyMap::PolicyMapSmCommonData"),
           function("handleActiveIntf", 144, {{"intf", intf()}}, "nothing"),
           function("cleanup", 145, {}, "nothing"),
           function("handleInitialized", 146, {}, "nothing"),
           data("actionsActive", 147, boolean()),
           data("initialized", 148, boolean()),
           function("createClassMapSm", 142,
                    {{"map", constObject("PolicyMap::ClassMapConfig")},
                     {"rawMap", constObject("PolicyMap::ClassMapSubConfig")},
                     {"action", constObject("PolicyMap::ClassAction")}},
                    "new PolicyMapTest::TestClassMapSm"),
       },
       hooks()});
}

std::vector<AttributeSpec> ofServicePolicySm() {
  auto const watched = [](std::string name, Kor::AttributeId id, std::string const& type) {
    return data(std::move(name), id, constObject(type), given(type));
  };
  Argument const place{"intf", intf()};
  Argument const matchOption{"matchOption", option()};
  return joined({{
                     watched("policyConfig", 130, "PolicyMap::PolicyMapTypeConfig"),
                     watched("classTypeConfig", 131, "PolicyMap::ClassMapTypeConfig"),
                     watched("statusRequestDir", 132, "PolicyMap::PolicyMapStatusRequestDir"),
                     readOnly("status", 133, object("PolicyMap::PolicyMapTypeStatus"),
                              given("PolicyMap::PolicyMapTypeStatus")),
                     watched("aclConfig", 134, "Acl::Config"),
                     watched("lagConfig", 135, "Lag::Input::Config"),
                     watched("ipStatus", 136, "Ip::Status"),
                     watched("ip6Status", 137, "Ip6::Status"),
                     watched("routingInfo", 138, "Routing::RoutingInfo"),
                     watched("routing6Info", 139, "Routing6::RoutingInfo"),
                     data("aclHelper", 140, object("PolicyMap::PolicyMapAclHelper"),
                          given("PolicyMap::PolicyMapAclHelper")),
                     readOnly("aclDiff", 141, object("Acl::AclDiff"), given("Acl::AclDiff")),
                     readOnly("allowL2Intf", 142, boolean(), always(true)),
                     readOnly("allowL3Intf", 143, boolean(), always(true)),
                     readOnly("allowMgmtIntf", 144, boolean(), always(false)),
                     data("allowIpAcl", 145, trueAtFirst(), always(true)),
                     data("allowIp6Acl", 146, trueAtFirst(), always(true)),
                     data("allowMacAcl", 147, trueAtFirst(), always(true)),
                     data("commonData", 148, object("PolicyMap::PolicyMapGlobalData")),
                     collection(
                         "policyMapSm", 149, policyKey(), [] { return World::policyKey("core"); },
                         object("PolicyMap::PolicyMapSm")),
                     data("initialized", 150, boolean()),
                     function("allowedIntf", 152, {place}, "a bool"),
                     function("allowedIntfForType", 153, {place, matchOption}, "a bool"),
                     function("memberIntfs", 154, {place}, "['Ethernet3/1']"),
                     function("effectiveIntfs", 155, {{"key", policyKey()}, matchOption}, "[]"),
                     function("createCommonData", 157, {}, "new PolicyMap::PolicyMapGlobalData"),
                     function("handlePolicyMap", 158, {{"policyMapName", text()}}, "nothing"),
                     function("handlePolicyMapConfig", 159, {{"policyMapName", text()}}, "nothing"),
                     function("handleIntf", 160, {place, {"force", boolean()}}, "nothing"),
                     function("cleanup", 161, {}, "nothing"),
                     function("handleInitialized", 162, {}, "nothing"),
                     data("retryMin", 163, real(), always(1)),
                     data("retryMax", 164, longWait(), always(60)),
                     data("asyncTimeout", 165, real(), always(30)),
                     function("intfExists", 151, {place}, "True"),
                     function("createPolicyMapSm", 156,
                              {{"key", policyKey()},
                               {"policyMap", constObject("PolicyMap::PolicyMapConfig")},
                               {"status", object("PolicyMap::PolicyMapStatus")}},
                              "new PolicyMapTest::TestPolicyMapSm"),
                     collection("nonexistentIntf", 258, intf(), otherIntf, boolean()),
                 },
                 hooks()});
}

}  // namespace

std::vector<std::string> const& typeNames() {
  static std::vector<std::string> const names{
      "TestAction1",           "TestAction2",        "TestAction3",         "AclPolicyType",
      "SubRuleDataCollection", "AclPolicyData",      "AclHelper",           "TestAction1Sm",
      "TestAction2Sm",         "TestAction3Sm",      "TestClassCommonData", "TestClassMapSm",
      "TestPolicyMapSm",       "TestServicePolicySm"};
  return names;
}

int kindOf(std::string_view shortName) {
  auto const digit = shortName.find_first_of("123");
  return digit == std::string_view::npos ? 1 : shortName[digit] - '0';
}

std::vector<AttributeSpec> attributesOf(std::string_view shortName) {
  if (shortName.starts_with("TestAction")) {
    return shortName.ends_with("Sm") ? ofActionSm() : ofAction(kindOf(shortName));
  }
  if (shortName == "AclPolicyType") {
    return ofPolicyType();
  }
  if (shortName == "SubRuleDataCollection") {
    return ofSubRules();
  }
  if (shortName == "AclPolicyData") {
    return ofPolicyData();
  }
  if (shortName == "AclHelper") {
    return ofHelper();
  }
  if (shortName == "TestClassCommonData") {
    return ofClassCommonData();
  }
  if (shortName == "TestClassMapSm") {
    return ofClassMapSm();
  }
  if (shortName == "TestPolicyMapSm") {
    return ofPolicyMapSm();
  }
  return ofServicePolicySm();
}

std::vector<Argument> constructorOf(std::string_view shortName) {
  Argument const globalCommonData{"globalCommonData", object("PolicyMap::PolicyMapGlobalData")};
  Argument const policyCommonData{"policyCommonData", object("PolicyMap::PolicyMapSmCommonData")};
  Argument const aclConfig{"aclConfig", constObject("Acl::Config")};
  if (shortName.starts_with("TestAction")) {
    if (shortName.ends_with("Sm")) {
      return {globalCommonData,
              policyCommonData,
              {"classCommonData", object("PolicyMap::ClassMapSmCommonData")},
              {"action", constObject("PolicyMap::Action")}};
    }
    return {{"className", text()}, {"id", uniqueId()}};
  }
  if (shortName == "AclPolicyType") {
    return {{"policyKey", policyKey()}, {"option", option()}};
  }
  if (shortName == "SubRuleDataCollection") {
    return {{"key", ruleKey()}};
  }
  if (shortName == "AclPolicyData") {
    return {{"key", policyType()}};
  }
  if (shortName == "AclHelper") {
    return {{"updateActionSupported", boolean()}, {"expandPortChannels", boolean()}};
  }
  if (shortName == "TestClassCommonData") {
    return {{"name", text()}, {"classMap", constObject("PolicyMap::ClassMapSubConfig")}, aclConfig};
  }
  if (shortName == "TestClassMapSm") {
    return {globalCommonData,
            policyCommonData,
            {"classMapConfig", constObject("PolicyMap::ClassMapConfig")},
            {"rawClassMapSubConfig", constObject("PolicyMap::ClassMapSubConfig")},
            {"classAction", constObject("PolicyMap::ClassAction")}};
  }
  if (shortName == "TestPolicyMapSm") {
    return {globalCommonData,
            {"key", policyKey()},
            {"policyMapConfig", constObject("PolicyMap::PolicyMapConfig")},
            {"classTypeConfig", constObject("PolicyMap::ClassMapTypeConfig")},
            {"status", object("PolicyMap::PolicyMapStatus")}};
  }
  return {{"policyConfig", constObject("PolicyMap::PolicyMapTypeConfig")},
          {"classTypeConfig", constObject("PolicyMap::ClassMapTypeConfig")},
          {"statusRequestDir", constObject("PolicyMap::PolicyMapStatusRequestDir")},
          {"status", object("PolicyMap::PolicyMapTypeStatus")},
          aclConfig,
          {"lagConfig", constObject("Lag::Input::Config")},
          {"ipStatus", constObject("Ip::Status")},
          {"ip6Status", constObject("Ip6::Status")},
          {"routingInfo", constObject("Routing::RoutingInfo")},
          {"routing6Info", constObject("Routing6::RoutingInfo")},
          {"aclHelper", object("PolicyMap::PolicyMapAclHelper")},
          {"aclDiff", object("Acl::AclDiff")},
          {"allowL2Intf", boolean()},
          {"allowL3Intf", boolean()},
          {"allowMgmtIntf", boolean()}};
}
