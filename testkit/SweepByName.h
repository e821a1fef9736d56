// SPDX-License-Identifier: Apache-2.0
#pragma once

// SweepByName: a Sweep as an object that is registered by name, as "PolicyMapTestKit::Sweep".
//
// KitByName: what the kit does without a Lab of the test, by name, as "PolicyMapTestKit::Kit". Runs
// are texts, as in RunFile.h.

#include "testkit/Export.h"
#include "testkit/LabByName.h"
#include "testkit/sweep/Sweep.h"

#include <Kor/Callable.h>
#include <Kor/PtrInterface.h>
#include <Kor/String.h>

#include <cstdint>

namespace PolicyMapTestKit {

class POLICYMAPTESTKIT_API SweepByName final : public Kor::PtrInterface {
 public:
  using Ptr = Kor::Ptr<SweepByName>;

  SweepByName(Scenario scenario, SweepOptions const& options)
      : sweep_(std::move(scenario), options) {}
  ~SweepByName() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // As texts; see toText(SweepCase).
  [[nodiscard]] TextLines cases() const;
  // Runs one of them. Returns JSON; see jsonOf(SweepResult).
  [[nodiscard]] Kor::String run(Kor::String const& which) const;

 private:
  Sweep sweep_;
};

class POLICYMAPTESTKIT_API KitByName final : public Kor::PtrInterface {
 public:
  using Ptr = Kor::Ptr<KitByName>;

  ~KitByName() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // A lab with the options of a run file, a JSON object with those that are not usual.
  [[nodiscard]] LabByName::Ptr lab(Kor::String const& options) const;
  // Performs the steps of a run in a new lab. Returns the run with what happened.
  [[nodiscard]] Kor::String perform(Kor::String const& run) const;
  // Returns the shortest run that comes to something of the same kind.
  [[nodiscard]] Kor::String minimise(Kor::String const& run) const;
  // A random walk that begins with the steps of a run. Returns the walk as a run. `onStep` is
  // called after each step, if it is not null; what it throws ends the walk.
  [[nodiscard]] Kor::String walk(Kor::String const& run, std::uint64_t seed, std::uint64_t steps,
                                 Kor::Callable::Ptr const& onStep) const;
  // The sweep of `scenario`, which is called with a lab; null: of the steps of the run. The options
  // of the labs are those of the run. `settings` is a JSON object with those members of
  // SweepOptions that are not usual: "modes", "shard", "shards", "pairs", "seed", "journals".
  [[nodiscard]] SweepByName::Ptr sweep(Kor::String const& run, Kor::String const& settings,
                                       Kor::Callable::Ptr const& scenario) const;
  // The names of the helper's operations.
  [[nodiscard]] TextLines operations() const;
  // See traceIs(). The lines are kept, at most this number, the newest, until takeTrace(). Without
  // a setting nothing is traced any more, and what is traced later is printed again.
  void keepTrace(Kor::String const& setting, std::uint64_t lines);
  TextLines takeTrace();
};

}  // namespace PolicyMapTestKit
