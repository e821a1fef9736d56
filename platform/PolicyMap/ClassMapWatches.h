// SPDX-License-Identifier: Apache-2.0
#pragma once

// ClassMapWatches: notifies one policy-map machine of class-maps that were created, changed or
// removed.
//
// Below a service-policy machine, which feeds the dependency index of the global data, it is
// notified only of watched names, and a change costs only what depends on that name. Otherwise it
// observes the class-maps itself and is notified of every name.

#include "Kor/Reactor.h"
#include "PolicyMap/ClassMapTypeConfig.h"
#include "PolicyMap/PolicyMapGlobalData.h"
#include "PolicyMapExport.h"

#include <functional>
#include <map>

namespace PolicyMap {

class POLICYMAP_API ClassMapWatches {
 public:
  using Reaction = std::function<void(Kor::Name const&)>;

  // `globalData` may be null.
  ClassMapWatches(Kor::Ptr<PolicyMapGlobalData> globalData, Reaction reaction);
  ~ClassMapWatches();
  ClassMapWatches(ClassMapWatches const&) = delete;
  ClassMapWatches& operator=(ClassMapWatches const&) = delete;

  // Null: no class-map exists.
  void classTypeConfigIs(Kor::Ptr<ClassMapTypeConfig const> const& config);
  [[nodiscard]] Kor::Ptr<ClassMapTypeConfig const> const& classTypeConfig() const {
    return classTypeConfig_.object();
  }
  // Null if there is no such class-map.
  [[nodiscard]] Kor::Ptr<ClassMapConfig const> classMapConfig(Kor::Name const& name) const;

  // A name may be watched before its class-map exists, and repeatedly. Changes from the index are
  // reported even while notifications are off.
  void watch(Kor::Name const& name);
  void unwatch(Kor::Name const& name) { watched_.erase(name); }

  // True if the machine belongs to a service-policy machine.
  void attachedIs(bool attached);
  void hasNotificationActiveIs(bool active);
  void korDoZombieReactors(bool zombie);

 private:
  class TypeWatch;

  void listen();

  Kor::Ptr<PolicyMapGlobalData> globalData_;
  Reaction reaction_;
  // Inactive while the index is used.
  Kor::Reactor<ClassMapTypeConfig const, TypeWatch> classTypeConfig_;
  std::map<Kor::Name, DependencyIndex::Dependent> watched_;
  bool attached_ = false;
  bool active_ = false;
};

}  // namespace PolicyMap
