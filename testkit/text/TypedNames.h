// SPDX-License-Identifier: Apache-2.0
#pragma once

// "X of type queuing": names of class-maps and policy-maps of types that do not share the names of
// plain ones. Written names have no blanks, so such a name is no other.

#include <string>
#include <string_view>

namespace PolicyMapTestKit::Text {

inline constexpr std::string_view betweenNameAndType = " of type ";

inline std::string nameWithType(std::string_view name, std::string_view type) {
  return std::string(name).append(betweenNameAndType).append(type);
}

inline bool isNameOfType(std::string_view name) {
  return name.find(betweenNameAndType) != std::string_view::npos;
}

// The name itself if it has no type.
inline std::string nameWithoutType(std::string_view name) {
  return std::string(name.substr(0, name.find(betweenNameAndType)));
}

}  // namespace PolicyMapTestKit::Text
