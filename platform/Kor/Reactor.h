// SPDX-License-Identifier: Apache-2.0
#pragma once

// Reactor: a machine's typed observer of an object. It holds the object and owns the notifiee that
// observes it. It is inactive until hasNotificationActiveIs(true), and stops on
// korDoZombieReactors(true).
//
//   // ThingWatch is a Thing::NotifieeConst or a log reader; the machine's constructor creates it.
//   Kor::Reactor<Thing, ThingWatch> thing_{Kor::make<ThingWatch>(this)};
//   thing_.objectIs(thing);  // observed while the reactor is active

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
  // Stops observing, even if the notifiee is still referenced elsewhere.
  ~Reactor() {
    if (watch_) {
      watch_->notifierIs(nullptr);
    }
  }

  [[nodiscard]] Kor::Ptr<T> const& object() const { return object_; }
  // True if there is an object and it is being observed.
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

// An attribute log reader that calls a member function of its machine.
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
