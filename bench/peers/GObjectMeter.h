// SPDX-License-Identifier: Apache-2.0
#pragma once

// The benchmarked object in GObject: a property, and an action signal with two arguments.

#include <cstdint>
#include <memory>

namespace Peers {

class GObjectMeter {
 public:
  virtual ~GObjectMeter() = default;
  virtual void write(std::uint32_t value) = 0;  // g_object_set_property
  virtual std::uint32_t read() = 0;             // g_object_get_property
  virtual std::uint32_t readKept() = 0;  // bypasses the property system: the class's own hook
  virtual std::uint32_t call(std::uint32_t a, std::uint32_t b) = 0;  // g_signal_emitv, kept number
};

std::unique_ptr<GObjectMeter> makeGObjectMeter();

}  // namespace Peers
