// SPDX-License-Identifier: Apache-2.0
#include "testkit/runs/Recovery.h"

#include "testkit/GoogleTest.h"
#include "testkit/Labs.h"
#include "testkit/runs/ScriptRun.h"

#include <gmock/gmock.h>

namespace PolicyMapTestKit::test {
namespace {

using PolicyMap::ClassMapMatchOption;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using IrregularityKind = Irregularity::Kind;

std::string const threeRules = simplePolicy + "ip access-list P\n permit tcp any any eq 81\n"
                                              " permit tcp any any eq 82\n";

Reference referenceOfText(std::string const& text) {
  Lab lab;
  load(lab, text);
  return referenceOf(lab);
}

TEST(Irregularity, EachKindHasAName) {
  std::vector<std::string> names;
  for (std::uint8_t kind = 0; kind <= static_cast<std::uint8_t>(IrregularityKind::unmet); ++kind) {
    names.emplace_back(nameOf(static_cast<IrregularityKind>(kind)));
    EXPECT_EQ(irregularityKindOf(names.back()), static_cast<IrregularityKind>(kind));
  }
  EXPECT_THAT(names, ElementsAre("record", "status", "pending", "notification", "finding",
                                 "assertion", "exception", "unmet"));
  EXPECT_EQ(irregularityKindOf("odd"), std::nullopt);
}

TEST(Reference, HasStatusesOfPoliciesAndClasses) {
  Reference const reference = referenceOfText(simplePolicy);
  EXPECT_EQ(reference.records.size(), 1U);
  EXPECT_THAT(reference.statuses,
              ElementsAre("P/input ipv4: programmed at Ethernet1", "class P/input P: programmed"));
}

TEST(Reference, HasNoHistory) {
  Lab lab;
  load(lab, simplePolicy);
  load(lab, "ip access-list P\n 20 permit tcp any any eq 81\n");
  load(lab, "ip access-list P\n no 20\n");
  ASSERT_GT(recordOf(lab, "P").commitCount, 1U);
  EXPECT_EQ(referenceOf(lab).records, referenceOfText(simplePolicy).records);
}

TEST(Reference, HasNoEmptyRecords) {
  Lab lab;
  load(lab, simplePolicy);
  lab.detachAll();
  EXPECT_THAT(referenceOf(lab).records, IsEmpty());
}

TEST(Reference, OfSettingsIsOfALabWithoutFaults) {
  Lab lab;
  load(lab, threeRules);
  Reference const reference = referenceOf(
      lab.configuration().settings(),
      {.async = true, .faults = {{"commitError", "full"}}, .plan = parseFaultPlan("addRule")});
  EXPECT_EQ(reference.records, referenceOf(lab).records);
  EXPECT_EQ(reference.statuses, referenceOf(lab).statuses);
}

TEST(Reference, OfSettingsIsOfALabWithTheCapabilities) {
  Lab lab;
  load(lab, portRange);
  EXPECT_NE(
      referenceOf(lab.configuration().settings(), {.denyRules = false, .ipLists = false}).records,
      referenceOf(lab).records);
}

TEST(Comparison, OfARegularLabFindsNothing) {
  Lab lab;
  load(lab, threeRules);
  EXPECT_THAT(compare(lab, referenceOf(lab)), IsEmpty());
  EXPECT_THAT(compare(lab, referenceOfText(threeRules)), IsEmpty());
  EXPECT_THAT(checkStatuses(lab), IsEmpty());
}

TEST(Comparison, FindsALostRule) {
  Lab lab;
  lab.aroundIs([calls = 0](HelperCall& call, auto const& proceed) mutable {
    bool const lost = call.operation == "addRule" && ++calls == 2;
    if (!lost) {
      proceed();
    }
  });
  load(lab, threeRules);
  EXPECT_THAT(
      compare(lab, referenceOfText(threeRules)),
      ElementsAre(Irregularity{IrregularityKind::record,
                               "P/input ipv4: rule P 20 removed: permit tcp any any eq 81"}));
}

TEST(Comparison, FindsWhatIsMoreThanInTheReference) {
  Lab lab;
  load(lab, simplePolicy);
  EXPECT_THAT(
      compare(lab, Reference()),
      testing::IsSupersetOf(
          {Irregularity{IrregularityKind::status,
                        "status of P/input ipv4: programmed at Ethernet1, unlike in a new lab"},
           Irregularity{IrregularityKind::status,
                        "status of class P/input P: programmed, unlike in a new lab"}}));
  EXPECT_THAT(compare(lab, Reference()),
              Contains(testing::Field(&Irregularity::kind, IrregularityKind::record)));
}

TEST(Comparison, FindsWhatIsMissing) {
  Lab lab;
  EXPECT_THAT(
      compare(lab, referenceOfText(simplePolicy)),
      testing::IsSupersetOf(
          {Irregularity{IrregularityKind::status,
                        "no status of P/input ipv4: programmed at Ethernet1"},
           Irregularity{IrregularityKind::status, "no status of class P/input P: programmed"}}));
}

TEST(Comparison, FindsALostCommit) {
  Lab lab;
  lab.aroundIs([](HelperCall& call, auto const& proceed) {
    if (call.operation != "commitPolicy") {
      proceed();
    }
  });
  load(lab, simplePolicy);
  EXPECT_THAT(compare(lab, referenceOfText(simplePolicy)),
              Contains(Irregularity{IrregularityKind::record,
                                    "P/input ipv4 is created, but not committed, or not counted"}));
}

TEST(Comparison, FindsWhatIsPending) {
  Lab lab;
  lab.inject({"commitError", "never"});
  load(lab, simplePolicy);
  EXPECT_THAT(compare(lab, Reference()),
              Contains(Irregularity{IrregularityKind::pending, "something is still to be done"}));
}

TEST(Comparison, FindsWrongStatuses) {
  Lab lab;
  load(lab, simplePolicy);
  Reference const reference = referenceOf(lab);
  auto const status = lab.status()->policyMapStatus({"P", "input"});
  status->programmedIs(ClassMapMatchOption::mac, true);
  EXPECT_THAT(compare(lab, reference),
              Contains(Irregularity{IrregularityKind::status,
                                    "status of P/input mac: programmed, which it is not"}));
  EXPECT_THAT(checkStatuses(lab),
              ElementsAre(Irregularity{IrregularityKind::status,
                                       "status of P/input mac: programmed, which it is not"}));
  status->programmedDel(ClassMapMatchOption::mac);
  status->programmedIs(ClassMapMatchOption::ipv4, false);
  status->failureIs(ClassMapMatchOption::ipv4, {"full", "commitPolicy", {}, {}});
  EXPECT_THAT(compare(lab, reference),
              Contains(Irregularity{IrregularityKind::status,
                                    "status of P/input ipv4: not programmed, which it is"}));
}

TEST(Comparison, FindsAStatusThatIsMissing) {
  Lab lab;
  load(lab, simplePolicy);
  Reference const reference = referenceOf(lab);
  lab.status()->policyMapStatusDel({"P", "input"});
  EXPECT_THAT(
      compare(lab, reference),
      Contains(Irregularity{IrregularityKind::status, "status of P/input ipv4 does not exist"}));
}

TEST(Comparison, FindsAWrongStatusOfAClass) {
  Lab lab;
  load(lab, simplePolicy);
  Reference const reference = referenceOf(lab);
  lab.status()->policyMapStatus({"P", "input"})->classMapStatus("P")->programmedIs(false);
  EXPECT_THAT(
      compare(lab, reference),
      testing::IsSupersetOf(
          {Irregularity{IrregularityKind::status,
                        "status of class P/input P: not what the records have"},
           Irregularity{IrregularityKind::status, "no status of class P/input P: programmed"}}));
}

TEST(Comparison, FindsOtherInterfacesThanThoseOfTheRecord) {
  Lab lab;
  load(lab, simplePolicy);
  Reference const reference = referenceOf(lab);
  lab.status()
      ->policyMapStatus({"P", "input"})
      ->appliedIntfIs({ClassMapMatchOption::ipv4, Vorel::IntfId("Ethernet2")}, true);
  EXPECT_THAT(
      compare(lab, reference),
      Contains(Irregularity{
          IrregularityKind::status,
          "status of P/input ipv4: not that of a policy that is programmed at its interfaces"}));
}

// What is found about interfaces after policy-map P has been programmed at one more.
std::vector<std::string> obstaclesAt(std::string const& policy, char const* intf,
                                     std::string const& settings,
                                     ClassMapMatchOption option = ClassMapMatchOption::ipv4) {
  Lab lab;
  PolicyMap::PolicyMapSmCommonData::PtrConst common;
  lab.aroundIs([&](HelperCall& call, auto const& proceed) {
    if (call.policy != nullptr) {
      common = *call.policy;
    }
    proceed();
  });
  load(lab, policy + "interface " + intf + "\n" + settings);
  lab.helper()->addIntfToPolicy(common, Vorel::IntfId(intf), option);
  lab.helper()->commitPolicy(common, option);
  std::vector<std::string> texts;
  for (Irregularity const& each : compare(lab, referenceOf(lab))) {
    if (each.kind == IrregularityKind::record) {
      texts.push_back(each.text);
    }
  }
  return texts;
}

std::string policyOfFamily(std::string const& family, std::string const& rule) {
  return family + " access-list P\n " + rule + "\nclass-map match-any P\n match " + family +
         " access-group P\npolicy-map P\n class P\ninterface Ethernet1\n service-policy input P\n";
}

TEST(Comparison, FindsInterfacesWhereTheRulesCannotBe) {
  EXPECT_THAT(obstaclesAt(simplePolicy, "Ethernet2", " shutdown\n"),
              ElementsAre("P/input ipv4 is programmed at Ethernet2, which is shut down"));
  EXPECT_THAT(obstaclesAt(simplePolicy, "Ethernet2", " ipv6 address 2001:db8::1/64\n"),
              ElementsAre("P/input ipv4 is programmed at Ethernet2, which has no IPv4 address"));
  EXPECT_THAT(obstaclesAt(simplePolicy, "Ethernet2", " no switchport\n"),
              ElementsAre("P/input ipv4 is programmed at Ethernet2, which has no IPv4 address"));
  EXPECT_THAT(obstaclesAt(policyOfFamily("ipv6", "permit ipv6 any any"), "Ethernet2",
                          " ip address 192.0.2.1/24\n", ClassMapMatchOption::ipv6),
              ElementsAre("P/input ipv6 is programmed at Ethernet2, which has no IPv6 address"));
  EXPECT_THAT(obstaclesAt(policyOfFamily("mac", "permit any any"), "Vlan10",
                          " ip address 192.0.2.1/24\n", ClassMapMatchOption::mac),
              ElementsAre("P/input mac is programmed at Vlan10, which is routed and not physical"));
}

TEST(Comparison, AllowsInterfacesWhereTheRulesCanBe) {
  for (char const* settings :
       {" no shutdown\n", " ip address 192.0.2.1/24\n", " switchport\n", " channel-group 1\n"}) {
    EXPECT_THAT(obstaclesAt(simplePolicy, "Ethernet2", settings), IsEmpty()) << settings;
  }
}

TEST(StatusCheck, FindsAFailureOfAnotherCall) {
  Lab lab;
  FaultScope const faults = lab.plan("addRule from=1 before");
  load(lab, simplePolicy);
  EXPECT_THAT(checkStatuses(lab), IsEmpty());
  auto const status = lab.status()->policyMapStatus({"P", "input"});
  PolicyMap::PolicyFailure failure = status->failure(ClassMapMatchOption::ipv4);
  ASSERT_EQ(failure.error().stdString(), "injected #1 at addRule(P/input ipv4 P P:10)");
  failure.ruleIs({});
  status->failureIs(ClassMapMatchOption::ipv4, failure);
  EXPECT_THAT(checkStatuses(lab),
              ElementsAre(Irregularity{IrregularityKind::status,
                                       "failure of P/input ipv4: not of the call that failed: " +
                                           describe(failure)}));
}

TEST(StatusCheck, FindsTimeOfWhatIsNotProgrammed) {
  Lab lab;
  load(lab, simplePolicy);
  lab.status()->policyMapStatus({"P", "input"})->timeProgrammedIs(ClassMapMatchOption::mac, 1);
  EXPECT_THAT(checkStatuses(lab),
              ElementsAre(Irregularity{
                  IrregularityKind::status,
                  "status of P/input mac: time or interfaces of what is not programmed"}));
}

TEST(StatusCheck, FindsInterfacesOfWhatIsNotProgrammed) {
  Lab lab;
  load(lab, simplePolicy);
  lab.status()
      ->policyMapStatus({"P", "input"})
      ->appliedIntfIs({ClassMapMatchOption::ipv6, Vorel::IntfId("Ethernet1")}, true);
  EXPECT_THAT(checkStatuses(lab),
              ElementsAre(Irregularity{
                  IrregularityKind::status,
                  "status of P/input ipv6: time or interfaces of what is not programmed"}));
}

TEST(StatusCheck, AllowsFailures) {
  Lab lab;
  lab.inject({"commitError", "full"});
  load(lab, simplePolicy);
  EXPECT_THAT(checkStatuses(lab), IsEmpty());
}

TEST(Recovery, AfterFaultsALabIsAsItsReference) {
  for (char const* const plan : {"addRule nth=2", "commitPolicy from=1", "createPolicy throws",
                                 "addIntfToPolicy first=3 after"}) {
    Lab lab;
    {
      FaultScope const faults = lab.plan(plan);
      load(lab, threeRules);
      EXPECT_THAT(compare(lab, referenceOfText(threeRules)), Not(IsEmpty())) << plan;
      lab.clearFaults();
    }
    lab.advance(std::chrono::seconds(200));
    EXPECT_THAT(compare(lab, referenceOfText(threeRules)), IsEmpty()) << plan;
    EXPECT_EQ(referenceOf(lab).records, referenceOfText(threeRules).records) << plan;
    EXPECT_EQ(referenceOf(lab).statuses, referenceOfText(threeRules).statuses) << plan;
  }
}

TEST(Recovery, TheFailureOfARemovalIsNoDifference) {
  Lab lab;
  load(lab, simplePolicy);
  lab.inject({"removeIntfError", "stuck"});
  load(lab, "interface Ethernet1\n no service-policy input P\n");
  lab.clearFaults();
  lab.advance(std::chrono::seconds(200));
  EXPECT_THAT(compare(lab, referenceOf(lab.configuration().settings(), {})), IsEmpty());
}

}  // namespace
}  // namespace PolicyMapTestKit::test
