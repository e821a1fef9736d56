// SPDX-License-Identifier: Apache-2.0

// The program in this process: options, output, exit status, invalid input.

#include "lab/RunVerb.h"

#include "lab/Labs.h"
#include "testkit/text/FilterSetGenerator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace lab::test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class RunVerbTest : public InputFiles {
 protected:
  std::string simple() const { return file("simple.cfg", simplePolicy); }

  static std::string const portRule;
};

std::string const RunVerbTest::portRule = "@0.0.0.0/0 0.0.0.0/0 0 : 65535 5004 : 5008 0x06/0xff "
                                          "0x0/0x0\n";

// Options and output

TEST_F(RunVerbTest, HelpTellsTheOptionsAndSucceeds) {
  Outcome const outcome = runLab({"run", "--help"});
  EXPECT_EQ(outcome.status, ExitStatus::success);
  for (char const* const option : {"--lenient",
                                   "--rules",
                                   "--classes",
                                   "--interfaces",
                                   "--ports-on-any-protocol",
                                   "--json",
                                   "--journal",
                                   "--summary",
                                   "--update-action",
                                   "--expand-port-channels",
                                   "--sub-rules-for-ports",
                                   "--reprogram-on-intf-change",
                                   "--no-deny-rules",
                                   "--no-ttl",
                                   "--only-ttl-eq",
                                   "--no-ack-or-rst",
                                   "--no-established",
                                   "--no-l2",
                                   "--no-l3",
                                   "--no-mgmt",
                                   "--no-ip-acl",
                                   "--no-ip6-acl",
                                   "--no-mac-acl"}) {
    EXPECT_THAT(outcome.out, HasSubstr(option));
  }
  EXPECT_EQ(outcome.err, "");
}

TEST_F(RunVerbTest, BadUsageEndsWithTwoAndATextOnStderr) {
  std::string const path = simple();
  std::vector<std::vector<std::string>> const lines{{},
                                                    {"frobnicate"},
                                                    {"run"},
                                                    {"run", "--frobnicate", path},
                                                    {"run", path, "--rules", path},
                                                    {"run", "--rules", path, "--lenient"},
                                                    {"run", path, "--classes", "2"},
                                                    {"run", path, "--interfaces", "2"},
                                                    {"run", path, "--ports-on-any-protocol"},
                                                    {"run", "--rules", path, "--classes", "0"},
                                                    {"run", "--rules", path, "--classes", "x"},
                                                    {"run", "--rules", path, "--interfaces", "0"},
                                                    {"run", path, "--advance", "nan"},
                                                    {"run", path, "--advance", "-1"},
                                                    {"run", "--rules"}};
  for (auto const& arguments : lines) {
    Outcome const outcome = runLab(arguments);
    EXPECT_EQ(outcome.status, ExitStatus::badInput) << testing::PrintToString(arguments);
    EXPECT_NE(outcome.err, "") << testing::PrintToString(arguments);
    EXPECT_EQ(outcome.out, "") << testing::PrintToString(arguments);
  }
}

