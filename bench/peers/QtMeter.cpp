// SPDX-License-Identifier: Apache-2.0
#include "bench/peers/QtMeter.h"

#include <QMetaMethod>
#include <QMetaProperty>
#include <QObject>
#include <QVariant>

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
  std::uint32_t readByName() override { return meter_.property("reading").toUInt(); }
  std::uint32_t callKept(std::uint32_t a, std::uint32_t b) override {
    uint result = 0;
    method_.invoke(&meter_, Qt::DirectConnection, Q_RETURN_ARG(uint, result), Q_ARG(uint, a),
                   Q_ARG(uint, b));
    return result;
  }
  std::uint32_t callByName(std::uint32_t a, std::uint32_t b) override {
    uint result = 0;
    QMetaObject::invokeMethod(&meter_, "weigh", Qt::DirectConnection, Q_RETURN_ARG(uint, result),
                              Q_ARG(uint, a), Q_ARG(uint, b));
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

}  // namespace Peers

#include "QtMeter.moc"
