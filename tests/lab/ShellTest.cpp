// SPDX-License-Identifier: Apache-2.0
#include "lab/Shell.h"

#include "lab/Labs.h"
#include "lab/ShellVerb.h"

#include <Kor/EventLoop.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace lab::test {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class ShellTest : public testing::Test {
 protected:
  // The output of the line.
  std::string run(std::string const& line) {
    out_.str("");
    shell_.execute(line);
    return out_.str();
  }
  std::string errorOf(std::string const& line) {
    try {
      shell_.execute(line);
    } catch (std::exception const& error) {
      return error.what();
    }
    return "no error";
  }
  std::vector<std::string> completions(std::string_view line) { return shell_.completions(line); }

 private:
  std::ostringstream out_;
  std::ostringstream err_;
  Shell shell_{Console{out_, err_, {}, false}};
};

TEST_F(ShellTest, ValuesPrintAsTheyAreWritten) {
  for (char const* const value :
       {"7", "-7", "0.5", "float('inf')", "float('-inf')", "float('nan')", "True", "None",
        "'a text'", "[1, 'two', [False]]", "[float('nan'), 1]",
        "Value('PolicyMap::PolicyMapSmKey', ** {'first': 'pm', 'second': 'input'})"}) {
    EXPECT_EQ(run(value), std::string(value) + "\n");
  }
}

TEST_F(ShellTest, AnObjectIsBuiltKeptReadAndWritten) {
  EXPECT_EQ(run("helper = PolicyMapTest::AclHelper(True, False)"), "");
  EXPECT_EQ(run("helper.updateActionSupported"), "True\n");
  EXPECT_EQ(run("helper.commitError = 'table full'"), "");
  EXPECT_EQ(run("helper.commitError"), "'table full'\n");
}

TEST_F(ShellTest, AnObjectPrintsWithItsAttributesAndTheSizesOfItsCollections) {
  run("helper = PolicyMapTest::AclHelper(True, False)");
  EXPECT_THAT(run("helper"),
              AllOf(StartsWith("Ptr('PolicyMapTest::AclHelper', "), HasSubstr("asyncTrigger"),
                    HasSubstr("0 members"), Not(HasSubstr("createPolicy("))));
}

TEST_F(ShellTest, MembersAreSetReadListedAndTakenOut) {
  run("data = PolicyMap::PolicyMapSmCommonData(PolicyMap::PolicyMapSmKey('pm', 'input'))");
  run("data.intf4['Ethernet1'] = True");
  run("data.intf4['Ethernet2'] = False");
  EXPECT_EQ(run("data.intf4['Ethernet1']"), "True\n");
  EXPECT_THAT(run("data.intf4"),
              AllOf(HasSubstr("'Ethernet1': True\n"), HasSubstr("'Ethernet2': False\n")));
  run("del data.intf4['Ethernet1']");
  EXPECT_EQ(run("data.intf4"), "'Ethernet2': False\n");
}

TEST_F(ShellTest, ReadingOnePlaceAfterAnotherWritesNothing) {
  run("action = PolicyMapTest::TestAction1('web', Zub::UniqueId('a'))");
  run("action.value = 5");
  run("holder = PolicyMap::ClassAction('web')");
  run("holder.action[1] = action");
  EXPECT_EQ(run("holder.action[1].value"), "5\n");
  EXPECT_EQ(run("holder.action[1].className"), "'web'\n");
  EXPECT_EQ(run("action.value"), "5\n");
}

TEST_F(ShellTest, AFunctionIsCalledAndWithoutArgumentsItShowsItsOwn) {
  run("a = PolicyMapTest::TestAction1('x', Zub::UniqueId('a'))");
  run("b = PolicyMapTest::TestAction1('y', Zub::UniqueId('b'))");
  EXPECT_EQ(run("a.equalTo(b)"), "True\n");
  run("b.value = 1");
  EXPECT_EQ(run("a.equalTo(b)"), "False\n");
  EXPECT_EQ(run("a.equalTo"), "equalTo(other: PolicyMap::Action) → bool\n");
}

TEST_F(ShellTest, AKeptNameCanBeForgotten) {
  run("n = 1");
  run("del n");
  EXPECT_EQ(errorOf("n"), "column 1: there is no n here");
}

TEST_F(ShellTest, WhatACommandIsCalledCanBeANameToo) {
  run("run = 3");
  EXPECT_EQ(run("[run]"), "[3]\n");
}

