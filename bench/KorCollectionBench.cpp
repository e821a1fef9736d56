// SPDX-License-Identifier: Apache-2.0

// A keyed collection, compared with std::unordered_map and, if it is installed, with the intrusive
// set of Boost. All have the same keys, values and hash. The peers' entries have no count and no
// virtual functions.
//
// One pass of a case handles at least `enough` members: several collections if they are small. The
// order of keys has no period that a branch predictor could learn. Memory is given back to the
// system after each pass, so no case depends on the one before it.

#include "bench/Contest.h"

#include <Kor/Collection.h>
#include <Kor/String.h>

#ifdef BENCH_WITH_BOOST
#include <boost/intrusive/unordered_set.hpp>
#endif
#if __has_include(<malloc.h>)
#include <malloc.h>
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace {

// A common interface to all, so that each case is written once.

class NumberShelf : public Kor::PtrInterface {
 public:
  using Key = std::uint32_t;
  KOR_VALUE_COLLECTION(NumberShelf, item, Item, std::uint32_t, std::uint64_t)
};
class TextShelf : public Kor::PtrInterface {
 public:
  using Key = Kor::String;  // stores its hash
  KOR_VALUE_COLLECTION(TextShelf, item, Item, Kor::String, std::uint64_t)
};

template <class Shelf>
class Ours {
 public:
  using Key = typename Shelf::Key;
  void insert(Key const& key, std::uint64_t value) { shelf_.newItem(key, value); }
  [[nodiscard]] std::uint64_t find(Key const& key) const { return shelf_.item(key); }
  void erase(Key const& key) { shelf_.itemDel(key); }
  [[nodiscard]] std::uint64_t sum() {
    std::uint64_t sum = 0;
    for (auto item = shelf_.itemIterator(); item; ++item) {
      sum += item.value();
    }
    return sum;
  }
  bool eraseFirst() {
    if (shelf_.items() == 0) {
      return false;
    }
    shelf_.itemIterator().del();
    return true;
  }

 private:
  Shelf shelf_;
};

template <class Key>
struct SameHash {
  std::size_t operator()(Key const& key) const noexcept { return Kor::hashOf(key); }
};

template <class K, class Hash>
class Standard {
 public:
  using Key = K;
  void insert(Key const& key, std::uint64_t value) { map_.emplace(key, value); }
  [[nodiscard]] std::uint64_t find(Key const& key) const { return map_.find(key)->second; }
  void erase(Key const& key) { map_.erase(key); }
  [[nodiscard]] std::uint64_t sum() const {
    std::uint64_t sum = 0;
    for (auto const& [key, value] : map_) {
      sum += value;
    }
    return sum;
  }
  bool eraseFirst() {
    if (map_.empty()) {
      return false;
    }
    map_.erase(map_.begin());
    return true;
  }

 private:
  std::unordered_map<Key, std::uint64_t, Hash> map_;
};

#ifdef BENCH_WITH_BOOST
namespace intrusive = boost::intrusive;

struct Node : intrusive::unordered_set_base_hook<intrusive::store_hash<true>> {
  Node(std::uint32_t itsKey, std::uint64_t itsValue) : key(itsKey), value(itsValue) {}
  std::uint32_t key;
  std::uint64_t value;
};
struct KeyOfNode {
  using type = std::uint32_t;
  type const& operator()(Node const& node) const { return node.key; }
};

// Doubles its buckets when it has as many members.
class Intrusive {
 public:
  using Key = std::uint32_t;
  ~Intrusive() { set_.clear_and_dispose(std::default_delete<Node>()); }
  void insert(Key key, std::uint64_t value) {
    if (set_.size() == buckets_.size()) {
      std::vector<Set::bucket_type> wider(2 * buckets_.size());
      set_.rehash({wider.data(), wider.size()});
      buckets_.swap(wider);
    }
    set_.insert(*new Node(key, value));
  }
  [[nodiscard]] std::uint64_t find(Key key) const { return set_.find(key)->value; }
  void erase(Key key) { set_.erase_and_dispose(key, std::default_delete<Node>()); }
  [[nodiscard]] std::uint64_t sum() const {
    std::uint64_t sum = 0;
    for (Node const& node : set_) {
      sum += node.value;
    }
    return sum;
  }

 private:
  using Set = intrusive::unordered_set<
      Node, intrusive::key_of_value<KeyOfNode>, intrusive::hash<SameHash<std::uint32_t>>,
      intrusive::power_2_buckets<true>, intrusive::constant_time_size<true>>;
  std::vector<Set::bucket_type> buckets_{16};
  Set set_{{buckets_.data(), buckets_.size()}};
};
#endif

constexpr std::size_t enough = 65536;

// Keys without a pattern. Keys free of collisions would favour one side.
template <class Key>
std::vector<Key> keys(std::int64_t count, std::uint32_t first = 0) {
  std::vector<Key> keys;
  keys.reserve(static_cast<std::size_t>(count));
  for (std::int64_t i = 0; i < count; ++i) {
    std::uint32_t const number = Kor::hashNumber(++first);
    if constexpr (std::is_same_v<Key, std::uint32_t>) {
      keys.push_back(number);
    } else {
      keys.emplace_back("a rule of the policy " + std::to_string(number));
    }
  }
  return keys;
}

template <class Key>
std::vector<Key> shuffled(std::vector<Key> keys, std::uint32_t seed) {
  std::shuffle(keys.begin(), keys.end(), std::mt19937(seed));
  return keys;
}

// All keys in a random order, as often as makes `enough`, each time in another one.
template <class Key>
std::vector<Key> probes(std::vector<Key> const& keys) {
  std::vector<Key> all;
  while (all.size() < enough) {
    all.insert(all.end(), keys.begin(), keys.end());
  }
  return shuffled(std::move(all), 2);
}

void trimHeap() {
#if __has_include(<malloc.h>) && defined(__GLIBC__)
  malloc_trim(0);
#endif
}

// Collections of the same size.
template <class Map>
class Maps {
 public:
  using Key = typename Map::Key;
  explicit Maps(std::int64_t size) : size_(static_cast<std::size_t>(size)) {
    all_.resize(std::max<std::size_t>(enough / size_, 1));
    for (auto& map : all_) {
      map = std::make_unique<Map>();
    }
  }
  ~Maps() {
    all_.clear();
    trimHeap();
  }
  [[nodiscard]] std::size_t members() const { return all_.size() * size_; }
  // act(map, key) for all keys of each map in turn
  template <class Do>
  void each(std::vector<Key> const& keys, Do const& act) {
    auto key = keys.begin();
    for (auto& map : all_) {
      for (auto const end = key + static_cast<std::ptrdiff_t>(size_); key != end; ++key) {
        act(*map, *key);
      }
    }
  }
  void fill(std::vector<Key> const& keys) {
    each(keys, [](Map& map, Key const& key) { map.insert(key, 7); });
  }
  // Keys for each(): for every map the same set, in another order.
  [[nodiscard]] std::vector<Key> orders(std::uint32_t seed) const {
    std::vector<Key> all;
    all.reserve(members());
    for (std::uint32_t i = 0; i < all_.size(); ++i) {
      auto const next = shuffled(keys<Key>(static_cast<std::int64_t>(size_)), seed * 7919U + i);
      all.insert(all.end(), next.begin(), next.end());
    }
    return all;
  }
  [[nodiscard]] std::vector<std::unique_ptr<Map>> const& all() const { return all_; }

 private:
  std::size_t size_;
  std::vector<std::unique_ptr<Map>> all_;
};

// By processor time: others may use the core, too.
template <class Do>
void timePass(benchmark::State& state, Do const& pass) {
  std::clock_t const start = std::clock();
  pass();
  std::clock_t const taken = std::clock() - start;
  state.SetIterationTime(static_cast<double>(std::max<std::clock_t>(taken, 1)) / CLOCKS_PER_SEC);
}

void countItems(benchmark::State& state, std::size_t each) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(each));
  state.counters["each"] =
      benchmark::Counter(static_cast<double>(each), benchmark::Counter::kIsIterationInvariantRate |
                                                        benchmark::Counter::kInvert);
}

