// SPDX-License-Identifier: Apache-2.0
#include "support/NormalForm.h"
#include "support/Scenario.h"

#include <gmock/gmock.h>

#include <ostream>

namespace endtoend {
namespace {

using PolicyMap::ClassMapMatchOption;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::counts;
using TestSupport::intf;
using TestSupport::normalRecord;
using TestSupport::Scenario;

using enum PolicyMap::ClassMapMatchOption;

std::set<Vorel::IntfId> bound(Scenario const& scenario, ClassMapMatchOption option = ipv4) {
  auto const record = scenario.record(option);
  return record ? normalRecord(*record).intfs : std::set<Vorel::IntfId>();
}

// A simple policy at Ethernet1 and Ethernet2, programmed.
class Interfaces : public testing::Test {
 protected:
  Interfaces() {
    scenario.simplePolicy();
    scenario.attach("pm", "Ethernet2");
    scenario.start();
    scenario.settle();
  }

  Scenario scenario;
};

TEST_F(Interfaces, AnAddedOneIsOneCommitWithoutACreation) {
  scenario.attach("pm", "Ethernet3");
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 2, update 0/0, created, clean");
  EXPECT_THAT(bound(scenario),
              ElementsAre(intf("Ethernet1"), intf("Ethernet2"), intf("Ethernet3")));
}

TEST_F(Interfaces, ARemovedOneIsOneCommitWithoutACreation) {
  scenario.detach("Ethernet1");
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 2, update 0/0, created, clean");
  EXPECT_THAT(bound(scenario), ElementsAre(intf("Ethernet2")));
}

TEST_F(Interfaces, SeveralThatComeAndGoInOneTurnAreOneCommit) {
  scenario.detach("Ethernet1");
  scenario.attach("pm", "Ethernet3");
  scenario.attach("pm", "Ethernet4");
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 2, update 0/0, created, clean");
  EXPECT_THAT(bound(scenario),
              ElementsAre(intf("Ethernet2"), intf("Ethernet3"), intf("Ethernet4")));
}

TEST_F(Interfaces, OneThatLeavesAndReturnsInOneTurnProgramsNothing) {
  scenario.detach("Ethernet1");
  scenario.attach("pm", "Ethernet1");
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
}

TEST_F(Interfaces, AnAddedOneReCreatesThePolicyWhereTheHelperWantsIt) {
  scenario.helper->reprogramPolicyOnIntfChangeIs(true);
  scenario.attach("pm", "Ethernet3");
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
  EXPECT_THAT(bound(scenario),
              ElementsAre(intf("Ethernet1"), intf("Ethernet2"), intf("Ethernet3")));
}

TEST_F(Interfaces, RulesAndInterfacesChangedInOneTurnAreOneReCreation) {
  scenario.rule("acl", 20);
  scenario.detach("Ethernet1");
  scenario.attach("pm", "Ethernet3");
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
  EXPECT_THAT(bound(scenario), ElementsAre(intf("Ethernet2"), intf("Ethernet3")));
}

TEST_F(Interfaces, TheLastOneTakesThePolicyWithIt) {
  scenario.detach("Ethernet1");
  scenario.detach("Ethernet2");
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, not created, clean");
  EXPECT_FALSE(scenario.policyStatus());
}

TEST_F(Interfaces, ANonexistentOneIsRemovedAndComesBack) {
  scenario.machine->nonexistentIntfIs(intf("Ethernet1"), true);
  scenario.settle();
  EXPECT_THAT(bound(scenario), ElementsAre(intf("Ethernet2")));
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 2, update 0/0, created, clean");
  scenario.machine->nonexistentIntfDel(intf("Ethernet1"));
  scenario.settle();
  EXPECT_THAT(bound(scenario), ElementsAre(intf("Ethernet1"), intf("Ethernet2")));
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 3, update 0/0, created, clean");
}

TEST_F(Interfaces, OneListedAsNotNonexistentExists) {
  scenario.machine->nonexistentIntfIs(intf("Ethernet1"), false);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
  scenario.machine->nonexistentIntfIs(intf("Ethernet1"), true);
  scenario.settle();
  EXPECT_THAT(bound(scenario), ElementsAre(intf("Ethernet2")));
  scenario.machine->nonexistentIntfIs(intf("Ethernet1"), false);
  scenario.settle();
  EXPECT_THAT(bound(scenario), ElementsAre(intf("Ethernet1"), intf("Ethernet2")));
}

TEST_F(Interfaces, AllNonexistentTakesThePolicyDownButKeepsItsStatus) {
  scenario.machine->nonexistentIntfIs(intf("Ethernet1"), true);
  scenario.machine->nonexistentIntfIs(intf("Ethernet2"), true);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, not created, clean");
  ASSERT_TRUE(scenario.policyStatus());
  EXPECT_FALSE(scenario.policyStatus()->programmed(ipv4));
  scenario.machine->nonexistentIntfDelAll();
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
  EXPECT_THAT(bound(scenario), ElementsAre(intf("Ethernet1"), intf("Ethernet2")));
}

TEST_F(Interfaces, ANonexistentOneThatIsNotAttachedProgramsNothing) {
  scenario.machine->nonexistentIntfIs(intf("Ethernet9"), true);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
  scenario.attach("pm", "Ethernet9");
  scenario.settle();
  EXPECT_THAT(bound(scenario), ElementsAre(intf("Ethernet1"), intf("Ethernet2")));
}

TEST_F(Interfaces, AForcedReEvaluationReCreatesWithoutADifference) {
  scenario.machine->handleIntf(intf("Ethernet1"), false);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
  scenario.machine->handleIntf(intf("Ethernet1"), true);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
}

TEST(PortChannels, AreReplacedByTheirMembersWhereTheHelperExpandsThem) {
  Scenario scenario({.expandPortChannels = true});
  scenario.simplePolicy();
  scenario.detach("Ethernet1");
  scenario.attach("pm", "PortChannel7");
  scenario.start();
  scenario.settle();
  EXPECT_FALSE(scenario.record());
  scenario.lag->memberOfIs(intf("Ethernet3"), intf("PortChannel7"));
  scenario.settle();
  EXPECT_THAT(bound(scenario), ElementsAre(intf("Ethernet3")));
  scenario.lag->memberOfIs(intf("Ethernet4"), intf("PortChannel7"));
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 2, update 0/0, created, clean");
  EXPECT_THAT(bound(scenario), ElementsAre(intf("Ethernet3"), intf("Ethernet4")));
  scenario.machine->nonexistentIntfIs(intf("Ethernet4"), true);
  scenario.settle();
  EXPECT_THAT(bound(scenario), ElementsAre(intf("Ethernet3")));
  scenario.machine->nonexistentIntfDel(intf("Ethernet4"));
  scenario.lag->memberOfDel(intf("Ethernet3"));
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 4, update 0/0, created, clean");
  EXPECT_THAT(bound(scenario), ElementsAre(intf("Ethernet4")));
}

TEST(PortChannels, AMemberThatIsAttachedItselfCountsOnce) {
  Scenario scenario({.expandPortChannels = true});
  scenario.simplePolicy();
  scenario.attach("pm", "PortChannel7");
  scenario.lag->memberOfIs(intf("Ethernet1"), intf("PortChannel7"));
  scenario.start();
  scenario.settle();
  EXPECT_THAT(bound(scenario), ElementsAre(intf("Ethernet1")));
  scenario.lag->memberOfDel(intf("Ethernet1"));
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
}

TEST(PortChannels, AreProgrammedThemselvesWhereTheHelperDoesNotExpandThem) {
  Scenario scenario;
  scenario.simplePolicy();
  scenario.detach("Ethernet1");
  scenario.attach("pm", "PortChannel7");
  scenario.lag->memberOfIs(intf("Ethernet3"), intf("PortChannel7"));
  scenario.start();
  scenario.settle();
  EXPECT_THAT(bound(scenario), ElementsAre(intf("PortChannel7")));
}

// The interfaces that carry policies under each combination of flags: a layer-2 port, one with an
// IPv4 address, one with an IPv6 address, one routed without an address, a management port, and a
// VLAN without addresses.
struct Gate {
  bool layer2;
  bool layer3;
  bool management;
  std::set<std::string> carriesIp;

