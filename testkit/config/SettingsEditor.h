// SPDX-License-Identifier: Apache-2.0
#pragma once

// Applies statements to settings.

#include "testkit/Export.h"
#include "testkit/config/Settings.h"
#include "testkit/text/PolicyTextParser.h"

#include <string>

namespace PolicyMapTestKit::Text {

// Applies the statements of `text` in order. A strict reading raises InputError at the first
// invalid statement and leaves `settings` partly edited: pass a copy. A lenient reading skips
// invalid statements whole and counts them as skipped lines of `text`.
//
// Invalid statements: a bad interface name; removing something absent; insertion before a missing
// class; an entry after the highest sequence number; a list both standard and extended; an
// interface that cannot be a port-channel member. Undefined names may be referenced; they may be
// defined later.
POLICYMAPTESTKIT_API void editSettings(Settings& settings, PolicyText& text, Reading reading);

}  // namespace PolicyMapTestKit::Text
