// SPDX-License-Identifier: Apache-2.0

// Rules and their parts, accessed by name.

#include "acl/ValueChecks.h"

#include <Acl/Config.h>
#include <Acl/OptionalRule.h>
#include <Kor/Generic.h>
#include <Kor/GenericIf.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using Kor::GenericIf;
using Kor::GenericList;
using Kor::GenericValue;
using Kor::KorType;
using TestSupport::expectTextForm;
using TestSupport::rangeError;

GenericIf make(char const* type, Kor::GenericList::Ptr const& arguments) {
  return Kor::genericConstruct(*KorType::named(type), arguments);
}
GenericValue get(GenericIf const& self, char const* name) {
  return self.attributeOp({self.type()->attr(name)->id(), GenericIf::AttributeOp::get, {}, {}});
}
void set(GenericIf const& self, char const* name, GenericValue const& value) {
  self.attributeOp({self.type()->attr(name)->id(), GenericIf::AttributeOp::set, {}, value});
}
template <class Work>
std::string typeError(Work&& work) {
  try {
    std::forward<Work>(work)();
  } catch (Kor::TypeException const& error) {
    return error.name().stdString();
  }
  return "no TypeException";
}

TEST(RuleByName, IsWrittenFieldByField) {
  GenericIf const rule = make("Acl::IpRuleConfig", GenericList::of());
  set(rule, "protocol", 6);
  set(rule, "dstPort", make("Acl::PortMatch", GenericList::of("eq", 80, 0)).value());
  set(rule, "source", "10.0.0.0/8");
  set(rule, "tni", 16777215);
  Acl::IpRuleConfig expected;
  expected.protocolIs(6);
  expected.dstPortIs(Acl::PortMatch::eq(80));
  expected.sourceIs(Acl::IpAddressMatch("10.0.0.0/8"));
  expected.tniIs(16777215);
  EXPECT_EQ(rule.value(), Kor::Generic<Acl::IpRuleConfig>::value(expected));
  EXPECT_EQ(get(rule, "protocol"), GenericValue(6));
  set(rule, "protocol", nullptr);
  EXPECT_TRUE(get(rule, "protocol").isNull());
}

TEST(RuleByName, RefusesWhatItsWritersRefuse) {
  GenericIf const rule = make("Acl::MacRuleConfig", GenericList::of());
  EXPECT_EQ(rangeError([&] { set(rule, "vlan", 4095); }),
            "MacFilter::vlan < 1 or > 4094 not allowed");
  EXPECT_EQ(typeError([&] { set(rule, "vlan", "10"); }), "vlan");
  EXPECT_EQ(typeError([&] { set(rule, "vlan", UINT64_MAX); }), "vlan");
  EXPECT_EQ(typeError([&] { set(rule, "vlan", {}); }), "vlan") << "no value is not none";
  EXPECT_EQ(typeError([&] { set(rule, "source", "10.0.0.0/8"); }), "source");
  EXPECT_EQ(rule.value(), Kor::Generic<Acl::MacRuleConfig>::value({}));
}

TEST(RuleByName, ReadFromAListIsACopyThatCannotBeWritten) {
  auto const list = Kor::make<Acl::IpAclConfig>(Kor::Name("web"));
  list->ruleIs(10, Acl::IpRuleConfig());
  GenericIf const self = list->fwkType()->genericIf(list, false);
  GenericIf const rule(
      self.attributeOp({Acl::IpAclConfig::ruleId, GenericIf::AttributeOp::get, 10, {}}));
  EXPECT_THROW(set(rule, "protocol", 6), Kor::ConstException);
}

TEST(MatchesByName, AreBuiltThroughTheirChecks) {
  EXPECT_EQ(make("Acl::PortMatch", GenericList::of("range", 20, 21)).value(),
            Kor::Generic<Acl::PortMatch>::value(Acl::PortMatch::range(20, 21)));
  EXPECT_EQ(rangeError([] { make("Acl::PortMatch", GenericList::of("range", 21, 20)); }),
            "PortMatch::high < low not allowed");
  EXPECT_EQ(typeError([] { make("Acl::PortMatch", GenericList::of("range", 0, 65536)); }), "high");
  EXPECT_EQ(typeError([] { make("Acl::TtlMatch", GenericList::of("eq", 256, 0)); }), "low");
  EXPECT_EQ(typeError([] { make("Acl::PortMatch", GenericList::of(6, 0, 0)); }), "op");
  EXPECT_EQ(typeError([] { make("Acl::PortMatch", GenericList::of("is", 0, 0)); }), "op");
  EXPECT_EQ(get(make("Acl::TcpFlags", GenericList::of(255, 18)), "value"), GenericValue(18));
  EXPECT_THROW(set(make("Acl::TcpFlags", GenericList::of(2, 18)), "mask", 2),
               Kor::OpNotSupportedException);
}

