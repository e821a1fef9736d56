// SPDX-License-Identifier: Apache-2.0

// What the core programs, proven against the configuration.

#include "packets/Labs.h"
#include "packets/Tiny.h"

namespace PolicyMapPackets::test {
namespace {

using PolicyMap::ClassMapMatch;
using PolicyMap::ClassMapMatchType;
using testing::ElementsAre;

// The rules of the record, in order, as "LIST NUMBER MATCH".
std::vector<std::string> rulesOf(Lab const& lab) {
  std::vector<std::string> rules;
  lab.forEachRecord(PolicyMapTestKit::WithRules::yes, [&](PolicyMapTestKit::Record const& record) {
    for (RuleRecord const& rule : record.rules) {
      rules.push_back(decidingRule(rule).name() + " " + rule.matchText());
    }
  });
  return rules;
}

std::string const lists = R"(ip access-list A
 10 deny tcp any any eq 80
 20 permit tcp host 10.0.0.1 any
ip access-list B
 10 deny tcp any any range 70 80 established
 20 permit tcp any any
)";

TEST(MatchAny, WhatOneListDeniesAnotherMayPermit) {
  Lab lab;
  lab.load(oneClass(lists, "match-any one\n match access-group A\n match access-group B\n"));
  EXPECT_THAT(rulesOf(lab),
              ElementsAre("A & B:10 10 deny tcp any any eq 80 established",
                          "A & B:20 10 permit tcp any any eq 80", "A 10 deny tcp any any eq 80",
                          "A 20 permit tcp host 10.0.0.1 any",
                          "B 10 deny tcp any any range 70 80 established",
                          "B 20 permit tcp any any"));
  EXPECT_EQ(proofOf(lab).verdict, Verdict::same);
}

TEST(MatchAny, ADenyThatHidesNothingOfItsListComesLast) {
  Lab lab;
  lab.load(oneClass("ip access-list A\n 10 permit udp any any\n 20 deny ip any any\n"
                    "ip access-list B\n 10 permit tcp any any\n 20 deny ip any any\n",
                    "match-any one\n match access-group A\n match access-group B\n"));
  EXPECT_THAT(rulesOf(lab), ElementsAre("A 10 permit udp any any", "B 10 permit tcp any any",
                                        "B 20 deny ip any any", "A 20 deny ip any any"));
  EXPECT_EQ(proofOf(lab).verdict, Verdict::same);
}

TEST(MatchAny, ADenyOfWhatNoLaterListPermitsStays) {
  Lab lab;
  lab.load(oneClass("ip access-list A\n 10 deny udp any any eq 53\n 20 permit udp any any\n"
                    "ip access-list B\n 10 deny udp any any eq 53\n 20 permit tcp any any\n",
                    "match-any one\n match access-group A\n match access-group B\n"));
  EXPECT_THAT(rulesOf(lab), ElementsAre("A 10 deny udp any any eq 53", "A 20 permit udp any any",
                                        "B 10 deny udp any any eq 53", "B 20 permit tcp any any"));
}

TEST(MatchAny, RulesOfTheClassMapThatFollowEachOtherAreOneList) {
  std::string const own = " match ip deny tcp any any eq 80\n match ip permit tcp any any\n";
  Lab together;
  together.load(oneClass("", "match-any one\n" + own));
  EXPECT_THAT(rulesOf(together), ElementsAre("10 deny tcp any any eq 80", "20 permit tcp any any"));
  EXPECT_EQ(proofOf(together).verdict, Verdict::same);

  Lab apart;
  apart.load(oneClass("ip access-list none\n 10 deny udp any any\n",
                      "match-any one\n match ip deny tcp any any eq 80\n"
                      " match access-group none\n match ip permit tcp any any\n"));
  EXPECT_THAT(rulesOf(apart), ElementsAre("none 10 deny udp any any", "30 permit tcp any any",
                                          "10 deny tcp any any eq 80"));
  EXPECT_EQ(proofOf(apart).verdict, Verdict::same);
}

TEST(MatchAny, NestedClassMapsAreListsOfTheirOwn) {
  Lab lab;
  lab.load(oneClass(lists + "class-map match-any inner\n match access-group A\n",
                    "match-any one\n match class-map inner\n match access-group B\n"));
  EXPECT_THAT(rulesOf(lab), testing::Contains("A & B:20 10 permit tcp any any eq 80"));
  EXPECT_EQ(proofOf(lab).verdict, Verdict::same);
}

TEST(MatchAny, IntersectionsHaveNumbersOfTheirOwn) {
  Lab lab;
  lab.load(oneClass(lists + "class-map match-all both\n match access-group A\n"
                            " match access-group B\n",
                    "match-any one\n match class-map both\n match access-group A\n"
                    " match access-group B\n"));
  std::vector<std::string> const rules = rulesOf(lab);
  EXPECT_THAT(rules, testing::Contains("A & B:20 10 deny tcp any any eq 80"));
  EXPECT_THAT(rules, testing::Contains("A & B:20 11 permit tcp any any eq 80"));
  EXPECT_EQ(proofOf(lab).verdict, Verdict::same);
}

TEST(MatchAny, WhatCannotBeSaidIsRefused) {
  Lab lab;
  lab.load(oneClass("ip access-list A\n 10 deny ip any any ttl neq 7\n 20 permit ip any any\n"
                    "ip access-list B\n 10 permit ip any any ttl neq 9\n",
                    "match-any one\n match access-group A\n match access-group B\n"));
  Proof const proof = proofOf(lab);
  EXPECT_EQ(proof.verdict, Verdict::notProgrammed);
  EXPECT_THAT(proof.reason,
              testing::HasSubstr("class-map one: the TTL matches of rules 10 of A and 10 of B "
                                 "cannot be combined"));
}

// Loads random class-maps, of which each part is a list, or rules of the class-map itself.
class RandomClassMaps {
 public:
  RandomClassMaps(Lab const& lab, TinyRandom& random) : lab_(lab), random_(random) {}

