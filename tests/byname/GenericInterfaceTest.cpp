// SPDX-License-Identifier: Apache-2.0

// The generic interface, rule by rule.

#include "byname/AttributeTable.h"
#include "byname/World.h"

#include <Kor/GenericIf.h>
#include <Kor/Hash.h>
#include <Kor/Trace.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace {

using Kor::construct;
using Kor::GenericIfPtrInterface;
using Kor::GenericList;
using Kor::GenericRef;
using Kor::GenericValue;
using testing::HasSubstr;

constexpr std::uint32_t get = 0;
constexpr std::uint32_t count = 1;
constexpr std::uint32_t first = 2;
constexpr std::uint32_t next = 3;
constexpr std::uint32_t set = 128;
constexpr std::uint32_t del = 129;

// The operation by identifier, without attribute names.
GenericValue operation(GenericRef const& object, Kor::AttributeId id, std::uint32_t code,
                       GenericValue index = {}, GenericValue value = {}) {
  return object.adapter().attributeOp({id, code, std::move(index), std::move(value)});
}

template <class Operation>
void expectTypeError(Operation const& run, std::string const& name, std::string const& type = "") {
  try {
    run();
    ADD_FAILURE() << "no exception, but a type exception for " << name << " is due";
  } catch (Kor::TypeException const& e) {
    EXPECT_EQ(e.name(), name);
    EXPECT_EQ(e.typeName(), type);
    EXPECT_THAT(e.what(), HasSubstr(name));
    EXPECT_THAT(e.what(), HasSubstr(type));
  }
}
template <class Operation>
void expectNoList(Operation const& run) {
  expectTypeError(run, "List", "Kor::GenericIf::List_");
}
template <class Operation>
void expectUnsupported(Operation const& run, std::string const& name, std::uint32_t code) {
  try {
    run();
    ADD_FAILURE() << "no exception, but operation " << code << " is not supported by " << name;
  } catch (Kor::OpNotSupportedException const& e) {
    EXPECT_EQ(e.name(), name);
    EXPECT_EQ(e.code(), code);
    EXPECT_THAT(e.what(), HasSubstr(name));
    EXPECT_THAT(e.what(), HasSubstr(std::to_string(code)));
  }
}
template <class Operation>
void expectBadIndex(Operation const& run, std::string const& name) {
  try {
    run();
    ADD_FAILURE() << "no exception, but " << name << " takes no index";
  } catch (Kor::BadIndexAttrException const& e) {
    EXPECT_EQ(e.name(), name);
    EXPECT_THAT(e.what(), HasSubstr(name));
  }
}
template <class Operation>
void expectUnknownArg(Operation const& run, std::string const& name) {
  try {
    run();
    ADD_FAILURE() << "no exception, but there are too many arguments for " << name;
  } catch (Kor::UnknownArgException const& e) {
    EXPECT_EQ(e.name(), name);
    EXPECT_THAT(e.what(), HasSubstr(name));
  }
}
template <class Operation>
void expectConst(Operation const& run) {
  try {
    run();
    ADD_FAILURE() << "no exception, but the instance is const";
  } catch (Kor::ConstException const& e) {
    EXPECT_STREQ(e.what(), "attempting to modify a const instance");
  }
}

GenericRef newHelper() {
  return construct("PolicyMapTest::AclHelper", true, false);
}
GenericRef newRecord() {
  return construct("PolicyMapTest::AclPolicyData", World::policyType());
}

// Identifiers

struct Gap {
  char const* type;
  std::vector<Kor::AttributeId> unowned;
};

TEST(GenericInterface, RefusesNumbersThatNoLevelKnowsAsUnknown) {
  World const world;
  for (auto const& [type, unowned] : std::vector<Gap>{
           {"TestAction1", {1, 2, 129, 131, 257, 262, 385, 387, 1000}},
           {"AclPolicyType", {0, 1, 5, 130, 258}},
           {"SubRuleDataCollection", {1, 2, 129, 132, 258}},
           {"AclPolicyData", {1, 2, 129, 145, 258}},
           {"AclHelper", {1, 2, 129, 155, 156, 200, 257, 272, 386}},
           {"TestAction1Sm", {1, 2, 129, 138, 258}},
           {"TestClassCommonData", {1, 129, 139, 257, 261}},
           {"TestClassMapSm", {1, 129, 152, 258}},
           {"TestPolicyMapSm", {1, 129, 149, 258}},
           {"TestServicePolicySm", {1, 129, 166, 257, 259}},
       }) {
    GenericRef const object = world.subject(type);
    std::string const before = contentOf(object);
    for (Kor::AttributeId const id : unowned) {
      for (std::uint32_t const code : {0U, 1U, 2U, 3U, 4U, 127U, 128U, 129U, 255U, 256U}) {
        SCOPED_TRACE(std::string(type) + ' ' + std::to_string(id));
        expectUnsupported([&] { operation(object, id, code, 1, 1); }, "unknown", code);
      }
    }
    expectUnsupported([&] { operation(object, 0x7fffffff, get); }, "unknown", get);
    expectUnsupported([&] { operation(object, 0xffffffff, get); }, "unknown", get);
    EXPECT_EQ(contentOf(object), before);
  }
}

TEST(GenericInterface, AsksWhetherItMayModifyBeforeItLooksAtTheNumber) {
  GenericRef const helper = newHelper().asConst();
  for (Kor::AttributeId const id : {0U, 1U, 130U, 200U, 259U, 0xffffffffU}) {
    for (std::uint32_t const code : {128U, 129U, 130U, 200U, 255U}) {
      expectConst([&] { operation(helper, id, code, "x", GenericList::of()); });
    }
  }
  expectUnsupported([&] { operation(helper, 200, 127); }, "unknown", 127);
  expectUnsupported([&] { operation(helper, 200, 256); }, "unknown", 256);
  expectUnsupported([&] { operation(helper, 259, 256); }, "asyncTrigger", 256);
  expectUnsupported([&] { operation(helper, 259, 127); }, "asyncTrigger", 127);
}

