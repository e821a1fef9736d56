// SPDX-License-Identifier: Apache-2.0
#pragma once

// Settling: brings things, each with a key, to what is configured, although doing so may call out
// and change the configuration again.
//
//   settling_.settle(name, [&] { bringToConfiguration(name); });
//
// A call for a key that is being settled returns at once; the function on the stack then runs once
// more. So nothing that comes back while it is taken down is lost, and nothing is built twice.

#include <map>
#include <utility>

namespace PolicyMap {

template <class Key>
class Settling {
 public:
  Settling() = default;
  Settling(Settling const&) = delete;
  Settling& operator=(Settling const&) = delete;

  // Calls bring() until it has run without a call for the same key inside it. After an exception
  // of bring(), which is passed on, the key can be settled again.
  template <class Bring>
  void settle(Key const& key, Bring&& bring) {
    auto const [place, isOutermost] = again_.try_emplace(key, true);
    if (!isOutermost) {
      place->second = true;
      return;
    }
    // Map iterators stay valid while other keys come and go.
    struct Leave {
      std::map<Key, bool>& keys;
      typename std::map<Key, bool>::iterator place;
      ~Leave() { keys.erase(place); }
    } const leave{again_, place};
    while (std::exchange(place->second, false)) {
      bring();
    }
  }

  // As settle() for every key that is being settled.
  void lookAgain() {
    for (auto& [key, again] : again_) {
      again = true;
    }
  }

 private:
  std::map<Key, bool> again_;  // the keys being settled; whether bring() runs once more
};

// True in its scope; the former value afterwards.
class ScopedFlag {
 public:
  explicit ScopedFlag(bool& flag) : flag_(flag), before_(std::exchange(flag, true)) {}
  ScopedFlag(ScopedFlag const&) = delete;
  ScopedFlag& operator=(ScopedFlag const&) = delete;
  ~ScopedFlag() { flag_ = before_; }

 private:
  bool& flag_;
  bool before_;
};

}  // namespace PolicyMap
