// SPDX-License-Identifier: Apache-2.0
#include "acl/ValueChecks.h"
#include "support/Watcher.h"

#include <Ip6/Status.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using Ip6::Address;
using Ip6::Status;
using testing::ElementsAre;
using TestSupport::expectTextForm;
using TestSupport::rangeError;
using Vorel::IntfId;

TEST(Ip6Address, PrintsAndReadsBack) {
  expectTextForm(Address("2001:db8::1/64"), "'2001:db8::1/64'");
  expectTextForm(Address(), "''");
  EXPECT_EQ(TestSupport::printed(Address("2001:db8::1/64")), "'2001:db8::1/64'");
}

TEST(Ip6Address, WithoutALengthIsOneAddress) {
  EXPECT_EQ(Address("::1").length(), 128);
  EXPECT_EQ(Address("::1").text(), "::1/128");
}

TEST(Ip6Address, ABadAddressIsRefusedWithItsText) {
  for (char const* const text :
       {"", "x", "2001:db8::1/64/1", "::1/", "::1/999", "::1/-1", "/8", "any"}) {
    EXPECT_EQ(rangeError([&] { (void)Address(text); }),
              "Ip6::Address: '" + std::string(text) + "' is not an address");
  }
}

TEST(Ip6Address, TheLengthIsCheckedWhenBuiltFromBytes) {
  Address::Bytes const bytes{1, 2};
  EXPECT_EQ(Address(bytes, 0).length(), 0);
  EXPECT_EQ(Address(bytes, 128).length(), 128);
  for (std::int64_t const length : {-1, 128 + 1}) {
    EXPECT_EQ(rangeError([&] { (void)Address(bytes, length); }),
              "Ip6::Address::length < 0 or > 128 not allowed");
  }
}

TEST(Ip6Address, SortsByAddressAndLength) {
  Address const first("2001:db8::1/64");
  TestSupport::expectAscending<Address>(
      {Address(), Address(first.bytes(), first.length() - 1), first, Address("2001:db8::2/64")});
  EXPECT_TRUE(!Address());
  EXPECT_FALSE(!first);
  EXPECT_EQ(first.fwkType()->name(), "Ip6::Address");
}

class Watch : public TestSupport::Watcher<Status::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onIntfAddress(IntfId intf) override {
    heard(intf.name().stdString() + " has " + notifier()->intfAddress(intf).text().stdString());
  }
};

TEST(Ip6Status, AnnouncesEachChangeOfAnAddressOnce) {
  auto const status = Kor::make<Status>();
  TestSupport::Journal journal;
  auto const watch = Kor::make<Watch>(journal, "w", status.get());
  auto const log = Kor::make<TestSupport::LogRecorder>(*status);
  IntfId const intf("Vlan10");
  status->intfAddressIs(intf, Address("2001:db8::1/64"));
  status->intfAddressIs(intf, Address("2001:db8::1/64"));
  status->intfAddressIs(intf, Address("2001:db8::2/64"));
  status->intfAddressDel(intf);
  status->intfAddressDel(intf);
  EXPECT_THAT(journal, ElementsAre("w: Vlan10 has 2001:db8::1/64", "w: Vlan10 has 2001:db8::2/64",
                                   "w: Vlan10 has "));
  EXPECT_THAT(log->take(), ElementsAre("intfAddress", "intfAddress", "intfAddress"));
}

TEST(Ip6Status, AModifyingNotifieeHearsToo) {
  class Undo : public Status::Notifiee {
   public:
    using Notifiee::Notifiee;
    void onIntfAddress(IntfId /*intf*/) override { ++calls; }
    int calls = 0;
  };
  auto const status = Kor::make<Status>();
  auto const undo = Kor::make<Undo>(status.get());
  status->intfAddressIs(IntfId("Vlan10"), Address("2001:db8::1/64"));
  EXPECT_EQ(undo->calls, 1);
}

TEST(Ip6Status, IsAnEntityOfItsOwnType) {
  Status const status;
  EXPECT_EQ(status.name(), "ip6");
  EXPECT_EQ(status.fwkType()->name(), "Ip6::Status");
  EXPECT_EQ(status.fwkType()->level(), 2U);
  EXPECT_EQ(Status::intfAddressId, 258U);
  EXPECT_EQ(status.attributeString(Kor::Entity::nameId), "name");
  EXPECT_EQ(status.attributeString(259), "unknown");
}

}  // namespace
