// SPDX-License-Identifier: Apache-2.0

// Text forms, printed and read back without any class header.

#include "byname/AttributeTable.h"
#include "byname/World.h"

#include <Kor/GenericIf.h>
#include <Kor/ObjectText.h>
#include <Kor/Strep.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Kor::construct;
using Kor::GenericList;
using Kor::GenericRef;
using Kor::GenericValue;
using testing::HasSubstr;
using testing::StartsWith;

std::string textOf(GenericRef const& value) {
  return Kor::valueToStrep(value.value()).stdString();
}
GenericRef read(std::string_view text) {
  return Kor::strepToValue<GenericValue>(Kor::String8(text));
}
std::string errorOf(std::string_view text) {
  try {
    return "no error: " + textOf(read(text));
  } catch (Kor::RangeException const& e) {
    return e.what();
  }
}

std::vector<std::string> objectTypes() {
  std::vector<std::string> types;
  for (std::string const& type : typeNames()) {
    if (type != "AclPolicyType") {
      types.push_back(type);
    }
  }
  return types;
}

// Objects

class ObjectText : public testing::TestWithParam<std::string> {
 protected:
  World const world{kindOf(GetParam())};
  GenericRef const object = world.subject(GetParam());
};

TEST_P(ObjectText, NamesTheTypeAndReadsBackAsTheSameObject) {
  std::string const text = textOf(object);
  EXPECT_THAT(text, StartsWith("Ptr('PolicyMapTest::" + GetParam() + "', "));
  EXPECT_EQ(textOf(object), text);
  EXPECT_EQ(read(text), object);
  EXPECT_EQ(read(" " + text + "\n"), object);
}

TEST_P(ObjectText, TellsObjectsOfOneTypeApart) {
  GenericRef const other = world.subject(GetParam());
  EXPECT_NE(textOf(object), textOf(other));
  EXPECT_EQ(read(textOf(other)), other);
  EXPECT_FALSE(read(textOf(other)) == object);
}

TEST_P(ObjectText, ReadsBackAsTheTypeItselfAndAsEachOfItsBases) {
  Kor::String8 const text(textOf(object));
  for (Kor::KorType const* type = object.type(); type != nullptr; type = type->base()) {
    Kor::TextIterator it = text.begin();
    EXPECT_EQ(Kor::sequenceToObject(it, text.end(), type).get(), object.value().object())
        << type->name();
    EXPECT_EQ(it.position(), text.view().size());
  }
}

TEST_P(ObjectText, DoesNotReadBackAsAnUnrelatedType) {
  Kor::String8 const text(textOf(object));
  Kor::KorType const& unrelated = Kor::typeNamed("Acl::AclDiff");
  Kor::TextIterator it = text.begin();
  EXPECT_THROW(Kor::sequenceToObject(it, text.end(), &unrelated), Kor::RangeException);
}

TEST_P(ObjectText, OfADeadObjectReadsBackAsNothing) {
  std::string text;
  {
    GenericRef const shortLived = World(kindOf(GetParam())).subject(GetParam());
    text = textOf(shortLived);
  }
  EXPECT_THAT(errorOf(text), HasSubstr(text));
  GenericRef const newcomer = world.subject(GetParam());
  EXPECT_NE(textOf(newcomer), text);
  EXPECT_THROW((void)read(text), Kor::RangeException);
}

TEST_P(ObjectText, IsTheSameThroughAViewThatMayNotChangeIt) {
  EXPECT_EQ(textOf(object.asConst()), textOf(object));
}

TEST_P(ObjectText, OfANullPointerIsNone) {
  Kor::String8 const none("None");
  Kor::TextIterator it = none.begin();
  EXPECT_FALSE(Kor::sequenceToObject(it, none.end(), object.type()));
  EXPECT_EQ(it.position(), 4U);
}

INSTANTIATE_TEST_SUITE_P(Of, ObjectText, testing::ValuesIn(objectTypes()),
                         [](auto const& which) { return which.param; });

