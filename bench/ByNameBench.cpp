// SPDX-License-Identifier: Apache-2.0

// Reads and writes one number and calls a function of two arguments by name. Compared with a direct
// virtual call with a variant, and with the meta-object systems that are installed.

#include <Kor/ByName.h>
#include <Kor/Registration.h>

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <string>
#include <variant>

#ifdef BENCH_WITH_QT
#include "bench/peers/QtMeter.h"
#endif
#ifdef BENCH_WITH_GOBJECT
#include "bench/peers/GObjectMeter.h"
#endif

namespace {

class Meter : public Kor::PtrInterface {
 public:
  [[nodiscard]] Kor::KorType const* fwkType() const override { return _fwkType(); }
  [[nodiscard]] static Kor::KorType* _fwkType() {
    static Kor::KorType type("Bench::Meter", PtrInterface::_fwkType());
    return &type;
  }

  [[nodiscard]] std::uint32_t reading() const { return reading_; }
  void readingIs(std::uint32_t reading) { reading_ = reading; }
  std::uint32_t weigh(std::uint32_t a, std::uint32_t b) {
    reading_ += a;
    return reading_ ^ b;
  }

 private:
  std::uint32_t reading_ = 0;
};

using M = Kor::Model<Meter>;
constexpr std::array attrs{
    M::data<&Meter::reading, &Meter::readingIs>("reading"),
    M::function<&Meter::weigh>("weigh", "a", "b"),
};
Kor::Ptr<Meter> make() {
  return Kor::make<Meter>();
}
constexpr Kor::TypeModel model = M::object(attrs, M::constructor<&make>());
[[maybe_unused]] bool const registered = [] {
  std::array<Kor::TypeModel const*, 1> const models{&model};
  Kor::registerTypes("Bench", models);
  Kor::enterTypes(models);
  return true;
}();

constexpr Kor::AttributeId readingId = 130;

// The usual hand-written equivalent, with numbered attributes.
using Variant = std::variant<std::monostate, bool, std::int64_t, double, std::string>;
class Numbered {
 public:
  virtual ~Numbered() = default;
  [[nodiscard]] virtual Variant get(unsigned id) const = 0;
  virtual void set(unsigned id, Variant const& value) = 0;
};
class NumberedMeter final : public Numbered {
 public:
  [[nodiscard]] Variant get(unsigned id) const override {
    switch (id) {
    case readingId: return std::int64_t{reading_};
    case readingId + 1: return on_;
    case readingId + 2: return unit_;
    default: return {};
    }
  }
  void set(unsigned id, Variant const& value) override {
    switch (id) {
    case readingId: reading_ = static_cast<std::uint32_t>(std::get<std::int64_t>(value)); break;
    case readingId + 1: on_ = std::get<bool>(value); break;
    case readingId + 2: unit_ = std::get<std::string>(value); break;
    default: break;
    }
  }

