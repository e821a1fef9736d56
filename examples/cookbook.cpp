// SPDX-License-Identifier: Apache-2.0

// Recipes about configuration and what is programmed of it. docs/cookbook.md shows and explains
// them.

#include "testkit/Lab.h"
#include "testkit/Matchers.h"
#include "testkit/text/FilterSetGenerator.h"

#include <Kor/ByName.h>

using namespace PolicyMapTestKit;
using namespace std::chrono_literals;
using namespace testing;
using PolicyMap::ClassMapMatchOption;

namespace {

// Class web on list web, in policy-map edge, attached at Ethernet1.
constexpr auto edge = R"(
  ip access-list web
    10 permit tcp any any eq 80
  class-map match-any web
    match access-group web
  policy-map edge
    class web
      set action1 7
  interface Ethernet1
    service-policy input edge)";

TEST(Cookbook, AFirstPolicy) {
  Lab lab;
  lab.load(R"(ip access-list web
                10 permit tcp any any eq 80
              class-map match-any web
                match access-group web
              policy-map edge
                class web
                  set action1 7
              interface Ethernet1
                service-policy input edge)");
  EXPECT_THAT(lab.record("edge"), Programmed());
  EXPECT_THAT(lab.record("edge"), HasRule("web 10", "permit tcp any any eq 80", Action1(7)));
}

TEST(Cookbook, APortRangeForARangeChecker) {
  Lab lab;
  lab.load(edge);
  lab.load(R"(ip access-list voice
                10 permit udp any any range 5004 5008
              class-map match-any voice
                match access-group voice
              policy-map edge
                class voice
                  set action1 6)");
  RuleRecord const rule = lab.record("edge").rule("voice 10");
  EXPECT_THAT(rule, SubRules(1));
  EXPECT_EQ(describe(rule.subRules[0]), "dst 5004-5008 (range checker)");
}

TEST(Cookbook, APortRangeWithoutRangeCheckers) {
  Lab lab({.subRulesForPorts = true});
  lab.load(edge);
  lab.load("ip access-list web\n 20 permit udp any any range 5004 5008");
  EXPECT_THAT(lab.record("edge"), HasRule("web 20", SubRules(2)));
  EXPECT_EQ(describe(lab.record("edge").rule("web 20").subRules[0]), "dst 5004-5007");
}

TEST(Cookbook, TheOrderOfRules) {
  Lab lab;
  lab.load(edge);
  lab.load(R"(ip access-list web
                20 permit tcp any any eq 443
                5 deny tcp any host 192.0.2.1 eq 80)");
  EXPECT_THAT(lab.record("edge"),
              RulesAre("web 5 deny tcp any host 192.0.2.1 eq 80", "web 10 permit tcp any any eq 80",
                       "web 20 permit tcp any any eq 443"));
}

TEST(Cookbook, TheOrderOfClasses) {
  Lab lab;
  lab.load(edge);
  lab.load(R"(class-map match-any ping
                match ip icmp any any
              policy-map edge
                class ping insert-before web)");
  EXPECT_THAT(lab.record("edge"),
              RulesAre("10 permit icmp any any", "web 10 permit tcp any any eq 80"));
}

TEST(Cookbook, TheOrderOfCalls) {
  Lab lab;
  lab.load(edge);
  EXPECT_THAT(lab.journal().calls(),
              Calls("hwInit", "createPolicy edge/input ipv4", "addRule edge/input ipv4 web web 10",
                    "addIntfToPolicy edge/input ipv4 Ethernet1", "commitPolicy edge/input ipv4"));
}

TEST(Cookbook, Interfaces) {
  Lab lab;
  lab.load(edge);
  lab.load("interface Ethernet2\n service-policy input edge\n"
           "interface Vlan10\n ip address 192.0.2.1/24\n service-policy input edge");
  EXPECT_THAT(lab.record("edge"), OnInterfaces("Ethernet1", "Ethernet2", "Vlan10"));
}