TEST_F(RunVerbTest, VersionIsThatOfTheProject) {
  Outcome const outcome = runLab({"--version"});
  EXPECT_EQ(outcome.status, ExitStatus::success);
  EXPECT_THAT(outcome.out, testing::MatchesRegex("policymap-lab [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST_F(RunVerbTest, ProgrammedTextIsASuccess) {
  Outcome const outcome = runLab({"run", simple()});
  EXPECT_EQ(outcome.status, ExitStatus::success);
  EXPECT_THAT(outcome.out, StartsWith("policy-map P, input, ipv4: created\n"));
  EXPECT_EQ(outcome.err, "");
}

TEST_F(RunVerbTest, FilesAreEditsOfEachOtherAndTheirChangesAreTold) {
  std::string const edit = file("edit.cfg", "policy-map P\n class P\n  set action1 7\n");
  std::string const nothing = file("nothing.cfg", "! nothing\n");
  Outcome const outcome = runLab({"run", "--update-action", simple(), edit, nothing});
  EXPECT_EQ(outcome.status, ExitStatus::success);
  EXPECT_THAT(outcome.out,
              StartsWith("== what " + edit +
                         " changed\n\n"
                         "policy-map P, input, ipv4\n"
                         "  counts      committed 1 -> 2, action updates begun 0 -> 1, ended 0 -> "
                         "1\n"
                         "  actions     class P: action1 1 -> 7 (1 rule)\n"
                         "\n"
                         "== what " +
                         nothing +
                         " changed\n\n"
                         "nothing changed in the records\n\n"
                         "== what is programmed now\n\n"
                         "policy-map P, input, ipv4: created\n"));
}

TEST_F(RunVerbTest, AFileThatOnlyAddsChangesNothingWhenItIsLoadedOnceMore) {
  std::string const campus = POLICYMAPTEST_SOURCE_DIR "/examples/campus.cfg";
  std::string const numbered =
      file("numbered.cfg", "ip access-list N\n 20 remark web\n 30 permit tcp any any eq 80\n"
                           " 10 deny udp any any\nclass-map match-any N\n"
                           " match access-group N\n match ip icmp any any\npolicy-map N\n"
                           " class N\n  set action2 7\n class M insert-before N\n"
                           "interface Ethernet48\n service-policy output N\n");
  for (std::string const& path : {campus, numbered}) {
    Outcome const outcome = runLab({"run", "--summary", path, path});
    EXPECT_THAT(outcome.out, HasSubstr("nothing changed in the records")) << path;
  }
}

TEST_F(RunVerbTest, JsonOfSeveralFilesIsOneObject) {
  std::string const edit = file("edit.cfg", "policy-map P\n class P\n  set action1 7\n");
  Outcome const outcome = runLab({"run", "--json", simple(), edit});
  EXPECT_EQ(outcome.json()["policies"][0]["rules"][0]["action1"], 7);
}

TEST_F(RunVerbTest, SummaryLeavesOutTheRulesInBothForms) {
  EXPECT_THAT(runLab({"run", "--summary", simple()}).out, Not(HasSubstr("permit")));
  auto const json = runLab({"run", "--summary", "--json", simple()}).json();
  EXPECT_FALSE(json["policies"][0].contains("rules"));
  EXPECT_EQ(json["totals"]["rules"], 1);
}

// Capabilities

TEST_F(RunVerbTest, UpdateActionUpdatesInPlace) {
  std::string const edit = file("edit.cfg", "policy-map P\n class P\n  set action1 7\n");
  auto const updates = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--json", simple(), edit});
    auto const policy = runLab(arguments).json()["policies"][0];
    return std::pair(policy["createCount"].get<int>(), policy["endUpdateActionCount"].get<int>());
  };
  EXPECT_EQ(updates({"run"}), std::pair(2, 0));
  EXPECT_EQ(updates({"run", "--update-action"}), std::pair(1, 1));
}

TEST_F(RunVerbTest, SubRulesForPortsCutsRanges) {
  std::string const rules = file("rules", portRule);
  auto const subRules = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--json", "--rules", rules});
    return runLab(arguments).json()["policies"][0]["rules"][0]["subRules"].dump();
  };
  EXPECT_EQ(subRules({"run"}), R"json(["dst 5004-5008 (range checker)"])json");
  EXPECT_EQ(subRules({"run", "--sub-rules-for-ports"}), R"(["dst 5004-5007","dst 5008"])");
}

TEST_F(RunVerbTest, ReprogramOnIntfChangeCreatesAnew) {
  std::string const edit = file("edit.cfg", "interface Ethernet2\n service-policy input P\n");
  auto const creations = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--json", simple(), edit});
    return runLab(arguments).json()["policies"][0]["createCount"].get<int>();
  };
  EXPECT_EQ(creations({"run"}), 1);
  EXPECT_EQ(creations({"run", "--reprogram-on-intf-change"}), 2);
}

