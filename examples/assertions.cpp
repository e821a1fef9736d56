// SPDX-License-Identifier: Apache-2.0

// A broken order of calls is a failure of the running test: this program links
// PolicyMapTestKit::Main instead of the main function of Google Test.

#include "testkit/Assertions.h"

#include "testkit/Lab.h"
#include "testkit/Matchers.h"

#include <gtest/gtest-spi.h>

using namespace PolicyMapTestKit;
using PolicyMap::ClassMapMatchOption;

namespace {

// Deletes a policy that is already deleted.
void deleteTwice(Lab& lab) {
  auto const data = lab.machine()->policyMapSm({"edge", "input"})->policyCommonData();
  lab.helper()->deletePolicy(data, ClassMapMatchOption::ipv4);
  EXPECT_THROW(lab.helper()->deletePolicy(data, ClassMapMatchOption::ipv4), AssertionFailed);
}

TEST(Assertions, ASecondDeletionFailsTheTest) {
  Lab lab;
  lab.load(R"(class-map match-any web
                match ip tcp any any eq 80
              policy-map edge
                class web
              interface Ethernet1
                service-policy input edge)");
  EXPECT_NONFATAL_FAILURE(deleteTwice(lab), "in the call deletePolicy edge/input ipv4");
}

}  // namespace
