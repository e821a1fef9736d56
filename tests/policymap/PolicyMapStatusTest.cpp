// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"
#include "policymap/StatusWatcher.h"

#include <PolicyMap/PolicyMapStatus.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace policymap {
namespace {

using PolicyMap::PolicyMapSmKey;
using PolicyMap::PolicyMapStatus;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::Journal;

TEST(Status, OfAPolicyAnnouncesEachChangeOnce) {
  auto const status = Kor::make<PolicyMapStatus>(PolicyMapSmKey("pm", "input"));
  EXPECT_EQ(status->name(), "pm");
  EXPECT_EQ(status->key(), PolicyMapSmKey("pm", "input"));
  Journal journal;
  auto const watcher = Kor::make<StatusWatcher>(journal, "w", status.get());
  status->errorIs("table full");
  status->errorIs("table full");
  status->programmedIs(ClassMapMatchOption::mac, true);
  status->programmedIs(ClassMapMatchOption::mac, true);
  status->programmedDel(ClassMapMatchOption::ipv4);
  status->programmedDel(ClassMapMatchOption::mac);
  auto const classStatus = status->classMapStatusIs("c");
  classStatus->errorIs("inside");
  status->classMapStatusDel("c");
  status->timeProgrammedIs(ClassMapMatchOption::mac, 0);
  status->timeProgrammedIs(ClassMapMatchOption::mac, 0);
  status->timeProgrammedIs(ClassMapMatchOption::mac, 1.5);
  status->timeProgrammedDel(ClassMapMatchOption::mac);
  status->appliedIntfIs({ClassMapMatchOption::mac, intf("Ethernet1")}, true);
  status->appliedIntfIs({ClassMapMatchOption::mac, intf("Ethernet1")}, true);
  status->appliedIntfDel({ClassMapMatchOption::ipv4, intf("Ethernet1")});
  status->appliedIntfDel({ClassMapMatchOption::mac, intf("Ethernet1")});
  EXPECT_THAT(journal,
              ElementsAre("w: error", "w: programmed mac", "w: programmed mac", "w: class c",
                          "w: class c", "w: time of mac", "w: time of mac", "w: time of mac gone",
                          "w: mac at Ethernet1", "w: mac not at Ethernet1"));
}

TEST(Status, OfAPolicyListsTheInterfacesOfAnOptionAscending) {
  auto const status = Kor::make<PolicyMapStatus>(PolicyMapSmKey("pm", "input"));
  for (char const* const name : {"Ethernet10", "Vlan1", "Ethernet2", "PortChannel7"}) {
    status->appliedIntfIs({ClassMapMatchOption::ipv4, intf(name)}, true);
  }
  status->appliedIntfIs({ClassMapMatchOption::ipv6, intf("Ethernet3")}, true);
  std::vector<Vorel::IntfId> const intfs = status->intfs(ClassMapMatchOption::ipv4);
  EXPECT_EQ(intfs.size(), 4U);
  EXPECT_TRUE(std::is_sorted(intfs.begin(), intfs.end()));
  EXPECT_THAT(status->intfs(ClassMapMatchOption::ipv6), ElementsAre(intf("Ethernet3")));
  EXPECT_THAT(status->intfs(ClassMapMatchOption::mac), IsEmpty());
}

}  // namespace
}  // namespace policymap
