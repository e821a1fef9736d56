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
    nlohmann::json const printed = nlohmann::ordered_json::parse(runLab(options).out);
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

TEST_F(FaultsTest, OneStepDeliversSeveralResults) {
  EXPECT_EQ(statusOf({"--async", "--then", "trigger 2"}).at("programmed"), true);
  EXPECT_EQ(statusOf({"--async", "--then", "trigger 1"}), nlohmann::json::array());
}

TEST_F(FaultsTest, AFaultIsInjectedAfterwards) {
  std::string const edit = file("edit.cfg", "interface Ethernet2\n service-policy input P\n");
  auto const status =
      statusOf({"--then", "inject addIntfError=no room = 1", "--then", "load " + edit});
  EXPECT_EQ(status.at("error"), "no room = 1");
  EXPECT_EQ(status.at("operation"), "addIntfToPolicy");
}

TEST_F(FaultsTest, AFileIsLoadedAfterwardsAndItsChangesAreTold) {
  std::string const edit = file("an edit.cfg", "interface Ethernet2\n service-policy input P\n");
  Outcome const outcome = runLab({"run", simple(), "--then", "load " + edit});
  EXPECT_THAT(outcome.out, HasSubstr("== --then load " + edit +
                                     "\n\npolicy-map P, input, ipv4\n"
                                     "  counts      committed 1 -> 2\n"
                                     "  interfaces  + Ethernet2\n"));
  Outcome const bad = runLab({"run", simple(), "--then", "load " + file("bad.cfg", "nonsense\n")});
  EXPECT_EQ(bad.status, ExitStatus::badInput);
  EXPECT_THAT(bad.err, HasSubstr("bad.cfg:1:1: expected "));
  EXPECT_EQ(runLab({"run", simple(), "--lenient", "--then", "load " + file("b.cfg", "nonsense\n")})
                .status,
            ExitStatus::success);
}

TEST_F(FaultsTest, JsonHasTheChangesOfEachFileAndStep) {
  std::string const edit = file("edit.cfg", "policy-map P\n class P\n  set action1 7\n");
  auto const json = runLab({"run", "--json", "--update-action", simple(), edit, "--inject",
                            "commitError=", "--advance", "1", "--then", "load " + edit})
                        .json();
  auto const& changes = json.at("changes");
  ASSERT_EQ(changes.size(), 3U);
  EXPECT_EQ(changes[0].at("step"), edit);
  EXPECT_EQ(changes[0].at("changes")[0], nlohmann::ordered_json::parse(R"({"kind": "counterChanged",
    "policy": "P", "direction": "input", "option": "ipv4", "field": "commitCount",
    "before": 1, "after": 2})"));
  EXPECT_EQ(changes[0].at("changes")[3], nlohmann::ordered_json::parse(R"({"kind": "actionChanged",
    "policy": "P", "direction": "input", "option": "ipv4", "class": "P", "acl": "P", "seq": 10,
    "field": "action1", "before": 1, "after": 7})"));
  EXPECT_EQ(changes[1], nlohmann::ordered_json::parse(R"({"step": "--advance 1", "changes": []})"));
  EXPECT_EQ(changes[2].at("step"), "--then load " + edit);
}

TEST_F(FaultsTest, JsonHasTheTextsOfAChange) {
  std::string const edit = file("edit.cfg", "ip access-list P\n 20 permit udp any any\n"
                                            "no interface Ethernet1\n"
                                            "interface Ethernet2\n service-policy input P\n");
  auto const changes =
      runLab({"run", "--json", simple(), edit}).json().at("changes")[0].at("changes");
  std::vector<std::string> kinds;
  for (auto const& change : changes) {
    kinds.push_back(change.at("kind"));
  }
  EXPECT_THAT(kinds, testing::ElementsAre("counterChanged", "counterChanged", "interfaceAdded",
                                          "interfaceRemoved", "ruleAdded"));
  EXPECT_EQ(changes[2].at("after"), "Ethernet2");
  EXPECT_EQ(changes[3].at("before"), "Ethernet1");
  EXPECT_EQ(changes[4].at("after"), "permit udp any any");
  EXPECT_FALSE(changes[4].contains("before"));
}

