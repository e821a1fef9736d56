// SPDX-License-Identifier: Apache-2.0
#include "testkit/Lab.h"
#include "testkit/Matchers.h"

using namespace PolicyMapTestKit;

TEST(Edge, WebTrafficGetsItsAction) {
  Lab lab;
  lab.load(R"(ip access-list web
                10 permit tcp any any eq 80
              class-map match-any web
                match access-group web
              policy-map edge
                class web
                  set action1 7
              interface Ethernet1
                ip address 192.0.2.1/24
                service-policy input edge)");
  EXPECT_THAT(lab.record("edge"), HasRule("web 10", "permit tcp any any eq 80", Action1(7)));
}
