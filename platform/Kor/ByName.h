// SPDX-License-Identifier: Apache-2.0
#pragma once

// Access to objects by name, without their class headers.
//
//   Kor::GenericRef helper = Kor::construct("PolicyMapTest::AclHelper", true, false);
//   helper["commitError"] = "table full";
//   helper.call("createPolicy", policyData, "ipv4");
//   for (auto const& [key, record] : helper["testData"]) {
//     std::cout << key << " " << record["commitCount"] << "\n";
//   }
//   auto const created = helper["testData"][key]["created"].as<bool>();
//
// Names are looked up on each use. A Kor::AttributeName keeps the result and can be reused:
//
//   static Kor::AttributeName const commitCount("commitCount");
//   helper.get(commitCount);
//
// Errors: the exceptions of the generic interface, and RangeException for an unknown name. Its text
// suggests the nearest known names.

#include "Kor/ArgumentView.h"
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

// An attribute name that caches its last lookup.
class KOR_API AttributeName {
 public:
  explicit AttributeName(std::string_view name) : name_(name) {}
  [[nodiscard]] std::string const& name() const { return name_; }
  // Returns the attribute of that name in `type`. Raises RangeException if there is none.
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

// Returns the attribute of that name in `type`. Raises RangeException "TYPE has no such attribute:
// NAME", followed by the nearest names.
[[nodiscard]] KOR_API KorAttr const& attributeNamed(KorType const* type, std::string_view name);
// Returns the registered type of that qualified name. Raises RangeException "no such type: NAME",
// followed by the nearest names.
[[nodiscard]] KOR_API KorType const& typeNamed(std::string_view name);

// Calling a function and reading data share one operation code. These raise OpNotSupportedException
// for an attribute of the other kind.
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

// Converts a C++ value to a generic value.
template <class T>
[[nodiscard]] GenericValue generic(T const& value) {
  if constexpr (std::constructible_from<GenericValue, T const&>) {
    return GenericValue(value);
  } else if constexpr (std::convertible_to<T const&, GenericValue>) {
    return static_cast<GenericValue>(value);
  } else if constexpr (std::convertible_to<T const&, std::string_view>) {
    return String(std::string_view(value));
  } else {
    return Generic<T>::value(value);
  }
}

// What a call takes for an argument: the value itself, or a generic value.
template <class T>
[[nodiscard]] decltype(auto) passedAs(T const& value) {
  if constexpr (std::constructible_from<ArgumentView, T const&>) {
    return static_cast<T const&>(value);
  } else {
    return generic(value);
  }
}

// Converts a generic value to T. Raises TypeException with the expected type and `name`.
template <class T>
[[nodiscard]] T converted(GenericValue const& value, std::string_view name) {
  if constexpr (std::same_as<T, GenericValue>) {
    return value;
  } else if constexpr (std::same_as<T, std::string>) {
    return converted<String>(value, name).stdString();
  } else {
    T result{};
    if (!Generic<T>::take(value, result)) {
      throw TypeException(Generic<T>::type()->name(), name);
    }
    return result;
  }
}

// A generic value with access to its attributes, if it is an object or a value with attributes.
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
  // True for any value except a null pointer.
  explicit operator bool() const { return value_.present() && !value_.isNull(); }
  [[nodiscard]] bool isNull() const { return value_.isNull(); }
  template <class T>
  [[nodiscard]] T as() const {
    return converted<T>(value_, "value");
  }

  // These require an object or a model value. For any other value they raise RangeException "VALUE
  // has no attributes".
  [[nodiscard]] KorType const* type() const { return adapter().type(); }
  [[nodiscard]] bool isConst() const { return value_.isConst(); }
  // The same value, read-only.
  [[nodiscard]] GenericRef asConst() const {
    GenericValue value = value_;
    value.makeConst();
    return value;
  }
  [[nodiscard]] GenericIf adapter() const;

