// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Trace.h"

namespace PolicyMap {

// The core's trace source, "PolicyMap".
inline Kor::TraceHandle const& traceHandle() {
  static Kor::TraceHandle const handle("PolicyMap");
  return handle;
}

}  // namespace PolicyMap
