// SPDX-License-Identifier: Apache-2.0
//
// The main function of a test program: Google Test and Google Mock, with failed assertions of the
// platform and the library as test failures. It is compiled with each program that links
// PolicyMapTestKit::Main, so with that program's version of Google Test.

#include "testkit/GoogleTest.h"

#include <gmock/gmock.h>

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  PolicyMapTestKit::assertionsFailTests();
  return RUN_ALL_TESTS();
}
