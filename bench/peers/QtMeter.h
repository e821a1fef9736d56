// SPDX-License-Identifier: Apache-2.0
#pragma once

// The benchmarked object in Qt's meta-object system. The benchmark sees only this interface, so
// that Qt's compiler flags apply to this file alone.

#include <cstdint>
#include <memory>

namespace Peers {

class QtMeter {
 public:
  virtual ~QtMeter() = default;
  virtual void writeKept(std::uint32_t value) = 0;                         // QMetaProperty::write
  virtual std::uint32_t readKept() = 0;                                    // QMetaProperty::read
  virtual std::uint32_t readByName() = 0;                                  // QObject::property
  virtual std::uint32_t callKept(std::uint32_t a, std::uint32_t b) = 0;    // QMetaMethod::invoke
  virtual std::uint32_t callByName(std::uint32_t a, std::uint32_t b) = 0;  // invokeMethod
};

std::unique_ptr<QtMeter> makeQtMeter();

}  // namespace Peers
