// SPDX-License-Identifier: Apache-2.0
#include "testkit/config/EffectiveSettings.h"

#include "testkit/Labs.h"
#include "testkit/Matchers.h"
#include "testkit/Problems.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace PolicyMapTestKit::test {
namespace {

using PolicyMap::ClassMapMatchOption;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::ThrowsMessage;

std::string const lists = "ip access-list a\n 10 permit tcp any any eq 1\n"
                          "ip access-list b\n 10 permit tcp any any eq 2\n"
                          "class-map match-any a\n match access-group a\n"
                          "class-map match-any b\n match access-group b\n";

// Access groups -------------------------------------------------------------------------

TEST(AccessGroups, AreAPolicyMapOfOneClass) {
  Lab lab;
  lab.load(lists + "interface Ethernet1\n ip access-group a in\n"
                   "interface Ethernet2\n ip access-group a in\n ip access-group b out\n");
  EXPECT_THAT(lab.record("access-group a"),
              AllOf(Programmed(), RulesAre("a 10 permit tcp any any eq 1"),
                    OnInterfaces("Ethernet1", "Ethernet2")));
  EXPECT_THAT(lab.record("access-group b", "output"), OnInterfaces("Ethernet2"));
  lab.load("interface Ethernet1\n no ip access-group a in\n");
  EXPECT_THAT(lab.record("access-group a"), OnInterfaces("Ethernet2"));
}

TEST(AccessGroups, OfAllFamiliesShareOne) {
  Lab lab;
  lab.load(lists + "ipv6 access-list a6\n permit udp any any\n"
                   "mac access-list m\n permit any any arp\n"
                   "interface Ethernet1\n ip access-group a in\n ipv6 traffic-filter a6 in\n"
                   " mac access-group m in\n ipv6 address 2001:db8::1/64\n"
                   " ip address 192.0.2.1/24\n");
  EXPECT_THAT(lab.record("access-group a,a6,m", "input", ClassMapMatchOption::ipv4),
              RulesAre("a 10 permit tcp any any eq 1"));
  EXPECT_THAT(lab.record("access-group a,a6,m", "input", ClassMapMatchOption::ipv6),
              RulesAre("a6 10 permit udp any any"));
  EXPECT_THAT(lab.record("access-group a,a6,m", "input", ClassMapMatchOption::mac),
              RulesAre("m 10 permit any any arp"));
}

TEST(AccessGroups, AServicePolicyTakesTheirPlace) {
  Lab lab;
  lab.load(lists + "policy-map p\n class b\n"
                   "interface Ethernet1\n ip access-group a in\n service-policy input p\n");
  EXPECT_THAT(lab.record("p"), OnInterfaces("Ethernet1"));
  EXPECT_THROW(static_cast<void>(lab.record("access-group a")), LookupError);
  lab.load("interface Ethernet1\n no service-policy input p\n");
  EXPECT_THAT(lab.record("access-group a"), OnInterfaces("Ethernet1"));
}

TEST(AccessGroups, EverySpellingIsTaken) {
  for (char const* const line :
       {"ip access-group a in", "ipv4 access-group a ingress", "ip access-group name a input"}) {
    Lab lab;
    lab.load(lists + "interface Ethernet1\n " + line + "\n");
    EXPECT_THAT(lab.record("access-group a"), Programmed()) << line;
  }
  Lab lab;
  EXPECT_THAT([&] { lab.load("interface Ethernet1\n ip access-group a sideways\n"); },
              ThrowsMessage<Text::InputError>(HasSubstr("2:20: expected in or out")));
  EXPECT_THAT([&] { lab.load("interface Ethernet1\n no ip access-group a in\n"); },
              ThrowsMessage<Text::InputError>(
                  HasSubstr("expected the list that is attached for input, found 'a'")));
}

TEST(AccessGroups, ThatAPolicyMapReplacesAreAProblem) {
  Lab lab;
  lab.load(lists + "policy-map p\n class b\n"
                   "interface Ethernet1\n ip access-group a in\n service-policy input p\n");
  std::vector<Problem> const problems = findProblems(lab);
  ASSERT_EQ(problems.size(), 1U);
  EXPECT_EQ(toText(problems[0]), "access-group a (input): not at Ethernet1: policy-map p is "
                                 "attached there in that direction");
}

TEST(LostDenies, CutTheList) {
  std::string const text = "ip access-list l\n 10 permit udp any any\n"
                           " 20 deny tcp any any option 3\n 30 permit ip any any\n"
                           "interface Ethernet1\n ip access-group l in\n";
  Lab lab;
  lab.load(Text::SourceText("f", text), Text::Reading::lenient);
  EXPECT_THAT(lab.record("access-group l"), RulesAre("l 10 permit udp any any"));
  std::vector<Problem> const problems = findProblems(lab);
  ASSERT_EQ(problems.size(), 1U);
  EXPECT_EQ(toText(problems[0]), "access-list l: the deny at f:3:2 was skipped, so the entries "
                                 "after it are left out");
  Lab wide;
  wide.load(Text::SourceText("f", text), Text::Reading::widening);
  EXPECT_THAT(wide.record("access-group l"),
              RulesAre("l 10 permit udp any any", "l 30 permit ip any any"));
}

// class-default -------------------------------------------------------------------------

TEST(ClassDefault, IsLastAndMatchesEverything) {
  Lab lab;
  lab.load(lists + "policy-map p\n class class-default\n  set action1 9\n class a\n"
                   "interface Ethernet1\n service-policy input p\n ip address 192.0.2.1/24\n"
                   " ipv6 address 2001:db8::1/64\n");
  EXPECT_THAT(lab.record("p", "input", ClassMapMatchOption::ipv4),
              RulesAre("a a 10 permit tcp any any eq 1", "class-default 10 permit ip any any"));
  EXPECT_THAT(lab.record("p", "input", ClassMapMatchOption::ipv6),
              RulesAre("20 permit ipv6 any any"));
  EXPECT_THAT(lab.explain(), AllProgrammed());
}

TEST(ClassDefault, MayBeDefined) {
  Lab lab;
  lab.load(lists + "class-map match-any class-default\n match access-group b\n"
                   "policy-map p\n class class-default\n"
                   "interface Ethernet1\n service-policy input p\n");
  EXPECT_THAT(lab.record("p"), RulesAre("b 10 permit tcp any any eq 2"));
}

// Zones ---------------------------------------------------------------------------------

std::string const zones = lists + "policy-map type inspect p\n class type inspect a\n  inspect\n"
                                  " class class-default\n  drop log\n"
                                  "policy-map type inspect q\n class type inspect b\n  inspect\n"
                                  "zone security in\nzone security out\n"
                                  "interface Ethernet1\n zone-member security in\n"
                                  "interface Ethernet2\n zone-member security out\n";

// class-default has IPv6 rules, too.
Record ip4(Lab const& lab, std::string_view policyMap) {
  return lab.record(policyMap, "input", ClassMapMatchOption::ipv4);
}

TEST(Zones, AZonePairAttachesItsPolicyAtTheInterfacesOfTheSource) {
  Lab lab;
  lab.load(zones + "zone-pair security in-out source in destination out\n"
                   " service-policy type inspect p\n");
  EXPECT_THAT(ip4(lab, "p"), AllOf(Programmed(), OnInterfaces("Ethernet1")));
  EXPECT_THAT(ip4(lab, "p"), HasRule("a 10", Action3(1)));
  lab.load("zone-pair security in-out\n no service-policy type inspect p\n");
  EXPECT_THAT(ip4(lab, "p"), Not(Programmed()));
}

TEST(Zones, PairsWithOneSourceAreOnePolicyMap) {
  Lab lab;
  lab.load(zones + "zone-pair security 1 source in destination out\n"
                   " service-policy type inspect p\n"
                   "zone-pair security 2 source in destination self\n"
                   " service-policy type inspect q\n");
  EXPECT_THAT(ip4(lab, "p,q"),
              RulesAre("a a 10 permit tcp any any eq 1", "b b 10 permit tcp any any eq 2",
                       "class-default 10 permit ip any any"));
  lab.load("no zone-pair security 2\n");
  EXPECT_THAT(ip4(lab, "p"), Programmed());
  EXPECT_THAT(ip4(lab, "p,q"), Not(Programmed()));
}

TEST(Zones, AZoneWithoutInterfacesIsAProblem) {
  auto const problemOf = [](std::string const& source) {
    Lab lab;
    lab.load(zones + "zone-pair security x source " + source +
             " destination out\n service-policy type inspect p\n");
    std::vector<Problem> const problems = findProblems(lab);
    return problems.size() == 1 ? toText(problems[0]) : std::to_string(problems.size());
  };
  EXPECT_EQ(problemOf("unused"),
            "policy-map p of zone unused: not programmed: no interface is in the zone");
  EXPECT_EQ(problemOf("self"),
            "policy-map p of zone self: not programmed: packets of the device itself enter no "
            "interface");
}

TEST(Zones, MistakesAreSaid) {
  Lab lab;
  EXPECT_THAT([&] { lab.load("zone-pair security x source a target b\n"); },
              ThrowsMessage<Text::InputError>(HasSubstr("source ZONE destination ZONE")));
  EXPECT_THAT([&] { lab.load("no zone-pair security x\n"); },
              ThrowsMessage<Text::InputError>(
                  HasSubstr("expected the name of a zone-pair that exists, found 'x'")));
}

// Conditions ---------------------------------------------------------------------------

std::string const policyOfC = "policy-map p\n class c\n"
                              "interface Ethernet1\n service-policy input p\n";

TEST(Conditions, OfAMatchAllAreIntersected) {
  Lab lab;
  lab.load(lists + "class-map match-all c\n match access-group a\n match dscp 10 12\n" + policyOfC);
  std::vector<std::string> matches;
  for (RuleRecord const& rule : lab.record("p")) {
    matches.push_back(rule.matchText());
  }
  EXPECT_THAT(matches,
              ElementsAre("permit tcp any any eq 1 dscp 10", "permit tcp any any eq 1 dscp 12"));
}

TEST(Conditions, OfAMatchAnyAreAlternatives) {
  Lab lab;
  lab.load("class-map match-any c\n match ip dscp 10\n match protocol gre\n" + policyOfC);
  std::vector<std::string> matches;
  for (RuleRecord const& rule : lab.record("p", "input", ClassMapMatchOption::ipv4)) {
    matches.push_back(rule.matchText());
  }
  EXPECT_THAT(matches, ElementsAre("permit ip any any dscp 10", "permit gre any any"));
  lab.load("class-map match-any c\n no match protocol gre\n");
  EXPECT_EQ(lab.record("p", "input", ClassMapMatchOption::ipv4).ruleCount, 1U);
}

TEST(Conditions, AClassThatNoRuleExpressesIsLeftOutAndExplained) {
  Lab lab;
  lab.load(lists + "class-map match-all c\n match access-group a\n match dei 1\n"
                   "policy-map p\n class c\n class b\n"
                   "interface Ethernet1\n service-policy input p\n");
  EXPECT_THAT(lab.record("p"), RulesAre("b 10 permit tcp any any eq 2"));
  EXPECT_THAT(lab.explain().lines(),
              ElementsAre("p/input ipv4: programmed at Ethernet1; class c: cannot match dei 1: "
                          "rules do not have this field"));
}

TEST(Conditions, ALineThatIsSkippedDoesNotWidenAMatchAll) {
  std::string const text =
      lists + "class-map match-all c\n match access-group a\n match colour red\n" + policyOfC;
  {
    Lab lab;
    lab.load(Text::SourceText("f", text), Text::Reading::lenient);
    EXPECT_THROW(static_cast<void>(lab.record("p")), LookupError);
    EXPECT_THAT(lab.explain().lines(), ElementsAre(HasSubstr("class c: cannot match colour red: "
                                                             "not understood")));
    EXPECT_EQ(lab.skipped().total(), 1U);
  }
  Lab lab;
  lab.load(Text::SourceText("f", text), Text::Reading::widening);
  EXPECT_THAT(lab.record("p"), RulesAre("a 10 permit tcp any any eq 1"));
}

TEST(Conditions, ThatNoKindOfRuleHasTogetherAreExplained) {
  for (char const* const conditions :
       {" match vlan 10\n match dscp 46\n", " match ip dscp 46\n match ipv6 dscp 46\n",
        " match access-group a\n match protocol arp\n", " match cos 5\n match dscp 46\n",
        " match cos 5\n match mpls experimental 5\n"}) {
    Lab lab;
    lab.load(lists + "class-map match-all c\n" + conditions + policyOfC);
    EXPECT_THAT(lab.explain().lines(),
                ElementsAre("p/input: nothing to program: no class has rules; class c: cannot "
                            "match all of its conditions: no kind of rule has their fields "
                            "together"))
        << conditions;
    lab.load("class-map match-any c\n");
    EXPECT_THAT(lab.explain().lines(), testing::Not(testing::Contains(HasSubstr("together"))));
  }
}

TEST(Conditions, OnTagsAreIntersectedWithMacLists) {
  Lab lab;
  lab.load("mac access-list m\n permit any any arp\n permit any any ip cos 3\n"
           "class-map match-all c\n match cos 3 5\n match vlan 10\n match mac access-group m\n" +
           policyOfC);
  std::vector<std::string> matches;
  for (RuleRecord const& rule : lab.record("p", "input", ClassMapMatchOption::mac)) {
    matches.push_back(rule.matchText());
  }
  EXPECT_THAT(matches, ElementsAre("permit any any ethertype 2054 vlan 10 cos 3",
                                   "permit any any ethertype 2048 vlan 10 cos 3",
                                   "permit any any ethertype 2054 vlan 10 cos 5"));
}

TEST(Conditions, OnExperimentalBitsAreProgrammedForMpls) {
  Lab lab;
  lab.load("class-map match-any c\n match mpls experimental topmost 3 5\n match cos 5\n" +
           policyOfC);
  Record const mpls = lab.record("p", "input", ClassMapMatchOption::mpls);
  std::vector<std::string> matches;
  for (RuleRecord const& rule : mpls) {
    matches.push_back(rule.matchText());
  }
  EXPECT_THAT(matches, ElementsAre("permit any any mpls-experimental 3",
                                   "permit any any mpls-experimental 5"));
  EXPECT_EQ(lab.record("p", "input", ClassMapMatchOption::mac).ruleCount, 1U);
}

TEST(Conditions, OnExperimentalBitsNeedRouting) {
  Lab lab;
  lab.load("class-map match-any c\n match mpls experimental 3\n" + policyOfC);
  EXPECT_TRUE(lab.record("p", "input", ClassMapMatchOption::mpls).created);
  lab.load("no ip routing\n");
  EXPECT_THAT(lab.explain().lines(), ElementsAre(HasSubstr("Ethernet1 (routing is off)")));
  lab.load("ip routing\n");
  EXPECT_TRUE(lab.record("p", "input", ClassMapMatchOption::mpls).created);
}

TEST(Conditions, OfNestedClassMapsMayContradictToo) {
  Lab lab;
  lab.load(lists + "class-map match-any v\n match vlan 10\n match vlan 20\n"
                   "class-map match-all c\n match class-map v\n match class-map a\n"
                   "policy-map p\n class c\n class b\n"
                   "interface Ethernet1\n service-policy input p\n");
  EXPECT_THAT(ip4(lab, "p"), RulesAre("b b 10 permit tcp any any eq 2"));
  EXPECT_THAT(lab.explain().lines(),
              testing::Contains(HasSubstr("class c: cannot match all of its conditions: no kind")));
}

TEST(Conditions, AnExclusionBesideOthersOfAMatchAnyIsExplained) {
  Lab lab;
  std::string const text = lists + "class-map match-any c\n match not dscp ef\n" + policyOfC;
  lab.load(text);
  EXPECT_THAT(ip4(lab, "p"), RulesAre("10 deny ip any any dscp 46", "30 permit ip any any"))
      << "alone it is possible";
  lab.load("class-map match-any c\n match dscp cs1\n");
  EXPECT_THAT(lab.explain().lines(),
              ElementsAre(HasSubstr("class c: cannot match not dscp 46 beside other conditions: "
                                    "rules cannot say it")));
}

TEST(Conditions, AListMayBeOfAnotherFamily) {
  Lab lab;
  lab.load("class-map match-any c\n match access-group name L\n" + policyOfC +
           " ip address 192.0.2.1/24\n ipv6 address 2001:db8::1/64\n"
           "ipv6 access-list L\n permit udp any any\n");
  EXPECT_THAT(lab.record("p"), RulesAre("L 10 permit udp any any"));
  EXPECT_EQ(lab.record("p").option, ClassMapMatchOption::ipv6);
  lab.load("ip access-list L\n permit tcp any any\n");
  EXPECT_EQ(lab.record("p").option, ClassMapMatchOption::ipv4) << "the IPv4 list comes first";
  lab.load("no ip access-list L\nno ipv6 access-list L\nmac access-list L\n permit any any arp\n"
           "interface Ethernet1\n no ip address\n no ipv6 address\n");
  EXPECT_EQ(lab.record("p").option, ClassMapMatchOption::mac);
}

TEST(AccessGroups, TakeThePlaceOfAPolicyMapThatIsNotDefined) {
  Lab lab;
  lab.load(lists + "interface Ethernet1\n ip access-group a in\n service-policy input NONE\n");
  EXPECT_THAT(lab.record("access-group a"), OnInterfaces("Ethernet1"));
  std::vector<Problem> const problems = findProblems(lab);
  ASSERT_EQ(problems.size(), 1U);
  EXPECT_EQ(toText(problems[0]), "policy-map NONE (input): not defined, but attached to Ethernet1");
  lab.load("policy-map NONE\n class b\n");
  EXPECT_THAT(lab.record("NONE"), OnInterfaces("Ethernet1"));
}

TEST(Zones, PairsComeInTheOrderInWhichTheyAreWrittenAndThoseToTheDeviceLast) {
  Lab lab;
  lab.load(zones + "zone-pair security z source in destination self\n service-policy p\n"
                   "zone-pair security y source in destination out\n service-policy q\n"
                   "zone-pair security x source in destination other\n service-policy NONE\n");
  EXPECT_THAT(ip4(lab, "q,NONE,p"), OnInterfaces("Ethernet1"));
  std::vector<Problem> const problems = findProblems(lab);
  ASSERT_EQ(problems.size(), 1U);
  EXPECT_EQ(toText(problems[0]), "policy-map NONE: not defined, but of zone in");
  lab.load("no zone-pair security y\nzone-pair security y source in destination out\n"
           " service-policy q\n");
  EXPECT_THAT(ip4(lab, "NONE,q,p"), OnInterfaces("Ethernet1")) << "removed, so the last now";
}

TEST(OtherActions, AreNumberedAsTheyAreAfterTheFile) {
  Lab lab;
  lab.load(lists + "policy-map p\n class a\n  fair-queue\n  inspect\n class b\n  pass\n"
                   "interface Ethernet1\n service-policy input p\n");
  EXPECT_THAT(*lab.configuration().settings().otherActions,
              ElementsAre("fair-queue; inspect", "pass"));
  EXPECT_THAT(lab.record("p"), HasRule("a 10", Action3(1)));
  lab.load("policy-map p\n no class a\n class a\n  pass\n");
  EXPECT_THAT(lab.record("p"), HasRule("a 10", Action3(2)))
      << "the texts of the old class are gone";
}

TEST(Conditions, ThatNoPacketMeetsTogetherAreReported) {
  Lab lab;
  lab.load(lists + "class-map match-all c\n match access-group a\n match access-group b\n"
                   "policy-map p\n class c\n class b\n"
                   "interface Ethernet1\n service-policy input p\n");
  std::vector<Problem> const problems = findProblems(lab);
  ASSERT_EQ(problems.size(), 1U);
  EXPECT_EQ(problems[0].kind, Problem::Kind::empty);
  EXPECT_EQ(toText(problems[0]),
            "policy-map p (input), class c: no packet meets all of its conditions");
  EXPECT_THAT(lab.record("p"), RulesAre("b 10 permit tcp any any eq 2"));
  lab.load("ip access-list b\n 20 permit tcp any any eq 1\n");
  EXPECT_THAT(findProblems(lab), testing::IsEmpty());
}

TEST(Zones, APolicyMapMayHaveTheNameOfSeveral) {
  Lab lab;
  lab.load(zones + "policy-map p,q\n class b\n"
                   "zone-pair security 1 source in destination out\n service-policy p\n"
                   "zone-pair security 2 source in destination other\n service-policy q\n");
  EXPECT_THAT(ip4(lab, "zone-pairs p,q"),
              RulesAre("a a 10 permit tcp any any eq 1", "b b 10 permit tcp any any eq 2",
                       "class-default 10 permit ip any any"));
}

TEST(OtherActions, DoNotChangeWhenAFileIsLoadedAgain) {
  Lab lab;
  std::string const text = lists + "policy-map p\n class a\n  mirror 0/1\n"
                                   "  police 64000 conform-action transmit exceed-action drop\n"
                                   "interface Ethernet1\n service-policy input p\n";
  lab.load(text);
  Snapshot const before = lab.snapshot();
  lab.load(text);
  EXPECT_EQ(lab.snapshot(), before);
}

TEST(Conditions, AClassMapWithoutAMatchIsReported) {
  Lab lab;
  lab.load(lists + "class-map match-all c\n" + policyOfC);
  std::vector<Problem> const problems = findProblems(lab);
  ASSERT_EQ(problems.size(), 1U);
  EXPECT_EQ(toText(problems[0]), "policy-map p (input), class c: its class-map has no match");
}

}  // namespace
}  // namespace PolicyMapTestKit::test
