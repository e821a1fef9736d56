// SPDX-License-Identifier: Apache-2.0

// Two labs: the same policy for two kinds of hardware, each with its own time.

#include "testkit/Lab.h"
#include "testkit/Matchers.h"

using namespace PolicyMapTestKit;

namespace {

TEST(TwoLabs, AnActionIsUpdatedInPlaceOnlyWhereTheHardwareCan) {
  Lab updates({.updateAction = true});
  Lab recreates;
  for (Lab* const lab : {&updates, &recreates}) {
    lab->load(R"(class-map match-any web
                   match ip tcp any any eq 80
                 policy-map edge
                   class web
                     set action1 7
                 interface Ethernet1
                   service-policy input edge)");
    lab->load("policy-map edge\n class web\n  set action1 8");
  }
  EXPECT_EQ(updates.record("edge").createCount, 1U);
  EXPECT_EQ(recreates.record("edge").createCount, 2U);
  EXPECT_EQ(updates.record("edge").rules, recreates.record("edge").rules);
  updates.advance(std::chrono::minutes(1));
  EXPECT_EQ(recreates.now(), 0) << "the time of a lab is its own";
}

}  // namespace
