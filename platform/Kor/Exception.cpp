// SPDX-License-Identifier: Apache-2.0
#include "Kor/Exception.h"

namespace Kor {

// Out of line, so that one library owns the type information that catch clauses compare.
Exception::~Exception() = default;
RangeException::~RangeException() = default;

}  // namespace Kor
