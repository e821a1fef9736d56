// SPDX-License-Identifier: Apache-2.0
#pragma once

// From a class-map to its rules: follows access lists and nested class-maps.

#include "Acl/Config.h"
#include "PolicyMap/ClassMapTypeConfig.h"
#include "PolicyMap/ClassRules.h"
#include "PolicyMap/PerOption.h"
#include "PolicyMap/RuleLimits.h"
#include "PolicyMapExport.h"

#include <string>
#include <vector>

namespace PolicyMap {

// The rules of a class-map, and what they come from.
struct CompiledClass {
  PerOption<ClassRules::PtrConst> rules;  // never null
  std::string error;                 // why nothing of the class may be programmed; empty: it may
  std::vector<std::string> missing;  // access lists and class-maps that are referred to and absent
  // What the result depends on, whether or not it exists; a class-map that matches itself is listed
  // too.
  std::vector<Kor::Name> ipAcls;
  std::vector<Kor::Name> ip6Acls;
  std::vector<Kor::Name> macAcls;
  std::vector<Kor::Name> classMaps;
};

// Any pointer may be null. A class-map that branches or multiplies beyond `limits` has an error.
POLICYMAP_API CompiledClass compileClass(Kor::Ptr<ClassMapSubConfig const> const& classMap,
                                         Kor::Ptr<ClassMapTypeConfig const> const& classMaps,
                                         Kor::Ptr<Acl::Config const> const& acls,
                                         RuleLimits const& limits = {});

}  // namespace PolicyMap
