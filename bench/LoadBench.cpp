// SPDX-License-Identifier: Apache-2.0
//
// Opens the libraries in a fresh process: linking and the registration of all types. Each
// measurement forks.

#include "bench/Contest.h"

#include <Kor/KorType.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <dlfcn.h>
#include <initializer_list>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

// Opens the libraries in a child process. Returns how long the last one took, in seconds; negative
// on failure.
double secondsToOpen(std::vector<char const*> const& libraries) {
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

void measure(benchmark::State& state, std::vector<char const*> const& libraries) {
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

[[maybe_unused]] bool const entered = [] {
  auto const enter = [](char const* work, std::initializer_list<char const*> libraries) {
    std::vector<char const*> const opened(libraries);
    Contest::enter(work, "ours", [opened](benchmark::State& state) { measure(state, opened); })
        ->UseManualTime()
        ->Iterations(20);
  };
  enter("opening the library after the platform", {POLICYMAP_LIBRARY, POLICYMAPTEST_LIBRARY});
  enter("opening the library and the platform", {POLICYMAPTEST_LIBRARY});
  return true;
}();

}  // namespace

BENCHMARK_MAIN();
