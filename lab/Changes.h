// SPDX-License-Identifier: Apache-2.0
#pragma once

// The differences between two sets of records.

#include "lab/Kit.h"
#include "lab/TextLayout.h"
#include "testkit/Snapshot.h"

#include <ostream>
#include <vector>

namespace lab {

// Prints, per policy and option, the differences in counters, interfaces, rules, and actions by
// class and value. Both sets must be in the order of snapshotOf(). If nothing differs, prints so
// and returns false.
bool printChanges(std::ostream& out, TextStyle const& style, Snapshot const& before,
                  Snapshot const& after);

}  // namespace lab
