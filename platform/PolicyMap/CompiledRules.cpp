// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/CompiledRules.h"

#include "PolicyMap/RuleCompiler.h"

#include <string>
#include <utility>
#include <vector>

namespace PolicyMap {

CompiledRules::CompiledRules(Kor::Ptr<PolicyMapGlobalData> globalData, Reaction dependencyChanged)
    : globalData_(std::move(globalData)),
      dependencies_([this, react = std::move(dependencyChanged)](DependencyKind kind,
                                                                 Kor::Name const& /*name*/) {
        stale_ = true;
        react(kind);
      }) {
  if (globalData_) {
    dependencies_.indexIs(&globalData_->dependencies());
  }
}

void CompiledRules::compile(Kor::Ptr<ClassMapSubConfig const> const& classMap) {
  stale_ = false;
  CompiledClass const compiled =
      compileClass(classMap, globalData_ ? globalData_->classTypeConfig() : nullptr,
                   globalData_ ? globalData_->aclConfig() : nullptr);
  rules_ = compiled.rules;
  error_ = compiled.error;
  missing_ = compiled.missing;
  dependOn(compiled);
}

Kor::String CompiledRules::problems(Kor::String const& programError) const {
  std::string text = (programError.empty() ? error_ : programError).stdString();
  for (std::string const& name : missing_) {
    text += (text.empty() ? "missing " : ", missing ") + name;
  }
  return text;
}

void CompiledRules::dependOn(CompiledClass const& compiled) {
  DependencyIndex::Dependent::Names names;
  auto const add = [&names](DependencyKind kind, std::vector<Kor::Name> const& some) {
    for (Kor::Name const& name : some) {
      names.emplace_back(kind, name);
    }
  };
  add(DependencyKind::ipAcl, compiled.ipAcls);
  add(DependencyKind::ip6Acl, compiled.ip6Acls);
  add(DependencyKind::macAcl, compiled.macAcls);
  add(DependencyKind::classMap, compiled.classMaps);
  dependencies_.namesAre(std::move(names));
}

}  // namespace PolicyMap
