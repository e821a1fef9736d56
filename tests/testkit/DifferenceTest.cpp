// SPDX-License-Identifier: Apache-2.0
#include "testkit/Difference.h"

#include "testkit/Labs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace PolicyMapTestKit::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Kind = Change::Kind;

std::vector<std::string> linesOf(Difference const& difference) {
  std::vector<std::string> lines;
  for (Change const& change : difference) {
    lines.push_back(change.describe());
  }
  return lines;
}

// What an edit of the policy changes in the records.
Difference afterEdit(Lab& lab, std::string const& edit) {
  Snapshot const before = lab.snapshot();
  load(lab, edit);
  return difference(before, lab.snapshot());
}

TEST(Difference, IsEmptyIfNothingChanged) {
  Lab lab;
  load(lab, portRange);
  EXPECT_THAT(difference(lab.snapshot(), lab.snapshot()), IsEmpty());
  EXPECT_THAT(difference(lab.record("P"), lab.record("P")), IsEmpty());
  EXPECT_THAT(difference(Snapshot(), Snapshot()), IsEmpty());
}

TEST(Difference, HasAllOfANewPolicy) {
  Lab lab;
  EXPECT_THAT(linesOf(afterEdit(lab, simplePolicy)),
              ElementsAre("P/input ipv4: created", "P/input ipv4: createCount 0 -> 1",
                          "P/input ipv4: commitCount 0 -> 1",
                          "P/input ipv4: interface Ethernet1 added",
                          "P/input ipv4: rule P 10 added: permit tcp any any eq 80"));
}

TEST(Difference, HasWhatADeletedPolicyLoses) {
  Lab lab;
  load(lab, simplePolicy);
  EXPECT_THAT(linesOf(afterEdit(lab, "no policy-map P\n")),
              ElementsAre("P/input ipv4: no longer created",
                          "P/input ipv4: interface Ethernet1 removed",
                          "P/input ipv4: rule P 10 removed: permit tcp any any eq 80"));
}

TEST(Difference, HasEachActionOfEachRule) {
  Lab lab({.updateAction = true});
  load(lab, portRange);
  Difference const changes = afterEdit(lab, "policy-map P\n class P\n  set action1 7\n");
  EXPECT_THAT(linesOf(changes), ElementsAre("P/input ipv4: commitCount 1 -> 2",
                                            "P/input ipv4: beginUpdateActionCount 0 -> 1",
                                            "P/input ipv4: endUpdateActionCount 0 -> 1",
                                            "P/input ipv4: rule P 10: action1 1 -> 7",
                                            "P/input ipv4: rule P 20: action1 1 -> 7"));
  Change const& last = *std::prev(changes.end());
  EXPECT_EQ(last.kind, Kind::actionChanged);
  EXPECT_EQ(last.rule->seqno(), 20U);
  EXPECT_EQ(last.field, "action1");
  EXPECT_EQ(last.numberBefore, 1U);
  EXPECT_EQ(last.numberAfter, 7U);
}

TEST(Difference, HasMatchesAndSubRules) {
  Lab lab({.subRulesForPorts = true});
  load(lab, portRange);
  Difference const changes =
      afterEdit(lab, "ip access-list P\n 20 permit udp any any range 5004 5007\n");
  EXPECT_THAT(linesOf(changes),
              ElementsAre("P/input ipv4: createCount 1 -> 2", "P/input ipv4: commitCount 1 -> 2",
                          "P/input ipv4: rule P 20: permit udp any any range 5004 5008 -> "
                          "permit udp any any range 5004 5007",
                          "P/input ipv4: rule P 20: sub-rules dst 5004-5007 | dst 5008 -> "
                          "dst 5004-5007"));
  EXPECT_EQ(std::prev(changes.end())->numberBefore, 2U);
  EXPECT_EQ(std::prev(changes.end())->numberAfter, 1U);
}

