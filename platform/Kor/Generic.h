// SPDX-License-Identifier: Apache-2.0
#pragma once

// Generic<T>: conversion between a C++ type and generic values.
//
//   type()          the record of T
//   value(t)        the generic value of t
//   take(g, t)      stores the content of g in t; if g is not a T, returns false and leaves t
//                   unchanged
//
// Numbers: an integer must be in T's range. An integer converts to double; there are no other
// conversions between numbers. An enumeration accepts its names and any signed 32-bit number; a
// narrower one accepts only the numbers in use. A pointer accepts null and objects of its type and
// of derived types; a const object converts only to a pointer to const. A model value accepts
// values of its type; if its text form is a plain text, it accepts that text too.

#include "Kor/Export.h"
#include "Kor/GenericValue.h"
#include "Kor/KorType.h"
#include "Kor/Ptr.h"
#include "Kor/Strep.h"
#include "Kor/String.h"

#include <compare>
#include <concepts>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

namespace Kor {

// The records of non-class types: bool, int8_t to int64_t, uint8_t to uint64_t, double, void,
// Kor::String, Kor::Name, and Kor::List for lists.
template <class T>
KorType* primitiveType();
extern template KOR_API KorType* primitiveType<void>();
extern template KOR_API KorType* primitiveType<bool>();
extern template KOR_API KorType* primitiveType<std::int8_t>();
extern template KOR_API KorType* primitiveType<std::int16_t>();
extern template KOR_API KorType* primitiveType<std::int32_t>();
extern template KOR_API KorType* primitiveType<std::int64_t>();
extern template KOR_API KorType* primitiveType<std::uint8_t>();
extern template KOR_API KorType* primitiveType<std::uint16_t>();
extern template KOR_API KorType* primitiveType<std::uint32_t>();
extern template KOR_API KorType* primitiveType<std::uint64_t>();
extern template KOR_API KorType* primitiveType<double>();
extern template KOR_API KorType* primitiveType<String>();
extern template KOR_API KorType* primitiveType<Name>();
extern template KOR_API KorType* primitiveType<GenericList>();

// A class with a record.
template <class T>
concept ModelType = requires {
  { T::_fwkType() } -> std::convertible_to<KorType const*>;
};

// An enumeration with a record, returned by korEnumType(E) in the enumeration's namespace.
template <class T>
concept ModelEnum = std::is_enum_v<T> && requires(T value) {
  { korEnumType(value) } -> std::convertible_to<KorType const*>;
};

template <class T>
struct Generic;

template <>
struct Generic<void> {
  static KorType const* type() { return primitiveType<void>(); }
};

template <>
struct Generic<bool> {
  static KorType const* type() { return primitiveType<bool>(); }
  static GenericValue value(bool truth) { return truth; }
  static bool take(GenericValue const& from, bool& to) {
    if (from.kind() != GenericValue::Kind::boolean) {
      return false;
    }
    to = from.boolean();
    return true;
  }
};

template <std::integral Number>
struct Generic<Number> {
  // C++ types of the same size and sign share a record.
  using Same = std::conditional_t<
      std::is_signed_v<Number>,
      std::conditional_t<
          sizeof(Number) == 8, std::int64_t,
          std::conditional_t<sizeof(Number) == 4, std::int32_t,
                             std::conditional_t<sizeof(Number) == 2, std::int16_t, std::int8_t>>>,
      std::conditional_t<sizeof(Number) == 8, std::uint64_t,
                         std::conditional_t<sizeof(Number) == 4, std::uint32_t,
                                            std::conditional_t<sizeof(Number) == 2, std::uint16_t,
                                                               std::uint8_t>>>>;

  static KorType const* type() { return primitiveType<Same>(); }
  static GenericValue value(Number number) { return number; }
  static bool take(GenericValue const& from, Number& to) {
    if (from.kind() == GenericValue::Kind::integer && std::in_range<Number>(from.integer())) {
      to = static_cast<Number>(from.integer());
      return true;
    }
    if (from.kind() == GenericValue::Kind::natural && std::in_range<Number>(from.natural())) {
      to = static_cast<Number>(from.natural());
      return true;
    }
    return false;
  }
};

template <>
struct Generic<double> {
  static KorType const* type() { return primitiveType<double>(); }
  static GenericValue value(double number) { return number; }
  static bool take(GenericValue const& from, double& to) {
    switch (from.kind()) {
    case GenericValue::Kind::real: to = from.real(); return true;
    case GenericValue::Kind::integer: to = static_cast<double>(from.integer()); return true;
    case GenericValue::Kind::natural: to = static_cast<double>(from.natural()); return true;
    default: return false;
    }
  }
};

template <std::derived_from<String> Text>
struct Generic<Text> {
  static KorType const* type() { return primitiveType<Text>(); }
  static GenericValue value(Text const& text) { return String(text); }
  static bool take(GenericValue const& from, Text& to) {
    if (from.kind() != GenericValue::Kind::text) {
      return false;
    }
    to = Text(from.text());
    return true;
  }
};

template <ModelEnum Enum>
struct Generic<Enum> {
  static KorType const* type() { return korEnumType(Enum{}); }
  static GenericValue value(Enum value) { return {type(), static_cast<std::int32_t>(value)}; }
  static bool take(GenericValue const& from, Enum& to) {
    std::int32_t number = 0;
    if (from.kind() == GenericValue::Kind::enumeration) {
      if (from.enumerationType() != type()) {
        return false;
      }
      number = from.enumeration();
    } else if (from.kind() == GenericValue::Kind::text) {
      return read(valueToStrep(from.text()), to);
    } else if (!Generic<std::int32_t>::take(from, number)) {
      return false;
    }
    if constexpr (sizeof(Enum) < sizeof(number)) {
      return read(valueToStrep(number), to);  // its parser knows which numbers are in use
    }
    to = static_cast<Enum>(number);
    return true;
  }

