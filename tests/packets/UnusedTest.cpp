// SPDX-License-Identifier: Apache-2.0
#include "packets/Unused.h"

#include "packets/Labs.h"
#include "packets/Tiny.h"

namespace PolicyMapPackets::test {
namespace {

std::string unusedOf(std::string const& lists, std::string const& classMap) {
  Lab lab;
  lab.load(oneClass(lists, classMap));
  std::vector<Unused> const all = unusedRules(lab, {.option = ClassMapMatchOption::ipv4});
  EXPECT_EQ(all.size(), 1U);
  return printed(all.front());
}

constexpr char const* listA = "match-any one\n match access-group A\n";

TEST(Unused, EveryRuleMayBeUsed) {
  EXPECT_EQ(
      unusedOf("ip access-list A\n 10 permit tcp any any eq 80\n 20 permit udp any any\n", listA),
      "edge input ipv4: every rule is used");
}

TEST(Unused, ARuleThatIsCovered) {
  EXPECT_EQ(
      unusedOf("ip access-list A\n 10 permit tcp any any\n 20 permit tcp any any eq 80\n", listA),
      "edge input ipv4:\n"
      "  A 20 permit tcp any any eq 80 of class one is reached by no packet, because of A 10 "
      "permit tcp any any of class one");
}

TEST(Unused, NamesNoMoreRulesThanAreNeeded) {
  EXPECT_EQ(unusedOf("ip access-list A\n 10 permit tcp any any lt 100\n"
                     " 20 permit tcp host 10.0.0.1 any range 90 110\n"
                     " 30 permit tcp any any gt 99\n 40 permit tcp any any range 50 150\n",
                     listA),
            "edge input ipv4:\n"
            "  A 20 permit tcp host 10.0.0.1 any range 90 110 of class one makes no difference; "
            "without it: A 40 permit tcp any any range 50 150 of class one\n"
            "  A 40 permit tcp any any range 50 150 of class one is reached by no packet, because "
            "of A 10 permit tcp any any lt 100 of class one, A 30 permit tcp any any gt 99 of "
            "class one");
}

TEST(Unused, NamesAllRulesThatShareThePackets) {
  EXPECT_EQ(unusedOf("ip access-list A\n 10 permit tcp any any range 5 15\n"
                     " 20 permit tcp any any lt 10\n 30 permit tcp any any gt 9\n",
                     listA),
            "edge input ipv4:\n"
            "  A 10 permit tcp any any range 5 15 of class one makes no difference; "
            "without it: A 20 permit tcp any any lt 10 of class one, "
            "A 30 permit tcp any any gt 9 of class one");
}

TEST(Unused, ADenyBehindWhichNothingIsPermitted) {
  EXPECT_EQ(unusedOf("ip access-list A\n 10 deny tcp any any eq 80\n 20 permit tcp any any\n"
                     " 30 deny ip any any\n",
                     listA),
            "edge input ipv4:\n  A 30 deny ip any any of class one makes no difference");
}

TEST(Unused, ARuleWithoutPackets) {
  Lab lab;
  lab.load(policy);
  Acl::IpRuleConfig rule;
  rule.srcPortIs(Acl::PortMatch::lt(0));
  lab.acls()->ipAcl("web")->ruleIs(5, rule);
  EXPECT_EQ(printed(unusedRules(lab).front()),
            "edge input ipv4:\n"
            "  web 5 permit ip any lt 0 any of class web matches no packet");
}

TEST(Unused, AClassBehindOneThatTakesAll) {
  Lab lab;
  lab.load(std::string(policy) +
           "\nclass-map match-any all\n match ip ip any any\npolicy-map edge\n"
           " class all insert-before web\n");
  std::vector<Unused> const all = unusedRules(lab);
  ASSERT_EQ(all.size(), 1U);
  EXPECT_THAT(all[0].classes, testing::ElementsAre("web", "rest"));
  EXPECT_THAT(jsonOf(all[0]).text(), testing::HasSubstr(R"("classes":["web","rest"])"));
}

// Compares with a look at each packet, with and without each rule.
TEST(Unused, IsRightForRandomPolicies) {
  TinyRandom random(6);
  std::vector<Packet> const packets = tinyPackets();
  std::size_t found = 0;
  for (int i = 0; i != 60; ++i) {
    Subject subject;
    subject.policy = {"edge", "input"};
    for (std::uint32_t number = 0; number != 2; ++number) {
      Kor::Name const name(TinyRandom::className(number));
      MatchTree any{MatchTree::Kind::any};
      for (std::uint32_t part = 0; part != 2; ++part) {
        MatchTree list{MatchTree::Kind::list};
        for (std::uint32_t rule = 0; rule != 3; ++rule) {
          list.rules.push_back({name, Kor::Name(part == 0 ? "a" : "b"), rule, random.rule()});
        }
        any.parts.push_back(list);
      }
      subject.configured.classes.push_back({{name.stdString(), {1}}, any});
    }
    Unused const unused = unusedRules(subject);
    ASSERT_FALSE(unused.isSpent);
    std::vector<DecidingRule> named;
    for (UnusedRule const& each : unused.rules) {
      named.push_back(each.rule);
    }
    std::vector<DecidingRule> expected;
    for (ConfiguredClass& each : subject.configured.classes) {
      for (MatchTree& list : each.match.parts) {
        for (std::size_t rule = 0; rule != list.rules.size(); ++rule) {
          ConfiguredPolicy const before = subject.configured;
          ConfiguredRule const left = list.rules[rule];
          list.rules.erase(list.rules.begin() + static_cast<std::ptrdiff_t>(rule));
          bool const matters =
              std::any_of(packets.begin(), packets.end(), [&](Packet const& packet) {
                return classByConfiguration(before, packet) !=
                       classByConfiguration(subject.configured, packet);
              });
          list.rules.insert(list.rules.begin() + static_cast<std::ptrdiff_t>(rule), left);
          if (!matters) {
            expected.push_back(decidingRule(left));
          }
        }
      }
    }
    EXPECT_EQ(named, expected);
    found += expected.size();
  }
  EXPECT_GT(found, 50U);
}

}  // namespace
}  // namespace PolicyMapPackets::test
