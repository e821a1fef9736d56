// SPDX-License-Identifier: Apache-2.0

// Planned faults, limits of the hardware, results that come late, findings and a sweep.
// docs/faults.md and docs/cookbook.md show and explain them.

#include "testkit/Lab.h"
#include "testkit/Matchers.h"
#include "testkit/sweep/Sweep.h"

using namespace PolicyMapTestKit;
using namespace std::chrono_literals;
using namespace testing;

namespace {

// Class web with rules 10, 20 and 30 of list web, in policy-map edge, attached at Ethernet1.
constexpr auto edge = R"(
  ip access-list web
    10 permit tcp any any eq 80
    20 permit tcp any any eq 443
    30 permit tcp any any eq 8080
  class-map match-any web
    match access-group web
  policy-map edge
    class web
      set action1 7
  interface Ethernet1
    service-policy input edge)";

TEST(PlannedFaults, TheThirdRuleFailsOnce) {
  Lab lab;
  FaultScope const faults = lab.plan("addRule nth=3");
  lab.load(edge);
  EXPECT_THAT(lab.failure("edge"),
              FailsWith("injected #1 at addRule(edge/input ipv4 web web:30)", "addRule", "web 30"));
  lab.advance(1s);
  EXPECT_THAT(lab.record("edge"), Programmed()) << "the next try meets no fault";
}

TEST(PlannedFaults, BeforeItIsCarriedOut) {
  Lab lab;
  FaultScope const faults = lab.plan("createPolicy before once");
  lab.load(edge);
  EXPECT_THAT(lab.journal().calls("deletePolicy"), IsEmpty()) << "there is nothing to delete";
}

TEST(PlannedFaults, AfterItIsCarriedOut) {
  Lab lab;
  FaultScope const faults = lab.plan("createPolicy after once");
  lab.load(edge);
  EXPECT_THAT(lab.journal().calls("deletePolicy"), SizeIs(1)) << "the policy is there";
}

TEST(PlannedFaults, AnOperationThatThrows) {
  Lab lab;
  FaultScope const faults = lab.plan("commitPolicy throws once text=\"no link\"");
  lab.load(edge);
  EXPECT_THAT(lab.failure("edge"), FailsWith("exception: no link", "commitPolicy"));
  lab.advance(1s);
  EXPECT_THAT(lab.record("edge"), Programmed());
}

TEST(PlannedFaults, AScript) {
  Lab lab;
  FaultScope const faults = lab.plan("addRule nth=2 then commitPolicy first=2");
  lab.load(edge);
  EXPECT_EQ(lab.failure("edge").operation(), "addRule");
  lab.advance(1s);
  EXPECT_EQ(lab.failure("edge").operation(), "commitPolicy");
  lab.advance(2s);
  EXPECT_EQ(lab.failure("edge").operation(), "commitPolicy");
  lab.advance(4s);
  EXPECT_THAT(lab.record("edge"), Programmed());
}

// The calls that fail in 100 s if each does with a probability of 1/4.
std::vector<std::string> callsThatFail(std::uint64_t seed) {
  Lab lab;
  FaultScope const faults = lab.plan("any probability=0.25 seed=" + std::to_string(seed));
  lab.load(edge);
  lab.advance(100s);
  std::vector<std::string> calls;
  for (MetFault const& met : faults.met()) {
    calls.push_back(met.text);
  }
  return calls;
}

TEST(PlannedFaults, ASeedRepeatsARun) {
  EXPECT_EQ(callsThatFail(2), callsThatFail(2));
  EXPECT_NE(callsThatFail(2), callsThatFail(3));
}

TEST(PlannedFaults, AFullTable) {
  Lab lab;
  FaultScope const limit = lab.plan("capacity rules=2");
  lab.load(edge);
  EXPECT_THAT(
      lab.failure("edge"),
      FailsWith("no room, rules=2: injected #1 at addRule(edge/input ipv4 web web:30)", "addRule"));
  lab.load("ip access-list web\n no 30");
  EXPECT_THAT(lab.record("edge"), Programmed()) << "two rules fit";
}

