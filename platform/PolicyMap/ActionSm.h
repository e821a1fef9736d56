// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Reactor.h"
#include "PolicyMap/Action.h"
#include "PolicyMap/ClassMapSmCommonData.h"
#include "PolicyMap/PolicyMapGlobalData.h"
#include "PolicyMap/PolicyMapSmCommonData.h"
#include "PolicyMapExport.h"

namespace PolicyMap {

// The state machine of one configured action of one class. While its notifications are active it
// observes the action's attribute log and calls handleAction() after every stored change.
class POLICYMAP_API ActionSm : public Kor::PtrInterface {
 public:
  using Ptr = Kor::Ptr<ActionSm>;
  using PtrConst = Kor::Ptr<ActionSm const>;

  ~ActionSm() override;

  void hasNotificationActiveIs(bool active) override;
  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // Called once, before the class machine drops this machine and while the common data still exist.
  // Override it to undo what handleAction() did.
  virtual void cleanup();
  // Called when the action is configured, changed or replaced.
  virtual void handleAction();
  // Called when initialized() becomes true: at the first activation.
  virtual void handleInitialized();
  virtual void actionDel();
  virtual void actionIs(Kor::Ptr<Action const> const& action);
  virtual void initializedIs(bool initialized);
  virtual void korDoZombieReactors(bool zombie);

  [[nodiscard]] Kor::Ptr<PolicyMapGlobalData> const& globalCommonData() const {
    return globalCommonData_;
  }
  [[nodiscard]] Kor::Ptr<PolicyMapSmCommonData> const& policyCommonData() const {
    return policyCommonData_;
  }
  [[nodiscard]] Kor::Ptr<ClassMapSmCommonData> const& classCommonData() const {
    return classCommonData_;
  }
  // Null if no action is observed.
  [[nodiscard]] Kor::Ptr<Action const> const& action() const { return action_.object(); }
  [[nodiscard]] bool initialized() const { return initialized_; }

 protected:
  // Any pointer may be null.
  ActionSm(Kor::Ptr<PolicyMapGlobalData> globalCommonData,
           Kor::Ptr<PolicyMapSmCommonData> policyCommonData,
           Kor::Ptr<ClassMapSmCommonData> classCommonData, Kor::Ptr<Action const> const& action);

  void newAction(Kor::Ptr<Action const> const& action);

 private:
  void actionChanged(Kor::AttributeId id);

  Kor::Ptr<PolicyMapGlobalData> globalCommonData_;
  Kor::Ptr<PolicyMapSmCommonData> policyCommonData_;
  Kor::Ptr<ClassMapSmCommonData> classCommonData_;
  Kor::Reactor<Action const, Kor::LogWatch<ActionSm>> action_;
  bool initialized_ = false;
};

}  // namespace PolicyMap