TEST(GenericInterface, AnswersTheKeyUnderNumberZeroWhereTheTypeHasOne) {
  World const world;
  GenericRef const subRules = world.subject("SubRuleDataCollection");
  GenericRef const record = world.subject("AclPolicyData");
  EXPECT_EQ(operation(subRules, 0, get), World::ruleKey().value());
  EXPECT_EQ(operation(record, 0, get), World::policyType().value());
  for (GenericRef const& object : {subRules, record}) {
    expectUnsupported([&] { operation(object, 0, set, {}, 1); }, "fwkKey", set);
    expectBadIndex([&] { operation(object, 0, get, 1); }, "fwkKey");
  }
  for (char const* const type : {"TestAction2", "AclHelper", "TestAction3Sm", "TestClassCommonData",
                                 "TestClassMapSm", "TestPolicyMapSm", "TestServicePolicySm"}) {
    GenericRef const object = World(kindOf(type)).subject(type);
    expectUnsupported([&] { operation(object, 0, get, {}, GenericList::of(true)); }, "unknown",
                      get);
  }
}

TEST(GenericInterface, ReachesTheKeyByNameAsReadOnlyData) {
  GenericRef const record = newRecord();
  EXPECT_EQ(record["fwkKey"], World::policyType());
  expectUnsupported([&] { record["fwkKey"] = World::policyType(); }, "fwkKey", set);
}

TEST(GenericInterface, LeavesTheNumbersOfTheBaseToTheBase) {
  GenericRef const helper = newHelper();
  GenericIfPtrInterface const base = GenericIfPtrInterface(helper.adapter()).baseGenericIf();
  EXPECT_EQ(base.type()->name(), "PolicyMap::PolicyMapAclHelper");
  for (Kor::AttributeId id = 130; id <= 139; ++id) {
    EXPECT_EQ(operation(helper, id, get), base.attributeOp({id, get, {}, {}})) << id;
    bool const flag = operation(helper, id, get).boolean();
    base.attributeOp({id, set, {}, !flag});
    EXPECT_EQ(operation(helper, id, get), GenericValue(!flag)) << id;
    EXPECT_EQ(base.attributeString(id), helper.adapter().attributeString(id));
  }
  EXPECT_EQ(operation(helper, 153, get, {}, GenericList::of(World::ruleKey())), "");
  EXPECT_EQ(operation(helper, 154, get), "");
  // The base does not know the attributes that the type adds.
  expectUnsupported([&] { base.attributeOp({259, get, {}, {}}); }, "unknown", get);
  EXPECT_EQ(base.attributeString(259), "unknown");
}

TEST(GenericInterface, CallsTheOverridingFunctionThroughTheAdapterOfTheBase) {
  GenericRef const mine = World::action(1, 7);
  GenericRef const same = World::action(1, 7);
  GenericIfPtrInterface const base = GenericIfPtrInterface(mine.adapter()).baseGenericIf();
  EXPECT_EQ(base.type()->name(), "PolicyMap::Action");
  EXPECT_EQ(base.attributeOp({261, get, {}, GenericList::of(same)}), GenericValue(true));
  EXPECT_EQ(base.attributeOp({261, get, {}, GenericList::of(World::action(2, 7))}),
            GenericValue(false));
  expectUnsupported([&] { base.attributeOp({386, get, {}, {}}); }, "unknown", get);
}

TEST(GenericInterface, EndsAtTheRootThatKnowsNothing) {
  GenericIfPtrInterface adapter(World::action(1).adapter());
  std::vector<std::string> lineage;
  for (int i = 0; i < 5; ++i, adapter = adapter.baseGenericIf()) {
    lineage.emplace_back(adapter.type()->name());
  }
  EXPECT_THAT(lineage,
              testing::ElementsAre("PolicyMapTest::TestAction1", "PolicyMap::Action", "Kor::Entity",
                                   "Kor::PtrInterface", "Kor::PtrInterface"));
  for (Kor::AttributeId const id : {0U, 2U, 130U, 258U, 386U}) {
    expectUnsupported([&] { adapter.attributeOp({id, get, {}, {}}); }, "unknown", get);
  }
}

TEST(GenericInterface, KeepsConstInTheAdapterOfTheBase) {
  GenericIfPtrInterface const base =
      GenericIfPtrInterface(newHelper().asConst().adapter()).baseGenericIf();
  EXPECT_TRUE(base.isConst());
  expectConst([&] { base.attributeOp({130, set, {}, false}); });
}

TEST(GenericInterface, WalksTheAttributesOfAnEntityInTheirOrder) {
  Kor::GenericIfEntity const adapter(World::action(1).adapter().object(), World::action(1).type(),
                                     false);
  std::vector<std::string> names;
  for (auto it = adapter.attributeIterator_iterObj(); it; ++it) {
    names.push_back(it->name().stdString());
  }
  EXPECT_THAT(names,
              testing::ElementsAre("name", "className", "actionType", "id", "equalTo", "value"));
}

TEST(GenericInterface, ReachesTheHooksOfTheFrameworkByName) {
  World const world;
  GenericRef const machine = world.subject("TestAction1Sm");
  GenericRef const action = world["PolicyMap::Action"];
  GenericRef const classData = world["PolicyMap::ClassMapSmCommonData"];
  action["value"] = 5;
  EXPECT_EQ(classData["action1Value"], 5);

  machine.call("hasNotificationActiveIs", false);
  action["value"] = 6;
  EXPECT_EQ(classData["action1Value"], 5);
  machine.call("handleAction");  // works without notifications
  EXPECT_EQ(classData["action1Value"], 6);
  machine.call("hasNotificationActiveIs", true);
  action["value"] = 7;
  EXPECT_EQ(classData["action1Value"], 7);

  machine.call("korDoZombieReactors", true);
  action["value"] = 8;
  EXPECT_EQ(classData["action1Value"], 7);
  machine.call("handleAction");  // also when marked for deletion
  EXPECT_EQ(classData["action1Value"], 8);
  machine.call("korDoZombieReactors", false);
  action["value"] = 9;
  EXPECT_EQ(classData["action1Value"], 9);

  expectTypeError([&] { machine.call("hasNotificationActiveIs"); }, "hasNotificationActiveIs");
  expectTypeError([&] { machine.call("korDoZombieReactors", 1); }, "on");
  expectUnknownArg([&] { machine.call("korDoZombieReactors", true, true); }, "korDoZombieReactors");
}

