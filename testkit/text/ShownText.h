// SPDX-License-Identifier: Apache-2.0
#pragma once

// Makes text from outside safe for a terminal.

#include "testkit/Export.h"

#include <string>
#include <string_view>

namespace PolicyMapTestKit::Text {

// Writes as \xNN every byte that could control a terminal: control characters, line and paragraph
// separators, direction marks, and invalid UTF-8. Everything else stays unchanged, so the function
// is idempotent.
POLICYMAPTESTKIT_API std::string shownText(std::string_view text);

// Truncates long words of the message, and the message itself. "..." marks each cut.
POLICYMAPTESTKIT_API std::string shortened(std::string_view message);

}  // namespace PolicyMapTestKit::Text
