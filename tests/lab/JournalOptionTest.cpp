// SPDX-License-Identifier: Apache-2.0

// `policymap-lab run --journal`.

#include "lab/Labs.h"
#include "testkit/JournalText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace lab::test {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class JournalOption : public InputFiles {
 protected:
  std::string simple() const { return file("simple.cfg", simplePolicy); }
};

TEST_F(JournalOption, TextFollowsTheReport) {
  std::string const path = simple();
  Outcome const outcome = runLab({"run", path, "--journal", "text"});
  EXPECT_THAT(
      outcome.out,
      AllOf(StartsWith(runLab({"run", path}).out),
            EndsWith("total 1 policy, 1 rule, 1 sub-rule\n"
                     "\n"
                     "journal\n"
                     "  1 t=0 hwInit\n"
                     "  2 t=0 [load " +
                     path +
                     "]\n"
                     "  3 t=0 createPolicy P/input ipv4 (rules changed)\n"
                     "  4 t=0 addRule P/input ipv4 P P 10 permit tcp any any eq 80 (dst 80) "
                     "action1=1\n"
                     "  5 t=0 addIntfToPolicy P/input ipv4 Ethernet1\n"
                     "  6 t=0 commitPolicy P/input ipv4\n")));
}

TEST_F(JournalOption, MermaidFollowsTheReport) {
  std::string const path = simple();
  Outcome const outcome = runLab({"run", path, "--journal", "mermaid"});
  EXPECT_THAT(outcome.out, AllOf(StartsWith(runLab({"run", path}).out),
                                 HasSubstr("\njournal\nsequenceDiagram\n"),
                                 EndsWith("  core->>helper: commitPolicy P/input ipv4\n")));
}

TEST_F(JournalOption, JsonIsTheLinesAlone) {
  Outcome const outcome =
      runLab({"run", simple(), simple(), "--journal", "json", "--inject", "commitError=full"});
  EXPECT_EQ(outcome.status, ExitStatus::notProgrammed);
  std::vector<JournalLine> const entries = readJournal(outcome.out);
  ASSERT_FALSE(entries.empty());
  EXPECT_EQ(entries.front().operation, "hwInit");
  EXPECT_THAT(outcome.out, HasSubstr("\"error\":\"full\""));
  EXPECT_THAT(outcome.err, HasSubstr("policymap-lab: policy-map P (input)"));
}

TEST_F(JournalOption, JsonIsAMemberOfTheObject) {
  std::string const path = simple();
  std::string const lines = runLab({"run", path, "--journal", "json"}).out;
  auto const journal = runLab({"run", path, "--json", "--journal", "json"}).json().at("journal");
  std::string joined;
  for (auto const& line : journal) {
    joined += line.dump() + "\n";
  }
  EXPECT_EQ(joined, lines);
  EXPECT_FALSE(runLab({"run", path, "--json"}).json().contains("journal"));
}

TEST_F(JournalOption, OtherFormsAreBadUsage) {
  EXPECT_EQ(runLab({"run", simple(), "--journal", "xml"}).status, ExitStatus::badInput);
  for (std::string const form : {"text", "mermaid"}) {
    Outcome const outcome = runLab({"run", simple(), "--json", "--journal", form});
    EXPECT_EQ(outcome.status, ExitStatus::badInput);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, HasSubstr("--journal " + form + ": with --json, only --journal json"));
  }
}

TEST_F(JournalOption, ControlCharactersAreShown) {
  for (std::string const form : {"text", "mermaid"}) {
    Outcome const outcome =
        runLab({"run", simple(), "--journal", form, "--then", "inject commitError=a\x1b[2J\nb"});
    EXPECT_THAT(outcome.out, testing::Not(HasSubstr("\x1b")));
    EXPECT_THAT(outcome.out, testing::Not(HasSubstr("\nb")));
  }
}

}  // namespace
}  // namespace lab::test
