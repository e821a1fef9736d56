// SPDX-License-Identifier: Apache-2.0

// Entries of access lists as real devices show them: what rules they become.

#include "testkit/Labs.h"
#include "testkit/Matchers.h"
#include "testkit/Problems.h"
#include "testkit/text/Parsing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace PolicyMapTestKit::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

// The rules of a list with this entry, without the name and number of the entry.
std::vector<std::string> rulesOfEntry(std::string const& entry,
                                      std::string const& kind = "ip access-list") {
  Lab lab;
  std::string const group = kind.substr(0, kind.find(' ')) + " access-group L in\n";
  lab.load(kind + " L\n " + entry +
           "\ninterface Ethernet1\n ip address 192.0.2.1/24\n"
           " ipv6 address 2001:db8::1/64\n " +
           group);
  std::vector<std::string> rules;
  for (RuleRecord const& rule : lab.record("access-group L")) {
    rules.push_back(rule.matchText());
  }
  return rules;
}

TEST(Entries, SeveralPortsAreARuleEach) {
  EXPECT_THAT(rulesOfEntry("permit tcp any any eq www 443 www 8080"),
              ElementsAre("permit tcp any any eq 80", "permit tcp any any eq 443",
                          "permit tcp any any eq 8080"));
  EXPECT_THAT(rulesOfEntry("permit udp any eq 67 68 any eq bootps bootpc"),
              ElementsAre("permit udp any eq 67 any eq 67", "permit udp any eq 67 any eq 68",
                          "permit udp any eq 68 any eq 67", "permit udp any eq 68 any eq 68"));
  EXPECT_THAT(
      rulesOfEntry("permit tcp any any eq 22 telnet established log"),
      ElementsAre("permit tcp any any eq 22 established", "permit tcp any any eq 23 established"));
}

TEST(Entries, PortsThatAreNoneOfSeveralAreTheRangesBetweenThem) {
  EXPECT_THAT(rulesOfEntry("permit tcp any any neq 80 0 22 65535 23"),
              ElementsAre("permit tcp any any range 1 21", "permit tcp any any range 24 79",
                          "permit tcp any any range 81 65534"));
  EXPECT_THAT(rulesOfEntry("permit tcp any any neq 1 3"),
              ElementsAre("permit tcp any any eq 0", "permit tcp any any eq 2",
                          "permit tcp any any range 4 65535"));
}

TEST(Entries, SeveralPortsAreRemovedAsTheyWereWritten) {
  Lab lab;
  lab.load("ip access-list L\n permit tcp any any eq 80 443\n permit ip any any\n"
           "interface Ethernet1\n ip access-group L in\n");
  EXPECT_THAT(lab.record("access-group L"),
              RulesAre("L 10 permit tcp any any eq 80", "L 11 permit tcp any any eq 443",
                       "L 20 permit ip any any"));
  lab.load("ip access-list L\n no permit tcp any any eq www 443\n");
  EXPECT_THAT(lab.record("access-group L"), RulesAre("L 20 permit ip any any"));
}

TEST(Entries, OneRuleHasOnePort) {
  EXPECT_EQ(Text::test::errorOf("class-map C\n match ip tcp any any eq 80 443\n")
                .find("t:2:29: expected a rule"),
            0U);
}

TEST(Entries, TcpFlagsMayBeSigned) {
  EXPECT_THAT(rulesOfEntry("permit tcp any any match-all +syn -ack"),
              ElementsAre("permit tcp any any +syn -ack"));
  EXPECT_THAT(rulesOfEntry("permit tcp any any flag +fin"), ElementsAre("permit tcp any any +fin"));
  EXPECT_THAT(
      rulesOfEntry("permit tcp any any match-any +syn -ack ece"),
      ElementsAre("permit tcp any any +syn", "permit tcp any any -ack", "permit tcp any any +ece"));
  EXPECT_THAT(rulesOfEntry("permit tcp any any +syn -syn"), ElementsAre("permit tcp any any -syn"));
  EXPECT_THAT(Text::test::errorOf("ip access-list L\n permit udp any any match-all +syn\n"),
              HasSubstr("2:21: expected protocol tcp before a TCP flag, found 'match-all'"));
  EXPECT_THAT(Text::test::errorOf("ip access-list L\n permit tcp any any match-any syn,ack\n"),
              HasSubstr("2:31: expected a TCP flag such as +syn, found 'syn,ack'"));
}

