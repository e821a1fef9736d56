// SPDX-License-Identifier: Apache-2.0
#pragma once

// The text forms of values that list their fields are those of Kor/Strep.h. These let argument
// dependent look-up find them for the values of this library.

#include "Kor/Strep.h"

namespace PolicyMap {

using Kor::operator<<;
using Kor::valueToStrep;

}  // namespace PolicyMap
