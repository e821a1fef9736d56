// SPDX-License-Identifier: Apache-2.0
#include "testkit/report/Report.h"

#include "testkit/GoogleTest.h"
#include "testkit/Labs.h"

#include <gmock/gmock.h>

#include <set>
#include <sstream>

namespace PolicyMapTestKit::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

Json const& memberOf(Json const& json, std::string_view name) {
  Json const* const found = json.member(name);
  if (found == nullptr) {
    throw std::out_of_range("no member " + std::string(name) + " in " + json.text());
  }
  return *found;
}
Json::Array const& listIn(Json const& json, std::string_view name) {
  return *memberOf(json, name).as<Json::Array>();
}
std::vector<std::string> membersOf(Json const& json) {
  std::vector<std::string> names;
  for (auto const& [name, value] : *json.as<Json::Object>()) {
    names.push_back(name);
  }
  return names;
}

std::size_t timesIn(std::string const& text, std::string const& part) {
  std::size_t times = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size()) {
    ++times;
  }
  return times;
}

struct Reported {
  RunFile file;
  Json json;
};
Reported reportOfRun(std::vector<Step> const& steps) {
  RunReport report("edge <1>");
  Reported reported{
      PolicyMapTestKit::record(
          {.steps = steps}, [&](Step const& step, ScriptRun const& run) { report.add(step, run); }),
      {}};
  reported.json = report.json(reported.file);
  return reported;
}

std::string pageOf(Json const& json) {
  std::ostringstream out;
  writePage(out, json);
  return out.str();
}

TEST(RunReport, HasWhatTheRunCameTo) {
  Reported const run = reportOfRun(
      {Step::load("edge.cfg", simplePolicy), Step::faults("addRule nth=1; createPolicy nth=9"),
       Step::load("edit", "ip access-list P\n 20 permit udp any any\n")});
  EXPECT_THAT(membersOf(run.json),
              ElementsAre("kind", "title", "inputs", "steps", "journal", "findings", "faults"));
  EXPECT_EQ(memberOf(run.json, "kind").text(), "\"run\"");
  EXPECT_EQ(memberOf(run.json, "title").text(), "\"edge <1>\"");
  Json::Array const& inputs = listIn(run.json, "inputs");
  ASSERT_THAT(inputs, SizeIs(2));
  EXPECT_EQ(inputs[0].text(),
            Json(Json::Object{{"name", "edge.cfg"}, {"text", simplePolicy}}).text());
  EXPECT_THAT(listIn(run.json, "journal"), SizeIs(run.file.journal.size()));
  EXPECT_EQ(listIn(run.json, "journal")[0].text(), jsonOf(run.file.journal[0]).text());
  Json::Array const& faults = listIn(run.json, "faults");
  ASSERT_THAT(faults, SizeIs(2));
  EXPECT_EQ(
      faults[0].text(),
      R"json({"fault":"addRule nth=1","met":1,"where":["addRule(P/input ipv4 P P:10)"]})json");
  EXPECT_EQ(faults[1].text(), R"({"fault":"createPolicy nth=9","met":0,"where":[]})");
}

TEST(RunReport, HasTheRecordsAfterEachStep) {
  Reported const run =
      reportOfRun({Step::load("edge.cfg", simplePolicy), Step::advance(1),
                   Step::load("edit", "ip access-list P\n 20 permit udp any any\n")});
  Json::Array const& steps = listIn(run.json, "steps");
  ASSERT_THAT(steps, SizeIs(3));
  EXPECT_EQ(memberOf(steps[0], "name").text(), "\"load edge.cfg\"");
  EXPECT_EQ(memberOf(steps[1], "name").text(), "\"advance 1\"");
  std::vector<std::size_t> rules;
  for (Json const& step : steps) {
    rules.push_back(listIn(listIn(step, "records").at(0), "rules").size());
  }
  EXPECT_THAT(rules, ElementsAre(1, 1, 2));
  // The number of the first entry of the step.
  EXPECT_EQ(memberOf(steps[0], "entry").text(), "1");
  std::uint64_t const second = *memberOf(steps[1], "entry").as<std::uint64_t>();
  EXPECT_EQ(run.file.journal.at(second - 1).operation, "advance");
  std::uint64_t const third = *memberOf(steps[2], "entry").as<std::uint64_t>();
  EXPECT_EQ(run.file.journal.at(third - 1).operation, "load");
}

