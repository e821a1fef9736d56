// SPDX-License-Identifier: Apache-2.0

// A sweep: whichever call fails, the same is programmed after the retry.

#include "testkit/Lab.h"
#include "testkit/Matchers.h"

using namespace PolicyMapTestKit;

namespace {

constexpr auto policy = R"(class-map match-any web
                             match ip tcp any any eq 80
                             match ip tcp any any eq 443
                           policy-map edge
                             class web
                           interface Ethernet1
                             service-policy input edge)";

// What is programmed after a run in which the call of this number fails. Counters are left out.
Record programmedAfterFailureOf(std::uint64_t number, std::uint64_t& calls) {
  Lab lab;
  std::uint64_t count = 0;
  lab.aroundIs([&](HelperCall& call, auto const& proceed) {
    proceed();
    if (++count == number) {
      call.error = "failed on purpose";
    }
  });
  lab.load(policy);
  lab.advance(std::chrono::seconds(1));
  EXPECT_THAT(lab.explain().notProgrammed(), testing::IsEmpty()) << lab.journal();
  calls = count;
  Record record = lab.record("edge");
  record.createCount = record.commitCount = 0;
  return record;
}

TEST(EveryFault, LeavesTheSameBehind) {
  std::uint64_t calls = 0;
  Record const expected = programmedAfterFailureOf(0, calls);
  std::uint64_t const undisturbed = calls;
  ASSERT_EQ(undisturbed, 5U) << "create, two rules, interface, commit";
  for (std::uint64_t number = 1; number <= undisturbed; ++number) {
    SCOPED_TRACE("call " + std::to_string(number));
    EXPECT_EQ(programmedAfterFailureOf(number, calls), expected);
    EXPECT_GT(calls, undisturbed) << "it was tried again";
  }
}

}  // namespace