// Const

TEST(GenericInterface, WritesNoCounterThroughAConstAdapter) {
  GenericRef const record = newRecord();
  record["commitCount"] = 4;
  GenericRef const view = record.asConst();
  expectConst([&] { view["commitCount"] = 5; });
  EXPECT_EQ(record["commitCount"], 4);
  EXPECT_EQ(view["commitCount"], 4);
}

TEST(GenericInterface, HandsConstDownToMembersAndToTheirMembers) {
  GenericRef const helper = newHelper();
  GenericRef const record = helper["testData"][World::policyType()].create();
  GenericRef const subRules = record["subRulesForKey"][World::ruleKey()].create();
  EXPECT_FALSE(record.isConst());
  EXPECT_FALSE(subRules.isConst());

  GenericRef const view = helper.asConst();
  GenericRef const recordView = view["testData"][World::policyType()].get();
  EXPECT_TRUE(recordView.isConst());
  EXPECT_EQ(recordView, record);
  expectConst([&] { recordView["commitCount"] = 1; });
  expectConst([&] { recordView["subRulesForKey"][World::ruleKey(20)].create(); });
  GenericRef const subRulesView = recordView["subRulesForKey"][World::ruleKey()].get();
  EXPECT_TRUE(subRulesView.isConst());
  expectConst([&] { subRulesView["subRule"][World::subRule()] = true; });
  expectConst([&] { subRulesView["subRule"][World::subRule()].del(); });
  expectConst([&] { view["testData"][World::policyType()].del(); });
  EXPECT_EQ(helper["testData"].size(), 1U);
  EXPECT_EQ(subRules["subRule"].size(), 0U);
}

TEST(GenericInterface, HandsConstDownToWhatAnObjectRefersTo) {
  World const world;
  GenericRef const machine = world.subject("TestAction1Sm");
  EXPECT_FALSE(machine["classCommonData"].get().isConst());
  GenericRef const classData = machine.asConst()["classCommonData"].get();
  EXPECT_TRUE(classData.isConst());
  expectConst([&] { classData["action1Value"] = 1; });
  // The machine's action is const, even through a non-const adapter.
  EXPECT_TRUE(machine["action"].get().isConst());
  expectConst([&] { machine["action"]["value"] = 1; });
}

TEST(GenericInterface, CallsFunctionsThroughAConstAdapter) {
  World const world;
  GenericRef const helper = newHelper();
  EXPECT_EQ(helper.asConst().call("createPolicy", world["PolicyMap::PolicyMapSmCommonData"], 0),
            "");
  EXPECT_EQ(helper["testData"].size(), 1U);
}

TEST(GenericInterface, GivesNewObjectsThatMayBeChangedWhoeverAsksForThem) {
  World const world;
  GenericRef const data = world.subject("TestClassMapSm").asConst().call("createCommonData");
  EXPECT_FALSE(data.isConst());
  data["action1Value"] = 3;
  EXPECT_EQ(data["action1Value"], 3);
}

// Data

TEST(GenericInterface, TakesNumbersInTheRangeOfTheirTypeOnly) {
  GenericRef const helper = newHelper();
  for (std::int64_t const good : {0LL, 1LL, 2147483648LL, 4294967295LL}) {
    helper["asyncTrigger"] = good;
    EXPECT_EQ(helper["asyncTrigger"], good);
  }
  for (GenericValue const& bad :
       {GenericValue(-1), GenericValue(4294967296), GenericValue(INT64_MIN),
        GenericValue(INT64_MAX), GenericValue(UINT64_MAX), GenericValue(true), GenericValue(1.0),
        GenericValue("1"), GenericValue(nullptr), GenericValue()}) {
    expectTypeError([&] { operation(helper, 259, set, {}, bad); }, "asyncTrigger");
    EXPECT_EQ(helper["asyncTrigger"], 4294967295);
  }
}

TEST(GenericInterface, TakesNoNumberForABoolAndNoBoolForANumber) {
  GenericRef const helper = newHelper();
  for (GenericValue const& bad :
       {GenericValue(0), GenericValue(1), GenericValue(0.0), GenericValue("True")}) {
    expectTypeError([&] { helper["pseudoAsync"] = bad; }, "pseudoAsync");
  }
  expectTypeError([&] { helper["asyncTrigger"] = true; }, "asyncTrigger");
  expectTypeError([&] { helper["commitError"] = 5; }, "commitError");
  EXPECT_EQ(helper["pseudoAsync"], false);
  EXPECT_EQ(helper["asyncTrigger"], 0);
  EXPECT_EQ(helper["commitError"], "");
}

TEST(GenericInterface, TakesAnIntegerForAFloatingPointNumber) {
  GenericRef const machine = World().subject("TestServicePolicySm");
  machine["retryMin"] = 3;
  EXPECT_EQ(machine["retryMin"].as<double>(), 3.0);
  machine["retryMin"] = 0.5;
  EXPECT_EQ(machine["retryMin"].as<double>(), 0.5);
  expectTypeError([&] { machine["retryMin"] = true; }, "retryMin");
  expectTypeError([&] { machine["retryMin"] = "3"; }, "retryMin");
  EXPECT_EQ(machine["retryMin"].as<double>(), 0.5);
}

