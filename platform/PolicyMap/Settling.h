// SPDX-License-Identifier: Apache-2.0
#pragma once

// Settling: reconciles keyed items with the configuration when doing so may run code that changes
// the configuration again.
//
//   settling_.settle(name, [&] { bringToConfiguration(name); });
//
// A nested call for a key that is being settled returns at once, and the function on the stack then
// runs again. So an item configured again during its takedown is not lost, and nothing is built
// twice.

#include <map>
#include <utility>

namespace PolicyMap {

template <class Key>
class Settling {
 public:
  Settling() = default;
  Settling(Settling const&) = delete;
  Settling& operator=(Settling const&) = delete;

  // Calls bring() until it completes without a nested call for the same key. An exception of
  // bring() is passed on; the key can be settled again.
  template <class Bring>
  void settle(Key const& key, Bring&& bring) {
    auto const [place, isOutermost] = again_.try_emplace(key, true);
    if (!isOutermost) {
      place->second = true;
      return;
    }
    // Map iterators remain valid while other keys are inserted and erased.
    struct Leave {
      std::map<Key, bool>& keys;
      typename std::map<Key, bool>::iterator place;
      ~Leave() { keys.erase(place); }
    } const leave{again_, place};
    while (std::exchange(place->second, false)) {
      bring();
    }
  }

  // Acts as a nested settle() for every key that is being settled.
  void lookAgain() {
    for (auto& [key, again] : again_) {
      again = true;
    }
  }

 private:
  std::map<Key, bool> again_;  // the keys being settled; true if bring() is to run again
};

// Sets a flag for its scope, then restores the previous value.
class ScopedFlag {
 public:
  explicit ScopedFlag(bool& flag, bool value = true)
      : flag_(flag), before_(std::exchange(flag, value)) {}
  ScopedFlag(ScopedFlag const&) = delete;
  ScopedFlag& operator=(ScopedFlag const&) = delete;
  ~ScopedFlag() { flag_ = before_; }

 private:
  bool& flag_;
  bool before_;
};

}  // namespace PolicyMap
