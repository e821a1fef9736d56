// SPDX-License-Identifier: Apache-2.0
#pragma once

// Failed assertions of the platform and the library as failures of the running Google Test.
//
// PolicyMapTestKit::Main does this for a whole program. This header needs Google Test; the test kit
// itself does not.

#include "testkit/Assertions.h"

#include <Kor/Assert.h>

#include <gtest/gtest.h>

namespace PolicyMapTestKit {

// From now on a failed assertion fails the running test and raises AssertionFailed. Inside an
// operation of the helper, the core takes the exception for a failure of the operation; it is also
// a failure of the test. Where no exception may pass, as in a destructor, the process still ends.
inline void assertionsFailTests() {
  Kor::assertionHandlerIs([](Kor::AssertionFailure const& failure) {
    ADD_FAILURE() << describe(failure);
    throw AssertionFailed(failure);
  });
}

}  // namespace PolicyMapTestKit
