// SPDX-License-Identifier: Apache-2.0
#pragma once

// PtrInterface: the root of every counted framework object.
//
// Lifetime: an object is created with a count of 1, and Ptr<T> counts it. When the count reaches
// zero, zeroReferencesIs() destroys it. From then on the count is pinned, so hooks that run during
// the destruction may copy and release pointers to the object.

#include "Kor/Export.h"
#include "Kor/KorType.h"
#include "Kor/MemoryPool.h"
#include "Kor/Ptr.h"

#include <cstddef>
#include <cstdint>

namespace Kor {

class PtrInterface;
KOR_API String valueToStrep(PtrInterface const* object);

class KOR_API PtrInterface {
 public:
  using Ptr = Kor::Ptr<PtrInterface>;
  using PtrConst = Kor::Ptr<PtrInterface const>;

  PtrInterface(PtrInterface const&) = delete;
  PtrInterface& operator=(PtrInterface const&) = delete;

  // The order of these virtual functions is fixed. Derived classes add theirs after them.

  // Switches the object's own reactions on or off. The root only stores the state.
  virtual void hasNotificationActiveIs(bool active);
  // Number of broken invariants found in the framework part, or in the whole object.
  [[nodiscard]] virtual std::uint32_t korAuditErrors() const;
  [[nodiscard]] virtual std::uint32_t auditErrors() const;
  // Set to false when the destruction begins.
  virtual void isNondestructingIs(bool nondestructing);
  // Destroys the object. Called when the count has reached zero.
  virtual void zeroReferencesIs();
  // The record of the most derived type.
  [[nodiscard]] virtual KorType const* fwkType() const;
  virtual ~PtrInterface();

  [[nodiscard]] static KorType* _fwkType();

  [[nodiscard]] bool hasNotificationActive() const { return notificationActive_; }
  [[nodiscard]] bool isNondestructing() const { return nondestructing_; }
  [[nodiscard]] bool korMarkedForDeletion() const { return markedForDeletion_; }
  void korMarkedForDeletionIs(bool marked) { markedForDeletion_ = marked; }

  // Used by Ptr<T>.
  void newRef() const noexcept { ++references_; }
  void deleteRef() const noexcept {
    if (--references_ == 0) [[unlikely]] {
      lastReferenceGone();
    }
  }
  [[nodiscard]] std::uint32_t references() const { return references_; }

  // NOLINTNEXTLINE(misc-new-delete-overloads): the matching delete is the sized one
  static void* operator new(std::size_t size) { return MemoryPool::allocate(size); }
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void operator delete(void* memory, std::size_t size) noexcept {
    MemoryPool::release(memory, size);
  }

 protected:
  PtrInterface() = default;

 private:
  friend String valueToStrep(PtrInterface const* object);

  void lastReferenceGone() const noexcept;

  mutable std::uint32_t references_ = 1;
  bool notificationActive_ = false;
  bool markedForDeletion_ = false;
  bool nondestructing_ = true;
  mutable bool hasText_ = false;
};

}  // namespace Kor
