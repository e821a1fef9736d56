// SPDX-License-Identifier: Apache-2.0

// From text to records: what is programmed, and what an edit changes and leaves unchanged.

#include "testkit/Lab.h"

#include "testkit/Labs.h"
#include "testkit/Printing.h"
#include "testkit/text/FilterSetGenerator.h"
#include "testkit/text/Parsing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace PolicyMapTestKit::test {
namespace {

using PolicyMap::ClassMapMatchOption;
using testing::ElementsAre;
using testing::IsEmpty;

// A policy with every kind of rule and match, at every kind of interface.
std::string const broadPolicy =
    "ip routing\n"
    "ip access-list WEB\n permit tcp any any range 80 90\n permit tcp any any eq https\n"
    "ipv6 access-list WEB6\n permit tcp any any eq 443\n"
    "mac access-list ARP\n permit any any arp\n"
    "class-map match-any web\n match access-group WEB\n match ipv6 access-group WEB6\n"
    "class-map match-any arp\n match mac access-group ARP\n match ip udp any any eq 53\n"
    "class-map match-any both\n match class-map web\n match class-map arp\n"
    "policy-map P\n class web\n  set action1 1\n  set action2 2\n class arp\n  set action3 3\n"
    "policy-map Q\n class both\n  set action1 9\n"
    "interface Ethernet1\n service-policy input P\n service-policy output Q\n"
    "interface Ethernet2\n no switchport\n ip address 10.0.0.1/24\n service-policy input P\n"
    "interface Ethernet3\n channel-group 1\n"
    "interface PortChannel1\n service-policy input P\n"
    "interface Vlan10\n ipv6 address 2001:db8::1/64\n service-policy input P\n"
    "interface Management1\n ip address 10.0.1.1/24\n service-policy input P\n";

TEST(Lab, InvalidTextChangesNothing) {
  Lab lab;
  load(lab, simplePolicy);
  Snapshot const before = lab.snapshot();
  EXPECT_THAT([&] { lab.load("no policy-map P\nclass-map match-any\n"); },
              testing::ThrowsMessage<InputError>(testing::HasSubstr("policy text:2:")));
  EXPECT_EQ(lab.snapshot(), before);
}

TEST(Lab, ARecordThatIsMissingIsExplained) {
  Lab lab;
  load(lab, "policy-map P\ninterface Vlan2\n service-policy input P\n");
  EXPECT_THAT(
      [&] { static_cast<void>(lab.record("P")); },
      testing::ThrowsMessage<LookupError>("no record 'P/input'; there is none at all\n"
                                          "P/input: nothing to program: no class has rules"));
  EXPECT_THAT([&] { static_cast<void>(lab.record("Q")); },
              testing::ThrowsMessage<LookupError>("no record 'Q/input'; there is none at all"));
}

TEST(Lab, HasItsOwnTime) {
  Lab first({.faults = {{"commitError", "full"}}});
  Lab second({.faults = {{"commitError", "full"}}});
  load(first, simplePolicy);
  load(second, simplePolicy);
  first.clearFaults();
  second.clearFaults();
  first.advance(std::chrono::seconds(5));
  EXPECT_EQ(first.record("P").commitCount, 2U);
  EXPECT_EQ(second.record("P").commitCount, 1U) << "its retry is not due";
  EXPECT_EQ(first.now(), 5);
  EXPECT_EQ(second.now(), 0);
  EXPECT_EQ(
      first.status()->policyMapStatus({"P", "input"})->timeProgrammed(ClassMapMatchOption::ipv4),
      1);
}

TEST(Lab, TakesUpWhatATestWritesWhenItSettles) {
  Lab first;
  Lab second;
  load(first, simplePolicy);
  load(second, simplePolicy);
  for (Lab* const lab : {&first, &second}) {
    lab->acls()->ipAcl("P")->ruleIs(20, Acl::IpRuleConfig());
    lab->policyMaps()->servicePolicyIs({Vorel::IntfId("Ethernet1"), "output"}, "P");
  }
  second.settle();
  EXPECT_EQ(second.snapshot().size(), 2U);
  EXPECT_EQ(first.snapshot().size(), 1U);
  EXPECT_EQ(first.record("P").ruleCount, 1U);
  first.settle();
  EXPECT_EQ(first.record("P", "output").ruleCount, 2U);
}

TEST(Lab, LeavesNothingBehind) {
  Kor::Ptr<PolicyMapTest::AclHelper> helper;
  std::size_t const pending = Kor::EventLoop::global().pending();
  {
    Lab lab({.faults = {{"commitError", "full"}}});
    load(lab, simplePolicy);
    helper = lab.helper();
    EXPECT_EQ(lab.eventLoop().pending(), 1U) << "a retry";
  }
  EXPECT_EQ(Kor::EventLoop::global().pending(), pending);
  EXPECT_EQ(&Kor::EventLoop::current(), &Kor::EventLoop::global());
  EXPECT_EQ(helper->testDatas(), 1U) << "a test that holds the records can read them";
  helper->hwInit();  // writes to no journal
  helper->asyncTriggerInc(1);
}

// Refuses every second rule, before it is recorded.
class EverySecond : public PolicyMapTest::AclHelper {
 public:
  using AclHelper::AclHelper;
  int initialized = 0;

