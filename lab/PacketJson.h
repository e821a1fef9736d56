// SPDX-License-Identifier: Apache-2.0
#pragma once

// What trace and prove print with --json.

#include "lab/Kit.h"
#include "packets/Proof.h"
#include "testkit/text/Json.h"

#include <vector>

namespace lab {

// {"packets":1,"packet":...,"policies":[...]}; 1 is the version.
[[nodiscard]] Json jsonOf(Packets::Packet const& packet, std::vector<Packets::Trace> const& traces);
// {"packets":1,"policies":[...]}.
[[nodiscard]] Json jsonOf(std::vector<Packets::Proof> const& proofs);

}  // namespace lab
