// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Scenario.h"

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace sweep {

// A configuration that is programmed first, and what is done to it then, one settled step after
// the other.
struct Script {
  using Act = std::function<void(TestSupport::Scenario&)>;

  std::string name;
  Act prepare;  // before the machine is made
  std::vector<Act> steps;
  TestSupport::ScenarioSettings settings = {};
  bool endsPasses = false;  // takes helper or machine away, also from a pass that waits

  friend void PrintTo(Script const& script, std::ostream* out) { *out << script.name; }
};

[[nodiscard]] std::vector<Script> allScripts();

}  // namespace sweep
