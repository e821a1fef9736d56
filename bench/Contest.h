// SPDX-License-Identifier: Apache-2.0
//
// Benchmarks that are compared: one work, done by ours and by others. bench/ratios.py runs them and
// knows which ratio is good enough.

#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <utility>

namespace Contest {

// Registers a function (benchmark::State&) as `work/who`. What is compared is its time per item, if
// it counts items, or else per iteration.
template <class Function>
benchmark::internal::Benchmark* enter(std::string const& work, std::string const& who,
                                      Function function) {
  return benchmark::RegisterBenchmark((work + "/" + who).c_str(), std::move(function));
}

// Compared in place of the time.
inline void measured(benchmark::State& state, double value) {
  state.counters["measured"] = value;
}

}  // namespace Contest
