// SPDX-License-Identifier: Apache-2.0
#pragma once

// The flags of attributes in words.

#include "Kor/Export.h"
#include "Kor/KorAttr.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Kor {

// A pair of flag words has one name, because its bits have no meaning of their own.
struct FlagPairName {
  std::string_view name;
  KorAttr::AttrFlags flags;
};
[[nodiscard]] KOR_API std::span<FlagPairName const> flagPairNames();

// Every named introspection flag.
struct IntrospectionFlagName {
  std::string_view name;
  KorAttr::KorAttrIntrospectionFlags flag;
};
[[nodiscard]] KOR_API std::span<IntrospectionFlagName const> introspectionFlagNames();

// Returns the name of the pair, or its numbers if it has none, e.g. "0x3 0x400". Then the names of
// the introspection flags that are set, without one that equals the first.
[[nodiscard]] KOR_API std::vector<std::string> flagNames(KorAttr const& attr);

}  // namespace Kor
