// SPDX-License-Identifier: Apache-2.0
#pragma once

// PolicyHost: the service-policy machine as seen by the reconciler of a policy. It provides the
// helper and the interfaces.

#include "Acl/AclDiff.h"
#include "Kor/EventLoop.h"
#include "PolicyMap/PolicyMapAclHelper.h"
#include "PolicyMap/PolicyMapSmKey.h"
#include "Vorel/IntfId.h"

#include <set>
#include <vector>

namespace PolicyMap {

class PolicyHost {
 public:
  // A reconciler that uses this host.
  class User {
   public:
    // The host is going to end: the user must stop using it, and calls userDel().
    virtual void hostEnds() = 0;

   protected:
    ~User() = default;
  };

  virtual ~PolicyHost() = default;

  void userIs(User& user) { users_.insert(&user); }
  void userDel(User& user) { users_.erase(&user); }
  // Calls hostEnds() of all users. To be called before the host ends.
  void dismissUsers() {
    while (!users_.empty()) {
      (*users_.begin())->hostEnds();
    }
  }

  // Runs the passes, and is the clock of the waits.
  [[nodiscard]] virtual Kor::EventLoop& eventLoop() const = 0;
  // Null: nothing is programmed.
  [[nodiscard]] virtual Kor::Ptr<PolicyMapAclHelper> const& aclHelper() const = 0;
  // Null: any other version of a list is treated as different.
  [[nodiscard]] virtual Kor::Ptr<Acl::AclDiff> const& aclDiff() const = 0;
  // True if the machine is active. Otherwise only teardown continues.
  [[nodiscard]] virtual bool active() const = 0;
  [[nodiscard]] virtual bool allowsOption(ClassMapMatchOption option) const = 0;
  // The interfaces where the policy is to be applied for an option; ascending, unique.
  [[nodiscard]] virtual std::vector<Vorel::IntfId> effectiveIntfs(PolicyMapSmKey const& key,
                                                                  ClassMapMatchOption option) = 0;
  // The first and the longest wait before a failed policy is retried, and the time limit for a
  // result, in seconds.
  [[nodiscard]] virtual double retryMin() const = 0;
  [[nodiscard]] virtual double retryMax() const = 0;
  [[nodiscard]] virtual double asyncTimeout() const = 0;
  // Nothing of the policy is programmed any more. The host may drop the policy or build it again.
  virtual void policyGone(PolicyMapSmKey const& key) = 0;

 private:
  std::set<User*> users_;
};

}  // namespace PolicyMap