TEST(GenericInterface, TakesTheNamesAndAnySigned32BitNumberOfAnEnumeration) {
  auto const identity = [](GenericValue const& option) {
    return construct("PolicyMapTest::AclPolicyType", World::policyKey(), option);
  };
  struct Named {
    char const* name;
    int number;
  };
  for (auto const& [name, number] :
       {Named{"ipv4", 0}, Named{"ipv6", 1}, Named{"mac", 2}, Named{"mpls", 3}}) {
    EXPECT_EQ(identity(name), identity(number));
    EXPECT_EQ(Kor::valueToStrep(identity(number)["option"].get().value()),
              "'" + std::string(name) + "'");
  }
  for (std::int64_t const number : {4LL, 7LL, -1LL, 2147483647LL, -2147483648LL}) {
    EXPECT_EQ(Kor::valueToStrep(identity(number)["option"].get().value()), std::to_string(number));
  }
  for (GenericValue const& bad :
       {GenericValue(2147483648), GenericValue(-2147483649), GenericValue(UINT64_MAX),
        GenericValue("ipv5"), GenericValue("IPV4"), GenericValue(" ipv4"), GenericValue("ipv4 "),
        GenericValue("0"), GenericValue(""), GenericValue(true), GenericValue(0.0),
        GenericValue(nullptr)}) {
    expectTypeError([&] { identity(bad); }, "option");
  }
}

TEST(GenericInterface, TakesNoValueOfAnotherEnumeration) {
  GenericValue const kind = World::action(1)["actionType"];
  expectTypeError(
      [&] { return construct("PolicyMapTest::AclPolicyType", World::policyKey(), kind); },
      "option");
}

TEST(GenericInterface, ReadsDataWhateverValueIsGivenWithTheRequest) {
  GenericRef const helper = newHelper();
  for (GenericValue const& value : {GenericValue(5), GenericValue("x"), GenericValue(nullptr)}) {
    EXPECT_EQ(operation(helper, 259, get, {}, value), GenericValue(0));
  }
  EXPECT_EQ(helper["asyncTrigger"], 0);
}

TEST(GenericInterface, RefusesAnIndexOnDataBeforeAnythingElse) {
  GenericRef const record = newRecord();
  for (std::uint32_t const code : {0U, 1U, 5U, 128U, 129U, 256U}) {
    expectBadIndex([&] { operation(record, 139, code, 0, "not a number"); }, "commitCount");
    expectBadIndex([&] { operation(record, 130, code, World::ruleKey()); }, "key");
  }
}

TEST(GenericInterface, WritesNoPartOfAnIdentity) {
  GenericRef const identity = World::policyType();
  for (auto const& [id, name] :
       {std::pair(2U, "policyKey"), std::pair(3U, "option"), std::pair(4U, "hash")}) {
    for (std::uint32_t const code : {1U, 2U, 3U, 128U, 129U, 7U}) {
      expectUnsupported([&, id = id] { operation(identity, id, code, {}, 1); }, name, code);
    }
    expectBadIndex([&, id = id] { operation(identity, id, get, 1); }, name);
  }
  EXPECT_EQ(identity, World::policyType());
}

TEST(GenericInterface, ShowsHashesThatDifferByTheDifferenceOfTheOptions) {
  auto const hash = [](int option) {
    return World::policyType("edge", option)["hash"].as<std::uint32_t>();
  };
  EXPECT_EQ(hash(3) - hash(0), 3U);
  EXPECT_EQ(hash(7) - hash(2), 5U);
  EXPECT_EQ(hash(0) - hash(-1), 1U);
}

TEST(GenericInterface, RunsTheWritersThatNotifyAndDeliver) {
  World const world;
  GenericRef const helper = newHelper();
  helper["asyncError"] = "late";
  EXPECT_EQ(helper["asyncOperationResult"]["error"], "");
  helper["asyncTrigger"] = 1;
  EXPECT_EQ(helper["asyncOperationResult"]["error"], "late");

  GenericRef const machine = world.subject("TestServicePolicySm");
  EXPECT_EQ(machine.call("intfExists", World::intf()), true);
  machine["nonexistentIntf"][World::intf()] = true;
  EXPECT_EQ(machine.call("intfExists", World::intf()), false);
  machine["nonexistentIntf"][World::intf()] = false;
  EXPECT_EQ(machine.call("intfExists", World::intf()), true);
  EXPECT_EQ(machine["nonexistentIntf"].size(), 1U);
}

TEST(GenericInterface, RefusesToWriteIntoACopyThatWasRead) {
  GenericRef const record = newRecord();
  GenericRef rule = construct("Acl::IpRuleConfig");
  rule["dscp"] = 12;
  record["ruleMatch"][World::ruleKey()] = rule;
  rule["dscp"] = 13;
  EXPECT_EQ(record["ruleMatch"][World::ruleKey()]["dscp"], 12);
  expectConst([&] { record["ruleMatch"][World::ruleKey()]["dscp"] = 14; });
  EXPECT_EQ(record["ruleMatch"][World::ruleKey()]["dscp"], 12);
}

// Collections

TEST(GenericInterface, ReadsNoMatchWithoutAnIndex) {
  GenericRef const record = newRecord();
  expectTypeError([&] { operation(record, 134, get); }, "kor_index");
  expectTypeError([&] { (void)record["ruleMatch"].get(); }, "kor_index");
}

TEST(GenericInterface, ChecksTheIndexOfACollectionBeforeTheValue) {
  GenericRef const record = newRecord();
  expectTypeError([&] { operation(record, 131, set, {}, "x"); }, "kor_index");
  expectTypeError([&] { operation(record, 131, set, 5, "x"); }, "kor_index");
  expectTypeError([&] { operation(record, 131, set, World::ruleKey(), "x"); }, "ruleAction1");
  expectTypeError([&] { operation(record, 131, set, World::ruleKey()); }, "ruleAction1");
  expectUnsupported([&] { operation(record, 131, 4); }, "ruleAction1", 4);
  expectUnsupported([&] { operation(record, 131, 130, 5, "x"); }, "ruleAction1", 130);
  EXPECT_EQ(record["ruleAction1"].size(), 0U);
}