TEST_F(RunVerbTest, KindsOfInterfacesAndRulesAreSwitchedOff) {
  std::string const path = file(
      "kinds.cfg", "class-map match-any C\n match ip ip any any\n match ipv6 ipv6 any any\n"
                   " match mac any any\npolicy-map P\n class C\n"
                   "interface Ethernet1\n service-policy input P\n"
                   "interface Ethernet2\n ip address 10.0.0.1/24\n ipv6 address 2001:db8::1/64\n"
                   " service-policy input P\n"
                   "interface Management1\n ip address 10.0.1.1/24\n"
                   " ipv6 address 2001:db8:1::1/64\n service-policy input P\n");
  auto const served = [&](std::string const& option) {
    std::string text;
    auto const json = runLab({"run", "--json", option, path}).json();
    for (auto const& policy : json["policies"]) {
      text += policy["option"].get<std::string>() + policy["interfaces"].dump();
    }
    return text;
  };
  std::string const l2 = "\"Ethernet1\"";
  std::string const l3 = "\"Ethernet2\"";
  std::string const both = l2 + "," + l3;
  std::string const management = "\"Management1\"";
  EXPECT_EQ(served("--update-action"), "ipv4[" + both + "," + management + "]ipv6[" + both + "," +
                                           management + "]mac[" + both + "]");
  EXPECT_EQ(served("--no-l2"), "ipv4[" + l3 + "," + management + "]ipv6[" + l3 + "," + management +
                                   "]mac[" + l3 + "]");
  EXPECT_EQ(served("--no-l3"), "ipv4[" + l2 + "," + management + "]ipv6[" + l2 + "," + management +
                                   "]mac[" + l2 + "]");
  EXPECT_EQ(served("--no-mgmt"), "ipv4[" + both + "]ipv6[" + both + "]mac[" + both + "]");
  EXPECT_THAT(served("--no-ip-acl"), StartsWith("ipv6["));
  EXPECT_THAT(served("--no-ip6-acl"), Not(HasSubstr("ipv6")));
  EXPECT_THAT(served("--no-mac-acl"), Not(HasSubstr("mac")));
}

// Filter sets

TEST_F(RunVerbTest, FilterSetIsCutAndAttached) {
  std::string const rules = file("rules", generateFilterSet(100));
  Outcome const outcome =
      runLab({"run", "--json", "--rules", rules, "--classes", "7", "--interfaces", "12"});
  EXPECT_EQ(outcome.status, ExitStatus::success);
  auto const json = outcome.json();
  auto const& policy = json["policies"][0];
  EXPECT_EQ(policy["interfaces"].size(), 12U);
  EXPECT_EQ(policy["interfaces"][11], "Ethernet12");
  EXPECT_EQ(policy["rules"][99]["class"], "rules-7");
  EXPECT_EQ(json["totals"]["rules"], 100);
}

TEST_F(RunVerbTest, FilterSetHasNoMoreClassesThanRules) {
  std::string const rules = file("rules", generateFilterSet(3));
  Outcome const outcome = runLab({"run", "--rules", rules, "--classes", "4"});
  EXPECT_EQ(outcome.status, ExitStatus::badInput);
  EXPECT_EQ(outcome.err,
            "policymap-lab: " + rules + ": expected a rule for each of the 4 classes, found '3'\n");
}

TEST_F(RunVerbTest, PortsOnAnyProtocolAreTakenWhenAskedFor) {
  std::string const rules =
      file("rules", "@0.0.0.0/0 0.0.0.0/0 0 : 65535 5004 : 5008 0x01/0xff 0x0/0x0\n");
  Outcome const refused = runLab({"run", "--rules", rules});
  EXPECT_EQ(refused.status, ExitStatus::badInput);
  EXPECT_THAT(refused.err, StartsWith("policymap-lab: " + rules + ":1:"));
  Outcome const taken = runLab(
      {"run", "--json", "--rules", rules, "--ports-on-any-protocol", "--sub-rules-for-ports"});
  EXPECT_EQ(taken.status, ExitStatus::success);
  EXPECT_EQ(taken.json()["totals"]["subRules"], 2);
}

