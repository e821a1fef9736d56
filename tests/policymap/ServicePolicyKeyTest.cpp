// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"
#include "policymap/ValueChecks.h"

#include <PolicyMap/ServicePolicyKey.h>

#include <gtest/gtest.h>

#include <vector>

namespace policymap {
namespace {

using PolicyMap::ServicePolicyKey;
using TestSupport::expectAscending;
using TestSupport::expectTextForm;

TEST(ServicePolicyKeyValue, OrdersByInterfaceThenDirection) {
  std::vector<ServicePolicyKey> const keys{{},
                                           {intf("Ethernet1"), "input"},
                                           {intf("Ethernet1"), "output"},
                                           {intf("Ethernet2"), "input"},
                                           {intf("Ethernet10"), "input"},
                                           {intf("Vlan1"), ""}};
  expectAscending(keys);
}

TEST(ServicePolicyKeyValue, PrintsInterfaceAndDirection) {
  expectTextForm(ServicePolicyKey(intf("Ethernet3/1"), "input"),
                 "Value('PolicyMap::ServicePolicyKey', ** {'intf': 'Ethernet3/1', "
                 "'direction': 'input'})");
  EXPECT_TRUE(!ServicePolicyKey());
  EXPECT_FALSE(!ServicePolicyKey(intf("Ethernet1"), ""));
}

TEST(ServicePolicyKeyValue, HasEveryComparisonAndItsTextIsFound) {
  ServicePolicyKey const key(intf("Ethernet3/1"), "input");
  expectLess(key, ServicePolicyKey(intf("Ethernet3/1"), "output"));
  expectLess(key, ServicePolicyKey(intf("Ethernet3/2"), "input"));
  expectFoundText(
      key,
      "Value('PolicyMap::ServicePolicyKey', ** {'intf': 'Ethernet3/1', 'direction': 'input'})");
}

TEST(ServicePolicyKeyValue, NamesAttributeAndColumnOfWhatItCannotRead) {
  EXPECT_EQ(
      parseError<ServicePolicyKey>("Value('PolicyMap::ServicePolicyKey', ** {'intf': 'Nothing0'})"),
      "attribute 'intf': IntfId: 'Nothing0' is not an interface name at column 49");
}

}  // namespace
}  // namespace policymap
