// SPDX-License-Identifier: Apache-2.0
#include "acl/ValueChecks.h"

#include <Acl/Ip6RuleConfig.h>
#include <Acl/IpRuleConfig.h>
#include <Acl/MacRuleConfig.h>

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using Acl::Ip6AddressMatch;
using Acl::Ip6RuleConfig;
using Acl::IpAddressMatch;
using Acl::IpRuleConfig;
using Acl::MacAddressMatch;
using Acl::MacRuleConfig;
using Acl::OptionalNumber;
using Acl::PortMatch;
using Acl::TcpFlags;
using Acl::TtlMatch;
using TestSupport::expectTextForm;
using TestSupport::rangeError;

TEST(RuleConfig, IsCompactAndHasNoMemoryOfItsOwn) {
  static_assert(sizeof(IpRuleConfig) <= 64);
  static_assert(std::is_trivially_copyable_v<IpRuleConfig>);
  static_assert(std::is_trivially_copyable_v<Ip6RuleConfig>);
  static_assert(std::is_trivially_copyable_v<MacRuleConfig>);
  SUCCEED();
}

// One numeric attribute of a rule: its bounds, its default, and its accessors.
template <class Rule>
struct Attribute {
  std::string name;
  std::int64_t lowest;
  std::int64_t highest;
  OptionalNumber first;
  std::function<void(Rule&, std::int64_t)> write;
  std::function<OptionalNumber(Rule const&)> read;
};

template <class Rule>
void expectRangeChecked(std::vector<Attribute<Rule>> const& attributes) {
  for (Attribute<Rule> const& attribute : attributes) {
    SCOPED_TRACE(attribute.name);
    std::string const refusal = attribute.name + " < " + std::to_string(attribute.lowest) +
                                " or > " + std::to_string(attribute.highest) + " not allowed";
    Rule rule;
    EXPECT_EQ(attribute.read(rule), attribute.first);
    for (std::int64_t const good : {attribute.lowest, attribute.highest}) {
      attribute.write(rule, good);
      EXPECT_EQ(attribute.read(rule), good);
    }
    for (std::int64_t const bad :
         {attribute.lowest - 1, attribute.highest + 1, std::numeric_limits<std::int64_t>::min(),
          std::numeric_limits<std::int64_t>::max(), (std::int64_t{1} << 32) + attribute.lowest}) {
      EXPECT_EQ(rangeError([&] { attribute.write(rule, bad); }), refusal);
      EXPECT_EQ(attribute.read(rule), attribute.highest);
    }
  }
}

template <class Rule>
std::vector<Attribute<Rule>> ipAttributes() {
  using R = Rule;
  using N = std::int64_t;
  OptionalNumber const none;
  return {
      {"IpFilterBase::tni", 0, 16777215, 0, [](R& r, N n) { r.tniIs(n); },
       [](R const& r) { return OptionalNumber(r.tni()); }},
      {"IpFilterBase::vni", 0, 16777215, 0, [](R& r, N n) { r.vniIs(n); },
       [](R const& r) { return OptionalNumber(r.vni()); }},
      {"IpFilterBase::protocol", 0, 255, none, [](R& r, N n) { r.protocolIs(n); },
       [](R const& r) { return r.protocol(); }},
      {"IpFilterBase::dscp", 0, 63, none, [](R& r, N n) { r.dscpIs(n); },
       [](R const& r) { return r.dscp(); }},
      {"IpFilterBase::icmpType", 0, 255, none, [](R& r, N n) { r.icmpTypeIs(n); },
       [](R const& r) { return r.icmpType(); }},
      {"IpFilterBase::icmpCode", 0, 255, none, [](R& r, N n) { r.icmpCodeIs(n); },
       [](R const& r) { return r.icmpCode(); }},
  };
}

TEST(IpRuleConfig, NumbersAreCheckedBeforeTheyAreStored) {
  expectRangeChecked(ipAttributes<IpRuleConfig>());
}

