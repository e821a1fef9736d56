// SPDX-License-Identifier: Apache-2.0
#pragma once

// The report of a sweep as text.

#include "lab/Console.h"
#include "lab/Kit.h"
#include "testkit/sweep/Sweep.h"

namespace lab {

// The cases with findings, and a line of totals.
void printSweep(Console const& console, SweepReport const& report);

}  // namespace lab
