// SPDX-License-Identifier: Apache-2.0
#include "lab/Trial.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <iostream>
#include <stdexcept>

namespace lab::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

void endsInAnAssertion() noexcept {
  int const seven = 7;
  KOR_ASSERT_AS("Test/Source", "seven is eight", seven == 8);
}

TEST(Trial, WhatReturnsOrRaisesAnExceptionEndsNothing) {
  EXPECT_EQ(endOf([] {}), "");
  EXPECT_EQ(endOf([] { throw std::runtime_error("bad"); }), "");
}

TEST(Trial, AnAssertionIsToldWithItsTextAndPlaceAlsoFromWhatRaisesNothing) {
  std::string const end = endOf(endsInAnAssertion);
  EXPECT_THAT(end, StartsWith("Test/Source: assertion \"seven is eight\" failed at "));
  EXPECT_THAT(end, HasSubstr("TrialTest.cpp:"));
}

TEST(Trial, ASignalIsToldWithItsNumber) {
  EXPECT_THAT(endOf([] { std::raise(SIGKILL); }), StartsWith("signal 9 ("));
}

TEST(Trial, AnInterruptEndsTheCopyEvenIfThisProcessIgnoresIt) {
  auto* const before = std::signal(SIGINT, SIG_IGN);
  EXPECT_THAT(endOf([] { std::raise(SIGINT); }), StartsWith("signal 2 ("));
  std::signal(SIGINT, before);
}

TEST(Trial, NothingIsChangedAndNothingPrintedHere) {
  int value = 1;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  EXPECT_EQ(endOf([&] {
              value = 2;
              std::cout << "out" << std::endl;
              std::cerr << "err" << std::endl;
            }),
            "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(value, 1);
}

TEST(Trial, TheHandlerOfAssertionsIsTheOneBefore) {
  Kor::AssertionHandler const mine = [](Kor::AssertionFailure const& /*failure*/) {};
  Kor::AssertionHandler const original = Kor::assertionHandlerIs(mine);
  endOf(endsInAnAssertion);
  EXPECT_EQ(Kor::assertionHandlerIs(original), mine);
}

}  // namespace
}  // namespace lab::test
