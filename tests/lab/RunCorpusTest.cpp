// SPDX-License-Identifier: Apache-2.0

// Real inputs, end to end.

#include "lab/Labs.h"
#include "packets/Proof.h"
#include "testkit/text/Parsing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace lab::test {
namespace {

// The numbers that the corpus states for one filter set.
struct Counts {
  std::string file;
  std::uint64_t rules = 0;
  std::uint64_t entries = 0;
};

// Rows "| FILE | RULES | WITH A RANGE | ENTRIES | LARGEST |" from the description of the corpus.
std::vector<Counts> countsOfCorpus() {
  std::vector<Counts> counts;
  std::ifstream description(Text::test::corpusFolder() + "/SOURCES.md");
  for (std::string line; std::getline(description, line);) {
    std::replace(line.begin(), line.end(), '|', ' ');
    std::istringstream cells(line);
    Counts row;
    std::uint64_t ranges = 0;
    std::uint64_t largest = 0;
    std::string rest;
    if (cells >> row.file >> row.rules >> ranges >> row.entries >> largest && !(cells >> rest)) {
      counts.push_back(row);
    }
  }
  return counts;
}

std::vector<std::string> filesIn(std::string const& folder) {
  std::vector<std::string> files;
  for (auto const& entry :
       std::filesystem::directory_iterator(Text::test::corpusFolder() + "/" + folder)) {
    files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

class RunCorpus : public testing::Test {
 protected:
  void SetUp() override {
    if (Text::test::corpusFolder().empty()) {
      GTEST_SKIP() << "POLICYMAPTEST_CORPUS is not set: real inputs were not run";
    }
  }
};

TEST_F(RunCorpus, EveryFilterSetExpandsToTheEntriesKnownOfIt) {
  auto const counts = countsOfCorpus();
  ASSERT_EQ(counts.size(), filesIn("rules").size());
  for (Counts const& row : counts) {
    for (std::string const classes : {"1", "10"}) {
      Outcome const outcome = runLab({"run", "--json", "--summary", "--sub-rules-for-ports",
                                      "--ports-on-any-protocol", "--classes", classes, "--rules",
                                      Text::test::corpusFolder() + "/rules/" + row.file});
      ASSERT_EQ(outcome.status, ExitStatus::success) << row.file << ": " << outcome.err;
      EXPECT_EQ(outcome.json()["totals"]["rules"], row.rules) << row.file;
      EXPECT_EQ(outcome.json()["totals"]["subRules"], row.entries) << row.file;
    }
  }
}

TEST_F(RunCorpus, EveryConfigurationIsTakenLenientlyAndOnceMoreWithoutEffect) {
  for (std::string const& file : filesIn("configs")) {
    Lab lab;
    lab.load(SourceText::fromFile(file), Reading::lenient);
    EXPECT_GT(lab.skipped().total(), 0U) << file;
    auto const before = lab.snapshot();
    lab.load(SourceText::fromFile(file), Reading::lenient);
    EXPECT_EQ(lab.snapshot(), before) << file;
  }
}

TEST_F(RunCorpus, EveryListIsProgrammedWhenItIsAttached) {
  for (std::string const& file : filesIn("configs")) {
    Lab lab;
    lab.load(SourceText::fromFile(file), Reading::lenient);
    auto const& lists = lab.configuration().settings().listsOf(Family::ip4);
    std::string text = "class-map match-any attached-here\n";
    for (auto const& [name, list] : lists) {
      text += " match access-group " + name + "\n";
    }
    load(lab, text + "policy-map attached-here\n class attached-here\ninterface Ethernet99\n"
                     " service-policy output attached-here\n");
    std::uint64_t rules = 0;
    for (auto const& [name, list] : lists) {
      rules += lab.configuration().acls()->ipAcl(name)->rules();
    }
    if (rules == 0) {
      continue;
    }
    Record const record =
        recordOf(lab, "attached-here", PolicyMap::ClassMapMatchOption::ipv4, "output");
    EXPECT_TRUE(record.created) << file;
    // Beside intersections of what one list denies and another permits.
    auto const ofLists =
        std::count_if(record.rules.begin(), record.rules.end(), [&lists](RuleRecord const& rule) {
          return lists.find(rule.key.aclName().stdString()) != lists.end();
        });
    EXPECT_EQ(static_cast<std::uint64_t>(ofLists), rules) << file;
    EXPECT_TRUE(worstOf(Packets::prove(lab, {.selection = {.policyMap = "attached-here"}})) ==
                Packets::Verdict::same)
        << file;
  }
}

}  // namespace
}  // namespace lab::test
