// SPDX-License-Identifier: Apache-2.0

// Opens the library in a fresh process: linking and the registration of all types. Each measurement
// forks.

#include <Kor/KorType.h>

#include <benchmark/benchmark.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <dlfcn.h>
#include <initializer_list>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Opens the libraries in a child process. Returns how long the last one took, in seconds; negative
// on failure.
double secondsToOpen(std::initializer_list<char const*> libraries) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) {
    return -1;
  }
  pid_t const child = fork();
  if (child == 0) {
    double seconds = -1;
    for (char const* const library : libraries) {
      auto const start = std::chrono::steady_clock::now();
      void* const opened = dlopen(library, RTLD_NOW);
      std::chrono::duration<double> const took = std::chrono::steady_clock::now() - start;
      seconds = opened == nullptr ? -1 : took.count();
    }
    bool const told = write(ends[1], &seconds, sizeof seconds) == sizeof seconds;
    _exit(told ? 0 : 1);
  }
  close(ends[1]);
  double seconds = -1;
  bool const heard = read(ends[0], &seconds, sizeof seconds) == sizeof seconds;
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return heard ? seconds : -1;
}

void measure(benchmark::State& state, std::initializer_list<char const*> libraries) {
  static_cast<void>(Kor::KorType::all());  // Kor is loaded already
  for (auto _ : state) {
    double const seconds = secondsToOpen(libraries);
    if (seconds < 0) {
      state.SkipWithError("the library could not be opened");
      return;
    }
    state.SetIterationTime(seconds);
  }
}

void openLibrary(benchmark::State& state) {
  measure(state, {POLICYMAP_LIBRARY, POLICYMAPTEST_LIBRARY});
}
BENCHMARK(openLibrary)->UseManualTime()->Unit(benchmark::kMicrosecond);

void openCoreAndLibrary(benchmark::State& state) {
  measure(state, {POLICYMAPTEST_LIBRARY});
}
BENCHMARK(openCoreAndLibrary)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
