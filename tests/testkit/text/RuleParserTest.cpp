// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/RuleParser.h"

#include "testkit/text/Parsing.h"
#include "testkit/text/RuleConversion.h"
#include "testkit/text/Rules.h"

#include <gtest/gtest.h>

#include <string>

namespace PolicyMapTestKit::Text::test {
namespace {

Acl::MacRuleConfig macRule(std::string const& rule) {
  return ruleOf<Acl::MacRuleConfig>("mac access-list L", rule);
}

Acl::IpAddressMatch ip4(std::string_view value, std::string_view mask) {
  return addressMatch<Acl::IpAddressMatch>(addressOf(Family::ip4, value, mask));
}

Acl::Ip6AddressMatch ip6(std::string_view value, std::string_view mask) {
  return addressMatch<Acl::Ip6AddressMatch>(addressOf(Family::ip6, value, mask));
}

Acl::MacAddressMatch mac(std::string_view value, std::string_view mask) {
  return addressMatch<Acl::MacAddressMatch>(addressOf(Family::mac, value, mask));
}

constexpr std::string_view allOnes6 = "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff";

TEST(RuleParser, PlainRuleMatchesEverything) {
  Acl::IpRuleConfig const rule = ipRule("permit ip any any");
  EXPECT_EQ(rule, Acl::IpRuleConfig());
  EXPECT_TRUE(rule.permit());
  EXPECT_FALSE(rule.protocol());
  EXPECT_TRUE(rule.source().isAny());
  EXPECT_EQ(ipRule("permit ipv6 any any"), Acl::IpRuleConfig());
  EXPECT_FALSE(ipRule("deny ip any any").permit());
}

TEST(RuleParser, ProtocolIsANameOrANumber) {
  EXPECT_EQ(ipRule("permit 0 any any").protocol(), 0);
  EXPECT_EQ(ipRule("permit 255 any any").protocol(), 255);
  EXPECT_EQ(ipRule("permit OSPF any any").protocol(), 89);
  EXPECT_EQ(ipRule("permit 6 any any eq bgp"), ipRule("permit tcp any any eq 179"));
  EXPECT_EQ(ruleError("permit 256 any any"),
            "t:2:8: expected protocol 0-255 or a protocol name, found '256'");
  EXPECT_EQ(ruleError("permit foo any any"),
            "t:2:8: expected protocol 0-255 or a protocol name, found 'foo'");
  EXPECT_EQ(ruleError("permit"),
            "t:2:7: expected protocol 0-255 or a protocol name, found end of line");
}

TEST(RuleParser, AddressesOfIp4) {
  Acl::IpRuleConfig const hosts = ipRule("permit ip host 10.1.2.3 10.2.3.4/16");
  EXPECT_EQ(hosts.source(), ip4("10.1.2.3", "255.255.255.255"));
  EXPECT_EQ(hosts.destination(), ip4("10.2.0.0", "255.255.0.0"));
  Acl::IpRuleConfig const wildcards = ipRule("permit ip 10.1.2.3 0.0.255.0 10.1.2.3 255.0.255.0");
  EXPECT_EQ(wildcards.source(), ip4("10.1.0.3", "255.255.0.255"));
  EXPECT_EQ(wildcards.destination(), ip4("0.1.0.3", "0.255.0.255"));
}

TEST(RuleParser, FaultyAddressIsRefusedWithItsColumn) {
  EXPECT_EQ(ruleError("permit ip 10.1.2 any"),
            "t:2:11: expected source: any, host A, A/LENGTH or A WILDCARD, found '10.1.2'");
  EXPECT_EQ(ruleError("permit ip any 10.1.2.3/33"),
            "t:2:15: expected destination: any, host A, A/LENGTH or A WILDCARD, found "
            "'10.1.2.3/33'");
  EXPECT_EQ(ruleError("permit ip host any any"), "t:2:16: expected an IPv4 address, found 'any'");
  EXPECT_EQ(ruleError("permit ip 10.1.2.3 any"), "t:2:20: expected wildcard bits, found 'any'");
  EXPECT_EQ(ruleError("permit ip any 10.1.2.3"),
            "t:2:23: expected wildcard bits, found end of line");
  EXPECT_EQ(ruleError("permit ip any"),
            "t:2:14: expected destination: any, host A, A/LENGTH or A WILDCARD, found end of line");
  EXPECT_EQ(ruleError("permit ip any address G"),
            "t:2:15: expected destination: any, host A, A/LENGTH or A WILDCARD, found 'address'");
}

TEST(RuleParser, PortComparisons) {
  EXPECT_EQ(ipRule("permit tcp any any eq 80").dstPort(), Acl::PortMatch::eq(80));
  EXPECT_EQ(ipRule("permit udp any neq domain any").srcPort(), Acl::PortMatch::neq(53));
  EXPECT_EQ(ipRule("permit sctp any lt 10 any").srcPort(), Acl::PortMatch::lt(10));
  EXPECT_EQ(ipRule("permit tcp any gt 5 any").srcPort(), Acl::PortMatch::gt(5));
  EXPECT_EQ(ipRule("permit tcp any any range 20 25").dstPort(), Acl::PortMatch::range(20, 25));
  EXPECT_EQ(ipRule("permit tcp any any range ftp-data ftp").dstPort(),
            Acl::PortMatch::range(20, 21));
  Acl::IpRuleConfig const both = ipRule("permit tcp any eq 1 any eq 2");
  EXPECT_EQ(both.srcPort(), Acl::PortMatch::eq(1));
  EXPECT_EQ(both.dstPort(), Acl::PortMatch::eq(2));
}

TEST(RuleParser, PortsAtTheirBounds) {
  EXPECT_EQ(ipRule("permit tcp any any eq 0").dstPort(), Acl::PortMatch::eq(0));
  EXPECT_EQ(ipRule("permit tcp any any eq 65535").dstPort(), Acl::PortMatch::eq(65535));
  EXPECT_EQ(ipRule("permit tcp any any lt 1").dstPort(), Acl::PortMatch::lt(1));
  EXPECT_EQ(ipRule("permit tcp any any gt 65534").dstPort(), Acl::PortMatch::gt(65534));
  EXPECT_EQ(ipRule("permit tcp any any range 7 7").dstPort(), Acl::PortMatch::range(7, 7));
}

TEST(RuleParser, EmptySetOfPortsIsRefusedWithItsColumn) {
  EXPECT_EQ(ruleError("permit tcp any any lt 0"),
            "t:2:23: expected port 1-65535 or a port name, found '0'");
  EXPECT_EQ(ruleError("permit tcp any gt 65535 any"),
            "t:2:19: expected port 0-65534 or a port name, found '65535'");
  EXPECT_EQ(ruleError("permit tcp any any range 25 20"),
            "t:2:29: expected port 25-65535 or a port name, found '20'");
  EXPECT_EQ(ruleError("permit tcp any any range www smtp"),
            "t:2:30: expected port 80-65535 or a port name, found 'smtp'");
}

TEST(RuleParser, UnknownPortIsRefusedWithItsColumn) {
  EXPECT_EQ(ruleError("permit tcp any any eq snmp"),
            "t:2:23: expected port 0-65535 or a port name, found 'snmp'");
  EXPECT_EQ(ruleError("permit tcp any any eq 65536"),
            "t:2:23: expected port 0-65535 or a port name, found '65536'");
  EXPECT_EQ(ruleError("permit tcp any any eq"),
            "t:2:22: expected port 0-65535 or a port name, found end of line");
  EXPECT_EQ(ruleError("permit tcp any any range 5"),
            "t:2:27: expected port 5-65535 or a port name, found end of line");
}

TEST(RuleParser, PortNeedsAProtocolThatHasPorts) {
  EXPECT_EQ(ruleError("permit ip any eq 80 any"),
            "t:2:15: expected protocol tcp, udp or sctp before a port, found 'eq'");
  EXPECT_EQ(ruleError("permit icmp any any range 1 2"),
            "t:2:21: expected protocol tcp, udp or sctp before a port, found 'range'");
}

TEST(RuleParser, StandardListsHaveASourceAlone) {
  std::string const list = "ip access-list standard L";
  EXPECT_EQ(ipRule("permit any", list), Acl::IpRuleConfig());
  EXPECT_EQ(ipRule("permit 10.1.2.3", list), ipRule("permit ip host 10.1.2.3 any"));
  EXPECT_EQ(ipRule("permit host 10.1.2.3 log", list), ipRule("permit ip host 10.1.2.3 any"));
  EXPECT_EQ(ipRule("deny 10.1.2.3/8", list), ipRule("deny ip 10.0.0.0/8 any"));
  EXPECT_EQ(ipRule("deny 10.1.0.1 0.0.255.0 log", list), ipRule("deny ip 10.1.0.1 0.0.255.0 any"));
  EXPECT_EQ(ruleError("permit any any", list), "t:2:12: expected log or end of line, found 'any'");
  EXPECT_EQ(ruleError("permit 10.1.2.3 0.0.0.256", list),
            "t:2:17: expected log or end of line, found '0.0.0.256'");
  EXPECT_EQ(ruleError("permit tcp any any", list),
            "t:2:8: expected source: any, host A, A/LENGTH or A WILDCARD, found 'tcp'");
}

TEST(RuleParser, AddressesOfIp6) {
  Acl::Ip6RuleConfig const rule =
      ip6Rule("permit tcp host 2001:db8::1 eq 1 2001:db8:1:2::3/48 eq 2 syn");
  EXPECT_EQ(rule.source(), ip6("2001:db8::1", allOnes6));
  EXPECT_EQ(rule.destination(), ip6("2001:db8:1::", "ffff:ffff:ffff::"));
  EXPECT_EQ(rule.dstPort(), Acl::PortMatch::eq(2));
  EXPECT_EQ(ip6Rule("permit icmp any any").protocol(), 58);
  EXPECT_EQ(ruleError("permit ipv6 2001:db8::1 any", "ipv6 access-list L"),
            "t:2:13: expected source: any, host A or A/LENGTH, found '2001:db8::1'");
  EXPECT_EQ(ruleError("permit ipv6 any 10.0.0.0/8", "ipv6 access-list L"),
            "t:2:17: expected destination: any, host A or A/LENGTH, found '10.0.0.0/8'");
  EXPECT_EQ(ruleError("permit ipv6 host 10.1.2.3 any", "ipv6 access-list L"),
            "t:2:18: expected an IPv6 address, found '10.1.2.3'");
}

TEST(RuleParser, AddressesOfMac) {
  EXPECT_EQ(macRule("permit any any"), Acl::MacRuleConfig());
  Acl::MacAddressMatch const one = mac("0011.2233.4455", "ffff.ffff.ffff");
  Acl::MacAddressMatch const block = mac("0011.2233.0000", "ffff.ffff.0000");
  EXPECT_EQ(macRule("deny host 0011.2233.4455 any").source(), one);
  EXPECT_FALSE(macRule("deny host 0011.2233.4455 any").permit());
  EXPECT_EQ(macRule("permit any 00:11:22:33:44:55").destination(), one);
  EXPECT_EQ(macRule("permit 0011.2233.4455 0000.0000.ffff any").source(), block);
  EXPECT_EQ(macRule("permit any 0011.2233.4455 0000.0000.ffff").destination(), block);
}

TEST(RuleParser, SecondMacAddressIsAMaskOnlyBeforeADestination) {
  Acl::MacAddressMatch const one = mac("0011.2233.4455", "ffff.ffff.ffff");
  Acl::MacAddressMatch const two = mac("0000.0000.00ff", "ffff.ffff.ffff");
  Acl::MacRuleConfig const pair = macRule("permit 0011.2233.4455 0000.0000.00ff");
  EXPECT_EQ(pair.source(), one);
  EXPECT_EQ(pair.destination(), two);
  Acl::MacRuleConfig const four =
      macRule("permit 0011.2233.4455 0000.0000.00ff 0011.2233.4455 0000.0000.ffff");
  EXPECT_EQ(four.source(), mac("0011.2233.4400", "ffff.ffff.ff00"));
  EXPECT_EQ(four.destination(), mac("0011.2233.0000", "ffff.ffff.0000"));
  Acl::MacRuleConfig const hosted =
      macRule("permit 0011.2233.4455 0000.0000.00ff host 0011.2233.4455 arp");
  EXPECT_EQ(hosted.source(), four.source());
  EXPECT_EQ(hosted.destination(), one);
}

TEST(RuleParser, ThreeMacAddressesAreRefusedWithBothReadings) {
  std::string const list = "mac access-list L";
  std::string const message =
      "expected host before one of three MAC addresses: '0011.2233.4455 0000.0000.00ff host "
      "0011.2233.4466' (wildcard bits of the source) or 'host 0011.2233.4455 0000.0000.00ff "
      "0011.2233.4466' (wildcard bits of the destination), found '0011.2233.4455'";
  std::string const three = "0011.2233.4455 0000.0000.00ff 0011.2233.4466";
  EXPECT_EQ(ruleError("permit " + three, list), "t:2:8: " + message);
  EXPECT_EQ(ruleError("permit " + three + " arp", list), "t:2:8: " + message);
  EXPECT_EQ(ruleError("no permit " + three, list), "t:2:11: " + message);
  EXPECT_EQ(ruleError("match mac " + three, "class-map C"), "t:2:11: " + message);
  Acl::MacRuleConfig const first =
      macRule("permit 0011.2233.4455 0000.0000.00ff host 0011.2233.4466");
  EXPECT_EQ(first.source(), mac("0011.2233.4400", "ffff.ffff.ff00"));
  EXPECT_EQ(first.destination(), mac("0011.2233.4466", "ffff.ffff.ffff"));
  Acl::MacRuleConfig const second =
      macRule("permit host 0011.2233.4455 0000.0000.00ff 0011.2233.4466");
  EXPECT_EQ(second.source(), mac("0011.2233.4455", "ffff.ffff.ffff"));
  EXPECT_EQ(second.destination(), mac("0000.0000.00ff", "ffee.ddcc.bb99"));
}

TEST(RuleParser, OptionsOfMac) {
  EXPECT_EQ(macRule("permit any any arp").ethertype(), 0x0806);
  EXPECT_EQ(macRule("permit any any 0x86DD").ethertype(), 0x86dd);
  EXPECT_EQ(macRule("permit any any 2048").ethertype(), 0x0800);
  Acl::MacRuleConfig const rule = macRule("permit any any vlan 4094 ip log");
  EXPECT_EQ(rule.vlan(), 4094);
  EXPECT_EQ(rule.ethertype(), 0x0800);
  EXPECT_EQ(macRule("permit any any vlan 10 cos 7").cos(), 7);
  EXPECT_EQ(macRule("permit any any cos eq 0").describe(), "permit any any cos 0");
}

TEST(RuleParser, FaultyMacRuleIsRefusedWithItsColumn) {
  std::string const list = "mac access-list L";
  EXPECT_EQ(ruleError("permit 0011.2233 any", list),
            "t:2:8: expected source: any, host M or M [WILDCARD], found '0011.2233'");
  EXPECT_EQ(ruleError("permit any", list),
            "t:2:11: expected destination: any, host M or M [WILDCARD], found end of line");
  EXPECT_EQ(ruleError("permit host any any", list), "t:2:13: expected a MAC address, found 'any'");
  EXPECT_EQ(ruleError("permit any any vlan 4095", list),
            "t:2:21: expected vlan 1-4094, found '4095'");
  std::string const expected = "expected an Ethernet type, vlan, cos, log or end of line, found ";
  EXPECT_EQ(ruleError("permit any any 0x10000", list), "t:2:16: " + expected + "'0x10000'");
  EXPECT_EQ(ruleError("permit any any ip arp", list), "t:2:19: " + expected + "'arp'");
  EXPECT_EQ(ruleError("permit any any vlan 1 vlan 2", list), "t:2:23: " + expected + "'vlan'");
}

}  // namespace
}  // namespace PolicyMapTestKit::Text::test
