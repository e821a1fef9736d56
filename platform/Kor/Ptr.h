// SPDX-License-Identifier: Apache-2.0
#pragma once

// Ptr<T>: a counted pointer to an object that carries its own count (newRef, deleteRef).
//
//   Ptr<Thing> thing(new Thing());      // a new object's count is 1, and the pointer adopts it
//   Ptr<Thing> other = thing;           // 2
//   Ptr<Thing const> seen = thing;      // 3
//   Ptr<Thing> self = Kor::share(this); // an existing object: adds to the count
//
// Counting is not atomic. A Ptr is as large as a raw pointer. Using a null one is an assertion.

#include "Kor/Assert.h"
#include "Kor/Exception.h"

#include <cstddef>
#include <ostream>
#include <type_traits>
#include <utility>

namespace Kor {

template <class T>
class Ptr {
 public:
  using Element = T;

  constexpr Ptr() noexcept = default;
  // NOLINTNEXTLINE(google-explicit-constructor): null is a value of every pointer
  constexpr Ptr(std::nullptr_t) noexcept {}
  // Adopts the count of one that a new object starts with. For an object that others hold: share().
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
  // Gives the counted reference up without releasing it.
  [[nodiscard]] T* release() noexcept { return std::exchange(object_, nullptr); }

  [[nodiscard]] T* get() const noexcept { return object_; }
  T& operator*() const { return *checked(); }
  T* operator->() const { return checked(); }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  // This object viewed as a U: null when it is none, or when there is no object.
  template <class U>
  [[nodiscard]] Ptr<U> as() const {
    Ptr<U> view(dynamic_cast<U*>(object_));
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

// A counted pointer to an object that is counted already; null for null.
template <class T>
[[nodiscard]] Ptr<T> share(T* existing) noexcept {
  Ptr<T> pointer(existing);
  pointer.retain();
  return pointer;
}

// A new object in a counted pointer.
template <class T, class... Args>
[[nodiscard]] Ptr<T> make(Args&&... args) {
  return Ptr<T>(new T(std::forward<Args>(args)...));
}

// What a creator that must not answer null passes its result through. Raises RangeException.
template <class T>
[[nodiscard]] Ptr<T> validPtr(Ptr<T> pointer) {
  if (!pointer) {
    throw RangeException("null ValidPtr");
  }
  return pointer;
}

}  // namespace Kor
