// SPDX-License-Identifier: Apache-2.0
#pragma once

// Objects by name: for those who have no class header, or want none.
//
//   Kor::GenericRef helper = Kor::construct("PolicyMapTest::AclHelper", true, false);
//   helper["commitError"] = "table full";
//   helper.call("createPolicy", policyData, "ipv4");
//   for (auto const& [key, record] : helper["testData"]) {
//     std::cout << key << " " << record["commitCount"] << "\n";
//   }
//   auto const created = helper["testData"][key]["created"].as<bool>();
//
// Names are looked up where they are used. A Kor::AttributeName is looked up once and can be kept:
//
//   static Kor::AttributeName const commitCount("commitCount");
//   helper.get(commitCount);
//
// Errors: the exceptions of the generic interface, and RangeException for a name that there is not,
// with the nearest ones that there are.

#include "Kor/Export.h"
#include "Kor/Generic.h"
#include "Kor/GenericIf.h"
#include "Kor/GenericValue.h"
#include "Kor/KorAttr.h"
#include "Kor/KorType.h"

#include <array>
#include <concepts>
#include <cstddef>
#include <iterator>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

namespace Kor {

class GenericPlace;
class GenericRef;

// An attribute's name that remembers where it was found last.
class KOR_API AttributeName {
 public:
  explicit AttributeName(std::string_view name) : name_(name) {}
  [[nodiscard]] std::string const& name() const { return name_; }
  // The attribute of that name in `type`. Raises RangeException when there is none.
  [[nodiscard]] KorAttr const& in(KorType const* type) const {
    if (type != type_) [[unlikely]] {
      find(type);
    }
    return *attr_;
  }

 private:
  void find(KorType const* type) const;

  std::string name_;
  mutable KorType const* type_ = nullptr;
  mutable KorAttr const* attr_ = nullptr;
};

// The attribute of that name in `type`. Raises RangeException "TYPE has no such attribute: NAME",
// with the nearest names behind it.
[[nodiscard]] KOR_API KorAttr const& attributeNamed(KorType const* type, std::string_view name);
// The entered type of that qualified name. Raises RangeException "no such type: NAME", likewise.
[[nodiscard]] KOR_API KorType const& typeNamed(std::string_view name);

// A function is called and everything else is read; both use the same operation code.
// These raise OpNotSupportedException for the other kind.
inline void needCallable(KorAttr const& attr) {
  if (!attr.isFunction()) [[unlikely]] {
    GenericIf::throwOpNotSupportedException(attr.name(), AttributeOperation::get);
  }
}
inline void needReadable(KorAttr const& attr) {
  if (attr.isFunction()) [[unlikely]] {
    GenericIf::throwOpNotSupportedException(attr.name(), AttributeOperation::get);
  }
}

// What C++ has as a generic value.
template <class T>
[[nodiscard]] GenericValue generic(T const& value) {
  if constexpr (std::constructible_from<GenericValue, T const&>) {
    return GenericValue(value);
  } else if constexpr (std::convertible_to<T const&, GenericValue>) {
    return static_cast<GenericValue>(value);
  } else if constexpr (std::convertible_to<T const&, std::string_view>) {
    return String8(std::string_view(value));
  } else {
    return Generic<T>::value(value);
  }
}

// A generic value as C++ has it. Raises TypeException with the type that was expected and `name`.
template <class T>
[[nodiscard]] T converted(GenericValue const& value, std::string_view name) {
  if constexpr (std::same_as<T, GenericValue>) {
    return value;
  } else if constexpr (std::same_as<T, std::string>) {
    return converted<String8>(value, name).stdString();
  } else {
    T result{};
    if (!Generic<T>::take(value, result)) {
      throw TypeException(Generic<T>::type()->name(), name);
    }
    return result;
  }
}

// A value that was read, answered or built; mostly an object, whose attributes it reaches.
class KOR_API GenericRef {
 public:
  GenericRef() = default;
  // NOLINTNEXTLINE(google-explicit-constructor): it is the value, with names
  GenericRef(GenericValue value) : value_(std::move(value)) {}
  template <class T>
  requires std::is_base_of_v<PtrInterface, T>
  explicit GenericRef(Ptr<T> const& object) : value_(Generic<Ptr<T>>::value(object)) {}

