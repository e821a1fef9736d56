// SPDX-License-Identifier: Apache-2.0
#include "packets/Proof.h"

#include "packets/Labs.h"
#include "testkit/Lookup.h"
#include "testkit/sweep/Sweep.h"

#include <functional>

namespace PolicyMapPackets::test {
namespace {

using PolicyMap::SubRuleData;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(Prove, WhatIsProgrammedIsWhatIsConfigured) {
  Lab lab;
  lab.load(policy);
  Proof const proof = proofOf(lab);
  EXPECT_EQ(proof.verdict, Verdict::same);
  EXPECT_EQ(printed(proof), "edge input ipv4: the same");
}

TEST(Prove, SubRulesForPortsChangeNothing) {
  Lab lab({.subRulesForPorts = true});
  lab.load(policy);
  EXPECT_EQ(printed(proofOf(lab)), "edge input ipv4: the same");
}

// Each changes what is recorded, so that some packet is treated in another way.
struct Mutation {
  char const* name;
  std::function<void(AclPolicyData&)> apply;
  char const* smallest;
};

auto changeMatch(char const* list, std::uint32_t number,
                 std::function<void(Acl::IpRuleConfig&)> const& change) {
  return [=](AclPolicyData& data) {
    Acl::IpRuleConfig rule = data.ruleMatch(keyOf(list, number));
    change(rule);
    data.ruleMatchIs(keyOf(list, number), rule);
  };
}

std::vector<Mutation> mutations() {
  return {
      {"action", [](AclPolicyData& data) { data.ruleAction1Is(keyOf("web", 10), 7); },
       "tcp 0.0.0.0 > 0.0.0.0:80"},
      {"another action", [](AclPolicyData& data) { data.ruleAction3Is(keyOf("rest", 20), 1); },
       "tcp 0.0.0.0 > 0.0.0.0"},
      {"permit", changeMatch("web", 10, [](auto& rule) { rule.permitIs(false); }),
       "tcp 0.0.0.0 > 0.0.0.0:80"},
      {"deny", changeMatch("rest", 10, [](auto& rule) { rule.permitIs(true); }),
       "udp 0.0.0.0 > 0.0.0.0:53"},
      {"protocol", changeMatch("web", 10, [](auto& rule) { rule.protocolIs(17); }),
       "tcp 0.0.0.0 > 0.0.0.0:80"},
      {"source",
       changeMatch("web", 10, [](auto& rule) { rule.sourceIs(Acl::IpAddressMatch("0.0.0.0/1")); }),
       "tcp 128.0.0.0 > 0.0.0.0:80"},
      {"flags",
       changeMatch("web", 20,
                   [](auto& rule) {
                     rule.tcpFlagsIs({2, 2});
                   }),
       "tcp 0.0.0.0 > 0.0.0.0:8000"},
      {"ttl", changeMatch("web", 20, [](auto& rule) { rule.ttlIs(Acl::TtlMatch::neq(9)); }),
       "tcp 0.0.0.0 > 0.0.0.0:8000 ttl 9"},
      {"dscp", changeMatch("web", 20, [](auto& rule) { rule.dscpIs(0); }),
       "tcp 0.0.0.0 > 0.0.0.0:8000 dscp 1"},
      {"vni", changeMatch("web", 20, [](auto& rule) { rule.vniIs(3); }),
       "tcp 0.0.0.0 > 0.0.0.0:8000"},
      {"fragments", changeMatch("rest", 20, [](auto& rule) { rule.fragmentsIs(true); }),
       "tcp 0.0.0.0 > 0.0.0.0"},
      {"established", changeMatch("web", 20, [](auto& rule) { rule.establishedIs(true); }),
       "tcp 0.0.0.0 > 0.0.0.0:8000"},
      {"ports asked for",
       changeMatch("rest", 20, [](auto& rule) { rule.dstPortIs(Acl::PortMatch::range(0, 65535)); }),
       "icmp 0.0.0.0 > 0.0.0.0"},
      {"no sub-rules", [](AclPolicyData& data) { data.subRulesForKeyDel(keyOf("web", 10)); },
       "tcp 0.0.0.0 > 0.0.0.0:80"},
      {"a false sub-rule",
       [](AclPolicyData& data) {
         data.subRulesForKey(keyOf("web", 10))
             ->subRuleIs(SubRuleData(0, 65535, 80, 80, 0, false, false), false);
       },
       "tcp 0.0.0.0 > 0.0.0.0:80"},
      {"a bound of a sub-rule",
       [](AclPolicyData& data) {
         auto const subRules = data.subRulesForKey(keyOf("web", 20));
         subRules->subRuleDelAll();
         subRules->subRuleIs(SubRuleData(0, 65535, 8000, 8009, 0, false, true), true);
       },
       "tcp 0.0.0.0 > 0.0.0.0:8010"},
      {"one sub-rule more",
       [](AclPolicyData& data) {
         data.subRulesForKey(keyOf("web", 20))
             ->subRuleIs(SubRuleData(1, 1, 9000, 9000, 0, false, false), true);
       },
       "tcp 0.0.0.0:1 > 0.0.0.0:9000"},
      {"a rule less",
       [](AclPolicyData& data) {
         data.ruleMatchDel(keyOf("web", 20));
         data.subRulesForKeyDel(keyOf("web", 20));
       },
       "tcp 0.0.0.0 > 0.0.0.0:8000"},
  };
}

TEST(Prove, FindsEveryRecordedValueThatIsChanged) {
  for (Mutation const& mutation : mutations()) {
    Lab lab;
    lab.load(policy);
    mutation.apply(*dataOf(lab));
    Proof const proof = proofOf(lab);
    ASSERT_EQ(proof.verdict, Verdict::different) << mutation.name;
    EXPECT_EQ(toText(proof.differences.front().packet), mutation.smallest) << mutation.name;
  }
}

TEST(Prove, NamesPacketRulesSetAndCount) {
  Lab lab;
  lab.load(policy);
  dataOf(lab)->ruleMatchDel(keyOf("web", 20));
  Proof const proof = proofOf(lab);
  EXPECT_EQ(printed(proof),
            "edge input ipv4: different for 2^153.46 packets of 1 pair of rules\n"
            "  tcp 0.0.0.0 > 0.0.0.0:8000, as every tcp any any range 8000 8010\n"
            "    records: rest 20 permit ip any any of class rest, action1 2\n"
            "    configuration: web 20 permit tcp any any range 8000 8010 of class web, action1 1\n"
            "  2^153.46 packets in class rest, configured for class web");
  Count packets = Count::powerOfTwo(150);  // all fields of TCP but the destination port
  packets *= 11;
  EXPECT_EQ(proof.packets, packets);
}

TEST(Prove, ShowsAsManyDifferencesAsAskedForAndCountsAll) {
  Lab lab;
  lab.load(policy);
  dataOf(lab)->ruleMatchDel(keyOf("web", 10));
  dataOf(lab)->ruleMatchDel(keyOf("web", 20));
  for (std::size_t const first : {0U, 1U, 2U, 3U}) {
    Proof const proof = proofOf(lab, {.first = first});
    EXPECT_EQ(proof.differences.size(), std::min<std::size_t>(first, 2));
    EXPECT_EQ(proof.pairs, 2U);
  }
}

TEST(Prove, ExplainsWhatIsNotProgrammed) {
  auto const reasonOf = [](std::function<void(Lab&)> const& change,
                           PolicyMapTestKit::LabOptions const& options = {}) {
    Lab lab(options);
    change(lab);
    Proof const proof = proofOf(lab);
    EXPECT_EQ(proof.verdict, Verdict::notProgrammed);
    return proof.reason;
  };
  EXPECT_EQ(reasonOf([](Lab& lab) {
              lab.inject({"commitError", "table full"});
              lab.load(policy);
            }),
            "failed: commitPolicy: table full; next try in 1 s");
  EXPECT_EQ(reasonOf([](Lab& lab) { lab.load(policy); }, {.layer3 = false}),
            "no interface is eligible: Ethernet1 (interfaces of its kind are not served)");
  EXPECT_EQ(reasonOf(
                [](Lab& lab) {
                  lab.load(policy);
                  dataOf(lab)->dirtyIs(true);
                },
                {.journal = 1}),
            "not committed, and the journal does not have the last commit");
}

// A rule is added without a commit, so that the rules of the last commit count.
TEST(Prove, OfADirtyRecordTheLastCommitCounts) {
  Lab lab;
  lab.load(policy);
  dataOf(lab)->ruleMatchDel(keyOf("web", 10));
  EXPECT_EQ(proofOf(lab).verdict, Verdict::different);
  dataOf(lab)->dirtyIs(true);
  EXPECT_EQ(proofOf(lab).verdict, Verdict::same);
}

TEST(Prove, IsUndecidedWithoutABudget) {
  Lab lab;
  lab.load(policy);
  dataOf(lab)->ruleMatchDel(keyOf("web", 10));
  Proof const proof = proofOf(lab, {.budget = 0});
  EXPECT_EQ(printed(proof), "edge input ipv4: undecided");
  EXPECT_EQ(worstOf(std::vector<Proof>{proof}), Verdict::undecided);
}

TEST(Prove, SelectsPoliciesAndOptions) {
  Lab lab;
  lab.load(std::string(policy) + R"(
interface Ethernet2
  ipv6 address 2001:db8::2/64
  service-policy output other
policy-map other
  class web6
ipv6 access-list web6
  10 permit tcp any any eq 80
class-map match-any web6
  match ipv6 access-group web6)");
  auto const namesOf = [&](Selection const& selection) {
    std::vector<std::string> names;
    for (Proof const& each : prove(lab, {.selection = selection})) {
      names.push_back(each.subject);
    }
    return names;
  };
  EXPECT_THAT(namesOf({}), ElementsAre("edge input ipv4", "other output ipv6"));
  EXPECT_THAT(namesOf({.interface = "Et2"}), ElementsAre("other output ipv6"));
  EXPECT_THAT(namesOf({.policyMap = "edge"}), ElementsAre("edge input ipv4"));
  EXPECT_THAT(namesOf({.direction = "output"}), ElementsAre("other output ipv6"));
  EXPECT_THAT(namesOf({.option = ClassMapMatchOption::ipv6}), ElementsAre("other output ipv6"));
  EXPECT_THROW(namesOf({.policyMap = "nothing"}), PolicyMapTestKit::LookupError);
  EXPECT_THROW(namesOf({.interface = "nothing"}), Kor::RangeException);
}

TEST(Prove, NamesIrregularSubRules) {
  auto const findingsOf = [](std::vector<SubRuleData> const& subRules) {
    Lab lab;
    lab.load(policy);
    auto const recorded = dataOf(lab)->subRulesForKey(keyOf("web", 20));
    recorded->subRuleDelAll();
    for (SubRuleData const& each : subRules) {
      recorded->subRuleIs(each, true);
    }
    return proofOf(lab).findings;
  };
  std::string const rule = "rule web 20 of class web: ";
  auto const ports = [](std::uint16_t low, std::uint16_t high, bool isMarked) {
    return SubRuleData(0, 65535, low, high, 0, false, isMarked);
  };
  EXPECT_THAT(findingsOf({ports(8000, 8010, true)}), IsEmpty());
  EXPECT_THAT(findingsOf({}), ElementsAre(rule + "it has no sub-rule"));
  EXPECT_THAT(findingsOf({ports(8000, 8007, false), ports(8004, 8007, false)}),
              ElementsAre(rule + "sub-rules overlap"));
  EXPECT_THAT(findingsOf({ports(8000, 8010, false)}),
              ElementsAre(rule + "a sub-rule needs a range checker and is not marked"));
  EXPECT_THAT(findingsOf({ports(8000, 8000, true)}),
              ElementsAre(rule + "a sub-rule is marked for a range checker and needs none"));
  EXPECT_THAT(findingsOf({ports(8000, 8015, false)}),
              ElementsAre(rule + "the ports of a sub-rule are not in its match"));
  EXPECT_THAT(findingsOf({ports(8010, 8000, true)}),
              ElementsAre(rule + "a sub-rule has a lowest port above the highest one"));
  EXPECT_THAT(findingsOf({SubRuleData(0, 65535, 8000, 8000, 3, false, false)}),
              ElementsAre(rule + "a sub-rule has a distinction, which says nothing about packets"));
}

TEST(Prove, FindsInASweepWhatAWrongHelperRecords) {
  auto const scenario = [](Lab& lab) {
    lab.load(policy);
    lab.load("policy-map edge\n class web\n  set action1 9\n");
  };
  PolicyMapTestKit::SweepOptions options{.lab = {.updateAction = true},
                                         .modes = {PolicyMapTestKit::AnswerMode::synchronous},
                                         .look = &unproven};
  EXPECT_THAT(sweep(scenario, options).failed(), IsEmpty());
  // A helper that has another value for a rule is what the run without a fault has, too.
  auto const wrong = [&](Lab& lab) {
    scenario(lab);
    dataOf(lab)->ruleAction1Is(keyOf("web", 10), 8);
  };
  auto const failed = sweep(wrong, options).failed();
  ASSERT_THAT(failed, testing::Not(IsEmpty()));
  EXPECT_EQ(failed.front().findings.front().kind, PolicyMapTestKit::Irregularity::Kind::other);
  EXPECT_THAT(failed.front().findings.front().text,
              testing::StartsWith("edge input ipv4: different for 2^150 packets"));
}

TEST(Prove, AsJson) {
  Lab lab;
  lab.load(policy);
  EXPECT_EQ(jsonOf(proofOf(lab)).text(), R"({"subject":"edge input ipv4","verdict":"the same"})");
  dataOf(lab)->ruleMatchDel(keyOf("web", 20));
  dataOf(lab)->subRulesForKeyDel(keyOf("rest", 20));
  EXPECT_THAT(
      jsonOf(proofOf(lab)).text(),
      testing::AllOf(HasSubstr(R"("verdict":"different","packets":")"),
                     HasSubstr(R"("recorded":{"class":"","action1":0,"action2":0,"action3":0})"),
                     HasSubstr(R"("configuredRule":{"class":"rest","acl":"rest","seq":20)"),
                     HasSubstr("rule rest 20 of class rest: it has no sub-rule")));
}

}  // namespace
}  // namespace PolicyMapPackets::test
