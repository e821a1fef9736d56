// SPDX-License-Identifier: Apache-2.0
#pragma once

// Parses policy text, the configuration language described in docs/policy-text.md.
//
//   auto text =
//   PolicyMapTestKit::Text::parsePolicyText(PolicyMapTestKit::SourceText::fromFile("edge.cfg"),
//   PolicyMapTestKit::Reading::strict); for (PolicyMapTestKit::Statement const& statement :
//   text.statements) { ... }

#include "testkit/Export.h"
#include "testkit/text/ActionMapping.h"
#include "testkit/text/SkippedLines.h"
#include "testkit/text/SourceText.h"
#include "testkit/text/Statement.h"

#include <vector>

namespace PolicyMapTestKit::Text {

enum class Reading : std::uint8_t {
  strict,    // every line must be valid
  lenient,   // unknown lines are skipped whole, and counted
  widening,  // lenient, and a class that loses a condition so matches more
};

// The content of a policy text file.
struct PolicyText {
  // In file order.
  std::vector<Statement> statements;
  // Empty after a strict reading.
  SkippedLines skipped;
};

// Time and memory are linear in the size of the text. Raises InputError at the first error: a
// syntax error (strict), a NUL byte, or an unterminated banner (lenient).
//
// A lenient reading skips each line that it cannot parse, the more deeply indented lines below it,
// and the text of banners. If such a line is not indented more deeply than the command that opened
// the mode, it ends the mode if the mode's other lines are indented more deeply, or if it starts a
// block of its own (router, line, ...).
//
// A skipped `match` line is kept as a condition that no rule expresses, so that a match-all class
// does not match more than its text says, but nothing; unless the reading is widening.
//
// `actions` says what lines of classes become in place of their usual actions.
POLICYMAPTESTKIT_API PolicyText parsePolicyText(SourceText const& source, Reading reading,
                                                ActionMapping const& actions = {});

}  // namespace PolicyMapTestKit::Text
