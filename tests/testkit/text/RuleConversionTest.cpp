// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/RuleConversion.h"

#include "testkit/text/Parsing.h"

#include <gtest/gtest.h>

#include <string>

namespace PolicyMapTestKit::Text::test {
namespace {

// A rule of policy text, converted to its configuration and described.
std::string ip4(std::string const& rule) {
  return describe(last<RuleAdd>("ip access-list L\n" + rule).rule.rule);
}
std::string ip6(std::string const& rule) {
  return describe(last<RuleAdd>("ipv6 access-list L\n" + rule).rule.rule);
}
std::string mac(std::string const& rule) {
  return describe(last<RuleAdd>("mac access-list L\n" + rule).rule.rule);
}

TEST(RuleConversion, Ip4RuleKeepsProtocolAndAddresses) {
  EXPECT_EQ(ip4("permit ip any any"), "permit ip any any");
  EXPECT_EQ(ip4("deny gre host 10.1.2.3 10.2.0.0/16"), "deny gre host 10.1.2.3 10.2.0.0/16");
  EXPECT_EQ(ip4("permit ip 10.0.0.1 0.255.255.0 any"),
            "permit ip 10.0.0.1 wildcard 0.255.255.0 any");
}

TEST(RuleConversion, PortOperatorsKeepTheirNumbers) {
  EXPECT_EQ(ip4("permit tcp any eq 80 any neq 81"), "permit tcp any eq 80 any neq 81");
  EXPECT_EQ(ip4("permit udp any lt 1024 any gt 1023"), "permit udp any lt 1024 any gt 1023");
  EXPECT_EQ(ip4("permit tcp any lt 1 any gt 65534"), "permit tcp any lt 1 any gt 65534");
  EXPECT_EQ(ip4("permit tcp any any range 20 21"), "permit tcp any any range 20 21");
}

TEST(RuleConversion, TtlOperatorsKeepTheirNumbers) {
  EXPECT_EQ(ip4("permit ip any any ttl 1"), "permit ip any any ttl eq 1");
  EXPECT_EQ(ip4("permit ip any any ttl neq 255"), "permit ip any any ttl neq 255");
  EXPECT_EQ(ip4("permit ip any any ttl lt 2"), "permit ip any any ttl lt 2");
  EXPECT_EQ(ip4("permit ip any any ttl gt 254"), "permit ip any any ttl gt 254");
  EXPECT_EQ(ip4("permit ip any any ttl range 1 5"), "permit ip any any ttl range 1 5");
}

TEST(RuleConversion, OptionsAreKept) {
  EXPECT_EQ(ip4("permit ip any any dscp ef"), "permit ip any any dscp 46");
  EXPECT_EQ(ip4("permit tcp any any established"), "permit tcp any any established");
  EXPECT_EQ(ip4("permit udp any any fragments"), "permit udp any any fragments");
}

TEST(RuleConversion, IcmpMessageKeepsTypeAndCode) {
  auto const rule = std::get<Acl::IpRuleConfig>(
      last<RuleAdd>("ip access-list L\npermit icmp any any port-unreachable").rule.rule);
  EXPECT_EQ(rule.icmpType(), Acl::OptionalNumber(3));
  EXPECT_EQ(rule.icmpCode(), Acl::OptionalNumber(3));
  auto const open =
      std::get<Acl::IpRuleConfig>(last<RuleAdd>("ip access-list L\npermit icmp any any").rule.rule);
  EXPECT_EQ(open.icmpType(), Acl::OptionalNumber());
}

TEST(RuleConversion, FlagsMustBeSetAndOthersMayBe) {
  auto const rule = std::get<Acl::IpRuleConfig>(
      last<RuleAdd>("ip access-list L\npermit tcp any any syn urg").rule.rule);
  std::uint8_t const wanted = Acl::TcpFlags::syn | Acl::TcpFlags::urg;
  EXPECT_EQ(rule.tcpFlags().value(), wanted);
  EXPECT_EQ(rule.tcpFlags().mask(), wanted);
}

TEST(RuleConversion, Ip6RuleIsOfItsOwnType) {
  EXPECT_EQ(ip6("permit tcp host 2001:db8::1 2001:db8:2::/48 eq https"),
            "permit tcp host 2001:db8::1 2001:db8:2::/48 eq 443");
  EXPECT_EQ(ip6("deny ipv6 any any"), "deny ipv6 any any");
}

TEST(RuleConversion, MacRuleKeepsTypeAndVlan) {
  EXPECT_EQ(mac("deny any any ip vlan 10"), "deny any any ethertype 2048 vlan 10");
  EXPECT_EQ(mac("permit host 0011.2233.4455 any"), "permit host 0011.2233.4455 any");
}

ConfiguredRule ofFilterSet(std::string const& line) {
  FilterSet const set = readFilterSet(SourceText("f", line), PortRanges::onAnyProtocol);
  return configuredRule(set.rules.at(0), set.family);
}

TEST(RuleConversion, FilterRulePortsAreAnyOneOrARange) {
  EXPECT_EQ(describe(ofFilterSet("@0.0.0.0/0 10.0.0.0/8 0 : 65535 80 : 80 0x06/0xff 0x0/0x0")),
            "permit tcp any 10.0.0.0/8 eq 80");
  EXPECT_EQ(describe(ofFilterSet("@1.2.3.4/32 0.0.0.0/0 7 : 8 0 : 65534 0x11/0xff 0x0/0x0")),
            "permit udp host 1.2.3.4 range 7 8 any range 0 65534");
}

TEST(RuleConversion, FilterRuleForEveryProtocolKeepsItsPorts) {
  auto const rule = std::get<Acl::IpRuleConfig>(
      ofFilterSet("@0.0.0.0/0 0.0.0.0/0 0 : 65535 80 : 90 0x00/0x00 0x1000/0x1000"));
  EXPECT_FALSE(rule.protocol());
  EXPECT_EQ(rule.dstPort(), Acl::PortMatch::range(80, 90));
  EXPECT_EQ(rule.tcpFlags(), Acl::TcpFlags());
}

TEST(RuleConversion, FilterSetOfIp6MakesIp6Rules) {
  EXPECT_EQ(describe(ofFilterSet("@2001:db8::/32 ::/0 0 : 65535 0 : 65535 0x3a/0xff 0x0/0x0")),
            "permit icmp6 2001:db8::/32 any");
}

TEST(RuleConversion, EqualRulesHaveEqualHashes) {
  auto const one = ofFilterSet("@1.2.3.4/32 0.0.0.0/0 0 : 65535 80 : 80 0x06/0xff 0x0/0x0");
  auto const two = last<RuleAdd>("ip access-list L\npermit tcp host 1.2.3.4 any eq www").rule.rule;
  EXPECT_EQ(one, two);
  EXPECT_EQ(hashOf(one), hashOf(two));
}

TEST(RuleConversion, FamiliesHaveTheirMatchOptions) {
  EXPECT_EQ(matchOption(Family::ip4), PolicyMap::ClassMapMatchOption::ipv4);
  EXPECT_EQ(matchOption(Family::ip6), PolicyMap::ClassMapMatchOption::ipv6);
  EXPECT_EQ(matchOption(Family::mac), PolicyMap::ClassMapMatchOption::mac);
}

}  // namespace
}  // namespace PolicyMapTestKit::Text::test
