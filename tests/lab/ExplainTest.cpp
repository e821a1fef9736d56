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

}  // namespace
}  // namespace lab::test
