// SPDX-License-Identifier: Apache-2.0
#include "policymap/PlainHost.h"
#include "policymap/RecordingMachines.h"

#include <PolicyMap/AttachedPolicies.h>

#include <gmock/gmock.h>

#include <map>
#include <set>
#include <string>
#include <vector>

namespace policymap {
namespace {

using PolicyMap::AttachedPolicies;
using PolicyMap::PolicyMapConfig;
using PolicyMap::PolicyMapSm;
using PolicyMap::PolicyMapSmKey;
using PolicyMap::PolicyMapStatus;
using PolicyMap::PolicyMapTypeConfig;
using PolicyMap::PolicyMapTypeStatus;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

PolicyMapSmKey const pmInput("pm", "input");
PolicyMapSmKey const pmOutput("pm", "output");
PolicyMapSmKey const otherInput("other", "input");

// Holds policy machines, as a service-policy machine does, and records its notifications.
class PlainService final : public AttachedPolicies::Owner {
 public:
  Hooks hooks;
  Kor::Ptr<PolicyMapTypeConfig> config = Kor::make<PolicyMapTypeConfig>();
  Kor::Ptr<PolicyMapTypeConfig const> inForce = config;
  Kor::Ptr<PolicyMapTypeStatus> published = Kor::make<PolicyMapTypeStatus>();
  std::map<PolicyMapSmKey, Kor::Ptr<PolicyMapSm>> machines;
  std::set<Vorel::IntfId> usable;
  bool isReacting = true;
  AttachedPolicies* policies = nullptr;

  Kor::Ptr<PolicyMapTypeConfig const> const& policyConfig() const override { return inForce; }
  Kor::Ptr<PolicyMapTypeStatus> const& status() const override { return published; }
  bool reacting() const override { return isReacting; }
  bool mayCarryPolicies(Vorel::IntfId which) override { return usable.contains(which); }
  void handlePolicyMap(Kor::Name const& name) override {
    hooks.say("handle " + text(name));
    policies->syncPolicyMap(name);
  }
  Kor::Ptr<PolicyMapSm> policyMapSm(PolicyMapSmKey const& key) const override {
    auto const found = machines.find(key);
    return found == machines.end() ? nullptr : found->second;
  }
  Kor::Ptr<PolicyMapSm> createPolicyMapSm(PolicyMapSmKey const& key,
                                          Kor::Ptr<PolicyMapConfig const> const& policyMap,
                                          Kor::Ptr<PolicyMapStatus> const& status) override {
    hooks.say("create " + text(key.first()) + "/" + text(key.second()));
    if (hooks.refusePolicies) {
      return nullptr;
    }
    auto const machine =
        Kor::make<RecordingPolicySm>(hooks, nullptr, key, policyMap, nullptr, status);
    machine->hasNotificationActiveIs(true);
    return machine;
  }
  void policyMapSmIs(PolicyMapSmKey const& key, Kor::Ptr<PolicyMapSm> const& machine) override {
    hooks.say("keep " + text(key.first()) + "/" + text(key.second()));
    machines[key] = machine;
    machine->serviceIs(&host_);
  }
  void policyMapSmDel(PolicyMapSmKey const& key) override {
    hooks.say("drop " + text(key.first()) + "/" + text(key.second()));
    machines.erase(key);
  }
  ~PlainService() {
    for (auto const& [key, machine] : machines) {
      machine->serviceIs(nullptr);
    }
  }
  PlainService() = default;
  PlainService(PlainService const&) = delete;
  PlainService& operator=(PlainService const&) = delete;

 private:
  PlainHost host_;
};

class AttachedPolicyMaps : public testing::Test {
 protected:
  PlainService service;
  AttachedPolicies policies{service};
  Vorel::IntfId const et1 = intf("Ethernet1");
  Vorel::IntfId const et2 = intf("Ethernet2");

