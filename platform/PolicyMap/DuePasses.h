// SPDX-License-Identifier: Apache-2.0
#pragma once

// DuePasses: what is due for one policy, and the passes that carry it out.
//
// There are two kinds of passes. One reconciles one match option (create, re-create, change
// interfaces, tear down). The other updates the actions of programmed classes in place, over all
// options. A mark only says where to look: the planning of a pass decides whether any operation is
// needed. A change of interfaces alone does not query the classes, and a changed action or class
// only its own class, unless the rules are to be programmed, which takes all of them.

#include "PolicyMap/PassPlan.h"
#include "PolicyMap/PolicyHost.h"
#include "PolicyMap/PolicyOwner.h"
#include "PolicyMap/PolicyProgress.h"

#include <optional>
#include <set>
#include <span>
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
    [[nodiscard]] virtual HelperArbiter::Presence presence(ClassMapMatchOption option) const = 0;
    // The same with the interfaces, which is as expensive as there are many.
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

  // The rules of all classes, for one or all options.
  void rulesDue(ClassMapMatchOption option) { state_[option].rulesDue = true; }
  void rulesDue();
  // The rules, the presence or the priority of one class.
  void classDue(Kor::Name const& className, ClassMapMatchOption option) {
    if (!state_[option].rulesDue) {
      state_[option].classesDue.insert(className);
    }
  }
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
                                        HelperArbiter::Presence const& present,
                                        std::optional<double> nextTry) const;
  // Consumes marks until one needs a pass. Returns none if nothing else is due or the turn is over.
  std::optional<Pass> next(Turn& turn);

 private:
  [[nodiscard]] bool anyActions() const { return allActions_ || !changedActions_.empty(); }
  std::optional<Pass> optionPass(ClassMapMatchOption option, Turn& turn);
  [[nodiscard]] std::string_view causeOf(OptionState const& state, bool rulesDue) const;
  std::optional<Pass> updatePass(Turn& turn);

  // The classes whose rules may have changed.
  struct ChangedClasses {
    bool all;
    std::set<Kor::Name> some;

    [[nodiscard]] bool any() const { return all || !some.empty(); }
  };
  WantedPolicy wantedPolicy(ClassMapMatchOption option, ChangedClasses const& changed,
                            HelperTraits const& traits, Turn& turn);
  ProgrammedClasses wantedClasses(ClassMapMatchOption option, PolicyFailure& refusal);
  // True if the classes in `changed` are programmed as wanted; takes over what their machines have
  // newly compiled. False if all classes must be compared.
  bool asProgrammed(ClassMapMatchOption option, std::set<Kor::Name> const& changed,
                    HelperTraits const& traits, Turn& turn);
  // True if an option that is not programmed remains without classes, or with classes that have no
  // interface, whatever `changed` are now. False if all classes must be queried.
  bool remainsAbsent(ClassMapMatchOption option, std::set<Kor::Name> const& changed,
                     WantedPolicy const& wanted, HelperTraits const& traits);
  void adopt(OptionState& state, std::span<ProgrammedClass const> same, Turn& turn);

  PolicyOwner& policy_;
  ProgrammedState& state_;              // contains the marks for rules and interfaces
  std::set<Kor::Name> changedActions_;  // classes
  bool allActions_ = false;
  bool wanted_ = true;
  bool restart_ = false;
};

}  // namespace PolicyMap
