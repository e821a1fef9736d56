// SPDX-License-Identifier: Apache-2.0

// A keyed collection of counted members, compared with std::unordered_map: find, insert, iterate.

#include <Kor/HashMap.h>
#include <Kor/PtrInterface.h>
#include <Kor/String.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

template <class Key>
class Entry : public Kor::PtrInterface, public Kor::HashMapLink<Entry<Key>> {
 public:
  Entry(Key key, std::uint64_t value) : key_(std::move(key)), value_(value) {}
  [[nodiscard]] Key const& fwkKey() const { return key_; }
  [[nodiscard]] std::uint64_t value() const { return value_; }

 private:
  Key key_;
  std::uint64_t value_;
};

// A common interface to both, so that each benchmark is written once.
template <class K>
class Ours {
 public:
  using Key = K;
  void insert(Key const& key, std::uint64_t value) {
    map_.insert(Kor::make<Entry<Key>>(key, value));
  }
  [[nodiscard]] std::uint64_t find(Key const& key) const { return map_.find(key)->value(); }
  [[nodiscard]] std::uint64_t sum() const {
    std::uint64_t sum = 0;
    for (Entry<Key> const* entry = map_.first(); entry != nullptr; entry = map_.next(entry)) {
      sum += entry->value();
    }
    return sum;
  }

 protected:
  Kor::HashMap<Entry<Key>> map_;
};

// Iterates with the public iterator, which counts the current member.
template <class K>
class OursByCursor : public Ours<K> {
 public:
  [[nodiscard]] std::uint64_t sum() {
    std::uint64_t sum = 0;
    for (typename Kor::HashMap<Entry<K>>::Cursor cursor(this->map_); cursor.member();
         cursor.advance()) {
      sum += cursor.member()->value();
    }
    return sum;
  }
};

template <class K>
class Standard {
 public:
  using Key = K;
  void insert(Key const& key, std::uint64_t value) { map_.emplace(key, value); }
  [[nodiscard]] std::uint64_t find(Key const& key) const { return map_.find(key)->second; }
  [[nodiscard]] std::uint64_t sum() const {
    std::uint64_t sum = 0;
    for (auto const& [key, value] : map_) {
      sum += value;
    }
    return sum;
  }

 private:
  std::unordered_map<Key, std::uint64_t> map_;
};

// A fixed shuffle of keys without a pattern. Keys free of collisions would favour one side.
template <class Key>
std::vector<Key> keys(std::int64_t count, std::uint32_t seed) {
  std::vector<std::uint32_t> numbers(static_cast<std::size_t>(count));
  std::uint32_t next = 0;
  std::generate(numbers.begin(), numbers.end(), [&] { return Kor::hashNumber(++next); });
  std::shuffle(numbers.begin(), numbers.end(), std::mt19937(seed));
  if constexpr (std::is_same_v<Key, std::uint32_t>) {
    return numbers;
  } else {
    std::vector<Key> texts;
    texts.reserve(numbers.size());
    for (std::uint32_t const number : numbers) {
      texts.emplace_back("a rule of the policy " + std::to_string(number));
    }
    return texts;
  }
}

template <class Map>
void fill(Map& map, std::vector<typename Map::Key> const& keys) {
  for (auto const& key : keys) {
    map.insert(key, 7);
  }
}

void countItems(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class Map>
void find(benchmark::State& state) {
  Map map;
  fill(map, keys<typename Map::Key>(state.range(0), 1));
  auto const wanted = keys<typename Map::Key>(state.range(0), 2);
  for (auto _ : state) {
    std::uint64_t sum = 0;
    for (auto const& key : wanted) {
      sum += map.find(key);
    }
    benchmark::DoNotOptimize(sum);
  }
  countItems(state);
}

template <class Map>
void insert(benchmark::State& state) {
  auto const wanted = keys<typename Map::Key>(state.range(0), 1);
  for (auto _ : state) {
    auto map = std::make_unique<Map>();
    fill(*map, wanted);
    state.PauseTiming();
    map.reset();
    state.ResumeTiming();
  }
  countItems(state);
}

template <class Map>
void iterate(benchmark::State& state) {
  Map map;
  fill(map, keys<typename Map::Key>(state.range(0), 1));
  for (auto _ : state) {
    benchmark::DoNotOptimize(map.sum());
  }
  countItems(state);
}

using Number = std::uint32_t;
using SharedText = Kor::String;  // stores its hash
using StandardText = std::string;

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(find<Ours<Number>>)->Apply(sizes);
BENCHMARK(find<Standard<Number>>)->Apply(sizes);
BENCHMARK(find<Ours<SharedText>>)->Apply(sizes);
BENCHMARK(find<Standard<StandardText>>)->Apply(sizes);
BENCHMARK(insert<Ours<Number>>)->Apply(sizes);
BENCHMARK(insert<Standard<Number>>)->Apply(sizes);
BENCHMARK(insert<Ours<SharedText>>)->Apply(sizes);
BENCHMARK(insert<Standard<StandardText>>)->Apply(sizes);
BENCHMARK(iterate<Ours<Number>>)->Apply(sizes);
BENCHMARK(iterate<OursByCursor<Number>>)->Apply(sizes);
BENCHMARK(iterate<Standard<Number>>)->Apply(sizes);
BENCHMARK(iterate<Ours<SharedText>>)->Apply(sizes);
BENCHMARK(iterate<Standard<StandardText>>)->Apply(sizes);

}  // namespace

BENCHMARK_MAIN();
