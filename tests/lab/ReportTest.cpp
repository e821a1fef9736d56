// SPDX-License-Identifier: Apache-2.0
#include "lab/Report.h"

#include "lab/JsonReport.h"
#include "lab/Labs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace lab::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::string reportOf(Lab const& lab, WithRules withRules = WithRules::yes,
                     TextStyle const& style = {}) {
  std::ostringstream out;
  printReport(out, style, lab, outcomeOf(lab), withRules, SkippedBy::kind);
  return out.str();
}

nlohmann::ordered_json jsonOf(Lab const& lab, WithRules withRules = WithRules::yes) {
  std::ostringstream out;
  printJson(out, {lab, outcomeOf(lab), {}, withRules, false});
  return nlohmann::ordered_json::parse(out.str());
}

std::vector<std::string> keysOf(nlohmann::ordered_json const& object) {
  std::vector<std::string> keys;
  for (auto const& [key, value] : object.items()) {
    keys.push_back(key);
  }
  return keys;
}

TEST(Report, TableShowsOnePolicyWithItsRulesAndTheirSubRules) {
  Lab lab({.subRulesForPorts = true});
  load(lab, portRange);
  EXPECT_EQ(
      reportOf(lab),
      "policy-map P, input, ipv4: created\n"
      "  counts      created 1, committed 1, action updates begun 0 and ended 0\n"
      "  interfaces  Ethernet1\n"
      "  rules       2 with 3 sub-rules\n"
      "  class  list  seq  action1  action2  action3  sub-rules  match\n"
      "  P      P      10        1        0        0          1  permit tcp any any eq 80\n"
      "  P      P      20        1        0        0          2  permit udp any any range 5004 "
      "5008\n"
      "      dst 5004-5007 | dst 5008\n"
      "\n"
      "total 1 policy, 2 rules, 3 sub-rules\n");
}

TEST(Report, RangeCheckersAreMarked) {
  Lab lab;
  load(lab, portRange);
  EXPECT_THAT(reportOf(lab), HasSubstr("      dst 5004-5008 (range checker)\n"));
}

TEST(Report, SummaryLeavesOutTheRules) {
  Lab lab;
  load(lab, simplePolicy);
  std::string const text = reportOf(lab, WithRules::no);
  EXPECT_THAT(text, HasSubstr("  rules       1 with 1 sub-rule\n"));
  EXPECT_THAT(text, testing::Not(HasSubstr("permit")));
  EXPECT_THAT(text, HasSubstr("total 1 policy, 1 rule, 1 sub-rule\n"));
}

TEST(Report, DeletedPolicyIsToldAsNotCreated) {
  Lab lab;
  load(lab, simplePolicy);
  load(lab, "no policy-map P\n");
  EXPECT_THAT(reportOf(lab), HasSubstr("policy-map P, input, ipv4: not created\n"));
  EXPECT_THAT(reportOf(lab), HasSubstr("  interfaces  none\n"));
}

TEST(Report, ProblemsAndSkippedLinesStandAtTheEnd) {
  Lab lab;
  load(lab, "frobnicate now\ninterface Ethernet1\n service-policy input P\n", Reading::lenient);
  EXPECT_EQ(reportOf(lab), "total 0 policies, 0 rules, 0 sub-rules\n"
                           "not programmed 1 of 1 attachment\n"
                           "\n"
                           "problems\n"
                           "  policy-map P (input): not defined, but attached to Ethernet1\n"
                           "\n"
                           "skipped 1 line; understood 1 of 1 line about policies\n"
                           "  lines  kind\n"
                           "      1  frobnicate\n");
}

TEST(Report, LinesFitTheWidthWhereBlanksAllowIt) {
  Lab lab;
  std::string text = simplePolicy;
  for (int i = 1; i != 40; ++i) {
    text += "interface Ethernet" + std::to_string(i) + "\n service-policy input P\n";
  }
  load(lab, text + "ip access-list P\n permit tcp 10.100.100.0/24 range 10000 20000 "
                   "10.200.200.0/24 range 30000 40000 dscp ef\n");
  std::istringstream lines(reportOf(lab));
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(line.size(), 100U) << line;
  }
}

TEST(Report, ColorIsUsedWhenWanted) {
  Lab lab;
  load(lab, simplePolicy);
  EXPECT_THAT(reportOf(lab, WithRules::yes, {.color = true}),
              HasSubstr("\033[1mpolicy-map P, input, ipv4\033[0m: \033[32mcreated\033[0m\n"));
  EXPECT_THAT(reportOf(lab), testing::Not(HasSubstr("\033")));
}

