// SPDX-License-Identifier: Apache-2.0
#include "acl/ValueChecks.h"
#include "support/Allocations.h"

#include <Vorel/IntfId.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using TestSupport::expectTextForm;
using TestSupport::rangeError;
using Vorel::IntfId;
using Vorel::IntfKind;

std::string canonical(std::string const& name) {
  return IntfId(name).name().stdString();
}

TEST(IntfId, IsOneWordThatCanBeCopiedAsSuch) {
  static_assert(sizeof(IntfId) == 4);
  static_assert(std::is_trivially_copyable_v<IntfId>);
  SUCCEED();
}

TEST(IntfId, EveryKindPrintsBackAsItWasRead) {
  for (char const* const name :
       {"Ethernet3/1", "FastEthernet0/1", "GigabitEthernet0/0/0", "TenGigabitEthernet1/2/3/4",
        "TwentyFiveGigE1/0/1", "FortyGigabitEthernet1/1", "HundredGigE1/0/49", "Serial0/0",
        "PortChannel7", "Vlan10", "Management1", "Loopback0", "Tunnel100", "BDI20",
        "Ethernet3/1.100", "PortChannel7.4294967295", "Management1/1"}) {
    EXPECT_EQ(canonical(name), name);
  }
}

TEST(IntfId, UsualSpellingsNameTheSameInterface) {
  for (char const* const name :
       {"Port-channel7", "port-channel 7", "PORTCHANNEL7", "po7", "Po 7", "Port-Channel007"}) {
    EXPECT_EQ(IntfId(name), IntfId("PortChannel7")) << name;
  }
  EXPECT_EQ(canonical("Gi0/1"), "GigabitEthernet0/1");
  EXPECT_EQ(canonical("gige0/1"), "GigabitEthernet0/1");
  EXPECT_EQ(canonical("Te1/1"), "TenGigabitEthernet1/1");
  EXPECT_EQ(canonical("TenGigE0/0/0/1"), "TenGigabitEthernet0/0/0/1");
  EXPECT_EQ(canonical("TwentyFiveGigabitEthernet1/1"), "TwentyFiveGigE1/1");
  EXPECT_EQ(canonical("FortyGigE1/1"), "FortyGigabitEthernet1/1");
  EXPECT_EQ(canonical("HundredGigabitEthernet1/1"), "HundredGigE1/1");
  EXPECT_EQ(canonical("eth3/1"), "Ethernet3/1");
  EXPECT_EQ(canonical("mgmt0"), "Management0");
  EXPECT_EQ(canonical("ma1"), "Management1");
  EXPECT_EQ(canonical("vlan 10"), "Vlan10");
  EXPECT_EQ(canonical("lo0"), "Loopback0");
}

TEST(IntfId, ABadNameIsRefusedWithItsText) {
  EXPECT_EQ(rangeError([] { IntfId("Foo"); }), "IntfId: 'Foo' is not an interface name");
  for (char const* const name : {"",
                                 " ",
                                 "3",
                                 "3/1",
                                 "E3",
                                 "T1",
                                 "t1",
                                 "Ethernet",
                                 "Ethernet ",
                                 "Ethernet/",
                                 "Ethernet3/",
                                 "Ethernet/3",
                                 "Ethernet3//1",
                                 "Ethernet3/1/2/3/4",
                                 "Ethernet65536",
                                 "Ethernet3/65536",
                                 "Ethernet-3",
                                 "-Ethernet3",
                                 "Ethernet--3",
                                 "Ethernet+3",
                                 "Ethernet3.",
                                 "Ethernet3.0",
                                 "Ethernet3.x",
                                 "Ethernet3.1.2",
                                 "Ethernet3.4294967296",
                                 "Ethernet3 ",
                                 "Ethernet3 /1",
                                 " Ethernet3",
                                 "Ethernet99999999999999999999",
                                 "Vlan0",
                                 "Vlan4095",
                                 "Vlan10.5",
                                 "Vlan1/1",
                                 "PortChannel1/1",
                                 "Loopback2147483648",
                                 "Loopback0.1",
                                 "BDI0",
                                 "Ethernet3\n",
                                 "Vlan10x",
                                 "none",
                                 "none0",
                                 "xe-0/0/0"}) {
    EXPECT_EQ(rangeError([&] { (void)IntfId(name); }),
              "IntfId: '" + std::string(name) + "' is not an interface name");
  }
  std::string const withNul("Vlan1\0", 6);
  EXPECT_EQ(rangeError([&] { (void)IntfId(withNul); }),
            "IntfId: '" + withNul + "' is not an interface name");
}

TEST(IntfId, TheEndsOfARangeAreNames) {
  for (char const* const name : {"Vlan1", "Vlan4094", "Ethernet0", "Ethernet65535", "BDI1",
                                 "Loopback2147483647", "Ethernet0/65535.1"}) {
    EXPECT_EQ(canonical(name), name);
  }
}

