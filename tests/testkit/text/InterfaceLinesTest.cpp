// SPDX-License-Identifier: Apache-2.0

// The lines of interfaces on real devices: what they become.

#include "testkit/Labs.h"
#include "testkit/Matchers.h"
#include "testkit/Problems.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace PolicyMapTestKit::test {
namespace {

using PolicyMap::ClassMapMatchOption;
using testing::AllOf;
using testing::ElementsAre;
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

TEST(Interfaces, OfOtherDialectsAreMappedAndShownAsTheyAreWritten) {
  Lab lab;
  lab.load(policyOfA +
           "interface Serial0/1/0:0\n ip address 192.0.2.1/30\n service-policy input p\n"
           "interface MgmtEth0/RSP0/CPU0/0\n ip address 192.0.2.5/30\n"
           " service-policy input p\n"
           "interface tunnel-ip7\n ip address 192.0.2.9/30\n service-policy input p\n"
           "interface lag 3\n service-policy input p\n"
           "interface Et5\n service-policy input p\n"
           "interface Ethernet6\n service-policy input p\n");
  EXPECT_THAT(lab.record("p"), OnInterfaces("Serial0/1/0/0", "Management0/0/0/0", "Tunnel7",
                                            "PortChannel3", "Ethernet5", "Ethernet6"));
  EXPECT_THAT(lab.explain("p").lines(),
              testing::ElementsAre("p/input ipv4: programmed at Et5, Ethernet6, Serial0/1/0:0, "
                                   "lag3, MgmtEth0/RSP0/CPU0/0, tunnel-ip7"));
  EXPECT_EQ(lab.nameOf(Vorel::IntfId("Ethernet5")), "Et5");
  EXPECT_EQ(lab.nameOf(Vorel::IntfId("Ethernet7")), "Ethernet7");
  lab.load("interface Ethernet5\n shutdown\n");
  EXPECT_EQ(lab.nameOf(Vorel::IntfId("Ethernet5")), "Et5") << "the name that was written first";
}

// The problems after a lenient reading.
std::vector<std::string> problemsAfter(std::string const& text) {
  Lab lab;
  lab.load(Text::SourceText("t", text), Text::Reading::lenient);
  std::vector<std::string> problems;
  for (Problem const& problem : findProblems(lab)) {
    problems.push_back(toText(problem));
  }
  return problems;
}

TEST(Places, ThatAreNoInterfacesAreExplained) {
  EXPECT_THAT(problemsAfter(policyOfA + "control-plane\n service-policy input p\n"),
              ElementsAre("policy-map p (input): not at control-plane, which is no interface that "
                          "carries policies"));
  EXPECT_THAT(problemsAfter(policyOfA + "control-plane\nservice-policy input p\n"),
              ElementsAre(HasSubstr("not at control-plane, which")))
      << "without indentation";
  EXPECT_THAT(
      problemsAfter(policyOfA + "interface nve1\n ip access-group a out\n"
                                " zone-member security z\n"),
      ElementsAre("access-group a (output): not at nve1, which is no interface that carries "
                  "policies",
                  "zone z: not at nve1, which is no interface that carries policies"));
  EXPECT_THAT(problemsAfter(policyOfA + "interface Ethernet1\n service instance 10 ethernet\n"
                                        "  encapsulation dot1q 10\n  service-policy input p\n"
                                        " shutdown\n"),
              ElementsAre(HasSubstr("not at Ethernet1 service instance 10 ethernet, which")));
  EXPECT_THAT(problemsAfter(policyOfA + "exit\nexit\nservice-policy in p\n"),
              ElementsAre(HasSubstr("not at the device, which")));
}

TEST(Places, AreEditedAsInterfacesAre) {
  Lab lab;
  auto const load = [&](std::string const& text) {
    lab.load(Text::SourceText("t", text), Text::Reading::lenient);
    return findProblems(lab).size();
  };
  EXPECT_EQ(load(policyOfA + "system qos\n service-policy type qos input p\n"), 1U);
  EXPECT_EQ(load("system qos\n service-policy type qos input p\n"), 1U) << "the same again";
  EXPECT_EQ(load("system qos\n no service-policy type qos input p\n"), 0U);
  EXPECT_EQ(load("interface nve1\n service-policy input p\n"), 1U);
  EXPECT_EQ(load("no interface nve1\n"), 0U);
}

TEST(Places, AnUnknownInterfaceIsAnErrorOfAStrictReadingAndCountedByALenientOne) {
  Lab lab;
  EXPECT_THAT([&] { lab.load("interface nve1\n"); },
              ThrowsMessage<Text::InputError>(HasSubstr("expected an interface name such as")));
  lab.load(Text::SourceText("t", "interface nve1\n shutdown\n"), Text::Reading::lenient);
  EXPECT_EQ(lab.skipped().byKind().at("interface (name)"), 1U);
}

TEST(Types, OfOneDirectionDoNotReplaceEachOther) {
  std::string const q = "policy-map type queuing q\n class a\n";
  EXPECT_THAT(
      problemsAfter(policyOfA + q +
                    "interface Ethernet1\n service-policy type qos output p\n"
                    " service-policy type queuing output q\n"),
      ElementsAre("policy-map q of type queuing (output): not at Ethernet1: policy-map p is "
                  "attached there in that direction"));
  Lab lab;
  lab.load(Text::SourceText(
               "t", policyOfA + q + "interface Ethernet1\n service-policy type queuing output q\n"),
           Text::Reading::lenient);
  EXPECT_THAT(lab.record("q of type queuing", "output"), OnInterfaces("Ethernet1"))
      << "if it is the only one";
  lab.load(Text::SourceText("t", "interface Ethernet1\n no service-policy type queuing output q\n"),
           Text::Reading::lenient);
  EXPECT_THAT(lab.explain(), testing::IsEmpty());
}

TEST(AccessGroupLines, MayHavePriorities) {
  Lab lab;
  lab.load(policyOfA + "ip access-list b\n 10 permit tcp any any eq 2\n"
                       "interface Ethernet1\n ip access-group b in 2\n ip access-group a in 1\n");
  EXPECT_THAT(lab.record("access-group a,b"),
              RulesAre("a 10 permit tcp any any eq 1", "b 10 permit tcp any any eq 2"));
  lab.load("interface Ethernet1\n no ip access-group a in\n");
  EXPECT_THAT(lab.record("access-group b"), RulesAre("b 10 permit tcp any any eq 2"));
  lab.load("interface Ethernet1\n no ip access-group in\n");
  EXPECT_THAT(lab.explain(), testing::IsEmpty());
}

TEST(AccessGroupLines, OfPortsAndOldTextsAreTaken) {
  Lab lab;
  lab.load(policyOfA + "interface Ethernet1\n ip port access-group a in\n"
                       "interface Ethernet2\n ip access-group a\n");
  EXPECT_THAT(lab.record("access-group a"), OnInterfaces("Ethernet1"));
  EXPECT_THAT(lab.record("access-group a", "output"), OnInterfaces("Ethernet2"));
}

TEST(Interfaces, WordsAfterAnAttachmentAreTaken) {
  for (char const* const tail :
       {"no-stats", "account user-defined 4", "subscriber-parent", "shared-policy-instance spi"}) {
    Lab lab;
    lab.load(policyOfA + "interface Ethernet1\n service-policy input p " + tail + "\n");
    EXPECT_THAT(lab.record("p"), OnInterfaces("Ethernet1")) << tail;
  }
}

TEST(Types, WithAndWithoutAWordAreToldApart) {
  EXPECT_THAT(problemsAfter(policyOfA + "policy-map q\n class a\n"
                                        "interface Ethernet1\n service-policy type qos input p\n"
                                        " service-policy type inspect input q\n"),
              ElementsAre(HasSubstr("policy-map q of type inspect (input): not at Ethernet1")));
}

TEST(Places, ALineThatWouldAttachSomethingIsExplained) {
  EXPECT_THAT(problemsAfter(policyOfA + "interface Ethernet1\n ip access-group a sideways\n"),
              ElementsAre("'ip access-group a sideways': not at Ethernet1: the line was skipped"));
  EXPECT_THAT(problemsAfter(policyOfA + "interface Ethernet1\n service-policy p\n"),
              ElementsAre(HasSubstr("'service-policy p': not at Ethernet1")));
  EXPECT_THAT(problemsAfter(policyOfA + "control-plane\n service-policy p\n"),
              ElementsAre(HasSubstr("'service-policy p': not at control-plane")));
  EXPECT_THAT(problemsAfter(policyOfA + "interface Ethernet1\n ip igmp access-group a\n"),
              testing::IsEmpty());
}

TEST(Places, GoWithTheirInterface) {
  Lab lab;
  lab.load(Text::SourceText("t", policyOfA + "interface Ethernet1\n service instance 1 ethernet\n"
                                             "  service-policy input p\n"),
           Text::Reading::lenient);
  EXPECT_EQ(findProblems(lab).size(), 1U);
  lab.load("no interface Ethernet1\n");
  EXPECT_THAT(findProblems(lab), testing::IsEmpty());
}

TEST(AccessGroupLines, EndAfterTheirDirection) {
  Lab lab;
  for (char const* const line :
       {"ip access-group a in out", "ip access-group a in 5 foo", "no ip access-group a in foo"}) {
    EXPECT_THROW(lab.load("interface Ethernet1\n " + std::string(line) + "\n"), Text::InputError)
        << line;
  }
  lab.load(policyOfA + "interface Ethernet1\n ip access-group a in hardware-count\n"
                       "interface Ethernet2\n ip port access-group a\n");
  EXPECT_THAT(lab.record("access-group a"), OnInterfaces("Ethernet1", "Ethernet2"));
}

TEST(AccessGroupLines, OfSeveralFamiliesWithOneNameAreToldApart) {
  Lab lab;
  lab.load("ip access-list A\n permit tcp any any\nipv6 access-list A\n permit udp any any\n"
           "interface Ethernet1\n ip address 192.0.2.1/24\n ipv6 address 2001:db8:1::1/64\n"
           " ip access-group A in\n"
           "interface Ethernet2\n ip address 192.0.3.1/24\n ipv6 address 2001:db8:2::1/64\n"
           " ipv6 traffic-filter A in\n");
  EXPECT_THAT(lab.record("access-group A"), OnInterfaces("Ethernet1"));
  EXPECT_EQ(lab.record("access-group A").option, ClassMapMatchOption::ipv4);
  EXPECT_THAT(lab.record("access-group ipv6 A"), OnInterfaces("Ethernet2"));
  EXPECT_EQ(lab.record("access-group ipv6 A").option, ClassMapMatchOption::ipv6);
}

TEST(Types, OfClassMapsAndPolicyMapsAreToldApart) {
  Lab lab;
  lab.load(Text::SourceText("t", "class-map type qos match-any X\n match dscp ef\n"
                                 "class-map type control-plane match-any X\n match protocol tcp\n"
                                 "policy-map type qos P\n class type qos X\n  set dscp 1\n"
                                 "policy-map type queuing P\n class type control-plane X\n"
                                 "interface Ethernet1\n ip address 192.0.2.1/24\n"
                                 " service-policy type qos input P\n"
                                 " service-policy type queuing output P\n"),
           Text::Reading::lenient);
  EXPECT_THAT(lab.record("P", "input", ClassMapMatchOption::ipv4),
              RulesAre("10 permit ip any any dscp 46"));
  EXPECT_THAT(lab.record("P of type queuing", "output", ClassMapMatchOption::ipv4),
              RulesAre("10 permit tcp any any"));
  lab.load(Text::SourceText("t", "no class-map type control-plane X\n"), Text::Reading::lenient);
  EXPECT_THAT(lab.record("P", "input", ClassMapMatchOption::ipv4), Programmed());
  EXPECT_THAT(lab.record("P of type queuing", "output", ClassMapMatchOption::ipv4),
              RulesAre("10 permit ip any any dscp 46"))
      << "the class-map without a type";
}

}  // namespace
}  // namespace PolicyMapTestKit::test
