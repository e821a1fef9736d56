// SPDX-License-Identifier: Apache-2.0
#include <PolicyMap/RetryTimer.h>

#include <gmock/gmock.h>

#include <vector>

namespace policymap {
namespace {

using testing::ElementsAre;

class Retry : public testing::Test {
 protected:
  Retry() {
    Kor::EventLoop::global().virtualTimeIs(true);
    start = Kor::now();
  }
  ~Retry() override { Kor::EventLoop::global().virtualTimeIs(false); }

  void advance(double seconds) { Kor::EventLoop::global().runFor(seconds); }

  double start = 0;
  std::vector<double> retries;  // seconds since the start
  PolicyMap::RetryTimer timer{[this] { retries.push_back(Kor::now() - start); }};
};

TEST_F(Retry, WaitsTwiceAsLongEachTimeUpToTheMaximum) {
  for (int i = 0; i < 5; ++i) {
    timer.schedule(1, 5);
    advance(5);
  }
  EXPECT_THAT(retries, ElementsAre(1, 7, 14, 20, 25));
}

TEST_F(Retry, OneThatIsScheduledIsNotPutOff) {
  timer.schedule(4, 60);
  advance(3);
  timer.schedule(4, 60);
  advance(1);
  EXPECT_THAT(retries, ElementsAre(4));
}

TEST_F(Retry, StartingOverCancelsAndWaitsTheMinimumAgain) {
  timer.schedule(1, 60);
  advance(1);
  timer.schedule(1, 60);
  advance(1);
  timer.startOver();
  advance(8);
  EXPECT_THAT(retries, ElementsAre(1));
  timer.schedule(1, 60);
  advance(1);
  EXPECT_THAT(retries, ElementsAre(1, 11));
}

}  // namespace
}  // namespace policymap
