// SPDX-License-Identifier: Apache-2.0
#include <PolicyMap/Settling.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace policymap {
namespace {

using PolicyMap::ScopedFlag;
using PolicyMap::Settling;

TEST(Settling, BringsOnceWhenNothingInterferes) {
  Settling<int> settling;
  int rounds = 0;
  settling.settle(1, [&] { ++rounds; });
  settling.settle(1, [&] { ++rounds; });
  EXPECT_EQ(rounds, 2);
}

TEST(Settling, ACallForTheSameKeyInsideAsksForOneMoreRound) {
  Settling<int> settling;
  std::string log;
  settling.settle(1, [&] {
    log += "in ";
    if (log == "in ") {
      settling.settle(1, [&] { log += "never "; });
      settling.settle(1, [&] { log += "never "; });
    }
    log += "out ";
  });
  EXPECT_EQ(log, "in out in out ");
}

TEST(Settling, AnotherKeyIsSettledInside) {
  Settling<int> settling;
  std::string log;
  settling.settle(1, [&] {
    log += "1 ";
    settling.settle(2, [&] {
      log += "2 ";
      if (log == "1 2 ") {
        settling.settle(1, [] {});
      }
    });
  });
  EXPECT_EQ(log, "1 2 1 2 ");
}

TEST(Settling, AllKeysInProgressCanBeAskedForOneMoreRound) {
  Settling<int> settling;
  std::string log;
  settling.settle(1, [&] {
    log += "1 ";
    settling.settle(2, [&] {
      log += "2 ";
      if (log == "1 2 ") {
        settling.lookAgain();
      }
    });
  });
  EXPECT_EQ(log, "1 2 2 1 2 ");
}

TEST(Settling, AnExceptionLeavesTheKeyFree) {
  Settling<int> settling;
  EXPECT_THROW(settling.settle(1, [] { throw std::runtime_error("no"); }), std::runtime_error);
  bool brought = false;
  settling.settle(1, [&] { brought = true; });
  EXPECT_TRUE(brought);
}

TEST(ScopedFlag, GivesTheFormerValueBack) {
  bool flag = false;
  {
    ScopedFlag const outer(flag);
    {
      ScopedFlag const inner(flag);
      EXPECT_TRUE(flag);
    }
    EXPECT_TRUE(flag);
  }
  EXPECT_FALSE(flag);
}

}  // namespace
}  // namespace policymap
