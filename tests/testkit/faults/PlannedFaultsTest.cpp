// SPDX-License-Identifier: Apache-2.0

// What the core sees of planned faults, and what a plan knows of them afterwards.

#include "testkit/Labs.h"
#include "testkit/Matchers.h"

#include <gmock/gmock.h>

#include <array>
#include <optional>

namespace PolicyMapTestKit::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// The calls of an operation that failed: "CALL -> ERROR".
std::vector<std::string> failedCalls(Lab const& lab) {
  std::vector<std::string> calls;
  for (JournalEntry const& entry : lab.journal().calls().failed()) {
    calls.push_back(entry.describe());
  }
  return calls;
}

std::vector<std::uint64_t> numbersOf(std::vector<MetFault> const& met) {
  std::vector<std::uint64_t> numbers;
  for (MetFault const& each : met) {
    numbers.push_back(each.number);
  }
  return numbers;
}

// A class with rules 10 to 60, each one hardware entry.
std::string const sixRules = "ip access-list web\n"
                             " permit tcp any any eq 1\n permit tcp any any eq 2\n"
                             " permit tcp any any eq 3\n permit tcp any any eq 4\n"
                             " permit tcp any any eq 5\n permit tcp any any eq 6\n"
                             "class-map match-any web\n match access-group web\n"
                             "policy-map edge\n class web\n"
                             "interface Ethernet1\n service-policy input edge\n";

TEST(PlannedFault, HasATextThatNamesTheCall) {
  Lab lab;
  FaultScope const faults = lab.plan("addRule nth=3 once");
  load(lab, sixRules);
  EXPECT_EQ(lab.failure("edge").error(), "injected #1 at addRule(edge/input ipv4 web web:30)");
  lab.advance(std::chrono::seconds(1));
  EXPECT_THAT(lab.record("edge"), Programmed());
  EXPECT_EQ(lab.record("edge").ruleCount, 6U);
  EXPECT_THAT(faults.met(), ElementsAre(MetFault{1, 0, "addRule(edge/input ipv4 web web:30)",
                                                 "injected #1 at addRule(edge/input ipv4 web "
                                                 "web:30)"}));
  EXPECT_EQ(faults.faults().at(0).selected, 3U) << "then it has ended";
}

TEST(PlannedFault, HasTheTextOfThePlan) {
  Lab lab;
  FaultScope const faults = lab.plan("commitPolicy once text=\"table full\"");
  load(lab, sixRules);
  EXPECT_THAT(failedCalls(lab), ElementsAre("commitPolicy edge/input ipv4 -> table full"));
}

TEST(PlannedFault, IsCountedOverTheWholeLab) {
  Lab lab;
  FaultScope const first = lab.plan("commitPolicy once");
  FaultScope const second = lab.plan("createPolicy nth=2");
  load(lab, sixRules);
  lab.advance(std::chrono::seconds(10));
  EXPECT_THAT(numbersOf(first.met()), ElementsAre(1));
  EXPECT_THAT(numbersOf(second.met()), ElementsAre(2));
}

// The numbers of the addRule calls that fail, of a first try with six rules and later ones.
TEST(PlannedFault, FailsTheCallsOfItsOccurrence) {
  struct Case {
    Occurrence occurrence;
    std::vector<std::uint64_t> failing;  // of twelve calls
  };
  for (auto const& [occurrence, failing] :
       {Case{{}, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}}, Case{Occurrence::nth(5), {5}},
        Case{Occurrence::first(3), {1, 2, 3}}, Case{Occurrence::from(10), {10, 11, 12}},
        Case{Occurrence::every(4), {4, 8, 12}}, Case{Occurrence::withProbability(0), {}},
        Case{Occurrence::withProbability(1), {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}}}) {
    RunningFault fault{PlannedFault{.occurrence = occurrence}};
    std::vector<std::uint64_t> failed;
    for (std::uint64_t call = 1; call <= 12; ++call) {
      if (fault.counts()) {
        failed.push_back(call);
      }
    }
    EXPECT_EQ(failed, failing);
  }
}

