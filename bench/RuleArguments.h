// SPDX-License-Identifier: Apache-2.0
//
// The arguments that the framework passes to a helper: a policy of one class, whose list has 1000
// rules.

#pragma once

#include "machines/TestClassCommonData.h"

#include <PolicyMap/AclRuleKey.h>
#include <PolicyMap/PolicyMapSmCommonData.h>

#include <cstdint>
#include <vector>

namespace Bench {

constexpr std::uint32_t ruleCount = 1000;

struct RuleArguments {
  Kor::Ptr<Acl::Config> acls = Kor::make<Acl::Config>();
  PolicyMap::PolicyMapSmCommonData::Ptr policyData =
      Kor::make<PolicyMap::PolicyMapSmCommonData>(PolicyMap::PolicyMapSmKey("policy", "input"));
  PolicyMapTest::TestClassCommonData::Ptr classData =
      Kor::make<PolicyMapTest::TestClassCommonData>("class", nullptr, acls);
  std::vector<PolicyMap::AclRuleKey> keys;

  RuleArguments() {
    auto const list = acls->ipAclIs("acl");
    keys.reserve(ruleCount);
    for (std::uint32_t seqno = 1; seqno <= ruleCount; ++seqno) {
      Acl::IpRuleConfig rule;
      rule.protocolIs(6);
      rule.dstPortIs(Acl::PortMatch::eq(seqno));
      list->ruleIs(seqno, rule);
      keys.emplace_back("class", "acl", seqno, PolicyMap::ClassMapMatchOption::ipv4);
    }
  }
};

}  // namespace Bench
