// SPDX-License-Identifier: Apache-2.0
#include "packets/Proof.h"

#include "testkit/Printing.h"

#include <gmock/gmock.h>

#include <functional>
#include <sstream>

namespace PolicyMapPackets::test {
namespace {

using PolicyMap::AclRuleKey;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::SubRuleData;
using PolicyMapTest::AclPolicyData;
using PolicyMapTestKit::Lab;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr char const* policy = R"(ip access-list web
  10 permit tcp any any eq 80
  20 permit tcp any any range 8000 8010
ip access-list rest
  10 deny udp any any eq 53
  20 permit ip any any
class-map match-any web
  match access-group web
class-map match-any rest
  match access-group rest
policy-map edge
  class web
    set action1 1
  class rest
    set action1 2
interface Ethernet1
  ip address 192.0.2.1/24
  service-policy input edge)";

template <class Printed>
std::string printed(Printed const& value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

std::string tracedText(Lab const& lab, std::string const& packet, Deny deny = Deny::nextClass) {
  std::string text;
  for (Trace const& each : trace(lab, Packet(packet), {}, deny)) {
    text += printed(each);
  }
  return text;
}

Proof proofOf(Lab const& lab, ProofOptions const& options = {}) {
  std::vector<Proof> const proofs = prove(lab, {}, options);
  EXPECT_THAT(proofs, SizeIs(1));
  return proofs.front();
}

Kor::Ptr<AclPolicyData> dataOf(Lab const& lab) {
  return lab.helper()->testData({{"edge", "input"}, ClassMapMatchOption::ipv4});
}

AclRuleKey keyOf(char const* list, std::uint32_t number) {
  return {list, list, number, ClassMapMatchOption::ipv4};
}

TEST(Prove, WhatIsProgrammedIsWhatIsConfigured) {
  Lab lab;
  lab.load(policy);
  Proof const proof = proofOf(lab);
  EXPECT_THAT(proof.differences, IsEmpty());
  EXPECT_TRUE(proof.complete);
  EXPECT_EQ(printed(proof), "edge input ipv4: every packet is treated as configured\n");
}

TEST(Prove, ADenyInOneOfSeveralListsOfAClass) {
  Lab lab;
  lab.load(policy);
  lab.load(R"(ip access-list web
  5 deny tcp any any eq 80
class-map match-any web
  match access-group more
ip access-list more
  10 permit tcp any any)");
  std::string const text = printed(proofOf(lab));
  EXPECT_EQ(text, "edge input ipv4: DIFFERENT for 2^150 packets\n"
                  "tcp 0.0.0.0:0 > 0.0.0.0:80\n"
                  "  records        rest  rest 20  permit ip any any   action1 2\n"
                  "  configuration  web   more 10  permit tcp any any  action1 1\n"
                  "  as for 2^150 packets, such as every tcp any any eq 80\n");
}

// Each changes what is recorded, so that some packet is treated in another way.
struct Mutation {
  char const* name;
  std::function<void(AclPolicyData&)> apply;
  char const* smallest;
};

std::vector<Mutation> mutations() {
  auto const changeMatch = [](char const* list, std::uint32_t number, auto change) {
    return [=](AclPolicyData& data) {
      Acl::IpRuleConfig rule = data.ruleMatch(keyOf(list, number));
      change(rule);
      data.ruleMatchIs(keyOf(list, number), rule);
    };
  };
  return {
      {"action", [](AclPolicyData& data) { data.ruleAction1Is(keyOf("web", 10), 7); },
       "tcp 0.0.0.0:0 > 0.0.0.0:80"},
      {"another action", [](AclPolicyData& data) { data.ruleAction3Is(keyOf("rest", 20), 1); },
       "tcp 0.0.0.0:0 > 0.0.0.0:0"},
      {"permit", changeMatch("web", 10, [](auto& rule) { rule.permitIs(false); }),
       "tcp 0.0.0.0:0 > 0.0.0.0:80"},
      {"deny", changeMatch("rest", 10, [](auto& rule) { rule.permitIs(true); }),
       "udp 0.0.0.0:0 > 0.0.0.0:53"},
      {"protocol", changeMatch("web", 10, [](auto& rule) { rule.protocolIs(17); }),
       "tcp 0.0.0.0:0 > 0.0.0.0:80"},
      {"source",
       changeMatch("web", 10, [](auto& rule) { rule.sourceIs(Acl::IpAddressMatch("0.0.0.0/1")); }),
       "tcp 128.0.0.0:0 > 0.0.0.0:80"},
      {"flags",
       changeMatch("web", 20,
                   [](auto& rule) {
                     rule.tcpFlagsIs({2, 2});
                   }),
       "tcp 0.0.0.0:0 > 0.0.0.0:8000"},
      {"ttl", changeMatch("web", 20, [](auto& rule) { rule.ttlIs(Acl::TtlMatch::neq(9)); }),
       "tcp 0.0.0.0:0 > 0.0.0.0:8000 ttl 9"},
      {"no sub-rules", [](AclPolicyData& data) { data.subRulesForKeyDel(keyOf("web", 10)); },
       "tcp 0.0.0.0:0 > 0.0.0.0:80"},
      {"a bound of a sub-rule",
       [](AclPolicyData& data) {
         auto const subRules = data.subRulesForKey(keyOf("web", 20));
         subRules->subRuleDelAll();
         subRules->subRuleIs(SubRuleData(0, 65535, 8000, 8009, 0, false, true), true);
       },
       "tcp 0.0.0.0:0 > 0.0.0.0:8010"},
      {"one sub-rule more",
       [](AclPolicyData& data) {
         data.subRulesForKey(keyOf("web", 20))
             ->subRuleIs(SubRuleData(1, 1, 9000, 9000, 0, false, false), true);
       },
       "tcp 0.0.0.0:1 > 0.0.0.0:9000"},
  };
}

TEST(Prove, FindsEveryRecordedValueThatIsChanged) {
  for (Mutation const& mutation : mutations()) {
    Lab lab;
    lab.load(policy);
    mutation.apply(*dataOf(lab));
    Proof const proof = proofOf(lab);
    ASSERT_THAT(proof.differences, testing::Not(IsEmpty())) << mutation.name;
    EXPECT_EQ(Packet(proof.differences.front().smallest).text(), mutation.smallest)
        << mutation.name;
  }
}

TEST(Prove, SaysWhyNothingIsKnown) {
  auto const unknownOf = [](std::function<void(Lab&)> const& change,
                            PolicyMapTestKit::LabOptions const& options = {}) {
    Lab lab(options);
    change(lab);
    return proofOf(lab).unknown;
  };
  EXPECT_EQ(unknownOf([](Lab& lab) {
              lab.inject({"commitError", "table full"});
              lab.load(policy);
            }),
            "failed: commitPolicy: table full; next try in 1 s");
  EXPECT_EQ(unknownOf([](Lab& lab) {
              lab.load(policy);
              dataOf(lab)->dirtyIs(true);
            }),
            "rules were added that are not committed");
  EXPECT_EQ(unknownOf([](Lab& lab) { lab.load(policy); }, {.journal = 3}),
            "the order of the rules is in entries that the journal has dropped");
  EXPECT_EQ(unknownOf([](Lab& lab) {
              lab.load(policy);
              dataOf(lab)->ruleMatchIs(keyOf("web", 30), {});
            }),
            "rule web 30 was added by no call of the journal");
}

TEST(Prove, IsUndecidedAtTheLimit) {
  Lab lab;
  lab.load(policy);
  Proof const proof = proofOf(lab, {.limits = {.steps = 0}});
  EXPECT_FALSE(proof.complete);
  EXPECT_EQ(printed(proof), "edge input ipv4: undecided: the limit of steps was reached\n");
}

TEST(Prove, SelectsPoliciesAndOptions) {
  Lab lab;
  lab.load(std::string(policy) + R"(
interface Ethernet2
  ip address 192.0.2.2/24
  service-policy output other
policy-map other
  class web6
ipv6 access-list web6
  10 permit tcp any any eq 80
class-map match-any web6
  match ipv6 access-group web6)");
  auto const namesOf = [&](Selection const& selection) {
    std::vector<std::string> names;
    for (Proof const& each : prove(lab, selection)) {
      names.push_back(each.policy.first().stdString() + " " +
                      PolicyMapTestKit::toText(each.option));
    }
    return names;
  };
  EXPECT_THAT(namesOf({}), ElementsAre("edge ipv4", "other ipv6"));
  EXPECT_THAT(namesOf({.intf = Vorel::IntfId("Ethernet2")}), ElementsAre("other ipv6"));
  EXPECT_THAT(namesOf({.policyMap = "edge"}), ElementsAre("edge ipv4"));
  EXPECT_THAT(namesOf({.option = ClassMapMatchOption::ipv6}), ElementsAre("other ipv6"));
  EXPECT_THAT(namesOf({.policyMap = "nothing"}), IsEmpty());
}

TEST(Trace, ShowsBothWays) {
  Lab lab;
  lab.load(policy);
  EXPECT_EQ(tracedText(lab, "udp 10.0.0.1:4000 > 192.0.2.53:53"),
            "edge input ipv4  rest  rest 10  deny udp any any eq 53  leaves the class\n"
            "                                no class takes it\n"
            "configuration                   no class takes it\n"
            "the same, as for every udp any any eq 53\n");
  EXPECT_EQ(tracedText(lab, "tcp 10.0.0.1:4000 > 192.0.2.80:8005"),
            "edge input ipv4  web  web 20  permit tcp any any range 8000 8010  action1 1\n"
            "configuration    web  web 20  permit tcp any any range 8000 8010  action1 1\n"
            "the same, as for every tcp any any range 8000 8010\n");
}

TEST(Trace, ReadsDenyAsItIsTold) {
  Lab lab;
  lab.load(policy);
  lab.load("policy-map edge\n class all\nclass-map match-any all\n match access-group all\n"
           "ip access-list all\n 10 permit ip any any\n");
  std::string const packet = "udp 10.0.0.1:4000 > 192.0.2.53:53";
  EXPECT_THAT(tracedText(lab, packet), HasSubstr("the same, as"));
  EXPECT_THAT(tracedText(lab, packet, Deny::stop), HasSubstr("ends the search"));
  EXPECT_THAT(tracedText(lab, packet, Deny::stop), HasSubstr("DIFFERENT, as"));
  EXPECT_THAT(tracedText(lab, packet, Deny::entry), HasSubstr("deny udp any any eq 53  action1 2"));
}

TEST(Trace, TakesTheOrderOfTheJournal) {
  Lab lab({.updateAction = true});
  lab.load(policy);
  lab.load("ip access-list web\n 5 deny tcp any any eq 80\n");  // all rules are added again
  EXPECT_THAT(tracedText(lab, "tcp 10.0.0.1:4000 > 192.0.2.80:80"), HasSubstr("web 5  deny tcp"));
  EXPECT_THAT(proofOf(lab).differences, IsEmpty());
}

TEST(Configuration, NestedClassesAndMatchAll) {
  Lab lab;
  lab.load(R"(ip access-list tcp
  10 permit tcp any any
ip access-list web
  10 permit ip any host 192.0.2.80
  20 permit tcp any host 192.0.2.81
class-map match-any server
  match access-group web
class-map match-all both
  match class-map server
  match access-group tcp
class-map match-any own
  match ip deny udp any any
  match ip ip any host 192.0.2.80
policy-map edge
  class both
    set action1 1
  class own
    set action1 2
interface Ethernet1
  ip address 192.0.2.1/24
  service-policy input edge)");
  EXPECT_THAT(printed(proofOf(lab)), HasSubstr("every packet is treated as configured"));
  auto const classOf = [&](char const* packet) {
    return trace(lab, Packet(packet)).front().byConfiguration.className;
  };
  EXPECT_EQ(classOf("tcp 10.0.0.1:1 > 192.0.2.80:80"), "both");
  EXPECT_EQ(classOf("tcp 10.0.0.1:1 > 192.0.2.81:80"), "both");
  EXPECT_EQ(classOf("tcp 10.0.0.1:1 > 192.0.2.82:80"), "");
  EXPECT_EQ(classOf("icmp 10.0.0.1 > 192.0.2.80"), "own");
  EXPECT_EQ(classOf("udp 10.0.0.1:1 > 192.0.2.80:80"), "") << "its own rules are one list";
}

}  // namespace
}  // namespace PolicyMapPackets::test
