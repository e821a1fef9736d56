// SPDX-License-Identifier: Apache-2.0
#pragma once

// PolicyClasses: gives each configured class of one policy its machine and its status, and takes
// down the machines of classes that left.
//
// A class is configured while it has a priority. It has a machine while it also has a class-map or
// raw matches; otherwise its status says that the class-map is missing. Below a service-policy
// machine the machine of a class that left stays until dropLeft(): a class that is back by then has
// not left.
//
// Building and taking down call out, and what is called may change the configuration again: each
// class is settled (Settling), so it ends as it is configured then.

#include "PolicyMap/ClassMapSm.h"
#include "PolicyMap/ClassMapWatches.h"
#include "PolicyMap/PolicyMapStatus.h"
#include "PolicyMap/PolicyMapSubConfig.h"
#include "PolicyMap/Settling.h"
#include "PolicyMapExport.h"

#include <set>
#include <vector>

namespace PolicyMap {

class POLICYMAP_API PolicyClasses {
 public:
  // The policy-map machine, which holds the class machines. As their owner it is told of changes
  // until they are taken down.
  class Policy : public ClassMapSm::Owner {
   public:
    // The classes in force; may be null.
    [[nodiscard]] virtual Kor::Ptr<PolicyMapSubConfig const> const& policyMap() const = 0;
    // Mirrors the configured priority of one class.
    virtual void mirrorPrio(Kor::Name const& name) = 0;
    // The names of all class machines, in the order in which they are taken down.
    [[nodiscard]] virtual std::vector<Kor::Name> machineNames() const = 0;
    [[nodiscard]] virtual Kor::Ptr<ClassMapSm> classMapSm(Kor::Name const& name) const = 0;
    // A machine for a class; `map` or `rawMap` is not null. Null: none is given.
    virtual Kor::Ptr<ClassMapSm> createClassMapSm(Kor::Ptr<ClassMapConfig const> const& map,
                                                  Kor::Ptr<ClassMapSubConfig const> const& rawMap,
                                                  Kor::Ptr<ClassAction const> const& action) = 0;
    virtual void classMapSmIs(Kor::Name const& name, Kor::Ptr<ClassMapSm> const& machine) = 0;
    virtual void classMapSmDel(Kor::Name const& name) = 0;
    // Whether dropLeft() will be called after rulesChanged().
    [[nodiscard]] virtual bool dropsLeftLater() const = 0;
    // A class has another machine, has left or is back.
    virtual void rulesChanged() = 0;
  };

  // `status` may be null. What is given must outlive this.
  PolicyClasses(Policy& policy, ClassMapWatches& classMaps, Kor::Ptr<PolicyMapStatus> status);

  // In all of these the caller keeps the policy-map machine alive.

  // Brings one class to what is configured; does nothing for names that are no class.
  void sync(Kor::Name const& name);
  // Takes down the machines of the classes that left and have not come back.
  void dropLeft();
  // Takes down all machines. What is configured meanwhile gets none.
  void takeDownAll();

 private:
  [[nodiscard]] bool configured(Kor::Name const& name) const;
  void bring(Kor::Name const& name);
  void build(Kor::Name const& name, Kor::Ptr<ClassMapConfig const> const& map,
             Kor::Ptr<ClassMapSubConfig const> const& rawMap,
             Kor::Ptr<ClassAction const> const& action);
  void leave(Kor::Name const& name);
  void takeDown(Kor::Name const& name);
  void publishMissing(Kor::Name const& name);

  Policy& policy_;
  ClassMapWatches& classMaps_;
  Kor::Ptr<PolicyMapStatus> status_;
  std::set<Kor::Name> left_;  // out of the configuration; their machines still exist
  Settling<Kor::Name> settling_;
  bool takingDown_ = false;
};

}  // namespace PolicyMap
