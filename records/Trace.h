// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <Kor/Trace.h>

namespace PolicyMapTest {

// The source name of the library's trace lines and assertions.
inline constexpr char const* sourceName = "PolicyMapTestSm";

[[gnu::always_inline]] inline Kor::TraceHandle const& traceHandle() {
  static Kor::TraceHandle const handle(sourceName);
  return handle;
}

}  // namespace PolicyMapTest
