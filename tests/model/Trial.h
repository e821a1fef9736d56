// SPDX-License-Identifier: Apache-2.0
#pragma once

// Trials of steps that may end the process, as assertions of helper and core do.

#include "model/Operation.h"

#include <cstdint>
#include <string>

namespace Model {

// Performs the steps in a process of its own. Returns what is wrong, including an end by an
// assertion or a signal and a run that does not end; "" if nothing is.
[[nodiscard]] std::string trial(Operations const& operations);

// A minimal list of steps that still fails, with the simplest numbers.
[[nodiscard]] Operations shrunk(Operations operations);

// A text with everything that is needed to reproduce the failure.
[[nodiscard]] std::string report(Operations const& operations);

}  // namespace Model
