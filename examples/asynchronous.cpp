// SPDX-License-Identifier: Apache-2.0

// Asynchronous results: each commit and each operation on an interface waits for a trigger.

#include "testkit/Lab.h"
#include "testkit/Matchers.h"

#include <algorithm>

using namespace PolicyMapTestKit;
using PolicyMap::ProgrammingState;

namespace {

// Delivers results until no operation waits for one, and returns their number.
int triggerAll(Lab& lab) {
  auto const waiting = [&] {
    Explanations const all = lab.explain();
    return std::any_of(all.begin(), all.end(), [](PolicyMap::Explanation const& each) {
      return each.state == ProgrammingState::waiting;
    });
  };
  int results = 0;
  for (; waiting(); ++results) {
    lab.trigger();
  }
  return results;
}

TEST(Asynchronous, EveryInterfaceAndTheCommitNeedAResult) {
  Lab lab({.async = true});
  lab.load(R"(class-map match-any web
                match ip tcp any any eq 80
              policy-map edge
                class web
              interface Ethernet1
                service-policy input edge
              interface Ethernet2
                service-policy input edge)");
  EXPECT_THAT(lab.explain().notProgrammed(), testing::Not(testing::IsEmpty()));
  EXPECT_EQ(triggerAll(lab), 3);
  EXPECT_THAT(lab.explain().notProgrammed(), testing::IsEmpty());
}

}  // namespace
