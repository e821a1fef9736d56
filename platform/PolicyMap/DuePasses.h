// SPDX-License-Identifier: Apache-2.0
#pragma once

// DuePasses: what is due for one policy, and the passes that bring it about.
//
// There are two kinds of passes: one brings one match option to what is wanted (create, re-create,
// interfaces, teardown), one updates the actions of programmed classes in place, over all options.
// A mark only says where to look; whether something is to be called is decided when the pass is
// planned. A change of interfaces alone does not ask the classes, and one changed action asks only
// its class.

#include "PolicyMap/PassPlan.h"
#include "PolicyMap/PolicyHost.h"
#include "PolicyMap/PolicyOwner.h"

#include <optional>
#include <set>

namespace PolicyMap {

class POLICYMAP_API DuePasses {
 public:
  // The turn for which a pass is planned. What the planner asks may end it: machine or helper went
  // away, and nothing but over() may be called any more.
  class Turn {
   public:
    [[nodiscard]] virtual bool over() const = 0;
    [[nodiscard]] virtual PolicyHost& host() = 0;
    [[nodiscard]] virtual PolicyMapAclHelper const& helper() const = 0;
    [[nodiscard]] virtual PresentPolicy present(ClassMapMatchOption option) const = 0;
    // The option is refused or not wanted, and nothing is to be called for it.
    virtual void refused(ClassMapMatchOption option) = 0;
    // The class has another machine with the same rules.
    virtual void renewed(Kor::Name const& className) = 0;

   protected:
    ~Turn() = default;
  };

  // Both must outlive this.
  DuePasses(PolicyOwner& policy, ProgrammedState& state) : policy_(policy), state_(state) {}

  void rulesDue(ClassMapMatchOption option) { state_[option].rulesDue = true; }
  void rulesDue();  // of all options
  void intfsDue();
  void actionsDue(Kor::Name const& className) { changedActions_.insert(className); }
  // Rules, interfaces and actions of all classes.
  void everythingDue();
  // All options are programmed again, even without a difference.
  void reprogrammingDue();
  // What failed and is to be tried again.
  void failedDue();

  // False: everything is to be deleted. Returns whether this is a change.
  bool wantedIs(bool wanted);
  // Everything is to be deleted, for good.
  void restart();
  [[nodiscard]] bool unwanted() const { return !wanted_ || restart_; }

  [[nodiscard]] bool any() const;
  // Takes marks until one needs a pass. None: nothing is due any more, or the turn is over.
  std::optional<Pass> next(Turn& turn);

 private:
  [[nodiscard]] bool anyActions() const { return allActions_ || !changedActions_.empty(); }
  std::optional<Pass> optionPass(ClassMapMatchOption option, Turn& turn);
  std::optional<Pass> updatePass(Turn& turn);
  WantedPolicy wantedPolicy(ClassMapMatchOption option, bool rulesDue, HelperTraits const& traits,
                            Turn& turn);
  ProgrammedClasses wantedClasses(ClassMapMatchOption option, PolicyFailure& refusal);

  PolicyOwner& policy_;
  ProgrammedState& state_;              // holds the marks of rules and interfaces
  std::set<Kor::Name> changedActions_;  // classes
  bool allActions_ = false;
  bool wanted_ = true;
  bool restart_ = false;
};

}  // namespace PolicyMap