 private:
  static bool read(String const& strep, Enum& to) {
    try {
      to = strepToValue<Enum>(strep);
      return true;
    } catch (RangeException const&) {
      return false;
    }
  }
};

template <class T>
struct Generic<Ptr<T>> {
  static KorType const* type() { return T::_fwkType(); }
  static GenericValue value(Ptr<T> const& object) { return {object, std::is_const_v<T>}; }
  static bool take(GenericValue const& from, Ptr<T>& to) {
    if (from.isNull()) {
      to = nullptr;
      return true;
    }
    if (from.kind() != GenericValue::Kind::object || (from.isConst() && !std::is_const_v<T>) ||
        !from.object()->fwkType()->isA(T::_fwkType())) {
      return false;
    }
    to = share(static_cast<T*>(const_cast<PtrInterface*>(from.object())));
    return true;
  }
};

template <ModelType T>
class TypedBox final : public ValueBox {
 public:
  explicit TypedBox(T value) : value_(std::move(value)) {}
  [[nodiscard]] KorType const* fwkType() const override { return T::_fwkType(); }
  [[nodiscard]] bool equals(ValueBox const& other) const override {
    return value_ == static_cast<TypedBox const&>(other).value_;
  }
  [[nodiscard]] std::partial_ordering order(ValueBox const& other) const override {
    [[maybe_unused]] T const& value = static_cast<TypedBox const&>(other).value_;
    if constexpr (std::three_way_comparable<T>) {
      return value_ <=> value;
    } else if constexpr (requires { value_ < value; }) {
      return value_ < value   ? std::partial_ordering::less
             : value < value_ ? std::partial_ordering::greater
                              : std::partial_ordering::equivalent;
    } else {
      return std::partial_ordering::unordered;
    }
  }
  [[nodiscard]] String text() const override { return valueToStrep(value_); }
  [[nodiscard]] T const& value() const { return value_; }
  [[nodiscard]] T& value() { return value_; }

 private:
  T value_;
};

template <ModelType T>
requires(!std::is_base_of_v<PtrInterface, T>) struct Generic<T> {
  static KorType const* type() { return T::_fwkType(); }
  // A read returns a copy. It is const because a change to it would be lost.
  static GenericValue value(T const& value) { return boxed(value, true); }
  static GenericValue boxed(T const& value, bool isConst) {
    return {Ptr<ValueBox const>(new TypedBox<T>(value)), isConst};
  }
  // The value in the box; null if it is no T.
  static T const* in(GenericValue const& from) {
    bool const isOne =
        from.kind() == GenericValue::Kind::value && from.object()->fwkType() == T::_fwkType();
    return isOne ? &static_cast<TypedBox<T> const*>(from.object())->value() : nullptr;
  }
  static bool take(GenericValue const& from, T& to) {
    if (T const* const value = in(from)) {
      to = *value;
      return true;
    }
    if constexpr (!ValueWithFields<T>) {
      if (from.kind() == GenericValue::Kind::text) {
        try {
          to = strepToValue<T>(valueToStrep(from.text()));
          return true;
        } catch (RangeException const&) {
          return false;
        }
      }
    }
    return false;
  }
};

template <class T>
struct Generic<std::vector<T>> {
  static KorType const* type() { return primitiveType<GenericList>(); }
  static GenericValue value(std::vector<T> const& values) {
    auto list = GenericList::of();
    for (T const& element : values) {
      list->append(Generic<T>::value(element));
    }
    return list;
  }
  static bool take(GenericValue const& from, std::vector<T>& to) {
    if (from.kind() != GenericValue::Kind::list) {
      return false;
    }
    std::vector<T> taken;
    for (GenericValue const& element : from.list()) {
      T value{};
      if (!Generic<T>::take(element, value)) {
        return false;
      }
      taken.push_back(std::move(value));
    }
    to = std::move(taken);
    return true;
  }
};

}  // namespace Kor
