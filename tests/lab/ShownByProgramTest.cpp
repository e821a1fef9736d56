// SPDX-License-Identifier: Apache-2.0

// What the terminal receives of external texts.

#include "lab/Labs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace lab::test {
namespace {

using testing::HasSubstr;

class ShownByProgram : public InputFiles {
 protected:
  static constexpr char const* evil = "table\x1b[2J\nfull\u202e\x9b";
  static constexpr char const* shownEvil = "table\\x1b[2J\\x0afull\\xe2\\x80\\xae\\x9b";

  static void expectClean(Outcome const& outcome) {
    for (std::string const& text : {outcome.out, outcome.err}) {
      EXPECT_THAT(text, Not(HasSubstr("\x1b")));
      EXPECT_THAT(text, Not(HasSubstr("\u202e")));
      EXPECT_THAT(text, Not(HasSubstr("\x9b")));
      EXPECT_THAT(text, Not(HasSubstr("\nfull")));
    }
  }
};

TEST_F(ShownByProgram, AnInjectedTextInReportStatusChangesAndTraces) {
  std::string const file1 = file("a.cfg", simplePolicy);
  Outcome const outcome = runLab({"run", file1, "--inject", std::string("commitError=") + evil,
                                  "--advance", "1", "--trace", "9"});
  expectClean(outcome);
  EXPECT_THAT(outcome.out, HasSubstr(shownEvil));
}

TEST_F(ShownByProgram, AnInjectedTextInJsonIsTheTextItself) {
  std::string const text = "table\x1b[2J\nfull\u202e";
  Outcome const outcome =
      runLab({"run", "--json", file("a.cfg", simplePolicy), "--inject", "commitError=" + text});
  EXPECT_EQ(outcome.json().at("status").at(0).at("error"), text);
  expectClean({outcome.status, "", outcome.err});
  EXPECT_THAT(outcome.err, HasSubstr("table\\x1b[2J\\x0afull"));
}

TEST_F(ShownByProgram, AFileName) {
  std::string const good = file(std::string("a") + evil, simplePolicy);
  std::string const bad = file(std::string("b") + evil, "frobnicate\n");
  Outcome const changed = runLab({"run", good, good});
  expectClean(changed);
  EXPECT_THAT(changed.out, HasSubstr(std::string("a") + shownEvil + " changed"));
  for (std::vector<std::string> const& arguments : {std::vector<std::string>{"run", bad},
                                                    {"run", bad + "x"},
                                                    {"shell", bad},
                                                    {"shell", bad + "x"},
                                                    {"types", "--markdown", bad}}) {
    Outcome const refused = runLab(arguments);
    EXPECT_EQ(refused.status, ExitStatus::badInput);
    expectClean(refused);
    EXPECT_THAT(refused.err, HasSubstr(std::string("b") + shownEvil));
  }
}

TEST_F(ShownByProgram, AnArgument) {
  for (std::vector<std::string> const& arguments :
       {std::vector<std::string>{"run", std::string("--x") + evil},
        {"run", "a", "--then", evil},
        {"run", "a", "--inject", evil},
        {"run", "a", "--advance", evil},
        {"types", evil}}) {
    Outcome const refused = runLab(arguments);
    EXPECT_EQ(refused.status, ExitStatus::badInput);
    expectClean(refused);
    EXPECT_THAT(refused.err, HasSubstr("table\\x1b[2J\\x0afull"));
  }
}

TEST_F(ShownByProgram, AValueOfTheShellWhichReadsBackTheSame) {
  std::string const written = "'a\\x1b\\u202e\\u2028\\x9b\\u009b'";
  std::string const shown = "'a\\x1b\\xe2\\x80\\xae\\xe2\\x80\\xa8\\x9b\\xc2\\x9b'";
  Outcome const outcome =
      runLab({"shell", file("a", "x = " + written + "\nx\n[x]\n" + shown + "\nobjects\n")});
  EXPECT_EQ(outcome.out,
            shown + "\n[" + shown + "]\n" + shown + "\nname  value\nx     " + shown + "\n");
}

TEST_F(ShownByProgram, AnObjectAndAMemberOfTheShell) {
  Outcome const outcome = runLab({"shell", file("a", "h = PolicyMapTest::AclHelper(True, False)\n"
                                                     "h.commitError = 'a\\u202eb'\nh\n"
                                                     "d = PolicyMap::PolicyMapSubConfig('p')\n"
                                                     "d.classPrio['a\\u202eb'] = 1\n"
                                                     "d.classPrio\n")});
  EXPECT_EQ(outcome.err, "");
  expectClean(outcome);
  EXPECT_THAT(outcome.out, HasSubstr("commitError"));
  EXPECT_THAT(outcome.out, HasSubstr("'a\\xe2\\x80\\xaeb': 1\n"));
}

TEST_F(ShownByProgram, AnErrorOfTheShell) {
  Outcome const outcome = runLab({"shell", file("a", "Value('\x1b[2J\u202e\x9b')\n")});
  EXPECT_EQ(outcome.status, ExitStatus::badInput);
  expectClean(outcome);
  EXPECT_THAT(outcome.err, HasSubstr("no such value type: \\x1b[2J\\xe2\\x80\\xae\\x9b"));
}

}  // namespace
}  // namespace lab::test
