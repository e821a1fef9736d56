// SPDX-License-Identifier: Apache-2.0

// Copies and releases a counted pointer, compared with std::shared_ptr.

#include <Kor/PtrInterface.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <memory>
#include <thread>

namespace {

class Thing : public Kor::PtrInterface {};

void copyAndRelease(benchmark::State& state) {
  auto const thing = Kor::make<Thing>();
  for (auto _ : state) {
    Kor::Ptr<Thing> copy = thing;
    benchmark::DoNotOptimize(copy);
  }
}

// std::shared_ptr counts without atomics until the program creates its second thread.
void copyAndReleaseShared(benchmark::State& state) {
  auto const thing = std::make_shared<int>(7);
  for (auto _ : state) {
    std::shared_ptr<int> copy = thing;
    benchmark::DoNotOptimize(copy);
  }
}
// Registered last: from here on the program counts as multi-threaded.
void copyAndReleaseSharedWithThreads(benchmark::State& state) {
  std::atomic<bool> stop = false;
  std::thread idle([&stop] { stop.wait(false); });
  copyAndReleaseShared(state);
  stop = true;
  stop.notify_all();
  idle.join();
}

void makeAndEnd(benchmark::State& state) {
  for (auto _ : state) {
    auto thing = Kor::make<Thing>();
    benchmark::DoNotOptimize(thing);
  }
}
void makeAndEndShared(benchmark::State& state) {
  for (auto _ : state) {
    auto thing = std::make_shared<int>(7);
    benchmark::DoNotOptimize(thing);
  }
}

BENCHMARK(copyAndRelease);
BENCHMARK(copyAndReleaseShared);
BENCHMARK(makeAndEnd);
BENCHMARK(makeAndEndShared);
BENCHMARK(copyAndReleaseSharedWithThreads);

}  // namespace

BENCHMARK_MAIN();
