// SPDX-License-Identifier: Apache-2.0
#pragma once

// StatusWatch: observes the statuses of all policies, tells of each change, and notes notifications
// without one.

#include "testkit/Export.h"

#include <Kor/Ptr.h>
#include <PolicyMap/PolicyMapTypeStatus.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit {

class POLICYMAPTESTKIT_API StatusWatch {
 public:
  // What has changed, and its new value as text: "programmed" "yes", "failure" "commitPolicy: table
  // full", "interface Ethernet1" "no". Attributes outlive the call, values do not.
  using OnChange = std::function<void(PolicyMap::PolicyMapSmKey const& policy,
                                      std::optional<PolicyMap::ClassMapMatchOption> option,
                                      std::string_view attribute, std::string const& value)>;

  explicit StatusWatch(Kor::Ptr<PolicyMap::PolicyMapTypeStatus> status, OnChange onChange = {});
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
  OnChange onChange_;
  Kor::Ptr<TypeWatch> typeWatch_;
  std::map<PolicyMap::PolicyMapSmKey, Kor::Ptr<PolicyWatch>> policyWatches_;
  std::vector<std::string> irregular_;
};

}  // namespace PolicyMapTestKit
