// SPDX-License-Identifier: Apache-2.0
// Text from outside on its way to a person's terminal.
#pragma once

#include <string>
#include <string_view>

namespace lab {

/// The text with every byte that a terminal could take for more than a character written as \xNN:
/// control characters, line and paragraph separators, marks that change the direction of what
/// follows, and bytes that are no UTF-8. Everything else stays as it is; so does text that was
/// shown already.
std::string shownText(std::string_view text);

/// The message with its long words cut, and cut itself where it is still long; "..." follows each
/// cut.
std::string shortened(std::string_view message);

}  // namespace lab
