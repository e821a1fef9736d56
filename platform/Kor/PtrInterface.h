// SPDX-License-Identifier: Apache-2.0
#pragma once

// PtrInterface: the root of every counted framework object.
//
// Life of an object: it is created with a count of 1, Ptr<T> counts it up and down, and when the
// count reaches zero zeroReferencesIs() ends it. From that moment the count is pinned: a hook that
// runs during the destruction may take and drop pointers to the dying object.

#include "Kor/Export.h"
#include "Kor/KorType.h"
#include "Kor/MemoryPool.h"
#include "Kor/Ptr.h"

#include <cstddef>
#include <cstdint>

namespace Kor {

class PtrInterface;
KOR_API String8 valueToStrep(PtrInterface const* object);

class KOR_API PtrInterface {
 public:
  using Ptr = Kor::Ptr<PtrInterface>;
  using PtrConst = Kor::Ptr<PtrInterface const>;

  PtrInterface(PtrInterface const&) = delete;
  PtrInterface& operator=(PtrInterface const&) = delete;

  // The virtual slots, in this order; every derived class adds its own after them.

  // Switches the object's own reactions on or off. The root stores the state.
  virtual void hasNotificationActiveIs(bool active);
  // Number of broken invariants that the framework part, or the whole object, finds in itself.
  [[nodiscard]] virtual std::uint32_t korAuditErrors() const;
  [[nodiscard]] virtual std::uint32_t auditErrors() const;
  // False once the object has begun to die.
  virtual void isNondestructingIs(bool nondestructing);
  // The count has reached zero: ends the object.
  virtual void zeroReferencesIs();
  // The record of the object's own type.
  [[nodiscard]] virtual KorType const* fwkType() const;
  virtual ~PtrInterface();

  [[nodiscard]] static KorType* _fwkType();

  [[nodiscard]] bool hasNotificationActive() const { return notificationActive_; }
  [[nodiscard]] bool isNondestructing() const { return nondestructing_; }
  [[nodiscard]] bool korMarkedForDeletion() const { return markedForDeletion_; }
  void korMarkedForDeletionIs(bool marked) { markedForDeletion_ = marked; }

  // Counting; Ptr<T> does it.
  void newRef() const noexcept { ++references_; }
  void deleteRef() const noexcept {
    if (--references_ == 0) [[unlikely]] {
      lastReferenceGone();
    }
  }
  [[nodiscard]] std::uint32_t references() const { return references_; }

  // NOLINTNEXTLINE(misc-new-delete-overloads): its delete is the one that takes the size
  static void* operator new(std::size_t size) { return MemoryPool::allocate(size); }
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void operator delete(void* memory, std::size_t size) noexcept {
    MemoryPool::release(memory, size);
  }

 protected:
  PtrInterface() = default;

 private:
  friend String8 valueToStrep(PtrInterface const* object);

  void lastReferenceGone() const noexcept;

  mutable std::uint32_t references_ = 1;
  bool notificationActive_ = false;
  bool markedForDeletion_ = false;
  bool nondestructing_ = true;
  mutable bool hasText_ = false;
};

}  // namespace Kor
