// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"

#include <PolicyMap/CompiledRules.h>

#include <gmock/gmock.h>

namespace policymap {
namespace {

using PolicyMap::ClassMapMatch;
using PolicyMap::ClassMapSubConfig;
using PolicyMap::CompiledRules;
using PolicyMap::DependencyKind;
using PolicyMap::PolicyMapGlobalData;
using testing::ElementsAre;
using testing::IsEmpty;

class Compiled : public testing::Test {
 protected:
  Kor::Ptr<Acl::Config> acls = Kor::make<Acl::Config>();
  Kor::Ptr<PolicyMap::ClassMapTypeConfig> classMaps = Kor::make<PolicyMap::ClassMapTypeConfig>();
  Kor::Ptr<PolicyMapGlobalData> global = Kor::make<PolicyMapGlobalData>(acls, classMaps);
  Kor::Ptr<ClassMapSubConfig> classMap = Kor::make<ClassMapSubConfig>("c");
  std::vector<DependencyKind> told;
  CompiledRules rules{global, [this](DependencyKind kind) { told.push_back(kind); }};

  void compile() { rules.compile(classMap); }
  void matches(std::uint32_t place, ClassMapMatchOption option, char const* list) const {
    classMap->matchIs(place, ClassMapMatch::acl(option, list));
  }
  void changed(DependencyKind kind, char const* name) const {
    global->dependencies().changed(kind, name);
  }
  void ipRule(char const* list, std::uint32_t seqno) const {
    acls->ipAclIs(list)->ruleIs(seqno, Acl::IpRuleConfig());
  }
  [[nodiscard]] std::vector<std::uint32_t> ipRules() const {
    std::vector<std::uint32_t> found;
    rules.of(ClassMapMatchOption::ipv4)->forEach([&](auto const& rule) {
      found.push_back(rule.seqno);
      return true;
    });
    return found;
  }
};

TEST_F(Compiled, RulesAreStaleUntilTheFirstCompilation) {
  EXPECT_TRUE(rules.stale());
  EXPECT_FALSE(rules.of(ClassMapMatchOption::ipv4));
  compile();
  EXPECT_FALSE(rules.stale());
  for (ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
    ASSERT_TRUE(rules.of(option));
    EXPECT_TRUE(rules.of(option)->empty());
  }
}

TEST_F(Compiled, RulesAreThoseOfTheLastCompilation) {
  ipRule("a", 10);
  matches(1, ClassMapMatchOption::ipv4, "a");
  compile();
  EXPECT_THAT(ipRules(), ElementsAre(10));
  ipRule("a", 20);
  EXPECT_THAT(ipRules(), ElementsAre(10));
  compile();
  EXPECT_THAT(ipRules(), ElementsAre(10, 20));
  rules.compile(nullptr);
  EXPECT_THAT(ipRules(), IsEmpty());
}

TEST_F(Compiled, RulesAreStaleWhenTheCallerSaysSo) {
  compile();
  rules.makeStale();
  EXPECT_TRUE(rules.stale());
}

TEST_F(Compiled, RulesDependOnEveryListAndClassMapThatIsReferredTo) {
  matches(1, ClassMapMatchOption::ipv4, "a");
  matches(2, ClassMapMatchOption::ipv6, "a6");
  matches(3, ClassMapMatchOption::mpls, "m");
  classMap->matchIs(4, ClassMapMatch::classMap("nested"));
  compile();
  changed(DependencyKind::ipAcl, "other");
  changed(DependencyKind::ip6Acl, "a");
  EXPECT_FALSE(rules.stale());
  EXPECT_THAT(told, IsEmpty());
  changed(DependencyKind::ipAcl, "a");
  EXPECT_TRUE(rules.stale());
  changed(DependencyKind::ip6Acl, "a6");
  changed(DependencyKind::macAcl, "m");
  changed(DependencyKind::classMap, "nested");
  EXPECT_THAT(told, ElementsAre(DependencyKind::ipAcl, DependencyKind::ip6Acl,
                                DependencyKind::macAcl, DependencyKind::classMap));
}

TEST_F(Compiled, RulesNoLongerDependOnWhatTheClassMapHasLeft) {
  matches(1, ClassMapMatchOption::ipv4, "a");
  compile();
  matches(1, ClassMapMatchOption::ipv4, "b");
  compile();
  changed(DependencyKind::ipAcl, "a");
  EXPECT_FALSE(rules.stale());
  changed(DependencyKind::ipAcl, "b");
  EXPECT_TRUE(rules.stale());
}

TEST_F(Compiled, RulesAreStaleWhenTheReactionRuns) {
  bool staleInside = false;
  CompiledRules reacting{global, [&](DependencyKind) { staleInside = reacting.stale(); }};
  matches(1, ClassMapMatchOption::ipv4, "a");
  reacting.compile(classMap);
  changed(DependencyKind::ipAcl, "a");
  EXPECT_TRUE(staleInside);
}

TEST_F(Compiled, WithoutGlobalDataNothingIsFoundOrDependedOn) {
  CompiledRules alone{nullptr, [this](DependencyKind kind) { told.push_back(kind); }};
  ipRule("a", 10);
  matches(1, ClassMapMatchOption::ipv4, "a");
  alone.compile(classMap);
  EXPECT_TRUE(alone.of(ClassMapMatchOption::ipv4)->empty());
  EXPECT_EQ(alone.problems({}), "missing ip access-list a");
}

TEST_F(Compiled, ProblemsNameEverythingThatIsMissing) {
  compile();
  EXPECT_EQ(rules.problems({}), "");
  EXPECT_EQ(rules.problems("no room"), "no room");
  matches(1, ClassMapMatchOption::ipv4, "a");
  classMap->matchIs(2, ClassMapMatch::classMap("nested"));
  compile();
  EXPECT_EQ(rules.error(), "");
  EXPECT_EQ(rules.problems({}), "missing ip access-list a, missing class-map nested");
  EXPECT_EQ(rules.problems("no room"),
            "no room, missing ip access-list a, missing class-map nested");
}

TEST_F(Compiled, WhatFailedInThePassIsShownInsteadOfTheErrorOfTheRules) {
  auto const nested = classMaps->classMapConfigIs("d");
  nested->currentSubConfigIs(Kor::make<ClassMapSubConfig>("d"));
  nested->currentSubConfig()->matchIs(1, ClassMapMatch::classMap("c"));
  classMap->matchIs(1, ClassMapMatch::classMap("d"));
  compile();
  EXPECT_EQ(rules.error(), "class-map c matches itself: c > d > c");
  EXPECT_EQ(rules.problems({}), rules.error());
  EXPECT_EQ(rules.problems("no room"), "no room");
  classMap->matchDel(1);
  compile();
  EXPECT_EQ(rules.error(), "");
}

}  // namespace
}  // namespace policymap
