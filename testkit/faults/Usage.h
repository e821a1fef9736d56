// SPDX-License-Identifier: Apache-2.0
#pragma once

// Usage: how much of the simulated hardware the policies of a helper take, and whether a call would
// need more than there is.

#include "helper/AclHelper.h"
#include "records/AclPolicyType.h"
#include "testkit/Export.h"
#include "testkit/ForwardingHelper.h"
#include "testkit/faults/FaultPlan.h"

#include <cstdint>
#include <map>
#include <string>

namespace PolicyMapTestKit {

class POLICYMAPTESTKIT_API Usage {
 public:
  // Counts what is recorded already.
  Usage(PolicyMapTest::AclHelper& helper, Capacity const& capacity);

  void capacityIs(Capacity const& capacity) { capacity_ = capacity; }
  // The limit that the call would exceed, "rules=1000"; empty if there is none.
  [[nodiscard]] std::string exceeded(HelperCall const& call) const;
  // The call was carried out; its error is that of the helper.
  void carriedOut(HelperCall const& call);

 private:
  struct Entries {
    std::uint64_t rules = 0;
    std::uint64_t rangeCheckers = 0;
  };
  using Key = PolicyMapTest::AclPolicyType;

  static Key keyOf(HelperCall const& call);
  void empty(Entries& entries);
  [[nodiscard]] std::string exceededByRule(HelperCall const& call) const;
  [[nodiscard]] std::string exceededByPolicy(HelperCall const& call) const;
  [[nodiscard]] std::string exceededByIntf(HelperCall const& call) const;

  PolicyMapTest::AclHelper& helper_;
  Capacity capacity_;
  std::map<Key, Entries> policies_;  // those that are created
  Entries all_;
};

}  // namespace PolicyMapTestKit
