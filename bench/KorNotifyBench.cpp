// SPDX-License-Identifier: Apache-2.0
//
// An attribute write with 0, 1, 4 and 64 observers, compared with a list of observers without any
// guarantee (the floor), with hand-written callbacks that give the same guarantees as ours (they
// iterate over a snapshot of the list, skip removed entries, and keep exceptions from the writer),
// and with signals of other libraries.

#include "bench/Contest.h"
#include "bench/Lamp.h"
#include "bench/peers/Floor.h"

#ifdef BENCH_WITH_QT
#include "bench/peers/QtMeter.h"
#endif
#ifdef BENCH_WITH_SIGC
#include <sigc++/sigc++.h>
#endif

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

// The usual hand-written equivalent: it copies the list for each iteration and skips removed
// entries.
class HandLamp {
 public:
  using Callback = std::function<void()>;
  struct Connection {
    Callback callback;
    bool connected = true;
  };

  std::shared_ptr<Connection> connect(Callback callback) {
    return connections_.emplace_back(std::make_shared<Connection>(Connection{std::move(callback)}));
  }
  void brightnessIs(int brightness) {
    if (brightness_ == brightness) {
      return;
    }
    brightness_ = brightness;
    if (connections_.empty()) {
      return;
    }
    auto const snapshot = connections_;
    for (auto const& connection : snapshot) {
      if (connection->connected) {
        try {
          connection->callback();
        } catch (...) {  // NOLINT(bugprone-empty-catch): the write must complete
        }
      }
    }
  }

 private:
  int brightness_ = 0;
  std::vector<std::shared_ptr<Connection>> connections_;
};

template <class L>
void writeRepeatedly(benchmark::State& state, L& lamp) {
  int brightness = 0;
  for (auto _ : state) {
    lamp.brightnessIs(++brightness);
    benchmark::ClobberMemory();
  }
}

void ours(benchmark::State& state) {
  auto const lamp = Bench::lampWith(static_cast<int>(state.range(0)));
  writeRepeatedly(state, *lamp);
}

void byHandWithGuarantees(benchmark::State& state) {
  HandLamp lamp;
  int calls = 0;
  for (int i = 0; i < state.range(0); ++i) {
    lamp.connect([&calls] { ++calls; });
  }
  writeRepeatedly(state, lamp);
}

void byHandBare(benchmark::State& state) {
  Peers::BareLamp lamp;
  std::vector<std::unique_ptr<Peers::BareLamp::Observer>> observers;
  for (int i = 0; i < state.range(0); ++i) {
    lamp.observerIs(observers.emplace_back(Peers::makeCountingObserver()).get());
  }
  writeRepeatedly(state, lamp);
}

#ifdef BENCH_WITH_SIGC
class SigcLamp {
 public:
  sigc::signal<void>& changed() { return changed_; }
  void brightnessIs(int brightness) {
    if (brightness_ != brightness) {
      brightness_ = brightness;
      changed_.emit();
    }
  }

 private:
  int brightness_ = 0;
  sigc::signal<void> changed_;
};

void withSigc(benchmark::State& state) {
  SigcLamp lamp;
  int calls = 0;
  for (int i = 0; i < state.range(0); ++i) {
    lamp.changed().connect([&calls] { ++calls; });
  }
  writeRepeatedly(state, lamp);
}
#endif

#ifdef BENCH_WITH_QT
void withQt(benchmark::State& state) {
  auto const lamp = Peers::makeQtLamp(static_cast<int>(state.range(0)));
  writeRepeatedly(state, *lamp);
}
#endif

[[maybe_unused]] bool const entered = [] {
  using Contest::enter;
  for (int const observers : {0, 1, 4, 64}) {
    std::string const work = "write with " + std::to_string(observers) + " observers";
    enter(work, "ours", &ours)->Arg(observers);
    enter(work, "floor", &byHandBare)->Arg(observers);
    enter(work, "by hand", &byHandWithGuarantees)->Arg(observers);
#ifdef BENCH_WITH_SIGC
    enter(work, "sigc++", &withSigc)->Arg(observers);
#endif
#ifdef BENCH_WITH_QT
    enter(work, "Qt", &withQt)->Arg(observers);
#endif
  }
  return true;
}();

}  // namespace

BENCHMARK_MAIN();
