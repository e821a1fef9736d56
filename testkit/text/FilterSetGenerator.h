// SPDX-License-Identifier: Apache-2.0
#pragma once

// Generates filter sets of any size for scale tests and benchmarks.

#include "testkit/Export.h"
#include "testkit/text/Address.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace PolicyMapTestKit::Text {

// Returns a filter set of this many rules as text for readFilterSet. Equal arguments give equal
// texts on every machine, and a smaller set is a prefix of a larger one. About one rule in eight
// has a port range, and one in eight has a protocol without ports.
POLICYMAPTESTKIT_API std::string generateFilterSet(std::size_t rules, std::uint64_t seed = 1,
                                                   Family family = Family::ip4);

}  // namespace PolicyMapTestKit::Text
