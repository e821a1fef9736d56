// SPDX-License-Identifier: Apache-2.0
#pragma once

// A tree of machines that record which hooks the core calls, and the state at each call.

#include "policymap/PolicyBench.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace policymap {

// Shared by all machines of one tree: the journal, and the behaviour that the test sets.
struct Hooks {
  std::vector<std::string> journal;
  std::set<int> refusedKinds;      // createActionSm returns null
  bool refuseClasses = false;      // createClassMapSm returns null
  bool refusePolicies = false;     // createPolicyMapSm returns null
  bool refuseClassData = false;    // createCommonData of classes returns null
  bool refuseClassStatus = false;  // createClassMapStatus returns null
  bool refuseMatchSm = false;      // createMatchSm returns null

  std::map<std::string, std::function<void()>> deeds;  // run once, when their line is written

  void say(std::string const& line) {
    journal.push_back(line);
    if (auto const deed = deeds.extract(line)) {
      deed.mapped()();
    }
  }
  std::vector<std::string> taken() { return std::exchange(journal, {}); }
};

inline std::string presence(char const* what, bool present) {
  return std::string(" ") + (present ? "" : "no-") + what;
}

class RecordingActionSm : public Toggled<PolicyMap::ActionSm> {
 public:
  RecordingActionSm(Hooks& hooks, Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& global,
                    Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policy,
                    Kor::Ptr<PolicyMap::ClassMapSmCommonData> const& classData,
                    Kor::Ptr<PolicyMap::Action const> const& watched)
      : Toggled(global, policy, classData, watched), hooks_(hooks) {
    if (watched) {
      name_ = text(watched->className()) + "/" + text(watched->actionType());
    }
  }
  ~RecordingActionSm() override {
    RecordingActionSm::korDoZombieReactors(true);
    hooks_.say(name_ + ": gone");
  }

  void handleAction() override {
    hooks_.say(name_ + ": handleAction" +
               (action() ? " " + std::to_string(action().as<NumberAction const>()->number()) : ""));
    if (classCommonData()) {
      classCommonData()->updateAclActionsInc(1);
    }
  }
  void cleanup() override {
    hooks_.say(name_ + ": cleanup" + presence("data", bool(classCommonData())));
    classCommonData()->updateAclActionsInc(1);
  }
  void handleInitialized() override { hooks_.say(name_ + ": initialized"); }
  void korDoZombieReactors(bool zombie) override {
    if (zombie != korMarkedForDeletion()) {
      hooks_.say(name_ + (zombie ? ": zombie" : ": no zombie"));
    }
    Toggled::korDoZombieReactors(zombie);
  }

 private:
  Hooks& hooks_;
  std::string name_ = "action";
};

class RecordingClassSm : public Toggled<PolicyMap::ClassMapSm> {
 public:
  RecordingClassSm(Hooks& hooks, Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& global,
                   Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policy,
                   Kor::Ptr<PolicyMap::ClassMapConfig const> const& map,
                   Kor::Ptr<PolicyMap::ClassMapSubConfig const> const& rawMap,
                   Kor::Ptr<PolicyMap::ClassAction const> const& action)
      : Toggled(global, policy, map, rawMap, action), hooks_(hooks) {}

  Kor::Ptr<PolicyMap::ActionSm> createActionSm(PolicyMap::ActionType type) override {
    auto const watched = classAction() ? classAction()->action(type) : nullptr;
    hooks_.say(label() + ": createActionSm " + text(type) +
               presence("data", bool(classCommonData())) + presence("action", bool(watched)));
    if (hooks_.refusedKinds.count(static_cast<int>(type)) != 0) {
      return nullptr;
    }
    auto machine = Kor::make<RecordingActionSm>(hooks_, globalCommonData(), policyCommonData(),
                                                classCommonData(), watched);
    machine->handleAction();
    machine->hasNotificationActiveIs(true);
    return machine;
  }
  Kor::Ptr<PolicyMap::ClassMapSmCommonData> createCommonData() override {
    hooks_.say(label() + ": createCommonData" + presence("map", bool(classMap())) +
               presence("global", bool(globalCommonData())));
    return hooks_.refuseClassData ? nullptr : Toggled::createCommonData();
  }
  Kor::Ptr<PolicyMap::ClassMapStatus> createClassMapStatus() override {
    return hooks_.refuseClassStatus ? nullptr : Toggled::createClassMapStatus();
  }
  Kor::Ptr<PolicyMap::ClassMapMatchSm> createMatchSm(ClassMapMatchOption option) override {
    hooks_.say(label() + ": createMatchSm " + text(option));
    return hooks_.refuseMatchSm ? nullptr : Toggled::createMatchSm(option);
  }
  void handleInitialized() override { hooks_.say(label() + ": initialized"); }
  void cleanup() override {
    hooks_.say(label() + ": cleanup");
    Toggled::cleanup();
  }
  void korDoZombieReactors(bool zombie) override {
    if (zombie != korMarkedForDeletion()) {
      hooks_.say(label() + (zombie ? ": zombie" : ": no zombie"));
    }
    Toggled::korDoZombieReactors(zombie);
  }

 private:
  [[nodiscard]] std::string label() const { return text(name()); }

  Hooks& hooks_;
};

