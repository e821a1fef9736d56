// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "testkit/config/Settings.h"
#include "testkit/text/FilterSet.h"

#include <cstddef>

namespace PolicyMapTestKit::Text {

// The settings for a filter set: policy-map "rules" with classes "rules-1", "rules-2", ..., each
// matching the access list of its name with the sequence numbers 10, 20, ..., attached for input at
// Ethernet1, Ethernet2, ... Each class gets a consecutive and nearly equal share of the rules.
POLICYMAPTESTKIT_API Settings filterSettings(FilterSet const& set, std::size_t classes,
                                             std::size_t interfaces);

}  // namespace PolicyMapTestKit::Text
