// SPDX-License-Identifier: Apache-2.0
// Filter sets of any size for tests of scale and benchmarks.
#pragma once

#include "lab/Address.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace lab {

/// A filter set of this many rules as text that readFilterSet takes without options. Equal
/// arguments give equal texts on every machine, and a smaller set is the beginning of a larger one.
/// About one rule in eight has a port range, one in eight is for a protocol without ports.
std::string generateFilterSet(std::size_t rules, std::uint64_t seed = 1,
                              Family family = Family::ip4);

}  // namespace lab