template <class Map>
void find(benchmark::State& state) {
  auto const all = keys<typename Map::Key>(state.range(0));
  auto const wanted = probes(all);
  {
    Map map;
    for (auto const& key : shuffled(all, 1)) {
      map.insert(key, 7);
    }
    for (auto _ : state) {
      timePass(state, [&] {
        std::uint64_t sum = 0;
        for (auto const& key : wanted) {
          sum += map.find(key);
        }
        benchmark::DoNotOptimize(sum);
      });
    }
  }
  trimHeap();
  countItems(state, wanted.size());
}

template <class Map>
void insert(benchmark::State& state) {
  auto const order = Maps<Map>(state.range(0)).orders(1);
  for (auto _ : state) {
    Maps<Map> maps(state.range(0));
    timePass(state, [&] { maps.fill(order); });
  }
  countItems(state, order.size());
}

template <class Map>
void erase(benchmark::State& state) {
  auto const order = Maps<Map>(state.range(0)).orders(1);
  auto const wanted = Maps<Map>(state.range(0)).orders(2);
  for (auto _ : state) {
    Maps<Map> maps(state.range(0));
    maps.fill(order);
    timePass(state, [&] {
      maps.each(wanted, [](Map& map, typename Map::Key const& key) { map.erase(key); });
    });
  }
  countItems(state, order.size());
}