TEST(Ip6RuleConfig, NumbersAreCheckedBeforeTheyAreStored) {
  expectRangeChecked(ipAttributes<Ip6RuleConfig>());
}

TEST(MacRuleConfig, NumbersAreCheckedBeforeTheyAreStored) {
  using R = MacRuleConfig;
  using N = std::int64_t;
  OptionalNumber const none;
  expectRangeChecked<R>({
      {"MacFilter::ethertype", 0, 65535, none, [](R& r, N n) { r.ethertypeIs(n); },
       [](R const& r) { return r.ethertype(); }},
      {"MacFilter::vlan", 1, 4094, none, [](R& r, N n) { r.vlanIs(n); },
       [](R const& r) { return r.vlan(); }},
      {"MacFilter::mplsLabel", 0, 1048575, none, [](R& r, N n) { r.mplsLabelIs(n); },
       [](R const& r) { return r.mplsLabel(); }},
      {"MacFilter::mplsInnerLabel", 0, 1048575, none, [](R& r, N n) { r.mplsInnerLabelIs(n); },
       [](R const& r) { return r.mplsInnerLabel(); }},
      {"MacFilter::cos", 0, 7, none, [](R& r, N n) { r.cosIs(n); },
       [](R const& r) { return r.cos(); }},
      {"MacFilter::mplsExperimental", 0, 7, none, [](R& r, N n) { r.mplsExperimentalIs(n); },
       [](R const& r) { return r.mplsExperimental(); }},
  });
}

TEST(RuleConfig, TheTextsOfTheRangesAreThese) {
  IpRuleConfig ip;
  MacRuleConfig mac;
  EXPECT_EQ(rangeError([&] { ip.tniIs(-1); }), "IpFilterBase::tni < 0 or > 16777215 not allowed");
  EXPECT_EQ(rangeError([&] { ip.vniIs(16777216); }),
            "IpFilterBase::vni < 0 or > 16777215 not allowed");
  EXPECT_EQ(rangeError([&] { mac.mplsLabelIs(1048576); }),
            "MacFilter::mplsLabel < 0 or > 1048575 not allowed");
  EXPECT_EQ(rangeError([&] { mac.mplsInnerLabelIs(-1); }),
            "MacFilter::mplsInnerLabel < 0 or > 1048575 not allowed");
}

TEST(TcpFlags, AreCheckedAndMasked) {
  EXPECT_EQ(rangeError([] { (void)TcpFlags(-1, 0); }), "TcpFlags::value < 0 or > 255 not allowed");
  EXPECT_EQ(rangeError([] { (void)TcpFlags(256, 0); }), "TcpFlags::value < 0 or > 255 not allowed");
  EXPECT_EQ(rangeError([] { (void)TcpFlags(0, -1); }), "TcpFlags::mask < 0 or > 255 not allowed");
  EXPECT_EQ(rangeError([] { (void)TcpFlags(0, 256); }), "TcpFlags::mask < 0 or > 255 not allowed");
  EXPECT_EQ(TcpFlags(255, TcpFlags::syn).value(), TcpFlags::syn);
  EXPECT_EQ(TcpFlags(255, 0), TcpFlags());
  EXPECT_TRUE(!TcpFlags());
  EXPECT_FALSE(!TcpFlags(0, TcpFlags::ack));
  EXPECT_EQ(TcpFlags().fwkType()->name(), "Acl::TcpFlags");
  expectTextForm(TcpFlags(2, 18), "Value('Acl::TcpFlags', ** {'value': 2, 'mask': 18})");
  EXPECT_EQ(Kor::strepToValue<TcpFlags>("Value('Acl::TcpFlags', ** {'value': 255, 'mask': 1})"),
            TcpFlags(1, 1));
}

