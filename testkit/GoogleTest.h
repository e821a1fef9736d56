// SPDX-License-Identifier: Apache-2.0
#pragma once

// Findings of labs, and failed assertions of the platform and the library, as failures of the
// running Google Test. This header needs Google Test; the test kit itself does not.
//
// A program that includes it, or testkit/Matchers.h or testkit/Printers.h, fails a test for each
// finding. PolicyMapTestKit::Main calls assertionsFailTests().

#include "testkit/Assertions.h"
#include "testkit/faults/Findings.h"

#include <Kor/Assert.h>

#include <gtest/gtest.h>

#include <utility>
#include <vector>

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

// While it exists, findings fail no test but are collected, those of labs that end meanwhile too.
class CollectedFindings {
 public:
  CollectedFindings()
      : before_(findingHandlerIs([this](Finding const& finding) { all_.push_back(finding); })) {}
  CollectedFindings(CollectedFindings const&) = delete;
  CollectedFindings& operator=(CollectedFindings const&) = delete;
  ~CollectedFindings() { findingHandlerIs(std::move(before_)); }

  [[nodiscard]] std::vector<Finding> const& all() const { return all_; }

 private:
  std::vector<Finding> all_;
  FindingHandler before_;
};

// Internal: findings fail tests from the start of the program.
inline bool const findingsFailTests =
    (findingHandlerIs([](Finding const& finding) { ADD_FAILURE() << finding; }), true);

}  // namespace PolicyMapTestKit
