// SPDX-License-Identifier: Apache-2.0

// `policymap-lab sweep`.

#include "lab/Labs.h"
#include "testkit/GoogleTest.h"

#include <gmock/gmock.h>

#include <string>

namespace lab::test {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

class SweepVerbTest : public InputFiles {
 protected:
  std::string simple() const { return file("simple.cfg", simplePolicy); }
  std::string edit() const {
    return file("edit.cfg", "ip access-list P\n 20 permit tcp any any eq 81\n");
  }
};

TEST_F(SweepVerbTest, PrintsATotal) {
  Outcome const outcome = runLab({"sweep", simple(), "--then", "load " + edit()});
  EXPECT_THAT(outcome.out,
              MatchesRegex("[0-9]+ cases, [0-9]+ injected faults, 0 cases with findings, "
                           "[0-9.]+ s, [0-9]+ cases per second\n"));
  EXPECT_EQ(outcome.status, ExitStatus::success);
}

TEST_F(SweepVerbTest, TakesFilterSetsAndTheOptionsOfTheHardware) {
  std::string const rules = file("rules", runLab({"generate", "--rules", "3"}).out);
  EXPECT_EQ(runLab({"sweep", "--rules", rules, "--classes", "2", "--update-action"}).status,
            ExitStatus::success);
}

TEST_F(SweepVerbTest, ProvesWhatIsRepaired) {
  std::string const input = file("P.cfg", simplePolicy);
  EXPECT_EQ(
      runLab({"sweep", "--prove", "--only", "synchronous addRule nth=1 before", input}).status,
      ExitStatus::success);
}

TEST_F(SweepVerbTest, RunsOneCase) {
  Outcome const outcome =
      runLab({"sweep", simple(), "--only", "asynchronous addRule nth=1 before"});
  EXPECT_EQ(outcome.out, "1 case, 1 injected fault, 0 cases with findings\n");
}

TEST_F(SweepVerbTest, AFaultThatIsNotMetIsAFinding) {
  Outcome const outcome = runLab({"sweep", simple(), "--only", "synchronous addRule nth=9"});
  EXPECT_THAT(outcome.out, HasSubstr("synchronous addRule nth=9\n  the fault was not met\n"));
  EXPECT_THAT(outcome.out, HasSubstr("1 case, 0 injected faults, 1 case with findings\n"));
  EXPECT_EQ(outcome.status, ExitStatus::notProgrammed);
}

TEST_F(SweepVerbTest, JsonIsALinePerCase) {
  Outcome const outcome = runLab({"sweep", simple(), "--json", "--shard", "1/1"});
  std::istringstream lines(outcome.out);
  std::size_t cases = 0;
  for (std::string line; std::getline(lines, line); ++cases) {
    auto const json = nlohmann::ordered_json::parse(line);
    EXPECT_TRUE(json.contains("case"));
    EXPECT_TRUE(json["findings"].empty());
    EXPECT_EQ(json["injected"] == 0, cases < 3) << line;
  }
  EXPECT_GT(cases, 30U);
}

TEST_F(SweepVerbTest, ShardsAndPairsAreParts) {
  EXPECT_THAT(runLab({"sweep", simple(), "--pairs", "7"}).out, testing::StartsWith("7 cases, "));
  auto const casesOf = [](std::string const& out) { return std::stoul(out); };
  auto const whole = casesOf(runLab({"sweep", simple()}).out);
  EXPECT_EQ(casesOf(runLab({"sweep", simple(), "--shard", "1/2"}).out) +
                casesOf(runLab({"sweep", simple(), "--shard", "2/2"}).out),
            whole);
}

TEST_F(SweepVerbTest, BadUsageIsRefused) {
  auto const error = [&](std::vector<std::string> more) {
    more.insert(more.begin(), {"sweep", simple()});
    Outcome const outcome = runLab(more);
    EXPECT_EQ(outcome.status, ExitStatus::badInput);
    return outcome.err;
  };
  EXPECT_THAT(error({"--shard", "3/2"}), HasSubstr("--shard: expected I/N, with I from 1 to N"));
  EXPECT_THAT(error({"--shard", "1"}), HasSubstr("--shard: expected I/N"));
  EXPECT_THAT(error({"--then", "trigger"}), HasSubstr("expected load FILE, found 'trigger'"));
  EXPECT_THAT(error({"--only", "sometimes"}), HasSubstr("expected synchronous, asynchronous"));
  EXPECT_EQ(runLab({"sweep"}).status, ExitStatus::badInput);
}

// Planned faults of run and explain -------------------------------------------------------------

TEST_F(SweepVerbTest, RunTakesPlansAndSaysWhatTheyMet) {
  CollectedFindings const expected;
  Outcome const outcome =
      runLab({"run", simple(), "--summary", "--advance", "1", "--faults", "addRule nth=1",
              "--faults", "@" + file("plan", "# rare\ncommitPolicy nth=9\n")});
  EXPECT_THAT(outcome.out, HasSubstr("\nfaults\n"
                                     "  addRule nth=1: met 1 time\n"
                                     "    #1 at 0 s, addRule(P/input ipv4 P P:10)\n"
                                     "  commitPolicy nth=9: never met; it selected 1 call\n"));
  EXPECT_EQ(outcome.status, ExitStatus::notProgrammed) << "a fault was not met";
  EXPECT_EQ(runLab({"run", simple(), "--advance", "1", "--faults", "addRule nth=1"}).status,
            ExitStatus::success);
}

TEST_F(SweepVerbTest, PlansAreStepsToo) {
  Outcome const outcome =
      runLab({"run", simple(), "--then", "faults addRule text=full", "--then", "load " + edit()});
  EXPECT_THAT(outcome.out, HasSubstr("problems\n  policy-map P (input)"));
  EXPECT_THAT(outcome.out, HasSubstr("full\n"));
  EXPECT_THAT(runLab({"run", simple(), "--then", "faults addRul"}).err,
              HasSubstr("faults:1:1: expected an operation (nearest: addRule"));
}

TEST_F(SweepVerbTest, ResultsAreReleasedOrArriveByThemselves) {
  std::vector<std::string> held = {
      "run",       simple(), "--async", "--async-delay", "0.5", "--faults", "addIntfToPolicy hold",
      "--advance", "1"};
  EXPECT_EQ(runLab(held).status, ExitStatus::success) << "it waits";
  EXPECT_THAT(runLab(held).out, HasSubstr("ipv4: created, not committed\n"));
  held.insert(held.end(), {"--then", "release", "--advance", "1"});
  EXPECT_THAT(runLab(held).out, HasSubstr("ipv4: created\n"));
}

TEST_F(SweepVerbTest, JsonHasFaultsAndFindings) {
  Outcome const outcome = runLab({"run", simple(), "--json", "--faults", "commitPolicy nth=1"});
  auto const json = outcome.json();
  ASSERT_EQ(json["faults"].size(), 1U);
  EXPECT_EQ(json["faults"][0]["fault"], "commitPolicy nth=1");
  EXPECT_EQ(json["faults"][0]["selected"], 1);
  EXPECT_EQ(json["faults"][0]["met"][0]["call"], "commitPolicy(P/input ipv4)");
  EXPECT_TRUE(json["findings"].empty());
}

TEST_F(SweepVerbTest, ExplainSaysWhatWasNotMet) {
  CollectedFindings const expected;
  Outcome const outcome = runLab({"explain", simple(), "--faults", "addRule nth=9"});
  EXPECT_THAT(outcome.out, HasSubstr("addRule nth=9: never met; it selected 1 call\n"));
  EXPECT_EQ(outcome.status, ExitStatus::notProgrammed);
}

TEST_F(SweepVerbTest, APlanIsNotReadTogetherWithAnotherFileFromStandardInput) {
  EXPECT_THAT(runLab({"run", "-", "--faults", "@-"}).err,
              HasSubstr("standard input can be read only once"));
  EXPECT_THAT(runLab({"run", simple(), "--then", "faults @-"}).err,
              HasSubstr("a plan of a step is not read from standard input"));
}

TEST_F(SweepVerbTest, JsonOfOneCaseIsOneLine) {
  Outcome const outcome =
      runLab({"sweep", simple(), "--json", "--only", "synchronous addRule nth=9"});
  EXPECT_EQ(outcome.json()["findings"][0], "the fault was not met");
  EXPECT_FALSE(outcome.json()["journal"].empty());
}

TEST_F(SweepVerbTest, AFaultyPlanIsBadInput) {
  Outcome const outcome = runLab({"run", simple(), "--faults", "addRule once then"});
  EXPECT_EQ(outcome.status, ExitStatus::badInput);
  EXPECT_THAT(outcome.err, HasSubstr("--faults:1:18: expected a fault after then"));
}

}  // namespace
}  // namespace lab::test
