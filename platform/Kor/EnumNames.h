// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string_view>

namespace Kor {

// The names of the values 0, 1, 2, … of an enumeration. Other values print and parse as numbers.
struct EnumNames {
  std::string_view type;  // short type name
  std::string_view const* names;
  std::size_t count;
};

}  // namespace Kor