TEST_F(ShellTest, AdvanceLetsVirtualTimePass) {
  Kor::EventLoop::global().virtualTimeIs(true);
  run("advance 2.5");
  EXPECT_EQ(Kor::now(), 2.5);
  EXPECT_EQ(errorOf("advance -1"), "the time to advance must be 0 to 1000000 seconds, not -1");
  EXPECT_EQ(errorOf("advance 1e7"), "the time to advance must be 0 to 1000000 seconds, not 1e7");
  EXPECT_EQ(Kor::now(), 2.5);
}

TEST_F(ShellTest, AdvanceTakesOneNumberAndNothingElse) {
  Kor::EventLoop::global().virtualTimeIs(true);
  EXPECT_EQ(errorOf("advance 5 6"), "column 11: expected the end of the line");
  EXPECT_EQ(errorOf("advance 5,000"), "column 10: expected the end of the line");
  EXPECT_EQ(errorOf("  advance 5 s"), "column 13: expected the end of the line");
  EXPECT_EQ(errorOf("advance"), "column 8: expected a value");
  EXPECT_EQ(errorOf("advance float('nan') # x"),
            "the time to advance must be 0 to 1000000 seconds, not float('nan')");
  EXPECT_EQ(Kor::now(), 0);
  run("advance .5 # a half");
  run("advance\t2\r");
  EXPECT_EQ(Kor::now(), 2.5);
}

TEST_F(ShellTest, ACommandIsAWordOfItsOwn) {
  EXPECT_EQ(run("run # what is due"), "");
  EXPECT_EQ(errorOf("run 5"), "column 5: expected the end of the line");
  EXPECT_EQ(errorOf("objects all"), "column 9: expected the end of the line");
  EXPECT_EQ(errorOf("help me"), "column 6: expected the end of the line");
  EXPECT_EQ(errorOf("types AclHelper AclHelper"), "column 17: expected the end of the line");
  EXPECT_EQ(run("types AclHelper # this one"), run("types AclHelper"));
  run("n = 1");
  run(" del\tn # no more");
  EXPECT_EQ(errorOf("n"), "column 1: there is no n here");
  EXPECT_EQ(errorOf("runs"), "column 1: there is no runs here");
}

TEST_F(ShellTest, AValueIsNoName) {
  for (std::string const name : {"True", "False", "None"}) {
    EXPECT_EQ(errorOf(" " + name + " = 5"), "column 2: " + name + " is a value, not a name");
  }
  run("Trueness = 5");
  EXPECT_EQ(run("Trueness"), "5\n");
  EXPECT_EQ(run("True"), "True\n");
}

class ShellLoad : public InputFiles {
 protected:
  std::string simple() const { return file("a simple.cfg", simplePolicy); }
  Outcome runLines(std::string const& lines) const {
    return runLab({"shell", file("a.shell", lines)});
  }
};

TEST_F(ShellLoad, ProgramsPolicyTextAndNamesTheObjects) {
  Outcome const outcome = runLines("load " + simple() + "\nobjects\n");
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, StartsWith("policy-map P, input, ipv4\n"
                                      "  state       created\n"));
  for (char const* const name :
       {"\nacls ", "\nclassMaps ", "\nhelper ", "\nmachine ", "\npolicyMaps ", "\nstatus "}) {
    EXPECT_THAT(outcome.out, HasSubstr(name));
  }
}

TEST_F(ShellLoad, EachFurtherFileIsAnEdit) {
  std::string const edit = file("edit.cfg", "interface Ethernet2\n service-policy input P\n");
  Outcome const outcome = runLines("load " + simple() + "\nload '" + edit + "' # an edit\n");
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, EndsWith("policy-map P, input, ipv4\n"
                                    "  counts      committed 1 -> 2\n"
                                    "  interfaces  + Ethernet2\n\n"));
}

TEST_F(ShellLoad, RunAndAdvanceServeWhatWasLoaded) {
  std::string const read =
      "status.policyMapStatus[PolicyMap::PolicyMapSmKey('P', 'input')].error\n";
  std::string const edit = file("edit.cfg", "interface Ethernet2\n service-policy input P\n");
  Outcome const outcome =
      runLines("load " + simple() + "\nhelper.addIntfError = 'no room'\nload " + edit + "\n" +
               read + "helper.addIntfError = ''\nadvance 1\n" + read +
               "del policyMaps.servicePolicy[PolicyMap::ServicePolicyKey('Ethernet1', 'input')]\n"
               "del policyMaps.servicePolicy[PolicyMap::ServicePolicyKey('Ethernet2', 'input')]\n"
               "run\nstatus.policyMapStatus\n'end'\n");
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, HasSubstr("'no room'\n''\n'end'\n"));
}