TEST(OptionalNumber, IsANumberOrNone) {
  expectTextForm(OptionalNumber(), "None");
  expectTextForm(OptionalNumber(-7), "-7");
  EXPECT_EQ(OptionalNumber(5), 5U);
  EXPECT_NE(OptionalNumber(), 0);
  EXPECT_EQ(*OptionalNumber(5), 5);
  EXPECT_EQ(OptionalNumber().valueOr(9), 9);
  EXPECT_EQ(OptionalNumber(5).valueOr(9), 5);
  TestSupport::expectAscending<OptionalNumber>(
      {OptionalNumber(), OptionalNumber(-1), OptionalNumber(0), OptionalNumber(1)});
  EXPECT_EQ(rangeError([] { (void)Kor::strepToValue<OptionalNumber>("none"); }),
            "expected an integer at column 0");
}

TEST(OptionalNumberDeathTest, HasNoNumberWhenNone) {
  EXPECT_DEATH((void)*OptionalNumber(), "Acl/OptionalNumber: assertion \"present_\" failed at ");
}

// A rule in which every attribute differs from the default.
template <class Rule>
Rule fullIpRule(char const* source, char const* destination) {
  Rule rule;
  rule.permitIs(false);
  rule.protocolIs(6);
  rule.srcPortIs(PortMatch::eq(80));
  rule.dstPortIs(PortMatch::range(20, 21));
  rule.dscpIs(46);
  rule.ttlIs(TtlMatch::lt(5));
  rule.tcpFlagsIs(TcpFlags(TcpFlags::syn, TcpFlags::syn | TcpFlags::ack));
  rule.establishedIs(true);
  rule.ackOrRstIs(true);
  rule.fragmentsIs(true);
  rule.icmpTypeIs(8);
  rule.icmpCodeIs(0);
  rule.tniIs(5);
  rule.vniIs(6);
  rule.sourceIs(typename Rule::AddressMatch(source));
  rule.destinationIs(typename Rule::AddressMatch(destination));
  return rule;
}

std::string const fullIpFields =
    "'permit': False, 'protocol': 6, "
    "'srcPort': Value('Acl::PortMatch', ** {'op': 'eq', 'low': 80, 'high': 80}), "
    "'dstPort': Value('Acl::PortMatch', ** {'op': 'range', 'low': 20, 'high': 21}), "
    "'dscp': 46, 'ttl': Value('Acl::TtlMatch', ** {'op': 'lt', 'low': 5, 'high': 5}), "
    "'tcpFlags': Value('Acl::TcpFlags', ** {'value': 2, 'mask': 18}), 'established': True, "
    "'ackOrRst': True, 'fragments': True, 'icmpType': 8, 'icmpCode': 0, 'tni': 5, 'vni': 6, ";

TEST(IpRuleConfig, PrintsAndReadsBack) {
  auto const rule = fullIpRule<IpRuleConfig>("10.0.0.0/8", "10.1.2.3");
  std::string const text = "Value('Acl::IpRuleConfig', ** {" + fullIpFields +
                           "'source': '10.0.0.0/8', 'destination': '10.1.2.3'})";
  expectTextForm(rule, text);
  EXPECT_EQ(TestSupport::printed(rule), text);
  EXPECT_EQ(Kor::strepToValue<IpRuleConfig>("Value('Acl::IpRuleConfig', ** {})"), IpRuleConfig());
  EXPECT_EQ(Kor::strepToValue<IpRuleConfig>(Kor::valueToStrep(IpRuleConfig())), IpRuleConfig());
}

TEST(Ip6RuleConfig, PrintsAndReadsBack) {
  auto const rule = fullIpRule<Ip6RuleConfig>("2001:db8::/32", "any");
  expectTextForm(rule, "Value('Acl::Ip6RuleConfig', ** {" + fullIpFields +
                           "'source': '2001:db8::/32', 'destination': 'any'})");
}