  [[nodiscard]] GenericValue const& value() const { return value_; }
  // NOLINTNEXTLINE(google-explicit-constructor): arguments are given as generic values
  operator GenericValue() const { return value_; }
  // Whether there is a value, and not a null pointer.
  explicit operator bool() const { return value_.present() && !value_.isNull(); }
  [[nodiscard]] bool isNull() const { return value_.isNull(); }
  template <class T>
  [[nodiscard]] T as() const {
    return converted<T>(value_, "value");
  }

  // Of an object or a model value; for anything else these raise RangeException "VALUE has no
  // attributes".
  [[nodiscard]] KorType const* type() const { return adapter().type(); }
  [[nodiscard]] bool isConst() const { return value_.isConst(); }
  // The same, not to be changed.
  [[nodiscard]] GenericRef asConst() const {
    GenericValue value = value_;
    value.makeConst();
    return value;
  }
  [[nodiscard]] GenericIf adapter() const;

  [[nodiscard]] GenericPlace operator[](std::string_view name) const;
  // Raises as reading the place of that name does.
  [[nodiscard]] GenericValue get(AttributeName const& name) const {
    KorAttr const& attr = attributeOf(name);
    if (attr.reader() == nullptr) [[unlikely]] {
      needReadable(attr);
      return GenericIf::attributeOp(instance(), attr, {});
    }
    return attr.reader()(instance());
  }
  void set(AttributeName const& name, GenericValue value) const {
    KorAttr const& attr = attributeOf(name);
    GenericIf::attributeOp(instance(), attr, {0, AttributeOperation::set, {}, std::move(value)});
  }
  // Calls a function with these arguments. Raises OpNotSupportedException for what is no function.
  template <class... Args>
  GenericRef call(AttributeName const& name, Args const&... args) const {
    KorAttr const& attr = attributeOf(name);
    needCallable(attr);
    std::array<GenericValue, sizeof...(Args)> const values{generic(args)...};
    GenericList list{std::span<GenericValue const>(values)};
    return GenericIf::attributeOp(instance(), attr,
                                  {0, AttributeOperation::get, {}, GenericValue(share(&list))});
  }
  template <class... Args>
  GenericRef call(std::string_view name, Args const&... args) const {
    return call(AttributeName(name), args...);
  }

  // As GenericValue compares.
  template <class T>
  bool operator==(T const& other) const {
    return value_ == generic(other);
  }
  friend std::ostream& operator<<(std::ostream& out, GenericRef const& ref) {
    return out << ref.value_;
  }

 private:
  [[nodiscard]] bool refers() const {
    return value_.kind() == GenericValue::Kind::object ||
           value_.kind() == GenericValue::Kind::value;
  }
  [[noreturn]] void refuse() const;
  [[nodiscard]] Instance instance() const { return {value_.object(), value_.isConst()}; }
  [[nodiscard]] KorAttr const& attributeOf(AttributeName const& name) const {
    if (!refers()) [[unlikely]] {
      refuse();
    }
    return name.in(value_.object()->fwkType());
  }

  GenericValue value_;
};

// An attribute of an object, or a member of a collection: what stands left of an assignment.
class KOR_API GenericPlace {
 public:
  class Iterator;

  GenericPlace(GenericIf self, KorAttr const& attr, GenericValue index = {})
      : self_(std::move(self)), attr_(&attr), index_(std::move(index)) {}
  GenericPlace(GenericPlace const&) = default;
  GenericPlace(GenericPlace&&) = default;
  ~GenericPlace() = default;

  [[nodiscard]] KorAttr const& attr() const { return *attr_; }
  [[nodiscard]] bool isWholeCollection() const {
    return attr_->isCollection() && !index_.present();
  }