  void add(Kor::Name const& name, MatchTree const& tree) {
    auto const config = Kor::make<PolicyMap::ClassMapSubConfig>(name);
    bool const isAll = tree.kind == MatchTree::Kind::all;
    config->matchTypeIs(isAll ? ClassMapMatchType::matchAll : ClassMapMatchType::matchAny);
    std::uint32_t place = 0;
    auto const addPart = [&](MatchTree const& part) {
      if (part.kind != MatchTree::Kind::list) {
        Kor::Name const nested = newName();
        add(nested, part);
        config->matchIs(++place, ClassMapMatch::classMap(nested));
      } else if (!isAll && random_.oneIn(4)) {
        for (ConfiguredRule const& rule : part.rules) {
          config->matchIs(++place, ClassMapMatch::rule(ip(rule)));
        }
      } else {
        Kor::Name const list = newName();
        auto const acl = lab_.acls()->ipAclIs(list);
        for (ConfiguredRule const& rule : part.rules) {
          acl->ruleIs(rule.seqno, ip(rule));
        }
        config->matchIs(++place, ClassMapMatch::acl(ClassMapMatchOption::ipv4, list));
      }
    };
    if (tree.kind == MatchTree::Kind::list) {
      addPart(tree);
    }
    for (MatchTree const& part : tree.parts) {
      addPart(part);
    }
    lab_.classMaps()->classMapConfigIs(name)->currentSubConfigIs(config);
  }

 private:
  static Acl::IpRuleConfig ip(ConfiguredRule const& rule) {
    return std::get<Acl::IpRuleConfig>(rule.match);
  }
  Kor::Name newName() { return Kor::Name(Kor::String8("n" + std::to_string(++names_))); }

  Lab const& lab_;
  TinyRandom& random_;
  int names_ = 0;
};

TEST(Programming, OfRandomClassMapsIsWhatIsConfigured) {
  TinyRandom random(7);
  int programmed = 0;
  for (int i = 0; i != 400; ++i) {
    Lab lab;
    ConfiguredPolicy const configured = random.configured();
    RandomClassMaps classMaps(lab, random);
    for (ConfiguredClass const& each : configured.classes) {
      classMaps.add(Kor::Name(each.treatment.className), each.match);
    }
    lab.load("policy-map edge\n class one\n  set action1 1\n class two\n  set action1 2\n"
             "interface Ethernet1\n ip address 192.0.2.1/24\n service-policy input edge\n");
    for (Proof const& proof : prove(lab)) {
      EXPECT_THAT(proof.verdict, testing::AnyOf(Verdict::same, Verdict::notProgrammed)) << proof;
      programmed += proof.verdict == Verdict::same ? 1 : 0;
    }
  }
  EXPECT_GT(programmed, 300);
}

}  // namespace
}  // namespace PolicyMapPackets::test