TEST(PlannedFaults, AResultThatIsHeld) {
  Lab lab({.async = true, .asyncDelay = 0});
  FaultScope const faults = lab.plan("commitPolicy hold once");
  lab.load(edge);
  ASSERT_THAT(lab.heldResults(), SizeIs(1));
  EXPECT_EQ(lab.heldResults()[0].call, "commitPolicy(edge/input ipv4)");
  EXPECT_EQ(lab.explain("edge").begin()->waitingFor, "commitPolicy");
  lab.release();
  EXPECT_THAT(lab.explain("edge"), AllProgrammed());
}

TEST(PlannedFaults, AResultThatComesTooLate) {
  Lab lab({.async = true, .asyncDelay = 0});
  FaultScope const faults = lab.plan("commitPolicy delay=40 once");
  lab.load(edge);
  lab.advance(30s);
  EXPECT_THAT(lab.failure("edge"), FailsWith("no result within 30 seconds", "commitPolicy"));
  lab.advance(1s);
  EXPECT_EQ(lab.record("edge").createCount, 2U) << "it is tried again";
  Snapshot const before = lab.snapshot();
  lab.advance(9s);
  EXPECT_EQ(lab.snapshot(), before) << "the late result changes nothing";
}

TEST(PlannedFaults, ResultsThatTakeTime) {
  Lab lab({.async = true, .asyncDelay = 0.5});
  lab.load(edge);
  lab.advance(750ms);
  EXPECT_EQ(lab.explain("edge").begin()->waitingFor, "commitPolicy") << "the interface is added";
  lab.advance(250ms);
  EXPECT_THAT(lab.explain("edge"), AllProgrammed());
}

TEST(PlannedFaults, WhatWasMet) {
  Lab lab;
  FaultScope faults = lab.plan("addRule class=web rule=web:20 once; updateAction optional");
  lab.load(edge);
  faults.end();
  ASSERT_THAT(faults.met(), SizeIs(1)) << "updateAction is not called, which is fine";
  EXPECT_EQ(faults.met()[0].call, "addRule(edge/input ipv4 web web:20)");
  EXPECT_EQ(faults.met()[0].time, 0);
  EXPECT_EQ(faults.faults()[0].selected, 1U);
}

TEST(PlannedFaults, AFaultThatIsNotMetIsAFinding) {
  CollectedFindings const findings;  // without it, the test fails
  {
    Lab lab;
    FaultScope const faults = lab.plan("addRule nth=9");
    lab.load(edge);
  }
  ASSERT_THAT(findings.all(), SizeIs(1));
  EXPECT_EQ(toText(findings.all()[0]),
            "unmet fault: addRule nth=9: it selected 3 calls; called were addIntfToPolicy 1, "
            "addRule 3, commitPolicy 1, createPolicy 1");
}

TEST(PlannedFaults, AnIrregularCallIsAFinding) {
  CollectedFindings const findings;
  Lab lab({.strictness = {.repeatedCreations = false}});
  lab.load(edge);
  auto const data = lab.machine()->policyMapSm({"edge", "input"})->policyCommonData();
  lab.helper()->commitPolicy(data, PolicyMap::ClassMapMatchOption::ipv4);
  EXPECT_THAT(findings.all(), ElementsAre(Field(&Finding::kind, Finding::Kind::idleCommit)));
}

void programAndEdit(Lab& lab) {
  lab.load(edge);
  lab.load("ip access-list web\n no 20");
}

TEST(Sweep, OfAnEdit) {
  SweepReport const report = sweep(programAndEdit);
  EXPECT_THAT(report.failed(), IsEmpty());
  EXPECT_GT(report.results.size(), 100U);
}

TEST(Sweep, OneCaseAlone) {
  Sweep const sweep(programAndEdit, {.modes = {AnswerMode::asynchronous}});
  SweepResult const result = sweep.run(parseSweepCase("asynchronous addRule nth=4 before"));
  EXPECT_EQ(result.injected, 1U);
  EXPECT_THAT(result.findings, IsEmpty());
}

// A part of the cases per test, so that ctest runs the parts at the same time.
class Shard : public TestWithParam<std::size_t> {};

TEST_P(Shard, OfTheSweep) {
  SweepOptions const options{.shard = GetParam(), .shards = 4};
  EXPECT_THAT(sweep(programAndEdit, options).failed(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Sweep, Shard, Range(std::size_t{1}, std::size_t{5}));

}  // namespace
