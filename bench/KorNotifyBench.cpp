// SPDX-License-Identifier: Apache-2.0

// An attribute write with 0, 1, 4 and 64 observers, compared with hand-written callbacks that give
// the same guarantees: they iterate over a snapshot of the list, skip removed entries, and keep
// exceptions from the writer.

#include <Kor/Entity.h>

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace {

class Lamp : public Kor::Entity {
 public:
  class NotifieeConst;
  static constexpr Kor::AttributeId brightnessId = 258;

  Lamp() : Entity("lamp") {}
  [[nodiscard]] Kor::KorType const* fwkType() const override { return _fwkType(); }
  [[nodiscard]] static Kor::KorType* _fwkType() {
    static Kor::KorType type("Bench::Lamp", Entity::_fwkType());
    return &type;
  }
  void brightnessIs(int brightness);

 private:
  int brightness_ = 0;
};

class Lamp::NotifieeConst : public Kor::NotifieeOf<Lamp, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  virtual void onBrightness() {}
};

void Lamp::brightnessIs(int brightness) {
  if (brightness_ != brightness) {
    brightness_ = brightness;
    attributeChanged<Lamp>(brightnessId, [](auto& notifiee) { notifiee.onBrightness(); });
  }
}

class CountingNotifiee : public Lamp::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  void onBrightness() override { ++calls; }
  int calls = 0;
};

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

// The minimum without guarantees: the list must not change during an iteration.
class BareLamp {
 public:
  class Observer {
   public:
    virtual ~Observer() = default;
    virtual void onBrightness() = 0;
  };
  void observerIs(Observer* observer) { observers_.push_back(observer); }
  void brightnessIs(int brightness) {
    if (brightness_ != brightness) {
      brightness_ = brightness;
      for (Observer* const observer : observers_) {
        observer->onBrightness();
      }
    }
  }

 private:
  int brightness_ = 0;
  std::vector<Observer*> observers_;
};

class CountingObserver : public BareLamp::Observer {
 public:
  void onBrightness() override { ++calls; }
  int calls = 0;
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
  auto const lamp = Kor::make<Lamp>();
  for (int i = 0; i < state.range(0); ++i) {
    static_cast<void>(Kor::make<CountingNotifiee>(lamp.get()));
  }
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
  BareLamp lamp;
  std::vector<CountingObserver> observers(static_cast<std::size_t>(state.range(0)));
  for (auto& observer : observers) {
    lamp.observerIs(&observer);
  }
  writeRepeatedly(state, lamp);
}

BENCHMARK(ours)->Arg(0)->Arg(1)->Arg(4)->Arg(64);
BENCHMARK(byHandWithGuarantees)->Arg(0)->Arg(1)->Arg(4)->Arg(64);
BENCHMARK(byHandBare)->Arg(0)->Arg(1)->Arg(4)->Arg(64);

}  // namespace

BENCHMARK_MAIN();
