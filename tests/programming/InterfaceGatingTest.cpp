// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"

#include <gmock/gmock.h>

namespace policymap {
namespace {

using PolicyMap::PolicyMapSmKey;
using testing::ElementsAre;
using testing::IsEmpty;

// A policy with rules of all four options, attached at one interface.
class Gating : public testing::Test {
 protected:
  PolicyBench bench;
  Vorel::IntfId where;

  void attachAt(char const* name) {
    where = intf(name);
    auto const classMap = bench.classMap("c");
    classMap->matchIs(1, PolicyMap::ClassMapMatch::rule(Acl::IpRuleConfig()));
    classMap->matchIs(2, PolicyMap::ClassMapMatch::rule(Acl::Ip6RuleConfig()));
    classMap->matchIs(3, PolicyMap::ClassMapMatch::rule(Acl::MacRuleConfig()));
    classMap->matchIs(
        4, PolicyMap::ClassMapMatch::rule(Acl::MacRuleConfig(), ClassMapMatchOption::mpls));
    bench.policy("pm")->classPrioIs("c", 10);
    bench.attach("pm", name);
  }
  void ipAddress() { bench.ip->intfAddressIs(where, Ip::Address("10.0.0.1/24")); }
  void ip6Address() { bench.ip6->intfAddressIs(where, Ip6::Address("2001:db8::1/64")); }
  void routed() { bench.routing->routedIntfIs(where, true); }

