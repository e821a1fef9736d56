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
};

// The classes of one option in priority order, with lookup by common data.
class POLICYMAP_API ProgrammedClasses {
 public:
  void add(ProgrammedClass programmed);
  void clear();

  [[nodiscard]] bool empty() const { return classes_.empty(); }
  [[nodiscard]] std::size_t size() const { return classes_.size(); }
  // Null if the class is not contained.
  [[nodiscard]] ProgrammedClass* find(ClassMapSmCommonData const* data);
  [[nodiscard]] ProgrammedClass const* find(ClassMapSmCommonData const* data) const;

  [[nodiscard]] auto begin() { return classes_.begin(); }
  [[nodiscard]] auto end() { return classes_.end(); }
  [[nodiscard]] auto begin() const { return classes_.begin(); }
  [[nodiscard]] auto end() const { return classes_.end(); }

  // Replaces rules and common data by those of `same`, which must have the same classes with the
  // same rules, as after their machines were built again. Returns the names of the classes whose
  // common data differ; their actions must be programmed from the new data.
  std::vector<Kor::Name> adopt(ProgrammedClasses const& same);

 private:
  std::vector<ProgrammedClass> classes_;
  std::unordered_map<ClassMapSmCommonData const*, std::size_t> places_;
};

struct POLICYMAP_API OptionState {
  // Changes since the last plan.
  bool rulesDue = false;
  bool intfsDue = false;
  // The programmed state is not trusted, or is to be programmed again.
  bool recreate = false;
  // The classes have no rules for the option, or are refused. Valid until rulesDue is set.
  bool noClasses = false;

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

  [[nodiscard]] bool due() const { return rulesDue || intfsDue; }
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
