// SPDX-License-Identifier: Apache-2.0
// What became of the records between two points in time.
#pragma once

#include "lab/Records.h"
#include "lab/TextLayout.h"

#include <ostream>
#include <vector>

namespace lab {

/// Prints, per policy and option: counters, interfaces, rules added, removed and changed, and
/// actions by class and value. Both are in the order of readRecords. False when nothing differs,
/// which is said too.
bool printChanges(std::ostream& out, TextStyle const& style,
                  std::vector<PolicyRecord> const& before, std::vector<PolicyRecord> const& after);

}  // namespace lab
