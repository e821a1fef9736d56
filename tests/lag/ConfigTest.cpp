// SPDX-License-Identifier: Apache-2.0
#include "acl/ValueChecks.h"
#include "support/Watcher.h"

#include <Lag/Config.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Lag::Input::Config;
using testing::ElementsAre;
using testing::IsEmpty;
using Vorel::IntfId;

IntfId const eth1("Ethernet1");
IntfId const eth2("Ethernet2");
IntfId const eth10("Ethernet10");
IntfId const po1("PortChannel1");
IntfId const po2("PortChannel2");

class Watch : public TestSupport::Watcher<Config::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onMember(IntfId member) override {
    auto const members = notifier()->members(po1).size();
    heard(member.name().stdString() + " of " + notifier()->memberOf(member).name().stdString() +
          ", po1 has " + std::to_string(members));
  }
};

TEST(LagConfig, MembersAreSortedByInterface) {
  Config config;
  config.memberOfIs(eth10, po1);
  config.memberOfIs(eth1, po1);
  config.memberOfIs(eth2, po1);
  EXPECT_THAT(config.members(po1), ElementsAre(eth1, eth2, eth10));
  EXPECT_THAT(config.members(po2), IsEmpty());
}

TEST(LagConfig, AMemberThatChangesItsChannelLeavesTheOther) {
  Config config;
  config.memberOfIs(eth1, po1);
  config.memberOfIs(eth2, po1);
  config.memberOfIs(eth1, po2);
  EXPECT_THAT(config.members(po1), ElementsAre(eth2));
  EXPECT_THAT(config.members(po2), ElementsAre(eth1));
}

TEST(LagConfig, SilentEntriesAreIndexedToo) {
  Config config;
  config.newMemberOf(eth1, po1);
  EXPECT_THAT(config.members(po1), ElementsAre(eth1));
  config.newMemberOf(eth1, po2);
  EXPECT_THAT(config.members(po1), IsEmpty());
  EXPECT_THAT(config.members(po2), ElementsAre(eth1));
  EXPECT_EQ(config.memberOfs(), 1U);
}

TEST(LagConfig, EveryWayToRemoveAMemberTakesItOutOfTheIndex) {
  Config config;
  for (IntfId const member : {eth1, eth2, eth10}) {
    config.memberOfIs(member, po1);
  }
  EXPECT_EQ(config.memberOfDel(eth1), po1);
  EXPECT_THAT(config.members(po1), ElementsAre(eth2, eth10));
  for (auto it = config.memberOfIterator(); it; ++it) {
    if (it.key() == eth2) {
      it.del();
    }
  }
  EXPECT_THAT(config.members(po1), ElementsAre(eth10));
  config.memberOfDelAll();
  EXPECT_THAT(config.members(po1), IsEmpty());
}

TEST(LagConfig, NoPortChannelIsNotIndexed) {
  Config config;
  config.memberOfIs(eth1, po1);
  config.memberOfIs(eth1, IntfId());
  EXPECT_THAT(config.members(po1), IsEmpty());
  EXPECT_THAT(config.members(IntfId()), IsEmpty());
}

TEST(LagConfig, TheHookSeesTheIndexUpToDateAndOnlyChangesAreAnnounced) {
  auto const config = Kor::make<Config>("lag");
  TestSupport::Journal journal;
  auto const watch = Kor::make<Watch>(journal, "w", config.get());
  config->memberOfIs(eth1, po1);
  config->memberOfIs(eth1, po1);
  config->newMemberOf(eth2, po1);
  config->memberOfIs(eth1, po2);
  config->memberOfDel(eth2);
  config->memberOfDel(eth2);
  EXPECT_THAT(journal, ElementsAre("w: Ethernet1 of PortChannel1, po1 has 1",
                                   "w: Ethernet1 of PortChannel2, po1 has 1",
                                   "w: Ethernet2 of , po1 has 0"));
}

TEST(LagConfig, LogsItsAttribute) {
  auto const config = Kor::make<Config>();
  auto const log = Kor::make<TestSupport::LogRecorder>(*config);
  config->memberOfIs(eth1, po1);
  EXPECT_THAT(log->take(), ElementsAre("memberOf"));
  EXPECT_EQ(config->attributeString(Kor::Entity::nameId), "name");
  EXPECT_EQ(config->attributeString(Config::memberOfId + 1), "unknown");
}

TEST(LagConfig, IsAnEntityOfItsOwnType) {
  auto const config = Kor::make<Config>("x");
  EXPECT_EQ(config->name(), "x");
  EXPECT_EQ(config->fwkType()->name(), "Lag::Input::Config");
  EXPECT_EQ(config->fwkType()->level(), 2U);
  EXPECT_EQ(Config::memberOfId, 258U);
}

}  // namespace