TEST(GenericInterface, AnswersTheDefaultForAKeyThatACollectionDoesNotHold) {
  GenericRef const record = newRecord();
  GenericRef const key = World::ruleKey();
  EXPECT_EQ(record["ruleAction1"][key], 0);
  EXPECT_EQ(record["ruleMatch"][key], construct("Acl::IpRuleConfig"));
  EXPECT_EQ(record["ruleMatch6"][key], construct("Acl::Ip6RuleConfig"));
  EXPECT_EQ(record["ruleMatchMac"][key], construct("Acl::MacRuleConfig"));
  EXPECT_EQ(record["intf"][World::intf()], false);
  EXPECT_TRUE(record["subRulesForKey"][key].get().isNull());
  EXPECT_EQ(record["ruleMatch"].size() + record["subRulesForKey"].size() + record["intf"].size(),
            0U);
}

TEST(GenericInterface, TellsAStoredFalseFromAbsenceByTheCount) {
  GenericRef const record = newRecord();
  record["intf"][World::intf()] = false;
  EXPECT_EQ(record["intf"][World::intf()], false);
  EXPECT_EQ(record["intf"].size(), 1U);
  EXPECT_TRUE(record["intf"].contains(World::intf()));
  record["intf"][World::intf()].del();
  EXPECT_EQ(record["intf"][World::intf()], false);
  EXPECT_EQ(record["intf"].size(), 0U);
}

TEST(GenericInterface, OverwritesAMemberInItsPlace) {
  GenericRef const record = newRecord();
  record["ruleAction1"][World::ruleKey()] = 5;
  record["ruleAction1"][World::ruleKey()] = 9;
  EXPECT_EQ(record["ruleAction1"].size(), 1U);
  EXPECT_EQ(record["ruleAction1"][World::ruleKey()], 9);
  record["ruleAction1"][World::ruleKey()].del();
  record["ruleAction1"][World::ruleKey()].del();
  EXPECT_EQ(record["ruleAction1"][World::ruleKey()], 0);
}

std::vector<GenericValue> keysOf(GenericRef const& owner, Kor::AttributeId id) {
  std::vector<GenericValue> keys;
  for (GenericValue key = operation(owner, id, first); key.present();
       key = operation(owner, id, next, key)) {
    keys.push_back(key);
  }
  return keys;
}

// The place of an identity in the collection of records: by the reversed hash, then by the key.
auto placeOf(GenericRef const& identity) {
  return std::tuple(Kor::bitReverse(identity["hash"].as<std::uint32_t>()),
                    identity["policyKey"]["first"].as<std::string>(),
                    identity["policyKey"]["second"].as<std::string>(),
                    GenericValue(identity["option"]).enumeration());
}
bool inOrder(GenericRef const& a, GenericRef const& b) {
  return placeOf(a) < placeOf(b);
}
GenericRef identity(std::string const& from, std::string const& to, int option) {
  return construct("PolicyMapTest::AclPolicyType", construct("PolicyMap::PolicyMapSmKey", from, to),
                   option);
}
// Many identities. Some have the parts of the key exchanged, which gives the same hash.
std::vector<GenericRef> identities() {
  std::vector<GenericRef> all;
  for (int i = 0; i < 12; ++i) {
    for (int option = 0; option < 4; ++option) {
      auto const name = "pm" + std::to_string(i);
      all.push_back(identity(name, "input", option));
      all.push_back(identity("input", name, option));
    }
  }
  return all;
}

TEST(GenericInterface, WalksRecordsInTheOrderOfTheirReversedHashes) {
  GenericRef const helper = newHelper();
  auto expected = identities();
  for (GenericRef const& key : expected) {
    helper["testData"][key].create();
  }
  std::sort(expected.begin(), expected.end(), inOrder);
  EXPECT_EQ(operation(helper, 263, count), GenericValue(expected.size()));
  auto const walked = keysOf(helper, 263);
  ASSERT_EQ(walked.size(), expected.size());
  for (std::size_t i = 0; i < walked.size(); ++i) {
    EXPECT_EQ(walked[i], expected[i].value()) << i;
  }
  EXPECT_EQ(placeOf(identity("a", "b", 0)) < placeOf(identity("b", "a", 0)), true);
  EXPECT_EQ(std::get<0>(placeOf(identity("a", "b", 0))),
            std::get<0>(placeOf(identity("b", "a", 0))));
}

TEST(GenericInterface, GoesOnBehindAKeyThatIsGoneOrWasNeverThere) {
  auto const all = identities();
  GenericRef const helper = newHelper();
  std::vector<GenericRef> held;
  for (std::size_t i = 0; i < all.size(); i += 3) {
    helper["testData"][all[i]].create();
    held.push_back(all[i]);
  }
  std::sort(held.begin(), held.end(), inOrder);
  for (GenericRef const& key : all) {
    auto const behind = std::find_if(held.begin(), held.end(),
                                     [&](GenericRef const& other) { return inOrder(key, other); });
    GenericValue const answer = operation(helper, 263, next, key);
    if (behind == held.end()) {
      EXPECT_FALSE(answer.present());
    } else {
      EXPECT_EQ(answer, behind->value());
    }
  }
}

TEST(GenericInterface, WalksOnThoughMembersAreRemoved) {
  GenericRef const record = newRecord();
  for (unsigned i = 0; i < 50; ++i) {
    record["ruleAction1"][World::ruleKey(i)] = i;
  }
  auto const before = keysOf(record, 131);
  ASSERT_EQ(before.size(), 50U);
  // Removes the current member of the walk and the one after it.
  std::vector<GenericValue> walked;
  for (GenericValue key = operation(record, 131, first); key.present();
       key = operation(record, 131, next, key)) {
    walked.push_back(key);
    operation(record, 131, del, key);
    if (GenericValue const behind = operation(record, 131, next, key); behind.present()) {
      operation(record, 131, del, behind);
    }
  }
  ASSERT_EQ(walked.size(), 25U);
  for (std::size_t i = 0; i < walked.size(); ++i) {
    EXPECT_EQ(walked[i], before[2 * i]);
  }
  EXPECT_EQ(record["ruleAction1"].size(), 0U);
}

