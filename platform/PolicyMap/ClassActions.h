// SPDX-License-Identifier: Apache-2.0
#pragma once

// ClassActions: gives each configured action of one class its machine, and takes down the machines
// of actions that are no longer configured.
//
// Building and taking down call out, and what is called may change the configuration again: each
// kind is settled (Settling), so it ends as it is configured then. An action for which no machine
// was given is not asked about again until another one takes its place.

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
  // The class machine, which holds the action machines.
  class Class {
   public:
    virtual ~Class() = default;
    // What is configured; may be null.
    [[nodiscard]] virtual Kor::Ptr<ClassAction const> const& classAction() const = 0;
    // Is told of the configured actions. Without it no machine is built.
    [[nodiscard]] virtual Kor::Ptr<ClassMapSmCommonData> const& classCommonData() const = 0;
    // The kinds that have a machine, in the order in which they are taken down.
    [[nodiscard]] virtual std::vector<ActionType> machineKinds() const = 0;
    [[nodiscard]] virtual Kor::Ptr<ActionSm> actionSm(ActionType kind) const = 0;
    // A machine for the configured action of that kind; null: none is given.
    virtual Kor::Ptr<ActionSm> createActionSm(ActionType kind) = 0;
    virtual void actionSmIs(ActionType kind, Kor::Ptr<ActionSm> const& machine) = 0;
    virtual void actionSmDel(ActionType kind) = 0;
  };

  explicit ClassActions(Class& owner) : class_(owner) {}

  // The kinds that are configured, have a machine, or were refused one.
  [[nodiscard]] std::set<ActionType> kinds() const;
  // Brings one kind to what is configured. The caller keeps the class machine alive.
  void sync(ActionType kind);
  // As sync() for the kinds that are being brought there.
  void lookAgain() { settling_.lookAgain(); }
  // Takes all machines down, each after its own cleanup(). The caller keeps the class machine alive
  // and calls no sync() meanwhile.
  void takeDownAll();

 private:
  [[nodiscard]] Kor::Ptr<Action> configured(ActionType kind) const;
  void bring(ActionType kind);
  void takeDown(ActionType kind);
  [[nodiscard]] Kor::Ptr<Action> announceConfigured(ActionType kind);

  Class& class_;
  std::map<ActionType, Kor::Ptr<Action const>> refused_;  // actions for which no machine was given
  Settling<ActionType> settling_;
};

}  // namespace PolicyMap