// Exit status

TEST_F(RunVerbTest, WhatIsMissingMeansOneUnlessReadLeniently) {
  std::string const path =
      file("missing.cfg", "policy-map P\n class C\ninterface Ethernet1\n service-policy input P\n");
  Outcome const strict = runLab({"run", path});
  EXPECT_EQ(strict.status, ExitStatus::notProgrammed);
  EXPECT_THAT(strict.out, HasSubstr("  policy-map P (input), class C: missing class-map C\n"));
  Outcome const lenient = runLab({"run", "--lenient", path});
  EXPECT_EQ(lenient.status, ExitStatus::success);
  EXPECT_EQ(lenient.out, strict.out);
}

TEST_F(RunVerbTest, JsonLeavesProblemsToStderr) {
  std::string const path = file("missing.cfg", "interface Ethernet1\n service-policy input P\n");
  Outcome const outcome = runLab({"run", "--json", path});
  EXPECT_EQ(outcome.status, ExitStatus::notProgrammed);
  EXPECT_EQ(outcome.json()["totals"]["policies"], 0);
  EXPECT_EQ(outcome.err,
            "policymap-lab: policy-map P (input): not defined, but attached to Ethernet1\n");
}

TEST_F(RunVerbTest, LoopOfClassMapsMeansOneHoweverItIsRead) {
  std::string const path =
      file("loop.cfg", "class-map A\n match class-map A\npolicy-map P\n class A\n"
                       "interface Ethernet1\n service-policy input P\n");
  EXPECT_EQ(runLab({"run", path}).status, ExitStatus::notProgrammed);
  Outcome const lenient = runLab({"run", "--lenient", path});
  EXPECT_EQ(lenient.status, ExitStatus::notProgrammed);
  EXPECT_THAT(lenient.out, HasSubstr("class-map A matches itself: A > A"));
}

TEST_F(RunVerbTest, ClassMapsNestAsDeepAsTheyAreWritten) {
  std::string text = "ip access-list L\n permit ip any any\n";
  constexpr int depth = 30000;
  for (int i = 0; i < depth; ++i) {
    std::string const number = std::to_string(i);
    text += "class-map " + std::string(i % 2 == 0 ? "match-any" : "match-all") + " C" + number +
            "\n match " +
            (i + 1 == depth ? "access-group L" : "class-map C" + std::to_string(i + 1)) + "\n";
  }
  text += "policy-map P\n class C0\ninterface Ethernet1\n service-policy input P\n";
  Outcome const deep = runLab({"run", "--json", file("deep.cfg", text)});
  EXPECT_EQ(deep.status, ExitStatus::success) << deep.err;
  EXPECT_EQ(nlohmann::json::parse(deep.out)["totals"]["rules"], 1);
  text += "class-map C" + std::to_string(depth - 1) + "\n match class-map C0\n";
  Outcome const loop = runLab({"run", file("loop.cfg", text)});
  EXPECT_EQ(loop.status, ExitStatus::notProgrammed);
  EXPECT_THAT(loop.out, HasSubstr("class-map C0 matches itself: C0 > C1 > "));
  EXPECT_THAT(loop.out, HasSubstr("... > C29992 > "));
}

TEST_F(RunVerbTest, AckOrRstAndEstablishedAreCapabilitiesOfTheirOwn) {
  auto const statusOf = [this](char const* word, char const* option) {
    std::string const path =
        file("flags.cfg", "ip access-list L\n permit tcp any any " + std::string(word) +
                              "\nclass-map C\n match access-group L\npolicy-map P\n class C\n"
                              "interface Ethernet1\n service-policy input P\n");
    return runLab({"run", option, path}).status;
  };
  EXPECT_EQ(statusOf("ack-or-rst", "--no-ack-or-rst"), ExitStatus::notProgrammed);
  EXPECT_EQ(statusOf("ack-or-rst", "--no-established"), ExitStatus::success);
  EXPECT_EQ(statusOf("established", "--no-established"), ExitStatus::notProgrammed);
  EXPECT_EQ(statusOf("established", "--no-ack-or-rst"), ExitStatus::success);
}