TEST(Difference, HasInterfacesAndNamesTheClassOfARule) {
  Lab lab;
  load(lab, simplePolicy);
  load(lab, "class-map match-any C\n match access-group P\npolicy-map P\n class C\n no class P\n");
  EXPECT_THAT(
      linesOf(afterEdit(lab, "ip access-list P\n no 10\n 20 permit udp any any\n"
                             "no interface Ethernet1\n"
                             "interface Ethernet2\n service-policy input P\n")),
      testing::IsSupersetOf({"P/input ipv4: interface Ethernet2 added",
                             "P/input ipv4: interface Ethernet1 removed",
                             "P/input ipv4: rule P 10 of class C removed: permit tcp any any eq 80",
                             "P/input ipv4: rule P 20 of class C added: permit udp any any"}));
}

TEST(Difference, HasTheOrderOfTheRules) {
  Lab lab;
  load(lab, "class-map A\n match ip tcp any any\nclass-map B\n match ip udp any any\n"
            "policy-map P\n class A\n class B\ninterface Ethernet1\n service-policy input P\n");
  Difference const changes = afterEdit(lab, "policy-map P\n class B insert-before A\n");
  Change const& last = *std::prev(changes.end());
  EXPECT_EQ(last.describe(), "P/input ipv4: rules in another order, by class: B, A");
  EXPECT_EQ(last.before, "A, B");
}

TEST(Difference, HasTheStateOfTheCommit) {
  Lab lab;
  load(lab, simplePolicy);
  Record const committed = lab.record("P");
  Record dirty = committed;
  dirty.dirty = true;
  EXPECT_THAT(linesOf(difference(committed, dirty)), ElementsAre("P/input ipv4: not committed"));
  EXPECT_THAT(linesOf(difference(dirty, committed)), ElementsAre("P/input ipv4: committed"));
}

TEST(Difference, ComparesTheNumberOfRulesIfTheyWereLeftOut) {
  Lab lab;
  load(lab, simplePolicy);
  Snapshot const before = lab.snapshot(WithRules::no);
  load(lab, portRange);
  EXPECT_THAT(linesOf(difference(before, lab.snapshot(WithRules::no))),
              ElementsAre("P/input ipv4: createCount 1 -> 2", "P/input ipv4: commitCount 1 -> 2",
                          "P/input ipv4: ruleCount 1 -> 2", "P/input ipv4: subRuleCount 1 -> 2"));
}

TEST(Difference, OfSnapshotsIsByPolicyAndTakesMissingRecordsAsEmpty) {
  Lab lab;
  load(lab, simplePolicy);
  Snapshot const one = lab.snapshot();
  load(lab, "policy-map A\n class P\npolicy-map Z\n class P\n"
            "interface Ethernet2\n service-policy input A\n service-policy output Z\n");
  Snapshot const three = lab.snapshot();
  auto const created = [](Difference const& changes) {
    std::vector<std::string> names;
    for (Change const& change : changes) {
      if (change.kind == Kind::created || change.kind == Kind::removed) {
        names.push_back(change.describe());
      }
    }
    return names;
  };
  EXPECT_THAT(created(difference(one, three)),
              ElementsAre("A/input ipv4: created", "Z/output ipv4: created"));
  EXPECT_THAT(created(difference(three, one)),
              ElementsAre("A/input ipv4: no longer created", "Z/output ipv4: no longer created"));
  for (Change const& change : difference(one, three)) {
    EXPECT_NE(change.policy, "P") << "it is the same in both";
  }
}

TEST(Difference, IsAValueThatPrintsALinePerChange) {
  Lab lab;
  load(lab, simplePolicy);
  Difference const changes = afterEdit(lab, "interface Ethernet2\n service-policy input P\n");
  Difference const copy = changes;
  EXPECT_EQ(copy, changes);
  EXPECT_NE(copy, Difference());
  std::ostringstream out;
  out << copy << "\n" << Difference();
  EXPECT_EQ(out.str(), "P/input ipv4: commitCount 1 -> 2\n"
                       "P/input ipv4: interface Ethernet2 added\n"
                       "no difference");
}

}  // namespace
}  // namespace PolicyMapTestKit::test
