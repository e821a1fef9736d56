// SPDX-License-Identifier: Apache-2.0
#pragma once

// HitCounts: the packets that each rule of a class has matched, from the helper into its status.

#include "PolicyMap/ClassMapSm.h"
#include "PolicyMap/PolicyMapAclHelper.h"
#include "PolicyMap/ProgrammedState.h"

#include <functional>
#include <map>
#include <vector>

namespace PolicyMap {

using HitCounts = std::map<AclRuleKey, std::uint64_t>;

// Asks once for every rule of the class that is programmed, in any option. Without a count for
// rules whose call throws. Stops early when `goesOn` returns false after a call.
[[nodiscard]] POLICYMAP_API HitCounts
readHitCounts(PolicyMapAclHelper& helper, PolicyMapSmCommonData::PtrConst const& policyData,
              ClassMapSmCommonData::PtrConst const& classData, ProgrammedState const& state,
              std::function<bool()> const& goesOn);

// The status holds exactly these counts afterwards.
POLICYMAP_API void publishHitCounts(ClassMapStatus& status, HitCounts const& counts);

// Reads and publishes the counts of classes that have a status. Stops early when `goesOn` returns
// false after a call or a notification.
POLICYMAP_API void updateHitCounts(std::vector<Kor::Ptr<ClassMapSm>> const& classes,
                                   PolicyMapAclHelper& helper,
                                   PolicyMapSmCommonData::PtrConst const& policyData,
                                   ProgrammedState const& state,
                                   std::function<bool()> const& goesOn);

}  // namespace PolicyMap
