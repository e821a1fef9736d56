// SPDX-License-Identifier: Apache-2.0
#include "testkit/runs/Step.h"

#include "testkit/text/SourceText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace PolicyMapTestKit {

namespace {

using StepKind = Step::Kind;

constexpr std::array<std::pair<StepKind, std::string_view>, 12> stepKinds{{
    {StepKind::load, "load"},
    {StepKind::rules, "rules"},
    {StepKind::inject, "inject"},
    {StepKind::faults, "faults"},
    {StepKind::end, "end"},
    {StepKind::clear, "clear"},
    {StepKind::advance, "advance"},
    {StepKind::trigger, "trigger"},
    {StepKind::release, "release"},
    {StepKind::check, "check"},
    {StepKind::detach, "detach"},
    {StepKind::attach, "attach"},
}};

void injectText(Lab& lab, std::string const& text) {
  std::size_t const equals = std::min(text.find('='), text.size());
  lab.inject({text.substr(0, equals), text.substr(std::min(equals + 1, text.size()))});
}

Text::SourceText sourceOf(Step const& step) {
  return Text::SourceText::referringTo(step.name, step.text);
}

void loadRules(Lab& lab, Step const& step) {
  Text::SourceText const source = sourceOf(step);
  Text::FilterSet set = Text::readFilterSet(source, step.portRanges);
  if (step.layout.classes > std::max<std::size_t>(set.rules.size(), 1)) {
    throw Text::InputError({source.name(), 0, 0},
                           "a rule for each of the " + std::to_string(step.layout.classes) +
                               " classes",
                           std::to_string(set.rules.size()));
  }
  lab.load(std::move(set), step.layout);
}

void release(Lab& lab, std::string const& number) {
  if (number.empty()) {
    lab.releaseAll();
    return;
  }
  std::uint64_t value = 0;
  auto const [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  if (error != std::errc() || end != number.data() + number.size()) {
    throw std::invalid_argument("release: expected a number, found '" + number + "'");
  }
  lab.release(value);
}

// Of policy text that are not empty.
std::size_t linesOf(Step const& step) {
  if (step.kind != StepKind::load) {
    return 0;
  }
  std::size_t lines = 0;
  Text::SourceText const source = sourceOf(step);
  Text::LineReader reader(source);
  while (reader.next()) {
    lines += reader.line().find_first_not_of(" \t") == std::string_view::npos ? 0 : 1;
  }
  return lines;
}

}  // namespace

void perform(Lab& lab, Step const& step, Text::Reading reading) {
  switch (step.kind) {
  case StepKind::load: lab.load(sourceOf(step), step.reading.value_or(reading)); break;
  case StepKind::rules: loadRules(lab, step); break;
  case StepKind::inject: injectText(lab, step.text); break;
  case StepKind::clear: lab.clearFaults(); break;
  case StepKind::advance: lab.advance(std::chrono::duration<double>(step.seconds)); break;
  case StepKind::trigger:
    for (std::uint32_t i = 0; i != step.times; ++i) {
      lab.trigger();
    }
    break;
  case StepKind::release: release(lab, step.text); break;
  case StepKind::detach: lab.detachAll(); break;
  case StepKind::attach: lab.attachAll(); break;
  case StepKind::faults:
  case StepKind::end:
  case StepKind::check:
    throw std::invalid_argument(std::string(nameOf(step.kind)) + " is a step of a ScriptRun");
  }
}

std::string_view nameOf(Step::Kind kind) {
  return std::find_if(stepKinds.begin(), stepKinds.end(),
                      [&](auto const& each) { return each.first == kind; })
      ->second;
}

std::optional<Step::Kind> stepKindOf(std::string_view name) {
  auto const* const found = std::find_if(stepKinds.begin(), stepKinds.end(),
                                         [&](auto const& each) { return each.second == name; });
  return found == stepKinds.end() ? std::nullopt : std::optional(found->first);
}

std::string toText(Step const& step) {
  std::ostringstream text;
  text << nameOf(step.kind);
  switch (step.kind) {
  case StepKind::load:
  case StepKind::rules: text << " " << step.name; break;
  case StepKind::inject:
  case StepKind::faults: text << " " << step.text; break;
  case StepKind::end:
  case StepKind::release:
    if (!step.text.empty()) {
      text << " " << step.text;
    }
    break;
  case StepKind::advance: text << " " << step.seconds; break;
  case StepKind::trigger:
    if (step.times != 1) {
      text << " " << step.times;
    }
    break;
  default: break;
  }
  return text.str();
}

std::size_t linesOf(Script const& script) {
  std::size_t lines = 0;
  for (Step const& step : script.steps) {
    lines += linesOf(step);
  }
  return lines;
}

std::size_t linesOfEdits(Script const& script) {
  auto const first = std::find_if(script.steps.begin(), script.steps.end(),
                                  [](Step const& step) { return step.kind == Step::Kind::load; });
  return linesOf(script) - (first == script.steps.end() ? 0 : linesOf(*first));
}

}  // namespace PolicyMapTestKit
