// SPDX-License-Identifier: Apache-2.0
#pragma once

// The least code that reads, writes, calls and notifies. It is compiled in a source of its own, so
// that the compiler that sees a benchmark cannot see through the calls.

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace Peers {

// Attributes by number, with variants as values.
using Variant = std::variant<std::monostate, bool, std::int64_t, double, std::string>;
class Numbered {
 public:
  static constexpr unsigned reading = 130;
  static constexpr unsigned weigh = 131;

  virtual ~Numbered() = default;
  [[nodiscard]] virtual Variant get(unsigned id) const = 0;
  virtual void set(unsigned id, Variant const& value) = 0;
  virtual Variant call(unsigned id, std::span<Variant const> args) = 0;
};
std::unique_ptr<Numbered> makeNumberedMeter();

// A list of observers, which must not change while they are called.
class BareLamp {
 public:
  class Observer {
   public:
    virtual ~Observer() = default;
    virtual void onBrightness() = 0;
  };
  void observerIs(Observer* observer) { observers_.push_back(observer); }
  void brightnessIs(int brightness);

 private:
  int brightness_ = 0;
  std::vector<Observer*> observers_;
};
std::unique_ptr<BareLamp::Observer> makeCountingObserver();

}  // namespace Peers
