// SPDX-License-Identifier: Apache-2.0
#pragma once

// Ptr<T>: a counted pointer to an object with an intrusive count (newRef, deleteRef).
//
//   Ptr<Thing> thing(new Thing());      // a new object's count is 1, and the pointer adopts it
//   Ptr<Thing> other = thing;           // 2
//   Ptr<Thing const> seen = thing;      // 3
//   Ptr<Thing> self = Kor::share(this); // an existing object: adds to the count
//
// Counting is not atomic. A Ptr has the size of a raw pointer. Dereferencing null fails an
// assertion of source "Kor/Ptr".

#include "Kor/Assert.h"
#include "Kor/Exception.h"

#include <cstddef>
#include <functional>
#include <ostream>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace Kor {

template <class T>
class Ptr {
 public:
  using Element = T;

  constexpr Ptr() noexcept = default;
  // NOLINTNEXTLINE(google-explicit-constructor): null is a value of every pointer
  constexpr Ptr(std::nullptr_t) noexcept {}
  // Adopts the initial count of a new object. For an existing object use share().
  explicit Ptr(T* adopted) noexcept : object_(adopted) {}

  Ptr(Ptr const& other) noexcept : object_(other.object_) { retain(); }
  Ptr(Ptr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}

  template <class U>
  requires std::is_convertible_v<U*, T*> Ptr(Ptr<U> const& other)
  noexcept : object_(other.get()) { retain(); }
  template <class U>
  requires std::is_convertible_v<U*, T*> Ptr(Ptr<U>&& other)
  noexcept : object_(other.release()) {}

  ~Ptr() {
    if (object_ != nullptr) {
      object_->deleteRef();
    }
  }

  Ptr& operator=(Ptr const& other) noexcept {
    Ptr(other).swap(*this);
    return *this;
  }
  Ptr& operator=(Ptr&& other) noexcept {
    Ptr(std::move(other)).swap(*this);
    return *this;
  }

  void swap(Ptr& other) noexcept { std::swap(object_, other.object_); }
  // Returns the raw pointer and becomes null. The count stays: the caller takes over the reference.
  [[nodiscard]] T* release() noexcept { return std::exchange(object_, nullptr); }

  [[nodiscard]] T* get() const noexcept { return object_; }
  T& operator*() const { return *checked(); }
  T* operator->() const { return checked(); }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  // Returns a pointer to the object as a U. Null if the object is no U, and for null.
  template <class U>
  [[nodiscard]] Ptr<U> as() const {
    Ptr<U> view(castTo<U>());
    view.retain();
    return view;
  }

  template <class U>
  bool operator==(Ptr<U> const& other) const noexcept {
    return object_ == other.get();
  }
  bool operator==(std::nullptr_t) const noexcept { return object_ == nullptr; }
  bool operator==(T const* other) const noexcept { return object_ == other; }
  bool operator<(Ptr const& other) const noexcept {
    return std::less<T*>()(object_, other.object_);
  }

 private:
  template <class U>
  friend class Ptr;
  template <class U>
  friend Ptr<U> share(U* existing) noexcept;

  template <class U>
  [[nodiscard]] U* castTo() const noexcept {
    if constexpr (requires(T * object) { static_cast<U*>(object); }) {
      // The usual case takes no search of base classes. A type may have one name per library, which
      // is left to the search.
      if (object_ != nullptr && typeid(*object_).name() == typeid(U).name()) {
        return static_cast<U*>(object_);
      }
    }
    return dynamic_cast<U*>(object_);
  }
  void retain() const noexcept {
    if (object_ != nullptr) {
      object_->newRef();
    }
  }
  T* checked() const {
    KOR_ASSERT_AS("Kor/Ptr", "object_ != nullptr", object_ != nullptr);
    return object_;
  }

  T* object_ = nullptr;
};

// Returns a counted pointer to an existing object; null for null.
template <class T>
[[nodiscard]] Ptr<T> share(T* existing) noexcept {
  Ptr<T> pointer(existing);
  pointer.retain();
  return pointer;
}

// Creates an object in a counted pointer.
template <class T, class... Args>
[[nodiscard]] Ptr<T> make(Args&&... args) {
  return Ptr<T>(new T(std::forward<Args>(args)...));
}

// Returns `pointer`. Raises RangeException if it is null.
template <class T>
[[nodiscard]] Ptr<T> validPtr(Ptr<T> pointer) {
  if (!pointer) {
    throw RangeException("null ValidPtr");
  }
  return pointer;
}

}  // namespace Kor
