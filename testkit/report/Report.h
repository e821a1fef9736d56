// SPDX-License-Identifier: Apache-2.0
#pragma once

// Reports: what a run or a sweep came to, as JSON, and as one HTML page that needs nothing else.
//
//   RunReport report("edge.cfg");
//   RunFile const file = record(script, [&](Step const& step, ScriptRun& run) {
//     report.add(step, run);
//   });
//   writePage(out, report.json(file));

#include "testkit/Export.h"
#include "testkit/runs/RunFile.h"
#include "testkit/sweep/Sweep.h"
#include "testkit/text/Json.h"

#include <cstdint>
#include <iosfwd>
#include <string>

namespace PolicyMapTestKit {

class POLICYMAPTESTKIT_API RunReport {
 public:
  explicit RunReport(std::string title) : title_(std::move(title)) {}

  // To be called after each step: keeps the records, and what became of faults.
  void add(Step const& step, ScriptRun const& run);
  // {"kind":"run","title":...,"inputs":[...],"steps":[...],"journal":[...],"findings":[...],
  // "faults":[...]}; with the records after each step.
  [[nodiscard]] Text::Json json(RunFile const& file) const;

 private:
  std::string title_;
  std::uint64_t nextEntry_ = 1;
  Text::Json::Array inputs_;
  Text::Json::Array steps_;
  Text::Json::Array faults_;
};

// {"kind":"sweep","title":...,"seconds":...,"lines":[...],"cases":[...]}: each case with its
// journal, if it is there, as places in `lines`.
[[nodiscard]] POLICYMAPTESTKIT_API Text::Json reportOf(std::string const& title,
                                                       SweepReport const& sweep);

// The page shows a report of either kind.
POLICYMAPTESTKIT_API void writePage(std::ostream& out, Text::Json const& report);

}  // namespace PolicyMapTestKit
