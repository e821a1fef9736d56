// SPDX-License-Identifier: Apache-2.0
#pragma once

// The tables by which the types of this namespace are registered and reached by name, in order: a
// type stands behind its base and behind the types that it owns.

#include "Kor/Model.h"

#include <span>

namespace PolicyMap {

using Models = std::span<Kor::TypeModel const* const>;

[[nodiscard]] Models valueModels();
[[nodiscard]] Models configurationModels();
[[nodiscard]] Models statusModels();
[[nodiscard]] Models machineModels();

}  // namespace PolicyMap
