// SPDX-License-Identifier: Apache-2.0
#pragma once

// sweep(): runs a scenario again and again, each time with another call of the helper failing, and
// looks whether everything becomes as it is without the fault once the fault is gone.
//
//   SweepReport const report = sweep([](Lab& lab) {
//     lab.load(configuration);
//     lab.load(edit);
//   });
//   EXPECT_THAT(report.failed(), IsEmpty());
//
// The cases: every operation x every call of it x once or until cleared x before or after it is
// carried out, or an exception x each way of answering; results that come late or never; and each
// fault that is met before the last load ends once before the next load, once after all. Then time
// passes, and
//
// - the records and the statuses, also of classes, are those of a run without a fault, and nothing
//   is pending;
// - each status says what the records have;
// - no status was announced without a change, no assertion failed, and nothing is irregular
//   (LabOptions::strictness);
// - nothing is left of any policy when everything is detached, and all is as before when it is
//   attached again;
// - SweepOptions::look finds nothing.

#include "testkit/Export.h"
#include "testkit/Lab.h"
#include "testkit/runs/Recovery.h"
#include "testkit/runs/Step.h"
#include "testkit/text/JsonLine.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit {

// How commits and interface operations of the helper return their results.
enum class AnswerMode : std::uint8_t { synchronous, asynchronous, pseudoAsynchronous };
POLICYMAPTESTKIT_API std::string toText(AnswerMode mode);
// None for another name.
POLICYMAPTESTKIT_API std::optional<AnswerMode> answerModeOf(std::string_view name);

// What is done to a new lab. It must do the same each time, and not look at results: most of it
// runs while something fails.
using Scenario = std::function<void(Lab& lab)>;

// The options of a lab that returns results in this way.
POLICYMAPTESTKIT_API LabOptions optionsFor(LabOptions options, AnswerMode mode);

// One run of the scenario.
struct SweepCase {
  AnswerMode mode = AnswerMode::synchronous;
  // Injected at the same time; none: the run without a fault.
  std::vector<PlannedFault> faults;
  // The faults end before the next load, not after the last.
  bool early = false;

  bool operator==(SweepCase const&) const = default;
};
// "asynchronous addRule nth=3 before", "asynchronous early addRule nth=3 before"; several faults
// are separated by "; ".
POLICYMAPTESTKIT_API std::string toText(SweepCase const& sweepCase);
// Throws Text::InputError.
POLICYMAPTESTKIT_API SweepCase parseSweepCase(std::string_view text);

struct SweepResult {
  SweepCase which;
  // How many calls failed.
  std::uint64_t injected = 0;
  // The number of loads after which an early case ended its faults; 0: after all.
  std::size_t recovered = 0;
  // What is not as it should be, at most 20.
  std::vector<Irregularity> findings = {};
  // Of a case with findings, or with SweepOptions::journals: the journal, a line per entry.
  std::vector<std::string> journal = {};
};
// {"case":"asynchronous addRule nth=3 before","injected":2,"findings":["..."],"journal":["..."]};
// the findings without their kinds. Read again, throws Text::InputError.
POLICYMAPTESTKIT_API Text::Json jsonOf(SweepResult const& result);
POLICYMAPTESTKIT_API SweepResult sweepResultOf(Text::JsonLine const& json);
// "asynchronous addRule nth=3 before: edge/input ipv4: removed; ...".
POLICYMAPTESTKIT_API std::ostream& operator<<(std::ostream& out, SweepResult const& result);

struct SweepOptions {
  // Of each lab; the way of answering is that of the case.
  LabOptions lab = {};
  std::vector<AnswerMode> modes = {AnswerMode::synchronous, AnswerMode::asynchronous,
                                   AnswerMode::pseudoAsynchronous};
  // Runs each `shards`-th case, beginning with case `shard`, from 1. The cases of all shards are
  // those of the whole sweep.
  std::size_t shard = 1;
  std::size_t shards = 1;
  // Compare with new labs that load the configuration at once, not with the run without a fault.
  // For scenarios that configure by load() alone.
  bool compareWithNewLab = false;
  // Keep the journal of each case.
  bool journals = false;
  // This many cases of two faults instead, chosen by `seed`.
  std::size_t pairs = 0;
  std::uint64_t seed = 1;
  // Also looks at each lab when all is repaired, and returns what is not as it should be.
  std::function<std::vector<std::string>(Lab const& lab)> look = {};
};

class POLICYMAPTESTKIT_API SweepReport {
 public:
  std::vector<SweepResult> results;
  double seconds = 0;

  [[nodiscard]] std::uint64_t injected() const;
  // The results with findings.
  [[nodiscard]] std::vector<SweepResult> failed() const;
};

// Runs the scenario without a fault when it is made. Throws what the scenario throws, and
// std::invalid_argument for a shard that does not exist and for no modes.
class POLICYMAPTESTKIT_API Sweep {
 public:
  Sweep(Scenario scenario, SweepOptions options = {});
  Sweep(Sweep const&) = delete;
  Sweep& operator=(Sweep const&) = delete;
  ~Sweep();

  // Those of this shard, in the order in which they are run. The runs without a fault come first.
  [[nodiscard]] std::vector<SweepCase> const& cases() const { return cases_; }
  [[nodiscard]] SweepResult run(SweepCase const& which) const;
  // Calls `onCase` after each case.
  [[nodiscard]] SweepReport runAll(std::function<void()> const& onCase = {}) const;

 private:
  class Run;
  // Of one operation, in the run without a fault.
  struct Calls {
    std::uint64_t all = 0;
    std::uint64_t beforeLastLoad = 0;
  };

  [[nodiscard]] SweepResult run(SweepCase const& which, std::size_t journal) const;
  void findReferences();
  [[nodiscard]] std::map<std::string, Calls> countCalls(AnswerMode mode) const;
  void addCases(AnswerMode mode, std::vector<SweepCase>& all) const;
  void choosePairs(std::vector<SweepCase>& all) const;

  Scenario scenario_;
  SweepOptions options_;
  std::vector<Reference> references_;  // after each load, and at the end
  std::vector<SweepCase> cases_;
};

// A scenario that performs the steps, which load, advance time, detach and attach.
POLICYMAPTESTKIT_API Scenario scenarioOf(Script const& script);
// What a case of that scenario does, with checks.
POLICYMAPTESTKIT_API Script scriptOf(Script const& script, SweepResult const& result);

// All cases; see SweepOptions.
POLICYMAPTESTKIT_API SweepReport sweep(Scenario scenario, SweepOptions options = {});

}  // namespace PolicyMapTestKit
