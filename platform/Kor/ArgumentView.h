// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Generic.h"
#include "Kor/GenericValue.h"
#include "Kor/KorType.h"
#include "Kor/Ptr.h"
#include "Kor/PtrInterface.h"

#include <concepts>
#include <cstdint>
#include <type_traits>

namespace Kor {

// A C++ value that a call by name takes as it is.
template <class T>
concept PassedAsItIs = ModelType<T> && !std::is_base_of_v<PtrInterface, T> &&
                       !std::convertible_to<T const&, GenericValue>;

// An argument of a call by name. It refers to a generic value, to a C++ value of a model type, or
// to an object, which must outlive it.
class ArgumentView {
 public:
  // NOLINTBEGIN(google-explicit-constructor): it is the argument
  // What only converts to a generic value would be gone too soon.
  template <std::same_as<GenericValue> Value>
  ArgumentView(Value const& generic) : value_(&generic) {}
  template <PassedAsItIs T>
  ArgumentView(T const& value) : kind_(Kind::value), type_(&T::_fwkType), value_(&value) {}
  template <class T>
  requires std::is_base_of_v<PtrInterface, T> ArgumentView(Ptr<T> const& object)
      : kind_(Kind::object),
        const_(std::is_const_v<T>),
        value_(static_cast<PtrInterface const*>(object.get())) {}
  // NOLINTEND(google-explicit-constructor)

  // Null unless it is a generic value.
  [[nodiscard]] GenericValue const* generic() const {
    return kind_ == Kind::generic ? static_cast<GenericValue const*>(value_) : nullptr;
  }
  // The value of type T, in a box or not; null if it is no such value.
  template <PassedAsItIs T>
  [[nodiscard]] T const* valueAs() const {
    if (kind_ == Kind::generic) {
      return Generic<T>::in(*generic());
    }
    // The types are only looked up if a library has its own copy of the function.
    bool const isOne = kind_ == Kind::value && (type_ == &T::_fwkType || type_() == T::_fwkType());
    return isOne ? static_cast<T const*>(value_) : nullptr;
  }
  // Like Generic<Ptr<T>>::take().
  template <class T>
  [[nodiscard]] bool take(Ptr<T>& to) const {
    if (kind_ != Kind::object) {
      return kind_ == Kind::generic && Generic<Ptr<T>>::take(*generic(), to);
    }
    auto* const object = const_cast<PtrInterface*>(static_cast<PtrInterface const*>(value_));
    if (object != nullptr &&
        ((const_ && !std::is_const_v<T>) || !object->fwkType()->isA(T::_fwkType()))) {
      return false;
    }
    to = share(static_cast<T*>(object));
    return true;
  }

 private:
  enum class Kind : std::uint8_t { generic, value, object };

  Kind kind_ = Kind::generic;
  bool const_ = false;            // of an object
  KorType* (*type_)() = nullptr;  // of a C++ value
  void const* value_;
};

}  // namespace Kor
