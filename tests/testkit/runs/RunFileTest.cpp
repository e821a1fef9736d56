// SPDX-License-Identifier: Apache-2.0
#include "testkit/runs/RunFile.h"

#include "testkit/Labs.h"
#include "testkit/text/FilterSetGenerator.h"

#include <gmock/gmock.h>

#include <sstream>

namespace PolicyMapTestKit::test {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

std::string writtenAs(RunFile const& file) {
  std::ostringstream out;
  write(out, file);
  return out.str();
}

RunFile readAgain(std::string text) {
  return readRunFile(SourceText("run", std::move(text)));
}

// The error of reading a line after the head and an empty line.
std::string errorOfRunLine(std::string const& line) {
  try {
    (void)readAgain("{\"run\":1}\n\n" + line + "\n");
  } catch (InputError const& error) {
    return error.what();
  }
  return "no error";
}

Script everyStep() {
  Script script{.options = {.async = true}};
  script.steps = {
      Step::load("edge.cfg", simplePolicy),
      {.kind = Step::Kind::trigger, .times = 3},
      Step::faults("commitPolicy nth=1"),
      {.kind = Step::Kind::inject, .text = "addRuleError=<full>"},
      Step::load("edit \"1\"", "ip access-list P\n 20 permit tcp any any eq 81\n"),
      Step::advance(2.5),
      {.kind = Step::Kind::end, .text = "commitPolicy nth=1"},
      {.kind = Step::Kind::clear},
      {.kind = Step::Kind::release},
      Step::check(),
      {.kind = Step::Kind::detach},
      {.kind = Step::Kind::attach},
      {.kind = Step::Kind::rules,
       .name = "f",
       .text = generateFilterSet(4, 1, Family::ip4),
       .layout = {.classes = 2, .interfaces = 3},
       .portRanges = PortRanges::onAnyProtocol},
      Step::check(),
  };
  return script;
}

// What is written ----------------------------------------------------------------------

TEST(RunFile, HasALinePerObject) {
  Script script;
  script.options.updateAction = true;
  script.options.plan = parseFaultPlan("addRule nth=3");
  script.steps = {Step::load("edge.cfg", "ip routing\n"), Step::check()};
  RunFile file{script, {{Irregularity::Kind::status, "wrong"}}, {}};
  file.journal.resize(1);
  file.journal[0].kind = JournalEntry::Kind::test;
  file.journal[0].number = 1;
  file.journal[0].operation = "load";
  file.journal[0].text = "edge.cfg";
  EXPECT_EQ(
      writtenAs(file),
      "{\"run\":1}\n"
      "{\"options\":{\"updateAction\":true,\"plan\":\"addRule nth=3\"},\"reading\":\"strict\"}\n"
      "{\"step\":\"load\",\"name\":\"edge.cfg\",\"text\":\"ip routing\\n\"}\n"
      "{\"step\":\"check\"}\n"
      "{\"finding\":\"wrong\",\"is\":\"status\"}\n"
      "{\"number\":1,\"time\":0.0,\"kind\":\"test\",\"operation\":\"load\","
      "\"text\":\"edge.cfg\"}\n");
}

TEST(RunFile, IsReadAsItIsWritten) {
  RunFile const file = PolicyMapTestKit::record(everyStep());
  ASSERT_THAT(file.journal, testing::Not(IsEmpty()));
  RunFile const again = readAgain(writtenAs(file));
  EXPECT_EQ(again.script.steps, file.script.steps);
  EXPECT_EQ(again.found, file.found);
  EXPECT_EQ(again.journal, file.journal);
  EXPECT_EQ(writtenAs(again), writtenAs(file));
}

TEST(RunFile, KeepsEveryKindOfFinding) {
  RunFile file;
  for (std::uint8_t kind = 0; kind <= static_cast<std::uint8_t>(Irregularity::Kind::unmet);
       ++kind) {
    file.found.push_back({static_cast<Irregularity::Kind>(kind), "text " + std::to_string(kind)});
  }
  EXPECT_EQ(readAgain(writtenAs(file)).found, file.found);
}

TEST(RunFile, KeepsEverySwitch) {
  LabOptions const usual;
  for (LabSwitch const& each : labSwitches()) {
    RunFile file;
    file.script.options.*each.value = !(usual.*each.value);
    EXPECT_THAT(writtenAs(file), HasSubstr("{\"options\":{\"" + std::string(each.name) + "\":"));
    LabOptions const again = readAgain(writtenAs(file)).script.options;
    for (LabSwitch const& other : labSwitches()) {
      EXPECT_EQ(again.*other.value, file.script.options.*other.value)
          << other.name << " of " << each.name;
    }
  }
}

TEST(RunFile, KeepsEveryStrictness) {
  ASSERT_THAT(strictnessSwitches(), SizeIs(5));
  for (StrictnessSwitch const& each : strictnessSwitches()) {
    RunFile file;
    file.script.options.strictness.*each.value = false;
    EXPECT_THAT(writtenAs(file), HasSubstr("\"" + std::string(each.name) + "\":false"));
    EXPECT_EQ(readAgain(writtenAs(file)).script.options.strictness, file.script.options.strictness);
    EXPECT_NE(file.script.options.strictness, Strictness()) << each.name;
  }
}

TEST(RunFile, KeepsOtherOptions) {
  RunFile file;
  LabOptions& options = file.script.options;
  options.faults = {{"commitError", "a=b"}, {"addRuleError", ""}};
  options.plan = parseFaultPlan("addRule nth=3 once; capacity rules=1000");
  options.actions = ActionMapping(SourceText("a", "set cos = action3\npolice = none\n"));
  for (double const delay : {0.0, 0.25, 3.0}) {
    options.asyncDelay = delay;
    LabOptions const again = readAgain(writtenAs(file)).script.options;
    EXPECT_EQ(again.asyncDelay, delay);
    ASSERT_THAT(again.faults, SizeIs(2));
    EXPECT_EQ(again.faults[0].name, "commitError");
    EXPECT_EQ(again.faults[0].text, "a=b");
    EXPECT_EQ(again.faults[1].name, "addRuleError");
    EXPECT_EQ(again.faults[1].text, "");
    EXPECT_EQ(again.plan, options.plan);
    EXPECT_EQ(again.actions.text(), options.actions.text());
  }
}

TEST(RunFile, KeepsTheReading) {
  for (Reading const reading : {Reading::strict, Reading::lenient, Reading::widening}) {
    RunFile file;
    file.script.reading = reading;
    EXPECT_EQ(readAgain(writtenAs(file)).script.reading, reading);
  }
}

TEST(RunFile, KeepsTheReadingOfAStep) {
  RunFile file;
  file.script.steps = {Step::load("a", "ip routing\n"), Step::load("b", "ip routing\n")};
  file.script.steps[1].reading = Reading::lenient;
  EXPECT_EQ(readAgain(writtenAs(file)).script.steps, file.script.steps);
  EXPECT_THAT(errorOfRunLine("{\"step\":\"load\",\"reading\":\"slow\"}"),
              StartsWith("run:3:1: expected strict, lenient or widening as member \"reading\""));
}

// What is read -------------------------------------------------------------------------

TEST(RunFile, IgnoresWhatItDoesNotKnow) {
  RunFile const file =
      readAgain("\n{\"run\":1,\"by\":\"x\"}\n \t\n"
                "{\"weather\":\"fine\"}\n"
                "{\"options\":{\"async\":true,\"color\":1},\"reading\":\"slow\"}\n"
                "{\"step\":\"check\",\"why\":[1]}\n"
                "{\"finding\":\"x\",\"is\":\"odd\"}\n"
                "{\"number\":1,\"time\":0.0,\"kind\":\"rumour\",\"operation\":\"x\"}\n"
                "{\"number\":2,\"time\":0.0,\"kind\":\"test\",\"operation\":\"x\",\"y\":1}\n");
  EXPECT_TRUE(file.script.options.async);
  EXPECT_EQ(file.script.reading, Reading::strict);
  EXPECT_THAT(file.script.steps, ElementsAre(Step::check()));
  EXPECT_THAT(file.found, ElementsAre(Irregularity{Irregularity::Kind::record, "x"}));
  ASSERT_THAT(file.journal, SizeIs(1));
  EXPECT_EQ(file.journal[0].number, 2U);
}

TEST(RunFile, NeedsItsVersion) {
  auto const errorOf = [](std::string text) {
    try {
      (void)readAgain(std::move(text));
    } catch (InputError const& error) {
      return std::string(error.what());
    }
    return std::string("no error");
  };
  EXPECT_EQ(errorOf("{\"run\":2}\n"), "run:1:1: expected a run of version 1, found '{\"run\":2}'");
  EXPECT_EQ(errorOf(""), "run:1:1: expected a line {\"run\":1}, found end of line");
  EXPECT_THAT(errorOf("\n{\"step\":\"check\"}\n"), StartsWith("run:2:1: expected a whole number"));
  EXPECT_THAT(errorOf("run\n"), StartsWith("run:1:1: expected "));
}

TEST(RunFile, RefusesStepsThatCannotBePerformed) {
  EXPECT_EQ(errorOfRunLine("{\"step\":\"jump\"}"),
            "run:3:1: expected a known step, found '{\"step\":\"jump\"}'");
  EXPECT_THAT(errorOfRunLine("{\"step\":7}"), StartsWith("run:3:1: expected a text as member"));
  EXPECT_THAT(errorOfRunLine("{\"step\":\"advance\"}"),
              StartsWith("run:3:1: expected a number as member \"seconds\""));
  for (char const* const seconds : {"-1.0", "1000001", "1e300"}) {
    EXPECT_THAT(errorOfRunLine(std::string("{\"step\":\"advance\",\"seconds\":") + seconds + "}"),
                StartsWith("run:3:1: expected 0 to 1000000 as member \"seconds\""));
  }
  EXPECT_EQ(errorOfRunLine("{\"step\":\"advance\",\"seconds\":1000000}"), "no error");
  for (std::string const member : {"times", "classes", "interfaces"}) {
    for (char const* const number : {"0", "1000001", "4294967297"}) {
      EXPECT_THAT(errorOfRunLine("{\"step\":\"rules\",\"" + member + "\":" + number + "}"),
                  StartsWith("run:3:1: expected 1 to 1000000 as member \"" + member + "\""));
    }
    EXPECT_EQ(errorOfRunLine("{\"step\":\"rules\",\"" + member + "\":1000000}"), "no error");
  }
}

TEST(RunFile, RefusesOtherText) {
  EXPECT_EQ(errorOfRunLine("[]"), "run:3:1: expected a JSON object, found '[]'");
  EXPECT_THAT(errorOfRunLine("{\"step\":check}"), StartsWith("run:3:9: expected "));
  EXPECT_THAT(errorOfRunLine("{\"options\":{\"faults\":[\"x\"]}}"),
              StartsWith("run:3:1: expected \"NAME=TEXT\" in member \"faults\""));
  EXPECT_THAT(errorOfRunLine("{\"options\":{\"plan\":\"addRul\"}}"),
              StartsWith("plan:1:1: expected "));
  EXPECT_THAT(errorOfRunLine("{\"options\":{\"actions\":\"police\"}}"), StartsWith("actions:1:"));
}

// What is recorded ---------------------------------------------------------------------

TEST(Recording, HasCallsAndStatuses) {
  RunFile const file = PolicyMapTestKit::record({.steps = {Step::load("edge.cfg", simplePolicy)}});
  EXPECT_THAT(file.found, IsEmpty());
  EXPECT_THAT(file.journal, Contains(Field(&JournalLine::operation, "commitPolicy")));
  EXPECT_THAT(file.journal, Contains(AllOf(Field(&JournalLine::kind, JournalEntry::Kind::status),
                                           Field(&JournalLine::operation, "programmed"))));
}

TEST(Recording, OfTheSameScriptIsTheSame) {
  Script const script = everyStep();
  RunFile const first = PolicyMapTestKit::record(script);
  RunFile const second = PolicyMapTestKit::record(script);
  EXPECT_EQ(firstDifference(first, second), std::nullopt);
  EXPECT_EQ(writtenAs(first), writtenAs(second));
}

TEST(Recording, CallsBackAfterEachStep) {
  std::vector<std::string> steps;
  std::vector<std::size_t> records;
  (void)PolicyMapTestKit::record(
      {.steps = {Step::load("edge.cfg", simplePolicy), {.kind = Step::Kind::detach}}},
      [&](Step const& step, ScriptRun& run) {
        steps.push_back(toText(step));
        std::size_t created = 0;
        for (Record const& record : run.lab().snapshot()) {
          created += record.created ? 1U : 0U;
        }
        records.push_back(created);
      });
  EXPECT_THAT(steps, ElementsAre("load edge.cfg", "detach"));
  EXPECT_THAT(records, ElementsAre(1, 0));
}

TEST(Recording, EndsAtAnException) {
  RunFile const file = PolicyMapTestKit::record(
      {.steps = {Step::load("bad.cfg", "no such line\n"), Step::load("edge.cfg", simplePolicy)}});
  ASSERT_THAT(file.found, SizeIs(1));
  EXPECT_EQ(file.found[0].kind, Irregularity::Kind::exception);
  EXPECT_THAT(file.found[0].text, StartsWith("load bad.cfg throws: bad.cfg:1:"));
  EXPECT_THAT(file.script.steps, SizeIs(2));
  EXPECT_THAT(file.journal, testing::Not(Contains(Field(&JournalLine::operation, "addRule"))));
}

TEST(Recording, HasFaultsThatAreNotMetUntilItsEnd) {
  RunFile const file = PolicyMapTestKit::record(
      {.steps = {Step::faults("addRule nth=9; commitPolicy nth=9 optional; createPolicy nth=1"),
                 Step::load("edge.cfg", simplePolicy)}});
  ASSERT_THAT(file.found, SizeIs(1));
  EXPECT_EQ(file.found[0].kind, Irregularity::Kind::finding);
  EXPECT_THAT(file.found[0].text, HasSubstr("addRule nth=9"));
}

TEST(Recording, OfARunIsWhatARecordingIs) {
  Script script;
  script.steps = {Step::load("edge.cfg", simplePolicy), Step::check()};
  LabOptions options = script.options;
  options.journalStatuses = true;
  ScriptRun run(options);
  for (Step const& step : script.steps) {
    run.perform(step);
  }
  EXPECT_EQ(writtenAs(PolicyMapTestKit::recordOf(script, run)),
            writtenAs(PolicyMapTestKit::record(script)));
}

// Differences --------------------------------------------------------------------------

RunFile fileOf(std::vector<std::string> const& operations,
               std::vector<std::string> const& findings) {
  RunFile file;
  for (std::string const& operation : operations) {
    file.journal.emplace_back();
    file.journal.back().operation = operation;
  }
  for (std::string const& finding : findings) {
    file.found.push_back({Irregularity::Kind::record, finding});
  }
  return file;
}

TEST(FirstDifference, NamesTheEntryOfTheJournal) {
  EXPECT_EQ(firstDifference(fileOf({"a", "b"}, {"f"}), fileOf({"a", "b"}, {"f"})), std::nullopt);
  EXPECT_EQ(firstDifference(fileOf({"a", "b"}, {}), fileOf({"a", "c"}, {"f"})),
            "entry 2 of the journal\n"
            "  was {\"number\":0,\"time\":0.0,\"kind\":\"call\",\"operation\":\"b\"}\n"
            "  is  {\"number\":0,\"time\":0.0,\"kind\":\"call\",\"operation\":\"c\"}");
  EXPECT_EQ(firstDifference(fileOf({"a"}, {}), fileOf({}, {})),
            "entry 1 of the journal\n"
            "  was {\"number\":0,\"time\":0.0,\"kind\":\"call\",\"operation\":\"a\"}\n"
            "  is  nothing more");
  EXPECT_THAT(firstDifference(fileOf({}, {}), fileOf({"a"}, {})).value_or(""),
              StartsWith("entry 1 of the journal\n  was nothing more\n  is  {"));
}

TEST(FirstDifference, NamesTheFinding) {
  EXPECT_EQ(firstDifference(fileOf({"a"}, {"f", "g"}), fileOf({"a"}, {"f", "h"})),
            "finding 2\n  was g\n  is  h");
  EXPECT_EQ(firstDifference(fileOf({}, {"f"}), fileOf({}, {})),
            "finding 1\n  was f\n  is  nothing more");
  EXPECT_EQ(firstDifference(fileOf({}, {}), fileOf({}, {"f"})),
            "finding 1\n  was nothing more\n  is  f");
}

}  // namespace
}  // namespace PolicyMapTestKit::test
