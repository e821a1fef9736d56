// SPDX-License-Identifier: Apache-2.0
#pragma once

// OptionalNumber: a number or none. Prints as the number or None.

#include "Kor/Assert.h"
#include "Kor/Hash.h"
#include "Kor/Strep.h"
#include "PolicyMapExport.h"

#include <compare>
#include <concepts>
#include <cstdint>
#include <optional>
#include <ostream>

namespace Acl {

class POLICYMAP_API OptionalNumber {
 public:
  constexpr OptionalNumber() = default;
  // NOLINTBEGIN(google-explicit-constructor): a number is a number, std::nullopt is none
  constexpr OptionalNumber(std::nullopt_t) {}
  template <std::integral Number>
  constexpr OptionalNumber(Number number)
      : present_(true), number_(static_cast<std::int64_t>(number)) {}
  // NOLINTEND(google-explicit-constructor)

  [[nodiscard]] constexpr explicit operator bool() const { return present_; }
  [[nodiscard]] constexpr bool operator!() const { return !present_; }
  // The number. Asserts that there is one.
  [[nodiscard]] std::int64_t operator*() const {
    KOR_ASSERT(present_);
    return number_;
  }
  [[nodiscard]] constexpr std::int64_t valueOr(std::int64_t other) const {
    return present_ ? number_ : other;
  }

  // None compares less than every number.
  friend constexpr bool operator==(OptionalNumber const&, OptionalNumber const&) = default;
  friend constexpr std::strong_ordering operator<=>(OptionalNumber const&,
                                                    OptionalNumber const&) = default;
  [[nodiscard]] constexpr std::uint32_t hash() const {
    return Kor::hashCombine(Kor::hashOf(number_), present_ ? 1U : 0U);
  }

 private:
  bool present_ = false;
  std::int64_t number_ = 0;
};

POLICYMAP_API Kor::String valueToStrep(OptionalNumber number);
POLICYMAP_API void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end,
                                   OptionalNumber& number);
POLICYMAP_API std::ostream& operator<<(std::ostream& out, OptionalNumber number);

// Compact storage of an optional number. Storage must be able to hold the largest number plus one.
template <std::unsigned_integral Storage>
class StoredOptional {
 public:
  [[nodiscard]] constexpr OptionalNumber get() const {
    return raw_ == 0 ? OptionalNumber() : OptionalNumber(static_cast<std::int64_t>(raw_) - 1);
  }
  constexpr void set(OptionalNumber number) {
    raw_ = number ? static_cast<Storage>(number.valueOr(0) + 1) : Storage{0};
  }
  friend constexpr auto operator<=>(StoredOptional const&, StoredOptional const&) = default;

 private:
  Storage raw_ = 0;  // 0 for none, otherwise the number plus one
};

}  // namespace Acl
