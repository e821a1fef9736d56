// SPDX-License-Identifier: Apache-2.0
#include "bench/peers/Floor.h"

namespace Peers {
namespace {

class Meter final : public Numbered {
 public:
  [[nodiscard]] Variant get(unsigned id) const override {
    switch (id) {
    case reading: return std::int64_t{reading_};
    case weigh + 1: return on_;
    case weigh + 2: return unit_;
    default: return {};
    }
  }
  void set(unsigned id, Variant const& value) override {
    switch (id) {
    case reading: reading_ = static_cast<std::uint32_t>(std::get<std::int64_t>(value)); break;
    case weigh + 1: on_ = std::get<bool>(value); break;
    case weigh + 2: unit_ = std::get<std::string>(value); break;
    default: break;
    }
  }
  Variant call(unsigned id, std::span<Variant const> args) override {
    if (id != weigh || args.size() != 2) {
      return {};
    }
    reading_ += static_cast<std::uint32_t>(std::get<std::int64_t>(args[0]));
    return std::int64_t{reading_ ^ static_cast<std::uint32_t>(std::get<std::int64_t>(args[1]))};
  }

 private:
  std::uint32_t reading_ = 0;
  bool on_ = false;
  std::string unit_;
};

class CountingObserver final : public BareLamp::Observer {
 public:
  void onBrightness() override { ++calls_; }

 private:
  int calls_ = 0;
};

}  // namespace

std::unique_ptr<Numbered> makeNumberedMeter() {
  return std::make_unique<Meter>();
}

void BareLamp::brightnessIs(int brightness) {
  if (brightness_ != brightness) {
    brightness_ = brightness;
    for (Observer* const observer : observers_) {
      observer->onBrightness();
    }
  }
}

std::unique_ptr<BareLamp::Observer> makeCountingObserver() {
  return std::make_unique<CountingObserver>();
}

}  // namespace Peers
