// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"
#include "policymap/ValueChecks.h"

#include <PolicyMap/OptionIntf.h>

#include <gtest/gtest.h>

namespace policymap {
namespace {

using PolicyMap::OptionIntf;
using TestSupport::expectAscending;
using TestSupport::expectTextForm;

TEST(OptionIntfValue, OrdersByOptionThenInterface) {
  expectAscending<OptionIntf>({{},
                               {ClassMapMatchOption::ipv4, intf("Ethernet2")},
                               {ClassMapMatchOption::ipv4, intf("Ethernet10")},
                               {ClassMapMatchOption::mac, intf("Ethernet1")}});
}

TEST(OptionIntfValue, PrintsOptionAndInterface) {
  expectTextForm(OptionIntf(ClassMapMatchOption::mac, intf("Ethernet3/1")),
                 "Value('PolicyMap::OptionIntf', ** {'option': 'mac', 'intf': 'Ethernet3/1'})");
  EXPECT_TRUE(!OptionIntf());
  EXPECT_FALSE(!OptionIntf(ClassMapMatchOption::ipv6, {}));
}

TEST(OptionIntfValue, HasEveryComparisonAndItsTextIsFound) {
  OptionIntf const where(ClassMapMatchOption::ipv6, intf("Ethernet2"));
  expectLess(where, OptionIntf(ClassMapMatchOption::ipv6, intf("Ethernet10")));
  expectLess(where, OptionIntf(ClassMapMatchOption::mac, intf("Ethernet1")));
  expectFoundText(where,
                  "Value('PolicyMap::OptionIntf', ** {'option': 'ipv6', 'intf': 'Ethernet2'})");
}

TEST(OptionIntfValue, NamesAttributeAndColumnOfWhatItCannotRead) {
  EXPECT_EQ(parseError<OptionIntf>("Value('PolicyMap::OptionIntf', ** {'option': 'ipv5'})"),
            "attribute 'option': ClassMapMatchOption has no such value: ipv5");
}

}  // namespace
}  // namespace policymap
