// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"

#include <PolicyMap/ServicePolicyWatches.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace policymap {
namespace {

using PolicyMap::DependencyKind;
using PolicyMap::ServicePolicyWatches;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// Records every report.
class ReportJournal final : public ServicePolicyWatches::Owner {
 public:
  std::vector<std::string> taken() { return std::exchange(lines_, {}); }

  void policyMapConfigChanged(Kor::Name const& name) override { say("policyMap", text(name)); }
  void servicePolicyChanged(PolicyMap::ServicePolicyKey const& place) override {
    say("attachment", text(place.intf()) + "/" + text(place.direction()));
  }
  void dependencyChanged(DependencyKind kind, Kor::Name const& name) override {
    char const* const kinds[] = {"ipAcl", "ip6Acl", "macAcl", "classMap"};
    say(kinds[static_cast<int>(kind)], text(name));
  }
  void countRequested(PolicyMap::PolicyMapSmKey const& policy) override {
    say("count", text(policy.first()) + "/" + text(policy.second()));
  }
  void memberChanged(Vorel::IntfId member) override { say("member", text(member)); }
  void intfChanged(Vorel::IntfId changed) override { say("intf", text(changed)); }
  void routingChanged() override { say("routing", ""); }
  void capabilitiesChanged() override { say("capabilities", ""); }

 private:
  void say(std::string const& what, std::string const& name) {
    lines_.push_back(name.empty() ? what : what + " " + name);
  }

  std::vector<std::string> lines_;
};

class Watches : public testing::Test {
 protected:
  Watches() {
    watches.policyConfig.objectIs(bench.policies);
    watches.classTypeConfig.objectIs(bench.classes);
    watches.statusRequestDir.objectIs(bench.requests);
    watches.aclConfig.objectIs(bench.acls);
    watches.lagConfig.objectIs(bench.lag);
    watches.ipStatus.objectIs(bench.ip);
    watches.ip6Status.objectIs(bench.ip6);
    watches.routingInfo.objectIs(bench.routing);
    watches.routing6Info.objectIs(bench.routing6);
    watches.aclHelper.objectIs(bench.helper);
  }
  // Changes each object once.
  void changeEverything() const {
    bench.policies->policyMapConfigIs("pm");
    bench.attach("pm", "Ethernet1");
    bench.classes->classMapConfigIs("c");
    bench.requests->countRequestIs({"pm", "input"}, 1);
    bench.acls->ipAclIs("four");
    bench.acls->ip6AclIs("six");
    bench.acls->macAclIs("mac");
    bench.lag->memberOfIs(intf("Ethernet1"), intf("PortChannel1"));
    bench.ip->intfAddressIs(intf("Ethernet2"), Ip::Address("10.0.0.1/24"));
    bench.ip6->intfAddressIs(intf("Ethernet3"), Ip6::Address("2001:db8::1/64"));
    bench.routing->routingIs(true);
    bench.routing->routedIntfIs(intf("Ethernet4"), true);
    bench.routing6->routingIs(true);
    bench.routing6->routedIntfIs(intf("Ethernet5"), true);
    bench.helper->ttlSupportedIs(false);
  }

  PolicyBench bench;
  ReportJournal journal;
  ServicePolicyWatches watches{journal};
};

TEST_F(Watches, ReportEachChangeOnce) {
  watches.hasNotificationActiveIs(true);
  changeEverything();
  EXPECT_THAT(journal.taken(),
              ElementsAre("policyMap pm", "attachment Ethernet1/input", "classMap c",
                          "count pm/input", "ipAcl four", "ip6Acl six", "macAcl mac",
                          "member Ethernet1", "intf Ethernet2", "intf Ethernet3", "routing",
                          "intf Ethernet4", "routing", "intf Ethernet5", "capabilities"));
}

TEST_F(Watches, AreQuietUntilNotificationsAreOnAndAfterTheyAreOff) {
  changeEverything();
  watches.hasNotificationActiveIs(true);
  EXPECT_THAT(journal.taken(), IsEmpty());
  watches.hasNotificationActiveIs(false);
  bench.policies->policyMapConfigDel("pm");
  bench.helper->ttlSupportedIs(true);
  EXPECT_THAT(journal.taken(), IsEmpty());
}

TEST_F(Watches, LetGoOfEverythingAsZombies) {
  watches.hasNotificationActiveIs(true);
  watches.korDoZombieReactors(true);
  changeEverything();
  EXPECT_THAT(journal.taken(), IsEmpty());
  watches.korDoZombieReactors(false);
  bench.policies->policyMapConfigDel("pm");
  EXPECT_THAT(journal.taken(), ElementsAre("policyMap pm"));
}

TEST_F(Watches, ReportEveryCapability) {
  watches.hasNotificationActiveIs(true);
  auto& helper = *bench.helper;
  helper.updateActionSupportedIs(!helper.updateActionSupported());
  helper.reprogramPolicyOnIntfChangeIs(!helper.reprogramPolicyOnIntfChange());
  helper.expandPortChannelsIs(!helper.expandPortChannels());
  helper.denyRulesAllowedIs(!helper.denyRulesAllowed());
  helper.ttlSupportedIs(!helper.ttlSupported());
  helper.onlyTtlEqSupportedIs(!helper.onlyTtlEqSupported());
  helper.ackOrRstSupportedIs(!helper.ackOrRstSupported());
  helper.establishedSupportedIs(!helper.establishedSupported());
  helper.subRulesForL4PortsIs(!helper.subRulesForL4Ports());
  helper.asyncOperationsIs(!helper.asyncOperations());
  auto const lines = journal.taken();
  EXPECT_THAT(lines, SizeIs(10));
  EXPECT_THAT(lines, Each(std::string("capabilities")));
}

}  // namespace
}  // namespace policymap
