// SPDX-License-Identifier: Apache-2.0
#pragma once

// ClassMapWatches: tells one policy-map machine which class-maps came, changed or went.
//
// Below a service-policy machine, which feeds the index of the global data, it is told of the
// watched names alone, at a cost of what depends on a name. Otherwise it listens to the class-maps
// itself, and is told of every name.

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

  // The class-maps; null: there are none.
  void classTypeConfigIs(Kor::Ptr<ClassMapTypeConfig const> const& config);
  [[nodiscard]] Kor::Ptr<ClassMapTypeConfig const> const& classTypeConfig() const {
    return classTypeConfig_.object();
  }
  // Null when it does not exist.
  [[nodiscard]] Kor::Ptr<ClassMapConfig const> classMapConfig(Kor::Name const& name) const;

  // A name may be watched before its class-map exists, and more than once. A change of the index
  // reaches the caller also while notifications are off.
  void watch(Kor::Name const& name);
  void unwatch(Kor::Name const& name) { watched_.erase(name); }

  // Whether the machine belongs to a service-policy machine.
  void attachedIs(bool attached);
  void hasNotificationActiveIs(bool active);
  void korDoZombieReactors(bool zombie);

 private:
  class TypeWatch;

  void listen();

  Kor::Ptr<PolicyMapGlobalData> globalData_;
  Reaction reaction_;
  Kor::Reactor<ClassMapTypeConfig const, TypeWatch> classTypeConfig_;  // quiet below a service
  std::map<Kor::Name, DependencyIndex::Dependent> watched_;
  bool attached_ = false;
  bool active_ = false;
};

}  // namespace PolicyMap
