// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a run did and programmed, as one JSON object.

#include "lab/Kit.h"
#include "testkit/Difference.h"
#include "testkit/Lab.h"
#include "testkit/Problems.h"

#include <ostream>
#include <string>
#include <vector>

namespace lab {

// What one file or step changed.
struct StepChanges {
  std::string step;
  Difference changes;
};

struct JsonReport {
  Lab const& lab;
  Outcome const& outcome;
  std::vector<StepChanges> const& changes;
  WithRules withRules = WithRules::yes;
  bool withJournal = false;
};

// The members are described in docs/lab.md. One line per rule, change and journal entry. Holds one
// rule in memory at a time. Without rules, each policy omits "rules".
void printJson(std::ostream& out, JsonReport const& report);

}  // namespace lab
