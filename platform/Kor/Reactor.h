// SPDX-License-Identifier: Apache-2.0
#pragma once

// Reactor: a machine's typed watch on an object. It holds the object and owns the small notifiee
// through which it hears; it is quiet until hasNotificationActiveIs(true) and lets go on
// korDoZombieReactors(true).
//
//   // ThingWatch is a Thing::NotifieeConst or a log reader; the machine's constructor makes it.
//   Kor::Reactor<Thing, ThingWatch> thing_{Kor::make<ThingWatch>(this)};
//   thing_.objectIs(thing);  // watches it when active, remembers it when not

#include "Kor/Entity.h"
#include "Kor/Ptr.h"

#include <utility>

namespace Kor {

template <class T, class Watch>
class Reactor {
 public:
  Reactor() = default;
  explicit Reactor(Kor::Ptr<Watch> watch) : watch_(std::move(watch)) {}
  Reactor(Reactor const&) = delete;
  Reactor& operator=(Reactor const&) = delete;
  // Quiet from here on, whoever still holds the notifiee.
  ~Reactor() {
    if (watch_) {
      watch_->notifierIs(nullptr);
    }
  }

  [[nodiscard]] Kor::Ptr<T> const& object() const { return object_; }
  // Whether the object exists and is being listened to.
  [[nodiscard]] bool listening() const { return active_ && !zombie_ && object_; }

  void objectIs(Kor::Ptr<T> object) {
    object_ = std::move(object);
    listen();
  }
  void hasNotificationActiveIs(bool active) {
    active_ = active;
    listen();
  }
  void korDoZombieReactors(bool zombie) {
    zombie_ = zombie;
    listen();
  }

 private:
  void listen() { watch_->notifierIs(listening() ? object_.get() : nullptr); }

  Kor::Ptr<T> object_;
  Kor::Ptr<Watch> watch_;
  bool active_ = false;
  bool zombie_ = false;
};

// A reader of the attribute log that calls a member function of the machine that owns it.
template <class Machine>
class LogWatch : public AttributeLogReader {
 public:
  using Reaction = void (Machine::*)(AttributeId);

  LogWatch(Machine* machine, Reaction reaction) : machine_(machine), reaction_(reaction) {}

  void onAttribute(Entity const& /*entity*/, AttributeId id) override {
    (machine_->*reaction_)(id);
  }

 private:
  Machine* machine_;
  Reaction reaction_;
};

}  // namespace Kor
