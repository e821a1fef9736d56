// SPDX-License-Identifier: Apache-2.0
#pragma once

// Notification: who watches an object, and how a change reaches them.
//
// A watched class X has a NotifieeList beside its root and declares
//
//   class X::NotifieeConst : public Kor::NotifieeOf<X, Base::NotifieeConst> {
//    public:
//     using NotifieeOf::NotifieeOf;
//     virtual void onColour() {}
//   };
//   class X::Notifiee : public X::NotifieeConst { ... };   // for watchers that modify the object
//
// Order: the list is in registration order. A walk goes over the entries that stand when it begins:
// who registers meanwhile is called from the next walk on; an entry that left is skipped, also when
// the same notifiee has registered again. A hook's exception goes to that notifiee's
// onNotificationException and never further. A write inside a hook runs to its end first.
//
// Ownership: the list counts its entries and an entry counts its notifiee, so a registered notifiee
// lives. A notifiee refers to its subject uncounted; a subject that dies leaves it with none.

#include "Kor/Export.h"
#include "Kor/KorType.h"
#include "Kor/Ptr.h"
#include "Kor/Thread.h"
#include "Kor/Types.h"

#include <cstdint>
#include <type_traits>
#include <utility>

namespace Kor {

class NotifieeList;
class PtrInterface;

// Root of all notifiees; counted on its own.
class KOR_API NotifieeBase {
 public:
  NotifieeBase(NotifieeBase const&) = delete;
  NotifieeBase& operator=(NotifieeBase const&) = delete;
  virtual ~NotifieeBase();

  // A hook of this notifiee threw while the attribute `id` was announced; called inside the
  // handler, so `throw;` gives the exception. What leaves this function goes no further.
  virtual void onNotificationException(AttributeId id);

  // Whether some object is watched.
  [[nodiscard]] bool registered() const { return list_ != nullptr; }

  void newRef() const noexcept { ++references_; }
  void deleteRef() const noexcept {
    if (--references_ == 0) {
      delete this;
    }
  }

 protected:
  NotifieeBase() = default;

  // Moves this notifiee to `list` (null: to none). Registering where it stands already does
  // nothing.
  void listIs(NotifieeList* list);
  [[nodiscard]] NotifieeList* list() const { return list_; }
  void kindIs(KorType const* kind) { kind_ = kind; }

 private:
  friend class NotifieeList;

  // One registration. It outlives its notifiee's registration while a walk's snapshot holds it.
  struct Entry {
    std::uint32_t references;
    NotifieeBase* notifiee;  // counted; null once unregistered

    void deleteRef();
  };

  mutable std::uint32_t references_ = 1;
  NotifieeList* list_ = nullptr;
  Entry* entry_ = nullptr;         // in list_
  KorType const* kind_ = nullptr;  // the class whose hooks this notifiee has
};

// The mix-in that makes an object watchable. No virtual function; one pointer wide.
class KOR_API NotifieeList {
 public:
  NotifieeList() = default;
  NotifieeList(NotifieeList const&) = delete;
  NotifieeList& operator=(NotifieeList const&) = delete;
  ~NotifieeList();

  [[nodiscard]] std::uint32_t notifiees() const {
    return entries_ == nullptr ? 0 : entries_->count;
  }

 protected:
  // Calls `hook(notifiee)` on every notifiee that is a Notifiee of type `kind`. `subject` stays
  // alive for the whole walk. Without notifiees this is one branch.
  template <class Notifiee, class Subject, class Hook>
  void notify(Subject const* subject, KorType const* kind, AttributeId id, Hook&& hook) const {
    if (entries_ == nullptr) [[likely]] {
      return;
    }
    KOR_ASSERT_OWNING_THREAD();
    Kor::Ptr<Subject const> const pinned = share(subject);
    Walk walk(entries_);
    while (NotifieeBase* const notifiee = walk.next(kind)) {
      try {
        hook(*static_cast<Notifiee*>(notifiee));
      } catch (...) {
        deliverException(*notifiee, id);
      }
    }
  }

 private:
  friend class NotifieeBase;

  // The entries themselves follow this header in the same allocation.
  struct alignas(void*) Entries {
    std::uint32_t references;
    std::uint32_t count;
    std::uint32_t capacity;

    NotifieeBase::Entry** begin() { return reinterpret_cast<NotifieeBase::Entry**>(this + 1); }
    NotifieeBase::Entry** end() { return begin() + count; }

    static std::size_t sizeFor(std::uint32_t capacity);
    static Entries* make(std::uint32_t capacity);
    // A list of its own for the caller, with room for `wanted`; gives up the caller's share of this
    // one.
    Entries* owned(std::uint32_t wanted);
    void deleteRef() {
      if (--references == 0) {
        release();
      }
    }
    void release();
  };

  // One walk over a snapshot. The list is copied on write while a walk holds it, so taking the
  // snapshot is one count, however long the list is.
  class Walk {
   public:
    explicit Walk(Entries* entries) : entries_(entries) { ++entries_->references; }
    Walk(Walk const&) = delete;
    Walk& operator=(Walk const&) = delete;
    ~Walk() { entries_->deleteRef(); }
    // The next registered notifiee of that kind, kept alive until the call after this one; null at
    // the end.
    NotifieeBase* next(KorType const* kind) {
      // Before looking for the next one: the end of this one may take that one out.
      current_ = nullptr;
      while (position_ < entries_->count) {
        NotifieeBase* const notifiee = entries_->begin()[position_++]->notifiee;
        if (notifiee != nullptr && (notifiee->kind_ == kind || notifiee->kind_->isA(kind))) {
          current_ = share(notifiee);
          return notifiee;
        }
      }
      return nullptr;
    }

   private:
    Entries* entries_;
    std::uint32_t position_ = 0;
    Kor::Ptr<NotifieeBase> current_;
  };

  void add(NotifieeBase* notifiee);
  void remove(NotifieeBase* notifiee);
  static void deliverException(NotifieeBase& notifiee, AttributeId id) noexcept;

  Entries* entries_ = nullptr;  // null when nobody watches
};

// What X::NotifieeConst derives from: registration with an X, and the mark by which a walk knows
// which hooks a notifiee has. `Base` is NotifieeBase or the NotifieeConst of X's base class.
template <class X, class Base = NotifieeBase>
class NotifieeOf : public Base {
 public:
  // Registers at once when there is an object.
  explicit NotifieeOf(X const* notifier = nullptr) {
    this->kindIs(X::_fwkType());
    notifierIs(notifier);
  }
  explicit NotifieeOf(Kor::Ptr<X const> const& notifier) : NotifieeOf(notifier.get()) {}

  // Watches another object, or none.
  void notifierIs(X const* notifier) {
    // Watching does not change the watched object: its list is no part of its value.
    this->listIs(const_cast<X*>(notifier));
  }
  void notifierIs(std::nullptr_t) { notifierIs(static_cast<X const*>(nullptr)); }
  void notifierIs(Kor::Ptr<X const> const& notifier) { notifierIs(notifier.get()); }

  // The watched object, null when there is none.
  [[nodiscard]] X const* notifier() const { return static_cast<X const*>(this->list()); }
};

}  // namespace Kor
