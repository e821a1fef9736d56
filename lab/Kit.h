// SPDX-License-Identifier: Apache-2.0
#pragma once

// The program is a front of the test kit and uses its names without qualification.

namespace PolicyMapTestKit::Text {}
namespace PolicyMapPackets {}

namespace lab {

using namespace PolicyMapTestKit;
using namespace PolicyMapTestKit::Text;
namespace Packets = PolicyMapPackets;

}  // namespace lab
