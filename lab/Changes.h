// SPDX-License-Identifier: Apache-2.0
#pragma once

// The layout of differences between two sets of records.

#include "lab/Kit.h"
#include "lab/TextLayout.h"
#include "testkit/Difference.h"

#include <ostream>

namespace lab {

// Prints, per policy and option, the changes of state, counters, interfaces, rules, and actions by
// class and value. If nothing differs, prints so.
void printChanges(std::ostream& out, TextStyle const& style, Difference const& difference);

}  // namespace lab
