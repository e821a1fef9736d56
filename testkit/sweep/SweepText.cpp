// SPDX-License-Identifier: Apache-2.0
#include "testkit/sweep/Sweep.h"

#include <algorithm>
#include <array>
#include <ostream>

namespace PolicyMapTestKit {

namespace {

struct NamedMode {
  AnswerMode mode;
  std::string_view name;
};
constexpr std::array namedModes{
    NamedMode{AnswerMode::synchronous, "synchronous"},
    NamedMode{AnswerMode::asynchronous, "asynchronous"},
    NamedMode{AnswerMode::pseudoAsynchronous, "pseudo-asynchronous"},
};

}  // namespace

std::string toText(AnswerMode mode) {
  auto const found = std::find_if(namedModes.begin(), namedModes.end(),
                                  [&](NamedMode const& each) { return each.mode == mode; });
  return std::string(found->name);
}

std::string toText(SweepCase const& sweepCase) {
  std::string text = toText(sweepCase.mode);
  for (PlannedFault const& fault : sweepCase.faults) {
    text.append(&fault == sweepCase.faults.data() ? " " : "; ").append(toText(fault));
  }
  return text;
}

SweepCase parseSweepCase(std::string_view text) {
  std::size_t const blank = std::min(text.find(' '), text.size());
  std::string_view const mode = text.substr(0, blank);
  auto const found = std::find_if(namedModes.begin(), namedModes.end(),
                                  [&](NamedMode const& each) { return each.name == mode; });
  if (found == namedModes.end()) {
    auto const file = std::make_shared<std::string>("case");
    throw Text::InputError({file, 1, 1}, "synchronous, asynchronous or pseudo-asynchronous", mode);
  }
  SweepCase sweepCase{found->mode, {}};
  // Blanks keep the columns.
  std::string const plan = std::string(blank, ' ') + std::string(text.substr(blank));
  for (FaultPlan::Script& script : parseFaultPlan(Text::SourceText("case", plan)).scripts) {
    std::move(script.begin(), script.end(), std::back_inserter(sweepCase.faults));
  }
  return sweepCase;
}

std::ostream& operator<<(std::ostream& out, SweepResult const& result) {
  out << toText(result.which);
  char const* separator = ": ";
  for (std::string const& finding : result.findings) {
    out << separator << finding;
    separator = "; ";
  }
  return out;
}

std::uint64_t SweepReport::injected() const {
  std::uint64_t sum = 0;
  for (SweepResult const& result : results) {
    sum += result.injected;
  }
  return sum;
}

std::vector<SweepResult> SweepReport::failed() const {
  std::vector<SweepResult> some;
  std::copy_if(results.begin(), results.end(), std::back_inserter(some),
               [](SweepResult const& result) { return !result.findings.empty(); });
  return some;
}

}  // namespace PolicyMapTestKit