template <class Map>
void walk(benchmark::State& state) {
  Maps<Map> maps(state.range(0));
  maps.fill(maps.orders(1));
  for (auto _ : state) {
    timePass(state, [&] {
      for (auto const& map : maps.all()) {
        benchmark::DoNotOptimize(map->sum());
      }
    });
  }
  countItems(state, maps.members());
}

// Removes the first member until there is none.
template <class Map>
void drain(benchmark::State& state) {
  auto const order = Maps<Map>(state.range(0)).orders(1);
  for (auto _ : state) {
    Maps<Map> maps(state.range(0));
    maps.fill(order);
    timePass(state, [&] {
      for (auto const& map : maps.all()) {
        while (map->eraseFirst()) {
        }
      }
    });
  }
  countItems(state, order.size());
}

// Walks a collection of 16 members that has had so many.
template <class Map>
void walkOnceLarge(benchmark::State& state) {
  Map map;
  auto const order = shuffled(keys<typename Map::Key>(state.range(0)), 1);
  for (auto const& key : order) {
    map.insert(key, 7);
  }
  for (std::size_t i = 16; i < order.size(); ++i) {
    map.erase(order[i]);
  }
  for (auto _ : state) {
    timePass(state, [&] { benchmark::DoNotOptimize(map.sum()); });
  }
  countItems(state, 16);
}

// Replaces one among 10,000 members, picked at random, after so many have come and gone.
template <class Map>
void replaceAfter(benchmark::State& state) {
  using Key = typename Map::Key;
  constexpr std::int64_t few = 10000;
  if (state.range(0) != 0) {
    Map gone;
    for (auto const& key : shuffled(keys<Key>(state.range(0)), 1)) {
      gone.insert(key, 7);
    }
    for (auto const& key : shuffled(keys<Key>(state.range(0)), 2)) {
      gone.erase(key);
    }
  }
  auto const order = shuffled(keys<Key>(few, 5000000), 1);
  auto const wanted = probes(order);
  Map map;
  for (auto const& key : order) {
    map.insert(key, 7);
  }
  for (auto _ : state) {
    timePass(state, [&] {
      for (auto const& key : wanted) {
        map.erase(key);
        map.insert(key, 7);
      }
    });
  }
  countItems(state, wanted.size());
}

using Numbers = Ours<NumberShelf>;
using StandardNumbers = Standard<std::uint32_t, SameHash<std::uint32_t>>;
using Texts = Ours<TextShelf>;
using StandardTexts = Standard<std::string, std::hash<std::string>>;

void enter(std::string const& work, char const* who, void (*function)(benchmark::State&),
           std::int64_t size) {
  Contest::enter(work, who, function)->Arg(size)->UseManualTime();
}

std::string sized(char const* what, std::int64_t size) {
  return std::string(what) + " of " + std::to_string(size) + " members";
}

[[maybe_unused]] bool const entered = [] {
  for (std::int64_t const size : {16, 1000, 100000, 1000000}) {
    enter(sized("find in a collection", size), "ours", &find<Numbers>, size);
    enter(sized("find in a collection", size), "unordered_map", &find<StandardNumbers>, size);
    enter(sized("insert into a collection", size), "ours", &insert<Numbers>, size);
    enter(sized("insert into a collection", size), "unordered_map", &insert<StandardNumbers>, size);
    enter(sized("erase by key from a collection", size), "ours", &erase<Numbers>, size);
    enter(sized("erase by key from a collection", size), "unordered_map", &erase<StandardNumbers>,
          size);
    enter(sized("walk over a collection", size), "ours", &walk<Numbers>, size);
    enter(sized("walk over a collection", size), "unordered_map", &walk<StandardNumbers>, size);
#ifdef BENCH_WITH_BOOST
    enter(sized("find in a collection", size), "boost", &find<Intrusive>, size);
    enter(sized("insert into a collection", size), "boost", &insert<Intrusive>, size);
    enter(sized("erase by key from a collection", size), "boost", &erase<Intrusive>, size);
    enter(sized("walk over a collection", size), "boost", &walk<Intrusive>, size);
#endif
  }
  enter("find by text in a collection of 1000 members", "ours", &find<Texts>, 1000);
  enter("find by text in a collection of 1000 members", "unordered_map", &find<StandardTexts>,
        1000);
  enter("draining a collection of 200000 members", "ours", &drain<Numbers>, 200000);
  enter("draining a collection of 200000 members", "of 1000", &drain<Numbers>, 1000);
  enter("walk over 16 members after 1000000", "ours", &walkOnceLarge<Numbers>, 1000000);
  enter("walk over 16 members after 1000000", "after 16", &walkOnceLarge<Numbers>, 16);
  enter("one of 10000 members after 1000000 have gone", "ours", &replaceAfter<Numbers>, 1000000);
  enter("one of 10000 members after 1000000 have gone", "fresh", &replaceAfter<Numbers>, 0);
  return true;
}();

}  // namespace

BENCHMARK_MAIN();
