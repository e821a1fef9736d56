// SPDX-License-Identifier: Apache-2.0
#include "testkit/runs/RandomWalk.h"

#include "testkit/Labs.h"

#include <gmock/gmock.h>

#include <set>
#include <sstream>

namespace PolicyMapTestKit::test {
namespace {

using testing::IsEmpty;

std::string const walked =
    portRange + "ip access-list Q\n 10 permit tcp any any eq 90\n 20 deny udp any any\n"
                "ipv6 access-list S\n permit tcp any any eq 443\n"
                "class-map match-any Q\n match access-group Q\n match ipv6 access-group S\n"
                "policy-map P\n class Q\n  set action1 2\n  set action2 9\n"
                "interface Ethernet2\n service-policy input P\n service-policy output P\n"
                "interface Ethernet3\n ip access-group Q in\n";

WalkOptions walkOptions(std::uint64_t seed, std::size_t steps = 150) {
  WalkOptions options;
  options.begin.steps = {Step::load("edge.cfg", walked)};
  options.seed = seed;
  options.steps = steps;
  return options;
}

std::string textOfWalk(WalkResult const& result) {
  std::ostringstream out;
  write(out, result.run);
  return out.str();
}

TEST(RandomWalk, FindsNothing) {
  std::uint64_t injected = 0;
  for (std::uint64_t seed = 1; seed <= 6; ++seed) {
    WalkResult const result = walk(walkOptions(seed));
    EXPECT_THAT(result.run.found, IsEmpty()) << "seed " << seed;
    EXPECT_EQ(result.steps, 150U);
    EXPECT_GT(result.edits, 0U);
    EXPECT_GT(result.faults, 0U);
    injected += result.injected;
    EXPECT_GT(result.checks, 3U) << "three are at the end";
    EXPECT_THAT(result.run.journal, IsEmpty());
  }
  EXPECT_GT(injected, 10U);
}

TEST(RandomWalk, DependsOnTheSeedAlone) {
  EXPECT_EQ(textOfWalk(walk(walkOptions(1, 60))), textOfWalk(walk(walkOptions(1, 60))));
  EXPECT_NE(textOfWalk(walk(walkOptions(1, 60))), textOfWalk(walk(walkOptions(2, 60))));
}

TEST(RandomWalk, HasNoEditsThatAreInvalid) {
  std::size_t refused = 0;
  for (std::uint64_t seed = 1; seed <= 3; ++seed) {
    WalkResult const result = walk(walkOptions(seed));
    refused += result.refused;
    std::size_t loads = 0;
    Lab lab;
    for (Step const& step : result.run.script.steps) {
      if (step.kind == Step::Kind::load) {
        ++loads;
        EXPECT_NO_THROW(perform(lab, step, Reading::strict)) << step.text;
      }
    }
    EXPECT_EQ(loads, result.edits + 1);
  }
  EXPECT_GT(refused, 0U) << "some edits are invalid";
}

TEST(RandomWalk, IsTheSameWhenItIsRecorded) {
  WalkResult const result = walk(walkOptions(4, 80));
  RunFile const first = PolicyMapTestKit::record(result.run.script);
  EXPECT_EQ(first.found, result.run.found);
  EXPECT_EQ(firstDifference(first, PolicyMapTestKit::record(result.run.script)), std::nullopt);
}

TEST(RandomWalk, ChoosesTheWayOfReturningResults) {
  std::set<std::pair<bool, bool>> modes;
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    LabOptions const options = walk(walkOptions(seed, 0)).run.script.options;
    modes.emplace(options.async, options.pseudoAsync);
  }
  EXPECT_EQ(modes.size(), 3U);
  WalkOptions options = walkOptions(1, 0);
  options.begin.options.async = true;
  options.begin.options.asyncDelay = 1;
  options.keepMode = true;
  for (options.seed = 1; options.seed <= 5; ++options.seed) {
    LabOptions const kept = walk(options).run.script.options;
    EXPECT_TRUE(kept.async);
    EXPECT_EQ(kept.asyncDelay, 1);
    EXPECT_FALSE(kept.pseudoAsync);
  }
}

TEST(RandomWalk, CallsBackAfterEachStep) {
  std::size_t calls = 0;
  EXPECT_EQ(walk(walkOptions(1, 25), [&] { ++calls; }).steps, 25U);
  EXPECT_EQ(calls, 25U);
}

TEST(RandomWalk, EndsAtTheFirstIrregularity) {
  WalkOptions options = walkOptions(1);
  options.begin.options.plan = parseFaultPlan("addRule nth=1");
  options.begin.steps.push_back(Step::faults("addIntfToPolicy nth=900"));
  WalkResult const result = walk(options);
  ASSERT_THAT(result.run.found, testing::Not(IsEmpty()));
  EXPECT_LT(result.steps, 150U);
  EXPECT_EQ(result.run.script.steps.back().kind, Step::Kind::check);
}

TEST(RandomWalk, NeedsTextToEdit) {
  EXPECT_THROW((void)walk({}), std::invalid_argument);
  WalkOptions options;
  options.begin.steps = {Step::load("bad.cfg", "no such line\n")};
  EXPECT_THROW((void)walk(options), InputError);
}

}  // namespace
}  // namespace PolicyMapTestKit::test
