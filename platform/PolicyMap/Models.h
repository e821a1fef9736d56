// SPDX-License-Identifier: Apache-2.0
#pragma once

// The tables that register the types of this namespace and make them accessible by name. A type
// comes after its base and after the types that it owns.

#include "Kor/Model.h"

#include <span>

namespace PolicyMap {

using Models = std::span<Kor::TypeModel const* const>;

[[nodiscard]] Models valueModels();
[[nodiscard]] Models configurationModels();
[[nodiscard]] Models statusModels();
[[nodiscard]] Models sharedModels();
[[nodiscard]] Models machineModels();

}  // namespace PolicyMap