TEST(Entries, WhatADeviceDoesBesidesMatchingIsTaken) {
  for (char const* const tail :
       {"log", "log MYTAG", "log-input TAG", "reflect R", "reflect R timeout 60",
        "time-range T log", "assign-queue 3", "mirror 0/1", "redirect 0/1", "rate-limit 1024 64",
        "counter C", "capture session 1", "nexthop1 ipv4 10.0.0.2", "set qos-group 5",
        "police 100 mbps", "icmp-off", "tracked"}) {
    EXPECT_THAT(rulesOfEntry("permit tcp any any eq 80 " + std::string(tail)),
                ElementsAre("permit tcp any any eq 80"))
        << tail;
  }
  EXPECT_THAT(
      rulesOfEntry("permit 10.0.0.0 0.255.255.255 assign-queue 3", "ip access-list standard"),
      ElementsAre("permit ip 10.0.0.0/8 any"));
  // Only the last word may be a tag.
  EXPECT_THAT(Text::test::errorOf("ip access-list L\n permit ip any any log A B\n"),
              HasSubstr("found 'A'"));
  EXPECT_THAT(Text::test::errorOf("ip access-list L\n permit ip any any A\n"),
              HasSubstr("found 'A'"));
}

TEST(Entries, EveryIsEveryPacket) {
  EXPECT_THAT(rulesOfEntry("permit every"), ElementsAre("permit ip any any"));
  EXPECT_THAT(rulesOfEntry("deny every log"), ElementsAre("deny ip any any"));
  Lab lab;
  lab.load("access-list 5 permit every\ninterface Ethernet1\n ip access-group 5 in\n");
  EXPECT_THAT(lab.record("access-group 5"), RulesAre("5 10 permit ip any any"));
}

TEST(Entries, OfIp6ListsMayEndWithTheirNumber) {
  Lab lab;
  lab.load("ipv6 access-list L\n permit tcp any any eq 80 sequence 30\n"
           " permit udp any any log sequence 20\ninterface Ethernet1\n"
           " ipv6 traffic-filter L in\n ipv6 address 2001:db8::1/64\n");
  EXPECT_THAT(lab.record("access-group L"),
              RulesAre("L 20 permit udp any any", "L 30 permit tcp any any eq 80"));
  EXPECT_EQ(Text::test::errorOf("ipv6 access-list L\n permit udp any any sequence 0\n"),
            "t:2:30: expected sequence number 1-4294967295, found '0'");
}

TEST(Entries, MoreNamesOfMacTypesAreKnown) {
  EXPECT_THAT(rulesOfEntry("permit any any 0x8137 0x0", "mac access-list"),
              ElementsAre("permit any any ethertype 33079"));
  EXPECT_THAT(rulesOfEntry("permit any any aarp vlan eq 10", "mac access-list"),
              ElementsAre("permit any any ethertype 33011 vlan 10"));
}

TEST(Entries, ThatARuleCannotSayAreUnderstoodAndReported) {
  for (char const* const entry :
       {"permit igmp any any host-report", "permit ip any any tos 4",
        "permit ip any any option any-options", "permit tcp any any packet-length 100"}) {
    auto const text = Text::test::readText("ip access-list L\n " + std::string(entry) + "\n",
                                           Text::Reading::lenient);
    EXPECT_EQ(text.skipped.total(), 1U) << entry;
    EXPECT_EQ(text.skipped.understood(), 2U) << entry;
    EXPECT_EQ(text.skipped.missed(), 0U) << entry;
  }
}

