// SPDX-License-Identifier: Apache-2.0
#pragma once

// Text forms ("string representations") of values, and their parsers.
//
// Every form is a Python expression. A value with attributes prints as
//   Value('Ns::Type', ** {'first': ..., 'second': ...})
// Texts print as Python string literals, a null pointer as None; numbers, True and False as in
// Python. A printed value parses back to an equal one. White space (blank, \t, \n, \v, \f, \r, in
// every locale) is optional between tokens.
//
// A text may be a Python string or bytes literal: either quote, single or triple; the prefixes r,
// u, b, br and rb in either case; all escapes except \N{...}. Texts are bytes, so escapes denote
// bytes: \xe9 and \351 are that one byte, \u00e9 the two bytes of its UTF-8. An octal escape above
// \377, a surrogate and \N{...} are rejected. Adjacent literals are not joined, and formatted
// literals are not supported.
//
// All parsers raise RangeException. Its text gives the 0-based column in the whole text and, inside
// a value, the attribute. After an error the position of the iterator is unspecified.
//
// A value type takes part by listing its fields:
//
//   struct Point {
//     static constexpr std::string_view korTypeName = "Ns::Point";
//     static constexpr auto korFields() {
//       return std::tuple(Kor::field("x", &Point::x, &Point::xIs, "distance to the left"), ...);
//     }
//   };
//
// This provides valueToStrep(point), out << point, sequenceToValue(it, end, point) and
// strepToValue<Point>(text). The first two are found by argument-dependent lookup if the type's
// namespace declares `using Kor::valueToStrep; using Kor::operator<<;`.

#include "Kor/EnumNames.h"
#include "Kor/Exception.h"
#include "Kor/Export.h"
#include "Kor/KorType.h"
#include "Kor/String.h"
#include "Kor/TextTokens.h"

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>

namespace Kor {

// printing ------------------------------------------------------------------------------

KOR_API String valueToStrep(String const& text);  // a single-quoted literal
inline String valueToStrep(Name const& text) {
  return valueToStrep(String(text));
}
KOR_API String valueToStrep(double number);  // the shortest text that parses back
KOR_API String signedToStrep(std::int64_t number);
KOR_API String unsignedToStrep(std::uint64_t number);

// The same, appended to a text; for the parts of a longer one.
KOR_API void appendStrep(std::string& to, String const& text);
KOR_API void appendStrep(std::string& to, std::uint64_t number);
KOR_API void appendStrep(std::string& to, std::int64_t number);

template <std::integral Number>
String valueToStrep(Number number) {
  if constexpr (std::same_as<Number, bool>) {
    return number ? "True" : "False";
  } else if constexpr (std::is_signed_v<Number>) {
    return signedToStrep(number);
  } else {
    return unsignedToStrep(number);
  }
}

// parsing -------------------------------------------------------------------------------

KOR_API void sequenceToValue(TextIterator& it, TextIterator const& end, String& text);
KOR_API void sequenceToValue(TextIterator& it, TextIterator const& end, Name& text);
KOR_API void sequenceToValue(TextIterator& it, TextIterator const& end, bool& value);
KOR_API void sequenceToValue(TextIterator& it, TextIterator const& end, double& value);
// Parses an integer literal (12, -0x1f, 0b101, 0o17, 1_000) in [lowest, highest]. Raises "NUMBER
// out of range at column N".
KOR_API std::int64_t sequenceToInteger(TextIterator& it, TextIterator const& end,
                                       std::int64_t lowest, std::int64_t highest);
KOR_API std::uint64_t sequenceToUnsigned(TextIterator& it, TextIterator const& end,
                                         std::uint64_t highest);

template <std::integral Number>
requires(!std::same_as<Number, bool>) void sequenceToValue(TextIterator& it,
                                                           TextIterator const& end, Number& value) {
  using Limits = std::numeric_limits<Number>;
  if constexpr (std::is_signed_v<Number>) {
    value = static_cast<Number>(sequenceToInteger(it, end, Limits::min(), Limits::max()));
  } else {
    value = static_cast<Number>(sequenceToUnsigned(it, end, Limits::max()));
  }
}

// Raises `error` again, prefixed with "attribute 'NAME': ".
[[noreturn]] KOR_API void rethrowFromDeserializeAttr(RangeException const& error,
                                                     String const& name);

// A type whose text form is parsed by its constructor from an iterator pair.
template <class T>
concept ReadByConstructor = std::constructible_from<T, TextIterator&, TextIterator const&>;

template <class T>
T sequenceTo(TextIterator& it, TextIterator const& end) {
  if constexpr (ReadByConstructor<T>) {
    return T(it, end);
  } else {
    T value{};
    sequenceToValue(it, end, value);
    return value;
  }
}

// Parses the value of the attribute `name`. A RangeException is raised again with that name.
template <class T>
T deserializeAttr(TextIterator& it, TextIterator const& end, String const& name) {
  try {
    return sequenceTo<T>(it, end);
  } catch (RangeException const& error) {
    rethrowFromDeserializeAttr(error, name);
  }
}

KOR_API void needEnd(TextIterator const& it);

// Parses a whole text. Raises "junk at column N deserializing TEXT" if anything follows the value.
// The second argument only selects the type.
template <class T>
T strepToValue(String const& text, T* /*type*/) {
  TextIterator it = text.begin();
  T value = sequenceTo<T>(it, text.end());
  needEnd(it);
  return value;
}
template <class T>
T strepToValue(String const& text) {
  return strepToValue<T>(text, static_cast<T*>(nullptr));
}

// enumerations --------------------------------------------------------------------------

KOR_API String enumToText(EnumNames const& names, std::int32_t value);   // bare name or number
KOR_API String enumToStrep(EnumNames const& names, std::int32_t value);  // 'name' or number
KOR_API std::int32_t sequenceToEnum(TextIterator& it, TextIterator const& end,
                                    EnumNames const& names);

// values with attributes ----------------------------------------------------------------

// One attribute of a value type, with its getter, its setter and one line that explains it.
template <class Getter, class Setter>
struct Field {
  std::string_view name;
  Getter get;
  Setter set;
  std::string_view prose;
};
template <class Getter, class Setter>
constexpr Field<Getter, Setter> field(std::string_view name, Getter get, Setter set,
                                      std::string_view prose = {}) {
  return {name, get, set, prose};
}

template <class T>
concept ValueWithFields = requires {
  { T::korTypeName } -> std::convertible_to<std::string_view>;
  T::korFields();
};

constexpr std::string_view shortTypeName(std::string_view qualified) {
  auto const colons = qualified.rfind("::");
  return colons == std::string_view::npos ? qualified : qualified.substr(colons + 2);
}

// Parses the frame of a value text. Calls readField(it, end, name) for each attribute; it returns
// false if there is no such attribute. `names` are those of the attributes in the order in which
// they are printed, which a text need not have.
class KOR_API ValueReader {
 public:
  explicit ValueReader(std::string_view typeName, std::span<std::string_view const> names = {})
      : typeName_(typeName), names_(names) {}