TEST(Report, JsonHasItsKeysInOrder) {
  Lab lab;
  load(lab, simplePolicy);
  auto const json = jsonOf(lab);
  EXPECT_THAT(keysOf(json), ElementsAre("policies", "totals", "attachments", "skipped",
                                        "skippedLines", "policyLines", "status", "problems",
                                        "faults", "findings", "outstanding", "changes"));
  EXPECT_THAT(keysOf(json["status"][0]),
              ElementsAre("policy", "direction", "option", "programmed", "timeProgrammed",
                          "interfaces", "error", "operation", "class", "rule"));
  EXPECT_THAT(keysOf(json["policies"][0]),
              ElementsAre("policy", "direction", "option", "created", "dirty", "createCount",
                          "commitCount", "beginUpdateActionCount", "endUpdateActionCount",
                          "interfaces", "ruleCount", "subRuleCount", "rules"));
  EXPECT_THAT(
      keysOf(json["policies"][0]["rules"][0]),
      ElementsAre("class", "acl", "seq", "match", "action1", "action2", "action3", "subRules"));
  EXPECT_THAT(keysOf(json["totals"]), ElementsAre("policies", "rules", "subRules"));
}

TEST(Report, JsonHasTheValuesOfTheRecord) {
  Lab lab({.subRulesForPorts = true});
  load(lab, portRange);
  load(lab, "frobnicate\nfrobnicate\n", Reading::lenient);
  EXPECT_EQ(jsonOf(lab), nlohmann::ordered_json::parse(R"({
    "policies": [{
      "policy": "P", "direction": "input", "option": "ipv4", "created": true, "dirty": false,
      "createCount": 1, "commitCount": 1, "beginUpdateActionCount": 0, "endUpdateActionCount": 0,
      "interfaces": ["Ethernet1"], "ruleCount": 2, "subRuleCount": 3,
      "rules": [
        {"class": "P", "acl": "P", "seq": 10, "match": "permit tcp any any eq 80",
         "action1": 1, "action2": 0, "action3": 0, "subRules": ["dst 80"]},
        {"class": "P", "acl": "P", "seq": 20, "match": "permit udp any any range 5004 5008",
         "action1": 1, "action2": 0, "action3": 0, "subRules": ["dst 5004-5007", "dst 5008"]}]}],
    "totals": {"policies": 1, "rules": 2, "subRules": 3},
    "attachments": {"all": 1, "programmed": 1},
    "skipped": {"frobnicate": 2},
    "skippedLines": [{"file": "t", "line": 1, "kind": "frobnicate"},
                     {"file": "t", "line": 2, "kind": "frobnicate"}],
    "policyLines": {"understood": 11, "skipped": 0},
    "status": [{"policy": "P", "direction": "input", "option": "ipv4", "programmed": true,
                "timeProgrammed": 0.0, "interfaces": ["Ethernet1"], "error": "", "operation": "", "class": "", "rule": ""}],
    "problems": [], "faults": [], "findings": [], "outstanding": [], "changes": []})"));
}

TEST(Report, JsonSummaryHasNoRulesArrays) {
  Lab lab;
  load(lab, simplePolicy);
  auto const json = jsonOf(lab, WithRules::no);
  EXPECT_FALSE(json["policies"][0].contains("rules"));
  EXPECT_EQ(json["policies"][0]["ruleCount"], 1);
}

TEST(Report, JsonOfNothingIsAnObjectAllTheSame) {
  Lab const lab;
  EXPECT_EQ(jsonOf(lab), nlohmann::ordered_json::parse(R"({"policies": [],
    "totals": {"policies": 0, "rules": 0, "subRules": 0},
    "attachments": {"all": 0, "programmed": 0}, "skipped": {},
    "skippedLines": [], "policyLines": {"understood": 0, "skipped": 0}, "status": [],
    "problems": [], "faults": [], "findings": [], "outstanding": [], "changes": []})"));
}

TEST(Report, PoliciesAreOrderedByNameDirectionAndOption) {
  Lab lab;
  std::string text = "class-map match-any C\n match mac any any\n match ip ip any any\n"
                     " match ipv6 ipv6 any any\n";
  for (std::string const name : {"b", "a", "C"}) {
    text += "policy-map " + name + "\n class C\n";
  }
  load(lab, text + "interface Ethernet1\n service-policy output b\n service-policy input C\n"
                   "interface Ethernet2\n service-policy input b\n service-policy output a\n");
  std::string order;
  auto const json = jsonOf(lab);
  for (auto const& policy : json["policies"]) {
    order += policy["policy"].get<std::string>() + policy["direction"].get<std::string>()[0] +
             policy["option"].get<std::string>() + " ";
  }
  EXPECT_EQ(order, "Ciipv4 Ciipv6 Cimac aoipv4 aoipv6 aomac biipv4 biipv6 bimac boipv4 boipv6 "
                   "bomac ");
}

}  // namespace
}  // namespace lab::test
