// SPDX-License-Identifier: Apache-2.0

// Every script x every injected error x every call that it can fail x every mode of the helper x
// once or lasting. Nothing asserts, every failure is reported where it belongs, and after the fault
// is gone the records become those of the run without it.
//
// The same for every asynchronous call whose result is never delivered, x whether the script waits
// for the time-out before it continues.

#include "support/FailureJournal.h"
#include "support/FaultyHelper.h"
#include "support/NormalForm.h"
#include "support/Scenario.h"
#include "support/TraceRecorder.h"
#include "sweep/Scripts.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <sstream>

namespace sweep {
namespace {

using TestSupport::allFaults;
using TestSupport::FailureJournal;
using TestSupport::Fault;
using TestSupport::FaultyHelper;
using TestSupport::FiredFault;
using TestSupport::NormalForm;
using TestSupport::normalForm;
using TestSupport::Scenario;

// `late`: one result per step of the script, so that steps occur while passes wait. The other
// results are delivered at the end.
enum class Mode : std::uint8_t { synchronous, asynchronous, pseudoAsynchronous, late };
constexpr std::array allModes{Mode::synchronous, Mode::asynchronous, Mode::pseudoAsynchronous,
                              Mode::late};

std::ostream& operator<<(std::ostream& out, Mode mode) {
  constexpr std::array<char const*, allModes.size()> names{"synchronous", "asynchronous",
                                                           "pseudo-asynchronous", "late"};
  return out << names.at(static_cast<std::size_t>(mode));
}

// How a call fails: with a text, or because its result is never delivered. After a silence the
// script continues when the call has timed out, or at once.
enum class Manner : std::uint8_t { text, silence, silenceThroughSteps };

std::ostream& operator<<(std::ostream& out, Manner manner) {
  constexpr std::array<char const*, 3> names{"", ", without a result",
                                             ", without a result while steps go on"};
  return out << names.at(static_cast<std::size_t>(manner));
}

// The call that fails. Default: none.
struct Failing {
  std::optional<Fault> fault = {};
  std::uint32_t call = 0;
  bool lasting = false;
  Manner manner = Manner::text;

  [[nodiscard]] bool silently() const { return manner != Manner::text; }
};

// One run of a script.
class ScriptRun {
 public:
  ScriptRun(Script const& script, Mode mode, Failing const& failing)
      : failing_(failing),
        mayGiveUp_(script.endsPasses && failing.silently() &&
                   (failing.lasting || failing.manner != Manner::silence)),
        helper_(Kor::make<FaultyHelper>(script.settings.updateActions,
                                        script.settings.expandPortChannels)),
        scenario_(script.settings, helper_),
        journal_(scenario_.status) {
    helper_->asyncOperationsIs(mode != Mode::synchronous);
    helper_->pseudoAsyncIs(mode == Mode::pseudoAsynchronous);
    if (failing.silently()) {
      helper_->silenceIs(*failing.fault, failing.call, failing.lasting,
                         "no result within 30 seconds");
    } else if (failing.fault) {
      helper_->failureIs(*failing.fault, failing.call, failing.lasting);
    }
    script.prepare(scenario_);
    scenario_.start();
    settle(mode);
    for (Script::Act const& step : script.steps) {
      if (failing.manner == Manner::silence) {
        advance(patience);
      }
      step(scenario_);
      settle(mode);
    }
    settle();
    if (failing.silently()) {
      advance(patience);
    } else if (failing.lasting) {
      advance(5);  // retries fail as well
    }
  }

  // Removes the fault and lets time pass until nothing is left to do. A single lost result is
  // delivered late, after the wait for it has ended.
  void recover() {
    helper_->heal();
    if (failing_.silently() && !failing_.lasting) {
      helper_->deliver();
    }
    advance(200);
  }

  [[nodiscard]] FaultyHelper const& helper() const { return *helper_; }
  [[nodiscard]] NormalForm records() const { return normalForm(*helper_); }

