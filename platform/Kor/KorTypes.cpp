// SPDX-License-Identifier: Apache-2.0
//
// Records of the framework's non-class types, and the tables of the root classes.

#include "Kor/Entity.h"
#include "Kor/Registration.h"

#include <array>

namespace Kor {
namespace {

template <class T>
constexpr std::string_view nameOf{};
template <>
constexpr std::string_view nameOf<void> = "void";
template <>
constexpr std::string_view nameOf<bool> = "bool";
template <>
constexpr std::string_view nameOf<std::int8_t> = "int8_t";
template <>
constexpr std::string_view nameOf<std::int16_t> = "int16_t";
template <>
constexpr std::string_view nameOf<std::int32_t> = "int32_t";
template <>
constexpr std::string_view nameOf<std::int64_t> = "int64_t";
template <>
constexpr std::string_view nameOf<std::uint8_t> = "uint8_t";
template <>
constexpr std::string_view nameOf<std::uint16_t> = "uint16_t";
template <>
constexpr std::string_view nameOf<std::uint32_t> = "uint32_t";
template <>
constexpr std::string_view nameOf<std::uint64_t> = "uint64_t";
template <>
constexpr std::string_view nameOf<double> = "double";
template <>
constexpr std::string_view nameOf<String> = "Kor::String";
template <>
constexpr std::string_view nameOf<Name> = "Kor::Name";
template <>
constexpr std::string_view nameOf<GenericList> = "Kor::GenericIf::List_";

}  // namespace

template <class T>
KorType* primitiveType() {
  static KorType type(nameOf<T>, nullptr);
  return &type;
}
template KOR_API KorType* primitiveType<void>();
template KOR_API KorType* primitiveType<bool>();
template KOR_API KorType* primitiveType<std::int8_t>();
template KOR_API KorType* primitiveType<std::int16_t>();
template KOR_API KorType* primitiveType<std::int32_t>();
template KOR_API KorType* primitiveType<std::int64_t>();
template KOR_API KorType* primitiveType<std::uint8_t>();
template KOR_API KorType* primitiveType<std::uint16_t>();
template KOR_API KorType* primitiveType<std::uint32_t>();
template KOR_API KorType* primitiveType<std::uint64_t>();
template KOR_API KorType* primitiveType<double>();
template KOR_API KorType* primitiveType<String>();
template KOR_API KorType* primitiveType<Name>();
template KOR_API KorType* primitiveType<GenericList>();

namespace {

template <class T>
constexpr std::size_t sizeOf = sizeof(T);
template <>
constexpr std::size_t sizeOf<void> = 0;

template <class... T>
void enterPrimitives() {
  auto const enter = [](KorType* type, std::size_t size) {
    type->isValueIs(true);
    type->sizeIs(size);
    KorType::typeNodeIs(type, type->name());
  };
  (enter(primitiveType<T>(), sizeOf<T>), ...);
}

constexpr std::array entityAttrs{Model<Entity>::key<&Entity::name>("name").says(
    "name given at construction, which never changes")};
constexpr TypeModel root = Model<PtrInterface>::object({});
constexpr TypeModel entity = Model<Entity>::entity(entityAttrs);
constexpr std::array<TypeModel const*, 2> models{&root, &entity};

[[maybe_unused]] bool const registered = [] {
  enterPrimitives<void, bool, std::int8_t, std::int16_t, std::int32_t, std::int64_t, std::uint8_t,
                  std::uint16_t, std::uint32_t, std::uint64_t, double, String, Name, GenericList>();
  registerTypes("Kor", models);
  enterTypes(models);
  return true;
}();

}  // namespace
}  // namespace Kor
