// SPDX-License-Identifier: Apache-2.0
#pragma once

// A session: the configuration, the machines that observe it, the helper that they program, and the
// event loop, with virtual time.
//
//   lab::Session session({});
//   session.load(lab::SourceText::fromFile("edge.cfg"), lab::Reading::strict);
//   for (lab::PolicyRecord const& record : lab::readRecords(session)) { ... }

#include "helper/AclHelper.h"
#include "lab/Configuration.h"
#include "lab/Faults.h"
#include "lab/FilterSet.h"
#include "lab/PolicyTextParser.h"
#include "lab/Progress.h"
#include "lab/SkippedLines.h"
#include "machines/TestServicePolicySm.h"

#include <PolicyMap/PolicyMapTypeStatus.h>

#include <cstddef>
#include <vector>

namespace lab {

// The hardware's capabilities, and the interfaces and lists that are served. The defaults are those
// of a new helper and of a machine that serves everything.
struct SessionOptions {
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
  // Injected from the start.
  std::vector<Fault> faults = {};

  bool layer2 = true;
  bool layer3 = true;
  bool management = true;
  bool ipLists = true;
  bool ip6Lists = true;
  bool macLists = true;
};

// The layout of a filter set.
struct FilterLayout {
  // Number of classes in the policy-map, 1 or more. Each gets a consecutive and nearly equal share
  // of the rules.
  std::size_t classes = 1;
  // Number of interfaces to which the policy-map is attached.
  std::size_t interfaces = 1;
};

// Only one at a time: it uses the event loop of the process.
class Session {
 public:
  // `progress`, if any, must outlive the session.
  explicit Session(SessionOptions const& options, Progress* progress = nullptr);
  Session(Session const&) = delete;
  Session& operator=(Session const&) = delete;

  // Applies a policy text file as an edit of the current settings, and runs until idle. Raises
  // InputError; the settings are then unchanged.
  void load(SourceText const& source, Reading reading);

  // Replaces the current settings by a filter set: policy-map "rules" with classes "rules-1",
  // "rules-2", ..., each matching the access list of its name with the sequence numbers 10, 20,
  // ..., attached for input at Ethernet1, Ethernet2, ...
  void load(FilterSet const& rules, FilterLayout const& layout);

  // Performs one step, then runs until idle.
  void perform(Step const& step);

  Configuration const& configuration() const { return configuration_; }
  // Of all files so far.
  SkippedLines const& skipped() const { return skipped_; }
  PolicyMap::PolicyMapTypeStatus const& status() const { return *status_; }
  Kor::Ptr<PolicyMapTest::AclHelper> const& helper() const { return helper_; }
  PolicyMapTest::TestServicePolicySm::Ptr const& machine() const { return machine_; }

 private:
  void settingsAre(Settings const& settings);

  Progress* progress_;
  Configuration configuration_;
  SkippedLines skipped_;
  PolicyMap::PolicyMapStatusRequestDir::Ptr requests_;
  PolicyMap::PolicyMapTypeStatus::Ptr status_;
  Kor::Ptr<PolicyMapTest::AclHelper> helper_;
  PolicyMapTest::TestServicePolicySm::Ptr machine_;
};

}  // namespace lab