TEST(RunReport, HasFindingsAndTheFaultsBeforeACheck) {
  Reported const run = reportOfRun(
      {Step::load("edge.cfg", simplePolicy), Step::faults("addRule nth=9"), Step::check()});
  ASSERT_THAT(run.file.found, SizeIs(1));
  ASSERT_THAT(listIn(run.json, "findings"), SizeIs(1));
  EXPECT_EQ(listIn(run.json, "findings")[0].text(), Json(run.file.found[0].text).text());
  EXPECT_THAT(listIn(run.json, "faults"), SizeIs(1));
}

SweepReport simpleSweep() {
  return PolicyMapTestKit::sweep([](Lab& lab) { load(lab, simplePolicy); },
                                 {.modes = {AnswerMode::synchronous}, .journals = true});
}

TEST(SweepReport, HasTheCases) {
  SweepReport const swept = simpleSweep();
  Json const json = reportOf("edge", swept);
  EXPECT_THAT(membersOf(json), ElementsAre("kind", "title", "seconds", "lines", "cases"));
  EXPECT_EQ(memberOf(json, "kind").text(), "\"sweep\"");
  Json::Array const& cases = listIn(json, "cases");
  ASSERT_EQ(cases.size(), swept.results.size());
  EXPECT_THAT(membersOf(cases[0]),
              ElementsAre("case", "mode", "early", "injected", "findings", "journal"));
  EXPECT_THAT(membersOf(cases[1]), ElementsAre("case", "mode", "early", "injected", "operation",
                                               "call", "lasts", "effect", "findings", "journal"));
  EXPECT_EQ(memberOf(cases[1], "case").text(), "\"synchronous createPolicy nth=1 throws\"");
  EXPECT_EQ(memberOf(cases[1], "effect").text(), "\"throws\"");
  EXPECT_EQ(memberOf(cases[1], "lasts").text(), "false");
  EXPECT_EQ(memberOf(cases[2], "lasts").text(), "true");
}

TEST(SweepReport, HasEachLineOnce) {
  SweepReport const swept = simpleSweep();
  Json const json = reportOf("edge", swept);
  Json::Array const& lines = listIn(json, "lines");
  std::set<std::string> unique;
  for (Json const& line : lines) {
    unique.insert(line.text());
  }
  EXPECT_EQ(unique.size(), lines.size());
  std::size_t shared = 0;
  for (std::size_t i = 0; i != swept.results.size(); ++i) {
    std::vector<std::string> journal;
    for (Json const& place : listIn(listIn(json, "cases")[i], "journal")) {
      journal.push_back(*lines.at(*place.as<std::uint64_t>()).as<std::string>());
    }
    EXPECT_EQ(journal, swept.results[i].journal);
    shared += journal.size();
  }
  EXPECT_GT(shared, lines.size());
}

TEST(SweepReport, HasFindingsAndNoJournalThatIsNotThere) {
  SweepReport swept;
  swept.seconds = 1.5;
  swept.results.push_back(
      {.which = parseSweepCase("asynchronous early commitPolicy from=2 delay=2"),
       .injected = 3,
       .findings = {{Irregularity::Kind::record, "lost"}},
       .journal = {}});
  EXPECT_EQ(reportOf("t", swept).text(),
            R"({"kind":"sweep","title":"t","seconds":1.5,"lines":[],"cases":[)"
            R"({"case":"asynchronous early commitPolicy from=2 delay=2","mode":"asynchronous",)"
            R"("early":true,"injected":3,"operation":"commitPolicy","call":2,"lasts":true,)"
            R"("effect":"delay=2","findings":["lost"]}]})");
}

TEST(Page, HasTheDataOnceAndNoMarkupInIt) {
  Json const json =
      reportOfRun({Step::load("</script><b>", "! <!-- </script>\n" + simplePolicy)}).json;
  std::string const page = pageOf(json);
  std::string const open = "<script type=\"application/json\" id=\"data\">";
  ASSERT_EQ(timesIn(page, open), 1U);
  EXPECT_EQ(timesIn(page, "@POLICYMAP_DATA@"), 0U);
  std::size_t const begin = page.find(open) + open.size();
  std::string const data = page.substr(begin, page.find("</script>", begin) - begin);
  EXPECT_THAT(data, Not(HasSubstr("<")));
  EXPECT_EQ(Json::parse(data).text(), json.text()) << "escaped, it is the same";
  EXPECT_EQ(timesIn(page, "\"title\":\"edge "), 1U);
  EXPECT_EQ(timesIn(page, "</html>"), 1U);
}

TEST(Page, NeedsNothingElse) {
  std::string const page = pageOf(reportOf("edge", simpleSweep()));
  for (char const* const other : {" src=", "@import", "fetch(", "http://", "https://"}) {
    EXPECT_THAT(page, Not(HasSubstr(other)));
  }
}

}  // namespace
}  // namespace PolicyMapTestKit::test
