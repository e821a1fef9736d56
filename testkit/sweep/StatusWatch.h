// SPDX-License-Identifier: Apache-2.0
#pragma once

// StatusWatch: observes the statuses of all policies, and notes notifications without a change.

#include "testkit/Export.h"

#include <Kor/Ptr.h>
#include <PolicyMap/PolicyMapTypeStatus.h>

#include <map>
#include <string>
#include <vector>

namespace PolicyMapTestKit {

class POLICYMAPTESTKIT_API StatusWatch {
 public:
  explicit StatusWatch(Kor::Ptr<PolicyMap::PolicyMapTypeStatus> status);
  StatusWatch(StatusWatch const&) = delete;
  StatusWatch& operator=(StatusWatch const&) = delete;
  ~StatusWatch();

  // "edge/input: programmed ipv4 was announced without a change".
  [[nodiscard]] std::vector<std::string> const& irregular() const { return irregular_; }

 private:
  class TypeWatch;
  class PolicyWatch;

  void statusChanged(PolicyMap::PolicyMapSmKey const& key);

  Kor::Ptr<PolicyMap::PolicyMapTypeStatus> status_;
  Kor::Ptr<TypeWatch> typeWatch_;
  std::map<PolicyMap::PolicyMapSmKey, Kor::Ptr<PolicyWatch>> policyWatches_;
  std::vector<std::string> irregular_;
};

}  // namespace PolicyMapTestKit
