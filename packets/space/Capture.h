// SPDX-License-Identifier: Apache-2.0
#pragma once

// Capture: the frames of a capture file, pcap or pcapng, in any byte order.

#include "packets/Export.h"
#include "packets/space/Frame.h"
#include "testkit/text/SourceText.h"

#include <vector>

namespace PolicyMapPackets {

// All frames of a file, in order. Throws InputError with the byte at which the file is no capture,
// or at which it ends too early.
[[nodiscard]] POLICYMAPPACKETS_API std::vector<Frame> readCapture(
    PolicyMapTestKit::Text::SourceText const& file);

}  // namespace PolicyMapPackets