  friend void PrintTo(Gate const& gate, std::ostream* out) {
    *out << (gate.layer2 ? "layer 2 " : "") << (gate.layer3 ? "layer 3 " : "")
         << (gate.management ? "management" : "");
  }
};

class IntfGating : public testing::TestWithParam<Gate> {};

TEST_P(IntfGating, LetsOnlyAllowedKindsCarryPolicies) {
  Gate const& gate = GetParam();
  Scenario scenario({.allowL2 = gate.layer2, .allowL3 = gate.layer3, .allowMgmt = gate.management});
  scenario.simplePolicy();
  for (char const* const name :
       {"Ethernet2", "Ethernet3", "Ethernet4", "Vlan10", "Management0", "PortChannel1"}) {
    scenario.attach("pm", name);
  }
  scenario.ip->intfAddressIs(intf("Ethernet2"), Ip::Address("10.0.0.1/24"));
  scenario.ip6->intfAddressIs(intf("Ethernet3"), Ip6::Address("2001:db8::1/64"));
  scenario.routing->routedIntfIs(intf("Ethernet4"), true);
  scenario.ip->intfAddressIs(intf("Management0"), Ip::Address("10.9.0.1/24"));
  scenario.start();
  scenario.settle();
  std::set<Vorel::IntfId> expected;
  for (std::string const& name : gate.carriesIp) {
    expected.insert(intf(name.c_str()));
  }
  EXPECT_EQ(bound(scenario), expected);
}

// An interface without an IPv4 address carries IPv4 rules only on layer 2.
INSTANTIATE_TEST_SUITE_P(
    EveryFlag, IntfGating,
    testing::Values(
        Gate{false, false, false, {}}, Gate{true, false, false, {"Ethernet1", "PortChannel1"}},
        Gate{false, true, false, {"Ethernet2"}}, Gate{false, false, true, {"Management0"}},
        Gate{true, true, false, {"Ethernet1", "PortChannel1", "Ethernet2"}},
        Gate{true, false, true, {"Ethernet1", "PortChannel1", "Management0"}},
        Gate{false, true, true, {"Ethernet2", "Management0"}},
        Gate{true, true, true, {"Ethernet1", "PortChannel1", "Ethernet2", "Management0"}}));

TEST(IntfStatus, AnAddressDecidesWhichOptionsAnInterfaceCarries) {
  Scenario scenario;
  scenario.simplePolicyOfAllOptions();
  scenario.start();
  scenario.settle();
  // Without an address it is a layer-2 port, which carries all options.
  for (auto const option : {ipv4, ipv6, mac, mpls}) {
    EXPECT_THAT(bound(scenario, option), ElementsAre(intf("Ethernet1"))) << option;
  }
  scenario.ip->intfAddressIs(intf("Ethernet1"), Ip::Address("10.0.0.1/24"));
  scenario.settle();
  EXPECT_THAT(bound(scenario, ipv4), ElementsAre(intf("Ethernet1")));
  EXPECT_THAT(bound(scenario, ipv6), IsEmpty());
  EXPECT_FALSE(scenario.record(ipv6)->created());
  EXPECT_THAT(bound(scenario, mac), ElementsAre(intf("Ethernet1")));
  scenario.ip6->intfAddressIs(intf("Ethernet1"), Ip6::Address("2001:db8::1/64"));
  scenario.ip->intfAddressDel(intf("Ethernet1"));
  scenario.settle();
  EXPECT_THAT(bound(scenario, ipv4), IsEmpty());
  EXPECT_THAT(bound(scenario, ipv6), ElementsAre(intf("Ethernet1")));
  scenario.ip6->intfAddressDel(intf("Ethernet1"));
  scenario.settle();
  EXPECT_THAT(bound(scenario, ipv4), ElementsAre(intf("Ethernet1")));
}

TEST(IntfStatus, RoutingDecidesAboutLabels) {
  Scenario scenario;
  scenario.simplePolicyOfAllOptions();
  scenario.routing->routingIs(false);
  scenario.start();
  scenario.settle();
  EXPECT_FALSE(scenario.record(mpls));
  scenario.routing->routingIs(true);
  scenario.settle();
  EXPECT_THAT(bound(scenario, mpls), ElementsAre(intf("Ethernet1")));
}

TEST(IntfStatus, AnInterfaceThatBecomesLayer3LeavesWhereOnlyLayer2IsAllowed) {
  Scenario scenario({.allowL3 = false});
  scenario.simplePolicy();
  scenario.start();
  scenario.settle();
  EXPECT_THAT(bound(scenario), ElementsAre(intf("Ethernet1")));
  scenario.routing6->routedIntfIs(intf("Ethernet1"), true);
  scenario.settle();
  EXPECT_FALSE(scenario.record()->created());
  scenario.routing6->routedIntfDel(intf("Ethernet1"));
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
}

}  // namespace
}  // namespace endtoend