TEST(Entries, SettingsOfAllListsAreNoList) {
  for (char const* const line :
       {"ip access-list resequence L 10 10", "access-list compiled",
        "ip access-list logging interval 10", "ip access-list log-update threshold 1000"}) {
    EXPECT_THAT(Text::test::readText(line).statements, SizeIs(0)) << line;
  }
  EXPECT_THAT(Text::test::readText("ip access-list logging").statements, SizeIs(1)) << "a name";
  EXPECT_EQ(Text::test::errorOf("access-list compiled now"),
            "t:1:22: expected end of line, found 'now'");
}

TEST(Entries, NumberedEntriesCountAsLinesAboutPolicies) {
  auto const text = Text::test::readText("access-list 10 permit any\naccess-list 10 remark r\n"
                                         "access-list 900 permit any\n",
                                         Text::Reading::lenient);
  EXPECT_EQ(text.skipped.understood(), 2U);
  EXPECT_EQ(text.skipped.missed(), 1U);
}

// What is lost ---------------------------------------------------------------------------

// The rules and problems of a list that is read leniently.
struct Lost {
  std::vector<std::string> rules;
  std::vector<std::string> problems;
};
Lost lostOf(std::string const& text, Text::Reading reading = Text::Reading::lenient) {
  Lab lab;
  lab.load(Text::SourceText("t", text + "interface Ethernet1\n ip address 192.0.2.1/24\n"
                                        " ip access-group L in\n"),
           reading);
  Lost lost;
  for (Record const& record : lab.snapshot()) {
    for (RuleRecord const& rule : record) {
      lost.rules.push_back(rule.matchText());
    }
  }
  for (Problem const& problem : findProblems(lab)) {
    lost.problems.push_back(toText(problem));
  }
  return lost;
}

TEST(LostEntries, APermitIsAProblem) {
  Lost const lost = lostOf("ip access-list L\n permit ip any any tos 4\n permit tcp any any\n");
  EXPECT_THAT(lost.rules, ElementsAre("permit tcp any any"));
  EXPECT_THAT(lost.problems, ElementsAre("access-list L: the permit at t:2:2 was skipped"));
}

TEST(LostEntries, ADenyWhoseGroupIsMissingCutsTheList) {
  std::string const text = "ip access-list L\n permit tcp any any\n"
                           " deny ip object-group G any\n permit ip any any\n";
  Lost const lost = lostOf(text);
  EXPECT_THAT(lost.rules, ElementsAre("permit tcp any any"));
  EXPECT_THAT(lost.problems,
              ElementsAre("access-list L: t:3:2: expected the name of an object-group that exists, "
                          "found 'G', so the entries after it are left out"));
  Lost const widened = lostOf(text, Text::Reading::widening);
  EXPECT_THAT(widened.rules, ElementsAre("permit tcp any any", "permit ip any any"));
  EXPECT_THAT(widened.problems, SizeIs(1));
}

TEST(LostEntries, ADenyWhoseGroupLostAMemberCutsTheList) {
  std::string const text = "object-group network G\n host 10.0.0.1\n colour red\n"
                           "ip access-list L\n permit tcp object-group G any\n"
                           " deny ip object-group G any\n permit ip any any\n";
  Lost const lost = lostOf(text);
  EXPECT_THAT(lost.rules, ElementsAre("permit tcp host 10.0.0.1 any"));
  EXPECT_THAT(lost.problems,
              ElementsAre("access-list L: t:6:2: expected an object-group whose members are "
                          "understood, which that at t:3:2 is not, found 'G', so the entries after "
                          "it are left out"));
  EXPECT_THAT(lostOf(text, Text::Reading::widening).rules,
              ElementsAre("permit tcp host 10.0.0.1 any", "deny ip host 10.0.0.1 any",
                          "permit ip any any"));
}

