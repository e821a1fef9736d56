// SPDX-License-Identifier: Apache-2.0

// The program in a process of its own, and the demonstration.

#include "lab/Labs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <vector>

namespace lab::test {
namespace {

using testing::HasSubstr;
using testing::Not;

struct Process {
  int status = -1;
  std::string out;
};

// Runs a shell command. Its stderr is ignored.
Process shell(std::string const& command) {
  Process process;
  std::FILE* const pipe = ::popen((command + " 2>/dev/null").c_str(), "r");
  std::array<char, 4096> buffer{};
  for (std::size_t count = 0; (count = std::fread(buffer.data(), 1, buffer.size(), pipe)) != 0;) {
    process.out.append(buffer.data(), count);
  }
  int const status = ::pclose(pipe);
  process.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return process;
}

std::string const binary = std::string(POLICYMAPTEST_BUILD_DIR) + "/bin/policymap-lab";

class PolicymapLab : public InputFiles {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(binary)) {
      GTEST_SKIP() << binary << " is not built: the process was not run";
    }
  }
};

TEST_F(PolicymapLab, EndsWithTheStatusOfTheRun) {
  std::string const good = file("good.cfg", simplePolicy);
  std::string const missing = file("missing.cfg", "interface Et1\n service-policy input P\n");
  std::string const bad = file("bad.cfg", "frobnicate\n");
  EXPECT_EQ(shell(binary + " run " + good).status, 0);
  EXPECT_EQ(shell(binary + " run " + missing).status, 1);
  EXPECT_EQ(shell(binary + " run " + bad).status, 2);
  EXPECT_EQ(shell(binary + " run").status, 2);
  EXPECT_EQ(shell(binary + " --help").status, 0);
}

TEST_F(PolicymapLab, ReadsStandardInput) {
  std::string const good = file("good.cfg", simplePolicy);
  std::string const edit = file("edit.cfg", "interface Ethernet2\n service-policy input P\n");
  std::string const rules = file("rules", "@1.2.3.0/24 0.0.0.0/0 0 : 65535 80 : 80 0x06/0xff\n");
  EXPECT_EQ(shell(binary + " run - <" + good).out, shell(binary + " run " + good).out);
  EXPECT_EQ(shell(binary + " run --rules - <" + rules).out,
            shell(binary + " run --rules " + rules).out);
  EXPECT_THAT(shell(binary + " run " + good + " --then 'load -' <" + edit).out,
              HasSubstr("+ Ethernet2"));
  EXPECT_THAT(shell("(echo frobnicate | " + binary + " run - 2>&1)").out,
              HasSubstr("standard input:1:1: expected "));
  Process const twice = shell("(" + binary + " run - - 2>&1 <" + good + ")");
  EXPECT_EQ(twice.status, 2);
  EXPECT_THAT(twice.out, HasSubstr("standard input can be read only once"));
  EXPECT_EQ(
      shell("(cat " + good + "; cat /dev/zero) | head -c 300000000 | " + binary + " run -").status,
      2);
}

TEST_F(PolicymapLab, FailsWhereItsOutputCannotBeWritten) {
  if (!std::filesystem::exists("/dev/full")) {
    GTEST_SKIP() << "there is no /dev/full here: output to a full disk was not tried";
  }
  std::string const good = file("good.cfg", simplePolicy);
  std::string const script = file("seven.shell", "7\n");
  for (std::string const& arguments :
       {std::string("--help"), std::string("run --help"), std::string("types"),
        std::string("types --json"), "run " + good, "run --json " + good, "shell " + script}) {
    EXPECT_EQ(shell(binary + " " + arguments + " >/dev/full").status, 2) << arguments;
  }
}

TEST_F(PolicymapLab, AnAssertionEndsAScriptButNoSessionAtATerminal) {
  std::string const lines = "h = PolicyMapTest::AclHelper(True, False)\nh.commitError = 'full'\n"
                            "h.deletePolicy(None, 'ipv4')\nh.commitError\n";
  std::string const script = file("a.shell", lines);
  Process const read = shell("(" + binary + " shell " + script + " 2>&1)");
  EXPECT_EQ(read.status, 2);
  EXPECT_THAT(read.out, HasSubstr("line 3: Kor/Ptr: assertion \"object_ != nullptr\" failed at "));
  EXPECT_THAT(read.out, Not(HasSubstr("'full'")));
  if (shell("script -qec true /dev/null").status != 0) {
    GTEST_SKIP() << "script finds no pseudo-terminal here: the prompt was not tried";
  }
  // Copies of typed text that the line editor keeps until exit. They are not leaks of our code.
  std::string const kept = file("kept.supp", "leak:^wcsdup$\n");
  Process const typed = shell("(while IFS= read -r line; do sleep 0.2; printf '%s\\r' \"$line\"; "
                              "done <" +
                              script +
                              "; sleep 0.2; printf 'quit\\r'; sleep 0.5) | TERM=xterm "
                              "LSAN_OPTIONS=print_suppressions=0:suppressions=" +
                              kept + " script -qec '" + binary + " shell' /dev/null");
  EXPECT_EQ(typed.status, 0);
  auto const told = typed.out.find("Kor/Ptr: assertion \"object_ != nullptr\" failed at ");
  ASSERT_NE(told, std::string::npos) << typed.out;
  EXPECT_NE(typed.out.find("'full'\r\n", told), std::string::npos) << typed.out;
}

