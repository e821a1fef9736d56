// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <Kor/Trace.h>

namespace PolicyMapTest {

// The name under which the library traces and asserts.
inline constexpr char const* sourceName = "PolicyMapTestSm";

inline Kor::TraceHandle const& traceHandle() {
  static Kor::TraceHandle const handle(sourceName);
  return handle;
}

}  // namespace PolicyMapTest