TEST(GenericInterface, KeepsTheOrderOfAWalkAsACollectionGrows) {
  GenericRef const record = newRecord();
  std::vector<GenericValue> before;
  for (unsigned i = 1; i <= 200; ++i) {
    record["intf"][World::intf("Ethernet" + std::to_string(i))] = true;
    auto const now = keysOf(record, 138);
    ASSERT_EQ(now.size(), i);
    std::vector<GenericValue> old;
    std::copy_if(now.begin(), now.end(), std::back_inserter(old), [&](GenericValue const& key) {
      return std::find(before.begin(), before.end(), key) != before.end();
    });
    ASSERT_TRUE(old == before);
    before = now;
  }
}

TEST(GenericInterface, AnswersQueriesOfAnEmptyCollectionWithNothing) {
  GenericRef const record = newRecord();
  for (Kor::AttributeId id = 131; id <= 137; ++id) {
    EXPECT_EQ(operation(record, id, count), GenericValue(0));
    EXPECT_FALSE(operation(record, id, first).present());
    EXPECT_FALSE(operation(record, id, next, World::ruleKey()).present());
    EXPECT_FALSE(operation(record, id, del, World::ruleKey()).present());
    auto const name = record.adapter().attributeString(id).stdString();
    expectBadIndex([&] { operation(record, id, count, World::ruleKey()); }, name);
    expectBadIndex([&] { operation(record, id, first, "x"); }, name);
    expectTypeError([&] { operation(record, id, next); }, "kor_index");
    expectTypeError([&] { operation(record, id, next, "x"); }, "kor_index");
  }
}

struct OwnedCase {
  char const* owner;
  Kor::AttributeId id;
  std::string member;
  GenericValue key;
  GenericValue otherKey;
};

std::vector<OwnedCase> ownedCases() {
  return {{"AclHelper", 263, "AclPolicyData", World::policyType(), World::policyType("core")},
          {"AclPolicyData", 137, "SubRuleDataCollection", World::ruleKey(), World::ruleKey(20)}};
}

TEST(GenericInterface, CreatesOwnedMembersFromAnEmptyListOrFromTheirKey) {
  for (auto const& [type, id, member, key, otherKey] : ownedCases()) {
    GenericRef const owner = World().subject(type);
    GenericRef const created = operation(owner, id, set, key, GenericList::of());
    EXPECT_EQ(created.type()->shortName(), member);
    EXPECT_EQ(created["key"], key);
    EXPECT_EQ(operation(owner, id, set, key, GenericList::of(key)), created.value());
    EXPECT_EQ(operation(owner, id, set, key, GenericList::of()), created.value());
    GenericRef const other = operation(owner, id, set, otherKey, GenericList::of(otherKey));
    EXPECT_EQ(other["key"], otherKey);
    EXPECT_EQ(operation(owner, id, count), GenericValue(2));
  }
}

TEST(GenericInterface, CreatesNoOwnedMemberFromAnythingElse) {
  for (auto const& [type, id, member, key, otherKey] : ownedCases()) {
    GenericRef const owner = World().subject(type);
    auto const create = [&, id = id, key = key](GenericValue const& value) {
      return [&owner, id, key, value] { operation(owner, id, set, key, value); };
    };
    expectNoList(create({}));
    expectNoList(create(key));
    expectNoList(create(nullptr));
    expectTypeError(create(GenericList::of(otherKey)), "key");
    expectTypeError(create(GenericList::of("x")), "key");
    expectTypeError(create(GenericList::of(nullptr)), "key");
    expectTypeError(create(GenericList::of(GenericValue())), "key");
    expectUnknownArg(create(GenericList::of(key, 1)), member);
    expectUnknownArg(create(GenericList::of(key, key, key)), member);
    expectTypeError(create(GenericList::of(otherKey, 1)), "key");
    expectTypeError([&, id = id] { operation(owner, id, set, {}, GenericList::of()); },
                    "kor_index");
    EXPECT_EQ(operation(owner, id, count), GenericValue(0));
  }
}

TEST(GenericInterface, KeepsAMemberThatSomebodyHoldsBeyondItsRemoval) {
  GenericRef const helper = newHelper();
  GenericRef const record = helper["testData"][World::policyType()].create();
  record["commitCount"] = 3;
  helper["testData"][World::policyType()].del();
  EXPECT_TRUE(helper["testData"][World::policyType()].get().isNull());
  EXPECT_EQ(record["commitCount"], 3);
  EXPECT_FALSE(helper["testData"][World::policyType()].create() == record);
}

// Functions

TEST(GenericInterface, ChecksACallsCodeIndexListAndArgumentsInThisOrder) {
  World const world;
  GenericRef const helper = newHelper();
  GenericRef const data = world["PolicyMap::PolicyMapSmCommonData"];
  auto const call = [&](std::uint32_t code, GenericValue index, GenericValue value) {
    return [=] { operation(helper, 142, code, index, value); };
  };
  expectUnsupported(call(128, 5, 5), "createPolicy", 128);
  expectUnsupported(call(1, {}, GenericList::of(data, 0)), "createPolicy", 1);
  expectBadIndex(call(0, 5, 5), "createPolicy");
  expectNoList(call(0, {}, 5));
  expectNoList(call(0, {}, {}));
  expectTypeError(call(0, {}, GenericList::of()), "policyData");
  expectTypeError(call(0, {}, GenericList::of(5, 0)), "policyData");
  expectTypeError(call(0, {}, GenericList::of(5, "x", 7)), "policyData");
  expectTypeError(call(0, {}, GenericList::of(data)), "matchOption");
  expectTypeError(call(0, {}, GenericList::of(data, "x", 7)), "matchOption");
  expectUnknownArg(call(0, {}, GenericList::of(data, 0, 7)), "createPolicy");
  EXPECT_EQ(helper["testData"].size(), 0U);
  EXPECT_EQ(operation(helper, 142, get, {}, GenericList::of(data, 0)), "");
  EXPECT_EQ(helper["testData"].size(), 1U);
}