  // The options that are programmed on the helper. The machine must report the same.
  std::string programmed() {
    bench.settle();
    std::string found;
    auto const machine = bench.machine->policyMapSm(PolicyMapSmKey("pm", "input"));
    for (ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
      auto const bound = machine->policyCommonData()->intfs(option);
      EXPECT_EQ(bound, bench.machine->effectiveIntfs({"pm", "input"}, option)) << option;
      if (!bound.empty()) {
        EXPECT_THAT(bound, ElementsAre(where));
        found += (found.empty() ? "" : " ") + text(option);
      }
    }
    return found;
  }
};

enum class Kind { layer2, layer3, management };

struct Case {
  char const* name;
  char const* where;
  Kind kind;
  bool ip;
  bool ip6;
  bool routed;
  bool routing;
  char const* options;  // the options that such interfaces carry
};

class GatingTable : public Gating,
                    public testing::WithParamInterface<std::tuple<Case, bool, bool, bool>> {};

TEST_P(GatingTable, AnInterfaceCountsPerOptionUnderTheFlagOfItsKind) {
  auto const& [row, allowL2, allowL3, allowMgmt] = GetParam();
  attachAt(row.where);
  if (row.ip) {
    ipAddress();
  }
  if (row.ip6) {
    ip6Address();
  }
  if (row.routed) {
    routed();
  }
  bench.routing->routingIs(row.routing);
  bench.start(allowL2, allowL3, allowMgmt);
  bool const allowed = row.kind == Kind::layer2   ? allowL2
                       : row.kind == Kind::layer3 ? allowL3
                                                  : allowMgmt;
  EXPECT_EQ(programmed(), allowed ? row.options : "");
  EXPECT_EQ(bench.machine->allowedIntf(where), allowed);
}

INSTANTIATE_TEST_SUITE_P(
    AllKinds, GatingTable,
    testing::Combine(
        testing::Values(
            Case{"switchport", "Ethernet1", Kind::layer2, false, false, false, false,
                 "ipv4 ipv6 mac"},
            Case{"switchportWithRoutingOn", "Ethernet1", Kind::layer2, false, false, false, true,
                 "ipv4 ipv6 mac mpls"},
            Case{"portChannelSwitchport", "PortChannel7", Kind::layer2, false, false, false, false,
                 "ipv4 ipv6 mac"},
            Case{"routedWithoutAddress", "Ethernet1", Kind::layer3, false, false, true, false,
                 "mac"},
            Case{"routedWithoutAddressWithRoutingOn", "Ethernet1", Kind::layer3, false, false, true,
                 true, "mac mpls"},
            Case{"ipv4Only", "Ethernet1", Kind::layer3, true, false, true, false, "ipv4 mac"},
            Case{"ipv4OnlyWithoutBeingRouted", "Ethernet1", Kind::layer3, true, false, false, false,
                 "ipv4 mac"},
            Case{"ipv6Only", "Ethernet1", Kind::layer3, false, true, true, false, "ipv6 mac"},
            Case{"both", "Ethernet1", Kind::layer3, true, true, true, true, "ipv4 ipv6 mac mpls"},
            Case{"portChannelWithAddress", "PortChannel7", Kind::layer3, true, false, false, false,
                 "ipv4"},
            Case{"vlanWithAddress", "Vlan10", Kind::layer3, true, false, false, false, "ipv4"},
            Case{"vlanWithBoth", "Vlan10", Kind::layer3, true, true, false, true, "ipv4 ipv6 mpls"},
            Case{"loopback", "Loopback0", Kind::layer3, true, false, false, false, "ipv4"},
            Case{"management", "Management1", Kind::management, true, false, false, false, "ipv4"},
            Case{"managementIpv6", "Management1", Kind::management, false, true, false, false,
                 "ipv6"},
            Case{"managementWithoutAddress", "Management1", Kind::management, false, false, false,
                 false, ""},
            Case{"managementWithoutAddressWithRoutingOn", "Management1", Kind::management, false,
                 false, false, true, "mpls"}),
        testing::Bool(), testing::Bool(), testing::Bool()),
    [](auto const& each) {
      auto const flag = [](char const* name, bool set) { return set ? std::string(name) : ""; };
      std::string const flags = flag("L2", std::get<1>(each.param)) +
                                flag("L3", std::get<2>(each.param)) +
                                flag("Mgmt", std::get<3>(each.param));
      return std::get<0>(each.param).name + std::string("_allowing") +
             (flags.empty() ? "Nothing" : flags);
    });

TEST_F(Gating, AVlanOrLoopbackWithoutAddressIsNeitherLayer) {
  bench.start();
  for (char const* name : {"Vlan10", "Loopback0", "Tunnel1"}) {
    EXPECT_FALSE(bench.machine->allowedIntf(intf(name))) << name;
  }
  EXPECT_TRUE(bench.machine->allowedIntf(intf("Ethernet1")));
}

TEST_F(Gating, AnAddressThatAppearsAndVanishesIsFollowed) {
  attachAt("Ethernet1");
  routed();
  bench.start();
  EXPECT_EQ(programmed(), "mac");
  ipAddress();
  EXPECT_THAT(bench.settle(),
              ElementsAre("create pm/input/ipv4", "addRule pm/input/ipv4 c::1 permit ip any any",
                          "addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"))
      << "the other options do not notice";
  bench.ip->intfAddressIs(where, Ip::Address("10.0.0.2/24"));
  EXPECT_THAT(bench.settle(), IsEmpty()) << "another address makes no difference";
  ip6Address();
  EXPECT_EQ(programmed(), "ipv4 ipv6 mac");
  bench.ip->intfAddressIs(where, Ip::Address());
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4"))
      << "the empty address is none";
  bench.ip->intfAddressDel(where);
  EXPECT_THAT(bench.settle(), IsEmpty());
  bench.ip6->intfAddressDel(where);
  EXPECT_EQ(programmed(), "mac");
}

TEST_F(Gating, BecomingLayer3IsFollowedUnderTheFlags) {
  attachAt("Ethernet1");
  bench.start(true, false, true);
  EXPECT_EQ(programmed(), "ipv4 ipv6 mac");
  routed();
  EXPECT_EQ(programmed(), "");
  bench.routing->routedIntfDel(where);
  EXPECT_EQ(programmed(), "ipv4 ipv6 mac");
  bench.routing6->routedIntfIs(where, true);
  EXPECT_EQ(programmed(), "");
}

TEST_F(Gating, ARoutedEntryThatHoldsFalseIsNotRouted) {
  attachAt("Ethernet1");
  bench.routing->routedIntfIs(where, false);
  bench.start(true, false, false);
  EXPECT_EQ(programmed(), "ipv4 ipv6 mac");
}

TEST_F(Gating, SwitchingRoutingOnAndOffIsFollowedByMpls) {
  attachAt("Ethernet1");
  bench.start();
  EXPECT_EQ(programmed(), "ipv4 ipv6 mac");
  bench.routing->routingIs(true);
  EXPECT_EQ(programmed(), "ipv4 ipv6 mac mpls");
  bench.routing->routingIs(false);
  EXPECT_EQ(programmed(), "ipv4 ipv6 mac");
}

TEST_F(Gating, AnotherStatusObjectIsFollowed) {
  attachAt("Vlan10");
  bench.start();
  EXPECT_EQ(programmed(), "");
  auto const other = Kor::make<Ip::Status>();
  other->intfAddressIs(where, Ip::Address("10.0.0.1/24"));
  bench.machine->ipStatusIs(other);
  EXPECT_EQ(programmed(), "ipv4");
  auto const other6 = Kor::make<Ip6::Status>();
  other6->intfAddressIs(where, Ip6::Address("2001:db8::1/64"));
  bench.machine->ip6StatusIs(other6);
  EXPECT_EQ(programmed(), "ipv4 ipv6");
  auto const routing = Kor::make<Routing::RoutingInfo>();
  routing->routingIs(true);
  bench.machine->routingInfoIs(routing);
  EXPECT_EQ(programmed(), "ipv4 ipv6 mpls");
  bench.machine->routingInfoDel();
  bench.machine->ip6StatusDel();
  EXPECT_EQ(programmed(), "ipv4");
  bench.machine->ipStatusDel();
  EXPECT_EQ(programmed(), "");
}

TEST_F(Gating, OptionsThatAreNotAllowedAreNotProgrammed) {
  attachAt("Ethernet1");
  bench.routing->routingIs(true);
  bench.start();
  bench.machine->allowIpAclIs(false);
  bench.settle();
  EXPECT_FALSE(bench.machine->policyMapSm({"pm", "input"})
                   ->policyCommonData()
                   ->hasIntf(ClassMapMatchOption::ipv4, where));
  auto const stands = [&](ClassMapMatchOption option) {
    bench.settle();
    return bench.status->policyMapStatus({"pm", "input"})->programmed(option);
  };
  EXPECT_FALSE(stands(ClassMapMatchOption::ipv4));
  EXPECT_TRUE(stands(ClassMapMatchOption::ipv6));
  bench.machine->allowIp6AclIs(false);
  EXPECT_FALSE(stands(ClassMapMatchOption::ipv6));
  EXPECT_TRUE(stands(ClassMapMatchOption::mac));
  bench.machine->allowMacAclIs(false);
  EXPECT_FALSE(stands(ClassMapMatchOption::mac));
  EXPECT_TRUE(stands(ClassMapMatchOption::mpls)) << "has no switch of its own";
  bench.machine->allowIpAclIs(true);
  bench.machine->allowIp6AclIs(true);
  bench.machine->allowMacAclIs(true);
  EXPECT_EQ(programmed(), "ipv4 ipv6 mac mpls");
}

TEST_F(Gating, AnInterfaceThatDoesNotExistCountsForNoOption) {
  attachAt("Ethernet1");
  bench.start();
  EXPECT_EQ(programmed(), "ipv4 ipv6 mac");
  bench.machine->nonexistent.insert(where);
  bench.machine->handleIntf(where, false);
  EXPECT_EQ(programmed(), "");
  bench.machine->nonexistent.clear();
  EXPECT_EQ(programmed(), "") << "nobody has said so yet";
  bench.machine->handleIntf(where, false);
  EXPECT_EQ(programmed(), "ipv4 ipv6 mac");
}

}  // namespace
}  // namespace policymap
