// SPDX-License-Identifier: Apache-2.0

// Runs as values: performed, recorded, replayed, shortened, walked at random and shown in a
// browser. docs/runs.md and docs/cookbook.md show and explain them.

#include "testkit/Matchers.h"
#include "testkit/report/Report.h"
#include "testkit/runs/Minimise.h"
#include "testkit/runs/RandomWalk.h"
#include "testkit/runs/RunFile.h"
#include "testkit/runs/ScriptRun.h"
#include "testkit/sweep/Sweep.h"

#include <sstream>

using namespace PolicyMapTestKit;
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
constexpr auto edit = "ip access-list web\n no 20";

TEST(RecordedRuns, StepsInALab) {
  CaughtAssertions const assertions;
  ScriptRun run(LabOptions{});
  run.perform(Step::load("edge.cfg", edge));
  run.perform(Step::faults("addRule nth=2"));
  run.perform(Step::load("edit.cfg", edit));
  EXPECT_THAT(run.lab().failure("edge"),
              FailsWith("injected #1 at addRule(edge/input ipv4 web web:30)", "addRule", "web 30"));
  run.perform(Step::check());
  EXPECT_THAT(run.irregularities(), IsEmpty());
}

Script anEditWhileARuleFails() {
  Script script;
  script.steps = {Step::load("edge.cfg", edge), Step::faults("addRule nth=2"),
                  Step::load("edit.cfg", edit), Step::check()};
  return script;
}

TEST(RecordedRuns, WrittenAndReplayed) {
  std::stringstream file;
  write(file, record(anEditWhileARuleFails()));
  RunFile const before = readRunFile(Text::SourceText("edge.run", file.str()));
  RunFile const now = record(before.script);
  EXPECT_EQ(firstDifference(before, now).value_or("the same"), "the same");
}

TEST(RecordedRuns, TheFirstDifference) {
  Script script = anEditWhileARuleFails();
  RunFile const before = record(script);
  script.steps[1] = Step::faults("addRule nth=1");
  EXPECT_THAT(firstDifference(before, record(script)).value_or("the same"),
              AllOf(HasSubstr("addRule nth=2"), HasSubstr("addRule nth=1")));
}

TEST(RecordedRuns, TheShortestConfiguration) {
  Script script;
  script.options = {.async = true, .asyncDelay = 0};
  script.steps = {Step::faults("addRule nth=2; commitPolicy delay=1000 once"),
                  Step::load("edge.cfg", edge), Step::advance(3), Step::load("edit.cfg", edit),
                  Step::check()};
  Minimised const least = minimise(script);
  EXPECT_THAT(least.found, ElementsAre(Field(&Irregularity::kind, Irregularity::Kind::pending)));
  EXPECT_THAT(least.script.steps, SizeIs(3)) << "a fault, what is loaded, and the check";
  EXPECT_EQ(linesOf(least.script), 6U) << "a class with a rule of its own";
}

TEST(RecordedRuns, ARandomWalk) {
  Script begin;
  begin.steps = {Step::load("edge.cfg", edge)};
  WalkResult const result = walk({.begin = begin, .seed = 7, .steps = 300});
  EXPECT_THAT(result.run.found, IsEmpty());
  EXPECT_GT(result.injected, 0U);
  EXPECT_GT(result.checks, 0U);
}

TEST(RecordedRuns, APageForABrowser) {
  RunReport report("an edit while a rule fails");
  RunFile const file = record(anEditWhileARuleFails(), [&](Step const& step, ScriptRun const& run) {
    report.add(step, run);
  });
  std::ostringstream page;  // or a file
  writePage(page, report.json(file));
  EXPECT_THAT(page.str(), HasSubstr("an edit while a rule fails"));
}

TEST(RecordedRuns, ACaseOfASweep) {
  Script script;
  script.steps = {Step::load("edge.cfg", edge), Step::load("edit.cfg", edit)};
  Sweep const sweep(scenarioOf(script), {.compareWithNewLab = true});
  SweepResult const result = sweep.run(parseSweepCase("asynchronous early addRule nth=3 before"));
  EXPECT_THAT(result.findings, IsEmpty());
  RunFile const file = record(scriptOf(script, result));
  EXPECT_THAT(file.script.steps, Contains(Field(&Step::kind, Step::Kind::check)).Times(4));
  EXPECT_THAT(file.found, IsEmpty());
}

}  // namespace
