// SPDX-License-Identifier: Apache-2.0
#pragma once

// Texts in columns. A text that is wider than its column is not cut.

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace PolicyMapPackets {

inline std::string leftAligned(std::string_view text, std::size_t width) {
  std::string result(text);
  result.resize(std::max(result.size(), width), ' ');
  return result;
}
inline std::string rightAligned(std::string_view text, std::size_t width) {
  return std::string(width - std::min(width, text.size()), ' ').append(text);
}

}  // namespace PolicyMapPackets
