// SPDX-License-Identifier: Apache-2.0
// A session: the configuration, the machines that watch it, the helper that they program, and the
// event loop with virtual time on which all of it runs.
//
//   lab::Session session({});
//   session.load(lab::SourceText::fromFile("edge.cfg"), lab::Reading::strict);
//   for (lab::PolicyRecord const& record : lab::readRecords(session)) { ... }
#pragma once

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

/// What the hardware can do and which interfaces and lists are served. The defaults are those of a
/// fresh helper and of a machine that serves everything.
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

  /// Whether commits and interface operations answer later, and whether that is at once.
  bool async = false;
  bool pseudoAsync = false;
  /// In force from the beginning.
  std::vector<Fault> faults = {};

  bool layer2 = true;
  bool layer3 = true;
  bool management = true;
  bool ipLists = true;
  bool ip6Lists = true;
  bool macLists = true;
};

/// How a filter set is laid out.
struct FilterLayout {
  /// The rules are cut into so many classes of one policy-map, 1 or more, each with a consecutive
  /// and nearly equal share of them.
  std::size_t classes = 1;
  /// The policy-map is attached to so many interfaces.
  std::size_t interfaces = 1;
};

/// One at a time: the event loop is that of the process.
class Session {
 public:
  /// `progress`, if any, must outlive the session.
  explicit Session(SessionOptions const& options, Progress* progress = nullptr);
  Session(Session const&) = delete;
  Session& operator=(Session const&) = delete;

  /// Takes a file of policy text as an edit of what stands, and runs until nothing is left to do.
  /// Raises InputError, and has then taken nothing of the file.
  void load(SourceText const& source, Reading reading);

  /// Takes a filter set in place of what stands: policy-map "rules" with classes "rules-1",
  /// "rules-2", ..., each matching the access list of its name with the sequence numbers 10, 20,
  /// ..., attached for input at Ethernet1, Ethernet2, ...
  void load(FilterSet const& rules, FilterLayout const& layout);

  /// Does one step, and runs until nothing is left to do at the time that it then is.
  void perform(Step const& step);

  Configuration const& configuration() const { return configuration_; }
  /// Of all files so far.
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
