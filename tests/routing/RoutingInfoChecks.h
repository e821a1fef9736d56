// SPDX-License-Identifier: Apache-2.0
#pragma once

// Tests of the routing information of both IP versions:
//
//   INSTANTIATE_TYPED_TEST_SUITE_P(Routing, RoutingInfoOf, Version);

#include "acl/ValueChecks.h"
#include "support/Watcher.h"

#include <Vorel/IntfId.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace RoutingVersions {

using testing::ElementsAre;
using Vorel::IntfId;

template <class Version>
class RoutingInfoOf : public testing::Test {
 protected:
  class Watch : public TestSupport::Watcher<typename Version::RoutingInfo::NotifieeConst> {
   public:
    using TestSupport::Watcher<typename Version::RoutingInfo::NotifieeConst>::Watcher;
    void onRouting() override { this->heard(this->notifier()->routing() ? "on" : "off"); }
    void onRoutedIntf(IntfId intf) override {
      this->heard(intf.name().stdString() +
                  (this->notifier()->routedIntf(intf) ? " routed" : " not routed"));
    }
  };
};

TYPED_TEST_SUITE_P(RoutingInfoOf);

TYPED_TEST_P(RoutingInfoOf, AnnouncesEachChangeOnce) {
  auto const info = Kor::make<typename TypeParam::RoutingInfo>();
  TestSupport::Journal journal;
  auto const watch = Kor::make<typename TestFixture::Watch>(journal, "w", info.get());
  auto const log = Kor::make<TestSupport::LogRecorder>(*info);
  IntfId const intf("Ethernet1");
  info->routingIs(false);
  info->routingIs(true);
  info->routingIs(true);
  info->routedIntfIs(intf, true);
  info->routedIntfIs(intf, true);
  info->routedIntfDel(intf);
  info->routingIs(false);
  EXPECT_THAT(journal,
              ElementsAre("w: on", "w: Ethernet1 routed", "w: Ethernet1 not routed", "w: off"));
  EXPECT_THAT(log->take(), ElementsAre("routing", "routedIntf", "routedIntf", "routing"));
}

TYPED_TEST_P(RoutingInfoOf, IsAnEntityOfItsOwnType) {
  using RoutingInfo = typename TypeParam::RoutingInfo;
  RoutingInfo const info;
  EXPECT_EQ(info.name(), TypeParam::name);
  EXPECT_FALSE(info.routing());
  EXPECT_EQ(info.fwkType()->name(), TypeParam::type);
  EXPECT_EQ(info.fwkType()->level(), 2U);
  EXPECT_EQ(RoutingInfo::routingId, 258U);
  EXPECT_EQ(RoutingInfo::routedIntfId, 259U);
  EXPECT_EQ(info.attributeString(Kor::Entity::nameId), "name");
}

REGISTER_TYPED_TEST_SUITE_P(RoutingInfoOf, AnnouncesEachChangeOnce, IsAnEntityOfItsOwnType);

}  // namespace RoutingVersions
