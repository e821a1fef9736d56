// SPDX-License-Identifier: Apache-2.0
#pragma once

// Model<T>: the table of a type. Registration, adapter, attribute names and the constructor by name
// are all derived from it.
//
//   using M = Kor::Model<Shelf>;
//   constexpr std::array attrs{
//       M::data<&Shelf::colour, &Shelf::colourIs>("colour").says("RGB, 8 bits each"),
//       M::collection<Shelf::BookAttribute>("book"),
//       M::owned<Shelf::DrawerAttribute>("drawer"),
//       M::function<&Shelf::weigh>("weigh", "scale", "unit"),
//   };
//   Kor::TypeModel const shelf = M::entity(attrs, M::constructor<&shelfFactory>("name"));
//   ...
//   Kor::registerTypes("Library", {&shelf, ...});
//
// Identifiers are computed: an attribute that overrides an inherited one keeps its number, the
// others count from 128 x level + 2.

#include "Kor/Adapter.h"
#include "Kor/FunctionAdapter.h"
#include "Kor/Generic.h"
#include "Kor/GenericIf.h"
#include "Kor/KorAttr.h"
#include "Kor/KorType.h"
#include "Kor/Strep.h"
#include "Kor/TypeModel.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <tuple>
#include <utility>

namespace Kor {

template <class Self>
class Model {
  using Flag = KorAttr::KorAttrIntrospectionFlags;
  static constexpr Flag plainData{2};
  static constexpr Flag functionFlag{8};
  static constexpr Flag ownedFlag{34};

 public:
  template <auto read, auto write>
  static constexpr AttrModel data(std::string_view name) {
    AttrModel attr = of<read>(name, &Adapter::data<Self, read, write>);
    attr.writer = &Adapter::valueIs<Self, write>;
    attr.flags = Flags::data;
    attr.writable = true;
    return attr;
  }
  // Given at construction.
  template <auto read>
  static constexpr AttrModel key(std::string_view name) {
    return readOnly<read>(name).with(Flags::key);
  }
  template <auto read>
  static constexpr AttrModel readOnly(std::string_view name) {
    return of<read>(name, &Adapter::readOnly<Self, read>);
  }
  // Computed from other attributes.
  template <auto read>
  static constexpr AttrModel derived(std::string_view name) {
    AttrModel attr = readOnly<read>(name);
    attr.introspection = Flag();
    return attr;
  }
  template <auto read>
  static constexpr AttrModel fwkKey() {
    AttrModel attr = derived<read>("fwkKey")
                         .with(Flags::fwkKey)
                         .says("key under which a collection holds the object");
    attr.withoutNumber = true;
    return attr;
  }

  // `Attribute` is the type that the collection macros define in the class.
  template <class Attribute>
  static constexpr AttrModel collection(std::string_view name) {
    AttrModel attr;
    attr.name = name;
    attr.kind = AttrModel::Kind::collection;
    attr.valueType = &Generic<typename Attribute::Value>::type;
    attr.keyType = &Generic<typename Attribute::Key>::type;
    attr.flags = Flags::collection;
    attr.introspection = plainData;
    attr.access = &Adapter::collection<Self, Attribute>;
    attr.writable = true;
    return attr;
  }
  template <class Attribute>
  static constexpr AttrModel owned(std::string_view name) {
    AttrModel attr;
    attr.name = name;
    attr.kind = AttrModel::Kind::owned;
    attr.valueType = &Generic<Ptr<typename Attribute::Value>>::type;
    attr.keyType = &Generic<typename Attribute::Key>::type;
    attr.flags = Flags::owned;
    attr.introspection = ownedFlag;
    attr.access = &Adapter::owned<Self, Attribute>;
    attr.writable = true;
    return attr;
  }

  template <auto call, class... Names>
  static constexpr AttrModel function(std::string_view name, Names... argNames) {
    using Traits = Adapter::FunctionTraits<decltype(call)>;
    AttrModel attr;
    attr.name = name;
    attr.kind = AttrModel::Kind::function;
    attr.valueType = &Generic<typename Traits::Result>::type;
    attr.flags = Flags::function;
    attr.introspection = functionFlag;
    attr.access = &Adapter::function<Self, call>;
    attr.caller = &Adapter::direct<Self, call>;
    attr.args = arguments<Traits>(argNames...);
    return attr;
  }
  // Returns a new object.
  template <auto call, class... Names>
  static constexpr AttrModel factory(std::string_view name, Names... argNames) {
    return function<call>(name, argNames...).with(Flags::factory);
  }
  // A hook of the framework. It has no number.
  template <auto call, class... Names>
  static constexpr AttrModel hook(std::string_view name, Names... argNames) {
    AttrModel attr = function<call>(name, argNames...).with(Flags::hook);
    attr.withoutNumber = true;
    return attr;
  }
  // The two hooks of every machine. The first one's argument has the hook's own name.
  static constexpr AttrModel activeHook() {
    return hook<&Self::hasNotificationActiveIs>("hasNotificationActiveIs",
                                                "hasNotificationActiveIs")
        .says("starts or stops the observation of the machine's objects");
  }
  static constexpr AttrModel zombieHook() {
    return hook<&Self::korDoZombieReactors>("korDoZombieReactors", "on")
        .says("while on, the machine observes nothing, even if its notifications are active");
  }
  // Two overloads with one name. The record describes the first.
  template <auto withArgs, auto without, class... Names>
  static constexpr AttrModel overloaded(std::string_view name, Names... argNames) {
    AttrModel attr = function<withArgs>(name, argNames...);
    attr.access = &Adapter::overloaded<Self, withArgs, without>;
    attr.caller = &Adapter::overloadedDirect<Self, withArgs, without>;
    return attr;
  }