  template <class ReadField>
  void read(TextIterator& it, TextIterator const& end, ReadField&& readField) const {
    open(it, end);
    std::string buffer;
    for (std::size_t place = 0;; ++place) {
      std::string_view name;
      if (place < names_.size() && takePrinted(it, end, place)) {
        name = names_[place];
      } else if (more(it, end)) {
        name = attributeName(it, end, place == 0, buffer);
      } else {
        return;
      }
      if (!readField(it, end, name)) {
        unknownAttribute(name);
      }
    }
  }

 private:
  void open(TextIterator& it, TextIterator const& end) const;
  // Consumes all before the value of the attribute at that place, if it is there as it is printed.
  bool takePrinted(TextIterator& it, TextIterator const& end, std::size_t place) const;
  // Returns false once the closing brace and parenthesis are consumed.
  bool more(TextIterator& it, TextIterator const& end) const;
  // The name is in the parsed text, or in the buffer.
  static std::string_view attributeName(TextIterator& it, TextIterator const& end, bool first,
                                        std::string& buffer);
  [[noreturn]] void unknownAttribute(std::string_view name) const;

  std::string_view typeName_;
  std::span<std::string_view const> names_;
};

// Appends the text of an attribute, for most without a text of its own.
template <class T>
void appendAttribute(std::string& to, T const& value) {
  if constexpr (std::derived_from<T, String>) {
    appendStrep(to, static_cast<String const&>(value));
  } else if constexpr (std::unsigned_integral<T> && !std::same_as<T, bool>) {
    appendStrep(to, std::uint64_t{value});
  } else if constexpr (std::signed_integral<T>) {
    appendStrep(to, std::int64_t{value});
  } else {
    to.append(valueToStrep(value).view());
  }
}

template <ValueWithFields T>
String valueToStrep(T const& value) {
  using namespace std::string_view_literals;  // of which the length is known
  std::string text;
  text.reserve(256);
  text.append("Value('"sv).append(T::korTypeName).append("', ** {"sv);
  std::string_view before = "'";
  auto const print = [&](auto const& field) {
    text.append(before).append(field.name).append("': "sv);
    appendAttribute(text, (value.*field.get)());
    before = ", '";
  };
  static constexpr auto all = T::korFields();
  std::apply([&](auto const&... fields) { (print(fields), ...); }, all);
  text.append("})"sv);
  return text;
}

template <ValueWithFields T>
std::ostream& operator<<(std::ostream& out, T const& value) {
  return out << valueToStrep(value);
}

// Parses into `value`. The attributes may come in any order; the last of a repeated one counts; a
// missing one keeps its value.
template <ValueWithFields T>
void readValueFields(TextIterator& it, TextIterator const& end, T& value) {
  auto const readField = [&](TextIterator& at, TextIterator const& last, std::string_view name) {
    auto const take = [&](auto const& field) {
      if (name != field.name) {
        return false;
      }
      try {
        using Type = std::remove_cvref_t<decltype((value.*field.get)())>;
        (value.*field.set)(sequenceTo<Type>(at, last));
      } catch (RangeException const& error) {
        rethrowFromDeserializeAttr(error, String(name));
      }
      return true;
    };
    static constexpr auto all = T::korFields();
    return std::apply([&](auto const&... fields) { return (take(fields) || ...); }, all);
  };
  static constexpr auto names = std::apply(
      [](auto const&... fields) {
        return std::array<std::string_view, sizeof...(fields)>{fields.name...};
      },
      T::korFields());
  ValueReader(T::korTypeName, names).read(it, end, readField);
}

template <ValueWithFields T>
void sequenceToValue(TextIterator& it, TextIterator const& end, T& value) {
  T read{};
  readValueFields(it, end, read);
  value = read;
}

}  // namespace Kor
