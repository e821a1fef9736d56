// SPDX-License-Identifier: Apache-2.0
#include "testkit/sweep/Sweep.h"

#include "testkit/GoogleTest.h"
#include "testkit/Labs.h"
#include "testkit/StatusWatch.h"

#include <gmock/gmock.h>

#include <set>

namespace PolicyMapTestKit::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

std::vector<std::string> namesOf(std::vector<SweepCase> const& cases) {
  std::vector<std::string> names;
  for (SweepCase const& each : cases) {
    names.push_back(toText(each));
  }
  return names;
}

void loadSimple(Lab& lab) {
  load(lab, simplePolicy);
}

TEST(SweepCases, AreEveryCallInEveryWay) {
  std::vector<std::string> expected = {"synchronous"};
  for (char const* const operation :
       {"createPolicy", "commitPolicy", "addIntfToPolicy", "addRule"}) {
    for (char const* const effect : {"throws", "before", "after"}) {
      for (char const* const calls : {" nth=1 ", " from=1 "}) {
        expected.push_back(std::string("synchronous ") + operation + calls + effect);
      }
    }
  }
  Sweep const sweep(&loadSimple, {.modes = {AnswerMode::synchronous}});
  EXPECT_EQ(namesOf(sweep.cases()), expected);
}

TEST(SweepCases, OfAsynchronousHelpersDropResultsToo) {
  Sweep const sweep(&loadSimple, {.modes = {AnswerMode::asynchronous}});
  EXPECT_THAT(namesOf(sweep.cases()), Contains("asynchronous commitPolicy nth=1 drop"));
  EXPECT_THAT(namesOf(sweep.cases()), Contains("asynchronous addIntfToPolicy from=1 drop"));
  EXPECT_THAT(namesOf(sweep.cases()), Contains("asynchronous commitPolicy nth=1 delay=2"));
  EXPECT_THAT(namesOf(sweep.cases()), Contains("asynchronous commitPolicy nth=1 delay=30.5"));
  EXPECT_THAT(namesOf(sweep.cases()), testing::Not(Contains("asynchronous addRule nth=1 drop")));
}

TEST(SweepCases, ReachEveryOperation) {
  Sweep const sweep(
      [](Lab& lab) {
        load(lab, portRange);
        lab.load("policy-map P\n class P\n  set action1 2\n");
        lab.load("interface Ethernet2\n service-policy input P\n");
        {
          Kor::EventLoop::Scope const scope(lab.eventLoop());
          lab.requests()->countRequestIs({"P", "input"}, 1);
        }
        lab.settle();
        lab.load("ip access-list P\n 30 permit tcp any any eq 81\n");
        lab.load("interface Ethernet2\n no service-policy input P\n"
                 "interface Ethernet1\n no service-policy input P\n");
      },
      {.lab = {.updateAction = true}});
  std::set<std::string> reached;
  for (SweepCase const& each : sweep.cases()) {
    if (!each.faults.empty()) {
      reached.insert(each.faults.front().operations.front());
    }
  }
  std::vector<std::string> expected = operationNames();
  std::erase(expected, "hwInit");  // called before a plan can begin
  EXPECT_EQ(reached, (std::set<std::string>{expected.begin(), expected.end()}));
  SweepReport const report = sweep.runAll();
  EXPECT_THAT(report.failed(), IsEmpty());
  EXPECT_GE(report.injected(), report.results.size() - 3) << "every case but those without a fault";
}

TEST(SweepCases, OfAllShardsAreThoseOfTheWholeSweep) {
  std::vector<std::string> const whole = namesOf(Sweep(&loadSimple).cases());
  std::multiset<std::string> parts;
  for (std::size_t shard = 1; shard <= 3; ++shard) {
    std::vector<std::string> const part =
        namesOf(Sweep(&loadSimple, {.shard = shard, .shards = 3}).cases());
    EXPECT_GE(part.size(), whole.size() / 3);
    EXPECT_EQ(part.front(), whole[shard - 1]);
    parts.insert(part.begin(), part.end());
  }
  EXPECT_EQ(parts, (std::multiset<std::string>{whole.begin(), whole.end()}));
}

