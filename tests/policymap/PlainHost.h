// SPDX-License-Identifier: Apache-2.0
#pragma once

// PlainHost: a service-policy machine as seen by the reconciler of a policy. A test sets what its
// functions return.

#include "policymap/PolicyBench.h"

#include <PolicyMap/PolicyHost.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

namespace policymap {

class PlainHost : public PolicyMap::PolicyHost {
 public:
  Kor::Ptr<PolicyMap::PolicyMapAclHelper> helper = Kor::make<CallLog>();
  Kor::Ptr<Acl::AclDiff> diff = Kor::make<Acl::AclDiff>();
  std::set<ClassMapMatchOption> forbidden;
  std::vector<Vorel::IntfId> intfs{intf("Ethernet1")};
  std::function<void()> whenAsked;  // called with each query of interfaces

  Kor::EventLoop& eventLoop() const override { return Kor::EventLoop::global(); }
  Kor::Ptr<PolicyMap::PolicyMapAclHelper> const& aclHelper() const override { return helper; }
  Kor::Ptr<Acl::AclDiff> const& aclDiff() const override { return diff; }
  bool active() const override { return true; }
  bool allowsOption(ClassMapMatchOption option) const override {
    return !forbidden.contains(option);
  }
  std::vector<Vorel::IntfId> effectiveIntfs(PolicyMap::PolicyMapSmKey const& /*key*/,
                                            ClassMapMatchOption /*option*/) override {
    if (whenAsked) {
      whenAsked();
    }
    return intfs;
  }
  double retryMin() const override { return 1; }
  double retryMax() const override { return 60; }
  double asyncTimeout() const override { return 30; }
  void policyGone(PolicyMap::PolicyMapSmKey const& /*key*/) override {}
};

}  // namespace policymap
