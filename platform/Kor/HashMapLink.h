// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace Kor {

template <class Member>
class HashTable;

// The map's data in a member.
template <class Member>
class HashMapLink {
 public:
  HashMapLink(HashMapLink const&) = delete;
  HashMapLink& operator=(HashMapLink const&) = delete;

  // Null if not linked. The last member of a chain points to itself.
  [[nodiscard]] Member* fwkHmNext() const { return next_; }

 protected:
  HashMapLink() = default;
  ~HashMapLink() = default;

 private:
  friend class HashTable<Member>;

  Member* next_ = nullptr;
  std::uint32_t hash_ = 0;
};

}  // namespace Kor
