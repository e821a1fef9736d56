// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/MatchConditions.h"

#include "testkit/text/ConditionReasons.h"
#include "testkit/text/RuleConversion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit::Text::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

MatchCondition conditionOf(std::string_view text) {
  Lexer lexer(text);
  std::optional<MatchCondition> const condition = takeCondition(lexer);
  EXPECT_TRUE(condition) << text;
  return condition.value_or(MatchCondition());
}

std::vector<std::string> rulesOfCondition(std::string_view text) {
  std::vector<std::string> lines;
  for (ConfiguredRule const& rule : conditionOf(text).rules) {
    lines.push_back(describe(rule));
  }
  return lines;
}

std::string conditionError(std::string_view text) {
  try {
    Lexer lexer(text);
    static_cast<void>(takeCondition(lexer));
  } catch (SyntaxFailure const& failure) {
    return std::to_string(failure.found.column) + ": " + failure.expected;
  }
  return "none";
}

TEST(MatchConditions, AreOfBothFamiliesUnlessTheyNameOne) {
  EXPECT_THAT(rulesOfCondition("dscp ef"),
              ElementsAre("permit ip any any dscp 46", "permit ipv6 any any dscp 46"));
  EXPECT_THAT(rulesOfCondition("ip dscp 40"), ElementsAre("permit ip any any dscp 40"));
  EXPECT_THAT(rulesOfCondition("ipv6 dscp cs5"), ElementsAre("permit ipv6 any any dscp 40"));
  EXPECT_THAT(rulesOfCondition("any"), ElementsAre("permit ip any any", "permit ipv6 any any"));
}

TEST(MatchConditions, ListsAreAlternatives) {
  EXPECT_THAT(rulesOfCondition("ip dscp af11 12 af11"),
              ElementsAre("permit ip any any dscp 10", "permit ip any any dscp 12"));
  EXPECT_EQ(conditionOf("IP  DSCP af11 12 af11").text, "ip dscp 10 12") << "canonical";
  EXPECT_THAT(rulesOfCondition("vlan 10 20"),
              ElementsAre("permit any any vlan 10", "permit any any vlan 20"));
}

TEST(MatchConditions, ListsMayHaveCommasAndRanges) {
  EXPECT_EQ(conditionOf("ip dscp 10,12-14,ef").text, "ip dscp 10 12 13 14 46");
  EXPECT_EQ(conditionOf("vlan 100-102 7").text, "vlan 100 101 102 7");
  EXPECT_EQ(conditionOf("precedence 1-2").text, "precedence 1 2");
  EXPECT_EQ(conditionOf("dscp ipv4 cs5").text, "ip dscp 40");
  EXPECT_THAT(rulesOfCondition("dscp ipv4 cs5"), ElementsAre("permit ip any any dscp 40"));
  EXPECT_THAT(rulesOfCondition("precedence ipv6 5"), SizeIs(8));
  EXPECT_EQ(conditionError("vlan 4000-5000"), "6: vlan 1-4094");
  EXPECT_EQ(conditionError("dscp 10,"), "6: dscp 0-63 or a DSCP name");
  EXPECT_EQ(conditionError("dscp 12-10"), "6: a range whose second value is not lower");
}

TEST(MatchConditions, APrecedenceIsEightCodePoints) {
  std::vector<std::string> const rules = rulesOfCondition("ip precedence critical");
  EXPECT_THAT(rules, SizeIs(8));
  EXPECT_EQ(rules.front(), "permit ip any any dscp 40");
  EXPECT_EQ(rules.back(), "permit ip any any dscp 47");
  EXPECT_THAT(rulesOfCondition("precedence 0 7"), SizeIs(32));
}

TEST(MatchConditions, ProtocolsAreWhatAHeaderTells) {
  EXPECT_THAT(rulesOfCondition("protocol ip"), ElementsAre("permit ip any any"));
  EXPECT_THAT(rulesOfCondition("protocol ipv6"), ElementsAre("permit ipv6 any any"));
  EXPECT_THAT(rulesOfCondition("protocol arp"), ElementsAre("permit any any ethertype 2054"));
  EXPECT_THAT(rulesOfCondition("protocol gre"),
              ElementsAre("permit gre any any", "permit gre any any"));
  EXPECT_THAT(rulesOfCondition("protocol 99"),
              ElementsAre("permit 99 any any", "permit 99 any any"));
  EXPECT_THAT(rulesOfCondition("protocol icmp"),
              ElementsAre("permit icmp any any", "permit icmp6 any any"));
}

