// SPDX-License-Identifier: Apache-2.0
#pragma once

// How a rule keeps one field of its filter: PlainField as it is, OptionalField and NumberField
// packed and within bounds.
//
// Value is what a reader returns, Parameter what a writer takes. set() raises RangeException
// "ATTRIBUTE < LOWEST or > HIGHEST not allowed" and then stores nothing.

#include "Acl/OptionalNumber.h"
#include "Acl/RangeCheck.h"

#include <compare>
#include <cstdint>
#include <string_view>
#include <tuple>

namespace Acl {

// `initial` are the arguments that the default value is built from.
template <class T, auto... initial>
class PlainField {
 public:
  using Value = T;
  using Parameter = T const&;

  [[nodiscard]] Value get() const { return value_; }
  void set(std::string_view /*attribute*/, Parameter value) { value_ = value; }
  friend auto operator<=>(PlainField const&, PlainField const&) = default;

 private:
  T value_{initial...};
};

// None by default. Storage must hold the highest number plus one.
template <class Storage, std::int64_t lowest, std::int64_t highest>
class OptionalField {
 public:
  using Value = OptionalNumber;
  using Parameter = OptionalNumber;

  [[nodiscard]] Value get() const { return stored_.get(); }
  void set(std::string_view attribute, Parameter number) {
    stored_.set(checked(attribute, number, lowest, highest));
  }
  friend auto operator<=>(OptionalField const&, OptionalField const&) = default;

 private:
  StoredOptional<Storage> stored_;
};

// From 0, which is the default, to `highest`.
template <class Storage, std::int64_t highest>
class NumberField {
 public:
  using Value = Storage;
  using Parameter = std::int64_t;

  [[nodiscard]] Value get() const { return value_; }
  void set(std::string_view attribute, Parameter number) {
    value_ = static_cast<Storage>(inRange(attribute, number, 0, highest));
  }
  friend auto operator<=>(NumberField const&, NumberField const&) = default;

 private:
  Storage value_ = 0;
};

using PermitField = PlainField<bool, true>;
using FlagField = PlainField<bool>;

// Whether `says(name)` is true for each field of a filter. Code that treats the fields one by one
// asserts it, so that it does not compile when it leaves out a field.
template <class Filter, class Says>
[[nodiscard]] constexpr bool saysEachField(Says says) {
  return std::apply([says](auto const&... field) { return (says(field.name) && ...); },
                    Filter::filterFields());
}

}  // namespace Acl
