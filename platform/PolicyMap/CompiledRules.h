// SPDX-License-Identifier: Apache-2.0
#pragma once

// CompiledRules: the rules of one class, as of its last compilation. They are compiled when a
// caller asks for them and something has changed since. What they depend on is every access list
// and class-map that the matches refer to, whether or not it exists.
//
//   CompiledRules rules(globalData, [](DependencyKind kind) { ... });
//   if (rules.stale()) {
//     rules.compile(classMap);
//   }
//   rules.of(ClassMapMatchOption::ipv4)->forEach(...);

#include "PolicyMap/ClassMapSubConfig.h"
#include "PolicyMap/ClassRules.h"
#include "PolicyMap/PerOption.h"
#include "PolicyMap/PolicyMapGlobalData.h"
#include "PolicyMapExport.h"

#include <functional>

namespace PolicyMap {

struct CompiledClass;

class POLICYMAP_API CompiledRules {
 public:
  using Reaction = std::function<void(DependencyKind)>;

  // `globalData` may be null: then no access list and no nested class-map is found, and nothing is
  // depended on. `dependencyChanged` is called after a change has made the rules stale.
  CompiledRules(Kor::Ptr<PolicyMapGlobalData> globalData, Reaction dependencyChanged);

  // Whether something has changed since the last compilation, or there was none.
  [[nodiscard]] bool stale() const { return stale_; }
  void makeStale() { stale_ = true; }
  // `classMap` may be null: it has no rules. Calls nothing outside.
  void compile(Kor::Ptr<ClassMapSubConfig const> const& classMap);

  // Null before the first compilation.
  [[nodiscard]] Kor::Ptr<ClassRules const> const& of(ClassMapMatchOption option) const {
    return rules_[option];
  }
  // Why the class may not be programmed, for whichever option; empty: it may.
  [[nodiscard]] Kor::String const& error() const { return error_; }
  // Everything that is wrong: `programError`, or error() where that is empty, then what the class
  // refers to and is absent: 'no room, missing ip access-list a, missing class-map b'.
  [[nodiscard]] Kor::String problems(Kor::String const& programError) const;

 private:
  void dependOn(CompiledClass const& compiled);

  Kor::Ptr<PolicyMapGlobalData> globalData_;
  PerOption<ClassRules::PtrConst> rules_;
  bool stale_ = true;
  Kor::String error_;
  Kor::String missing_;                      // what the class refers to and is absent
  DependencyIndex::Dependent dependencies_;  // leaves the index before the global data are released
};

}  // namespace PolicyMap
