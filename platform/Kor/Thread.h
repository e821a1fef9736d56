// SPDX-License-Identifier: Apache-2.0
#pragma once

// The framework is single-threaded by contract: no locks, no atomics. A debug build asserts that it
// is used from the thread that loaded it. Other builds do not check.

#include "Kor/Export.h"

namespace Kor {

KOR_API bool onOwningThread();

}  // namespace Kor

#ifdef NDEBUG
#define KOR_ASSERT_OWNING_THREAD() static_cast<void>(0)
#else
#include "Kor/Assert.h"
#define KOR_ASSERT_OWNING_THREAD() KOR_ASSERT_AS("Kor", "onOwningThread()", ::Kor::onOwningThread())
#endif
