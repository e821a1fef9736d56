// SPDX-License-Identifier: Apache-2.0
#pragma once

// ProgrammedState: what is programmed for one policy per match option, the failures, and the marks
// of what is due. Plain data: it calls nothing.

#include "PolicyMap/Capabilities.h"
#include "PolicyMap/ClassMapSmCommonData.h"
#include "PolicyMap/ClassRules.h"
#include "PolicyMap/PerOption.h"
#include "PolicyMap/PolicyMapTypeStatus.h"
#include "PolicyMap/SubRules.h"
#include "PolicyMapExport.h"

#include <cstdint>
#include <set>
#include <span>
#include <unordered_map>
#include <vector>

namespace PolicyMap {

// A class whose rules are programmed or about to be.
struct ProgrammedClass {
  Kor::Name name;
  Kor::Ptr<ClassMapSmCommonData> data;
  Kor::Ptr<ClassRules const> rules;
  std::uint32_t actionUpdates = 0;  // updateAclActions() of `data` when the actions were programmed

  [[nodiscard]] bool actionsMoved() const { return actionUpdates != data->updateAclActions(); }
  // True if it can be programmed and has a rule that matches something.
  [[nodiscard]] bool contributes() const { return data && !rules->empty(); }
};

// The classes of one option in priority order, with lookup by common data and by name.
class POLICYMAP_API ProgrammedClasses {
 public:
  void add(ProgrammedClass programmed);
  void clear();

  [[nodiscard]] bool empty() const { return classes_.empty(); }
  [[nodiscard]] std::size_t size() const { return classes_.size(); }
  // Null if the class is not contained.
  [[nodiscard]] ProgrammedClass* find(ClassMapSmCommonData const* data);
  [[nodiscard]] ProgrammedClass const* find(ClassMapSmCommonData const* data) const;
  [[nodiscard]] ProgrammedClass const* find(Kor::Name const& name) const;
  // Those of `names` that are contained, and the classes next to them, in priority order.
  [[nodiscard]] std::vector<Kor::Name> around(std::set<Kor::Name> const& names) const;

  [[nodiscard]] auto begin() { return classes_.begin(); }
  [[nodiscard]] auto end() { return classes_.end(); }
  [[nodiscard]] auto begin() const { return classes_.begin(); }
  [[nodiscard]] auto end() const { return classes_.end(); }

  // Replaces rules and common data of the classes of `same`, which must be contained with the same
  // rules, as after their machines were built again. Returns the names of the classes whose common
  // data differ; their actions must be programmed from the new data.
  std::vector<Kor::Name> adopt(std::span<ProgrammedClass const> same);

 private:
  struct NameHash {
    std::size_t operator()(Kor::Name const& name) const { return name.hash(); }
  };

  std::vector<ProgrammedClass> classes_;
  std::unordered_map<ClassMapSmCommonData const*, std::size_t> places_;
  std::unordered_map<Kor::Name, std::size_t, NameHash> placesByName_;
};

struct POLICYMAP_API OptionState {
  // Changes since the last plan: the rules of all classes, those of some, the interfaces.
  bool rulesDue = false;
  std::set<Kor::Name> classesDue = {};
  bool intfsDue = false;
  // The programmed state is not trusted, or is to be programmed again.
  bool recreate = false;
  // As of the last plan: no class has rules for the option, or the classes are refused.
  bool noClasses = false;
  bool refused = false;

  // As programmed. Empty if nothing is programmed or the programmed state is unknown.
  ProgrammedClasses classes = {};
  PortExpansion expansion = PortExpansion::rangeChecker;
  Capabilities capabilities = {};

  PolicyFailure failure = {};
  // The failure is retried automatically.
  bool retry = false;
  // The failure is of an action update, and is kept until a commit succeeds.
  bool updateFailed = false;
  // The failure is of something no longer wanted.
  bool leftover = false;

  bool intfsUnpublished = true;  // the interfaces have changed since they were last published

  [[nodiscard]] bool due() const { return rulesDue || !classesDue.empty() || intfsDue; }
  // Clears what is known to be programmed.
  void forget();
  // Clears the failure and its flags.
  void failureDel();
  // Records the failure of a pass. The failure of an action update is kept until a commit succeeds.
  void failureIs(PolicyFailure const& passFailure);
  // The option is refused, or unwanted if `refusal` is empty. If unwanted, the failure of a
  // teardown is kept.
  void refusedIs(PolicyFailure const& refusal);
};

using ProgrammedState = PerOption<OptionState>;

}  // namespace PolicyMap
