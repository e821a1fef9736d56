// SPDX-License-Identifier: Apache-2.0
//
// Reads and writes one number and calls a function of two arguments by name. Compared with a
// virtual call by number with variants (the floor), and with the meta-object systems that are
// installed.

#include "bench/Contest.h"
#include "bench/peers/Floor.h"

#include <Kor/ByName.h>
#include <Kor/Registration.h>

#include <array>
#include <cstdint>
#include <span>
#include <variant>

#ifdef BENCH_WITH_QT
#include "bench/peers/QtMeter.h"
#endif
#ifdef BENCH_WITH_GOBJECT
#include "bench/peers/GObjectMeter.h"
#endif
#ifdef BENCH_WITH_RTTR
#include "bench/peers/RttrMeter.h"
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
constexpr Kor::AttributeId weighId = 131;

void readVirtual(benchmark::State& state) {
  auto const meter = Peers::makeNumberedMeter();
  for (auto _ : state) {
    benchmark::DoNotOptimize(std::get<std::int64_t>(meter->get(Peers::Numbered::reading)));
  }
}

void readByKeptName(benchmark::State& state) {
  Kor::GenericRef const meter = Kor::construct("Bench::Meter");
  Kor::AttributeName const reading("reading");
  for (auto _ : state) {
    benchmark::DoNotOptimize(meter.get(reading).integer());
  }
}

void readByIdentifier(benchmark::State& state) {
  Kor::GenericIf const meter = Kor::construct("Bench::Meter").adapter();
  Kor::AttributeId id = readingId;
  for (auto _ : state) {
    benchmark::DoNotOptimize(id);
    benchmark::DoNotOptimize(meter.attributeOp({id, 0, {}, {}}).integer());
  }
}

void readByFreshName(benchmark::State& state) {
  Kor::GenericRef const meter = Kor::construct("Bench::Meter");
  for (auto _ : state) {
    benchmark::DoNotOptimize(meter["reading"].as<std::uint32_t>());
  }
}

void writeVirtual(benchmark::State& state) {
  auto const meter = Peers::makeNumberedMeter();
  std::int64_t n = 0;
  for (auto _ : state) {
    meter->set(Peers::Numbered::reading, n = (n + 1) & 0xffff);
  }
}

void writeByKeptName(benchmark::State& state) {
  Kor::GenericRef const meter = Kor::construct("Bench::Meter");
  Kor::AttributeName const reading("reading");
  std::uint32_t n = 0;
  for (auto _ : state) {
    meter.set(reading, ++n);
  }
}

void writeByIdentifier(benchmark::State& state) {
  Kor::GenericIf const meter = Kor::construct("Bench::Meter").adapter();
  std::uint32_t n = 0;
  for (auto _ : state) {
    meter.attributeOp({readingId, 128, {}, ++n});
  }
}

void callByKeptName(benchmark::State& state) {
  Kor::GenericRef const meter = Kor::construct("Bench::Meter");
  Kor::AttributeName const weigh("weigh");
  std::uint32_t n = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(meter.call(weigh, ++n, 7U).value().integer());
  }
}

void callVirtual(benchmark::State& state) {
  auto const meter = Peers::makeNumberedMeter();
  std::int64_t n = 0;
  for (auto _ : state) {
    std::array<Peers::Variant, 2> const args{++n & 0xffff, std::int64_t{7}};
    benchmark::DoNotOptimize(std::get<std::int64_t>(meter->call(Peers::Numbered::weigh, args)));
  }
}

void callByIdentifier(benchmark::State& state) {
  Kor::GenericIf const meter = Kor::construct("Bench::Meter").adapter();
  std::uint32_t n = 0;
  for (auto _ : state) {
    std::array<Kor::GenericValue, 2> const values{++n, 7U};
    Kor::GenericList list{std::span<Kor::GenericValue const>(values)};
    benchmark::DoNotOptimize(
        meter.attributeOp({weighId, 0, {}, Kor::GenericValue(Kor::share(&list))}).integer());
  }
}