TEST_F(ShellLoad, AFileThatCannotBeLoadedChangesNothing) {
  EXPECT_THAT(runLines("load").err, EndsWith("line 1: column 5: expected a file\n"));
  EXPECT_THAT(runLines("load nowhere").err, HasSubstr("nowhere: expected a readable file"));
  EXPECT_THAT(runLines("load " + file("bad.cfg", "frobnicate\n")).err,
              HasSubstr("bad.cfg:1:1: expected "));
  EXPECT_THAT(runLines("helper = 7\nload " + simple()).err,
              EndsWith("line 2: load: the name helper is in use; `del helper` removes it\n"));
  EXPECT_EQ(runLines("load = 7\n[load]\n").out, "[7]\n") << "a name like any other";
}

TEST_F(ShellTest, QuitIsALineOfItsOwn) {
  for (char const* const line : {"quit", " quit", "quit ", "quit\r", "\tquit \r", "quit # bye"}) {
    EXPECT_TRUE(Shell::quits(line)) << line;
  }
  for (char const* const line :
       {"", "quits", "quit now", "quit = 1", "# quit", "quit.x", "'quit'"}) {
    EXPECT_FALSE(Shell::quits(line)) << line;
  }
}

TEST_F(ShellTest, ANameHas255CharactersAtMost) {
  std::string const longest(255, 'x');
  run(longest + " = 7");
  EXPECT_EQ(run(longest), "7\n");
  std::string const expected = " of at most 255 characters";
  EXPECT_EQ(errorOf(longest + "x = 7"), "column 1: expected a name" + expected);
  EXPECT_EQ(errorOf("[" + longest + "x]"), "column 2: expected a value" + expected);
  EXPECT_EQ(errorOf("types " + longest + "x"), "column 7: expected a type" + expected);
}

TEST_F(ShellTest, ATypeIsShownByItsShortNameToo) {
  EXPECT_EQ(run("types AclHelper"), run("types PolicyMapTest::AclHelper"));
  EXPECT_THAT(errorOf("types AclHelpr"), testing::StartsWith("no such type: AclHelpr"));
}

TEST_F(ShellTest, BlankLinesAndCommentsDoNothing) {
  EXPECT_EQ(run(""), "");
  EXPECT_EQ(run("  # nothing"), "");
  EXPECT_EQ(run("7 # seven"), "7\n");
}

TEST_F(ShellTest, ErrorsSayWhatAndWhere) {
  run("helper = PolicyMapTest::AclHelper(True, False)");
  EXPECT_EQ(errorOf("helper.comitError"),
            "AclHelper has no such attribute: comitError (did you mean commitError?)");
  EXPECT_EQ(errorOf("PolicyMapTest::AclHelpr(True, False)"),
            "no such type: PolicyMapTest::AclHelpr (did you mean PolicyMapTest::AclHelper?)");
  EXPECT_EQ(errorOf("nobody.x"), "column 1: there is no nobody here");
  EXPECT_EQ(errorOf("helper."), "column 8: expected an attribute");
  EXPECT_EQ(errorOf("helper.commitError = "), "column 21: expected a value");
  EXPECT_EQ(errorOf("helper.commitError = 'x"), "unterminated string at column 21");
  EXPECT_EQ(errorOf("helper.commitError 7"), "column 20: expected the end of the line");
  EXPECT_EQ(errorOf("7 = 8"), "column 3: only an attribute or a member can be written");
  EXPECT_EQ(errorOf("helper.testData[1"), "column 18: expected ]");
  EXPECT_THAT(errorOf("helper.commitError = 7"), EndsWith("commitError"));
  EXPECT_EQ(run("helper.commitError"), "''\n");
}

