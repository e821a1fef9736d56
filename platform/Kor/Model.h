// SPDX-License-Identifier: Apache-2.0
#pragma once

// Model<T>: the table of a type. Registration, adapter, attribute names and the constructor by name
// are all derived from it.
//
//   using M = Kor::Model<Shelf>;
//   constexpr std::array attrs{
//       M::data<&Shelf::colour, &Shelf::colourIs>("colour"),
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

#include "Kor/Export.h"
#include "Kor/Generic.h"
#include "Kor/GenericIf.h"
#include "Kor/KorAttr.h"
#include "Kor/KorType.h"
#include "Kor/Strep.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <span>
#include <string_view>
#include <tuple>
#include <utility>

namespace Kor {

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
  Kind kind = Kind::data;
  TypeGetter valueType = nullptr;
  TypeGetter keyType = nullptr;  // of a collection
  KorAttr::AttrFlags flags;
  KorAttr::KorAttrIntrospectionFlags introspection;
  KorAttr::Access access = nullptr;
  KorAttr::Reader reader = nullptr;  // of data
  bool writable = false;
  bool withoutNumber = false;  // has the identifier 0
  ArgumentModel args;          // of a function

  [[nodiscard]] constexpr AttrModel with(KorAttr::AttrFlags other) const {
    AttrModel copy = *this;
    copy.flags = other;
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

// The accessors of the attributes. The author of a table does not need them.
namespace Adapter {

[[noreturn]] KOR_API void refuse(KorAttr const& attr, AttributeOperation const& operation);
KOR_API void needNoIndex(KorAttr const& attr, AttributeOperation const& operation);
KOR_API GenericList const& needList(GenericValue const& value);
// Checks the operation code and the index of a function call.
KOR_API void needCall(KorAttr const& attr, AttributeOperation const& operation);

template <class Self>
Self& subject(Instance const& self) {
  // The generic interface has already checked const.
  auto* const object = const_cast<PtrInterface*>(self.object);
  if constexpr (std::is_base_of_v<PtrInterface, Self>) {
    return static_cast<Self&>(*object);
  } else {
    return static_cast<TypedBox<Self>&>(*object).value();
  }
}

// Anything read through a const instance is const.
template <class Value>
GenericValue member(Instance const& self, Value const& value) {
  GenericValue generic = Generic<Value>::value(value);
  if constexpr (requires { typename Value::Element; }) {
    if (self.isConst) {
      generic.makeConst();
    }
  }
  return generic;
}

template <class T>
T taken(GenericValue const& from, String const& name) {
  T value{};
  if (!Generic<T>::take(from, value)) [[unlikely]] {
    GenericIf::throwTypeException(name);
  }
  return value;
}

template <class T>
T takenIndex(AttributeOperation const& operation) {
  T key{};
  if (!Generic<T>::take(operation.kor_index, key)) [[unlikely]] {
    GenericIf::throwTypeException("kor_index");
  }
  return key;
}

template <class Self, class Class, class Member>
constexpr bool isMemberOf(Member Class::* /*member*/) {
  return std::is_same_v<Self, Class>;
}
template <class Self, class Function>
constexpr bool isMemberOf(Function* /*function*/) {
  return false;
}

// Calls a member, or a function that takes the object first. Written so that the call can be
// inlined.
template <auto function, class Self, class... Args>
decltype(auto) call(Self& self, Args&&... args) {
  if constexpr (isMemberOf<Self>(function)) {
    return (self.*function)(std::forward<Args>(args)...);
  } else {
    // Includes members of a base: for a direct call, g++ warns about type punning.
    return std::invoke(function, self, std::forward<Args>(args)...);
  }
}

template <class Member>
struct MemberTraits;
template <class C, class R>
struct MemberTraits<R (C::*)() const> {
  using Value = std::remove_cvref_t<R>;
};
template <class C, class R, class V>
struct MemberTraits<R (C::*)(V)> {
  using Value = std::remove_cvref_t<V>;
};

template <class Self, auto read>
GenericValue value(Instance const& self) {
  using Value = typename MemberTraits<decltype(read)>::Value;
  return member<Value>(self, call<read>(subject<Self>(self)));
}

template <class Self, auto read>
GenericValue readOnly(Instance const& self, KorAttr const& attr,
                      AttributeOperation const& operation) {
  if (operation.kor_index.present()) [[unlikely]] {
    GenericIf::throwBadIndexAttrException(attr.name());
  }
  if (operation.code != AttributeOperation::get) [[unlikely]] {
    refuse(attr, operation);
  }
  return value<Self, read>(self);
}

template <class Self, auto read, auto write>
GenericValue data(Instance const& self, KorAttr const& attr, AttributeOperation const& operation) {
  if (operation.code != AttributeOperation::set || operation.kor_index.present()) {
    return readOnly<Self, read>(self, attr, operation);
  }
  using Value = typename MemberTraits<decltype(write)>::Value;
  call<write>(subject<Self>(self), taken<Value>(operation.value, attr.name()));
  return {};
}

// The queries common to all collections.
template <class Self, class Attribute>
GenericValue query(Instance const& self, KorAttr const& attr, AttributeOperation const& operation) {
  using Key = typename Attribute::Key;
  Self const& owner = subject<Self>(self);
  switch (operation.code) {
  case AttributeOperation::count:
    needNoIndex(attr, operation);
    return Attribute::collection(owner).members();
  case AttributeOperation::first: {
    needNoIndex(attr, operation);
    Key const* const key = Attribute::collection(owner).firstKey();
    return key == nullptr ? GenericValue() : Generic<Key>::value(*key);
  }
  case AttributeOperation::next: {
    Key const* const key = Attribute::collection(owner).keyAfter(takenIndex<Key>(operation));
    return key == nullptr ? GenericValue() : Generic<Key>::value(*key);
  }
  default: refuse(attr, operation);
  }
}

template <class Self, class Attribute>
GenericValue collection(Instance const& self, KorAttr const& attr,
                        AttributeOperation const& operation) {
  using Key = typename Attribute::Key;
  using Value = typename Attribute::Value;
  Self& owner = subject<Self>(self);
  switch (operation.code) {
  case AttributeOperation::get:
    return member<Value>(self, Attribute::value(owner, takenIndex<Key>(operation)));
  case AttributeOperation::set: {
    auto const key = takenIndex<Key>(operation);
    Attribute::is(owner, key, taken<Value>(operation.value, attr.name()));
    return {};
  }
  case AttributeOperation::del: Attribute::remove(owner, takenIndex<Key>(operation)); return {};
  default: return query<Self, Attribute>(self, attr, operation);
  }
}

KOR_API void needKeyAlone(GenericList const& list, bool keyIsTheIndex, KorType const* member);

template <class Self, class Attribute>
GenericValue owned(Instance const& self, KorAttr const& attr, AttributeOperation const& operation) {
  using Key = typename Attribute::Key;
  using MemberPtr = Ptr<typename Attribute::Value>;
  Self& owner = subject<Self>(self);
  switch (operation.code) {
  case AttributeOperation::get:
    return member<MemberPtr>(self, Attribute::value(owner, takenIndex<Key>(operation)));
  case AttributeOperation::set: {
    auto const key = takenIndex<Key>(operation);
    GenericList const& list = needList(operation.value);
    Key given{};
    bool const same = list.empty() || (Generic<Key>::take(list[0], given) && given == key);
    needKeyAlone(list, same, attr.valueType());
    return member<MemberPtr>(self, Attribute::is(owner, key));
  }
  case AttributeOperation::del: Attribute::remove(owner, takenIndex<Key>(operation)); return {};
  default: return query<Self, Attribute>(self, attr, operation);
  }
}

template <class Function>
struct FunctionTraits;
template <class R, class... Args>
struct FunctionTraits<R (*)(Args...)> {
  using Result = std::remove_cvref_t<R>;
  using Values = std::tuple<std::remove_cvref_t<Args>...>;
  static constexpr std::size_t arity = sizeof...(Args);
  static constexpr std::array<TypeGetter, arity> types{
      &Generic<std::remove_cvref_t<Args>>::type...};
};
template <class C, class R, class... Args>
struct FunctionTraits<R (C::*)(Args...)> : FunctionTraits<R (*)(Args...)> {};
template <class C, class R, class... Args>
struct FunctionTraits<R (C::*)(Args...) const> : FunctionTraits<R (*)(Args...)> {};

// Converts the elements of the list in order. Raises UnknownArgException for surplus elements.
template <class Values>
Values takenList(GenericList const& list, std::vector<ArgumentSpec> const& args,
                 String const& owner) {
  Values values;
  auto const take = [&]<std::size_t... I>(std::index_sequence<I...>) {
    ((std::get<I>(values) = taken<std::tuple_element_t<I, Values>>(list[I], args[I].name)), ...);
  };
  take(std::make_index_sequence<std::tuple_size_v<Values>>());
  if (list.size() > std::tuple_size_v<Values>) [[unlikely]] {
    GenericIf::throwUnknownArgException(owner);
  }
  return values;
}

template <class Self, auto call>
GenericValue function(Instance const& self, KorAttr const& attr,
                      AttributeOperation const& operation) {
  using Traits = FunctionTraits<decltype(call)>;
  needCall(attr, operation);
  auto const values = [&] {
    if constexpr (Traits::arity == 0) {
      if (!operation.value.present()) {
        return std::tuple<>();
      }
    }
    return takenList<typename Traits::Values>(needList(operation.value), attr.args(), attr.name());
  }();
  auto const invoke = [&](auto const&... args) -> decltype(auto) {
    return (subject<Self>(self).*call)(args...);
  };
  if constexpr (std::is_void_v<typename Traits::Result>) {
    std::apply(invoke, values);
    return {};
  } else {
    return Generic<typename Traits::Result>::value(std::apply(invoke, values));
  }
}

// Two overloads with one name. An empty list calls the one without arguments.
template <class Self, auto withArgs, auto without>
GenericValue overloaded(Instance const& self, KorAttr const& attr,
                        AttributeOperation const& operation) {
  needCall(attr, operation);
  if (!operation.value.present() || needList(operation.value).empty()) {
    (subject<Self>(self).*without)();
    return {};
  }
  return function<Self, withArgs>(self, attr, operation);
}

template <auto make>
GenericValue construct(KorType const& type, GenericValue const& arguments) {
  using Traits = FunctionTraits<decltype(make)>;
  auto const values = takenList<typename Traits::Values>(needList(arguments),
                                                         type.constructorArgs(), type.shortName());
  if constexpr (ModelType<typename Traits::Result>) {
    return Generic<typename Traits::Result>::boxed(std::apply(make, values), false);
  } else {
    return Generic<typename Traits::Result>::value(std::apply(make, values));
  }
}

template <class T>
GenericValue parse(TextIterator& it, TextIterator const& end) {
  return Generic<T>::boxed(sequenceTo<T>(it, end), false);
}

template <class Enum>
GenericValue parseEnum(TextIterator& it, TextIterator const& end) {
  return Generic<Enum>::value(sequenceTo<Enum>(it, end));
}

template <class Enum>
String printEnum(GenericValue const& value) {
  return valueToStrep(static_cast<Enum>(value.enumeration()));
}

}  // namespace Adapter

// A constructor by name: the creating function and the names of its arguments.
struct ConstructorModel {
  ArgumentModel args;
  GenericValue (*construct)(KorType const& type, GenericValue const& arguments) = nullptr;
};

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
    AttrModel attr = derived<read>("fwkKey").with(Flags::fwkKey);
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
                                                "hasNotificationActiveIs");
  }
  static constexpr AttrModel zombieHook() {
    return hook<&Self::korDoZombieReactors>("korDoZombieReactors", "on");
  }
  // Two overloads with one name. The record describes the first.
  template <auto withArgs, auto without, class... Names>
  static constexpr AttrModel overloaded(std::string_view name, Names... argNames) {
    AttrModel attr = function<withArgs>(name, argNames...);
    attr.access = &Adapter::overloaded<Self, withArgs, without>;
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
      return Model<Self>::template data<field.get, field.set>(field.name);
    } else {
      return Model<Self>::template key<field.get>(field.name);
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
