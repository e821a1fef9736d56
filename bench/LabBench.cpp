// SPDX-License-Identifier: Apache-2.0
//
// policymap-lab on generated filter sets: processor time and memory of a whole process, from the
// file to the records and to JSON.

#include "bench/Contest.h"
#include "testkit/text/FilterSetGenerator.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

struct Cost {
  double seconds = 0;  // of the processor
  double bytes = 0;    // most that were resident
};

// A file with so many rules, made once.
std::string const& filterSet(std::uint32_t rules) {
  static std::map<std::uint32_t, std::string> files;
  std::string& name = files[rules];
  if (name.empty()) {
    name = std::string(BENCH_FOLDER) + "/filter-set-" + std::to_string(rules);
    std::ofstream(name) << PolicyMapTestKit::Text::generateFilterSet(rules);
  }
  return name;
}

// Zero: the program failed.
Cost costOf(std::vector<std::string> const& arguments) {
  std::vector<char*> words;
  words.reserve(arguments.size() + 1);
  for (std::string const& argument : arguments) {
    words.push_back(const_cast<char*>(argument.c_str()));
  }
  words.push_back(nullptr);
  pid_t const child = fork();
  if (child == 0) {
    int const nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    execv(words[0], words.data());
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (child < 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
    return {};
  }
  auto const seconds = [](timeval const& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  return {seconds(usage.ru_utime) + seconds(usage.ru_stime),
          static_cast<double>(usage.ru_maxrss) * 1024};
}

Cost loading(benchmark::State& state, std::uint32_t rules, std::string const& output) {
  Cost const cost = costOf({POLICYMAP_LAB, "run", "--rules", filterSet(rules), output});
  if (cost.bytes == 0) {
    state.SkipWithError("policymap-lab failed");
  }
  return cost;
}

auto perRule(std::uint32_t rules) {
  return [rules](benchmark::State& state) {
    for (auto _ : state) {
      state.SetIterationTime(loading(state, rules, "--summary").seconds / rules);
    }
  };
}

auto bytesPerRule(std::uint32_t rules) {
  return [rules](benchmark::State& state) {
    for (auto _ : state) {
      double const some = loading(state, 1000, "--summary").bytes;
      Contest::measured(state, (loading(state, rules, "--summary").bytes - some) / rules);
    }
  };
}

// The time that the output adds, and the time without it.
auto outputOf(std::uint32_t rules) {
  return [rules](benchmark::State& state) {
    for (auto _ : state) {
      double const without = loading(state, rules, "--summary").seconds;
      state.SetIterationTime(loading(state, rules, "--json").seconds - without);
    }
  };
}
auto wholeRun(std::uint32_t rules) {
  return [rules](benchmark::State& state) {
    for (auto _ : state) {
      state.SetIterationTime(loading(state, rules, "--json").seconds);
    }
  };
}

[[maybe_unused]] bool const entered = [] {
  auto const enter = [](char const* work, char const* who, auto function) {
    Contest::enter(work, who, function)->UseManualTime()->Iterations(1)->Repetitions(1);
  };
  enter("filter set to records, per rule of 100,000", "ours", perRule(100000));
  enter("filter set to records, per rule of 100,000", "of 10,000", perRule(10000));
  enter("filter set to records, per rule of 1,000,000", "ours", perRule(1000000));
  enter("filter set to records, per rule of 1,000,000", "of 100,000", perRule(100000));
  enter("bytes per rule of 1,000,000", "ours", bytesPerRule(1000000));
  enter("JSON of 1,000,000 rules", "ours", outputOf(1000000));
  enter("JSON of 1,000,000 rules", "whole run", wholeRun(1000000));
  return true;
}();

}  // namespace

BENCHMARK_MAIN();
