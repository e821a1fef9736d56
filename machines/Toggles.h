// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "records/Export.h"

#include <utility>

namespace PolicyMapTest {

// The toggles of every test machine over its base `Machine`: a toggle that changes nothing is
// ignored, and destruction stops the reactors first.
template <class Machine>
class POLICYMAPTEST_API Toggles : public Machine {
 public:
  // A derived class with data members makes this call at the beginning of its own destructor as
  // well.
  ~Toggles() override { Toggles::korDoZombieReactors(true); }

  void hasNotificationActiveIs(bool active) override {
    if (active != this->hasNotificationActive()) {
      Machine::hasNotificationActiveIs(active);
    }
  }
  // Marks the machine for deletion after the reactors have stopped.
  void korDoZombieReactors(bool zombie) override {
    if (zombie != this->korMarkedForDeletion()) {
      Machine::korDoZombieReactors(zombie);
      this->korMarkedForDeletionIs(zombie);
    }
  }

 protected:
  template <class... Args>
  explicit Toggles(Args&&... args) : Machine(std::forward<Args>(args)...) {}
};

}  // namespace PolicyMapTest