TEST_F(RunVerbTest, SkippedLinesAreListedOnRequest) {
  std::string const path =
      file("foreign.cfg", simplePolicy + "frobnicate\nclass-map Q\n match x\n");
  std::uint64_t const lines =
      static_cast<std::uint64_t>(std::count(simplePolicy.begin(), simplePolicy.end(), '\n'));
  Outcome const listed = runLab({"run", "--lenient", "--skipped", path});
  EXPECT_THAT(listed.out,
              HasSubstr("  " + path + ":" + std::to_string(lines + 1) + ":1 frobnicate\n  " + path +
                        ":" + std::to_string(lines + 3) + ":2 match x\n"));
  auto const json = runLab({"run", "--lenient", "--json", path}).json();
  EXPECT_EQ(json["skippedLines"][0].dump(), R"({"file":")" + path + R"(","line":)" +
                                                std::to_string(lines + 1) +
                                                R"(,"kind":"frobnicate"})");
  EXPECT_EQ(json["policyLines"]["skipped"], 1);
}

TEST_F(RunVerbTest, AClassThatLosesAConditionMatchesNothingOrMore) {
  std::string const path =
      file("a.cfg", "class-map match-all C\n match ip tcp any any eq 80\n match colour red\n"
                    "policy-map P\n class C\ninterface Ethernet1\n service-policy input P\n");
  EXPECT_EQ(runLab({"run", "--lenient", "--json", path}).json()["totals"]["rules"], 0);
  EXPECT_EQ(runLab({"run", "--lenient", "--widen", "--json", path}).json()["totals"]["rules"], 1);
  EXPECT_EQ(runLab({"run", "--widen", path}).status, ExitStatus::badInput) << "needs --lenient";
}

TEST_F(RunVerbTest, ListsThatAreAttachedByThemselvesCanBeLeftOut) {
  std::string const path = file("a.cfg", "ip access-list L\n permit ip any any\n"
                                         "interface Ethernet1\n ip access-group L in\n");
  EXPECT_EQ(runLab({"run", "--json", path}).json()["policies"][0]["policy"], "access-group L");
  EXPECT_EQ(runLab({"run", "--json", "--no-access-groups", path}).json()["totals"]["policies"], 0);
}

TEST_F(RunVerbTest, TheThirdActionIsExplained) {
  std::string const path = file("a.cfg", simplePolicy + "policy-map P\n class P\n  drop log\n");
  EXPECT_THAT(runLab({"run", path}).out,
              HasSubstr("\nother actions\n  action3  text\n        1  drop log\n"));
}

TEST_F(RunVerbTest, SkippedLinesAreCountedByKind) {
  std::string const path =
      file("foreign.cfg", simplePolicy + "spanning-tree mode mst\nspanning-tree mode mst\n"
                                         "no class-map absent\ninterface X0/7\n");
  Outcome const outcome = runLab({"run", "--lenient", "--json", path});
  EXPECT_EQ(outcome.status, ExitStatus::success);
  EXPECT_EQ(outcome.json()["skipped"].dump(),
            R"json({"interface (name)":1,"no class-map (absent)":1,"spanning-tree mode":2})json");
}

// Invalid input