class RecordingPolicySm : public Toggled<PolicyMap::PolicyMapSm> {
 public:
  RecordingPolicySm(Hooks& hooks, Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& global,
                    PolicyMap::PolicyMapSmKey const& key,
                    Kor::Ptr<PolicyMap::PolicyMapConfig const> const& config,
                    Kor::Ptr<PolicyMap::ClassMapTypeConfig const> const& classes,
                    Kor::Ptr<PolicyMap::PolicyMapStatus> const& status)
      : Toggled(global, key, config, classes, status), hooks_(hooks) {}

  Kor::Ptr<PolicyMap::ClassMapSm> createClassMapSm(
      Kor::Ptr<PolicyMap::ClassMapConfig const> const& map,
      Kor::Ptr<PolicyMap::ClassMapSubConfig const> const& rawMap,
      Kor::Ptr<PolicyMap::ClassAction const> const& action) override {
    hooks_.say(label() + ": createClassMapSm " + (map ? text(map->name()) : "-") + " " +
               (rawMap ? text(rawMap->name()) : "-") + presence("action", bool(action)) +
               presence("policyData", bool(policyCommonData())));
    if (hooks_.refuseClasses) {
      return nullptr;
    }
    auto machine = Kor::make<RecordingClassSm>(hooks_, globalCommonData(), policyCommonData(), map,
                                               rawMap, action);
    machine->hasNotificationActiveIs(true);
    return machine;
  }
  Kor::Ptr<PolicyMap::PolicyMapSmCommonData> createCommonData() override {
    hooks_.say(label() + ": createCommonData");
    return Toggled::createCommonData();
  }
  void handleActiveIntf(Vorel::IntfId which) override {
    hooks_.say(label() + ": activeIntf " + text(which) + (activeIntf(which) ? " on" : " off"));
    Toggled::handleActiveIntf(which);
  }
  void handleInitialized() override { hooks_.say(label() + ": initialized"); }
  void cleanup() override {
    hooks_.say(label() + ": cleanup");
    Toggled::cleanup();
  }
  void korDoZombieReactors(bool zombie) override {
    if (zombie != korMarkedForDeletion()) {
      hooks_.say(label() + (zombie ? ": zombie" : ": no zombie"));
    }
    Toggled::korDoZombieReactors(zombie);
  }

 private:
  [[nodiscard]] std::string label() const {
    return text(key().first()) + "/" + text(key().second());
  }

  Hooks& hooks_;
};

class RecordingServiceSm : public Toggled<PolicyMap::ServicePolicySm> {
 public:
  template <class... Args>
  explicit RecordingServiceSm(Hooks& hooks, Args const&... args)
      : Toggled(args...), hooks_(hooks) {}

  Kor::Ptr<PolicyMap::PolicyMapSm> createPolicyMapSm(
      PolicyMap::PolicyMapSmKey const& key,
      Kor::Ptr<PolicyMap::PolicyMapConfig const> const& config,
      Kor::Ptr<PolicyMap::PolicyMapStatus> const& status) override {
    hooks_.say("createPolicyMapSm " + text(key.first()) + "/" + text(key.second()) +
               presence("global", bool(commonData())) + presence("config", bool(config)) +
               presence("status", bool(status)));
    if (hooks_.refusePolicies) {
      return nullptr;
    }
    auto machine =
        Kor::make<RecordingPolicySm>(hooks_, commonData(), key, config, classTypeConfig(), status);
    machine->hasNotificationActiveIs(true);
    return machine;
  }
  Kor::Ptr<PolicyMap::PolicyMapGlobalData> createCommonData() override {
    hooks_.say("createCommonData");
    return Toggled::createCommonData();
  }
  void handlePolicyMap(Kor::Name name) override {
    hooks_.say("handlePolicyMap " + text(name));
    Toggled::handlePolicyMap(name);
  }
  void handlePolicyMapConfig(Kor::Name name) override {
    hooks_.say("handlePolicyMapConfig " + text(name));
    Toggled::handlePolicyMapConfig(name);
  }
  void handleIntf(Vorel::IntfId which, bool force) override {
    hooks_.say("handleIntf " + text(which) + (force ? " force" : ""));
    Toggled::handleIntf(which, force);
  }
  void handleInitialized() override { hooks_.say("initialized"); }

 private:
  Hooks& hooks_;
};

// A bench whose machines record their hooks.
struct RecordingBench : PolicyBench {
  Hooks hooks;
  Kor::Ptr<RecordingServiceSm> service;

  ~RecordingBench() { service = nullptr; }
  RecordingBench() = default;
  RecordingBench(RecordingBench const&) = delete;
  RecordingBench& operator=(RecordingBench const&) = delete;

  // Creates a machine on the bench's configuration. It is not active yet.
  void make() {
    service = Kor::make<RecordingServiceSm>(
        hooks, Kor::Ptr<PolicyMap::PolicyMapTypeConfig const>(policies),
        Kor::Ptr<PolicyMap::ClassMapTypeConfig const>(classes),
        Kor::Ptr<PolicyMap::PolicyMapStatusRequestDir const>(), status,
        Kor::Ptr<Acl::Config const>(acls), Kor::Ptr<Lag::Input::Config const>(lag),
        Kor::Ptr<Ip::Status const>(ip), Kor::Ptr<Ip6::Status const>(ip6),
        Kor::Ptr<Routing::RoutingInfo const>(routing),
        Kor::Ptr<Routing6::RoutingInfo const>(routing6),
        Kor::Ptr<PolicyMap::PolicyMapAclHelper>(helper), diff, true, true, true);
  }
  void activate() {
    make();
    service->hasNotificationActiveIs(true);
  }
};

}  // namespace policymap
