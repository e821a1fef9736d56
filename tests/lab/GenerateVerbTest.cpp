// SPDX-License-Identifier: Apache-2.0
#include "lab/GenerateVerb.h"

#include "lab/Labs.h"
#include "testkit/text/FilterSetGenerator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace lab::test {
namespace {

class GenerateVerbTest : public InputFiles {};

TEST_F(GenerateVerbTest, WritesTheRulesAskedFor) {
  Outcome const outcome = runLab({"generate", "--rules", "50", "--seed", "7"});
  EXPECT_EQ(outcome.status, ExitStatus::success);
  EXPECT_EQ(outcome.out, generateFilterSet(50, 7));
  EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 50);
  EXPECT_EQ(runLab({"generate"}).out, generateFilterSet(1000));
}

TEST_F(GenerateVerbTest, RunReadsWhatItWrites) {
  std::string const rules = file("rules", runLab({"generate", "--rules", "30"}).out);
  EXPECT_EQ(runLab({"run", "--json", "--rules", rules}).json().at("totals").at("rules"), 30);
  std::string const rules6 = file("rules6", runLab({"generate", "--rules", "5", "--ipv6"}).out);
  auto const json = runLab({"run", "--json", "--rules", rules6}).json();
  EXPECT_EQ(json.at("policies")[0].at("option"), "ipv6");
  EXPECT_EQ(json.at("totals").at("rules"), 5);
}

TEST_F(GenerateVerbTest, OtherNumbersAreBadUsage) {
  for (char const* const rules : {"-1", "2000001", "x", ""}) {
    EXPECT_EQ(runLab({"generate", "--rules", rules}).status, ExitStatus::badInput) << rules;
  }
  EXPECT_EQ(runLab({"generate", "--seed", "-1"}).status, ExitStatus::badInput);
}

}  // namespace
}  // namespace lab::test
