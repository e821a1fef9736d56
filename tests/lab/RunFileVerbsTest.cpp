// SPDX-License-Identifier: Apache-2.0

// `policymap-lab run --record`, `replay`, `minimise` and `export`.

#include "lab/Labs.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>

namespace lab::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

std::string contentOf(std::string const& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

class RunFileVerbsTest : public InputFiles {
 protected:
  std::string simple() const { return file("simple.cfg", simplePolicy); }
  std::string edit() const {
    return file("edit.cfg", "ip access-list P\n 20 permit tcp any any eq 81\n");
  }
  std::string path(std::string const& name) const { return folder() + "/" + name; }

  // Records a run with these arguments, and returns the path of the file.
  std::string recorded(std::vector<std::string> arguments) const {
    std::string const name = path("recorded.run");
    arguments.insert(arguments.begin(), {"run", simple()});
    arguments.insert(arguments.end(), {"--record", name});
    Outcome const outcome = runLab(arguments);
    EXPECT_NE(outcome.status, ExitStatus::badInput) << outcome.err;
    return name;
  }
  // A run with a fault that is not met, and with text that does not matter for it.
  std::string withFinding() const {
    return recorded({"--then", "load " + edit(), "--then",
                     "faults getCountForRule nth=7; addRule nth=1 once optional", "--advance", "3",
                     "--then", "check"});
  }
};

TEST_F(RunFileVerbsTest, ARunIsReplayedAsItWas) {
  std::string const run =
      recorded({"--then", "load " + edit(), "--async", "--then", "trigger 3", "--then",
                "faults commitPolicy nth=1 optional", "--advance", "2.5", "--then", "detach",
                "--then", "attach", "--update-action"});
  Outcome const outcome = runLab({"replay", run});
  EXPECT_THAT(outcome.out,
              AllOf(StartsWith("the same: 7 steps, "), HasSubstr(" entries, 0 findings\n")));
  EXPECT_EQ(outcome.status, ExitStatus::success);
}

TEST_F(RunFileVerbsTest, ReplayNamesTheFirstDifference) {
  std::string text = contentOf(recorded({}));
  std::string const before = "permit tcp any any eq 80";
  for (std::size_t at = 0; (at = text.find("\"match\":\"" + before, at)) != std::string::npos;
       ++at) {
    text.replace(at, 9 + before.size(), "\"match\":\"permit tcp any any eq 79");
  }
  Outcome const outcome = runLab({"replay", file("changed.run", text)});
  EXPECT_THAT(outcome.out, StartsWith("different: entry "));
  EXPECT_THAT(outcome.out, HasSubstr("  was {\"number\":"));
  EXPECT_THAT(outcome.out, HasSubstr("eq 79"));
  EXPECT_THAT(outcome.out, HasSubstr("eq 80"));
  EXPECT_EQ(outcome.status, ExitStatus::notProgrammed);
}

TEST_F(RunFileVerbsTest, ReplayPrintsFindings) {
  std::string const run = withFinding();
  Outcome const outcome = runLab({"replay", run});
  EXPECT_THAT(outcome.out, HasSubstr("getCountForRule nth=7"));
  EXPECT_THAT(outcome.out, HasSubstr("the same: 5 steps, "));
  EXPECT_EQ(outcome.status, ExitStatus::success);
}

TEST_F(RunFileVerbsTest, AFileThatIsNoRunIsRefused) {
  Outcome const outcome = runLab({"replay", file("x.run", "{\"run\":9}\n")});
  EXPECT_THAT(outcome.err, HasSubstr("x.run:1:1: expected a run of version 1"));
  EXPECT_EQ(outcome.status, ExitStatus::badInput);
  EXPECT_EQ(runLab({"replay", path("missing.run")}).status, ExitStatus::badInput);
  EXPECT_EQ(runLab({"run", simple(), "--record", path("no/such/folder")}).status,
            ExitStatus::badInput);
}

TEST_F(RunFileVerbsTest, MinimiseKeepsTheFinding) {
  std::string const shorter = path("shorter.run");
  Outcome const outcome = runLab({"minimise", withFinding(), "--record", shorter});
  EXPECT_EQ(outcome.status, ExitStatus::success) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("getCountForRule nth=1"));
  EXPECT_THAT(outcome.out, testing::Not(HasSubstr("addRule nth=1")));
  EXPECT_THAT(outcome.out, HasSubstr("minimised in "));
  EXPECT_THAT(runLab({"replay", shorter}).out, HasSubstr("getCountForRule nth=1"));
}

TEST_F(RunFileVerbsTest, MinimiseNeedsAFinding) {
  Outcome const outcome = runLab({"minimise", recorded({})});
  EXPECT_THAT(outcome.err, HasSubstr("nothing of the script is irregular"));
  EXPECT_EQ(outcome.status, ExitStatus::badInput);
}

TEST_F(RunFileVerbsTest, ExportWritesATestInEachLanguage) {
  std::string const run =
      recorded({"--advance", "1", "--then", "load " + edit(), "--update-action"});
  EXPECT_THAT(runLab({"export", run, "--as", "cpp"}).out,
              AllOf(HasSubstr("TEST(Recorded, RunRecordedRun)"),
                    HasSubstr("options.updateAction = true;"),
                    HasSubstr("run.perform(Step::load(")));
  EXPECT_THAT(runLab({"export", run, "--as", "python"}).out,
              AllOf(HasSubstr("class RecordedRun(unittest.TestCase)"),
                    HasSubstr("\"--update-action\""), HasSubstr("\"load edit.cfg\"")));
  EXPECT_THAT(
      runLab({"export", run, "--as", "shell"}).out,
      AllOf(StartsWith("#!/usr/bin/env bash\n"),
            HasSubstr("\"$lab\" run --update-action simple.cfg --advance 1 --then 'load edit.cfg' "
                      "--json --journal json >printed")));
  EXPECT_EQ(runLab({"export", run, "--as", "perl"}).status, ExitStatus::badInput);
}