  // Errors in the reports, one line per fault; empty if there are none.
  [[nodiscard]] std::string wrongReports() const {
    std::ostringstream wrong;
    bool first = true;
    for (FiredFault const& fired : helper_->fired()) {
      if (fired.seen && !mayGiveUp_ && !reported(fired) && !isNobodys(fired) &&
          (first || !traced("second failure of a pass: " + fired.error))) {
        wrong << fired.operation << " of " << fired.policy << ' ' << fired.option << ": '"
              << fired.error << "' is reported nowhere\n";
      }
      first = first && !fired.seen;
    }
    return wrong.str();
  }
  // Errors in the final statuses, likewise.
  [[nodiscard]] std::string wrongStatuses() const {
    std::ostringstream wrong;
    for (auto const& entry : scenario_.status->policyMapStatusIteratorConst()) {
      for (auto const option : PolicyMap::allMatchOptions) {
        auto const record = helper_->testData(PolicyMapTest::AclPolicyType(entry.key(), option));
        bool const stands = record && record->created();
        bool const reportedToStand = entry.value()->programmed(option);
        // A failed deletion is not retried, so its text may stay.
        bool const fails = stands && entry.value()->korFailure(option);
        bool const timed = bool(entry.value()->korTimeProgrammed(option));
        std::set<Vorel::IntfId> const bound =
            record ? TestSupport::normalRecord(*record).intfs : std::set<Vorel::IntfId>();
        std::vector<Vorel::IntfId> const applied = entry.value()->intfs(option);
        if (stands != reportedToStand || stands != timed || fails ||
            std::vector<Vorel::IntfId>(bound.begin(), bound.end()) != applied) {
          wrong << entry.key() << ' ' << option << (stands ? " stands" : " does not stand")
                << ", is reported to" << (reportedToStand ? "" : " not")
                << (fails ? ", and to fail" : "") << (timed ? ", with" : ", without")
                << " a time, at " << applied.size() << " interfaces of " << bound.size() << '\n';
        }
      }
    }
    return wrong.str();
  }

 private:
  static constexpr int patience = 31;  // seconds; longer than the time-out of a result

  void settle() {
    scenario_.settle();
    while (helper_->resultPending()) {
      helper_->deliver();
      scenario_.settle();
    }
  }
  void settle(Mode mode) {
    if (mode != Mode::late) {
      settle();
    } else if (scenario_.settle(); helper_->resultPending()) {
      helper_->deliver();
      scenario_.settle();
    }
  }
  // Advances at most `seconds`, while anything is scheduled.
  void advance(int seconds) {
    for (int second = 0; second < seconds && Kor::EventLoop::global().pending() != 0; ++second) {
      scenario_.advance(1);
      settle();
    }
  }
  [[nodiscard]] bool reported(FiredFault const& fired) const {
    auto const& failures = journal_.failures();
    return std::any_of(failures.begin(), failures.end(), [&](auto const& reported) {
      return reported.policy == fired.policy && reported.option == fired.option &&
             reported.failure.error() == fired.error &&
             reported.failure.operation() == fired.operation &&
             reported.failure.rule() == fired.rule.value_or(PolicyMap::AclRuleKey()) &&
             reported.failure.className() == reported.failure.rule().className();
    });
  }
  [[nodiscard]] bool traced(std::string const& start) const {
    auto const& lines = trace_.lines();
    return std::any_of(lines.begin(), lines.end(), [&](std::string const& line) {
      return line.starts_with("PolicyMap|1|" + start);
    });
  }
  // True if the result arrived after the client that waited for it had released its helper.
  [[nodiscard]] bool isNobodys(FiredFault const& fired) const {
    return traced(
        "result nobody waits for: Value('PolicyMap::AsyncOperationResult', ** {'error': '" +
        fired.error + "',");
  }