TEST(Cookbook, AnInterfaceThatGoesDown) {
  Lab lab;
  lab.load(edge);
  lab.load("interface Ethernet2\n service-policy input edge");
  lab.load("interface Ethernet1\n shutdown");
  EXPECT_THAT(lab.record("edge"), OnInterfaces("Ethernet2"));
  lab.load("interface Ethernet1\n no shutdown");
  EXPECT_THAT(lab.record("edge"), OnInterfaces("Ethernet1", "Ethernet2"));
}

TEST(Cookbook, APortChannel) {
  constexpr auto channel = R"(interface Ethernet7
                                channel-group 1
                              interface Ethernet8
                                channel-group 1
                              interface PortChannel1
                                service-policy input edge)";
  Lab whole;
  whole.load(edge);
  whole.load(channel);
  EXPECT_THAT(whole.record("edge"), OnInterfaces("Ethernet1", "PortChannel1"));
  Lab members({.expandPortChannels = true});
  members.load(edge);
  members.load(channel);
  EXPECT_THAT(members.record("edge"), OnInterfaces("Ethernet1", "Ethernet7", "Ethernet8"));
}

TEST(Cookbook, Ipv6) {
  Lab lab;
  lab.load(edge);
  lab.load(R"(ipv6 access-list web6
                10 permit tcp any 2001:db8::/32 eq 80
              class-map match-any web
                match ipv6 access-group web6)");
  EXPECT_THAT(lab.record("edge", "input", ClassMapMatchOption::ipv6),
              RulesAre("web6 10 permit tcp any 2001:db8::/32 eq 80"));
  EXPECT_THAT(lab.record("edge", "input", ClassMapMatchOption::ipv4), Not(HasRule("web6 10")));
}

TEST(Cookbook, Mac) {
  Lab lab;
  lab.load(R"(mac access-list arp
                10 permit any any arp
              class-map match-any arp
                match mac access-group arp
              policy-map bridge
                class arp
                  set action2 1
              interface Ethernet1
                service-policy output bridge)");
  EXPECT_THAT(lab.record("bridge", "output"),
              HasRule("arp 10", "permit any any ethertype 2054", Action2(1)));
}

TEST(Cookbook, MatchAll) {
  Lab lab;
  lab.load(edge);
  lab.load(R"(ip access-list dmz
                30 permit ip any 192.0.2.0/24
              class-map match-all both
                match access-group web
                match access-group dmz
              policy-map edge
                no class web
                class both)");
  EXPECT_THAT(lab.record("edge"), RulesAre("web & dmz:30 10 permit tcp any 192.0.2.0/24 eq 80"));
}

TEST(Cookbook, NestedClassMaps) {
  Lab lab;
  lab.load(edge);
  lab.load(R"(ip access-list dns
                10 permit udp any any eq 53
              class-map match-any names
                match access-group dns
              class-map match-any web
                match class-map names)");
  EXPECT_THAT(lab.record("edge"),
              AllOf(HasRule("web 10", Action1(7)), HasRule("dns 10", Action1(7))));
}

TEST(Cookbook, ARuleInTheClassMap) {
  Lab lab;
  lab.load(edge);
  lab.load("class-map match-any web\n match ip deny udp any any eq 53");
  EXPECT_THAT(lab.record("edge"), HasRule("20", "deny udp any any eq 53", Action1(7)));
}

TEST(Cookbook, AnActionThatChangesInPlace) {
  Lab lab({.updateAction = true});
  lab.load(edge);
  lab.journal().clear();
  lab.load("policy-map edge\n class web\n  set action1 8");
  EXPECT_THAT(lab.journal().calls(),
              Calls("beginUpdateActions",
                    "updateAction edge/input ipv4 web web 10 (dst 80) action1=8",
                    "endUpdateActions", "commitPolicy"));
  EXPECT_EQ(lab.record("edge").createCount, 1U);
}

