// SPDX-License-Identifier: Apache-2.0
#include "testkit/report/Report.h"

#include "testkit/RecordJson.h"
#include "testkit/faults/FaultWords.h"
#include "testkit/report/PageTemplate.h"

#include <ostream>
#include <unordered_map>
#include <utility>

namespace PolicyMapTestKit {

namespace {

using Text::Json;

Json jsonOfFaults(Lab const& lab) {
  Json::Array faults;
  for (FaultState const& state : lab.faults()) {
    Json::Array where;
    for (MetFault const& each : state.met) {
      where.emplace_back(each.call);
    }
    faults.emplace_back(Json::Object{{"fault", toText(state.fault)},
                                     {"met", std::uint64_t{state.met.size()}},
                                     {"where", std::move(where)}});
  }
  return faults;
}

Json jsonOfRecords(Lab const& lab) {
  Json::Array records;
  lab.forEachRecord(WithRules::yes, [&](Record const& record) {
    std::string json;
    appendJson(json, record);
    records.push_back(Json::parse(json));
  });
  return records;
}

// Each text once.
class Lines {
 public:
  std::uint64_t placeOf(std::string const& line) {
    auto const [found, isNew] = places_.try_emplace(line, places_.size());
    if (isNew) {
      lines_.emplace_back(line);
    }
    return found->second;
  }
  Json::Array take() { return std::move(lines_); }

 private:
  std::unordered_map<std::string, std::uint64_t> places_;
  Json::Array lines_;
};

Json jsonOf(SweepResult const& result, Lines& lines) {
  SweepCase const& which = result.which;
  Json json(Json::Object{{"case", toText(which)},
                         {"mode", toText(which.mode)},
                         {"early", which.early},
                         {"injected", result.injected}});
  if (which.faults.size() == 1) {
    PlannedFault const& fault = which.faults.front();
    json.add("operation", fault.operations.empty() ? "any" : fault.operations.front());
    json.add("call", fault.occurrence.number);
    json.add("lasts", fault.occurrence.kind != Occurrence::Kind::nth);
    PlannedFault effect{.effect = fault.effect, .seconds = fault.seconds};
    constexpr std::string_view any = "any ";
    std::string const text = toText(effect);
    json.add("effect", text.size() > any.size() ? text.substr(any.size()) : std::string("fails"));
  }
  Json::Array findings;
  for (Irregularity const& finding : result.findings) {
    findings.emplace_back(finding.text);
  }
  json.add("findings", std::move(findings));
  if (!result.journal.empty()) {
    Json::Array journal;
    for (std::string const& line : result.journal) {
      journal.emplace_back(lines.placeOf(line));
    }
    json.add("journal", std::move(journal));
  }
  return json;
}

}  // namespace

void RunReport::add(Step const& step, ScriptRun const& run) {
  if (step.kind == Step::Kind::load) {
    inputs_.emplace_back(Json::Object{{"name", step.name}, {"text", step.text}});
  }
  steps_.emplace_back(Json::Object{
      {"name", toText(step)}, {"entry", nextEntry_}, {"records", jsonOfRecords(run.lab())}});
  nextEntry_ = run.lab().journal().next();
  Json faults = jsonOfFaults(run.lab());
  if (!faults.as<Json::Array>()->empty()) {  // after a check there are none
    faults_ = *faults.as<Json::Array>();
  }
}

Json RunReport::json(RunFile const& file) const {
  Json::Array journal;
  journal.reserve(file.journal.size());
  for (JournalLine const& line : file.journal) {
    journal.push_back(PolicyMapTestKit::jsonOf(line));
  }
  Json::Array findings;
  for (Irregularity const& each : file.found) {
    findings.emplace_back(each.text);
  }
  return Json::Object{{"kind", "run"},    {"title", title_},    {"inputs", inputs_},
                      {"steps", steps_},  {"journal", journal}, {"findings", findings},
                      {"faults", faults_}};
}

Json reportOf(std::string const& title, SweepReport const& sweep) {
  Lines lines;
  Json::Array cases;
  cases.reserve(sweep.results.size());
  for (SweepResult const& result : sweep.results) {
    cases.push_back(jsonOf(result, lines));
  }
  return Json::Object{{"kind", "sweep"},
                      {"title", title},
                      {"seconds", sweep.seconds},
                      {"lines", lines.take()},
                      {"cases", std::move(cases)}};
}

void writePage(std::ostream& out, Json const& report) {
  constexpr std::string_view place = "@POLICYMAP_DATA@";
  std::string_view const page = pageTemplate();
  std::size_t const at = page.find(place);
  out << page.substr(0, at);
  // "<" would end the element that holds the data.
  for (char const c : report.text()) {
    if (c == '<') {
      out << "\\u003c";
    } else {
      out << c;
    }
  }
  out << page.substr(at + place.size());
}

}  // namespace PolicyMapTestKit
