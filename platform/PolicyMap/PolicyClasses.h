// SPDX-License-Identifier: Apache-2.0
#pragma once

// PolicyClasses: creates a machine and a status for each configured class of one policy, and takes
// down the machines of classes that left the configuration.
//
// A class is configured while it has a priority. It has a machine while it also has a class-map or
// raw matches; otherwise its status reports the missing class-map. Below a service-policy machine,
// the machine of a class that left is kept until dropLeft(): a class that returns before then keeps
// its machine.
//
// Creating a machine or taking it down runs code that may change the configuration again. Each
// class is therefore settled (see Settling): it ends as configured at that time.

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
  // The policy-map machine, which holds the class machines. As their owner it is notified of their
  // changes until they are taken down.
  class Policy : public ClassMapSm::Owner {
   public:
    // The classes in force; may be null.
    [[nodiscard]] virtual Kor::Ptr<PolicyMapSubConfig const> const& policyMap() const = 0;
    // Copies the configured priority of one class to the machine.
    virtual void mirrorPrio(Kor::Name const& name) = 0;
    // The names of all class machines, in the order of takedown.
    [[nodiscard]] virtual std::vector<Kor::Name> machineNames() const = 0;
    [[nodiscard]] virtual Kor::Ptr<ClassMapSm> classMapSm(Kor::Name const& name) const = 0;
    // Creates the machine of a class; null if it is to have none. At least one of `map` and
    // `rawMap` is not null.
    virtual Kor::Ptr<ClassMapSm> createClassMapSm(Kor::Ptr<ClassMapConfig const> const& map,
                                                  Kor::Ptr<ClassMapSubConfig const> const& rawMap,
                                                  Kor::Ptr<ClassAction const> const& action) = 0;
    virtual void classMapSmIs(Kor::Name const& name, Kor::Ptr<ClassMapSm> const& machine) = 0;
    virtual void classMapSmDel(Kor::Name const& name) = 0;
    // True if dropLeft() will be called after classChanged().
    [[nodiscard]] virtual bool dropsLeftLater() const = 0;
    // A class has a new machine, has left, or has returned.
    virtual void classChanged(Kor::Name const& name) = 0;
  };

  // `status` may be null. The arguments must outlive this object.
  PolicyClasses(Policy& policy, ClassMapWatches& classMaps, Kor::Ptr<PolicyMapStatus> status);

  // During all of these calls the caller keeps the policy-map machine alive.

  // Reconciles one class with the configuration. Does nothing for names that are not a class.
  void sync(Kor::Name const& name);
  // Takes down the machines of classes that left and have not returned.
  void dropLeft();
  // Takes down all machines. Classes configured during this call get none.
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
  std::set<Kor::Name> left_;  // no longer configured; their machines still exist
  Settling<Kor::Name> settling_;
  bool takingDown_ = false;
};

}  // namespace PolicyMap
