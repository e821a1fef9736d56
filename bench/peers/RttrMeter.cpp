// SPDX-License-Identifier: Apache-2.0
#include "bench/peers/RttrMeter.h"

#include <rttr/registration>

namespace {

class Meter {
 public:
  [[nodiscard]] std::uint32_t reading() const { return reading_; }
  void readingIs(std::uint32_t reading) { reading_ = reading; }
  std::uint32_t weigh(std::uint32_t a, std::uint32_t b) {
    reading_ += a;
    return reading_ ^ b;
  }

 private:
  std::uint32_t reading_ = 0;
};

class RttrMeterOf final : public Peers::RttrMeter {
 public:
  void writeKept(std::uint32_t value) override { property_.set_value(meter_, value); }
  std::uint32_t readKept() override {
    return property_.get_value(meter_).get_value<std::uint32_t>();
  }
  std::uint32_t callKept(std::uint32_t a, std::uint32_t b) override {
    return method_.invoke(meter_, a, b).get_value<std::uint32_t>();
  }

 private:
  Meter meter_;
  rttr::property property_ = rttr::type::get<Meter>().get_property("reading");
  rttr::method method_ = rttr::type::get<Meter>().get_method("weigh");
};

}  // namespace

RTTR_REGISTRATION {
  rttr::registration::class_<Meter>("Bench::Meter")
      .property("reading", &Meter::reading, &Meter::readingIs)
      .method("weigh", &Meter::weigh);
}

std::unique_ptr<Peers::RttrMeter> Peers::makeRttrMeter() {
  return std::make_unique<RttrMeterOf>();
}
