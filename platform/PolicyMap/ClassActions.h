// SPDX-License-Identifier: Apache-2.0
#pragma once

// ClassActions: creates a machine for each configured action of one class, and takes down the
// machines of actions that are no longer configured.
//
// Creating a machine or taking it down runs code that may change the configuration again. Each kind
// is therefore settled (see Settling): it ends as configured at that time. If no machine is created
// for an action, none is requested again until the kind has a different action.

#include "PolicyMap/ActionSm.h"
#include "PolicyMap/ActionType.h"
#include "PolicyMap/ClassAction.h"
#include "PolicyMap/ClassMapSmCommonData.h"
#include "PolicyMap/Settling.h"
#include "PolicyMapExport.h"

#include <map>
#include <set>
#include <vector>

namespace PolicyMap {

class POLICYMAP_API ClassActions {
 public:
  // The class machine, which owns the action machines.
  class Class {
   public:
    virtual ~Class() = default;
    // The configured actions; may be null.
    [[nodiscard]] virtual Kor::Ptr<ClassAction const> const& classAction() const = 0;
    // Receives the configured actions. While it is null, no machine is created.
    [[nodiscard]] virtual Kor::Ptr<ClassMapSmCommonData> const& classCommonData() const = 0;
    // The kinds that have a machine, in the order of takedown.
    [[nodiscard]] virtual std::vector<ActionType> machineKinds() const = 0;
    [[nodiscard]] virtual Kor::Ptr<ActionSm> actionSm(ActionType kind) const = 0;
    // Creates a machine for the configured action of that kind; null if it is to have none.
    virtual Kor::Ptr<ActionSm> createActionSm(ActionType kind) = 0;
    virtual void actionSmIs(ActionType kind, Kor::Ptr<ActionSm> const& machine) = 0;
    virtual void actionSmDel(ActionType kind) = 0;
  };

  explicit ClassActions(Class& owner) : class_(owner) {}

  // The kinds that are configured, have a machine, or were refused one.
  [[nodiscard]] std::set<ActionType> kinds() const;
  // Reconciles one kind with the configuration. The caller keeps the class machine alive.
  void sync(ActionType kind);
  // Repeats the sync() of every kind that is being reconciled at this time.
  void lookAgain() { settling_.lookAgain(); }
  // Takes down all machines, each after its own cleanup(). The caller keeps the class machine alive
  // and must not call sync() during this call.
  void takeDownAll();

 private:
  [[nodiscard]] Kor::Ptr<Action> configured(ActionType kind) const;
  void bring(ActionType kind);
  void takeDown(ActionType kind);
  [[nodiscard]] Kor::Ptr<Action> announceConfigured(ActionType kind);

  Class& class_;
  // Actions without a machine because createActionSm() returned null.
  std::map<ActionType, Kor::Ptr<Action const>> refused_;
  Settling<ActionType> settling_;
};

}  // namespace PolicyMap
