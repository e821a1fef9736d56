// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"
#include "policymap/ValueChecks.h"

#include <Kor/GenericIf.h>
#include <PolicyMap/ClassMapMatch.h>

#include <gtest/gtest.h>

#include <string>

namespace policymap {
namespace {

using Kor::GenericIf;
using Kor::GenericList;
using Kor::KorType;
using PolicyMap::ClassMapMatch;
using TestSupport::expectTextForm;
using TestSupport::printed;
using TestSupport::rangeError;
using Kind = ClassMapMatch::Kind;

Acl::MacRuleConfig vlanRule() {
  Acl::MacRuleConfig rule;
  rule.vlanIs(10);
  return rule;
}

std::string refused(Kind kind, ClassMapMatchOption option, char const* name,
                    Acl::OptionalRule const& rule) {
  return rangeError([&] { (void)ClassMapMatch(kind, option, Kor::Name(name), rule); });
}

TEST(MatchText, HasKindOptionNameAndRule) {
  expectTextForm(ClassMapMatch(),
                 "Value('PolicyMap::ClassMapMatch', ** {'kind': 'acl', 'option': 'ipv4', 'name': "
                 "'', 'rule': None})");
  expectTextForm(ClassMapMatch::acl(ClassMapMatchOption::mpls, Kor::Name("web")),
                 "Value('PolicyMap::ClassMapMatch', ** {'kind': 'acl', 'option': 'mpls', 'name': "
                 "'web', 'rule': None})");
  expectTextForm(ClassMapMatch::classMap(Kor::Name("inner")),
                 "Value('PolicyMap::ClassMapMatch', ** {'kind': 'classMap', 'option': 'ipv4', "
                 "'name': 'inner', 'rule': None})");
  ClassMapMatch const own = ClassMapMatch::rule(vlanRule(), ClassMapMatchOption::mpls);
  std::string const text =
      "Value('PolicyMap::ClassMapMatch', ** {'kind': 'rule', 'option': 'mpls', 'name': '', 'rule': "
      "Value('Acl::MacRuleConfig', ** {'permit': True, 'ethertype': None, 'vlan': 10, "
      "'mplsLabel': None, 'mplsInnerLabel': None, 'cos': None, 'mplsExperimental': None, "
      "'source': 'any', 'destination': 'any'})})";
  expectTextForm(own, text);
  EXPECT_EQ(printed(own), text);
}

TEST(MatchText, ReadsItsPartsInAnyOrder) {
  EXPECT_EQ(Kor::strepToValue<ClassMapMatch>(
                "Value('PolicyMap::ClassMapMatch', ** {'rule': Value('Acl::Ip6RuleConfig', ** {}), "
                "'option': 1, 'kind': 2})"),
            ClassMapMatch::rule(Acl::Ip6RuleConfig()));
}

TEST(MatchText, NamesWhatItCannotRead) {
  auto const error = [](std::string const& parts) {
    return parseError<ClassMapMatch>("Value('PolicyMap::ClassMapMatch', ** {" + parts + "})");
  };
  EXPECT_EQ(error("'kind': 'list'"), "attribute 'kind': Kind has no such value: list");
  EXPECT_EQ(error("'kind': 3"), "attribute 'kind': Kind < 0 or > 2 not allowed");
  EXPECT_EQ(error("'rule': 5"), "attribute 'rule': expected Value at column 46");
  EXPECT_EQ(error("'rule': Value('Acl::PortMatch', ** {})"),
            "attribute 'rule': no such rule type: Acl::PortMatch at column 52");
  EXPECT_EQ(error("'rule': Value('Acl::IpRuleConfig', ** {'dscp': 64})"),
            "attribute 'rule': attribute 'dscp': IpFilterBase::dscp < 0 or > 63 not allowed");
  EXPECT_EQ(error("'kind': 'rule'"), "ClassMapMatch::rule missing");
}

TEST(Match, RefusesPartsThatDoNotGoTogether) {
  Acl::IpRuleConfig const ip;
  Acl::Ip6RuleConfig const ip6;
  EXPECT_EQ(refused(Kind::rule, ClassMapMatchOption::ipv4, "", std::nullopt),
            "ClassMapMatch::rule missing");
  EXPECT_EQ(refused(Kind::acl, ClassMapMatchOption::ipv4, "web", ip),
            "ClassMapMatch::rule not allowed with a name to match");
  EXPECT_EQ(refused(Kind::classMap, ClassMapMatchOption::ipv4, "web", ip),
            "ClassMapMatch::rule not allowed with a name to match");
  EXPECT_EQ(refused(Kind::rule, ClassMapMatchOption::ipv4, "web", ip),
            "ClassMapMatch::name not allowed with a rule");
  EXPECT_EQ(refused(Kind::rule, ClassMapMatchOption::ipv6, "", ip),
            "ClassMapMatch::option 'ipv6' not allowed with such a rule");
  EXPECT_EQ(refused(Kind::rule, ClassMapMatchOption::ipv4, "", ip6),
            "ClassMapMatch::option 'ipv4' not allowed with such a rule");
  EXPECT_EQ(refused(Kind::rule, ClassMapMatchOption{7}, "", vlanRule()),
            "ClassMapMatch::option 7 not allowed with such a rule");
  EXPECT_EQ(rangeError([] { (void)ClassMapMatch::rule(vlanRule(), ClassMapMatchOption::ipv4); }),
            "ClassMapMatch::option 'ipv4' not allowed with such a rule");
}

TEST(Match, OfAnotherClassMapHasNoOptionOfItsOwn) {
  EXPECT_EQ(ClassMapMatch(Kind::classMap, ClassMapMatchOption::mac, Kor::Name("inner"), {}),
            ClassMapMatch::classMap(Kor::Name("inner")));
}

TEST(Match, TellsItsRuleOnlyWhenItIsOne) {
  EXPECT_EQ(ClassMapMatch::rule(vlanRule()).ruleIfAny(), Acl::OptionalRule(vlanRule()));
  EXPECT_EQ(ClassMapMatch::rule(vlanRule()).rule(), ClassMapMatch::Rule(vlanRule()));
  ClassMapMatch const list = ClassMapMatch::acl(ClassMapMatchOption::ipv4, Kor::Name("web"));
  EXPECT_FALSE(list.ruleIfAny().has_value());
  EXPECT_EQ(list.rule(), ClassMapMatch::Rule());
}

TEST(MatchByName, IsBuiltFromItsPartsAndStoredInAClassMap) {
  KorType const& match = *KorType::named("PolicyMap::ClassMapMatch");
  GenericIf const rule =
      Kor::genericConstruct(*KorType::named("Acl::MacRuleConfig"), GenericList::of());
  Kor::AttributeId const vlan = rule.type()->attr("vlan")->id();
  rule.attributeOp({vlan, GenericIf::AttributeOp::set, {}, 10});
  GenericIf const own =
      Kor::genericConstruct(match, GenericList::of("rule", "mpls", "", rule.value()));
  GenericIf const list = Kor::genericConstruct(match, GenericList::of(0, 0, "web", nullptr));

  auto const classMap = Kor::make<PolicyMap::ClassMapSubConfig>(Kor::Name("c"));
  GenericIf const self = classMap->fwkType()->genericIf(classMap, false);
  Kor::AttributeId const id = PolicyMap::ClassMapSubConfig::matchId;
  self.attributeOp({id, GenericIf::AttributeOp::set, 1, own.value()});
  self.attributeOp({id, GenericIf::AttributeOp::set, 2, list.value()});
  EXPECT_EQ(classMap->match(1), ClassMapMatch::rule(vlanRule(), ClassMapMatchOption::mpls));
  EXPECT_EQ(classMap->match(2), ClassMapMatch::acl(ClassMapMatchOption::ipv4, Kor::Name("web")));

  GenericIf const stored(self.attributeOp({id, GenericIf::AttributeOp::get, 1, {}}));
  Kor::AttributeId const ruleId = match.attr("rule")->id();
  EXPECT_EQ(stored.attributeOp({ruleId, GenericIf::AttributeOp::get, {}, {}}), rule.value());
  EXPECT_TRUE(list.attributeOp({ruleId, GenericIf::AttributeOp::get, {}, {}}).isNull());
}

TEST(MatchByName, RefusesARuleThatIsNoneAndPartsThatDoNotGoTogether) {
  KorType const& match = *KorType::named("PolicyMap::ClassMapMatch");
  try {
    (void)Kor::genericConstruct(match, GenericList::of("rule", "mac", "", "permit any"));
    ADD_FAILURE() << "no exception";
  } catch (Kor::TypeException const& error) {
    EXPECT_EQ(error.name(), "rule");
  }
  EXPECT_EQ(rangeError([&] {
              (void)Kor::genericConstruct(match, GenericList::of("rule", "mac", "", nullptr));
            }),
            "ClassMapMatch::rule missing");
}

TEST(MatchKind, PrintsAndReadsItsNames) {
  expectTextForm(Kind::acl, "'acl'");
  expectTextForm(Kind::classMap, "'classMap'");
  expectTextForm(Kind::rule, "'rule'");
  EXPECT_EQ(printed(Kind::classMap), "classMap");
  EXPECT_EQ(rangeError([] { (void)Kor::strepToValue<Kind>("3"); }), "Kind < 0 or > 2 not allowed");
}

TEST(Match, SaysOfWhatKindItIs) {
  auto const list = ClassMapMatch::acl(ClassMapMatchOption::ipv6, "web");
  EXPECT_EQ(list.kind(), ClassMapMatch::Kind::acl);
  EXPECT_EQ(list.option(), ClassMapMatchOption::ipv6);
  EXPECT_EQ(list.name(), "web");
  EXPECT_EQ(ClassMapMatch::classMap("inner").kind(), ClassMapMatch::Kind::classMap);
  EXPECT_EQ(ClassMapMatch::rule(Acl::IpRuleConfig()).option(), ClassMapMatchOption::ipv4);
  EXPECT_EQ(ClassMapMatch::rule(Acl::Ip6RuleConfig()).option(), ClassMapMatchOption::ipv6);
  EXPECT_EQ(ClassMapMatch::rule(Acl::MacRuleConfig()).option(), ClassMapMatchOption::mac);
  EXPECT_EQ(ClassMapMatch::rule(Acl::MacRuleConfig(), ClassMapMatchOption::mpls).option(),
            ClassMapMatchOption::mpls);
}

TEST(Match, ComparesKindOptionNameAndRule) {
  EXPECT_EQ(ipList("a"), ipList("a"));
  EXPECT_NE(ipList("a"), ipList("b"));
  EXPECT_NE(ipList("a"), ClassMapMatch::acl(ClassMapMatchOption::mac, "a"));
  EXPECT_NE(ipList("a"), ClassMapMatch::classMap("a"));
  Acl::IpRuleConfig rule;
  rule.protocolIs(6);
  EXPECT_NE(ClassMapMatch::rule(rule), ClassMapMatch::rule(Acl::IpRuleConfig()));
  EXPECT_TRUE(!ClassMapMatch());
  EXPECT_FALSE(!ipList("a"));
}

}  // namespace
}  // namespace policymap