TEST(PlannedFault, ASeedAlwaysGivesTheSameCalls) {
  auto const failing = [](std::uint64_t seed) {
    RunningFault fault{PlannedFault{.occurrence = Occurrence::withProbability(0.5, seed)}};
    std::string calls;
    for (int call = 0; call != 64; ++call) {
      calls += fault.counts() ? 'x' : '.';
    }
    return calls;
  };
  EXPECT_EQ(failing(1), failing(1));
  EXPECT_NE(failing(1), failing(2));
  EXPECT_EQ(failing(7).substr(0, 16), "..x.xx..x...xx.x") << "on every machine";
}

TEST(PlannedFault, AlsoMeetsACallThatFailsForAnotherReason) {
  Lab lab;
  FaultScope const faults = lab.plan("addRule nth=1 text=first; any class=web nth=1 text=second");
  load(lab, sixRules);
  EXPECT_EQ(lab.failure("edge").error(), "first");
  MetFault const met{1, 0, "addRule(edge/input ipv4 web web:10)", "first"};
  EXPECT_THAT(faults.met(), ElementsAre(met, met));
}

TEST(PlannedFault, SelectsCallsByTheirArguments) {
  std::string const two =
      "class-map match-any a\n match ip tcp any any eq 1\n match ipv6 tcp any any eq 1\n"
      "class-map match-any b\n match ip tcp any any eq 2\n"
      "policy-map p\n class a\n class b\npolicy-map q\n class b\n"
      "interface Ethernet1\n service-policy input p\n service-policy output p\n"
      "interface Ethernet2\n service-policy input q\n service-policy output p\n";
  struct Case {
    std::string_view plan;
    std::string_view call;
  };
  for (auto const& [plan, call] :
       {Case{"addRule policy=q", "addRule(q/input ipv4 b 10)"},
        Case{"addRule direction=output", "addRule(p/output ipv4 a 10)"},
        Case{"addRule option=ipv6", "addRule(p/input ipv6 a 20)"},
        Case{"addRule class=b", "addRule(p/input ipv4 b 10)"},
        Case{"addRule rule=20", "addRule(p/input ipv6 a 20)"},
        Case{"addIntfToPolicy interface=Ethernet2", "addIntfToPolicy(p/output ipv4 Ethernet2)"},
        Case{"any interface=Ethernet2 policy=q", "addIntfToPolicy(q/input ipv4 Ethernet2)"},
        Case{"createPolicy,commitPolicy policy=q", "createPolicy(q/input ipv4)"}}) {
    Lab lab;
    FaultScope const faults = lab.plan(std::string(plan) + " once");
    load(lab, two);
    ASSERT_THAT(faults.met(), SizeIs(1)) << plan;
    EXPECT_EQ(faults.met()[0].call, call) << plan;
  }
}

// What a fault does -----------------------------------------------------------------------------

TEST(PlannedFault, BeforeIsNotCarriedOut) {
  struct Case {
    std::string_view operation;
    std::vector<std::string_view> nextCalls;
  };
  for (auto const& [operation, nextCalls] :
       {Case{"createPolicy", {"createPolicy"}},  // there is nothing to delete
        Case{"addIntfToPolicy", {"deletePolicy", "createPolicy"}},
        Case{"addRule", {"deletePolicy", "createPolicy"}},
        Case{"commitPolicy", {"deletePolicy", "createPolicy"}}}) {
    Lab lab;
    FaultScope const faults = lab.plan(std::string(operation) + " before once");
    load(lab, sixRules);
    std::uint64_t const failed = lab.journal().failed().begin()->number;
    lab.advance(std::chrono::seconds(1));
    std::vector<std::string_view> calls;
    for (JournalEntry const& entry : lab.journal().calls().since(failed + 1)) {
      calls.push_back(entry.operation);
    }
    calls.resize(nextCalls.size());
    EXPECT_EQ(calls, nextCalls) << operation;
    EXPECT_THAT(lab.record("edge"), Programmed());
    EXPECT_THAT(lab.findings(), IsEmpty());
  }
}