TEST(GenericInterface, CallsAFunctionWithoutArgumentsWithAnEmptyListOrNone) {
  GenericRef const helper = newHelper();
  EXPECT_FALSE(operation(helper, 141, get).present());
  EXPECT_FALSE(operation(helper, 141, get, {}, GenericList::of()).present());
  expectUnknownArg([&] { operation(helper, 141, get, {}, GenericList::of(1)); }, "hwInit");
  expectNoList([&] { operation(helper, 141, get, {}, 1); });
  expectNoList([&] { operation(helper, 141, get, {}, nullptr); });
  expectBadIndex([&] { operation(helper, 141, get, 1); }, "hwInit");
}

TEST(GenericInterface, AnswersTheResultsOfCallsInTheirTypes) {
  World const world;
  GenericRef const helper = newHelper();
  GenericRef const count64 =
      helper.call("getCountForRule", World::ruleKey(), world["PolicyMap::PolicyMapSmCommonData"],
                  world["PolicyMap::ClassMapSmCommonData"]);
  EXPECT_EQ(count64.as<std::uint64_t>(), 10U);
  helper["createError"] = "no room";
  GenericRef const text =
      helper.call("createPolicy", world["PolicyMap::PolicyMapSmCommonData"], "mac");
  EXPECT_EQ(text.value().kind(), GenericValue::Kind::text);
  EXPECT_EQ(text, "no room");
  EXPECT_FALSE(helper.call("scheduleAsyncResult", "x").value().present());
}

TEST(GenericInterface, ComparesActionsOfOneClassByTheirNumber) {
  EXPECT_EQ(World::action(1, 7).call("equalTo", World::action(1, 7)), true);
  EXPECT_EQ(World::action(1, 7).call("equalTo", World::action(1, 8)), false);
  EXPECT_EQ(World::action(1, 7).call("equalTo", World::action(2, 7)), false);
  EXPECT_EQ(World::action(1, 7).call("equalTo", nullptr), false);
  expectTypeError([] { World::action(1).call("equalTo"); }, "other");
  expectTypeError([] { World::action(1).call("equalTo", newHelper()); }, "other");
}

TEST(GenericInterface, TakesAConstObjectForAPointerToConstOnly) {
  World const world;
  GenericRef const machine = world.subject("TestServicePolicySm");
  auto const create = [&](GenericRef const& config, GenericRef const& status) {
    return machine.call("createPolicyMapSm", World::policyKey(), config, status);
  };
  GenericRef const config = world["PolicyMap::PolicyMapConfig"];
  GenericRef const status = world["PolicyMap::PolicyMapStatus"];
  EXPECT_EQ(create(config.asConst(), status)["status"], status);
  expectTypeError([&] { create(config, status.asConst()); }, "status");
}

TEST(GenericInterface, ChoosesTheOverloadByTheNumberOfArguments) {
  World const world;
  GenericRef const machine = world.subject("TestClassMapSm");
  for (auto const& [id, name, arg] : {std::tuple(143U, "handleAction", "actionType"),
                                      std::tuple(144U, "handleMatch", "option")}) {
    EXPECT_FALSE(operation(machine, id, get).present());
    EXPECT_FALSE(operation(machine, id, get, {}, GenericList::of()).present());
    EXPECT_FALSE(operation(machine, id, get, {}, GenericList::of(1)).present());
    expectTypeError([&, id = id] { operation(machine, id, get, {}, GenericList::of("x")); }, arg);
    expectUnknownArg([&, id = id] { operation(machine, id, get, {}, GenericList::of(1, 1)); },
                     name);
    expectNoList([&, id = id] { operation(machine, id, get, {}, 1); });
  }
}

TEST(GenericInterface, BuildsTheActionMachineOfEachKind) {
  World const world;
  for (int kind = 1; kind <= 3; ++kind) {
    world["PolicyMap::ClassAction"]["action"][kind] = World::action(kind, 5);
  }
  GenericRef const machine = world.subject("TestClassMapSm");
  for (int kind = 1; kind <= 3; ++kind) {
    GenericRef const made = machine.call("createActionSm", kind);
    EXPECT_EQ(made.type()->name(), "PolicyMapTest::TestAction" + std::to_string(kind) + "Sm");
    EXPECT_FALSE(made.isConst());
  }
}

TEST(GenericInterface, AnswersNoMachineForAKindThatTheLibraryDoesNotKnow) {
  World const world;
  world["PolicyMap::ClassAction"]["action"][9] = World::action(1);
  std::vector<std::string> lines;
  auto const previous = Kor::traceSinkIs([&](std::string_view source, int level,
                                             std::string_view text) {
    lines.push_back(std::string(source) + ' ' + std::to_string(level) + ' ' + std::string(text));
  });
  GenericRef const made = world.subject("TestClassMapSm").call("createActionSm", 9);
  Kor::traceSinkIs(previous);
  EXPECT_TRUE(made.isNull());
  EXPECT_THAT(lines, testing::Contains("PolicyMapTestSm 0 Unexpected action type 9"));
}

// Constructors

TEST(GenericInterface, BuildsNoActionFromThreeArguments) {
  expectUnknownArg(
      [] {
        return construct("PolicyMapTest::TestAction2", "mark", construct("Zub::UniqueId", "a1"), 3);
      },
      "TestAction2");
}

TEST(GenericInterface, NamesTheArgumentThatAnActionIsBuiltWithout) {
  for (int kind = 1; kind <= 3; ++kind) {
    auto const type = "PolicyMapTest::TestAction" + std::to_string(kind);
    expectTypeError([&] { return construct(type); }, "className");
    expectTypeError([&] { return construct(type, 5, construct("Zub::UniqueId", "a1")); },
                    "className");
    expectTypeError([&] { return construct(type, "mark"); }, "id");
    expectTypeError([&] { return construct(type, "mark", 5); }, "id");
    expectTypeError([&] { return construct(type, "mark", 5, 6); }, "id");
    expectNoList([&] { Kor::genericConstruct(Kor::typeNamed(type), "mark"); });
    expectNoList([&] { Kor::genericConstruct(Kor::typeNamed(type), {}); });
  }
}