TEST_F(ShellTest, NamesCompleteAsFarAsTheyAreSure) {
  run("helper = PolicyMapTest::AclHelper(True, False)");
  EXPECT_THAT(completions("helper.commit"), ElementsAre("commitError", "commitPolicy"));
  EXPECT_THAT(completions("x = helper.asyncT"), ElementsAre("asyncTrigger"));
  EXPECT_THAT(completions("hel"), ElementsAre("help", "helper"));
  EXPECT_THAT(completions("a = PolicyMapTest::TestAction1S"),
              ElementsAre("PolicyMapTest::TestAction1Sm"));
  EXPECT_THAT(completions("nobody."), IsEmpty());
  EXPECT_THAT(completions(""), Contains("objects"));
}

TEST_F(ShellTest, CompletingCallsNothing) {
  run("a = PolicyMapTest::TestAction1('x', Zub::UniqueId('a'))");
  EXPECT_THAT(completions("a.equalTo(a)."), IsEmpty());
}

// Scripts

struct ScriptOutcome {
  ExitStatus status;
  std::string out;
  std::string err;
};

ScriptOutcome runText(std::string const& script) {
  std::istringstream in(script);
  std::ostringstream out;
  std::ostringstream err;
  ExitStatus const status = runScript(in, Console{out, err, {}, false});
  return {status, out.str(), err.str()};
}

TEST(ShellScript, EndsAtTheFirstLineThatFails) {
  ScriptOutcome const outcome = runText("1\nnobody\n2\n");
  EXPECT_EQ(outcome.status, ExitStatus::badInput);
  EXPECT_EQ(outcome.out, "1\n");
  EXPECT_EQ(outcome.err, "line 2: column 1: there is no nobody here\n");
}

TEST(ShellScript, LinesMayEndWithCarriageReturns) {
  ScriptOutcome const outcome =
      runText("\xEF\xBB\xBFx = 'a'\r\n\r\n# nothing\r\nx\r\n[x] # a list\r\nadvance 0\r\nrun\r\n"
              "types AclHelpr2 \r\n");
  EXPECT_EQ(outcome.out, "'a'\n['a']\n");
  EXPECT_EQ(outcome.err, "line 8: no such type: AclHelpr2\n");
  ScriptOutcome const ended = runText("7\r\nquit\r\nnobody\r\n");
  EXPECT_EQ(ended.status, ExitStatus::success) << ended.err;
  EXPECT_EQ(ended.out, "7\n");
}

TEST(ShellScript, AVeryLongWordIsNotRepeatedWhole) {
  std::string const word(100000, 'x');
  for (std::string const& line :
       {word, "types " + word, "Value('" + word + "')", "[].'" + word + "'", "advance 1" + word,
        "7." + word, "'" + word + "'.x", std::string(100000, '9')}) {
    ScriptOutcome const outcome = runText(line + "\n");
    EXPECT_EQ(outcome.status, ExitStatus::badInput) << line.substr(0, 20);
    EXPECT_LT(outcome.err.size(), 300U) << line.substr(0, 20);
  }
}

TEST(ShellScript, AnEndlessLineIsRefused) {
  std::size_t const longest = 1048576;
  EXPECT_EQ(runText("7 #" + std::string(longest - 3, 'x') + "\n").out, "7\n");
  EXPECT_EQ(runText("7 #" + std::string(longest - 3, 'x')).out, "7\n");
  std::string const error = "line 2: expected a line of at most 1048576 bytes\n";
  EXPECT_EQ(runText("7\n" + std::string(longest + 1, ' ') + "\n").err, error);
  EXPECT_EQ(runText("7\n" + std::string(longest + 1, ' ')).err, error);
  EXPECT_EQ(runText("7\n" + std::string(3 * longest, ' ')).err, error);
}

TEST(ShellScriptDeathTest, AnAssertionEndsTheProcessAsALineThatFails) {
  std::istringstream script("7\nh = PolicyMapTest::AclHelper(True, False)\n"
                            "h.deletePolicy(None, 'ipv4')\n8\n");
  Console const console{std::cout, std::cerr, {}, false};
  Shell shell(console);
  EXPECT_EXIT(
      static_cast<void>(runScript(shell, script, "a.shell: ", console)), testing::ExitedWithCode(2),
      testing::MatchesRegex(
          "a\\.shell: line 3: Kor/Ptr: assertion \"object_ != nullptr\" failed at .*:.*\n"));
}

// The prompt

