// SPDX-License-Identifier: Apache-2.0
// Reads policy text, the configuration language described in docs/policy-text.md, into statements.
//
//   auto text = lab::parsePolicyText(lab::SourceText::fromFile("edge.cfg"), lab::Reading::strict);
//   for (lab::Statement const& statement : text.statements) { ... }
#pragma once

#include "lab/SkippedLines.h"
#include "lab/SourceText.h"
#include "lab/Statement.h"

#include <vector>

namespace lab {

enum class Reading : std::uint8_t {
  strict,   ///< every line must be understood
  lenient,  ///< what is not understood is passed over, by whole lines, and counted
};

/// A file of policy text, understood.
struct PolicyText {
  /// In the order of the lines.
  std::vector<Statement> statements;
  /// Empty after a strict reading.
  SkippedLines skipped;
};

/// Takes time and memory in proportion to the text, whatever it holds. Raises InputError at the
/// first fault: a line that does not follow the syntax (strict), a NUL byte, a banner that does not
/// end (lenient).
///
/// A lenient reading passes over a line that it does not understand to its end, the lines indented
/// deeper below it, and the text of banners. When such a line is indented no deeper than the
/// command that opened the mode, it ends the mode if the mode's other lines are indented deeper or
/// if it starts a block of its own (router, line, object-group, ...).
PolicyText parsePolicyText(SourceText const& source, Reading reading);

}  // namespace lab
