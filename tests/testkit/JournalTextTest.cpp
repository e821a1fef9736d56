// SPDX-License-Identifier: Apache-2.0
#include "testkit/JournalText.h"

#include "testkit/Labs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace PolicyMapTestKit::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

std::string jsonOf(Journal const& journal) {
  std::ostringstream out;
  writeJsonLines(out, journal);
  return out.str();
}

std::string mermaidOf(Journal const& journal) {
  std::ostringstream out;
  writeMermaid(out, journal);
  return out.str();
}

std::string errorOfReading(std::string const& text) {
  try {
    static_cast<void>(readJournal(text));
  } catch (InputError const& error) {
    return error.what();
  }
  return "no error";
}

std::string const head = "{\"journal\":1}\n";

TEST(JournalText, JsonHasALinePerEntry) {
  Lab lab;
  load(lab, simplePolicy);
  EXPECT_EQ(
      jsonOf(lab.journal().since(2)),
      "{\"journal\":1,\"dropped\":0}\n"
      R"({"number":2,"time":0.0,"kind":"test","operation":"load","text":"t"})"
      "\n"
      R"({"number":3,"time":0.0,"kind":"call","operation":"createPolicy","policy":"P",)"
      R"("direction":"input","option":"ipv4","cause":"rules changed","text":"load t"})"
      "\n"
      R"({"number":4,"time":0.0,"kind":"call","operation":"addRule","policy":"P",)"
      R"("direction":"input","option":"ipv4","class":"P","acl":"P","seq":10,"subRule":"dst 80",)"
      R"("match":"permit tcp any any eq 80","action1":1,"action2":0,"action3":0,)"
      R"("cause":"rules changed","text":"load t"})"
      "\n"
      R"({"number":5,"time":0.0,"kind":"call","operation":"addIntfToPolicy","policy":"P",)"
      R"("direction":"input","option":"ipv4","intf":"Ethernet1","cause":"rules changed",)"
      R"("text":"load t"})"
      "\n"
      R"({"number":6,"time":0.0,"kind":"call","operation":"commitPolicy","policy":"P",)"
      R"("direction":"input","option":"ipv4","cause":"rules changed","text":"load t"})"
      "\n");
}

TEST(JournalText, WhatIsWrittenIsReadBack) {
  Lab lab({.updateAction = true, .async = true});
  load(lab, portRange);
  lab.trigger();
  lab.inject({"commitError", "table \"full\"\n\u20ac"});
  lab.trigger();
  lab.advance(std::chrono::duration<double>(0.1));
  lab.aroundIs(
      [](HelperCall&, std::function<void()> const&) { throw std::runtime_error("no link"); });
  load(lab, "policy-map P\n class P\n  set action2 4294967295\n");
  lab.aroundIs([](HelperCall& call, std::function<void()> const&) { call.count = 7; });
  lab.helper()->getCountForRule({}, {}, {});
  std::vector<JournalLine> expected;
  bool failed = false;
  bool threw = false;
  bool counted = false;
  for (JournalEntry const& entry : lab.journal()) {
    expected.emplace_back(entry);
    failed = failed || !entry.error.empty();
    threw = threw || entry.threw;
    counted = counted || entry.count != 0;
  }
  EXPECT_TRUE(failed && threw && counted) << lab.journal();
  EXPECT_EQ(readJournal(jsonOf(lab.journal())), expected);
}

TEST(JournalText, SaysHowManyEntriesWereDropped) {
  Lab lab({.journal = 2});
  load(lab, simplePolicy);
  EXPECT_THAT(jsonOf(lab.journal()), HasSubstr("{\"journal\":1,\"dropped\":4}\n"));
  EXPECT_THAT(mermaidOf(lab.journal()), HasSubstr("  Note over test,helper: 4 earlier entries\n"));
}

TEST(JournalText, ReaderIgnoresWhatItDoesNotKnow) {
  std::vector<JournalLine> const read =
      readJournal("\xEF\xBB\xBF{\"journal\":1,\"by\":\"x\"}\r\n\n"
                  "{\"kind\":\"nap\",\"number\":{}}\n"
                  "{\"colour\":[1],\"kind\":\"test\",\"number\":9,\"time\":2,"
                  "\"operation\":\"load\"}");
  ASSERT_EQ(read.size(), 1U);
  EXPECT_EQ(read.front().number, 9U);
  EXPECT_EQ(read.front().time, 2.0);
  EXPECT_EQ(read.front().operation, "load");
  EXPECT_EQ(read.front().kind, JournalEntry::Kind::test);
  EXPECT_THAT(readJournal(head), IsEmpty());
}

