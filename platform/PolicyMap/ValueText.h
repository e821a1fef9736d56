// SPDX-License-Identifier: Apache-2.0
#pragma once

// The text forms of values that list their fields are defined in Kor/Strep.h. These declarations
// make them visible to argument-dependent lookup for the values of this library.

#include "Kor/Strep.h"

namespace PolicyMap {

using Kor::operator<<;
using Kor::valueToStrep;

}  // namespace PolicyMap
