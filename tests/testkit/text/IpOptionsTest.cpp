// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/IpOptions.h"

#include "testkit/Printers.h"
#include "testkit/text/Rules.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace PolicyMapTestKit::Text::test {
namespace {

// The type and code of the ICMP message that a rule matches.
std::string messageOf(Acl::IpFilterBase const& rule) {
  std::ostringstream text;
  text << rule.icmpType() << " " << rule.icmpCode();
  return text.str();
}

TEST(IpOptions, DscpIsANameOrANumber) {
  EXPECT_EQ(ipRule("permit ip any any dscp 63").dscp(), 63);
  EXPECT_EQ(ipRule("permit ip any any dscp AF11").dscp(), 10);
  EXPECT_EQ(ruleError("permit ip any any dscp 64"),
            "t:2:24: expected dscp 0-63 or a DSCP name, found '64'");
  EXPECT_EQ(ruleError("permit ip any any dscp 1 dscp 2"),
            "t:2:26: expected one dscp or precedence in a rule, found 'dscp'");
}

TEST(IpOptions, TtlComparisons) {
  EXPECT_EQ(ipRule("permit ip any any ttl 5").ttl(), Acl::TtlMatch::eq(5));
  EXPECT_EQ(ipRule("permit ip any any ttl eq 0").ttl(), Acl::TtlMatch::eq(0));
  EXPECT_EQ(ipRule("permit ip any any ttl neq 5").ttl(), Acl::TtlMatch::neq(5));
  EXPECT_EQ(ipRule("permit ip any any ttl lt 5").ttl(), Acl::TtlMatch::lt(5));
  EXPECT_EQ(ipRule("permit ip any any ttl gt 5").ttl(), Acl::TtlMatch::gt(5));
  EXPECT_EQ(ipRule("permit ip any any ttl range 5 6").ttl(), Acl::TtlMatch::range(5, 6));
  EXPECT_EQ(ruleError("permit ip any any ttl 256"), "t:2:23: expected ttl 0-255, found '256'");
  EXPECT_EQ(ruleError("permit ip any any ttl gt 255"), "t:2:26: expected ttl 0-254, found '255'");
  EXPECT_EQ(ruleError("permit ip any any ttl lt 0"), "t:2:26: expected ttl 1-255, found '0'");
  EXPECT_EQ(ruleError("permit ip any any ttl range 6 5"), "t:2:31: expected ttl 6-255, found '5'");
  EXPECT_EQ(ruleError("permit ip any any ttl 1 ttl 1"),
            "t:2:25: expected one ttl in a rule, found 'ttl'");
}

TEST(IpOptions, TcpFlags) {
  EXPECT_EQ(ipRule("permit tcp any any ack").tcpFlags(), Acl::TcpFlags(0x10, 0x10));
  EXPECT_EQ(ipRule("permit tcp any any fin syn rst psh ack urg").tcpFlags(),
            Acl::TcpFlags(0x3f, 0x3f));
  EXPECT_FALSE(ipRule("permit tcp any any ack rst").established());
  EXPECT_TRUE(ipRule("permit tcp any any ack-or-rst").ackOrRst());
  EXPECT_FALSE(ipRule("permit tcp any any established").ackOrRst());
  Acl::IpRuleConfig const established = ipRule("permit tcp any any established");
  EXPECT_TRUE(established.established());
  EXPECT_EQ(established.tcpFlags(), Acl::TcpFlags(0, 0));
  EXPECT_EQ(ruleError("permit udp any any established"),
            "t:2:20: expected protocol tcp before a TCP flag, found 'established'");
  EXPECT_EQ(ruleError("permit ip any any syn"),
            "t:2:19: expected protocol tcp before a TCP flag, found 'syn'");
}

TEST(IpOptions, IcmpMessages) {
  EXPECT_EQ(messageOf(ipRule("permit icmp any any")), "None None");
  EXPECT_EQ(messageOf(ipRule("permit icmp any any 3")), "3 None");
  EXPECT_EQ(messageOf(ipRule("permit icmp any any 3 4")), "3 4");
  EXPECT_EQ(messageOf(ipRule("permit icmp any any packet-too-big log")), "3 4");
  EXPECT_EQ(messageOf(ip6Rule("permit icmp any any echo-reply")), "129 None");
  EXPECT_EQ(ruleError("permit icmp any any 256"), "t:2:21: expected ICMP type 0-255, found '256'");
  EXPECT_EQ(ruleError("permit icmp any any 3 256"),
            "t:2:23: expected ICMP code 0-255, found '256'");
  EXPECT_EQ(ruleError("permit icmp any any echo 3"),
            "t:2:26: expected one ICMP message in a rule, found '3'");
}

TEST(IpOptions, OptionsStandInAnyOrder) {
  Acl::IpRuleConfig const rule =
      ipRule("permit tcp any any log ttl 1 fragments established dscp ef log-input");
  EXPECT_TRUE(rule.fragments());
  EXPECT_TRUE(rule.established());
  EXPECT_EQ(rule.dscp(), 46);
  EXPECT_EQ(rule.ttl(), Acl::TtlMatch::eq(1));
}

TEST(IpOptions, UnknownOptionIsRefusedWithItsColumn) {
  std::string const expected =
      "expected a rule option (dscp, ttl, established, ack-or-rst, a TCP flag, an "
      "ICMP message, fragments, precedence, log, time-range) "
      "or end of line, found ";
  EXPECT_EQ(ruleError("permit tcp any any eq 80 http-method get"),
            "t:2:26: " + expected + "'http-method'");
  EXPECT_EQ(ruleError("permit tcp any any eq 80 x y"), "t:2:26: " + expected + "'x'");
  EXPECT_EQ(ruleError("permit ip any any portgroup G"), "t:2:19: " + expected + "'portgroup'");
  EXPECT_EQ(ruleError("permit udp any any 3"), "t:2:20: " + expected + "'3'");
}

}  // namespace
}  // namespace PolicyMapTestKit::Text::test