  // What stands there. Raises OpNotSupportedException for a function and TypeException "kor_index"
  // for a whole collection.
  [[nodiscard]] GenericRef get() const {
    needReadable(*attr_);
    return operation(AttributeOperation::get);
  }
  // NOLINTNEXTLINE(google-explicit-constructor): arguments are given as generic values
  operator GenericValue() const { return get().value(); }
  template <class T>
  [[nodiscard]] T as() const {
    return converted<T>(get().value(), attr_->name().view());
  }
  // Writes the data, or sets the member.
  template <class T>
  requires(!std::same_as<T, GenericPlace>) GenericPlace& operator=(T const& value) {
    operation(AttributeOperation::set, generic(value));
    return *this;
  }
  // Writes what stands at another place; it does not become that place.
  GenericPlace& operator=(GenericPlace const& other) {  // NOLINT(cert-oop54-cpp): a write
    operation(AttributeOperation::set, other);
    return *this;
  }
  GenericPlace& operator=(GenericPlace&& other) {  // NOLINT(performance-noexcept-move-constructor)
    return *this = static_cast<GenericPlace const&>(other);
  }

  // Of a collection: the member at that key. Of anything else: the attribute of that name of the
  // object that stands there.
  template <class K>
  [[nodiscard]] GenericPlace operator[](K const& key) const {
    return at(generic(key));
  }
  // Calls the function that the place is. Raises OpNotSupportedException for any other place.
  template <class... Args>
  GenericRef operator()(Args const&... args) const {
    return invoke(GenericList::of(generic(args)...));
  }
  // The same with the arguments in a list.
  GenericValue invoke(GenericList::Ptr const& args) const {
    needCallable(*attr_);
    return self_.attributeOp(*attr_, {attr_->id(), AttributeOperation::get, index_, args});
  }
  // Calls a function of the object that stands there.
  template <class... Args>
  GenericRef call(std::string_view name, Args const&... args) const {
    return get().call(name, args...);
  }

  // Of a member of an owned collection: creates it unless it is there.
  GenericRef create() const { return operation(AttributeOperation::set, GenericList::of()); }
  // Of a member: takes it out.
  void del() const { operation(AttributeOperation::del); }

  // Of a whole collection; for a member these raise BadIndexAttrException, for what is no
  // collection OpNotSupportedException. A walk survives the removal of members, its current one
  // included.
  [[nodiscard]] std::size_t size() const {
    return static_cast<std::size_t>(operation(AttributeOperation::count).value().integer());
  }
  [[nodiscard]] Iterator begin() const;
  [[nodiscard]] std::default_sentinel_t end() const { return {}; }
  // Whether there is a member at that key; raises TypeException "kor_index" for one of a wrong
  // type. Walks the keys.
  template <class K>
  [[nodiscard]] bool contains(K const& key) const {
    return has(generic(key));
  }

  template <class T>
  bool operator==(T const& other) const {
    return get() == other;
  }
  friend std::ostream& operator<<(std::ostream& out, GenericPlace const& place) {
    return out << place.get();
  }

 private:
  GenericRef operation(std::uint32_t code, GenericValue value = {}) const;
  [[nodiscard]] GenericPlace at(GenericValue const& key) const;
  [[nodiscard]] bool has(GenericValue const& key) const;

  GenericIf self_;
  KorAttr const* attr_;
  GenericValue index_;
};

// Walks a collection in its own order; gives pairs of key and member.
class KOR_API GenericPlace::Iterator {
 public:
  using value_type = std::pair<GenericRef, GenericRef>;
  using difference_type = std::ptrdiff_t;

  // `key` is where the walk begins.
  Iterator(GenericIf self, KorAttr const& attr, GenericValue key)
      : self_(std::move(self)), attr_(&attr), key_(std::move(key)) {}
  [[nodiscard]] value_type operator*() const;
  Iterator& operator++();
  void operator++(int) { ++*this; }
  bool operator==(std::default_sentinel_t /*end*/) const { return !key_.present(); }

 private:
  GenericIf self_;
  KorAttr const* attr_;
  GenericValue key_;
};

// A new object, or a value, of the type of that qualified name.
template <class... Args>
[[nodiscard]] GenericRef construct(std::string_view typeName, Args const&... args) {
  return genericConstruct(typeNamed(typeName), GenericList::of(generic(args)...)).value();
}

}  // namespace Kor
