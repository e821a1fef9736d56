// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <unordered_map>

namespace Kor {

class PtrInterface;

// The living objects that were printed, by the number in their text. Numbers are never reused.
class PrintedObjects {
 public:
  // The objects of this process.
  static PrintedObjects& all();

  // Returns the number of the object. It gets one when it is asked for the first time.
  [[nodiscard]] std::uint64_t numberOf(PtrInterface const* object);
  // Returns the object of that number, null if there is none or if it was destroyed.
  [[nodiscard]] PtrInterface const* object(std::uint64_t number) const;
  // Removes a dying object, which must have a number.
  void remove(PtrInterface const* object) noexcept;

 private:
  std::unordered_map<std::uint64_t, PtrInterface const*> byNumber_;
  std::unordered_map<PtrInterface const*, std::uint64_t> numbers_;
  std::uint64_t last_ = 0;
};

}  // namespace Kor
