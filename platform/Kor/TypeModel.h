// SPDX-License-Identifier: Apache-2.0
#pragma once

// TypeModel, AttrModel: the table of a type and its rows, as registration reads them. Model<T>
// makes them.

#include "Kor/KorAttr.h"
#include "Kor/KorType.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace Kor {

// Flag words by the role of an attribute.
namespace Flags {
inline constexpr KorAttr::AttrFlags data{0x220143};
inline constexpr KorAttr::AttrFlags recordData{0x220103};
inline constexpr KorAttr::AttrFlags key{0x220109, 0x40000400};  // given at construction
inline constexpr KorAttr::AttrFlags lastKey{0x22010f};
inline constexpr KorAttr::AttrFlags derived{0x220001};  // computed, or set only by its owner
inline constexpr KorAttr::AttrFlags fwkKey{0x200001};
inline constexpr KorAttr::AttrFlags collection{0x1a20103};
inline constexpr KorAttr::AttrFlags owned{0x9a20103, 0x10000400};
inline constexpr KorAttr::AttrFlags settableOwned{0x9a20143, 0x10000400};
inline constexpr KorAttr::AttrFlags function{0x20001};
inline constexpr KorAttr::AttrFlags factory{0x8020001};  // returns a new object
inline constexpr KorAttr::AttrFlags hook{0x1};
}  // namespace Flags

using TypeGetter = KorType const* (*)();

// The arguments of a function or constructor, in order.
struct ArgumentModel {
  static constexpr std::size_t most = 15;

  std::array<std::string_view, most> names{};
  TypeGetter const* types = nullptr;
  std::size_t count = 0;
};

// One row of a table.
struct AttrModel {
  enum class Kind : std::uint8_t { data, collection, owned, function };

  std::string_view name;
  std::string_view prose;  // an override without one has that of the overridden attribute
  Kind kind = Kind::data;
  TypeGetter valueType = nullptr;
  TypeGetter keyType = nullptr;  // of a collection
  KorAttr::AttrFlags flags;
  KorAttr::KorAttrIntrospectionFlags introspection;
  KorAttr::Access access = nullptr;
  KorAttr::Reader reader = nullptr;  // of data
  KorAttr::Writer writer = nullptr;  // of data that can be written
  KorAttr::Caller caller = nullptr;  // of a function
  bool writable = false;
  bool withoutNumber = false;  // has the identifier 0
  ArgumentModel args;          // of a function

  [[nodiscard]] constexpr AttrModel with(KorAttr::AttrFlags other) const {
    AttrModel copy = *this;
    copy.flags = other;
    return copy;
  }
  // One line that explains the attribute: at most 100 characters, no full stop, no vertical bar.
  [[nodiscard]] constexpr AttrModel says(std::string_view line) const {
    AttrModel copy = *this;
    copy.prose = line;
    return copy;
  }
};

struct TypeModel {
  enum class Kind : std::uint8_t { object, entity, value };

  KorType* (*type)() = nullptr;
  std::size_t size = 0;
  Kind kind = Kind::object;
  std::span<AttrModel const> attrs;
  ArgumentModel constructorArgs;
  TypeOperations operations;
};

// A constructor by name: the creating function and the names of its arguments.
struct ConstructorModel {
  ArgumentModel args;
  GenericValue (*construct)(KorType const& type, GenericValue const& arguments) = nullptr;
};

}  // namespace Kor