TEST(TextForms, OfANullPointerIsNone) {
  GenericRef const machine = World().subject("TestClassMapSm");
  EXPECT_EQ(textOf(machine["rawClassMapSubConfig"].get()), "None");
  EXPECT_EQ(textOf(GenericValue(nullptr)), "None");
  EXPECT_TRUE(read("None").isNull());
  EXPECT_TRUE(read(" None ").isNull());
}

TEST(TextForms, OfAnObjectAreGoodWhereAnObjectIsWanted) {
  World const world;
  GenericRef const helper = world["PolicyMap::PolicyMapAclHelper"];
  GenericRef const machine = world.subject("TestServicePolicySm");
  EXPECT_EQ(textOf(machine["aclHelper"].get()), textOf(helper));
  machine["aclHelper"] = nullptr;
  EXPECT_EQ(textOf(machine["aclHelper"].get()), "None");
  machine["aclHelper"] = read(textOf(helper));
  EXPECT_EQ(machine["aclHelper"], helper);
}

// Identities

constexpr std::string_view edgeIpv6 =
    "Value('PolicyMapTest::AclPolicyType', ** {'policyKey': "
    "Value('PolicyMap::PolicyMapSmKey', ** {'first': 'edge', 'second': 'input'}), "
    "'option': 'ipv6'})";

TEST(TextForms, OfAnIdentityListItsPartsByName) {
  EXPECT_EQ(textOf(World::policyType()), edgeIpv6);
  std::ostringstream out;
  out << World::policyType();
  EXPECT_EQ(out.str(), edgeIpv6);
  EXPECT_THAT(textOf(World::policyType("edge", 7)), HasSubstr("'option': 7})"));
  EXPECT_THAT(textOf(World::policyType("edge", -1)), HasSubstr("'option': -1})"));
  EXPECT_THAT(textOf(World::policyType("it's", 0)), HasSubstr("'first': "));
}

TEST(TextForms, OfIdentitiesReadBackAsEqualOnes) {
  for (std::string const& name :
       {std::string("edge"), std::string(), std::string("it's \"x\""), std::string("a\\b\n\t"),
        std::string("nul\0inside", 10), std::string("\xc3\xa9\xff")}) {
    for (int const option : {0, 1, 2, 3, 4, 7, -1, 2147483647}) {
      GenericRef const identity = construct(
          "PolicyMapTest::AclPolicyType",
          construct("PolicyMap::PolicyMapSmKey", Kor::String8(std::string_view(name)), "output"),
          option);
      GenericRef const back = read(textOf(identity));
      EXPECT_EQ(back, identity);
      EXPECT_EQ(back.type()->name(), "PolicyMapTest::AclPolicyType");
      EXPECT_EQ(back["policyKey"]["first"].as<std::string>(), name);
      EXPECT_EQ(back["hash"].get(), identity["hash"].get());
    }
  }
}

TEST(TextForms, OfAnIdentityMayBeSpacedAndOrderedOtherwise) {
  GenericRef const identity = World::policyType();
  EXPECT_EQ(
      read("  Value ( 'PolicyMapTest::AclPolicyType' , ** { 'option' : 'ipv6' , 'policyKey' : "
           "Value ( 'PolicyMap::PolicyMapSmKey' , ** { 'second' : \"input\" , 'first' : 'edge' "
           "} ) } ) \t\n\v\f\r "),
      identity);
  EXPECT_EQ(read("Value('PolicyMapTest::AclPolicyType', ** {'option': 3, 'option': 1, 'policyKey': "
                 "Value('PolicyMap::PolicyMapSmKey', ** {'first': 'edge', 'second': 'input'})})"),
            identity);
  EXPECT_EQ(
      read("Value('PolicyMapTest::AclPolicyType', ** {})"),
      construct("PolicyMapTest::AclPolicyType", construct("PolicyMap::PolicyMapSmKey", "", ""), 0));
}

