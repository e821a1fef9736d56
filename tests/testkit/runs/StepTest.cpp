// SPDX-License-Identifier: Apache-2.0
#include "testkit/runs/Step.h"

#include "testkit/Labs.h"
#include "testkit/Matchers.h"
#include "testkit/Printing.h"
#include "testkit/text/FilterSetGenerator.h"

#include <gmock/gmock.h>

#include <limits>

namespace PolicyMapTestKit::test {
namespace {

using PolicyMap::ClassMapMatchOption;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::ThrowsMessage;

constexpr std::array stepKinds{
    Step::Kind::load,    Step::Kind::rules, Step::Kind::inject,  Step::Kind::faults,
    Step::Kind::end,     Step::Kind::clear, Step::Kind::advance, Step::Kind::trigger,
    Step::Kind::release, Step::Kind::check, Step::Kind::detach,  Step::Kind::attach,
};

void doStep(Lab& lab, Step const& step) {
  perform(lab, step, Reading::strict);
}

bool isProgrammed(Lab const& lab, std::string_view policy,
                  std::optional<ClassMapMatchOption> option = ClassMapMatchOption::ipv4,
                  std::string_view direction = "input") {
  for (Record const& record : lab.snapshot()) {
    if (record.policy == policy && record.direction == direction &&
        (!option || record.option == *option)) {
      return record.created;
    }
  }
  return false;
}

TEST(Step, EachKindHasAName) {
  std::vector<std::string> names;
  for (Step::Kind const kind : stepKinds) {
    names.emplace_back(nameOf(kind));
    EXPECT_EQ(stepKindOf(nameOf(kind)), kind);
  }
  EXPECT_THAT(names, ElementsAre("load", "rules", "inject", "faults", "end", "clear", "advance",
                                 "trigger", "release", "check", "detach", "attach"));
  EXPECT_EQ(stepKindOf("jump"), std::nullopt);
  EXPECT_EQ(stepKindOf(""), std::nullopt);
}

TEST(Step, IsPrintedWithItsArgument) {
  EXPECT_EQ(toText(Step::load("edge.cfg", "ip routing\n")), "load edge.cfg");
  EXPECT_EQ(toText(Step{.kind = Step::Kind::rules, .name = "f", .text = "x"}), "rules f");
  EXPECT_EQ(toText(Step{.kind = Step::Kind::inject, .text = "commitError=full"}),
            "inject commitError=full");
  EXPECT_EQ(toText(Step::faults("addRule nth=3")), "faults addRule nth=3");
  EXPECT_EQ(toText(Step::advance(5)), "advance 5");
  EXPECT_EQ(toText(Step::advance(0.5)), "advance 0.5");
  EXPECT_EQ(toText(Step{.kind = Step::Kind::trigger}), "trigger");
  EXPECT_EQ(toText(Step{.kind = Step::Kind::trigger, .times = 3}), "trigger 3");
  EXPECT_EQ(toText(Step{.kind = Step::Kind::release}), "release");
  EXPECT_EQ(toText(Step{.kind = Step::Kind::release, .text = "2"}), "release 2");
  EXPECT_EQ(toText(Step{.kind = Step::Kind::end}), "end");
  EXPECT_EQ(toText(Step{.kind = Step::Kind::end, .text = "addRule"}), "end addRule");
  for (Step::Kind const kind :
       {Step::Kind::clear, Step::Kind::check, Step::Kind::detach, Step::Kind::attach}) {
    EXPECT_EQ(toText(Step{.kind = kind, .text = "not printed"}), nameOf(kind));
  }
}

TEST(Step, LoadEditsWhatIsConfigured) {
  Lab lab;
  doStep(lab, Step::load("edge.cfg", simplePolicy));
  EXPECT_THAT(PolicyMapTestKit::test::rulesOf(recordOf(lab, "P")), SizeIs(1));
  doStep(lab, Step::load("edit.cfg", "ip access-list P\n 20 permit tcp any any eq 81\n"));
  EXPECT_THAT(PolicyMapTestKit::test::rulesOf(recordOf(lab, "P")), SizeIs(2));
}

TEST(Step, LoadReadsAsItIsTold) {
  Step const step = Step::load("edge.cfg", "no such line\n" + simplePolicy);
  Lab lab;
  EXPECT_THAT([&] { perform(lab, step, Reading::strict); },
              ThrowsMessage<InputError>(HasSubstr("edge.cfg:1:")));
  EXPECT_THAT(lab.snapshot(), IsEmpty());
  perform(lab, step, Reading::lenient);
  EXPECT_TRUE(isProgrammed(lab, "P"));
}

TEST(Step, RulesReplaceWhatIsConfigured) {
  Lab lab;
  load(lab, simplePolicy);
  doStep(lab, {.kind = Step::Kind::rules,
               .name = "f",
               .text = generateFilterSet(6, 1, Family::ip4),
               .layout = {.classes = 3, .interfaces = 2}});
  EXPECT_FALSE(isProgrammed(lab, "P"));
  Record const record = recordOf(lab, "rules");
  EXPECT_THAT(PolicyMapTestKit::test::rulesOf(record), SizeIs(6));
  EXPECT_EQ(record.rules.back().key.className(), "rules-3");
  EXPECT_THAT(interfacesOf(record), ElementsAre("Ethernet1", "Ethernet2"));
}

TEST(Step, RulesNeedARuleForEachClass) {
  Lab lab;
  Step step{.kind = Step::Kind::rules,
            .name = "f",
            .text = generateFilterSet(2, 1, Family::ip4),
            .layout = {.classes = 3}};
  EXPECT_THAT([&] { doStep(lab, step); },
              ThrowsMessage<InputError>("f: expected a rule for each of the 3 classes, found '2'"));
  step.layout.classes = 2;
  EXPECT_NO_THROW(doStep(lab, step));
}

TEST(Step, RulesReadPortsAsTheyAreTold) {
  Lab lab;
  Step step{.kind = Step::Kind::rules,
            .name = "f",
            .text = "@1.2.3.4/32\t0.0.0.0/0\t0 : 65535\t80 : 80\t0x01/0xff\t0x0/0x0\n"};
  EXPECT_THAT([&] { doStep(lab, step); }, ThrowsMessage<InputError>(HasSubstr("f:1:")));
  step.portRanges = PortRanges::onAnyProtocol;
  doStep(lab, step);
  EXPECT_THAT(PolicyMapTestKit::test::rulesOf(recordOf(lab, "rules")), SizeIs(1));
}

TEST(Step, InjectSetsAnErrorAttributeAndClearClearsIt) {
  Lab lab;
  doStep(lab, {.kind = Step::Kind::inject, .text = "commitError=table=full"});
  load(lab, simplePolicy);
  EXPECT_EQ(lab.failure("P").error(), "table=full");
  doStep(lab, {.kind = Step::Kind::inject, .text = "commitError="});
  lab.advance(std::chrono::seconds(60));
  EXPECT_EQ(lab.failure("P"), PolicyMap::PolicyFailure());
  doStep(lab, {.kind = Step::Kind::inject, .text = "commitError=again"});
  load(lab, "ip access-list P\n 20 permit tcp any any eq 81\n");
  EXPECT_EQ(lab.failure("P").error(), "again");
  doStep(lab, {.kind = Step::Kind::clear});
  lab.advance(std::chrono::seconds(60));
  EXPECT_EQ(lab.failure("P"), PolicyMap::PolicyFailure());
}

TEST(Step, InjectNeedsAnAttributeThatExists) {
  Lab lab;
  EXPECT_THROW(doStep(lab, {.kind = Step::Kind::inject, .text = "noError=x"}), Kor::RangeException);
  EXPECT_THROW(doStep(lab, {.kind = Step::Kind::inject}), Kor::RangeException);
}

TEST(Step, AdvanceLetsTimePass) {
  Lab lab;
  doStep(lab, Step::advance(2.5));
  EXPECT_EQ(lab.now(), 2.5);
  EXPECT_THROW(doStep(lab, Step::advance(-1)), std::invalid_argument);
}

TEST(Step, TriggerDeliversResultsOneByOne) {
  Lab lab({.async = true});
  load(lab, simplePolicy);
  doStep(lab, {.kind = Step::Kind::trigger});
  EXPECT_THAT(lab.explain(), Not(AllProgrammed()));
  doStep(lab, {.kind = Step::Kind::trigger, .times = 3});
  EXPECT_THAT(lab.explain(), AllProgrammed());
  auto const triggers = [&] {
    std::size_t count = 0;
    for (JournalEntry const& entry : lab.journal()) {
      count += entry.operation == "trigger" ? 1U : 0U;
    }
    return count;
  };
  EXPECT_EQ(triggers(), 4U);
}

TEST(Step, ReleaseDeliversAllThatIsHeld) {
  Lab lab({.async = true, .asyncDelay = 0});
  FaultScope const faults = lab.plan("addIntfToPolicy hold first=2");
  load(lab, simplePolicy);
  lab.advance(std::chrono::seconds(32));
  ASSERT_THAT(lab.heldResults(), SizeIs(2));
  doStep(lab, {.kind = Step::Kind::release});
  EXPECT_THAT(lab.heldResults(), IsEmpty());
  EXPECT_NO_THROW(doStep(lab, {.kind = Step::Kind::release})) << "nothing is held";
}

TEST(Step, ReleaseDeliversTheResultOfItsNumber) {
  Lab lab({.async = true, .asyncDelay = 0});
  FaultScope const faults = lab.plan("addIntfToPolicy hold first=2");
  load(lab, simplePolicy);
  lab.advance(std::chrono::seconds(32));
  ASSERT_THAT(lab.heldResults(), SizeIs(2));
  auto const second = std::to_string(lab.heldResults()[1].number);
  doStep(lab, {.kind = Step::Kind::release, .text = second});
  EXPECT_THAT(lab.heldResults(), SizeIs(1));
  EXPECT_THROW(doStep(lab, {.kind = Step::Kind::release, .text = second}), std::out_of_range);
  for (char const* const wrong : {"second", "1x", "-1", "99999999999999999999"}) {
    EXPECT_THROW(doStep(lab, {.kind = Step::Kind::release, .text = wrong}), std::invalid_argument);
  }
  EXPECT_THAT(lab.heldResults(), SizeIs(1));
}

TEST(Step, LoadHasAReadingOfItsOwn) {
  Lab lab;
  Step step = Step::load("edge.cfg", "unknown\nip routing\n");
  EXPECT_THROW(perform(lab, step, Reading::strict), InputError);
  step.reading = Reading::lenient;
  EXPECT_NO_THROW(perform(lab, step, Reading::strict));
  step.reading = Reading::strict;
  EXPECT_THROW(perform(lab, step, Reading::lenient), InputError);
}

TEST(Step, FaultsAndChecksNeedARun) {
  Lab lab;
  EXPECT_THAT([&] { doStep(lab, {.kind = Step::Kind::end}); },
              ThrowsMessage<std::invalid_argument>("end is a step of a ScriptRun"));
  EXPECT_THAT([&] { doStep(lab, Step::faults("addRule")); },
              ThrowsMessage<std::invalid_argument>("faults is a step of a ScriptRun"));
  EXPECT_THAT([&] { doStep(lab, Step::check()); },
              ThrowsMessage<std::invalid_argument>("check is a step of a ScriptRun"));
}

TEST(Step, LinesAreThoseOfPolicyTextThatAreNotEmpty) {
  Script script;
  EXPECT_EQ(linesOf(script), 0U);
  script.steps = {Step::load("a", "ip routing\n\n \t\nip access-list P\n permit ip any any"),
                  Step::faults("addRule\naddRule"),
                  Step{.kind = Step::Kind::rules, .text = "x\ny\n"}, Step::load("b", "\nx\r\n")};
  EXPECT_EQ(linesOf(script), 4U);
}

// Attachments ---------------------------------------------------------------------------

std::string const attachedInAllWays =
    simplePolicy + "ip access-list G\n permit udp any any\n"
                   "interface Ethernet2\n ip access-group G in\n service-policy output P\n"
                   "class-map type inspect match-any Z\n match access-group name G\n"
                   "policy-map type inspect Z\n class type inspect Z\n  inspect\n"
                   "zone security in\nzone security out\n"
                   "interface Ethernet3\n zone-member security in\n"
                   "interface Ethernet4\n zone-member security out\n"
                   "zone-pair security p source in destination out\n"
                   " service-policy type inspect Z\n";

std::vector<std::string> createdIn(Lab const& lab) {
  std::vector<std::string> names;
  for (Record const& record : lab.snapshot()) {
    if (record.created) {
      names.push_back(record.name());
    }
  }
  return names;
}

TEST(Attachments, AreTakenAwayAndPutBack) {
  Lab lab;
  load(lab, attachedInAllWays);
  std::vector<std::string> const before = createdIn(lab);
  EXPECT_THAT(before, testing::IsSupersetOf({"P/input ipv4", "P/output ipv4", "Z/input ipv4"}));
  EXPECT_THAT(before, testing::Contains(HasSubstr("G")));
  Snapshot const records = lab.snapshot();
  doStep(lab, {.kind = Step::Kind::detach});
  EXPECT_THAT(createdIn(lab), IsEmpty());
  EXPECT_THAT(lab.findings(), IsEmpty());
  doStep(lab, {.kind = Step::Kind::attach});
  EXPECT_EQ(createdIn(lab), before);
  EXPECT_EQ(
      PolicyMapTestKit::test::rulesOf(recordOf(lab, "Z")),
      PolicyMapTestKit::test::rulesOf(records.record("Z", "input", ClassMapMatchOption::ipv4)));
  EXPECT_EQ(interfacesOf(recordOf(lab, "P")), std::vector<std::string>{"Ethernet1"});
}

TEST(Attachments, WithoutADetachAreNotTouched) {
  Lab lab;
  load(lab, simplePolicy);
  lab.attachAll();
  EXPECT_EQ(recordOf(lab, "P").createCount, 1U);
  lab.detachAll();
  lab.attachAll();
  load(lab, "interface Ethernet1\n no service-policy input P\n");
  lab.attachAll();
  EXPECT_FALSE(isProgrammed(lab, "P")) << "a detach is undone once";
}

TEST(Attachments, OfALabWithoutAnyAreNone) {
  Lab lab;
  lab.detachAll();
  lab.attachAll();
  EXPECT_THAT(lab.snapshot(), IsEmpty());
  EXPECT_THAT(lab.journal().lines(),
              ElementsAre("1 t=0 hwInit", "2 t=0 [detach]", "3 t=0 [attach]"));
}

TEST(Attachments, AreAsBeforeTheLastDetach) {
  Lab lab;
  load(lab, simplePolicy);
  lab.detachAll();
  lab.detachAll();
  lab.attachAll();
  EXPECT_FALSE(isProgrammed(lab, "P")) << "the second detach took nothing away";
}

// Statuses in the journal ---------------------------------------------------------------

std::vector<std::string> statusesIn(Journal const& journal) {
  std::vector<std::string> lines;
  for (JournalEntry const& entry : journal) {
    if (entry.kind == JournalEntry::Kind::status) {
      lines.push_back(std::string(entry.operation) + " " + describe(*entry.policy) +
                      (entry.option ? " " + toText(*entry.option) : "") + ": " +
                      entry.text.stdString());
    }
  }
  return lines;
}

TEST(JournalStatuses, AreOffUnlessAskedFor) {
  Lab lab;
  load(lab, simplePolicy);
  EXPECT_THAT(statusesIn(lab.journal()), IsEmpty());
}

TEST(JournalStatuses, AreInTheOrderInWhichTheyChange) {
  Lab lab({.journalStatuses = true});
  lab.inject({"commitError", "table full"});
  load(lab, simplePolicy);
  lab.clearFaults();
  lab.advance(std::chrono::seconds(60));
  load(lab, "interface Ethernet1\n no service-policy input P\n");
  EXPECT_THAT(statusesIn(lab.journal()),
              ElementsAre("status P/input: exists",
                          "failure P/input ipv4: commitPolicy: table full",
                          "error P/input: table full", "programmed P/input ipv4: yes",
                          "timeProgrammed P/input ipv4: 1 s", "appliedIntf P/input ipv4: Ethernet1",
                          "failure P/input ipv4: no failure",
                          "error P/input: ", "programmed P/input ipv4: no",
                          "timeProgrammed P/input ipv4: ", "no appliedIntf P/input ipv4: Ethernet1",
                          "status P/input: is gone"));
}

}  // namespace
}  // namespace PolicyMapTestKit::test