  // `make` returns a pointer to the new object, or the new value.
  template <auto make, class... Names>
  static constexpr ConstructorModel constructor(Names... argNames) {
    using Traits = Adapter::FunctionTraits<decltype(make)>;
    return {arguments<Traits>(argNames...), &Adapter::construct<make>};
  }

  // The complete table. Without a constructor, no instances can be created by name.
  static constexpr TypeModel object(std::span<AttrModel const> attrs,
                                    ConstructorModel const& constructor = {}) {
    TypeModel model;
    model.type = &Self::_fwkType;
    model.size = sizeof(Self);
    model.attrs = attrs;
    model.constructorArgs = constructor.args;
    model.operations.construct = constructor.construct;
    return model;
  }
  static constexpr TypeModel entity(std::span<AttrModel const> attrs,
                                    ConstructorModel const& constructor = {}) {
    TypeModel model = object(attrs, constructor);
    model.kind = TypeModel::Kind::entity;
    return model;
  }
  static constexpr TypeModel value(std::span<AttrModel const> attrs,
                                   ConstructorModel const& constructor = {}) {
    TypeModel model = object(attrs, constructor);
    model.kind = TypeModel::Kind::value;
    model.operations.parse = &Adapter::parse<Self>;
    return model;
  }

 private:
  template <auto read>
  static constexpr AttrModel of(std::string_view name, KorAttr::Access access) {
    AttrModel attr;
    attr.name = name;
    attr.valueType = &Generic<typename Adapter::MemberTraits<decltype(read)>::Value>::type;
    attr.flags = Flags::derived;
    attr.introspection = plainData;
    attr.access = access;
    attr.reader = &Adapter::value<Self, read>;
    return attr;
  }
  template <class Traits, class... Names>
  static constexpr ArgumentModel arguments(Names... names) {
    static_assert(sizeof...(Names) == Traits::arity, "one name for each argument");
    return {{std::string_view(names)...}, Traits::types.data(), Traits::arity};
  }
};

// An enumeration has text forms but no attributes.
template <class Enum>
constexpr TypeModel enumModel() {
  TypeModel model;
  model.type = []() -> KorType* { return korEnumType(Enum{}); };
  model.size = sizeof(Enum);
  model.kind = TypeModel::Kind::value;
  model.operations.parse = &Adapter::parseEnum<Enum>;
  model.operations.print = &Adapter::printEnum<Enum>;
  return model;
}

// The table of a value type that lists its fields for its text form.
//
// By default the fields are given at construction and are read-only. If `writable`, they are
// written one by one through setters that check.
template <class Self, bool writable, std::size_t... I>
constexpr std::array<AttrModel, sizeof...(I)> fieldAttrs(std::index_sequence<I...> /*places*/) {
  auto const attr = []<std::size_t J>(std::integral_constant<std::size_t, J>) {
    constexpr auto field = std::get<J>(Self::korFields());
    if constexpr (writable) {
      return Model<Self>::template data<field.get, field.set>(field.name).says(field.prose);
    } else {
      return Model<Self>::template key<field.get>(field.name).says(field.prose);
    }
  };
  return {attr(std::integral_constant<std::size_t, I>())...};
}
template <class Self, bool writable = false>
inline constexpr auto fieldsOf = fieldAttrs<Self, writable>(
    std::make_index_sequence<std::tuple_size_v<decltype(Self::korFields())>>());

// A table made of parts, in their order.
template <std::size_t... sizes>
constexpr std::array<AttrModel, (sizes + ...)> joined(
    std::array<AttrModel, sizes> const&... parts) {
  std::array<AttrModel, (sizes + ...)> all{};
  auto end = all.begin();
  ((end = std::copy(parts.begin(), parts.end(), end)), ...);
  return all;
}

// Functions for constructors by name: one creates a value, the other an object.
template <class Self, class... Parts>
Self makeValue(Parts... parts) {
  return Self(std::move(parts)...);
}
template <class Self, class... Parts>
Ptr<Self> makeObject(Parts... parts) {
  return make<Self>(std::move(parts)...);
}

// The table of a value type that is constructed from all its fields, in order, and then read-only.
template <class Self>
constexpr TypeModel fieldsModel() {
  constexpr auto constructor = []<std::size_t... I>(std::index_sequence<I...>) {
    constexpr auto fields = Self::korFields();
    return Model<Self>::template constructor<&makeValue<
        Self, typename Adapter::MemberTraits<decltype(std::get<I>(fields).get)>::Value...>>(
        std::get<I>(fields).name...);
  };
  return Model<Self>::value(
      fieldsOf<Self>,
      constructor(std::make_index_sequence<std::tuple_size_v<decltype(Self::korFields())>>()));
}

}  // namespace Kor
