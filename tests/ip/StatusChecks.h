// SPDX-License-Identifier: Apache-2.0
#pragma once

// Tests of the statuses of both IP versions. A version is a struct with its types and texts:
//
//   INSTANTIATE_TYPED_TEST_SUITE_P(Ip, StatusOf, Version);

#include "acl/ValueChecks.h"
#include "support/Watcher.h"

#include <Vorel/IntfId.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace IpVersions {

using testing::ElementsAre;
using TestSupport::rangeError;
using Vorel::IntfId;

template <class Version>
class StatusOf : public testing::Test {
 protected:
  class Watch : public TestSupport::Watcher<typename Version::Status::NotifieeConst> {
   public:
    using TestSupport::Watcher<typename Version::Status::NotifieeConst>::Watcher;
    void onIntfAddress(IntfId intf) override {
      this->heard(intf.name().stdString() + " has " +
                  this->notifier()->intfAddress(intf).text().stdString());
    }
  };

  static std::string type(char const* name) { return std::string(Version::space) + "::" + name; }

  typename Version::Address const first{Version::first};
  typename Version::Address const next{Version::next};  // the address after it
};

TYPED_TEST_SUITE_P(StatusOf);

TYPED_TEST_P(StatusOf, AddressPrintsAndReadsBack) {
  std::string const text = "'" + std::string(TypeParam::first) + "'";
  TestSupport::expectTextForm(this->first, text);
  TestSupport::expectTextForm(typename TypeParam::Address(), "''");
  EXPECT_EQ(TestSupport::printed(this->first), text);
}

TYPED_TEST_P(StatusOf, AddressWithoutALengthIsOneAddress) {
  typename TypeParam::Address const loopback(TypeParam::loopback);
  EXPECT_EQ(loopback.length(), TypeParam::bits);
  EXPECT_EQ(loopback.text(),
            std::string(TypeParam::loopback) + "/" + std::to_string(TypeParam::bits));
}

TYPED_TEST_P(StatusOf, ABadAddressIsRefusedWithItsText) {
  std::string const loopback(TypeParam::loopback);
  for (std::string const& text :
       {std::string(), std::string("x"), TypeParam::first + std::string("/1"), loopback + "/",
        loopback + "/999", loopback + "/-1", std::string("/8"), std::string("any")}) {
    EXPECT_EQ(rangeError([&] { (void)typename TypeParam::Address(text); }),
              this->type("Address") + ": '" + text + "' is not an address");
  }
}

TYPED_TEST_P(StatusOf, TheLengthIsCheckedWhenAnAddressIsBuiltFromBytes) {
  using Address = typename TypeParam::Address;
  typename Address::Bytes const bytes{1, 2};
  EXPECT_EQ(Address(bytes, 0).length(), 0);
  EXPECT_EQ(Address(bytes, TypeParam::bits).length(), TypeParam::bits);
  for (std::int64_t const length : {-1, TypeParam::bits + 1}) {
    EXPECT_EQ(rangeError([&] { (void)Address(bytes, length); }),
              this->type("Address") + "::length < 0 or > " + std::to_string(TypeParam::bits) +
                  " not allowed");
  }
}

TYPED_TEST_P(StatusOf, AddressesSortByAddressAndLength) {
  using Address = typename TypeParam::Address;
  TestSupport::expectAscending<Address>(
      {Address(), Address(this->first.bytes(), this->first.length() - 1), this->first, this->next});
  EXPECT_TRUE(!Address());
  EXPECT_FALSE(!this->first);
  EXPECT_EQ(this->first.fwkType()->name(), this->type("Address"));
}

TYPED_TEST_P(StatusOf, EachChangeOfAnAddressIsAnnouncedOnce) {
  auto const status = Kor::make<typename TypeParam::Status>();
  TestSupport::Journal journal;
  auto const watch = Kor::make<typename TestFixture::Watch>(journal, "w", status.get());
  auto const log = Kor::make<TestSupport::LogRecorder>(*status);
  IntfId const intf("Vlan10");
  status->intfAddressIs(intf, this->first);
  status->intfAddressIs(intf, this->first);
  status->intfAddressIs(intf, this->next);
  status->intfAddressDel(intf);
  status->intfAddressDel(intf);
  EXPECT_THAT(journal,
              ElementsAre(std::string("w: Vlan10 has ") + TypeParam::first,
                          std::string("w: Vlan10 has ") + TypeParam::next, "w: Vlan10 has "));
  EXPECT_THAT(log->take(), ElementsAre("intfAddress", "intfAddress", "intfAddress"));
}

TYPED_TEST_P(StatusOf, AModifyingNotifieeHearsToo) {
  class Undo : public TypeParam::Status::Notifiee {
   public:
    using TypeParam::Status::Notifiee::Notifiee;
    void onIntfAddress(IntfId /*intf*/) override { ++calls; }
    int calls = 0;
  };
  auto const status = Kor::make<typename TypeParam::Status>();
  auto const undo = Kor::make<Undo>(status.get());
  status->intfAddressIs(IntfId("Vlan10"), this->first);
  EXPECT_EQ(undo->calls, 1);
}

TYPED_TEST_P(StatusOf, IsAnEntityOfItsOwnType) {
  typename TypeParam::Status const status;
  EXPECT_EQ(status.name(), TypeParam::name);
  EXPECT_EQ(status.fwkType()->name(), this->type("Status"));
  EXPECT_EQ(status.fwkType()->level(), 2U);
  EXPECT_EQ(TypeParam::Status::intfAddressId, 258U);
  EXPECT_EQ(status.attributeString(Kor::Entity::nameId), "name");
  EXPECT_EQ(status.attributeString(259), "unknown");
}

REGISTER_TYPED_TEST_SUITE_P(StatusOf, AddressPrintsAndReadsBack, AddressWithoutALengthIsOneAddress,
                            ABadAddressIsRefusedWithItsText,
                            TheLengthIsCheckedWhenAnAddressIsBuiltFromBytes,
                            AddressesSortByAddressAndLength, EachChangeOfAnAddressIsAnnouncedOnce,
                            AModifyingNotifieeHearsToo, IsAnEntityOfItsOwnType);

}  // namespace IpVersions