MacRuleConfig fullMacRule() {
  MacRuleConfig rule;
  rule.permitIs(false);
  rule.ethertypeIs(0x8847);
  rule.vlanIs(10);
  rule.mplsLabelIs(0);
  rule.mplsInnerLabelIs(17);
  rule.cosIs(5);
  rule.mplsExperimentalIs(0);
  rule.sourceIs(MacAddressMatch("0123.4567.89ab"));
  rule.destinationIs(MacAddressMatch("0100.0000.0000/0100.0000.0000"));
  return rule;
}

TEST(MacRuleConfig, PrintsAndReadsBack) {
  expectTextForm(fullMacRule(),
                 "Value('Acl::MacRuleConfig', ** {'permit': False, 'ethertype': 34887, 'vlan': 10, "
                 "'mplsLabel': 0, 'mplsInnerLabel': 17, 'cos': 5, 'mplsExperimental': 0, "
                 "'source': '0123.4567.89ab', "
                 "'destination': '0100.0000.0000/0100.0000.0000'})");
  expectTextForm(
      MacRuleConfig(),
      "Value('Acl::MacRuleConfig', ** {'permit': True, 'ethertype': None, 'vlan': None, "
      "'mplsLabel': None, 'mplsInnerLabel': None, 'cos': None, 'mplsExperimental': None, "
      "'source': 'any', "
      "'destination': 'any'})");
}

TEST(RuleConfig, ABadTextFormNamesTheAttribute) {
  auto const read = [](char const* fields) {
    return rangeError([&] {
      (void)Kor::strepToValue<IpRuleConfig>(
          Kor::String8("Value('Acl::IpRuleConfig', ** {" + std::string(fields) + "})"));
    });
  };
  EXPECT_EQ(read("'tni': 16777216"),
            "attribute 'tni': IpFilterBase::tni < 0 or > 16777215 not allowed");
  EXPECT_EQ(read("'protocol': -1"),
            "attribute 'protocol': IpFilterBase::protocol < 0 or > 255 not allowed");
  EXPECT_EQ(read("'source': '10.0.0.0/99'"),
            "attribute 'source': IpAddressMatch: '10.0.0.0/99' is not an address match");
  EXPECT_EQ(read("'srcPort': Value('Acl::PortMatch', ** {'op': 'x'})"),
            "attribute 'srcPort': attribute 'op': MatchOp has no such value: x");
  EXPECT_EQ(read("'colour': 1"), "IpRuleConfig has no such attribute: colour");
}

// Every rule that differs from the default in a single attribute.
template <class Rule>
std::vector<Rule> ipEdits(char const* address) {
  using Match = typename Rule::AddressMatch;
  std::vector<std::function<void(Rule&)>> const edits{
      [](Rule& r) { r.permitIs(false); },
      [](Rule& r) { r.protocolIs(0); },
      [](Rule& r) { r.srcPortIs(PortMatch::eq(0)); },
      [](Rule& r) { r.dstPortIs(PortMatch::eq(0)); },
      [](Rule& r) { r.dscpIs(0); },
      [](Rule& r) { r.ttlIs(TtlMatch::eq(0)); },
      [](Rule& r) { r.tcpFlagsIs(TcpFlags(0, 1)); },
      [](Rule& r) { r.establishedIs(true); },
      [](Rule& r) { r.ackOrRstIs(true); },
      [](Rule& r) { r.fragmentsIs(true); },
      [](Rule& r) { r.icmpTypeIs(0); },
      [](Rule& r) { r.icmpCodeIs(0); },
      [](Rule& r) { r.tniIs(1); },
      [](Rule& r) { r.vniIs(1); },
      [&](Rule& r) { r.sourceIs(Match(address)); },
      [&](Rule& r) { r.destinationIs(Match(address)); }};
  std::vector<Rule> rules(1);
  for (auto const& edit : edits) {
    edit(rules.emplace_back());
  }
  return rules;
}

