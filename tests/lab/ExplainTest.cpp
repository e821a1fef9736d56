// SPDX-License-Identifier: Apache-2.0

// `policymap-lab explain`, and what `run` tells of policies that are attached and not programmed.

#include "lab/Labs.h"

#include <gmock/gmock.h>

#include <string>

namespace lab::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class ExplainTest : public InputFiles {
 protected:
  std::string simple() const { return file("simple.cfg", simplePolicy); }
  std::string unserved() const {
    return file("vlan.cfg", simplePolicy + "interface Vlan10\n service-policy output P\n");
  }
};

TEST_F(ExplainTest, PrintsALinePerPolicyAndOption) {
  Outcome const outcome = runLab({"explain", unserved()});
  EXPECT_EQ(outcome.out, "P/input ipv4: programmed at Ethernet1\n"
                         "P/output ipv4: no interface is eligible: Vlan10 (neither layer 2 nor has "
                         "an address)\n");
  EXPECT_EQ(outcome.status, ExitStatus::success);
}

TEST_F(ExplainTest, TakesTheOptionsOfRun) {
  Outcome const outcome =
      runLab({"explain", simple(), "--inject", "commitError=table full", "--advance", "1"});
  EXPECT_EQ(outcome.out, "P/input ipv4: failed: commitPolicy: table full; next try in 2 s\n");
  EXPECT_EQ(outcome.status, ExitStatus::notProgrammed);
  EXPECT_EQ(runLab({"explain", simple(), "--json"}).status, ExitStatus::badInput);
}

TEST_F(ExplainTest, SaysThatNothingIsAttached) {
  Outcome const outcome = runLab({"explain", file("none.cfg", "policy-map P\n")});
  EXPECT_EQ(outcome.out, "nothing is attached\n");
}

TEST_F(ExplainTest, AReportTellsWhatIsAttachedAndNotProgrammed) {
  EXPECT_THAT(
      runLab({"run", unserved()}).out,
      HasSubstr("\nnot programmed as configured\n"
                "  P/output ipv4: no interface is eligible: Vlan10 (neither layer 2 nor has "
                "an address)\n"));
  EXPECT_THAT(runLab({"run", simple()}).out, Not(HasSubstr("not programmed")));
}

TEST_F(ExplainTest, AReportTellsOfAFailureOnce) {
  Outcome const outcome = runLab({"run", "--no-deny-rules",
                                  file("deny.cfg", simplePolicy + "ip access-list P\n"
                                                                  " deny ip any any\n")});
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("problems\n"), HasSubstr("deny rules are not allowed"),
                                 Not(HasSubstr("as configured"))));
}

TEST_F(ExplainTest, TracesAreOfOneSourceOnRequest) {
  Outcome const outcome = runLab({"run", simple(), "--trace", "PolicyMap/3"});
  EXPECT_EQ(outcome.err, "PolicyMap/3: P/input: rules changed: createPolicy ipv4, addRule ipv4, "
                         "addIntfToPolicy ipv4 Ethernet1, commitPolicy ipv4\n");
  EXPECT_THAT(runLab({"run", simple(), "--trace", "PolicyMpa/3"}).err, HasSubstr("--trace: "));
}

TEST_F(ExplainTest, TellsWhatIsAttachedWhereNothingCanBe) {
  std::string const path = file("a.cfg", simplePolicy + "control-plane\n service-policy input P\n");
  Outcome const outcome = runLab({"explain", "--lenient", path});
  EXPECT_EQ(outcome.out, "P/input ipv4: programmed at Ethernet1\n"
                         "policy-map P (input): not at control-plane, which is no interface that "
                         "carries policies\n");
  EXPECT_EQ(outcome.status, ExitStatus::success);
}

TEST_F(ExplainTest, TellsWhichClassesMatchNothing) {
  std::string const path =
      file("a.cfg", simplePolicy + "class-map match-all N\n match ip tcp any any eq 80\n"
                                   " match ip tcp any any eq 81\npolicy-map P\n class N\n");
  std::string const line = "policy-map P (input), class N: no packet meets all of its conditions\n";
  EXPECT_THAT(runLab({"explain", path}).out, HasSubstr(line));
  Outcome const outcome = runLab({"run", path});
  EXPECT_EQ(outcome.status, ExitStatus::success);
  EXPECT_THAT(outcome.out, HasSubstr("\nproblems\n  " + line));
  EXPECT_EQ(runLab({"run", "--json", path}).json()["problems"][0]["kind"], "empty");
}

}  // namespace
}  // namespace lab::test
