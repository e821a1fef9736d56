// SPDX-License-Identifier: Apache-2.0
#include "testkit/config/ObjectGroups.h"

#include "testkit/Labs.h"
#include "testkit/Matchers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace PolicyMapTestKit::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using testing::ThrowsMessage;

constexpr auto attached = "class-map match-any c\n match access-group l\n"
                          "policy-map p\n class c\n"
                          "interface Ethernet1\n service-policy input p\n";

// The rules of list l, which is attached: "NUMBER MATCH".
std::vector<std::string> rulesOf(Lab const& lab) {
  std::vector<std::string> lines;
  for (RuleRecord const& rule : lab.record("p")) {
    lines.push_back(std::to_string(rule.key.seqno()) + " " + rule.matchText());
  }
  return lines;
}

std::vector<std::string> rulesOf(std::string const& text) {
  Lab lab;
  lab.load(text + attached);
  return rulesOf(lab);
}

TEST(ObjectGroups, MakeEveryCombinationInOrder) {
  EXPECT_THAT(rulesOf("object-group service web\n tcp eq www\n tcp eq 443\n"
                      "object-group network from\n host 10.0.0.1\n 10.1.0.0 255.255.0.0\n"
                      "object-group network to\n 192.0.2.0/24\n"
                      "ip access-list extended l\n"
                      " permit object-group web object-group from object-group to\n"
                      " deny ip any any\n"),
              ElementsAre("10 permit tcp host 10.0.0.1 192.0.2.0/24 eq 80",
                          "11 permit tcp 10.1.0.0/16 192.0.2.0/24 eq 80",
                          "12 permit tcp host 10.0.0.1 192.0.2.0/24 eq 443",
                          "13 permit tcp 10.1.0.0/16 192.0.2.0/24 eq 443", "20 deny ip any any"));
}

TEST(ObjectGroups, LinesAfterManyRulesFollowThem) {
  std::string members;
  for (int i = 1; i != 13; ++i) {
    members += " host 10.0.0." + std::to_string(i) + "\n";
  }
  std::vector<std::string> const rules = rulesOf("object-group network many\n" + members +
                                                 "ip access-list l\n"
                                                 " permit ip object-group many any\n"
                                                 " permit udp any any\n permit gre any any\n");
  ASSERT_THAT(rules, SizeIs(14));
  EXPECT_EQ(rules[11], "21 permit ip host 10.0.0.12 any");
  EXPECT_EQ(rules[12], "22 permit udp any any");
  EXPECT_EQ(rules[13], "30 permit gre any any") << "its own number is free";
}

TEST(ObjectGroups, NestAndMayNameEachOther) {
  EXPECT_THAT(rulesOf("object-group network a\n host 10.0.0.1\n group-object b\n"
                      "object-group network b\n host 10.0.0.2\n group-object a\n"
                      "ip access-list l\n permit ip object-group a any\n"),
              ElementsAre("10 permit ip host 10.0.0.1 any", "11 permit ip host 10.0.0.2 any"));
}

TEST(ObjectGroups, RangesOfAddressesAreTheFewestPrefixes) {
  EXPECT_THAT(rulesOf("object-group network a\n range 10.0.0.1 10.0.0.6\n"
                      "ip access-list l\n permit ip object-group a any\n"),
              ElementsAre("10 permit ip host 10.0.0.1 any", "11 permit ip 10.0.0.2/31 any",
                          "12 permit ip 10.0.0.4/31 any", "13 permit ip host 10.0.0.6 any"));
  EXPECT_THAT(rulesOf("object-group network a\n range 0.0.0.0 255.255.255.255\n"
                      "ip access-list l\n permit ip object-group a any\n"),
              ElementsAre("10 permit ip any any"));
}

TEST(ObjectGroups, ServicesHavePortsOfBothSidesAndMessages) {
  EXPECT_THAT(rulesOf("object-group service s\n tcp source eq 20 gt 1023\n udp range 5 6\n"
                      " icmp echo\n icmp\n tcp-udp eq domain\n 47\n"
                      "ip access-list l\n permit object-group s any any\n"),
              ElementsAre("10 permit tcp any eq 20 any gt 1023", "11 permit udp any any range 5 6",
                          "12 permit icmp any any icmp-type 8", "13 permit icmp any any",
                          "14 permit tcp any any eq 53", "15 permit udp any any eq 53",
                          "16 permit gre any any"));
}

