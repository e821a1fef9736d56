// SPDX-License-Identifier: Apache-2.0
#include "policymap/ValueChecks.h"

#include <PolicyMap/PolicyFailure.h>

#include <gtest/gtest.h>

namespace policymap {
namespace {

using PolicyMap::AclRuleKey;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::PolicyFailure;

TEST(PolicyFailureValue, ItsTextIsFound) {
  PolicyFailure const failure("table full", "addRule", "web",
                              AclRuleKey("web", "list", 10, ClassMapMatchOption::ipv4));
  std::string const text =
      "Value('PolicyMap::PolicyFailure', ** {'error': 'table full', 'operation': 'addRule', "
      "'className': 'web', 'rule': Value('PolicyMap::AclRuleKey', ** {'className': 'web', "
      "'aclName': 'list', 'seqno': 10, 'matchOption': 'ipv4'})})";
  expectFoundText(failure, text);
  EXPECT_EQ(Kor::strepToValue<PolicyFailure>(Kor::String8(text)), failure);
}

}  // namespace
}  // namespace policymap
