// SPDX-License-Identifier: Apache-2.0

// Faults, asynchronous results and time, set by the program's options.

#include "lab/Faults.h"

#include "lab/Labs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace lab::test {
namespace {

using testing::HasSubstr;

class FaultsTest : public InputFiles {
 protected:
  std::string simple() const { return file("simple.cfg", simplePolicy); }

  // The only status after a run with these options on the simple policy.
  nlohmann::json statusOf(std::vector<std::string> options) const {
    options.insert(options.begin(), {"run", "--json", simple()});
    nlohmann::json const printed = nlohmann::json::parse(runLab(options).out);
    return printed.at("status").size() == 1 ? printed.at("status").front() : printed.at("status");
  }
};

TEST_F(FaultsTest, EveryFaultIsReportedWithItsOperation) {
  std::vector<std::pair<std::string, std::string>> const faults{{"createError", "createPolicy"},
                                                                {"addRuleError", "addRule"},
                                                                {"addIntfError", "addIntfToPolicy"},
                                                                {"commitError", "commitPolicy"}};
  for (auto const& [name, operation] : faults) {
    auto const status = statusOf({"--inject", name + "=table full"});
    EXPECT_EQ(status.at("error"), "table full") << name;
    EXPECT_EQ(status.at("operation"), operation);
    EXPECT_EQ(status.at("programmed"), false);
  }
}

TEST_F(FaultsTest, AFailedRuleIsNamedWithItsClass) {
  auto const status = statusOf({"--inject", "addRuleError=no room"});
  EXPECT_EQ(status.at("class"), "P");
  EXPECT_EQ(status.at("rule"), "P 10");
}

TEST_F(FaultsTest, AFailureEndsWithOneAndIsShown) {
  Outcome const outcome = runLab({"run", simple(), "--inject", "commitError=table full"});
  EXPECT_EQ(outcome.status, ExitStatus::notProgrammed);
  EXPECT_THAT(outcome.out, HasSubstr("commitPolicy"));
  EXPECT_THAT(outcome.out, HasSubstr("table full"));
}

TEST_F(FaultsTest, EveryTimeThatCanPassIsTaken) {
  for (char const* const seconds : {"0", "1e-310", "4.9e-324", "0.5", "1e6"}) {
    Outcome const outcome = runLab({"run", simple(), "--advance", seconds});
    EXPECT_EQ(outcome.status, ExitStatus::success) << seconds << ": " << outcome.err;
  }
  for (char const* const seconds : {"1e-400", "1e400", "inf", "1000001", "1 2", "0x1", ""}) {
    Outcome const outcome = runLab({"run", simple(), "--advance", seconds});
    EXPECT_EQ(outcome.status, ExitStatus::badInput) << seconds;
    EXPECT_THAT(outcome.err,
                HasSubstr("SECONDS must be 0 to 1000000, not " + std::string(seconds)));
  }
}

TEST_F(FaultsTest, AFaultTakenBackIsTriedAgainAfterASecond) {
  std::vector<std::string> const cleared{"--inject", "commitError=table full", "--then", "clear"};
  EXPECT_EQ(statusOf(cleared).at("error"), "table full");
  std::vector<std::string> waited = cleared;
  waited.insert(waited.end(), {"--advance", "1"});
  auto const status = statusOf(waited);
  EXPECT_EQ(status.at("error"), "");
  EXPECT_EQ(status.at("programmed"), true);
}

TEST_F(FaultsTest, StepsAreDoneInTheOrderOfTheCommandLine) {
  auto const status =
      statusOf({"--inject", "commitError=full", "--advance", "1", "--then", "clear"});
  EXPECT_EQ(status.at("error"), "full");
}

TEST_F(FaultsTest, AsynchronousOperationsWaitForOneTriggerEach) {
  EXPECT_EQ(statusOf({"--async"}), nlohmann::json::array());
  EXPECT_EQ(statusOf({"--async", "--then", "trigger"}), nlohmann::json::array());
  auto const status = statusOf({"--async", "--then", "trigger", "--then", "trigger"});
  EXPECT_EQ(status.at("programmed"), true);
}

TEST_F(FaultsTest, AResultThatNeverComesTimesOut) {
  auto const status = statusOf({"--async", "--advance", "30"});
  EXPECT_EQ(status.at("error"), "no result within 30 seconds");
  EXPECT_EQ(status.at("operation"), "addIntfToPolicy");
}

TEST_F(FaultsTest, PseudoAsynchronousOperationsNeedNoTrigger) {
  EXPECT_EQ(statusOf({"--pseudo-async"}).at("programmed"), true);
  EXPECT_EQ(statusOf({"--pseudo-async", "--inject", "addIntfError=x"}).at("error"), "x");
}

TEST_F(FaultsTest, EachStepShowsWhatItChanged) {
  Outcome const outcome = runLab(
      {"run", simple(), "--inject", "commitError=full", "--then", "clear", "--advance", "2"});
  EXPECT_THAT(outcome.out, HasSubstr("== before the first step"));
  EXPECT_THAT(outcome.out, HasSubstr("== --then clear"));
  EXPECT_THAT(outcome.out, HasSubstr("nothing changed in the records"));
  EXPECT_THAT(outcome.out, HasSubstr("== --advance 2"));
  EXPECT_EQ(outcome.status, ExitStatus::success);
}

TEST_F(FaultsTest, StatusesTellWhenAndWhereThePolicyStands) {
  std::vector<std::string> const options{"--inject", "commitError=full", "--advance", "2.5"};
  auto const failed = statusOf(options);
  EXPECT_EQ(failed.at("timeProgrammed"), nullptr);
  EXPECT_EQ(failed.at("interfaces"), nlohmann::json::array());
  std::vector<std::string> cleared = options;
  cleared.insert(cleared.end(), {"--then", "clear", "--advance", "1"});
  auto const stands = statusOf(cleared);
  EXPECT_EQ(stands.at("timeProgrammed"), 3.0) << "tried at 0, 1 and 3";
  EXPECT_EQ(stands.at("interfaces"), nlohmann::json::array({"Ethernet1"}));
  cleared.insert(cleared.begin(), {"run", simple()});
  EXPECT_THAT(
      runLab(cleared).out,
      HasSubstr("  policy-map  direction  option  programmed  time  operation  class  rule  error\n"
                "  P           input      ipv4    yes            3\n"
                "    interfaces  Ethernet1\n"));
}

TEST_F(FaultsTest, LinesOfTheStatusTableHaveNoBlanksAtTheEnd) {
  std::string text = simplePolicy;
  for (int i = 1; i != 40; ++i) {
    text += "interface Ethernet" + std::to_string(i) + "\n service-policy input P\n";
  }
  std::string const out =
      runLab({"run", file("many.cfg", text), "--summary", "--advance", "1"}).out;
  std::istringstream lines(out);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(line.size(), 100U) << line;
    EXPECT_FALSE(line.ends_with(' ')) << line;
  }
  EXPECT_THAT(out, HasSubstr("    interfaces  Ethernet1, Ethernet2, "));
  EXPECT_THAT(out, HasSubstr("\n                Ethernet"));
}

