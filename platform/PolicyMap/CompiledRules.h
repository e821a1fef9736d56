// SPDX-License-Identifier: Apache-2.0
#pragma once

// CompiledRules: the rules of one class as of its last compilation. They become stale when
// something they depend on changes, and are compiled again on demand. They depend on every access
// list and class-map that the matches refer to, whether or not it exists.
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
#include <string>
#include <vector>

namespace PolicyMap {

struct CompiledClass;

class POLICYMAP_API CompiledRules {
 public:
  using Reaction = std::function<void(DependencyKind)>;

  // If `globalData` is null, access lists and nested class-maps are not found, and there are no
  // dependencies. `dependencyChanged` is called after a change has made the rules stale.
  CompiledRules(Kor::Ptr<PolicyMapGlobalData> globalData, Reaction dependencyChanged);

  // True before the first compilation, and after a change since the last one.
  [[nodiscard]] bool stale() const { return stale_; }
  void makeStale() { stale_ = true; }
  // A null `classMap` has no rules. Runs no callbacks and sends no notifications.
  void compile(Kor::Ptr<ClassMapSubConfig const> const& classMap);

  // Null before the first compilation.
  [[nodiscard]] Kor::Ptr<ClassRules const> const& of(ClassMapMatchOption option) const {
    return rules_[option];
  }
  // Why the class must not be programmed, over all options; empty if it may be.
  [[nodiscard]] Kor::String const& error() const { return error_; }
  // The missing objects that the class refers to, e.g. "ip access-list a".
  [[nodiscard]] std::vector<std::string> const& missing() const { return missing_; }
  // All problems as one text: `programError`, or error() if that is empty, followed by the missing
  // objects: 'no room, missing ip access-list a, missing class-map b'.
  [[nodiscard]] Kor::String problems(Kor::String const& programError) const;

 private:
  void dependOn(CompiledClass const& compiled);

  Kor::Ptr<PolicyMapGlobalData> globalData_;
  PerOption<ClassRules::PtrConst> rules_;
  bool stale_ = true;
  Kor::String error_;
  std::vector<std::string> missing_;
  // Last member: it must leave the index before the global data are released.
  DependencyIndex::Dependent dependencies_;
};

}  // namespace PolicyMap
