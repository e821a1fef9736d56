// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "testkit/Export.h"
#include "testkit/text/Address.h"

#include <vector>

namespace PolicyMapTestKit::Text {

// The fewest prefixes that together are the addresses from `low` to `high`, ascending. `high` must
// not be below `low`.
POLICYMAPTESTKIT_API std::vector<Address> addressesFromTo(Family family, AddressBytes const& low,
                                                          AddressBytes const& high);

}  // namespace PolicyMapTestKit::Text
