// SPDX-License-Identifier: Apache-2.0
#pragma once

// RunFile: a run as a file: what was done, how the lab was made, and what happened. It can be run
// again, and compared with what happened then.
//
//   {"run":1}
//   {"options":{"updateAction":true,"plan":"addRule nth=3"},"reading":"strict"}
//   {"step":"load","name":"edge.cfg","text":"ip access-list web ..."}
//   {"step":"check"}
//   {"finding":"edge/input ipv4: removed","is":"record"}
//   {"number":1,"time":0.0,"kind":"test","operation":"load","text":"edge.cfg"}
//
// One JSON object per line: the version, the options that are not usual, the steps, the
// irregularities, and the journal.

#include "testkit/Export.h"
#include "testkit/JournalText.h"
#include "testkit/runs/ScriptRun.h"
#include "testkit/runs/Step.h"
#include "testkit/text/SourceText.h"

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit {

struct RunFile {
  Script script;
  std::vector<Irregularity> found;
  std::vector<JournalLine> journal;
};

// Performs the script in a new lab, with a journal of all calls and statuses. Failed assertions and
// exceptions are irregularities; a step that throws is the last one. `onStep` is called after each
// step.
[[nodiscard]] POLICYMAPTESTKIT_API RunFile
record(Script const& script, std::function<void(Step const&, ScriptRun&)> const& onStep = {});
// Of a run that was made with this script, and with such a journal. Ends its plans.
[[nodiscard]] POLICYMAPTESTKIT_API RunFile recordOf(Script script, ScriptRun& run);

POLICYMAPTESTKIT_API void write(std::ostream& out, RunFile const& file);
// Ignores empty lines, and members, options and lines that are unknown. Throws Text::InputError for
// another version, a step that is unknown, and any other text.
[[nodiscard]] POLICYMAPTESTKIT_API RunFile readRunFile(Text::SourceText const& source);

// "strict", "lenient" or "widening"; none for another name.
[[nodiscard]] POLICYMAPTESTKIT_API std::optional<Text::Reading> readingOf(std::string_view name);

// The first difference in what happened, in a few lines; none if there is none.
[[nodiscard]] POLICYMAPTESTKIT_API std::optional<std::string> firstDifference(RunFile const& before,
                                                                              RunFile const& now);

}  // namespace PolicyMapTestKit