ScriptOutcome typed(std::vector<std::string> lines) {
  std::ostringstream out;
  std::ostringstream err;
  Console const console{out, err, {}, false};
  Shell shell(console);
  auto at = lines.begin();
  auto const next = [&] { return at == lines.end() ? std::nullopt : std::optional(*at++); };
  ExitStatus const status = runPrompt(shell, next, console);
  return {status, out.str(), err.str()};
}

TEST(ShellPrompt, GoesOnAfterALineThatFails) {
  ScriptOutcome const outcome = typed({"x = 7", "nobody", "x", " quit\r", "x"});
  EXPECT_EQ(outcome.status, ExitStatus::success);
  EXPECT_EQ(outcome.out, "7\n");
  EXPECT_EQ(outcome.err, "column 1: there is no nobody here\n");
}

TEST(ShellPrompt, GoesOnAfterAnAssertionWithTheObjectsAsTheyWere) {
  ScriptOutcome const outcome = typed({"h = PolicyMapTest::AclHelper(True, False)",
                                       "h.commitError = 'full'", "h.deletePolicy(None, 'ipv4')",
                                       "h.commitError", "h.commitError = ''", "h.commitError"});
  EXPECT_EQ(outcome.out, "'full'\n''\n");
  EXPECT_THAT(outcome.err, StartsWith("Kor/Ptr: assertion \"object_ != nullptr\" failed at "));
  EXPECT_THAT(outcome.err, HasSubstr("Ptr.h:"));
}

TEST(ShellPrompt, EveryLineIsDoneOnce) {
  Kor::EventLoop::global().virtualTimeIs(true);
  EXPECT_EQ(typed({"advance 2", "7"}).out, "7\n");
  EXPECT_EQ(Kor::now(), 2);
}

TEST(ShellScript, EndsAtQuit) {
  EXPECT_EQ(runText("1\nquit\nnobody\n").status, ExitStatus::success);
}

TEST(ShellScript, TheExampleBringsAPolicyFromNothingThroughAFaultToARecordedRule) {
  Kor::EventLoop::global().virtualTimeIs(true);
  std::ifstream file(POLICYMAPTEST_SOURCE_DIR "/examples/first_policy.shell");
  std::ostringstream script;
  script << file.rdbuf();
  ScriptOutcome const outcome = runText(script.str());
  EXPECT_EQ(outcome.status, ExitStatus::success) << outcome.err;
  EXPECT_EQ(outcome.out, "'table full'\n''\n"
                         "Value('PolicyMap::AclRuleKey', ** {'className': 'web', 'aclName': 'web', "
                         "'seqno': 10, 'matchOption': 'ipv4'}): 7\n");
}

TEST(ShellScript, AFileIsGivenByNameAndNamesItselfInErrors) {
  EXPECT_EQ(runLab({"shell", POLICYMAPTEST_SOURCE_DIR "/examples/first_policy.shell"}).status,
            ExitStatus::success);
  Outcome const missing = runLab({"shell", "no such file"});
  EXPECT_EQ(missing.status, ExitStatus::badInput);
  EXPECT_EQ(missing.err, "policymap-lab: no such file cannot be read\n");
  Outcome const folder = runLab({"shell", POLICYMAPTEST_SOURCE_DIR});
  EXPECT_EQ(folder.status, ExitStatus::badInput);
  EXPECT_EQ(folder.err, "policymap-lab: " POLICYMAPTEST_SOURCE_DIR " cannot be read\n");
  std::istringstream script("nobody");
  std::ostringstream out;
  std::ostringstream err;
  Console const console{out, err, {}, false};
  Shell shell(console);
  EXPECT_EQ(runScript(shell, script, "a.shell: ", console), ExitStatus::badInput);
  EXPECT_EQ(err.str(), "a.shell: line 1: column 1: there is no nobody here\n");
}

// Invalid bytes

TEST(ShellScript, NoBytesCrashIt) {
  for (std::string const& line :
       {std::string("\0\0", 2), std::string(100000, '['), std::string(100000, '('),
        std::string("'\\x"), std::string("Value("), std::string("Ptr('x', 99999)"),
        std::string("\xff\xfe"), std::string("a.b.c[d](e)"), std::string("Value('x', ** {")}) {
    ScriptOutcome const outcome = runText(line + "\n");
    EXPECT_EQ(outcome.status, ExitStatus::badInput) << line.substr(0, 20);
    EXPECT_THAT(outcome.err, StartsWith("line 1: "));
  }
}

}  // namespace
}  // namespace lab::test
