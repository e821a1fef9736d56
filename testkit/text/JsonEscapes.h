// SPDX-License-Identifier: Apache-2.0
#pragma once

// The escapes of JSON texts, for its writer and its reader.

#include <array>
#include <utility>

namespace PolicyMapTestKit::Text {

// The letter after the backslash, and the character that it means.
inline constexpr std::array<std::pair<char, char>, 8> jsonEscapes{{{'"', '"'},
                                                                   {'\\', '\\'},
                                                                   {'/', '/'},
                                                                   {'b', '\b'},
                                                                   {'f', '\f'},
                                                                   {'n', '\n'},
                                                                   {'r', '\r'},
                                                                   {'t', '\t'}}};

}  // namespace PolicyMapTestKit::Text
