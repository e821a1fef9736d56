// SPDX-License-Identifier: Apache-2.0

// What messages of failed tests show.

#include "testkit/Lab.h"
#include "testkit/Matchers.h"

using namespace PolicyMapTestKit;
using testing::PrintToString;

namespace {

TEST(Printing, RecordsCallsAndExplanationsAreLines) {
  Lab lab;
  lab.load(R"(ip access-list web
                10 permit tcp any any range 8000 8080
              class-map match-any web
                match access-group web
              policy-map edge
                class web
                  set action1 7
              interface Ethernet1
                service-policy input edge)");
  EXPECT_EQ(PrintToString(lab.record("edge")),
            "edge/input ipv4, on Ethernet1\n"
            "  web: web 10 permit tcp any any range 8000 8080, action1 7, range checker");
  EXPECT_EQ(PrintToString(lab.record("edge").rules[0].key), "web 10 of class web, ipv4");
  EXPECT_EQ(PrintToString(lab.failure("edge")), "no failure");
  EXPECT_EQ(PrintToString(lab.status()->policyMapStatus({"edge", "input"})),
            "status of edge/input: programmed for ipv4");
}

}  // namespace
