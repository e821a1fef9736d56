// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/String.h"

namespace Kor {

// One argument of a constructor or a function. It names its type, so that the type may be
// registered later.
struct ArgumentSpec {
  Name name;
  Name typeName;
};

}  // namespace Kor