TEST(JournalText, ReaderNamesTheLineOfAnError) {
  EXPECT_EQ(errorOfReading(""), "journal:1:1: expected a line {\"journal\":1}, found end of line");
  EXPECT_EQ(errorOfReading("{\"journal\":2}"),
            "journal:1:1: expected a journal of version 1, found '{\"journal\":2}'");
  EXPECT_EQ(errorOfReading("{}"), "journal:1:1: expected a whole number as member \"journal\", "
                                  "found '{}'");
  EXPECT_EQ(errorOfReading(head + "\n{\"kind\":}"), "journal:3:9: expected a value, found '}'");
  EXPECT_EQ(errorOfReading(head + "[]"), "journal:2:1: expected a JSON object, found '[]'");
  EXPECT_THAT(errorOfReading(head + "{}"), HasSubstr("journal:2:1: expected a member \"kind\""));
  std::string const entry = head + "{\"kind\":\"call\",\"number\":1,\"time\":0";
  EXPECT_EQ(errorOfReading(entry + "}"), "no error");
  for (std::string const member :
       {"\"operation\":1", "\"seq\":\"1\"", "\"seq\":-1", "\"action1\":4294967296", "\"threw\":1",
        "\"count\":0.5", "\"number\":null", "\"time\":\"0\"", "\"error\":[]"}) {
    EXPECT_THAT(errorOfReading(entry + "," + member + "}"),
                HasSubstr(" as member " + member.substr(0, member.find(':'))));
  }
}

TEST(JournalText, MermaidHasArrowsByDirection) {
  Lab lab({.async = true, .faults = {{"commitError", "table full"}}});
  load(lab, simplePolicy);
  lab.trigger();
  lab.trigger();
  lab.helper()->hwInit();
  EXPECT_EQ(mermaidOf(lab.journal().since(2)),
            "sequenceDiagram\n"
            "  participant test\n"
            "  participant core\n"
            "  participant helper\n"
            "  test->>core: load t\n"
            "  core->>helper: createPolicy P/input ipv4\n"
            "  core->>helper: addRule P/input ipv4 P P 10 permit tcp any any eq 80 (dst 80) "
            "action1=1\n"
            "  core->>helper: addIntfToPolicy P/input ipv4 Ethernet1\n"
            "  test->>core: trigger\n"
            "  helper-->>core: result: done\n"
            "  core->>helper: commitPolicy P/input ipv4\n"
            "  test->>core: trigger\n"
            "  helper--xcore: result: table full\n"
            "  core->>helper: deletePolicy P/input ipv4\n"
            "  test->>helper: hwInit\n");
}

TEST(JournalText, MermaidMarksFailuresAndCounts) {
  Lab lab({.faults = {{"createError", "full"}}});
  load(lab, simplePolicy);
  lab.aroundIs([](HelperCall& call, std::function<void()> const&) { call.count = 7; });
  lab.helper()->getCountForRule({}, {}, {});
  lab.aroundIs(
      [](HelperCall&, std::function<void()> const&) { throw std::runtime_error("no link"); });
  load(lab, "policy-map P\n class P\n  set action2 5\n");
  lab.advance(std::chrono::seconds(1));
  std::string const diagram = mermaidOf(lab.journal());
  EXPECT_THAT(diagram, HasSubstr("  helper--xcore: fails: full\n"));
  EXPECT_THAT(diagram, HasSubstr("  test->>helper: getCountForRule"));
  EXPECT_THAT(diagram, HasSubstr("  helper-->>test: 7\n"));
  EXPECT_THAT(diagram, HasSubstr("  helper--xcore: throws no link\n"));
}

TEST(JournalText, MermaidTextsAreEscaped) {
  Lab lab;
  load(lab, simplePolicy);
  lab.journal().clear();
  lab.inject({"commitError", "a;b #1 %%x {y} <z>\n\"end\" \u20ac"});
  EXPECT_THAT(mermaidOf(lab.journal()),
              HasSubstr("  test->>core: inject commitError=a#59;b #35;1 #37;#37;x #123;y#125; "
                        "#60;z#62;#92;x0a#34;end#34; \u20ac\n"));
}

}  // namespace
}  // namespace PolicyMapTestKit::test