TEST(MatchConditions, ServicesAreTheirWellKnownPorts) {
  EXPECT_THAT(rulesOfCondition("protocol HTTPS"),
              ElementsAre("permit tcp any any eq 443", "permit tcp any any eq 443"));
  EXPECT_THAT(rulesOfCondition("protocol dns"),
              ElementsAre("permit tcp any any eq 53", "permit tcp any any eq 53",
                          "permit udp any any eq 53", "permit udp any any eq 53"));
  EXPECT_THAT(rulesOfCondition("protocol tftp"),
              ElementsAre("permit udp any any eq 69", "permit udp any any eq 69"));
}

TEST(MatchConditions, PortsAreThoseOfTcpAndUdp) {
  EXPECT_THAT(rulesOfCondition("srcl4port 62500"),
              ElementsAre("permit tcp any eq 62500 any", "permit tcp any eq 62500 any",
                          "permit udp any eq 62500 any", "permit udp any eq 62500 any"));
  EXPECT_EQ(rulesOfCondition("dstl4port www").front(), "permit tcp any any eq 80");
}

TEST(MatchConditions, AddressesHaveSubnetMasks) {
  EXPECT_THAT(rulesOfCondition("srcip 10.1.0.0 255.255.0.0"),
              ElementsAre("permit ip 10.1.0.0/16 any"));
  EXPECT_THAT(rulesOfCondition("dstip 10.1.0.0/16"), ElementsAre("permit ip any 10.1.0.0/16"));
  EXPECT_THAT(rulesOfCondition("srcip6 2001:db8::/32"),
              ElementsAre("permit ipv6 2001:db8::/32 any"));
  EXPECT_THAT(rulesOfCondition("dstip6 2001:db8::/32"),
              ElementsAre("permit ipv6 any 2001:db8::/32"));
}

TEST(MatchConditions, EthernetTypesHaveNamesAndNumbers) {
  EXPECT_THAT(rulesOfCondition("ethertype arp"), ElementsAre("permit any any ethertype 2054"));
  EXPECT_THAT(rulesOfCondition("ethertype 0x88CC"), ElementsAre("permit any any ethertype 35020"));
}

TEST(MatchConditions, PrioritiesOfTagsAndLabelsAreMacRules) {
  EXPECT_THAT(rulesOfCondition("cos 5"), ElementsAre("permit any any cos 5"));
  EXPECT_THAT(rulesOfCondition("cos 0 2-3,7"),
              ElementsAre("permit any any cos 0", "permit any any cos 2", "permit any any cos 3",
                          "permit any any cos 7"));
  EXPECT_THAT(rulesOfCondition("not cos 0"), ElementsAre("deny any any cos 0", "permit any any"));
  EXPECT_EQ(conditionOf("cos 5").text, "cos 5");
  EXPECT_THAT(rulesOfCondition("mpls experimental topmost 3"),
              ElementsAre("permit any any mpls-experimental 3"));
  EXPECT_THAT(
      rulesOfCondition("mpls experimental 0 7"),
      ElementsAre("permit any any mpls-experimental 0", "permit any any mpls-experimental 7"));
  EXPECT_EQ(conditionOf("mpls experimental topmost 3").text, "mpls experimental 3");
}

TEST(MatchConditions, NotIsADenyBeforeEverythingElse) {
  EXPECT_THAT(rulesOfCondition("not ip dscp ef"),
              ElementsAre("deny ip any any dscp 46", "permit ip any any", "permit ipv6 any any"));
  EXPECT_THAT(rulesOfCondition("not vlan 10"),
              ElementsAre("deny any any vlan 10", "permit any any"));
  EXPECT_EQ(conditionOf("not dscp ef").text, "not dscp 46");
}

TEST(MatchConditions, WhatNoRuleSaysHasNoRulesButAReason) {
  struct Case {
    std::string_view text;
    std::string_view reason;
  };
  for (Case const& each : {Case{"cos inner 5", "rules do not have this field"},
                           Case{"mpls disposition class-map x", "rules cannot say it"},
                           Case{"not mpls experimental topmost 5", "rules cannot say it"},
                           Case{"packet length min 10", "rules do not have this field"},
                           Case{"qos-group 3", "a header does not tell it"},
                           Case{"discard-class 2", "a header does not tell it"},
                           Case{"application video", "a header does not tell it"},
                           Case{"protocol http url x", "a header does not tell it"},
                           Case{"protocol bittorrent", "a header does not tell it"},
                           Case{"not access-group name x", "rules cannot say it"},
                           Case{"ip rtp 16384 100", "rules cannot say it"}}) {
    MatchCondition const condition = conditionOf(each.text);
    EXPECT_THAT(condition.rules, IsEmpty()) << each.text;
    EXPECT_EQ(condition.text, each.text);
    EXPECT_EQ(reasonAgainst(condition.text), each.reason) << each.text;
  }
  EXPECT_EQ(reasonAgainst("something else"), "not understood");
}

