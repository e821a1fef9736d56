// SPDX-License-Identifier: Apache-2.0
#pragma once

// JsonLine: a JSON object in a line of its own, whose members are read with their types.

#include "testkit/Export.h"
#include "testkit/text/Json.h"
#include "testkit/text/SourceText.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit::Text {

class POLICYMAPTESTKIT_API JsonLine {
 public:
  // The current line of a reader, which must outlive this object. Throws InputError if it is no
  // JSON object.
  explicit JsonLine(LineReader const& reader);

  [[nodiscard]] bool has(std::string_view name) const { return json_.member(name) != nullptr; }
  [[nodiscard]] Json const& json() const { return json_; }
  // Each throws InputError if the member is missing, or has another type.
  [[nodiscard]] std::uint64_t number(std::string_view name) const;
  [[nodiscard]] double real(std::string_view name) const;
  [[nodiscard]] bool flag(std::string_view name) const;
  // Empty if it is missing.
  [[nodiscard]] std::string text(std::string_view name) const;
  [[nodiscard]] std::vector<std::string> texts(std::string_view name) const;

  // Throws InputError for the byte at this place, from 0.
  [[noreturn]] void fail(std::size_t offset, std::string expected) const;

 private:
  template <class Type>
  [[nodiscard]] Type required(std::string_view name, char const* what) const;

  LineReader const& reader_;
  Json json_;
};

}  // namespace PolicyMapTestKit::Text
