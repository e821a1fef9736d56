// SPDX-License-Identifier: Apache-2.0
#include "lab/SweepText.h"

#include "lab/TextLayout.h"

#include <iomanip>
#include <sstream>

namespace lab {

namespace {

void printResult(Console const& console, SweepResult const& result) {
  console.out << tinted(console.style, Tint::bad, toText(result.which)) << "\n";
  for (Irregularity const& finding : result.findings) {
    for (std::string const& line : wrapped(finding.text, console.style.width - 2)) {
      console.out << "  " << line << "\n";
    }
  }
}

}  // namespace

void printSweep(Console const& console, SweepReport const& report) {
  std::vector<SweepResult> const failed = report.failed();
  for (SweepResult const& result : failed) {
    printResult(console, result);
  }
  console.out << counted(report.results.size(), "case") << ", "
              << counted(report.injected(), "injected fault") << ", "
              << counted(failed.size(), "case") << " with findings";
  if (report.seconds > 0) {
    std::ostringstream time;
    time << std::fixed << std::setprecision(2) << report.seconds;
    auto const rate = static_cast<double>(report.results.size()) / report.seconds;
    console.out << ", " << time.str() << " s, " << static_cast<std::uint64_t>(rate)
                << " cases per second";
  }
  console.out << "\n";
}

}  // namespace lab