TEST(AddressesByName, AreBuiltFromTheirText) {
  EXPECT_EQ(Kor::valueToStrep(
                make("Acl::IpAddressMatch", GenericList::of("10.1.0.0/255.255.0.0")).value()),
            "'10.1.0.0/16'");
  EXPECT_EQ(get(make("Acl::Ip6AddressMatch", GenericList::of("2001:db8::/32")), "length"),
            GenericValue(32));
  EXPECT_TRUE(
      get(make("Acl::IpAddressMatch", GenericList::of("10.0.0.1/255.0.0.255")), "length").isNull());
  EXPECT_EQ(rangeError([] { make("Acl::MacAddressMatch", GenericList::of("10.0.0.1")); }),
            "MacAddressMatch: '10.0.0.1' is not an address match");
  GenericIf const address = make("Ip::Address", GenericList::of("10.1.2.3/24"));
  EXPECT_EQ(get(address, "text"), GenericValue("10.1.2.3/24"));
  EXPECT_EQ(get(address, "length"), GenericValue(24));
  EXPECT_EQ(get(make("Ip6::Address", GenericList::of("")), "text"), GenericValue(""));
  EXPECT_EQ(rangeError([] { make("Ip::Address", GenericList::of("10.1.2.3/33")); }),
            "Ip::Address: '10.1.2.3/33' is not an address");
  EXPECT_EQ(get(make("Vorel::IntfId", GenericList::of("po7")), "name"),
            GenericValue("PortChannel7"));
  EXPECT_EQ(get(make("Vorel::IntfId", GenericList::of("")), "name"), GenericValue(""));
  EXPECT_EQ(rangeError([] { make("Vorel::IntfId", GenericList::of("Moon1")); }),
            "IntfId: 'Moon1' is not an interface name");
}

TEST(ConfigByName, MakesListsAndTellsOfTheirRules) {
  auto const config = Kor::make<Acl::Config>();
  TestSupport::LogRecorder log(*config);
  GenericIf const self = config->fwkType()->genericIf(config, false);
  GenericIf const list(self.attributeOp(
      {Acl::Config::ipAclId, GenericIf::AttributeOp::set, "web", GenericList::of("web")}));
  list.attributeOp({Acl::IpAclConfig::ruleId, GenericIf::AttributeOp::set, 10,
                    make("Acl::IpRuleConfig", GenericList::of()).value()});
  EXPECT_EQ(config->ipAcl(Kor::Name("web"))->rules(), 1U);
  EXPECT_EQ(log.take(), (std::vector<std::string>{"ipAcl", "ipAcl"}));
}

TEST(OptionalRule, PrintsAsTheRuleOrNone) {
  expectTextForm(Acl::OptionalRule(), "None");
  Acl::MacRuleConfig rule;
  rule.vlanIs(10);
  expectTextForm(Acl::OptionalRule(rule), Kor::valueToStrep(rule).stdString());
  expectTextForm(Acl::OptionalRule(Acl::Ip6RuleConfig()),
                 Kor::valueToStrep(Acl::Ip6RuleConfig()).stdString());
}

TEST(OptionalRule, IsNothingElse) {
  auto const error = [](char const* text) {
    return rangeError([&] { (void)Kor::strepToValue<Acl::OptionalRule>(text); });
  };
  EXPECT_EQ(error(""), "expected Value at column 0");
  EXPECT_EQ(error(" 'permit'"), "expected Value at column 1");
  EXPECT_EQ(error("Value(1)"), "expected a string at column 6");
  EXPECT_EQ(error("Value( 'Acl::TtlMatch', ** {})"),
            "no such rule type: Acl::TtlMatch at column 7");
}

}  // namespace