TEST_F(FaultsTest, AnUnknownFaultIsBadUsageThatListsTheKnownOnes) {
  for (char const* const argument : {"commitError", "tableError=x", "=x"}) {
    Outcome const outcome = runLab({"run", simple(), "--inject", argument});
    EXPECT_EQ(outcome.status, ExitStatus::badInput);
    EXPECT_THAT(outcome.err, HasSubstr("expected NAME=TEXT with one of createError, deleteError"));
    EXPECT_THAT(outcome.err, HasSubstr(std::string("found '") + argument + "'"));
  }
}

TEST_F(FaultsTest, BadStepsAreBadUsage) {
  std::vector<std::vector<std::string>> const bad{{"--then", "wait"},
                                                  {"--advance", "x"},
                                                  {"--advance", "-1"},
                                                  {"--trace", "10"},
                                                  {"--trace", "Policy/3"}};
  for (auto const& options : bad) {
    std::vector<std::string> arguments{"run", simple()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    EXPECT_EQ(runLab(arguments).status, ExitStatus::badInput) << testing::PrintToString(options);
  }
}

TEST(Faults, TheTextMayHoldAnEqualsSignOrBeEmpty) {
  EXPECT_EQ(readFault("commitError=a=b").text, "a=b");
  EXPECT_EQ(readFault("commitError=").text, "");
}

TEST(Faults, ThereIsOneForEachErrorTextOfTheHelper) {
  EXPECT_EQ(faultNames().size(), 8U);
}

}  // namespace
}  // namespace lab::test
