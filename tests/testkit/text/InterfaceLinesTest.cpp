// SPDX-License-Identifier: Apache-2.0

// The lines of interfaces on real devices: what they become.

#include "testkit/Labs.h"
#include "testkit/Matchers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace PolicyMapTestKit::test {
namespace {

using PolicyMap::ClassMapMatchOption;
using testing::AllOf;
using testing::HasSubstr;
using testing::ThrowsMessage;

std::string const policyOfA = "ip access-list a\n 10 permit tcp any any eq 1\n"
                              "class-map match-any a\n match access-group a\n"
                              "policy-map p\n class a\n";

TEST(Interfaces, BareNumbersAreEthernetOrADeclaredPortChannel) {
  Lab lab;
  lab.load(policyOfA + "port-channel name 1/10 uplink\n"
                       "interface 0/13\n addport 1/10\n"
                       "interface 1/10\n service-policy in p\n"
                       "interface 0/9\n service-policy in p\n");
  EXPECT_THAT(lab.record("p"), OnInterfaces("Ethernet0/9", "PortChannel10"));
  EXPECT_THAT(lab.lag()->memberOf(Vorel::IntfId("Ethernet0/13")), Vorel::IntfId("PortChannel10"));
  EXPECT_THAT([&] { lab.load("interface 0/1\n addport 2/2\n"); },
              ThrowsMessage<Text::InputError>(
                  HasSubstr("expected the name of a port-channel that exists, found '2/2'")));
}

TEST(Interfaces, OfARangeHaveTheSameLines) {
  for (char const* const range :
       {"range Ethernet1/1 - 3 , Ethernet2", "range Ethernet1/1-3,Ethernet2",
        "Ethernet1/1-3,Ethernet2", "range Ethernet1/1 - Ethernet1/3, Ethernet2"}) {
    Lab lab;
    lab.load(policyOfA + "interface " + range + "\n service-policy input p\n");
    EXPECT_THAT(lab.record("p"),
                OnInterfaces("Ethernet1/1", "Ethernet1/2", "Ethernet1/3", "Ethernet2"))
        << range;
    lab.load("interface Ethernet9\n shutdown\nno interface range Ethernet1/1 - 2\n");
    EXPECT_THAT(lab.record("p"), OnInterfaces("Ethernet1/3", "Ethernet2"));
  }
  Lab lab;
  EXPECT_THAT([&] { lab.load("interface range Ethernet1/3 - 1\n"); },
              ThrowsMessage<Text::InputError>(HasSubstr("1:17: expected interfaces such as")));
  EXPECT_THAT([&] { lab.load("interface range Ethernet1 - 1025\n"); },
              ThrowsMessage<Text::InputError>(HasSubstr("at most 1024")));
}

TEST(Interfaces, TheOtherDialectIsTaken) {
  Lab lab;
  lab.load("ipv4 access-list a\n 10 permit ipv4 any any dscp ef\n 20 deny ipv4 any any\n!\n"
           "ipv6 access-list b\n sequence 10 permit tcp any any eq 80\n"
           "class-map match-any a\n match access-group ipv4 a\n end-class-map\n!\n"
           "policy-map p\n class a\n  police rate 10 mbps\n   conform-action transmit\n  !\n !\n"
           " class class-default\n !\n end-policy-map\n!\n"
           "interface TenGigE0/1/0/3\n bundle id 10 mode active\n!\n"
           "interface Bundle-Ether10\n service-policy input p\n"
           " ipv4 address 192.0.2.1 255.255.255.0\n!\n"
           "interface TenGigE0/1/0/4.100\n ipv6 access-group b ingress\n"
           " ipv6 address 2001:db8::1/64\n");
  EXPECT_THAT(lab.record("p", "input", ClassMapMatchOption::ipv4),
              AllOf(HasRule("a 10", "permit ip any any dscp ef", Action2(10000)),
                    OnInterfaces("PortChannel10")));
  EXPECT_THAT(lab.record("access-group b", "input", ClassMapMatchOption::ipv6),
              AllOf(RulesAre("b 10 permit tcp any any eq 80"),
                    OnInterfaces("TenGigabitEthernet0/1/0/4.100")));
}

TEST(Interfaces, AnAddressThatIsNotSaidCounts) {
  for (char const* const line : {"ip address dhcp", "ip unnumbered Loopback0"}) {
    Lab lab;
    lab.load(policyOfA + "interface Vlan7\n service-policy input p\n " + line + "\n");
    EXPECT_THAT(lab.record("p"), OnInterfaces("Vlan7")) << line;
  }
  for (char const* const line : {"ipv6 enable", "ipv6 address FE80::1 link-local",
                                 "ipv6 address 2001:db8::/64 eui-64", "ipv6 address autoconfig"}) {
    Lab lab;
    lab.load("ipv6 access-list s\n permit ipv6 any any\n"
             "interface Vlan7\n ipv6 traffic-filter s in\n " +
             std::string(line) + "\n");
    EXPECT_THAT(lab.record("access-group s"), OnInterfaces("Vlan7")) << line;
  }
}

TEST(Interfaces, HowAPortIsSwitchedDoesNotCount) {
  Lab lab;
  lab.load(policyOfA + "interface Ethernet1\n switchport mode trunk\n"
                       " switchport trunk allowed vlan 1,103\n service-policy input p\n");
  EXPECT_THAT(lab.explain(), AllProgrammed());
}

}  // namespace
}  // namespace PolicyMapTestKit::test