TEST(LostEntries, APermitWithoutItsGroupIsAProblem) {
  Lost const lost =
      lostOf("ip access-list L\n permit ip object-group G any\n permit tcp any any\n");
  EXPECT_THAT(lost.rules, ElementsAre("permit tcp any any"));
  EXPECT_THAT(lost.problems, ElementsAre(HasSubstr("access-list L: t:2:2: expected the name of")));
}

// Object-groups in more spellings -------------------------------------------------------

TEST(GroupSpellings, OfOtherDialectsAreTaken) {
  Lab lab;
  lab.load("object-group network ipv4 A\n 10 host 10.0.0.1\n 20 10.1.0.0/16\n 10.2.0.0 /24\n"
           "object-group network ipv4 B\n object-group A\n"
           "object-group port P\n eq 80\n 20 range 90 99\n"
           "object-group service S\n tcp 8443\n"
           "object-group service I\n ip\n"
           "ip access-list L\n permit tcp net-group B any port-group P\n"
           " permit object-group S any any\n permit object-group I any host 10.0.0.9\n"
           "interface Ethernet1\n ip access-group L in\n");
  EXPECT_THAT(lab.record("access-group L"),
              RulesAre("L 10 permit tcp host 10.0.0.1 any eq 80",
                       "L 11 permit tcp host 10.0.0.1 any range 90 99",
                       "L 12 permit tcp 10.1.0.0/16 any eq 80",
                       "L 13 permit tcp 10.1.0.0/16 any range 90 99",
                       "L 14 permit tcp 10.2.0.0/24 any eq 80",
                       "L 15 permit tcp 10.2.0.0/24 any range 90 99",
                       "L 20 permit tcp any any eq 8443", "L 30 permit ip any host 10.0.0.9"));
  EXPECT_EQ(Text::test::errorOf("object-group network A\n 10.0.0.0 /33\n"),
            "t:2:11: expected the length of a prefix, found '/33'");
}

TEST(LostEntries, OfNumberedListsAreKeptToo) {
  Lab lab;
  lab.load(Text::SourceText("t", "access-list 101 permit tcp any any eq 5\n"
                                 "access-list 101 deny tcp any any foo\n"
                                 "access-list 101 permit ip any any\n"
                                 "interface Ethernet1\n ip access-group 101 in\n"),
           Text::Reading::lenient);
  EXPECT_THAT(lab.record("access-group 101"), RulesAre("101 10 permit tcp any any eq 5"));
  EXPECT_THAT(findProblems(lab), SizeIs(1));
}

TEST(LostEntries, AnUnknownLineWithADenyCutsTheList) {
  for (char const* const line : {"30 dynamic D deny ip any any", "rule 5 deny ip any any",
                                 "drop ip any any", "99999999999 deny ip any any"}) {
    Lost const lost = lostOf("ip access-list L\n permit tcp any any\n " + std::string(line) +
                             "\n permit ip any any\n");
    EXPECT_THAT(lost.rules, ElementsAre("permit tcp any any")) << line;
    EXPECT_THAT(lost.problems, ElementsAre(HasSubstr("the deny at t:3:2 was skipped, so"))) << line;
  }
  Lost const lost = lostOf("ip access-list L\n evaluate R\n permit ip any any\n");
  EXPECT_THAT(lost.rules, ElementsAre("permit ip any any"));
  EXPECT_THAT(lost.problems, ElementsAre("access-list L: the line at t:2:2 was skipped"));
}

TEST(LostEntries, ADenyCutsTheListWhereItsNumberIs) {
  Lab lab;
  lab.load(Text::SourceText("t", "ipv6 access-list L\n permit tcp any any sequence 20\n"
                                 " permit udp any any sequence 5\n"
                                 " deny ipv6 any any foo sequence 10\n"
                                 "interface Ethernet1\n ipv6 address 2001:db8::1/64\n"
                                 " ipv6 traffic-filter L in\n"),
           Text::Reading::lenient);
  EXPECT_THAT(lab.record("access-group L"), RulesAre("L 5 permit udp any any"));
}

