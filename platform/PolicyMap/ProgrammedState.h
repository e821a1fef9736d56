// SPDX-License-Identifier: Apache-2.0
#pragma once

// ProgrammedState: what one policy has programmed for each match option, what went wrong there, and
// what is due to be looked at again. Plain data: it calls nothing.

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

// A class whose rules are programmed, or about to be.
struct ProgrammedClass {
  Kor::Name name;
  Kor::Ptr<ClassMapSmCommonData> data;
  Kor::Ptr<ClassRules const> rules;
  std::uint32_t actionUpdates = 0;  // of the data, when its actions were programmed

  [[nodiscard]] bool actionsMoved() const { return actionUpdates != data->updateAclActions(); }
};

// The classes of one option in priority order, found by their common data too.
class POLICYMAP_API ProgrammedClasses {
 public:
  void add(ProgrammedClass programmed);
  void clear();

  [[nodiscard]] bool empty() const { return classes_.empty(); }
  [[nodiscard]] std::size_t size() const { return classes_.size(); }
  // Null when the class is not one of these.
  [[nodiscard]] ProgrammedClass* find(ClassMapSmCommonData const* data);
  [[nodiscard]] ProgrammedClass const* find(ClassMapSmCommonData const* data) const;

  [[nodiscard]] auto begin() { return classes_.begin(); }
  [[nodiscard]] auto end() { return classes_.end(); }
  [[nodiscard]] auto begin() const { return classes_.begin(); }
  [[nodiscard]] auto end() const { return classes_.end(); }

  // Takes over rules and common data of classes with the same rules, as those of class machines
  // that were built again have. Returns the names of the classes with other common data: their
  // actions are to be programmed from these.
  std::vector<Kor::Name> adopt(ProgrammedClasses const& same);

 private:
  std::vector<ProgrammedClass> classes_;
  std::unordered_map<ClassMapSmCommonData const*, std::size_t> places_;
};

struct POLICYMAP_API OptionState {
  // What changed since the last plan.
  bool rulesDue = false;
  bool intfsDue = false;
  // What is programmed is not trusted, or is to be programmed again.
  bool recreate = false;
  // The classes have no rules for the option, or are refused; valid until rulesDue.
  bool noClasses = false;

  // As programmed; empty when nothing is, or when what is programmed is not known.
  ProgrammedClasses classes = {};
  PortExpansion expansion = PortExpansion::rangeChecker;
  Capabilities capabilities = {};

  PolicyFailure failure = {};
  bool retry = false;         // the failure is tried again by itself
  bool updateFailed = false;  // the failure is that of an action update, until a commit succeeds
  bool leftover = false;      // the failure is of something no longer wanted

  bool intfsUnpublished = true;  // the interfaces changed since they were published

  [[nodiscard]] bool due() const { return rulesDue || intfsDue; }
  // Nothing is known to be programmed any more.
  void forget();
  // All is well.
  void failureDel();
  // Of the pass that failed. The text of a failed action update stays until a commit succeeds.
  void failureIs(PolicyFailure const& passFailure);
  // The option is refused or not wanted; `refusal` is empty in the second case, and then the
  // failure of a teardown stays.
  void refusedIs(PolicyFailure const& refusal);
};

using ProgrammedState = PerOption<OptionState>;

}  // namespace PolicyMap