  TestSupport::TraceRecorder trace_{"PolicyMap", 1};
  Failing failing_;
  bool mayGiveUp_;  // a wait may end before its time-out reports the silence
  Kor::Ptr<FaultyHelper> helper_;
  Scenario scenario_;
  FailureJournal journal_;
};

struct Tally {
  std::size_t cases = 0;
  std::size_t faults = 0;  // calls that failed
};

void failOneCall(Script const& script, Mode mode, Failing const& failing,
                 NormalForm const& expected, Tally& tally) {
  std::ostringstream title;
  title << script.name << ", " << mode << ", " << *failing.fault << " at call " << failing.call
        << (failing.lasting ? " and after" : " alone") << failing.manner;
  SCOPED_TRACE(title.str());
  ScriptRun run(script, mode, failing);
  ++tally.cases;
  tally.faults += run.helper().fired().size();
  EXPECT_FALSE(run.helper().fired().empty());
  run.recover();
  EXPECT_EQ(describe(run.records()), describe(expected));
  EXPECT_EQ(run.records(), expected);
  EXPECT_THAT(run.helper().violations(), testing::IsEmpty());
  EXPECT_EQ(run.wrongReports(), "");
  EXPECT_EQ(run.wrongStatuses(), "");
}

class Sweep : public testing::TestWithParam<Script> {
 public:
  static void TearDownTestSuite() {
    std::printf("all scripts: %zu cases, %zu failed calls\n", total.cases, total.faults);
  }

 protected:
  static void report(Script const& script, Tally const& tally) {
    EXPECT_GT(tally.cases, 0U);
    std::printf("%s: %zu cases, %zu failed calls\n", script.name.c_str(), tally.cases,
                tally.faults);
    total.cases += tally.cases;
    total.faults += tally.faults;
  }

  static inline Tally total;
};

TEST_P(Sweep, EveryFaultIsReportedAndLeavesNothingBehind) {
  Script const& script = GetParam();
  Tally tally;
  NormalForm const expected = ScriptRun(script, Mode::synchronous, {}).records();
  for (Mode const mode : allModes) {
    ScriptRun const spared(script, mode, {});
    EXPECT_EQ(describe(spared.records()), describe(expected)) << script.name << ", " << mode;
    EXPECT_THAT(spared.helper().violations(), testing::IsEmpty());
    for (Fault const fault : allFaults) {
      for (std::uint32_t call = 1; call <= spared.helper().calls(fault); ++call) {
        for (bool const lasting : {false, true}) {
          failOneCall(script, mode, {fault, call, lasting}, expected, tally);
        }
      }
    }
  }
  report(script, tally);
}

TEST_P(Sweep, AResultThatNeverComesTimesOutAndLeavesNothingBehind) {
  Script const& script = GetParam();
  Tally tally;
  NormalForm const expected = ScriptRun(script, Mode::synchronous, {}).records();
  ScriptRun const spared(script, Mode::asynchronous, {});
  for (Fault const fault : {Fault::commitError, Fault::addIntfError, Fault::removeIntfError}) {
    for (std::uint32_t call = 1; call <= spared.helper().calls(fault); ++call) {
      for (bool const lasting : {false, true}) {
        for (Manner const manner : {Manner::silence, Manner::silenceThroughSteps}) {
          failOneCall(script, Mode::asynchronous, {fault, call, lasting, manner}, expected, tally);
        }
      }
    }
  }
  report(script, tally);
}

INSTANTIATE_TEST_SUITE_P(Every, Sweep, testing::ValuesIn(allScripts()), [](auto const& one) {
  std::string name;
  bool capital = true;
  for (char const letter : one.param.name) {
    if (std::isalnum(static_cast<unsigned char>(letter)) == 0) {
      capital = true;
    } else {
      name +=
          capital ? static_cast<char>(std::toupper(static_cast<unsigned char>(letter))) : letter;
      capital = false;
    }
  }
  return name;
});

}  // namespace
}  // namespace sweep
