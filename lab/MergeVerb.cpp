// SPDX-License-Identifier: Apache-2.0
#include "lab/MergeVerb.h"

#include "lab/Input.h"
#include "lab/SweepText.h"
#include "testkit/report/Report.h"

namespace lab {

namespace {

void addCases(SourceText const& source, SweepReport& report) {
  LineReader lines(source);
  while (lines.next()) {
    if (lines.line().find_first_not_of(" \t") != std::string_view::npos) {
      report.results.push_back(sweepResultOf(JsonLine(lines)));
    }
  }
}

}  // namespace

MergeVerb::MergeVerb(CLI::App& program)
    : command_(
          program.add_subcommand("merge", "Merge what sweep --json printed for several shards")) {
  command_->add_option("files", files_, "Written by sweep --json")->type_name("FILE")->required();
  command_
      ->add_option("--report", pageFile_,
                   "Write a page for a browser; --journals of sweep adds\n"
                   "the journals")
      ->type_name("FILE.html");
}

ExitStatus MergeVerb::run(Console const& console) {
  SweepReport report;
  for (std::string const& file : files_) {
    addCases(readInput(file), report);
  }
  printSweep(console, report);
  if (!pageFile_.empty()) {
    writeOutput(console, pageFile_,
                [&](std::ostream& out) { writePage(out, reportOf("merged sweep", report)); });
  }
  return report.failed().empty() ? ExitStatus::success : ExitStatus::notProgrammed;
}

}  // namespace lab
