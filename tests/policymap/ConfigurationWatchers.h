// SPDX-License-Identifier: Apache-2.0
#pragma once

// Observers of the configuration objects. Each records its notifications.

#include "policymap/PolicyBench.h"
#include "support/Watcher.h"

#include <PolicyMap/ClassMapTypeConfig.h>
#include <PolicyMap/PolicyMapTypeConfig.h>

#include <cstdint>
#include <string>
#include <vector>

namespace policymap {

using TestSupport::Watcher;

class MatchWatcher : public Watcher<PolicyMap::ClassMapSubConfig::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onMatchType() override { heard("matchType"); }
  void onMatch(std::uint32_t place) override { heard("match " + std::to_string(place)); }
};
class ClassMapWatcher : public Watcher<PolicyMap::ClassMapConfig::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onCurrentSubConfig() override { heard("currentSubConfig"); }
};
class ClassMapsWatcher : public Watcher<PolicyMap::ClassMapTypeConfig::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onClassMapConfig(Kor::Name const& name) override { heard("classMapConfig " + text(name)); }
};
class ClassActionWatcher : public Watcher<PolicyMap::ClassAction::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onAction(PolicyMap::ActionType type) override { heard("action " + text(type)); }
};
class SubConfigWatcher : public Watcher<PolicyMap::PolicyMapSubConfig::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onClassPrio(Kor::Name const& name) override { heard("classPrio " + text(name)); }
  void onPrioClass(std::uint32_t prio) override { heard("prioClass " + std::to_string(prio)); }
  void onClassAction(Kor::Name const& name) override { heard("classAction " + text(name)); }
  void onRawClassMap(Kor::Name const& name) override { heard("rawClassMap " + text(name)); }
};
class PolicyMapWatcher : public Watcher<PolicyMap::PolicyMapConfig::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onCurrentSubConfig() override { heard("currentSubConfig"); }
};
class PoliciesWatcher : public Watcher<PolicyMap::PolicyMapTypeConfig::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onPolicyMapConfig(Kor::Name const& name) override { heard("policyMapConfig " + text(name)); }
  void onServicePolicy(PolicyMap::ServicePolicyKey const& key) override {
    heard("servicePolicy " + text(key.intf()) + " " + text(key.direction()));
  }
};

// The identifiers that an entity logs.
class LogIds : public Kor::AttributeLogReader {
 public:
  explicit LogIds(Kor::Entity const& entity) { notifierIs(&entity); }
  void onAttribute(Kor::Entity const& /*entity*/, Kor::AttributeId id) override {
    ids.push_back(id);
  }
  std::vector<Kor::AttributeId> ids;
};

}  // namespace policymap
