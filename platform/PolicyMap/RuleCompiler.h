// SPDX-License-Identifier: Apache-2.0
#pragma once

// Compiles a class-map into its rules, following access lists and nested class-maps.

#include "Acl/Config.h"
#include "PolicyMap/ClassMapTypeConfig.h"
#include "PolicyMap/ClassRules.h"
#include "PolicyMap/PerOption.h"
#include "PolicyMap/RuleLimits.h"
#include "PolicyMapExport.h"

#include <string>
#include <vector>

namespace PolicyMap {

// The rules of a class-map, and their dependencies.
struct CompiledClass {
  PerOption<ClassRules::PtrConst> rules;  // never null
  std::string error;  // why the class must not be programmed; empty if it may be
  // Access lists and class-maps that are referred to but do not exist.
  std::vector<std::string> missing;
  // The dependencies, whether or not they exist. Includes a class-map that matches itself.
  std::vector<Kor::Name> ipAcls;
  std::vector<Kor::Name> ip6Acls;
  std::vector<Kor::Name> macAcls;
  std::vector<Kor::Name> classMaps;
};

// Any pointer may be null. Reports an error if the class-map exceeds `limits`.
POLICYMAP_API CompiledClass compileClass(Kor::Ptr<ClassMapSubConfig const> const& classMap,
                                         Kor::Ptr<ClassMapTypeConfig const> const& classMaps,
                                         Kor::Ptr<Acl::Config const> const& acls,
                                         RuleLimits const& limits = {});

}  // namespace PolicyMap
