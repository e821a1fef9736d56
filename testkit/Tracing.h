// SPDX-License-Identifier: Apache-2.0
#pragma once

// Trace levels by name, checked.
//
//   traceIs("PolicyMap/3");   // each pass with its cause and its plan
//   traceIs("9");             // every line of every source

#include "testkit/Export.h"

#include <string_view>

namespace PolicyMapTestKit {

// "SOURCE/LEVEL", or "LEVEL" for all sources; a level is 0 to 9. The setting is that of the
// process. Throws LookupError, with the nearest, if there is no such source, and
// Kor::RangeException for any other text.
POLICYMAPTESTKIT_API void traceIs(std::string_view setting);

}  // namespace PolicyMapTestKit
