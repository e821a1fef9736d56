// SPDX-License-Identifier: Apache-2.0
#pragma once

// The words for readings and options, the same for the program and by name.

#include "packets/Export.h"
#include "packets/Subject.h"

#include <PolicyMap/ClassMapMatchOption.h>

#include <array>
#include <optional>
#include <string_view>

namespace PolicyMapPackets {

inline constexpr std::array<std::string_view, 3> denyWords{"next-class", "stop", "entry"};
inline constexpr std::array<std::string_view, 2> saidWords{"records", "configuration"};
inline constexpr std::array<std::string_view, 4> optionWords{"ipv4", "ipv6", "mac", "mpls"};

template <class Value, class Words>
constexpr std::optional<Value> valueOfWord(Words const& words, std::string_view word) {
  for (std::size_t i = 0; i != words.size(); ++i) {
    if (words[i] == word) {
      return static_cast<Value>(i);
    }
  }
  return std::nullopt;
}

// None if there is no such word.
constexpr std::optional<DenyReading> denyReadingOf(std::string_view word) {
  return valueOfWord<DenyReading>(denyWords, word);
}
constexpr std::optional<Said> saidOf(std::string_view word) {
  return valueOfWord<Said>(saidWords, word);
}
constexpr std::optional<PolicyMap::ClassMapMatchOption> optionOf(std::string_view word) {
  return valueOfWord<PolicyMap::ClassMapMatchOption>(optionWords, word);
}

}  // namespace PolicyMapPackets
