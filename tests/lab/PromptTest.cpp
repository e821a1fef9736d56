// SPDX-License-Identifier: Apache-2.0
#include "lab/Prompt.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace lab::test {
namespace {

std::string fileOf(std::map<std::string, std::string> const& variables) {
  return historyFile([&](char const* name) -> char const* {
    auto const found = variables.find(name);
    return found == variables.end() ? nullptr : found->second.c_str();
  });
}

TEST(Prompt, TheFileOfTheHistoryFollowsTheEnvironment) {
  EXPECT_EQ(fileOf({{"HOME", "/home/a"}}), "/home/a/.local/state/policymap-lab/history");
  EXPECT_EQ(fileOf({{"HOME", "/home/a"}, {"XDG_STATE_HOME", "/state"}}),
            "/state/policymap-lab/history");
  EXPECT_EQ(fileOf({{"XDG_STATE_HOME", "/state"}, {"POLICYMAP_LAB_HISTORY", "h"}}), "h");
}

TEST(Prompt, ThereMayBeNoFileForTheHistory) {
  EXPECT_EQ(fileOf({}), "");
  EXPECT_EQ(fileOf({{"HOME", ""}}), "");
  EXPECT_EQ(fileOf({{"HOME", "/home/a"}, {"POLICYMAP_LAB_HISTORY", ""}}), "");
  EXPECT_EQ(fileOf({{"HOME", "/home/a"}, {"XDG_STATE_HOME", "relative"}}),
            "/home/a/.local/state/policymap-lab/history")
      << "relative folders are ignored";
}

}  // namespace
}  // namespace lab::test
