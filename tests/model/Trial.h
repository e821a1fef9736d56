// SPDX-License-Identifier: Apache-2.0
#pragma once

// Trials of operations that may end the process: assertions of helper and core do.

#include "model/Operation.h"

#include <cstdint>
#include <string>

namespace Model {

// Runs the steps in a process of its own. Answers what is wrong, also when it ended on an assertion
// or a signal, or did not end; "" if nothing is.
[[nodiscard]] std::string trial(Operations const& operations);

// The fewest and plainest steps among those that still fail.
[[nodiscard]] Operations shrunk(Operations operations);

// A text with all that is needed to see the failure again.
[[nodiscard]] std::string report(Operations const& operations);

}  // namespace Model
