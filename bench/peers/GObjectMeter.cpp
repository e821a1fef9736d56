// SPDX-License-Identifier: Apache-2.0
#include "bench/peers/GObjectMeter.h"

#include <array>
#include <glib-object.h>

namespace {

struct Meter {
  GObject parent;
  guint reading;
};
struct MeterClass {
  GObjectClass parent;
  guint (*weigh)(Meter* meter, guint a, guint b);
};

guint weighSignal = 0;

guint weigh(Meter* meter, guint a, guint b) {
  meter->reading += a;
  return meter->reading ^ b;
}

// Unpacks the arguments like generated marshallers.
void marshalWeigh(GClosure* closure, GValue* result, guint /*count*/, GValue const* args,
                  gpointer /*hint*/, gpointer data) {
  using Callback = guint (*)(Meter*, guint, guint);
  auto const callback = reinterpret_cast<Callback>(
      data != nullptr ? data : reinterpret_cast<GCClosure*>(closure)->callback);
  g_value_set_uint(result, callback(static_cast<Meter*>(g_value_peek_pointer(args)),
                                    g_value_get_uint(args + 1), g_value_get_uint(args + 2)));
}

void classInit(gpointer type, gpointer /*data*/) {
  auto* const objectClass = static_cast<GObjectClass*>(type);
  objectClass->get_property = [](GObject* object, guint, GValue* value, GParamSpec*) {
    g_value_set_uint(value, reinterpret_cast<Meter*>(object)->reading);
  };
  objectClass->set_property = [](GObject* object, guint, GValue const* value, GParamSpec*) {
    reinterpret_cast<Meter*>(object)->reading = g_value_get_uint(value);
  };
  g_object_class_install_property(
      objectClass, 1,
      g_param_spec_uint("reading", nullptr, nullptr, 0, G_MAXUINT, 0,
                        static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS)));
  static_cast<MeterClass*>(type)->weigh = &weigh;
  weighSignal = g_signal_new("weigh", G_TYPE_FROM_CLASS(type),
                             static_cast<GSignalFlags>(G_SIGNAL_RUN_LAST | G_SIGNAL_ACTION),
                             offsetof(MeterClass, weigh), nullptr, nullptr, &marshalWeigh,
                             G_TYPE_UINT, 2, G_TYPE_UINT, G_TYPE_UINT);
}

GType meterType() {
  static GType const type =
      g_type_register_static_simple(G_TYPE_OBJECT, "BenchMeter", sizeof(MeterClass), &classInit,
                                    sizeof(Meter), nullptr, GTypeFlags{});
  return type;
}

class GObjectMeterOf final : public Peers::GObjectMeter {
 public:
  GObjectMeterOf() : object_(static_cast<GObject*>(g_object_new(meterType(), nullptr))) {
    pspec_ = g_object_class_find_property(G_OBJECT_GET_CLASS(object_), "reading");
    g_value_init(&value_, G_TYPE_UINT);
    g_value_init(&result_, G_TYPE_UINT);
    g_value_init(&args_[0], meterType());
    g_value_set_object(&args_[0], object_);
    g_value_init(&args_[1], G_TYPE_UINT);
    g_value_init(&args_[2], G_TYPE_UINT);
  }
  ~GObjectMeterOf() override {
    g_value_unset(&args_[0]);
    g_object_unref(object_);
  }
  GObjectMeterOf(GObjectMeterOf const&) = delete;
  GObjectMeterOf& operator=(GObjectMeterOf const&) = delete;

  void write(std::uint32_t value) override {
    g_value_set_uint(&value_, value);
    g_object_set_property(object_, "reading", &value_);
  }
  std::uint32_t read() override {
    g_object_get_property(object_, "reading", &value_);
    return g_value_get_uint(&value_);
  }
  std::uint32_t readKept() override {
    G_OBJECT_GET_CLASS(object_)->get_property(object_, 1, &value_, pspec_);
    return g_value_get_uint(&value_);
  }
  std::uint32_t call(std::uint32_t a, std::uint32_t b) override {
    g_value_set_uint(&args_[1], a);
    g_value_set_uint(&args_[2], b);
    g_signal_emitv(args_.data(), weighSignal, 0, &result_);
    return g_value_get_uint(&result_);
  }

 private:
  GObject* object_;
  GParamSpec* pspec_;
  GValue value_ = G_VALUE_INIT;
  GValue result_ = G_VALUE_INIT;
  std::array<GValue, 3> args_{};
};

}  // namespace

std::unique_ptr<Peers::GObjectMeter> Peers::makeGObjectMeter() {
  return std::make_unique<GObjectMeterOf>();
}
