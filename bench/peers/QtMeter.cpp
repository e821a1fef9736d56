// SPDX-License-Identifier: Apache-2.0
#include "bench/peers/QtMeter.h"

#include <QMetaMethod>
#include <QMetaProperty>
#include <QObject>
#include <QVariant>
#include <vector>

namespace Peers {

class Meter : public QObject {
  Q_OBJECT
  Q_PROPERTY(uint reading READ reading WRITE setReading)

 public:
  [[nodiscard]] uint reading() const { return reading_; }
  void setReading(uint reading) { reading_ = reading; }
  Q_INVOKABLE uint weigh(uint a, uint b) {
    reading_ += a;
    return reading_ ^ b;
  }

 private:
  uint reading_ = 0;
};

class QtMeterOf final : public QtMeter {
 public:
  QtMeterOf()
      : property_(
            Meter::staticMetaObject.property(Meter::staticMetaObject.indexOfProperty("reading"))),
        method_(Meter::staticMetaObject.method(
            Meter::staticMetaObject.indexOfMethod("weigh(uint,uint)"))) {}

  void writeKept(std::uint32_t value) override { property_.write(&meter_, value); }
  std::uint32_t readKept() override { return property_.read(&meter_).toUInt(); }
  std::uint32_t callKept(std::uint32_t a, std::uint32_t b) override {
    uint result = 0;
    method_.invoke(&meter_, Qt::DirectConnection, Q_RETURN_ARG(uint, result), Q_ARG(uint, a),
                   Q_ARG(uint, b));
    return result;
  }

 private:
  Meter meter_;
  QMetaProperty property_;
  QMetaMethod method_;
};

std::unique_ptr<QtMeter> makeQtMeter() {
  return std::make_unique<QtMeterOf>();
}

class Lamp : public QObject {
  Q_OBJECT

 public:
  void brightnessIs(int brightness) {
    if (brightness_ != brightness) {
      brightness_ = brightness;
      emit brightnessChanged();
    }
  }
 signals:
  void brightnessChanged();

 private:
  int brightness_ = 0;
};

class Watcher : public QObject {
  Q_OBJECT

 public slots:
  void onBrightness() { ++calls_; }

 private:
  int calls_ = 0;
};

class QtLampOf final : public QtLamp {
 public:
  explicit QtLampOf(int observers) {
    for (int number = 0; number < observers; ++number) {
      watchers_.push_back(std::make_unique<Watcher>());
      QObject::connect(&lamp_, &Lamp::brightnessChanged, watchers_.back().get(),
                       &Watcher::onBrightness);
    }
  }
  void brightnessIs(int brightness) override { lamp_.brightnessIs(brightness); }

 private:
  Lamp lamp_;
  std::vector<std::unique_ptr<Watcher>> watchers_;
};

std::unique_ptr<QtLamp> makeQtLamp(int observers) {
  return std::make_unique<QtLampOf>(observers);
}

}  // namespace Peers

#include "QtMeter.moc"