TEST(GenericInterface, BuildsMachinesFromNullPointers) {
  GenericRef const classMachine =
      construct("PolicyMapTest::TestClassMapSm", nullptr, nullptr, nullptr, nullptr, nullptr);
  EXPECT_TRUE(classMachine["globalCommonData"].get().isNull());
  EXPECT_TRUE(classMachine["classAction"].get().isNull());
  EXPECT_EQ(classMachine["name"], "");
  GenericRef const policyMachine = construct("PolicyMapTest::TestPolicyMapSm", nullptr,
                                             World::policyKey(), nullptr, nullptr, nullptr);
  EXPECT_EQ(policyMachine["key"], World::policyKey());
  EXPECT_TRUE(policyMachine["status"].get().isNull());
  GenericRef const serviceMachine =
      construct("PolicyMapTest::TestServicePolicySm", nullptr, nullptr, nullptr, nullptr, nullptr,
                nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, true, false, true);
  EXPECT_TRUE(serviceMachine["aclHelper"].get().isNull());
  EXPECT_EQ(serviceMachine["allowL2Intf"], true);
  EXPECT_EQ(serviceMachine["allowL3Intf"], false);
  EXPECT_EQ(serviceMachine["allowMgmtIntf"], true);
  GenericRef const classData =
      construct("PolicyMapTest::TestClassCommonData", "web", nullptr, nullptr);
  EXPECT_EQ(classData["name"], "web");
}

TEST(GenericInterface, MissesAnArgumentThatIsNoNull) {
  expectTypeError(
      [] { return construct("PolicyMapTest::TestClassCommonData", "web", GenericValue()); },
      "classMap");
  expectTypeError([] { return construct("PolicyMapTest::TestClassCommonData", "web", nullptr); },
                  "aclConfig");
}

TEST(GenericInterface, BuildsActionMachinesThatHaveReadTheirAction) {
  for (int kind = 1; kind <= 3; ++kind) {
    World const world(kind);
    world["PolicyMap::Action"]["value"] = 9;
    GenericRef const machine = world.subject("TestAction" + std::to_string(kind) + "Sm");
    auto const attribute = "action" + std::to_string(kind) + "Value";
    GenericRef const classData = world["PolicyMap::ClassMapSmCommonData"];
    EXPECT_EQ(classData[attribute], 9);
    EXPECT_EQ(classData["updateAclActions"], 1);
    world["PolicyMap::Action"]["value"] = 4;  // notifications are on
    EXPECT_EQ(classData[attribute], 4);
    EXPECT_EQ(classData["updateAclActions"], 2);
    machine.call("cleanup");
    EXPECT_EQ(classData[attribute], 0);
    EXPECT_EQ(classData["updateAclActions"], 3);
  }
}

TEST(GenericInterface, BuildsMachinesThatAreAtWork) {
  World const world;
  world["PolicyMap::ClassAction"]["action"][1] = World::action(1, 6);
  GenericRef const classMachine = world.subject("TestClassMapSm");
  EXPECT_EQ(classMachine["actionSm"].size(), 1U);
  EXPECT_EQ(classMachine["classCommonData"]["action1Value"], 6);
  GenericRef const policyMachine = world.subject("TestPolicyMapSm");
  EXPECT_EQ(policyMachine["policyCommonData"]["policyKey"], World::policyKey());
  GenericRef const serviceMachine = world.subject("TestServicePolicySm");
  EXPECT_EQ(serviceMachine["commonData"]["aclConfig"], world["Acl::Config"]);
}

TEST(GenericInterface, TakesTheTwoCapabilitiesInTheirOrder) {
  GenericRef const one = construct("PolicyMapTest::AclHelper", true, false);
  EXPECT_EQ(one["updateActionSupported"], true);
  EXPECT_EQ(one["expandPortChannels"], false);
  GenericRef const other = construct("PolicyMapTest::AclHelper", false, true);
  EXPECT_EQ(other["updateActionSupported"], false);
  EXPECT_EQ(other["expandPortChannels"], true);
}

TEST(GenericInterface, BuildsNoAbstractType) {
  for (char const* const type :
       {"PolicyMap::PolicyMapAclHelper", "PolicyMap::ActionSm", "PolicyMap::ClassMapSm",
        "PolicyMap::PolicyMapSm", "PolicyMap::ServicePolicySm", "Kor::PtrInterface"}) {
    EXPECT_THROW((void)construct(type), Kor::RangeException) << type;
  }
}

TEST(GenericInterface, KnowsNoTypeThatIsNotEntered) {
  EXPECT_THROW((void)construct("PolicyMapTest::TestAction4", "x"), Kor::RangeException);
  EXPECT_THROW((void)construct("TestAction1", "x"), Kor::RangeException);
}

// Operations that end the process

constexpr char const* nullUsed = "Kor/Ptr: assertion \"object_ != nullptr\" failed";

TEST(GenericInterfaceDeathTest, LeavesItToTheCalledFunctionWhatNullMeans) {
  World const world;
  GenericRef const helper = newHelper();
  GenericRef const data = world["PolicyMap::PolicyMapSmCommonData"];
  EXPECT_DEATH(helper.call("createPolicy", nullptr, 0), nullUsed);
  helper.call("createPolicy", data, 1);
  EXPECT_DEATH(helper.call("addRule", World::ruleKey(), World::subRule(), data, nullptr),
               "PolicyMapTestSm: assertion \"testClassData\" failed");
  EXPECT_DEATH(helper.call("createPolicy", data, 1),
               "PolicyMapTestSm: assertion \"!data->created\\(\\)\" failed");
  EXPECT_DEATH(
      (void)construct("PolicyMapTest::TestAction1Sm", nullptr, nullptr, nullptr, World::action(1)),
      "PolicyMapTestSm: assertion \"classData\" failed");
  EXPECT_DEATH((void)construct("PolicyMapTest::TestAction1Sm", nullptr, nullptr,
                               world["PolicyMap::ClassMapSmCommonData"], nullptr),
               nullUsed);
  EXPECT_DEATH(world.subject("TestClassMapSm").call("createActionSm", 1),
               "PolicyMapTestSm: assertion \"action\" failed");
}

}  // namespace
