// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Model.h"

#include <span>

namespace Acl {

// The tables of this namespace's types, in order of registration.
[[nodiscard]] std::span<Kor::TypeModel const* const> models();

}  // namespace Acl
