// SPDX-License-Identifier: Apache-2.0
#include "lab/Progress.h"

#include <gtest/gtest.h>

#include <sstream>

namespace lab::test {
namespace {

void work(Progress& progress, int steps) {
  progress.begin("programming", 1024);
  for (int i = 0; i != steps; ++i) {
    progress.step();
  }
}

TEST(Progress, ShortWorkDrawsNothing) {
  std::ostringstream out;
  {
    Progress progress(&out, std::chrono::hours(1));
    work(progress, 1024);
  }
  EXPECT_EQ(out.str(), "");
}

TEST(Progress, LongWorkDrawsABarAndTakesItAway) {
  std::ostringstream out;
  Progress progress(&out, std::chrono::milliseconds(0));
  work(progress, 512);
  EXPECT_NE(out.str().find("\rprogramming [##########.............................."),
            std::string::npos)
      << out.str();
  progress.clear();
  std::string const end = "\r\033[K";
  ASSERT_GE(out.str().size(), end.size());
  EXPECT_EQ(out.str().substr(out.str().size() - end.size()), end);
}

TEST(Progress, MoreStepsThanForeseenKeepTheBarFull) {
  std::ostringstream out;
  Progress progress(&out, std::chrono::milliseconds(0));
  progress.begin("programming", 100);
  for (int i = 0; i != 256; ++i) {
    progress.step();
  }
  EXPECT_NE(out.str().find("] 100%"), std::string::npos) << out.str();
}

TEST(Progress, WithoutAStreamNothingIsWanted) {
  Progress progress;
  EXPECT_FALSE(progress.wanted());
  work(progress, 512);
}

}  // namespace
}  // namespace lab::test
