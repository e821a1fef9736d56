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
// carried out, or an exception x each way of answering; and results that come late or never. After
// each case the fault is cleared and time passes. Then
//
// - the records are those of a run without a fault, and nothing is pending;
// - each status, also of a class, says what the record has, and which policies the core refuses;
// - no status was announced without a change, no assertion failed, and nothing is irregular
//   (LabOptions::strictness);
// - nothing is left of any policy when everything is detached.

#include "testkit/Export.h"
#include "testkit/Lab.h"
#include "testkit/Snapshot.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit {

// How commits and interface operations of the helper return their results.
enum class AnswerMode : std::uint8_t { synchronous, asynchronous, pseudoAsynchronous };
POLICYMAPTESTKIT_API std::string toText(AnswerMode mode);

// What is done to a new lab. It must do the same each time, and not look at results: most of it
// runs while something fails.
using Scenario = std::function<void(Lab& lab)>;

// One run of the scenario.
struct SweepCase {
  AnswerMode mode = AnswerMode::synchronous;
  // Injected at the same time; none: the run without a fault.
  std::vector<PlannedFault> faults;

  bool operator==(SweepCase const&) const = default;
};
// "asynchronous addRule nth=3 before"; several faults are separated by "; ".
POLICYMAPTESTKIT_API std::string toText(SweepCase const& sweepCase);
// Throws Text::InputError.
POLICYMAPTESTKIT_API SweepCase parseSweepCase(std::string_view text);

struct SweepResult {
  SweepCase which;
  // How many calls failed.
  std::uint64_t injected = 0;
  // What is not as it should be, a line each.
  std::vector<std::string> findings;
  // The journal of a case with findings, a line per entry.
  std::vector<std::string> journal;
};
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
  // This many cases of two faults instead, chosen by `seed`.
  std::size_t pairs = 0;
  std::uint64_t seed = 1;
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

  [[nodiscard]] LabOptions optionsFor(AnswerMode mode) const;
  [[nodiscard]] SweepResult run(SweepCase const& which, std::size_t journal) const;
  void addCases(AnswerMode mode, std::vector<SweepCase>& all) const;
  void choosePairs(std::vector<SweepCase>& all) const;

  Scenario scenario_;
  SweepOptions options_;
  Snapshot expected_;
  std::vector<std::string> refusals_;  // in the run without a fault
  std::vector<SweepCase> cases_;
};

// All cases; see SweepOptions.
POLICYMAPTESTKIT_API SweepReport sweep(Scenario scenario, SweepOptions options = {});

}  // namespace PolicyMapTestKit