#ifdef BENCH_WITH_QT
void qtReadKept(benchmark::State& state) {
  auto const meter = Peers::makeQtMeter();
  for (auto _ : state) {
    benchmark::DoNotOptimize(meter->readKept());
  }
}
void qtWriteKept(benchmark::State& state) {
  auto const meter = Peers::makeQtMeter();
  std::uint32_t n = 0;
  for (auto _ : state) {
    meter->writeKept(++n);
  }
}
void qtCallKept(benchmark::State& state) {
  auto const meter = Peers::makeQtMeter();
  std::uint32_t n = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(meter->callKept(++n, 7));
  }
}
#endif

#ifdef BENCH_WITH_GOBJECT
void gobjectRead(benchmark::State& state) {
  auto const meter = Peers::makeGObjectMeter();
  for (auto _ : state) {
    benchmark::DoNotOptimize(meter->read());
  }
}
void gobjectWrite(benchmark::State& state) {
  auto const meter = Peers::makeGObjectMeter();
  std::uint32_t n = 0;
  for (auto _ : state) {
    meter->write(++n);
  }
}
void gobjectCall(benchmark::State& state) {
  auto const meter = Peers::makeGObjectMeter();
  std::uint32_t n = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(meter->call(++n, 7));
  }
}
#endif

#ifdef BENCH_WITH_RTTR
void rttrRead(benchmark::State& state) {
  auto const meter = Peers::makeRttrMeter();
  for (auto _ : state) {
    benchmark::DoNotOptimize(meter->readKept());
  }
}
void rttrWrite(benchmark::State& state) {
  auto const meter = Peers::makeRttrMeter();
  std::uint32_t n = 0;
  for (auto _ : state) {
    meter->writeKept(++n);
  }
}
void rttrCall(benchmark::State& state) {
  auto const meter = Peers::makeRttrMeter();
  std::uint32_t n = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(meter->callKept(++n, 7));
  }
}
#endif

[[maybe_unused]] bool const entered = [] {
  using Contest::enter;
  char const* const read = "read of a number, kept name";
  char const* const write = "write of a number, kept name";
  char const* const call = "call with two arguments, kept name";
  char const* const rawRead = "read of a number, identifier";
  char const* const rawWrite = "write of a number, identifier";
  char const* const rawCall = "call with two arguments, identifier";
  enter(read, "ours", &readByKeptName);
  enter(write, "ours", &writeByKeptName);
  enter(call, "ours", &callByKeptName);
  enter(rawRead, "ours", &readByIdentifier);
  enter(rawWrite, "ours", &writeByIdentifier);
  enter(rawCall, "ours", &callByIdentifier);
  enter("read of a number, fresh name", "ours", &readByFreshName);
  enter("read of a number, fresh name", "kept name", &readByKeptName);
  for (char const* const work : {read, rawRead}) {
    enter(work, "floor", &readVirtual);
  }
  for (char const* const work : {write, rawWrite}) {
    enter(work, "floor", &writeVirtual);
  }
  for (char const* const work : {call, rawCall}) {
    enter(work, "floor", &callVirtual);
  }
#ifdef BENCH_WITH_QT
  enter(read, "Qt", &qtReadKept);
  enter(write, "Qt", &qtWriteKept);
  enter(call, "Qt", &qtCallKept);
  enter(rawCall, "Qt", &qtCallKept);
#endif
#ifdef BENCH_WITH_GOBJECT
  enter(read, "GObject", &gobjectRead);
  enter(write, "GObject", &gobjectWrite);
  enter(call, "GObject", &gobjectCall);
#endif
#ifdef BENCH_WITH_RTTR
  enter(read, "RTTR", &rttrRead);
  enter(write, "RTTR", &rttrWrite);
  enter(call, "RTTR", &rttrCall);
#endif
  return true;
}();

}  // namespace

BENCHMARK_MAIN();
