// SPDX-License-Identifier: Apache-2.0
#include "packets/RuleBoxes.h"

#include "packets/Packet.h"
#include "testkit/Lab.h"

#include <Acl/IpAclConfig.h>

#include <gmock/gmock.h>

namespace PolicyMapPackets::test {
namespace {

using PolicyMap::SubRuleData;
using PolicyMapTestKit::Lab;

Acl::IpRuleConfig ruleOf(std::string const& line) {
  Lab lab;
  lab.load("ip access-list l\n 10 " + line + "\n");
  return lab.acls()->ipAcl("l")->rule(10);
}

bool contain(std::vector<Box> const& boxes, Packet const& packet) {
  return std::any_of(boxes.begin(), boxes.end(),
                     [&](Box const& box) { return box.contains(packet.box()); });
}

// Whether a rule matches a packet.
bool matches(std::string const& line, std::string const& packet) {
  Packet const read(packet);
  return contain(boxesOf(ruleOf(line), read.box().space()), read);
}
bool matchesWith(std::string const& line, SubRuleData const& subRule, std::string const& packet) {
  Packet const read(packet);
  return contain(boxesOf(ruleOf(line), subRule, read.box().space()), read);
}

constexpr char const* web = "tcp 10.0.0.1:4000 > 192.0.2.80:80";
constexpr char const* fragment = "fragment 10.0.0.1 > 192.0.2.80 protocol 6";

TEST(RuleBoxes, AddressesAndProtocols) {
  EXPECT_TRUE(matches("permit ip any any", web));
  EXPECT_TRUE(matches("deny ip any any", web)) << "what it does to them is another question";
  EXPECT_TRUE(matches("permit tcp 10.0.0.0/8 host 192.0.2.80", web));
  EXPECT_FALSE(matches("permit tcp 11.0.0.0/8 any", web));
  EXPECT_FALSE(matches("permit tcp any host 192.0.2.81", web));
  EXPECT_FALSE(matches("permit udp any any", web));
  EXPECT_TRUE(matches("permit 47 any any", "ip 10.0.0.1 > 10.0.0.2 protocol 47"));
  EXPECT_FALSE(matches("permit 47 any any", "ip 10.0.0.1 > 10.0.0.2 protocol 50"));
  EXPECT_TRUE(matches("permit ip any any", "ip 10.0.0.1 > 10.0.0.2 protocol 255"));
  EXPECT_FALSE(matches("permit ip any any", "udp 2001:db8::1 > 2001:db8::2"));
}

TEST(RuleBoxes, PortsAreAskedOfPacketsThatHaveThem) {
  EXPECT_TRUE(matches("permit tcp any any eq 80", web));
  EXPECT_FALSE(matches("permit tcp any any neq 80", web));
  EXPECT_TRUE(matches("permit tcp any neq 80 any", web));
  EXPECT_TRUE(matches("permit tcp any gt 3999 any lt 81", web));
  EXPECT_FALSE(matches("permit tcp any any eq 80", fragment));
  EXPECT_TRUE(matches("permit tcp any any", fragment));
}

TEST(RuleBoxes, ARangeOfAllPortsAsksForPorts) {
  Acl::IpRuleConfig rule = ruleOf("permit tcp any any");
  rule.dstPortIs(Acl::PortMatch::range(0, 65535));
  Packet const first(web);
  Packet const later(fragment);
  EXPECT_TRUE(contain(boxesOf(rule, first.box().space()), first));
  EXPECT_TRUE(boxesOf(rule, later.box().space()).empty());
  SubRuleData const all(0, 65535, 0, 65535, 0, false, false);
  EXPECT_TRUE(contain(boxesOf(rule, all, first.box().space()), first));
  EXPECT_TRUE(boxesOf(rule, all, later.box().space()).empty());
  rule.dstPortIs(Acl::PortMatch::lt(0));
  EXPECT_TRUE(boxesOf(rule, first.box().space()).empty());
}

TEST(RuleBoxes, FlagsAreAskedOfTcp) {
  std::string const syn = std::string(web) + " syn";
  std::string const ack = std::string(web) + " ack";
  EXPECT_TRUE(matches("permit tcp any any syn", syn));
  EXPECT_FALSE(matches("permit tcp any any syn", ack));
  EXPECT_FALSE(matches("permit tcp any any syn", fragment));
  for (char const* const word : {"established", "ack-or-rst"}) {
    std::string const rule = std::string("permit tcp any any ") + word;
    EXPECT_TRUE(matches(rule, ack));
    EXPECT_TRUE(matches(rule, std::string(web) + " rst"));
    EXPECT_TRUE(matches(rule, std::string(web) + " rst ack"));
    EXPECT_FALSE(matches(rule, syn));
    EXPECT_FALSE(matches(rule, fragment));
  }
}

TEST(RuleBoxes, FragmentsAreAllButTheFirst) {
  EXPECT_TRUE(matches("permit tcp any any fragments", fragment));
  EXPECT_FALSE(matches("permit tcp any any fragments", web));
  EXPECT_FALSE(matches("permit udp any any fragments", fragment));
}

TEST(RuleBoxes, OtherFields) {
  std::string const marked = std::string(web) + " dscp 46 ttl 1";
  EXPECT_TRUE(matches("permit tcp any any dscp ef", marked));
  EXPECT_FALSE(matches("permit tcp any any dscp ef", web));
  EXPECT_TRUE(matches("permit tcp any any ttl lt 2", marked));
  EXPECT_FALSE(matches("permit tcp any any ttl gt 1", marked));
  EXPECT_TRUE(matches("permit icmp any any 8", "icmp 10.0.0.1 > 10.0.0.2 type 8 code 3"));
  EXPECT_FALSE(matches("permit icmp any any 8 0", "icmp 10.0.0.1 > 10.0.0.2 type 8 code 3"));
  EXPECT_FALSE(matches("permit icmp any any 8", "icmp 10.0.0.1 > 10.0.0.2"));
}

TEST(RuleBoxes, ASubRuleBoundsThePorts) {
  SubRuleData const upTo79(0, 65535, 0, 79, 0, false, false);
  SubRuleData const all(0, 65535, 0, 65535, 0, false, false);
  EXPECT_TRUE(matchesWith("permit tcp any any eq 79", all, web)) << "its bounds count";
  EXPECT_FALSE(matchesWith("permit tcp any any eq 80", upTo79, web));
  EXPECT_FALSE(matchesWith("permit tcp any any", upTo79, web));
  EXPECT_TRUE(matchesWith("permit tcp any any", all, web));
  EXPECT_TRUE(matchesWith("permit tcp any any", all, fragment)) << "it does not ask for ports";
  EXPECT_FALSE(matchesWith("permit tcp any any", upTo79, fragment));
}

TEST(RuleBoxes, Ip6RulesMatchIp6Packets) {
  Lab lab;
  lab.load("ipv6 access-list l\n 10 permit udp 2001:db8::/32 any eq 53\n");
  Acl::AnyRule const rule = lab.acls()->ip6Acl("l")->rule(10);
  Packet const packet("udp [2001:db8::1]:4000 > [2001:db9::1]:53");
  EXPECT_TRUE(contain(boxesOf(rule, packet.box().space()), packet));
  Packet const other("udp [2001:db9::1]:4000 > [2001:db9::1]:53");
  EXPECT_FALSE(contain(boxesOf(rule, other.box().space()), other));
  EXPECT_TRUE(boxesOf(rule, Packet(web).box().space()).empty());
}

}  // namespace
}  // namespace PolicyMapPackets::test
