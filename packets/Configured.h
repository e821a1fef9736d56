// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the configuration of a policy says of packets, read as docs/packets.md says, and without
// anything of what programs it.

#include "packets/Classifier.h"
#include "testkit/Lab.h"

#include <Kor/String.h>

namespace PolicyMapPackets {

// Class-maps and lists that do not exist match no packet; no class-maps of a policy-map that does
// not exist take any.
[[nodiscard]] POLICYMAPPACKETS_API Classifier configured(PolicyMapTestKit::Lab const& lab,
                                                         Kor::Name const& policyMap,
                                                         Space const& space);

}  // namespace PolicyMapPackets