TEST(SweepCases, OfAShardThatDoesNotExistAreRefused) {
  EXPECT_THROW(Sweep(&loadSimple, {.shard = 0}), std::invalid_argument);
  EXPECT_THROW(Sweep(&loadSimple, {.shard = 5, .shards = 4}), std::invalid_argument);
  EXPECT_THROW(Sweep(&loadSimple, {.shards = 0}), std::invalid_argument);
  EXPECT_THROW(Sweep(&loadSimple, {.modes = {}}), std::invalid_argument);
}

TEST(SweepCases, OfPairsDependOnTheSeedAlone) {
  auto const pairs = [](std::uint64_t seed) {
    return namesOf(Sweep(&loadSimple, {.pairs = 20, .seed = seed}).cases());
  };
  EXPECT_THAT(pairs(1), SizeIs(20));
  EXPECT_THAT(pairs(1), testing::Each(HasSubstr("; ")));
  EXPECT_EQ(pairs(1), pairs(1));
  EXPECT_NE(pairs(1), pairs(2));
  EXPECT_THAT(sweep(&loadSimple, {.pairs = 50}).failed(), IsEmpty());
}

TEST(SweepCases, AreReadAsTheyAreWritten) {
  for (char const* const text :
       {"synchronous", "asynchronous addRule nth=3 before",
        "synchronous early addRule from=1 after",
        "pseudo-asynchronous commitPolicy from=1 drop; createPolicy nth=2 after"}) {
    EXPECT_EQ(toText(parseSweepCase(text)), text);
  }
  EXPECT_THAT([] { (void)parseSweepCase("later addRule"); },
              testing::ThrowsMessage<InputError>("case:1:1: expected synchronous, asynchronous or "
                                                 "pseudo-asynchronous, found 'later'"));
  EXPECT_THAT([] { (void)parseSweepCase("synchronous addRule nht=1"); },
              testing::ThrowsMessage<InputError>(HasSubstr("case:1:21: expected a word")));
}

// What is found --------------------------------------------------------------------------------

// The findings of one case of a scenario, without those of the run without a fault.
std::vector<std::string> findingsOf(Scenario scenario, std::string_view which) {
  CollectedFindings const none;
  Sweep const sweep(std::move(scenario), {.modes = {AnswerMode::synchronous}});
  std::vector<std::string> texts;
  for (Irregularity const& finding : sweep.run(parseSweepCase(which)).findings) {
    texts.push_back(finding.text);
  }
  return texts;
}

TEST(SweepFindings, ARuleThatIsLostInARetryIsFound) {
  auto const losing = [](Lab& lab) {
    lab.aroundIs([&lab, retries = 0](HelperCall& call, auto const& proceed) mutable {
      constexpr double soon = 100;
      bool const isRetry = call.operation == "addRule" && lab.now() > 0 && lab.now() < soon;
      bool const lost = isRetry && ++retries == 1;
      if (!lost) {
        proceed();
      }
    });
    load(lab, simplePolicy + "ip access-list P\n permit tcp any any eq 81\n"
                             " permit tcp any any eq 82\n");
  };
  EXPECT_THAT(findingsOf(losing, "synchronous"), IsEmpty());
  EXPECT_THAT(findingsOf(losing, "synchronous commitPolicy nth=1 after"),
              Contains("P/input ipv4: rule P 10 removed: permit tcp any any eq 80"));
  SweepReport const report = sweep(losing, {.modes = {AnswerMode::synchronous}});
  std::vector<SweepResult> const failed = report.failed();
  ASSERT_THAT(failed, testing::Not(IsEmpty()));
  EXPECT_THAT(failed.front().journal, Contains(HasSubstr("addRule P/input ipv4 P P 10")));
  std::ostringstream printed;
  printed << failed.front();
  EXPECT_THAT(printed.str(), HasSubstr(toText(failed.front().which) + ": P/input ipv4: rule"));
}