TEST(MatchConditions, BadValuesAreErrorsAtTheirColumns) {
  EXPECT_EQ(conditionError("dscp 64"), "6: dscp 0-63 or a DSCP name");
  EXPECT_EQ(conditionError("dscp"), "5: dscp 0-63 or a DSCP name");
  EXPECT_EQ(conditionError("ip precedence 8"), "15: precedence 0-7 or its name");
  EXPECT_EQ(conditionError("vlan 0"), "6: vlan 1-4094");
  EXPECT_EQ(conditionError("srcl4port 65536"), "11: port 0-65535");
  EXPECT_EQ(conditionError("srcip 10.0.0.0"), "15: a subnet mask");
  EXPECT_EQ(conditionError("any more"), "5: another value or end of line");
  EXPECT_EQ(conditionError("ethertype x"), "11: an Ethernet type 0-0xffff or its name");
}

TEST(MatchConditions, AnUnknownOneIsNamedByItsBeginning) {
  std::string const line = "COLOUR  " + std::string(1000, 'x') + " more";
  Lexer lexer(line);
  MatchCondition const condition = unknownCondition(lexer);
  EXPECT_EQ(condition.text, "colour " + std::string(193, 'x'));
  EXPECT_TRUE(lexer.peek().atEnd());
}

TEST(MatchConditions, OtherLinesAreLeftAlone) {
  for (std::string_view const text : {"access-group name x", "ip tcp any any", "class-map x", "",
                                      "not", "not access", "nonsense 5"}) {
    Lexer lexer(text);
    EXPECT_FALSE(takeCondition(lexer)) << text;
    EXPECT_EQ(lexer.peek().column, Lexer(text).peek().column) << text;
  }
}

TEST(MatchConditions, FurtherFieldsAreKnown) {
  EXPECT_THAT(rulesOfCondition("ttl 1 255"),
              ElementsAre("permit ip any any ttl eq 1", "permit ipv6 any any ttl eq 1",
                          "permit ip any any ttl eq 255", "permit ipv6 any any ttl eq 255"));
  EXPECT_THAT(rulesOfCondition("ipv4 ttl 1"), ElementsAre("permit ip any any ttl eq 1"));
  EXPECT_THAT(rulesOfCondition("ipv4 icmp-type 8"), ElementsAre("permit icmp any any icmp-type 8"));
  EXPECT_THAT(rulesOfCondition("ipv6 icmp-type 128"),
              ElementsAre("permit icmp6 any any icmp-type 128"));
  EXPECT_THAT(rulesOfCondition("source-address ipv4 10.1.0.0 255.255.0.0"),
              ElementsAre("permit ip 10.1.0.0/16 any"));
  EXPECT_THAT(rulesOfCondition("destination-address ipv6 2001:db8::/32"),
              ElementsAre("permit ipv6 any 2001:db8::/32"));
  EXPECT_THAT(rulesOfCondition("source-address mac 0011.2233.4455"),
              ElementsAre("permit host 0011.2233.4455 any"));
  EXPECT_EQ(conditionError("destination-address mac x"), "25: a MAC address");
}

TEST(MatchConditions, RangesOfPortsAreOneRule) {
  EXPECT_THAT(
      rulesOfCondition("destination-port 80,1024-2000"),
      ElementsAre("permit tcp any any eq 80", "permit tcp any any eq 80",
                  "permit udp any any eq 80", "permit udp any any eq 80",
                  "permit tcp any any range 1024 2000", "permit tcp any any range 1024 2000",
                  "permit udp any any range 1024 2000", "permit udp any any range 1024 2000"));
  EXPECT_EQ(conditionOf("source-port 1024-2000 www").text, "source-port 1024-2000 80");
  EXPECT_EQ(conditionError("srcl4port 20-10"), "11: port 20-65535");
}

TEST(MatchConditions, ProtocolsMayBeAList) {
  EXPECT_THAT(
      rulesOfCondition("protocol udp arp"),
      ElementsAre("permit udp any any", "permit udp any any", "permit any any ethertype 2054"));
  EXPECT_THAT(rulesOfCondition("protocol tcp video"), IsEmpty());
  EXPECT_THAT(rulesOfCondition("protocol smtp extended"),
              ElementsAre("permit tcp any any eq 25", "permit tcp any any eq 25"));
  EXPECT_THAT(rulesOfCondition("protocol h323"),
              ElementsAre("permit tcp any any eq 1720", "permit tcp any any eq 1720"));
}

TEST(MatchConditions, AListMayContinueAfterItsComma) {
  EXPECT_EQ(conditionOf("dscp ef, cs5").text, "dscp 46 40");
}

}  // namespace
}  // namespace PolicyMapTestKit::Text::test
