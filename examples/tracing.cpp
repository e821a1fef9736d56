// SPDX-License-Identifier: Apache-2.0

// Trace lines in a test: the passes of the core with their causes.

#include "testkit/Tracing.h"

#include "testkit/Lab.h"
#include "testkit/Matchers.h"

#include <Kor/Trace.h>

using namespace PolicyMapTestKit;

namespace {

TEST(Tracing, APassAndItsCause) {
  Lab lab;
  lab.load(R"(class-map match-any web
                match ip tcp any any eq 80
              policy-map edge
                class web
              interface Ethernet1
                service-policy input edge)");
  std::vector<std::string> lines;
  auto const before = Kor::traceSinkIs(
      [&](std::string_view, int, std::string_view text) { lines.emplace_back(text); });
  traceIs("PolicyMap/3");
  lab.load("interface Ethernet2\n service-policy input edge");
  traceIs("PolicyMap/0");
  Kor::traceSinkIs(before);
  EXPECT_THAT(lines, testing::ElementsAre("edge/input: interfaces changed: addIntfToPolicy ipv4 "
                                          "Ethernet2, commitPolicy ipv4"));
}

}  // namespace