TEST(SweepFindings, APolicyThatIsLeftIsFound) {
  auto const keeping = [](Lab& lab) {
    lab.aroundIs([](HelperCall& call, auto const& proceed) {
      if (call.operation != "deletePolicy") {
        proceed();
      }
    });
    loadSimple(lab);
  };
  EXPECT_THAT(findingsOf(keeping, "synchronous"),
              ElementsAre("P/input ipv4 is left when everything is detached",
                          "leftover: P/input ipv4 is still created"));
}

TEST(SweepFindings, AWrongStatusIsFound) {
  auto const lying = [](Lab& lab) {
    loadSimple(lab);
    lab.status()
        ->policyMapStatus({"P", "input"})
        ->programmedIs(PolicyMap::ClassMapMatchOption::mac, true);
  };
  EXPECT_THAT(findingsOf(lying, "synchronous"),
              Contains("status of P/input mac: programmed, which it is not"));
  auto const silent = [](Lab& lab) {
    loadSimple(lab);
    lab.status()
        ->policyMapStatus({"P", "input"})
        ->programmedDel(PolicyMap::ClassMapMatchOption::ipv4);
  };
  EXPECT_THAT(findingsOf(silent, "synchronous"), Contains("status of P/input ipv4 does not exist"));
}

TEST(SweepFindings, ARecordThatIsNotCommittedIsFound) {
  auto const unfinished = [](Lab& lab) {
    lab.aroundIs([](HelperCall& call, auto const& proceed) {
      if (call.operation != "commitPolicy") {
        proceed();
      }
    });
    loadSimple(lab);
  };
  EXPECT_THAT(findingsOf(unfinished, "synchronous"),
              Contains("P/input ipv4 is created, but not committed, or not counted"));
}

TEST(SweepFindings, AWrongStatusOfAClassIsFound) {
  auto const lying = [](Lab& lab) {
    loadSimple(lab);
    lab.status()->policyMapStatus({"P", "input"})->classMapStatus("P")->programmedIs(false);
  };
  EXPECT_THAT(findingsOf(lying, "synchronous"),
              Contains("status of class P/input P: not what the records have"));
}

TEST(SweepFindings, TimeAndInterfacesOfWhatIsNotProgrammedAreFound) {
  auto const lying = [](Lab& lab) {
    loadSimple(lab);
    lab.status()
        ->policyMapStatus({"P", "input"})
        ->timeProgrammedIs(PolicyMap::ClassMapMatchOption::mac, 1);
  };
  EXPECT_THAT(findingsOf(lying, "synchronous"),
              Contains("status of P/input mac: time or interfaces of what is not programmed"));
}

TEST(SweepFindings, ARefusalThatIsLostIsFound) {
  EXPECT_THAT(findingsOf(
                  [lost = 0](Lab& lab) mutable {
                    load(lab, simplePolicy + "class-map match-any P\n match class-map P\n");
                    if (++lost > 2) {  // not in the runs that are compared with
                      lab.status()->policyMapStatus({"P", "input"})->failureDelAll();
                    }
                  },
                  "synchronous"),
              Contains(HasSubstr("no status of P/input ipv4: not programmed")));
}

TEST(SweepFindings, WhatIsPendingIsFound) {
  auto const waiting = [](Lab& lab) {
    lab.aroundIs([](HelperCall& call, auto const& proceed) {
      proceed();
      if (call.operation == "commitPolicy") {
        call.error = "never";
      }
    });
    loadSimple(lab);
  };
  EXPECT_THAT(findingsOf(waiting, "synchronous"), Contains("something is still to be done"));
}

TEST(SweepFindings, AnExceptionOfTheScenarioIsOne) {
  auto const throwing = [](Lab& lab) {
    loadSimple(lab);
    if (!lab.record("P").created) {
      throw std::runtime_error("not created");
    }
  };
  EXPECT_THAT(findingsOf(throwing, "synchronous addRule nth=1 before"),
              Contains("the scenario throws: not created"));
  EXPECT_THROW(Sweep([](Lab& lab) { lab.load("no such line"); }), InputError);
}

