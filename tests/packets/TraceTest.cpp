// SPDX-License-Identifier: Apache-2.0
#include "packets/Trace.h"

#include "packets/Labs.h"

namespace PolicyMapPackets::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

TEST(Trace, ShowsBothSides) {
  Lab lab;
  lab.load(policy);
  EXPECT_EQ(printed(traceOf(lab, "udp 10.0.0.1:4000 > 192.0.2.53:53")),
            "edge input ipv4      rest  rest 10  deny udp any any eq 53     leaves the class\n"
            "                     no class\n"
            "configuration        no class\n"
            "the same, as for every udp any any eq 53");
  EXPECT_EQ(printed(traceOf(lab, "tcp 10.0.0.1:4000 > 192.0.2.80:8005")),
            "edge input ipv4      web  web 20  permit tcp any any range 8000 8010  action1 1\n"
            "configuration        web  web 20  permit tcp any any range 8000 8010  action1 1\n"
            "the same, as for every tcp any any range 8000 8010");
}

TEST(Trace, ShowsWhatIsPassedOverOnRequest) {
  Lab lab;
  lab.load(policy);
  EXPECT_EQ(
      printed(traceOf(lab, "udp 10.0.0.1:1 > 192.0.2.53:53", {.passedOver = true})),
      "edge input ipv4      web   web  10  permit tcp any any eq 80            does not match\n"
      "                     web   web  20  permit tcp any any range 8000 8010  does not match\n"
      "                     rest  rest 10  deny udp any any eq 53              leaves the class\n"
      "                     rest  rest 20  permit ip any any                   the class was "
      "left\n"
      "                     no class\n"
      "configuration        no class\n"
      "the same, as for every udp any any eq 53");
}

TEST(Trace, ReadsDenyAsItIsTold) {
  Lab lab;
  lab.load(policy);
  lab.load("policy-map edge\n class all\nclass-map match-any all\n match access-group all\n"
           "ip access-list all\n 10 permit ip any any\n");
  auto const textOf = [&](DenyReading deny) {
    return printed(traceOf(lab, "udp 10.0.0.1:4000 > 192.0.2.53:53", {.deny = deny}));
  };
  EXPECT_THAT(textOf(DenyReading::nextClass), HasSubstr("the same, as"));
  EXPECT_THAT(textOf(DenyReading::stop), HasSubstr("ends\nconfiguration"));
  EXPECT_THAT(textOf(DenyReading::stop), HasSubstr("DIFFERENT, as"));
  EXPECT_THAT(textOf(DenyReading::entry), HasSubstr("53     action1 2\n"));
}

TEST(Trace, TakesTheOrderOfTheCalls) {
  Lab lab({.updateAction = true});
  lab.load(policy);
  lab.load("ip access-list web\n 5 deny tcp any any eq 80\n");  // all rules are added again
  EXPECT_THAT(printed(traceOf(lab, "tcp 10.0.0.1:4000 > 192.0.2.80:80")),
              HasSubstr("web   5  deny tcp any any eq 80"));
}

TEST(Trace, SaysWhyNothingIsProgrammedThere) {
  Lab lab({.layer3 = false});
  lab.load(policy);
  Trace const trace = traceOf(lab, "tcp 10.0.0.1:4000 > 192.0.2.80:80");
  EXPECT_EQ(trace.verdict, Verdict::notProgrammed);
  EXPECT_THAT(printed(trace), HasSubstr("NOT PROGRAMMED: no interface is eligible: Ethernet1"));
}

TEST(Trace, AnInterfaceMayNotCarryTheRules) {
  Lab lab;
  lab.load(std::string(policy) + "\ninterface Ethernet2\n no switchport\n"
                                 " service-policy input edge\n");
  std::string const packet = "tcp 10.0.0.1:4000 > 192.0.2.80:80";
  EXPECT_EQ(traceOf(lab, packet, {.selection = {.interface = "Ethernet1"}}).verdict, Verdict::same);
  EXPECT_EQ(traceOf(lab, packet, {.selection = {.interface = "Ethernet2"}}).reason,
            "not at Ethernet2: no IPv4 address");
  EXPECT_THAT(tracePacket(lab, readPacket(packet), {.selection = {.interface = "Ethernet3"}}),
              IsEmpty());
}

TEST(Trace, AsksTheTablesThatSeeThePacket) {
  Lab lab;
  lab.load("class-map match-any labelled\n match mpls experimental topmost 5\n"
           "class-map match-any priority\n match cos 5\n"
           "policy-map edge\n class labelled\n  set action1 1\n class priority\n  set action1 2\n"
           "interface Ethernet1\n switchport\n service-policy input edge\n");
  auto const subjectsOf = [&](char const* packet) {
    std::string subjects;
    for (Trace const& each : tracePacket(lab, readPacket(packet))) {
      EXPECT_EQ(each.verdict, Verdict::same) << each;
      subjects += each.subject + (each.recordedAs.className.empty() ? "" : " ") +
                  each.recordedAs.className + ";";
    }
    return subjects;
  };
  std::string const addresses = "mac 0011.2233.4455 > 00aa.bbcc.ddee ";
  EXPECT_EQ(subjectsOf((addresses + "cos 5").c_str()), "edge input mac priority;");
  EXPECT_EQ(subjectsOf((addresses + "mpls-label 7 mpls-experimental 5").c_str()),
            "edge input mac;edge input mpls labelled;");
  EXPECT_EQ(subjectsOf("tcp 10.0.0.1 > 10.0.0.2"), "");
}

TEST(Trace, AsJson) {
  Lab lab;
  lab.load(policy);
  EXPECT_EQ(jsonOf(traceOf(lab, "tcp 10.0.0.1:4000 > 192.0.2.80:80")).text(),
            R"({"subject":"edge input ipv4","packet":"tcp 10.0.0.1:4000 > 192.0.2.80:80",)"
            R"("verdict":"the same",)"
            R"("recorded":{"class":"web","action1":1,"action2":0,"action3":0},)"
            R"("recordedRules":[{"class":"web","acl":"web","seq":10,)"
            R"("match":"permit tcp any any eq 80","effect":"action1 1"}],)"
            R"("configured":{"class":"web","action1":1,"action2":0,"action3":0},)"
            R"("configuredRule":{"class":"web","acl":"web","seq":10,)"
            R"("match":"permit tcp any any eq 80","effect":"action1 1"},)"
            R"("around":"tcp any any eq 80"})");
}

}  // namespace
}  // namespace PolicyMapPackets::test
