// SPDX-License-Identifier: Apache-2.0
#pragma once

// The accessors of the attributes. Model<T> puts them into a table; the author of a table does not
// need them.

#include "Kor/Export.h"
#include "Kor/Generic.h"
#include "Kor/GenericIf.h"
#include "Kor/KorAttr.h"
#include "Kor/KorType.h"
#include "Kor/Strep.h"
#include "Kor/TypeModel.h"

#include <array>
#include <cstddef>
#include <functional>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace Kor::Adapter {

[[noreturn]] KOR_API void refuse(KorAttr const& attr, AttributeOperation const& operation);
[[noreturn]] KOR_API void refuseIndex(KorAttr const& attr);
[[noreturn]] KOR_API void refuseAsList();
inline void needNoIndex(KorAttr const& attr, AttributeOperation const& operation) {
  if (operation.kor_index.present()) [[unlikely]] {
    refuseIndex(attr);
  }
}
inline GenericList const& needList(GenericValue const& value) {
  if (value.kind() != GenericValue::Kind::list) [[unlikely]] {
    refuseAsList();
  }
  return value.list();
}
// Checks the operation code and the index of a function call.
inline void needCall(KorAttr const& attr, AttributeOperation const& operation) {
  if (operation.code != AttributeOperation::get) [[unlikely]] {
    refuse(attr, operation);
  }
  needNoIndex(attr, operation);
}

template <class Self>
Self& subject(Instance self) {
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
GenericValue member(Instance self, Value const& value) {
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
GenericValue value(Instance self) {
  using Value = typename MemberTraits<decltype(read)>::Value;
  return member<Value>(self, call<read>(subject<Self>(self)));
}

template <class Self, auto read>
GenericValue readOnly(Instance self, KorAttr const& attr, AttributeOperation const& operation) {
  if (operation.kor_index.present()) [[unlikely]] {
    GenericIf::throwBadIndexAttrException(attr.name());
  }
  if (operation.code != AttributeOperation::get) [[unlikely]] {
    refuse(attr, operation);
  }
  return value<Self, read>(self);
}

template <class Self, auto write>
void valueIs(Instance self, KorAttr const& attr, GenericValue const& value) {
  using Value = typename MemberTraits<decltype(write)>::Value;
  call<write>(subject<Self>(self), taken<Value>(value, attr.name()));
}

template <class Self, auto read, auto write>
GenericValue data(Instance self, KorAttr const& attr, AttributeOperation const& operation) {
  if (operation.code != AttributeOperation::set || operation.kor_index.present()) {
    return readOnly<Self, read>(self, attr, operation);
  }
  valueIs<Self, write>(self, attr, operation.value);
  return {};
}

// The queries common to all collections.
template <class Self, class Attribute>
GenericValue query(Instance self, KorAttr const& attr, AttributeOperation const& operation) {
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
GenericValue collection(Instance self, KorAttr const& attr, AttributeOperation const& operation) {
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
GenericValue owned(Instance self, KorAttr const& attr, AttributeOperation const& operation) {
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

}  // namespace Kor::Adapter
