// SPDX-License-Identifier: Apache-2.0
#include "support/Death.h"

#include <Kor/Assert.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

TEST(SourceName, IsTheLastFolderAndTheBaseNameWithoutItsEnding) {
  static_assert(Kor::sourceNameOf("platform/Kor/HashMap.h") == "Kor/HashMap");
  static_assert(Kor::sourceNameOf("Kor/HashMap.h") == "Kor/HashMap");
  static_assert(Kor::sourceNameOf("/a/b/c.cpp") == "b/c");
  static_assert(Kor::sourceNameOf("c.cpp") == "c");
  static_assert(Kor::sourceNameOf("/c.cpp") == "/c");
}

TEST(Assert, AConditionThatHoldsIsEvaluatedOnceAndPasses) {
  int evaluations = 0;
  KOR_ASSERT(++evaluations == 1);
  KOR_ASSERT_AS("Source", "text", ++evaluations == 2);
  EXPECT_EQ(evaluations, 2);
}

TEST(AssertDeathTest, PrintsSourceTextFileAndLineAndAborts) {
  int const two = 2;
  EXPECT_ASSERTION(KOR_ASSERT(two == 3), "kor/AssertTest", "two == 3", "tests/kor/AssertTest.cpp");
  EXPECT_ASSERTION(KOR_ASSERT_AS("PolicyMapTestSm", "!data->created()", two == 3),
                   "PolicyMapTestSm", "!data->created()", "tests/kor/AssertTest.cpp");
}

TEST(AssertDeathTest, ATextWithPercentSignsIsPrintedAsItStands) {
  EXPECT_ASSERTION(KOR_ASSERT_AS("S", "100%s %n", false), "S", "100%s %n",
                   "tests/kor/AssertTest.cpp");
}

void reportAndReturn(Kor::AssertionFailure const& failure) {
  std::fprintf(stderr, "handler: %s|%s|%d\n", std::string(failure.source).c_str(),
               std::string(failure.text).c_str(), failure.line > 0 ? 1 : 0);
}

TEST(AssertDeathTest, AHandlerReplacesThePrintAndReturningFromItStillAborts) {
  EXPECT_EXIT(
      {
        Kor::assertionHandlerIs(reportAndReturn);
        KOR_ASSERT_AS("S", "text", false);
        std::exit(0);
      },
      testing::KilledBySignal(SIGABRT), testing::StrEq("handler: S|text|1\n"));
}

TEST(AssertDeathTest, AHandlerMayEndTheProcessInItsOwnWay) {
  EXPECT_EXIT(
      {
        Kor::assertionHandlerIs([](Kor::AssertionFailure const& /*failure*/) { std::_Exit(42); });
        KOR_ASSERT_AS("S", "text", false);
      },
      testing::ExitedWithCode(42), testing::StrEq(""));
}

TEST(AssertDeathTest, NullRestoresThePrint) {
  EXPECT_ASSERTION(
      {
        Kor::assertionHandlerIs(reportAndReturn);
        Kor::assertionHandlerIs(nullptr);
        KOR_ASSERT_AS("S", "text", false);
      },
      "S", "text", "tests/kor/AssertTest.cpp");
}

TEST(Assert, InstallingAHandlerAnswersTheOneBefore) {
  EXPECT_EQ(Kor::assertionHandlerIs(reportAndReturn), nullptr);
  EXPECT_EQ(Kor::assertionHandlerIs(nullptr), reportAndReturn);
}

}  // namespace
