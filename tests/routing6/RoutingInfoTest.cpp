// SPDX-License-Identifier: Apache-2.0
#include "acl/ValueChecks.h"
#include "support/Watcher.h"

#include <Routing6/RoutingInfo.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using Routing6::RoutingInfo;
using testing::ElementsAre;
using Vorel::IntfId;

class Watch : public TestSupport::Watcher<RoutingInfo::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onRouting() override { heard(notifier()->routing() ? "on" : "off"); }
  void onRoutedIntf(IntfId intf) override {
    heard(intf.name().stdString() + (notifier()->routedIntf(intf) ? " routed" : " not routed"));
  }
};

TEST(Routing6Info, AnnouncesEachChangeOnce) {
  auto const info = Kor::make<RoutingInfo>();
  TestSupport::Journal journal;
  auto const watch = Kor::make<Watch>(journal, "w", info.get());
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

TEST(Routing6Info, IsAnEntityOfItsOwnType) {
  RoutingInfo const info;
  EXPECT_EQ(info.name(), "routing6");
  EXPECT_FALSE(info.routing());
  EXPECT_EQ(info.fwkType()->name(), "Routing6::RoutingInfo");
  EXPECT_EQ(info.fwkType()->level(), 2U);
  EXPECT_EQ(RoutingInfo::routingId, 258U);
  EXPECT_EQ(RoutingInfo::routedIntfId, 259U);
  EXPECT_EQ(info.attributeString(Kor::Entity::nameId), "name");
}

}  // namespace
