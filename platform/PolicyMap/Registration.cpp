// SPDX-License-Identifier: Apache-2.0
//
// Registers every type of the core and of the value and status libraries when the library is
// loaded.

#include "Kor/Registration.h"

#include "PolicyMap/Models.h"

#include <string_view>

namespace {

[[maybe_unused]] bool const registered = [] {
  auto const add = [](std::string_view nameSpace, PolicyMap::Models models) {
    Kor::registerTypes(nameSpace, models);
    Kor::enterTypes(models);
  };
  add("PolicyMap", PolicyMap::machineModels());
  return true;
}();

}  // namespace
