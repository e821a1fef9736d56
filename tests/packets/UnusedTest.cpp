// SPDX-License-Identifier: Apache-2.0
#include "packets/Unused.h"

#include "packets/Labs.h"
#include "packets/Tiny.h"

#include <sstream>
#include <string>
#include <vector>

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

// Two classes of two lists.
ConfiguredPolicy listsOf(TinyRandom& random) {
  ConfiguredPolicy policy;
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
    policy.classes.push_back({{name.stdString(), {1}}, any});
  }
  return policy;
}

// NOLINTNEXTLINE(misc-no-recursion): as deep as class-maps are nested
void addLists(MatchTree& tree, std::vector<MatchTree*>& lists) {
  if (tree.kind == MatchTree::Kind::list) {
    lists.push_back(&tree);
  }
  for (MatchTree& part : tree.parts) {
    addLists(part, lists);
  }
}

// The rules without which each packet is in the same class, by a look at each packet.
std::vector<DecidingRule> needless(ConfiguredPolicy const& policy) {
  static std::vector<Packet> const packets = tinyPackets();
  ConfiguredPolicy changed = policy;
  std::vector<MatchTree*> lists;
  for (ConfiguredClass& each : changed.classes) {
    addLists(each.match, lists);
  }
  std::vector<DecidingRule> rules;
  for (MatchTree* const list : lists) {
    for (std::size_t i = 0; i != list->rules.size(); ++i) {
      ConfiguredRule const rule = list->rules[i];
      auto const place = list->rules.begin() + static_cast<std::ptrdiff_t>(i);
      list->rules.erase(place);
      bool const isNeedless =
          std::all_of(packets.begin(), packets.end(), [&](Packet const& packet) {
            return classByConfiguration(policy, packet) == classByConfiguration(changed, packet);
          });
      list->rules.insert(place, rule);
      if (isNeedless) {
        rules.push_back(decidingRule(rule));
      }
    }
  }
  return rules;
}

std::vector<DecidingRule> rulesOf(Unused const& unused) {
  std::vector<DecidingRule> rules;
  for (UnusedRule const& each : unused.rules) {
    rules.push_back(each.rule);
  }
  return rules;
}

Subject subjectOf(ConfiguredPolicy policy) {
  Subject subject;
  subject.policy = {"edge", "input"};
  subject.configured = std::move(policy);
  return subject;
}

// Random lists all have one name.
ConfiguredPolicy withNamedLists(ConfiguredPolicy policy) {
  std::vector<MatchTree*> lists;
  for (ConfiguredClass& each : policy.classes) {
    addLists(each.match, lists);
  }
  for (std::size_t i = 0; i != lists.size(); ++i) {
    for (ConfiguredRule& rule : lists[i]->rules) {
      rule.list = Kor::Name(std::to_string(i));
    }
  }
  return policy;
}

TEST(Unused, IsRightForRandomPolicies) {
  TinyRandom random(6);
  std::size_t found = 0;
  for (int i = 0; i != 120; ++i) {
    Subject const subject =
        subjectOf(i % 2 == 0 ? listsOf(random) : withNamedLists(random.configured()));
    Unused const unused = unusedRules(subject);
    ASSERT_FALSE(unused.isSpent);
    std::vector<DecidingRule> const expected = needless(subject.configured);
    EXPECT_EQ(rulesOf(unused), expected);
    found += expected.size();
  }
  EXPECT_GT(found, 100U);
}

TEST(Unused, WithASmallBudgetNoRuleIsNamedThatMatters) {
  TinyRandom random(7);
  int spent = 0;
  for (int i = 0; i != 60; ++i) {
    Subject const subject = subjectOf(listsOf(random));
    Unused const unused = unusedRules(subject, random.below(20));
    std::vector<DecidingRule> const expected = needless(subject.configured);
    for (UnusedRule const& each : unused.rules) {
      EXPECT_THAT(expected, testing::Contains(each.rule)) << unused;
    }
    spent += unused.isSpent ? 1 : 0;
  }
  EXPECT_GT(spent, 20);
}

constexpr char const* listTwice = R"(ip access-list all
  10 permit ip any any
ip access-list twice
  10 permit tcp any any
class-map match-any first
  match access-group all
class-map match-any nested
  match access-group twice
class-map match-any web
  match access-group twice
  match class-map nested
policy-map edge
  class web
    set action1 1
interface Ethernet1
  ip address 192.0.2.1/24
  service-policy input edge
)";

TEST(UnusedOfAListThatAClassHasTwice, IsNoRuleThatTakesPackets) {
  PolicyMapTestKit::Lab lab;
  lab.load(listTwice);
  PolicyMapPackets::Unused const unused = PolicyMapPackets::unusedRules(lab).at(0);
  EXPECT_TRUE(unused.rules.empty());
  EXPECT_TRUE(unused.classes.empty());
}

TEST(UnusedOfAListThatAClassHasTwice, NamesARuleThatIsNotReachedOnce) {
  PolicyMapTestKit::Lab lab;
  std::string text = listTwice;
  text.replace(text.find("  class web"), 0, "  class first\n");
  lab.load(text);
  PolicyMapPackets::Unused const unused = PolicyMapPackets::unusedRules(lab).at(0);
  ASSERT_EQ(unused.rules.size(), 1U);
  EXPECT_EQ(unused.rules[0].rule.name(), "twice 10");
  EXPECT_EQ(unused.rules[0].reason, PolicyMapPackets::UnusedRule::Reason::notReached);
  ASSERT_EQ(unused.rules[0].because.size(), 1U);
  EXPECT_EQ(unused.rules[0].because[0].name(), "all 10");
  EXPECT_EQ(unused.classes, std::vector<std::string>{"web"});
}

TEST(UnusedText, ClaimsNothingWhenTheBudgetIsSpent) {
  std::ostringstream text;
  text << PolicyMapPackets::Unused{"edge input ipv4", {}, {}, true};
  EXPECT_EQ(text.str(), "edge input ipv4: undecided");
}

}  // namespace
}  // namespace PolicyMapPackets::test