TEST_F(FaultsTest, JsonHasWhatIsOutstanding) {
  auto const outstanding = [&](std::vector<std::string> options) {
    options.insert(options.begin(), {"run", "--json", simple()});
    return runLab(options).json().at("outstanding");
  };
  EXPECT_EQ(outstanding({}), nlohmann::ordered_json::array());
  EXPECT_EQ(
      outstanding({"--async", "--advance", "5", "--then", "trigger"}),
      nlohmann::ordered_json::parse(R"([{"policy": "P", "direction": "input", "option": "ipv4",
              "state": "waiting", "operation": "commitPolicy", "since": 5.0}])"));
  EXPECT_EQ(
      outstanding({"--inject", "commitError=full", "--advance", "1.5"}),
      nlohmann::ordered_json::parse(R"([{"policy": "P", "direction": "input", "option": "ipv4",
              "state": "retry", "operation": "commitPolicy", "at": 3.0}])"));
}

TEST_F(FaultsTest, JsonHasTheProblems) {
  std::string const missing = file("missing.cfg", "interface Ethernet1\n service-policy input Q\n");
  Outcome const outcome =
      runLab({"run", "--json", simple(), missing, "--inject", "commitError=full"});
  auto const problems = outcome.json().at("problems");
  EXPECT_EQ(problems, nlohmann::ordered_json::parse(R"json([{"kind": "missing",
    "where": "policy-map Q (input)", "text": "not defined, but attached to Ethernet1"}])json"));
  EXPECT_THAT(outcome.err, HasSubstr("policy-map Q (input): not defined"));
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
  std::vector<std::vector<std::string>> const bad{
      {"--then", "wait"},       {"--then", ""},          {"--then", "clear all"},
      {"--then", "load"},       {"--then", "load "},     {"--then", "inject"},
      {"--then", "inject x=y"}, {"--then", "trigger 0"}, {"--then", "trigger 1000001"},
      {"--then", "trigger x"},  {"--advance", "x"},      {"--advance", "-1"},
      {"--trace", "10"},        {"--trace", "Policy/3"}};
  for (auto const& options : bad) {
    std::vector<std::string> arguments{"run", simple()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    EXPECT_EQ(runLab(arguments).status, ExitStatus::badInput) << testing::PrintToString(options);
  }
}

TEST(Faults, AStepThatIsNotUnderstoodSaysWhatIsExpected) {
  auto const errorOf = [](std::string const& argument) {
    try {
      static_cast<void>(readStep(argument));
    } catch (UsageError const& error) {
      return std::string(error.what());
    }
    return std::string("no error");
  };
  EXPECT_EQ(errorOf("wait"),
            "expected clear, trigger, trigger N, release, release N, inject NAME=TEXT, faults "
            "PLAN, end, end PLAN, load FILE, check, detach or attach, found 'wait'");
  EXPECT_EQ(errorOf("release x"), "release: N must be a number, found 'x'");
  EXPECT_EQ(errorOf("release 2"), "no error");
  EXPECT_EQ(errorOf("end"), "no error");
  EXPECT_EQ(errorOf("end addRule nth=3"), "no error");
  EXPECT_THAT(errorOf("end jump"), testing::StartsWith("end:1:1: expected "));
  EXPECT_EQ(errorOf("trigger 0"), "trigger: N must be 1 to 1000000, found '0'");
  EXPECT_THAT(errorOf("inject x=y"),
              testing::StartsWith("inject: expected NAME=TEXT with one of createError, "));
  EXPECT_EQ(errorOf("trigger 1000000"), "no error");
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
