// SPDX-License-Identifier: Apache-2.0
#pragma once

// LabOptions, Fault: how a Lab begins.
//
//   Lab lab({.updateAction = true, .faults = {{"commitError", "table full"}}});

#include "helper/AclHelper.h"
#include "testkit/Export.h"
#include "testkit/faults/FaultPlan.h"
#include "testkit/faults/Findings.h"
#include "testkit/text/ActionMapping.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit {

// An injected error: every call of the operation fails with the text until it is cleared.
struct Fault {
  // The attribute of the helper, e.g. "commitError".
  std::string name;
  // The error that the operation returns; empty for success.
  std::string text;
};

// The attributes that hold an injected error, in the order of the documentation.
POLICYMAPTESTKIT_API std::vector<std::string> faultNames();
// Throws Kor::RangeException, with the valid names, if there is no such attribute.
POLICYMAPTESTKIT_API void inject(PolicyMapTest::AclHelper& helper, Fault const& fault);
POLICYMAPTESTKIT_API void clearFaults(PolicyMapTest::AclHelper& helper);

// The hardware's capabilities, and the interfaces and lists that are served. The defaults are those
// of a new helper and of a machine that serves everything.
struct LabOptions {
  bool updateAction = false;
  bool expandPortChannels = false;
  bool subRulesForPorts = false;
  bool reprogramOnIntfChange = false;
  bool denyRules = true;
  bool ttl = true;
  bool onlyTtlEq = false;
  bool ackOrRst = true;
  bool established = true;

  // Whether commits and interface operations are asynchronous, and whether their results are
  // available immediately.
  bool async = false;
  bool pseudoAsync = false;
  // Asynchronous results arrive by themselves after this many seconds; none: by trigger().
  std::optional<double> asyncDelay = {};
  // Injected from the start.
  std::vector<Fault> faults = {};
  // A fault plan for the whole life of the lab; see testkit/faults/FaultPlan.h.
  FaultPlan plan = {};
  // Which irregular calls of the core are findings.
  Strictness strictness = {};

  bool layer2 = true;
  bool layer3 = true;
  bool management = true;
  bool ipLists = true;
  bool ip6Lists = true;
  bool macLists = true;

  // Access lists that are attached by themselves are policy-maps of one class.
  bool accessGroups = true;
  // What lines of classes become in place of their usual actions.
  Text::ActionMapping actions = {};

  // The number of entries that the journal keeps; the oldest are dropped. 0: no journal.
  std::size_t journal = 65536;
  // Whether the journal also has the changes of statuses.
  bool journalStatuses = false;
};

// The options that are on or off, by name, in the order of LabOptions.
struct LabSwitch {
  std::string_view name;
  bool LabOptions::*value;
};
POLICYMAPTESTKIT_API std::span<LabSwitch const> labSwitches();

}  // namespace PolicyMapTestKit
