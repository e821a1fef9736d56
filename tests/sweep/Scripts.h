// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Scenario.h"

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace sweep {

// A configuration that is programmed first, and the steps that change it, each settled before the
// next.
struct Script {
  using Act = std::function<void(TestSupport::Scenario&)>;

  std::string name;
  Act prepare;  // before the machine is created
  std::vector<Act> steps;
  TestSupport::ScenarioSettings settings = {};
  bool endsPasses = false;  // removes the helper or the machine, possibly while a pass is waiting

  friend void PrintTo(Script const& script, std::ostream* out) { *out << script.name; }
};

[[nodiscard]] std::vector<Script> allScripts();

}  // namespace sweep
