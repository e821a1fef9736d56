// SPDX-License-Identifier: Apache-2.0

// A filter set: one rule per line, in place of policy text.

#include "testkit/Lab.h"
#include "testkit/Matchers.h"

using namespace PolicyMapTestKit;

namespace {

TEST(FilterSet, ItsRulesAreSharedOutToTheClasses) {
  Text::SourceText const lines(
      "three rules", "@192.0.2.0/24 0.0.0.0/0 0 : 65535 80 : 80 0x06/0xff 0x0000/0x0000\n"
                     "@0.0.0.0/0 192.0.2.1/32 0 : 65535 53 : 53 0x11/0xff 0x0000/0x0000\n"
                     "@0.0.0.0/0 0.0.0.0/0 0 : 65535 0 : 65535 0x01/0xff 0x0000/0x0000\n");
  Lab lab;
  lab.load(Text::readFilterSet(lines), {.classes = 3, .interfaces = 2});
  EXPECT_THAT(lab.record("rules"), RulesAre("rules-1 10 permit tcp 192.0.2.0/24 any eq 80",
                                            "rules-2 10 permit udp any host 192.0.2.1 eq 53",
                                            "rules-3 10 permit icmp any any"));
  EXPECT_THAT(lab.record("rules"), OnInterfaces("Ethernet1", "Ethernet2"));
}

}  // namespace