TEST(TextForms, OfAnIdentityThatEndTooEarlyOrGoOnAreRefused) {
  EXPECT_EQ(errorOf("Value('PolicyMapTest::AclPolicyType', ** {"),
            "premature end of value type AclPolicyType");
  EXPECT_EQ(errorOf("Value('PolicyMapTest::AclPolicyType', ** {'option': 1 "),
            "premature end of value type AclPolicyType");
  std::string const more = std::string(edgeIpv6) + "  x";
  EXPECT_EQ(errorOf(more),
            "junk at column " + std::to_string(edgeIpv6.size() + 2) + " deserializing " + more);
  EXPECT_EQ(errorOf("Value('PolicyMapTest::AclPolicyType', ** {'colour': 1})"),
            "AclPolicyType has no such attribute: colour");
  EXPECT_EQ(errorOf("Value('PolicyMapTest::AclPolicyType', ** {'hash': 1})"),
            "AclPolicyType has no such attribute: hash");
  EXPECT_EQ(errorOf("Value('PolicyMapTest::AclPolicyType', ** {'option': 'ipv5'})"),
            "attribute 'option': ClassMapMatchOption has no such value: ipv5");
  EXPECT_EQ(errorOf("Value('PolicyMapTest::AclPolicyType', ** {'policyKey': "
                    "Value('PolicyMap::PolicyMapSmKey', ** {'first': 5})})"),
            "attribute 'policyKey': attribute 'first': expected a string at column 103");
}

TEST(TextForms, OfAnIdentityNameTheColumnOfAMissingToken) {
  EXPECT_EQ(errorOf("Value('PolicyMapTest::AclPolicyType' ** {})"), "expected , at column 37");
  EXPECT_EQ(errorOf("Value('PolicyMapTest::AclPolicyType', ** {'option' 1})"),
            "expected : at column 51");
  EXPECT_EQ(errorOf("Value('PolicyMapTest::AclPolicyType', ** {'option': 2147483648})"),
            "attribute 'option': 2147483648 out of range at column 52");
}

// The other values

TEST(TextForms, OfWhatRecordsHoldReadBackAsEqualValues) {
  for (GenericRef const& value :
       {World::ruleKey(), World::subRule(3), World::policyKey(),
        construct("PolicyMap::AsyncOperationResult", "late", 2.5), construct("Zub::UniqueId", "a1"),
        construct("Acl::IpRuleConfig"), construct("Acl::Ip6RuleConfig"),
        construct("Acl::MacRuleConfig")}) {
    std::string const text = textOf(value);
    EXPECT_THAT(text, StartsWith("Value('" + std::string(value.type()->name()) + "', ** {"));
    EXPECT_EQ(read(text), value);
  }
  EXPECT_EQ(textOf(construct("PolicyMap::AsyncOperationResult", "", 0.0)),
            "Value('PolicyMap::AsyncOperationResult', ** {'error': '', 'time': 0.0})");
  EXPECT_EQ(textOf(World::intf()), "'Ethernet3/1'");
  EXPECT_EQ(textOf(World::action(2)["actionType"].get()), "2");
}

TEST(TextForms, OfPlainValuesAreThoseOfPython) {
  EXPECT_EQ(textOf(GenericValue(true)), "True");
  EXPECT_EQ(textOf(GenericValue(false)), "False");
  EXPECT_EQ(textOf(GenericValue(-5)), "-5");
  EXPECT_EQ(textOf(GenericValue(UINT64_MAX)), "18446744073709551615");
  EXPECT_EQ(textOf(GenericValue("x")), "'x'");
  EXPECT_EQ(textOf(GenericValue(GenericList::of(1, "x", nullptr, true))), "[1, 'x', None, True]");
  for (char const* const text : {"True", "False", "-5", "18446744073709551615", "0.5", "'x'",
                                 "[1, 'x', None, True]", "[]"}) {
    EXPECT_EQ(textOf(read(text)), text);
  }
}

TEST(TextForms, OfListsOfArgumentsBuildObjects) {
  GenericRef const arguments = read("['mark', Value('Zub::UniqueId', ** {'value': 'a1'})]");
  GenericRef const action =
      Kor::genericConstruct(Kor::typeNamed("PolicyMapTest::TestAction3"), arguments).value();
  EXPECT_EQ(action["className"], "mark");
  EXPECT_EQ(action["id"]["value"], "a1");
}

}  // namespace