TEST_F(RunVerbTest, BadInputIsToldWithItsPlaceAndNothingIsShown) {
  struct Fault {
    std::string name;
    std::string text;
    std::string error;
  };
  std::string const huge(10 * 1024 * 1024, 'x');
  std::vector<Fault> const faults{
      {"unknown", simplePolicy + "end\nfrobnicate\n", ":11:1: expected a command"},
      {"truncated", simplePolicy + "ip access-list P\n permit tcp any", ":11:16: expected "},
      {"binary",
       std::string("\x7f"
                   "ELF\x02\x01\x01\0\0",
                   9),
       ":1:8: expected "},
      {"line", huge, ":1:1: expected a command"},
      {"words", "ip access-list L\n permit " + std::string(huge.size(), ' ') + "y",
       ":2:10485769: expected "},
      {"contradiction", "policy-map P\n class A insert-before A\n", ":2:24: expected another"},
      {"twice", "class-map C\nno class-map C\nno class-map C\n", ":3:14: expected the name"},
      {"vlan", "interface Vlan4095\n", ":1:11: expected an interface name"}};
  for (Fault const& fault : faults) {
    std::string const path = file(fault.name, fault.text);
    Outcome const outcome = runLab({"run", path});
    EXPECT_EQ(outcome.status, ExitStatus::badInput) << fault.name;
    EXPECT_THAT(outcome.err, StartsWith("policymap-lab: " + path + fault.error)) << fault.name;
    EXPECT_LE(outcome.err.size(), 400U) << fault.name;
    EXPECT_EQ(outcome.out, "") << fault.name;
  }
}

TEST_F(RunVerbTest, LenientReadingTakesEveryTextWithoutNul) {
  std::string noise;
  std::uint32_t state = 1;
  for (int i = 0; i != 200000; ++i) {
    state = state * 1664525U + 1013904223U;
    noise += static_cast<char>(1 + (state >> 24) % 255);
  }
  std::string const huge(10 * 1024 * 1024, 'x');
  for (std::string const& text : {noise, huge, simplePolicy.substr(0, 70), std::string()}) {
    Outcome const outcome = runLab({"run", "--lenient", "--json", file("text", text)});
    EXPECT_EQ(outcome.status, ExitStatus::success) << outcome.err;
    EXPECT_EQ(outcome.json()["totals"]["policies"], 0);
  }
}

TEST_F(RunVerbTest, BadFilterSetIsToldWithItsPlace) {
  for (std::string const& text :
       {std::string("@1.2.3.4/33 0.0.0.0/0 0 : 65535 0 : 65535 0x06/0xff 0x0/0x0\n"),
        portRule.substr(0, 30),
        std::string("\x7f"
                    "ELF"),
        std::string(10 * 1024 * 1024, '@')}) {
    std::string const path = file("rules", portRule + text);
    Outcome const outcome = runLab({"run", "--rules", path});
    EXPECT_EQ(outcome.status, ExitStatus::badInput);
    EXPECT_THAT(outcome.err, StartsWith("policymap-lab: " + path + ":2:"));
    EXPECT_LE(outcome.err.size(), 400U);
  }
}

TEST_F(RunVerbTest, FileThatCannotBeReadIsNamed) {
  Outcome const absent = runLab({"run", folder() + "/absent.cfg"});
  EXPECT_EQ(absent.status, ExitStatus::badInput);
  EXPECT_THAT(absent.err, StartsWith("policymap-lab: " + folder() + "/absent.cfg: expected "));
  EXPECT_EQ(runLab({"run", folder()}).status, ExitStatus::badInput);
  EXPECT_EQ(runLab({"run", "--rules", folder() + "/absent"}).status, ExitStatus::badInput);
}

TEST_F(RunVerbTest, FaultInALaterFileEndsTheRun) {
  std::string const fault = file("fault.cfg", "no class-map absent\n");
  Outcome const outcome = runLab({"run", simple(), fault});
  EXPECT_EQ(outcome.status, ExitStatus::badInput);
  EXPECT_EQ(outcome.err, "policymap-lab: " + fault +
                             ":1:14: expected the name of a class-map that exists, found "
                             "'absent'\n");
}

TEST_F(RunVerbTest, OutputThatCannotBeWrittenIsAFault) {
  std::string const path = simple();
  std::vector<char const*> const argv{"policymap-lab", "run", path.c_str()};
  std::ostringstream out;
  std::ostringstream err;
  out.setstate(std::ios::badbit);
  EXPECT_EQ(runProgram(static_cast<int>(argv.size()), argv.data(), Console{out, err, {}, false}),
            ExitStatus::badInput);
  EXPECT_EQ(err.str(), "policymap-lab: the output cannot be written\n");
}

