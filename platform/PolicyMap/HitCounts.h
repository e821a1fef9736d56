// SPDX-License-Identifier: Apache-2.0
#pragma once

// Reads the hit counts of the rules of a class from the helper, and writes them to the class
// status.

#include "PolicyMap/ClassMapSm.h"
#include "PolicyMap/PolicyMapAclHelper.h"
#include "PolicyMap/ProgrammedState.h"

#include <functional>
#include <map>
#include <vector>

namespace PolicyMap {

using HitCounts = std::map<AclRuleKey, std::uint64_t>;

// Queries every programmed rule of the class once, over all options. Omits rules whose query
// throws. Stops if `goesOn` returns false after a query.
[[nodiscard]] POLICYMAP_API HitCounts
readHitCounts(PolicyMapAclHelper& helper, PolicyMapSmCommonData::PtrConst const& policyData,
              ClassMapSmCommonData::PtrConst const& classData, ProgrammedState const& state,
              std::function<bool()> const& goesOn);

// Replaces the counts of the status. Equal counts do not notify.
POLICYMAP_API void publishHitCounts(ClassMapStatus& status, HitCounts const& counts);

// Reads and publishes the counts of all classes that have a status. Stops if `goesOn` returns false
// after a query or a notification.
POLICYMAP_API void updateHitCounts(std::vector<Kor::Ptr<ClassMapSm>> const& classes,
                                   PolicyMapAclHelper& helper,
                                   PolicyMapSmCommonData::PtrConst const& policyData,
                                   ProgrammedState const& state,
                                   std::function<bool()> const& goesOn);

}  // namespace PolicyMap
