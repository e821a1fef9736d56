// SPDX-License-Identifier: Apache-2.0
//
// Proofs about all packets of generated filter sets in 16 classes, beside binary decision diagrams;
// rules without use; and packets that are simulated. Loading is not measured.

#include "bench/Contest.h"
#include "packets/PacketGenerator.h"
#include "packets/Proof.h"
#include "packets/Simulation.h"
#include "packets/Unused.h"
#include "testkit/text/FilterSetGenerator.h"
#ifdef BENCH_WITH_BUDDY
#include "tests/oracle/BddSides.h"
#endif

#include <cstdlib>
#include <iostream>
#include <map>
#include <memory>

namespace {

using PolicyMapPackets::Packet;
using PolicyMapPackets::Simulator;
using PolicyMapPackets::Subject;
using PolicyMapTestKit::Lab;
using namespace PolicyMapTestKit::Text;

constexpr std::size_t classes = 16;

// One policy of so many rules.
Subject const& subjectOf(std::size_t rules) {
  static std::map<std::size_t, Subject> known;
  auto const found = known.find(rules);
  if (found != known.end()) {
    return found->second;
  }
  Lab lab;
  lab.load(readFilterSet(SourceText("generated", generateFilterSet(rules))), {.classes = classes});
  Subject subject = std::move(PolicyMapPackets::subjectsOf(lab).front());
  return known.emplace(rules, std::move(subject)).first->second;
}

void mustBeSame(bool isSame) {
  if (!isSame) {
    std::cerr << "the records are not as configured\n";
    std::abort();
  }
}

void prove(benchmark::State& state, std::size_t rules) {
  Subject const& subject = subjectOf(rules);
  for (auto _ : state) {
    mustBeSame(PolicyMapPackets::prove(subject).verdict == PolicyMapPackets::Verdict::same);
  }
}

#ifdef BENCH_WITH_BUDDY
void proveByDiagrams(benchmark::State& state, std::size_t rules) {
  using namespace PolicyMapPackets;
  Subject const& subject = subjectOf(rules);
  for (auto _ : state) {
    for (Slice const& slice : Slice::ofOption(subject.option)) {
      test::BddSpace const space(slice, 1000000);
      mustBeSame(test::BddSpace::difference(space.recorded(subject, DenyReading::nextClass),
                                            space.configured(subject)) == bddfalse);
    }
  }
}
#endif

void unused(benchmark::State& state, std::size_t rules) {
  Subject const& subject = subjectOf(rules);
  for (auto _ : state) {
    benchmark::DoNotOptimize(PolicyMapPackets::unusedRules(subject));
  }
}

// Different packets at the corners of rules, one after the other.
void simulate(benchmark::State& state, std::size_t rules) {
  constexpr std::size_t count = 100000;
  std::vector<Subject> const subjects{subjectOf(rules)};
  PolicyMapPackets::PacketGenerator generator(subjects);
  std::vector<Packet> packets;
  packets.reserve(count);
  while (packets.size() != count) {
    packets.push_back(generator.next().packet);
  }
  Simulator simulator(subjects);
  for (auto _ : state) {
    for (Packet const& packet : packets) {
      simulator.take(packet);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}

[[maybe_unused]] bool const entered = [] {
  using Contest::enter;
  using benchmark::State;
  auto const work = [](char const* what, char const* rules, char const* rest) {
    return std::string(what) + rules + rest;
  };
  for (auto const& [rules, name] :
       {std::pair(1000, "1000"), std::pair(10000, "10000"), std::pair(100000, "100000")}) {
    auto const count = static_cast<std::size_t>(rules);
    enter(work("proof of ", name, " rules"), "ours", [count](State& state) {
      prove(state, count);
    })->Unit(benchmark::kMillisecond);
  }
#ifdef BENCH_WITH_BUDDY
  enter("proof of 1000 rules", "BuDDy", [](State& state) {
    proveByDiagrams(state, 1000);
  })->Unit(benchmark::kMillisecond);
#endif
  enter("unused rules of 10000", "ours", [](State& state) {
    unused(state, 10000);
  })->Unit(benchmark::kMillisecond);
  enter("packet through 10000 rules", "ours", [](State& state) { simulate(state, 10000); });
  return true;
}();

}  // namespace

BENCHMARK_MAIN();