TEST(PlannedFault, AfterIsCarriedOutAndFails) {
  Lab lab;
  FaultScope const faults = lab.plan("createPolicy after once");
  lab.aroundIs([&](HelperCall& call, auto const& proceed) {
    proceed();
    if (call.operation == "createPolicy") {
      EXPECT_TRUE(lab.helper()->testDataIteratorConst().value()->created());
    }
  });
  load(lab, sixRules);
  EXPECT_EQ(lab.journal().calls("deletePolicy").size(), 1U);
}

TEST(PlannedFault, AfterAddRuleRecordsTheRule) {
  for (auto const& [plan, recorded] :
       {std::pair("addRule nth=2 once", 1), std::pair("addRule nth=2 once before", 1),
        std::pair("addRule nth=2 once after", 2)}) {
    Lab lab;
    FaultScope const faults = lab.plan(plan);
    std::optional<std::uint32_t> rules;
    lab.aroundIs([&](HelperCall& call, auto const& proceed) {
      if (call.operation == "deletePolicy" && !rules) {
        rules = lab.helper()->testDataIteratorConst().value()->ruleMatchs();
      }
      proceed();
    });
    load(lab, sixRules);
    EXPECT_EQ(rules, recorded) << plan;
  }
}

TEST(PlannedFault, ThrowsInTheOperation) {
  Lab lab;
  FaultScope const faults = lab.plan("addRule throws once text=lost");
  load(lab, sixRules);
  EXPECT_EQ(lab.failure("edge").error(), "exception: lost");
  EXPECT_THAT(failedCalls(lab),
              ElementsAre("addRule edge/input ipv4 web web 10 permit tcp any any eq 1 (dst 1) -> "
                          "throws lost"));
  lab.advance(std::chrono::seconds(1));
  EXPECT_THAT(lab.record("edge"), Programmed());
}

TEST(PlannedFault, OfADeletionThatIsNotCarriedOutIsRepeated) {
  for (char const* const how : {"before", "throws"}) {
    Lab lab;
    load(lab, sixRules);
    FaultScope const faults = lab.plan(std::string("deletePolicy once ") + how);
    lab.load("interface Ethernet1\n no service-policy input edge\n");
    EXPECT_TRUE(lab.record("edge").created);
    lab.advance(std::chrono::seconds(1));
    EXPECT_FALSE(lab.record("edge").created);
    EXPECT_EQ(lab.journal().calls("deletePolicy").size(), 2U);
    EXPECT_THAT(lab.findings(), IsEmpty());
  }
}

TEST(PlannedFault, ReachesTheUpdateOfActionsInEachCall) {
  for (char const* const operation : {"beginUpdateActions", "updateAction", "endUpdateActions"}) {
    for (char const* const how : {"", " before", " after", " throws"}) {
      Lab lab({.updateAction = true});
      load(lab, sixRules);
      FaultScope const faults = lab.plan(std::string(operation) + " once" + how);
      lab.load("policy-map edge\n class web\n  set action1 5\n");
      EXPECT_THAT(faults.met(), SizeIs(1)) << operation << how;
      lab.advance(std::chrono::seconds(5));
      Record const record = lab.record("edge");
      EXPECT_THAT(record, Programmed()) << operation << how;
      EXPECT_EQ(record.rule("web 60").action(1), 5U) << operation << how;
      EXPECT_EQ(record.createCount, 2U) << "the policy is created again: " << operation << how;
      EXPECT_THAT(lab.findings(), IsEmpty()) << operation << how;
    }
  }
}

TEST(PlannedFault, OfACountIsAnException) {
  Lab lab;
  load(lab, sixRules);
  FaultScope const faults = lab.plan("getCountForRule nth=2");
  Kor::EventLoop::Scope const scope(lab.eventLoop());
  lab.requests()->countRequestIs({"edge", "input"}, 1);
  lab.settle();
  EXPECT_THAT(failedCalls(lab), ElementsAre("getCountForRule edge/input ipv4 web web 20 -> throws "
                                            "injected #1 at getCountForRule(edge/input ipv4 web "
                                            "web:20)"));
}

TEST(PlannedFault, OfTheOptionsReachesTheFirstCall) {
  Lab lab({.plan = parseFaultPlan("hwInit text=\"no device\"")});
  EXPECT_THAT(failedCalls(lab), ElementsAre("hwInit -> throws no device"));
}

