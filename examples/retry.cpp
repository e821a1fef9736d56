// SPDX-License-Identifier: Apache-2.0

// Retries and virtual time: after a failure the waits double, up to a minute. A change of the
// configuration does not wait.

#include "testkit/Lab.h"
#include "testkit/Matchers.h"

using namespace PolicyMapTestKit;

namespace {

std::vector<double> timesOf(Journal const& journal) {
  std::vector<double> times;
  for (JournalEntry const& entry : journal) {
    times.push_back(entry.time);
  }
  return times;
}

TEST(Retry, TheWaitsDoubleUpToAMinute) {
  Lab lab({.faults = {{"commitError", "table full"}}});
  lab.load(R"(class-map match-any web
                match ip tcp any any eq 80
              policy-map edge
                class web
              interface Ethernet1
                service-policy input edge)");
  lab.advance(std::chrono::minutes(4));
  EXPECT_THAT(timesOf(lab.journal().calls("commitPolicy")),
              testing::ElementsAre(0, 1, 3, 7, 15, 31, 63, 123, 183));
  lab.clearFaults();
  lab.load("class-map match-any web\n match ip tcp any any eq 443");
  EXPECT_THAT(lab.record("edge"), Programmed()) << lab.explain("edge");
}

}  // namespace