template <class Rule>
void expectAllDifferent(std::vector<Rule> rules) {
  EXPECT_TRUE(!rules.front());
  for (std::size_t i = 1; i < rules.size(); ++i) {
    EXPECT_FALSE(!rules[i]) << i;
  }
  std::sort(rules.begin(), rules.end());
  TestSupport::expectAscending(rules);
}

TEST(RuleConfig, EveryAttributeCountsInComparisonAndHash) {
  expectAllDifferent(ipEdits<IpRuleConfig>("0.0.0.0"));
  expectAllDifferent(ipEdits<Ip6RuleConfig>("::"));
  std::vector<MacRuleConfig> mac(10);
  mac[1].permitIs(false);
  mac[2].ethertypeIs(0);
  mac[3].vlanIs(1);
  mac[4].mplsLabelIs(0);
  mac[5].mplsInnerLabelIs(0);
  mac[6].sourceIs(MacAddressMatch("0000.0000.0000"));
  mac[7].destinationIs(MacAddressMatch("0000.0000.0000"));
  mac[8].cosIs(0);
  mac[9].mplsExperimentalIs(0);
  expectAllDifferent(mac);
}

TEST(RuleConfig, ANumberCanBeTakenBack) {
  IpRuleConfig rule;
  rule.protocolIs(6);
  rule.protocolIs(std::nullopt);
  EXPECT_EQ(rule, IpRuleConfig());
  EXPECT_TRUE(!rule);
}

TEST(IpRuleConfig, DescribesItselfAsInAConfiguration) {
  IpRuleConfig rule;
  EXPECT_EQ(rule.describe(), "permit ip any any");
  rule.protocolIs(6);
  rule.sourceIs(IpAddressMatch("10.0.0.0/8"));
  rule.srcPortIs(PortMatch::eq(80));
  rule.establishedIs(true);
  EXPECT_EQ(rule.describe(), "permit tcp 10.0.0.0/8 eq 80 any established");
  EXPECT_EQ(fullIpRule<IpRuleConfig>("10.0.0.1/255.0.0.255", "10.1.2.3").describe(),
            "deny tcp 10.0.0.1 wildcard 0.255.255.0 eq 80 host 10.1.2.3 range 20 21 icmp-type 8 "
            "icmp-code 0 +syn -ack established ack-or-rst fragments dscp 46 ttl lt 5 tni 5 vni 6");
  rule = IpRuleConfig();
  rule.protocolIs(200);
  EXPECT_EQ(rule.describe(), "permit 200 any any");
}

TEST(Ip6RuleConfig, DescribesItselfAsInAConfiguration) {
  Ip6RuleConfig rule;
  rule.permitIs(false);
  EXPECT_EQ(rule.describe(), "deny ipv6 any any");
  rule.protocolIs(58);
  rule.destinationIs(Ip6AddressMatch("2001:db8::1"));
  EXPECT_EQ(rule.describe(), "deny icmp6 any host 2001:db8::1");
}

TEST(MacRuleConfig, DescribesItselfAsInAConfiguration) {
  EXPECT_EQ(MacRuleConfig().describe(), "permit any any");
  EXPECT_EQ(fullMacRule().describe(),
            "deny host 0123.4567.89ab 0100.0000.0000 wildcard feff.ffff.ffff ethertype 34887 "
            "vlan 10 mpls-label 0 mpls-inner-label 17 cos 5 mpls-experimental 0");
}

TEST(RuleConfig, ItsTypesAreValueTypes) {
  EXPECT_EQ(IpRuleConfig().fwkType()->name(), "Acl::IpRuleConfig");
  EXPECT_EQ(Ip6RuleConfig().fwkType()->name(), "Acl::Ip6RuleConfig");
  EXPECT_EQ(MacRuleConfig().fwkType()->name(), "Acl::MacRuleConfig");
  EXPECT_EQ(MacRuleConfig::_fwkType()->base(), nullptr);
}

}  // namespace
