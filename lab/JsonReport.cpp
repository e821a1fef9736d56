// SPDX-License-Identifier: Apache-2.0
#include "lab/JsonReport.h"

#include "lab/Report.h"
#include "testkit/JournalText.h"
#include "testkit/Printing.h"
#include "testkit/RecordJson.h"
#include "testkit/Statuses.h"
#include "testkit/text/Json.h"

#include <utility>

namespace lab {

namespace {

Json jsonOf(StatusRow const& row) {
  return Json::Object{{"policy", row.policy},
                      {"direction", row.direction},
                      {"option", toText(row.option)},
                      {"programmed", row.programmed},
                      {"timeProgrammed", row.timeProgrammed ? Json(*row.timeProgrammed) : Json()},
                      {"interfaces", PolicyMapTestKit::jsonOf(row.interfaces)},
                      {"error", row.error},
                      {"operation", row.operation},
                      {"class", row.className},
                      {"rule", row.rule}};
}

char const* nameOf(Problem::Kind kind) {
  switch (kind) {
  case Problem::Kind::missing: return "missing";
  case Problem::Kind::failed: return "failed";
  case Problem::Kind::empty: break;
  }
  return "empty";
}

Json jsonOf(Problem const& problem) {
  return Json::Object{
      {"kind", nameOf(problem.kind)}, {"where", problem.where}, {"text", problem.text}};
}

char const* nameOf(Change::Kind kind) {
  switch (kind) {
  case Change::Kind::created: return "created";
  case Change::Kind::removed: return "removed";
  case Change::Kind::committed: return "committed";
  case Change::Kind::uncommitted: return "uncommitted";
  case Change::Kind::counterChanged: return "counterChanged";
  case Change::Kind::intfAdded: return "interfaceAdded";
  case Change::Kind::intfRemoved: return "interfaceRemoved";
  case Change::Kind::ruleAdded: return "ruleAdded";
  case Change::Kind::ruleRemoved: return "ruleRemoved";
  case Change::Kind::matchChanged: return "matchChanged";
  case Change::Kind::subRulesChanged: return "subRulesChanged";
  case Change::Kind::actionChanged: return "actionChanged";
  case Change::Kind::rulesReordered: return "rulesReordered";
  }
  return "";
}

Json jsonOf(Change const& change) {
  Json json(Json::Object{{"kind", nameOf(change.kind)},
                         {"policy", change.policy},
                         {"direction", change.direction},
                         {"option", toText(change.option)}});
  if (change.rule) {
    json.add("class", change.rule->className().view());
    json.add("acl", change.rule->aclName().view());
    json.add("seq", change.rule->seqno());
  }
  if (!change.field.empty()) {  // a counter or an action
    json.add("field", change.field);
    json.add("before", change.numberBefore);
    json.add("after", change.numberAfter);
    return json;
  }
  if (!change.before.empty()) {
    json.add("before", change.before);
  }
  if (!change.after.empty()) {
    json.add("after", change.after);
  }
  return json;
}

// An operation that waits for its result, or a failure that will be tried again.
Json::Array outstandingIn(Lab const& lab) {
  Json::Array all;
  for (PolicyMap::Explanation const& each : lab.explain()) {
    bool const waiting = each.state == PolicyMap::ProgrammingState::waiting;
    if (!waiting && !each.nextTry) {
      continue;
    }
    Json json(
        Json::Object{{"policy", each.policy.first().view()},
                     {"direction", each.policy.second().view()},
                     {"option", toText(each.option)},
                     {"state", waiting ? "waiting" : "retry"},
                     {"operation", waiting ? each.waitingFor : each.failure.operation().view()}});
    json.add(waiting ? "since" : "at", waiting ? each.waitingSince : *each.nextTry);
    all.push_back(std::move(json));
  }
  return all;
}

// Prints the rules one by one, so that they are never all in memory as values.
void printRecordJson(std::ostream& out, Record const& record, EachRule const& eachRule,
                     WithRules withRules) {
  std::string text = jsonOf(record).text();
  if (withRules == WithRules::no) {
    out << text;
    return;
  }
  text.pop_back();
  out << text << ",\"rules\":[";
  std::string_view separator = "\n";
  eachRule([&](RuleRecord const& rule) {
    text = std::exchange(separator, ",\n");
    appendJson(text, rule);
    out << text;
  });
  out << "]}";
}

// An array with a line per item.
template <class Items, class TextOf>
void printList(std::ostream& out, Items const& items, TextOf const& textOfItem) {
  out << "[";
  char const* separator = "\n";
  for (auto const& item : items) {
    out << std::exchange(separator, ",\n") << textOfItem(item);
  }
  out << "]";
}

void printChanges(std::ostream& out, std::vector<StepChanges> const& steps) {
  out << "[";
  char const* separator = "\n";
  for (StepChanges const& step : steps) {
    out << std::exchange(separator, ",\n") << "{\"step\":" << Json(step.step).text()
        << ",\"changes\":";
    printList(out, step.changes, [](Change const& change) { return jsonOf(change).text(); });
    out << "}";
  }
  out << "]";
}

Json jsonOf(SkippedLines::Line const& line) {
  return Json::Object{
      {"file", *line.place.file}, {"line", std::uint64_t{line.place.line}}, {"kind", line.kind}};
}

}  // namespace

void printJson(std::ostream& out, JsonReport const& report) {
  Lab const& lab = report.lab;
  Totals totals;
  out << "{\"policies\":[";
  char const* separator = "\n";
  lab.forEachRecord([&](Record const& record, EachRule const& eachRule) {
    out << std::exchange(separator, ",\n");
    printRecordJson(out, record, eachRule, report.withRules);
    totals.add(record);
  });
  Json::Object skipped;
  for (auto const& [kind, lines] : lab.skipped().byKind()) {
    skipped.emplace_back(kind, lines);
  }
  Json const sums(Json::Object{
      {"policies", totals.policies}, {"rules", totals.rules}, {"subRules", totals.subRules}});
  AttachmentCount const& attachments = report.outcome.attachments;
  Json const attached(
      Json::Object{{"all", attachments.all}, {"programmed", attachments.programmed}});
  Json const understood(Json::Object{{"understood", lab.skipped().understood()},
                                     {"skipped", lab.skipped().missed()}});
  auto const textOfItem = [](auto const& item) { return jsonOf(item).text(); };
  out << "],\n\"totals\":" << sums.text() << ",\n\"attachments\":" << attached.text()
      << ",\n\"skipped\":" << Json(std::move(skipped)).text() << ",\n\"skippedLines\":";
  printList(out, lab.skipped().lines(), textOfItem);
  out << ",\n\"policyLines\":" << understood.text() << ",\n\"status\":";
  printList(out, readStatuses(lab), textOfItem);
  out << ",\n\"problems\":";
  printList(out, report.outcome.problems, textOfItem);
  out << ",\n\"faults\":";
  printList(out, report.outcome.faults, textOfItem);
  out << ",\n\"findings\":";
  printList(out, report.outcome.findings,
            [](Irregularity const& finding) { return Json(finding.text).text(); });
  out << ",\n\"outstanding\":";
  printList(out, outstandingIn(lab), [](Json const& json) { return json.text(); });
  out << ",\n\"changes\":";
  printChanges(out, report.changes);
  if (report.withJournal) {
    out << ",\n\"journal\":";
    printList(out, jsonLines(lab.journal()), [](std::string const& line) { return line; });
  }
  out << "}\n";
}

}  // namespace lab
