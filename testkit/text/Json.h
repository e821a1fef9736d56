// SPDX-License-Identifier: Apache-2.0
#pragma once

// JSON values: built, written and read. Members of objects keep the order in which they were added.

#include "testkit/Export.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace PolicyMapTestKit::Text {

// A text that is not JSON. what() is "expected ..., at byte N" and counts from 1.
class POLICYMAPTESTKIT_API JsonError : public std::runtime_error {
 public:
  JsonError(std::string expected, std::size_t offset);
  ~JsonError() override;

  // Without the word "expected".
  [[nodiscard]] std::string const& expected() const { return expected_; }
  // The place of the error, from 0.
  [[nodiscard]] std::size_t offset() const { return offset_; }

 private:
  std::string expected_;
  std::size_t offset_;
};

class POLICYMAPTESTKIT_API Json {
 public:
  using Array = std::vector<Json>;
  using Object = std::vector<std::pair<std::string, Json>>;

  Json();  // null
  // Not inline: the compiler reports moves of a variant of containers as uses of uninitialized
  // data.
  Json(Json const& other);
  Json(Json&& other) noexcept;
  Json& operator=(Json const& other);
  Json& operator=(Json&& other) noexcept;
  ~Json();
  // A value converts where one is expected.
  // NOLINTBEGIN(google-explicit-constructor)
  Json(std::same_as<bool> auto value) : value_(value) {}
  template <std::unsigned_integral Number>
  Json(Number value) requires(!std::same_as<Number, bool>) : value_(std::uint64_t{value}) {}
  Json(double value) : value_(value) {}
  Json(std::string value) : value_(std::move(value)) {}
  Json(std::string_view value) : value_(std::string(value)) {}
  Json(char const* value) : value_(std::string(value)) {}
  Json(Array value);
  Json(Object value);
  // NOLINTEND(google-explicit-constructor)

  bool operator==(Json const& other) const { return value_ == other.value_; }

  // The value, if it is of this type; null otherwise. Types are bool, std::uint64_t, double,
  // std::string, Array and Object. A number that is read is a std::uint64_t if it is written as a
  // whole number and fits.
  template <class Type>
  [[nodiscard]] Type const* as() const {
    return std::get_if<Type>(&value_);
  }
  [[nodiscard]] bool isNull() const { return std::holds_alternative<std::monostate>(value_); }
  // The member of an object; null if there is none, or if this is no object. Of several members
  // with this name, the last.
  [[nodiscard]] Json const* member(std::string_view name) const;

  // Adds to an array or an object.
  void append(Json value);
  void add(std::string_view name, Json value);

  // In one line without blanks; with an indentation, a line per value. Invalid UTF-8 is replaced by
  // U+FFFD, byte by byte; numbers that are not finite become null.
  [[nodiscard]] std::string text() const;
  [[nodiscard]] std::string text(std::size_t indentation) const;
  // Strict: one value, and nothing but white space around it. Throws JsonError.
  [[nodiscard]] static Json parse(std::string_view text);

 private:
  std::variant<std::monostate, bool, std::uint64_t, double, std::string, Array, Object> value_;
};

}  // namespace PolicyMapTestKit::Text