TEST_F(RunVerbTest, WatchedRunRecordsTheSame) {
  std::string const rules = file("rules", generateFilterSet(2000));
  std::vector<char const*> const argv{"policymap-lab", "run", "--json", "--rules", rules.c_str()};
  std::ostringstream out;
  std::ostringstream err;
  runProgram(static_cast<int>(argv.size()), argv.data(), Console{out, err, {}, true});
  EXPECT_EQ(out.str(), runLab({"run", "--json", "--rules", rules}).out);
}

TEST_F(RunVerbTest, SucceedsOnlyIfAllThatIsAttachedIsProgrammed) {
  std::string const path =
      file("a.cfg", simplePolicy + "interface Vlan10\n service-policy input P\n");
  Outcome const strict = runLab({"run", path});
  EXPECT_EQ(strict.status, ExitStatus::notProgrammed);
  EXPECT_THAT(strict.out, HasSubstr("not programmed 1 of 2 attachments\n\n"
                                    "not programmed as configured\n"
                                    "  P/input ipv4: programmed at Ethernet1; not at Vlan10 ("));
  Outcome const lenient = runLab({"run", "--lenient", path});
  EXPECT_EQ(lenient.status, ExitStatus::success);
  EXPECT_EQ(lenient.out, strict.out);
  EXPECT_EQ(runLab({"run", "--json", path}).json()["attachments"].dump(),
            R"({"all":2,"programmed":1})");
  EXPECT_THAT(runLab({"run", simple()}).out, Not(HasSubstr("not programmed")));
}

TEST_F(RunVerbTest, AnInterfaceOfOneFamilyNeedsNoAddressOfTheOther) {
  std::string const path =
      file("a.cfg", "class-map match-any C\n match any\npolicy-map P\n class C\n"
                    "interface Ethernet1\n ip address 192.0.2.1/24\n"
                    " service-policy input P\n");
  Outcome const outcome = runLab({"run", path});
  EXPECT_EQ(outcome.status, ExitStatus::success);
  EXPECT_THAT(outcome.out, Not(HasSubstr("no IPv6 address")));
  EXPECT_THAT(runLab({"explain", path}).out, HasSubstr("no IPv6 address"));
}

TEST_F(RunVerbTest, ActionsAreMappedByAFile) {
  std::string const path = file("a.cfg", simplePolicy + "policy-map P\n class P\n  police 64000\n");
  std::string const actions = file("actions.txt", "police = action3\n");
  auto const rule = [&](std::vector<std::string> const& arguments) {
    return runLab(arguments).json()["policies"][0]["rules"][0];
  };
  EXPECT_EQ(rule({"run", "--json", path})["action2"], 64);
  EXPECT_EQ(rule({"run", "--json", "--actions", actions, path})["action3"], 64);
  EXPECT_EQ(rule({"run", "--json", "--actions", actions, path})["action2"], 0);
  Outcome const bad = runLab({"run", "--actions", file("bad.txt", "police\n"), path});
  EXPECT_EQ(bad.status, ExitStatus::badInput);
  EXPECT_THAT(bad.err, HasSubstr("bad.txt:1:7: expected the first words of a line"));
  EXPECT_EQ(runLab({"run", "--actions", "-", "-"}).status, ExitStatus::badInput);
}

TEST_F(RunVerbTest, InterfacesAreShownAsTheyAreWritten) {
  std::string const path = file("a.cfg", simplePolicy + "interface Et5\n service-policy input P\n");
  EXPECT_THAT(runLab({"run", path}).out, HasSubstr("  interfaces  Ethernet1, Et5\n"));
  EXPECT_EQ(runLab({"run", "--json", path}).json()["policies"][0]["interfaces"].dump(),
            R"(["Ethernet1","Ethernet5"])");
}

}  // namespace
}  // namespace lab::test