TEST(Cookbook, AnActionThatChangesByReCreation) {
  Lab lab;
  lab.load(edge);
  lab.journal().clear();
  lab.load("policy-map edge\n class web\n  set action1 8");
  EXPECT_THAT(lab.journal().calls(), Calls("recreatePolicy", "addRule", "commitPolicy"));
  EXPECT_THAT(lab.record("edge"), HasRule("web 10", Action1(8)));
}

TEST(Cookbook, AnEditWithoutEffect) {
  Lab lab;
  lab.load(edge);
  std::uint64_t const next = lab.journal().next();
  lab.load("ip access-list web\n no 10\n 10 permit tcp any any eq www");
  EXPECT_THAT(lab.journal().since(next).calls(), IsEmpty());
}

TEST(Cookbook, WhatAnEditChanges) {
  Lab lab;
  lab.load(edge);
  Snapshot const before = lab.snapshot();
  lab.load("ip access-list web\n 20 permit tcp any any eq 443");
  Record expected = before.record("edge");
  ++expected.createCount;
  ++expected.commitCount;
  expected.rules = lab.record("edge").rules;
  expected.ruleCount = expected.subRuleCount = 2;
  EXPECT_EQ(lab.snapshot(), Snapshot({expected})) << "and nothing else";
}

TEST(Cookbook, NotThere) {
  Lab lab;
  lab.load(edge);
  EXPECT_THAT(lab.record("edge"), Not(HasRule("web 20")));
  EXPECT_THAT(lab.record("edge"), Not(HasRule("web 10", Action1(Gt(7)))));
  EXPECT_THROW(static_cast<void>(lab.record("edge", "output")), LookupError);
}

TEST(Cookbook, ObjectsWrittenDirectly) {
  Lab lab;
  lab.load(edge);
  Acl::IpRuleConfig rule;
  rule.protocolIs(17);
  rule.dstPortIs(Acl::PortMatch::range(5004, 5008));
  lab.acls()->ipAcl("web")->ruleIs(20, rule);
  lab.policyMaps()->servicePolicyIs({Vorel::IntfId("Ethernet1"), "output"}, "edge");
  lab.settle();
  EXPECT_THAT(lab.record("edge", "output"),
              HasRule("web 20", "permit udp any any range 5004 5008"));
}

TEST(Cookbook, ByName) {
  Lab lab;
  lab.load(edge);
  Kor::GenericRef const helper(lab.helper());
  helper["commitError"] = "table full";
  lab.load("ip access-list web\n 20 permit tcp any any eq 443");
  EXPECT_EQ(lab.failure("edge").error(), "table full");
}

TEST(Cookbook, ALargeFilterSet) {
  Text::SourceText const text("generated", Text::generateFilterSet(10000));
  Lab lab({.journal = 0});
  lab.load(Text::readFilterSet(text), {.classes = 10, .interfaces = 2});
  Snapshot const records = lab.snapshot(WithRules::no);
  EXPECT_EQ(records.record("rules").ruleCount, 10000U);
  EXPECT_EQ(records.record("rules").commitCount, 1U);
}

TEST(Cookbook, HitCounts) {
  Lab lab;
  lab.load(edge);
  lab.aroundIs([](HelperCall& call, auto const& proceed) {
    proceed();
    call.count = 42;
  });
  lab.requests()->countRequestIs({"edge", "input"}, 1);
  lab.settle();
  auto const status = lab.status()->policyMapStatus({"edge", "input"})->classMapStatus("web");
  EXPECT_EQ(status->hitCount({"web", "web", 10, ClassMapMatchOption::ipv4}), 42U);
}

TEST(Cookbook, SeveralLabs) {
  Lab blocks({.subRulesForPorts = true});
  Lab checkers;
  for (Lab* const lab : {&blocks, &checkers}) {
    lab->load(edge);
    lab->load("ip access-list web\n 20 permit udp any any range 1 65534");
  }
  EXPECT_THAT(blocks.record("edge"), HasRule("web 20", SubRules(30)));
  EXPECT_THAT(checkers.record("edge"), HasRule("web 20", SubRules(1)));
}

}  // namespace
