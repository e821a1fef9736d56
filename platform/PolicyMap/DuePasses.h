// SPDX-License-Identifier: Apache-2.0
#pragma once

// DuePasses: what is due for one policy, and the passes that carry it out.
//
// There are two kinds of passes. One reconciles one match option (create, re-create, change
// interfaces, tear down). The other updates the actions of programmed classes in place, over all
// options. A mark only says where to look: the planning of a pass decides whether any operation is
// needed. A change of interfaces alone does not query the classes, and a changed action queries
// only its own class.

#include "PolicyMap/PassPlan.h"
#include "PolicyMap/PolicyHost.h"
#include "PolicyMap/PolicyOwner.h"
#include "PolicyMap/PolicyProgress.h"

#include <optional>
#include <set>
#include <string_view>

namespace PolicyMap {

class POLICYMAP_API DuePasses {
 public:
  // The turn for which a pass is planned. The planner's queries may end it by removing the machine
  // or the helper. After that only over() may be called.
  class Turn {
   public:
    [[nodiscard]] virtual bool over() const = 0;
    [[nodiscard]] virtual PolicyHost& host() = 0;
    [[nodiscard]] virtual PolicyMapAclHelper const& helper() const = 0;
    [[nodiscard]] virtual PresentPolicy present(ClassMapMatchOption option) const = 0;
    // The option is refused or unwanted, and no operation is needed.
    virtual void refused(ClassMapMatchOption option) = 0;
    // The class has a new machine with the same rules.
    virtual void renewed(Kor::Name const& className) = 0;

   protected:
    ~Turn() = default;
  };

  // Both arguments must outlive this object.
  DuePasses(PolicyOwner& policy, ProgrammedState& state) : policy_(policy), state_(state) {}

  void rulesDue(ClassMapMatchOption option) { state_[option].rulesDue = true; }
  void rulesDue();  // of all options
  void intfsDue();
  void actionsDue(Kor::Name const& className) { changedActions_.insert(className); }
  // Marks the rules, interfaces and actions of all classes.
  void everythingDue();
  // Marks all options to be programmed again even if nothing differs.
  void reprogrammingDue();
  // Marks the failed options that are to be retried.
  void failedDue();

  // False: everything is to be deleted. Returns true if this is a change.
  bool wantedIs(bool wanted);
  // Everything is to be deleted, permanently.
  void restart();
  [[nodiscard]] bool unwanted() const { return !wanted_ || restart_; }

  [[nodiscard]] bool any() const;
  // What has become of an option, apart from a pending result. `nextTry` is when failures are
  // retried.
  [[nodiscard]] PolicyProgress progress(ClassMapMatchOption option, PolicyHost const& host,
                                        PresentPolicy const& present,
                                        std::optional<double> nextTry) const;
  // Consumes marks until one needs a pass. Returns none if nothing else is due or the turn is over.
  std::optional<Pass> next(Turn& turn);

 private:
  [[nodiscard]] bool anyActions() const { return allActions_ || !changedActions_.empty(); }
  std::optional<Pass> optionPass(ClassMapMatchOption option, Turn& turn);
  [[nodiscard]] std::string_view causeOf(OptionState const& state, bool rulesDue) const;
  std::optional<Pass> updatePass(Turn& turn);
  WantedPolicy wantedPolicy(ClassMapMatchOption option, bool rulesDue, HelperTraits const& traits,
                            Turn& turn);
  ProgrammedClasses wantedClasses(ClassMapMatchOption option, PolicyFailure& refusal);

  PolicyOwner& policy_;
  ProgrammedState& state_;              // contains the marks for rules and interfaces
  std::set<Kor::Name> changedActions_;  // classes
  bool allActions_ = false;
  bool wanted_ = true;
  bool restart_ = false;
};

}  // namespace PolicyMap