TEST(SweepFindings, AFailedAssertionIsOne) {
  auto const asserting = [](Lab& lab) {
    loadSimple(lab);
    Kor::EventLoop::Scope const scope(lab.eventLoop());
    if (!lab.record("P").created) {
      lab.helper()->deletePolicy(lab.machine()->policyMapSm({"P", "input"})->policyCommonData(),
                                 PolicyMap::ClassMapMatchOption::ipv4);
    }
  };
  EXPECT_THAT(findingsOf(asserting, "synchronous addRule nth=1 before"),
              Contains(HasSubstr("assertion \"data->created()\" failed")));
}

TEST(SweepFindings, AFaultThatIsNotMetIsOne) {
  Sweep const sweep(&loadSimple);
  EXPECT_THAT(sweep.run(parseSweepCase("synchronous addRule nth=2")).findings,
              ElementsAre(Irregularity{Irregularity::Kind::unmet, "the fault was not met"}));
}

TEST(SweepFindings, DoNotFailTheRunningTest) {
  CollectedFindings const findings;
  auto const keeping = [](Lab& lab) {
    lab.aroundIs([](HelperCall& call, auto const& proceed) {
      if (call.operation != "deletePolicy") {
        proceed();
      }
    });
    loadSimple(lab);
  };
  EXPECT_THAT(sweep(keeping).failed(), testing::Not(IsEmpty())) << "a leftover, which is a finding";
  EXPECT_THAT(findings.all(), IsEmpty());
}

// An observer that takes away each new status, so that those after it are told of nothing.
class Remover final : public PolicyMap::PolicyMapTypeStatus::NotifieeConst {
 public:
  explicit Remover(PolicyMap::PolicyMapTypeStatus* status)
      : NotifieeConst(status), status_(status) {}
  void onPolicyMapStatus(PolicyMap::PolicyMapSmKey const& key) override {
    if (status_->policyMapStatus(key)) {
      status_->policyMapStatusDel(key);
    }
  }

 private:
  PolicyMap::PolicyMapTypeStatus* status_;
};

// Only the first lab parses the texts.
TEST(ScenarioOfAScript, DoesTheSameInEachLab) {
  Script script;
  script.steps = {Step::load("edge.cfg", simplePolicy),
                  {.kind = Step::Kind::detach},
                  Step::load("edit.cfg", "ip access-list P\n permit udp any any\n"),
                  {.kind = Step::Kind::attach},
                  Step::advance(1)};
  Scenario const scenario = scenarioOf(script);
  Lab first;
  Lab second;
  scenario(first);
  scenario(second);
  EXPECT_EQ(second.journal().lines(), first.journal().lines());
  EXPECT_THAT(first.journal().lines(), testing::Contains(testing::HasSubstr("load edit.cfg")));
  EXPECT_EQ(second.snapshot(), first.snapshot());
  EXPECT_EQ(recordOf(second, "P").rules.size(), 1U) << "attaching puts back what was there";
}

TEST(StatusWatch, TellsOfNotificationsWithoutAChange) {
  auto const status = Kor::make<PolicyMap::PolicyMapTypeStatus>();
  StatusWatch const regular(status);
  PolicyMap::PolicyMapSmKey const key("p", "input");
  Kor::Ptr<PolicyMap::PolicyMapStatus> const policy = status->policyMapStatusIs(key);
  policy->programmedIs(PolicyMap::ClassMapMatchOption::ipv4, true);
  policy->timeProgrammedIs(PolicyMap::ClassMapMatchOption::ipv4, 1);
  policy->appliedIntfIs({PolicyMap::ClassMapMatchOption::ipv4, Vorel::IntfId("Ethernet1")}, true);
  policy->errorIs("x");
  status->policyMapStatusDel(key);
  EXPECT_THAT(regular.irregular(), IsEmpty());
  Kor::Ptr<Remover> const remover = Kor::make<Remover>(status.get());
  StatusWatch const watch(status);
  status->policyMapStatusIs(key);
  EXPECT_THAT(watch.irregular(), Contains("status of p/input was announced without a change"));
}

}  // namespace
}  // namespace PolicyMapTestKit::test
