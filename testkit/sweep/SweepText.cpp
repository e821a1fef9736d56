// SPDX-License-Identifier: Apache-2.0
#include "testkit/sweep/Sweep.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <ostream>
#include <vector>

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

std::optional<AnswerMode> answerModeOf(std::string_view name) {
  auto const found = std::find_if(namedModes.begin(), namedModes.end(),
                                  [&](NamedMode const& each) { return each.name == name; });
  return found == namedModes.end() ? std::nullopt : std::optional(found->mode);
}

std::string toText(SweepCase const& sweepCase) {
  std::string text = toText(sweepCase.mode) + (sweepCase.early ? " early" : "");
  for (PlannedFault const& fault : sweepCase.faults) {
    text.append(&fault == sweepCase.faults.data() ? " " : "; ").append(toText(fault));
  }
  return text;
}

SweepCase parseSweepCase(std::string_view text) {
  std::size_t const blank = std::min(text.find(' '), text.size());
  std::string_view const name = text.substr(0, blank);
  std::optional<AnswerMode> const mode = answerModeOf(name);
  if (!mode) {
    auto const file = std::make_shared<std::string>("case");
    throw Text::InputError({file, 1, 1}, "synchronous, asynchronous or pseudo-asynchronous", name);
  }
  constexpr std::string_view early = " early";
  bool const isEarly = (std::string(text) + " ").find(std::string(early) + " ") == blank;
  SweepCase sweepCase{*mode, {}, isEarly};
  // Blanks keep the columns.
  std::size_t const begin = blank + (isEarly ? early.size() : 0);
  std::string const plan = std::string(begin, ' ') + std::string(text.substr(begin));
  for (FaultPlan::Script& script : parseFaultPlan(Text::SourceText("case", plan)).scripts) {
    std::move(script.begin(), script.end(), std::back_inserter(sweepCase.faults));
  }
  return sweepCase;
}

std::ostream& operator<<(std::ostream& out, SweepResult const& result) {
  out << toText(result.which);
  char const* separator = ": ";
  for (Irregularity const& finding : result.findings) {
    out << separator << finding.text;
    separator = "; ";
  }
  return out;
}

Text::Json jsonOf(SweepResult const& result) {
  Text::Json::Array findings;
  for (Irregularity const& finding : result.findings) {
    findings.emplace_back(finding.text);
  }
  Text::Json json(Text::Json::Object{{"case", toText(result.which)},
                                     {"injected", result.injected},
                                     {"findings", std::move(findings)}});
  if (!result.journal.empty()) {
    json.add("journal", Text::Json::Array(result.journal.begin(), result.journal.end()));
  }
  return json;
}

SweepResult sweepResultOf(Text::JsonLine const& json) {
  SweepResult result{parseSweepCase(json.text("case")), json.number("injected"), 0, {}, {}};
  for (std::string& text : json.texts("findings")) {
    result.findings.push_back({Irregularity::Kind::record, std::move(text)});
  }
  result.journal = json.texts("journal");
  return result;
}

Scenario scenarioOf(Script const& script) {
  // Text is parsed in the first lab only: the others come to the same settings.
  using Loaded = std::vector<std::optional<Text::Settings>>;
  return [steps = script.steps, reading = script.reading,
          loaded = std::make_shared<Loaded>(script.steps.size())](Lab& lab) {
    for (std::size_t i = 0; i != steps.size(); ++i) {
      Step const& step = steps[i];
      std::optional<Text::Settings>& settings = (*loaded)[i];
      if (settings) {
        lab.load(*settings, step.name);
        continue;
      }
      perform(lab, step, reading);
      if (step.kind == Step::Kind::load) {
        settings = lab.configuration().settings();
      }
    }
  };
}

Script scriptOf(Script const& script, SweepResult const& result) {
  SweepCase const& which = result.which;
  Script all{optionsFor(script.options, which.mode), script.reading, {}};
  FaultPlan plan;
  for (PlannedFault const& fault : which.faults) {
    plan.scripts.push_back({fault});
    plan.scripts.back().front().optional = true;
  }
  if (!plan.scripts.empty()) {
    all.steps.push_back(Step::faults(toText(plan)));
  }
  std::size_t loads = 0;
  for (Step const& step : script.steps) {
    bool const isLoad = step.kind == Step::Kind::load || step.kind == Step::Kind::rules;
    if (isLoad && loads++ == result.recovered && result.recovered != 0) {
      all.steps.push_back(Step::check());
    }
    all.steps.push_back(step);
  }
  for (Step::Kind const kind : {Step::Kind::check, Step::Kind::detach, Step::Kind::check,
                                Step::Kind::attach, Step::Kind::check}) {
    all.steps.push_back({.kind = kind});
  }
  return all;
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
