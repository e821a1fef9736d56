// SPDX-License-Identifier: Apache-2.0
#include <PolicyMap/IntfEligibility.h>

#include <gmock/gmock.h>

#include <ostream>
#include <sstream>
#include <string>

namespace policymap {
namespace {

using PolicyMap::AllowedKinds;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::IntfEligibility;
using PolicyMap::IntfStatuses;

// The statuses of one interface.
struct Facts {
  bool ip = false;
  bool ip6 = false;
  bool routed = false;
  bool routed6 = false;
  bool routing = false;
};

struct EligibilityRow {
  char const* name;
  char const* intf;
  Facts facts;
  char const* layer;    // "2", "3" or ""
  char const* options;  // eligible for these

  friend void PrintTo(EligibilityRow const& row, std::ostream* out) { *out << row.name; }
};

class IntfEligibilityTable : public testing::TestWithParam<EligibilityRow> {
 protected:
  IntfEligibilityTable() : intf(Kor::String8(GetParam().intf)) {
    Facts const& facts = GetParam().facts;
    if (facts.ip) {
      ip->intfAddressIs(intf, Ip::Address("10.0.0.1/24"));
    }
    if (facts.ip6) {
      ip6->intfAddressIs(intf, Ip6::Address("2001:db8::1/64"));
    }
    routing->routedIntfIs(intf, facts.routed);
    routing6->routedIntfIs(intf, facts.routed6);
    routing->routingIs(facts.routing);
  }

  Kor::Ptr<Ip::Status> const ip = Kor::make<Ip::Status>();
  Kor::Ptr<Ip6::Status> const ip6 = Kor::make<Ip6::Status>();
  Kor::Ptr<Routing::RoutingInfo> const routing = Kor::make<Routing::RoutingInfo>();
  Kor::Ptr<Routing6::RoutingInfo> const routing6 = Kor::make<Routing6::RoutingInfo>();
  Vorel::IntfId const intf;
  IntfEligibility const eligibility{
      IntfStatuses{ip.get(), ip6.get(), routing.get(), routing6.get()}};
};

TEST_P(IntfEligibilityTable, TellsAddressesAndLayers) {
  std::string const layer = GetParam().layer;
  EXPECT_EQ(eligibility.hasIp(intf), GetParam().facts.ip);
  EXPECT_EQ(eligibility.hasIp6(intf), GetParam().facts.ip6);
  EXPECT_EQ(eligibility.isLayer2(intf), layer == "2");
  EXPECT_EQ(eligibility.isLayer3(intf), layer == "3");
}

TEST_P(IntfEligibilityTable, TellsTheOptions) {
  std::ostringstream found;
  for (ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
    if (eligibility.allowsOption(intf, option)) {
      found << (found.str().empty() ? "" : " ") << option;
    }
  }
  EXPECT_EQ(found.str(), GetParam().options);
}

TEST_P(IntfEligibilityTable, GoesByTheFlagOfTheKind) {
  std::string const layer = GetParam().layer;
  for (unsigned flags = 0; flags < 8; ++flags) {
    AllowedKinds const kinds{(flags & 1U) != 0, (flags & 2U) != 0, (flags & 4U) != 0};
    bool const expected = intf.isManagement() ? kinds.management
                          : layer == "2"      ? kinds.layer2
                                              : layer == "3" && kinds.layer3;
    EXPECT_EQ(eligibility.isAllowed(intf, kinds), expected) << flags;
  }
}

INSTANTIATE_TEST_SUITE_P(
    IntfEligibility, IntfEligibilityTable,
    testing::Values(
        EligibilityRow{"switchport", "Ethernet1", {}, "2", "ipv4 ipv6 mac"},
        EligibilityRow{
            "switchportWithRoutingOn", "Ethernet1", {.routing = true}, "2", "ipv4 ipv6 mac mpls"},
        EligibilityRow{"portChannel", "PortChannel7", {}, "2", "ipv4 ipv6 mac"},
        EligibilityRow{"vlanWithoutAddress", "Vlan10", {}, "", ""},
        EligibilityRow{"loopbackWithoutAddress", "Loopback0", {}, "", ""},
        EligibilityRow{"routed", "Ethernet1", {.routed = true}, "3", "mac"},
        EligibilityRow{"routed6", "Ethernet1", {.routed6 = true}, "3", "mac"},
        EligibilityRow{"ipv4", "Ethernet1", {.ip = true}, "3", "ipv4 mac"},
        EligibilityRow{"ipv6", "Ethernet1", {.ip6 = true}, "3", "ipv6 mac"},
        EligibilityRow{"both", "Ethernet1", {.ip = true, .ip6 = true}, "3", "ipv4 ipv6 mac"},
        EligibilityRow{"portChannelWithAddress", "PortChannel7", {.ip = true}, "3", "ipv4"},
        EligibilityRow{"routedPortChannel", "PortChannel7", {.routed = true}, "3", ""},
        EligibilityRow{
            "vlanWithAddress", "Vlan10", {.ip = true, .routing = true}, "3", "ipv4 mpls"},
        EligibilityRow{"management", "Management1", {}, "", ""},
        EligibilityRow{"managementWithAddress", "Management1", {.ip = true}, "3", "ipv4"}),
    [](auto const& each) { return std::string(each.param.name); });

TEST(IntfEligibility, WithoutStatusesEverythingPhysicalIsLayer2) {
  IntfEligibility const eligibility{IntfStatuses()};
  Vorel::IntfId const port(Kor::String8("Ethernet1"));
  EXPECT_TRUE(eligibility.isLayer2(port));
  EXPECT_FALSE(eligibility.isLayer3(port));
  EXPECT_TRUE(eligibility.allowsOption(port, ClassMapMatchOption::ipv4));
  EXPECT_FALSE(eligibility.allowsOption(port, ClassMapMatchOption::mpls));
  EXPECT_TRUE(eligibility.isAllowed(port, {.layer2 = true}));
  EXPECT_FALSE(eligibility.isAllowed(port, AllowedKinds()));
}

TEST(IntfEligibility, TheEmptyAddressIsNone) {
  auto const ip = Kor::make<Ip::Status>();
  Vorel::IntfId const vlan(Kor::String8("Vlan10"));
  ip->intfAddressIs(vlan, Ip::Address());
  EXPECT_FALSE(IntfEligibility({.ip = ip.get()}).hasIp(vlan));
}

}  // namespace
}  // namespace policymap
