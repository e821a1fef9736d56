// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/HitCounts.h"

#include "PolicyMap/HelperArbiter.h"
#include "PolicyMap/Trace.h"

namespace PolicyMap {

HitCounts readHitCounts(PolicyMapAclHelper& helper,
                        PolicyMapSmCommonData::PtrConst const& policyData,
                        ClassMapSmCommonData::PtrConst const& classData,
                        ProgrammedState const& state, std::function<bool()> const& goesOn) {
  HitCounts counts;
  bool going = true;
  for (ClassMapMatchOption const option : allMatchOptions) {
    ProgrammedClass const* const programmed = state[option].classes.find(classData.get());
    if (!going || programmed == nullptr) {
      continue;
    }
    ProgrammedClass const counted = *programmed;
    counted.rules->forEach([&](auto const& rule) {
      AclRuleKey const key(counted.name, rule.aclName, rule.seqno, option);
      std::uint64_t count = 0;
      HelperArbiter::Result const result = helper.arbiter().call([&] {
        count = helper.getCountForRule(key, policyData, counted.data);
        return Kor::String();
      });
      if (result.carriedOut) {
        counts.emplace(key, count);
      } else {
        KOR_TRACE_LINE(traceHandle(), 1, "no hit count for " << key << ": " << result.error);
      }
      going = goesOn();
      return going;
    });
  }
  return counts;
}

void publishHitCounts(ClassMapStatus& status, HitCounts const& counts) {
  for (auto iterator = status.hitCountIterator(); iterator; ++iterator) {
    if (!counts.contains(iterator.key())) {
      iterator.del();
    }
  }
  for (auto const& [key, count] : counts) {
    status.hitCountIs(key, count);
  }
}

void updateHitCounts(std::vector<Kor::Ptr<ClassMapSm>> const& classes, PolicyMapAclHelper& helper,
                     PolicyMapSmCommonData::PtrConst const& policyData,
                     ProgrammedState const& state, std::function<bool()> const& goesOn) {
  for (Kor::Ptr<ClassMapSm> const& machine : classes) {
    // Held, because an observer may remove it from the machine.
    Kor::Ptr<ClassMapStatus> const status = machine->classMapStatus();
    if (!status || !goesOn()) {
      continue;
    }
    HitCounts const counts =
        readHitCounts(helper, policyData, machine->classCommonData(), state, goesOn);
    if (goesOn()) {
      publishHitCounts(*status, counts);
    }
  }
}

}  // namespace PolicyMap
