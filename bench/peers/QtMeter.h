// SPDX-License-Identifier: Apache-2.0
#pragma once

// The benchmarked objects in Qt's meta-object system. The benchmarks see only these interfaces, so
// that Qt's compiler flags apply to this file alone.

#include <cstdint>
#include <memory>

namespace Peers {

class QtMeter {
 public:
  virtual ~QtMeter() = default;
  virtual void writeKept(std::uint32_t value) = 0;                       // QMetaProperty::write
  virtual std::uint32_t readKept() = 0;                                  // QMetaProperty::read
  virtual std::uint32_t callKept(std::uint32_t a, std::uint32_t b) = 0;  // QMetaMethod::invoke
};

std::unique_ptr<QtMeter> makeQtMeter();

// A property with a signal.
class QtLamp {
 public:
  virtual ~QtLamp() = default;
  virtual void brightnessIs(int brightness) = 0;
};

// With so many slots connected, each in an object of its own.
std::unique_ptr<QtLamp> makeQtLamp(int observers);

}  // namespace Peers
