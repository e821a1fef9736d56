// SPDX-License-Identifier: Apache-2.0
#pragma once

// The benchmarked object in RTTR, by kept properties and methods.

#include <cstdint>
#include <memory>

namespace Peers {

class RttrMeter {
 public:
  virtual ~RttrMeter() = default;
  virtual void writeKept(std::uint32_t value) = 0;                       // property::set_value
  virtual std::uint32_t readKept() = 0;                                  // property::get_value
  virtual std::uint32_t callKept(std::uint32_t a, std::uint32_t b) = 0;  // method::invoke
};

std::unique_ptr<RttrMeter> makeRttrMeter();

}  // namespace Peers
