// SPDX-License-Identifier: Apache-2.0
#pragma once

// ScriptRun: a Lab in which steps are performed, and which is watched for what should not be.
//
//   ScriptRun run(options, Reading::strict);
//   run.perform(Step::load("edge.cfg", text));
//   run.perform(Step::faults("addRule nth=3"));
//   run.perform(Step::check());
//   EXPECT_THAT(run.irregularities(), IsEmpty());

#include "testkit/Export.h"
#include "testkit/Lab.h"
#include "testkit/StatusWatch.h"
#include "testkit/runs/Recovery.h"
#include "testkit/runs/Step.h"

#include <Kor/Assert.h>

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace PolicyMapTestKit {

// While it exists, a failed assertion throws AssertionFailed and is kept, instead of ending the
// process. One at a time in each thread.
class POLICYMAPTESTKIT_API CaughtAssertions {
 public:
  CaughtAssertions();
  CaughtAssertions(CaughtAssertions const&) = delete;
  CaughtAssertions& operator=(CaughtAssertions const&) = delete;
  ~CaughtAssertions();

  [[nodiscard]] static std::vector<std::string> const& texts();

 private:
  Kor::AssertionHandler before_;
};

class POLICYMAPTESTKIT_API ScriptRun {
 public:
  // The findings of the lab fail no test; they are irregularities.
  explicit ScriptRun(LabOptions const& options, Text::Reading reading = Text::Reading::strict);
  ScriptRun(ScriptRun const&) = delete;
  ScriptRun& operator=(ScriptRun const&) = delete;
  ~ScriptRun() = default;

  // Throws Text::InputError for policy text, a filter set or a plan that is invalid, and what the
  // lab throws.
  void perform(Step const& step);
  // Returns false, and notes an irregularity, if the step throws.
  bool tryTo(Step const& step);

  // Begins a plan, which lasts until recover() or end().
  void plan(FaultPlan const& plan) { begun_.push_back({toText(plan), lab_.plan(plan)}); }
  // Ends all faults, and lets time pass until all is repaired.
  void recover();
  // What differs from the reference is irregular.
  void check(Reference const& reference);

  [[nodiscard]] Lab& lab() { return lab_; }
  [[nodiscard]] Lab const& lab() const { return lab_; }
  [[nodiscard]] LabOptions const& options() const { return options_; }
  // Ends all plans, those of the options, too. A fault that was not met is irregular.
  void end();

  // How many calls the planned faults have hit.
  [[nodiscard]] std::uint64_t injected() const;

  void find(Irregularity irregularity);
  // So far, also those of the lab and, in a scope of CaughtAssertions, failed assertions.
  [[nodiscard]] std::vector<Irregularity> irregularities() const;

 private:
  struct BegunPlan {
    std::string text;
    FaultScope scope;
  };

  void endPlan(std::string const& text);
  void checkCounts();

  // While it exists, findings of labs are only kept.
  class Quiet {
   public:
    Quiet() : before_(findingHandlerIs({})) {}
    Quiet(Quiet const&) = delete;
    Quiet& operator=(Quiet const&) = delete;
    ~Quiet() { findingHandlerIs(std::move(before_)); }

   private:
    FindingHandler before_;
  };

  Quiet quiet_;  // also at the end of the lab
  LabOptions options_;
  Text::Reading reading_;
  Lab lab_;
  StatusWatch watch_;
  std::vector<BegunPlan> begun_;
  std::uint64_t injected_ = 0;   // by plans that have ended
  bool somethingFails_ = false;  // because of a plan of the options, or an error attribute
  std::map<std::string, Record> records_;  // by name, at the check before
  std::vector<Irregularity> found_;
};

}  // namespace PolicyMapTestKit