TEST_F(RunFileVerbsTest, WhatIsNoCommandLineIsSaidToBeNone) {
  std::string const run = file("x.run", "{\"run\":1}\n{\"step\":\"advance\",\"seconds\":1}\n");
  Outcome const outcome = runLab({"export", run, "--as", "shell"});
  EXPECT_THAT(outcome.err,
              HasSubstr("advance 1 before anything is loaded cannot be a command line"));
  EXPECT_EQ(outcome.status, ExitStatus::badInput);
  EXPECT_THAT(runLab({"export", run, "--as", "cpp"}).out, HasSubstr("Step::advance(1)"));
}

TEST_F(RunFileVerbsTest, CheckFindsNothingInARunThatRecovers) {
  Outcome const outcome = runLab({"run", simple(), "--then", "faults addRule from=1", "--then",
                                  "load " + edit(), "--then", "check"});
  EXPECT_EQ(outcome.status, ExitStatus::success) << outcome.out;
}

TEST_F(RunFileVerbsTest, APageHasTheRunInIt) {
  std::string const page = path("page.html");
  runLab({"run", simple(), "--report", page});
  EXPECT_THAT(contentOf(page), AllOf(HasSubstr("\"kind\":\"run\""), HasSubstr("simple.cfg"),
                                     HasSubstr("\"kind\":\"status\"")));
  std::string const replayed = path("replayed.html");
  runLab({"replay", recorded({}), "--report", replayed});
  EXPECT_THAT(contentOf(replayed), HasSubstr("\"title\":\"recorded.run\""));
}

// explore
// ------------------------------------------------------------------------------------------

TEST_F(RunFileVerbsTest, ExploreIsTheSameForASeed) {
  auto const walk = [&](char const* seed) {
    Outcome const outcome = runLab({"explore", simple(), edit(), "--steps", "60", "--seed", seed});
    EXPECT_EQ(outcome.status, ExitStatus::success) << outcome.out;
    return outcome.out;
  };
  EXPECT_THAT(walk("3"), testing::MatchesRegex("seed 3: 60 steps, [0-9]+ edits \\([0-9]+ more "
                                               "invalid\\), [0-9]+ planned faults \\([0-9]+ "
                                               "injected\\), [0-9]+ checks, 0 findings\n"));
  EXPECT_EQ(walk("3"), walk("3"));
  EXPECT_NE(walk("3"), walk("4"));
}

TEST_F(RunFileVerbsTest, ExploreWalksSeveralTimes) {
  Outcome const outcome = runLab({"explore", simple(), "--steps", "20", "--walks", "3"});
  EXPECT_THAT(outcome.out,
              AllOf(HasSubstr("seed 1: "), HasSubstr("seed 2: "), HasSubstr("seed 3: ")));
}

TEST_F(RunFileVerbsTest, ExploreNeedsPolicyText) {
  std::string const rules = file("rules", runLab({"generate", "--rules", "3"}).out);
  Outcome const outcome = runLab({"explore", "--rules", rules});
  EXPECT_THAT(outcome.err, HasSubstr("a walk needs policy text to edit"));
  EXPECT_EQ(outcome.status, ExitStatus::badInput);
}

// merge
// --------------------------------------------------------------------------------------------

TEST_F(RunFileVerbsTest, MergeAddsUpShards) {
  auto const shard = [&](char const* which) {
    return file(std::string("part") + which[0],
                runLab({"sweep", simple(), "--json", "--journals", "--shard", which}).out);
  };
  std::string const page = path("sweep.html");
  Outcome const outcome = runLab({"merge", shard("1/2"), shard("2/2"), "--report", page});
  EXPECT_EQ(outcome.status, ExitStatus::success);
  auto const totals = [](std::string const& out) {
    return out.substr(0, out.find(" with findings"));
  };
  EXPECT_EQ(totals(outcome.out), totals(runLab({"sweep", simple()}).out));
  EXPECT_THAT(contentOf(page),
              AllOf(HasSubstr("\"kind\":\"sweep\""), HasSubstr("\"operation\":\"addRule\"")));
}

TEST_F(RunFileVerbsTest, MergeTellsOfFindings) {
  Outcome const outcome =
      runLab({"merge", file("part", R"({"case":"synchronous addRule nth=1","injected":0,)"
                                    R"("findings":["the fault was not met"]})")});
  EXPECT_THAT(outcome.out, HasSubstr("synchronous addRule nth=1\n  the fault was not met\n"));
  EXPECT_EQ(outcome.status, ExitStatus::notProgrammed);
  EXPECT_EQ(runLab({"merge", file("bad", "{\"case\":\"sometimes\"}")}).status,
            ExitStatus::badInput);
}

TEST_F(RunFileVerbsTest, ASweepRecordsTheCaseThatIsNamed) {
  std::string const run = path("case.run");
  runLab({"sweep", simple(), "--then", "load " + edit(), "--only",
          "asynchronous early addRule nth=1 before", "--record", run});
  EXPECT_THAT(contentOf(run), HasSubstr("\"asyncDelay\":0"));
  EXPECT_THAT(runLab({"replay", run}).out, HasSubstr("the same: 9 steps, "));
}

}  // namespace
}  // namespace lab::test
