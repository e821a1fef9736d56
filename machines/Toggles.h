// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "records/Export.h"

#include <utility>

namespace PolicyMapTest {

// What every test machine does with the toggles of its base `Machine`: a toggle that would change
// nothing is not passed on, and destruction quiets the reactors first.
template <class Machine>
class POLICYMAPTEST_API Toggles : public Machine {
 public:
  // A machine with data of its own makes this call at the beginning of its destructor, too.
  ~Toggles() override { Toggles::korDoZombieReactors(true); }

  void hasNotificationActiveIs(bool active) override {
    if (active != this->hasNotificationActive()) {
      Machine::hasNotificationActiveIs(active);
    }
  }
  // The mark for deletion follows when the reactors are done.
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
