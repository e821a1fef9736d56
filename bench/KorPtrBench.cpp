// SPDX-License-Identifier: Apache-2.0
//
// Copies and releases a counted pointer, and makes and ends an object. Compared with a raw pointer
// (the floor), and with other counted pointers.

#include "bench/Contest.h"

#include <Kor/PtrInterface.h>

#ifdef BENCH_WITH_BOOST
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>
#endif

#include <memory>

namespace {

class Thing : public Kor::PtrInterface {};

void copyAndRelease(benchmark::State& state) {
  auto const thing = Kor::make<Thing>();
  for (auto _ : state) {
    Kor::Ptr<Thing> copy = thing;
    benchmark::DoNotOptimize(copy);
  }
}

void copyRaw(benchmark::State& state) {
  auto const thing = std::make_unique<int>(7);
  for (auto _ : state) {
    int* copy = thing.get();
    benchmark::DoNotOptimize(copy);
    benchmark::ClobberMemory();
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

#ifdef BENCH_WITH_BOOST
class BoostThing : public boost::intrusive_ref_counter<BoostThing, boost::thread_unsafe_counter> {
 public:
  virtual ~BoostThing() = default;
};

void copyAndReleaseBoost(benchmark::State& state) {
  boost::intrusive_ptr<BoostThing> const thing(new BoostThing);
  for (auto _ : state) {
    boost::intrusive_ptr<BoostThing> copy = thing;
    benchmark::DoNotOptimize(copy);
  }
}

void makeAndEndBoost(benchmark::State& state) {
  for (auto _ : state) {
    boost::intrusive_ptr<BoostThing> thing(new BoostThing);
    benchmark::DoNotOptimize(thing);
  }
}
#endif

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

[[maybe_unused]] bool const entered = [] {
  using Contest::enter;
  char const* const copy = "Ptr, copy and release";
  char const* const make = "Ptr, make and end";
  enter(copy, "ours", &copyAndRelease);
  enter(copy, "floor", &copyRaw);
  enter(copy, "shared_ptr", &copyAndReleaseShared);
  enter(make, "ours", &makeAndEnd);
  enter(make, "shared_ptr", &makeAndEndShared);
#ifdef BENCH_WITH_BOOST
  enter(copy, "boost", &copyAndReleaseBoost);
  enter(make, "boost", &makeAndEndBoost);
#endif
  return true;
}();

}  // namespace

BENCHMARK_MAIN();
