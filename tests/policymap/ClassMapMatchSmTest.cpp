// SPDX-License-Identifier: Apache-2.0
#include <Acl/Config.h>
#include <PolicyMap/ClassMapMatchSm.h>

#include <gtest/gtest.h>

namespace policymap {
namespace {

using PolicyMap::ClassMapMatchOption;
using PolicyMap::ClassMapMatchSm;
using PolicyMap::ClassRules;

class MatchMachine : public testing::Test {
 protected:
  Kor::Ptr<Acl::Config> acls = Kor::make<Acl::Config>();
  Kor::Ptr<Acl::AclDiff> diff = Kor::make<Acl::AclDiff>();
  Kor::Ptr<ClassMapMatchSm> machine = Kor::make<ClassMapMatchSm>(ClassMapMatchOption::ipv4);

  // Rewrites list "a" to one rule of that protocol and returns its rules.
  [[nodiscard]] ClassRules::PtrConst rewritten(int protocol) const {
    Acl::IpRuleConfig rule;
    rule.protocolIs(protocol);
    auto const list = acls->ipAclIs("a");
    list->ruleDelAll();
    list->ruleIs(10, rule);
    return Kor::make<ClassRules>(
        PolicyMap::RuleSources<Acl::IpRuleConfig>{{"a", list->rulesBySeq()}});
  }
};

TEST_F(MatchMachine, BeginsWithoutRules) {
  EXPECT_EQ(machine->option(), ClassMapMatchOption::ipv4);
  EXPECT_FALSE(machine->rules());
}

TEST_F(MatchMachine, TakesTheFirstRulesAlsoWhenTheyAreEmpty) {
  ClassRules::PtrConst const empty =
      Kor::make<ClassRules>(ClassRules::emptySources(ClassMapMatchOption::ipv4));
  EXPECT_TRUE(machine->rulesIs(empty, diff.get()));
  EXPECT_EQ(machine->rules(), empty);
}

TEST_F(MatchMachine, KeepsItsRulesWhileNewerOnesMakeNoDifference) {
  auto const first = rewritten(6);
  EXPECT_TRUE(machine->rulesIs(first, diff.get()));
  EXPECT_FALSE(machine->rulesIs(rewritten(6), diff.get()));
  EXPECT_EQ(machine->rules(), first);
  auto const other = rewritten(17);
  EXPECT_TRUE(machine->rulesIs(other, diff.get()));
  EXPECT_EQ(machine->rules(), other);
}

TEST_F(MatchMachine, WithoutADifferenceTrackerEveryOtherObjectIsTaken) {
  machine->rulesIs(rewritten(6), nullptr);
  auto const equal = rewritten(6);
  EXPECT_TRUE(machine->rulesIs(equal, nullptr));
  EXPECT_EQ(machine->rules(), equal);
}

}  // namespace
}  // namespace policymap
