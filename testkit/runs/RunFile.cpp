// SPDX-License-Identifier: Apache-2.0
#include "testkit/runs/RunFile.h"

#include "testkit/text/JsonLine.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <utility>

namespace PolicyMapTestKit {

namespace {

using Text::Json;
using Text::JsonLine;
using Text::Reading;

constexpr std::uint64_t version = 1;

constexpr std::array<std::pair<Reading, std::string_view>, 3> readings{
    {{Reading::strict, "strict"}, {Reading::lenient, "lenient"}, {Reading::widening, "widening"}}};

// writing ---------------------------------------------------------------------------------------

std::string_view nameOf(Reading reading) {
  auto const* const found = std::find_if(readings.begin(), readings.end(),
                                         [&](auto const& each) { return each.first == reading; });
  return found->second;
}

void addUnusual(Json& json, std::string_view name, std::string const& text) {
  if (!text.empty()) {
    json.add(name, text);
  }
}

Json jsonOf(LabOptions const& options) {
  LabOptions const usual;
  Json json{Json::Object()};
  for (LabSwitch const& each : labSwitches()) {
    if (options.*each.value != usual.*each.value) {
      json.add(each.name, options.*each.value);
    }
  }
  for (StrictnessSwitch const& each : strictnessSwitches()) {
    if (options.strictness.*each.value != usual.strictness.*each.value) {
      json.add(each.name, options.strictness.*each.value);
    }
  }
  if (options.asyncDelay) {
    json.add("asyncDelay", *options.asyncDelay);
  }
  Json::Array faults;
  for (Fault const& fault : options.faults) {
    faults.emplace_back(fault.name + "=" + fault.text);
  }
  if (!faults.empty()) {
    json.add("faults", std::move(faults));
  }
  addUnusual(json, "plan", toText(options.plan));
  addUnusual(json, "actions", options.actions.text());
  return json;
}

Json jsonOf(Step const& step) {
  Step const usual;
  Json json(Json::Object{{"step", nameOf(step.kind)}});
  addUnusual(json, "name", step.name);
  addUnusual(json, "text", step.text);
  if (step.reading) {
    json.add("reading", nameOf(*step.reading));
  }
  if (step.kind == Step::Kind::advance) {
    json.add("seconds", step.seconds);
  }
  if (step.times != usual.times) {
    json.add("times", std::uint64_t{step.times});
  }
  if (step.kind == Step::Kind::rules) {
    json.add("classes", std::uint64_t{step.layout.classes});
    json.add("interfaces", std::uint64_t{step.layout.interfaces});
    json.add("portsOnAnyProtocol", step.portRanges == Text::PortRanges::onAnyProtocol);
  }
  return json;
}

// reading ---------------------------------------------------------------------------------------

template <class Switches, class Options>
void readSwitches(Json const& json, Switches const& switches, Options& options) {
  for (auto const& each : switches) {
    Json const* const found = json.member(each.name);
    if (bool const* const value = found == nullptr ? nullptr : found->as<bool>()) {
      options.*each.value = *value;
    }
  }
}

std::string textIn(Json const& json, std::string_view name) {
  Json const* const found = json.member(name);
  auto const* const text = found == nullptr ? nullptr : found->as<std::string>();
  return text == nullptr ? std::string() : *text;
}

std::optional<double> secondsIn(Json const& json, std::string_view name) {
  Json const* const found = json.member(name);
  auto const* const whole = found == nullptr ? nullptr : found->as<std::uint64_t>();
  auto const* const real = found == nullptr ? nullptr : found->as<double>();
  return whole != nullptr  ? std::optional(static_cast<double>(*whole))
         : real != nullptr ? std::optional(*real)
                           : std::nullopt;
}

void readOptions(JsonLine const& line, Script& script) {
  Json const& json = *line.json().member("options");
  LabOptions& options = script.options;
  readSwitches(json, labSwitches(), options);
  readSwitches(json, strictnessSwitches(), options.strictness);
  options.asyncDelay = secondsIn(json, "asyncDelay");
  if (Json const* const faults = json.member("faults")) {
    auto const* const all = faults->as<Json::Array>();
    for (Json const& each : all == nullptr ? Json::Array() : *all) {
      auto const* const text = each.as<std::string>();
      std::size_t const equals = text == nullptr ? std::string::npos : text->find('=');
      if (equals == std::string::npos) {
        line.fail(0, "\"NAME=TEXT\" in member \"faults\"");
      }
      options.faults.push_back({text->substr(0, equals), text->substr(equals + 1)});
    }
  }
  options.plan = parseFaultPlan(Text::SourceText("plan", textIn(json, "plan")));
  options.actions = Text::ActionMapping(Text::SourceText("actions", textIn(json, "actions")));
  std::string const reading = line.text("reading");
  script.reading = readingOf(reading).value_or(Reading::strict);
}

std::uint32_t smallNumber(JsonLine const& line, std::string_view name, std::uint32_t usual) {
  constexpr std::uint64_t most = 1000000;
  std::uint64_t const number = line.has(name) ? line.number(name) : usual;
  if (number == 0 || number > most) {
    line.fail(0, "1 to 1000000 as member \"" + std::string(name) + "\"");
  }
  return static_cast<std::uint32_t>(number);
}

Step stepOf(JsonLine const& line) {
  std::optional<Step::Kind> const kind = stepKindOf(line.text("step"));
  if (!kind) {
    line.fail(0, "a known step");
  }
  Step step{.kind = *kind, .name = line.text("name"), .text = line.text("text")};
  step.times = smallNumber(line, "times", 1);
  if (line.has("reading")) {
    step.reading = readingOf(line.text("reading"));
    if (!step.reading) {
      line.fail(0, "strict, lenient or widening as member \"reading\"");
    }
  }
  if (step.kind == Step::Kind::advance) {
    step.seconds = line.real("seconds");
    if (!(step.seconds >= 0 && step.seconds <= longestAdvance)) {
      line.fail(0, "0 to 1000000 as member \"seconds\"");
    }
  }
  step.layout = {smallNumber(line, "classes", 1), smallNumber(line, "interfaces", 1)};
  if (line.has("portsOnAnyProtocol") && line.flag("portsOnAnyProtocol")) {
    step.portRanges = Text::PortRanges::onAnyProtocol;
  }
  return step;
}

Irregularity irregularityOf(JsonLine const& line) {
  return {irregularityKindOf(line.text("is")).value_or(Irregularity::Kind::record),
          line.text("finding")};
}

std::string shownEntry(std::vector<JournalLine> const& journal, std::size_t i) {
  return i < journal.size() ? jsonOf(journal[i]).text() : "nothing more";
}

}  // namespace

RunFile record(Script const& script, std::function<void(Step const&, ScriptRun&)> const& onStep) {
  CaughtAssertions const assertions;
  LabOptions options = script.options;
  options.journal = SIZE_MAX;
  options.journalStatuses = true;
  ScriptRun run(options, script.reading);
  for (Step const& step : script.steps) {
    bool const isDone = run.tryTo(step);
    if (onStep) {
      onStep(step, run);
    }
    if (!isDone) {
      break;
    }
  }
  return recordOf(script, run);
}

RunFile recordOf(Script script, ScriptRun& run) {
  run.end();
  RunFile file{std::move(script), run.irregularities(), {}};
  file.journal.reserve(run.lab().journal().size());
  for (JournalEntry const& entry : run.lab().journal()) {
    file.journal.emplace_back(entry);
  }
  return file;
}

std::optional<Reading> readingOf(std::string_view name) {
  auto const* const found = std::find_if(readings.begin(), readings.end(),
                                         [&](auto const& each) { return each.second == name; });
  return found == readings.end() ? std::nullopt : std::optional(found->first);
}

void write(std::ostream& out, RunFile const& file) {
  out << Json(Json::Object{{"run", version}}).text() << "\n"
      << Json(Json::Object{{"options", jsonOf(file.script.options)},
                           {"reading", nameOf(file.script.reading)}})
             .text()
      << "\n";
  for (Step const& step : file.script.steps) {
    out << jsonOf(step).text() << "\n";
  }
  for (Irregularity const& each : file.found) {
    out << Json(Json::Object{{"finding", each.text}, {"is", nameOf(each.kind)}}).text() << "\n";
  }
  for (JournalLine const& line : file.journal) {
    out << jsonOf(line).text() << "\n";
  }
}

RunFile readRunFile(Text::SourceText const& source) {
  RunFile file;
  bool headed = false;
  Text::LineReader lines(source);
  while (lines.next()) {
    if (lines.line().find_first_not_of(" \t") == std::string_view::npos) {
      continue;
    }
    JsonLine const line(lines);
    if (!std::exchange(headed, true)) {
      if (line.number("run") != version) {
        line.fail(0, "a run of version " + std::to_string(version));
      }
    } else if (line.has("options")) {
      readOptions(line, file.script);
    } else if (line.has("step")) {
      file.script.steps.push_back(stepOf(line));
    } else if (line.has("finding")) {
      file.found.push_back(irregularityOf(line));
    } else if (line.has("kind")) {
      if (std::optional<JournalLine> entry = journalLineOf(line)) {
        file.journal.push_back(*std::move(entry));
      }
    }
  }
  if (!headed) {
    throw Text::InputError({source.name(), 1, 1}, "a line {\"run\":1}", {});
  }
  return file;
}

std::optional<std::string> firstDifference(RunFile const& before, RunFile const& now) {
  auto const [then, here] = std::mismatch(before.journal.begin(), before.journal.end(),
                                          now.journal.begin(), now.journal.end());
  auto const at = static_cast<std::size_t>(then - before.journal.begin());
  if (then != before.journal.end() || here != now.journal.end()) {
    return "entry " + std::to_string(at + 1) + " of the journal\n  was " +
           shownEntry(before.journal, at) + "\n  is  " + shownEntry(now.journal, at);
  }
  auto const [found, finds] =
      std::mismatch(before.found.begin(), before.found.end(), now.found.begin(), now.found.end());
  if (found == before.found.end() && finds == now.found.end()) {
    return std::nullopt;
  }
  auto const textOf = [](auto const& each, auto const& end) {
    return each == end ? std::string("nothing more") : each->text;
  };
  return "finding " + std::to_string(found - before.found.begin() + 1) + "\n  was " +
         textOf(found, before.found.end()) + "\n  is  " + textOf(finds, now.found.end());
}

}  // namespace PolicyMapTestKit