  [[nodiscard]] GenericPlace operator[](std::string_view name) const;
  // Raises the same errors as reading the place of that name.
  [[nodiscard]] GenericValue get(AttributeName const& name) const {
    KorAttr const& attr = attributeOf(name);
    if (attr.reader() == nullptr) [[unlikely]] {
      needReadable(attr);
      return GenericIf::attributeOp(instance(), attr, {});
    }
    return attr.reader()(instance());
  }
  void set(AttributeName const& name, GenericValue const& value) const {
    KorAttr const& attr = attributeOf(name);
    if (attr.writer() == nullptr || value_.isConst()) [[unlikely]] {
      GenericIf::attributeOp(instance(), attr, {0, AttributeOperation::set, {}, value});
      return;
    }
    attr.writer()(instance(), attr, value);
  }
  // Calls a function with these arguments. Raises OpNotSupportedException if the attribute is not a
  // function.
  template <class... Args>
  GenericRef call(AttributeName const& name, Args const&... args) const {
    KorAttr const& attr = attributeOf(name);
    auto const call = [&](auto const&... passed) {
      std::array<ArgumentView, sizeof...(Args)> const views{ArgumentView(passed)...};
      return attr.caller()(instance(), attr, views);
    };
    return call(passedAs(args)...);
  }
  template <class... Args>
  GenericRef call(std::string_view name, Args const&... args) const {
    return call(AttributeName(name), args...);
  }

  // Compares like GenericValue.
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

// An attribute of an object or a member of a collection. It can be read, assigned and called.
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

  // Reads the value. Raises OpNotSupportedException for a function and TypeException "kor_index"
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
  // Writes the data or sets the member.
  template <class T>
  requires(!std::same_as<T, GenericPlace>) GenericPlace& operator=(T const& value) {
    operation(AttributeOperation::set, generic(value));
    return *this;
  }
  // Writes the value of the other place. Does not rebind this place.
  GenericPlace& operator=(GenericPlace const& other) {  // NOLINT(cert-oop54-cpp): a write
    operation(AttributeOperation::set, other);
    return *this;
  }
  GenericPlace& operator=(GenericPlace&& other) {  // NOLINT(performance-noexcept-move-constructor)
    return *this = static_cast<GenericPlace const&>(other);
  }

  // For a collection, the member at that key. Otherwise the attribute of that name in the object at
  // this place.
  template <class K>
  [[nodiscard]] GenericPlace operator[](K const& key) const {
    return at(generic(key));
  }
  // Calls the function at this place. Raises OpNotSupportedException if it is not a function.
  template <class... Args>
  GenericRef operator()(Args const&... args) const {
    return invoke(GenericList::of(generic(args)...));
  }
  // Calls the function with the arguments in a list.
  GenericValue invoke(GenericList::Ptr const& args) const {
    needCallable(*attr_);
    return self_.attributeOp(*attr_, {attr_->id(), AttributeOperation::get, index_, args});
  }
  // Calls a function of the object at this place.
  template <class... Args>
  GenericRef call(std::string_view name, Args const&... args) const {
    return get().call(name, args...);
  }

  // Creates the member of an owned collection, or returns the existing one.
  GenericRef create() const { return operation(AttributeOperation::set, GenericList::of()); }
  // Removes the member from its collection.
  void del() const { operation(AttributeOperation::del); }

  // These require a whole collection. For a member they raise BadIndexAttrException, for any other
  // attribute OpNotSupportedException. Members may be removed during iteration, including the
  // current one.
  [[nodiscard]] std::size_t size() const {
    return static_cast<std::size_t>(operation(AttributeOperation::count).value().integer());
  }
  [[nodiscard]] Iterator begin() const;
  [[nodiscard]] std::default_sentinel_t end() const { return {}; }
  // True if a member exists at that key. Raises TypeException "kor_index" for a key of the wrong
  // type. Takes time linear in the size of the collection.
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

// Iterates over a collection in its own order, as pairs of key and member.
class KOR_API GenericPlace::Iterator {
 public:
  using value_type = std::pair<GenericRef, GenericRef>;
  using difference_type = std::ptrdiff_t;

  // Starts at `key`.
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

// Creates an object or a value of the type with that qualified name.
template <class... Args>
[[nodiscard]] GenericRef construct(std::string_view typeName, Args const&... args) {
  return genericConstruct(typeNamed(typeName), GenericList::of(generic(args)...)).value();
}

}  // namespace Kor
