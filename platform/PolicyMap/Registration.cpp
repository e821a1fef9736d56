// SPDX-License-Identifier: Apache-2.0
//
// Registers every type of the core and of the value and status libraries when the library is
// loaded.

#include "Kor/Registration.h"

#include "Acl/Models.h"
#include "Ip/Models.h"
#include "Ip6/Models.h"
#include "Lag/Models.h"
#include "PolicyMap/Models.h"
#include "PolicyMap/Trace.h"
#include "Routing/Models.h"
#include "Routing6/Models.h"
#include "Vorel/Models.h"
#include "Zub/Models.h"

#include <string_view>
#include <vector>

namespace {

std::vector<Kor::TypeModel const*> coreModels() {
  std::vector<Kor::TypeModel const*> all;
  for (PolicyMap::Models const models :
       {PolicyMap::valueModels(), PolicyMap::configurationModels(), PolicyMap::statusModels(),
        PolicyMap::sharedModels(), PolicyMap::machineModels()}) {
    all.insert(all.end(), models.begin(), models.end());
  }
  return all;
}

[[maybe_unused]] bool const registered = [] {
  PolicyMap::traceHandle();  // known by name from now on
  auto const add = [](std::string_view nameSpace, PolicyMap::Models models) {
    Kor::registerTypes(nameSpace, models);
    Kor::enterTypes(models);
  };
  add("Zub", Zub::models());
  add("Vorel", Vorel::models());
  add("Acl", Acl::models());
  add("Lag::Input", Lag::Input::models());
  add("Ip", Ip::models());
  add("Ip6", Ip6::models());
  add("Routing", Routing::models());
  add("Routing6", Routing6::models());
  add("PolicyMap", coreModels());
  return true;
}();

}  // namespace
