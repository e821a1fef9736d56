// SPDX-License-Identifier: Apache-2.0
#include "policymap/ValueChecks.h"

#include <PolicyMap/AclRuleKey.h>

#include <gtest/gtest.h>

namespace policymap {
namespace {

using PolicyMap::AclRuleKey;
using PolicyMap::ClassMapMatchOption;
using TestSupport::expectAscending;
using TestSupport::expectTextForm;

TEST(AclRuleKeyValue, OrdersByClassThenListThenNumberThenOption) {
  expectAscending<AclRuleKey>({{"a", "x", 2, ClassMapMatchOption::ipv4},
                               {"a", "x", 10, ClassMapMatchOption::ipv4},
                               {"a", "x", 10, ClassMapMatchOption::ipv6},
                               {"a", "x & y:3", 1, ClassMapMatchOption::ipv4},
                               {"a", "y", 1, ClassMapMatchOption::ipv4},
                               {"b", "", 1, ClassMapMatchOption::ipv4},
                               {"b", "", 1, ClassMapMatchOption::mpls}});
}

TEST(AclRuleKeyValue, OptionsOrderAsSignedNumbers) {
  auto const negative = static_cast<ClassMapMatchOption>(-1);
  EXPECT_LT(AclRuleKey("a", "x", 1, negative), AclRuleKey("a", "x", 1, ClassMapMatchOption::ipv4));
}

TEST(AclRuleKeyValue, PrintsAsAValueWithFourAttributes) {
  expectTextForm(AclRuleKey("web", "acl", 10, ClassMapMatchOption::ipv6),
                 "Value('PolicyMap::AclRuleKey', ** {'className': 'web', 'aclName': 'acl', "
                 "'seqno': 10, 'matchOption': 'ipv6'})");
  expectTextForm(AclRuleKey("web", "", 4294967295U, static_cast<ClassMapMatchOption>(7)),
                 "Value('PolicyMap::AclRuleKey', ** {'className': 'web', 'aclName': '', "
                 "'seqno': 4294967295, 'matchOption': 7})");
}

TEST(AclRuleKeyValue, KeepsItsHashInStepWithItsWriters) {
  AclRuleKey key;
  key.classNameIs("web");
  key.aclNameIs("acl");
  key.seqnoIs(10);
  key.matchOptionIs(ClassMapMatchOption::mac);
  AclRuleKey const built("web", "acl", 10, ClassMapMatchOption::mac);
  EXPECT_EQ(key, built);
  EXPECT_EQ(key.hash(), built.hash());
}

TEST(AclRuleKeyValue, IsNotTrueExactlyForTheDefault) {
  EXPECT_TRUE(!AclRuleKey());
  EXPECT_FALSE(!AclRuleKey("", "", 1, ClassMapMatchOption::ipv4));
  EXPECT_FALSE(!AclRuleKey("", "", 0, ClassMapMatchOption::ipv6));
}

TEST(AclRuleKeyValue, NamesAttributeAndColumnOfWhatItCannotRead) {
  EXPECT_EQ(parseError<AclRuleKey>(
                "Value('PolicyMap::AclRuleKey', ** {'className': 'c', 'seqno': 4294967296})"),
            "attribute 'seqno': 4294967296 out of range at column 62");
  EXPECT_EQ(parseError<AclRuleKey>("Value('PolicyMap::AclRuleKey', ** {'matchOption': 'ipv5'})"),
            "attribute 'matchOption': ClassMapMatchOption has no such value: ipv5");
  EXPECT_EQ(parseError<AclRuleKey>("Value('PolicyMap::AclRuleKey', ** {'matchOption': True})"),
            "attribute 'matchOption': expected ClassMapMatchOption at column 50");
}

}  // namespace
}  // namespace policymap