TEST(ObjectGroups, PortGroupsAndWildcardsOfTheOtherDialect) {
  EXPECT_THAT(
      rulesOf("object-group ip address a\n 10 host 10.0.0.1\n 20 10.1.0.0 0.0.255.255\n"
              "object-group ip port p\n 10 eq 80\n 20 range 8000 8001\n"
              "ip access-list l\n 5 permit tcp addrgroup a any portgroup p\n"
              " 7 permit udp any portgroup p addrgroup a\n"),
      ElementsAre(
          "5 permit tcp host 10.0.0.1 any eq 80", "6 permit tcp host 10.0.0.1 any range 8000 8001",
          "7 permit tcp 10.1.0.0/16 any eq 80", "8 permit tcp 10.1.0.0/16 any range 8000 8001",
          "9 permit udp any eq 80 host 10.0.0.1", "10 permit udp any eq 80 10.1.0.0/16",
          "11 permit udp any range 8000 8001 host 10.0.0.1",
          "12 permit udp any range 8000 8001 10.1.0.0/16"));
}

TEST(ObjectGroups, PrecedencesAreCodePoints) {
  std::vector<std::string> const rules =
      rulesOf("ip access-list l\n permit tcp any any eq 80 precedence critical\n");
  ASSERT_THAT(rules, SizeIs(8));
  EXPECT_EQ(rules.front(), "10 permit tcp any any eq 80 dscp 40");
  EXPECT_EQ(rules.back(), "17 permit tcp any any eq 80 dscp 47");
}

TEST(ObjectGroups, AnEditOfAGroupProgramsItsLists) {
  Lab lab;
  lab.load(std::string("object-group network a\n host 10.0.0.1\n"
                       "ip access-list l\n permit ip object-group a any\n"
                       "ip access-list other\n permit ip any any\n") +
           attached);
  lab.load("object-group network a\n no host 10.0.0.1\n host 10.0.0.2\n");
  EXPECT_THAT(rulesOf(lab), ElementsAre("10 permit ip host 10.0.0.2 any"));
  lab.load("ip access-list l\n no permit ip object-group a any\n permit udp any any\n");
  EXPECT_THAT(rulesOf(lab), ElementsAre("10 permit udp any any"));
  std::uint64_t const next = lab.journal().next();
  lab.load("object-group network a\n host 10.0.0.9\n");
  EXPECT_THAT(lab.journal().since(next).calls(), testing::IsEmpty()) << "no list names it";
}

TEST(ObjectGroups, MistakesNameTheLineAndTheGroup) {
  auto const error = [](std::string const& text) {
    return [text] {
      Lab lab;
      lab.load(text);
    };
  };
  EXPECT_THAT(
      error("ip access-list l\n permit ip object-group none any\n"),
      ThrowsMessage<Text::InputError>(HasSubstr(
          "policy text:2:2: expected the name of an object-group that exists, found 'none'")));
  EXPECT_THAT(
      error("object-group service s\n tcp\nip access-list l\n permit ip object-group s any\n"),
      ThrowsMessage<Text::InputError>(testing::ContainsRegex(
          "4:2: expected an object-group of addresses, which that at .*:1:1 is not, found 's'")));
  EXPECT_THAT(
      error("object-group network s\nobject-group service s\n"),
      ThrowsMessage<Text::InputError>(HasSubstr("expected the kind of the object-group at ")));
  EXPECT_THAT(error("object-group network a\n no host 10.0.0.1\n"),
              ThrowsMessage<Text::InputError>(HasSubstr("expected a member of object-group a")));
  EXPECT_THAT(error("object-group network a\n range 10.0.0.2 10.0.0.1\n"),
              ThrowsMessage<Text::InputError>(
                  HasSubstr("2:17: expected an address not below the first one")));
  EXPECT_THAT(error("object-group network a\n tcp\n"),
              ThrowsMessage<Text::InputError>(HasSubstr("a member of the object-group")));
}

TEST(ObjectGroups, ALenientReadingLeavesOutTheLineAndCountsItOnce) {
  Lab lab;
  lab.load(Text::SourceText("f", std::string("ip access-list l\n permit ip object-group none any\n"
                                             " permit udp any any\n") +
                                     attached),
           Text::Reading::lenient);
  EXPECT_THAT(rulesOf(lab), ElementsAre("20 permit udp any any"));
  EXPECT_EQ(lab.skipped().byKind().at("permit (object-group)"), 1U);
  lab.load(Text::SourceText("g", "hostname x\ninterface Ethernet2\n"), Text::Reading::lenient);
  EXPECT_EQ(lab.skipped().total(), 1U);
}

TEST(ObjectGroups, TheNumberOfRulesOfALineIsBounded) {
  std::string text = "object-group network a\n";
  for (int i = 0; i != 320; ++i) {
    text += " host 10.0." + std::to_string(i / 256) + "." + std::to_string(i % 256) + "\n";
  }
  Lab lab;
  EXPECT_THAT(
      [&] { lab.load(text + "ip access-list l\n permit ip object-group a object-group a\n"); },
      ThrowsMessage<Text::InputError>(
          HasSubstr("expected at most 100000 rules of one line, found 'permit ip "
                    "any any'")));
}

}  // namespace
}  // namespace PolicyMapTestKit::test
