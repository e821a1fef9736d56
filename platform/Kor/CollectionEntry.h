// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/HashMapLink.h"
#include "Kor/PtrInterface.h"

namespace Kor {

// One entry of a value collection.
template <class Entry, class K, class V>
class CollectionEntry : public PtrInterface, public HashMapLink<Entry> {
 public:
  using Key = K;
  using Value = V;

  // Throws if korCheckKey(key) exists for the type of the key and rejects it.
  CollectionEntry(K const& key, V const& value) : key_(key), value_(value) {
    if constexpr (requires { korCheckKey(key); }) {
      korCheckKey(key);
    }
  }

  [[nodiscard]] K const& key() const { return key_; }
  [[nodiscard]] K const& fwkKey() const { return key_; }
  [[nodiscard]] V const& value() const { return value_; }
  void valueIs(V const& value) { value_ = value; }

 private:
  K key_;
  V value_;
};

}  // namespace Kor
