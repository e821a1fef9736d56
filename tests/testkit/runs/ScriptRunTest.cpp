// SPDX-License-Identifier: Apache-2.0
#include "testkit/runs/ScriptRun.h"

#include "testkit/GoogleTest.h"
#include "testkit/Labs.h"
#include "testkit/Matchers.h"

#include <gmock/gmock.h>

namespace PolicyMapTestKit::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;
using testing::ThrowsMessage;

Step const loadsSimple = Step::load("edge.cfg", simplePolicy);

TEST(ScriptRun, RecoversFromFaults) {
  struct Case {
    LabOptions options;
    char const* plan;
  };
  for (Case const& each : {Case{{}, "addRule nth=1"}, Case{{}, "commitPolicy"},
                           Case{{.async = true}, "addIntfToPolicy hold"},
                           Case{{.async = true}, "addIntfToPolicy drop"},
                           Case{{.async = true, .asyncDelay = 1}, "commitPolicy delay=40"},
                           Case{{.pseudoAsync = true}, "createPolicy throws"}}) {
    ScriptRun run(each.options);
    run.perform(Step::faults(each.plan));
    run.perform(loadsSimple);
    EXPECT_THAT(run.lab().explain(), Not(AllProgrammed())) << each.plan;
    run.perform(Step::check());
    EXPECT_THAT(run.lab().explain(), AllProgrammed()) << each.plan;
    EXPECT_THAT(run.irregularities(), IsEmpty()) << each.plan;
    EXPECT_GE(run.injected(), 1U) << each.plan;
  }
}

TEST(ScriptRun, CheckEndsInjectedErrorsAndReleasesResults) {
  ScriptRun run({.async = true});
  run.perform({.kind = Step::Kind::inject, .text = "commitError=full"});
  run.perform(loadsSimple);
  run.perform(Step::check());
  EXPECT_THAT(run.irregularities(), IsEmpty());
  EXPECT_THAT(run.lab().explain(), AllProgrammed());
  EXPECT_GE(run.lab().now(), 200) << "longer than between two tries";
}

TEST(ScriptRun, CheckFindsWhatIsUnlikeANewLab) {
  ScriptRun run({});
  run.lab().aroundIs([](HelperCall& call, auto const& proceed) {
    if (call.operation != "addRule") {
      proceed();
    }
  });
  run.perform(loadsSimple);
  EXPECT_THAT(run.irregularities(), IsEmpty()) << "not before a check";
  run.perform(Step::check());
  EXPECT_THAT(run.irregularities(),
              Contains(Irregularity{Irregularity::Kind::record,
                                    "P/input ipv4: rule P 10 removed: permit tcp any any eq 80"}));
  std::size_t const found = run.irregularities().size();
  run.perform(Step::check());
  EXPECT_EQ(run.irregularities().size(), found) << "each once";
}

TEST(ScriptRun, CheckFindsUpdatesThatHaveNotEnded) {
  ScriptRun run({.updateAction = true});
  run.perform(loadsSimple);
  run.lab()
      .helper()
      ->testData({{"P", "input"}, PolicyMap::ClassMapMatchOption::ipv4})
      ->beginUpdateActionCountInc(2);
  run.perform(Step::check());
  EXPECT_THAT(run.irregularities(),
              ElementsAre(Irregularity{Irregularity::Kind::record,
                                       "P/input ipv4: 2 updates of actions have begun, 0 have "
                                       "ended"}));
}

TEST(ScriptRun, CheckFindsARecordThatChangesWithoutBeingCreated) {
  ScriptRun run({});
  run.perform(loadsSimple);
  run.perform({.kind = Step::Kind::detach});
  run.perform(Step::check());
  auto const record =
      run.lab().helper()->testData({{"P", "input"}, PolicyMap::ClassMapMatchOption::ipv4});
  record->commitCountInc(1);
  run.perform(Step::check());
  EXPECT_THAT(run.irregularities(),
              ElementsAre(Irregularity{Irregularity::Kind::record,
                                       "P/input ipv4 has changed, although it was not created "
                                       "again"}));
  run.perform({.kind = Step::Kind::attach});
  run.perform({.kind = Step::Kind::detach});
  run.perform(Step::check());
  EXPECT_THAT(run.irregularities(), SizeIs(1)) << "it was created meanwhile";
}

TEST(ScriptRun, AfterAFaultUpdatesNeedNotHaveEnded) {
  ScriptRun run({.updateAction = true});
  run.perform(loadsSimple);
  run.perform(Step::faults("endUpdateActions nth=1 throws"));
  run.perform(Step::load("edit.cfg", "policy-map P\n class P\n  set action1 9\n"));
  run.perform(Step::check());
  EXPECT_THAT(run.irregularities(), IsEmpty());
}

TEST(ScriptRun, CountsWhatAllPlansInject) {
  ScriptRun run({});
  EXPECT_EQ(run.injected(), 0U);
  run.perform(Step::faults("addRule nth=1"));
  run.perform(loadsSimple);
  EXPECT_EQ(run.injected(), 1U);
  run.perform(Step::check());
  run.plan(parseFaultPlan("commitPolicy nth=1"));
  run.perform(Step::load("edit", "ip access-list P\n 20 permit tcp any any eq 81\n"));
  EXPECT_EQ(run.injected(), 2U);
}