  void hwInit() override { ++initialized; }
  Kor::String addRule(PolicyMap::AclRuleKey const& key, PolicyMap::SubRuleData const& subRule,
                      PolicyMap::PolicyMapSmCommonData::PtrConst const& policyData,
                      PolicyMap::ClassMapSmCommonData::PtrConst const& classData) override {
    return ++rules_ % 2 == 0 ? "second" : AclHelper::addRule(key, subRule, policyData, classData);
  }

 private:
  int rules_ = 0;
};

TEST(Lab, RecordsTheCallsOfAHelperOfOnesOwn) {
  Lab lab({.updateAction = true, .faults = {{"commitError", "full"}}}, helperOf<EverySecond>());
  EXPECT_EQ(dynamic_cast<EverySecond const&>(*lab.helper()).initialized, 1);
  EXPECT_TRUE(lab.helper()->updateActionSupported());
  load(lab, simplePolicy);
  EXPECT_EQ(lab.failure("P").error(), "full");
  lab.clearFaults();
  lab.advance(std::chrono::seconds(1));
  EXPECT_EQ(lab.failure("P").error(), "second");
  EXPECT_EQ(lab.journal().calls("addRule").size(), 2U) << "calls that it refuses, too";
  lab.advance(std::chrono::seconds(2));
  EXPECT_EQ(lab.record("P").rules.size(), 1U);
}

TEST(Lab, AnErrorInATextNamesItsPlaceInTheTestAndInTheText) {
  Lab lab;
  EXPECT_THAT([&] { lab.load("policy-map P\n class C\n  set acton1 7"); },
              testing::ThrowsMessage<Text::InputError>(testing::MatchesRegex(
                  "LabTest.cpp:[0-9]+: policy text:3:7: expected .*, found 'acton1'")));
}

TEST(Lab, TimeDoesNotGoBack) {
  Lab lab;
  EXPECT_THROW(lab.advance(std::chrono::seconds(-1)), std::invalid_argument);
  EXPECT_EQ(lab.now(), 0);
}

TEST(Lab, TheFailureOfAPolicyThatIsNotAttachedIsAMistake) {
  Lab lab;
  load(lab, simplePolicy);
  EXPECT_EQ(lab.failure("P"), PolicyMap::PolicyFailure());
  EXPECT_THAT(
      [&] { static_cast<void>(lab.failure("p")); },
      testing::ThrowsMessage<LookupError>("no attached policy-map 'p/input'; nearest: 'P/input'"));
}

TEST(Lab, RefusesAFaultThatDoesNotExist) {
  Lab lab;
  EXPECT_THAT(
      [&] {
        lab.inject({"tableError", "x"});
      },
      testing::ThrowsMessage<Kor::RangeException>(
          testing::StartsWith("no error attribute 'tableError'; there are createError, ")));
}

TEST(Lab, FirstProgrammingMakesOneRecordPerOption) {
  Lab lab;
  load(lab, broadPolicy);
  Record const ip4 = recordOf(lab, "P");
  EXPECT_TRUE(ip4.created);
  EXPECT_FALSE(ip4.dirty);
  EXPECT_EQ(ip4.createCount, 1U);
  EXPECT_EQ(ip4.commitCount, 1U);
  EXPECT_THAT(rulesOf(ip4), ElementsAre("web WEB 10 permit tcp any any range 80 90",
                                        "web WEB 20 permit tcp any any eq 443",
                                        "arp  20 permit udp any any eq 53"));
  EXPECT_THAT(interfacesOf(ip4),
              ElementsAre("Ethernet1", "Ethernet2", "PortChannel1", "Management1"));
  EXPECT_THAT(ip4.rules[0].actions, ElementsAre(1, 2, 0));
  EXPECT_THAT(ip4.rules[2].actions, ElementsAre(0, 0, 3));
  EXPECT_THAT(interfacesOf(recordOf(lab, "P", ClassMapMatchOption::ipv6)),
              ElementsAre("Ethernet1", "PortChannel1", "Vlan10"));
  EXPECT_THAT(interfacesOf(recordOf(lab, "P", ClassMapMatchOption::mac)),
              ElementsAre("Ethernet1", "Ethernet2", "PortChannel1"));
  EXPECT_THAT(problemsOf(lab), IsEmpty());
}

TEST(Lab, NestedClassMapsProgramTheRulesOfAllOfThem) {
  Lab lab;
  load(lab, broadPolicy);
  Record const record = recordOf(lab, "Q", ClassMapMatchOption::ipv4, "output");
  EXPECT_EQ(record.ruleCount, 3U);
  for (RuleRecord const& rule : record.rules) {
    EXPECT_THAT(rule.actions, ElementsAre(9, 0, 0));
  }
}

TEST(Lab, SameTextOnceMoreProgramsNothing) {
  Lab lab;
  load(lab, broadPolicy);
  auto const before = lab.snapshot();
  ASSERT_EQ(before.size(), 6U);
  load(lab, broadPolicy);
  EXPECT_EQ(lab.snapshot(), before);
}

TEST(Lab, ActionValueIsUpdatedInPlaceWhereTheHardwareCan) {
  Lab lab({.updateAction = true});
  load(lab, simplePolicy);
  load(lab, "policy-map P\n class P\n  set action1 7\n");
  Record const record = recordOf(lab, "P");
  EXPECT_THAT(record.rules.at(0).actions, ElementsAre(7, 0, 0));
  EXPECT_EQ(record.createCount, 1U);
  EXPECT_EQ(record.commitCount, 2U);
  EXPECT_EQ(record.beginUpdateActionCount, 1U);
  EXPECT_EQ(record.endUpdateActionCount, 1U);
}

TEST(Lab, ActionValueMeansANewPolicyWhereTheHardwareCannotUpdate) {
  Lab lab;
  load(lab, simplePolicy);
  load(lab, "policy-map P\n class P\n  set action1 7\n");
  Record const record = recordOf(lab, "P");
  EXPECT_THAT(record.rules.at(0).actions, ElementsAre(7, 0, 0));
  EXPECT_EQ(record.createCount, 2U);
  EXPECT_EQ(record.commitCount, 2U);
  EXPECT_EQ(record.beginUpdateActionCount, 0U);
}

TEST(Lab, RemovedActionLeavesZeroInTheRecord) {
  Lab lab;
  load(lab, simplePolicy);
  load(lab, "policy-map P\n class P\n  no set action1\n  set action3 4\n");
  EXPECT_THAT(recordOf(lab, "P").rules.at(0).actions, ElementsAre(0, 0, 4));
}

TEST(Lab, EditOfARuleReprogramsItsPolicyAlone) {
  Lab lab;
  load(lab, broadPolicy);
  load(lab, "ipv6 access-list WEB6\n no 10\n 20 permit tcp any any eq 8443\n");
  EXPECT_THAT(rulesOf(recordOf(lab, "P", ClassMapMatchOption::ipv6)),
              ElementsAre("web WEB6 20 permit tcp any any eq 8443"));
  EXPECT_EQ(recordOf(lab, "P", ClassMapMatchOption::ipv6).createCount, 2U);
  EXPECT_EQ(recordOf(lab, "P").createCount, 1U);
  EXPECT_EQ(recordOf(lab, "P").commitCount, 1U);
}

TEST(Lab, ManyEditsInOneFileCostOnePass) {
  Lab lab;
  load(lab, simplePolicy);
  std::string edit = "ip access-list P\n";
  for (int port = 1; port != 500; ++port) {
    edit += " permit udp any any eq " + std::to_string(port) + "\n";
  }
  load(lab, edit);
  Record const record = recordOf(lab, "P");
  EXPECT_EQ(record.ruleCount, 500U);
  EXPECT_EQ(record.createCount, 2U);
  EXPECT_EQ(record.commitCount, 2U);
}

TEST(Lab, RemarksAreNotProgrammed) {
  Lab lab;
  load(lab, simplePolicy);
  load(lab, "ip access-list P\n 5 remark first\n remark last\n");
  Record const record = recordOf(lab, "P");
  EXPECT_EQ(record.ruleCount, 1U);
  EXPECT_EQ(record.commitCount, 1U);
}

TEST(Lab, ARuleReplacesARemarkAndNotTheOtherWayRound) {
  Lab lab;
  load(lab, simplePolicy + "ip access-list P\n 20 remark r\n");
  load(lab, "ip access-list P\n 20 permit udp any any\n");
  EXPECT_EQ(recordOf(lab, "P").ruleCount, 2U);
  load(lab, "ip access-list P\n 20 remark r\n");
  EXPECT_EQ(recordOf(lab, "P").ruleCount, 2U);
}

TEST(Lab, RemovedListLeavesItsClassWithoutRules) {
  Lab lab;
  load(lab, simplePolicy);
  load(lab, "no ip access-list P\n");
  EXPECT_FALSE(recordOf(lab, "P").created);
  EXPECT_THAT(problemsOf(lab),
              ElementsAre("policy-map P (input), class P: missing ip access-list P"));
  load(lab, "ip access-list P\n permit ip any any\n");
  EXPECT_THAT(rulesOf(recordOf(lab, "P")), ElementsAre("P P 10 permit ip any any"));
  EXPECT_THAT(problemsOf(lab), IsEmpty());
}

TEST(Lab, RemovedMatchTakesItsRulesAlong) {
  Lab lab;
  load(lab, broadPolicy);
  load(lab, "class-map web\n no match access-group WEB\n match ip icmp any any\n");
  EXPECT_THAT(rulesOf(recordOf(lab, "P")),
              ElementsAre("web  30 permit icmp any any", "arp  20 permit udp any any eq 53"));
}

TEST(Lab, RemovedClassMapIsMissed) {
  Lab lab;
  load(lab, broadPolicy);
  load(lab, "no class-map web\n");
  EXPECT_THAT(rulesOf(recordOf(lab, "P")), ElementsAre("arp  20 permit udp any any eq 53"));
  EXPECT_THAT(problemsOf(lab),
              ElementsAre("policy-map P (input), class web: missing class-map web",
                          "policy-map Q (output), class both: missing class-map web"));
}

TEST(Lab, ClassesAreProgrammedInTheirOrder) {
  Lab lab;
  load(lab, broadPolicy);
  load(lab, "policy-map P\n class arp insert-before web\n");
  Record const record = recordOf(lab, "P");
  EXPECT_EQ(record.rules.at(0).key.className(), "arp");
  EXPECT_EQ(record.createCount, 2U);
  load(lab, "policy-map P\n no class web\n");
  EXPECT_THAT(rulesOf(recordOf(lab, "P")), ElementsAre("arp  20 permit udp any any eq 53"));
  load(lab, "policy-map P\n class web\n");
  EXPECT_EQ(rulesOf(recordOf(lab, "P")).size(), 3U);
}

TEST(Lab, PrioritiesOfClassesGoUpInTens) {
  Lab lab;
  load(lab, "policy-map P\n class A\n class B\n class C insert-before A\n");
  auto const policyMap = lab.configuration().policyMaps()->policyMapConfig("P");
  EXPECT_EQ(policyMap->currentSubConfig()->classPrio("C"), 10U);
  EXPECT_EQ(policyMap->currentSubConfig()->classPrio("A"), 20U);
  EXPECT_EQ(policyMap->currentSubConfig()->classPrio("B"), 30U);
}

TEST(Lab, RemovedPolicyMapIsDeletedAndComesBack) {
  Lab lab;
  load(lab, simplePolicy);
  load(lab, "no policy-map P\n");
  EXPECT_FALSE(recordOf(lab, "P").created);
  EXPECT_THAT(problemsOf(lab),
              ElementsAre("policy-map P (input): not defined, but attached to Ethernet1"));
  load(lab, "policy-map P\n class P\n");
  EXPECT_TRUE(recordOf(lab, "P").created);
  EXPECT_THAT(interfacesOf(recordOf(lab, "P")), ElementsAre("Ethernet1"));
}

TEST(Lab, PolicyMapReplacedInOneFileIsEditedOnly) {
  Lab lab({.updateAction = true});
  load(lab, simplePolicy);
  load(lab, "no policy-map P\npolicy-map P\n class P\n  set action1 5\n");
  Record const record = recordOf(lab, "P");
  EXPECT_EQ(record.createCount, 1U);
  EXPECT_EQ(record.beginUpdateActionCount, 1U);
  EXPECT_THAT(record.rules.at(0).actions, ElementsAre(5, 0, 0));
}

TEST(Lab, InterfacesComeAndGo) {
  Lab lab;
  load(lab, simplePolicy);
  load(lab, "interface Ethernet2\n service-policy input P\n");
  EXPECT_THAT(interfacesOf(recordOf(lab, "P")), ElementsAre("Ethernet1", "Ethernet2"));
  EXPECT_EQ(recordOf(lab, "P").createCount, 1U);
  EXPECT_EQ(recordOf(lab, "P").commitCount, 2U);
  load(lab, "interface Ethernet1\n no service-policy input P\n");
  EXPECT_THAT(interfacesOf(recordOf(lab, "P")), ElementsAre("Ethernet2"));
  load(lab, "no interface Ethernet2\n");
  EXPECT_FALSE(recordOf(lab, "P").created);
}

TEST(Lab, ShutDownInterfaceDoesNotExist) {
  Lab lab;
  load(lab, simplePolicy + "interface Ethernet2\n service-policy input P\n");
  load(lab, "interface Ethernet1\n shutdown\n");
  EXPECT_THAT(interfacesOf(recordOf(lab, "P")), ElementsAre("Ethernet2"));
  EXPECT_FALSE(lab.machine()->intfExists(Vorel::IntfId("Ethernet1")));
  load(lab, "interface Ethernet1\n no shutdown\n");
  EXPECT_THAT(interfacesOf(recordOf(lab, "P")), ElementsAre("Ethernet1", "Ethernet2"));
  EXPECT_TRUE(lab.machine()->intfExists(Vorel::IntfId("Ethernet1")));
}

TEST(Lab, InterfaceRemovedWhileShutDownExistsAgain) {
  Lab lab;
  load(lab, simplePolicy + "interface Ethernet1\n shutdown\n");
  load(lab, "no interface Ethernet1\n");
  EXPECT_TRUE(lab.machine()->intfExists(Vorel::IntfId("Ethernet1")));
}

TEST(Lab, AddressesOfASwitchportDoNotCount) {
  Lab lab({.layer2 = false});
  load(lab, simplePolicy + "interface Ethernet1\n ip address 10.0.0.1/24\n");
  EXPECT_TRUE(recordOf(lab, "P").created);
  load(lab, "interface Ethernet1\n switchport\n");
  EXPECT_FALSE(recordOf(lab, "P").created);
  load(lab, "interface Ethernet1\n no switchport\n");
  EXPECT_TRUE(recordOf(lab, "P").created);
  load(lab, "interface Ethernet1\n no ip address\n");
  EXPECT_FALSE(recordOf(lab, "P").created);
}

TEST(Lab, RoutingAndMembershipReachTheirObjects) {
  Lab lab;
  load(lab, "ip routing\nipv6 unicast-routing\ninterface Ethernet1\n channel-group 7\n"
            "interface Ethernet2\n no switchport\n ipv6 address 2001:db8::1/64\n");
  Configuration const& configuration = lab.configuration();
  Vorel::IntfId const one("Ethernet1");
  Vorel::IntfId const two("Ethernet2");
  EXPECT_TRUE(configuration.routing()->routing());
  EXPECT_TRUE(configuration.routing6()->routing());
  EXPECT_EQ(configuration.lag()->memberOf(one), Vorel::IntfId("PortChannel7"));
  EXPECT_TRUE(configuration.routing()->routedIntf(two));
  EXPECT_EQ(configuration.ip6()->intfAddress(two).text(), "2001:db8::1/64");
  load(lab, "no ip routing\nno ipv6 unicast-routing\ninterface Ethernet1\n no channel-group\n"
            "interface Ethernet2\n switchport\n");
  EXPECT_FALSE(configuration.routing()->routing());
  EXPECT_FALSE(configuration.routing6()->routing());
  EXPECT_EQ(configuration.lag()->memberOf(one), Vorel::IntfId());
  EXPECT_FALSE(configuration.routing()->routedIntf(two));
  EXPECT_EQ(configuration.ip6()->intfAddresss(), 0U);
}

TEST(Lab, NothingIsTakenFromAFileWithAnError) {
  Lab lab;
  load(lab, simplePolicy);
  auto const before = lab.snapshot();
  for (std::string const fault :
       {"no class-map absent\n", "frobnicate\n", "interface Vlan9999\n"}) {
    EXPECT_NE(errorOfLoading(lab, "no ip access-list P\nno policy-map P\ninterface Ethernet7\n"
                                  " service-policy input P\n" +
                                      fault),
              "no error");
    EXPECT_EQ(lab.snapshot(), before) << fault;
    EXPECT_EQ(lab.configuration().settings().interfaces.size(), 1U) << fault;
    EXPECT_TRUE(lab.configuration().acls()->ipAcl("P")) << fault;
  }
  load(lab, "");
  EXPECT_EQ(lab.snapshot(), before);
}

TEST(Lab, LoopOfClassMapsIsToldAndNothingOfItProgrammed) {
  Lab lab;
  load(lab, "class-map match-any A\n match class-map B\nclass-map match-any B\n"
            " match class-map C\n match ip ip any any\nclass-map match-any C\n"
            " match class-map A\npolicy-map P\n class A\ninterface Ethernet1\n"
            " service-policy input P\n");
  EXPECT_THAT(lab.snapshot(), IsEmpty());
  auto const problems = findProblems(lab);
  ASSERT_EQ(problems.size(), 1U);
  EXPECT_EQ(problems[0].kind, Problem::Kind::failed);
  EXPECT_EQ(problems[0].where, "policy-map P (input), class A");
  EXPECT_NE(problems[0].text.find("A > B > C > A"), std::string::npos) << problems[0].text;
  load(lab, "class-map C\n no match class-map A\n");
  EXPECT_TRUE(recordOf(lab, "P").created);
  EXPECT_THAT(problemsOf(lab), IsEmpty());
}

TEST(Lab, MissingReferencesAreToldInTheOrderOfThePolicies) {
  Lab lab;
  load(lab, "class-map match-any A\n match access-group L\n match ipv6 access-group L\n"
            " match mac access-group L\n match class-map N\n"
            "policy-map P\n class Z\n class A\ninterface Ethernet1\n service-policy input P\n"
            " service-policy output NONE\ninterface Ethernet2\n service-policy output NONE\n");
  EXPECT_THAT(problemsOf(lab),
              ElementsAre("policy-map NONE (output): not defined, but attached to Ethernet1, "
                          "Ethernet2",
                          "policy-map P (input), class Z: missing class-map Z",
                          "policy-map P (input), class A: missing ip access-list L",
                          "policy-map P (input), class A: missing ipv6 access-list L",
                          "policy-map P (input), class A: missing mac access-list L",
                          "policy-map P (input), class A: missing class-map N"));
  for (Problem const& problem : findProblems(lab)) {
    EXPECT_EQ(problem.kind, Problem::Kind::missing) << toText(problem);
  }
}

TEST(Lab, OptionsReachTheHelper) {
  Lab const plain;
  EXPECT_FALSE(plain.helper()->updateActionSupported());
  EXPECT_FALSE(plain.helper()->expandPortChannels());
  EXPECT_FALSE(plain.helper()->subRulesForL4Ports());
  EXPECT_FALSE(plain.helper()->reprogramPolicyOnIntfChange());
  EXPECT_TRUE(plain.helper()->denyRulesAllowed());
  EXPECT_TRUE(plain.helper()->ttlSupported());
  EXPECT_FALSE(plain.helper()->onlyTtlEqSupported());
  EXPECT_TRUE(plain.helper()->ackOrRstSupported());
  EXPECT_TRUE(plain.helper()->establishedSupported());
}

TEST(Lab, InterfacesAreServedByTheirKind) {
  std::string const text = simplePolicy +
                           "interface Ethernet2\n ip address 10.0.0.1/24\n service-policy input P\n"
                           "interface Management1\n ip address 10.0.1.1/24\n"
                           " service-policy input P\n";
  auto const served = [&text](LabOptions const& options) {
    Lab lab(options);
    load(lab, text);
    return interfacesOf(recordOf(lab, "P"));
  };
  EXPECT_THAT(served({}), ElementsAre("Ethernet1", "Ethernet2", "Management1"));
  EXPECT_THAT(served({.layer2 = false}), ElementsAre("Ethernet2", "Management1"));
  EXPECT_THAT(served({.layer3 = false}), ElementsAre("Ethernet1", "Management1"));
  EXPECT_THAT(served({.management = false}), ElementsAre("Ethernet1", "Ethernet2"));
}

TEST(Lab, RulesAreServedByTheirFamily) {
  auto const options = [](LabOptions const& labOptions) {
    Lab lab(labOptions);
    load(lab, broadPolicy);
    std::string text;
    for (Record const& record : lab.snapshot()) {
      text += record.policy == "P" && record.created ? toText(record.option) + " " : "";
    }
    return text;
  };
  EXPECT_EQ(options({}), "ipv4 ipv6 mac ");
  EXPECT_EQ(options({.ipLists = false}), "ipv6 mac ");
  EXPECT_EQ(options({.ip6Lists = false}), "ipv4 mac ");
  EXPECT_EQ(options({.macLists = false}), "ipv4 ipv6 ");
}

TEST(Lab, SubRulesAreBlocksOrRangesForACheckerThatIsMarked) {
  std::string const text =
      simplePolicy + "ip access-list P\n 10 permit tcp any any range 5004 5008\n";
  Lab blocks({.subRulesForPorts = true});
  load(blocks, text);
  auto const cut = recordOf(blocks, "P").rules.at(0).subRules;
  ASSERT_EQ(cut.size(), 2U);
  EXPECT_EQ(describe(cut[0]), "dst 5004-5007");
  EXPECT_EQ(describe(cut[1]), "dst 5008");
  Lab ranges;
  load(ranges, text);
  auto const whole = recordOf(ranges, "P").rules.at(0).subRules;
  ASSERT_EQ(whole.size(), 1U);
  EXPECT_EQ(describe(whole[0]), "dst 5004-5008 (range checker)");
}

TEST(Lab, PolicyIsProgrammedAnewForAnInterfaceWhereTheHardwareNeedsIt) {
  Lab lab({.reprogramOnIntfChange = true});
  load(lab, simplePolicy);
  load(lab, "interface Ethernet2\n service-policy input P\n");
  EXPECT_EQ(recordOf(lab, "P").createCount, 2U);
  EXPECT_THAT(interfacesOf(recordOf(lab, "P")), ElementsAre("Ethernet1", "Ethernet2"));
}

// Filter sets

FilterSet generated(std::size_t rules, Family family = Family::ip4) {
  return readFilterSet(SourceText("f", generateFilterSet(rules, 1, family)));
}

TEST(Lab, FilterSetIsCutIntoConsecutiveClasses) {
  Lab lab;
  lab.load(generated(10), {.classes = 3, .interfaces = 2});
  Record const record = recordOf(lab, "rules");
  ASSERT_EQ(record.rules.size(), 10U);
  std::vector<std::string> places;
  for (RuleRecord const& rule : record.rules) {
    EXPECT_EQ(rule.key.className(), rule.key.aclName());
    places.push_back(rule.key.className().stdString() + ":" + std::to_string(rule.key.seqno()));
  }
  EXPECT_THAT(places,
              ElementsAre("rules-1:10", "rules-1:20", "rules-1:30", "rules-2:10", "rules-2:20",
                          "rules-2:30", "rules-3:10", "rules-3:20", "rules-3:30", "rules-3:40"));
  FilterSet const set = generated(10);
  for (std::size_t i = 0; i != set.rules.size(); ++i) {
    EXPECT_EQ(record.rules[i].match, configuredRule(set.rules[i], set.family));
  }
  EXPECT_THAT(interfacesOf(record), ElementsAre("Ethernet1", "Ethernet2"));
}

TEST(Lab, FilterSetOfIp6IsProgrammedForIp6) {
  Lab lab;
  lab.load(generated(20, Family::ip6), {});
  EXPECT_EQ(recordOf(lab, "rules", ClassMapMatchOption::ipv6).ruleCount, 20U);
}

TEST(Lab, EqualRulesOfAFilterSetAreKept) {
  std::string const line = "@1.2.3.4/32\t0.0.0.0/0\t0 : 65535\t80 : 80\t0x06/0xff\t0x0/0x0\n";
  Lab lab;
  lab.load(readFilterSet(SourceText("f", line + line)), {});
  EXPECT_EQ(recordOf(lab, "rules").ruleCount, 2U);
}

TEST(Lab, EmptyFilterSetProgramsNothing) {
  Lab lab;
  lab.load(readFilterSet(SourceText("f", "")), {});
  EXPECT_THAT(lab.snapshot(), IsEmpty());
}

TEST(Lab, RangesExpandToTheFewestBlocks) {
  struct Range {
    char const* ports;
    std::uint64_t blocks;
  };
  for (Range const& range :
       {Range{"4000 : 8000", 8}, Range{"333 : 777", 8}, Range{"5004 : 5008", 2},
        Range{"1024 : 65535", 6}, Range{"1025 : 65535", 15}, Range{"33434 : 33600", 6},
        Range{"514 : 1023", 8}, Range{"16384 : 32767", 1}, Range{"49152 : 57500", 6},
        Range{"1 : 65534", 30}, Range{"0 : 1022", 10}}) {
    Lab lab({.subRulesForPorts = true});
    lab.load(readFilterSet(SourceText("f", std::string("@0.0.0.0/0 0.0.0.0/0 0 : 65535 ") +
                                               range.ports + " 0x06/0xff 0x0/0x0")),
             {});
    EXPECT_EQ(recordOf(lab, "rules").subRuleCount, range.blocks) << range.ports;
  }
}

TEST(Lab, RangesOnBothSidesMultiply) {
  Lab lab({.subRulesForPorts = true});
  lab.load(readFilterSet(SourceText("f", "@0.0.0.0/0 0.0.0.0/0 1024 : 65535 1 : 65534 0x11/0xff "
                                         "0x0/0x0")),
           {});
  EXPECT_EQ(recordOf(lab, "rules").subRuleCount, 6U * 30U);
}

TEST(Lab, HundredThousandRulesAreProgrammed) {
  Lab lab({.subRulesForPorts = true});
  lab.load(generated(100000), {.classes = 10, .interfaces = 4});
  Snapshot const records = lab.snapshot(WithRules::no);
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records.begin()->ruleCount, 100000U);
  EXPECT_GT(records.begin()->subRuleCount, 100000U);
  EXPECT_EQ(records.begin()->commitCount, 1U);
}

}  // namespace
}  // namespace PolicyMapTestKit::test
