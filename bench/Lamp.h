// SPDX-License-Identifier: Apache-2.0
//
// A registered object with one attribute that notifies.

#pragma once

#include <Kor/Entity.h>

namespace Bench {

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

inline void Lamp::brightnessIs(int brightness) {
  if (brightness_ != brightness) {
    brightness_ = brightness;
    attributeChanged<Lamp>(brightnessId, &Lamp::NotifieeConst::onBrightness);
  }
}

class CountingNotifiee : public Lamp::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  void onBrightness() override { ++calls; }
  int calls = 0;
};

inline Kor::Ptr<Lamp> lampWith(int observers) {
  auto lamp = Kor::make<Lamp>();
  for (int number = 0; number < observers; ++number) {
    static_cast<void>(Kor::make<CountingNotifiee>(lamp.get()));
  }
  return lamp;
}

}  // namespace Bench
