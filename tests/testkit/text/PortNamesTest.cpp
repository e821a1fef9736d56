// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/PortNames.h"

#include <gtest/gtest.h>

namespace PolicyMapTestKit::Text {
namespace {

TEST(PortNames, NamesAreThoseOfTheProtocol) {
  EXPECT_EQ(portNumber(protocol::tcp, "bgp"), 179);
  EXPECT_EQ(portNumber(protocol::udp, "bgp"), std::nullopt);
  EXPECT_EQ(portNumber(protocol::udp, "snmptrap"), 162);
  EXPECT_EQ(portNumber(protocol::tcp, "snmptrap"), std::nullopt);
}

TEST(PortNames, OneNameMayBeTwoPorts) {
  EXPECT_EQ(portNumber(protocol::tcp, "login"), 513);
  EXPECT_EQ(portNumber(protocol::tcp, "cmd"), 514);
  EXPECT_EQ(portNumber(protocol::tcp, "exec"), 512);
  EXPECT_EQ(portNumber(protocol::udp, "who"), 513);
  EXPECT_EQ(portNumber(protocol::udp, "biff"), 512);
}

TEST(PortNames, SctpKnowsTheNamesOfTcp) {
  EXPECT_EQ(portNumber(protocol::sctp, "https"), 443);
}

TEST(PortNames, CaseMeansNothing) {
  EXPECT_EQ(portNumber(protocol::tcp, "FTP-Data"), 20);
  EXPECT_EQ(protocolNumber(Family::ip4, "OSPF"), 89);
}

TEST(PortNames, UnknownNamesHaveNoNumber) {
  EXPECT_EQ(portNumber(protocol::tcp, ""), std::nullopt);
  EXPECT_EQ(portNumber(protocol::tcp, "bg"), std::nullopt);
  EXPECT_EQ(protocolNumber(Family::ip4, "ip"), std::nullopt);
  EXPECT_EQ(dscpNumber("af14"), std::nullopt);
  EXPECT_EQ(etherTypeNumber("novell"), std::nullopt);
  EXPECT_EQ(icmpMessage(protocol::icmp, "nd-ns"), std::nullopt);
}

TEST(PortNames, IcmpIsTheProtocolOfItsFamily) {
  EXPECT_EQ(protocolNumber(Family::ip4, "icmp"), 1);
  EXPECT_EQ(protocolNumber(Family::ip6, "icmp"), 58);
  EXPECT_EQ(protocolNumber(Family::ip4, "icmpv6"), 58);
}

TEST(PortNames, IcmpMessagesAreThoseOfTheProtocol) {
  EXPECT_EQ(icmpMessage(protocol::icmp, "echo"), (IcmpMessage{8, std::nullopt}));
  EXPECT_EQ(icmpMessage(protocol::icmp6, "echo"), (IcmpMessage{128, std::nullopt}));
  EXPECT_EQ(icmpMessage(protocol::icmp, "port-unreachable"), (IcmpMessage{3, 3}));
  EXPECT_EQ(icmpMessage(protocol::icmp6, "port-unreachable"), (IcmpMessage{1, 4}));
}

TEST(PortNames, DscpNamesFollowTheirRule) {
  for (unsigned group = 1; group <= 4; ++group) {
    for (unsigned drop = 1; drop <= 3; ++drop) {
      auto const name = "af" + std::to_string(group) + std::to_string(drop);
      EXPECT_EQ(dscpNumber(name), 8 * group + 2 * drop) << name;
    }
  }
  for (unsigned selector = 0; selector <= 7; ++selector) {
    EXPECT_EQ(dscpNumber("cs" + std::to_string(selector)), 8 * selector);
  }
  EXPECT_EQ(dscpNumber("ef"), 46);
  EXPECT_EQ(dscpNumber("default"), 0);
}

TEST(PortNames, PortsBelongToThreeProtocols) {
  EXPECT_TRUE(hasPorts(6) && hasPorts(17) && hasPorts(132));
  EXPECT_FALSE(hasPorts(0) || hasPorts(1) || hasPorts(47) || hasPorts(58));
}

}  // namespace
}  // namespace PolicyMapTestKit::Text