TEST(IntfId, TellsItsKindAndItsNumbers) {
  IntfId const intf("Ethernet3/1.100");
  EXPECT_EQ(intf.kind(), IntfKind::ethernet);
  EXPECT_EQ(std::vector<std::uint32_t>(intf.numbers().begin(), intf.numbers().end()),
            (std::vector<std::uint32_t>{3, 1}));
  EXPECT_EQ(intf.subIntf(), 100U);
  EXPECT_TRUE(intf.isSubIntf());
  EXPECT_EQ(intf.parent(), IntfId("Ethernet3/1"));
  EXPECT_EQ(IntfId("Ethernet3/1").parent(), IntfId("Ethernet3/1"));
  EXPECT_EQ(IntfId().parent(), IntfId());

  for (char const* const name : {"Ethernet1", "FastEthernet1", "GigabitEthernet1", "Serial1",
                                 "TenGigabitEthernet1", "TwentyFiveGigE1", "HundredGigE1"}) {
    EXPECT_TRUE(IntfId(name).isPhysical()) << name;
  }
  for (char const* const name : {"PortChannel1", "Vlan1", "Management1", "Loopback1", "Tunnel1"}) {
    EXPECT_FALSE(IntfId(name).isPhysical()) << name;
  }
  EXPECT_TRUE(IntfId("PortChannel1").isPortChannel());
  EXPECT_TRUE(IntfId("Vlan1").isVlan());
  EXPECT_TRUE(IntfId("Management1").isManagement());
  EXPECT_TRUE(IntfId("Loopback1").isLoopback());
  EXPECT_TRUE(IntfId("Tunnel1").isTunnel());
  EXPECT_FALSE(IntfId("Vlan1").isManagement());
  EXPECT_FALSE(IntfId().isPhysical());
}

TEST(IntfId, DefaultBuiltIsNoInterface) {
  IntfId const none;
  EXPECT_TRUE(!none);
  EXPECT_EQ(none.kind(), IntfKind::none);
  EXPECT_EQ(none.name(), "");
  EXPECT_TRUE(none.numbers().empty());
  EXPECT_FALSE(!IntfId("Vlan1"));
  expectTextForm(none, "''");
}

TEST(IntfId, TextFormIsTheQuotedName) {
  expectTextForm(IntfId("Ethernet3/1"), "'Ethernet3/1'");
  EXPECT_EQ(Kor::strepToValue<IntfId>("  \"port-channel 7\""), IntfId("PortChannel7"));
}

TEST(IntfId, ABadTextFormIsRefusedWithItsColumn) {
  EXPECT_EQ(rangeError([] { (void)Kor::strepToValue<IntfId>("  'Foo'"); }),
            "IntfId: 'Foo' is not an interface name at column 2");
  EXPECT_EQ(rangeError([] { (void)Kor::strepToValue<IntfId>("Vlan1"); }),
            "expected a string at column 0");
  EXPECT_EQ(rangeError([] { (void)Kor::strepToValue<IntfId>("'Vlan1' x"); }).substr(0, 4), "junk");
}

TEST(IntfId, WritesTheBareNameWhateverTheStreamsFormat) {
  EXPECT_EQ(TestSupport::printed(IntfId("Ethernet10/16")), "Ethernet10/16");
}

TEST(IntfId, SortsByKindAndNumbersNotByTheOrderOfReading) {
  // Read in descending order, so that identifiers assigned in reading order would sort the other
  // way.
  std::vector<std::string> names{"Ethernet1",   "Ethernet1.1",   "Ethernet1.2",      "Ethernet1/0",
                                 "Ethernet1/2", "Ethernet1/10",  "Ethernet1/10/1",   "Ethernet2",
                                 "Ethernet10",  "FastEthernet0", "GigabitEthernet0", "PortChannel5",
                                 "Vlan9",       "Management0",   "Loopback3"};
  std::reverse(names.begin(), names.end());
  std::vector<IntfId> intfs;
  for (std::string const& name : names) {
    intfs.emplace_back(name);
  }
  intfs.emplace_back();
  std::reverse(intfs.begin(), intfs.end());
  TestSupport::expectAscending(intfs);
}

TEST(IntfId, HashesByKindAndNumbers) {
  // Identical in every process and with every compiler.
  EXPECT_EQ(IntfId("Ethernet3/1").hash(), IntfId("eth3/1").hash());
  EXPECT_EQ(IntfId("Ethernet3/1").hash(),
            Kor::hashCombine(
                Kor::hashCombine(Kor::hashCombine(Kor::hashOf(IntfKind::ethernet), 3), 1), 0));
}

TEST(IntfId, HashAndComparisonAllocateNothing) {
  IntfId const a("Ethernet3/1");
  IntfId const b("Ethernet3/2");
  bool ordered = false;
  EXPECT_FALSE(TestSupport::allocates([&] { ordered = a < b && a.hash() != b.hash() && a != b; }));
  EXPECT_TRUE(ordered);
}

TEST(IntfId, ItsTypeIsAValueType) {
  EXPECT_EQ(IntfId().fwkType()->name(), "Vorel::IntfId");
  EXPECT_EQ(IntfId::_fwkType()->base(), nullptr);
}

}  // namespace
