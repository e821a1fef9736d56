// SPDX-License-Identifier: Apache-2.0
#include "testkit/SweepByName.h"

#include "testkit/Tracing.h"
#include "testkit/runs/Minimise.h"
#include "testkit/runs/RandomWalk.h"
#include "testkit/runs/RunFile.h"
#include "testkit/text/JsonLine.h"

#include <Kor/Model.h>
#include <Kor/Registration.h>
#include <Kor/Trace.h>

#include <array>
#include <deque>
#include <optional>
#include <sstream>
#include <utility>

namespace PolicyMapTestKit {

namespace {

using Text::JsonLine;

RunFile runOf(Kor::String const& text) {
  return readRunFile(Text::SourceText("run", text.stdString()));
}

Kor::String textOf(RunFile const& run) {
  std::ostringstream text;
  write(text, run);
  return text.str();
}

std::vector<AnswerMode> modesOf(JsonLine const& json) {
  std::vector<AnswerMode> modes;
  for (std::string const& name : json.texts("modes")) {
    std::optional<AnswerMode> const mode = answerModeOf(name);
    if (!mode) {
      json.fail(0, "synchronous, asynchronous or pseudo-asynchronous in member \"modes\"");
    }
    modes.push_back(*mode);
  }
  return modes;
}

SweepOptions sweepOptionsOf(Kor::String const& settings) {
  Text::SourceText const source("settings", settings.empty() ? "{}" : settings.stdString());
  Text::LineReader reader(source);
  reader.next();
  JsonLine const json(reader);
  SweepOptions options;
  if (json.has("modes")) {
    options.modes = modesOf(json);
  }
  auto const read = [&](char const* name, auto& number) {
    if (json.has(name)) {
      number = json.number(name);
    }
  };
  read("shard", options.shard);
  read("shards", options.shards);
  read("pairs", options.pairs);
  read("seed", options.seed);
  options.journals = json.has("journals") && json.flag("journals");
  return options;
}

Scenario scenarioOf(Kor::Callable::Ptr const& function, LabOptions const& options) {
  return [function, options](Lab& lab) {
    auto const view = Kor::make<LabByName>(lab, options);
    struct End {
      LabByName& view;
      ~End() { view.close(); }
    } const end{*view};
    function->call(*Kor::GenericList::of(Kor::Generic<LabByName::Ptr>::value(view)));
  };
}

struct KeptTrace {
  std::deque<std::string> lines;
  std::size_t limit = 0;
};
KeptTrace& keptTrace() {
  static KeptTrace kept;
  return kept;
}

constexpr std::array sweepAttrs{
    Kor::Model<SweepByName>::function<&SweepByName::cases>("cases").says(
        "the cases of the shard, in order"),
    Kor::Model<SweepByName>::function<&SweepByName::run>("run", "which")
        .says("runs one case; returns JSON"),
};
constexpr Kor::TypeModel sweepModel = Kor::Model<SweepByName>::object(sweepAttrs);

using KitModel = Kor::Model<KitByName>;
constexpr std::array kitAttrs{
    KitModel::function<&KitByName::lab>("lab", "options").says("a new lab; the options are JSON"),
    KitModel::function<&KitByName::perform>("perform", "run")
        .says("performs the steps of a run; returns the run with what happened"),
    KitModel::function<&KitByName::minimise>("minimise", "run")
        .says("the shortest run that comes to something of the same kind"),
    KitModel::function<&KitByName::walk>("walk", "run", "seed", "steps", "onStep")
        .says("a random walk that begins with the steps of a run, and calls a function after each "
              "step; returns it as a run"),
    KitModel::function<&KitByName::sweep>("sweep", "run", "settings", "scenario")
        .says("a sweep over all calls of the helper in a scenario, or in the steps of a run"),
    KitModel::function<&KitByName::operations>("operations")
        .says("the names of the helper's operations"),
    KitModel::function<&KitByName::keepTrace>("keepTrace", "setting", "lines")
        .says("keeps the newest lines of the trace; the setting is SOURCE/LEVEL or LEVEL"),
    KitModel::function<&KitByName::takeTrace>("takeTrace")
        .says("returns and forgets the lines of the trace"),
};
constexpr Kor::TypeModel kitModel =
    KitModel::object(kitAttrs, KitModel::constructor<&Kor::makeObject<KitByName>>());
constexpr std::array modelsOfKit{&sweepModel, &kitModel};
// Only the kit has attributes of this type.
constexpr Kor::TypeModel callableModel = Kor::Model<Kor::Callable>::object({});
constexpr std::array modelsOfKor{&callableModel};

[[maybe_unused]] bool const kitRegistered = [] {
  Kor::registerTypes("Kor", modelsOfKor);
  Kor::enterTypes(modelsOfKor);
  Kor::registerTypes("PolicyMapTestKit", modelsOfKit);
  Kor::enterTypes(modelsOfKit);
  return true;
}();

}  // namespace

SweepByName::~SweepByName() = default;

Kor::KorType const* SweepByName::fwkType() const {
  return _fwkType();
}
Kor::KorType* SweepByName::_fwkType() {
  static Kor::KorType type("PolicyMapTestKit::Sweep", PtrInterface::_fwkType());
  return &type;
}

TextLines SweepByName::cases() const {
  TextLines lines;
  for (SweepCase const& each : sweep_.cases()) {
    lines.emplace_back(toText(each));
  }
  return lines;
}

Kor::String SweepByName::run(Kor::String const& which) const {
  return jsonOf(sweep_.run(parseSweepCase(which.view()))).text();
}

KitByName::~KitByName() = default;

Kor::KorType const* KitByName::fwkType() const {
  return _fwkType();
}
Kor::KorType* KitByName::_fwkType() {
  static Kor::KorType type("PolicyMapTestKit::Kit", PtrInterface::_fwkType());
  return &type;
}

LabByName::Ptr KitByName::lab(Kor::String const& options) const {
  std::string const usual = "{}";
  RunFile const run =
      runOf("{\"run\":1}\n{\"options\":" + (options.empty() ? usual : options.stdString()) + "}\n");
  return Kor::make<LabByName>(run.script.options);
}

Kor::String KitByName::perform(Kor::String const& run) const {
  return textOf(record(runOf(run).script));
}

Kor::String KitByName::minimise(Kor::String const& run) const {
  return textOf(record(PolicyMapTestKit::minimise(runOf(run).script).script));
}

Kor::String KitByName::walk(Kor::String const& run, std::uint64_t seed, std::uint64_t steps,
                            Kor::Callable::Ptr const& onStep) const {
  auto const stepped = [&] {
    if (onStep) {
      (void)onStep->call(*Kor::GenericList::of());
    }
  };
  WalkResult const done =
      PolicyMapTestKit::walk({.begin = runOf(run).script, .seed = seed, .steps = steps}, stepped);
  return textOf(record(done.run.script, [&](Step const&, ScriptRun&) { stepped(); }));
}

SweepByName::Ptr KitByName::sweep(Kor::String const& run, Kor::String const& settings,
                                  Kor::Callable::Ptr const& scenario) const {
  Script const script = runOf(run).script;
  SweepOptions options = sweepOptionsOf(settings);
  options.lab = script.options;
  options.compareWithNewLab = !scenario;
  return Kor::make<SweepByName>(scenario ? scenarioOf(scenario, script.options)
                                         : PolicyMapTestKit::scenarioOf(script),
                                options);
}

TextLines KitByName::operations() const {
  return textLines(operationNames());
}

void KitByName::keepTrace(Kor::String const& setting, std::uint64_t lines) {
  if (setting.empty()) {
    traceIs("0");
    Kor::traceSinkIs({});
    return;
  }
  traceIs(setting.view());
  keptTrace().limit = lines;
  Kor::traceSinkIs([](std::string_view source, int level, std::string_view text) {
    KeptTrace& kept = keptTrace();
    kept.lines.push_back(std::string(source) + "/" + std::to_string(level) + " " +
                         std::string(text));
    if (kept.lines.size() > kept.limit) {
      kept.lines.pop_front();
    }
  });
}

TextLines KitByName::takeTrace() {
  std::deque<std::string> const lines = std::exchange(keptTrace().lines, {});
  return {lines.begin(), lines.end()};
}

}  // namespace PolicyMapTestKit