  AttachedPolicyMaps() {
    service.policies = &policies;
    service.usable = {et1, et2};
    configure("pm");
  }
  void configure(char const* name) const {
    service.config->policyMapConfigIs(name)->currentSubConfigIs(
        Kor::make<PolicyMap::PolicyMapSubConfig>(name));
  }
  void attach(Vorel::IntfId where, char const* name, char const* direction = "input") const {
    service.config->servicePolicyIs({where, direction}, Kor::Name(name));
  }
  std::vector<std::string> synced() {
    service.hooks.taken();
    policies.sync();
    return service.hooks.taken();
  }
  std::vector<std::string> syncedPlace(Vorel::IntfId where) {
    service.hooks.taken();
    policies.syncPlace({where, "input"});
    return service.hooks.taken();
  }
  std::vector<Vorel::IntfId> activeIntfs(PolicyMapSmKey const& key) const {
    std::vector<Vorel::IntfId> active;
    for (auto const& entry : service.policyMapSm(key)->activeIntfIteratorConst()) {
      if (entry.value()) {
        active.push_back(entry.key());
      }
    }
    return active;
  }
  // Attaches "pm" to the input of Ethernet1 and creates its machine.
  void build() {
    attach(et1, "pm");
    policies.sync();
    service.hooks.taken();
  }
};

TEST_F(AttachedPolicyMaps, GetAMachineWithStatusServiceAndInterfaces) {
  attach(et1, "pm");
  attach(et2, "pm");
  EXPECT_THAT(synced(), ElementsAre("handle pm", "create pm/input", "pm/input: createCommonData",
                                    "pm/input: initialized", "keep pm/input",
                                    "pm/input: activeIntf Ethernet1 on", "handle pm",
                                    "pm/input: activeIntf Ethernet2 on"));
  auto const machine = service.policyMapSm(pmInput);
  ASSERT_TRUE(machine);
  EXPECT_EQ(machine->status(), service.published->policyMapStatus(pmInput));
  EXPECT_THAT(synced(), IsEmpty()) << "nothing has changed";
}

TEST_F(AttachedPolicyMaps, HaveOneMachinePerDirection) {
  attach(et1, "pm");
  attach(et1, "pm", "output");
  policies.sync();
  EXPECT_TRUE(service.policyMapSm(pmInput));
  EXPECT_TRUE(service.policyMapSm(pmOutput));
}

TEST_F(AttachedPolicyMaps, ThatAreNotConfiguredHaveNone) {
  attach(et1, "other");
  EXPECT_THAT(synced(), ElementsAre("handle other"));
  configure("other");
  policies.syncPolicyMap("other");
  EXPECT_TRUE(service.policyMapSm(otherInput));
  EXPECT_THAT(activeIntfs(otherInput), ElementsAre(et1));
}

TEST_F(AttachedPolicyMaps, ThatAreRefusedAMachineAreAskedAboutEachTime) {
  service.hooks.refusePolicies = true;
  attach(et1, "pm");
  EXPECT_THAT(synced(), ElementsAre("handle pm", "create pm/input", "create pm/input"))
      << "for the place, then for the policy";
  EXPECT_THAT(service.machines, IsEmpty());
}

TEST_F(AttachedPolicyMaps, NeedNoStatusAndNoConfiguration) {
  service.published = nullptr;
  build();
  EXPECT_FALSE(service.policyMapSm(pmInput)->status());
  policies.policyGone(pmInput);
  EXPECT_THAT(service.hooks.taken(), Contains("create pm/input")) << "it is still wanted";
  service.inForce = nullptr;
  EXPECT_THAT(synced(), ElementsAre("pm/input: activeIntf Ethernet1 off", "handle pm"));
  policies.policyGone(pmInput);
  EXPECT_THAT(service.machines, IsEmpty());
}

TEST_F(AttachedPolicyMaps, ReplaceEachOtherAtAPlace) {
  configure("other");
  build();
  attach(et1, "other");
  EXPECT_THAT(syncedPlace(et1),
              ElementsAre("pm/input: activeIntf Ethernet1 off", "handle pm", "handle other",
                          "create other/input", "other/input: createCommonData",
                          "other/input: initialized", "keep other/input",
                          "other/input: activeIntf Ethernet1 on"));
  EXPECT_TRUE(service.policyMapSm(pmInput)) << "until its reconciler is done";
  EXPECT_FALSE(policies.attachments().contains(pmInput));
}

TEST_F(AttachedPolicyMaps, ThatAreGoneAreTakenDownWithTheirStatus) {
  build();
  service.config->servicePolicyDel({et1, "input"});
  syncedPlace(et1);
  policies.policyGone(pmInput);
  EXPECT_THAT(service.hooks.taken(),
              ElementsAre("pm/input: cleanup", "pm/input: zombie", "drop pm/input"));
  EXPECT_FALSE(service.published->policyMapStatus(pmInput));
  policies.policyGone(pmInput);
  EXPECT_THAT(service.hooks.taken(), IsEmpty()) << "it has no machine";
}

TEST_F(AttachedPolicyMaps, ThatAreGoneButWantedAreBuiltAgainWhileTheOwnerReacts) {
  build();
  policies.policyGone(pmInput);
  EXPECT_THAT(service.hooks.taken(), Contains("create pm/input"));
  service.isReacting = false;
  policies.policyGone(pmInput);
  EXPECT_THAT(service.hooks.taken(), Not(Contains("create pm/input")));
}

TEST_F(AttachedPolicyMaps, AreNotWantedDuringCleanup) {
  policies.noneWantedIs(true);
  attach(et1, "pm");
  EXPECT_THAT(synced(), ElementsAre("handle pm"));
  policies.noneWantedIs(false);
  EXPECT_THAT(synced(), Contains("create pm/input"));
}

TEST_F(AttachedPolicyMaps, AreNotActiveOnInterfacesThatMayNotCarryThem) {
  service.usable = {et2};
  attach(et1, "pm");
  attach(et2, "pm");
  policies.sync();
  EXPECT_THAT(activeIntfs(pmInput), ElementsAre(et2));
  service.usable = {et1, et2};
  policies.intfChanged(et1, false);
  EXPECT_THAT(activeIntfs(pmInput), UnorderedElementsAre(et1, et2));
  service.hooks.taken();
  policies.intfChanged(intf("Ethernet9"), false);
  EXPECT_THAT(service.hooks.taken(), IsEmpty()) << "nothing is attached there";
}

TEST_F(AttachedPolicyMaps, FollowAReplacedConfiguration) {
  build();
  auto const machine = service.policyMapSm(pmInput);
  auto const replaced = Kor::make<PolicyMapTypeConfig>();
  auto const config = replaced->policyMapConfigIs("pm");
  replaced->servicePolicyIs({et1, "input"}, "pm");
  service.inForce = replaced;
  policies.sync();
  EXPECT_EQ(service.policyMapSm(pmInput), machine);
  EXPECT_EQ(machine->policyMapConfig(), config);
}

TEST_F(AttachedPolicyMaps, ChangedWhileTheyAreBuiltEndAsConfigured) {
  configure("other");
  attach(et1, "pm");
  service.hooks.deeds["keep pm/input"] = [this] {
    attach(et1, "other");
    policies.syncPlace({et1, "input"});
  };
  policies.sync();
  EXPECT_FALSE(policies.attachments().contains(pmInput));
  EXPECT_THAT(activeIntfs(pmInput), IsEmpty());
  EXPECT_THAT(activeIntfs(otherInput), ElementsAre(et1));
}

TEST_F(AttachedPolicyMaps, DroppedWhileTheyAreBuiltAreBuiltOnce) {
  attach(et1, "pm");
  service.hooks.deeds["pm/input: activeIntf Ethernet1 on"] = [this] {
    service.config->servicePolicyDel({et1, "input"});
    policies.syncPlace({et1, "input"});
    policies.policyGone(pmInput);
  };
  policies.sync();
  EXPECT_THAT(service.machines, IsEmpty());
  attach(et1, "pm");
  policies.sync();
  EXPECT_TRUE(service.policyMapSm(pmInput));
}

}  // namespace
}  // namespace policymap