TEST(LostEntries, WhatFollowsACutListInItsClassIsLeftOut) {
  std::string const text =
      "ip access-list L\n permit tcp any any eq 22\n deny tcp any any foo\n"
      "ip access-list M\n permit tcp any any eq 80\n"
      "ipv6 access-list N\n permit udp any any\n"
      "class-map match-any C\n match access-group L\n match access-group M\n"
      " match ipv6 access-group N\npolicy-map P\n class C\n"
      "interface Ethernet2\n ip address 192.0.2.5/30\n"
      " ipv6 address 2001:db8::1/64\n service-policy input P\n"
      "interface Ethernet3\n ip access-group L in 1\n ip access-group M in 2\n";
  auto const rules = [&](Text::Reading reading) {
    Lab lab;
    lab.load(Text::SourceText("t", text), reading);
    std::vector<std::string> all;
    for (Record const& record : lab.snapshot()) {
      for (RuleRecord const& rule : record) {
        all.push_back(record.policy + ": " + rule.matchText());
      }
    }
    return all;
  };
  EXPECT_THAT(rules(Text::Reading::lenient),
              ElementsAre("P: permit tcp any any eq 22", "P: permit udp any any",
                          "access-group L,M: permit tcp any any eq 22"));
  EXPECT_THAT(rules(Text::Reading::widening), SizeIs(5));
}

TEST(Entries, ThatLeaveNoNumberForTheirRulesAreErrors) {
  auto const errorAfter = [](std::string const& lines) {
    Lab lab;
    return Text::test::errorFrom(
        [&] { lab.load(Text::SourceText("t", "ip access-list L\n" + lines), {}); });
  };
  EXPECT_EQ(errorAfter(" 4294967294 permit tcp any any eq 1 3\n"), "no error");
  EXPECT_THAT(
      errorAfter(" 4294967294 permit tcp any any eq 1 3 5\n"),
      HasSubstr("t:2:2: expected a sequence number: none is left for the rules of the line"));
  EXPECT_THAT(errorAfter(" 4294967294 permit tcp any any eq 1 3\n 4294967295 permit ip any any\n"),
              HasSubstr("t:2:2: expected a sequence number"));
}

TEST(Entries, AreRemovedByNumberAndRule) {
  Lab lab;
  std::string const list = "ip access-list L\n";
  lab.load(list + " 10 deny ip host 1.1.1.1 any\n 20 permit tcp any any\n"
                  " 30 deny ip host 1.1.1.1 any\ninterface Ethernet1\n ip access-group L in\n");
  lab.load(list + " no 30 deny ip host 1.1.1.1 any\n");
  EXPECT_THAT(lab.record("access-group L"),
              RulesAre("L 10 deny ip host 1.1.1.1 any", "L 20 permit tcp any any"));
  EXPECT_THAT(
      [&] { lab.load(list + " no 20 deny ip host 1.1.1.1 any\n"); },
      testing::ThrowsMessage<Text::InputError>(HasSubstr("expected a rule of ip access-list")));
}

TEST(GroupSpellings, AChainOfGroupsMayBeLong) {
  std::string text = "object-group network G0\n host 10.0.0.1\n";
  constexpr int length = 30000;
  for (int i = 1; i != length; ++i) {
    text += "object-group network G" + std::to_string(i) + "\n group-object G" +
            std::to_string(i - 1) + "\n";
  }
  Lab lab;
  lab.load(text + "object-group network G0\n group-object G" + std::to_string(length - 1) +
           "\nip access-list L\n permit ip object-group G" + std::to_string(length - 1) +
           " any\ninterface Ethernet1\n ip access-group L in\n");
  EXPECT_THAT(lab.record("access-group L"), RulesAre("L 10 permit ip host 10.0.0.1 any"));
}

}  // namespace
}  // namespace PolicyMapTestKit::test