// A session at a prompt on a terminal; the keys of each line are sent one after the other.
std::string session(std::string const& environment, std::vector<std::string> const& keys) {
  std::string typing = "sleep 0.5; ";
  for (std::string const& each : keys) {
    typing += "printf '" + each + "'; sleep 0.3; ";
  }
  return shell("(" + typing + ") | env TERM=xterm LSAN_OPTIONS=detect_leaks=0 " + environment +
               " script -qec '" + binary + " shell' /dev/null")
      .out;
}

TEST_F(PolicymapLab, AnInterruptDropsTheLineAndKeepsTheObjects) {
  if (shell("script -qec true /dev/null").status != 0) {
    GTEST_SKIP() << "script finds no pseudo-terminal here: the prompt was not tried";
  }
  std::string const out = session("POLICYMAP_LAB_HISTORY=",
                                  {"number = 12340 \\r", "[nobody\\003", "[number]\\r", "quit\\r"});
  EXPECT_THAT(out, HasSubstr("[12340]\r\n"));
  EXPECT_THAT(out, Not(HasSubstr("there is no nobody")));
}

TEST_F(PolicymapLab, TheHistoryIsKeptFromSessionToSession) {
  if (shell("script -qec true /dev/null").status != 0) {
    GTEST_SKIP() << "script finds no pseudo-terminal here: the prompt was not tried";
  }
  std::string const history = "POLICYMAP_LAB_HISTORY=" + folder() + "/new/history";
  session(history, {"number = 12340\\r", "quit\\r"});
  EXPECT_TRUE(std::filesystem::exists(folder() + "/new/history"));
  std::string const out = session(history, {"\\020", "\\020", "\\r", "[number]\\r", "quit\\r"});
  EXPECT_THAT(out, HasSubstr("[12340]\r\n"));
}

TEST_F(PolicymapLab, PrintsNoControlSequencesWhereNoTerminalIs) {
  std::string const good = file("good.cfg", simplePolicy);
  Process const process = shell("TERM=xterm " + binary + " run " + good);
  EXPECT_THAT(process.out, HasSubstr("policy-map P, input, ipv4: created"));
  EXPECT_THAT(process.out, Not(HasSubstr("\033")));
}

TEST_F(PolicymapLab, ColorIsForTerminalsAndCanBeRefused) {
  if (shell("script -qec true /dev/null").status != 0) {
    GTEST_SKIP() << "script finds no pseudo-terminal here: the program was not run on a terminal";
  }
  std::string const run = binary + " run " + file("good.cfg", simplePolicy);
  auto const onTerminal = [&](std::string const& environment) {
    return shell("env -u NO_COLOR " + environment + " script -qec '" + run + "' /dev/null").out;
  };
  EXPECT_THAT(onTerminal("TERM=xterm"), HasSubstr("\033[1mpolicy-map P"));
  EXPECT_THAT(onTerminal("TERM=xterm NO_COLOR=1"), Not(HasSubstr("\033")));
  EXPECT_THAT(onTerminal("TERM=dumb"), Not(HasSubstr("\033")));
}

TEST_F(PolicymapLab, DemonstrationShowsRecordsAndWhatAnEditChangesInAHundredColumns) {
  std::string const source = POLICYMAPTEST_SOURCE_DIR;
  Process const demo = shell("BUILD_DIR=" + std::string(POLICYMAPTEST_BUILD_DIR) +
                             " SOURCE_DIR=" + source + " bash " + source + "/examples/demo.sh");
  EXPECT_EQ(demo.status, 0);
  EXPECT_THAT(demo.out, HasSubstr("class realtime: action2 200 -> 300"));
  EXPECT_THAT(demo.out, HasSubstr("- mail mail 10: permit tcp any host 10.1.0.25 eq 25\n"));
  EXPECT_THAT(demo.out, HasSubstr("+ mail mail 30: permit tcp any host 10.1.0.25 eq 587\n"));
  EXPECT_THAT(demo.out, HasSubstr("interfaces  - Ethernet3\n"));
  EXPECT_THAT(demo.out, HasSubstr("interfaces  + Ethernet50\n"));
  EXPECT_THAT(demo.out, Not(HasSubstr("problems")));
  std::istringstream lines(demo.out);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(line.size(), 100U) << line;
  }
}

}  // namespace
}  // namespace lab::test