TEST(ScriptRun, EndsAPlan) {
  ScriptRun run({});
  run.perform(Step::faults("addRule nth=7"));
  run.perform(Step::faults("addRule  optional"));
  run.perform(loadsSimple);
  EXPECT_EQ(run.injected(), 1U);
  EXPECT_THAT(run.irregularities(), IsEmpty());
  run.perform({.kind = Step::Kind::end, .text = "addRule nth=7"});
  EXPECT_THAT(run.irregularities(), SizeIs(1)) << "it was not met";
  run.perform({.kind = Step::Kind::end, .text = "addRule optional"});
  EXPECT_EQ(run.injected(), 1U) << "of the plan that has ended";
  EXPECT_THAT(run.lab().faults(), IsEmpty());
  EXPECT_THAT(
      [&] { run.perform({.kind = Step::Kind::end, .text = "addRule optional"}); },
      ThrowsMessage<std::invalid_argument>("end: no such fault plan has begun: addRule optional"));
}

TEST(ScriptRun, EndsAllPlans) {
  ScriptRun run({.plan = parseFaultPlan("commitPolicy optional")});
  run.perform(Step::faults("addRule optional"));
  EXPECT_THAT(run.lab().faults(), SizeIs(2));
  run.perform({.kind = Step::Kind::end});
  EXPECT_THAT(run.lab().faults(), IsEmpty());
}

TEST(ScriptRun, AFaultThatIsNotMetIsFound) {
  ScriptRun run({});
  run.perform(Step::faults("addRule nth=7; commitPolicy nth=7 optional"));
  run.perform(loadsSimple);
  run.perform(Step::check());
  ASSERT_THAT(run.irregularities(), SizeIs(1));
  EXPECT_EQ(run.irregularities()[0].kind, Irregularity::Kind::finding);
  EXPECT_THAT(run.irregularities()[0].text, HasSubstr("addRule nth=7"));
}

TEST(ScriptRun, FindingsFailNoTestMeanwhile) {
  CollectedFindings const findings;
  {
    ScriptRun run({});
    run.perform(Step::faults("addRule nth=7"));
    run.perform(Step::check());
    EXPECT_THAT(run.irregularities(), SizeIs(1));
  }
  EXPECT_THAT(findings.all(), IsEmpty());
  Lab lab;
  { FaultScope const faults = lab.plan("addRule nth=7"); }
  EXPECT_THAT(findings.all(), SizeIs(1)) << "after the run they do again";
}

TEST(ScriptRun, ThrowsForInvalidInput) {
  ScriptRun run({});
  EXPECT_THAT([&] { run.perform(Step::load("bad.cfg", "\nno such line\n")); },
              ThrowsMessage<InputError>(StartsWith("bad.cfg:2:")));
  EXPECT_THAT([&] { run.perform(Step::faults("addRule; addRul")); },
              ThrowsMessage<InputError>(StartsWith("faults:1:10: ")));
  EXPECT_THROW(run.perform({.kind = Step::Kind::rules, .name = "f", .text = "x\n"}), InputError);
  EXPECT_THROW(run.perform(Step::advance(-1)), std::invalid_argument);
  EXPECT_THAT(run.irregularities(), IsEmpty());
}

TEST(ScriptRun, ReadsAsItIsTold) {
  ScriptRun run({}, Reading::lenient);
  EXPECT_NO_THROW(run.perform(Step::load("a.cfg", "no such line\n" + simplePolicy)));
  EXPECT_THAT(run.lab().explain(), AllProgrammed());
}

TEST(ScriptRun, TriesStepsThatMayThrow) {
  ScriptRun run({});
  EXPECT_TRUE(run.tryTo(loadsSimple));
  EXPECT_FALSE(run.tryTo(Step::advance(-1)));
  ASSERT_THAT(run.irregularities(), SizeIs(1));
  EXPECT_EQ(run.irregularities()[0].kind, Irregularity::Kind::exception);
  EXPECT_THAT(run.irregularities()[0].text, StartsWith("advance -1 throws: "));
}

TEST(ScriptRun, KeepsAFewIrregularities) {
  ScriptRun run({});
  for (int i = 0; i != 30; ++i) {
    run.find({Irregularity::Kind::record, std::to_string(i)});
  }
  EXPECT_THAT(run.irregularities(), SizeIs(20));
  EXPECT_EQ(run.irregularities().front().text, "0");
}

TEST(ScriptRun, HasItsOptions) {
  ScriptRun const run({.updateAction = true});
  EXPECT_TRUE(run.options().updateAction);
  EXPECT_EQ(run.lab().now(), 0);
}

TEST(CaughtAssertions, AreKeptAndThrown) {
  CaughtAssertions const assertions;
  ScriptRun run({});
  run.perform(loadsSimple);
  Kor::EventLoop::Scope const scope(run.lab().eventLoop());
  auto const fail = [&] {
    run.lab().helper()->deletePolicy(
        run.lab().machine()->policyMapSm({"P", "input"})->policyCommonData(),
        PolicyMap::ClassMapMatchOption::ipv6);
  };
  EXPECT_THROW(fail(), AssertionFailed);
  EXPECT_THAT(CaughtAssertions::texts(), ElementsAre(HasSubstr("assertion \"data\" failed")));
  EXPECT_THAT(run.irregularities(),
              Contains(Irregularity{Irregularity::Kind::assertion, CaughtAssertions::texts()[0]}));
}

TEST(CaughtAssertions, AreForgottenAfterTheScope) {
  {
    CaughtAssertions const assertions;
    EXPECT_THROW(KOR_ASSERT(1 == 2), AssertionFailed);
    EXPECT_THAT(CaughtAssertions::texts(), SizeIs(1));
  }
  EXPECT_THAT(CaughtAssertions::texts(), IsEmpty());
}

}  // namespace
}  // namespace PolicyMapTestKit::test
