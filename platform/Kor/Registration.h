// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Export.h"
#include "Kor/Model.h"

#include <span>
#include <string_view>

namespace Kor {

// Fills the records of the types of one namespace from their tables, in order, and reports every
// step to the global introspection reactor. A base must come before the types derived from it.
KOR_API void registerTypes(std::string_view nameSpace, std::span<TypeModel const* const> types);

// Enters the records into the directory of types.
KOR_API void enterTypes(std::span<TypeModel const* const> types);

}  // namespace Kor