 private:
  std::uint32_t reading_ = 0;
  bool on_ = false;
  std::string unit_;
};

// Hides the object from the optimiser.
template <class T>
T* hidden(T* object) {
  benchmark::DoNotOptimize(object);
  return object;
}

void readVirtual(benchmark::State& state) {
  NumberedMeter meter;
  Numbered* const object = hidden<Numbered>(&meter);
  unsigned id = readingId;
  for (auto _ : state) {
    benchmark::DoNotOptimize(id);
    benchmark::DoNotOptimize(std::get<std::int64_t>(object->get(id)));
  }
}
BENCHMARK(readVirtual);

void readByKeptName(benchmark::State& state) {
  Kor::GenericRef const meter = Kor::construct("Bench::Meter");
  Kor::AttributeName const reading("reading");
  for (auto _ : state) {
    benchmark::DoNotOptimize(meter.get(reading).integer());
  }
}
BENCHMARK(readByKeptName);

void readByIdentifier(benchmark::State& state) {
  Kor::GenericIf const meter = Kor::construct("Bench::Meter").adapter();
  Kor::AttributeId id = readingId;
  for (auto _ : state) {
    benchmark::DoNotOptimize(id);
    benchmark::DoNotOptimize(meter.attributeOp({id, 0, {}, {}}).integer());
  }
}
BENCHMARK(readByIdentifier);

void readByFreshName(benchmark::State& state) {
  Kor::GenericRef const meter = Kor::construct("Bench::Meter");
  for (auto _ : state) {
    benchmark::DoNotOptimize(meter["reading"].as<std::uint32_t>());
  }
}
BENCHMARK(readByFreshName);

void writeVirtual(benchmark::State& state) {
  NumberedMeter meter;
  Numbered* const object = hidden<Numbered>(&meter);
  std::int64_t n = 0;
  for (auto _ : state) {
    object->set(readingId, n = (n + 1) & 0xffff);
  }
}
BENCHMARK(writeVirtual);

void writeByKeptName(benchmark::State& state) {
  Kor::GenericRef const meter = Kor::construct("Bench::Meter");
  Kor::AttributeName const reading("reading");
  std::uint32_t n = 0;
  for (auto _ : state) {
    meter.set(reading, ++n);
  }
}
BENCHMARK(writeByKeptName);

void writeByIdentifier(benchmark::State& state) {
  Kor::GenericIf const meter = Kor::construct("Bench::Meter").adapter();
  std::uint32_t n = 0;
  for (auto _ : state) {
    meter.attributeOp({readingId, 128, {}, ++n});
  }
}
BENCHMARK(writeByIdentifier);

void callByKeptName(benchmark::State& state) {
  Kor::GenericRef const meter = Kor::construct("Bench::Meter");
  Kor::AttributeName const weigh("weigh");
  std::uint32_t n = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(meter.call(weigh, ++n, 7U).value().integer());
  }
}
BENCHMARK(callByKeptName);

#ifdef BENCH_WITH_QT
void qtReadKept(benchmark::State& state) {
  auto const meter = Peers::makeQtMeter();
  for (auto _ : state) {
    benchmark::DoNotOptimize(meter->readKept());
  }
}
BENCHMARK(qtReadKept);
void qtReadByName(benchmark::State& state) {
  auto const meter = Peers::makeQtMeter();
  for (auto _ : state) {
    benchmark::DoNotOptimize(meter->readByName());
  }
}
BENCHMARK(qtReadByName);
void qtWriteKept(benchmark::State& state) {
  auto const meter = Peers::makeQtMeter();
  std::uint32_t n = 0;
  for (auto _ : state) {
    meter->writeKept(++n);
  }
}
BENCHMARK(qtWriteKept);
void qtCallKept(benchmark::State& state) {
  auto const meter = Peers::makeQtMeter();
  std::uint32_t n = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(meter->callKept(++n, 7));
  }
}
BENCHMARK(qtCallKept);
void qtCallByName(benchmark::State& state) {
  auto const meter = Peers::makeQtMeter();
  std::uint32_t n = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(meter->callByName(++n, 7));
  }
}
BENCHMARK(qtCallByName);
#endif

#ifdef BENCH_WITH_GOBJECT
void gobjectRead(benchmark::State& state) {
  auto const meter = Peers::makeGObjectMeter();
  for (auto _ : state) {
    benchmark::DoNotOptimize(meter->read());
  }
}
BENCHMARK(gobjectRead);
void gobjectReadByClassHook(benchmark::State& state) {
  auto const meter = Peers::makeGObjectMeter();
  for (auto _ : state) {
    benchmark::DoNotOptimize(meter->readKept());
  }
}
BENCHMARK(gobjectReadByClassHook);
void gobjectWrite(benchmark::State& state) {
  auto const meter = Peers::makeGObjectMeter();
  std::uint32_t n = 0;
  for (auto _ : state) {
    meter->write(++n);
  }
}
BENCHMARK(gobjectWrite);
void gobjectCall(benchmark::State& state) {
  auto const meter = Peers::makeGObjectMeter();
  std::uint32_t n = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(meter->call(++n, 7));
  }
}
BENCHMARK(gobjectCall);
#endif

}  // namespace

BENCHMARK_MAIN();
