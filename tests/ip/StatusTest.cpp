// SPDX-License-Identifier: Apache-2.0
#include "acl/ValueChecks.h"
#include "support/Watcher.h"

#include <Ip/Status.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using Ip::Address;
using Ip::Status;
using testing::ElementsAre;
using TestSupport::expectTextForm;
using TestSupport::rangeError;
using Vorel::IntfId;

TEST(IpAddress, PrintsAndReadsBack) {
  expectTextForm(Address("10.0.0.1/24"), "'10.0.0.1/24'");
  expectTextForm(Address(), "''");
  EXPECT_EQ(TestSupport::printed(Address("10.0.0.1/24")), "'10.0.0.1/24'");
}

TEST(IpAddress, WithoutALengthIsOneAddress) {
  EXPECT_EQ(Address("127.0.0.1").length(), 32);
  EXPECT_EQ(Address("127.0.0.1").text(), "127.0.0.1/32");
}

TEST(IpAddress, ABadAddressIsRefusedWithItsText) {
  for (char const* const text :
       {"", "x", "10.0.0.1/24/1", "127.0.0.1/", "127.0.0.1/999", "127.0.0.1/-1", "/8", "any"}) {
    EXPECT_EQ(rangeError([&] { (void)Address(text); }),
              "Ip::Address: '" + std::string(text) + "' is not an address");
  }
}

TEST(IpAddress, TheLengthIsCheckedWhenBuiltFromBytes) {
  Address::Bytes const bytes{1, 2};
  EXPECT_EQ(Address(bytes, 0).length(), 0);
  EXPECT_EQ(Address(bytes, 32).length(), 32);
  for (std::int64_t const length : {-1, 32 + 1}) {
    EXPECT_EQ(rangeError([&] { (void)Address(bytes, length); }),
              "Ip::Address::length < 0 or > 32 not allowed");
  }
}

TEST(IpAddress, SortsByAddressAndLength) {
  Address const first("10.0.0.1/24");
  TestSupport::expectAscending<Address>(
      {Address(), Address(first.bytes(), first.length() - 1), first, Address("10.0.0.2/24")});
  EXPECT_TRUE(!Address());
  EXPECT_FALSE(!first);
  EXPECT_EQ(first.fwkType()->name(), "Ip::Address");
}

class Watch : public TestSupport::Watcher<Status::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onIntfAddress(IntfId intf) override {
    heard(intf.name().stdString() + " has " + notifier()->intfAddress(intf).text().stdString());
  }
};

TEST(IpStatus, AnnouncesEachChangeOfAnAddressOnce) {
  auto const status = Kor::make<Status>();
  TestSupport::Journal journal;
  auto const watch = Kor::make<Watch>(journal, "w", status.get());
  auto const log = Kor::make<TestSupport::LogRecorder>(*status);
  IntfId const intf("Vlan10");
  status->intfAddressIs(intf, Address("10.0.0.1/24"));
  status->intfAddressIs(intf, Address("10.0.0.1/24"));
  status->intfAddressIs(intf, Address("10.0.0.2/24"));
  status->intfAddressDel(intf);
  status->intfAddressDel(intf);
  EXPECT_THAT(journal, ElementsAre("w: Vlan10 has 10.0.0.1/24", "w: Vlan10 has 10.0.0.2/24",
                                   "w: Vlan10 has "));
  EXPECT_THAT(log->take(), ElementsAre("intfAddress", "intfAddress", "intfAddress"));
}

TEST(IpStatus, AModifyingNotifieeHearsToo) {
  class Undo : public Status::Notifiee {
   public:
    using Notifiee::Notifiee;
    void onIntfAddress(IntfId /*intf*/) override { ++calls; }
    int calls = 0;
  };
  auto const status = Kor::make<Status>();
  auto const undo = Kor::make<Undo>(status.get());
  status->intfAddressIs(IntfId("Vlan10"), Address("10.0.0.1/24"));
  EXPECT_EQ(undo->calls, 1);
}

TEST(IpStatus, IsAnEntityOfItsOwnType) {
  Status const status;
  EXPECT_EQ(status.name(), "ip");
  EXPECT_EQ(status.fwkType()->name(), "Ip::Status");
  EXPECT_EQ(status.fwkType()->level(), 2U);
  EXPECT_EQ(Status::intfAddressId, 258U);
  EXPECT_EQ(status.attributeString(Kor::Entity::nameId), "name");
  EXPECT_EQ(status.attributeString(259), "unknown");
}

}  // namespace