// Plans -----------------------------------------------------------------------------------------

TEST(FaultScript, EachFaultBeginsWhenTheOneBeforeHasEnded) {
  Lab lab;
  FaultScope const faults =
      lab.plan("addRule nth=2 then commitPolicy first=2 then createPolicy once");
  load(lab, sixRules);
  lab.advance(std::chrono::minutes(1));
  EXPECT_THAT(failedCalls(lab),
              ElementsAre(testing::StartsWith("addRule"), testing::StartsWith("commitPolicy"),
                          testing::StartsWith("commitPolicy"),
                          testing::StartsWith("createPolicy")));
  EXPECT_THAT(lab.record("edge"), Programmed());
}

TEST(FaultScope, EndsTheFaults) {
  Lab lab;
  {
    FaultScope const faults = lab.plan("addRule");
    load(lab, sixRules);
    EXPECT_THAT(lab.record("edge"), testing::Not(Programmed()));
  }
  lab.advance(std::chrono::seconds(1));
  EXPECT_THAT(lab.record("edge"), Programmed());
}

TEST(FaultScope, ClearFaultsEndsTheEffectButNotTheAccount) {
  CollectedFindings const findings;
  Lab lab({.faults = {{"createError", "x"}}});
  FaultScope faults = lab.plan("addRule; capacity rules=2");
  load(lab, sixRules);
  lab.clearFaults();
  lab.advance(std::chrono::seconds(1));
  EXPECT_THAT(lab.record("edge"), Programmed());
  EXPECT_THAT(findings.all(), IsEmpty());
  faults.end();
  EXPECT_THAT(findings.all(), SizeIs(1)) << "addRule was never called before";
}

TEST(FaultScope, AFaultThatWasNeverMetIsAFinding) {
  CollectedFindings const findings;
  Lab lab;
  FaultScope faults = lab.plan("addRule nth=7; commitPolicy nth=9 optional; createPolicy once");
  load(lab, sixRules);
  EXPECT_THAT(findings.all(), IsEmpty()) << "while the scope lasts";
  faults.end();
  faults.end();
  EXPECT_THAT(findings.all(),
              ElementsAre(Finding{Finding::Kind::unmetFault,
                                  "addRule nth=7: it selected 0 calls; called were createPolicy 1, "
                                  "deletePolicy 1",
                                  false}));
  EXPECT_EQ(lab.findings(), findings.all());
  EXPECT_EQ(lab.takeFindings(), findings.all());
  EXPECT_THAT(lab.findings(), IsEmpty());
}

TEST(FaultScope, TheEndOfTheLabEndsIt) {
  CollectedFindings const findings;
  std::optional<FaultScope> faults;
  {
    Lab lab({.plan = parseFaultPlan("createPolicy")});
    faults.emplace(lab.plan("addRule"));
  }
  EXPECT_THAT(findings.all(),
              ElementsAre(testing::Field(&Finding::text, testing::StartsWith("createPolicy: ")),
                          testing::Field(&Finding::text,
                                         "addRule: it selected 0 calls; called were nothing")));
  EXPECT_THAT(faults->met(), IsEmpty());
  faults->end();
  EXPECT_THAT(findings.all(), SizeIs(2));
}

TEST(FaultScope, OfOneLabDoesNotConcernAnother) {
  Lab one;
  Lab other;
  FaultScope const faults = one.plan("addRule");
  load(other, sixRules);
  EXPECT_THAT(other.record("edge"), Programmed());
  load(one, sixRules);
  EXPECT_THAT(one.record("edge"), testing::Not(Programmed()));
}

TEST(FaultScope, TheErrorOfAPlanNamesTheLineOfTheTest) {
  Lab lab;
  EXPECT_THAT([&] { (void)lab.plan("addRul"); },
              testing::ThrowsMessage<InputError>(
                  testing::MatchesRegex("PlannedFaultsTest.cpp:[0-9]+: fault plan:1:1: .*")));
  EXPECT_THROW((void)lab.plan(PlannedFault{.operations = {"addRul"}}), std::out_of_range);
}

}  // namespace
}  // namespace PolicyMapTestKit::test
