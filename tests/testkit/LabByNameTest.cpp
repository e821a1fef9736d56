// SPDX-License-Identifier: Apache-2.0
#include "testkit/LabByName.h"

#include "testkit/GoogleTest.h"
#include "testkit/Labs.h"
#include "testkit/SweepByName.h"
#include "testkit/runs/RunFile.h"

#include <Kor/ByName.h>
#include <Kor/Callable.h>

#include <gmock/gmock.h>

#include <sstream>
#include <string>
#include <vector>

namespace PolicyMapTestKit::test {
namespace {

using Kor::construct;
using Kor::GenericRef;
using testing::HasSubstr;

std::string textOf(GenericRef const& ref) {
  return testing::PrintToString(ref);
}

TEST(LabByName, FromTextToRecords) {
  GenericRef const lab = construct("PolicyMapTestKit::Lab", true, false, false);
  lab.call("load", simplePolicy);
  EXPECT_EQ(textOf(lab.call("rules", "P", "input")),
            "['P 10 permit tcp any any eq 80, action1 1']");
  EXPECT_THAT(textOf(lab.call("record", "P", "input")), HasSubstr("P/input ipv4"));
  EXPECT_THAT(textOf(lab.call("explain")), HasSubstr("P/input ipv4: programmed at Ethernet1"));
  EXPECT_THAT(textOf(lab.call("journal")), HasSubstr("6 t=0 commitPolicy P/input ipv4"));
  EXPECT_EQ(lab["helper"]["updateActionSupported"], true);
  EXPECT_EQ(lab["policyMaps"]["policyMapConfig"].size(), 1U);
}

TEST(LabByName, FaultsAndTime) {
  GenericRef const lab = construct("PolicyMapTestKit::Lab", false, false, false);
  lab.call("inject", "commitError", "full");
  lab.call("load", simplePolicy);
  EXPECT_THAT(textOf(lab.call("failure", "P", "input")), HasSubstr("full"));
  lab.call("clearFaults");
  lab.call("advance", 1.0);
  EXPECT_EQ(lab["now"], 1.0);
  EXPECT_THAT(textOf(lab.call("explain")), HasSubstr("programmed at Ethernet1"));
  EXPECT_THROW(lab.call("inject", "noError", "full"), Kor::RangeException);
}

TEST(LabByName, AsynchronousResults) {
  GenericRef const lab = construct("PolicyMapTestKit::Lab", false, false, true);
  lab.call("load", simplePolicy);
  EXPECT_THAT(textOf(lab.call("explain")), HasSubstr("waiting for the result of addIntfToPolicy"));
  lab.call("trigger");
  lab.call("trigger");
  lab.call("settle");
  EXPECT_THAT(textOf(lab.call("explain")), HasSubstr("programmed at Ethernet1"));
  EXPECT_THROW(lab.call("record", "Q", "input"), LookupError);
}

TEST(LabByName, PlansFaultsAndTellsWhatBecameOfThem) {
  GenericRef const lab = construct("PolicyMapTestKit::Lab", false, false, false);
  GenericRef const scope = lab.call("plan", "commitPolicy nth=1 text=full");
  lab.call("load", simplePolicy);
  EXPECT_THAT(textOf(scope.call("faults")), HasSubstr(R"("text":"full")"));
  EXPECT_EQ(textOf(scope.call("faults")), textOf(lab.call("faults")));
  scope.call("end");
  CollectedFindings const expected;
  GenericRef const unmet = lab.call("plan", "hwInit");
  lab.call("endPlans");
  EXPECT_THAT(textOf(lab.call("findings")), HasSubstr("unmet fault: hwInit"));
  EXPECT_THAT(textOf(lab.call("takeFindings")), HasSubstr("unmet fault: hwInit"));
  EXPECT_EQ(textOf(lab.call("findings")), "[]");
}

TEST(LabByName, HoldsAndReleasesResults) {
  GenericRef const lab = construct("PolicyMapTestKit::Lab", false, false, true);
  GenericRef const scope = lab.call("plan", "addIntfToPolicy hold once");
  lab.call("load", simplePolicy);
  lab.call("trigger");
  EXPECT_THAT(textOf(lab.call("heldResults")), HasSubstr(R"("number":1)"));
  lab.call("release", 1);
  EXPECT_EQ(textOf(lab.call("heldResults")), "[]");
}

TEST(LabByName, RecordsAndJournalAsJson) {
  GenericRef const lab = construct("PolicyMapTestKit::Lab", false, false, false);
  lab.call("load", simplePolicy);
  EXPECT_THAT(textOf(lab.call("records")), HasSubstr(R"("match":"permit tcp any any eq 80")"));
  EXPECT_THAT(textOf(lab.call("journalSince", 6)), HasSubstr("commitPolicy"));
  EXPECT_EQ(textOf(lab.call("check")), "[]");
}

TEST(LabByName, CallsAFunctionInPlaceOfOperations) {
  GenericRef const lab = construct("PolicyMapTestKit::Lab", false, false, false);
  std::vector<std::string> calls;
  auto const around = Kor::callable([&](Kor::GenericList const& args) -> Kor::GenericValue {
    std::string const operation = args[0].text().stdString();
    calls.push_back(operation + " " + std::to_string(args[1].list().size()));
    if (operation == "addRule") {
      return "no room";
    }
    return nullptr;
  });
  lab.call("aroundIs", Kor::GenericValue(around, false));
  lab.call("load", simplePolicy);
  EXPECT_THAT(calls, testing::Contains("createPolicy 2"));
  EXPECT_THAT(calls, testing::Contains("addRule 4"));
  EXPECT_THAT(textOf(lab.call("failure", "P", "input")), HasSubstr("no room"));
  lab.call("aroundIs", nullptr);
  lab.call("advance", 1.0);
  EXPECT_THAT(textOf(lab.call("explain")), HasSubstr("programmed at Ethernet1"));
}

TEST(LabByName, RefusesEverythingAfterItsEnd) {
  GenericRef const lab = construct("PolicyMapTestKit::Lab", false, false, false);
  lab.call("close");
  EXPECT_THROW(lab.call("settle"), Kor::RangeException);
  EXPECT_THROW(lab.call("loadFile", "x", "strict"), Kor::RangeException);
}

TEST(KitByName, MakesLabsWithOptions) {
  GenericRef const kit = construct("PolicyMapTestKit::Kit");
  GenericRef const lab = kit.call("lab", R"({"updateAction":true,"faults":["createError=no"]})");
  EXPECT_EQ(lab["helper"]["updateActionSupported"], true);
  EXPECT_EQ(lab["helper"]["createError"], "no");
  EXPECT_THROW(kit.call("lab", "{"), Kor::RangeException);
}

std::string runText() {
  std::ostringstream text;
  RunFile run;
  run.script.steps = {Step::load("p.cfg", simplePolicy)};
  write(text, run);
  return text.str();
}

TEST(KitByName, AWalkCallsBackAfterEachStep) {
  GenericRef const kit = construct("PolicyMapTestKit::Kit");
  int calls = 0;
  auto const counted = Kor::callable([&calls](Kor::GenericList const& /*args*/) {
    ++calls;
    return Kor::GenericValue(nullptr);
  });
  auto const walk = [&](Kor::Callable::Ptr const& onStep) {
    return textOf(
        kit.call("walk", runText(), 7, 5, Kor::Generic<Kor::Callable::Ptr>::value(onStep)));
  };
  EXPECT_EQ(walk(counted), walk(nullptr));
  EXPECT_GE(calls, 5 + 5) << "the steps, and again for the journal";
  auto const refusing = Kor::callable([](Kor::GenericList const& /*args*/) -> Kor::GenericValue {
    throw Kor::Exception("interrupted");
  });
  EXPECT_THAT([&] { (void)walk(refusing); }, testing::ThrowsMessage<Kor::Exception>("interrupted"));
}

TEST(KitByName, PerformsWalksAndSweeps) {
  GenericRef const kit = construct("PolicyMapTestKit::Kit");
  EXPECT_THAT(textOf(kit.call("perform", runText())), HasSubstr("commitPolicy"));
  EXPECT_THAT(textOf(kit.call("walk", runText(), 7, 5, nullptr)), HasSubstr("step"));
  GenericRef const sweep =
      kit.call("sweep", runText(), R"({"modes":["synchronous"],"shard":2,"shards":3})", nullptr);
  Kor::GenericValue const cases = sweep.call("cases");
  ASSERT_GT(cases.list().size(), 2U);
  for (Kor::GenericValue const& each : cases.list()) {
    EXPECT_THAT(textOf(sweep.call("run", each)), HasSubstr(R"("findings":[])"));
  }
}

TEST(KitByName, SweepsAFunction) {
  GenericRef const kit = construct("PolicyMapTestKit::Kit");
  int runs = 0;
  auto const scenario = Kor::callable([&](Kor::GenericList const& args) -> Kor::GenericValue {
    GenericRef(args[0]).call("load", simplePolicy);
    ++runs;
    return nullptr;
  });
  GenericRef const sweep =
      kit.call("sweep", R"({"run":1})", "", Kor::GenericValue(scenario, false));
  int const before = runs;
  EXPECT_GT(before, 0);
  sweep.call("run", "synchronous commitPolicy nth=1 before");
  EXPECT_EQ(runs, before + 1);
}

TEST(KitByName, KeepsTheNewestLinesOfTheTrace) {
  GenericRef const kit = construct("PolicyMapTestKit::Kit");
  kit.call("keepTrace", "PolicyMap/3", 2);
  GenericRef const lab = construct("PolicyMapTestKit::Lab", false, false, false);
  lab.call("load", simplePolicy);
  lab.call("detachAll");
  lab.call("attachAll");
  Kor::GenericValue const lines = kit.call("takeTrace");
  kit.call("keepTrace", "", 0);
  ASSERT_EQ(lines.list().size(), 2U);
  EXPECT_THAT(lines.list()[0].text().stdString(), HasSubstr("deletePolicy"));
  EXPECT_THROW(kit.call("keepTrace", "Nothing/3", 2), LookupError);
}

}  // namespace
}  // namespace PolicyMapTestKit::test
