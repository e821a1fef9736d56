// SPDX-License-Identifier: Apache-2.0
#pragma once

// FailureJournal: every failure that was ever published in the status of a policy, including
// failures that the next pass cleared and those of statuses that were deleted with their policy.

#include <Kor/Ptr.h>
#include <PolicyMap/PolicyMapTypeStatus.h>

#include <map>
#include <vector>

namespace TestSupport {

struct ReportedFailure {
  PolicyMap::PolicyMapSmKey policy;
  PolicyMap::ClassMapMatchOption option;
  PolicyMap::PolicyFailure failure;
};

class FailureJournal {
 public:
  explicit FailureJournal(Kor::Ptr<PolicyMap::PolicyMapTypeStatus> status);
  ~FailureJournal();
  FailureJournal(FailureJournal const&) = delete;
  FailureJournal& operator=(FailureJournal const&) = delete;

  [[nodiscard]] std::vector<ReportedFailure> const& failures() const { return failures_; }
  void clear() { failures_.clear(); }

 private:
  class TypeWatch;
  class PolicyWatch;

  void watch(PolicyMap::PolicyMapSmKey const& key);

  Kor::Ptr<PolicyMap::PolicyMapTypeStatus> status_;
  Kor::Ptr<TypeWatch> typeWatch_;
  std::map<PolicyMap::PolicyMapSmKey, Kor::Ptr<PolicyWatch>> policyWatches_;
  std::vector<ReportedFailure> failures_;
};

}  // namespace TestSupport
